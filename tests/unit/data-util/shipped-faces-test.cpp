// The faces that this watch ships, and the page about their format.

#include <filesystem>
#include <set>

#include "a-face-document.h"
#include "face-schema.h"
#include "faces.h"
#include "flat-schema.h"

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

TEST(TheFormatPage, shows_the_flat_document_that_is_made_of_the_analog_face)
{
    const std::string name = "com.corvane.watchface-mirel-c1";
    const auto parsed = DataUtil::ParseFace(TextOf(SHIPPED_FACES "/" + name + "/" + name + "_result.xml"));
    ASSERT_TRUE(parsed.document);
    EXPECT_EQ(TextOf(EXAMPLES "/watchface-c1.xml"), DataUtil::Flatten(*parsed.document));
}

TEST(TheFormatPage, names_every_element_attribute_and_source)
{
    const std::string page = TextOf(FORMAT_PAGE);
    for (const DataUtil::Schema* schema : {&DataUtil::FaceSchema(), &DataUtil::FlatSchema()}) {
        for (const DataUtil::ElementRule& rule : schema->Rules()) {
            EXPECT_NE(page.find("`" + std::string(rule.name) + "`"), std::string::npos) << rule.name;
            for (const DataUtil::AttributeRule& attribute : rule.attributes) {
                EXPECT_NE(page.find(attribute.name), std::string::npos) << attribute.name;
            }
        }
    }
    for (const DataUtil::Source& source : DataUtil::kSources) {
        EXPECT_NE(page.find("`" + std::string(source.name) + "`"), std::string::npos) << source.name;
    }
}

TEST(TheFormatPage, explains_every_code_of_the_library)
{
    const std::string page = TextOf(FORMAT_PAGE);
    for (const auto& file :
         std::filesystem::directory_iterator(std::string(SHIPPED_FACES) + "/../data-util/src")) {
        const std::string source = TextOf(file.path());
        for (std::size_t at = 0; (at = source.find_first_of("EWN", at)) != std::string::npos; ++at) {
            if (at == 0 || source[at - 1] != '"' || source[at + 1] != '-') continue;
            const std::size_t end = source.find('"', at);
            const std::string code = source.substr(at, end - at);
            if (code.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ-") != std::string::npos) continue;
            EXPECT_NE(page.find("| `" + code + "` |"), std::string::npos) << code << " of " << file.path();
        }
    }
}
