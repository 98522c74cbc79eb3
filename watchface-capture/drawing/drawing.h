// Drawing a face: the text of a flat `watchface.xml` becomes a picture, or an SVG.
//
// A Renderer keeps open what is dear to open (fonts, date patterns) and opens it when the first text is
// drawn; one Renderer serves any number of faces, one after the other, on one thread. What a document says is
// foreign: its size, its elements, its numbers, its images and the work that it asks for are bounded (see
// Limits), and whatever breaks the format ends the drawing with one Finding that has a line and a column.
//
// The same document, settings, assets and fonts give the same pixels.

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using cairo_surface_t = struct _cairo_surface;

namespace Drawing {

// What a document and its images may cost.
struct Limits {
    static constexpr int kLargestSide = 4096;               // pixels, of a picture and of an image asset
    static constexpr int kLargestOwnSize = 1024;            // pixels, where the settings give no size
    static constexpr size_t kLargestImageFile = 32u << 20;  // bytes
    static constexpr double kWork = 400e6;                  // about one unit a pixel painted
    static constexpr int kLayerDepth = 8;
    static constexpr size_t kTextBytes = 512;  // of one line
};

struct Settings {
    std::string language = "en_GB";
    bool hours24 = true;
    std::string timezone = "UTC";  // a zoneinfo path or id
    int size = 0;                  // pixels of the longer side; 0: the canvas' own, at most kLargestOwnSize
    std::vector<std::string> assetFolders;  // where `src` is looked up, in this order
    std::string facesFolder;                // and then in its folder of the face's name; empty: nowhere
    std::string trustedFolder;              // where the user's pictures lie; empty: nowhere
};

// Something to say about a document. Lines and columns count from 1; 0 is the document as a whole.
struct Finding {
    int line = 0;
    int column = 0;
    std::string text;
};

// "file:line:column: text", without a position when there is none.
std::string Describe(const std::string& file, const Finding& finding);

struct ReleaseSurface {
    void operator()(cairo_surface_t* surface) const;
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, ReleaseSurface>;

struct Result {
    SurfacePtr picture;             // 32-bit ARGB; null when nothing was drawn
    Finding error;                  // why there is no picture
    std::vector<Finding> warnings;  // the picture lacks something: a glyph, an image
};

struct SvgResult {
    std::string svg;                // empty when nothing was drawn
    Finding error;                  // why there is none
    std::vector<Finding> warnings;  // as above
};

// What is inked, as it is told to an observer while it is painted. Lengths are canvas units.
struct Point {
    double x = 0, y = 0;
};
struct Area {
    double left = 0, top = 0, right = 0, bottom = 0;
};
struct Ink {
    enum class Kind { kShape, kText, kIcon };
    Kind kind = Kind::kShape;
    Finding element;            // where the element of the drawing begins (a hand, not its bar), and its name
    std::optional<Area> place;  // the box of a complication
    std::vector<Point> outline;  // flattened; of a line of text the corners of its ink, of an icon its square
    double reach = 0;            // how far it is painted beyond that: half the width of a stroke
    std::string text;            // of a line of text
    double shrink = 1;           // of a line of text: what of its size is left of fitting it in
};
using Observer = std::function<void(const Ink&)>;

class Renderer {
public:
    Renderer();
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    // The observer, where there is one, is told of all that is painted but images and shadows, in the order
    // of painting.
    Result Draw(std::string_view document, const Settings& settings, const Observer& observer = nullptr);
    // The same drawing as SVG, its size in pixels. Texts are outlines; soft shadows and images are pictures
    // in it.
    SvgResult ExportSvg(std::string_view document, const Settings& settings);

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

// The picture as PNG: 8-bit RGBA, not premultiplied. Empty when memory is short.
std::string EncodePng(cairo_surface_t* picture);

}  // namespace Drawing
