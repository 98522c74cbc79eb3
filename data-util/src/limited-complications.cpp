#include "limited-complications.h"

#include <algorithm>

namespace DataUtil {

LimitRule::LimitRule(const char* sources) : mByNeed(sources == nullptr)
{
    if (mByNeed) return;
    for (const std::string_view source : SplitAtSpaces(sources)) mSources.emplace_back(source);
}

bool LimitRule::Limits(const Slot& slot, std::string_view source) const
{
    if (source == kEmptySource) return false;
    if (!mByNeed) return std::find(mSources.begin(), mSources.end(), source) != mSources.end();
    const Offer* offer = slot.OfferOf(source);
    return offer != nullptr && offer->needsPhone;
}

bool HasLimited(const FaceDocument& document, const LimitRule& rule)
{
    const Resolution resolution = Resolve(document);
    return std::any_of(document.slots.begin(), document.slots.end(), [&](const Slot& slot) {
        return resolution.shown.at(slot.name) && rule.Limits(slot, resolution.sources.at(slot.name).source);
    });
}

void RemoveLimited(FaceDocument& document, const LimitRule& rule)
{
    const Resolution resolution = Resolve(document);
    for (const Slot& slot : document.slots) {
        // Hidden slots too: a source that goes may be what hides them.
        if (!rule.Limits(slot, resolution.sources.at(slot.name).source)) continue;
        const auto other =
            std::find_if(slot.fallbacks.begin(), slot.fallbacks.end(),
                         [&](const std::string& source) { return !rule.Limits(slot, source); });
        document.selection.places[slot.name] = {*other, std::nullopt};
    }
}

}  // namespace DataUtil
