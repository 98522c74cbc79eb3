#include "picture-comparison.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace {

using Channels = std::array<int, 4>;

class Pixels {
public:
    explicit Pixels(cairo_surface_t* surface)
        : mWidth(cairo_image_surface_get_width(surface)),
          mHeight(cairo_image_surface_get_height(surface)),
          mAll(static_cast<size_t>(mWidth) * static_cast<size_t>(mHeight))
    {
        cairo_surface_flush(surface);
        const unsigned char* data = cairo_image_surface_get_data(surface);
        const int stride = cairo_image_surface_get_stride(surface);
        for (int y = 0; y < mHeight; ++y) {
            const auto* row = reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
            for (int x = 0; x < mWidth; ++x) {
                for (size_t c = 0; c < 4; ++c) Set(x, y)[c] = static_cast<int>(row[x] >> (8 * c) & 255);
            }
        }
    }

    int Width() const { return mWidth; }
    int Height() const { return mHeight; }
    const Channels& At(int x, int y) const
    {
        x = std::clamp(x, 0, mWidth - 1);
        y = std::clamp(y, 0, mHeight - 1);
        return mAll[static_cast<size_t>(y) * static_cast<size_t>(mWidth) + static_cast<size_t>(x)];
    }
    Channels& Set(int x, int y) { return const_cast<Channels&>(At(x, y)); }

    // Each pixel becomes the mean of those around it, near ones counting more.
    void Soften()
    {
        for (const auto& [dx, dy] : {
                 std::pair{1, 0},
                 {0, 1},
                 {1, 0},
                 {0, 1}
        }) {
            const Pixels before = *this;
            for (int y = 0; y < mHeight; ++y) {
                for (int x = 0; x < mWidth; ++x) {
                    const Channels &a = before.At(x - dx, y - dy), &b = before.At(x, y),
                                   &c = before.At(x + dx, y + dy);
                    for (size_t i = 0; i < 4; ++i) Set(x, y)[i] = (a[i] + 2 * b[i] + c[i] + 2) / 4;
                }
            }
        }
    }

    // Whether `pixel` lies within what stands at (x, y) and around it. Where there is much contrast, more is
    // let pass.
    bool Holds(int x, int y, const Channels& pixel) const
    {
        Channels least = At(x, y), most = least;
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                for (size_t i = 0; i < 4; ++i) {
                    least[i] = std::min(least[i], At(x + dx, y + dy)[i]);
                    most[i] = std::max(most[i], At(x + dx, y + dy)[i]);
                }
            }
        }
        for (size_t i = 0; i < 4; ++i) {
            const int range = std::max(most[i], pixel[i]) - std::min(least[i], pixel[i]);
            const int tolerance = PictureComparison::kTolerance + range / 3;
            if (pixel[i] < least[i] - tolerance || pixel[i] > most[i] + tolerance) return false;
        }
        return true;
    }

private:
    int mWidth, mHeight;
    std::vector<Channels> mAll;
};

// How many points there are in squares of a grid.
class Points {
public:
    Points(int width, int height)
        : mWidth(width),
          mHeight(height),
          mSums(static_cast<size_t>(width + 1) * static_cast<size_t>(height + 1))
    {
    }

    // To be called for every place, row by row.
    void Add(int x, int y, bool point)
    {
        Sum(x + 1, y + 1) = Sum(x, y + 1) + Sum(x + 1, y) - Sum(x, y) + (point ? 1 : 0);
    }
    int All() { return Sum(mWidth, mHeight); }
    // The most in any square of `side`.
    int MostIn(int side)
    {
        int most = 0;
        for (int y = 0; y < mHeight; ++y) {
            for (int x = 0; x < mWidth; ++x) {
                const int right = std::min(x + side, mWidth), bottom = std::min(y + side, mHeight);
                most = std::max(most, Sum(right, bottom) - Sum(x, bottom) - Sum(right, y) + Sum(x, y));
            }
        }
        return most;
    }

private:
    // Of the points above and left of (x, y).
    int& Sum(int x, int y)
    {
        return mSums[static_cast<size_t>(y) * static_cast<size_t>(mWidth + 1) + static_cast<size_t>(x)];
    }

    int mWidth, mHeight;
    std::vector<int> mSums;
};

Drawing::SurfacePtr Dimmed(cairo_surface_t* picture)
{
    Drawing::SurfacePtr dimmed(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
                                                          cairo_image_surface_get_width(picture),
                                                          cairo_image_surface_get_height(picture)));
    cairo_t* cr = cairo_create(dimmed.get());
    cairo_paint(cr);
    cairo_set_source_surface(cr, picture, 0, 0);
    cairo_paint_with_alpha(cr, 0.4);
    cairo_destroy(cr);
    cairo_surface_flush(dimmed.get());
    return dimmed;
}

}  // namespace

PictureComparison Compare(cairo_surface_t* actual, cairo_surface_t* expected)
{
    Pixels a(actual), e(expected);
    PictureComparison comparison;
    comparison.sameSize = a.Width() == e.Width() && a.Height() == e.Height();
    if (!comparison.sameSize) return comparison;
    a.Soften();
    e.Soften();
    comparison.difference = Dimmed(expected);
    unsigned char* data = cairo_image_surface_get_data(comparison.difference.get());
    const int stride = cairo_image_surface_get_stride(comparison.difference.get());
    Points outliers(a.Width(), a.Height());
    for (int y = 0; y < a.Height(); ++y) {
        for (int x = 0; x < a.Width(); ++x) {
            const bool good = e.Holds(x, y, a.At(x, y)) && a.Holds(x, y, e.At(x, y));
            outliers.Add(x, y, !good);
            if (!good) reinterpret_cast<uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride)[x] = 0xffff0000;
        }
    }
    cairo_surface_mark_dirty(comparison.difference.get());
    comparison.outliers = outliers.All();
    comparison.crowd = outliers.MostIn(PictureComparison::kCrowd);
    return comparison;
}
