// What complications can show.

#pragma once

#include <span>
#include <string_view>

namespace DataUtil {

struct Source {
    const char* name;
    bool hasShare;         // can be drawn as an arc
    bool needsPhone;       // shows data of a paired phone
    const char* skeleton;  // of the time or date that it shows, unless the slot has its own; or null
};
extern const std::span<const Source> kSources;
// The source of that name, or null; "empty" is none.
const Source* FindSource(std::string_view name);

inline constexpr std::string_view kWorldClockSource = "worldclock";
inline constexpr std::string_view kEmptySource = "empty";

}  // namespace DataUtil
