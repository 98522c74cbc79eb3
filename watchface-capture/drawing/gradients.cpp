#include "gradients.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Drawing {
namespace {

struct Stop {
    double offset;
    Color color;
};

std::vector<Stop> ReadStops(Painter& painter, const Element& gradient)
{
    std::vector<Stop> stops;
    for (const Element& stop : gradient.Children(painter.warnings)) {
        const auto color = stop.Paint("color");
        if (!color) stop.Fail("a stop needs a colour");
        if (!stops.empty() && stops.back().offset > stop.Number("offset"))
            stop.Fail("the offsets of stops must not fall");
        stops.push_back({stop.Number("offset"), *color});
    }
    return stops;
}

Color ColorAt(const std::vector<Stop>& stops, double offset)
{
    const auto next =
        std::find_if(stops.begin(), stops.end(), [&](const Stop& s) { return s.offset > offset; });
    if (next == stops.begin()) return stops.front().color;
    if (next == stops.end()) return stops.back().color;
    const Stop &a = *std::prev(next), &b = *next;
    const double t = (offset - a.offset) / (b.offset - a.offset);
    const auto mix = [t](double from, double to) { return from + (to - from) * t; };
    return {mix(a.color.red, b.color.red), mix(a.color.green, b.color.green), mix(a.color.blue, b.color.blue),
            mix(a.color.alpha, b.color.alpha)};
}

uint32_t Premultiplied(const Color& c)
{
    const auto byte = [](double value) { return static_cast<uint32_t>(std::lround(value * 255)); };
    return byte(c.alpha) << 24 | byte(c.red * c.alpha) << 16 | byte(c.green * c.alpha) << 8 |
           byte(c.blue * c.alpha);
}

void FreePixels(void* pixels)
{
    delete[] static_cast<uint32_t*>(pixels);
}

// A disc of colour by distance. The general radial gradient of the drawing library takes three quarters of a
// face's drawing time; here both circles have one centre and the scale is even, so that one square root and
// one look-up a pixel do.
void SetRadialPixels(Painter& painter, const Element& gradient, const std::vector<Stop>& stops,
                     const PixelBox& box)
{
    constexpr int kSteps = 2048;
    std::array<uint32_t, kSteps + 1> colors;
    for (int i = 0; i <= kSteps; ++i) {
        colors[static_cast<size_t>(i)] = Premultiplied(ColorAt(stops, static_cast<double>(i) / kSteps));
    }
    double cx = gradient.Number("cx"), cy = gradient.Number("cy");
    cairo_user_to_device(painter.cr, &cx, &cy);
    const double radius = std::max(gradient.Number("r") * painter.scale, 1e-3);
    const auto perPixel = static_cast<float>(kSteps / radius);

    const int width = box.Width(), height = box.Height();
    auto* pixels = new uint32_t[static_cast<size_t>(width) * static_cast<size_t>(height)];
    for (int y = 0; y < height; ++y) {
        uint32_t* row = pixels + static_cast<size_t>(y) * static_cast<size_t>(width);
        const auto dy = static_cast<float>(box.top + y + 0.5 - cy);
        const auto left = static_cast<float>(box.left + 0.5 - cx);
        for (int x = 0; x < width; ++x) {
            const float dx = left + static_cast<float>(x);
            const float step = std::sqrt(dx * dx + dy * dy) * perPixel + 0.5f;
            row[x] = colors[static_cast<size_t>(std::min(step, static_cast<float>(kSteps)))];
        }
    }
    cairo_surface_t* surface = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(pixels), CAIRO_FORMAT_ARGB32, width, height, 4 * width);
    static cairo_user_data_key_t key;
    if (cairo_surface_set_user_data(surface, &key, pixels, FreePixels) != CAIRO_STATUS_SUCCESS)
        FreePixels(pixels);
    // In pixels, whatever the shape's own coordinates are.
    cairo_matrix_t own;
    cairo_get_matrix(painter.cr, &own);
    cairo_identity_matrix(painter.cr);
    cairo_set_source_surface(painter.cr, surface, box.left, box.top);
    cairo_pattern_set_filter(cairo_get_source(painter.cr), CAIRO_FILTER_NEAREST);
    cairo_set_matrix(painter.cr, &own);
    cairo_surface_destroy(surface);
}

PatternPtr PatternOf(const Element& gradient)
{
    const auto n = [&](const char* attribute) { return gradient.Number(attribute); };
    if (gradient.Kind() == DataUtil::Element::kLinearGradient)
        return PatternPtr(cairo_pattern_create_linear(n("x1"), n("y1"), n("x2"), n("y2")));
    return PatternPtr(cairo_pattern_create_radial(n("cx"), n("cy"), 0, n("cx"), n("cy"), n("r")));
}

void SetPattern(Painter& painter, const Element& gradient, const std::vector<Stop>& stops)
{
    const PatternPtr pattern = PatternOf(gradient);
    for (const Stop& stop : stops) {
        cairo_pattern_add_color_stop_rgba(pattern.get(), stop.offset, stop.color.red, stop.color.green,
                                          stop.color.blue, stop.color.alpha);
    }
    cairo_set_source(painter.cr, pattern.get());
}

}  // namespace

bool SetGradientSource(Painter& painter, const Element& gradient, const PixelBox& box)
{
    const std::vector<Stop> stops = ReadStops(painter, gradient);
    if (box.Area() == 0) return false;
    if (gradient.Kind() == DataUtil::Element::kRadialGradient && painter.medium == Medium::kPixels) {
        SetRadialPixels(painter, gradient, stops, box);
    } else {
        SetPattern(painter, gradient, stops);
    }
    return true;
}

}  // namespace Drawing
