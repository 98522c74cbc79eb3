// Pictures of every kind that PNG knows, in memory.

#pragma once

#include <png.h>

#include <cstdint>
#include <functional>
#include <string>

namespace TestSupport {

struct Color {
    uint8_t red = 0, green = 0, blue = 0, alpha = 0;
    bool operator==(const Color&) const = default;
};

inline constexpr Color kTransparent = {};
inline constexpr Color kBlack = {0, 0, 0, 255};
inline constexpr Color kWhite = {255, 255, 255, 255};

struct PngKind {
    int colorType = PNG_COLOR_TYPE_RGBA;
    int bitDepth = 8;
    bool interlaced = false;
};

// Straight alpha. A grey picture takes the red; a picture without alpha drops it; a palette is made of the
// colours that occur.
std::string Png(int width, int height, const std::function<Color(int x, int y)>& colorAt, PngKind kind = {});
std::string Png(int width, int height, Color color, PngKind kind = {});

}  // namespace TestSupport
