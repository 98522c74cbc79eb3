// Backups of one watch, restored on another, and what is left when somebody dies in the middle.

#include <signal.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "a-watch.h"
#include "terminal.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr char kAlbum[] = "com.corvane.watchface-mirel-u1";
constexpr char kWatchlist[] = "/apps/com.corvane.watchface/shared/data/watchlist/";
constexpr int kPictures = 30;
// A face that no watch ships, and an image that it names.
constexpr char kDawn[] = "com.example.watchface-dawn";
const std::string kDawnDocument = PROJECT "/docs/examples/dawn-4_result.xml";
const std::string kDawnBackdrop = PROJECT "/docs/examples/dawn-backdrop.png";

// A watch that somebody uses, and a second one as it was shipped.
class AnotherWatch : public AWatch {
protected:
    AnotherWatch() : mSecondRoot(mFolder + "/second")
    {
        Run({"edit", kClassic, "--pick", "dial=roman"});
        Run({"edit", kAlbum, "--pick", "clock=hands"});
        Arguments add{"bg", "add"};
        for (int i = 0; i < kPictures; ++i) add.push_back(Picture("picture-" + std::to_string(i) + ".png"));
        EXPECT_EQ(Run(add).status, 0);
        EXPECT_EQ(Run({"set", kDigital}).status, 0);
        const Result made = Run({"backup", Folder()});
        EXPECT_EQ(made.status, 0) << made.err;
        mUp = Wfctl({"up", "--root", mSecondRoot});
        EXPECT_EQ(mUp.status, 0) << mUp.err;
    }
    ~AnotherWatch() override { Wfctl({"down", "--root", mSecondRoot}); }

    std::string Folder() const { return mFolder + "/backup"; }
    std::string Picture(const std::string& name) const
    {
        return Holding(name, ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png") + name);
    }

    Result OnSecond(Arguments arguments) const
    {
        arguments.insert(arguments.begin(), {"--root", mSecondRoot});
        return Wfctl(arguments);
    }
    std::unique_ptr<Program> StartOnSecond(Arguments arguments) const
    {
        arguments.insert(arguments.begin(), {WFCTL, "--root", mSecondRoot});
        return std::make_unique<Program>(arguments, mEnvironment);
    }

    // Says its process first and its status last.
    Arguments AtATerminal(Arguments arguments) const
    {
        const char* script =
            R"(trap : INT; sh -c 'echo pid $$; exec "$@"' sh "$@"; printf '\n%s is its status' $?)";
        arguments.insert(arguments.begin(), {"sh", "-c", script, "sh", WFCTL, "--root", mSecondRoot});
        return arguments;
    }

    // What it was told that it has: of the manifest everything but the time.
    static Json ItemsOf(const std::string& folder)
    {
        Json manifest = Json::parse(ContentsOf(folder + "/manifest.json"));
        manifest.erase("made");
        return manifest;
    }
    Json ItemsOfSecond() const
    {
        fs::remove_all(mFolder + "/again");
        const Result made = OnSecond({"backup", mFolder + "/again"});
        EXPECT_EQ(made.status, 0) << made.err;
        return ItemsOf(mFolder + "/again");
    }

    void ExpectOnlyWholeFiles() const
    {
        std::set<std::string> known;
        for (const auto& file : fs::recursive_directory_iterator(Folder()))
            if (file.is_regular_file()) known.insert(ContentsOf(file.path()));
        const std::string area = mSecondRoot + "/apps/com.corvane.watchface/shared/";
        for (const auto& file : fs::recursive_directory_iterator(area)) {
            const std::string name = file.path().filename();
            if (!file.is_regular_file() || name.starts_with(".")) continue;
            if (name.ends_with(".xml")) {
                const Result checked = Wfctl({"validate", file.path()});
                EXPECT_EQ(checked.status, 0) << checked.out << checked.err;
            }
            if (!name.ends_with("_result.xml") && !name.starts_with("picture-")) continue;
            EXPECT_TRUE(known.contains(ContentsOf(file.path()))) << file.path();
        }
    }

    // The phone-side manager, which is told of every item.
    std::unique_ptr<Program> ManagerOfSecond() const
    {
        auto manager =
            StartOnSecond({"listen", "--as", "com.corvane.w-manager-service:w-manager-service::localport",
                           "--timeout", "60"});
        EXPECT_THAT(manager->NextErrorLine().value_or(""), testing::StartsWith("listening as"));
        return manager;
    }

    // How often a restore was begun so far.
    std::size_t BeginningsOnSecond() const
    {
        const std::string log = ContentsOf(mSecondRoot + "/watch.log");
        std::size_t count = 0;
        for (std::size_t at = 0; (at = log.find("message = restore_start", at)) != std::string::npos; ++at)
            ++count;
        return count;
    }

    bool IsOnSecond(const char* name) const
    {
        const std::string address = OnSecond({"status", "--json"}).AsJson()["bus"]["address"];
        sd_bus* bus = nullptr;
        sd_bus_new(&bus);
        sd_bus_set_address(bus, address.c_str());
        sd_bus_set_bus_client(bus, true);
        const bool isThere = sd_bus_start(bus) >= 0 && sd_bus_get_name_creds(bus, name, 0, nullptr) >= 0;
        sd_bus_flush_close_unref(bus);
        return isThere;
    }

    pid_t ServiceOfSecond() const
    {
        const Json service = OnSecond({"status", "--json"}).AsJson()["service"];
        return service["running"].get<bool>() ? service["pid"].get<pid_t>() : 0;
    }

    const std::string mSecondRoot;
};

}  // namespace

