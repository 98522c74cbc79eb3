// Shapes, gradients, layers and the canvas.

#include "a-drawing.h"

using testing::HasSubstr;

TEST_F(ADrawing, has_its_background_everywhere)
{
    root += R"( background="#FF0000")";
    Draw("");
    EXPECT_EQ(At(0, 0), kRed);
    EXPECT_EQ(At(99, 99), kRed);
}

TEST_F(ADrawing, is_transparent_outside_a_round_shape)
{
    root = R"(width="100" height="100" shape="round" preview-time="10:08:36" background="#FF0000")";
    Draw(R"(<rect x="0" y="0" width="100" height="100" fill="#FFFFFF"/>)");
    EXPECT_EQ(At(0, 0), kNothing);
    EXPECT_EQ(At(99, 99), kNothing);
    EXPECT_EQ(At(13, 13), kNothing);
    EXPECT_EQ(At(16, 16), kWhite);
    EXPECT_EQ(At(50, 0).Brightness() > 200, true);
}

TEST_F(ADrawing, is_scaled_to_the_wanted_size)
{
    settings.size = 50;
    root = R"(width="100" height="60" shape="square" preview-time="10:08:36")";
    Draw(R"(<rect x="50" y="0" width="50" height="60" fill="#FFFFFF"/>)");
    EXPECT_EQ(Width(), 50);
    EXPECT_EQ(Height(), 30);
    EXPECT_EQ(At(24, 10), kBlack);
    EXPECT_EQ(At(25, 10), kWhite);
}

TEST_F(ADrawing, of_a_huge_canvas_keeps_to_a_bounded_size)
{
    root = R"(width="4096" height="2048" shape="square" preview-time="10:08:36")";
    Draw("");
    EXPECT_EQ(Width(), Drawing::Limits::kLargestOwnSize);
    EXPECT_EQ(Height(), Drawing::Limits::kLargestOwnSize / 2);
}

TEST_F(ADrawing, paints_later_elements_over_earlier_ones)
{
    Draw(R"(<rect x="0" y="0" width="100" height="100" fill="#FFFFFF"/>
            <rect x="0" y="0" width="50" height="100" fill="#FF0000"/>)");
    EXPECT_EQ(At(10, 10), kRed);
    EXPECT_EQ(At(60, 10), kWhite);
}

TEST_F(ADrawing, rounds_the_corners_of_a_rectangle)
{
    Draw(R"(<rect x="10" y="10" width="80" height="80" radius="20" fill="#FFFFFF"/>)");
    EXPECT_EQ(At(11, 11), kBlack);
    EXPECT_EQ(At(50, 10), kWhite);
    EXPECT_EQ(At(18, 18), kWhite);
}

TEST_F(ADrawing, strokes_over_the_fill_with_half_the_width_on_either_side)
{
    Draw(R"(<rect x="20" y="20" width="60" height="60" fill="#FF0000" stroke="#FFFFFF" stroke-width="10"/>)");
    EXPECT_EQ(At(14, 50), kBlack);
    EXPECT_EQ(At(15, 50), kWhite);
    EXPECT_EQ(At(24, 50), kWhite);
    EXPECT_EQ(At(25, 50), kRed);
}

TEST_F(ADrawing, closes_polygons)
{
    Draw(R"(<polygon points="10,10 90,10 90,90" stroke="#FFFFFF" stroke-width="4"/>)");
    EXPECT_EQ(At(50, 50), kWhite);
    EXPECT_EQ(At(70, 30), kBlack);
}

TEST_F(ADrawing, ends_lines_with_their_caps)
{
    Draw(R"(<line x1="20" y1="30" x2="80" y2="30" stroke="#FFFFFF" stroke-width="10"/>
            <line x1="20" y1="70" x2="80" y2="70" stroke="#FFFFFF" stroke-width="10" cap="round"/>)");
    EXPECT_EQ(At(18, 30), kBlack);
    EXPECT_EQ(At(17, 70), kWhite);
}

TEST_F(ADrawing, runs_an_arc_clockwise_from_twelve)
{
    Draw(R"(<arc cx="50" cy="50" r="40" start="0" sweep="90" stroke="#FFFFFF" stroke-width="6"/>)");
    EXPECT_EQ(At(78, 21), kWhite);  // half past one
    EXPECT_EQ(At(21, 21), kBlack);
    EXPECT_EQ(At(78, 78), kBlack);
}

TEST_F(ADrawing, runs_an_arc_backwards_for_a_negative_sweep)
{
    Draw(R"(<arc cx="50" cy="50" r="40" start="0" sweep="-90" stroke="#FFFFFF" stroke-width="6"/>)");
    EXPECT_EQ(At(21, 21), kWhite);
    EXPECT_EQ(At(78, 21), kBlack);
}

TEST_F(ADrawing, fills_along_a_linear_gradient)
{
    Draw(
        R"(<rect x="0" y="0" width="100" height="100" fill="#00FF00"><linear-gradient x1="25" y1="0" x2="75" y2="0">
              <stop offset="0" color="#000000"/><stop offset="1" color="#FFFFFF"/></linear-gradient></rect>)");
    EXPECT_EQ(At(10, 50), kBlack);  // the first colour continues
    EXPECT_NEAR(At(50, 50).red, 128, 6);
    EXPECT_EQ(At(50, 50).red, At(50, 50).green);
    EXPECT_EQ(At(90, 50), kWhite);
}

TEST_F(ADrawing, fills_around_a_radial_gradient)
{
    Draw(R"(<rect x="0" y="0" width="100" height="100"><radial-gradient cx="50" cy="50" r="40">
              <stop offset="0" color="#FFFFFF"/><stop offset="0.5" color="#FF0000"/><stop offset="1" color="#000000"/>
            </radial-gradient></rect>)");
    EXPECT_GT(At(50, 50).green, 240);
    EXPECT_NEAR(At(70, 50).red, 255, 8);
    EXPECT_NEAR(At(70, 50).green, 0, 12);
    EXPECT_NEAR(At(50, 80).red, 128, 10);
    EXPECT_EQ(At(5, 50), kBlack);
}

TEST_F(ADrawing, interpolates_colours_that_are_not_premultiplied)
{
    Draw(R"(<rect x="0" y="0" width="100" height="100" fill="#FF0000"/>
            <rect x="0" y="0" width="100" height="100"><radial-gradient cx="0" cy="50" r="100">
              <stop offset="0" color="#FF000000"/><stop offset="1" color="#FF0000"/></radial-gradient></rect>)");
    for (int x = 0; x < 100; x += 10) EXPECT_NEAR(At(x, 50).red, 255, 2) << x;
}

TEST_F(ADrawing, paints_a_layer_as_one_picture)
{
    Draw(R"(<layer opacity="0.5"><rect x="0" y="0" width="60" height="100" fill="#FFFFFF"/>
            <rect x="40" y="0" width="60" height="100" fill="#FFFFFF"/></layer>)");
    EXPECT_NEAR(At(20, 50).red, 128, 1);
    EXPECT_EQ(At(50, 50), At(20, 50));
}

TEST_F(ADrawing, is_the_same_each_time)
{
    const std::string body =
        R"(<circle cx="50" cy="50" r="30" fill="#FFFFFF"/><text text-key="t" x="50" y="50" size="20" color="#FF0000"/>)";
    Draw(body);
    const std::string first = Pixels();
    Draw(body);
    EXPECT_EQ(Pixels(), first);
}

TEST_F(ADrawing, says_where_an_unknown_element_is)
{
    EXPECT_THAT(ErrorOf("  <circel cx=\"1\"/>"), HasSubstr("document:3:3: <circel>: no such element"));
}

TEST_F(ADrawing, says_where_a_bad_value_is)
{
    EXPECT_THAT(ErrorOf(R"(<circle cx="50" cy="1e9" r="3"/>)"),
                HasSubstr("document:3:17: <circle>: cy=\"1e9\" should be"));
}

TEST_F(ADrawing, says_which_attribute_is_missing)
{
    EXPECT_THAT(ErrorOf(R"(<circle cx="50" r="3"/>)"), HasSubstr("the attribute \"cy\" is missing"));
}

TEST_F(ADrawing, passes_over_an_unknown_attribute_with_a_warning)
{
    Draw(R"(<rect x="0" y="0" width="10" height="10" fill="#FFFFFF" glow="3"/>)");
    EXPECT_EQ(At(5, 5), kWhite);
    ASSERT_EQ(result.warnings.size(), 1u);
    EXPECT_THAT(result.warnings[0].text, HasSubstr("\"glow\" is not known"));
}
