// The doctor: each finding is planted, found, put right, and what was moved is put back.

#include <filesystem>
#include <fstream>

#include "a-watch.h"

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr char kGone[] = "com.corvane.watchface-gone";

class ADoctor : public AWatch {
protected:
    ADoctor()
    {
        // The read/write copy of a face, as an edit leaves it.
        Run({"preview", "request", kClassic});
        // The first start has every preview drawn.
        EXPECT_TRUE(Eventually([this] { return Run({"doctor"}).status == 0; })) << Run({"doctor"}).out;
    }

    std::string ListFolder() const
    {
        return fs::path(ReadWriteFace(kClassic)).parent_path().parent_path().string() + "/";
    }

    std::string Pictures() const { return mRoot + "/apps/com.corvane.watchface/shared/trusted/theme/"; }

    void Plant(const std::string& path, const std::string& text = "x") const
    {
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path) << text;
    }

    Json Findings(const Arguments& more = {}) const
    {
        Arguments arguments = {"doctor", "--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run(arguments).AsJson();
    }

    static std::vector<std::string> Codes(const Json& report)
    {
        std::vector<std::string> codes;
        for (const Json& finding : report["findings"]) codes.push_back(finding["code"]);
        return codes;
    }

    // Nobody holds what was there before the service began.
    void StartAnew()
    {
        ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
        ASSERT_EQ(Wfctl({"up", "--root", mRoot}).status, 0);
        mEnvironment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + State("RUN_FOLDER") + "/bus";
    }

    // A command as a finding has it.
    Result Typed(const std::string& command) const
    {
        return RunProgram({"sh", "-c", "PATH=\"$1:$PATH\"; " + command, "sh", fs::path(WFCTL).parent_path()},
                          mEnvironment);
    }

    void IsFoundMovedAndPutBack(const std::string& code, const std::string& path)
    {
        EXPECT_THAT(Codes(Findings()), ElementsAre(code));
        EXPECT_EQ(Run({"doctor"}).status, 1);
        StartAnew();
        const Json fixed = Run({"doctor", "--fix", "--json"}).AsJson();
        ASSERT_TRUE(fixed["time"].is_string()) << fixed;
        EXPECT_FALSE(fs::exists(path));
        EXPECT_THAT(Codes(Findings()), IsEmpty());
        EXPECT_EQ(Run({"doctor", "--undo", fixed["time"]}).status, 0);
        EXPECT_TRUE(fs::exists(path));
        EXPECT_FALSE(fs::exists(mRoot + "/lost+found"));
        EXPECT_THAT(Codes(Findings()), ElementsAre(code));
    }
};

}  // namespace

TEST_F(ADoctor, finds_nothing_on_a_healthy_watch)
{
    const Result done = Run({"doctor"});
    EXPECT_EQ(done.status, 0) << done.out;
    EXPECT_EQ(done.out, "the watch at [" + mRoot + "] is healthy\n");
    EXPECT_EQ(Findings()["root"], mRoot);
}

TEST_F(AFolder, without_a_watch_has_nothing_to_look_at)
{
    for (const Arguments& verb : {
             Arguments{"doctor"},
             { "survey",  "list"},
             { "bg",  "list"}
    }) {
        const Result done = Wfctl(verb);
        EXPECT_EQ(done.status, 8);
        EXPECT_EQ(done.out, "");
        EXPECT_THAT(done.err,
                    HasSubstr("there is no watch at [/nonexistent/watch]; type: wfctl up --root DIR"));
    }
}

TEST_F(ADoctor, moves_unknown_files_away_and_puts_them_back)
{
    const std::string path = ReadWriteFace(kClassic) + "notes.txt";
    Plant(path);
    IsFoundMovedAndPutBack("unknown-file", path);
}

