// Dates beside those of an implementation that carries its own locale data: every row of intl/dates.tsv reads
// the same here, or stands in intl/differences.tsv with both texts. See docs/dates.md.

#include <gtest/gtest.h>
#include <unicode/uversion.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common-util-i18n.h"

namespace {

// Language, time zone, instant and skeleton, as they stand in a line.
using Request = std::string;
struct Texts {
    std::string intl;
    std::string platform;  // of a difference
};
using Table = std::vector<std::pair<Request, Texts>>;

std::ifstream Open(const std::string& name)
{
    return std::ifstream(INTL_FOLDER "/" + name);
}

// The lines that are neither empty nor begin with "#".
Table Rows(const std::string& name)
{
    constexpr int kFieldsOfRequest = 4;
    std::ifstream file = Open(name);
    Table rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#') continue;
        std::size_t end = 0;
        for (int i = 0; i < kFieldsOfRequest; ++i) end = line.find('\t', end) + 1;
        std::istringstream texts(line.substr(end));
        auto& row = rows.emplace_back(line.substr(0, end), Texts{});
        std::getline(texts, row.second.intl, '\t');
        std::getline(texts, row.second.platform, '\t');
    }
    return rows;
}

std::map<Request, Texts> Differences()
{
    const Table rows = Rows("differences.tsv");
    return {rows.begin(), rows.end()};
}

// Whether the differences were listed for the ICU that is used here.
bool KnowsThisIcu()
{
    std::ifstream file = Open("differences.tsv");
    const std::string wanted = "# platform: ICU " + std::to_string(U_ICU_VERSION_MAJOR_NUM);
    for (std::string line; std::getline(file, line);) {
        if (line == wanted) return true;
    }
    return false;
}

// Node's Intl writes the narrow space before "AM" as a space.
std::string WithPlainSpaces(std::string text)
{
    const std::string narrow = "\u202f";
    for (std::size_t at; (at = text.find(narrow)) != std::string::npos;) text.replace(at, narrow.size(), " ");
    return text;
}

std::string ByThePlatform(const Request& request)
{
    std::istringstream fields(request);
    std::string language, zone, instant, skeleton;
    for (std::string* field : {&language, &zone, &instant, &skeleton}) std::getline(fields, *field, '\t');
    CommonUtilI18NDateFormatter formatter(skeleton, zone, language, true);
    return WithPlainSpaces(formatter.Format(std::stoll(instant), kCommonUtilI18NTimestampMilliseconds));
}

TEST(DatesBesideIntl, are_many)
{
    EXPECT_EQ(Rows("dates.tsv").size(), std::size_t{12 * 4 * 3 * 22});
}

TEST(DatesBesideIntl, read_the_same_or_as_listed)
{
    if (!KnowsThisIcu()) GTEST_SKIP() << "the differences are listed for another version of ICU";
    const auto differences = Differences();
    for (const auto& [request, texts] : Rows("dates.tsv")) {
        if (differences.contains(request)) continue;
        const std::string text = ByThePlatform(request);
        EXPECT_EQ(text, texts.intl) << "to be listed, if it is right:\n"
                                    << request << texts.intl << "\t" << text;
    }
    for (const auto& [request, texts] : differences)
        EXPECT_EQ(ByThePlatform(request), texts.platform) << request;
}

// Also with another version of ICU: languages change, clocks and calendars do not.
TEST(DatesBesideIntl, hardly_differ)
{
    const Table rows = Rows("dates.tsv");
    std::size_t different = 0;
    for (const auto& [request, texts] : rows) different += ByThePlatform(request) != texts.intl;
    EXPECT_LE(different, rows.size() / 10);
}

TEST(DatesBesideIntl, are_listed_only_where_they_differ)
{
    const Table rows = Rows("dates.tsv");
    const std::map<Request, Texts> table(rows.begin(), rows.end());
    for (const auto& [request, texts] : Differences()) {
        ASSERT_TRUE(table.contains(request)) << request;
        EXPECT_EQ(texts.intl, table.at(request).intl) << request;
        EXPECT_NE(texts.intl, texts.platform) << request;
    }
}

}  // namespace
