// Requests of the service, their answers, and when the application leaves.

#include "a-capture-application.h"

#include <sys/stat.h>

#include <filesystem>

#include "common-util-app.h"

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr char kPngStart[] = "\x89PNG";

}  // namespace

TEST_F(ACaptureApplication, listens_on_its_trusted_port)
{
    EXPECT_THAT(platform.Calls({"port open"}), ElementsAre("port open watchface-capture::localport trusted"));
}

TEST_F(ACaptureApplication, answers_a_launch_as_succeeded_at_once)
{
    MemoryPlatform::ReceivedRequest request({}, kService);
    app->OnAppControl(request.Handle());
    EXPECT_TRUE(request.IsAnswered());
    EXPECT_EQ(request.Result(), APP_CONTROL_RESULT_SUCCEEDED);
}

TEST_F(ACaptureApplication, draws_and_then_tells_the_service)
{
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(PreviewOf(kFace), StartsWith(kPngStart));
    ASSERT_THAT(platform.Sent(), SizeIs(1));
    const MemoryPlatform::SentMessage sent = platform.Sent()[0];
    EXPECT_EQ(sent.appId, kService);
    EXPECT_EQ(sent.port, "watchface-service::localport");
    EXPECT_EQ(sent.senderPort, kPort);
    EXPECT_TRUE(sent.trusted);
    EXPECT_EQ(sent.message, (MemoryPlatform::Message{
                                {"type",  "watch-capture-finished"},
                                {"pkgid", kFace                   }
    }));
    EXPECT_THAT(Logs(), IsEmpty());
}

TEST_F(ACaptureApplication, has_replaced_the_preview_when_it_tells_the_service)
{
    Ask(kFace);
    platform.RunUntilIdle();
    const auto calls = platform.Calls({"lock", "unlock", "open", "close", "send"});
    EXPECT_THAT(calls,
                ElementsAre("lock RW:watchlist/com.example.watchface-dawn/watchface.xml 1",
                            "unlock RW:watchlist/com.example.watchface-dawn/watchface.xml",
                            "open RW:watchlist/com.example.watchface-dawn/com.example.watchface-dawn.png",
                            "close RW:watchlist/com.example.watchface-dawn/com.example.watchface-dawn.png",
                            StartsWith("send com.corvane.watchface-service watchface-service::localport")));
}

TEST_F(ACaptureApplication, takes_requests_from_the_service_alone)
{
    for (const char* sender : {"com.corvane.w-home", "com.corvane.watchface", ""}) {
        platform.Deliver(kPort, sender,
                         {
                             {"pkgName", kFace}
        });
        platform.RunUntilIdle();
    }
    EXPECT_EQ(PreviewOf(kFace), kOldPreview);
    EXPECT_THAT(platform.Sent(), IsEmpty());
    EXPECT_THAT(Logs(), SizeIs(3));
    EXPECT_THAT(Logs()[0], HasSubstr("com.corvane.w-home"));
}

TEST_F(ACaptureApplication, draws_nothing_inside_the_message_callback)
{
    Ask(kFace);
    EXPECT_EQ(PreviewOf(kFace), kOldPreview);
    EXPECT_THAT(platform.Sent(), IsEmpty());
}

TEST_F(ACaptureApplication, draws_one_request_a_turn_in_order)
{
    Install("a", Document("#00FF00"));
    Install("b", Document("#0000FF"));
    for (const char* name : {"b", "a", "b"}) Ask(name);
    platform.RunTurn();
    EXPECT_THAT(Finished(), ElementsAre("b"));
    platform.RunTurn();
    EXPECT_THAT(Finished(), ElementsAre("b", "a"));
    platform.RunUntilIdle();
    EXPECT_THAT(Finished(), ElementsAre("b", "a", "b"));
}

TEST_F(ACaptureApplication, keeps_the_old_preview_of_a_face_that_it_cannot_draw_and_says_where_it_breaks)
{
    Install(kFace, Document("#FF0000", "\n<circle cx=\"x\" cy=\"0\" r=\"1\"/>"));
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_EQ(PreviewOf(kFace), kOldPreview);
    EXPECT_THAT(Finished(), ElementsAre(kFace));
    ASSERT_THAT(Logs(), SizeIs(1));
    EXPECT_THAT(Logs()[0], StartsWith("E "));
    EXPECT_THAT(Logs()[0], HasSubstr("com.example.watchface-dawn/watchface.xml:4:9: "));
}

