// Previews: sheet, preview request, preview check; and what is told about languages and time zones.

#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "a-watch.h"
#include "terminal.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr char kPngSignature[] = "\x89PNG\r\n\x1a\n";

// Of a PNG, from its header.
std::pair<int, int> SizeOf(const std::string& png)
{
    const std::string bytes = ContentsOf(png);
    if (!bytes.starts_with(kPngSignature) || bytes.size() < 24) return {};
    const auto number = [&bytes](std::size_t at) {
        int value = 0;
        for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
        return value;
    };
    return {number(16), number(20)};
}

}  // namespace

TEST_F(AWatch, shows_all_its_previews_on_one_sheet)
{
    const std::string out = mFolder + "/sheet.png";
    const Result drawn = Run({"sheet", "-o", out, "--json"});
    ASSERT_EQ(drawn.status, 0) << drawn.err;
    const Json sheet = drawn.AsJson();
    EXPECT_EQ(sheet["picture"], out);
    EXPECT_EQ(sheet["previews"].size(), Run({"list", "--json"}).AsJson().size());
    for (const Json& preview : sheet["previews"]) {
        EXPECT_EQ(preview["drawn"], false) << preview;
        EXPECT_EQ(preview["good"], true) << preview;
    }
    EXPECT_EQ(SizeOf(out), std::pair(sheet["width"].get<int>(), sheet["height"].get<int>()));
}

TEST_F(AWatch, draws_the_previews_that_it_has_not)
{
    fs::create_directories(ReadWriteFace(kClassic));
    fs::copy(ReadOnlyFace(kClassic), ReadWriteFace(kClassic));
    fs::remove(ReadWriteFace(kClassic) + kClassic + ".png");
    const Json sheet = Run({"sheet", kClassic, "-o", mFolder + "/sheet.png", "--json"}).AsJson();
    EXPECT_EQ(sheet["previews"][0]["drawn"], true);
    EXPECT_EQ(sheet["previews"][0]["good"], true);
}

TEST_F(AFolder, is_enough_for_a_sheet_in_many_languages)
{
    const std::string out = mFolder + "/sheet.png";
    const Result drawn = Wfctl({"sheet", StagedResultXml(kDigital), "-o", out, "--language",
                                "en_GB,de_DE,ko_KR", "--hours", "12,24", "--size", "60", "--json"});
    ASSERT_EQ(drawn.status, 0) << drawn.err;
    const Json previews = drawn.AsJson()["previews"];
    ASSERT_EQ(previews.size(), 6U);
    EXPECT_EQ(
        previews[1],
        (Json{
            {"face",     kDigital},
            {"drawn",    true    },
            {"language", "de_DE" },
            {"hours",    12      },
            {"good",     true    }
    }));
    EXPECT_EQ(previews[5]["hours"], 24);
    const auto [width, height] = SizeOf(out);
    EXPECT_GT(width, height);
    ASSERT_EQ(Wfctl({"sheet", StagedResultXml(kDigital), "-o", out, "--language", "en_GB,de_DE,ko_KR",
                     "--size", "60", "--columns", "1"})
                  .status,
              0);
    EXPECT_LT(SizeOf(out).first, SizeOf(out).second);
}

TEST_F(AFolder, has_no_sheet_of_what_is_not_there)
{
    const std::string out = mFolder + "/sheet.png";
    EXPECT_EQ(Wfctl({"sheet", "com.example.none", "-o", out}).status, 10);
    EXPECT_EQ(Wfctl({"sheet", mFolder + "/none.xml", "-o", out}).status, 10);
    EXPECT_EQ(Wfctl({"sheet", Holding("bad.xml", "<face-result/>"), "-o", out}).status, 1);
    EXPECT_EQ(Wfctl({"sheet", StagedResultXml(kDigital), "-o", out, "--hours", "13"}).status, 2);
    EXPECT_FALSE(fs::exists(out));
}

