// watchface-capture --draw.

#include "draw-command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kDocument[] =
    R"(<watchface format="1" id="com.example.dawn" version="1" width="32" height="16" shape="square"
  default-language="en" preview-time="10:08:36" title-key="t">
<strings language="en"><string key="t">T</string></strings>
<text skeleton="jmm" x="16" y="12" size="8" color="#FFFFFF"/>
)";

class ADrawCommand : public testing::Test {
protected:
    ADrawCommand()
    {
        std::string pattern = testing::TempDir() + "/draw-XXXXXX";
        folder = mkdtemp(pattern.data());
        Write("watchface.xml", std::string(kDocument) + "</watchface>");
    }
    ~ADrawCommand() override { std::filesystem::remove_all(folder); }

    void Write(const std::string& name, const std::string& text) const
    {
        std::ofstream(folder + "/" + name, std::ios::binary) << text;
    }
    std::string Read(const std::string& name) const
    {
        std::ifstream in(folder + "/" + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    // The exit status; what it says is in `said`.
    int Run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "watchface-capture");
        std::vector<char*> raw;
        for (std::string& argument : arguments) raw.push_back(argument.data());
        testing::internal::CaptureStderr();
        const int status =
            Capture::RunDrawCommand(static_cast<int>(raw.size()), raw.data(), [this](const std::string& to) {
                confinedTo.push_back(to);
                return canBeConfined;
            });
        said = testing::internal::GetCapturedStderr();
        return status;
    }
    int Draw(std::vector<std::string> more = {})
    {
        more.insert(more.begin(), {"--draw", folder + "/watchface.xml", folder + "/out.png"});
        return Run(std::move(more));
    }
    std::vector<std::string> Files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string folder, said;
    std::vector<std::string> confinedTo;
    bool canBeConfined = true;
};

}  // namespace

TEST_F(ADrawCommand, is_confined_to_the_folder_of_its_picture)
{
    Draw();
    EXPECT_EQ(confinedTo, std::vector{folder});
    Run({"--draw", folder + "/watchface.xml", "no-folder.png"});
    EXPECT_EQ(confinedTo.back(), ".");
    std::filesystem::remove("no-folder.png");
}

TEST_F(ADrawCommand, draws_nothing_when_it_cannot_be_confined)
{
    canBeConfined = false;
    EXPECT_EQ(Draw(), 1);
    EXPECT_THAT(said, testing::HasSubstr("could not be confined"));
    EXPECT_EQ(Files(), std::vector<std::string>{"watchface.xml"});
}

TEST_F(ADrawCommand, writes_the_picture_and_nothing_else)
{
    EXPECT_EQ(Draw(), 0);
    EXPECT_EQ(said, "");
    EXPECT_THAT(Read("out.png"), StartsWith("\x89PNG"));
    EXPECT_THAT(Files(), ElementsAre("out.png", "watchface.xml"));
}

TEST_F(ADrawCommand, writes_an_svg_where_the_name_says_so)
{
    EXPECT_EQ(Run({"--draw", folder + "/watchface.xml", folder + "/out.svg"}), 0);
    EXPECT_THAT(Read("out.svg"), StartsWith("<?xml"));
    EXPECT_THAT(Read("out.svg"), HasSubstr("<svg"));
}

TEST_F(ADrawCommand, writes_the_same_bytes_each_time)
{
    Draw();
    const std::string first = Read("out.png");
    Draw();
    EXPECT_EQ(Read("out.png"), first);
}

TEST_F(ADrawCommand, takes_language_hours_and_size)
{
    Draw();
    const std::string plain = Read("out.png");
    EXPECT_EQ(Draw({"--hours", "12"}), 0);
    EXPECT_NE(Read("out.png"), plain);
    EXPECT_EQ(Draw({"--language", "ar_EG"}), 0);
    EXPECT_NE(Read("out.png"), plain);
    EXPECT_EQ(Draw({"--size", "64"}), 0);
    EXPECT_EQ(Read("out.png")[19], 64);
    EXPECT_EQ(Read("out.png")[23], 32);
}

