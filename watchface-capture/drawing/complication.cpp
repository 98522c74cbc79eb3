// Complications with the samples that previews show.

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "dates.h"
#include "fonts.h"
#include "icons.h"
#include "ink.h"
#include "painter.h"

namespace Drawing {
namespace {

// What a source shows in previews; data-util's table says what more there is to a source.
struct Sample {
    std::string_view source;
    const char* text = "";               // fixed, or
    std::optional<TimeOfDay> time = {};  // a time of day; its pattern is kTimeOfDay
    double share = 0;
};
constexpr char kTimeOfDay[] = "Jmm";

constexpr Sample kSamples[] = {
    {"battery", "82%",     {}, 0.82},
    {"pedometer",     "6240",              {}, 0.624},
    {"heartrate","72",{}, 0.36},
    {"water",         "5",        {}, 0.625},
    {"caffeine",       "2",                    {}, 0.5},
    {"weather",   "21°"},
    {"calendar",    "",             TimeOfDay{11, 0, 0}},
    {"alarm","",TimeOfDay{6, 30, 0}},
    {"d-day",         "D-12"         },
    {"notification",         "3"        },
};
constexpr Sample kNoSample{""};

// A complication that is being painted.
struct Slot {
    const Element& e;
    const DataUtil::Source& source;
    const Sample& sample;
};

struct Box {
    double x, y, width, height;
    Box Upper() const { return {x, y, width, height / 2}; }
    Box Lower() const { return {x, y + height / 2, width, height / 2}; }
};

// The time that a source shows: a world clock's where it is, else the watch's.
Moment ClockOf(Painter& painter, const Slot& slot)
{
    return slot.source.name == DataUtil::kWorldClockSource ? MomentOf(painter, slot.e) : painter.watchMoment;
}

std::string InCase(const Painter& painter, const Element& e, std::string text)
{
    return e.Is("case", "upper") ? ToUpper(text, painter.settings.language) : text;
}

std::string TextOf(Painter& painter, const Slot& slot)
{
    std::string text = slot.sample.text;
    if (slot.sample.time) {
        text = painter.dates.Format(kTimeOfDay, painter.settings,
                                    painter.dates.At(painter.settings.timezone, *slot.sample.time));
    } else if (slot.source.skeleton) {
        const bool own = slot.e.Has("skeleton");
        text = painter.dates.Format(own ? slot.e.Text("skeleton") : slot.source.skeleton, painter.settings,
                                    ClockOf(painter, slot));
    }
    return InCase(painter, slot.e, std::move(text));
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
    TellBox(painter, Ink::Kind::kIcon, {x, y, x + size, y + size});
    const Color color = e.PaintOr("icon-color", *e.Paint("color"));
    const auto paint = [&] {
        SetSource(painter.cr, {color.red, color.green, color.blue, 1});
        PaintIcon(painter.cr, source, x, y, size);
    };
    if (color.alpha >= 1) {
        paint();
        return;
    }
    // The parts of an icon overlap, so a translucent one is made opaque first and then laid over.
    cairo_save(painter.cr);
    cairo_rectangle(painter.cr, x, y, size, size);
    cairo_clip(painter.cr);
    PaintAsOne(painter, color.alpha, paint);
    cairo_restore(painter.cr);
}

void ShowIconAndText(Painter& painter, const Slot& slot, const Box& box)
{
    const std::string text = TextOf(painter, slot);
    const bool icon = HasIcon(slot.source.name);
    if (icon) ShowIcon(painter, slot.e, box, text.empty() ? box : box.Upper(), slot.source.name);
    if (!text.empty()) ShowText(painter, slot.e, icon ? box.Lower() : box, text);
}

void Along(const Painter& painter, const Box& box, double radius, double start, double sweep)
{
    cairo_t* cr = painter.cr;
    const auto along = sweep < 0 ? cairo_arc_negative : cairo_arc;
    cairo_new_sub_path(cr);
    along(cr, box.x + box.width / 2, box.y + box.height / 2, radius, CairoAngle(start),
          CairoAngle(start + sweep));
    TellShape(painter, cairo_get_line_width(cr) / 2);
    cairo_stroke(cr);
}

// The circle that a stroke follows whose outer edge touches the nearer sides of the box.
double RadiusIn(const Box& box, double stroke)
{
    return std::min(box.width, box.height) / 2 - stroke / 2;
}

void ShowArc(Painter& painter, const Slot& slot, const Box& box)
{
    const Element& e = slot.e;
    const double stroke = e.Number("stroke-width"), radius = RadiusIn(box, stroke);
    if (radius <= 0 || stroke <= 0) return;
    const double start = e.Number("start"), sweep = e.Number("sweep");
    cairo_set_line_width(painter.cr, stroke);
    cairo_set_line_cap(painter.cr, e.Is("cap", "round") ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
    if (const auto track = e.Paint("track")) {
        SetSource(painter.cr, *track);
        Along(painter, box, radius, start, sweep);
    }
    if (slot.sample.share > 0) {
        SetSource(painter.cr, e.PaintOr("accent", *e.Paint("color")));
        Along(painter, box, radius, start, sweep * slot.sample.share);
    }
}

void ShowGauge(Painter& painter, const Slot& slot, const Box& box)
{
    ShowArc(painter, slot, box);
    const double side = 0.6 * std::min(box.width, box.height);
    ShowIconAndText(painter, slot,
                    {box.x + (box.width - side) / 2, box.y + (box.height - side) / 2, side, side});
}

void ShowTextAlone(Painter& painter, const Slot& slot, const Box& box)
{
    const std::string text = TextOf(painter, slot);
    text.empty() && HasIcon(slot.source.name) ? ShowIcon(painter, slot.e, box, box, slot.source.name)
                                              : ShowText(painter, slot.e, box, text);
}

void ShowCity(Painter& painter, const Slot& slot, const Box& box)
{
    ShowText(painter, slot.e, box.Upper(), InCase(painter, slot.e, std::string(slot.e.Text("city"))));
    ShowText(painter, slot.e, box.Lower(), TextOf(painter, slot));
}

void ShowDialHand(const Painter& painter, const Box& box, double degrees, double length)
{
    cairo_t* cr = painter.cr;
    const double x = box.x + box.width / 2, y = box.y + box.height / 2, angle = degrees * kDegree;
    cairo_move_to(cr, x, y);
    cairo_line_to(cr, x + length * std::sin(angle), y - length * std::cos(angle));
    TellShape(painter, cairo_get_line_width(cr) / 2);
    cairo_stroke(cr);
}

void ShowDial(Painter& painter, const Slot& slot, const Box& box)
{
    const Element& e = slot.e;
    const double stroke = e.Number("stroke-width"), radius = RadiusIn(box, stroke);
    if (radius <= 0 || stroke <= 0) return;
    cairo_set_line_width(painter.cr, stroke);
    if (const auto track = e.Paint("track")) {
        SetSource(painter.cr, *track);
        Along(painter, box, radius, 0, 360);
    }
    const TimeOfDay time = ClockOf(painter, slot).time;
    cairo_set_line_cap(painter.cr, CAIRO_LINE_CAP_ROUND);
    SetSource(painter.cr, *e.Paint("color"));
    ShowDialHand(painter, box, 30 * time.hour + time.minute / 2.0, 0.5 * radius);
    SetSource(painter.cr, e.PaintOr("accent", *e.Paint("color")));
    ShowDialHand(painter, box, 6 * time.minute, 0.75 * radius);
}

// What a role needs of its source, and how it is painted.
struct Role {
    std::string_view name;
    bool needsShare, needsClock;
    void (*show)(Painter&, const Slot&, const Box&);
};
constexpr Role kRoles[] = {
    {"text",      false, false, ShowTextAlone  },
    {"icon-text", false, false, ShowIconAndText},
    {"gauge",     true,  false, ShowGauge      },
    {"arc",       true,  false, ShowArc        },
    {"city",      false, true,  ShowCity       },
    {"dial",      false, true,  ShowDial       },
};

}  // namespace

void PaintComplication(Painter& painter, const Element& e)
{
    if (!e.Has("role")) return;  // an empty slot
    if (!e.Paint("color")) e.Fail("a complication with a role needs a colour");
    const DataUtil::Source* source = DataUtil::FindSource(e.Text("source"));
    if (!source) e.Fail("an empty complication has no role");
    const auto role = std::find_if(std::begin(kRoles), std::end(kRoles),
                                   [&](const Role& r) { return e.Is("role", r.name); });
    if (role->needsShare && !source->hasShare) e.Fail("its source has no share that an arc could show");
    if (role->needsClock && source->name != DataUtil::kWorldClockSource)
        e.Fail("only a world clock can be shown so");

    const Box box{e.Number("x"), e.Number("y"), e.Number("width"), e.Number("height")};
    const double pixels = std::max(box.width, box.height) * painter.scale;
    painter.budget.Charge(e, 4096 + 2 * std::min(pixels * pixels, 1.0 * painter.width * painter.height));
    const auto sample = std::find_if(std::begin(kSamples), std::end(kSamples),
                                     [&](const Sample& s) { return s.source == source->name; });
    role->show(painter, {e, *source, sample == std::end(kSamples) ? kNoSample : *sample}, box);
}

}  // namespace Drawing
