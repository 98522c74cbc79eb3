// What people type: peers, KEY=VALUE, typed values.

#include "arguments.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "exit-status.h"
#include "picture-output.h"
#include "reading-files.h"

using namespace Wfctl;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string Text(const std::string& argument)
{
    return std::get<std::string>(ParseAssignment(argument).second);
}

std::vector<std::string> Elements(const std::string& argument)
{
    return std::get<std::vector<std::string>>(ParseAssignment(argument).second);
}

// The status with which `body` stops.
template <typename Body>
Exit StatusOf(Body&& body)
{
    try {
        body();
    } catch (const Stop& stop) {
        return stop.Status();
    }
    return Exit::kDone;
}

class AFile : public testing::Test {
protected:
    AFile()
    {
        std::string folder = testing::TempDir() + "wfctl-XXXXXX";
        mFolder = mkdtemp(folder.data());
    }
    ~AFile() override { std::filesystem::remove_all(mFolder); }

    std::string Holding(const std::string& bytes) const
    {
        std::ofstream(mFolder + "/file", std::ios::binary) << bytes;
        return mFolder + "/file";
    }

    std::string mFolder;
};

}  // namespace

TEST(APeer, is_split_at_the_first_colon_because_ports_hold_colons)
{
    const PeerAddress peer = ParsePeer("com.example.app:some-port::localport", true);
    EXPECT_EQ(peer.app, "com.example.app");
    EXPECT_EQ(peer.port, "some-port::localport");
}

TEST(APeer, without_a_port_has_the_one_of_the_table)
{
    EXPECT_EQ(ParsePeer("com.corvane.w-home", true).port, "w-home::localport");
    EXPECT_EQ(ParsePeer("com.corvane.watchface-service", true).port, "watchface-service::localport");
    EXPECT_EQ(ParsePeer("com.corvane.watchface-service", false).port, "evaluation-helper-port");
}

TEST(APeer, that_the_table_does_not_know_may_go_without_a_port)
{
    EXPECT_THAT(ParsePeer("com.example.app", true).port, IsEmpty());
    EXPECT_THAT(ParsePeer("com.corvane.worldclock-map", true).port, IsEmpty());
}

TEST(APeer, must_be_an_application_id)
{
    for (const char* text : {"", "home", ":1.5", "com/example", "com.example.", ":port", "com.example.a b"}) {
        EXPECT_EQ(StatusOf([&] { ParsePeer(text, true); }), Exit::kUsage) << text;
    }
}

TEST(AnAssignment, is_split_at_the_first_equals_sign)
{
    EXPECT_EQ(ParseAssignment("data/label=a=b").first, "data/label");
    EXPECT_EQ(Text("data/label=a=b"), "a=b");
    EXPECT_EQ(Text("data/label="), "");
}

TEST(AnAssignment, needs_a_key_and_an_equals_sign)
{
    EXPECT_EQ(StatusOf([] { ParseAssignment("data/label"); }), Exit::kUsage);
    EXPECT_EQ(StatusOf([] { ParseAssignment("=x"); }), Exit::kUsage);
}

TEST(AnAssignment, takes_a_list_in_brackets)
{
    EXPECT_THAT(Elements("bg_list=[a.png,b.png]"), ElementsAre("a.png", "b.png"));
    EXPECT_THAT(Elements("bg_list=[one]"), ElementsAre("one"));
    EXPECT_THAT(Elements("bg_list=[]"), IsEmpty());
    EXPECT_THAT(Elements("bg_list=[,]"), ElementsAre("", ""));
    EXPECT_THAT(Elements("bg_list=[ a, b]"), ElementsAre(" a", " b"));
}

TEST(AnAssignment, takes_escaped_characters_as_they_are)
{
    EXPECT_EQ(Text("k=\\@home"), "@home");
    EXPECT_EQ(Text("k=\\[a,b]"), "[a,b]");
    EXPECT_EQ(Text("k=a\\,b"), "a,b");
    EXPECT_THAT(Elements("k=[a\\,b,\\@c,\\[d]"), ElementsAre("a,b", "@c", "[d"));
}

TEST(AnAssignment, leaves_other_backslashes_alone)
{
    EXPECT_EQ(Text("k=a\\nb\\"), "a\\nb\\");
    EXPECT_EQ(Text("k=\\\\"), "\\\\");
}

TEST(AnAssignment, refuses_a_list_without_end)
{
    EXPECT_EQ(StatusOf([] { ParseAssignment("k=[a,b"); }), Exit::kUsage);
}

TEST_F(AFile, behind_an_at_sign_is_taken_byte_for_byte)
{
    const std::string bytes = "\\@ [a,b]\n\xff\xfe end\n";
    EXPECT_EQ(Text("data/xml_data=@" + Holding(bytes)), bytes);
}

