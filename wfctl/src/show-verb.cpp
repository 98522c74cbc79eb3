// What a face is and offers: show.

#include <filesystem>
#include <memory>

#include "application-table.h"
#include "documents.h"
#include "drawing-program.h"
#include "exit-status.h"
#include "face-summary.h"
#include "faces.h"
#include "json-text.h"
#include "locales-icu.h"
#include "picture-output.h"
#include "preview-state.h"
#include "private-watch.h"
#include "reading-files.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

struct ShowArguments {
    std::string what, language;
};

// The face's own document, or the flat one where it has no other.
std::string DocumentOf(const Face& face)
{
    std::error_code error;
    return std::filesystem::exists(face.ResultXml(), error) ? face.ResultXml() : face.WatchfaceXml();
}

void AddWatchFacts(const Face& face, Json& summary)
{
    const Current current = CurrentFace();
    const bool isCurrent = current.app == Platform::kFacesId && current.face == face.name;
    const PreviewReport preview = CheckPreview(face);
    summary["name"] = BytesToJson(face.name);
    summary["area"] = face.writable ? "read-write" : "read-only";
    summary["shipped"] = face.shipped;
    summary["current"] = isCurrent;
    summary["preview"] = Json::object({
        {"state", std::string(NameOf(preview.state))},
        {"text",  std::string(TextOf(preview.state))},
        {"file",  BytesToJson(face.Preview())       }
    });
}

Exit Show(const Options& options, const ShowArguments& arguments)
{
    SelectWatch(options.root);
    std::optional<Face> face;
    if (!IsFileName(arguments.what)) face = RequireFace(arguments.what, Beside::kFiles);
    const std::string file = face ? DocumentOf(*face) : arguments.what;
    const std::string xml = ReadNamedFile(file);
    if (!arguments.language.empty()) Warn(LanguageProblem(arguments.language));
    const std::string language = arguments.language.empty() ? WatchLook().language : arguments.language;
    const bool isFlat = FactsOf(xml).root == kFlatRoot;
    Json summary = isFlat ? SummaryOfFlat(xml) : SummaryOfResult(file, xml, language);
    summary["file"] = BytesToJson(file);
    if (face) AddWatchFacts(*face, summary);
    if (options.json) {
        PrintLine(JsonLine(summary));
        return Exit::kDone;
    }
    if (face && CheckPreview(*face).state != PreviewState::kMissing) ShowPicture(face->Preview());
    PrintSummary(summary);
    return Exit::kDone;
}

}  // namespace

Action DefineShow(CLI::App& parser)
{
    const auto arguments = std::make_shared<ShowArguments>();
    parser.add_option("FACE|FILE", arguments->what, "a watch face, a result XML or a watchface.xml")
        ->required();
    parser.add_option("--language", arguments->language, "of labels (default: the watch's)")->type_name("L");
    return [arguments](const Options& options) { return Show(options, *arguments); };
}

}  // namespace Wfctl
