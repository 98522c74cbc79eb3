// The user's pictures.

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "a-drawing.h"
#include "a-jpeg.h"
#include "picture-reader.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr JpegColor kRedInk{255, 0, 0}, kBlueInk{0, 0, 255};

JpegColor RedThenBlue(int x, int)
{
    return x < 64 ? kRedInk : kBlueInk;
}

JpegColor AllRed(int, int)
{
    return kRedInk;
}

}  // namespace

// The default is white, the photos have other colours.
class APhoto : public ADrawing {
protected:
    APhoto()
    {
        std::string pattern = testing::TempDir() + "/photos-XXXXXX";
        folder = mkdtemp(pattern.data());
        for (const char* below : {"Backgrounds", "GalleryBackgrounds/C7"})
            std::filesystem::create_directories(folder + "/trusted/theme/" + below);
        std::filesystem::create_directories(folder + "/face");
        Put("face/default.png", Png("#FFFFFF"));
        settings.assetFolders = {folder + "/face"};
        settings.trustedFolder = folder + "/trusted";
    }
    ~APhoto() override { std::filesystem::remove_all(folder); }

    void Put(const std::string& path, const std::string& bytes) const
    {
        std::ofstream(folder + "/" + path, std::ios::binary) << bytes;
    }
    void PutTheme(const std::string& bytes) const { Put("trusted/theme/Backgrounds/a.jpg", bytes); }

    // A PNG of one colour, 40 pixels wide and 20 high.
    std::string Png(const std::string& color)
    {
        const std::string own = root;
        root = R"(width="40" height="20" shape="square" preview-time="10:08:36" background=")" + color + "\"";
        Draw("");
        root = own;
        return Drawing::EncodePng(result.picture.get());
    }
    // The photo "a.jpg" of the theme in the middle of the canvas.
    static std::string Photo(const std::string& more = "")
    {
        return R"(<photo background="theme" file="a.jpg" default="default.png" x="20" y="20" width="60" height="60" )" +
               more + "/>";
    }
    void ExpectDefault(const std::string& why)
    {
        Draw(Photo());
        EXPECT_EQ(At(50, 50), kWhite);
        ASSERT_EQ(result.warnings.size(), 1u);
        EXPECT_THAT(result.warnings[0].text, AllOf(HasSubstr("<photo>: the photo \"a.jpg\" " + why),
                                                   HasSubstr("the default is shown")));
    }

    std::string folder;
};

TEST_F(APhoto, lies_in_the_folder_of_its_background_type)
{
    Put("trusted/theme/Backgrounds/a.png", Png("#FF0000"));
    Put("trusted/theme/GalleryBackgrounds/a.png", Png("#00FF00"));
    Put("trusted/theme/GalleryBackgrounds/C7/a.png", Png("#0000FF"));
    const auto shown = [this](const std::string& where) {
        Draw("<photo " + where +
             R"( file="a.png" default="default.png" x="0" y="0" width="100" height="100"/>)");
        return At(50, 50);
    };
    EXPECT_EQ(shown(R"(background="theme")"), kRed);
    EXPECT_EQ(shown(R"(background="gallery")"), (Pixel{0, 255, 0}));
    EXPECT_EQ(shown(R"(background="gallery" prefix="C7")"), (Pixel{0, 0, 255}));
}

TEST_F(APhoto, covers_its_box_and_shows_its_middle)
{
    PutTheme(Jpeg(128, 32, RedThenBlue));
    Draw(Photo());
    EXPECT_EQ(InkOf().left, 20);
    EXPECT_EQ(InkOf().right, 79);
    EXPECT_EQ(InkOf().top, 20);
    EXPECT_EQ(InkOf().bottom, 79);
    EXPECT_GT(At(40, 50).red, 240);  // the middle of the picture is the middle of the box
    EXPECT_GT(At(60, 50).blue, 240);
}

TEST_F(APhoto, can_be_contained_in_its_box)
{
    PutTheme(Jpeg(128, 64, RedThenBlue));
    Draw(Photo(R"(fit="contain")"));
    EXPECT_EQ(InkOf().left, 20);
    EXPECT_EQ(InkOf().right, 79);
    EXPECT_EQ(InkOf().top, 35);
    EXPECT_EQ(InkOf().bottom, 64);
}

TEST_F(APhoto, has_its_opacity)
{
    PutTheme(Jpeg(64, 64, AllRed));
    Draw(Photo(R"(opacity="0.5")"));
    EXPECT_NEAR(At(50, 50).red, 127, 2);
}

