// The fonts that texts are drawn with.
//
// A watch draws with a chosen set of families, found by their files' names wherever the system keeps fonts.
// So a face looks alike whatever else is installed, and the first text costs 2 ms where opening all fonts of
// a full system costs 15. Characters that the set lacks come from the system's other fonts, which are opened
// when the first such character is drawn.

#pragma once

#include <pango/pango.h>

#include <string>
#include <string_view>

namespace Drawing {

enum class FontSource {
    kOwn,     // the chosen set
    kSystem,  // all fonts of the system
};

// A context without hinting, so that a text has the same shape at every size and place. Never null; with
// nothing installed it has no glyphs. Opened at the first use, and open until the process ends: Pango looks
// fonts up on threads of its own, which do not bear that the fonts are gone before them.
PangoContext* FontContext(FontSource source);

// The families in which the characters of a text are looked up, in this order, as Pango's list. `font` is
// "sans", "serif" or "mono"; `language` ("ko", "ko-KR", "ko_KR") decides whose form of a character comes
// first.
std::string FamiliesOf(std::string_view font, std::string_view language);

}  // namespace Drawing