TEST_F(AnotherWatch, has_the_same_faces_selections_pictures_and_current_face_after_a_restore)
{
    const Result restored = OnSecond({"restore", Folder()});
    ASSERT_EQ(restored.status, 0) << restored.err;
    EXPECT_EQ(restored.out,
              "restored 2 faces and 30 pictures; the current face is \"" + std::string(kDigital) + "\"\n");
    EXPECT_EQ(ItemsOfSecond(), ItemsOf(Folder()));
    EXPECT_EQ(OnSecond({"current"}).out, Run({"current"}).out);
    EXPECT_EQ(OnSecond({"bg", "list"}).out, Run({"bg", "list"}).out);
    const std::string preview = kClassic + std::string("/") + kClassic + ".png";
    EXPECT_TRUE(Eventually([&] {
        return ContentsOf(mSecondRoot + kWatchlist + preview) == ContentsOf(mRoot + kWatchlist + preview);
    }));
}

TEST_F(AnotherWatch, asks_before_it_replaces_faces_and_pictures)
{
    ASSERT_EQ(OnSecond({"bg", "add", Picture("mine.png")}).status, 0);
    ASSERT_EQ(OnSecond({"edit", kClassic, "--pick", "accent=azure"}).status, 0);
    const Result asked = OnSecond({"restore", Folder()});
    EXPECT_EQ(asked.status, 2);
    EXPECT_THAT(asked.err, HasSubstr("1 face of this watch will be replaced by what the backup holds:\n  \"" +
                                     std::string(kClassic) + "\"\n"));
    EXPECT_THAT(
        asked.err,
        testing::ContainsRegex(
            "1 picture of this watch will be removed, which the backup does not hold:\n.*U1/mine.png"));
    EXPECT_EQ(OnSecond({"bg", "list"}).out, "mine.png\n");
    const std::string hint = "type: wfctl ";
    const auto at = asked.err.find(hint);
    ASSERT_NE(at, std::string::npos) << asked.err;
    const std::string command = std::string(WFCTL) + " " + asked.err.substr(at + hint.size());
    ASSERT_EQ(RunProgram({"sh", "-c", command}, mEnvironment).status, 0) << command;
    EXPECT_EQ(OnSecond({"bg", "list"}).out, Run({"bg", "list"}).out);
    EXPECT_EQ(OnSecond({"restore", Folder()}).status, 0) << "none is lost by it now";
}

TEST_F(AnotherWatch, is_left_as_it_is_when_the_question_is_interrupted)
{
    ASSERT_EQ(OnSecond({"bg", "add", Picture("mine.png")}).status, 0);
    for (const int signal : {SIGINT, SIGTERM}) {
        ATerminal terminal(AtATerminal({"restore", Folder()}), mEnvironment);
        const std::string said = terminal.Await("Go on? [y/N] ");
        EXPECT_THAT(said, testing::EndsWith("Go on? [y/N] "));
        if (signal == SIGINT)
            terminal.Type("\x03");
        else
            kill(std::stoi(said.substr(said.find("pid ") + 4)), signal);
        EXPECT_THAT(terminal.Await(" is its status"), testing::EndsWith("\n130 is its status")) << signal;
    }
    EXPECT_EQ(OnSecond({"bg", "list"}).out, "mine.png\n");
}