TEST_F(AFile, with_a_nul_byte_cannot_be_sent)
{
    const std::string path = Holding(std::string("a\0b", 3));
    EXPECT_EQ(StatusOf([&] { ParseAssignment("k=@" + path); }), Exit::kUsage);
}

TEST_F(AFile, that_is_missing_is_not_found)
{
    EXPECT_EQ(StatusOf([&] { ParseAssignment("k=@" + mFolder + "/none"); }), Exit::kNotFound);
}

TEST_F(AFile, that_is_a_folder_is_an_error)
{
    EXPECT_EQ(StatusOf([&] { ParseAssignment("k=@" + mFolder); }), Exit::kError);
}

TEST_F(AFile, that_does_not_end_is_read_until_it_is_too_large_for_everybody)
{
    EXPECT_EQ(ReadNamedFile("/dev/zero").size(), (std::size_t{32} << 20) + 1);
}

TEST_F(AFile, that_fails_while_it_is_read_is_an_error)
{
    EXPECT_EQ(StatusOf([] { ReadNamedFile("/proc/self/mem"); }), Exit::kError);
}

TEST_F(AFile, of_the_watch_that_cannot_be_read_is_as_empty)
{
    ASSERT_EQ(mkfifo((mFolder + "/pipe").c_str(), 0600), 0);
    for (const char* name : {"/", "/missing", "/pipe"}) EXPECT_EQ(ReadableBytes(mFolder + name), "") << name;
    EXPECT_EQ(ReadableBytes("/proc/self/mem"), "");
    EXPECT_EQ(ReadableBytes(Holding("bytes")), "bytes");
    EXPECT_NE(ReadableBytes("/proc/self/stat"), "");
}

TEST(ABundle, holds_texts_and_lists)
{
    const auto message = ParseBundle({"type=watch-bg-del", "bg_list=[a,b]"});
    EXPECT_EQ(bundle_get_type(message.get(), "type"), BUNDLE_TYPE_STR);
    EXPECT_EQ(bundle_get_type(message.get(), "bg_list"), BUNDLE_TYPE_STR_ARRAY);
}

TEST(ABundle, refuses_a_key_twice)
{
    EXPECT_EQ(StatusOf([] { ParseBundle({"type=a", "type=b"}); }), Exit::kUsage);
}

TEST(AValue, without_a_type_is_what_it_looks_like)
{
    EXPECT_EQ(ParseValue("true", "", std::nullopt), Platform::StoredValue(true));
    EXPECT_EQ(ParseValue("false", "", std::nullopt), Platform::StoredValue(false));
    EXPECT_EQ(ParseValue("-12", "", std::nullopt), Platform::StoredValue(int64_t{-12}));
    EXPECT_EQ(ParseValue("9223372036854775807", "", std::nullopt), Platform::StoredValue(int64_t{INT64_MAX}));
    for (const std::string text : {"", "1.5", "0x1", "12 ", "True", "+1", "9223372036854775808", "a"}) {
        EXPECT_EQ(ParseValue(text, "", std::nullopt), Platform::StoredValue(text)) << text;
    }
}

TEST(AValue, keeps_the_type_of_the_one_that_is_there)
{
    EXPECT_EQ(ParseValue("1", "", Platform::StoredValue(std::string())),
              Platform::StoredValue(std::string("1")));
    EXPECT_EQ(ParseValue("1", "", Platform::StoredValue(int64_t{5})), Platform::StoredValue(int64_t{1}));
    EXPECT_EQ(StatusOf([] { ParseValue("1", "", Platform::StoredValue(true)); }), Exit::kUsage);
    EXPECT_EQ(StatusOf([] { ParseValue("x", "", Platform::StoredValue(int64_t{5})); }), Exit::kUsage);
}

TEST(AValue, takes_the_type_that_is_said)
{
    EXPECT_EQ(ParseValue("true", "string", std::nullopt), Platform::StoredValue(std::string("true")));
    EXPECT_EQ(ParseValue("7", "int", Platform::StoredValue(true)), Platform::StoredValue(int64_t{7}));
    EXPECT_EQ(StatusOf([] { ParseValue("yes", "bool", std::nullopt); }), Exit::kUsage);
}

TEST(ATime, is_a_number_of_seconds_that_is_not_negative)
{
    for (const std::string text : {"0", "2", "0.5", "1e3"}) EXPECT_EQ(SecondsProblem(text), "") << text;
    for (const std::string text : {"x", "-1", "", "2s", "nan"})
        EXPECT_EQ(SecondsProblem(text), "the time is a number of seconds, 0 or more, not [" + text + "]");
}

TEST(APicture, is_written_under_a_name_that_is_true)
{
    for (const std::string name : {"a.png", "a.SVG", "a", "/dev/stdout", "a.b/c", "my.face"})
        EXPECT_EQ(PictureNameProblem(name), "") << name;
    for (const std::string name : {"a.jpg", "a.b/C.JPEG", "a.pdf"})
        EXPECT_NE(PictureNameProblem(name), "") << name;
}
