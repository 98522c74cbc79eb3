// Documents that people name.

#include "a-watch.h"

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(AFolder, has_all_its_documents_looked_at_whatever_is_the_matter_with_one)
{
    const std::string good = StagedResultXml(kDigital);
    const std::string bad = Holding("bad.xml", "<face-result/>");
    const std::string none = mFolder + "/none.xml", folder = mFolder + "/";
    const Result checked = Wfctl({"validate", none, good, "com.example.none", folder, bad});
    EXPECT_EQ(checked.status, 10);
    EXPECT_THAT(checked.out, StartsWith(good + ": good\n" + bad + ":1:1: E-"));
    EXPECT_THAT(checked.err, StartsWith("wfctl: the file [" + none + "] cannot be read: "));
    EXPECT_THAT(checked.err, HasSubstr("\nwfctl: there is no watch face [com.example.none]"));
    EXPECT_THAT(checked.err, HasSubstr("\nwfctl: [" + folder + "] is a folder; "));
    EXPECT_EQ(Wfctl({"validate", folder, bad, good}).status, 1);
}

TEST_F(AFolder, says_in_json_why_a_document_could_not_be_looked_at)
{
    const std::string none = mFolder + "/none.xml", good = StagedResultXml(kDigital);
    const Result checked = Wfctl({"validate", none, good, "--json"});
    EXPECT_EQ(checked.status, 10);
    const Json all = checked.AsJson();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0]["file"], none);
    EXPECT_EQ(all[0]["good"], false);
    EXPECT_THAT(all[0]["obstacle"].get<std::string>(), HasSubstr("[" + none + "] cannot be read"));
    EXPECT_EQ(all[1]["good"], true);
    EXPECT_FALSE(all[1].contains("obstacle"));
}

TEST_F(AFolder, is_told_of_a_document_that_does_not_end)
{
    const std::string endless = "/dev/zero";
    const char* finding = "/dev/zero:1:1: E-LIMIT-SIZE: ";
    EXPECT_THAT(Wfctl({"validate", endless}).out, StartsWith(finding));
    for (const Arguments& arguments : {
             Arguments{"flatten", endless},
             Arguments{"install", endless}
    }) {
        const Result refused = Wfctl(arguments);
        EXPECT_EQ(refused.status, 1) << arguments[0];
        EXPECT_THAT(refused.err, StartsWith(finding)) << arguments[0];
    }
    for (const char* verb : {"render", "sheet"})
        EXPECT_EQ(Wfctl({verb, endless, "-o", mFolder + "/x.png"}).status, 1) << verb;
}
