#include "ink-checks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace {

using Drawing::Area;
using Drawing::Ink;

constexpr double kSlack = 0.5;  // canvas units, half of what an edge's smoothing covers
// A text higher than this share of the canvas is a picture as much as a text: of its height a part may be
// cut.
constexpr double kPosterHeight = 1 / 3.0, kPosterCut = 1 / 4.0;
constexpr double kLeastShrink =
    0.6;  // a text smaller than this share of its design is no longer read at a glance

std::string Number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

bool IsRead(const Ink& ink)
{
    return ink.kind != Ink::Kind::kShape;
}

// Of the shapes those that texts have to keep clear of: values' arcs and ticks. Their points are close to
// each other.
bool IsThin(const Ink& ink)
{
    return ink.kind == Ink::Kind::kShape && (ink.place || ink.element.text == "ticks");
}

std::string NameOf(const Ink& ink)
{
    if (ink.kind == Ink::Kind::kText) return "\"" + ink.text + "\"";
    return ink.kind == Ink::Kind::kIcon ? "the icon" : "the shape";
}

bool IsSame(const Ink& a, const Ink& b)
{
    return a.element.line == b.element.line && a.element.column == b.element.column;
}

Area Around(const Area& area, const Ink& ink)
{
    Area all = area;
    for (const Drawing::Point& p : ink.outline) {
        all.left = std::min(all.left, p.x - ink.reach);
        all.top = std::min(all.top, p.y - ink.reach);
        all.right = std::max(all.right, p.x + ink.reach);
        all.bottom = std::max(all.bottom, p.y + ink.reach);
    }
    return all;
}

Area BoxOf(const Ink& ink)
{
    constexpr double kFar = 1e6;
    return Around({kFar, kFar, -kFar, -kFar}, ink);
}

// By how much the ink leaves the canvas' shape; negative where it stays inside.
double Beyond(const Ink& ink, const Canvas& canvas)
{
    const double rx = canvas.width / 2, ry = canvas.height / 2;
    double beyond = -std::min(rx, ry);
    for (const Drawing::Point& p : ink.outline) {
        const double x = std::abs(p.x - rx), y = std::abs(p.y - ry);
        const double here =
            canvas.round ? (std::hypot(x / rx, y / ry) - 1) * std::min(rx, ry) : std::max(x - rx, y - ry);
        beyond = std::max(beyond, here + ink.reach);
    }
    return beyond;
}

// The box of a line of text or of an icon, which may be turned.
struct TurnedBox {
    Drawing::Point origin;
    Drawing::Point across, down;  // unit vectors along its sides
    double width = 0, height = 0;

    explicit TurnedBox(const Ink& ink) : origin(ink.outline[0])
    {
        const auto side = [this](const Drawing::Point& to, double& length) {
            const Drawing::Point by{to.x - origin.x, to.y - origin.y};
            length = std::max(std::hypot(by.x, by.y), 1e-6);
            return Drawing::Point{by.x / length, by.y / length};
        };
        across = side(ink.outline[1], width);
        down = side(ink.outline[3], height);
    }

    // How deep the point lies inside, negative outside.
    double Depth(const Drawing::Point& p) const
    {
        const double x = (p.x - origin.x) * across.x + (p.y - origin.y) * across.y;
        const double y = (p.x - origin.x) * down.x + (p.y - origin.y) * down.y;
        return std::min({x, width - x, y, height - y});
    }

    // How far the box and `other` overlap along this box's sides, at most.
    double Overlap(const Ink& other) const
    {
        double least = std::min(width, height);
        for (const auto& [axis, length] : {std::pair(across, width), std::pair(down, height)}) {
            double from = 1e6, to = -1e6;
            for (const Drawing::Point& p : other.outline) {
                const double at = (p.x - origin.x) * axis.x + (p.y - origin.y) * axis.y;
                from = std::min(from, at);
                to = std::max(to, at);
            }
            least = std::min({least, to, length - from});
        }
        return least;
    }
};

