#include "icons.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace Drawing {
namespace {

// Outlines are written as: M x y, L x y, C x1 y1 x2 y2 x y, Z (close); O cx cy r (a circle);
// R x y width height radius (a rectangle). Numbers are parted by blanks.
struct Stroke {
    std::string_view source;
    double width;  // of the line; 0: the outline is filled (even-odd)
    std::string_view outline;
};

// clang-format off
constexpr Stroke kStrokes[] = {
    // A cell lying on its side, filled to the sample's share.
    {"battery", 1.9, "R 1.8 6.4 17.6 11.2 2.6"},
    {"battery", 0, "R 4.2 8.8 10.6 6.4 1 R 20.9 9.6 1.9 4.8 0.95"},
    // A running shoe: the upper, its laces cut out, and the sole below a gap.
    {"pedometer", 0, "M 2.2 7.2 C 2.2 6.4 3 6 3.6 6.4 C 4.7 7.2 6 7.3 7.1 6.7 C 7.7 6.4 8.3 6.1 8.8 5.5 C 9.3 4.9 10.2 4.9 10.7 5.5 "
                     "L 14.6 10 C 15.2 10.7 16 11.1 16.9 11.3 L 19.2 11.7 C 21.3 12.1 22.4 13.2 22.4 14.8 L 2.2 14.8 Z "
                     "M 10.4 9.3 L 11.3 10.4 L 13.1 8.9 L 12.2 7.8 Z M 12.3 11.5 L 13.2 12.6 L 15.1 11 L 14.1 10 Z"},
    {"pedometer", 0, "M 2.2 16.3 L 22.4 16.3 C 22.4 18.2 21.4 19 20 19 L 4 19 C 2.8 19 2.2 18.2 2.2 16.3 Z"},
    {"heartrate", 0, "M 12 21 C 11.5 21 4.6 16.2 2.9 12.4 C 1.3 8.8 2.9 4 7.2 4 C 9.4 4 11.1 5.2 12 6.9 "
                     "C 12.9 5.2 14.6 4 16.8 4 C 21.1 4 22.7 8.8 21.1 12.4 C 19.4 16.2 12.5 21 12 21 Z"},
    // A drop with a gleam.
    {"water", 0, "M 12 1.8 C 12.6 1.8 18.9 9.2 18.9 14.4 C 18.9 18.6 15.8 21.9 12 21.9 C 8.2 21.9 5.1 18.6 5.1 14.4 "
                 "C 5.1 9.2 11.4 1.8 12 1.8 Z "
                 "M 8.6 13.8 C 8 13.8 7.5 14.2 7.5 14.9 C 7.6 17.3 9.3 19.3 11.5 19.6 C 12.2 19.7 12.7 19.2 12.7 18.6 "
                 "C 12.7 18.1 12.4 17.7 11.8 17.6 C 10.6 17.3 9.7 16.3 9.6 14.9 C 9.6 14.2 9.2 13.8 8.6 13.8 Z"},
    // A cup on its saucer, under steam.
    {"caffeine", 0, "M 3.4 9.4 L 16.8 9.4 L 16.8 13.6 C 16.8 16.8 14.6 18.6 11.8 18.6 L 8.4 18.6 C 5.6 18.6 3.4 16.8 3.4 13.6 Z "
                    "R 3 20.4 14.2 1.8 0.9"},
    {"caffeine", 1.8, "M 16.8 10.8 L 18.2 10.8 C 20.2 10.8 21.2 11.8 21.2 13.2 C 21.2 14.6 20.2 15.6 18.2 15.6 L 16 15.6"},
    {"caffeine", 1.7, "M 7.4 6.8 C 6.4 5.6 8.4 4.4 7.4 2.8 M 12.4 6.8 C 11.4 5.6 13.4 4.4 12.4 2.8"},
    // The sun behind a cloud.
    {"weather", 0, "M 10.2 7.4 C 11.3 5.6 13.3 5.1 15 5.6 C 17.5 6.4 18.8 8.8 18.3 11.2 C 17.8 10.9 17.2 10.7 16.5 10.6 "
                   "C 15.8 8.6 13.6 7 10.2 7.4 Z"},
    {"weather", 1.7, "M 14 1.6 L 14 2.9 M 19.9 4 L 19 4.9 M 22.4 9.8 L 21.1 9.8 M 8.3 4 L 9.2 4.9"},
    {"weather", 0, "M 6.6 20.4 C 3.8 20.4 1.8 18.5 1.8 16 C 1.8 13.9 3.2 12.3 5.1 11.8 C 5.7 9.8 7.6 8.7 9.7 8.7 "
                   "C 12.2 8.7 14.2 10.3 14.7 12.6 C 17.1 12.4 19.2 14 19.2 16.5 C 19.2 18.8 17.5 20.4 15.1 20.4 Z"},
    // A sheet with a head, two rings and the days.
    {"calendar", 0, "M 5.4 4 L 18.6 4 C 20.2 4 21.4 5.2 21.4 6.8 L 21.4 18.8 C 21.4 20.4 20.2 21.6 18.6 21.6 L 5.4 21.6 "
                    "C 3.8 21.6 2.6 20.4 2.6 18.8 L 2.6 6.8 C 2.6 5.2 3.8 4 5.4 4 Z "
                    "M 4.7 9.4 L 4.7 18.4 C 4.7 19.1 5.1 19.5 5.8 19.5 L 18.2 19.5 C 18.9 19.5 19.3 19.1 19.3 18.4 L 19.3 9.4 Z "
                    "R 7 11.3 2.6 2.6 0.6 R 10.7 11.3 2.6 2.6 0.6 R 14.4 11.3 2.6 2.6 0.6 R 7 15.1 2.6 2.6 0.6 R 10.7 15.1 2.6 2.6 0.6"},
    {"calendar", 2, "M 7.6 2.4 L 7.6 5 M 16.4 2.4 L 16.4 5"},
    // A bell.
    {"alarm", 0, "M 12 2 C 12.9 2 13.5 2.6 13.5 3.4 L 13.5 3.9 C 16.6 4.6 18.5 7.2 18.5 10.4 L 18.5 14 C 18.5 14.9 18.9 15.5 19.6 16.1 "
                 "L 20.3 16.8 C 20.7 17.2 20.9 17.4 20.9 17.9 C 20.9 18.5 20.5 18.9 19.9 18.9 L 4.1 18.9 C 3.5 18.9 3.1 18.5 3.1 17.9 "
                 "C 3.1 17.4 3.3 17.2 3.7 16.8 L 4.4 16.1 C 5.1 15.5 5.5 14.9 5.5 14 L 5.5 10.4 C 5.5 7.2 7.4 4.6 10.5 3.9 "
                 "L 10.5 3.4 C 10.5 2.6 11.1 2 12 2 Z "
                 "M 9.4 20.2 L 14.6 20.2 C 14.4 21.6 13.3 22.4 12 22.4 C 10.7 22.4 9.6 21.6 9.4 20.2 Z"},
    // A flag on its pole.
    {"d-day", 2, "M 5.2 3 L 5.2 21.4"},
    {"d-day", 0, "M 5.2 3.6 C 7.2 2.4 9.6 2.3 12 3.5 C 14.4 4.7 16.8 4.7 19 3.8 C 19.6 3.6 20.2 4 20.2 4.6 L 20.2 12.9 "
                 "C 20.2 13.3 20 13.6 19.6 13.8 C 17 14.9 14.4 14.9 12 13.7 C 9.6 12.5 7.2 12.6 5.2 13.8 Z"},
    // A bubble with three dots.
    {"notification", 0, "M 6 3.2 L 18 3.2 C 20.4 3.2 22 4.8 22 7.2 L 22 13.2 C 22 15.6 20.4 17.2 18 17.2 L 12.4 17.2 L 8 21.2 "
                        "C 7.4 21.7 6.6 21.4 6.6 20.6 L 6.6 17.2 L 6 17.2 C 3.6 17.2 2 15.6 2 13.2 L 2 7.2 C 2 4.8 3.6 3.2 6 3.2 Z "
                        "O 7.4 10.2 1.35 O 12 10.2 1.35 O 16.6 10.2 1.35"},
    // An arrow that leaves a frame.
    {"shortcut", 2.2, "M 10.6 3.6 L 6.2 3.6 C 4.4 3.6 3.2 4.8 3.2 6.6 L 3.2 17.8 C 3.2 19.6 4.4 20.8 6.2 20.8 L 17.4 20.8 "
                      "C 19.2 20.8 20.4 19.6 20.4 17.8 L 20.4 13.4"},
    {"shortcut", 2.2, "M 15 2.9 L 21.1 2.9 L 21.1 9 M 20.7 3.3 L 12 12"},
    // A globe: its edge, a meridian on either side of the middle one, and two circles of latitude.
    {"worldclock", 1.8, "O 12 12 9.6"},
    {"worldclock", 1.6, "M 12 2.6 C 5.9 7.6 5.9 16.4 12 21.4 M 12 2.6 C 18.1 7.6 18.1 16.4 12 21.4 M 3.4 9 L 20.6 9 M 3.4 15 L 20.6 15"},
};
// clang-format on

constexpr double kMoonRadius = 9.6;
constexpr double kMoonLit = 0.62;  // of the disc, waxing: the right side
constexpr double kPi = std::numbers::pi;

class OutlineReader {
public:
    OutlineReader(cairo_t* cr, std::string_view outline) : mCr(cr), mLeft(outline) {}

