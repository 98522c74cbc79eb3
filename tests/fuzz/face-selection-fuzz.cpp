// Selections, lists of limited sources and world clocks, as peers and editors could send them, on a document
// that offers everything. The input is a sequence of lines, each one entry: a letter, and fields after tabs.

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "character-count.h"
#include "document-oracle.h"
#include "limited-complications.h"
#include "world-clock.h"

namespace {

using DataUtil::FaceDocument;

const std::string& Everything()
{
    static const std::string text = [] {
        std::ifstream in(EVERYTHING, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }();
    return text;
}

std::vector<std::string> Split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        parts.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

// What an attribute may hold without making the text something else than XML.
bool IsText(const std::vector<std::string>& fields)
{
    for (const std::string& field : fields) {
        if (!DataUtil::CountCharacters(field)) return false;
    }
    return true;
}

struct Requests {
    DataUtil::Selection selection;
    std::vector<std::vector<std::string>> clocks;
    std::vector<std::string> limits;
};

Requests Read(std::string_view input)
{
    Requests requests;
    for (const std::string& line : Split(input, '\n')) {
        std::vector<std::string> fields = Split(line, '\t');
        fields.resize(7);
        DataUtil::Selection& selection = requests.selection;
        const bool isText = IsText(fields);
        if (fields[0] == "c") requests.clocks.push_back(fields);
        if (fields[0] == "l") requests.limits.push_back(fields[1]);
        if (fields[0] == "r" && isText) selection.preset = fields[1];
        if (fields[0] == "p" && isText) selection.picks[fields[1]] = fields[2];
        if (fields[0] == "f" && isText) selection.photos[fields[1]] = fields[2];
        if (fields[0] == "s" && isText) {
            DataUtil::Placement placement{fields[2], {}};
            const DataUtil::WorldClock clock{fields[3], fields[4], fields[5], fields[6]};
            if (clock != DataUtil::WorldClock()) placement.worldClock = clock;
            selection.places[fields[1]] = placement;
        }
    }
    return requests;
}

template <typename Value>
bool IsPart(const std::map<std::string, Value>& part, const std::map<std::string, Value>& whole)
{
    for (const auto& [id, value] : part) {
        const auto at = whole.find(id);
        if (at == whole.end() || !(at->second == value)) return false;
    }
    return true;
}

void CheckAccepted(const FaceDocument& document, const DataUtil::Selection& asked)
{
    const DataUtil::Selection selection = DataUtil::SelectionOf(document);
    if (!IsPart(selection.picks, asked.picks) || !IsPart(selection.places, asked.places) ||
        !IsPart(selection.photos, asked.photos) ||
        (!selection.preset.empty() && selection.preset != asked.preset))
        Fuzz::Fail("something selected that was not asked for", document.id);
    Fuzz::CheckFlattening(document);
}

void CheckClock(FaceDocument document, const std::vector<std::string>& fields)
{
    const std::string before = DataUtil::Flatten(document);
    const auto orNull = [&](std::size_t i) { return fields[i] == "-" ? nullptr : fields[i].c_str(); };
    std::string problem;
    if (DataUtil::UpdateWorldClock(document, orNull(1), {orNull(2), orNull(3), orNull(4), orNull(5)},
                                   problem))
        return Fuzz::CheckFlattening(document);
    if (problem.empty() || DataUtil::Flatten(document) != before)
        Fuzz::Fail("a record that was refused has changed the document", problem);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Requests requests = Read(std::string_view(reinterpret_cast<const char*>(data), size));
    const std::string text = DataUtil::WithSelection(Everything(), requests.selection);
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    Fuzz::CheckFindings(parsed.findings, text);
    if (DataUtil::WithSelection(text, {}) != DataUtil::WithSelection(Everything(), {}))
        Fuzz::Fail("a selection that changes the author's part", text);
    if (!parsed.document) return 0;
    CheckAccepted(*parsed.document, requests.selection);
    for (const auto& fields : requests.clocks) CheckClock(*parsed.document, fields);
    for (const std::string& sources : requests.limits) {
        FaceDocument document = *parsed.document;
        DataUtil::RemoveLimited(document, DataUtil::LimitRule(sources.c_str()));
        if (DataUtil::HasLimited(document, DataUtil::LimitRule(sources.c_str())))
            Fuzz::Fail("a limited complication that stays", sources);
        Fuzz::CheckFlattening(document);
    }
    return 0;
}