// Two boxes are apart where a line along a side of one of them lies between them.
bool Touch(const Ink& a, const Ink& b)
{
    return TurnedBox(a).Overlap(b) > kSlack && TurnedBox(b).Overlap(a) > kSlack;
}

bool Crosses(const Ink& line, const Ink& text)
{
    const TurnedBox box(text);
    return std::any_of(line.outline.begin(), line.outline.end(),
                       [&](const Drawing::Point& p) { return box.Depth(p) + line.reach > kSlack; });
}

bool IsInside(const Ink& ink, const Ink& plate)
{
    const Area inner = BoxOf(ink), outer = BoxOf(plate);
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

class Checker {
public:
    Checker(const std::vector<Ink>& inks, const Canvas& canvas) : mInks(inks), mCanvas(canvas) {}

    std::vector<Fault> Run()
    {
        for (const Ink& ink : mInks) {
            CheckShape(ink);
            CheckPlace(ink);
            CheckSize(ink);
            CheckNeighbours(ink);
        }
        return std::move(mFaults);
    }

private:
    void Add(const Ink& ink, const std::string& what) { mFaults.push_back({ink.element, what}); }

    // Backgrounds are what spans the whole canvas in one direction: they may be cut by its edge.
    bool IsBackground(const Ink& ink) const
    {
        if (IsRead(ink) || IsThin(ink)) return false;
        Area all = BoxOf(ink);
        for (const Ink& other : mInks) {
            if (IsSame(ink, other)) all = Around(all, other);
        }
        return (all.left <= 0 && all.right >= mCanvas.width) ||
               (all.top <= 0 && all.bottom >= mCanvas.height);
    }

    void CheckShape(const Ink& ink)
    {
        const double beyond = Beyond(ink, mCanvas);
        const double height = ink.kind == Ink::Kind::kText ? TurnedBox(ink).height : 0;
        const double allowed = height > kPosterHeight * mCanvas.height ? kPosterCut * height : kSlack;
        if (beyond <= allowed || IsBackground(ink)) return;
        Add(ink, NameOf(ink) + " is " + Number(beyond) + " outside the screen");
    }

    void CheckPlace(const Ink& ink)
    {
        if (!ink.place) return;
        const Area& place = *ink.place;
        const Area box = BoxOf(ink);
        const double beyond = std::max(
            {place.left - box.left, place.top - box.top, box.right - place.right, box.bottom - place.bottom});
        if (beyond <= kSlack) return;
        Add(ink, NameOf(ink) + " is " + Number(beyond) + " outside its box");
    }

    void CheckSize(const Ink& ink)
    {
        if (ink.shrink >= kLeastShrink) return;
        Add(ink, NameOf(ink) + " is too long: it is drawn at " + Number(100 * ink.shrink) + "% of its size");
    }

    // What was painted before, unless a plate was laid over it since.
    void CheckNeighbours(const Ink& ink)
    {
        if (!IsRead(ink) && !IsThin(ink)) return;
        for (auto at = mInks.rbegin() + (&mInks.back() - &ink) + 1; at != mInks.rend(); ++at) {
            const Ink& other = *at;
            if (other.element.text == "rect" && IsInside(ink, other)) return;
            const bool touch = IsRead(ink) && IsRead(other)   ? Touch(ink, other)
                               : IsRead(ink) && IsThin(other) ? Crosses(other, ink)
                               : IsThin(ink) && IsRead(other) ? Crosses(ink, other)
                                                              : false;
            if (touch)
                Add(ink, NameOf(ink) + " touches " + NameOf(other) + " of the " + other.element.text +
                             " of line " + std::to_string(other.element.line));
        }
    }

    const std::vector<Ink>& mInks;
    const Canvas& mCanvas;
    std::vector<Fault> mFaults;
};

}  // namespace

std::vector<Fault> FaultsOf(const std::vector<Ink>& inks, const Canvas& canvas)
{
    return Checker(inks, canvas).Run();
}
