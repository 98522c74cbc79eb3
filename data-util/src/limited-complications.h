// Complications that the watch may not offer, as while no phone is paired.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "face-document.h"

namespace DataUtil {

// What is limited. "empty" never is.
class LimitRule {
public:
    // Without a list: every source that needs a paired phone, as the slot offers it. With one: the sources of
    // the list, separated by spaces, and no other.
    explicit LimitRule(const char* sources);

    bool Limits(const Slot& slot, std::string_view source) const;

private:
    bool mByNeed;
    std::vector<std::string> mSources;
};

// True when a slot that is shown has a limited source.
bool HasLimited(const FaceDocument& document, const LimitRule& rule);

// Places in every slot whose source in effect is limited the first of its fallbacks that is not.
void RemoveLimited(FaceDocument& document, const LimitRule& rule);

}  // namespace DataUtil
