#include "usage-items.h"

namespace DataUtil {

std::string CombinationText(const FaceDocument& document)
{
    const Resolution resolution = Resolve(document);
    std::string text;
    const auto add = [&](const std::string& subject, const std::string& value) {
        if (resolution.shown.at(subject)) text += (text.empty() ? "" : " ") + subject + "=" + value;
    };
    for (const Group& group : document.groups) add(group.id, resolution.options.at(group.id));
    for (const Photos& photos : document.photos)
        add(photos.id, document.selection.photos.count(photos.id) != 0 ? "own" : "default");
    for (const Slot& slot : document.slots) add(slot.name, resolution.sources.at(slot.name).source);
    return text;
}

UsageItems UsageItemsOf(const FaceDocument& document)
{
    const Resolution resolution = Resolve(document);
    UsageItems items;
    for (const Group& group : document.groups) {
        if (!group.usage.empty()) items.picks.emplace_back(group.usage, resolution.options.at(group.id));
    }
    items.complicationFeature = document.complicationUsage;
    for (const Slot& slot : document.slots) {
        const std::string& source = resolution.sources.at(slot.name).source;
        if (resolution.shown.at(slot.name) && source != kEmptySource) items.complications.push_back(source);
    }
    return items;
}

}  // namespace DataUtil
