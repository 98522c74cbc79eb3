// Faces: list, current, set, install, update, validate, flatten, render.

#include <filesystem>
#include <fstream>

#include "a-watch.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr char kPngSignature[] = "\x89PNG\r\n\x1a\n";

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const auto at = text.find(from);
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

// What `list` says of a face.
Json Listed(const AWatch& watch, const std::string& name)
{
    for (const Json& face : watch.Run({"list", "--json"}).AsJson()) {
        if (face["name"] == name) return face;
    }
    return nullptr;
}

}  // namespace

TEST_F(AWatch, lists_its_faces)
{
    const Json face = Listed(*this, kClassic);
    EXPECT_EQ(face["title"], "Mirel Classic");
    EXPECT_EQ(face["area"], "read-only");
    EXPECT_EQ(face["current"], false);
    EXPECT_THAT(Run({"list"}).out, HasSubstr("Mirel Classic"));
}

TEST_F(AWatch, lists_a_face_with_a_folder_in_the_place_of_its_document)
{
    fs::create_directories(ReadWriteFace("org.example.folder") + "org.example.folder_result.xml");
    const Result listed = Run({"list"});
    EXPECT_EQ(listed.status, 0) << listed.err;
    EXPECT_THAT(listed.out, HasSubstr("org.example.folder  "));
    EXPECT_THAT(listed.out, HasSubstr("Mirel Classic"));
}

TEST_F(AWatch, has_no_current_face_at_first)
{
    EXPECT_EQ(Run({"current"}).status, 10);
}

TEST_F(AWatch, makes_a_face_the_current_one)
{
    EXPECT_EQ(Run({"set", kDigital}).status, 0);
    EXPECT_EQ(Run({
                      "current", "--json"
    })
                  .AsJson(),
              (Json{{"app", "com.corvane.watchface"}, {"face", kDigital}}));
    EXPECT_EQ(Run({"set", kDigital}).status, 0);
    EXPECT_EQ(Listed(*this, kDigital)["current"], true);
    EXPECT_THAT(Run({"current"}).out, HasSubstr(kDigital));
}

TEST_F(AWatch, does_not_make_a_face_current_that_there_is_not)
{
    const Result set = Run({"set", "com.example.none"});
    EXPECT_EQ(set.status, 10);
    EXPECT_THAT(set.err, HasSubstr("wfctl list"));
    EXPECT_EQ(Run({"current"}).status, 10);
}

TEST_F(AWatch, installs_a_face_and_draws_its_preview)
{
    const Result installed = Run({"install", StagedResultXml(kClassic)});
    ASSERT_EQ(installed.status, 0) << installed.err;
    EXPECT_EQ(installed.out, "installed " + std::string(kClassic) + " (Mirel Classic)\n" +
                                 ReadWriteFace(kClassic) + kClassic + ".png\n");
    EXPECT_THAT(ContentsOf(ReadWriteFace(kClassic) + kClassic + ".png"), StartsWith(kPngSignature));
    EXPECT_EQ(Listed(*this, kClassic)["area"], "read-write");
}

TEST_F(AWatch, updates_a_face_with_another_selection)
{
    ASSERT_EQ(Run({"install", StagedResultXml(kClassic)}).status, 0);
    const std::string before = ContentsOf(ReadWriteFace(kClassic) + kClassic + ".png");
    const std::string edited = Replaced(ContentsOf(StagedResultXml(kClassic)), "<selection/>",
                                        "<selection><pick group=\"accent\" option=\"azure\"/></selection>");
    const Result updated = Run({"update", Holding("edited.xml", edited), "--as", kEditor});
    ASSERT_EQ(updated.status, 0) << updated.err;
    EXPECT_THAT(updated.out, StartsWith("updated " + std::string(kClassic) + " (Mirel Classic)\n"));
    EXPECT_NE(ContentsOf(ReadWriteFace(kClassic) + kClassic + ".png"), before);
    EXPECT_EQ(ContentsOf(ReadWriteFace(kClassic) + kClassic + "_result.xml"), edited);
}

