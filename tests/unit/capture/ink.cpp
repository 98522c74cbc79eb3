// What an observer of a drawing is told.

#include "a-drawing.h"

using testing::SizeIs;

class AnObserver : public ADrawing {
protected:
    std::vector<Drawing::Ink> inks;

    void Observe(const std::string& body)
    {
        inks.clear();
        Drawing::Renderer renderer;
        result =
            renderer.Draw(Document(body), settings, [this](const Drawing::Ink& ink) { inks.push_back(ink); });
        ASSERT_TRUE(result.picture) << Drawing::Describe("document", result.error);
    }

    // The box around the outline of the only ink, without its reach.
    Drawing::Area Box(size_t which = 0) const
    {
        Drawing::Area box{1e6, 1e6, -1e6, -1e6};
        for (const Drawing::Point& p : inks.at(which).outline) {
            box = {std::min(box.left, p.x), std::min(box.top, p.y), std::max(box.right, p.x),
                   std::max(box.bottom, p.y)};
        }
        return box;
    }
    void ExpectBox(const Drawing::Area& expected, size_t which = 0) const
    {
        const Drawing::Area box = Box(which);
        EXPECT_NEAR(box.left, expected.left, 0.1);
        EXPECT_NEAR(box.top, expected.top, 0.1);
        EXPECT_NEAR(box.right, expected.right, 0.1);
        EXPECT_NEAR(box.bottom, expected.bottom, 0.1);
    }
};

TEST_F(AnObserver, is_told_of_a_line_of_text_where_its_pixels_are)
{
    Observe(R"(<text text="pH 80" x="50" y="60" size="20" color="#FFFFFF"/>)");
    ASSERT_THAT(inks, SizeIs(1));
    EXPECT_EQ(inks[0].kind, Drawing::Ink::Kind::kText);
    EXPECT_EQ(inks[0].text, "pH 80");
    EXPECT_EQ(inks[0].shrink, 1);
    const Drawing::Area box = Box();
    EXPECT_NEAR(box.left, InkOf().left, 1.5);
    EXPECT_NEAR(box.top, InkOf().top, 1.5);
    EXPECT_NEAR(box.right, InkOf().right + 1, 1.5);
    EXPECT_NEAR(box.bottom, InkOf().bottom + 1, 1.5);
}

TEST_F(AnObserver, is_told_how_much_a_text_was_scaled_down)
{
    Observe(R"(<text text="0000" x="50" y="60" size="20" color="#FFFFFF"/>)");
    const double whole = Box().right - Box().left;
    Observe(R"(<text text="0000" x="50" y="60" size="20" color="#FFFFFF" max-width="20"/>)");
    EXPECT_LT(inks.at(0).shrink, 0.5);
    EXPECT_NEAR(Box().right - Box().left, inks[0].shrink * whole, 0.1);
}

TEST_F(AnObserver, is_told_of_what_is_filled_and_of_what_is_stroked)
{
    Observe(R"(<circle cx="50" cy="40" r="20" fill="#FFFFFF" stroke="#FF0000" stroke-width="6"/>)");
    ASSERT_THAT(inks, SizeIs(2));
    EXPECT_EQ(inks[0].kind, Drawing::Ink::Kind::kShape);
    EXPECT_EQ(inks[0].reach, 0);
    EXPECT_EQ(inks[1].reach, 3);
    ExpectBox({30, 20, 70, 60}, 0);
    ExpectBox({30, 20, 70, 60}, 1);
}

TEST_F(AnObserver, is_told_of_canvas_units_whatever_the_pictures_size)
{
    for (const int size : {25, 400}) {
        settings.size = size;
        Observe(R"(<rect x="10" y="20" width="30" height="40" fill="#FFFFFF"/>)");
        ExpectBox({10, 20, 40, 60});
    }
}

TEST_F(AnObserver, is_told_of_a_hand_as_it_is_turned_and_of_the_hand_not_its_parts)
{
    root = R"(width="100" height="100" shape="square" preview-time="03:00:00")";
    Observe(
        R"(<layer opacity="0.5"><hand kind="hour" cx="50" cy="50"><bar length="30" width="4" fill="#FFFFFF"/></hand></layer>)");
    ASSERT_THAT(inks, SizeIs(1));
    ExpectBox({50, 48, 80, 52});
    EXPECT_EQ(inks[0].element.text, "hand");
    EXPECT_EQ(inks[0].element.line, 3);
    EXPECT_EQ(inks[0].element.column, 22);
}

TEST_F(AnObserver, is_told_of_ticks_and_of_every_label)
{
    Observe(
        R"(<ticks cx="50" cy="50" r="40" count="4" length="5" width="2" color="#FFFFFF"/><numerals cx="50" cy="50" r="30" labels="1 - 2 -" size="10" color="#FFFFFF"/>)");
    ASSERT_THAT(inks, SizeIs(3));
    ExpectBox({10, 10, 90, 90}, 0);
    EXPECT_EQ(inks[1].text, "1");
    EXPECT_EQ(inks[2].text, "2");
}

TEST_F(AnObserver, is_told_of_a_complications_arcs_icon_text_and_box)
{
    Observe(
        R"(<complication name="a" group="g" source="battery" role="gauge" x="20" y="30" width="60" height="60" color="#FFFFFF" track="#333333" sweep="360" stroke-width="4"/>)");
    ASSERT_THAT(inks, SizeIs(4));
    ExpectBox({22, 32, 78, 88}, 0);
    EXPECT_EQ(inks[0].reach, 2);
    EXPECT_EQ(inks[2].kind, Drawing::Ink::Kind::kIcon);
    ExpectBox({41, 42, 59, 60}, 2);
    EXPECT_EQ(inks[3].text, "82%");
    for (const Drawing::Ink& ink : inks) {
        ASSERT_TRUE(ink.place);
        EXPECT_EQ(ink.place->left, 20);
        EXPECT_EQ(ink.place->top, 30);
        EXPECT_EQ(ink.place->right, 80);
        EXPECT_EQ(ink.place->bottom, 90);
    }
}

TEST_F(AnObserver, is_told_of_a_small_dials_hands)
{
    Observe(
        R"(<complication name="a" group="g" source="worldclock" city="Tokyo" timezone-path="Asia/Tokyo" role="dial" x="0" y="0" width="100" height="100" color="#FFFFFF"/>)");
    ASSERT_THAT(inks, SizeIs(2));
    EXPECT_THAT(inks[0].outline, SizeIs(2));
}

TEST_F(AnObserver, changes_no_pixel)
{
    const std::string body =
        R"(<circle cx="50" cy="50" r="33.3" fill="#335577" stroke="#FFFFFF"/><text text="Ag" x="50" y="60" size="30" color="#FFFFFF"/>)";
    Draw(body);
    const std::string before = Pixels();
    Observe(body);
    EXPECT_EQ(Pixels(), before);
}
