// Faults that are put into drawings and into copies of a shipped face, and have to be found.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "face-looks.h"
#include "ink-checks.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

// A round drawing of 100 x 100, and what is wrong with it.
class ARoundDrawing : public testing::Test {
protected:
    std::string mShape = "round";
    std::string mTime = "10:08:36";

    std::vector<std::string> Faults(const std::string& body)
    {
        const std::string document =
            R"(<watchface format="1" id="com.example.face" version="1" default-language="en" title-key="t" width="100" height="100" shape=")" +
            mShape + "\" preview-time=\"" + mTime +
            R"("><strings language="en"><string key="t">T</string></strings>)" + body + "</watchface>";
        std::vector<Drawing::Ink> inks;
        const Drawing::Result result =
            mRenderer.Draw(document, {}, [&](const Drawing::Ink& ink) { inks.push_back(ink); });
        EXPECT_TRUE(result.picture) << Drawing::Describe("document", result.error);
        std::vector<std::string> faults;
        for (const Fault& fault : FaultsOf(inks, {100, 100, mShape == "round"}))
            faults.push_back(fault.element.text + ": " + fault.what);
        return faults;
    }
    static std::string Text(const std::string& text, int x, int y, const std::string& more = R"(size="10")")
    {
        return "<text text=\"" + text + "\" x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) +
               "\" valign=\"middle\" color=\"#FFFFFF\" " + more + "/>";
    }
    static std::string Slot(const std::string& role, const std::string& more)
    {
        return R"(<complication name="a" group="g" source="battery" color="#FFFFFF" role=")" + role + "\" " +
               more + "/>";
    }

private:
    Drawing::Renderer mRenderer;
};

}  // namespace

TEST_F(ARoundDrawing, may_hold_texts_that_fit)
{
    EXPECT_THAT(Faults(Text("Wed 14", 50, 40) + Text("10:08", 50, 52)), IsEmpty());
}

TEST_F(ARoundDrawing, has_a_fault_in_a_text_beyond_its_edge)
{
    EXPECT_THAT(Faults(Text("Wednesday", 50, 8)),
                ElementsAre(AllOf(HasSubstr("text: \"Wednesday\" is "), HasSubstr(" outside the screen"))));
    mShape = "square";
    EXPECT_THAT(Faults(Text("Wednesday", 50, 8)), IsEmpty());
    EXPECT_THAT(Faults(Text("Wednesday", 20, 8)), SizeIs(1));
}

TEST_F(ARoundDrawing, may_cut_a_part_of_digits_that_are_as_large_as_a_picture)
{
    EXPECT_THAT(Faults(Text("10", 50, 50, R"(size="85")")), IsEmpty());
    EXPECT_THAT(Faults(Text("10", 30, 50, R"(size="85")")), SizeIs(1));
}

TEST_F(ARoundDrawing, has_a_fault_in_a_text_that_is_scaled_down_too_far)
{
    EXPECT_THAT(Faults(Text("Wednesday", 50, 50, R"(size="10" max-width="40")")), IsEmpty());
    EXPECT_THAT(Faults(Text("Wednesday", 50, 50, R"(size="10" max-width="20")")),
                ElementsAre(HasSubstr("\"Wednesday\" is too long: it is drawn at")));
}

TEST_F(ARoundDrawing, has_a_fault_in_texts_that_touch)
{
    EXPECT_THAT(Faults(Text("10:08", 50, 50) + Text("82%", 50, 54)),
                ElementsAre(HasSubstr("\"82%\" touches \"10:08\" of the text of line 1")));
}

TEST_F(ARoundDrawing, may_lay_a_plate_between_texts)
{
    EXPECT_THAT(
        Faults(Text("10:08", 50, 50) + R"(<rect x="30" y="48" width="40" height="14" fill="#000000"/>)" +
               Text("82%", 50, 54)),
        IsEmpty());
}

TEST_F(ARoundDrawing, has_a_fault_in_a_text_on_ticks_or_on_an_arc_in_either_order)
{
    const std::string ticks =
        R"(<ticks cx="50" cy="50" r="45" count="12" length="10" width="2" color="#FFFFFF"/>)";
    const std::string arc = Slot("arc", R"(x="10" y="10" width="80" height="80" stroke-width="6")");
    for (const std::string& line : {ticks, arc}) {
        EXPECT_THAT(Faults(line + Text("12", 50, 13)), Contains(HasSubstr("\"12\" touches the shape")));
        EXPECT_THAT(Faults(Text("12", 50, 13) + line), Contains(HasSubstr("the shape touches \"12\"")));
        EXPECT_THAT(Faults(line + Text("12", 50, 50)), IsEmpty());
    }
}

TEST_F(ARoundDrawing, may_have_turned_numerals_close_to_their_ticks)
{
    const auto numerals = [](int r) {
        return R"(<ticks cx="50" cy="50" r="48" count="24" length="5" width="1" color="#FFFFFF"/>)"
               R"(<numerals cx="50" cy="50" turn="radial" size="9" color="#FFFFFF" labels="- VIII -" r=")" +
               std::to_string(r) + "\"/>";
    };
    EXPECT_THAT(Faults(numerals(38)), IsEmpty());
    EXPECT_THAT(Faults(numerals(43)), Not(IsEmpty()));
}

TEST_F(ARoundDrawing, may_have_a_text_in_the_angle_beside_a_turned_one)
{
    const std::string turned =
        R"(<numerals cx="50" cy="50" r="30" turn="radial" size="9" color="#FFFFFF" labels="- VIII - - - - - -"/>)";
    EXPECT_THAT(Faults(turned + Text("1", 65, 35, R"(size="6")")), IsEmpty());
    EXPECT_THAT(Faults(Text("1", 65, 35, R"(size="6")") + turned), IsEmpty());
    EXPECT_THAT(Faults(turned + Text("1", 68, 31, R"(size="6")")), SizeIs(1));
}

