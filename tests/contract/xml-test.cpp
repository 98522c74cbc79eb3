#include "common-util-xml.h"

#include <sys/stat.h>

#include "contract-test.h"

namespace Contract {
namespace {

class AnXmlDocument : public ContractTest {
protected:
    std::string Save(const std::string& text)
    {
        WriteFile(InArea("document.xml"), text);
        return InArea("document.xml");
    }
    static Strings NamesOf(const CommonUtilXmlNodeRange& range)
    {
        Strings names;
        for (const CommonUtilXmlNode& node : range)
            names.push_back(node.GetName() + "=" + node.GetAttribute("id"));
        return names;
    }
};

TEST_F(AnXmlDocument, has_a_root_with_attributes)
{
    const CommonUtilXmlParser parser(Save("<?xml version='1.0'?><!-- x --><watchface id='a&amp;시'/>"));
    const CommonUtilXmlNode root = parser.GetRoot();
    ASSERT_TRUE(root.IsValid());
    EXPECT_EQ(root.GetName(), "watchface");
    EXPECT_EQ(root.GetAttribute("id"), "a&시");
    EXPECT_EQ(root.GetAttribute("missing"), "");
}

TEST_F(AnXmlDocument, gives_the_element_children_in_order)
{
    const CommonUtilXmlParser parser(
        Save("<r>text<a id='1'/><!-- no child --><b id='2'><a id='inner'/></b><a id='3'/><![CDATA[x]]></r>"));
    const CommonUtilXmlNode root = parser.GetRoot();
    EXPECT_THAT(NamesOf(CommonUtilXmlNodeRange::GetChildren(root)),
                testing::ElementsAre("a=1", "b=2", "a=3"));
    EXPECT_THAT(NamesOf(CommonUtilXmlNodeRange::GetChildren(root, "a")), testing::ElementsAre("a=1", "a=3"));
    EXPECT_THAT(NamesOf(CommonUtilXmlNodeRange::GetChildren(root, "c")), testing::IsEmpty());
}

TEST_F(AnXmlDocument, has_no_root_when_it_is_missing)
{
    EXPECT_FALSE(CommonUtilXmlParser(InArea("nothing.xml")).GetRoot().IsValid());
}

TEST_F(AnXmlDocument, has_no_root_when_it_is_not_well_formed)
{
    for (const char* text : {"", "text", "<a>", "<a></b>", "<a/><b/>", "<a x='1' x='2'/>",
                             "<a>&undefined;</a>", "<a>\xFF</a>", "<a x=1/>"}) {
        EXPECT_FALSE(CommonUtilXmlParser(Save(text)).GetRoot().IsValid()) << text;
    }
}

TEST_F(AnXmlDocument, has_no_root_when_it_is_no_regular_file)
{
    ASSERT_EQ(mkfifo(InArea("fifo.xml").c_str(), 0600), 0);
    for (const std::string& path : {InArea("fifo.xml"), InArea(), std::string("/dev/zero"), std::string()}) {
        EXPECT_FALSE(CommonUtilXmlParser(path).GetRoot().IsValid()) << path;
    }
}

TEST_F(AnXmlDocument, is_at_most_one_MiB_long)
{
    const std::string around = "<a></a>";
    std::string text = "<a>" + std::string((1 << 20) - around.size(), 'x') + "</a>";
    EXPECT_TRUE(CommonUtilXmlParser(Save(text)).GetRoot().IsValid());
    text.insert(3, "x");
    EXPECT_FALSE(CommonUtilXmlParser(Save(text)).GetRoot().IsValid());
    std::filesystem::resize_file(InArea("document.xml"), std::uintmax_t{1} << 36);
    EXPECT_FALSE(CommonUtilXmlParser(InArea("document.xml")).GetRoot().IsValid());
}

TEST_F(AnXmlDocument, gives_nothing_for_an_invalid_node)
{
    const CommonUtilXmlNode none;
    EXPECT_FALSE(none.IsValid());
    EXPECT_EQ(none.GetName(), "");
    EXPECT_EQ(none.GetAttribute("id"), "");
    EXPECT_THAT(NamesOf(CommonUtilXmlNodeRange::GetChildren(none)), testing::IsEmpty());
}

}  // namespace
}  // namespace Contract
