// Installing and updating watch faces: install, update.

#include <filesystem>
#include <memory>
#include <set>

#include "asset-checks.h"
#include "connection.h"
#include "documents.h"
#include "exit-status.h"
#include "face-document.h"
#include "face-update.h"
#include "faces.h"
#include "json-text.h"
#include "missing-assets.h"
#include "picture-output.h"
#include "private-watch.h"
#include "reading-files.h"
#include "shell-command.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

struct InstallArguments {
    std::string type;  // of the message
    std::string file, name, icon, label;
    std::string as = kManagerId;
    bool keepsSelection = false;
    bool noWait = false;
    double timeout = kPatience;
};

struct Document {
    std::string xml, name, label;
    std::set<std::string> assets;
};

// The service makes a face's folder before it looks at the document, so a bad one is not even sent. The name
// and the label are the document's own where the user gave none.
Document ReadDocument(const InstallArguments& arguments)
{
    const std::string xml = ReadNamedFile(arguments.file);
    const DataUtil::FaceDocument face = ParsedOrRefused(arguments.file, xml);
    return {xml, arguments.name.empty() ? face.id : arguments.name,
            arguments.label.empty() ? FactsOf(xml).title : arguments.label, DataUtil::AssetPaths(face)};
}

// What the user had chosen, in the new document too; what it does not offer any more is told.
void KeepSelection(Document& document)
{
    const auto stored = FindFace(document.name);
    std::error_code error;
    if (!stored || !fs::exists(stored->ResultXml(), error)) return;
    DataUtil::Migrated migrated = DataUtil::Migrate(document.xml, ReadNamedFile(stored->ResultXml()));
    PrintFindings(stored->ResultXml(), migrated.notes);
    document.xml = std::move(migrated.text);
}

void PrintReply(const Options& options, const FaceUpdate& update, const Json& reply)
{
    if (options.json) return PrintLine(JsonLine(reply));
    if (!IsSuccess(reply)) return;
    PrintLine((update.type == kCreated ? "installed " : "updated ") + update.name +
              (update.label.empty() ? "" : " (" + update.label + ")"));
}

void PrintPreview(const Face& face)
{
    ShowPicture(face.Preview());
    PrintLine(face.Preview());
}

Exit Install(const Options& options, const InstallArguments& arguments)
{
    Document document = ReadDocument(arguments);
    SelectWatch(options.root);
    if (arguments.keepsSelection) KeepSelection(document);
    Connection connection;
    RequireService(connection);
    FaceUpdater updater(connection, arguments.as);
    const FaceUpdate update{arguments.type,
                            document.name,
                            document.xml,
                            document.label,
                            arguments.icon,
                            !arguments.noWait,
                            Seconds(arguments.timeout),
                            arguments.file};
    updater.Store(update, [&](const Json& reply) { PrintReply(options, update, reply); });
    if (update.awaitsPreview && !options.json) PrintPreview(WritableFace(update.name));
    WarnOfMissingAssets(document.name, document.assets);
    return Exit::kDone;
}

Action Define(CLI::App& parser, const char* type)
{
    const auto arguments = std::make_shared<InstallArguments>();
    arguments->type = type;
    parser.add_option("RESULT.xml", arguments->file, "the face's result XML")->required();
    parser.add_option("--name", arguments->name, "the watch face's name (default: the document's id)")
        ->type_name("NAME");
    parser.add_option("--icon", arguments->icon, "a preview to start with")->type_name("PNG");
    parser.add_option("--label", arguments->label, "the name to display (default: the document's title)")
        ->type_name("TEXT");
    parser.add_option("--as", arguments->as, "the application that asks (default: the phone-side manager)")
        ->type_name("APP");
    parser.add_flag("--keep-selection", arguments->keepsSelection,
                    "take over what is chosen in the stored face, and say what is gone");
    parser.add_flag("--no-wait", arguments->noWait, "do not wait for the preview");
    parser.add_option("--timeout", arguments->timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Install(options, *arguments); };
}

}  // namespace

Action DefineInstall(CLI::App& parser)
{
    return Define(parser, kCreated);
}
Action DefineUpdate(CLI::App& parser)
{
    return Define(parser, kUpdated);
}

}  // namespace Wfctl
