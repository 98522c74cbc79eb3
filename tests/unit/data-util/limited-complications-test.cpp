// Which complications are limited, and what stands in for them.

#include "limited-complications.h"

#include "a-face-document.h"

using testing::HasSubstr;
using testing::Not;

class ALimit : public AFullFaceDocument {
protected:
    ALimit() { Select("<selection/>"); }

    bool Has(const char* sources = nullptr) const
    {
        return DataUtil::HasLimited(*DataUtil::ParseFace(mText).document, DataUtil::LimitRule(sources));
    }

    // The source of each slot after the removal.
    std::string SourceOf(const char* slot, const char* sources = nullptr) const
    {
        auto parsed = DataUtil::ParseFace(mText);
        DataUtil::RemoveLimited(*parsed.document, DataUtil::LimitRule(sources));
        EXPECT_FALSE(DataUtil::HasLimited(*parsed.document, DataUtil::LimitRule(sources)));
        return DataUtil::Resolve(*parsed.document).sources.at(slot).source;
    }
};

TEST_F(ALimit, is_met_by_a_source_that_always_needs_the_phone)
{
    for (const char* source : {"weather", "calendar", "notification"}) {
        const std::string before = mText;
        Replace("<offer source=\"weather\"/>", "<offer source=\"" + std::string(source) + "\"/>");
        Replace("<fallback source=\"weather\"/>", "<fallback source=\"" + std::string(source) + "\"/>");
        EXPECT_TRUE(Has()) << source;
        mText = before;
    }
}

TEST_F(ALimit, is_met_by_a_source_that_needs_the_phone_as_it_is_offered)
{
    Select("<selection><place slot=\"info\" source=\"heartrate\"/></selection>");
    EXPECT_TRUE(Has());
    Replace(" needs=\"phone\"", "");
    EXPECT_FALSE(Has());
}

TEST_F(ALimit, is_not_met_by_other_sources)
{
    for (const char* source : {"date", "worldclock", "empty"}) {
        Select("<selection><place slot=\"info\" source=\"" + std::string(source) + "\"/></selection>");
        EXPECT_FALSE(Has()) << source;
    }
}

TEST_F(ALimit, is_not_met_by_a_slot_that_is_hidden)
{
    Replace("<slot name=\"info\"", "<slot when=\"dial=dots\" name=\"info\"");
    EXPECT_FALSE(Has());
}

TEST_F(ALimit, is_what_a_list_says_when_there_is_one)
{
    EXPECT_FALSE(Has(""));
    EXPECT_FALSE(Has("date alarm"));
    EXPECT_TRUE(Has("date  worldclock "));
    EXPECT_TRUE(Has("weather"));
    EXPECT_FALSE(Has("weath"));
}

TEST_F(ALimit, puts_the_first_fallback_that_is_not_limited_in_the_place)
{
    EXPECT_EQ(SourceOf("info"), "date");
    EXPECT_EQ(SourceOf("info", "weather"), "heartrate");
    EXPECT_EQ(SourceOf("info", "weather date heartrate"), "empty");
}

TEST_F(ALimit, replaces_what_the_user_placed_too)
{
    Select("<selection><place slot=\"info\" source=\"worldclock\"/></selection>");
    EXPECT_EQ(SourceOf("info", "worldclock"), "weather");
}

TEST_F(ALimit, leaves_the_other_slots_as_they_are)
{
    Select("<selection><place slot=\"place\" source=\"worldclock\" city=\"Lima\"/></selection>");
    auto parsed = DataUtil::ParseFace(mText);
    DataUtil::RemoveLimited(*parsed.document, DataUtil::LimitRule(nullptr));
    EXPECT_EQ(DataUtil::Resolve(*parsed.document).sources.at("place").worldClock->city, "Lima");
}

TEST_F(ALimit, never_takes_the_empty_source_away)
{
    Select("<selection><place slot=\"info\" source=\"empty\"/></selection>");
    EXPECT_FALSE(Has("empty"));
    EXPECT_EQ(SourceOf("info", "empty"), "empty");
}

TEST_F(ALimit, holds_for_a_slot_that_the_removal_itself_brings_to_light)
{
    Replace("when=\"info!=empty\"", "when=\"info=date\"");
    Replace("<offer source=\"battery\"/>\n      <fallback source=\"empty\"/>",
            "<offer source=\"battery\" needs=\"phone\"/>\n      <fallback source=\"battery\"/>\n"
            "      <fallback source=\"empty\"/>");
    EXPECT_EQ(SourceOf("info"), "date");
    EXPECT_EQ(SourceOf("ring"), "empty");
}

TEST_F(ALimit, takes_what_depends_on_the_source_with_it)
{
    auto parsed = DataUtil::ParseFace(mText);
    DataUtil::RemoveLimited(*parsed.document, DataUtil::LimitRule("weather heartrate date"));
    EXPECT_THAT(DataUtil::Flatten(*parsed.document), Not(HasSubstr("name=\"ring\"")));
}
