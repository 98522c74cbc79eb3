// The watch's previews: preview request, preview check.

#include <algorithm>
#include <filesystem>
#include <memory>

#include "connection.h"
#include "documents.h"
#include "exit-status.h"
#include "face-update.h"
#include "faces.h"
#include "json-text.h"
#include "preview-state.h"
#include "private-watch.h"
#include "progress.h"
#include "shell-command.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

struct PreviewArguments {
    std::vector<std::string> faces;
    std::string as = kEditorId;
    double timeout = kPatience;
};

std::vector<Face> FindAll(const std::vector<std::string>& names)
{
    std::vector<Face> faces;
    faces.reserve(names.size());
    for (const std::string& name : names) faces.push_back(RequireFace(name));
    return faces;
}

Exit Request(const Options& options, const PreviewArguments& arguments)
{
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    std::vector<FaceUpdate> updates;
    for (const Face& face : FindAll(arguments.faces))
        updates.push_back(SameAgain(face, Seconds(arguments.timeout)));
    FaceUpdater updater(connection, arguments.as);
    Json previews = Json::array();
    const Progress progress("drawing", updates.size(), !options.json);
    for (const FaceUpdate& update : updates) {
        updater.Store(update);
        const std::string preview = WritableFace(update.name).Preview();
        previews.push_back(Json::object({
            {"face",    BytesToJson(update.name)},
            {"preview", BytesToJson(preview)    }
        }));
        progress.Clear();
        if (!options.json) PrintLine(preview);
        progress.Show(previews.size());
    }
    if (options.json) PrintLine(JsonLine(previews));
    return Exit::kDone;
}

Json ReportJson(const Face& face, const PreviewReport& report)
{
    Json one = Json::object({
        {"face",    BytesToJson(face.name)           },
        {"preview", BytesToJson(face.Preview())      },
        {"state",   std::string(NameOf(report.state))}
    });
    if (report.picture.kind != PngKind::kNone) {
        one["width"] = report.picture.width;
        one["height"] = report.picture.height;
    }
    return one;
}

Exit Check(const Options& options, const PreviewArguments& arguments)
{
    SelectWatch(options.root);
    const std::vector<Face> faces = arguments.faces.empty() ? RequireFaces() : FindAll(arguments.faces);
    std::size_t width = 0;
    for (const Face& face : faces) width = std::max(width, face.name.size());
    Json reports = Json::array();
    std::string bad;
    for (const Face& face : faces) {
        const PreviewReport report = CheckPreview(face);
        if (report.state != PreviewState::kGood) bad += " " + ShellWord(face.name);
        reports.push_back(ReportJson(face, report));
        if (options.json) continue;
        std::string name = face.name;
        name.resize(width, ' ');
        std::string size;
        if (report.picture.kind != PngKind::kNone) {
            size = ", " + std::to_string(report.picture.width) + "x" + std::to_string(report.picture.height);
        }
        PrintLine(name + "  " + std::string(TextOf(report.state)) + size);
    }
    if (options.json) PrintLine(JsonLine(reports));
    if (bad.empty()) return Exit::kDone;
    throw Stop(Exit::kError, "not every preview is good; type: " + WatchCommand("preview request" + bad));
}

}  // namespace

Action DefinePreviewRequest(CLI::App& parser)
{
    const auto arguments = std::make_shared<PreviewArguments>();
    parser.add_option("FACE", arguments->faces, "the watch faces")->required();
    parser.add_option("--as", arguments->as, "the application that asks (default: the editor)")
        ->type_name("APP");
    parser.add_option("--timeout", arguments->timeout, "how long to wait for each (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Request(options, *arguments); };
}

Action DefinePreviewCheck(CLI::App& parser)
{
    const auto arguments = std::make_shared<PreviewArguments>();
    parser.add_option("FACE", arguments->faces, "the watch faces (default: all)");
    return [arguments](const Options& options) { return Check(options, *arguments); };
}

}  // namespace Wfctl
