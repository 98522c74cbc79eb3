// Sheets: how many previews come onto one picture.

#include "sheet-document.h"

#include <gmock/gmock.h>

#include "xml-gate.h"

using namespace Wfctl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Le;
using testing::Not;

namespace {

SheetBlock BlockOf(std::size_t count, std::size_t columns)
{
    SheetBlock block;
    block.columns = columns;
    for (std::size_t i = 0; i < count; ++i) {
        block.pictures.push_back({
            std::to_string(i) + ".png", 360, 360, true, {"Face", "com.example.face"}
        });
    }
    return block;
}

// One attribute of all elements of a name, in document order.
std::vector<int> Values(const std::string& document, const char* element, const char* attribute)
{
    DataUtil::Findings findings;
    const auto tree = DataUtil::XmlTree::Load(document, findings);
    std::vector<int> values;
    if (!tree) return values;
    for (const pugi::xml_node node : tree->Root().children(element)) {
        values.push_back(node.attribute(attribute).as_int());
    }
    return values;
}

}  // namespace

TEST(ASheet, has_few_empty_places)
{
    const std::pair<std::size_t, std::size_t> expected[] = {
        {1,  1},
        {2,  2},
        {3,  3},
        {4,  2},
        {6,  3},
        {8,  4},
        {12, 4},
    };
    for (const auto& [count, columns] : expected) EXPECT_EQ(PleasantColumns(count), columns) << count;
    EXPECT_GE(PleasantColumns(500), 22U);
}

TEST(ASheet, shows_its_pictures_row_by_row)
{
    const std::string document = SheetDocument({BlockOf(5, 2)}, 100);
    const std::vector<int> x = Values(document, "image", "x"), y = Values(document, "image", "y");
    ASSERT_EQ(x.size(), 5U);
    EXPECT_EQ(x[0], x[2]);
    EXPECT_GE(x[1], x[0] + 100);
    EXPECT_EQ(y[0], y[1]);
    EXPECT_GE(y[2], y[0] + 100);
}

TEST(ASheet, keeps_every_picture_inside)
{
    SheetBlock matrix = BlockOf(6, 3);
    matrix.heads = {
        {"German",  "de_DE"},
        {"Korean",  "ko_KR"},
        {"English", "en_GB"}
    };
    matrix.sides = {
        {"A rather long name of a face", "12 hours"},
        {"B",                            "24 hours"}
    };
    const std::vector<SheetBlock> blocks = {matrix, BlockOf(2, 3)};
    const SheetSize size = MeasureSheet(blocks, 240);
    const std::string document = SheetDocument(blocks, 240);
    EXPECT_THAT(document, HasSubstr("width=\"" + std::to_string(size.width) + "\""));
    for (const int x : Values(document, "image", "x")) EXPECT_THAT(x + 240, Le(size.width));
    for (const int y : Values(document, "image", "y")) EXPECT_THAT(y + 240, Le(size.height));
    for (const int y : Values(document, "text", "y")) EXPECT_THAT(y, Le(size.height));
}

TEST(ASheet, shows_pictures_as_wide_as_they_are_high_only_when_they_are)
{
    SheetBlock block = BlockOf(1, 1);
    block.pictures[0].width = 200;
    block.pictures[0].height = 100;
    const std::string document = SheetDocument({block}, 100);
    EXPECT_THAT(Values(document, "image", "width"), ElementsAre(100));
    EXPECT_THAT(Values(document, "image", "height"), ElementsAre(50));
}

TEST(ASheet, says_where_a_picture_is_missing)
{
    SheetBlock block = BlockOf(1, 1);
    block.pictures[0].file.clear();
    const std::string document = SheetDocument({block}, 100);
    EXPECT_THAT(document, Not(HasSubstr("<image")));
    EXPECT_THAT(document, HasSubstr("no picture"));
}

TEST(ASheet, takes_any_name)
{
    SheetBlock block = BlockOf(1, 1);
    block.pictures[0].caption = {"<R&D> \"x\"\t\x01", "\xff"};
    DataUtil::Findings findings;
    const auto tree = DataUtil::XmlTree::Load(SheetDocument({block}, 100), findings);
    ASSERT_TRUE(tree);
    const pugi::xml_node name = tree->Root().child("text");
    EXPECT_STREQ(name.attribute("text").value(), "<R&D> \"x\"??");
    EXPECT_STREQ(name.next_sibling("text").attribute("text").value(), "?");
}

TEST(ASheet, is_not_larger_than_a_drawing_may_be)
{
    const std::vector<SheetBlock> many = {BlockOf(400, 20)};
    const int side = FittingSide(many, 360);
    EXPECT_GT(side, 24);
    EXPECT_THAT(MeasureSheet(many, side).width, Le(4096));
    EXPECT_THAT(MeasureSheet(many, side).height, Le(4096));
    EXPECT_EQ(FittingSide({BlockOf(4, 2)}, 360), 360);
    EXPECT_EQ(FittingSide({BlockOf(100000, 20)}, 360), 0);
}
