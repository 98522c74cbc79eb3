// What the verbs of stored values share.

#include "stored-values.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "exit-status.h"

using namespace Wfctl;
using testing::ElementsAre;

TEST(Names, that_come_again_are_dropped)
{
    EXPECT_THAT(Once({"b", "a", "b", "b"}), ElementsAre("b", "a"));
}

TEST(ARemoval, of_what_is_gone_already_is_done)
{
    EXPECT_NO_THROW(CheckRemoved(SQLITE_OK, "key", "a"));
    EXPECT_NO_THROW(CheckRemoved(SQLITE_NOTFOUND, "key", "a"));
    EXPECT_THROW(CheckRemoved(SQLITE_FULL, "key", "a"), Stop);
    EXPECT_THROW(CheckWritten(SQLITE_NOTFOUND, "key", "a"), Stop);
}