TEST_F(ACaptureApplication, finishes_a_face_without_document)
{
    std::filesystem::remove(platform.RW(FileOf(kFace, "watchface.xml")));
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_EQ(PreviewOf(kFace), kOldPreview);
    EXPECT_THAT(Finished(), ElementsAre(kFace));
    EXPECT_THAT(Logs(), ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(ACaptureApplication, never_waits_for_a_document_that_is_a_pipe)
{
    std::filesystem::remove(platform.RW(FileOf(kFace, "watchface.xml")));
    ASSERT_EQ(mkfifo(platform.RW(FileOf(kFace, "watchface.xml")).c_str(), 0600), 0);
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(Finished(), ElementsAre(kFace));
}

TEST_F(ACaptureApplication, draws_the_installed_document_of_a_face_that_has_no_own_one)
{
    std::filesystem::remove(platform.RW(FileOf(kFace, "watchface.xml")));
    platform.WriteFile(platform.RO(FileOf(kFace, "watchface.xml")), Document("#00FF00"));
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(PreviewOf(kFace), StartsWith(kPngStart));
}

TEST_F(ACaptureApplication, makes_no_folder_for_a_face_that_has_none)
{
    platform.WriteFile(platform.RO(FileOf("com.example.installed", "watchface.xml")), Document("#00FF00"));
    const auto before = platform.Tree(platform.RW());
    Ask("com.example.installed");
    platform.RunUntilIdle();
    EXPECT_EQ(platform.Tree(platform.RW()), before);
    EXPECT_THAT(Finished(), ElementsAre("com.example.installed"));
    EXPECT_THAT(Logs(), ElementsAre(HasSubstr("has no folder")));
}

TEST_F(ACaptureApplication, never_makes_a_path_of_a_hostile_name)
{
    const auto before = platform.Tree(platform.Root());
    const MemoryPlatform::Strings names = {"", ".", "..", "../../x", "a/b", "/etc", std::string(300, 'a')};
    for (const std::string& name : names) {
        platform.Forget();
        Ask(name);
        platform.RunUntilIdle();
        EXPECT_THAT(Finished(), ElementsAre(name));
        EXPECT_THAT(Logs(), ElementsAre(HasSubstr("is no watchface"))) << name;
        EXPECT_THAT(platform.Calls({"path", "lock", "open", "is_dir", "exists"}), IsEmpty()) << name;
    }
    EXPECT_EQ(platform.Tree(platform.Root()), before);
}

TEST_F(ACaptureApplication, finishes_a_request_without_a_name)
{
    platform.DeliverNothing(kPort, kService);
    platform.Deliver(kPort, kService,
                     {
                         {"other", "x"}
    });
    platform.RunUntilIdle();
    EXPECT_THAT(Finished(), ElementsAre("", ""));
}

TEST_F(ACaptureApplication, keeps_the_old_preview_when_the_new_one_cannot_be_written)
{
    platform.Fail("FileOutputStream");
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_EQ(PreviewOf(kFace), kOldPreview);
    EXPECT_THAT(Finished(), ElementsAre(kFace));
    EXPECT_THAT(Logs(), ElementsAre(HasSubstr("could not be written")));
}

TEST_F(ACaptureApplication, finishes_when_the_platform_gives_no_path)
{
    platform.Fail("app_manager_get_shared_data_path");
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(Finished(), ElementsAre(kFace));
    EXPECT_EQ(PreviewOf(kFace), kOldPreview);
}

TEST_F(ACaptureApplication, draws_as_the_watch_is_set)
{
    const std::string text = R"(<text skeleton="jmm" x="16" y="20" size="9" color="#FFFFFF"/>)";
    Install(kFace, Document("#000000", text));
    Ask(kFace);
    platform.RunUntilIdle();
    const std::string day = PreviewOf(kFace);
    platform.Set24HourMode(false);
    Ask(kFace);
    platform.RunUntilIdle();
    const std::string half = PreviewOf(kFace);
    EXPECT_NE(half, day);
    platform.SetLanguage("de_DE");
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_NE(PreviewOf(kFace), half);
}

TEST_F(ACaptureApplication, warns_of_what_a_picture_lacks_and_keeps_the_picture)
{
    Install(kFace, Document("#000000", R"(<image src="gone.png" x="0" y="0" width="9" height="9"/>)"));
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(PreviewOf(kFace), StartsWith(kPngStart));
    EXPECT_THAT(Logs(), ElementsAre(HasSubstr("\"gone.png\" is missing")));
    EXPECT_THAT(Logs()[0], StartsWith("W "));
}

TEST_F(ACaptureApplication, finds_assets_in_its_own_folder_and_then_in_the_installed_one)
{
    Ask(kFace);
    platform.RunUntilIdle();
    platform.WriteFile(platform.RO(FileOf(kFace, "a.png")), PreviewOf(kFace));
    Install(kFace, Document("#000000", R"(<image src="a.png" x="0" y="0" width="9" height="9"/>)"));
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(Logs(), IsEmpty());
}

TEST_F(ACaptureApplication, finds_the_users_pictures_in_the_trusted_folder)
{
    const std::string photo =
        R"(<photo background="theme" file="a.png" default="gone.png" x="0" y="0" width="9" height="9"/>)";
    Install(kFace, Document("#000000", photo));
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(Logs(), ElementsAre(HasSubstr("\"gone.png\" is missing")));
    platform.Forget();
    platform.WriteFile(platform.Trusted("theme/Backgrounds/a.png"), PreviewOf(kFace));
    Ask(kFace);
    platform.RunUntilIdle();
    EXPECT_THAT(Logs(), IsEmpty());
}

TEST_F(ACaptureApplication, leaves_after_ten_seconds_without_work)
{
    platform.Advance(9.9);
    EXPECT_THAT(platform.Calls({"service_app_exit"}), IsEmpty());
    platform.Advance(0.2);
    EXPECT_THAT(platform.Calls({"service_app_exit"}), SizeIs(1));
    EXPECT_FALSE(platform.NextTimer());
}

TEST_F(ACaptureApplication, counts_from_its_last_work)
{
    platform.Advance(9);
    Ask(kFace);
    platform.RunUntilIdle();
    platform.Advance(9);
    EXPECT_THAT(platform.Calls({"service_app_exit"}), IsEmpty());
    platform.Advance(1.1);
    EXPECT_THAT(platform.Calls({"service_app_exit"}), SizeIs(1));
}

TEST_F(ACaptureApplication, stays_when_it_is_launched_again)
{
    platform.Advance(9);
    MemoryPlatform::ReceivedRequest request({}, kService);
    app->OnAppControl(request.Handle());
    platform.Advance(9);
    EXPECT_THAT(platform.Calls({"service_app_exit"}), IsEmpty());
}

TEST_F(ACaptureApplication, stays_for_a_message_that_arrives_as_it_wants_to_leave)
{
    platform.Advance(9.9);
    CommonUtilTimer meanwhile(0.1, [this] {
        platform.Post([this] { Ask(kFace); });
        return kCommonUtilTaskEnd;
    });
    meanwhile.Start();
    platform.Advance(0.2);
    EXPECT_THAT(Finished(), ElementsAre(kFace));
    EXPECT_THAT(platform.Calls({"service_app_exit"}), IsEmpty());
}

TEST_F(ACaptureApplication, works_off_what_has_arrived_before_it_goes)
{
    Install("a", Document("#00FF00"));
    Ask(kFace);
    Ask("a");
    app.reset();
    EXPECT_THAT(Finished(), ElementsAre(kFace, "a"));
    EXPECT_THAT(PreviewOf("a"), StartsWith(kPngStart));
    const auto calls = platform.Calls({"send", "port close"});
    EXPECT_EQ(calls.back(), "port close watchface-capture::localport");
}

TEST_F(ACaptureApplication, goes_on_when_the_service_is_not_there)
{
    platform.Fail("SendTrustedMessage");
    Install("a", Document("#00FF00"));
    Ask(kFace);
    Ask("a");
    platform.RunUntilIdle();
    EXPECT_THAT(Finished(), ElementsAre("a"));
    EXPECT_THAT(Logs(), ElementsAre(HasSubstr("could not be told")));
}
