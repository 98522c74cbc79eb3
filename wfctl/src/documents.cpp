#include "documents.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <tuple>
#include <utility>

#include "exit-status.h"
#include "locale-findings.h"
#include "nearest-name.h"
#include "private-watch.h"
#include "xml-gate.h"

namespace Wfctl {

namespace {

// In the order of DataUtil::Severity.
constexpr const char* kSeverities[] = {"error", "warning", "note"};

}  // namespace

DocumentFacts FactsOf(std::string_view document)
{
    DataUtil::Findings ignored;
    const auto tree = DataUtil::XmlTree::Load(document, ignored);
    if (!tree) return {};
    const pugi::xml_node root = tree->Root();
    const auto text = [&root](const char* name) { return root.attribute(name).value(); };
    const std::string first = text("default-language");
    DocumentFacts facts{root.name(),
                        text("id"),
                        text("version"),
                        {},
                        text("width"),
                        text("height"),
                        std::string_view(text("shape")) != "square",
                        {}};
    for (const pugi::xml_node strings : root.children("strings")) {
        const std::string language = strings.attribute("language").value();
        const bool isDefault = language == first;
        facts.languages.insert(isDefault ? facts.languages.begin() : facts.languages.end(), language);
        if (!isDefault) continue;
        const pugi::xml_node title = strings.find_child_by_attribute("string", "key", text("title-key"));
        facts.title = title.child_value();
    }
    return facts;
}

bool IsFileName(const std::string& what)
{
    std::error_code error;
    return what == "-" || what == "." || what == ".." || what.find('/') != std::string::npos ||
           what.ends_with(".xml") || std::filesystem::is_regular_file(what, error);
}

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text << std::flush;
    if (!file) throw Stop(Exit::kError, "the file [" + path + "] cannot be written: " + std::strerror(errno));
}

std::vector<DataUtil::Finding> Merged(std::vector<DataUtil::Finding> findings,
                                      const std::vector<DataUtil::Finding>& more)
{
    findings.insert(findings.end(), more.begin(), more.end());
    std::ranges::stable_sort(findings, {}, [](const DataUtil::Finding& finding) {
        return std::tuple(finding.line == 0, finding.line, finding.column);
    });
    return findings;
}

std::string FindingLine(const std::string& file, const DataUtil::Finding& finding)
{
    return file + ":" + DataUtil::FormatFinding(finding);
}

void PrintFindings(const std::string& file, const std::vector<DataUtil::Finding>& findings)
{
    for (const DataUtil::Finding& finding : findings) {
        std::fprintf(stderr, "%s\n", FindingLine(file, finding).c_str());
    }
}

DataUtil::FaceDocument ParsedOrRefused(const std::string& file, const std::string& xml)
{
    DataUtil::ParseResult parsed = DataUtil::ParseFace(xml);
    if (parsed.document) return *std::move(parsed.document);
    PrintFindings(file, WithUnknownLocales(xml, parsed.findings));
    throw Stop(Exit::kError,
               "[" + file + "] is refused, so nothing is sent; type: wfctl validate " + ShellQuoted(file));
}

Json FindingsJson(const std::string& file, const std::vector<DataUtil::Finding>& findings)
{
    Json array = Json::array();
    for (const DataUtil::Finding& finding : findings) {
        const std::string nearest(DataUtil::SuggestedName(finding.message));
        array.push_back(Json::object({
            {"severity", kSeverities[static_cast<std::size_t>(finding.severity)]},
            {"code",     finding.code                                           },
            {"file",     BytesToJson(file)                                      },
            {"line",     finding.line                                           },
            {"column",   finding.column                                         },
            {"path",     BytesToJson(finding.path)                              },
            {"message",  BytesToJson(finding.message)                           },
            {"nearest",  nearest.empty() ? Json(nullptr) : BytesToJson(nearest) }
        }));
    }
    return array;
}

}  // namespace Wfctl
