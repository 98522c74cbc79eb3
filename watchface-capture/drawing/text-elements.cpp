// Texts and numerals.

#include <string>

#include "dates.h"
#include "fonts.h"
#include "ink.h"
#include "painter.h"
#include "texts.h"

namespace Drawing {
namespace {

// About what shaping and painting a line costs, in the budget's unit.
constexpr double kLineWork = 20000, kByteWork = 1500;

// A text and the language that it is in.
struct Content {
    std::string text, language;
};

Content ContentOf(Painter& painter, const Element& e)
{
    const std::string& language = painter.settings.language;
    if (e.Has("text")) return {std::string(e.Text("text")), language};
    if (e.Has("skeleton")) {
        std::string text = painter.dates.Format(e.Text("skeleton"), painter.settings, painter.moment);
        if (text.empty()) painter.warnings.push_back(e.At("the skeleton gives no text"));
        return {std::move(text), language};
    }
    const Texts::Text found = painter.texts.Find(e.Text("text-key"), language);
    if (!found.text.data()) e.Fail("no language has the text \"" + std::string(e.Text("text-key")) + "\"");
    return {std::string(found.text), std::string(found.language)};
}

}  // namespace

void ShowLine(Painter& painter, const Element& element, const LinePlace& place, std::string_view text,
              const TextStyle& style)
{
    if (text.empty()) return;
    const auto bytes = static_cast<double>(text.size());
    painter.budget.Charge(element, kLineWork + bytes * (kByteWork + style.size * painter.scale));
    const TextLine line = painter.fonts.Shape(text, style);
    if (!line.missing.empty()) painter.warnings.push_back(element.At("no font has " + line.missing));
    cairo_save(painter.cr);
    cairo_translate(painter.cr, place.x, place.y);
    const double shrink = place.maxWidth > 0 && line.width > place.maxWidth ? place.maxWidth / line.width : 1;
    cairo_scale(painter.cr, shrink, shrink);
    const double baseline = place.middle ? painter.fonts.DigitMiddle(style) : 0;
    const double begin = -place.anchor * line.width;
    if (painter.observer) {
        const Area ink = InkOf(line);
        TellBox(painter, Ink::Kind::kText,
                {begin + ink.left, baseline + ink.top, begin + ink.right, baseline + ink.bottom}, text,
                shrink);
    }
    Fonts::Show(painter.cr, line, begin, baseline);
    cairo_restore(painter.cr);
}

void PaintText(Painter& painter, const Element& e)
{
    Content content = ContentOf(painter, e);
    if (e.Is("case", "upper")) content.text = ToUpper(content.text, content.language);
    const auto color = e.Paint("color");
    if (!color) return;
    SetSource(painter.cr, *color);
    const double anchor = e.Is("align", "left") ? 0 : e.Is("align", "right") ? 1 : 0.5;
    ShowLine(painter, e,
             {e.Number("x"), e.Number("y"), anchor, e.Is("valign", "middle"), e.Number("max-width")},
             content.text, StyleOf(e, 0, content.language));
}

void PaintNumerals(Painter& painter, const Element& e)
{
    const auto color = e.Paint("color");
    const auto labels = DataUtil::SplitAtSpaces(e.Text("labels"));
    const TextStyle style = StyleOf(e, 0, painter.settings.language);
    if (!color || labels.empty()) return;
    for (size_t i = 0; i < labels.size(); ++i) {
        if (labels[i] == "-") continue;
        const double angle = 360.0 * static_cast<double>(i) / static_cast<double>(labels.size());
        cairo_save(painter.cr);
        cairo_translate(painter.cr, e.Number("cx"), e.Number("cy"));
        cairo_rotate(painter.cr, angle * kDegree);
        cairo_translate(painter.cr, 0, -e.Number("r"));
        const bool lower = angle > 90 && angle < 270;
        if (!e.Is("turn", "radial")) {
            cairo_rotate(painter.cr, -angle * kDegree);
        } else if (lower) {
            cairo_rotate(painter.cr, std::numbers::pi);
        }
        SetSource(painter.cr, *color);
        ShowLine(painter, e, {0, 0, 0.5, true, 0}, labels[i], style);
        cairo_restore(painter.cr);
    }
}

}  // namespace Drawing
