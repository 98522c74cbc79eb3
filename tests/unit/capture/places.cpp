// The time of other places, and hands that turn once a day.

#include <fstream>
#include <sstream>

#include "a-drawing.h"
#include "dates.h"

using testing::HasSubstr;
using testing::IsEmpty;

// The watch is in Berlin, two hours ahead of UTC on the preview's date.
class APlace : public ADrawing {
protected:
    APlace()
    {
        root = R"(width="200" height="100" shape="square" preview-time="10:08:36")";
        settings.timezone = "/usr/share/zoneinfo/Europe/Berlin";
    }

    static std::string Time(const std::string& skeleton = "Hmm")
    {
        return "<text skeleton=\"" + skeleton + R"(" x="100" y="60" size="20" color="#FFFFFF"/>)";
    }
    static std::string In(const std::string& zone, const std::string& what)
    {
        return "<layer " + zone + ">" + what + "</layer>";
    }
    std::string PixelsOf(const std::string& body)
    {
        Draw(body);
        return Pixels();
    }
    std::string PixelsOfText(const std::string& text)
    {
        return PixelsOf("<text text=\"" + text + R"(" x="100" y="60" size="20" color="#FFFFFF"/>)");
    }
    std::string Warning() const
    {
        return result.warnings.size() == 1 ? result.warnings[0].text : "not one warning";
    }
};

TEST_F(APlace, is_shown_by_the_texts_of_its_layer)
{
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Tokyo")", Time())), PixelsOfText("17:08"));
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="America/New_York")", Time())), PixelsOfText("04:08"));
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Kolkata")", Time())), PixelsOfText("13:38"));
}

TEST_F(APlace, has_its_own_date)
{
    root = R"(width="200" height="100" shape="square" preview-time="22:08:36")";
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Tokyo")", Time("d"))), PixelsOfText("15"));
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="America/New_York")", Time("d"))), PixelsOfText("14"));
}

TEST_F(APlace, is_found_by_a_path_of_the_zone_files)
{
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="/opt/share/zoneinfo/posix/Asia/Tokyo")", Time())),
              PixelsOfText("17:08"));
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="/opt/share/zoneinfo/Asia/Tokyo")", Time())),
              PixelsOfText("17:08"));
}

TEST_F(APlace, is_found_by_its_zone_where_there_is_no_path_that_is_known)
{
    EXPECT_EQ(PixelsOf(In(R"(timezone="Asia/Tokyo")", Time())), PixelsOfText("17:08"));
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="No/Where" timezone="Asia/Tokyo")", Time())),
              PixelsOfText("17:08"));
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Tokyo" timezone="America/New_York")", Time())),
              PixelsOfText("17:08"));
}

TEST_F(APlace, that_is_not_known_shows_the_watchs_time_with_a_warning)
{
    Draw(In(R"(timezone-path="No/Where" timezone="nonsense")", Time()));
    EXPECT_THAT(Warning(), HasSubstr("<layer>: its time zone is not known"));
    const std::string shown = Pixels();
    EXPECT_EQ(shown, PixelsOfText("10:08"));
}

TEST_F(APlace, ends_with_its_layer)
{
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Tokyo")", "") + Time()), PixelsOfText("10:08"));
}

TEST_F(APlace, is_that_of_the_innermost_layer)
{
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Tokyo")", In(R"(timezone-path="UTC")", Time()))),
              PixelsOfText("08:08"));
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Tokyo")", In(R"(opacity="1")", Time()))),
              PixelsOfText("17:08"));
}

