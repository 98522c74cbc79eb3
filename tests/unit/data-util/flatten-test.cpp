// The flat document.

#include <clocale>

#include "a-face-document.h"
#include "xml-text.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using AFlatDocument = AFaceDocument;

TEST_F(AFlatDocument, has_the_root_watchface)
{
    EXPECT_THAT(Flat(),
                StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<watchface format=\"1\" "
                           "id=\"com.example.watchface-dawn\" version=\"3\" width=\"360\" height=\"360\" "
                           "shape=\"round\" default-language=\"en\" preview-time=\"10:08:36\" "
                           "title-key=\"title\">\n"));
    EXPECT_THAT(Flat(), EndsWith("</watchface>\n"));
}

TEST_F(AFlatDocument, has_no_option_left)
{
    for (const char* name : {"when=", "<option", "<style", "<palette", "<switch", "<slot", "<offer",
                             "<fallback", "<selection", "<pick", "<place", "<scene", "label-key"}) {
        EXPECT_THAT(Flat(), Not(HasSubstr(name)));
    }
}

TEST_F(AFlatDocument, keeps_all_texts_of_all_languages)
{
    EXPECT_THAT(Flat(), HasSubstr("  <strings language=\"en\">\n    <string key=\"title\">Dawn</string>\n"));
    EXPECT_THAT(Flat(),
                HasSubstr("  <strings language=\"de\">\n    <string key=\"title\">Morgen</string>\n"));
    EXPECT_THAT(Flat(), HasSubstr("<string key=\"tone.blue\">Blau</string>"));
}

TEST_F(AFlatDocument, keeps_skeletons_and_keys_for_drawing_to_resolve)
{
    EXPECT_THAT(Flat(), HasSubstr("<text skeleton=\"Jmm\" "));
    EXPECT_THAT(Flat(), HasSubstr("<text text-key=\"title\" "));
}

TEST_F(AFlatDocument, has_the_same_bytes_for_the_same_text)
{
    EXPECT_EQ(Flat(), Flat());
}

TEST_F(AFlatDocument, does_not_depend_on_how_values_and_attributes_are_written)
{
    const std::string before = Flat();
    Replace("<text text-key=\"title\" x=\"180\" y=\"100\" size=\"20\" color=\"#FFFFFF\"/>",
            "<text\r\n color='#ffffffff' weight='400'\tsize='020.0' y='100' x='180.000' "
            "text-key='title'></text>");
    EXPECT_EQ(Flat(), before);
}

TEST_F(AFlatDocument, does_not_depend_on_the_locale)
{
    Replace("y=\"140\"", "y=\"140.5\"");
    const std::string before = Flat();
    // Any of these writes a comma as decimal point; without them the test still proves the plain case.
    for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8"}) {
        if (std::setlocale(LC_ALL, locale) != nullptr) break;
    }
    EXPECT_EQ(Flat(), before);
    std::setlocale(LC_ALL, "C");
    EXPECT_THAT(before, HasSubstr("y=\"140.5\""));
}

TEST_F(AFlatDocument, leaves_out_what_has_its_default)
{
    Replace("<text skeleton=\"Jmm\"", "<text align=\"center\" skeleton=\"Jmm\"");
    EXPECT_THAT(Flat(), Not(HasSubstr("align")));
}

TEST_F(AFlatDocument, keeps_the_order_of_drawing)
{
    const std::string flat = Flat();
    EXPECT_LT(flat.find("<circle"), flat.find("<ticks"));
    EXPECT_LT(flat.find("<ticks"), flat.find("<text"));
    EXPECT_LT(flat.find("<complication"), flat.find("<hand"));
}

TEST_F(AFlatDocument, dissolves_a_layer_that_is_opaque)
{
    EXPECT_THAT(Flat(), Not(HasSubstr("<layer")));
}

TEST_F(AFlatDocument, keeps_a_layer_with_an_opacity)
{
    Replace("<layer when=\"dial=bars\">", "<layer when=\"dial=bars\" opacity=\"0.50\">");
    EXPECT_THAT(Flat(), HasSubstr("  <layer opacity=\"0.5\">\n    <ticks "));
}

TEST_F(AFlatDocument, leaves_out_a_slot_whose_conditions_do_not_hold)
{
    Replace("<slot name=\"top\"", "<slot when=\"seconds=off\" name=\"top\"");
    EXPECT_THAT(Flat(), Not(HasSubstr("<complication")));
}

TEST_F(AFlatDocument, escapes_what_texts_hold)
{
    Replace(">Dawn<", ">a &lt;b&gt; &amp; \"c\" <![CDATA[<d>]]>&#13;<");
    EXPECT_THAT(Flat(), HasSubstr("<string key=\"title\">a &lt;b&gt; &amp; \"c\" &lt;d&gt;&#13;</string>"));
}

TEST_F(AFlatDocument, escapes_what_labels_hold)
{
    AddBefore("<text skeleton",
              "<numerals cx=\"1\" cy=\"1\" r=\"1\" labels=\"&lt; &amp; &quot;\" size=\"9\" color=\"main\"/>");
    EXPECT_THAT(Flat(), HasSubstr("labels=\"&lt; &amp; &quot;\""));
}

TEST(ATextInXml, comes_back_as_it_was_written)
{
    const std::string value = "a\n\t\r <b> & \"c\" 'd' ]]> &#10; \xEA\xB0\x81 ";
    std::string text =
        "<x a=\"" + DataUtil::Escaped(value, true) + "\">" + DataUtil::Escaped(value, false) + "</x>";
    DataUtil::Findings findings;
    const auto tree = DataUtil::XmlTree::Load(text, findings);
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->Root().attribute("a").value(), value);
    EXPECT_EQ(tree->Root().child_value(), value);
}
