// Texts: which one, where, and how dates and times read.

#include "a-drawing.h"

using testing::HasSubstr;
using testing::IsEmpty;

class AText : public ADrawing {
protected:
    AText() { root = R"(width="200" height="40" shape="square" preview-time="14:05:09")"; }

    // The pixels of a line of text.
    std::string Line(const std::string& attributes)
    {
        Draw("<text x=\"100\" y=\"28\" size=\"20\" color=\"#FFFFFF\" " + attributes + "/>");
        return Pixels();
    }
    void SetTexts(const std::string& more)
    {
        strings =
            R"(<strings language="en"><string key="t">Title</string><string key="only">Only</string></strings>)" +
            more;
    }
};

TEST_F(AText, is_in_the_language_of_the_watch)
{
    SetTexts(R"(<strings language="de"><string key="t">Titel</string></strings>)");
    settings.language = "de_DE";
    const std::string german = Line(R"(text-key="t")");
    settings.language = "fr_FR";
    EXPECT_NE(Line(R"(text-key="t")"), german);
}

TEST_F(AText, falls_back_to_the_default_language_key_by_key)
{
    SetTexts(R"(<strings language="de"><string key="t">Titel</string></strings>)");
    settings.language = "de_DE";
    EXPECT_FALSE((Line(R"(text-key="only")"), InkOf().IsEmpty()));
}

TEST_F(AText, prefers_the_whole_language_tag_whatever_its_case)
{
    SetTexts(R"(<strings language="pt"><string key="t">iiiii</string></strings>
                <strings language="pt-BR"><string key="t">WWWWW</string></strings>)");
    settings.language = "pt_BR";
    Line(R"(text-key="t")");
    const int brazilian = InkOf().Width();
    settings.language = "pt_PT";
    Line(R"(text-key="t")");
    EXPECT_GT(brazilian, 2 * InkOf().Width());
}

