#include "golden-documents.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "face-document.h"

namespace Golden {
namespace {

namespace fs = std::filesystem;

const fs::path kGolden = GOLDEN_FOLDER, kFaces = FACES_FOLDER;

std::string Read(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What `nameOf` makes of the entries of a folder; empty names are left out.
template <typename NameOf>
std::vector<std::string> Names(const fs::path& folder, const NameOf& nameOf)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (std::string name = nameOf(entry.path()); !name.empty()) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

fs::path ResultOf(const std::string& face)
{
    return kFaces / face / (face + "_result.xml");
}

}  // namespace

std::vector<std::string> Documents()
{
    return Names(kGolden, [](const fs::path& path) {
        return path.extension() == ".xml" ? path.stem().string() : std::string();
    });
}

std::string Document(const std::string& name)
{
    return Read(kGolden / (name + ".xml"));
}

Drawing::Settings DocumentSettings()
{
    Drawing::Settings settings;
    settings.timezone = "Europe/Berlin";
    settings.assetFolders = {(kGolden / "assets").string()};
    settings.trustedFolder = (kGolden / "trusted").string();
    return settings;
}

std::vector<std::string> Faces()
{
    return Names(kFaces, [](const fs::path& path) {
        const std::string name = path.filename();
        return fs::exists(ResultOf(name)) ? name : std::string();
    });
}

std::string FlatDocument(const std::string& face)
{
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(Read(ResultOf(face)));
    return parsed.document ? DataUtil::Flatten(*parsed.document) : "";
}

Drawing::Settings FaceSettings(const std::string& face)
{
    Drawing::Settings settings;
    settings.size = kFaceSize;
    settings.assetFolders = {(kFaces / face).string()};
    return settings;
}

Drawing::SurfacePtr Draw(const std::string& document, const Drawing::Settings& settings)
{
    static Drawing::Renderer renderer;
    Drawing::Result result = renderer.Draw(document, settings);
    EXPECT_TRUE(result.picture) << Drawing::Describe("document", result.error);
    for (const Drawing::Finding& warning : result.warnings)
        ADD_FAILURE() << Drawing::Describe("document", warning);
    return std::move(result.picture);
}

Drawing::SurfacePtr Argb(cairo_surface_t* picture)
{
    Drawing::SurfacePtr copy(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
                                                        cairo_image_surface_get_width(picture),
                                                        cairo_image_surface_get_height(picture)));
    cairo_t* cr = cairo_create(copy.get());
    cairo_set_source_surface(cr, picture, 0, 0);
    cairo_paint(cr);
    cairo_destroy(cr);
    return copy;
}

}  // namespace Golden
