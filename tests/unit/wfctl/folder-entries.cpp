// What lies in a folder.

#include "folder-entries.h"

#include <gmock/gmock.h>

#include <fstream>

#include "temporary-folder.h"

using namespace Wfctl;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(AFolderOfOthers, is_listed_by_name)
{
    const TemporaryFolder folder;
    for (const char* name : {"/b", "/c", "/a"}) std::ofstream(folder.Path() + name);
    std::error_code error;
    EXPECT_THAT(EntriesOf(folder.Path(), error),
                ElementsAre(folder.Path() + "/a", folder.Path() + "/b", folder.Path() + "/c"));
    EXPECT_FALSE(error);
}

TEST(AFolderOfOthers, that_is_gone_is_an_error_and_no_exception)
{
    std::error_code error;
    EXPECT_THAT(EntriesOf("/nonexistent/folder", error), IsEmpty());
    EXPECT_TRUE(error);
}
