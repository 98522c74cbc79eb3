#include "uses.h"

#include <algorithm>

#include "nearest-name.h"

namespace DataUtil {

void Uses::Add(std::string_view name, const std::vector<std::string_view>& known)
{
    const auto at = std::find(known.begin(), known.end(), name);
    const std::string_view meant = at == known.end() ? NearestName(name, known) : *at;
    mNames.insert(meant);
    mAny = mAny || meant.empty();
}

}  // namespace DataUtil
