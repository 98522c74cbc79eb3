// Which names of one kind a document uses.

#pragma once

#include <set>
#include <string_view>

namespace DataUtil {

// An unknown name counts as a use of the one that it is near to, or of all when it is near to none: what is
// unused only because a reference is misspelled is not to be removed. The known names must outlive this.
class Uses {
public:
    // The known name that is used or meant; empty for an unknown name that is near to none.
    void Add(std::string_view meant)
    {
        mNames.insert(meant);
        mAny = mAny || meant.empty();
    }
    bool Has(std::string_view name) const { return mAny || mNames.contains(name); }

private:
    std::set<std::string_view> mNames;
    bool mAny = false;
};

}  // namespace DataUtil
