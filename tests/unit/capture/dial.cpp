// Ticks, numerals, hands and their shadows.

#include <cmath>

#include "a-drawing.h"

using testing::HasSubstr;

TEST_F(ADrawing, puts_a_tick_where_its_angle_says)
{
    Draw(R"(<ticks cx="50" cy="50" r="40" count="4" omit="0 2 3" length="20" width="4" color="#FFFFFF"/>)");
    const Ink ink = InkOf();
    EXPECT_EQ(ink.left, 70);
    EXPECT_EQ(ink.right, 89);
    EXPECT_EQ(ink.top, 48);
    EXPECT_EQ(ink.bottom, 51);
}

TEST_F(ADrawing, spreads_ticks_over_the_sweep)
{
    Draw(
        R"(<ticks cx="50" cy="50" r="40" count="2" start="90" sweep="180" length="10" width="4" color="#FFFFFF"/>)");
    EXPECT_EQ(At(85, 50), kWhite);  // 90 degrees
    EXPECT_EQ(At(50, 85), kWhite);  // 180
    EXPECT_EQ(At(50, 15), kBlack);
    EXPECT_EQ(At(15, 50), kBlack);
}

TEST_F(ADrawing, skips_every_nth_tick)
{
    Draw(R"(<ticks cx="50" cy="50" r="40" count="8" skip="2" length="10" width="4" color="#FFFFFF"/>)");
    EXPECT_EQ(At(50, 15), kBlack);
    EXPECT_EQ(At(75, 25), kWhite);
}

TEST_F(ADrawing, tapers_ticks_inwards)
{
    Draw(
        R"(<ticks cx="50" cy="50" r="45" count="1" length="40" width="20" inner-width="2" color="#FFFFFF"/>)");
    EXPECT_EQ(At(42, 6), kWhite);
    EXPECT_EQ(At(45, 40), kBlack);
}

TEST_F(ADrawing, centres_dots_on_the_radius)
{
    Draw(R"(<ticks cx="50" cy="50" r="30" count="1" shape="dot" width="10" color="#FFFFFF"/>)");
    EXPECT_DOUBLE_EQ(InkOf().CenterX(), 50);
    EXPECT_DOUBLE_EQ(InkOf().CenterY(), 20);
    EXPECT_EQ(InkOf().Width(), 10);
}

TEST_F(ADrawing, refuses_bars_without_length)
{
    EXPECT_THAT(ErrorOf(R"(<ticks cx="50" cy="50" r="30" count="1" width="10" color="#FFFFFF"/>)"),
                HasSubstr("bars need a length"));
}

TEST_F(ADrawing, centres_numerals_on_their_place)
{
    Draw(R"(<numerals cx="50" cy="50" r="30" labels="- 0 - -" size="20" color="#FFFFFF"/>)");
    EXPECT_NEAR(InkOf().CenterX(), 80, 1);
    EXPECT_NEAR(InkOf().CenterY(), 50, 0.6);
}

TEST_F(ADrawing, turns_radial_numerals_outwards_and_in_the_lower_half_inwards)
{
    settings.size = 200;
    // A 7 has its bar at its top.
    Draw(R"(<numerals cx="50" cy="50" r="0" turn="radial" labels="7 -" size="80" color="#FFFFFF"/>)");
    const Ink up = InkOf();
    Draw(R"(<numerals cx="50" cy="50" r="0" turn="radial" labels="- 7 - -" size="80" color="#FFFFFF"/>)");
    EXPECT_GT(InkOf().Width(), InkOf().Height());  // at 3 o'clock it lies on its side
    Draw(R"(<numerals cx="50" cy="50" r="0" turn="radial" labels="- 7" size="80" color="#FFFFFF"/>)");
    EXPECT_EQ(InkOf().top, up.top);  // at 6 o'clock it stands upright again
    EXPECT_EQ(InkOf().bottom, up.bottom);
}

namespace {

// The angle at which a white hand points from (50, 50), in degrees.
double AngleOf(const Ink& ink)
{
    const double x = (ink.right > 52 ? ink.right + 1 : ink.left) - 50,
                 y = (ink.top < 48 ? ink.top : ink.bottom + 1) - 50;
    const double angle = std::atan2(x, -y) * 180 / 3.14159265358979;
    return angle < 0 ? angle + 360 : angle;
}

const char kHand[] = R"(" cx="50" cy="50"><bar length="45" width="1" fill="#FFFFFF"/></hand>)";

}  // namespace

struct HandCase {
    const char* kind;
    const char* time;
    double angle;
};

class AHand : public ADrawing, public testing::WithParamInterface<HandCase> {};

TEST_P(AHand, points_where_the_time_says)
{
    settings.size = 400;
    root = R"(width="100" height="100" shape="square" preview-time=")" + std::string(GetParam().time) + "\"";
    Draw("<hand kind=\"" + std::string(GetParam().kind) + kHand);
    const Ink ink = InkOf();
    const Ink scaled{ink.left / 4, ink.top / 4, ink.right / 4, ink.bottom / 4};
    EXPECT_NEAR(AngleOf(scaled), GetParam().angle, 2.5);
}

INSTANTIATE_TEST_SUITE_P(
    Drawing, AHand,
    testing::Values(HandCase{"hour", "03:00:00", 90}, HandCase{"hour", "22:08:36", 304.3},
                    HandCase{"hour", "01:30:00", 45}, HandCase{"minute", "10:08:36", 51.6},
                    HandCase{"minute", "00:52:30", 315}, HandCase{"second", "10:08:22", 132},
                    HandCase{"hour24", "03:00:00", 45}, HandCase{"hour24", "15:00:00", 225},
                    HandCase{"hour24", "21:30:00", 322.5}));

TEST_F(ADrawing, begins_an_inlay_away_from_the_pivot)
{
    root = R"(width="100" height="100" shape="square" preview-time="00:00:00")";
    Draw(
        R"(<hand kind="hour" cx="50" cy="50"><bar length="40" tail="-20" width="6" fill="#FFFFFF"/></hand>)");
    EXPECT_EQ(InkOf().top, 10);
    EXPECT_EQ(InkOf().bottom, 29);
}

TEST_F(ADrawing, rounds_the_ends_of_a_bar)
{
    root = R"(width="100" height="100" shape="square" preview-time="00:00:00")";
    Draw(
        R"(<hand kind="hour" cx="50" cy="50"><bar length="30" tail="10" width="8" cap="round" fill="#FFFFFF"/></hand>)");
    EXPECT_EQ(InkOf().top, 16);     // the tip and half its width
    EXPECT_EQ(InkOf().bottom, 63);  // the tail and half its width
    EXPECT_EQ(At(46, 16), kBlack);
}

class AShadow : public ADrawing {
protected:
    AShadow()
    {
        root = R"(width="100" height="100" shape="square" background="#FFFFFF" preview-time="03:00:00")";
    }

    void DrawHand(const std::string& shadow)
    {
        Draw("<hand kind=\"hour\" cx=\"20\" cy=\"30\" " + shadow +
             R"(><rect x="-5" y="-60" width="10" height="60" fill="#FF0000"/></hand>)");
    }
};

TEST_F(AShadow, lies_below_the_hand_at_an_offset_that_does_not_turn)
{
    DrawHand(R"(shadow="#000000" shadow-x="0" shadow-y="20")");
    EXPECT_EQ(At(50, 30), kRed);
    EXPECT_EQ(At(50, 50), kBlack);
    EXPECT_EQ(At(50, 60), kWhite);
    EXPECT_EQ(At(50, 40), kWhite);  // between the hand and the shadow
}

TEST_F(AShadow, has_a_soft_edge)
{
    DrawHand(R"(shadow="#000000" shadow-x="0" shadow-y="30" shadow-blur="8")");
    EXPECT_EQ(At(50, 40), kWhite);
    EXPECT_NEAR(At(50, 54).red + At(50, 55).red, 255, 20);  // the edge stays in the middle of its softness
    EXPECT_GT(At(50, 52).red, At(50, 54).red);
    EXPECT_GT(At(50, 54).red, At(50, 56).red);
    EXPECT_LT(At(50, 60).red, 40);
}

TEST_F(AShadow, is_one_silhouette)
{
    Draw(R"(<hand kind="hour" cx="20" cy="30" shadow="#00000080" shadow-y="30">
            <rect x="-5" y="-60" width="10" height="40" fill="#FF000040"/><rect x="-5" y="-40" width="10" height="40" fill="#FF000040"/></hand>)");
    EXPECT_NEAR(At(30, 60).red, 127, 1);
    EXPECT_EQ(At(50, 60), At(30, 60));  // where both parts lie
}

TEST_F(AShadow, is_cut_at_the_edge_of_the_picture)
{
    Draw(
        R"(<hand kind="hour" cx="8000" cy="-8000" shadow="#000000" shadow-blur="32" shadow-x="-8000" shadow-y="8000">
            <circle cx="0" cy="0" r="20" fill="#FF0000"/></hand>)");
    EXPECT_LT(At(2, 2).red, 80);
    EXPECT_EQ(At(80, 80), kWhite);
}
