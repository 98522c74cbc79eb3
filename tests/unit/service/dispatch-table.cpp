// Every kind of message from every kind of sender: who gets which message, with which keys, in which order.

#include <tuple>

#include "a-msg-control.h"

using MemoryPlatform::Message;
using MemoryPlatform::Strings;
using testing::Combine;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::ValuesIn;

namespace {

constexpr char kFace[] = "com.corvane.watchface-mirel-c1";

// Who sends, and whether the phone hears of its changes, it is the phone, or it cannot even be answered.
enum Kind { kLocalEditor, kPhone, kWithoutPort };
struct Sender {
    const char* appId;
    const char* name;  // in a transcript
    Kind kind;
};

// clang-format off
const Sender kSenders[] = {
    {kSettingList,         "settings", kLocalEditor},
    {kHome,                "home",     kLocalEditor},
    {kEditor,              "editor",   kLocalEditor},
    {kWms,                 "phone",    kPhone},
    {kViewer,              "viewer",   kWithoutPort},
    {kWorldClockMap,       "map",      kWithoutPort},
    {kWorldClockCityDetail,"city",     kWithoutPort},
    {kCapture,             "capture",  kWithoutPort},
};

// A message, what was asked before, and the transcript of all that leaves: "PEER key=value ...", the keys in byte
// order. SENDER is who sent the message. Paths are short; PICTURE is an image that exists.
struct Row {
    const char* name;
    std::vector<Message> before;
    Message message;
    Strings toldForLocalEditor;
    Strings toldForPhone;
    Strings toldForOthers;
};

const Row kRows[] = {
    {"date_request", {},
     {{"type", "watch-icu-convert"}, {"data/timestamp", "0"}, {"data/skeleton", "yMd"}, {"data/bestpattern", "true"}},
     {"phone formattedstring=DATE type=watch-icu-convert"},
     {"phone formattedstring=DATE type=watch-icu-convert"},
     {"phone formattedstring=DATE type=watch-icu-convert"}},
    {"idle_change", {},
     {{"type", "watch-idle-changed"}, {"pkgid", "a"}, {"extra", "x"}},
     {"phone pkgid=a type=watch-idle-changed"},
     {},
     {}},
    {"installation", {},
     {{"type", "watch-setting-created"}, {"pkgid", kFace}, {"data/label", "L"}, {"data/xml_data", "<a/>"}, {"data/icon_path", "PICTURE"}},
     {"SENDER data/icon_path=RW:watchlist/FACE/FACE.png data/label=L pkgid=FACE status=success type=watch-setting-created",
      "phone data/icon_path=RW:watchlist/FACE/FACE.png data/label=L data/xml_data=<a/> pkgid=FACE type=watch-setting-created"},
     {"SENDER data/icon_path=RW:watchlist/FACE/FACE.png data/label=L pkgid=FACE status=success type=watch-setting-created",
      "capture pkgName=FACE"},
     {}},
    {"installation_of_anothers_face_without_a_preview", {},
     {{"type", "watch-setting-created"}, {"pkgid", "a"}, {"data/xml_data", "<a/>"}},
     {"capture pkgName=a",
      "SENDER data/icon_path=RW:watchlist/a/a.png pkgid=a status=success type=watch-setting-created",
      "phone data/xml_data=<a/> pkgid=a type=watch-setting-created"},
     {"capture pkgName=a",
      "SENDER data/icon_path=RW:watchlist/a/a.png pkgid=a status=success type=watch-setting-created"},
     {"capture pkgName=a"}},
    {"installation_of_nothing", {},
     {{"type", "watch-setting-created"}, {"pkgid", "a"}, {"data/label", "L"}},
     {"SENDER data/label=L pkgid=a status=fail type=watch-setting-created"},
     {"SENDER data/label=L pkgid=a status=fail type=watch-setting-created"},
     {}},
    {"update", {},
     {{"type", "watch-setting-updated"}, {"pkgid", kFace}, {"data/label", "L"}, {"data/xml_data", "<a/>"}, {"data/icon_path", "PICTURE"}},
     {"SENDER data/icon_path=RW:watchlist/FACE/FACE.png data/label=L pkgid=FACE status=success type=watch-setting-updated",
      "phone data/icon_path=RW:watchlist/FACE/FACE.png data/label=L data/xml_data=<a/> pkgid=FACE type=watch-setting-updated"},
     {"SENDER data/icon_path=RW:watchlist/FACE/FACE.png data/label=L pkgid=FACE status=success type=watch-setting-updated",
      "editor pkgid=FACE type=watch-setting-updated"},
     {}},
    {"update_of_nobody", {},
     {{"type", "watch-setting-updated"}, {"data/xml_data", "<a/>"}},
     {"SENDER status=fail type=watch-setting-updated"},
     {"SENDER status=fail type=watch-setting-updated"},
     {}},
    {"deletion", {},
     {{"type", "watch-setting-deleted"}, {"pkgid", "stored"}, {"data/xml_data", "<a/>"}},
     {"SENDER pkgid=stored status=success type=watch-setting-deleted",
      "phone pkgid=stored type=watch-setting-deleted"},
     {"SENDER pkgid=stored status=success type=watch-setting-deleted",
      "editor pkgid=stored type=watch-setting-deleted",
      "settings pkgid=stored type=watch-setting-deleted",
      "home pkgid=stored type=watch-setting-deleted"},
     {"editor pkgid=stored type=watch-setting-deleted",
      "settings pkgid=stored type=watch-setting-deleted",
      "home pkgid=stored type=watch-setting-deleted"}},
    {"deletion_of_nothing", {},
     {{"type", "watch-setting-deleted"}, {"pkgid", "missing"}},
     {"SENDER pkgid=missing status=fail type=watch-setting-deleted",
      "editor pkgid=missing type=watch-setting-deleted",
      "settings pkgid=missing type=watch-setting-deleted",
      "home pkgid=missing type=watch-setting-deleted"},
     {"SENDER pkgid=missing status=fail type=watch-setting-deleted",
      "editor pkgid=missing type=watch-setting-deleted",
      "settings pkgid=missing type=watch-setting-deleted",
      "home pkgid=missing type=watch-setting-deleted"},
     {"editor pkgid=missing type=watch-setting-deleted",
      "settings pkgid=missing type=watch-setting-deleted",
      "home pkgid=missing type=watch-setting-deleted"}},
    {"dual_clock_request", {},
     {{"type", "watch-dual-clock-data"}, {"pkgid", "stored"}, {"group/name", "g"}},
     {"SENDER city=C country=L group/name=g pkgid=stored status=success timezone=T timezonePath=P type=watch-dual-clock-data updatedMode=2"},
     {"SENDER city=C country=L group/name=g pkgid=stored status=success timezone=T timezonePath=P type=watch-dual-clock-data updatedMode=2"},
     {}},
    {"dual_clock_request_without_a_group", {},
     {{"type", "watch-dual-clock-data"}, {"pkgid", "stored"}},
     {"SENDER pkgid=stored status=fail type=watch-dual-clock-data"},
     {"SENDER pkgid=stored status=fail type=watch-dual-clock-data"},
     {}},
    {"announced_world_clock", {},
     {{"type", "watch-prepare-update-world-clock"}, {"pkgid", "a"}},
     {},
     {},
     {}},
    {"world_clock", {},
     {{"type", "watch-setting-update-world-clock"}, {"data/worldclock/cityname", "C"}, {"data/xml_data", "<a/>"}},
     {"SENDER data/worldclock/cityname=C status=success type=watch-setting-update-world-clock",
      "capture pkgName=stored"},
     {"SENDER data/worldclock/cityname=C status=success type=watch-setting-update-world-clock",
      "capture pkgName=stored"},
     {"capture pkgName=stored"}},
    {"added_image", {},
     {{"type", "watch-bg-add"}, {"bg_type", "watch-bg-digital"}, {"bg_list", "PICTURE"}},
     {"SENDER bg_list=PICTURE bg_type=watch-bg-digital status=success type=watch-bg-add",
      "phone bg_list=TRUSTED:theme/Backgrounds/i.png bg_type=watch-bg-digital type=watch-bg-add"},
     {"SENDER bg_list=PICTURE bg_type=watch-bg-digital status=success type=watch-bg-add"},
     {}},
    {"added_image_that_is_missing", {},
     {{"type", "watch-bg-add"}, {"bg_type", "watch-bg-digital"}, {"bg_list", "/missing"}},
     {"SENDER bg_list=/missing bg_type=watch-bg-digital status=fail type=watch-bg-add"},
     {"SENDER bg_list=/missing bg_type=watch-bg-digital status=fail type=watch-bg-add"},
     {}},
    {"added_image_that_is_pending", {},
     {{"type", "watch-bg-add"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "PICTURE"}, {"watch-bg-pending", "true"}},
     {"SENDER bg_list=PICTURE bg_type=watch-bg-gallery-u1 status=success type=watch-bg-add watch-bg-pending=true",
      "phone bg_list=TRUSTED:theme/GalleryBackgrounds/U1/i.png bg_type=watch-bg-gallery-u1 type=watch-bg-add watch-bg-pending=true"},
     {"SENDER bg_list=PICTURE bg_type=watch-bg-gallery-u1 status=success type=watch-bg-add watch-bg-pending=true"},
     {}},
    {"added_image_that_is_in_place", {},
     {{"type", "watch-bg-add"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "/p/i"}, {"watch-bg-direct", "true"}},
     {"SENDER bg_list=/p/i bg_type=watch-bg-gallery-u1 status=success type=watch-bg-add watch-bg-direct=true",
      "phone bg_list=/p/i bg_type=watch-bg-gallery-u1 type=watch-bg-add watch-bg-direct=true"},
     {"SENDER bg_list=/p/i bg_type=watch-bg-gallery-u1 status=success type=watch-bg-add watch-bg-direct=true"},
     {}},
    {"deleted_images", {},
     {{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", Strings{"/p/old", "i"}}},
     {"SENDER bg_list=[/p/old,i] bg_type=watch-bg-gallery-u1 status=success type=watch-bg-del",
      "phone bg_list=[old,i] bg_type=watch-bg-gallery-u1 type=watch-bg-del"},
     {"SENDER bg_list=[/p/old,i] bg_type=watch-bg-gallery-u1 status=success type=watch-bg-del"},
     {}},
    {"deleted_images_of_which_there_are_none", {},
     {{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-u1"}},
     {"SENDER bg_type=watch-bg-gallery-u1 status=fail type=watch-bg-del"},
     {"SENDER bg_type=watch-bg-gallery-u1 status=fail type=watch-bg-del"},
     {}},
    {"deleted_image_that_is_pending", {},
     {{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "/p/old"}, {"watch-bg-pending", "true"}},
     {"SENDER bg_list=/p/old bg_type=watch-bg-gallery-u1 status=success type=watch-bg-del watch-bg-pending=true"},
     {"SENDER bg_list=/p/old bg_type=watch-bg-gallery-u1 status=success type=watch-bg-del watch-bg-pending=true"},
     {}},
    {"deleted_image_that_is_gone", {},
     {{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "/p/old"}, {"watch-bg-direct", "true"}},
     {"SENDER bg_list=/p/old bg_type=watch-bg-gallery-u1 status=success type=watch-bg-del watch-bg-direct=true",
      "phone bg_list=old bg_type=watch-bg-gallery-u1 type=watch-bg-del watch-bg-direct=true"},
     {"SENDER bg_list=/p/old bg_type=watch-bg-gallery-u1 status=success type=watch-bg-del watch-bg-direct=true"},
     {}},
    {"saved_deletion",
     {{{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "old"}, {"watch-bg-pending", "true"}}},
     {{"type", "watch-bg-save"}, {"bg_type", "watch-bg-gallery-u1"}},
     {"phone bg_list=[old] bg_type=watch-bg-gallery type=watch-bg-del",
      "SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-save"},
     {"phone bg_list=[old] bg_type=watch-bg-gallery type=watch-bg-del",
      "SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-save"},
     {"phone bg_list=[old] bg_type=watch-bg-gallery type=watch-bg-del"}},
    {"saved_nothing", {},
     {{"type", "watch-bg-save"}, {"bg_type", "watch-bg-gallery-u1"}},
     {"SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-save"},
     {"SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-save"},
     {}},
    {"cancelled_addition",
     {{{"type", "watch-bg-add"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "PICTURE"}, {"watch-bg-pending", "true"}}},
     {{"type", "watch-bg-cancel"}, {"bg_type", "watch-bg-gallery-u1"}},
     {"phone bg_list=[i.png] bg_type=watch-bg-gallery type=watch-bg-del",
      "SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-cancel"},
     {"phone bg_list=[i.png] bg_type=watch-bg-gallery type=watch-bg-del",
      "SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-cancel"},
     {"phone bg_list=[i.png] bg_type=watch-bg-gallery type=watch-bg-del"}},
    {"cancelled_nothing", {},
     {{"type", "watch-bg-cancel"}, {"bg_type", "watch-bg-gallery-u1"}},
     {"SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-cancel"},
     {"SENDER bg_type=watch-bg-gallery-u1 status=success type=watch-bg-cancel"},
     {}},
    {"finished_capture", {},
     {{"type", "watch-capture-finished"}, {"pkgid", "stored"}},
     {},
     {},
     {}},
    {"reserved_kind", {},
     {{"type", "watch-req-watchlists"}, {"pkgid", "stored"}},
     {},
     {},
     {}},
    {"unknown_kind", {},
     {{"type", "watch-setting-removed"}, {"pkgid", "stored"}},
     {},
     {},
     {}},
    {"item_of_a_backup", {},
     {{"type", "watch"}, {"operation", "corvane_cloud_restore"}, {"pkgid", "stored"}, {"result_xml", "<a/>"}},
     {},
     {},
     {}},
};
// clang-format on

// "SENDER" and the like for what they stand for, wherever they occur.
std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

class AMessageOfAKind : public AMsgControl {
protected:
    AMessageOfAKind()
    {
        platform.SetPortUp(kEditor, "watch-face-editor::localport");
        platform.SetPortUp(kSettingList, "clocksetting::localport");
        platform.SetPortUp(kHome, "w-home::localport");
        platform.SetPortUp(kCapture, kCapturePort);
        platform.ScriptDates([](int64_t) { return "DATE"; });
        platform.WriteFile(Picture(), "picture");
        platform.WriteFile(platform.RW("watchlist/stored/stored_result.xml"), "<stored/>");
        platform.WriteFile(platform.Trusted("theme/GalleryBackgrounds/U1/old"), "stored");
        platform.SetPref("wfs-watch-name-world-clock-update", "stored");
        platform.SetPref("stored-g-timezonePath", "P");
        platform.SetPref("stored-g-timezone", "T");
        platform.SetPref("stored-g-city", "C");
        platform.SetPref("stored-g-country", "L");
        platform.SetPref("stored-g-updatedMode", 2);
    }

    std::string Picture() const { return platform.Root() + "/pictures/i.png"; }

    void Play(const std::string& sender, Message message)
    {
        for (auto& [key, value] : message) {
            if (value == Message::mapped_type("PICTURE")) value = Picture();
        }
        Deliver(sender, message);
    }

    static std::string Name(const std::string& appId)
    {
        for (const Sender& sender : kSenders) {
            if (appId == sender.appId) return sender.name;
        }
        return appId;
    }

    Strings Transcript() const
    {
        Strings lines;
        for (const auto& sent : platform.Sent()) {
            std::string line = Name(sent.appId);
            for (const auto& [key, value] : sent.message) {
                const auto* text = std::get_if<std::string>(&value);
                line += " " + key + "=" + (text ? *text : "[" + Joined(std::get<Strings>(value)) + "]");
            }
            line = Replaced(Replaced(line, Picture(), "PICTURE"), platform.RW(), "RW:");
            lines.push_back(Replaced(line, platform.Trusted(), "TRUSTED:"));
        }
        return lines;
    }

private:
    static std::string Joined(const Strings& texts)
    {
        std::string all;
        for (const std::string& text : texts) all += (all.empty() ? "" : ",") + text;
        return all;
    }
};

class AMessageFromAPeer : public AMessageOfAKind,
                          public testing::WithParamInterface<std::tuple<Row, Sender>> {};

TEST_P(AMessageFromAPeer, is_told_to_those_whom_it_concerns)
{
    const auto& [row, sender] = GetParam();
    for (const Message& message : row.before) Play(kViewer, message);
    platform.Forget();
    Play(sender.appId, row.message);

    Strings expected = row.toldForLocalEditor;
    if (sender.kind == kPhone) expected = row.toldForPhone;
    if (sender.kind == kWithoutPort) expected = row.toldForOthers;
    for (std::string& line : expected) line = Replaced(Replaced(line, "SENDER", sender.name), "FACE", kFace);
    EXPECT_THAT(Transcript(), ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(table, AMessageFromAPeer, Combine(ValuesIn(kRows), ValuesIn(kSenders)),
                         [](const auto& at) {
                             return std::string(std::get<0>(at.param).name) + "_from_" +
                                    std::get<1>(at.param).name;
                         });

class AMessageFromAStranger : public AMessageOfAKind, public testing::WithParamInterface<Row> {};

TEST_P(AMessageFromAStranger, is_told_to_nobody_and_changes_nothing)
{
    const Strings files = platform.Tree(platform.Root());
    const auto prefs = platform.Prefs();
    platform.Forget();
    Play("com.example.app", GetParam().message);
    EXPECT_THAT(platform.Calls(), IsEmpty());
    EXPECT_EQ(platform.Errors().back(), "request from not allowed app[com.example.app]");
    EXPECT_EQ(platform.LogTexts().size(), 2U);
    EXPECT_EQ(platform.Tree(platform.Root()), files);
    EXPECT_EQ(platform.Prefs(), prefs);
}

INSTANTIATE_TEST_SUITE_P(table, AMessageFromAStranger, ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