TEST_F(AnotherWatch, is_restored_only_by_a_yes)
{
    ASSERT_EQ(OnSecond({"bg", "add", Picture("mine.png")}).status, 0);
    const std::pair<const char*, const char*> kAnswers[] = {
        {"\n",    "9 is its status"},
        {"no\n",  "9 is its status"},
        {"\x04",  "9 is its status"},
        {"yes\n", "0 is its status"},
    };
    for (const auto& [answer, status] : kAnswers) {
        EXPECT_EQ(OnSecond({"bg", "list"}).out, "mine.png\n");
        ATerminal terminal(AtATerminal({"restore", Folder()}), mEnvironment);
        terminal.Await("Go on? [y/N] ");
        terminal.Type(answer);
        EXPECT_THAT(terminal.Await(" is its status"), testing::EndsWith(std::string("\n") + status));
    }
    EXPECT_EQ(OnSecond({"bg", "list"}).out, Run({"bg", "list"}).out);
}

TEST_F(AnotherWatch, loses_nothing_by_a_restore_over_faces_that_nobody_changed)
{
    // As the service has it at the first start of a watch in another language.
    ASSERT_EQ(OnSecond({"preview", "request", kClassic, kAlbum}).status, 0);
    EXPECT_EQ(OnSecond({"restore", Folder()}).status, 0);
}

TEST_F(AnotherWatch, takes_nothing_of_a_damaged_backup)
{
    fs::resize_file(Folder() + "/pictures/u1/picture-7.png", 10);
    const Result restored = OnSecond({"restore", Folder()});
    EXPECT_EQ(restored.status, 1);
    EXPECT_THAT(restored.err, HasSubstr("the picture \"picture-7.png\" is damaged"));
    EXPECT_FALSE(fs::exists(mSecondRoot + kWatchlist + kClassic));
    EXPECT_EQ(OnSecond({"bg", "list"}).out, "");
}

TEST_F(AnotherWatch, shows_the_pictures_of_the_backup_in_its_previews)
{
    const std::string shipped = ContentsOf(ReadOnlyFace(kAlbum) + kAlbum + ".png");
    ASSERT_EQ(Run({"edit", "u1", "--photo", "picture=picture-3.png"}).status, 0);
    const std::string shown = ContentsOf(ReadWriteFace(kAlbum) + kAlbum + ".png");
    ASSERT_EQ(Run({"backup", mFolder + "/album"}).status, 0);
    const Result restored = OnSecond({"restore", mFolder + "/album"});
    EXPECT_EQ(restored.status, 0) << restored.err;
    EXPECT_TRUE(Eventually(
        [&] { return ContentsOf(mSecondRoot + kWatchlist + kAlbum + "/" + kAlbum + ".png") == shown; }));
    EXPECT_NE(shown, shipped);
}

TEST_F(AnotherWatch, draws_its_own_faces_without_the_pictures_that_are_gone)
{
    const std::string plain = R"(background="gallery")";
    std::string document = ContentsOf(kDawnDocument);
    const auto at = document.find(plain);
    ASSERT_NE(at, std::string::npos);
    const std::string face = Holding("dawn.xml", document.insert(at + plain.size(), R"( prefix="U1")"));
    ASSERT_EQ(OnSecond({"install", face}).status, 0);
    const auto preview = [&] { return ContentsOf(mSecondRoot + kWatchlist + kDawn + "/" + kDawn + ".png"); };
    const std::string without = preview();
    ASSERT_EQ(OnSecond({"bg", "add", Picture("gone.png")}).status, 0);
    ASSERT_EQ(OnSecond({"edit", kDawn, "--photo", "backdrop=gone.png"}).status, 0);
    ASSERT_NE(preview(), without);
    const Result restored = OnSecond({"restore", "--yes", Folder()});
    EXPECT_EQ(restored.status, 0) << restored.err;
    EXPECT_TRUE(Eventually([&] { return preview() == without; }));
}

