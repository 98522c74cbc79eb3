// A drawing whose pixels are looked at. The canvas is 100 x 100, black and square unless a test says
// otherwise.

#pragma once

#include <cairo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>

#include "drawing.h"

struct Pixel {
    int red = 0, green = 0, blue = 0, alpha = 255;
    bool operator==(const Pixel&) const = default;
    int Brightness() const { return (red + green + blue) / 3; }
    friend std::ostream& operator<<(std::ostream& out, const Pixel& p)
    {
        return out << "(" << p.red << " " << p.green << " " << p.blue << " " << p.alpha << ")";
    }
};

inline constexpr Pixel kBlack{0, 0, 0, 255}, kWhite{255, 255, 255, 255}, kRed{255, 0, 0, 255},
    kNothing{0, 0, 0, 0};

// Pixels that are not black, as a box: the right and bottom edges belong to it.
struct Ink {
    int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
    double CenterX() const { return (left + right + 1) / 2.0; }
    double CenterY() const { return (top + bottom + 1) / 2.0; }
    int Width() const { return right - left + 1; }
    int Height() const { return bottom - top + 1; }
    bool IsEmpty() const { return right < 0; }
};

class ADrawing : public testing::Test {
protected:
    Drawing::Settings settings;
    std::string root = R"(width="100" height="100" shape="square" preview-time="10:08:36")";
    std::string strings = R"(<strings language="en"><string key="t">Title</string></strings>)";
    Drawing::Result result;

    std::string Document(const std::string& body) const
    {
        return R"(<watchface format="1" id="com.example.face" version="1" default-language="en" title-key="t" )" +
               root + ">\n" + strings + "\n" + body + "</watchface>";
    }

    // Draws, and expects no error.
    void Draw(const std::string& body)
    {
        Drawing::Renderer renderer;
        result = renderer.Draw(Document(body), settings);
        ASSERT_TRUE(result.picture) << Drawing::Describe("document", result.error);
    }

    // What is said of a document that cannot be drawn.
    std::string ErrorOf(const std::string& body)
    {
        Drawing::Renderer renderer;
        result = renderer.Draw(Document(body), settings);
        return result.picture ? "it was drawn" : Drawing::Describe("document", result.error);
    }

    int Width() const { return cairo_image_surface_get_width(result.picture.get()); }
    int Height() const { return cairo_image_surface_get_height(result.picture.get()); }

    Pixel At(int x, int y) const
    {
        cairo_surface_t* surface = result.picture.get();
        const auto* row = reinterpret_cast<const uint32_t*>(cairo_image_surface_get_data(surface) +
                                                            y * cairo_image_surface_get_stride(surface));
        const uint32_t p = row[x];
        return {static_cast<int>(p >> 16 & 255), static_cast<int>(p >> 8 & 255), static_cast<int>(p & 255),
                static_cast<int>(p >> 24)};
    }

    Ink InkOf() const
    {
        Ink ink;
        for (int y = 0; y < Height(); ++y) {
            for (int x = 0; x < Width(); ++x) {
                if (At(x, y).Brightness() < 8) continue;
                ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x),
                       std::max(ink.bottom, y)};
            }
        }
        return ink;
    }

    std::string Pixels() const
    {
        cairo_surface_t* surface = result.picture.get();
        return {reinterpret_cast<const char*>(cairo_image_surface_get_data(surface)),
                static_cast<size_t>(cairo_image_surface_get_stride(surface) * Height())};
    }
};
