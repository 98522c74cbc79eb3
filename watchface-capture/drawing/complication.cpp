// Complications with the samples that previews show.

#include <algorithm>
#include <string>
#include <string_view>

#include "dates.h"
#include "fonts.h"
#include "icons.h"
#include "painter.h"

namespace Drawing {
namespace {

struct Sample {
    std::string_view source;
    const char* text;      // fixed, or
    const char* skeleton;  // by skeleton at the given time
    TimeOfDay time;
    double share;  // below 0: none
};

// The format's table. The date's skeleton is the complication's own.
constexpr Sample kSamples[] = {
    {"date",         "",     nullptr, {},         -1   },
    {"battery",      "82%",  nullptr, {},         0.82 },
    {"pedometer",    "6240", nullptr, {},         0.624},
    {"heartrate",    "72",   nullptr, {},         0.36 },
    {"water",        "5",    nullptr, {},         0.625},
    {"caffeine",     "2",    nullptr, {},         0.5  },
    {"weather",      "21°", nullptr, {},         -1   },
    {"calendar",     "",     "Jmm",   {11, 0, 0}, -1   },
    {"alarm",        "",     "Jmm",   {6, 30, 0}, -1   },
    {"d-day",        "D-12", nullptr, {},         -1   },
    {"notification", "3",    nullptr, {},         -1   },
    {"shortcut",     "",     nullptr, {},         -1   },
    {"moonphase",    "",     nullptr, {},         -1   },
};

struct Box {
    double x, y, width, height;
    Box Upper() const { return {x, y, width, height / 2}; }
    Box Lower() const { return {x, y + height / 2, width, height / 2}; }
};

std::string TextOf(Painter& painter, const Element& e, const Sample& sample)
{
    std::string text = sample.text;
    if (sample.source == "date") {
        const std::string_view skeleton = e.Has("skeleton") ? e.Text("skeleton") : "d";
        text = painter.dates.Format(skeleton, painter.settings, painter.time);
    } else if (sample.skeleton) {
        text = painter.dates.Format(sample.skeleton, painter.settings, sample.time);
    }
    return e.Is("case", "upper") ? ToUpper(text, painter.settings.language) : text;
}

void ShowText(Painter& painter, const Element& e, const Box& box, const std::string& text)
{
    SetSource(painter.cr, *e.Paint("color"));
    const TextStyle style = StyleOf(e, e.Number("height") / 3, painter.settings.language);
    ShowLine(painter, e, {box.x + box.width / 2, box.y + box.height / 2, 0.5, true, box.width}, text, style);
}

// A square of half the height of the whole box, centred in `place`.
void ShowIcon(Painter& painter, const Element& e, const Box& whole, const Box& place, std::string_view source)
{
    const double size = std::min(whole.height / 2, whole.width);
    if (size <= 0) return;
    const double x = place.x + (place.width - size) / 2, y = place.y + (place.height - size) / 2;
    cairo_save(painter.cr);
    // The parts of an icon overlap, so a translucent one is made opaque first and then laid over.
    const Color color = e.PaintOr("icon-color", *e.Paint("color"));
    const bool group = color.alpha < 1;
    if (group) {
        cairo_rectangle(painter.cr, x, y, size, size);
        cairo_clip(painter.cr);
        cairo_push_group(painter.cr);
    }
    SetSource(painter.cr, {color.red, color.green, color.blue, 1});
    PaintIcon(painter.cr, source, x, y, size);
    if (group) {
        cairo_pop_group_to_source(painter.cr);
        cairo_paint_with_alpha(painter.cr, color.alpha);
    }
    cairo_restore(painter.cr);
}

void ShowIconAndText(Painter& painter, const Element& e, const Box& box, const Sample& sample)
{
    const std::string text = TextOf(painter, e, sample);
    const bool icon = HasIcon(sample.source);
    if (icon) ShowIcon(painter, e, box, text.empty() ? box : box.Upper(), sample.source);
    if (!text.empty()) ShowText(painter, e, icon ? box.Lower() : box, text);
}

void Along(cairo_t* cr, const Box& box, double radius, double start, double sweep)
{
    const auto along = sweep < 0 ? cairo_arc_negative : cairo_arc;
    cairo_new_sub_path(cr);
    along(cr, box.x + box.width / 2, box.y + box.height / 2, radius, CairoAngle(start),
          CairoAngle(start + sweep));
    cairo_stroke(cr);
}

void ShowArc(Painter& painter, const Element& e, const Box& box, double share)
{
    const double stroke = e.Number("stroke-width"), radius = std::min(box.width, box.height) / 2 - stroke / 2;
    if (radius <= 0 || stroke <= 0) return;
    const double start = e.Number("start"), sweep = e.Number("sweep");
    cairo_set_line_width(painter.cr, stroke);
    cairo_set_line_cap(painter.cr, e.Is("cap", "round") ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
    if (const auto track = e.Paint("track")) {
        SetSource(painter.cr, *track);
        Along(painter.cr, box, radius, start, sweep);
    }
    if (share > 0) {
        SetSource(painter.cr, e.PaintOr("accent", *e.Paint("color")));
        Along(painter.cr, box, radius, start, sweep * share);
    }
}

}  // namespace

void PaintComplication(Painter& painter, const Element& e)
{
    if (!e.Has("role")) return;  // an empty slot
    if (!e.Paint("color")) e.Fail("a complication with a role needs a colour");
    const auto sample = std::find_if(std::begin(kSamples), std::end(kSamples),
                                     [&](const Sample& s) { return e.Is("source", s.source); });
    if (sample == std::end(kSamples)) e.Fail("an empty complication has no role");
    const bool gauge = e.Is("role", "gauge");
    const bool arc = gauge || e.Is("role", "arc");
    if (arc && sample->share < 0) e.Fail("its source has no share that an arc could show");

    const Box box{e.Number("x"), e.Number("y"), e.Number("width"), e.Number("height")};
    const double pixels = std::max(box.width, box.height) * painter.scale;
    painter.budget.Charge(e, 4096 + 2 * std::min(pixels * pixels, 1.0 * painter.width * painter.height));
    if (arc) ShowArc(painter, e, box, sample->share);
    if (gauge) {
        const double side = 0.6 * std::min(box.width, box.height);
        ShowIconAndText(painter, e,
                        {box.x + (box.width - side) / 2, box.y + (box.height - side) / 2, side, side},
                        *sample);
    } else if (e.Is("role", "icon-text")) {
        ShowIconAndText(painter, e, box, *sample);
    } else if (!arc) {
        const std::string text = TextOf(painter, e, *sample);
        text.empty() && HasIcon(sample->source) ? ShowIcon(painter, e, box, box, sample->source)
                                                : ShowText(painter, e, box, text);
    }
}

}  // namespace Drawing
