// Each code of the format has a planted fault that it reports, at the right line, alone and among others.

#include "planted-faults.h"

#include <algorithm>
#include <random>
#include <set>

#include "a-face-document.h"
#include "asset-checks.h"
#include "xml-gate.h"

using testing::Contains;
using testing::ElementsAre;
using testing::UnorderedElementsAreArray;

namespace {

std::string Everything()
{
    return TextOf(DOCUMENTS "/everything_result.xml");
}

int LineIn(const std::string& text, std::string_view where)
{
    const std::size_t at = text.find(where);
    EXPECT_NE(at, std::string::npos) << where;
    return 1 +
           static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

using Reported = std::pair<std::string, int>;  // code, line

std::vector<Reported> ReportsOf(const std::string& text)
{
    std::vector<Reported> reports;
    for (const DataUtil::Finding& finding : DataUtil::ParseFace(text).findings)
        reports.emplace_back(finding.code, finding.line);
    return reports;
}

// Faults of the whole text, after which nothing else of it is looked at, and those of its assets.
struct WholeFault {
    const char* code;
    std::string (*plant)(std::string);
    int line;
};

std::string Instead(std::string text, std::string_view from, std::string_view to)
{
    return text.replace(text.find(from), from.size(), to);
}

std::string Times(int count, std::string_view text)
{
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

const WholeFault kWholeFaults[] = {
    {"E-SYNTAX",         [](std::string text) { return Instead(std::move(text), "Noon<", "N<oon<"); },          7},
    {"E-DOCTYPE",        [](std::string text) { return Instead(std::move(text), "<!--", "<!DOCTYPE a><!--"); }, 2},
    {"E-ENCODING",       [](std::string text) { return Instead(std::move(text), "UTF-8", "latin1"); },          1},
    {"E-LIMIT-SIZE",     [](std::string text) { return text.append(DataUtil::kMostBytes, ' '); },               1},
    {"E-LIMIT-DEPTH",
     [](std::string text) { return Instead(std::move(text), "Noon<", Times(14, "<a>") + "<"); },                7},
    {"E-LIMIT-COUNT",
     [](std::string text) { return Instead(std::move(text), "Noon<", Times(8192, "<a/>") + "<"); },             7},
    {"E-ROOT",           [](std::string) { return std::string("\n<watchface/>"); },                             2},
    {"E-FORMAT-VERSION",
     [](std::string text) { return Instead(std::move(text), "format=\"1\"", "format=\"2\""); },                 3},
};

}  // namespace

TEST(APlantedFault, is_reported_alone_at_its_line)
{
    ASSERT_THAT(ReportsOf(Everything()), testing::IsEmpty());
    for (const PlantedFault& fault : PlantedFaults()) {
        const std::string text = Plant(Everything(), fault);
        EXPECT_THAT(ReportsOf(text), ElementsAre(Reported(fault.code, LineIn(text, fault.where))))
            << fault.to;
    }
}

TEST(APlantedFault, is_reported_at_its_line_among_any_others)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        std::vector<PlantedFault> faults(PlantedFaults().begin(), PlantedFaults().end());
        std::shuffle(faults.begin(), faults.end(), random);
        faults.resize(2 + random() % (faults.size() - 1));
        std::string text = Everything();
        for (const PlantedFault& fault : faults) text = Plant(std::move(text), fault);
        std::vector<Reported> expected;
        expected.reserve(faults.size());
        for (const PlantedFault& fault : faults) expected.emplace_back(fault.code, LineIn(text, fault.where));
        EXPECT_THAT(ReportsOf(text), UnorderedElementsAreArray(expected)) << "seed " << seed;
    }
}

TEST(AFaultOfTheWholeText, is_the_only_one_reported)
{
    for (const WholeFault& fault : kWholeFaults) {
        EXPECT_THAT(ReportsOf(fault.plant(Everything())), ElementsAre(Reported(fault.code, fault.line)))
            << fault.code;
    }
}

TEST(AFaultOfTheWholeText, is_that_it_has_too_many_faults)
{
    const auto reports = ReportsOf(Instead(Everything(), "<scene>", "<scene>" + Times(2000, "<nothing/>")));
    EXPECT_EQ(reports.back(), Reported("E-LIMIT-FINDINGS", 0));
}

TEST(ThePlantedFaults, cover_every_code_of_the_format_page)
{
    std::set<std::string> planted = {
        "E-LIMIT-FINDINGS",                                           // above
        "E-ASSET-MISSING",    "E-ASSET-TYPE",   "W-ASSET-SIZE",       // asset-checks-test.cpp
        "W-LANGUAGE-UNKNOWN", "W-ZONE-UNKNOWN", "W-COUNTRY-UNKNOWN",  // wfctl's locale-findings.cpp
    };
    for (const PlantedFault& fault : PlantedFaults()) planted.insert(fault.code);
    for (const WholeFault& fault : kWholeFaults) planted.insert(fault.code);
    const std::string page = TextOf(FORMAT_PAGE);
    int codes = 0;
    for (const std::string start : {"\n| `E-", "\n| `W-", "\n| `N-"}) {
        for (std::size_t at = 0; (at = page.find(start, at)) != std::string::npos; ++at) {
            const std::size_t begin = page.find('`', at) + 1;
            const std::string code = page.substr(begin, page.find('`', begin) - begin);
            EXPECT_THAT(planted, Contains(code));
            ++codes;
        }
    }
    EXPECT_GE(codes, 34);
}
