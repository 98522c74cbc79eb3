// What a comparison with a golden picture notices, and what it lets pass.

#include "picture-comparison.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "golden-documents.h"

namespace {

using Drawing::SurfacePtr;

constexpr int kFine = 4;  // pixels beside each other, for each of the picture

uint32_t* RowOf(cairo_surface_t* picture, int y)
{
    return reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(picture) +
                                       static_cast<ptrdiff_t>(y) * cairo_image_surface_get_stride(picture));
}

// The document as another rasterizer would draw it: much larger, then reduced. `shift` moves it to the right,
// in quarters of a pixel.
SurfacePtr DrawOtherwise(const std::string& document, Drawing::Settings settings, int size, int shift = 0)
{
    settings.size = size * kFine;
    const SurfacePtr large = Golden::Draw(document, settings);
    const int width = cairo_image_surface_get_width(large.get()) / kFine,
              height = cairo_image_surface_get_height(large.get()) / kFine;
    SurfacePtr picture(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint32_t sums[4] = {};
            for (int i = 0; i < kFine * kFine; ++i) {
                const int fine = std::max(0, x * kFine + i % kFine - shift);
                const uint32_t pixel = RowOf(large.get(), y * kFine + i / kFine)[fine];
                for (int c = 0; c < 4; ++c) sums[c] += pixel >> (8 * c) & 255;
            }
            uint32_t mean = 0;
            for (int c = 0; c < 4; ++c) mean |= sums[c] / (kFine * kFine) << (8 * c);
            RowOf(picture.get(), y)[x] = mean;
        }
    }
    cairo_surface_mark_dirty(picture.get());
    return picture;
}

std::string Document(const std::string& body, const std::string& time = "10:08:36")
{
    return R"(<watchface format="1" id="com.example.face" version="1" default-language="en" title-key="t" width="180" height="180"
              shape="round" background="#10131A" preview-time=")" +
           time + R"("><strings language="en"><string key="t">T</string></strings>)" + body + "</watchface>";
}

bool Alike(const std::string& a, const std::string& b)
{
    return Compare(Golden::Draw(a, {}).get(), Golden::Draw(b, {}).get()).LooksAlike();
}

bool Alike(cairo_surface_t* a, cairo_surface_t* b)
{
    return Compare(a, b).LooksAlike();
}

std::string Replaced(std::string text, const std::string& what, const std::string& by)
{
    const size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

}  // namespace

struct SixDegrees {
    const char* kind;
    const char* before;
    const char* after;
};

class AHandOffBySixDegrees : public testing::TestWithParam<SixDegrees> {};

TEST_P(AHandOffBySixDegrees, is_noticed)
{
    const std::string hand = "<hand kind=\"" + std::string(GetParam().kind) +
                             R"(" cx="90" cy="90"><bar length="60" width="1" fill="#C0603A"/></hand>)";
    EXPECT_FALSE(Alike(Document(hand, GetParam().before), Document(hand, GetParam().after)));
    EXPECT_FALSE(Alike(Document(hand, GetParam().after), Document(hand, GetParam().before)));
}

INSTANTIATE_TEST_SUITE_P(Drawing, AHandOffBySixDegrees,
                         testing::Values(SixDegrees{"hour", "10:08:00", "10:20:00"},
                                         SixDegrees{"minute", "10:08:00", "10:09:00"},
                                         SixDegrees{"second", "10:08:36", "10:08:37"},
                                         SixDegrees{"hour24", "10:08:00", "10:32:00"}));

TEST(APictureComparison, notices_a_second_more_on_a_shipped_face)
{
    const std::string name = "com.corvane.watchface-mirel-c1", face = Golden::FlatDocument(name);
    const Drawing::Settings settings = Golden::FaceSettings(name);
    const std::string later = Replaced(face, "preview-time=\"10:08:36\"", "preview-time=\"10:08:37\"");
    EXPECT_FALSE(Alike(Golden::Draw(face, settings).get(), Golden::Draw(later, settings).get()));
}

TEST(APictureComparison, notices_a_missing_glyph)
{
    for (const char* color : {"#FFFFFF", "#5A6272"}) {
        const std::string numerals =
            R"(<numerals cx="90" cy="90" r="60" size="9" labels="12 1 2 3 4 5 6 7 8 9 i 11" color=")" +
            std::string(color) + "\"/>";
        EXPECT_FALSE(Alike(Document(numerals), Document(Replaced(numerals, " 1 ", " - ")))) << color;
        EXPECT_FALSE(Alike(Document(numerals), Document(Replaced(numerals, " i ", " - ")))) << color;
        const std::string text = R"(<text text="Wed, 14 Oct" x="20" y="90" align="left" size="9" color=")" +
                                 std::string(color) + "\"/>";
        EXPECT_FALSE(Alike(Document(text), Document(Replaced(text, "Oct", "Oc")))) << color;
    }
}

TEST(APictureComparison, notices_what_is_added_moved_or_of_another_colour)
{
    const std::string dot = R"(<circle cx="90" cy="90" r="2" fill="#8A93A6"/>)";
    EXPECT_FALSE(Alike(Document(""), Document(dot)));
    EXPECT_FALSE(Alike(Document(dot), Document(Replaced(dot, "cx=\"90\"", "cx=\"93\""))));
    const std::string field = R"(<circle cx="90" cy="90" r="4" fill="#204060"/>)";
    EXPECT_FALSE(Alike(Document(field), Document(Replaced(field, "#204060", "#205080"))));
}

TEST(APictureComparison, notices_another_shape_of_the_canvas)
{
    EXPECT_FALSE(Alike(Document(""), Replaced(Document(""), "\"round\"", "\"square\"")));
}

TEST(APictureComparison, refuses_another_size)
{
    const PictureComparison comparison =
        Compare(Golden::Draw(Document(""), {}).get(),
                Golden::Draw(Replaced(Document(""), "height=\"180\"", "height=\"179\""), {}).get());
    EXPECT_FALSE(comparison.LooksAlike());
    EXPECT_FALSE(comparison.difference);
}

TEST(APictureComparison, lets_another_rasterizer_pass)
{
    for (const std::string& name : Golden::Documents()) {
        const std::string document = Golden::Document(name);
        const Drawing::Settings settings = Golden::DocumentSettings();
        const SurfacePtr picture = Golden::Draw(document, settings);
        EXPECT_TRUE(Alike(picture.get(), DrawOtherwise(document, settings, 180).get())) << name;
    }
    const std::string face = "com.corvane.watchface-mirel-c1", document = Golden::FlatDocument(face);
    const Drawing::Settings settings = Golden::FaceSettings(face);
    EXPECT_TRUE(Alike(Golden::Draw(document, settings).get(),
                      DrawOtherwise(document, settings, Golden::kFaceSize).get()));
}

TEST(APictureComparison, lets_texts_pass_that_are_shifted_by_less_than_a_pixel)
{
    const std::string texts = Document(R"(<text text="Wed, 14 Oct" x="90" y="40" size="9" color="#FFFFFF"/>
        <text text="10:08" x="90" y="100" size="50" weight="800" color="#FFFFFF"/>
        <text text="오토매틱" x="90" y="140" size="14" color="#8A93A6"/>)");
    EXPECT_TRUE(Alike(Golden::Draw(texts, {}).get(), DrawOtherwise(texts, {}, 180, 1).get()));
}
