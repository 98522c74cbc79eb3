// Who may speak to the service, and whom it can answer.

#include <cctype>

#include "a-msg-control.h"
#include "handles.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::Values;
using WatchfaceService::BundlePtr;

namespace {

// "com.corvane.w-home" as a name of a test case.
std::string CaseName(const std::string& appId)
{
    std::string name = appId.empty() ? "nobody" : appId;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

}  // namespace

TEST_F(AMsgControl, listens_on_its_trusted_port)
{
    EXPECT_THAT(platform.Calls({"port open"}), ElementsAre("port open watchface-service::localport trusted"));
}

class AnAllowedSender : public AMsgControl, public testing::WithParamInterface<std::string> {};

TEST_P(AnAllowedSender, is_listened_to)
{
    Deliver(GetParam(), {
                            {"type",  "watch-idle-changed"},
                            {"pkgid", "a"                 }
    });
    EXPECT_THAT(platform.Errors(), Contains("set watchface to [a]"));
}

INSTANTIATE_TEST_SUITE_P(peers, AnAllowedSender,
                         Values(kViewer, kSettingList, kEditor, kHome, kWms, kWorldClockMap,
                                kWorldClockCityDetail, kCapture),
                         [](const auto& row) { return CaseName(row.param); });

class ASenderThatIsNotAllowed : public AMsgControl, public testing::WithParamInterface<std::string> {};

TEST_P(ASenderThatIsNotAllowed, is_refused_without_a_reply)
{
    Deliver(GetParam(), {
                            {"type",  "watch-idle-changed"},
                            {"pkgid", "a"                 }
    });
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E messageType = [watch-idle-changed], watch_name = [a]",
                                                 "E request from not allowed app[" + GetParam() + "]"));
    EXPECT_THAT(platform.Calls({"send", "pref", "key"}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(others, ASenderThatIsNotAllowed,
                         Values("", "com.example.app", "com.corvane.w-hom", "com.corvane.w-home2",
                                "Com.corvane.w-home", "com.corvane.watchface-service"),
                         [](const auto& row) { return CaseName(row.param) + std::to_string(row.index); });

// Sending by application id

struct Address {
    const char* id;
    const char* port;
};

class AnAddressablePeer : public AMsgControl, public testing::WithParamInterface<Address> {};

TEST_P(AnAddressablePeer, is_sent_to_on_its_port_trusted_and_from_the_services_port)
{
    const BundlePtr message(MemoryPlatform::NewBundle({
        {"type", "t"}
    }));
    control.SendMessage(GetParam().id, message.get());
    EXPECT_THAT(Sent(),
                ElementsAre(std::string(GetParam().id) + " " + GetParam().port + " {\"type\": \"t\"}"));
    EXPECT_TRUE(platform.Sent()[0].trusted);
    EXPECT_EQ(platform.Sent()[0].senderPort, "watchface-service::localport");
}

INSTANTIATE_TEST_SUITE_P(peers, AnAddressablePeer,
                         Values(Address{kSettingList, "clocksetting::localport"},
                                Address{kEditor, "watch-face-editor::localport"},
                                Address{kHome, "w-home::localport"},
                                Address{kWms, "w-manager-service::localport"}),
                         [](const auto& row) { return CaseName(row.param.id); });

class APeerWithoutAPort : public AMsgControl, public testing::WithParamInterface<std::string> {};

TEST_P(APeerWithoutAPort, is_sent_nothing_and_nothing_is_logged)
{
    const BundlePtr message(MemoryPlatform::NewBundle({
        {"type", "t"}
    }));
    control.SendMessage(GetParam(), message.get());
    EXPECT_THAT(platform.Calls({"send"}), IsEmpty());
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(others, APeerWithoutAPort,
                         Values(kViewer, kWorldClockMap, kWorldClockCityDetail, kCapture, kBackupAgent,
                                "com.example.app"),
                         [](const auto& row) { return CaseName(row.param); });

// The editors on the watch, whose changes the phone is told of

class ALocalEditor : public AMsgControl, public testing::WithParamInterface<std::string> {};

TEST_P(ALocalEditor, has_its_idle_change_told_to_the_phone)
{
    Deliver(GetParam(), {
                            {"type",  "watch-idle-changed"},
                            {"pkgid", "a"                 }
    });
    EXPECT_THAT(Sent(), ElementsAre("com.corvane.w-manager-service w-manager-service::localport "
                                    "{\"pkgid\": \"a\", \"type\": \"watch-idle-changed\"}"));
}

TEST_P(ALocalEditor, has_its_update_told_to_the_phone)
{
    Deliver(GetParam(), {
                            {"type",          "watch-setting-updated"},
                            {"pkgid",         "a"                    },
                            {"data/xml_data", "<a/>"                 }
    });
    EXPECT_THAT(platform.SentTo(kWms), SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(peers, ALocalEditor, Values(kSettingList, kHome, kEditor),
                         [](const auto& row) { return CaseName(row.param); });

class APeerThatIsNoLocalEditor : public AMsgControl, public testing::WithParamInterface<std::string> {};

TEST_P(APeerThatIsNoLocalEditor, has_its_idle_change_told_to_nobody)
{
    Deliver(GetParam(), {
                            {"type",  "watch-idle-changed"},
                            {"pkgid", "a"                 }
    });
    EXPECT_THAT(platform.Errors(), Contains("idle clock set done!!"));
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_P(APeerThatIsNoLocalEditor, has_its_update_not_told_to_the_phone)
{
    Deliver(GetParam(), {
                            {"type",          "watch-setting-updated"},
                            {"pkgid",         "a"                    },
                            {"data/xml_data", "<a/>"                 }
    });
    EXPECT_THAT(platform.Errors(), Contains("[Message Handle] watchface.xml generation is success!"));
    EXPECT_THAT(Sent(), Not(Contains(StartsWith("com.corvane.w-manager-service w-manager-service::localport "
                                                "{\"data/xml_data\""))));
}

INSTANTIATE_TEST_SUITE_P(peers, APeerThatIsNoLocalEditor,
                         Values(kViewer, kWms, kWorldClockMap, kWorldClockCityDetail, kCapture),
                         [](const auto& row) { return CaseName(row.param); });
