// Setting the world clock of a slot.

#pragma once

#include <string>

#include "face-document.h"

namespace DataUtil {

// What replaces the values in effect; null leaves one as it is. An empty country or zone name takes it away.
struct WorldClockUpdate {
    const char* city = nullptr;
    const char* country = nullptr;
    const char* timezone = nullptr;
    const char* timezonePath = nullptr;
};

// Places a world clock in the slot. False when there is no such slot, it offers none or a value is bad; then
// the document is unchanged and `problem` says in one line why.
bool UpdateWorldClock(FaceDocument& document, const char* slot, const WorldClockUpdate& update,
                      std::string& problem);

}  // namespace DataUtil
