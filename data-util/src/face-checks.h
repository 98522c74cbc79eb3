// The steps of checking a face document beyond its structure. Each collects everything that it finds.

#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "face-document.h"

namespace DataUtil {

constexpr std::size_t kMostGroups = 16;
constexpr std::size_t kMostSlots = 8;
constexpr std::size_t kMostUsages = 2;

// Names that are misspelled where they are defined: nothing names them so, but what is near to them. Either
// spelling counts as refused from then on.
void CheckDefinitions(const Node& root, Findings& findings);

// Fills the document from its nodes: groups, photos, presets, slots, texts. Ids, defaults and palettes are
// checked on the way.
void FillDocument(FaceDocument& document, Findings& findings);

// The entries of `selection`, of this or an older document, into `document.selection`. What names something
// that does not exist (any more) is left out with a note, so that a face survives an update of its author's
// part.
void FillSelection(const Node& selection, FaceDocument& document, Findings& findings);

// A term that an element depends on, and the attribute that says so: its `when`, or the slot whose world
// clock it shows.
struct Condition {
    Term term;
    const char* attribute;
};
std::vector<Condition> ConditionsOf(const Node& node);
// The same, the terms alone.
std::vector<Term> TermsOf(const Node& node);

// True for the value of a paint that names a palette's role.
bool IsRole(std::string_view color);

// What the attributes of an offer, a placement or a complication say about a world clock.
WorldClock WorldClockOf(const Node& node);
Placement PlacementOf(const Node& node);

// The item of that id, or null.
template <typename Item>
const Item* FindById(const std::vector<Item>& items, const std::string Item::*id, std::string_view wanted)
{
    const auto at =
        std::find_if(items.begin(), items.end(), [&](const Item& item) { return item.*id == wanted; });
    return at == items.end() ? nullptr : &*at;
}

template <typename Item>
std::vector<std::string_view> NamesOf(const std::vector<Item>& items, const std::string Item::*id)
{
    std::vector<std::string_view> names;
    names.reserve(items.size());
    for (const Item& item : items) names.emplace_back(item.*id);
    return names;
}

// That `slot` has `source`, known or not, among its `offers` not: what is wrong and what to choose instead.
// `meant` is the offer that it is near to, or empty.
std::string NotOffered(const std::string& slot, std::string_view source, std::string_view meant,
                       const std::vector<std::string_view>& offers);

// Conditions: what they name exists, they depend on each other without a circle, every option matters.
void CheckConditions(const FaceDocument& document, Findings& findings);

// The drawing, and whatever one element alone can have wrong: colours, gradients, ticks, sources.
void CheckScene(const FaceDocument& document, Findings& findings);

}  // namespace DataUtil
