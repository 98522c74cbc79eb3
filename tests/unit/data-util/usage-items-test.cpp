// What usage records tell.

#include "usage-items.h"

#include "a-face-document.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class AUsageRecord : public AFullFaceDocument {
protected:
    std::string Combination() const
    {
        return DataUtil::CombinationText(*DataUtil::ParseFace(mText).document);
    }
    DataUtil::UsageItems Items() const
    {
        return DataUtil::UsageItemsOf(*DataUtil::ParseFace(mText).document);
    }
};

TEST_F(AUsageRecord, tells_groups_photos_and_slots_in_document_order)
{
    EXPECT_EQ(Combination(),
              "dial=bars tone=blue seconds=on backdrop=own portrait=default place=worldclock info=weather "
              "ring=battery");
}

TEST_F(AUsageRecord, tells_nothing_of_what_is_hidden)
{
    Select("<selection preset=\"calm\"/>");
    EXPECT_EQ(Combination(), "dial=dots tone=red backdrop=default place=worldclock info=empty");
}

TEST_F(AUsageRecord, is_empty_where_nothing_is_offered)
{
    mText =
        "<face-result format=\"1\" id=\"a\" version=\"1\" width=\"16\" height=\"16\" shape=\"round\" "
        "default-language=\"en\" preview-time=\"10:08:36\" title-key=\"t\"><strings language=\"en\">"
        "<string key=\"t\">T</string></strings><scene/></face-result>";
    EXPECT_EQ(Combination(), "");
    EXPECT_THAT(Items().picks, IsEmpty());
    EXPECT_EQ(Items().complicationFeature, "");
    EXPECT_THAT(Items().complications, IsEmpty());
}

TEST_F(AUsageRecord, pairs_features_with_picks_in_document_order)
{
    EXPECT_THAT(Items().picks, ElementsAre(Pair("DIAL", "bars"), Pair("SEC9", "on")));
}

TEST_F(AUsageRecord, keeps_the_pick_of_a_hidden_group)
{
    Select("<selection><pick group=\"dial\" option=\"dots\"/></selection>");
    EXPECT_THAT(Items().picks, ElementsAre(Pair("DIAL", "dots"), Pair("SEC9", "on")));
}

TEST_F(AUsageRecord, lists_the_sources_that_are_shown)
{
    EXPECT_EQ(Items().complicationFeature, "CU01");
    EXPECT_THAT(Items().complications, ElementsAre("worldclock", "weather", "battery"));
    Select("<selection preset=\"calm\"><place slot=\"ring\" source=\"battery\"/></selection>");
    EXPECT_THAT(Items().complications, ElementsAre("worldclock"));
}

TEST_F(AUsageRecord, is_of_two_groups_at_most)
{
    Replace("<palette id=\"tone\"", "<palette usage=\"TONE\" id=\"tone\"");
    ExpectOnly("E-LIMIT-COUNT", "usage=\"SEC9\"", "usage");
}

TEST_F(AUsageRecord, has_a_feature_of_1_to_16_letters_and_digits)
{
    Replace("usage=\"DIAL\"", "usage=\"Abcdefgh12345678\"");
    EXPECT_THAT(Codes(), IsEmpty());
    Replace("usage=\"Abcdefgh12345678\"", "usage=\"Abcdefgh123456789\"");
    ExpectOnly("E-VALUE", "usage=\"Abc");
    Replace("usage=\"Abcdefgh123456789\"", "usage=\"A-B\"");
    ExpectOnly("E-VALUE", "usage=\"A-B");
}
