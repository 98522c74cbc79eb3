// Keys, preferences and settings.

#include "a-watch.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(AWatch, keeps_keys_with_their_types)
{
    Run({"key", "set", "flag", "true"});
    Run({"key", "set", "number", "-5"});
    Run({"key", "set", "text", "it's"});
    Run({"key", "set", "digits", "12", "--type", "string"});
    EXPECT_EQ(Run({"key", "get", "flag"}).out, "true\n");
    EXPECT_EQ(Run({"key", "list"}).out, "digits=12\nflag=true\nnumber=-5\ntext=it's\n");
    EXPECT_EQ(Run({"key", "list", "--json"}).AsJson(),
              Json::parse(R"({"digits": "12", "flag": true, "number": -5, "text": "it's"})"));
}

TEST_F(AWatch, keeps_the_type_of_a_key_that_is_set_again)
{
    Run({"key", "set", "number", "1"});
    const Result refused = Run({"key", "set", "number", "one"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.err, HasSubstr("--type"));
    EXPECT_EQ(Run({"key", "get", "number"}).out, "1\n");
    EXPECT_EQ(Run({"key", "set", "number", "one", "--type", "string"}).status, 0);
    EXPECT_EQ(Run({"key", "get", "number", "--json"}).out, "\"one\"\n");
}

TEST_F(AWatch, has_no_key_that_was_unset)
{
    Run({"key", "set", "a", "1"});
    EXPECT_EQ(Run({"key", "unset", "a"}).status, 0);
    EXPECT_EQ(Run({"key", "get", "a"}).status, 10);
    EXPECT_EQ(Run({"key", "unset", "a"}).status, 10);
}

TEST_F(AWatch, knows_which_key_is_meant)
{
    Run({"key", "set", "my/own-key", "1"});
    EXPECT_THAT(Run({"key", "get", "my/onw-key"}).err,
                HasSubstr("did you mean my/own-key? type: wfctl key list"));
}

TEST_F(AWatch, tells_of_keys_whenever_they_are_written)
{
    const auto watcher = Start({"key", "watch", "a", "b", "--count", "4", "--json"});
    ASSERT_THAT(watcher->NextErrorLine().value_or(""), StartsWith("watching"));
    Run({"key", "set", "a", "1"});
    Run({"key", "set", "a", "1"});
    Run({"key", "set", "other", "1"});
    Run({"key", "set", "b", "text"});
    Run({"key", "unset", "b"});
    EXPECT_EQ(watcher->NextLine(), R"({"key": "a", "value": 1})");
    EXPECT_EQ(watcher->NextLine(), R"({"key": "a", "value": 1})");
    // The value is the store's at the time of printing; it may be unset by then.
    EXPECT_THAT(watcher->NextLine().value_or(""), StartsWith(R"({"key": "b", "value": )"));
    EXPECT_EQ(watcher->NextLine(), R"({"key": "b", "value": null})");
    EXPECT_EQ(watcher->AwaitEnd(), 0);
}

TEST_F(AWatch, tells_of_nothing_in_time)
{
    EXPECT_EQ(Run({"key", "watch", "a", "--timeout", "0.1"}).status, 3);
}

TEST_F(AWatch, keeps_preferences_for_each_application)
{
    EXPECT_EQ(Run({"pref", "set", "com.example.app", "k", "1"}).status, 0);
    EXPECT_EQ(Run({"pref", "set", "com.example.other", "k", "x"}).status, 0);
    EXPECT_EQ(Run({"pref", "get", "com.example.app", "k"}).out, "1\n");
    EXPECT_EQ(Run({"pref", "list", "com.example.other"}).out, "k=x\n");
    EXPECT_EQ(Run({"pref", "unset", "com.example.app", "k"}).status, 0);
    EXPECT_EQ(Run({"pref", "get", "com.example.app", "k"}).status, 10);
    EXPECT_EQ(Run({"pref", "list", "com.example.nobody"}).out, "");
    EXPECT_EQ(Run({"pref", "get", "../../keys", "k"}).status, 2);
}

TEST_F(AWatch, follows_the_environment_in_what_nobody_set)
{
    mEnvironment["LC_ALL"] = "de_DE.UTF-8";
    mEnvironment["TZ"] = "Europe/Berlin";
    EXPECT_EQ(Run({"setting", "list"}).out,
              "language=de_DE\ncountry=de_DE\n24-hour=true\ntimezone=Europe/Berlin\n");
}

TEST_F(AWatch, keeps_settings)
{
    EXPECT_EQ(Run({"setting", "set", "language=en_GB", "24-hour=false"}).status, 0);
    EXPECT_EQ(Run({"setting", "set", "timezone", "Asia/Seoul"}).status, 0);
    EXPECT_EQ(Run({"setting", "get", "language"}).out, "en_GB\n");
    EXPECT_EQ(Run({"setting", "get", "24-hour", "--json"}).out, "false\n");
    EXPECT_EQ(Run({"setting", "get", "timezone"}).out, "Asia/Seoul\n");
    EXPECT_EQ(Run({"key", "get", "db/system/language"}).out, "en_GB\n");
}

TEST_F(AWatch, writes_no_setting_when_one_of_them_is_wrong)
{
    EXPECT_EQ(Run({"setting", "set", "language=en_GB", "24-hour=perhaps"}).status, 2);
    EXPECT_EQ(Run({"setting", "set", "language=en_GB", "colour=red"}).status, 2);
    EXPECT_EQ(Run({"key", "list"}).out, "");
}

TEST_F(AWatch, tells_of_settings_by_their_names)
{
    const auto watcher = Start({"setting", "watch", "--count", "1"});
    ASSERT_THAT(watcher->NextErrorLine().value_or(""), StartsWith("watching"));
    Run({"setting", "set", "24-hour=true"});
    EXPECT_EQ(watcher->NextLine(), "24-hour=true");
    EXPECT_EQ(watcher->AwaitEnd(), 0);
}
