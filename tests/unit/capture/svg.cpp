// The same drawing as SVG.

#include <pugixml.hpp>

#include "a-drawing.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class AnSvg : public ADrawing {
protected:
    // Exports, and expects a well-formed document.
    void Export(const std::string& body)
    {
        Drawing::Renderer renderer;
        exported = renderer.ExportSvg(Document(body), settings);
        ASSERT_THAT(exported.svg, Not(IsEmpty())) << Drawing::Describe("document", exported.error);
        ASSERT_TRUE(svg.load_string(exported.svg.c_str()));
    }
    // How many elements of this name there are, at any depth.
    size_t Count(const char* name) const
    {
        return svg.select_nodes(("//*[local-name()='" + std::string(name) + "']").c_str()).size();
    }
    std::string Root(const char* attribute) const
    {
        return svg.document_element().attribute(attribute).value();
    }

    Drawing::SvgResult exported;
    pugi::xml_document svg;
};

TEST_F(AnSvg, has_the_size_of_the_picture)
{
    root = R"(width="100" height="60" shape="square" preview-time="10:08:36")";
    Export("");
    EXPECT_EQ(Root("width"), "100px");
    EXPECT_EQ(Root("height"), "60px");
    EXPECT_EQ(Root("viewBox"), "0 0 100 60");
    settings.size = 50;
    Export("");
    EXPECT_EQ(Root("width"), "50px");
}

TEST_F(AnSvg, is_clipped_to_a_round_canvas)
{
    Export(R"(<rect x="0" y="0" width="100" height="100" fill="#FFFFFF"/>)");
    EXPECT_EQ(Count("clipPath"), 0u);
    root = R"(width="100" height="100" shape="round" preview-time="10:08:36")";
    Export(R"(<rect x="0" y="0" width="100" height="100" fill="#FFFFFF"/>)");
    EXPECT_GE(Count("clipPath"), 1u);
}

TEST_F(AnSvg, keeps_shapes_gradients_texts_and_layers_as_shapes)
{
    root = R"(width="100" height="100" shape="round" preview-time="10:08:36")";
    Export(
        R"(<circle cx="50" cy="50" r="30"><radial-gradient cx="50" cy="50" r="30"><stop offset="0" color="#000000"/>
             <stop offset="1" color="#FF000080"/></radial-gradient></circle>
           <layer opacity="0.5"><rect x="0" y="0" width="60" height="60" fill="#FFFFFF"/></layer>
           <text text="Wed" x="50" y="50" size="20" color="#FFFFFF"/>
           <complication name="a" group="g" source="heartrate" role="gauge" x="0" y="0" width="50" height="50"
             color="#FFFFFF" icon-color="#FFFFFF80"/>)");
    EXPECT_EQ(Count("radialGradient"), 1u);
    EXPECT_EQ(Count("image"), 0u);
    EXPECT_GT(Count("path"), 5u);
    EXPECT_EQ(Count("text"), 0u);  // outlines, so that it needs no fonts
}

TEST_F(AnSvg, holds_a_shadow_as_one_picture)
{
    Export(
        R"(<hand kind="hour" cx="50" cy="50" shadow="#000000" shadow-blur="4"><bar length="40" width="4" fill="#FFFFFF"/>
           <circle cx="0" cy="0" r="5" fill="#FFFFFF"/></hand>)");
    EXPECT_EQ(Count("image"), 1u);
    EXPECT_EQ(Count("mask"), 0u);
}

TEST_F(AnSvg, of_a_broken_document_is_an_error_with_its_place)
{
    Drawing::Renderer renderer;
    exported = renderer.ExportSvg(Document("<circel/>"), settings);
    EXPECT_THAT(exported.svg, IsEmpty());
    EXPECT_THAT(Drawing::Describe("f", exported.error), HasSubstr("f:3:1: <circel>: no such element"));
}

TEST_F(AnSvg, is_warned_of_as_the_picture_is)
{
    Export(R"(<image src="gone.png" x="0" y="0" width="9" height="9"/>)");
    ASSERT_THAT(exported.warnings, SizeIs(1));
    EXPECT_THAT(exported.warnings[0].text, HasSubstr("\"gone.png\" is missing"));
}

TEST_F(AnSvg, costs_no_more_than_a_picture)
{
    std::string many;
    for (int i = 0; i < 5000; ++i) many += R"(<rect x="0" y="0" width="100" height="100" fill="#FFFFFF"/>)";
    settings.size = 1024;
    Drawing::Renderer renderer;
    EXPECT_THAT(renderer.ExportSvg(Document(many), settings).error.text, HasSubstr("more work"));
}