TEST_F(APlace, counts_from_the_watchs_own_zone)
{
    settings.timezone = "Asia/Tokyo";
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Europe/Berlin")", Time())), PixelsOfText("03:08"));
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST_F(APlace, shows_the_watchs_time_with_a_warning_where_the_watch_does_not_know_its_zone)
{
    for (const char* zone : {"nonsense", "", "Etc/Unknown", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
        settings.timezone = zone;
        Draw(In(R"(timezone-path="Europe/Berlin")", Time()));
        EXPECT_THAT(Warning(), HasSubstr("<layer>: the watch's time zone is not known")) << zone;
        const std::string shown = Pixels();
        EXPECT_EQ(shown, PixelsOfText("10:08")) << zone;
    }
}

// So a preview's time exists, and once, wherever the watch is.
TEST(ThePreviewsDay, has_24_hours_in_every_zone)
{
    std::ifstream table("/usr/share/zoneinfo/zone1970.tab");
    const Drawing::Dates dates;
    int zones = 0;
    for (std::string line, country, place, zone; std::getline(table, line);) {
        if (line.starts_with('#') || !(std::istringstream(line) >> country >> place >> zone)) continue;
        const Drawing::Moment first = dates.At(zone, {0, 0, 0}), last = dates.At(zone, {23, 59, 59});
        if (first.zone.empty()) continue;  // newer than ICU
        ++zones;
        EXPECT_EQ(last.instant - first.instant, 86'399'000) << zone;
    }
    EXPECT_GT(zones, 300);
}

TEST_F(APlace, turns_the_hands_of_its_layer)
{
    settings.timezone = "UTC";
    const std::string hand =
        R"(<hand kind="hour" cx="50" cy="50"><bar length="40" width="4" fill="#FFFFFF"/></hand>)";
    const auto turnsTo = [&](const std::string& zone, const std::string& time) {
        root = R"(width="100" height="100" shape="square" preview-time="12:00:00")";
        const std::string there = PixelsOf(In("timezone-path=\"" + zone + "\"", hand));
        root = R"(width="100" height="100" shape="square" preview-time=")" + time + "\"";
        return there == PixelsOf(hand);
    };
    EXPECT_TRUE(turnsTo("Asia/Tokyo", "21:00:00"));
    EXPECT_TRUE(turnsTo("Asia/Kolkata", "17:30:00"));
    EXPECT_TRUE(turnsTo("America/New_York", "08:00:00"));  // in summer time
    EXPECT_TRUE(turnsTo("Pacific/Kiritimati", "02:00:00"));
}

TEST_F(APlace, leaves_complications_with_the_watchs_time)
{
    root = R"(width="100" height="100" shape="square" preview-time="22:08:36")";
    const std::string date =
        R"(<complication name="a" group="g" source="date" role="text" x="0" y="0" width="100" height="100" color="#FFFFFF"/>)";
    EXPECT_EQ(PixelsOf(In(R"(timezone-path="Asia/Tokyo")", date)), PixelsOf(date));
}

TEST_F(APlace, may_be_laid_over_as_one_picture)
{
    Draw(In(R"(opacity="0.5" timezone-path="Asia/Tokyo")", Time()));
    EXPECT_NEAR(InkOf().CenterX(), 100, 2);
    int brightest = 0;
    for (int x = 0; x < 200; ++x) brightest = std::max(brightest, At(x, 50).red);
    EXPECT_NEAR(brightest, 128, 2);
}

// A world clock in a box of 100 x 100.
class AWorldClock : public APlace {
protected:
    AWorldClock() { root = R"(width="100" height="100" shape="square" preview-time="10:08:36")"; }

    static std::string Clock(const std::string& role, const std::string& more = "",
                             const std::string& zone = R"(city="Tokyo" timezone-path="Asia/Tokyo")")
    {
        return R"(<complication name="a" group="g" source="worldclock" x="0" y="0" width="100" height="100" color="#FFFFFF" role=")" +
               role + "\" " + zone + " " + more + "/>";
    }
    static std::string Text(const std::string& text, int y)
    {
        return "<text text=\"" + text + R"(" x="50" y=")" + std::to_string(y) +
               R"(" valign="middle" size="20" color="#FFFFFF"/>)";
    }
};

TEST_F(AWorldClock, shows_its_time_in_the_hour_mode)
{
    EXPECT_EQ(PixelsOf(Clock("text", R"(size="20")")), PixelsOf(Text("17:08", 50)));
    settings.hours24 = false;
    EXPECT_EQ(PixelsOf(Clock("text", R"(size="20")")), PixelsOf(Text("5:08", 50)));
    EXPECT_EQ(PixelsOf(Clock("text", R"(size="20" skeleton="jmm")")), PixelsOf(Text("5:08\xC2\xA0pm", 50)));
}