TEST_F(AWatch, names_no_preview_that_was_not_waited_for)
{
    EXPECT_EQ(Run({"install", StagedResultXml(kClassic), "--no-wait"}).out,
              "installed " + std::string(kClassic) + " (Mirel Classic)\n");
}

TEST_F(AFolder, is_told_from_a_document)
{
    for (const std::string& folder : {std::string("."), std::string(".."), mFolder}) {
        const Result checked = Wfctl({"validate", folder});
        EXPECT_EQ(checked.status, 1);
        EXPECT_EQ(checked.err, "wfctl: [" + folder + "] is a folder; name a file in it\n");
    }
    EXPECT_THAT(Wfctl({"validate", BlankPicture(*this)}).out, HasSubstr("this is a PNG picture"));
}

TEST_F(AWatch, is_not_sent_a_face_that_would_be_refused)
{
    const std::string bad = Replaced(ContentsOf(StagedResultXml(kClassic)), "<ticks", "<tickz");
    const std::string file = Holding("element_result.xml", bad);
    for (const char* verb : {"install", "update"}) {
        const Result refused = Run({verb, file});
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.out, "");
        EXPECT_THAT(refused.err, StartsWith(file + ":"));
        EXPECT_THAT(refused.err, HasSubstr("did you mean \"ticks\"?"));
        EXPECT_THAT(refused.err,
                    HasSubstr("is refused, so nothing is sent; type: wfctl validate '" + file + "'"));
    }
    EXPECT_FALSE(fs::exists(fs::path(ReadWriteFace(kClassic)).parent_path().parent_path() / "element"));
    EXPECT_FALSE(fs::exists(ReadWriteFace(kClassic)));
}

TEST_F(AWatch, says_that_the_service_refused_a_face_and_where_to_look)
{
    fs::path folder = ReadWriteFace(kClassic);
    folder = folder.parent_path();
    fs::create_directories(folder.parent_path());
    std::ofstream(folder) << "a file where the folder would be";
    const std::string file = StagedResultXml(kClassic);
    const Result refused = Run({"install", file});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_THAT(refused.err, HasSubstr("the service refused [" + std::string(kClassic) +
                                       "]; type: wfctl validate '" + file + "'; "));
    EXPECT_EQ(Run({"install", file, "--json"}).AsJson()["bundle"]["status"], "fail");
}

TEST_F(AWatch, takes_an_icon_from_anywhere)
{
    const std::string icon = Holding("icon.png", ContentsOf(ReadOnlyFace(kDigital) + kDigital + ".png"));
    const Result updated = Run(
        {"update", StagedResultXml(kClassic), "--icon", icon, "--as", kEditor, "--label", "Mine", "--json"});
    ASSERT_EQ(updated.status, 0) << updated.err;
    EXPECT_EQ(ContentsOf(ReadWriteFace(kClassic) + kClassic + ".png"), ContentsOf(icon));
    EXPECT_EQ(updated.AsJson()["bundle"]["data/label"], "Mine");
}

TEST_F(AWatch, takes_no_icon_that_is_no_picture)
{
    EXPECT_EQ(Run({"update", StagedResultXml(kClassic), "--icon", Holding("icon.png", "text")}).status, 1);
    EXPECT_EQ(Run({"update", StagedResultXml(kClassic), "--icon", mFolder + "/none.png"}).status, 10);
}

TEST_F(AWatch, says_at_once_that_an_application_would_get_no_answer)
{
    for (const char* mute : {"com.corvane.watchface", "com.example.app:port", "com.corvane.w-home:other"}) {
        const Result installed = Run({"install", StagedResultXml(kClassic), "--as", mute});
        EXPECT_EQ(installed.status, 2) << mute;
        EXPECT_THAT(installed.err, HasSubstr("com.corvane.watchface-editor")) << mute;
    }
    EXPECT_FALSE(fs::exists(ReadWriteFace(kClassic)));
}