TEST_F(ADrawCommand, finds_assets_beside_the_document_and_among_the_faces)
{
    Draw();
    std::filesystem::create_directories(folder + "/faces/com.example.dawn");
    std::filesystem::rename(folder + "/out.png", folder + "/faces/com.example.dawn/a.png");
    Write("watchface.xml",
          std::string(kDocument) + R"(<image src="a.png" x="0" y="0" width="9" height="9"/></watchface>)");
    EXPECT_EQ(Draw({"--faces", folder + "/faces"}), 0);
    EXPECT_EQ(said, "");
    EXPECT_EQ(Draw(), 0);
    EXPECT_THAT(said, HasSubstr("watchface.xml:5:1: warning: <image>: the image \"a.png\" is missing"));
}

TEST_F(ADrawCommand, looks_first_where_it_is_told_for_assets)
{
    Draw();
    const std::string picture = folder + "/out.png";
    for (const char* name : {"one", "two"}) std::filesystem::create_directories(folder + "/" + name);
    Write("watchface.xml",
          std::string(kDocument) + R"(<image src="a.png" x="0" y="0" width="9" height="9"/></watchface>)");
    std::filesystem::copy_file(picture, folder + "/two/a.png");
    EXPECT_EQ(Draw({"--assets", folder + "/one", "--assets", folder + "/two"}), 0);
    EXPECT_EQ(said, "");
    const std::string drawn = Read("out.png");
    Write("one/a.png", "no picture");
    EXPECT_EQ(Draw({"--assets", folder + "/one", "--assets", folder + "/two"}), 0);
    EXPECT_THAT(said, HasSubstr("a.png"));
    Write("a.png", "no picture");
    EXPECT_EQ(Draw({"--assets", folder + "/two"}), 0);
    EXPECT_EQ(said, "");
    EXPECT_EQ(Read("out.png"), drawn);
}

TEST_F(ADrawCommand, takes_the_folder_of_the_users_pictures)
{
    Draw();
    std::filesystem::create_directories(folder + "/trusted/theme/Backgrounds");
    std::filesystem::rename(folder + "/out.png", folder + "/trusted/theme/Backgrounds/a.png");
    Write(
        "watchface.xml",
        std::string(kDocument) +
            R"(<photo background="theme" file="a.png" default="gone.png" x="0" y="0" width="9" height="9"/></watchface>)");
    EXPECT_EQ(Draw({"--trusted", folder + "/trusted"}), 0);
    EXPECT_EQ(said, "");
    EXPECT_EQ(Draw(), 0);
    EXPECT_THAT(said, HasSubstr("\"gone.png\" is missing"));
}

TEST_F(ADrawCommand, says_in_one_line_where_a_document_breaks)
{
    Write("watchface.xml", std::string(kDocument) + "<circle/></watchface>");
    Write("out.png", "old");
    EXPECT_EQ(Draw(), 1);
    EXPECT_EQ(said, folder + "/watchface.xml:5:1: <circle>: the attribute \"cx\" is missing\n");
    EXPECT_EQ(Read("out.png"), "old");
}

TEST_F(ADrawCommand, says_why_it_cannot_read_or_write)
{
    EXPECT_EQ(Run({"--draw", folder + "/none.xml", folder + "/out.png"}), 1);
    EXPECT_EQ(said, folder + "/none.xml: cannot be read: No such file or directory\n");
    EXPECT_EQ(Run({"--draw", folder, folder + "/out.png"}), 1);
    EXPECT_THAT(said, HasSubstr("not a regular file"));
    EXPECT_EQ(Run({"--draw", folder + "/watchface.xml", folder + "/none/out.png"}), 1);
    EXPECT_THAT(said, HasSubstr("out.png: cannot be written: No such file or directory"));
}

TEST_F(ADrawCommand, refuses_a_command_line_that_it_does_not_understand)
{
    EXPECT_EQ(Run({"--draw"}), 2);
    EXPECT_EQ(Run({"--draw", "a"}), 2);
    EXPECT_EQ(Run({"a", "b"}), 2);
    EXPECT_EQ(Draw({"--hours", "13"}), 2);
    EXPECT_EQ(Draw({"--size", "0"}), 2);
    EXPECT_EQ(Draw({"--size", "5000"}), 2);
    EXPECT_EQ(Draw({"--what"}), 2);
}
