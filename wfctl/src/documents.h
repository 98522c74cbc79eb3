// Face documents as files: telling the two kinds apart, and what checking them finds.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "face-document.h"
#include "finding.h"
#include "json-text.h"

namespace Wfctl {

// What both kinds of documents say at their beginning. All is empty when the text is no XML.
struct DocumentFacts {
    std::string root;  // kResultRoot, kFlatRoot or whatever stands there
    std::string id;
    std::string version;
    std::string title;  // in the default language
    std::string width, height;
    bool isRound = true;
    std::vector<std::string> languages;  // the default one first
};
inline constexpr char kResultRoot[] = "face-result";
inline constexpr char kFlatRoot[] = "watchface";
DocumentFacts FactsOf(std::string_view document);

// Where people may name a file or a watch face: whether this is a file, be it there or not.
bool IsFileName(const std::string& what);

void WriteFile(const std::string& path, const std::string& text);

// Findings of one document, by place; those of the whole document last.
std::vector<DataUtil::Finding> Merged(std::vector<DataUtil::Finding> findings,
                                      const std::vector<DataUtil::Finding>& more);

// "file:line:col: code: message".
std::string FindingLine(const std::string& file, const DataUtil::Finding& finding);

// To stderr, one line each.
void PrintFindings(const std::string& file, const std::vector<DataUtil::Finding>& findings);

// The document of a result XML; where it is refused its findings go to stderr, and the verb stops: before
// anything is sent. `file` is what the user named.
DataUtil::FaceDocument ParsedOrRefused(const std::string& file, const std::string& xml);

Json FindingsJson(const std::string& file, const std::vector<DataUtil::Finding>& findings);

}  // namespace Wfctl
