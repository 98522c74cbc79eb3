// How much the evaluation store may keep among an application's preferences.
//
// Whoever can reach the service's open port saves entries there, so they are limited: for each application id
// that saves, and in total, each in number and in size. No other preference is counted, and none is refused.
//
//   entry     a preference whose key ends in kEvaluationKeyEnd; it belongs to the application whose id stands
//             in the key before the first "+"
//   size      bytes of its key, and of its value where that is a text

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Platform {

inline constexpr std::string_view kEvaluationKeyEnd = "+evaluation-helper-data-duration";

struct EvaluationUse {
    std::size_t entries = 0;
    std::size_t bytes = 0;
};

inline constexpr EvaluationUse kMostEvaluationOfOne = {64, std::size_t{16} * 1024};
inline constexpr EvaluationUse kMostEvaluation = {512, std::size_t{128} * 1024};

// What the preference store answers where an entry finds no room: the code of a database that is full.
inline constexpr int kNoRoomForEvaluation = 13;

bool IsEvaluationKey(std::string_view key);

// One entry that is to be written, beside those that are kept.
class EvaluationRoom {
public:
    // The texts are the caller's and outlive this object.
    EvaluationRoom(std::string_view key, std::size_t valueBytes);

    // Is told of each entry that is kept. The one that is to be replaced takes no room.
    void Keeps(std::string_view key, std::size_t valueBytes);

    // Which limit the entry would pass, as a line for the log; empty when there is room for it.
    std::string Refusal() const;

private:
    const std::string_view mKey;
    EvaluationUse mOfOne, mOfAll;  // with the entry
};

}  // namespace Platform
