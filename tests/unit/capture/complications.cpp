// Complications with their samples.

#include <tuple>

#include "a-drawing.h"

using testing::HasSubstr;

class AComplication : public ADrawing {
protected:
    static std::string Slot(const std::string& source, const std::string& role, const std::string& more = "")
    {
        return "<complication name=\"a\" group=\"g\" source=\"" + source + "\" role=\"" + role +
               R"(" x="10" y="10" width="80" height="80" color="#FFFFFF" )" + more + "/>";
    }
};

TEST_F(AComplication, without_a_role_draws_nothing)
{
    Draw(R"(<complication name="a" group="g" source="empty" x="10" y="10" width="80" height="80"/>)");
    EXPECT_TRUE(InkOf().IsEmpty());
}

TEST_F(AComplication, centres_its_text_in_the_box)
{
    Draw(Slot("date", "text"));
    EXPECT_NEAR(InkOf().CenterX(), 50, 2);
    EXPECT_NEAR(InkOf().CenterY(), 50, 1);
}

TEST_F(AComplication, shrinks_a_text_that_is_wider_than_the_box)
{
    Draw(Slot("date", "text", R"(size="60" skeleton="EEEEdMMMM")"));
    EXPECT_GE(InkOf().left, 9);
    EXPECT_LE(InkOf().right, 90);
}

TEST_F(AComplication, puts_the_icon_above_the_text)
{
    Draw(Slot("heartrate", "icon-text", R"(icon-color="#FF0000" size="20")"));
    bool redBelow = false, redAbove = false;
    for (int y = 10; y < 90; ++y) {
        for (int x = 10; x < 90; ++x) {
            const Pixel p = At(x, y);
            if (p.red > 200 && p.green < 50) (y < 50 ? redAbove : redBelow) = true;
        }
    }
    EXPECT_TRUE(redAbove);
    EXPECT_FALSE(redBelow);
    EXPECT_GT(InkOf().bottom, 60);
}

TEST_F(AComplication, centres_an_icon_that_has_no_text)
{
    for (const char* source : {"shortcut", "moonphase"}) {
        Draw(Slot(source, "icon-text"));
        EXPECT_NEAR(InkOf().CenterX(), 50, 2) << source;
        EXPECT_NEAR(InkOf().CenterY(), 50, 2) << source;
    }
}

TEST_F(AComplication, lights_the_right_side_of_the_waxing_moon)
{
    Draw(Slot("moonphase", "icon-text"));
    EXPECT_EQ(At(62, 50), kWhite);
    EXPECT_EQ(At(48, 50), kWhite);
    EXPECT_EQ(At(42, 50), kBlack);
}

TEST_F(AComplication, paints_a_translucent_icon_evenly)
{
    settings.size = 400;
    Draw(Slot("caffeine", "icon-text", R"(icon-color="#FFFFFF80")"));
    for (int y = 40; y < 200; ++y) {
        for (int x = 40; x < 360; ++x) EXPECT_LE(At(x, y).red, 129) << x << "," << y;
    }
}

TEST_F(AComplication, shows_its_share_over_the_track)
{
    Draw(Slot("caffeine", "arc", R"(track="#FF0000" start="0" sweep="360" stroke-width="8" cap="butt")"));
    EXPECT_EQ(At(86, 50), kWhite);  // half the share: the right side
    EXPECT_EQ(At(13, 50), kRed);
    EXPECT_EQ(At(50, 50), kBlack);
    EXPECT_EQ(InkOf().left, 10);  // the outer edge touches the box
    EXPECT_EQ(InkOf().right, 89);
}

TEST_F(AComplication, runs_its_arc_backwards)
{
    Draw(Slot("caffeine", "arc", R"(track="#FF0000" start="0" sweep="-360" stroke-width="8" cap="butt")"));
    EXPECT_EQ(At(13, 50), kWhite);
    EXPECT_EQ(At(86, 50), kRed);
}

TEST_F(AComplication, keeps_a_gauges_icon_and_text_inside_the_arc)
{
    Draw(Slot("battery", "gauge", R"(accent="#FF0000" stroke-width="4" size="14")"));
    Ink inner;
    for (int y = 15; y < 85; ++y) {
        for (int x = 15; x < 85; ++x) {
            if (At(x, y).green > 100)
                inner = {std::min(inner.left, x), std::min(inner.top, y), std::max(inner.right, x),
                         std::max(inner.bottom, y)};
        }
    }
    EXPECT_GE(inner.left, 25);
    EXPECT_LE(inner.right, 74);
    EXPECT_GE(inner.top, 25);
    EXPECT_LE(inner.bottom, 74);
}

TEST_F(AComplication, cannot_show_a_share_that_its_source_lacks)
{
    EXPECT_THAT(ErrorOf(Slot("weather", "gauge")), HasSubstr("has no share"));
}

TEST_F(AComplication, shows_the_alarm_in_the_hour_mode)
{
    Draw(Slot("alarm", "text"));
    const std::string day = Pixels();
    settings.hours24 = false;
    Draw(Slot("alarm", "text"));
    EXPECT_NE(Pixels(), day);  // 06:30 and 6:30
}

class AnIcon : public AComplication, public testing::WithParamInterface<const char*> {};

TEST_P(AnIcon, fills_its_place_well)
{
    settings.size = 300;
    Draw(
        "<complication name=\"a\" group=\"g\" source=\"" + std::string(GetParam()) +
        R"(" role="icon-text" x="0" y="0" width="100" height="100" color="#00000000" icon-color="#FFFFFF"/>)");
    const Ink ink = InkOf();
    EXPECT_GE(std::max(ink.Width(), ink.Height()), 150 * 8 / 10);
    EXPECT_LE(std::max(ink.Width(), ink.Height()), 150);
    EXPECT_NEAR(ink.CenterX(), 150, 7);
}

INSTANTIATE_TEST_SUITE_P(Drawing, AnIcon,
                         testing::Values("battery", "pedometer", "heartrate", "water", "caffeine", "weather",
                                         "calendar", "alarm", "d-day", "notification", "shortcut",
                                         "moonphase", "worldclock"));