TEST_F(APhoto, without_a_file_is_its_default)
{
    Draw(R"(<photo background="gallery" default="default.png" x="20" y="20" width="60" height="60"/>)");
    EXPECT_EQ(At(50, 50), kWhite);
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST_F(APhoto, that_is_gone_is_its_default_without_a_word)
{
    Draw(Photo());
    EXPECT_EQ(At(50, 50), kWhite);
    EXPECT_THAT(result.warnings, IsEmpty());
    settings.trustedFolder = folder + "/nowhere";
    Draw(Photo());
    EXPECT_EQ(At(50, 50), kWhite);
    settings.trustedFolder.clear();
    Draw(Photo());
    EXPECT_EQ(At(50, 50), kWhite);
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST_F(APhoto, without_any_picture_leaves_a_warning)
{
    std::filesystem::remove(folder + "/face/default.png");
    Draw(Photo());
    EXPECT_TRUE(InkOf().IsEmpty());
    ASSERT_EQ(result.warnings.size(), 1u);
    EXPECT_THAT(result.warnings[0].text, HasSubstr("\"default.png\" is missing"));
}

TEST_F(APhoto, is_never_a_link_a_pipe_or_a_folder)
{
    const std::string path = folder + "/trusted/theme/Backgrounds/a.jpg";
    Put("secret.jpg", Jpeg(64, 64, AllRed));
    std::filesystem::create_symlink("../../../secret.jpg", path);
    ExpectDefault("is no file");
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    ExpectDefault("is no file");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    ExpectDefault("is no file");
    std::filesystem::remove_all(folder + "/trusted/theme/Backgrounds");
    std::filesystem::create_directory_symlink(folder, folder + "/trusted/theme/Backgrounds");
    std::filesystem::rename(folder + "/secret.jpg", folder + "/a.jpg");
    ExpectDefault("is no file");
}

TEST_F(APhoto, is_a_bare_file_name)
{
    for (const char* name : {"../a.jpg", "theme/a.jpg", "..", ".", ""}) {
        EXPECT_THAT(
            ErrorOf(
                R"(<photo background="theme" default="default.png" x="0" y="0" width="9" height="9" file=")" +
                std::string(name) + "\"/>"),
            HasSubstr("<photo>: file=\""))
            << name;
    }
}

TEST_F(APhoto, that_is_damaged_or_cut_short_is_its_default)
{
    const std::string jpeg = Jpeg(64, 64, [](int x, int y) {
        return JpegColor{uint8_t(x * y), uint8_t(x * 3), 9};
    });
    PutTheme(jpeg.substr(0, jpeg.size() * 2 / 3));
    ExpectDefault("is damaged");
    std::string broken = jpeg;
    for (size_t i = broken.size() / 2; i < broken.size() - 2; i += 3) broken[i] = static_cast<char>(i * 7);
    PutTheme(broken);
    ExpectDefault("is damaged");
    const std::string png = Png("#FF0000");
    PutTheme(png.substr(0, png.size() / 2));
    ExpectDefault("is damaged");
    PutTheme("\xff\xd8\xff");
    ExpectDefault("is no PNG or JPEG");
    PutTheme("<svg/>");
    ExpectDefault("is no PNG or JPEG");
    PutTheme("");
    ExpectDefault("is no PNG or JPEG");
}

TEST_F(APhoto, whose_header_claims_too_much_costs_nothing)
{
    std::string huge = Jpeg(8, 8, AllRed);
    const size_t frame = huge.find("\xff\xc0");
    for (const size_t at : {5u, 7u}) {  // the height, then the width
        std::string one = huge;
        one[frame + at] = 0x4e;  // 0x4e00 is 19968
        PutTheme(one);
        const auto begin = std::chrono::steady_clock::now();
        ExpectDefault("is no PNG or JPEG of at most 4096x4096 pixels");
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    }
}

TEST_F(APhoto, larger_than_its_limit_is_not_read)
{
    PutTheme(Jpeg(8, 8, AllRed));
    std::filesystem::resize_file(folder + "/trusted/theme/Backgrounds/a.jpg", (32u << 20) + 1);
    ExpectDefault("is larger than 32 MiB");
}

TEST_F(APhoto, in_colours_for_printing_is_its_default)
{
    PutTheme(Jpeg(64, 64, AllRed, {.cmyk = true}));
    ExpectDefault("is damaged");
}

TEST_F(APhoto, that_comes_in_endless_passes_is_its_default)
{
    PutTheme(Jpeg(64, 64, AllRed, {.scans = 12}));
    Draw(Photo());
    EXPECT_THAT(result.warnings, IsEmpty());
    PutTheme(Jpeg(64, 64, AllRed, {.scans = 64}));
    ExpectDefault("is damaged");
}

TEST_F(APhoto, may_be_gray)
{
    PutTheme(Jpeg(64, 64, [](int, int) { return JpegColor{128, 0, 0}; }, {.gray = true}));
    Draw(Photo());
    EXPECT_NEAR(At(50, 50).red, 128, 2);
    EXPECT_NEAR(At(50, 50).blue, 128, 2);
}

TEST_F(APhoto, with_needless_bytes_behind_it_is_shown)
{
    PutTheme(Jpeg(64, 64, AllRed) + "trailing");
    Draw(Photo());
    EXPECT_GT(At(50, 50).red, 240);
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST(AJpeg, is_decoded_no_larger_than_it_is_needed)
{
    const std::string jpeg = Jpeg(128, 64, RedThenBlue);
    const auto width = [&](double scale) {
        return cairo_image_surface_get_width(Drawing::DecodeJpeg(jpeg, scale).get());
    };
    EXPECT_EQ(width(1), 128);
    EXPECT_EQ(width(0.51), 128);
    EXPECT_EQ(width(0.5), 64);
    EXPECT_EQ(width(0.3), 64);
    EXPECT_EQ(width(0.01), 16);
}

TEST_F(APhoto, that_is_shrunk_too_often_ends_the_drawing)
{
    const Drawing::SurfacePtr large(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 3000, 3000));
    PutTheme(Drawing::EncodePng(large.get()));
    std::string many;
    for (int i = 0; i < 500; ++i) many += Photo();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(ErrorOf(many), HasSubstr("more work"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
}

TEST_F(APhoto, that_unfolds_to_its_limit_stays_within_its_cost)
{
    const Drawing::SurfacePtr large(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 4096, 4096));
    const std::string png = Drawing::EncodePng(large.get());
    const auto begin = std::chrono::steady_clock::now();
    for (const std::string& bytes : {png, Jpeg(4096, 4096, AllRed, {.scans = 32})}) {
        PutTheme(bytes);
        Draw(Photo());
        EXPECT_THAT(result.warnings, IsEmpty());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
}