TEST_F(AnotherWatch, says_which_previews_are_to_be_drawn_once_more)
{
    ASSERT_EQ(Run({"edit", "u1", "--photo", "picture=picture-3.png"}).status, 0);
    ASSERT_EQ(Run({"backup", mFolder + "/album"}).status, 0);
    // Nobody can ask as the editor then: the answers go to its other port.
    const auto editor = StartOnSecond(
        {"listen", "--as", kEditor + std::string(":its-port"), "--untrusted", "--timeout", "60"});
    EXPECT_THAT(editor->NextErrorLine().value_or(""), testing::StartsWith("listening as"));
    const Result restored = OnSecond({"restore", mFolder + "/album"});
    EXPECT_EQ(restored.status, 3) << restored.err;
    EXPECT_THAT(restored.err,
                HasSubstr("all is restored, but previews show other pictures than their faces do; "
                          "type: wfctl --root '" +
                          mSecondRoot + "' preview request " + kAlbum));
    EXPECT_EQ(OnSecond({"bg", "list"}).out, Run({"bg", "list"}).out);
}

TEST_F(AnotherWatch, has_faces_of_ones_own_after_a_restore)
{
    ASSERT_EQ(Run({"edit", "u1", "--photo", "picture=picture-3.png"}).status, 0);
    ASSERT_EQ(Run({"install", kDawnDocument}).status, 0);
    ASSERT_EQ(Run({"set", kDawn}).status, 0);
    const std::string folder = mFolder + "/own";
    ASSERT_EQ(Run({"backup", folder}).status, 0);
    for (const char* time : {"first", "second"}) {
        const Result restored = OnSecond({"restore", folder});
        EXPECT_EQ(restored.status, 0) << time << restored.err;
        EXPECT_THAT(restored.err, testing::Not(HasSubstr("platform")));
        EXPECT_THAT(restored.out, HasSubstr("the current face is \"" + std::string(kDawn) + "\""));
        EXPECT_EQ(ItemsOfSecond(), ItemsOf(folder));
    }
    EXPECT_EQ(OnSecond({"current"}).out, Run({"current"}).out);
    EXPECT_EQ(OnSecond({"preview", "check", kDawn}).status, 0);
}

TEST_F(AnotherWatch, says_which_images_of_ones_own_faces_are_not_there)
{
    ASSERT_EQ(Run({"install", kDawnDocument}).status, 0);
    EXPECT_THAT(Run({"backup", mFolder + "/without"}).err, testing::Not(HasSubstr("images")));
    fs::copy_file(kDawnBackdrop, ReadWriteFace(kDawn) + "dawn-backdrop.png");
    const std::string folder = mFolder + "/own";
    EXPECT_THAT(Run({"backup", folder}).err,
                HasSubstr("not in the backup: the images of \"" + std::string(kDawn) +
                          "\": \"dawn-backdrop.png\"; keep a copy of [" + ReadWriteFace(kDawn) + "]"));
    const Result restored = OnSecond({"restore", folder});
    EXPECT_EQ(restored.status, 0) << restored.err;
    const std::string place = mSecondRoot + kWatchlist + kDawn + "/dawn-backdrop.png";
    EXPECT_THAT(restored.err,
                HasSubstr("[dawn-backdrop.png] is not on the watch, so the face is shown without "
                          "it; put it at [" +
                          place + "], then: wfctl --root "));
    EXPECT_THAT(restored.err, HasSubstr(" preview request " + std::string(kDawn)));
    EXPECT_EQ(std::ranges::count(restored.err, '\n'), 1) << restored.err;
    fs::copy_file(kDawnBackdrop, place);
    EXPECT_THAT(OnSecond({"restore", "--yes", folder}).err, testing::IsEmpty());
}

TEST_F(AnotherWatch, says_what_it_did_not_take)
{
    std::string manifest = ContentsOf(Folder() + "/manifest.json");
    const std::string name = "\"name\": \"" + std::string(kClassic) + "\"";
    manifest.replace(manifest.find(name), name.size(), "\"name\": \"com.example.unknown\"");
    std::ofstream(Folder() + "/manifest.json") << manifest;
    fs::create_directories(mSecondRoot + kWatchlist);
    std::ofstream(mSecondRoot + kWatchlist + "com.example.unknown") << "in its place";
    const Result restored = OnSecond({"restore", Folder()});
    EXPECT_EQ(restored.status, 1);
    EXPECT_THAT(restored.err,
                HasSubstr("this watch did not take the face \"com.example.unknown\"; all else"));
    EXPECT_EQ(OnSecond({"bg", "list"}).out, Run({"bg", "list"}).out);
}

