// The faces that this watch ships.

#include <set>

#include "a-face-document.h"
#include "asset-checks.h"
#include "faces.h"

using testing::HasSubstr;

class AShippedFace : public testing::TestWithParam<std::string> {
protected:
    AShippedFace() : mText(TextOf(GetParam())), mParsed(DataUtil::ParseFace(mText)) {}

    static DataUtil::Selection Picked(const std::string& group, const std::string& option)
    {
        DataUtil::Selection selection;
        selection.picks[group] = option;
        return selection;
    }
    static DataUtil::Selection Placed(const std::string& slot, const std::string& source)
    {
        DataUtil::Selection selection;
        selection.places[slot] = {source, {}};
        return selection;
    }

    // The face with this selection, which must be valid.
    std::string FlatWith(const DataUtil::Selection& selection)
    {
        const DataUtil::ParseResult parsed = DataUtil::ParseFace(DataUtil::WithSelection(mText, selection));
        for (const DataUtil::Finding& finding : parsed.findings)
            ADD_FAILURE() << DataUtil::FormatFinding(finding);
        return parsed.document ? DataUtil::Flatten(*parsed.document) : "";
    }

    std::string mText;
    DataUtil::ParseResult mParsed;
};

TEST_P(AShippedFace, has_no_finding)
{
    for (const DataUtil::Finding& finding : mParsed.findings)
        ADD_FAILURE() << DataUtil::FormatFinding(finding);
    ASSERT_TRUE(mParsed.document);
    EXPECT_THAT(GetParam(), testing::EndsWith("/" + mParsed.document->id + "_result.xml"));
}

TEST_P(AShippedFace, has_all_its_assets)
{
    const std::string folder = GetParam().substr(0, GetParam().rfind('/'));
    for (const DataUtil::Finding& finding : DataUtil::CheckAssets(TextOf(GetParam()), {folder}))
        ADD_FAILURE() << DataUtil::FormatFinding(finding);
}

TEST_P(AShippedFace, is_translated)
{
    ASSERT_TRUE(mParsed.document);
    for (const char* language : {"en", "de", "ko", "ja", "ar"}) {
        EXPECT_EQ(mParsed.document->texts.count(language), 1U) << language;
    }
}

TEST_P(AShippedFace, shows_a_difference_for_each_option_on_offer)
{
    ASSERT_TRUE(mParsed.document);
    const DataUtil::Resolution resolution = DataUtil::Resolve(*mParsed.document);
    for (const DataUtil::Group& group : mParsed.document->groups) {
        if (!resolution.shown.at(group.id)) continue;
        std::set<std::string> drawings;
        for (const DataUtil::Option& option : group.options) {
            drawings.insert(FlatWith(Picked(group.id, option.id)));
        }
        EXPECT_EQ(drawings.size(), group.options.size()) << group.id;
    }
}

TEST_P(AShippedFace, takes_every_source_on_offer_and_none)
{
    ASSERT_TRUE(mParsed.document);
    for (const DataUtil::Slot& slot : mParsed.document->slots) {
        FlatWith(Placed(slot.name, "empty"));
        for (const DataUtil::Offer& offer : slot.offers) {
            const std::string flat = FlatWith(Placed(slot.name, offer.source));
            if (flat.find("name=\"" + slot.name + "\"") == std::string::npos) continue;  // in a hidden layer
            EXPECT_THAT(flat, HasSubstr("name=\"" + slot.name + "\" group=\"" + slot.group + "\" source=\"" +
                                        offer.source));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(of_this_watch, AShippedFace, testing::ValuesIn(ShippedResultXmls()),
                         [](const auto& face) {
                             const std::size_t end = face.param.find("_result.xml");
                             return face.param.substr(end - 2, 2);
                         });