TEST_F(ADoctor, leaves_the_images_that_a_face_names)
{
    const std::string album = "com.corvane.watchface-mirel-u1";
    ASSERT_EQ(Run({"preview", "request", album}).status, 0);
    Plant(ReadWriteFace(album) + "backdrop/dusk.png");
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, finds_images_that_a_face_names_and_that_are_not_there)
{
    const std::string face =
        R"(<face-result format="1" id="com.example.nest" version="1" width="64" height="64"
 shape="round" default-language="en" preview-time="10:08:36" title-key="t">
<strings language="en"><string key="t">T</string></strings>
<scene><image src="a tree/nest.png" x="0" y="0" width="64" height="64"/></scene></face-result>)";
    ASSERT_EQ(Run({"install", Holding("nest_result.xml", face)}).status, 0);
    const Json report = Findings();
    ASSERT_THAT(Codes(report), ElementsAre("asset-missing"));
    const std::string path = ReadWriteFace("com.example.nest") + "a tree/nest.png";
    EXPECT_EQ(report["findings"][0]["path"], path);
    Holding("nest.png", ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    const std::string type = report["findings"][0]["type"];
    const auto then = type.find(", then: ");
    ASSERT_NE(then, std::string::npos) << type;
    EXPECT_EQ(Typed("cd '" + mFolder + "' && " + type.substr(0, then)).status, 0) << type;
    EXPECT_TRUE(fs::exists(path)) << type;
    EXPECT_EQ(Typed(type.substr(then + 8)).status, 0) << type;
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, leaves_files_of_a_face_whose_document_cannot_say_what_it_names)
{
    Plant(ReadWriteFace(kClassic) + kClassic + "_result.xml", "<face-result/>");
    Plant(ReadWriteFace(kClassic) + "notes.txt");
    EXPECT_THAT(Codes(Findings()), Not(Contains("unknown-file")));
}

TEST_F(ADoctor, moves_files_that_are_no_face_away_and_puts_them_back)
{
    const std::string path = ListFolder() + "notes.txt";
    Plant(path);
    IsFoundMovedAndPutBack("unknown-file", path);
}

TEST_F(ADoctor, moves_unfinished_files_away_and_puts_them_back)
{
    const std::string path = ReadWriteFace(kClassic) + ".watch-new-0123456789abcdef";
    Plant(path);
    IsFoundMovedAndPutBack("left-over", path);
}

TEST_F(ADoctor, moves_folders_without_a_document_away_and_puts_them_back)
{
    const std::string path = ListFolder() + kGone;
    Plant(path + "/watchface.xml");
    EXPECT_EQ(Findings()["findings"][0]["what"],
              std::string("has neither ") + kGone + "_result.xml nor without_result_xml");
    IsFoundMovedAndPutBack("no-document", path);
}

