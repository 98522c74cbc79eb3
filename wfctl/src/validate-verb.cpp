// All that is wrong with face documents: validate.

#include <algorithm>
#include <filesystem>
#include <memory>

#include "arguments.h"
#include "asset-checks.h"
#include "documents.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "flat-checks.h"
#include "json-text.h"
#include "locale-findings.h"
#include "private-watch.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

struct ValidateArguments {
    std::vector<std::string> what;
};

// A document, and where the assets that it names are looked up.
struct Checked {
    std::string file;
    std::vector<std::string> folders;
    std::string root;
    std::vector<DataUtil::Finding> findings;
    bool isGood = false;
};

// Beside the document, and in the folder of the watch's face that it is an edited copy of.
std::vector<std::string> FoldersOfFile(const std::string& file, const std::string& id)
{
    std::vector<std::string> folders = {file == "-" ? "." : fs::absolute(file).parent_path().string()};
    if (const auto face = FindFace(id)) folders.push_back(face->folder);
    // A refused id may be any text, a way to elsewhere too.
    if (!id.empty() && id.find('/') == std::string::npos) folders.push_back(ShippedFaces() + id);
    return folders;
}

Checked Check(const std::string& file)
{
    const std::string text = ReadNamedFile(file);
    const DocumentFacts facts = FactsOf(text);
    Checked checked{file, {}, facts.root, {}};
    if (facts.root == kFlatRoot) {
        checked.findings = DataUtil::CheckFlat(text);
    } else {
        const auto assets = DataUtil::CheckAssets(text, FoldersOfFile(file, facts.id));
        checked.findings = Merged(DataUtil::ParseFace(text).findings, assets);
    }
    checked.findings = WithUnknownLocales(text, std::move(checked.findings));
    checked.isGood =
        std::none_of(checked.findings.begin(), checked.findings.end(),
                     [](const DataUtil::Finding& one) { return one.severity == DataUtil::Severity::kError; });
    return checked;
}

// The files that `what` names: itself, or the documents of a face of the watch.
std::vector<std::string> FilesOf(const std::string& what)
{
    if (IsFileName(what)) return {what};
    const Face face = RequireFace(what, Beside::kFiles);
    std::vector<std::string> files;
    std::error_code error;
    for (const std::string& file : {face.ResultXml(), face.WatchfaceXml()}) {
        if (fs::exists(file, error)) files.push_back(file);
    }
    return files;
}

void Print(const Checked& checked)
{
    for (const DataUtil::Finding& finding : checked.findings) PrintLine(FindingLine(checked.file, finding));
    if (checked.findings.empty()) PrintLine(checked.file + ": good");
}

Exit Validate(const Options& options, const ValidateArguments& arguments)
{
    // A watch that is not running has faces and assets too.
    SelectWatch(options.root);
    Json all = Json::array();
    std::size_t bad = 0;
    for (const std::string& what : arguments.what) {
        for (const std::string& file : FilesOf(what)) {
            const Checked checked = Check(file);
            if (!checked.isGood) ++bad;
            const Json findings = FindingsJson(file, checked.findings);
            all.push_back(Json::object({
                {"file",     BytesToJson(file)        },
                {"kind",     BytesToJson(checked.root)},
                {"good",     checked.isGood           },
                {"findings", findings                 }
            }));
            if (!options.json) Print(checked);
        }
    }
    if (options.json) PrintLine(JsonLine(all));
    return bad == 0 ? Exit::kDone : Exit::kError;
}

}  // namespace

Action DefineValidate(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValidateArguments>();
    parser.add_option("FILE|FACE", arguments->what, "result XMLs, watchface.xml files, watch faces")
        ->required();
    return [arguments](const Options& options) { return Validate(options, *arguments); };
}

}  // namespace Wfctl
