// The pictures that one drawing shows: a face's own assets, and the user's photos.

#pragma once

#include <cairo.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "painter.h"
#include "picture-reader.h"

namespace Drawing {

// Decodes each picture once, as long as they are not too many.
class Images {
public:
    // Assets are looked up in these folders, in this order.
    explicit Images(std::vector<std::string> assetFolders) : mAssetFolders(std::move(assetFolders)) {}

    // The PNG that `src` names, from the first asset folder that has it; null, with a warning, when there is
    // none that can be drawn. It is good until the next call.
    cairo_surface_t* Asset(Painter& painter, const Element& element, std::string_view src);
    // The user's picture of a `photo` element, else its default; null, with a warning, when neither can be
    // drawn. A picture that is there but cannot be drawn is warned of as well. It is good until the next
    // call.
    cairo_surface_t* Photo(Painter& painter, const Element& photo);

private:
    static constexpr double kMostKept = 64e6;  // bytes of pixels

    cairo_surface_t* Known(const std::string& key) const;
    cairo_surface_t* Keep(const std::string& key, SurfacePtr surface);
    SurfacePtr UsersPicture(Painter& painter, const Element& photo, const std::string& path,
                            std::string& problem);

    const std::vector<std::string> mAssetFolders;
    std::map<std::string, SurfacePtr> mDecoded;
    double mKept = 0;
};

// By how much a picture of this size is scaled in the box of a `photo` element: canvas units a pixel.
double FitOf(const Element& photo, double width, double height);

}  // namespace Drawing