TEST_F(AWatch, installs_while_a_listener_is_the_application)
{
    const auto listener = Listen({"--as", kManager, "--count", "1"});
    const Result installed = Run({"install", StagedResultXml(kClassic), "--json"});
    ASSERT_EQ(installed.status, 0) << installed.err;
    EXPECT_EQ(installed.AsJson()["bundle"]["status"], "success");
    EXPECT_EQ(Json::parse(listener->NextLine().value_or("null")), installed.AsJson());
}

TEST_F(AFolder, is_enough_to_flatten_a_document)
{
    const std::string source =
        std::string(STAGED_FACES) + "/com.corvane.watchface/shared/res/watchlist/" + kClassic + "/";
    const Result flat = Wfctl({"flatten", source + kClassic + "_result.xml"});
    EXPECT_EQ(flat.status, 0) << flat.err;
    EXPECT_EQ(flat.out, ContentsOf(source + "watchface.xml"));
    EXPECT_EQ(Wfctl({"flatten", source + kClassic + "_result.xml", "-o", mFolder + "/out.xml"}).out, "");
    EXPECT_EQ(ContentsOf(mFolder + "/out.xml"), flat.out);
}

TEST_F(AFolder, is_enough_to_find_what_is_wrong_with_a_document)
{
    const std::string file = Holding("bad.xml", "<face-result/>");
    const Result refused = Wfctl({"flatten", file, "-o", mFolder + "/out.xml"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr(file + ":1:1: E-"));
    EXPECT_FALSE(fs::exists(mFolder + "/out.xml"));
    EXPECT_EQ(Wfctl({"flatten", file, "--json"}).AsJson()["accepted"], false);
    EXPECT_EQ(Wfctl({"flatten", mFolder + "/none.xml"}).status, 10);
}

TEST_F(AWatch, finds_nothing_wrong_with_its_faces)
{
    const Result checked = Run({"validate", kClassic, kDigital});
    EXPECT_EQ(checked.status, 0) << checked.out;
    EXPECT_EQ(checked.out, ReadOnlyFace(kClassic) + kClassic + "_result.xml: good\n" +
                               ReadOnlyFace(kClassic) + "watchface.xml: good\n" + ReadOnlyFace(kDigital) +
                               kDigital + "_result.xml: good\n" + ReadOnlyFace(kDigital) +
                               "watchface.xml: good\n");
}

TEST_F(AFolder, is_enough_to_find_all_that_is_wrong_with_documents)
{
    std::string text = ContentsOf(StagedResultXml(kClassic));
    text = Replaced(text, "label-key=\"dial\"", "label-key=\"dail\"");
    text = Replaced(text, "<scene>",
                    "<scene>\n<image src=\"none.png\" x=\"0\" y=\"0\" width=\"0x\" height=\"1\"/>");
    const std::string result = Holding("bad_result.xml", text);
    const std::string flat = Holding("flat.xml", "<watchface format=\"1\"/>");
    const Result checked = Wfctl({"validate", result, flat, StagedResultXml(kDigital)});
    EXPECT_EQ(checked.status, 1);
    EXPECT_THAT(checked.out, HasSubstr(result + ":"));
    EXPECT_THAT(checked.out, HasSubstr(": E-REF-UNKNOWN: "));
    EXPECT_THAT(checked.out, HasSubstr(": E-VALUE: "));
    EXPECT_THAT(checked.out, HasSubstr(flat + ":1:1: E-ATTRIBUTE-MISSING: "));
    EXPECT_THAT(checked.out, HasSubstr(StagedResultXml(kDigital) + ": good\n"));
    const Json all = Wfctl({"validate", result, flat, "--json"}).AsJson();
    EXPECT_EQ(all[0]["kind"], "face-result");
    EXPECT_EQ(all[1]["kind"], "watchface");
    EXPECT_EQ(all[1]["good"], false);
    EXPECT_EQ(all[1]["findings"][0]["line"], 1);
    EXPECT_EQ(Wfctl({"validate", mFolder + "/none.xml"}).status, 10);
    EXPECT_EQ(Wfctl({"validate", "com.example.none"}).status, 10);
}

TEST_F(AFolder, is_enough_to_find_assets_that_are_not_there)
{
    const std::string text =
        Replaced(ContentsOf(StagedResultXml(kClassic)), "<scene>",
                 "<scene>\n<image src=\"spot.png\" x=\"0\" y=\"0\" width=\"9\" height=\"9\"/>");
    const std::string file = Holding("own_result.xml", text);
    const Result missing = Wfctl({"validate", file});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.out, HasSubstr(": E-ASSET-MISSING: "));
    const std::string refused = Holding("refused_result.xml", Replaced(text, "<scene>", "<scene><circel/>"));
    EXPECT_THAT(Wfctl({"validate", refused}).out,
                testing::AllOf(HasSubstr(": E-ELEMENT-UNKNOWN: "), HasSubstr(": E-ASSET-MISSING: ")));
    Holding("spot.png", "text");
    EXPECT_THAT(Wfctl({"validate", file}).out, HasSubstr(": E-ASSET-TYPE: "));
    ASSERT_EQ(
        Wfctl({"render", StagedResultXml(kClassic), "--size", "16", "-o", mFolder + "/spot.png"}).status, 0);
    const Result good = Wfctl({"validate", file});
    EXPECT_EQ(good.status, 0) << good.out;
}