TEST_F(AFolder, says_which_preview_of_a_sheet_could_not_be_drawn)
{
    const std::string bad = Holding("bad.xml", "<watchface>\n</watchface>");
    const Result drawn = Wfctl({"sheet", StagedResultXml(kDigital), bad, "-o", mFolder + "/sheet.png"});
    EXPECT_EQ(drawn.status, 1);
    EXPECT_THAT(drawn.err, HasSubstr(bad + ":1:"));
    EXPECT_THAT(drawn.err, HasSubstr("1 of 2 previews could not be drawn"));
    EXPECT_THAT(ContentsOf(mFolder + "/sheet.png"), StartsWith(kPngSignature));
}

namespace {

// Of all programs that somebody can see, how many have the text in a word of their command.
std::size_t CountPrograms(const std::string& word)
{
    std::size_t count = 0;
    std::error_code error;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc", error))
        count += ContentsOf(process.path() / "cmdline").find(word) != std::string::npos ? 1 : 0;
    return count;
}

class AnInterruptedDrawing : public AWatch, public testing::WithParamInterface<int> {
protected:
    AnInterruptedDrawing()
    {
        fs::create_directory(mTemporary);
        mEnvironment["TMPDIR"] = mTemporary;
        std::signal(GetParam(), SIG_DFL);  // background jobs have it ignored, and so have their children
    }

    // Interrupts it once it draws.
    int Interrupt(const Arguments& arguments) const
    {
        const auto drawing = Start(arguments);
        if (!Eventually([&] { return CountPrograms(mTemporary) > 0; })) return -1;
        drawing->Signal(GetParam());
        return drawing->AwaitEnd();
    }

    const std::string mTemporary = mFolder + "/temporary";
};

// So many pictures take seconds.
constexpr char kLanguages[] =
    "en_GB,de_DE,ko_KR,ja_JP,ar_EG,fr_FR,it_IT,es_ES,pl_PL,pt_PT,nl_NL,sv_SE,fi_FI,da_DK,nb_NO,cs_CZ";

}  // namespace

TEST_P(AnInterruptedDrawing, leaves_no_folder_and_no_program)
{
    const std::string face = StagedResultXml(kDigital), out = mFolder + "/out.png";
    const Arguments all[] = {
        {"sheet",       face,       "-o", out,  "--language",        kLanguages,      "--hours", "12,24"},
        {"preview",      "--matrix",                face,            "-o", out, "--language", kLanguages},
        {"render", face, "-o",     out,  "--size",                 "4096"                           }
    };
    for (const Arguments& arguments : all) {
        EXPECT_EQ(Interrupt(arguments), 130) << arguments[0];
        EXPECT_TRUE(fs::is_empty(mTemporary)) << arguments[0];
        EXPECT_EQ(CountPrograms(mTemporary), 0U) << arguments[0];
    }
}

INSTANTIATE_TEST_SUITE_P(, AnInterruptedDrawing, testing::Values(SIGHUP, SIGINT, SIGTERM));

TEST_F(AWatch, waits_no_more_for_a_document_when_it_is_interrupted)
{
    const std::string pipe = mFolder + "/pipe.xml";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const auto drawing = Start({"sheet", StagedResultXml(kDigital), pipe, "-o", mFolder + "/x.png"});
    const std::ofstream writer(pipe);  // opens once somebody reads
    drawing->Signal(SIGTERM);
    EXPECT_EQ(drawing->AwaitEnd(), 128 + SIGTERM);
}

TEST_F(AFolder, is_told_of_languages_and_time_zones_that_nobody_knows)
{
    const std::string face = StagedResultXml(kDigital), out = mFolder + "/out.png";
    const Result drawn =
        Wfctl({"render", face, "-o", out, "--language", "xx_YY", "--timezone", "Europe/Berln"});
    EXPECT_EQ(drawn.status, 0);
    EXPECT_THAT(drawn.err, HasSubstr("there is no language [xx_YY]"));
    EXPECT_THAT(drawn.err, HasSubstr("did you mean Europe/Berlin?"));
    EXPECT_THAT(Wfctl({"sheet", face, "-o", out, "--language", "xx_YY"}).err, HasSubstr("[xx_YY]"));
    EXPECT_THAT(Wfctl({"render", face, "-o", out, "--language", "de_DE", "--timezone", "Asia/Seoul"}).err,
                IsEmpty());
}

