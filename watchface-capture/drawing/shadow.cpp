#include "shadow.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "pixel-box.h"

namespace Drawing {
namespace {

constexpr double kLargestEdge = 256;  // pixels; a softer edge would cost time and be no softer to the eye
constexpr double kMiter = 5;          // widths by which a mitred corner may stand out
constexpr int kPasses = 3;            // box filters one after the other come close to a bell curve

bool IsFilled(const Element& part)
{
    return part.Paint("fill") || part.HoldsAny();
}

// How far a box reaches to either side of its pixel.
struct BoxSize {
    int before, after;
};

// One box filter over a line: out[i] is the mean of the values around in[i], zeros outside.
void BoxFilter(const uint8_t* in, uint8_t* out, int length, const BoxSize& box)
{
    const auto [before, after] = box;
    const int size = before + 1 + after;
    int sum = 0;
    for (int i = 0; i < std::min(after, length); ++i) sum += in[i];
    const auto reciprocal = (1u << 16) / static_cast<unsigned>(size) + 1;
    for (int i = 0; i < length; ++i) {
        if (i + after < length) sum += in[i + after];
        out[i] = static_cast<uint8_t>(std::min(255u, (static_cast<unsigned>(sum) * reciprocal) >> 16));
        if (i - before >= 0) sum -= in[i - before];
    }
}

// Filters every row, and writes the result turned about the diagonal.
void FilterRows(const std::vector<uint8_t>& in, std::vector<uint8_t>& out, int width, int height,
                const BoxSize* boxes)
{
    std::vector<uint8_t> line(static_cast<size_t>(width)), next(line.size());
    for (int y = 0; y < height; ++y) {
        std::memcpy(line.data(), in.data() + static_cast<size_t>(y) * line.size(), line.size());
        for (int pass = 0; pass < kPasses; ++pass) {
            BoxFilter(line.data(), next.data(), width, boxes[pass]);
            line.swap(next);
        }
        for (int x = 0; x < width; ++x) {
            out[static_cast<size_t>(x) * static_cast<size_t>(height) + static_cast<size_t>(y)] =
                line[static_cast<size_t>(x)];
        }
    }
}

// The pixels of the surface that the silhouette can touch, moved by (dx, dy) and widened by `margin`, all
// pixels.
PixelBox Reach(Painter& painter, const std::vector<Element>& parts, double dx, double dy, double margin)
{
    constexpr double kFar = 1e9;
    double left = kFar, top = kFar, right = -kFar, bottom = -kFar;
    for (const Element& part : parts) {
        TraceShape(painter.cr, part);
        const double extra = part.Paint("stroke") ? kMiter * part.Number("stroke-width") * painter.scale : 0;
        double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        cairo_save(painter.cr);
        cairo_identity_matrix(painter.cr);
        cairo_path_extents(painter.cr, &x1, &y1, &x2, &y2);
        cairo_restore(painter.cr);
        left = std::min(left, x1 - extra);
        top = std::min(top, y1 - extra);
        right = std::max(right, x2 + extra);
        bottom = std::max(bottom, y2 + extra);
    }
    cairo_new_path(painter.cr);
    // What lies outside the surface, but within the blur's reach of it, still darkens its edge.
    const int beyond = static_cast<int>(std::ceil(margin));
    const auto pixel = [beyond](double value, int most) {
        return static_cast<int>(std::clamp<double>(value, -beyond, most + beyond));
    };
    return {pixel(std::floor(left + dx - margin), painter.width),
            pixel(std::floor(top + dy - margin), painter.height),
            pixel(std::ceil(right + dx + margin), painter.width),
            pixel(std::ceil(bottom + dy + margin), painter.height)};
}

void PaintSilhouette(cairo_t* cr, const std::vector<Element>& parts)
{
    for (const Element& part : parts) {
        TraceShape(cr, part);
        if (IsFilled(part)) cairo_fill_preserve(cr);
        if (part.Paint("stroke")) {
            SetStroke(cr, part);
            cairo_stroke_preserve(cr);
        }
        cairo_new_path(cr);
    }
}

// The blurred silhouette in the pixels of `box`, as coverage. `matrix` is where the parts stand on the
// surface.
SurfacePtr MaskOf(const std::vector<Element>& parts, cairo_matrix_t matrix, const PixelBox& box, double edge)
{
    SurfacePtr mask(cairo_image_surface_create(CAIRO_FORMAT_A8, box.Width(), box.Height()));
    const ContextPtr cr(cairo_create(mask.get()));
    matrix.x0 -= box.left;
    matrix.y0 -= box.top;
    cairo_set_matrix(cr.get(), &matrix);
    PaintSilhouette(cr.get(), parts);
    cairo_surface_flush(mask.get());
    if (cairo_surface_status(mask.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    Blur(cairo_image_surface_get_data(mask.get()), box.Width(), box.Height(),
         cairo_image_surface_get_stride(mask.get()), edge);
    cairo_surface_mark_dirty(mask.get());
    return mask;
}

// SVG knows masks too, but a plain picture is less work to whoever shows it.
SurfacePtr Coloured(cairo_surface_t* mask, const Color& color)
{
    SurfacePtr picture(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, cairo_image_surface_get_width(mask),
                                                  cairo_image_surface_get_height(mask)));
    const ContextPtr cr(cairo_create(picture.get()));
    SetSource(cr.get(), color);
    cairo_mask_surface(cr.get(), mask, 0, 0);
    return picture;
}

}  // namespace

void Blur(uint8_t* pixels, int width, int height, int stride, double edge)
{
    // Three boxes of w pixels spread an edge over about 2 w. Two boxes of an even size lean to opposite sides
    // and the third is odd, so that the edge stays where it is.
    const int size = static_cast<int>(std::lround(edge / 2)), last = size / 2;
    if (size < 1 || width <= 0 || height <= 0) return;
    const BoxSize boxes[kPasses] = {
        {size / 2,       (size - 1) / 2},
        {(size - 1) / 2, size / 2      },
        {last,           last          }
    };
    std::vector<uint8_t> rows(static_cast<size_t>(width) * static_cast<size_t>(height)), columns(rows.size());
    for (int y = 0; y < height; ++y) {
        std::memcpy(rows.data() + static_cast<size_t>(y) * static_cast<size_t>(width), pixels + y * stride,
                    static_cast<size_t>(width));
    }
    FilterRows(rows, columns, width, height, boxes);
    FilterRows(columns, rows, height, width, boxes);
    for (int y = 0; y < height; ++y) {
        std::memcpy(pixels + y * stride, rows.data() + static_cast<size_t>(y) * static_cast<size_t>(width),
                    static_cast<size_t>(width));
    }
}

void PaintShadow(Painter& painter, const Element& hand, const std::vector<Element>& parts)
{
    const double edge = std::min(hand.Number("shadow-blur") * painter.scale, kLargestEdge);
    const double dx = hand.Number("shadow-x") * painter.scale, dy = hand.Number("shadow-y") * painter.scale;
    const PixelBox box = Reach(painter, parts, dx, dy, edge + 1);
    if (box.Area() == 0) return;
    painter.budget.Charge(
        hand,
        256 + 10 * box.Area() *
                  static_cast<double>(
                      1 + parts.size() / 8));  // NOLINT(bugprone-integer-division): one more for each eight

    cairo_matrix_t matrix;
    cairo_get_matrix(painter.cr, &matrix);
    matrix.x0 += dx;
    matrix.y0 += dy;
    const SurfacePtr mask = MaskOf(parts, matrix, box, edge);
    if (!mask) return;
    const Color color = *hand.Paint("shadow");
    cairo_save(painter.cr);
    cairo_identity_matrix(painter.cr);
    if (painter.medium == Medium::kPixels) {
        SetSource(painter.cr, color);
        cairo_mask_surface(painter.cr, mask.get(), box.left, box.top);
    } else {
        cairo_set_source_surface(painter.cr, Coloured(mask.get(), color).get(), box.left, box.top);
        cairo_paint(painter.cr);
    }
    cairo_restore(painter.cr);
}

}  // namespace Drawing
