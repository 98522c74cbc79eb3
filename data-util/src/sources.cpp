#include "sources.h"

#include <algorithm>

namespace DataUtil {

namespace {

constexpr Source kSourceTable[] = {
    {"date",         false, false, "d"    },
    {"battery",      true,  false, nullptr},
    {"pedometer",    true,  false, nullptr},
    {"heartrate",    true,  false, nullptr},
    {"water",        true,  false, nullptr},
    {"caffeine",     true,  false, nullptr},
    {"weather",      false, true,  nullptr},
    {"calendar",     false, true,  nullptr},
    {"alarm",        false, false, nullptr},
    {"d-day",        false, false, nullptr},
    {"notification", false, true,  nullptr},
    {"shortcut",     false, false, nullptr},
    {"moonphase",    false, false, nullptr},
    {"worldclock",   false, false, "Jmm"  },
};

}  // namespace

constexpr std::span<const Source> kSources = kSourceTable;

const Source* FindSource(std::string_view name)
{
    const auto at =
        std::find_if(kSources.begin(), kSources.end(), [&](const Source& s) { return name == s.name; });
    return at == kSources.end() ? nullptr : &*at;
}

}  // namespace DataUtil