TEST_F(AnotherWatch, is_restored_whole_though_its_service_dies_in_the_middle)
{
    std::size_t rounds = 0;
    for (const int messages : {1, 4, 17}) {
        SCOPED_TRACE(messages);
        ++rounds;
        const auto manager = ManagerOfSecond();
        const pid_t service = ServiceOfSecond();
        ASSERT_GT(service, 0);
        const auto restore = StartOnSecond({"restore", "--yes", Folder()});
        for (int i = 0; i < messages; ++i) ASSERT_TRUE(manager->NextLine());
        kill(service, SIGKILL);
        EXPECT_EQ(restore->AwaitEnd(), 0) << restore->NextErrorLine().value_or("");
        EXPECT_EQ(ItemsOfSecond(), ItemsOf(Folder()));
    }
    EXPECT_GT(BeginningsOnSecond(), rounds) << "none of them met the service at work";
}

TEST_F(AnotherWatch, is_whole_when_the_restore_is_killed_and_restored_by_the_next_one)
{
    for (const int messages : {1, 4, 17}) {
        SCOPED_TRACE(messages);
        const auto manager = ManagerOfSecond();
        const auto restore = StartOnSecond({"restore", "--yes", Folder()});
        for (int i = 0; i < messages; ++i) ASSERT_TRUE(manager->NextLine());
        restore->Signal(SIGKILL);
        restore->AwaitEnd();
        ExpectOnlyWholeFiles();
        const Result again = OnSecond({"restore", "--yes", Folder()});
        EXPECT_EQ(again.status, 0) << again.err;
        EXPECT_EQ(ItemsOfSecond(), ItemsOf(Folder()));
    }
}

TEST_F(AnotherWatch, says_how_far_an_interrupted_restore_got)
{
    std::string said;
    for (int attempt = 0; attempt < 10 && said.empty(); ++attempt) {  // one may be over before its signal
        const auto manager = ManagerOfSecond();
        const auto restore = StartOnSecond({"restore", "--yes", Folder()});
        for (int i = 0; i < 4; ++i) ASSERT_TRUE(manager->NextLine());
        restore->Signal(SIGINT);
        if (restore->AwaitEnd() == 130) said = restore->NextErrorLine().value_or("");
        ExpectOnlyWholeFiles();
    }
    EXPECT_THAT(said, testing::MatchesRegex("wfctl: interrupted; [1-9][0-9]? of 32 items are on the watch, "
                                            "each of them whole; .*"));
}

TEST_F(AnotherWatch, counts_what_it_holds_when_a_restore_ends_early)
{
    // The one is not taken, and pictures cannot be given.
    fs::create_directories(mSecondRoot + kWatchlist);
    std::ofstream(mSecondRoot + kWatchlist + kClassic) << "in its place";
    std::ofstream(mSecondRoot + "/apps/com.corvane.watch-utils.service") << "in its place";
    const Result ended = OnSecond({"restore", "--yes", Folder()});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.err, HasSubstr("; 1 of 32 items are on the watch, each of them whole; "));
}

TEST_F(AnotherWatch, gets_nothing_by_a_check)
{
    OnSecond({"down"});
    const Result checked = OnSecond({"restore", "--check", Folder()});
    EXPECT_EQ(checked.status, 0) << checked.err;
    EXPECT_THAT(checked.out, testing::StartsWith("whole: 2 faces and 30 pictures"));
    fs::remove(Folder() + "/pictures/u1/picture-7.png");
    EXPECT_EQ(OnSecond({"restore", "--check", Folder()}).status, 1);
}

TEST_F(AnotherWatch, is_named_when_it_is_not_up)
{
    OnSecond({"down"});
    const Result restored = OnSecond({"restore", Folder()});
    EXPECT_EQ(restored.status, 8);
    EXPECT_THAT(restored.err, HasSubstr("no watch is up at [" + mSecondRoot + "]; type: wfctl up"));
    const Result made = OnSecond({"backup", mFolder + "/again"});
    EXPECT_EQ(made.status, 8);
    EXPECT_FALSE(fs::exists(mFolder + "/again"));
}