    void Trace()
    {
        while (SkipBlanks()) {
            const char command = mLeft.front();
            mLeft.remove_prefix(1);
            Trace(command);
        }
    }

private:
    bool SkipBlanks()
    {
        mLeft.remove_prefix(std::min(mLeft.find_first_not_of(' '), mLeft.size()));
        return !mLeft.empty();
    }

    double Next()
    {
        SkipBlanks();
        double value = 0;
        const auto [end, error] = std::from_chars(mLeft.data(), mLeft.data() + mLeft.size(), value);
        mLeft.remove_prefix(static_cast<size_t>(end - mLeft.data()));
        return value;
    }

    void Trace(char command)
    {
        double n[6] = {};
        const auto read = [&](int count) {
            for (int i = 0; i < count; ++i) n[i] = Next();
        };
        switch (command) {
            case 'M':
                read(2);
                cairo_move_to(mCr, n[0], n[1]);
                break;
            case 'L':
                read(2);
                cairo_line_to(mCr, n[0], n[1]);
                break;
            case 'C':
                read(6);
                cairo_curve_to(mCr, n[0], n[1], n[2], n[3], n[4], n[5]);
                break;
            case 'O':
                read(3);
                cairo_new_sub_path(mCr);
                cairo_arc(mCr, n[0], n[1], n[2], 0, 2 * kPi);
                cairo_close_path(mCr);
                break;
            case 'R':
                read(5);
                Rectangle(n[0], n[1], n[2], n[3], n[4]);
                break;
            default:
                cairo_close_path(mCr);
        }
    }