TEST_F(ADoctor, leaves_what_changed_after_the_service_began_until_that_ends)
{
    const std::string path = ReadWriteFace(kClassic) + "notes.txt";
    Plant(path);
    const std::string type = Findings()["findings"][0]["type"];
    const Result fixed = Run({"doctor", "--fix"});
    EXPECT_EQ(fixed.status, 1);
    EXPECT_THAT(fixed.out, HasSubstr("    type: " + type + "\n")) << "what it says without --fix too";
    EXPECT_TRUE(fs::exists(path));
    EXPECT_FALSE(fs::exists(mRoot + "/lost+found"));
    EXPECT_EQ(Typed(type).status, 0) << type;
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(ADoctor, moves_the_empty_folder_of_a_refused_face_away)
{
    const std::string document = "data/xml_data=@" + Holding("five.xml", "<face-result/>");
    ASSERT_EQ(Run({"send", "--as", kManager, kService, "type=watch-setting-created", "pkgid=five", document,
                   "--wait", "20", "--count", "1"})
                  .status,
              0);
    const Json report = Findings();
    ASSERT_THAT(Codes(report), ElementsAre("no-document"));
    EXPECT_THAT(report["findings"][0]["what"].get<std::string>(), HasSubstr("is empty"));
    EXPECT_EQ(Typed(report["findings"][0]["type"]).status, 0);
    EXPECT_FALSE(fs::exists(ListFolder() + "five"));
}

TEST_F(ADoctor, finds_pictures_that_are_gone_and_chosen)
{
    const std::string picture =
        Holding("holiday.png", ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    ASSERT_EQ(Run({"bg", "add", picture}).status, 0);
    ASSERT_EQ(Run({"edit", "u1", "--photo", "picture=holiday.png"}).status, 0);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
    ASSERT_EQ(Run({"bg", "del", "holiday.png"}).status, 0);
    const Json report = Findings();
    ASSERT_THAT(Codes(report), ElementsAre("photo-missing"));
    const std::string type = report["findings"][0]["type"];
    EXPECT_THAT(type, testing::EndsWith(", or: wfctl bg add --type gallery-u1 'holiday.png'"));
    EXPECT_EQ(Typed(type.substr(0, type.find(", or"))).status, 0) << type;
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, finds_chosen_pictures_that_are_damaged)
{
    const std::string picture =
        Holding("holiday.png", ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    ASSERT_EQ(Run({"bg", "add", picture}).status, 0);
    ASSERT_EQ(Run({"edit", "u1", "--photo", "picture=holiday.png"}).status, 0);
    const std::string stored = Pictures() + "GalleryBackgrounds/U1/holiday.png";
    const std::string png = ContentsOf(stored);
    const std::pair<std::string, const char*> kDamages[] = {
        {"a text",     "is neither a PNG nor a JPEG"     },
        {png.substr(0, png.size() / 2),                    "is a damaged PNG"},
        {"\xff\xd8\xff\xe0 \xff\xd9 \xff\xda and so on",            "is a JPEG that is cut short"},
    };
    for (const auto& [bytes, what] : kDamages) {
        Plant(stored, bytes);
        const Json report = Findings();
        ASSERT_THAT(Codes(report), ElementsAre("photo-damaged")) << what;
        EXPECT_THAT(report["findings"][0]["what"].get<std::string>(), StartsWith(what));
        EXPECT_EQ(report["findings"][0]["path"], stored);
    }
    const std::string type = Findings()["findings"][0]["type"];
    const std::string add = type.substr(type.find(", or: ") + 6);
    EXPECT_EQ(Typed("cd '" + mFolder + "' && " + add).status, 0) << add;
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, takes_whole_pictures_of_both_kinds)
{
    ASSERT_EQ(Run({"edit", "u1", "--photo", "picture=holiday.jpg"}).status, 0);
    Plant(Pictures() + "GalleryBackgrounds/U1/holiday.jpg", "\xff\xd8\xff \xff\xda and so on \xff\xd9");
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, has_stale_previews_drawn_again)
{
    fs::last_write_time(ReadWriteFace(kClassic) + kClassic + ".png", fs::file_time_type::min());
    EXPECT_THAT(Codes(Findings()), ElementsAre("preview-older"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 0);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, has_missing_previews_drawn_again)
{
    fs::remove(ReadWriteFace(kClassic) + kClassic + ".png");
    EXPECT_THAT(Codes(Findings()), ElementsAre("preview-missing"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 0);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, has_pictures_that_are_none_drawn_again)
{
    Plant(ReadWriteFace(kClassic) + kClassic + ".png");
    EXPECT_THAT(Codes(Findings()), ElementsAre("preview-no-png"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 0);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, has_pictures_of_one_colour_drawn_again)
{
    const std::string preview = ReadWriteFace(kClassic) + kClassic + ".png";
    fs::copy_file(BlankPicture(*this), preview, fs::copy_options::overwrite_existing);
    EXPECT_THAT(Codes(Findings()), ElementsAre("preview-blank"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 0);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, has_flat_documents_made_again)
{
    fs::remove(ReadWriteFace(kClassic) + "watchface.xml");
    EXPECT_THAT(Codes(Findings()), ElementsAre("no-flat-document"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 0);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, has_flat_documents_that_an_interrupted_change_left_made_again)
{
    const std::string flat = ReadWriteFace(kClassic) + "watchface.xml";
    const std::string before = ContentsOf(flat);
    ASSERT_EQ(Run({"edit", kClassic, "--pick", "dial=roman"}).status, 0);
    Plant(flat, before);
    fs::last_write_time(flat, fs::file_time_type::min());
    EXPECT_THAT(Codes(Findings()), ElementsAre("stale-flat-document"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 0);
    EXPECT_NE(ContentsOf(flat), before);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, leaves_flat_documents_of_world_clocks_that_were_set)
{
    ASSERT_EQ(Run({"set", "c4"}).status, 0);
    ASSERT_EQ(Run({"world-clock", "prepare"}).status, 0);
    ASSERT_EQ(Run({"world-clock", "update", "city", "Asia/Seoul:Gangnam"}).status, 0);
    const std::string flat = ReadWriteFace("com.corvane.watchface-mirel-c4") + "watchface.xml";
    EXPECT_THAT(ContentsOf(flat), HasSubstr("Gangnam"));
    EXPECT_THAT(Codes(Findings()), Not(Contains("stale-flat-document")));
}

TEST_F(ADoctor, leaves_copies_of_shipped_flat_documents_that_were_made_otherwise)
{
    const std::string watchlist = "/com.corvane.watchface/shared/res/watchlist/";
    mEnvironment["WATCH_RESOURCES"] = mFolder + "/faces";
    fs::create_directories(mFolder + "/faces" + watchlist);
    const std::string shipped = mFolder + "/faces" + watchlist + kDigital;
    fs::copy(STAGED_FACES + watchlist + kDigital, shipped, fs::copy_options::recursive);
    std::ofstream(shipped + "/watchface.xml", std::ios::app) << "<!-- by hand -->";
    fs::copy(shipped, ReadWriteFace(kDigital),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    EXPECT_THAT(Codes(Findings()), Not(Contains("stale-flat-document")));
    std::ofstream(shipped + "/watchface.xml", std::ios::app) << "<!-- anew -->";
    EXPECT_THAT(Codes(Findings()), Contains("stale-flat-document"));
}

TEST_F(ADoctor, says_how_to_have_a_shipped_face_back_whose_document_is_not_accepted)
{
    const std::string path = ReadWriteFace(kClassic) + kClassic + "_result.xml";
    Plant(path, "<face-result/>");
    const Json report = Findings();
    ASSERT_THAT(Codes(report), ElementsAre("bad-document"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 1);
    EXPECT_EQ(ContentsOf(path), "<face-result/>");
    const std::string type = report["findings"][0]["type"];
    const std::string wholly = ", mend it, or: ";
    ASSERT_THAT(type, HasSubstr(wholly));
    EXPECT_THAT(Typed(type.substr(0, type.find(wholly))).out, HasSubstr("E-")) << type;
    EXPECT_EQ(Typed(type.substr(type.find(wholly) + wholly.size())).status, 0) << type;
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, says_how_a_watch_that_is_down_comes_to_draw_again)
{
    fs::remove(ReadWriteFace(kClassic) + kClassic + ".png");
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    const Result fixed = Run({"doctor", "--fix"});
    EXPECT_EQ(fixed.status, 1);
    EXPECT_THAT(fixed.out, HasSubstr("    the service draws it, and does not run\n    type: wfctl --root "));
    const std::string type = Findings()["findings"][0]["type"];
    EXPECT_EQ(Typed(type).status, 0) << type;
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, says_how_to_mend_another_face_whose_document_is_not_accepted)
{
    const std::string path = ListFolder() + kGone + "/" + kGone + "_result.xml";
    Plant(path, "<face-result/>");
    const Json report = Findings();
    ASSERT_THAT(Codes(report), ElementsAre("bad-document"));
    EXPECT_THAT(report["findings"][0]["type"].get<std::string>(), StartsWith("wfctl validate "));
}

TEST_F(ADoctor, has_flat_documents_that_are_not_accepted_made_again)
{
    Plant(ReadWriteFace(kClassic) + "watchface.xml", "<watchface/>");
    EXPECT_THAT(Codes(Findings()), ElementsAre("bad-flat-document"));
    EXPECT_EQ(Run({"doctor", "--fix"}).status, 0);
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, says_what_to_type_about_a_current_face_that_is_gone)
{
    Run({"set", "c4"});
    Run({"key", "set", "file/private/com.corvane.watchface/watchface_name", kGone});
    const Json report = Findings({"--fix"});
    EXPECT_THAT(Codes(report), ElementsAre("no-current-face"));
    EXPECT_THAT(report["findings"][0]["type"].get<std::string>(), HasSubstr("wfctl set NAME"));
    Run({"set", "c4"});
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, says_what_to_type_about_preferences_of_a_face_that_is_gone)
{
    Run({"pref", "set", kService, "wfs-watch-name-world-clock-update", kGone});
    const Json report = Findings({"--fix"});
    EXPECT_THAT(Codes(report), ElementsAre("stale-preference"));
    Run({"pref", "unset", kService, "wfs-watch-name-world-clock-update"});
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, says_what_to_type_about_world_clocks_of_a_face_that_is_gone)
{
    for (const std::string field : {"city", "timezone", "timezonePath", "country"})
        Run({"pref", "set", kService, std::string(kGone) + "-my-zone-" + field, "x"});
    Run({"pref", "set", kService, std::string(kGone) + "-my-zone-updatedMode", "1"});
    const Json report = Findings();
    EXPECT_THAT(Codes(report), ElementsAre("stale-preference"));
    EXPECT_EQ(report["findings"][0]["face"], std::string(kGone) + "-my-zone");
    const std::string type = report["findings"][0]["type"];
    EXPECT_EQ(Typed(type).status, 0) << type;
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, leaves_world_clocks_of_faces_that_there_are)
{
    for (const char* field : {"city", "timezone", "timezonePath", "country"})
        Run({"pref", "set", kService, std::string(kClassic) + "-my-zone-" + field, "x"});
    Run({"pref", "set", kService, std::string(kEditor) + "+" + kGone + "+evaluation-helper-data-duration",
         "x"});
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}

TEST_F(ADoctor, says_why_each_finding_matters)
{
    Plant(ReadWriteFace(kClassic) + "notes.txt");
    const Json report = Findings();
    ASSERT_FALSE(report["findings"].empty());
    for (const Json& finding : report["findings"])
        EXPECT_THAT(Run({"doctor"}).out, HasSubstr("\n    " + finding["why"].get<std::string>() + "\n"));
}

TEST_F(ADoctor, puts_nothing_back_over_what_is_there_by_now)
{
    const std::string path = ReadWriteFace(kClassic) + "notes.txt";
    Plant(path, "old");
    StartAnew();
    const Json fixed = Findings({"--fix"});
    Plant(path, "new");
    const Result undone = Run({"doctor", "--undo", fixed["time"]});
    EXPECT_EQ(undone.status, 1);
    EXPECT_THAT(undone.err, HasSubstr("could not be put back"));
    EXPECT_EQ(ContentsOf(path), "new");
    EXPECT_EQ(ContentsOf(mRoot + "/lost+found/" + fixed["time"].get<std::string>() + "/0"), "old");
}

TEST_F(ADoctor, says_in_one_sentence_which_times_there_are)
{
    const Result undone = Run({"doctor", "--undo", "yesterday"});
    EXPECT_EQ(undone.status, 10);
    EXPECT_EQ(undone.err, "wfctl: nothing was moved away, so there is nothing to put back\n");
    Plant(ReadWriteFace(kClassic) + "notes.txt");
    StartAnew();
    const std::string time = Findings({"--fix"})["time"];
    EXPECT_EQ(Run({"doctor", "--undo", "yesterday"}).err,
              "wfctl: nothing was moved away under the time [yesterday]; there are: " + time + "\n");
}

TEST_F(ADoctor, says_commands_for_the_watch_that_was_named)
{
    Run({"set", "c4"});
    Run({"key", "set", "file/private/com.corvane.watchface/watchface_name", kGone});
    Run({"pref", "set", kService, "wfs-watch-name-world-clock-update", kGone});
    Run({"pref", "set", kService, std::string(kGone) + "-my-zone-city", "x"});
    Run({"edit", "u1", "--photo", "picture=gone.png"});
    fs::remove(ReadWriteFace(kClassic) + kClassic + ".png");
    Plant(ReadWriteFace(kDigital) + kDigital + "_result.xml", "<face-result/>");
    Plant(ListFolder() + "own/own_result.xml", "<face-result/>");
    Plant(ReadWriteFace(kClassic) + "notes.txt");
    const Json findings = Wfctl({"--root", mRoot, "doctor", "--json"}).AsJson()["findings"];
    EXPECT_THAT(findings, SizeIs(testing::Ge(8)));
    for (const Json& finding : findings) {
        std::string type = finding["type"];
        const std::string named = "wfctl --root ";
        EXPECT_THAT(type, StartsWith(named)) << finding["code"];
        for (std::size_t at = 0; (at = type.find("wfctl ", at)) != std::string::npos; ++at)
            EXPECT_EQ(type.compare(at, named.size(), named), 0) << type;
    }
    EXPECT_THAT(Wfctl({"--root", mRoot, "doctor"}).out,
                HasSubstr(" delete " + std::string(kDigital) + "  # what was changed of it is lost\n"));
}

TEST_F(ADoctor, says_how_to_undo_on_the_watch_that_was_named)
{
    Plant(ReadWriteFace(kClassic) + "notes.txt");
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    const Result fixed = Wfctl({"--root", mRoot, "doctor", "--fix"});
    const std::string hint = "to put back what was moved, type: ";
    const auto at = fixed.out.find(hint);
    ASSERT_NE(at, std::string::npos) << fixed.out;
    mEnvironment["WATCH_ROOT"] = "/nonexistent/watch";
    EXPECT_EQ(Typed(fixed.out.substr(at + hint.size())).status, 0) << fixed.out;
    EXPECT_TRUE(fs::exists(ReadWriteFace(kClassic) + "notes.txt"));
}

TEST_F(ADoctor, says_names_of_faces_so_that_a_shell_runs_nothing_of_them)
{
    const std::string name = "x;echo PWNED>&2 `id`$(id)' #";
    const std::string good = Holding("good.xml", ContentsOf(StagedResultXml(kClassic)));
    ASSERT_EQ(Run({"install", good, "--name", name}).status, 0);
    fs::remove(ReadWriteFace(name) + name + ".png");
    const Json findings = Findings()["findings"];
    ASSERT_THAT(findings, SizeIs(1));
    const std::string type = findings[0]["type"];
    const Result typed = Typed(type);
    EXPECT_EQ(typed.status, 0) << type << typed.err;
    EXPECT_THAT(typed.err, Not(HasSubstr("PWNED")));
    EXPECT_THAT(Codes(Findings()), IsEmpty());
}
