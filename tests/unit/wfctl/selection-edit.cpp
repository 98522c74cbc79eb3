// Changes to a selection, as they are typed.

#include "selection-edit.h"

#include <gmock/gmock.h>

#include "exit-status.h"

using namespace Wfctl;
using DataUtil::FaceDocument;
using DataUtil::Selection;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

namespace {

std::string FaceXml(const std::string& selection)
{
    return R"(<face-result format="1" id="com.example.face" version="1" width="360" height="360" shape="round"
 default-language="en" preview-time="10:08:36" title-key="t">
<strings language="en"><string key="t">T</string></strings>
<options>
 <style id="dial" label-key="t"><option id="index" label-key="t" default="true"/><option id="roman" label-key="t"/></style>
 <switch id="track" label-key="t" default="on"/>
 <style id="track-style" label-key="t" when="track=on"><option id="thin" label-key="t" default="true"/>
  <option id="thick" label-key="t"/></style>
 <photos id="photo" label-key="t" default="a.png" background="gallery"/>
 <preset id="sporty" label-key="t"><pick group="dial" option="roman"/><place slot="left" source="pedometer"/></preset>
</options>
<scene>
 <photo photos="photo" x="0" y="0" width="360" height="360"/>
 <circle cx="1" cy="1" r="1" fill="#FFFFFF" when="dial=roman"/>
 <circle cx="1" cy="1" r="1" fill="#FFFFFF" when="track-style=thick"/>
 <slot name="left" group="left" label-key="t" role="text" x="10" y="10" width="100" height="50" color="#FFFFFF">
  <offer source="battery"/><offer source="pedometer"/>
  <offer source="worldclock" city="Seoul" country="South Korea" timezone-path="Asia/Seoul"/>
  <fallback source="battery"/><fallback source="empty"/></slot>
</scene>
)" + selection +
           "</face-result>";
}

FaceDocument Face(const std::string& selection = "")
{
    DataUtil::ParseResult parsed = DataUtil::ParseFace(FaceXml(selection));
    for (const DataUtil::Finding& finding : parsed.findings) {
        if (finding.severity == DataUtil::Severity::kError) ADD_FAILURE() << DataUtil::FormatFinding(finding);
    }
    return parsed.document.value_or(FaceDocument());
}

// What is said when a change is refused as misuse.
std::string Complaint(const SelectionChanges& changes)
{
    try {
        Changed(Face(), changes);
    } catch (const Stop& stop) {
        EXPECT_EQ(stop.Status(), Exit::kUsage);
        return stop.what();
    }
    return {};
}

SelectionChanges Picks(const std::string& text)
{
    return {.picks = {text}};
}
SelectionChanges Places(const std::string& text)
{
    return {.places = {text}};
}
SelectionChanges Photos(const std::string& text)
{
    return {.photos = {text}};
}

const DataUtil::WorldClock& ClockOf(const Selection& selection)
{
    return selection.places.at("left").worldClock.value();
}

constexpr char kEverything[] =
    R"(<selection preset="sporty"><pick group="dial" option="index"/><pick group="track" option="off"/>
<place slot="left" source="empty"/><photo photos="photo" file="cat.png"/></selection>)";

}  // namespace

TEST(AnEdit, keeps_what_it_does_not_name)
{
    const Selection selection = Changed(Face(kEverything), Picks("track-style=thick"));
    EXPECT_THAT(selection.picks,
                ElementsAre(Pair("dial", "index"), Pair("track", "off"), Pair("track-style", "thick")));
    EXPECT_EQ(selection.preset, "sporty");
    EXPECT_EQ(selection.places.at("left").source, "empty");
    EXPECT_THAT(selection.photos, ElementsAre(Pair("photo", "cat.png")));
}

TEST(AnEdit, without_a_value_goes_back_to_the_default)
{
    const Selection selection =
        Changed(Face(kEverything), {.picks = {"dial="}, .places = {"left="}, .photos = {"photo="}});
    EXPECT_THAT(selection.picks, ElementsAre(Pair("track", "off")));
    EXPECT_THAT(selection.places, IsEmpty());
    EXPECT_THAT(selection.photos, IsEmpty());
    EXPECT_EQ(Changed(Face(kEverything), {.preset = ""}).preset, "");
}

TEST(AnEdit, that_resets_drops_everything_first)
{
    EXPECT_TRUE(Changed(Face(kEverything), {.reset = true}).IsEmpty());
    const Selection selection = Changed(Face(kEverything), {.reset = true, .picks = {"dial=roman"}});
    EXPECT_THAT(selection.picks, ElementsAre(Pair("dial", "roman")));
    EXPECT_THAT(selection.places, IsEmpty());
}

