// Documents that are broken, or made to cost too much. Each ends with one error that has a place, or with
// none of the machine's time and memory gone.

#include <chrono>

#include "a-drawing.h"

using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

class AHostileDocument : public ADrawing {
protected:
    std::string ErrorOfText(const std::string& text)
    {
        Drawing::Renderer renderer;
        result = renderer.Draw(text, settings);
        EXPECT_FALSE(result.picture);
        return Drawing::Describe("f", result.error);
    }
    static std::string Times(int count, const std::string& text)
    {
        std::string all;
        for (int i = 0; i < count; ++i) all += text;
        return all;
    }
};

TEST_F(AHostileDocument, is_refused_when_it_is_not_well_formed)
{
    EXPECT_THAT(ErrorOfText(""), StartsWith("f:1:1: "));
    EXPECT_THAT(ErrorOfText("<watchface>"), StartsWith("f:1:"));
    EXPECT_THAT(ErrorOfText("<watchface a=\"1\" a=\"2\"/>"), HasSubstr("duplicate attribute"));
    EXPECT_THAT(ErrorOfText("<watchface/>\n<watchface/>"), StartsWith("f:2:1: "));
    EXPECT_THAT(ErrorOfText("<watchface>\xFF</watchface>"), StartsWith("f:1:"));
    EXPECT_THAT(ErrorOfText(std::string("<watch\0face/>", 13)), StartsWith("f:1:"));
}

TEST_F(AHostileDocument, may_not_bring_a_document_type)
{
    EXPECT_THAT(ErrorOfText("<!DOCTYPE watchface [<!ENTITY a \"b\">]><watchface>&a;</watchface>"),
                HasSubstr("document type"));
}

TEST_F(AHostileDocument, may_not_be_larger_than_its_limit)
{
    EXPECT_THAT(ErrorOfText("<watchface>" + std::string(1 << 20, ' ') + "</watchface>"),
                HasSubstr("1048576"));
}

TEST_F(AHostileDocument, may_not_be_nested_too_deeply)
{
    EXPECT_THAT(ErrorOf(Times(100, "<layer>") + Times(100, "</layer>")), HasSubstr("deeper"));
    EXPECT_THAT(ErrorOf(Times(10, R"(<layer opacity="1">)") + Times(10, "</layer>")),
                HasSubstr("layers are nested too deeply"));
}

TEST_F(AHostileDocument, may_not_have_too_many_elements)
{
    EXPECT_THAT(ErrorOf(Times(9000, "<circle cx=\"1\" cy=\"1\" r=\"1\"/>")),
                HasSubstr("more than 8192 elements"));
}

TEST_F(AHostileDocument, of_another_kind_is_refused)
{
    EXPECT_THAT(ErrorOfText("<face-result format=\"1\"/>"), HasSubstr("\"watchface\""));
}

TEST_F(AHostileDocument, of_a_later_format_is_refused)
{
    EXPECT_THAT(
        ErrorOfText(R"(<watchface format="2" id="a" version="1" width="100" height="100" shape="square"
                               default-language="en" preview-time="10:08:36" title-key="t"/>)"),
        HasSubstr("format"));
}

