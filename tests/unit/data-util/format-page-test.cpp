// The page about the format, and the examples that it builds on.

#include <filesystem>

#include "a-face-document.h"
#include "asset-checks.h"
#include "face-schema.h"
#include "faces.h"
#include "flat-schema.h"
#include "usage-items.h"

using testing::IsEmpty;

namespace {

// The lines of the page's code blocks in that language, each block as one text without indentation.
std::vector<std::string> CodeBlocks(const std::string& page, const std::string& language)
{
    std::vector<std::string> blocks;
    const std::string fence = "\n```";
    for (std::size_t at = 0; (at = page.find(fence + language + "\n", at)) != std::string::npos;) {
        const std::size_t begin = at + fence.size() + language.size() + 1;
        at = page.find(fence, begin);
        blocks.push_back(page.substr(begin, at - begin) + "\n");
    }
    return blocks;
}

std::string Section(const std::string& page, const std::string& title)
{
    const std::size_t begin = page.find("\n## " + title + "\n");
    EXPECT_NE(begin, std::string::npos) << title;
    return page.substr(begin, page.find("\n## ", begin + 1) - begin);
}

std::string Example(const std::string& name)
{
    return TextOf(EXAMPLES "/" + name);
}

// How many codes of findings the source has; the page has to have each.
int ExpectExplainedCodes(const std::string& path)
{
    const std::string page = TextOf(FORMAT_PAGE);
    const std::string source = TextOf(path);
    int codes = 0;
    for (std::size_t at = 0; (at = source.find_first_of("EWN", at)) != std::string::npos; ++at) {
        if (at == 0 || source[at - 1] != '"' || source[at + 1] != '-') continue;
        const std::size_t end = source.find('"', at);
        const std::string code = source.substr(at, end - at);
        if (code.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ-") != std::string::npos) continue;
        EXPECT_NE(page.find("| `" + code + "` |"), std::string::npos) << code << " of " << path;
        ++codes;
    }
    return codes;
}

}  // namespace

TEST(TheFormatPage, quotes_the_examples)
{
    std::string examples;
    for (const char* step : {"1", "2", "3", "4"})
        examples += Example("dawn-" + std::string(step) + "_result.xml");
    const auto blocks = CodeBlocks(Section(TextOf(FORMAT_PAGE), "A face, step by step"), "xml");
    EXPECT_GE(blocks.size(), 8U);
    for (const std::string& block : blocks) EXPECT_NE(examples.find(block), std::string::npos) << block;
}

TEST(TheFormatPage, tells_the_combination_of_the_last_example)
{
    const auto parsed = DataUtil::ParseFace(Example("dawn-4_result.xml"));
    ASSERT_TRUE(parsed.document);
    EXPECT_NE(TextOf(FORMAT_PAGE).find("`" + DataUtil::CombinationText(*parsed.document) + "`"),
              std::string::npos)
        << DataUtil::CombinationText(*parsed.document);
}

TEST(AnExample, has_no_finding_and_all_its_assets)
{
    for (const char* step : {"1", "2", "3", "4"}) {
        const std::string text = Example("dawn-" + std::string(step) + "_result.xml");
        const auto parsed = DataUtil::ParseFace(text);
        ASSERT_TRUE(parsed.document) << step;
        EXPECT_THAT(parsed.findings, IsEmpty()) << step;
        EXPECT_THAT(DataUtil::CheckAssets(text, {EXAMPLES}), IsEmpty()) << step;
    }
}

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
    for (const auto& file :
         std::filesystem::directory_iterator(std::string(SHIPPED_FACES) + "/../data-util/src"))
        ExpectExplainedCodes(file.path());
}

TEST(TheFormatPage, explains_the_codes_that_wfctl_adds)
{
    EXPECT_EQ(ExpectExplainedCodes(std::string(SHIPPED_FACES) + "/../wfctl/src/locale-findings.cpp"), 3);
}