TEST_F(AText, without_a_text_is_an_error_with_its_key)
{
    EXPECT_THAT(ErrorOf(R"(<text text-key="nowhere" x="1" y="1" size="20" color="#FFFFFF"/>)"),
                HasSubstr("\"nowhere\""));
}

TEST_F(AText, is_a_key_or_a_skeleton_or_a_literal)
{
    EXPECT_THAT(ErrorOf(R"(<text text-key="t" skeleton="d" x="1" y="1" size="20" color="#FFFFFF"/>)"),
                HasSubstr("exactly one"));
    EXPECT_THAT(ErrorOf(R"(<text text-key="t" text="T" x="1" y="1" size="20" color="#FFFFFF"/>)"),
                HasSubstr("exactly one"));
    EXPECT_THAT(ErrorOf(R"(<text x="1" y="1" size="20" color="#FFFFFF"/>)"), HasSubstr("exactly one"));
}

TEST_F(AText, stands_on_the_side_of_its_anchor_that_align_says)
{
    Line(R"(text-key="t" align="left")");
    EXPECT_GE(InkOf().left, 99);
    Line(R"(text-key="t" align="right")");
    EXPECT_LE(InkOf().right, 100);
    Line(R"(text-key="t" align="center")");
    EXPECT_NEAR(InkOf().CenterX(), 100, 2);
}

TEST_F(AText, keeps_its_anchor_in_a_right_to_left_language)
{
    SetTexts("<strings language=\"ar\"><string key=\"t\">عقارب الساعة</string></strings>");
    settings.language = "ar_EG";
    Line(R"(text-key="t" align="left")");
    EXPECT_GE(InkOf().left, 99);
    EXPECT_GT(InkOf().right, 130);
    Line(R"(text-key="t" align="right")");
    EXPECT_LE(InkOf().right, 100);
}

TEST_F(AText, centres_digits_on_the_middle)
{
    strings = R"(<strings language="en"><string key="t">0</string></strings>)";
    Draw(R"(<text text-key="t" x="100" y="20" valign="middle" size="30" color="#FFFFFF"/>)");
    EXPECT_NEAR(InkOf().CenterY(), 20, 0.6);
    Draw(R"(<text text-key="t" x="100" y="30" size="30" color="#FFFFFF"/>)");
    EXPECT_NEAR(InkOf().bottom + 1, 30, 1.1);  // on the baseline
}

TEST_F(AText, is_scaled_down_evenly_when_it_is_too_wide)
{
    Line(R"(text-key="t")");
    const Ink wide = InkOf();
    Line(R"(text-key="t" max-width="20")");
    EXPECT_LE(InkOf().Width(), 21);
    EXPECT_NEAR(InkOf().CenterX(), 100, 1.5);
    EXPECT_LT(InkOf().Height(), wide.Height() * 2 / 3);
    Line(R"(text-key="t" max-width="150")");
    EXPECT_EQ(InkOf().Width(), wide.Width());
}

TEST_F(AText, shows_the_end_of_a_line_whose_begin_is_far_out_of_the_picture)
{
    settings.size = 400;
    root = R"(width="40" height="40" shape="square" preview-time="14:05:09")";
    Draw(
        R"(<text text="WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWI" x="38" y="38" align="right" size="40" color="#FFFFFF"/>)");
    EXPECT_GT(InkOf().right, 300);
    EXPECT_LT(InkOf().top, 120);
}

TEST_F(AText, takes_its_spacing_between_letters)
{
    Line(R"(text-key="t")");
    const int close = InkOf().Width();
    Line(R"(text-key="t" spacing="5")");
    EXPECT_NEAR(InkOf().Width(), close + 4 * 5, 2);
}

TEST_F(AText, never_tears_joined_letters_apart)
{
    SetTexts("<strings language=\"ar\"><string key=\"t\">عقارب</string></strings>");
    settings.language = "ar_EG";
    const std::string joined = Line(R"(text-key="t")");
    EXPECT_EQ(Line(R"(text-key="t" spacing="5")"), joined);
}

TEST_F(AText, can_be_upper_case_by_the_rules_of_its_language)
{
    SetTexts(R"(<strings language="tr"><string key="t">i</string><string key="u">İ</string></strings>
                <strings language="de"><string key="t">Größe</string><string key="u">GRÖSSE</string></strings>)");
    for (const char* language : {"tr_TR", "de_DE"}) {
        settings.language = language;
        const std::string upper = Line(R"(text-key="u")");
        EXPECT_EQ(Line(R"(text-key="t" case="upper")"), upper) << language;
    }
}

TEST_F(AText, warns_of_a_glyph_that_no_font_has)
{
    strings = "<strings language=\"en\"><string key=\"t\">A\xF4\x8F\xBF\xBD</string></strings>";
    Line(R"(text-key="t")");
    ASSERT_EQ(result.warnings.size(), 1u);
    EXPECT_THAT(Drawing::Describe("f", result.warnings[0]), HasSubstr("f:3:1: <text>: no font has U+10FFFD"));
}

TEST_F(AText, says_nothing_when_all_glyphs_are_there)
{
    Line(R"(text-key="t")");
    EXPECT_THAT(result.warnings, IsEmpty());
}

// A date or time reads as the text that is expected of it.
class ADate : public AText {
protected:
    void ExpectReads(const std::string& skeleton, const std::string& text)
    {
        strings = R"(<strings language="en"><string key="t">)" + text + "</string></strings>";
        const std::string expected = Line(R"(text-key="t")");
        EXPECT_EQ(Line("skeleton=\"" + skeleton + "\""), expected)
            << skeleton << " in " << settings.language << " is not " << text;
    }
};

TEST_F(ADate, follows_the_hour_mode_of_the_watch_and_not_the_language)
{
    settings.language = "en_GB";
    ExpectReads("jmm", "14:05");
    ExpectReads("Jmm", "14:05");
    settings.hours24 = false;
    ExpectReads("Jmm", "2:05");
    ExpectReads("jmm", "2:05\xC2\xA0pm");
    settings.language = "en_US";
    settings.hours24 = true;
    ExpectReads("jmm", "14:05");
}

TEST_F(ADate, takes_the_best_pattern_of_the_language)
{
    ExpectReads("EEEdMMM", "Wed, 14 Oct");
    settings.language = "en_US";
    ExpectReads("EEEdMMM", "Wed, Oct 14");
    settings.language = "de_DE";
    ExpectReads("EEEdMMM", "Mi., 14. Okt.");
}

TEST_F(ADate, reads_as_in_a_language_that_nobody_knows_where_the_name_is_none)
{
    settings.language = "xx";
    const std::string unknown = Line(R"(skeleton="EEEdMMM")");
    settings.language = "longer-than-any-language";
    EXPECT_EQ(Line(R"(skeleton="EEEdMMM")"), unknown);
    settings.language = "longerthananylanguage";
    EXPECT_EQ(Line(R"(skeleton="EEEdMMM")"), unknown);
}

TEST_F(ADate, has_as_many_digits_as_a_lone_number_has_letters)
{
    ExpectReads("mm", "05");
    ExpectReads("m", "5");
    ExpectReads("ss", "09");
    ExpectReads("JJ", "14");
    settings.hours24 = false;
    ExpectReads("JJ", "02");
    ExpectReads("J", "2");
}

TEST_F(ADate, has_no_word_beside_a_lone_number)
{
    for (const char* language : {"ko_KR", "ja_JP", "de_DE"}) {
        settings.language = language;
        ExpectReads("d", "14");
        ExpectReads("JJ", "14");
    }
}

TEST_F(ADate, is_the_same_in_every_time_zone)
{
    for (const char* zone :
         {"UTC", "/usr/share/zoneinfo/Pacific/Kiritimati", "America/St_Johns", "nonsense", ""}) {
        settings.timezone = zone;
        ExpectReads("dMMMHHmm", "14 Oct, 14:05");
    }
}
