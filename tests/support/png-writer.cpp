#include "png-writer.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace TestSupport {

namespace {

// The samples of one pixel of a kind, one byte each.
class Samples {
public:
    explicit Samples(PngKind kind) : mKind(kind) {}

    std::vector<uint8_t> Of(Color color)
    {
        if (mKind.colorType == PNG_COLOR_TYPE_PALETTE) return {IndexOf(color)};
        const bool isGrey = !(mKind.colorType & PNG_COLOR_MASK_COLOR);
        std::vector<uint8_t> samples =
            isGrey ? std::vector{color.red} : std::vector{color.red, color.green, color.blue};
        if (mKind.colorType & PNG_COLOR_MASK_ALPHA) samples.push_back(color.alpha);
        if (mKind.bitDepth < 8) samples[0] = static_cast<uint8_t>(samples[0] >> (8 - mKind.bitDepth));
        return samples;
    }
    const std::vector<Color>& Palette() const { return mPalette; }

private:
    uint8_t IndexOf(Color color)
    {
        auto it = std::find(mPalette.begin(), mPalette.end(), color);
        if (it == mPalette.end()) it = mPalette.insert(it, color);
        const auto index = it - mPalette.begin();
        if (index >= 1 << mKind.bitDepth) throw std::length_error("more colours than the palette holds");
        return static_cast<uint8_t>(index);
    }

    const PngKind mKind;
    std::vector<Color> mPalette;
};

using Rows = std::vector<std::vector<uint8_t>>;

void SetPalette(png_structp png, png_infop info, const std::vector<Color>& palette)
{
    std::vector<png_color> colors;
    std::vector<png_byte> alphas;
    for (const Color& color : palette) {
        colors.push_back({color.red, color.green, color.blue});
        alphas.push_back(color.alpha);
    }
    png_set_PLTE(png, info, colors.data(), static_cast<int>(colors.size()));
    png_set_tRNS(png, info, alphas.data(), static_cast<int>(alphas.size()), nullptr);
}

void Append(png_structp png, png_bytep bytes, std::size_t count)
{
    static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<const char*>(bytes), count);
}

}  // namespace

std::string Png(int width, int height, const std::function<Color(int x, int y)>& colorAt, PngKind kind)
{
    Samples samples(kind);
    Rows rows(static_cast<std::size_t>(height));
    std::vector<png_bytep> pointers;
    for (int y = 0; y < height; ++y) {
        auto& row = rows[static_cast<std::size_t>(y)];
        for (int x = 0; x < width; ++x) {
            for (const uint8_t sample : samples.Of(colorAt(x, y))) {
                row.insert(row.end(), kind.bitDepth == 16 ? 2 : 1, sample);
            }
        }
        pointers.push_back(row.data());
    }

    std::string bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &bytes, Append, nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), kind.bitDepth,
                 kind.colorType, kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (kind.colorType == PNG_COLOR_TYPE_PALETTE) SetPalette(png, info, samples.Palette());
    png_write_info(png, info);
    if (kind.bitDepth < 8) png_set_packing(png);
    png_set_interlace_handling(png);
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

std::string Png(int width, int height, Color color, PngKind kind)
{
    return Png(
        width, height, [color](int, int) { return color; }, kind);
}

}  // namespace TestSupport
