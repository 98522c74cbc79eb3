#include "random-selection.h"

#include <random>

namespace {

class Choices {
public:
    explicit Choices(unsigned seed) : mRandom(seed) {}

    bool Often() { return mRandom() % 3 != 0; }
    std::size_t Below(std::size_t count) { return mRandom() % count; }
    template <typename Items>
    auto& OneOf(const Items& items)
    {
        return items[Below(std::size(items))];
    }

private:
    std::mt19937 mRandom;
};

DataUtil::WorldClock SomeClock(Choices& choices)
{
    constexpr const char* kCities[] = {"", "Lima", "São Paulo", "<&\"'>", "도쿄"};
    constexpr const char* kCountries[] = {"", "Peru", "A \"B\" & C"};
    constexpr const char* kZones[] = {"", "JST", "GMT+9"};
    constexpr const char* kPaths[] = {"UTC", "Asia/Tokyo", "/usr/share/zoneinfo/America/Lima"};
    return {choices.OneOf(kCities), choices.OneOf(kCountries), choices.OneOf(kZones), choices.OneOf(kPaths)};
}

DataUtil::Placement SomePlacement(const DataUtil::Slot& slot, Choices& choices)
{
    const std::size_t index = choices.Below(slot.offers.size() + 1);
    if (index == slot.offers.size()) return {std::string(DataUtil::kEmptySource), {}};
    DataUtil::Placement placement{slot.offers[index].source, {}};
    if (placement.source == DataUtil::kWorldClockSource && choices.Often())
        placement.worldClock = SomeClock(choices);
    return placement;
}

}  // namespace

DataUtil::Selection RandomSelection(const DataUtil::FaceDocument& document, unsigned seed)
{
    constexpr const char* kFiles[] = {"a.png", "it's \"me\" & <you>.jpg", "바다 1.png", "...", " "};
    Choices choices(seed);
    DataUtil::Selection selection;
    if (!document.presets.empty() && choices.Often()) selection.preset = choices.OneOf(document.presets).id;
    for (const DataUtil::Group& group : document.groups) {
        if (choices.Often()) selection.picks[group.id] = choices.OneOf(group.options).id;
    }
    for (const DataUtil::Slot& slot : document.slots) {
        if (choices.Often()) selection.places[slot.name] = SomePlacement(slot, choices);
    }
    for (const DataUtil::Photos& photos : document.photos) {
        if (choices.Often()) selection.photos[photos.id] = choices.OneOf(kFiles);
    }
    return selection;
}
