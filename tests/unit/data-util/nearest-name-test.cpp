// Which name an unknown one probably means.

#include "nearest-name.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

using DataUtil::NameGuesses;
using DataUtil::NearestName;

namespace {

// The distance by its definition, from the whole table.
std::size_t Distance(std::string_view a, std::string_view b)
{
    std::vector<std::vector<std::size_t>> cells(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            std::size_t& cell = cells[i][j];
            cell = i + j;
            if (i == 0 || j == 0) continue;
            const std::size_t replaced = cells[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            cell = std::min({cells[i - 1][j] + 1, cells[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                cell = std::min(cell, cells[i - 2][j - 2] + 1);
        }
    }
    return cells[a.size()][b.size()];
}

// A name with up to six slips in it.
std::string Mistyped(std::string name, std::mt19937& random)
{
    for (auto slips = random() % 7; slips > 0 && !name.empty(); --slips) {
        const std::size_t at = random() % name.size();
        switch (random() % 4) {
            case 0:
                name.erase(at, 1);
                break;
            case 1:
                name.insert(at, 1, static_cast<char>('a' + random() % 3));
                break;
            case 2:
                name[at] = static_cast<char>('a' + random() % 3);
                break;
            default:
                std::swap(name[at], name[random() % name.size()]);
        }
    }
    return name;
}

}  // namespace

TEST(ANearestName, differs_in_at_most_a_third_of_the_letters_and_four)
{
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string name(1 + random() % 20, 'a');
        for (char& c : name) c = static_cast<char>('a' + random() % 3);
        const std::string other = Mistyped(name, random);
        const bool isNear =
            !other.empty() && Distance(name, other) <= std::clamp<std::size_t>(name.size() / 3, 1, 4);
        EXPECT_EQ(NearestName(name, {other}), isNear ? other : "") << name << " and " << other;
    }
}

TEST(ANearestName, is_the_first_of_those_that_differ_least)
{
    EXPECT_EQ(NearestName("sixteen", {"sixty", "sixteenth", "sixten", "sixteem"}), "sixten");
    EXPECT_EQ(NearestName("", {"a"}), "");
    EXPECT_EQ(NearestName("b", {"", "a"}), "a");
}

TEST(ANearestName, of_those_that_differ_least_is_one_that_was_begun)
{
    EXPECT_EQ(NearestName("of", {"on", "off", "oft"}), "off");
    EXPECT_EQ(NearestName("of", {"off", "on"}), "off");
    EXPECT_EQ(NearestName("sixten", {"sixteen", "sixtenth"}), "sixteen");
    EXPECT_EQ(NearestName("of", {"offer"}), "");
}

TEST(ANearestName, has_at_most_64_bytes_and_so_has_what_it_is_near_to)
{
    const std::string longest(64, 'n');
    EXPECT_EQ(NearestName(longest.substr(1), {longest}), longest);
    EXPECT_EQ(NearestName(longest, {longest + "n"}), "");
    EXPECT_EQ(NearestName(longest + "n", {longest}), "");
}

TEST(TheGuessesOfADocument, end_with_so_many_comparisons)
{
    const std::vector<std::string_view> known(NameGuesses::kMostComparisons / 16, "title");
    NameGuesses guesses;
    for (int i = 0; i < 16; ++i) EXPECT_EQ(guesses.Nearest("titel", known), "title");
    EXPECT_EQ(guesses.Nearest("titel", {"title"}), "");
}
