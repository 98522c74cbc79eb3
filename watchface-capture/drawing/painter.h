// What all elements of one drawing share, and the functions that paint one kind of element each.

#pragma once

#include <cairo.h>

#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "dates.h"
#include "drawing.h"
#include "element.h"
#include "releases.h"

namespace Drawing {

class Fonts;
class Images;
class Texts;
class VectorGroups;

inline constexpr double kDegree = std::numbers::pi / 180;

// The document's angles begin at 12 o'clock, cairo's at 3 o'clock; both grow clockwise on a canvas whose y
// points downwards.
inline double CairoAngle(double degrees)
{
    return (degrees - 90) * kDegree;
}

// The work that a document may ask for, in about pixels.
class Budget {
public:
    void Charge(const Element& element, double work)
    {
        mLeft -= work;
        if (mLeft < 0) element.Fail("the drawing asks for more work than a picture may cost");
    }

private:
    double mLeft = Limits::kWork;
};

enum class Medium {
    kPixels,   // the quickest way to the pixels is taken
    kVectors,  // what can stay a shape does
};

struct Painter {
    cairo_t* cr;
    Medium medium;
    const DataUtil::XmlTree& tree;
    const Settings& settings;
    const Texts& texts;
    Fonts& fonts;
    Dates& dates;
    Images& images;
    VectorGroups& groups;  // of an SVG
    std::vector<Finding>& warnings;
    Moment watchMoment;  // the preview's time, where the watch is
    Moment moment;       // as hands and texts by skeleton show it
    double scale;        // pixels a canvas unit
    int width, height;   // of the surface, pixels
    int layers = 0;      // open ones
    Budget budget;
    const Observer& observer;
    const Element* owner = nullptr;  // what is being painted of the drawing, be it in a layer
};

void SetSource(cairo_t* cr, const Color& color);

// Paints what `paint` paints as one picture, which is then laid over the drawing.
void PaintAsOne(Painter& painter, double opacity, const std::function<void()>& paint);

// Everything that stands in `parent` after its strings.
void PaintChildren(Painter& painter, const Element& parent);

// The preview's time in the zone that the element names by `timezone-path`, else by `timezone`; the watch's
// own, with a warning, when neither is known.
Moment MomentOf(Painter& painter, const Element& element);

// Shapes, in the current coordinate system. A shape's outline can be traced without painting it.
void PaintShape(Painter& painter, const Element& shape);
void TraceShape(cairo_t* cr, const Element& shape);
void SetStroke(cairo_t* cr, const Element& shape);

void PaintImage(Painter& painter, const Element& image);
void PaintPhoto(Painter& painter, const Element& photo);
void PaintLayer(Painter& painter, const Element& layer);
void PaintText(Painter& painter, const Element& text);
void PaintTicks(Painter& painter, const Element& ticks);
void PaintNumerals(Painter& painter, const Element& numerals);
void PaintHand(Painter& painter, const Element& hand);
void PaintComplication(Painter& painter, const Element& complication);

}  // namespace Drawing
