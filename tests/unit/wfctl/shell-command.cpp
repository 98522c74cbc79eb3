// Commands that people are told to type.

#include "shell-command.h"

#include <gtest/gtest.h>

using namespace Wfctl;

TEST(ANameInACommand, is_plain_where_a_shell_takes_it_as_it_is)
{
    for (const char* name : {"com.corvane.watchface-mirel-c1", "c1", "My_Face.2"})
        EXPECT_EQ(ShellWord(name), name);
}

TEST(ANameInACommand, is_quoted_where_a_shell_would_take_it_otherwise)
{
    for (const std::string name :
         {"x;id", "two words", "$x", "`id`", "a\nb", "~", "#a", "*", "미렐", "a=b", "/x"})
        EXPECT_EQ(ShellWord(name), "'" + name + "'");
    EXPECT_EQ(ShellWord(""), "''");
    EXPECT_EQ(ShellWord("it's"), "'it'\\''s'");
}

TEST(ACommand, names_the_watch_that_was_named)
{
    EXPECT_EQ(CommandOn("/tmp/my watch", "list"), "wfctl --root '/tmp/my watch' list");
}

TEST(ACommand, names_no_watch_where_the_environment_decided)
{
    EXPECT_EQ(WatchCommand("list"), "wfctl list");
}