TEST_F(AnotherWatch, is_asked_again_when_its_service_dies_in_a_backup)
{
    ASSERT_EQ(OnSecond({"restore", Folder()}).status, 0);
    const pid_t service = ServiceOfSecond();
    ASSERT_GT(service, 0);
    kill(service, SIGSTOP);
    const auto backup = StartOnSecond({"backup", mFolder + "/again"});
    ASSERT_TRUE(Eventually([&] { return IsOnSecond("com.corvane.watch-utils.service"); }));
    kill(service, SIGKILL);
    EXPECT_EQ(backup->AwaitEnd(), 0) << backup->NextErrorLine().value_or("");
    EXPECT_EQ(ItemsOf(mFolder + "/again"), ItemsOf(Folder()));
}

TEST_F(AnotherWatch, has_no_backup_when_its_making_is_killed)
{
    for (int i = 0; i < 3; ++i) {
        const std::string folder = mFolder + "/killed-" + std::to_string(i);
        const auto backup = Start({"backup", folder});
        // Once it has begun to write; by then it may have finished too.
        EXPECT_TRUE(Eventually([&] {
            for (const auto& entry : fs::directory_iterator(mFolder))
                if (entry.path().filename().string().starts_with("killed-" + std::to_string(i))) return true;
            return false;
        }));
        backup->Signal(SIGKILL);
        backup->AwaitEnd();
        EXPECT_TRUE(!fs::exists(folder) || ItemsOf(folder) == ItemsOf(Folder()));
    }
    EXPECT_EQ(Run({"backup", mFolder + "/whole"}).status, 0);
    EXPECT_EQ(ItemsOf(mFolder + "/whole"), ItemsOf(Folder()));
}

TEST_F(AWatch, backs_up_the_face_that_its_pictures_belong_to)
{
    ASSERT_EQ(
        Run({"bg", "add", Holding("a.png", ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"))}).status,
        0);
    const Result made = Run({"backup", mFolder + "/backup", "--json"});
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(made.AsJson()["faces"], Json::array({kAlbum}));
    EXPECT_EQ(ContentsOf(mFolder + "/backup/faces/" + kAlbum + ".xml"), ContentsOf(StagedResultXml(kAlbum)));
    EXPECT_EQ(made.AsJson()["pictures"], Json::array({"a.png"}));
}

TEST_F(AWatch, backs_up_more_pictures_than_messages_may_wait)
{
    const std::string folder =
        mRoot + "/apps/com.corvane.watchface/shared/trusted/theme/GalleryBackgrounds/U1/";
    const std::string png = ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png");
    fs::create_directories(folder);
    for (int i = 0; i < 300; ++i) std::ofstream(folder + std::to_string(i) + ".png") << png;
    for (int i = 0; i < 3; ++i) {
        const std::string name = mFolder + "/backup-" + std::to_string(i);
        const Result made = Run({"backup", name});
        EXPECT_EQ(made.status, 0) << made.err;
        EXPECT_THAT(made.out, HasSubstr("1 face and 300 pictures"));
    }
}

TEST_F(AWatch, says_what_a_backup_does_not_carry)
{
    const std::string png = ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png");
    ASSERT_EQ(Run({"bg", "add", Holding("loose.png", png), "--type", "gallery"}).status, 0);
    ASSERT_EQ(Run({"set", "c4"}).status, 0);
    ASSERT_EQ(Run({"world-clock", "prepare"}).status, 0);
    ASSERT_EQ(Run({"world-clock", "update", "city", "Asia/Seoul"}).status, 0);
    const Result made = Run({"backup", mFolder + "/backup"});
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_THAT(made.err, HasSubstr("not in the backup: the picture \"loose.png\""));
    EXPECT_THAT(made.err, HasSubstr("not in the backup: what only the watchface.xml of "
                                    "\"com.corvane.watchface-mirel-c4\" has"));
}

TEST_F(AWatch, that_nobody_changed_has_nothing_to_restore)
{
    ASSERT_EQ(Run({"backup", mFolder + "/backup"}).status, 0);
    EXPECT_EQ(Run({"restore", mFolder + "/backup"}).status, 9);
}

TEST_F(AWatch, makes_one_backup_at_a_time)
{
    const auto other = Listen({"--as", "com.corvane.watch-utils.service", "--timeout", "60"});
    const Result made = Run({"backup", mFolder + "/backup"});
    EXPECT_EQ(made.status, 1);
    EXPECT_THAT(made.err, HasSubstr("it makes backups of this watch"));
    EXPECT_FALSE(fs::exists(mFolder + "/backup"));
}
