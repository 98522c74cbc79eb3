// Lines of text.
//
// Fonts are opened when the first text is drawn (that costs milliseconds) and stay open. A line that the
// watch's own set of fonts cannot show whole is shaped with all fonts of the system.

#pragma once

#include <pango/pango.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "font-set.h"
#include "painter.h"
#include "releases.h"

namespace Drawing {

struct TextStyle {
    std::string font = "sans";  // sans, serif, mono
    double size = 16;           // em height, canvas units
    int weight = 400;
    double spacing = 0;  // additional distance between letters
    // Decides between the forms that languages give to one character, and the direction of a text without
    // letters.
    std::string language;
};

TextStyle StyleOf(const Element& element, double defaultSize, std::string_view language);

using LayoutPtr = std::unique_ptr<PangoLayout, Releases<g_object_unref>>;

// One shaped line.
struct TextLine {
    LayoutPtr layout;     // at a size of its own
    double scale = 1;     // canvas units for each unit of the layout
    double width = 0;     // advance, canvas units
    std::string missing;  // characters that no font has, as "U+AC00 U+AC01"
};

// What the line inks when it begins at (0, 0), canvas units.
Area InkOf(const TextLine& line);

class Fonts {
public:
    TextLine Shape(std::string_view text, const TextStyle& style);
    // How far the middle of the digit 0 is above the baseline.
    double DigitMiddle(const TextStyle& style);
    // Paints with the current source; the line begins at (x, baseline), whatever its direction.
    static void Show(cairo_t* cr, const TextLine& line, double x, double baseline);

private:
    static TextLine ShapeWith(FontSource source, std::string_view text, const TextStyle& style);

    std::map<std::pair<std::string, int>, double> mDigitMiddles;  // by font and weight, for a size of 1
};

// Where a line stands: at (x, y), which is the share `anchor` of its width from its left end, with the
// baseline there or the middle of its digits; scaled down about that place when it is wider than `maxWidth`
// (0: no limit).
struct LinePlace {
    double x = 0, y = 0;
    double anchor = 0.5;
    bool middle = true;
    double maxWidth = 0;
};

// Shapes and paints with the current source, and warns of characters that no font has.
void ShowLine(Painter& painter, const Element& element, const LinePlace& place, std::string_view text,
              const TextStyle& style);

}  // namespace Drawing
