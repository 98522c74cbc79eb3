// What may be meant by what is typed.

#include "hint.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "service-words.h"

using namespace Wfctl;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;
using testing::UnorderedElementsAreArray;

namespace {

constexpr char kConstant[] = R"re(k[A-Za-z]+\[\] = "([^"]+)")re";

// What the pattern finds in one of the service's sources between two texts.
std::vector<std::string> WordsOf(const char* file, const std::string& begin, const std::string& end,
                                 const char* pattern = kConstant)
{
    std::ostringstream text;
    text << std::ifstream(std::string(SERVICE_SOURCES) + file).rdbuf();
    const std::string all = text.str();
    const auto at = all.find(begin);
    const std::string body = at == std::string::npos ? "" : all.substr(at, all.find(end, at) - at);
    const std::regex word(pattern);
    std::vector<std::string> words;
    for (std::sregex_iterator found(body.begin(), body.end(), word), none; found != none; ++found)
        words.push_back((*found)[1]);
    return words;
}

std::vector<std::string> VocabularyOf(const std::string& part)
{
    return WordsOf("message-vocabulary.h", "namespace " + part + " {", "}  // namespace " + part);
}

}  // namespace

TEST(AHint, names_what_is_nearest)
{
    EXPECT_EQ(OrMeant("langauge", {"country", "language"}), "; did you mean language?");
    EXPECT_EQ(OrMeant("langauge", {"country", "language"}, "type: x"), "; did you mean language? type: x");
}

TEST(AHint, names_nothing_for_a_name_that_is_right)
{
    EXPECT_EQ(MeantName("lang", {"lang", "language"}), "");
    EXPECT_EQ(OrMeant("language", {"language"}, "type: x"), "; type: x");
}

TEST(AHint, names_the_only_word_that_goes_on)
{
    EXPECT_EQ(MeantName("24", {"language", "24-hour"}), "24-hour");
    EXPECT_EQ(MeantName("of", {"on", "off"}), "off");
    EXPECT_EQ(MeantName("lang", {"language", "languages"}), "");
}

TEST(AHint, is_empty_where_nothing_is_near)
{
    EXPECT_EQ(OrMeant("pressure", {"language", "country"}), "");
    EXPECT_EQ(OrMeant("pressure", {"language", "country"}, "type: x"), "; type: x");
    EXPECT_EQ(OrMeant("", {"language"}), "");
    EXPECT_EQ(MeantName("x", {}), "");
}

TEST(AHint, of_a_choice_lists_it)
{
    const auto check = OneOf("the type", {"string", "int"});
    EXPECT_EQ(check("int"), "");
    EXPECT_EQ(check("itn"), "the type is one of string, int, not itn; did you mean int?");
}

TEST(AHint, of_a_file_is_what_lies_beside_it)
{
    std::string folder = testing::TempDir() + "hint-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    std::ofstream(folder + "/face.xml") << "x";
    EXPECT_EQ(OrMeantFile(folder + "/fcae.xml"), "; did you mean " + folder + "/face.xml?");
    EXPECT_EQ(OrMeantFile(folder + "/face.xml"), "");
    EXPECT_EQ(OrMeantFile(folder + "/none/face.xml"), "");
    std::filesystem::remove_all(folder);
}

TEST(TheServicesWords, are_those_of_its_vocabulary)
{
    struct {
        const char* part;
        Names known;
        std::size_t least;
    } const kParts[] = {
        {"MessageType", MessageTypes(), 14},
        {"BackupItem",  MessageTypes(), 2 },
        {"MessageKey",  MessageKeys(),  30},
    };
    for (const auto& [part, known, least] : kParts) {
        const std::vector<std::string> words = VocabularyOf(part);
        EXPECT_GE(words.size(), least) << part;
        EXPECT_THAT(known, IsSupersetOf(words)) << part;
    }
}

TEST(TheServicesWords, of_launch_requests_are_those_of_its_table)
{
    const auto keys = WordsOf("watchface-service.cpp", "kLaunchKeys[] = {", "};", R"re(\{"([^"]+)")re");
    EXPECT_GE(keys.size(), 3U);
    EXPECT_THAT(LaunchKeys(), UnorderedElementsAreArray(keys));
    const auto values = WordsOf("watchface-service.cpp", "namespace RequestType {", "kReplyKey");
    EXPECT_GE(values.size(), 5U);
    EXPECT_THAT(LaunchValues(), UnorderedElementsAreArray(values));
}

TEST(TheServicesWords, of_what_is_stored_are_those_that_it_keeps)
{
    const auto keys = WordsOf("persisted-keys.h", "// Platform keys", "// Preferences");
    EXPECT_GE(keys.size(), 8U);
    EXPECT_THAT(KeyNames(), IsSupersetOf(keys));
    const auto preferences = WordsOf("persisted-keys.h", "// Preferences", "}  // namespace");
    EXPECT_GE(preferences.size(), 3U);
    EXPECT_THAT(PreferenceNames(""), UnorderedElementsAreArray(preferences));
}

TEST(TheServicesPreferences, of_a_world_clock_are_those_of_its_group)
{
    EXPECT_THAT(PreferenceNames("com.example.face-c4-zone-cty"), Contains("com.example.face-c4-zone-city"));
    EXPECT_THAT(PreferenceNames("my-city"), Not(Contains("my-city")));
}
