// The colour names that authors know from style sheets and try here.

#pragma once

#include <string_view>

namespace DataUtil {

// The value of that colour as #RRGGBB, or an empty text.
std::string_view ValueOfColor(std::string_view name);

}  // namespace DataUtil