    void Rectangle(double x, double y, double width, double height, double r)
    {
        cairo_new_sub_path(mCr);
        cairo_arc(mCr, x + width - r, y + r, r, -kPi / 2, 0);
        cairo_arc(mCr, x + width - r, y + height - r, r, 0, kPi / 2);
        cairo_arc(mCr, x + r, y + height - r, r, kPi / 2, kPi);
        cairo_arc(mCr, x + r, y + r, r, kPi, 1.5 * kPi);
        cairo_close_path(mCr);
    }

    cairo_t* mCr;
    std::string_view mLeft;
};

// The lit part lies between the right half of the disc and the terminator, which is half an ellipse: its
// width is (1 - 2 lit) of the disc's.
void PaintMoon(cairo_t* cr)
{
    cairo_translate(cr, 12, 12);
    cairo_arc(cr, 0, 0, kMoonRadius, -kPi / 2, kPi / 2);
    cairo_save(cr);
    cairo_scale(cr, 2 * kMoonLit - 1, 1);
    cairo_arc(cr, 0, 0, kMoonRadius, kPi / 2, 1.5 * kPi);
    cairo_restore(cr);
    cairo_close_path(cr);
    cairo_fill(cr);
    cairo_arc(cr, 0, 0, kMoonRadius - 0.6, kPi / 2, 1.5 * kPi);
    cairo_set_line_width(cr, 1.2);
    cairo_stroke(cr);
}

}  // namespace

bool HasIcon(std::string_view source)
{
    return source == "moonphase" || std::any_of(std::begin(kStrokes), std::end(kStrokes),
                                                [&](const Stroke& s) { return s.source == source; });
}

void PaintIcon(cairo_t* cr, std::string_view source, double x, double y, double size)
{
    cairo_save(cr);
    cairo_translate(cr, x, y);
    cairo_scale(cr, size / 24, size / 24);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    if (source == "moonphase") PaintMoon(cr);
    for (const Stroke& stroke : kStrokes) {
        if (stroke.source != source) continue;
        cairo_new_path(cr);
        OutlineReader(cr, stroke.outline).Trace();
        cairo_set_line_width(cr, stroke.width);
        stroke.width > 0 ? cairo_stroke(cr) : cairo_fill(cr);
    }
    cairo_restore(cr);
}

}  // namespace Drawing
