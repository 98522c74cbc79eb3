#include <zlib.h>

#include <memory>
#include <stdexcept>
#include <string_view>

#include "groups.h"
#include "service-preview-check.h"
#include "service-watchface-manager.h"

namespace Bench {

namespace {

constexpr int kChecks = 500;

uint32_t BigEndianWord(std::string_view bytes, std::size_t at)
{
    uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

// The compressed rows of a PNG.
std::string PictureData(std::string_view png)
{
    constexpr std::size_t kSignature = 8, kAroundData = 12;
    std::string data;
    for (std::size_t at = kSignature; at + kAroundData <= png.size();) {
        const std::size_t length = BigEndianWord(png, at);
        if (png.substr(at + 4, 4) == "IDAT") data += png.substr(at + 8, length);
        at += length + kAroundData;
    }
    return data;
}

}  // namespace

Figures Previews(Watch& watch, const Choices&)
{
    const std::string path = watch.ShippedFile(".png");
    const std::string data = PictureData(ReadFile(path));
    std::string rows(std::size_t{8} << 20, '\0');
    WatchfaceService::PreviewCheck check(nullptr);
    Figure figure{"check of a preview", "us", {}, {}, "zlib inflates the picture's data", AtMostTimes(2)};
    for (int i = 0; i < kChecks; ++i) {
        figure.ours.push_back(TimeOf([&] {
            if (!check.IsValid(path)) throw std::runtime_error("a preview is blank");
        }));
        figure.floor.push_back(TimeOf([&] {
            uLongf size = rows.size();
            if (uncompress(reinterpret_cast<Bytef*>(rows.data()), &size,
                           reinterpret_cast<const Bytef*>(data.data()), data.size()) != Z_OK)
                throw std::runtime_error("a preview is damaged");
        }));
    }
    return {figure};
}

}  // namespace Bench
