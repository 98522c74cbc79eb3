// Image assets, and pictures as PNG.

#include <png.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "a-drawing.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

void PutNumber(std::string& bytes, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 255);
}

// The beginning of a PNG that claims to be this large.
std::string HeaderOf(uint32_t width, uint32_t height)
{
    std::string bytes("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    PutNumber(bytes, width);
    PutNumber(bytes, height);
    return bytes + std::string("\x08\x06\0\0\0\0\0\0\0", 9);
}

}  // namespace

class AnImage : public ADrawing {
protected:
    AnImage()
    {
        std::string pattern = testing::TempDir() + "/face-XXXXXX";
        folder = mkdtemp(pattern.data());
        std::filesystem::create_directories(folder + "/own");
        std::filesystem::create_directories(folder + "/installed/pictures");
        settings.assetFolders = {folder + "/own", folder + "/installed"};
    }
    ~AnImage() override { std::filesystem::remove_all(folder); }

    void Put(const std::string& path, const std::string& bytes) const
    {
        std::ofstream(folder + "/" + path, std::ios::binary) << bytes;
    }
    // A PNG of one colour.
    std::string Png(const std::string& color)
    {
        root = R"(width="16" height="16" shape="square" preview-time="10:08:36" background=")" + color + "\"";
        Draw("");
        root = R"(width="100" height="100" shape="square" preview-time="10:08:36")";
        return Drawing::EncodePng(result.picture.get());
    }
    static std::string Image(const std::string& src, const std::string& more = "")
    {
        return "<image src=\"" + src + R"(" x="20" y="20" width="60" height="40" )" + more + "/>";
    }
    std::string Warning() const
    {
        return result.warnings.size() == 1 ? result.warnings[0].text : "not one warning";
    }

    std::string folder;
};

TEST_F(AnImage, is_stretched_to_its_box)
{
    Put("own/a.png", Png("#FF0000"));
    Draw(Image("a.png"));
    EXPECT_EQ(InkOf().left, 20);
    EXPECT_EQ(InkOf().right, 79);
    EXPECT_EQ(InkOf().top, 20);
    EXPECT_EQ(InkOf().bottom, 59);
    EXPECT_EQ(At(20, 20), kRed);
}

TEST_F(AnImage, has_its_opacity)
{
    Put("own/a.png", Png("#FF0000"));
    Draw(Image("a.png", R"(opacity="0.5")"));
    EXPECT_NEAR(At(50, 40).red, 128, 1);
}

TEST_F(AnImage, comes_from_the_first_folder_that_has_it)
{
    Put("installed/pictures/a.png", Png("#FFFFFF"));
    Draw(Image("pictures/a.png"));
    EXPECT_EQ(At(50, 40), kWhite);
    std::filesystem::create_directories(folder + "/own/pictures");
    Put("own/pictures/a.png", Png("#FF0000"));
    Draw(Image("pictures/a.png"));
    EXPECT_EQ(At(50, 40), kRed);
}

TEST_F(AnImage, that_is_missing_leaves_a_warning_and_the_rest_of_the_picture)
{
    Draw(R"(<rect x="0" y="0" width="100" height="100" fill="#FF0000"/>)" + Image("gone.png"));
    EXPECT_EQ(At(50, 40), kRed);
    EXPECT_THAT(Warning(), HasSubstr("\"gone.png\" is missing"));
}

TEST_F(AnImage, never_leaves_the_faces_folder)
{
    Put("secret.png", Png("#FF0000"));
    for (const char* path : {"../secret.png", "/etc/passwd", "a//b.png", "./a.png", ""}) {
        EXPECT_THAT(ErrorOf(Image(path)), HasSubstr("src")) << path;
    }
    std::filesystem::create_symlink("../secret.png", folder + "/own/link.png");
    std::filesystem::create_directory_symlink("..", folder + "/own/up");
    for (const char* path : {"link.png", "up/secret.png"}) {
        Draw(Image(path));
        EXPECT_TRUE(InkOf().IsEmpty()) << path;
        EXPECT_THAT(Warning(), HasSubstr("is no file")) << path;
    }
}

TEST_F(AnImage, whose_header_claims_too_much_costs_nothing)
{
    for (const auto& [width, height] : {
             std::pair{20000u,      20000u     },
             {4097u,       1u         },
             {0u,          5u         },
             {0x80000000u, 0x80000000u}
    }) {
        Put("own/bomb.png", HeaderOf(width, height));
        const auto begin = std::chrono::steady_clock::now();
        Draw(Image("bomb.png"));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
        EXPECT_THAT(Warning(), HasSubstr("at most 4096x4096"));
    }
}

TEST_F(AnImage, that_is_cut_short_or_no_png_is_left_out)
{
    const std::string good = Png("#FF0000");
    Put("own/short.png", good.substr(0, good.size() / 2));
    Draw(Image("short.png"));
    EXPECT_THAT(Warning(), HasSubstr("is damaged"));
    EXPECT_TRUE(InkOf().IsEmpty());
    Put("own/text.png", "<svg/>");
    Draw(Image("text.png"));
    EXPECT_THAT(Warning(), HasSubstr("is no PNG"));
}

TEST_F(AnImage, is_never_a_pipe_or_a_folder)
{
    mkfifo((folder + "/own/pipe.png").c_str(), 0600);
    Draw(Image("pipe.png"));
    EXPECT_THAT(Warning(), HasSubstr("is no file"));
    Draw(Image("." + std::string("x")));
    EXPECT_THAT(Warning(), HasSubstr("is missing"));
}

TEST_F(AnImage, that_is_painted_too_often_ends_the_drawing)
{
    Put("own/a.png", Png("#FF0000"));
    settings.size = 1024;
    std::string many;
    for (int i = 0; i < 2000; ++i) many += R"(<image src="a.png" x="0" y="0" width="100" height="100"/>)";
    EXPECT_THAT(ErrorOf(many), HasSubstr("more work"));
}

// What a PNG says of itself, and its pixels.
struct DecodedPng {
    int depth = 0, colorType = 0, interlace = -1;
    std::string rgba;
};

static DecodedPng Decode(const std::string& bytes)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    DecodedPng decoded{bytes[24], bytes[25], bytes[28], ""};
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return {};
    image.format = PNG_FORMAT_RGBA;
    decoded.rgba.resize(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, decoded.rgba.data(), 0, nullptr);
    return decoded;
}

TEST_F(ADrawing, is_written_as_rgba_that_is_not_premultiplied)
{
    root = R"(width="16" height="16" shape="square" preview-time="10:08:36" background="#C8640080")";
    Draw("");
    const DecodedPng png = Decode(Drawing::EncodePng(result.picture.get()));
    EXPECT_EQ(png.depth, 8);
    EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_RGBA);
    EXPECT_EQ(png.interlace, PNG_INTERLACE_NONE);
    const auto channel = [&](size_t i) { return static_cast<int>(static_cast<unsigned char>(png.rgba[i])); };
    EXPECT_NEAR(channel(0), 200, 2);
    EXPECT_NEAR(channel(1), 100, 2);
    EXPECT_EQ(channel(2), 0);
    EXPECT_EQ(channel(3), 128);
}
