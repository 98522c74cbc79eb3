// Documents that people name.

#include "a-watch.h"

using testing::StartsWith;

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
