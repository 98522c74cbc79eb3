// Changing what a face shows: edit.

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>

#include "connection.h"
#include "documents.h"
#include "exit-status.h"
#include "face-document.h"
#include "face-update.h"
#include "faces.h"
#include "hint.h"
#include "json-text.h"
#include "locale-findings.h"
#include "photo-files.h"
#include "picture-output.h"
#include "private-watch.h"
#include "reading-files.h"
#include "selection-edit.h"
#include "shell-command.h"
#include "verb-table.h"
#include "xml-gate.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

struct EditArguments {
    std::string face;
    SelectionChanges changes;
    std::string as = kEditorId;
    bool dryRun = false;
    double timeout = kPatience;
};

struct StoredFace {
    Face face;
    std::string xml;
    DataUtil::FaceDocument document;
};

StoredFace ReadStored(const std::string& name)
{
    const Face face = RequireFace(name);
    std::error_code error;
    if (!fs::exists(face.ResultXml(), error))
        throw Stop(Exit::kError, "[" + name + "] has no result XML, so there is nothing to choose");
    const std::string xml = ReadNamedFile(face.ResultXml());
    return {face, xml, ParsedOrRefused(face.ResultXml(), xml)};
}

// The new selection as it stands in the document.
std::string SelectionText(const std::string& xml)
{
    DataUtil::Findings ignored;
    const auto tree = DataUtil::XmlTree::Load(xml, ignored);
    const pugi::xml_node selection = tree ? tree->Root().child("selection") : pugi::xml_node();
    std::ostringstream text;
    if (selection) selection.print(text, "  ");
    return selection ? text.str() : "<selection/>\n";
}

// Of pictures that are named now, or that the face begins to show.
void WarnOfMissingPhotos(const DataUtil::FaceDocument& document, const DataUtil::Selection& old,
                         const SelectionChanges& changes)
{
    std::error_code error;
    for (const DataUtil::Photos& photos : document.photos) {
        const auto file = document.selection.photos.find(photos.id);
        if (file == document.selection.photos.end()) continue;
        const auto before = old.photos.find(photos.id);
        const bool isSame = before != old.photos.end() && before->second == file->second;
        const std::string named = photos.id + "=" + file->second;
        if (isSame && std::ranges::find(changes.photos, named) == changes.photos.end()) continue;
        const std::string path = PhotoPath(photos, file->second);
        if (fs::is_regular_file(path, error)) continue;
        const std::vector<std::string> present = PicturesIn(fs::path(path).parent_path());
        Warn(
            "there is no picture [" + path + "] yet" +
            OrMeant(file->second, NamesOf(present), "until there is, [" + photos.id + "] shows its default"));
    }
}

Json DifferencesJson(const std::vector<Difference>& differences)
{
    Json array = Json::array();
    for (const Difference& one : differences) {
        array.push_back(Json::object({
            {"what",   one.what               },
            {"before", BytesToJson(one.before)},
            {"after",  BytesToJson(one.after) },
            {"shown",  !one.isHidden          }
        }));
    }
    return array;
}

void PrintDifferences(const std::vector<Difference>& differences)
{
    for (const Difference& one : differences) {
        PrintLine(one.what + ": " + one.before + " -> " + one.after + (one.isHidden ? "  (hidden now)" : ""));
    }
}

void PrintDryRun(const Options& options, const std::vector<Difference>& differences, const std::string& xml)
{
    const std::string selection = SelectionText(xml);
    if (options.json) {
        return PrintLine(JsonLine(Json::object({
            {"changes",   DifferencesJson(differences)},
            {"selection", BytesToJson(selection)      }
        })));
    }
    PrintDifferences(differences);
    PrintLine(selection.substr(0, selection.find_last_not_of('\n') + 1));
}

void PrintEdited(const Options& options, const Face& face, const std::vector<Difference>& differences)
{
    if (options.json) {
        return PrintLine(JsonLine(Json::object({
            {"face",    BytesToJson(face.name)      },
            {"changes", DifferencesJson(differences)},
            {"preview", BytesToJson(face.Preview()) }
        })));
    }
    PrintDifferences(differences);
    ShowPicture(face.Preview());
    PrintLine(face.Preview());
}

Exit Edit(const Options& options, const EditArguments& arguments)
{
    SelectWatch(options.root);
    const StoredFace old = ReadStored(arguments.face);
    if (arguments.changes.IsEmpty()) {
        throw Stop(Exit::kUsage, "what should change? say --pick, --place, --preset, --photo or --reset; `" +
                                     WatchCommand("show " + ShellWord(arguments.face)) +
                                     "` lists what there is to choose");
    }
    const DataUtil::Selection selection = Changed(old.document, arguments.changes);
    const std::string xml = DataUtil::WithSelection(old.xml, selection);
    const DataUtil::FaceDocument document = ParsedOrRefused(old.face.ResultXml(), xml);
    const std::vector<Difference> differences = DifferencesOf(old.document, document);
    WarnOfMissingPhotos(document, old.document.selection, arguments.changes);
    if (arguments.dryRun) {
        PrintDryRun(options, differences, xml);
        return Exit::kDone;
    }
    if (selection == DataUtil::SelectionOf(old.document))
        throw Stop(Exit::kNothingToDo, "nothing to do: [" + arguments.face + "] is so already");
    Connection connection;
    RequireService(connection);
    FaceUpdater updater(connection, arguments.as);
    updater.Store({kUpdated, old.face.name, xml, FactsOf(xml).title, "", true, Seconds(arguments.timeout),
                   old.face.ResultXml()});
    PrintEdited(options, WritableFace(old.face.name), differences);
    return Exit::kDone;
}

}  // namespace

Action DefineEdit(CLI::App& parser)
{
    const auto arguments = std::make_shared<EditArguments>();
    SelectionChanges& changes = arguments->changes;
    parser.add_option("FACE", arguments->face, "the watch face")->required();
    parser.add_option("--pick", changes.picks, "choose an option of a group; without one its default")
        ->type_name("GROUP=OPTION")
        ->allow_extra_args(false);
    parser
        .add_option("--place", changes.places,
                    "show a source in a slot, a world clock of any city; without one its default")
        ->type_name("SLOT=SOURCE[@ZONE[:CITY]]")
        ->allow_extra_args(false);
    parser
        .add_option_function<std::string>(
            "--preset", [arguments](const std::string& id) { arguments->changes.preset = id; },
            "choose a preset; '' for none")
        ->type_name("ID");
    parser.add_option("--photo", changes.photos, "show a picture by its bare name; without one the default")
        ->type_name("PHOTOS=FILE")
        ->allow_extra_args(false);
    parser.add_flag("--reset", changes.reset, "first drop all that was chosen");
    parser.add_flag("--dry-run", arguments->dryRun, "print what would change, and the new selection");
    parser.add_option("--as", arguments->as, "the application that asks (default: the editor)")
        ->type_name("APP");
    parser.add_option("--timeout", arguments->timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Edit(options, *arguments); };
}

}  // namespace Wfctl
