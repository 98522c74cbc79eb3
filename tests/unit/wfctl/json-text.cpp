// What wfctl prints.

#include "json-text.h"

#include <gmock/gmock.h>

using namespace Wfctl;

namespace {

std::string Base64Of(const std::string& bytes)
{
    return BytesToJson(bytes)["base64"].get<std::string>();
}

}  // namespace

TEST(AJsonLine, has_a_space_behind_colons_and_commas)
{
    EXPECT_EQ(JsonLine(Json::parse(R"({"result":0,"extra":{}})")), R"({"result": 0, "extra": {}})");
    EXPECT_EQ(JsonLine(Json::parse(R"([1,[],["a","b"],null,true])")), R"([1, [], ["a", "b"], null, true])");
}

TEST(AJsonLine, stays_one_line)
{
    EXPECT_EQ(JsonLine(Json("a\nb\t\"\x01")), R"("a\nb\t\"\u0001")");
}

TEST(AJsonLine, keeps_characters_beyond_ascii)
{
    EXPECT_EQ(JsonLine(Json("미렐")), "\"미렐\"");
}

TEST(Bytes, that_are_utf8_are_text)
{
    EXPECT_EQ(BytesToJson("Zürich"), Json("Zürich"));
    EXPECT_EQ(BytesToJson(""), Json(""));
}

TEST(ANameInJson, that_is_no_utf8_is_base64)
{
    EXPECT_EQ(JsonName("Zürich"), "Zürich");
    EXPECT_EQ(JsonName("\xff\xfe"), "base64://4=");
}

TEST(ACount, has_its_plural)
{
    EXPECT_EQ(Counted(0, "key"), "0 keys");
    EXPECT_EQ(Counted(1, "key"), "1 key");
    EXPECT_EQ(Counted(2, "key"), "2 keys");
}

TEST(Bytes, that_are_no_utf8_are_base64)
{
    EXPECT_EQ(JsonLine(BytesToJson("\xff\xfe\xfd")), R"({"base64": "//79"})");
    EXPECT_EQ(Base64Of("\xff"), "/w==");
    EXPECT_EQ(Base64Of("\xff\xfe"), "//4=");
    EXPECT_EQ(Base64Of("\xff\xfe\xfd\xfc"), "//79/A==");
}

TEST(AMessage, is_printed_with_who_sent_it_first)
{
    bundle message;
    message.Set("type", std::string("watch-bg-del"));
    message.Set("bg_list", Platform::StringArray{"a.png", "\xff"});
    EXPECT_EQ(JsonLine(MessageToJson("com.example.app", "port", message)),
              R"({"from": "com.example.app", "port": "port", "bundle": )"
              R"({"bg_list": ["a.png", {"base64": "/w=="}], "type": "watch-bg-del"}})");
}

TEST(AStoredValue, is_printed_as_it_stands)
{
    EXPECT_EQ(ValueText(std::string(" a\n")), " a\n");
    EXPECT_EQ(ValueText(int64_t{-5}), "-5");
    EXPECT_EQ(ValueText(true), "true");
}

TEST(AStoredValue, keeps_its_type_in_json)
{
    EXPECT_EQ(JsonLine(ValueToJson(std::string("1"))), "\"1\"");
    EXPECT_EQ(JsonLine(ValueToJson(int64_t{1})), "1");
    EXPECT_EQ(JsonLine(ValueToJson(false)), "false");
}
