// What is told about the languages, time zones and countries of a document.

#include "locale-findings.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "documents.h"
#include "flat-checks.h"

using namespace Wfctl;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

std::string TextOf(const fs::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A flat document with one language, two clocks and a layer.
struct Locales {
    const char* language = "en";
    const char* country = "Japan";
    const char* path = "Asia/Tokyo";
    const char* zone = "JST";
    const char* ofLayer = "UTC";
};

std::string DocumentWith(const Locales& locales)
{
    const std::string language = locales.language;
    return "<watchface format=\"1\" id=\"com.example.dawn\" version=\"1\" width=\"360\" height=\"360\" "
           "shape=\"round\" default-language=\"" +
           language +
           "\" preview-time=\"10:08:36\" title-key=\"title\">\n"
           "<strings language=\"" +
           language +
           "\"><string key=\"title\">Dawn</string></strings>\n"
           "<layer timezone=\"" +
           locales.ofLayer +
           "\"/>\n"
           "<complication name=\"top\" group=\"data\" source=\"worldclock\" city=\"Tokyo\" country=\"" +
           locales.country + "\" timezone=\"" + locales.zone + "\" timezone-path=\"" + locales.path +
           "\" role=\"text\" x=\"1\" y=\"1\" width=\"9\" height=\"9\" color=\"#FFFFFF\"/>\n</watchface>\n";
}

// The lines that are told, without the path.
std::vector<std::string> ToldOfText(const std::string& document)
{
    std::vector<std::string> lines;
    for (const DataUtil::Finding& finding : WithUnknownLocales(document, DataUtil::CheckFlat(document))) {
        const std::string line = DataUtil::FormatFinding(finding);
        lines.push_back(line.substr(0, line.rfind(" [/")));
    }
    return lines;
}

std::vector<std::string> ToldOf(const Locales& locales)
{
    return ToldOfText(DocumentWith(locales));
}

}  // namespace

TEST(ADocumentsZone, that_is_misspelled_is_told_with_its_place_and_what_is_meant)
{
    EXPECT_THAT(ToldOf({.ofLayer = "Europe/Berlni"}),
                ElementsAre("3:8: W-ZONE-UNKNOWN: there is no time zone \"Europe/Berlni\"; "
                            "did you mean \"Europe/Berlin\"?"));
}

TEST(ADocumentsZone, that_is_misspelled_in_a_path_is_meant_in_that_path)
{
    EXPECT_THAT(ToldOf({.path = "/usr/share/zoneinfo/Asia/Tokio"}),
                ElementsAre(testing::EndsWith("did you mean \"/usr/share/zoneinfo/Asia/Tokyo\"?")));
}

TEST(ADocumentsZone, that_is_like_no_other_is_told_with_its_form)
{
    EXPECT_THAT(ToldOf({.ofLayer = "Mars/Olympus"}),
                ElementsAre(testing::EndsWith("no time zone \"Mars/Olympus\"; write an id as "
                                              "\"America/New_York\"")));
}

TEST(ADocumentsZone, may_be_called_anything_beside_its_path)
{
    EXPECT_THAT(ToldOf({.zone = "Japan Standard Time"}), IsEmpty());
    EXPECT_THAT(ToldOf({.zone = "Asia/Tokio"}), ElementsAre(testing::EndsWith("\"Asia/Tokyo\"?")));
}

TEST(ADocumentsZone, may_be_a_distance_from_greenwich)
{
    EXPECT_THAT(ToldOf({.path = "GMT+9", .ofLayer = "Etc/GMT-9"}), IsEmpty());
}

TEST(ADocumentsLanguage, that_there_is_not_is_told_with_hyphens)
{
    EXPECT_THAT(ToldOf({.language = "pt-BX"}),
                testing::Each(testing::ContainsRegex("[12]:.*: W-LANGUAGE-UNKNOWN: there is no language "
                                                     "\"pt-BX\"; did you mean \"pt-B")));
    EXPECT_EQ(ToldOf({.language = "pt-BX"}).size(), 2U);
}

TEST(ADocumentsCountry, that_is_misspelled_is_told)
{
    EXPECT_THAT(
        ToldOf({.country = "Jpaan"}),
        ElementsAre("4:72: W-COUNTRY-UNKNOWN: there is no country \"Jpaan\"; did you mean \"Japan\"?"));
}

TEST(ADocumentsCountry, may_be_in_any_language_or_any_text)
{
    for (const char* shown : {"Giappone", "Japón", "日本", "Nippon", "JAPAN", "Land of the rising sun"})
        EXPECT_THAT(ToldOf({.country = shown}), IsEmpty()) << shown;
}

TEST(ADocumentsSlip, that_is_refused_is_told_no_second_time)
{
    std::string document = DocumentWith({});
    const std::string right = "default-language=\"en\"";
    document.replace(document.find(right), right.size(), "default-language=\"en-QQ\"");
    EXPECT_THAT(ToldOfText(document), ElementsAre(testing::HasSubstr("E-REF-UNKNOWN")));
}

TEST(ADocumentsSlips, stand_among_its_other_findings_by_place)
{
    std::string document = DocumentWith({.language = "de-QQ", .ofLayer = "Europe/Berlni"});
    document.replace(document.find("</watchface>"), 0, "<circle cx=\"9\" cy=\"9\" r=\"9\"/>\n");
    const auto told = ToldOfText(document);
    ASSERT_EQ(told.size(), 4U);
    EXPECT_THAT(told[1], testing::StartsWith("2:"));
    EXPECT_THAT(told[2], testing::StartsWith("3:8: W-ZONE"));
    EXPECT_THAT(told[3], testing::StartsWith("5:1: W-INVISIBLE"));
}

TEST(ADocumentsSlips, are_no_more_than_checking_keeps)
{
    std::string invisible;
    for (std::size_t i = 1; i < DataUtil::Findings::kMostFindings; ++i)
        invisible += "<circle cx=\"9\" cy=\"9\" r=\"9\"/>";
    std::string document =
        DocumentWith({.country = "Jpaan", .path = "Asia/Tokio", .ofLayer = "Europe/Berlni"});
    document.insert(document.find("</watchface>"), invisible);
    EXPECT_EQ(ToldOfText(document).size(), DataUtil::Findings::kMostFindings);
}

TEST(ListsOfFindings, become_one_by_place_which_says_last_that_it_is_not_all)
{
    const auto at = [](const char* code, int line, int column) {
        return DataUtil::Finding{DataUtil::Severity::kError, code, line, column, "", ""};
    };
    const auto all = Merged({at("a", 1, 2), at("c", 9, 1), at("E-LIMIT-FINDINGS", 0, 0)}, {at("b", 2, 1)});
    std::vector<std::string> codes;
    for (const DataUtil::Finding& finding : all) codes.push_back(finding.code);
    EXPECT_THAT(codes, ElementsAre("a", "b", "c", "E-LIMIT-FINDINGS"));
}

TEST(AShippedDocument, names_languages_zones_and_countries_that_there_are)
{
    int documents = 0;
    for (const char* folder : {"/watchfaces", "/docs/examples"}) {
        for (const auto& entry : fs::recursive_directory_iterator(std::string(PROJECT) + folder)) {
            if (entry.path().extension() != ".xml") continue;
            ++documents;
            EXPECT_THAT(WithUnknownLocales(TextOf(entry.path()), {}), IsEmpty()) << entry.path();
        }
    }
    EXPECT_GE(documents, 17);
}
