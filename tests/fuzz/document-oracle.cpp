#include "document-oracle.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <tuple>

#include "flat-checks.h"
#include "flat-schema.h"

namespace Fuzz {

void Fail(const char* what, std::string_view text)
{
    std::fprintf(stderr, "%s:\n%.*s\n", what, static_cast<int>(text.size()), text.data());
    std::abort();
}

void CheckFindings(const std::vector<DataUtil::Finding>& findings, std::string_view text)
{
    const auto lines = static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1;
    const DataUtil::Finding* last = nullptr;
    for (const DataUtil::Finding& finding : findings) {
        const std::string line = DataUtil::FormatFinding(finding);
        const bool placed = finding.line >= 0 && finding.line <= lines && finding.column >= 0 &&
                            finding.column <= static_cast<int>(text.size()) + 1;
        if (!placed) Fail("a finding outside of the text", line);
        if (finding.code.size() < 5 || finding.message.empty() || line.find('\n') != std::string::npos)
            Fail("a finding that is not one line", line);
        const bool summary = finding.code == "E-LIMIT-FINDINGS";
        if (last != nullptr && !summary &&
            std::tie(last->line, last->column) > std::tie(finding.line, finding.column))
            Fail("findings out of order", line);
        last = &finding;
    }
}

void CheckFlattening(const DataUtil::FaceDocument& document)
{
    const std::string flat = DataUtil::Flatten(document);
    if (flat != DataUtil::Flatten(document)) Fail("two flat documents of one", flat);
    if (flat.size() > DataUtil::kMostBytes) return;
    const auto findings = DataUtil::CheckFlat(flat);
    CheckFindings(findings, flat);
    for (const DataUtil::Finding& finding : findings) {
        if (finding.severity == DataUtil::Severity::kError)
            Fail(DataUtil::FormatFinding(finding).c_str(), flat);
    }
    DataUtil::Findings unused;
    DataUtil::Node root;
    const auto tree = DataUtil::XmlTree::Load(flat, unused);
    DataUtil::ReadNodes(*tree, DataUtil::FlatSchema(), root, unused);
    if (DataUtil::ReadTexts(root, unused) != document.texts) Fail("texts that have changed", flat);
}

}  // namespace Fuzz