TEST_F(ARoundDrawing, has_a_fault_in_a_complication_beyond_its_box)
{
    EXPECT_THAT(Faults(Slot("text", R"(x="20" y="40" width="60" height="20" size="18")")), IsEmpty());
    EXPECT_THAT(Faults(Slot("text", R"(x="20" y="45" width="60" height="10" size="18")")),
                ElementsAre(AllOf(HasSubstr("complication: \"82%\" is "), HasSubstr(" outside its box"))));
}

TEST_F(ARoundDrawing, has_a_fault_in_a_hand_that_reaches_beyond_its_edge)
{
    const auto hand = [](int length) {
        return R"(<hand kind="hour" cx="50" cy="50"><bar width="4" fill="#FFFFFF" length=")" +
               std::to_string(length) + "\"/></hand>";
    };
    EXPECT_THAT(Faults(hand(49)), IsEmpty());
    EXPECT_THAT(Faults(hand(53)), ElementsAre(HasSubstr("hand: the shape is 3.0 outside the screen")));
}

TEST_F(ARoundDrawing, has_a_fault_in_a_stroke_whose_outer_half_is_beyond_its_edge)
{
    EXPECT_THAT(Faults(R"(<circle cx="50" cy="50" r="48" stroke="#FFFFFF" stroke-width="3"/>)"), IsEmpty());
    EXPECT_THAT(
        Faults(R"(<arc cx="50" cy="50" r="48" start="0" sweep="90" stroke="#FFFFFF" stroke-width="6"/>)"),
        ElementsAre(HasSubstr("arc: the shape is 1.0 outside")));
}

TEST_F(ARoundDrawing, may_cut_a_background)
{
    EXPECT_THAT(Faults(R"(<circle cx="50" cy="50" r="52" fill="#123456"/>)"
                       R"(<rect x="0" y="60" width="100" height="40" fill="#123456"/>)"
                       R"(<line x1="0" y1="60" x2="100" y2="60" stroke="#FFFFFF"/>)"),
                IsEmpty());
    EXPECT_THAT(Faults(R"(<rect x="0" y="60" width="90" height="20" fill="#123456"/>)"), Not(IsEmpty()));
}

namespace {

// A copy of a shipped face in which texts can be replaced.
class ACopyOfAFace : public testing::Test {
protected:
    ACopyOfAFace()
    {
        fs::create_directories(mFolder.parent_path());
        fs::copy(fs::path(INSTALLED_FACES) / kName, mFolder, fs::copy_options::recursive);
        std::ifstream file(mFolder / kDocument, std::ios::binary);
        mText.assign(std::istreambuf_iterator<char>(file), {});
    }
    ~ACopyOfAFace() override { fs::remove_all(mFolder.parent_path()); }

    void Replace(const std::string& what, const std::string& with)
    {
        const std::size_t at = mText.find(what);
        ASSERT_NE(at, std::string::npos) << what;
        mText.replace(at, what.size(), with);
    }
    std::vector<std::string> Faults()
    {
        std::ofstream(mFolder / kDocument, std::ios::binary) << mText;
        return FaultsOfFace(mFolder);
    }

    static constexpr char kName[] = "com.corvane.watchface-mirel-c1";
    const std::string kDocument = std::string(kName) + "_result.xml";
    const fs::path mFolder =
        fs::path(testing::TempDir()) /
        (std::to_string(getpid()) + testing::UnitTest::GetInstance()->current_test_info()->name()) / kName;
    std::string mText;
};

}  // namespace

TEST_F(ACopyOfAFace, has_a_fault_where_one_language_has_too_long_a_text)
{
    Replace("AUTOMATIK", "AUTOMATISCHER AUFZUG MIT GANGRESERVE");
    EXPECT_THAT(Faults(), ElementsAre(AllOf(
                              HasSubstr(std::string(kName) + " with its defaults, de_DE, 12 hours\n"),
                              HasSubstr("  watchface.xml:"), HasSubstr(": text: \"AUTOMATISCHER"),
                              HasSubstr("is too long"), HasSubstr("\n  <text text-key=\"inscription\""))));
}

TEST_F(ACopyOfAFace, has_a_fault_that_only_two_options_together_show)
{
    Replace("<text text-key=\"inscription\"",
            "<text when=\"dial=roman hands=baton\" skeleton=\"EEEEdMMMMy\" x=\"180\" y=\"300\" size=\"40\" "
            "color=\"mark\"/>\n    <text text-key=\"inscription\"");
    EXPECT_THAT(Faults(),
                Contains(AllOf(HasSubstr("with dial=roman hands=baton "), HasSubstr(" outside the screen"),
                               HasSubstr("skeleton=\"EEEEdMMMMy\""))));
}

TEST_F(ACopyOfAFace, has_a_fault_that_only_one_source_shows)
{
    Replace("role=\"text\" x=\"278\" y=\"165\" width=\"42\"",
            "role=\"text\" x=\"290\" y=\"165\" width=\"18\"");
    EXPECT_THAT(Faults(), AllOf(Not(IsEmpty()),
                                Each(AllOf(HasSubstr("date=weather"), HasSubstr("\"21°\" is too long")))));
}

TEST_F(ACopyOfAFace, that_is_refused_is_a_fault)
{
    Replace("</scene>", "<scene>");
    EXPECT_THAT(Faults(), ElementsAre(EndsWith("its result XML is refused")));
}