TEST_F(AWorldClock, has_a_globe_above_its_time)
{
    Draw(Clock("icon-text", R"(size="20" icon-color="#FF0000")"));
    EXPECT_GT(At(50, 3).red, 200);
    EXPECT_EQ(At(50, 3).green, 0);
    EXPECT_EQ(At(50, 60).green, At(50, 60).red);
    EXPECT_GT(InkOf().bottom, 70);
}

TEST_F(AWorldClock, can_show_its_city_above_its_time)
{
    EXPECT_EQ(PixelsOf(Clock("city", R"(size="20")")), PixelsOf(Text("Tokyo", 25) + Text("17:08", 75)));
    EXPECT_EQ(PixelsOf(Clock("city", R"(size="20" case="upper")")),
              PixelsOf(Text("TOKYO", 25) + Text("17:08", 75)));
}

TEST_F(AWorldClock, shrinks_a_long_city)
{
    Draw(Clock("city", R"(size="20")",
               R"(city="Llanfairpwllgwyngyllgogerychwyrndrobwll" timezone-path="Asia/Tokyo")"));
    EXPECT_GE(InkOf().left, 0);
    EXPECT_LE(InkOf().Width(), 100);
    EXPECT_LT(At(1, 40).red, 30);
}

TEST_F(AWorldClock, can_be_a_small_dial)
{
    settings.timezone = "UTC";
    root = R"(width="100" height="100" shape="square" preview-time="00:00:00")";
    Draw(Clock("dial", R"(track="#0000FF" accent="#FF0000" stroke-width="6")"));  // nine o'clock there
    EXPECT_EQ(At(50, 2), (Pixel{0, 0, 255}));
    EXPECT_EQ(InkOf().left, 0);
    EXPECT_EQ(At(35, 50), kWhite);  // the hour hand to the left, half of the radius
    EXPECT_EQ(At(20, 50), kBlack);
    EXPECT_EQ(At(50, 20), kRed);  // the minute hand upwards, three quarters
    EXPECT_EQ(At(50, 9), kBlack);
    EXPECT_EQ(At(65, 50), kBlack);
}

TEST_F(AWorldClock, is_alone_in_its_own_roles)
{
    for (const char* role : {"city", "dial"}) {
        EXPECT_THAT(ErrorOf("<complication name=\"a\" group=\"g\" source=\"date\" x=\"0\" y=\"0\" "
                            "width=\"9\" height=\"9\" "
                            "color=\"#FFFFFF\" role=\"" +
                            std::string(role) + "\"/>"),
                    HasSubstr("only a world clock"));
    }
    EXPECT_THAT(ErrorOf(Clock("gauge")), HasSubstr("has no share"));
}

TEST_F(AWorldClock, whose_zone_is_not_known_shows_the_watchs_time_with_a_warning)
{
    Draw(Clock("text", R"(size="20")", R"(city="Atlantis" timezone-path="No/Where")"));
    EXPECT_THAT(Warning(), HasSubstr("<complication>: its time zone is not known"));
    const std::string shown = Pixels();
    EXPECT_EQ(shown, PixelsOf(Text("10:08", 50)));
}

class ALiteral : public APlace {};

TEST_F(ALiteral, is_shown_as_it_stands_in_every_language)
{
    const std::string english = PixelsOfText("Zürich");
    settings.language = "de_DE";
    EXPECT_EQ(PixelsOfText("Zürich"), english);
    EXPECT_FALSE(InkOf().IsEmpty());
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST_F(ALiteral, can_be_upper_case)
{
    EXPECT_EQ(PixelsOf(R"(<text text="Zürich" case="upper" x="100" y="60" size="20" color="#FFFFFF"/>)"),
              PixelsOfText("ZÜRICH"));
}
