#include "finding.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace DataUtil {

namespace {

Severity SeverityOf(std::string_view code)
{
    switch (code.front()) {
        case 'E':
            return Severity::kError;
        case 'W':
            return Severity::kWarning;
        default:
            return Severity::kNote;
    }
}

// A character of a name, or one that is often typed for one.
bool IsOfName(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_';
}

// Messages quote the document; a quoted control character must not break the line.
std::string OneLine(std::string message)
{
    for (char& c : message) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
    }
    return message;
}

}  // namespace

void Findings::Add(std::string_view code, const Place& place, std::string message)
{
    const Severity severity = SeverityOf(code);
    if (severity == Severity::kError) mHasErrors = true;
    if (IsFull()) return;
    mFindings.push_back(
        {severity, std::string(code), place.line, place.column, place.path, OneLine(std::move(message))});
}

void Findings::Refuse(std::string_view value)
{
    std::string name;
    for (const char c : value) {
        if (IsOfName(c)) {
            name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c == '_' ? '-' : c;
        } else {
            mRefusedNames.insert(std::exchange(name, {}));
        }
    }
    mRefusedNames.insert(std::move(name));
}

std::vector<Finding> Findings::Take()
{
    std::stable_sort(mFindings.begin(), mFindings.end(), [](const Finding& a, const Finding& b) {
        return std::tie(a.line, a.column) < std::tie(b.line, b.column);
    });
    if (IsFull()) {
        mFindings.push_back({Severity::kError, "E-LIMIT-FINDINGS", 0, 0, "",
                             "the first " + std::to_string(kMostFindings) +
                                 " findings are listed, then checking stopped; mend these first"});
    }
    return std::exchange(mFindings, {});
}

std::string FormatFinding(const Finding& finding)
{
    std::string text = std::to_string(finding.line) + ":" + std::to_string(finding.column) + ": " +
                       finding.code + ": " + finding.message;
    if (!finding.path.empty()) text += " [" + finding.path + "]";
    return text;
}

}  // namespace DataUtil