TEST(AnEdit, with_a_preset_replaces_what_the_preset_names)
{
    const Selection selection = Changed(Face(kEverything), {.preset = "sporty", .places = {"left=battery"}});
    EXPECT_THAT(selection.picks, ElementsAre(Pair("track", "off")));
    EXPECT_EQ(selection.places.at("left").source, "battery");
    EXPECT_EQ(selection.preset, "sporty");
}

TEST(AnEdit, of_a_world_clock_takes_the_city_from_the_zone)
{
    const Selection selection = Changed(Face(), Places("left=worldclock@America/Argentina/Buenos_Aires"));
    EXPECT_EQ(ClockOf(selection).city, "Buenos Aires");
    EXPECT_EQ(ClockOf(selection).country, "Argentina");
    EXPECT_EQ(ClockOf(selection).timezonePath, "America/Argentina/Buenos_Aires");
    EXPECT_EQ(ClockOf(selection).timezone, "America/Argentina/Buenos_Aires");
}

TEST(AnEdit, of_a_world_clock_takes_a_city_of_its_own)
{
    EXPECT_EQ(ClockOf(Changed(Face(), Places("left=worldclock@Asia/Tokyo:Osaka"))).city, "Osaka");
    EXPECT_EQ(Changed(Face(), Places("left=worldclock")).places.at("left").worldClock, std::nullopt);
}

TEST(AnEdit, names_what_may_be_meant_and_all_that_there_is)
{
    EXPECT_EQ(Complaint(Picks("dail=roman")),
              "there is no group [dail]; did you mean dial? known: dial, track, track-style");
    EXPECT_EQ(Complaint(Picks("dial=romn")),
              "there is no option [romn] of [dial]; did you mean roman? known: index, roman");
    EXPECT_EQ(Complaint(Places("lft=battery")), "there is no slot [lft]; did you mean left? known: left");
    EXPECT_EQ(Complaint(Places("left=water")),
              "there is no source [water] for [left]; known: battery, pedometer, worldclock, empty");
    EXPECT_EQ(Complaint({.preset = "sport"}),
              "there is no preset [sport]; did you mean sporty? known: sporty");
    EXPECT_THAT(Complaint(Photos("phto=a.png")), HasSubstr("did you mean photo?"));
    EXPECT_THAT(Complaint(Places("left=worldclock@Asia/Tokio")), HasSubstr("did you mean Asia/Tokyo?"));
}

TEST(AnEdit, takes_nothing_that_is_malformed)
{
    EXPECT_THAT(Complaint(Picks("dial")), HasSubstr("GROUP=OPTION"));
    EXPECT_THAT(Complaint(Picks("=dial")), HasSubstr("GROUP=OPTION"));
    EXPECT_THAT(Complaint(Places("left=battery@Asia/Tokyo")), HasSubstr("only worldclock takes @AREA/CITY"));
    EXPECT_THAT(Complaint(Places("left=worldclock@Asia/Tokyo:")), HasSubstr("no city"));
    for (const char* name : {"photo=a/b.png", "photo=..", "photo=a\nb"}) {
        EXPECT_THAT(Complaint(Photos(name)), HasSubstr("no bare file name")) << name;
    }
    EXPECT_THAT(Complaint(Photos("photo=" + std::string(256, 'a'))), HasSubstr("no bare file name"));
}

TEST(Differences, say_what_is_shown_otherwise)
{
    const auto differences = DifferencesOf(Face(), Face(kEverything));
    std::vector<std::string> lines;
    for (const Difference& one : differences)
        lines.push_back(one.what + ": " + one.before + " -> " + one.after);
    EXPECT_THAT(lines, ElementsAre("preset: none -> sporty", "track: on -> off", "left: battery -> empty",
                                   "photo: default -> cat.png"));
    EXPECT_THAT(DifferencesOf(Face(kEverything), Face(kEverything)), IsEmpty());
}

TEST(Differences, say_what_is_hidden)
{
    const auto differences =
        DifferencesOf(Face(), Face("<selection><pick group=\"track\" option=\"off\"/><pick "
                                   "group=\"track-style\" option=\"thick\"/></selection>"));
    ASSERT_EQ(differences.size(), 2U);
    EXPECT_FALSE(differences[0].isHidden);
    EXPECT_TRUE(differences[1].isHidden);
}

TEST(Differences, name_the_city_of_a_world_clock)
{
    const auto differences =
        DifferencesOf(Face(), Face("<selection><place slot=\"left\" source=\"worldclock\"/></selection>"));
    ASSERT_EQ(differences.size(), 1U);
    EXPECT_EQ(differences[0].after, "worldclock, Seoul (Asia/Seoul)");
}
