// The steps of checking a face document beyond its structure. Each collects everything that it finds.

#pragma once

#include "face-document.h"

namespace DataUtil {

constexpr std::size_t kMostGroups = 16;
constexpr std::size_t kMostSlots = 8;

// Fills the document from its nodes: groups, slots, texts. Ids, defaults and palettes are checked on the way.
void FillDocument(FaceDocument& document, Findings& findings);

// The user's picks and placements into the document. What names something that does not exist (any more) is
// left out with a note, so that a face survives an update of its author's part.
void FillSelection(FaceDocument& document, Findings& findings);

// Texts: every key used exists in the default language; translations have the same keys.
void CheckTexts(const FaceDocument& document, Findings& findings);

// Conditions: what they name exists, they depend on each other without a circle, every option matters.
void CheckConditions(const FaceDocument& document, Findings& findings);

// The drawing: colours, gradients, texts, ticks, sources.
void CheckScene(const FaceDocument& document, Findings& findings);

}  // namespace DataUtil
