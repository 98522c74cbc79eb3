// The fonts that texts are drawn with.
//
// A watch draws with a chosen set of families, found by their files' names wherever the system keeps fonts.
// So a face looks alike whatever else is installed, and the first text costs 2 ms where opening all fonts of
// a full system costs 15. Characters that the set lacks come from the system's other fonts, which are opened
// when the first such character is drawn.

#pragma once

#include <pango/pango.h>

#include <memory>
#include <string>
#include <string_view>

#include "releases.h"

namespace Drawing {

enum class FontSource {
    kOwn,     // the chosen set
    kSystem,  // all fonts of the system
};

// Ends a context, its map of fonts and what was read of them.
void CloseFonts(PangoContext* context);
using FontContextPtr = std::unique_ptr<PangoContext, Releases<CloseFonts>>;

// A new context without hinting, so that a text has the same shape at every size and place. Never null; with
// nothing installed it has no glyphs.
FontContextPtr OpenFonts(FontSource source);

// The families in which the characters of a text are looked up, in this order, as Pango's list. `font` is
// "sans", "serif" or "mono"; `language` ("ko", "ko-KR", "ko_KR") decides whose form of a character comes
// first.
std::string FamiliesOf(std::string_view font, std::string_view language);

}  // namespace Drawing
