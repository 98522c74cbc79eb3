// What a peer's bytes are read as, when they claim to be the `a{sv}` of a message or of a launch request.
// Each check ends the process when it does not hold.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "raw-bus.h"

namespace Fuzz {

using Strings = std::vector<std::string>;
using Values = std::map<std::string, std::variant<std::string, Strings>>;

// How much a message may hold: bytes of keys, texts and elements, one more for each element; and how many of
// these, whatever they weigh.
inline constexpr std::size_t kMostBytes = std::size_t{8} << 20;
inline constexpr std::size_t kMostStrings = 65536;

// What is to be read from a body; nothing where it has to be refused.
struct Reading {
    std::optional<Values> bundle;
    std::optional<Values> launchData;
};

// Whether an `s` may hold it: UTF-8, no NUL, no noncharacter.
bool IsText(std::string_view text);

bool IsTooMuch(const Values& values);

// A body arrives over a socket: it is read as said and refused with a reason otherwise. What was read is
// written and read again, the same.
void CheckReading(const TestSupport::Body& body, const Reading& expected);

}  // namespace Fuzz
