#include "world-clock.h"

#include <algorithm>

#include "face-checks.h"
#include "nearest-name.h"
#include "shared-rules.h"

namespace DataUtil {

namespace {

// One row a value, in the order of kWorldClock.
struct Field {
    const char* WorldClockUpdate::*update;
    std::string WorldClock::*value;
    bool mayGo;
};
constexpr Field kFields[] = {
    {&WorldClockUpdate::city,         &WorldClock::city,         false},
    {&WorldClockUpdate::country,      &WorldClock::country,      true },
    {&WorldClockUpdate::timezone,     &WorldClock::timezone,     true },
    {&WorldClockUpdate::timezonePath, &WorldClock::timezonePath, false},
};
static_assert(std::size(kFields) == std::size(kWorldClock));

bool Apply(const WorldClockUpdate& update, WorldClock& clock, std::string& problem)
{
    for (std::size_t i = 0; i < std::size(kFields); ++i) {
        const char* text = update.*kFields[i].update;
        if (text == nullptr) continue;
        std::string expected;
        const bool goes = kFields[i].mayGo && *text == '\0';
        const auto value = goes ? std::string() : CanonicalValue(kWorldClock[i], text, expected);
        if (!value) {
            problem = std::string(kWorldClock[i].name) + "=" + Quoted(text) + " must be " + expected;
            return false;
        }
        clock.*kFields[i].value = *value;
    }
    return true;
}

}  // namespace

bool UpdateWorldClock(FaceDocument& document, const char* slot, const WorldClockUpdate& update,
                      std::string& problem)
{
    const std::string name = slot == nullptr ? "" : slot;
    const auto at = std::find_if(document.slots.begin(), document.slots.end(),
                                 [&](const Slot& candidate) { return candidate.name == name; });
    if (at == document.slots.end()) {
        problem = "there is no slot " + Quoted(name) + Suggestion(name, NamesOf(document.slots, &Slot::name));
        return false;
    }
    const auto offer = std::find_if(at->offers.begin(), at->offers.end(), [](const Offer& candidate) {
        return candidate.source == kWorldClockSource;
    });
    if (offer == at->offers.end()) {
        problem = Quoted(name) + " does not offer \"" + std::string(kWorldClockSource) + "\"";
        return false;
    }
    const Resolution resolution = Resolve(document);
    WorldClock clock = resolution.sources.at(name).worldClock.value_or(offer->worldClock);
    if (!Apply(update, clock, problem)) return false;
    // Kept as the offer's, so that what was taken away is not taken from there again.
    offer->worldClock = clock;
    document.selection.places[name] = {std::string(kWorldClockSource), std::nullopt};
    return true;
}

}  // namespace DataUtil
