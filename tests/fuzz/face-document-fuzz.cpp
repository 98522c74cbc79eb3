// Result XMLs: reading, converting, and everything that is asked of a document that was accepted.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "document-oracle.h"
#include "limited-complications.h"
#include "usage-items.h"
#include "world-clock.h"

namespace {

using DataUtil::FaceDocument;

void CheckSelection(const std::string& text, const FaceDocument& document)
{
    const DataUtil::Selection selection = DataUtil::SelectionOf(document);
    const std::string written = DataUtil::WithSelection(text, selection);
    if (DataUtil::WithSelection(written, {}) != DataUtil::WithSelection(text, {}))
        Fuzz::Fail("a selection that changes the author's part", written);
    for (const std::string& other : {written, DataUtil::Migrate(text, text).text}) {
        const DataUtil::ParseResult parsed = DataUtil::ParseFace(other);
        if (!parsed.document) Fuzz::Fail("a selection that is refused", other);
        if (!(DataUtil::SelectionOf(*parsed.document) == selection))
            Fuzz::Fail("a selection that does not come back", other);
        if (DataUtil::Flatten(*parsed.document) != DataUtil::Flatten(document))
            Fuzz::Fail("a selection that shows something else", other);
    }
}

void CheckLimits(FaceDocument document, const char* sources)
{
    const DataUtil::LimitRule rule(sources);
    DataUtil::RemoveLimited(document, rule);
    if (DataUtil::HasLimited(document, rule)) Fuzz::Fail("a limited complication that stays", document.id);
    Fuzz::CheckFlattening(document);
}

void CheckUsage(const FaceDocument& document)
{
    if (DataUtil::UsageItemsOf(document).picks.size() > 2) Fuzz::Fail("three pairs", document.id);
    DataUtil::CombinationText(document);
}

void CheckWorldClocks(const FaceDocument& document)
{
    for (const DataUtil::Slot& slot : document.slots) {
        FaceDocument updated = document;
        std::string problem;
        const DataUtil::WorldClockUpdate update{
            .city = "Lima", .country = "", .timezonePath = "America/Lima"};
        const bool done = DataUtil::UpdateWorldClock(updated, slot.name.c_str(), update, problem);
        if (done != (slot.OfferOf(DataUtil::kWorldClockSource) != nullptr))
            Fuzz::Fail("a world clock where none is offered, or none where one is", slot.name);
        Fuzz::CheckFlattening(updated);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    Fuzz::CheckFindings(parsed.findings, text);
    if (!parsed.document) return 0;
    Fuzz::CheckFlattening(*parsed.document);
    CheckSelection(text, *parsed.document);
    CheckLimits(*parsed.document, nullptr);
    CheckLimits(*parsed.document, "worldclock date battery");
    CheckUsage(*parsed.document);
    CheckWorldClocks(*parsed.document);
    return 0;
}