TEST_F(AFolder, has_one_warning_of_an_unknown_time_zone_which_changes_nothing)
{
    const std::string face = StagedResultXml("com.corvane.watchface-mirel-c4");
    const std::string plain = mFolder + "/plain.png", zoned = mFolder + "/zoned.png";
    EXPECT_EQ(Wfctl({"render", face, "-o", plain}).status, 0);
    EXPECT_EQ(Wfctl({"render", face, "-o", zoned, "--timezone", "Asia/Tokio"}).err,
              "wfctl: warning: there is no time zone [Asia/Tokio]; did you mean Asia/Tokyo?\n");
    EXPECT_EQ(ContentsOf(zoned), ContentsOf(plain));
}

namespace {

constexpr char kPictured[] =
    R"(<face-result format="1" id="com.example.pictured" version="1" width="64" height="64"
 shape="round" default-language="en" preview-time="10:08:36" title-key="t">
<strings language="en"><string key="t">T</string></strings>
<scene><image src="own.png" x="0" y="0" width="64" height="64"/></scene></face-result>)";

}  // namespace

TEST_F(AWatch, draws_a_named_file_with_the_assets_beside_it)
{
    const std::string file = Holding("pictured_result.xml", kPictured);
    Holding("own.png", ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    const std::string before = mFolder + "/before.png", after = mFolder + "/after.png";
    EXPECT_EQ(Run({"render", file, "-o", before}).err, "");
    ASSERT_EQ(Run({"install", file}).status, 0);
    EXPECT_EQ(Run({"render", file, "-o", after}).err, "");
    EXPECT_EQ(ContentsOf(after), ContentsOf(before));
    EXPECT_EQ(Run({"sheet", file, "-o", after}).err, "");
    EXPECT_EQ(Run({"preview", "--matrix", file, "-o", after}).err, "");
}

TEST_F(AWatch, draws_a_named_file_with_the_assets_of_its_face_where_none_lie_beside_it)
{
    const std::string file = Holding("pictured_result.xml", kPictured);
    ASSERT_EQ(Run({"install", file}).status, 0);
    fs::copy_file(ReadOnlyFace(kClassic) + kClassic + ".png",
                  ReadWriteFace("com.example.pictured") + "own.png");
    EXPECT_EQ(Run({"render", file, "-o", mFolder + "/x.png"}).err, "");
}

TEST_F(AFolder, is_told_of_a_missing_image_without_the_line_of_another_document)
{
    const std::string file = Holding("pictured_result.xml", kPictured);
    EXPECT_EQ(Wfctl({"render", file, "-o", mFolder + "/x.png"}).err,
              file + ": warning: <image>: the image \"own.png\" is missing\n");
}

TEST_F(AWatch, takes_no_language_or_time_zone_that_nobody_knows)
{
    const Result language = Run({"setting", "set", "24-hour=true", "language=xx"});
    EXPECT_EQ(language.status, 2);
    EXPECT_THAT(language.err, HasSubstr("wfctl key set db/system/language 'xx'"));
    const Result zone = Run({"setting", "set", "timezone", "Europe/Berln"});
    EXPECT_EQ(zone.status, 2);
    EXPECT_THAT(zone.err, HasSubstr("did you mean Europe/Berlin?"));
    EXPECT_EQ(Run({"key", "list"}).out, "");
    EXPECT_EQ(Run({"setting", "set", "timezone=/usr/share/zoneinfo/Asia/Seoul"}).status, 0);
}

TEST_F(AWatch, has_good_previews_at_first)
{
    const Result checked = Run({"preview", "check"});
    EXPECT_EQ(checked.status, 0) << checked.err;
    EXPECT_THAT(checked.out, HasSubstr(std::string(kClassic) + "  good, 360x360\n"));
}

TEST_F(AWatch, without_faces_has_no_previews)
{
    mEnvironment["WATCH_RESOURCES"] = mFolder;
    EXPECT_EQ(Run({"preview", "check"}).status, 10);
    EXPECT_EQ(Run({"sheet", "-o", mFolder + "/sheet.png"}).status, 10);
    EXPECT_FALSE(fs::exists(mFolder + "/sheet.png"));
}

TEST_F(AWatch, knows_what_is_wrong_with_a_preview)
{
    fs::create_directories(ReadWriteFace(kClassic));
    fs::copy(ReadOnlyFace(kClassic), ReadWriteFace(kClassic));
    const std::string preview = ReadWriteFace(kClassic) + kClassic + ".png";
    const auto state = [&] {
        const Result checked = Run({"preview", "check", kClassic, "--json"});
        const Json report = checked.AsJson()[0];
        EXPECT_EQ(report["face"], kClassic);
        EXPECT_EQ(report["preview"], preview);
        EXPECT_EQ(checked.status, report["state"] == "good" ? 0 : 1);
        return report["state"].get<std::string>();
    };
    const auto document = fs::last_write_time(ReadWriteFace(kClassic) + "watchface.xml");
    fs::last_write_time(preview, document);
    EXPECT_EQ(state(), "good");
    fs::last_write_time(preview, document - std::chrono::seconds(1));
    EXPECT_EQ(state(), "older");
    fs::last_write_time(ReadWriteFace(kClassic) + "watchface.xml",
                        fs::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_EQ(state(), "good");  // the clock was put back between the two
    fs::copy_file(BlankPicture(*this), preview, fs::copy_options::overwrite_existing);
    EXPECT_EQ(state(), "blank");
    fs::copy_file(ReadOnlyFace(kClassic) + "watchface.xml", preview, fs::copy_options::overwrite_existing);
    EXPECT_EQ(state(), "no-png");
    fs::remove(preview);
    EXPECT_EQ(state(), "missing");
    EXPECT_THAT(Run({"preview", "check"}).err, HasSubstr(std::string("wfctl preview request ") + kClassic));
}

TEST_F(AWatch, draws_previews_again)
{
    const std::string xml = ContentsOf(StagedResultXml(kClassic));
    for (int i = 0; i < 2; ++i) {
        const std::string preview = ReadWriteFace(kClassic) + kClassic + ".png";
        fs::remove(preview);
        const Result requested = Run({"preview", "request", kClassic, kDigital});
        ASSERT_EQ(requested.status, 0) << requested.err;
        EXPECT_THAT(requested.out, StartsWith(preview + "\n"));
        EXPECT_THAT(ContentsOf(preview), StartsWith(kPngSignature));
        EXPECT_EQ(ContentsOf(ReadWriteFace(kClassic) + kClassic + "_result.xml"), xml);
    }
    EXPECT_EQ(Run({"preview", "check"}).status, 0);
}

TEST_F(AWatch, prints_what_is_drawn_on_lines_of_their_own)
{
    ATerminal terminal({WFCTL, "preview", "request", kClassic, kDigital}, mEnvironment);
    const std::string said = terminal.Await(" 2 of 2");
    constexpr char kCleared[] = "\r\x1b[K";
    for (const char* face : {kClassic, kDigital})
        EXPECT_THAT(said, HasSubstr(kCleared + ReadWriteFace(face) + face + ".png\r\n" + kCleared));
    EXPECT_THAT(said, HasSubstr(" 1 of 2\r"));
}

TEST_F(AWatch, draws_no_preview_of_a_face_that_there_is_not)
{
    const Result requested = Run({"preview", "request", kClassic, "mirel-e"});
    EXPECT_EQ(requested.status, 10);
    EXPECT_THAT(requested.err, HasSubstr(std::string("did you mean ") + kDigital + "?"));
    EXPECT_FALSE(fs::exists(ReadWriteFace(kClassic)));
}

TEST_F(AWatch, says_which_face_the_service_refused_to_draw_again)
{
    fs::create_directories(ReadWriteFace(kDigital));
    std::ofstream(ReadWriteFace(kDigital) + kDigital + "_result.xml") << "<face-result/>";
    const Result requested = Run({"preview", "request", kClassic, kDigital});
    EXPECT_EQ(requested.status, 1);
    EXPECT_EQ(requested.out, ReadWriteFace(kClassic) + kClassic + ".png\n");
    EXPECT_THAT(requested.err, HasSubstr(std::string("refused [") + kDigital + "]"));
    EXPECT_THAT(requested.err, HasSubstr("E-ATTRIBUTE-MISSING"));
}
