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
using testing::IsSupersetOf;

namespace {

// The strings in the service's table of words, of one namespace.
std::vector<std::string> WordsOf(const std::string& part)
{
    std::ostringstream text;
    text << std::ifstream(MESSAGE_VOCABULARY).rdbuf();
    const std::string all = text.str();
    const auto begin = all.find("namespace " + part + " {");
    const std::string body = all.substr(begin, all.find("}  // namespace " + part) - begin);
    const std::regex word(R"re(\[\] = "([^"]+)")re");
    std::vector<std::string> words;
    for (std::sregex_iterator at(body.begin(), body.end(), word), end; at != end; ++at)
        words.push_back((*at)[1]);
    return words;
}

}  // namespace

TEST(AHint, names_what_is_nearest)
{
    EXPECT_EQ(DidYouMean("langauge", {"country", "language"}), "did you mean language? ");
    EXPECT_EQ(OrMeant("langauge", {"country", "language"}), "; did you mean language?");
}

TEST(AHint, names_the_only_word_that_goes_on)
{
    EXPECT_EQ(MeantName("24", {"language", "24-hour"}), "24-hour");
    EXPECT_EQ(MeantName("of", {"on", "off"}), "off");
    EXPECT_EQ(MeantName("lang", {"language", "languages"}), "");
}

TEST(AHint, is_empty_where_nothing_is_near)
{
    EXPECT_EQ(DidYouMean("pressure", {"language", "country"}), "");
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
    const Names types = MessageTypes(), keys = MessageKeys();
    ASSERT_GT(WordsOf("MessageType").size(), 10U);
    EXPECT_THAT(types, IsSupersetOf(WordsOf("MessageType")));
    EXPECT_THAT(types, IsSupersetOf(WordsOf("BackupItem")));
    EXPECT_THAT(keys, IsSupersetOf(WordsOf("MessageKey")));
}
