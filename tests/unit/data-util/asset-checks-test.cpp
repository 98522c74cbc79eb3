// The assets of a face against the files that are there.

#include "asset-checks.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "a-face-document.h"

using testing::ElementsAre;
using testing::IsEmpty;

class AnAsset : public AFullFaceDocument {
protected:
    AnAsset()
    {
        std::string pattern = testing::TempDir() + "assets-XXXXXX";
        mFolder = mkdtemp(pattern.data());
        mFirst = mFolder + "/edited";
        mSecond = mFolder + "/installed";
        for (const std::string& folder : {mFirst, mSecond}) {
            std::filesystem::create_directories(folder + "/dial");
            std::filesystem::create_directories(folder + "/bg");
        }
        Write(mSecond + "/dial/rim.png", Png(400, 320));
        Write(mSecond + "/bg/plain.png", Png(400, 320));
        Write(mSecond + "/bg/face.png", Png(160, 160));
    }
    ~AnAsset() override { std::filesystem::remove_all(mFolder); }

    static void Write(const std::string& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary) << bytes;
    }

    // The first bytes of a PNG; nobody reads on.
    static std::string Png(unsigned width, unsigned height)
    {
        std::string bytes("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
        for (const unsigned side : {width, height}) {
            for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(side >> shift & 0xFF);
        }
        return bytes + "rest";
    }

    std::vector<DataUtil::Finding> Check() const override
    {
        return DataUtil::CheckAssets(mText, {mFirst, mSecond});
    }

    std::string mFolder, mFirst, mSecond;
};

TEST_F(AnAsset, is_an_image_or_the_default_of_photos)
{
    EXPECT_THAT(DataUtil::AssetPaths(*DataUtil::ParseFace(mText).document),
                ElementsAre("bg/face.png", "bg/plain.png", "dial/rim.png"));
}

TEST_F(AnAsset, is_found_in_the_second_folder_when_the_first_has_none)
{
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AnAsset, of_the_first_folder_counts)
{
    Write(mFirst + "/dial/rim.png", "GIF89a");
    ExpectOnly("E-ASSET-TYPE", "<image src=\"dial/rim.png\"", "is no PNG");
}

TEST_F(AnAsset, that_is_not_there_is_an_error)
{
    std::filesystem::remove(mSecond + "/dial/rim.png");
    ExpectOnly("E-ASSET-MISSING", "<image src=\"dial/rim.png\"", "\"dial/rim.png\"");
}

TEST_F(AnAsset, whose_folder_is_not_there_is_an_error)
{
    std::filesystem::remove_all(mSecond + "/dial");
    ExpectOnly("E-ASSET-MISSING", "<image src=\"dial/rim.png\"");
}

TEST_F(AnAsset, is_an_error_where_the_default_of_photos_names_it)
{
    std::filesystem::remove(mSecond + "/bg/face.png");
    ExpectOnly("E-ASSET-MISSING", "<photos id=\"portrait\"");
}

TEST_F(AnAsset, must_be_a_file)
{
    std::filesystem::remove(mSecond + "/dial/rim.png");
    std::filesystem::create_directory(mSecond + "/dial/rim.png");
    ExpectOnly("E-ASSET-MISSING", "<image src=\"dial/rim.png\"", "is no file");
}

TEST_F(AnAsset, that_is_a_pipe_is_not_waited_for)
{
    std::filesystem::remove(mSecond + "/dial/rim.png");
    ASSERT_EQ(mkfifo((mSecond + "/dial/rim.png").c_str(), 0600), 0);
    ExpectOnly("E-ASSET-MISSING", "<image src=\"dial/rim.png\"", "is no file");
}

TEST_F(AnAsset, is_not_looked_for_behind_a_link)
{
    Write(mFolder + "/outside.png", Png(400, 320));
    std::filesystem::remove(mSecond + "/dial/rim.png");
    std::filesystem::create_symlink(mFolder + "/outside.png", mSecond + "/dial/rim.png");
    ExpectOnly("E-ASSET-MISSING", "<image src=\"dial/rim.png\"", "is no file");
    std::filesystem::rename(mSecond + "/dial", mFolder + "/elsewhere");
    std::filesystem::create_directory_symlink(mFolder + "/elsewhere", mSecond + "/dial");
    ExpectOnly("E-ASSET-MISSING", "<image src=\"dial/rim.png\"", "is not there");
}

TEST_F(AnAsset, must_be_a_png)
{
    for (const std::string& bytes : {std::string(), Png(400, 320).substr(0, 23), std::string(99, 'x')}) {
        Write(mSecond + "/dial/rim.png", bytes);
        ExpectOnly("E-ASSET-TYPE", "<image src=\"dial/rim.png\"");
    }
}

TEST_F(AnAsset, must_have_1_to_4096_pixels_a_side)
{
    for (const auto& [width, height] : {
             std::pair(0U, 9U), {9U,    0U   },
               {4097U, 9U   },
               {9U,    4097U},
               {~0U,   ~0U  }
    }) {
        Write(mSecond + "/dial/rim.png", Png(width, height));
        ExpectOnly("E-ASSET-TYPE", "<image src=\"dial/rim.png\"", "4096");
    }
}

TEST_F(AnAsset, may_have_twice_the_size_of_its_box)
{
    Write(mSecond + "/dial/rim.png", Png(800, 640));
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AnAsset, with_more_than_twice_the_size_of_its_box_is_warned_of)
{
    for (const auto& [width, height] : {
             std::pair(801U, 640U), {800U, 641U}
    }) {
        Write(mSecond + "/dial/rim.png", Png(width, height));
        ExpectOnly("W-ASSET-SIZE", "<image src=\"dial/rim.png\"", "for a box of 400 x 320");
    }
}

TEST_F(AnAsset, as_the_default_of_photos_is_held_against_the_boxes_that_show_it)
{
    Write(mSecond + "/bg/face.png", Png(161, 160));
    ExpectOnly("W-ASSET-SIZE", "<photo photos=\"portrait\"", "\"bg/face.png\"");
}

TEST_F(AnAsset, is_looked_at_beside_faults_of_the_document)
{
    std::filesystem::remove(mSecond + "/bg/plain.png");
    Write(mSecond + "/dial/rim.png", Png(801, 640));
    Replace("version=\"7\"", "version=\"seven\"");
    Replace("role=\"icon-text\"", "rolle=\"icon-txt\"");
    EXPECT_THAT(Codes(), ElementsAre("E-ASSET-MISSING", "W-ASSET-SIZE"));
}

TEST_F(AnAsset, without_a_path_or_a_box_is_not_looked_at)
{
    Replace("src=\"dial/rim.png\"", "src=\"../rim.png\"");
    Replace("default=\"bg/plain.png\"", "picture=\"bg/plain.png\"");
    EXPECT_THAT(Codes(), IsEmpty());
    Replace("src=\"../rim.png\"", "src=\"dial/rim.png\"");
    Write(mSecond + "/dial/rim.png", Png(801, 640));
    ExpectOnly("W-ASSET-SIZE", "dial/rim.png");
    Replace("width=\"400\" height=\"320\" opacity", "width=\"4OO\" height=\"320\" opacity");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(AnAsset, of_a_text_that_cannot_be_read_is_not_looked_at)
{
    mText = "<face-result><image";
    EXPECT_THAT(Codes(), IsEmpty());
}
