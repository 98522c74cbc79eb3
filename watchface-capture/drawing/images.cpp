#include "images.h"

#include <algorithm>

#include "picture-files.h"

namespace Drawing {
namespace {

// Where the watch keeps the user's picture, below the trusted folder.
std::string PathOf(const Element& photo)
{
    std::string path = "theme/";
    path += photo.Is("background", "gallery") ? "GalleryBackgrounds/" : "Backgrounds/";
    if (photo.Has("prefix")) path.append(photo.Text("prefix")).append("/");
    return path.append(photo.Text("file"));
}

// Reading and decoding, in the budget's unit.
double WorkOf(const PictureSize& size, const std::string& bytes)
{
    return 4.0 * size.width * size.height + static_cast<double>(bytes.size());
}

}  // namespace

double FitOf(const Element& photo, double width, double height)
{
    const double across = photo.Number("width") / width, down = photo.Number("height") / height;
    return photo.Is("fit", "contain") ? std::min(across, down) : std::max(across, down);
}

cairo_surface_t* Images::Known(const std::string& key) const
{
    const auto known = mDecoded.find(key);
    return known == mDecoded.end() ? nullptr : known->second.get();
}

cairo_surface_t* Images::Keep(const std::string& key, SurfacePtr surface)
{
    const double bytes =
        4.0 * cairo_image_surface_get_width(surface.get()) * cairo_image_surface_get_height(surface.get());
    if (mKept + bytes > kMostKept) {
        mDecoded.clear();
        mKept = 0;
    }
    mKept += bytes;
    return (mDecoded[key] = std::move(surface)).get();
}

cairo_surface_t* Images::Asset(Painter& painter, const Element& element, std::string_view src)
{
    const std::string path(src);
    if (cairo_surface_t* known = Known(path)) return known;
    const auto warn = [&](const std::string& why) -> cairo_surface_t* {
        painter.warnings.push_back(element.At("the image \"" + path + "\" " + why));
        return nullptr;
    };
    FileRead file{FileRead::kMissing, {}, "is missing"};
    for (const std::string& folder : mAssetFolders) {
        FileRead here = ReadBelow(folder, path);
        if (here.outcome != FileRead::kMissing) file = std::move(here);
        if (file.outcome == FileRead::kRead) break;
    }
    if (file.outcome != FileRead::kRead) return warn(file.problem);
    const PictureSize size = PngSize(file.bytes);
    if (size.IsNone()) return warn("is no PNG of at most 4096x4096 pixels");
    painter.budget.Charge(element, WorkOf(size, file.bytes));
    SurfacePtr surface = DecodePng(file.bytes);
    return surface ? Keep(path, std::move(surface)) : warn("is damaged");
}

// Null when there is none that can be drawn; then `problem` says why, unless it is just not there.
SurfacePtr Images::UsersPicture(Painter& painter, const Element& photo, const std::string& path,
                                std::string& problem)
{
    const FileRead file = ReadBelow(painter.settings.trustedFolder, path);
    if (file.outcome == FileRead::kRefused) problem = file.problem;
    if (file.outcome != FileRead::kRead) return nullptr;
    const PictureSize png = PngSize(file.bytes), size = png.IsNone() ? JpegSize(file.bytes) : png;
    if (size.IsNone()) {
        problem = "is no PNG or JPEG of at most 4096x4096 pixels";
        return nullptr;
    }
    painter.budget.Charge(photo, WorkOf(size, file.bytes));
    const double scale = std::min(1.0, FitOf(photo, size.width, size.height) * painter.scale);
    SurfacePtr surface = png.IsNone() ? DecodeJpeg(file.bytes, scale) : DecodePng(file.bytes);
    if (!surface) problem = "is damaged";
    return surface;
}

cairo_surface_t* Images::Photo(Painter& painter, const Element& photo)
{
    if (photo.Has("file") && !painter.settings.trustedFolder.empty()) {
        const std::string path = PathOf(photo);
        // No asset's path begins with a slash, and a photo is decoded for its box.
        const std::string key = "/" + path + "/" + std::string(photo.Text("fit")) + "/" +
                                std::string(photo.Text("width")) + "/" + std::string(photo.Text("height"));
        if (cairo_surface_t* known = Known(key)) return known;
        std::string problem;
        if (SurfacePtr surface = UsersPicture(painter, photo, path, problem))
            return Keep(key, std::move(surface));
        if (!problem.empty()) {
            painter.warnings.push_back(photo.At("the photo \"" + std::string(photo.Text("file")) + "\" " +
                                                problem + "; the default is shown"));
        }
    }
    return Asset(painter, photo, photo.Text("default"));
}

}  // namespace Drawing
