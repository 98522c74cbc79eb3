// Which fonts texts are drawn with, and in which direction.

#include "font-set.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "a-drawing.h"

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

std::vector<std::string> FamiliesIn(Drawing::FontSource source)
{
    PangoFontFamily** families = nullptr;
    int count = 0;
    pango_context_list_families(Drawing::FontContext(source), &families, &count);
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) names.emplace_back(pango_font_family_get_name(families[i]));
    g_free(families);
    return names;
}

std::vector<std::string> Named(const std::string& font, const std::string& language)
{
    std::vector<std::string> names;
    std::istringstream list(Drawing::FamiliesOf(font, language));
    for (std::string name; std::getline(list, name, ',');) names.push_back(name);
    names.pop_back();  // the generic family
    return names;
}

}  // namespace

TEST(AFontSet, has_every_family_that_texts_ask_for)
{
    const std::vector<std::string> installed = FamiliesIn(Drawing::FontSource::kOwn);
    for (const char* font : {"sans", "serif", "mono"}) {
        for (const std::string& family : Named(font, "en")) EXPECT_THAT(installed, Contains(family)) << font;
    }
}

TEST(AFontSet, has_nothing_else_whatever_is_installed)
{
    std::vector<std::string> all;
    for (const char* font : {"sans", "serif", "mono"}) {
        for (std::string& family : Named(font, "en")) all.push_back(std::move(family));
    }
    for (const char* alias : {"Sans", "Serif", "Monospace", "System-ui"}) all.emplace_back(alias);
    for (const std::string& family : FamiliesIn(Drawing::FontSource::kOwn))
        EXPECT_THAT(all, Contains(family));
}

TEST(AFontSet, begins_with_the_languages_own_forms)
{
    const auto place = [](const std::string& language, const std::string& family) {
        const auto names = Named("sans", language);
        return std::find(names.begin(), names.end(), family) - names.begin();
    };
    for (const char* language : {"ja", "ja_JP", "ja-jp"})
        EXPECT_LT(place(language, "VL PGothic"), place(language, "NanumBarunGothic"));
    for (const char* language : {"ko", "ko_KR", "en_GB"})
        EXPECT_LT(place(language, "NanumBarunGothic"), place(language, "VL PGothic"));
}

class AFont : public ADrawing {
protected:
    AFont() { root = R"(width="200" height="60" shape="square" preview-time="14:05:09")"; }

    void Show(const std::string& text, const std::string& more = "")
    {
        strings = R"(<strings language="en"><string key="t">)" + text + "</string></strings>";
        Draw(R"(<text text-key="t" x="100" y="40" size="30" color="#FFFFFF" )" + more + "/>");
    }
};

TEST_F(AFont, shows_every_language_of_the_shipped_faces)
{
    for (const char* text :
         {"Größe", "오토매틱", "自動巻き", "أوتوماتيك", "Αθήνα", "Київ", "תל אביב", "मुंबई", "กรุงเทพ"}) {
        Show(text);
        EXPECT_THAT(result.warnings, IsEmpty()) << text;
        EXPECT_FALSE(InkOf().IsEmpty()) << text;
    }
}

TEST_F(AFont, of_the_system_shows_what_the_set_lacks)
{
    EXPECT_THAT(Drawing::FamiliesOf("sans", "bn"), Not(HasSubstr("Bengali")));
    Show("ঢাকা");
    EXPECT_THAT(result.warnings, IsEmpty());
}

TEST_F(AFont, has_the_weight_that_is_asked_for)
{
    const auto inked = [this] {
        long sum = 0;
        for (int y = 0; y < Height(); ++y)
            for (int x = 0; x < Width(); ++x) sum += At(x, y).red;
        return sum;
    };
    for (const auto& [language, text] : {
             std::pair{"en_GB", "Hour"    },
             {"ko_KR", "시간"  },
             {"ja_JP", "時計"  },
             {"ar_EG", "ساعة"}
    }) {
        settings.language = language;
        long before = 0;
        for (const char* weight : {"300", "700"}) {
            Draw(R"(<text x="100" y="40" size="30" color="#FFFFFF" text=")" + std::string(text) +
                 "\" weight=\"" + weight + "\"/>");
            EXPECT_GT(inked(), before * 11 / 10) << text << " " << weight;
            before = inked();
        }
    }
}

TEST_F(AFont, gives_chinese_characters_the_form_of_the_language)
{
    settings.language = "ja_JP";
    strings = R"(<strings language="en"><string key="t">x</string></strings>
                 <strings language="ja"><string key="t">直</string></strings>
                 <strings language="ko"><string key="t">直</string></strings>)";
    const std::string body = R"(<text text-key="t" x="100" y="40" size="30" color="#FFFFFF"/>)";
    Draw(body);
    const std::string japanese = Pixels();
    settings.language = "ko_KR";
    Draw(body);
    EXPECT_NE(Pixels(), japanese);
}

TEST_F(AFont, joins_arabic_letters_and_sets_them_from_right_to_left)
{
    // An alif, which is a stroke, before a long word: it stands at the right end.
    Show("ا سسسس");
    const Ink ink = InkOf();
    int tall = 0;  // columns of the stroke, which is higher than the other letters
    for (int x = ink.left; x <= ink.right; ++x) tall = At(x, ink.top + 1).red > 100 ? x : tall;
    EXPECT_GT(tall, ink.right - 6);
}

TEST_F(AFont, sets_a_text_without_letters_in_the_direction_of_the_language)
{
    const auto heavySide = [this](const char* language) {
        settings.language = language;
        strings = "<strings language=\"en\"><string key=\"t\">1 ■</string></strings><strings language=\"" +
                  std::string(language).substr(0, 2) + R"("><string key="t">1 ■</string></strings>)";
        if (std::string_view(language).starts_with("en"))
            strings = R"(<strings language="en"><string key="t">1 ■</string></strings>)";
        Draw(R"(<text text-key="t" x="100" y="40" size="30" color="#FFFFFF"/>)");
        const Ink ink = InkOf();
        const int y = 40 - 8;
        return At(ink.left + 6, y).red > 200 && At(ink.left + 2, y).red > 200 ? "left" : "right";
    };
    EXPECT_STREQ(heavySide("en_GB"), "right");
    EXPECT_STREQ(heavySide("ar_EG"), "left");
    EXPECT_STREQ(heavySide("he_IL"), "left");
}
