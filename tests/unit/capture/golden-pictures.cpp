// Drawings look as they did: each is compared with a picture that was looked at when it was made.
//
// golden/NAME.xml is drawn and compared with golden/NAME.png; golden/faces/NAME.png holds a shipped face in
// each of its languages (columns) and in both hour modes (rows). Where a change is wanted, the target
// `golden-pictures` makes them all again; look at every one that git then shows as changed. A failed
// comparison leaves pictures of what was drawn, what was expected and where they differ.

#include <cairo.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "golden-documents.h"
#include "picture-comparison.h"

namespace {

namespace fs = std::filesystem;
using Drawing::SurfacePtr;

const fs::path kGolden = GOLDEN_FOLDER, kFailures = FAILURES_FOLDER;
const std::vector<std::string> kLanguages = {"en_GB", "de_DE", "ko_KR", "ja_JP", "ar_EG"};

void Write(const fs::path& path, cairo_surface_t* picture)
{
    fs::create_directories(path.parent_path());
    ASSERT_EQ(cairo_surface_write_to_png(picture, path.c_str()), CAIRO_STATUS_SUCCESS) << path;
}

// Null when there is none.
SurfacePtr ReadPicture(const fs::path& path)
{
    const SurfacePtr file(cairo_image_surface_create_from_png(path.c_str()));
    return cairo_surface_status(file.get()) == CAIRO_STATUS_SUCCESS ? Golden::Argb(file.get()) : nullptr;
}

void ExpectGolden(cairo_surface_t* actual, const std::string& name)
{
    const fs::path golden = kGolden / (name + ".png");
    if (std::getenv("MAKE_GOLDEN_PICTURES")) {
        Write(golden, actual);
        return;
    }
    const SurfacePtr expected = ReadPicture(golden);
    ASSERT_TRUE(expected) << golden << " is missing; the target golden-pictures makes it";
    const PictureComparison comparison = Compare(Golden::Argb(actual).get(), expected.get());
    if (comparison.LooksAlike()) return;
    const fs::path stem = kFailures / name;
    Write(stem.string() + "-actual.png", actual);
    Write(stem.string() + "-expected.png", expected.get());
    if (comparison.difference) Write(stem.string() + "-difference.png", comparison.difference.get());
    ADD_FAILURE() << name << " looks different in " << comparison.outliers << " pixels: see " << stem.string()
                  << "-{actual,expected,difference}.png";
}

// A face in its languages and hour modes, over the gray of a wall.
SurfacePtr SheetOf(const std::string& face)
{
    const std::string document = Golden::FlatDocument(face);
    const int columns = static_cast<int>(kLanguages.size()), size = Golden::kFaceSize;
    SurfacePtr sheet(cairo_image_surface_create(CAIRO_FORMAT_RGB24, columns * size, 2 * size));
    cairo_t* cr = cairo_create(sheet.get());
    cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
    cairo_paint(cr);
    for (int i = 0; i < 2 * columns; ++i) {
        Drawing::Settings settings = Golden::FaceSettings(face);
        settings.language = kLanguages[static_cast<size_t>(i % columns)];
        settings.hours24 = i < columns;
        const SurfacePtr picture = Golden::Draw(document, settings);
        if (!picture) break;
        cairo_set_source_surface(cr, picture.get(), i % columns * size, i / columns * size);
        cairo_paint(cr);
    }
    cairo_destroy(cr);
    return sheet;
}

std::string NameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

}  // namespace

class AGoldenPicture : public testing::TestWithParam<std::string> {};

TEST_P(AGoldenPicture, is_what_its_document_draws)
{
    const SurfacePtr picture = Golden::Draw(Golden::Document(GetParam()), Golden::DocumentSettings());
    if (picture) ExpectGolden(picture.get(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Drawing, AGoldenPicture, testing::ValuesIn(Golden::Documents()), NameOf);

class AShippedFace : public testing::TestWithParam<std::string> {};

TEST_P(AShippedFace, looks_as_it_did_in_every_language_and_hour_mode)
{
    ExpectGolden(SheetOf(GetParam()).get(), "faces/" + GetParam());
}

INSTANTIATE_TEST_SUITE_P(Drawing, AShippedFace, testing::ValuesIn(Golden::Faces()), NameOf);

TEST(AFailedComparison, leaves_what_was_drawn_what_was_expected_and_where_they_differ)
{
    if (std::getenv("MAKE_GOLDEN_PICTURES")) GTEST_SKIP();
    static SurfacePtr other;
    other = Golden::Draw(Golden::Document("shapes"), Golden::DocumentSettings());
    EXPECT_NONFATAL_FAILURE(ExpectGolden(other.get(), "ticks"), "ticks looks different in");
    for (const char* what : {"actual", "expected", "difference"})
        EXPECT_TRUE(fs::remove(kFailures / ("ticks-" + std::string(what) + ".png"))) << what;
    other.reset();
}
