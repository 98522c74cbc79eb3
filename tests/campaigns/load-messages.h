// What the load campaign sends, as a table: each kind of message, and where it is seen that it was worked
// off.
//
// A message carries a marker that no other one has. Whoever hears of the message hears of the marker.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "a-running-service.h"

namespace Campaign {

// Who sends, as the kinds tell them apart.
enum Role : unsigned {
    kPhone = 1,            // the phone-side manager
    kAnsweredPeer = 2,     // whose answers the phone-side manager is told of
    kUnansweredPeer = 4,   // which has no port to be answered at
    kAgent = 8,            // the backup agent
    kEvaluationUser = 16,  // of the open port
};

struct Sender {
    std::string app, port;
    Role role;
    std::string resultXml;  // of the face that it installs, if it does
};

// Where the marker of a message comes up.
enum Place : unsigned { kNowhere = 0, kInTheLog = 1, kAtTheSender = 2, kAtTheManager = 4 };

struct MessageKind {
    const char* name;
    unsigned roles;  // who sends it
    unsigned seen;   // the places; of a malformed one none: it is refused
    int share;       // of a thousand messages of such a sender, about
    bool grows;      // to any size
    // The message for the service; its bundle amounts to `bytes`, or what it must.
    std::string (*layout)(const Sender& sender, const std::string& marker, std::size_t bytes);

    bool IsMalformed() const { return seen == kNowhere; }
};

std::span<const MessageKind> MessageKinds();

// One of the kind with that name. Throws std::logic_error when there is none.
std::string MessageOf(const std::string& name, const Sender& sender, const std::string& marker,
                      std::size_t bytes);

// The marker that a message to a port has; empty when it has none.
std::string_view MarkerOf(const RawBus::Message& message);

inline constexpr std::string_view kMarkerBegin = "load-";

}  // namespace Campaign