TEST_F(AFolder, is_enough_to_draw_a_document)
{
    const std::string source =
        std::string(STAGED_FACES) + "/com.corvane.watchface/shared/res/watchlist/" + kClassic + "/";
    for (const std::string& name : {std::string(kClassic) + "_result.xml", std::string("watchface.xml")}) {
        const Result drawn =
            Wfctl({"render", source + name, "-o", mFolder + "/out.png", "--hours", "24", "--size", "120"});
        EXPECT_EQ(drawn.status, 0) << drawn.err;
        EXPECT_EQ(drawn.out, mFolder + "/out.png\n");
        EXPECT_THAT(ContentsOf(mFolder + "/out.png"), StartsWith(kPngSignature));
        fs::remove(mFolder + "/out.png");
    }
    EXPECT_EQ(Wfctl({"render", source + "watchface.xml", "-o", mFolder + "/out.svg"}).status, 0);
    EXPECT_THAT(ContentsOf(mFolder + "/out.svg"), HasSubstr("<svg"));
    EXPECT_EQ(Wfctl({"render", source + "watchface.xml", "-o", mFolder + "/out.jpg"}).status, 2);
    EXPECT_EQ(Wfctl({"render", Holding("bad.xml", "<face-result/>"), "-o", mFolder + "/out.png"}).status, 1);
    EXPECT_EQ(Wfctl({"render", "com.example.none"}).status, 10);
    EXPECT_FALSE(fs::exists(mFolder + "/out.png"));
}

TEST_F(AWatch, draws_its_faces_by_name)
{
    const Result drawn = Run({"render", kDigital, "-o", mFolder + "/out.png", "--language", "de_DE"});
    EXPECT_EQ(drawn.status, 0) << drawn.err;
    EXPECT_THAT(ContentsOf(mFolder + "/out.png"), StartsWith(kPngSignature));
}

TEST_F(AWatch, draws_a_new_picture_by_the_name_of_its_face)
{
    const auto render = [this](const std::string& arguments) {
        return RunProgram({"sh", "-c", "cd \"$0\" && exec \"$1\" render " + arguments, mFolder, WFCTL},
                          mEnvironment);
    };
    const std::string name = std::string(kClassic) + ".png";
    EXPECT_EQ(render("c1").out, name + "\n");
    EXPECT_THAT(ContentsOf(mFolder + "/" + name), StartsWith("\x89PNG"));
    const std::string mine = Holding(name, "another's");
    const std::string look = "c1 --language de_DE --hours 12";
    const Result refused = render(look);
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("; to draw over it, add: -o '" + name + "'\n"));
    EXPECT_EQ(ContentsOf(mine), "another's");
    EXPECT_EQ(render(look + " -o '" + name + "'").status, 0);
    EXPECT_THAT(ContentsOf(mine), StartsWith("\x89PNG"));
}