TEST_F(AHostileDocument, holds_elements_only_where_they_belong)
{
    EXPECT_THAT(ErrorOf(R"(<stop offset="0" color="#FFFFFF"/>)"),
                HasSubstr("<stop>: no such element can stand here"));
    EXPECT_THAT(ErrorOf(R"(<hand kind="hour" cx="5" cy="5"/>)"),
                HasSubstr("<hand>: it has to hold at least 1"));
    EXPECT_THAT(ErrorOf(R"(<hand kind="hour" cx="5" cy="5"><arc/></hand>)"),
                HasSubstr("<arc>: no such element"));
    EXPECT_THAT(ErrorOf(R"(<layer opacity="1"><strings language="de"/></layer>)"),
                HasSubstr("<strings>: no such element"));
    strings.clear();
    EXPECT_THAT(ErrorOf(""), HasSubstr("<watchface>: it has to hold at least 1 <strings>"));
}

TEST_F(AHostileDocument, cannot_ask_for_a_huge_canvas)
{
    root = R"(width="100000" height="100" shape="square" preview-time="10:08:36")";
    EXPECT_THAT(ErrorOf(""), HasSubstr("width"));
}

TEST_F(AHostileDocument, cannot_use_numbers_out_of_bounds)
{
    for (const char* value : {"99999", "-8193", "1e5", "nan", "inf", "0x10", "", "1.2345", "--1", "1,5"}) {
        EXPECT_THAT(ErrorOf("<circle cx=\"" + std::string(value) + "\" cy=\"0\" r=\"1\"/>"), HasSubstr("cx"))
            << value;
    }
}

TEST_F(AHostileDocument, cannot_use_a_palette_role_where_a_colour_belongs)
{
    EXPECT_THAT(ErrorOf(R"(<circle cx="1" cy="1" r="1" fill="accent"/>)"), HasSubstr("fill"));
}

TEST_F(AHostileDocument, cannot_ask_for_endless_work)
{
    settings.size = 1024;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(
        ErrorOf(
            Times(3000, R"(<rect x="0" y="0" width="100" height="100"><radial-gradient cx="0" cy="0" r="1">
                                         <stop offset="0" color="#000000"/><stop offset="1" color="#FFFFFF80"/>
                                       </radial-gradient></rect>)")
                .substr(0, 900000)),
        AnyOf(HasSubstr("more work"), HasSubstr("8192"), HasSubstr("not well-formed")));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
}

TEST_F(AHostileDocument, cannot_cross_its_edges_endlessly)
{
    settings.size = 1024;
    std::string points;
    for (int i = 0; i < 128; ++i) {
        points += std::to_string(i * 37 % 101) + "," + std::to_string(i * 53 % 97) + " ";
    }
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(ErrorOf(Times(1000, "<polygon points=\"" + points + "\" fill=\"#FFFFFF20\"/>")),
                HasSubstr("more work"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
}

TEST_F(AHostileDocument, can_be_far_out_of_the_picture_without_harm)
{
    settings.size = 4096;
    root = R"(width="16" height="16" shape="round" preview-time="10:08:36")";
    Draw(R"(<circle cx="8192" cy="-8192" r="8192" fill="#FFFFFF" stroke="#FF0000" stroke-width="8192"/>
            <arc cx="-8192" cy="0" r="8192" start="0" sweep="360" stroke="#FFFFFF" stroke-width="8192" cap="round"/>
            <polygon points="-8192,-8192 8192,8192 8192,-8192 -8192,8192" fill="#FFFFFF20"/>)");
    EXPECT_EQ(Width(), 4096);
}

TEST_F(AHostileDocument, draws_huge_glyphs_as_outlines)
{
    settings.size = 2048;
    root = R"(width="16" height="16" shape="square" preview-time="10:08:36")";
    const auto begin = std::chrono::steady_clock::now();
    Draw(R"(<text text-key="t" x="8" y="8" size="512" color="#FFFFFF" valign="middle"/>)");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
}

TEST_F(AHostileDocument, cannot_bring_endless_texts)
{
    strings =
        "<strings language=\"en\"><string key=\"t\">" + std::string(100000, 'W') + "</string></strings>";
    EXPECT_THAT(ErrorOf(""), HasSubstr("longer than 512 bytes"));
}

TEST_F(AHostileDocument, can_be_degenerate)
{
    Draw(
        R"(<rect x="0" y="0" width="0" height="0" radius="5" fill="#FFFFFF" stroke="#FFFFFF" stroke-width="0"/>
            <circle cx="5" cy="5" r="0" fill="#FFFFFF"/><polygon points="1,1 1,1 1,1" fill="#FFFFFF"/>
            <arc cx="5" cy="5" r="0" start="0" sweep="0" stroke="#FFFFFF"/>
            <circle cx="50" cy="50" r="10"><radial-gradient cx="50" cy="50" r="0"><stop offset="0" color="#000000"/>
              <stop offset="0" color="#FF0000"/></radial-gradient></circle>
            <hand kind="hour" cx="5" cy="5" shadow="#FFFFFF" shadow-blur="32"><bar length="0" width="0" fill="#FFFFFF"/></hand>
            <ticks cx="5" cy="5" r="0" count="1" shape="dot" width="0" color="#FFFFFF"/>
            <image src="none.png" x="0" y="0" width="0" height="10"/>
            <complication name="a" group="g" source="battery" role="gauge" x="0" y="0" width="0" height="0" color="#FFFFFF" size="4"/>)");
    EXPECT_NE(At(50, 50), kWhite);
}

TEST_F(AHostileDocument, cannot_fill_a_shape_twice)
{
    const std::string gradient =
        R"(<linear-gradient x1="0" y1="0" x2="1" y2="0"><stop offset="0" color="#000000"/><stop offset="1" color="#FFFFFF"/></linear-gradient>)";
    EXPECT_THAT(ErrorOf(R"(<circle cx="1" cy="1" r="1">)" + gradient + gradient + "</circle>"),
                HasSubstr("<circle>: it may hold at most 1 in all"));
    EXPECT_THAT(ErrorOf(R"(<line x1="1" y1="1" x2="1" y2="2" stroke="#FFFFFF">)" + gradient + "</line>"),
                HasSubstr("<linear-gradient>: no such element can stand here"));
}

TEST_F(AHostileDocument, cannot_let_offsets_fall)
{
    EXPECT_THAT(
        ErrorOf(
            R"(<circle cx="1" cy="1" r="1"><radial-gradient cx="1" cy="1" r="1"><stop offset="1" color="#000000"/>
                           <stop offset="0" color="#FFFFFF"/></radial-gradient></circle>)"),
        HasSubstr("must not fall"));
}
