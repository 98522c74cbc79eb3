// Drawing: a document gives a picture or says where it is broken, as pixels and as SVG alike, and the same
// each time.
//
// The first seeds are the documents of the golden pictures. Pictures that a document names are looked up
// beside theirs.

#include <cairo.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "drawing.h"

namespace {

void Expect(bool condition)
{
    if (!condition) std::abort();
}

void CheckFinding(const Drawing::Finding& finding)
{
    Expect(!finding.text.empty());
    Expect(finding.line >= 0 && finding.column >= 0);
}

std::string_view PixelsOf(cairo_surface_t* picture)
{
    return {reinterpret_cast<const char*>(cairo_image_surface_get_data(picture)),
            static_cast<std::size_t>(cairo_image_surface_get_stride(picture)) *
                static_cast<std::size_t>(cairo_image_surface_get_height(picture))};
}

Drawing::Settings SmallPicture()
{
    Drawing::Settings settings;
    settings.size = 40;
    settings.language = "ar_EG";
    settings.timezone = "Europe/Berlin";
    settings.assetFolders = {GOLDEN_FOLDER "/assets"};
    settings.trustedFolder = GOLDEN_FOLDER "/trusted";
    return settings;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Drawing::Renderer renderer;
    static const Drawing::Settings settings = SmallPicture();
    const std::string_view document(reinterpret_cast<const char*>(data), size);

    const Drawing::Result drawn = renderer.Draw(document, settings);
    for (const Drawing::Finding& warning : drawn.warnings) CheckFinding(warning);
    if (!drawn.picture) {
        CheckFinding(drawn.error);
        return 0;
    }
    Expect(drawn.error.text.empty());
    Expect(!Drawing::EncodePng(drawn.picture.get()).empty());
    const Drawing::Result again = renderer.Draw(document, settings);
    Expect(again.picture && PixelsOf(again.picture.get()) == PixelsOf(drawn.picture.get()));
    const Drawing::SvgResult svg = renderer.ExportSvg(document, settings);
    Expect(svg.svg.ends_with("</svg>\n") && svg.warnings.size() == drawn.warnings.size());
    return 0;
}
