// What the service keeps of the world clock of a group of a face: the preferences "FACE-GROUP-FIELD".

#pragma once

#include <string>
#include <string_view>

#include "selection.h"

namespace Wfctl {

struct WorldClockField {
    std::string_view name;                     // also the key in the service's answer
    std::string DataUtil::WorldClock::*value;  // null: not the clock's, but how it was set
};
inline constexpr WorldClockField kWorldClockFields[] = {
    {"city",         &DataUtil::WorldClock::city        },
    {"country",      &DataUtil::WorldClock::country     },
    {"timezone",     &DataUtil::WorldClock::timezone    },
    {"timezonePath", &DataUtil::WorldClock::timezonePath},
    {"updatedMode",  nullptr                            },
};

}  // namespace Wfctl
