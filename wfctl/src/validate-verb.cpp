// All that is wrong with face documents: validate.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <utility>

#include "asset-checks.h"
#include "documents.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "flat-checks.h"
#include "json-text.h"
#include "locale-findings.h"
#include "private-watch.h"
#include "reading-files.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

struct ValidateArguments {
    std::vector<std::string> what;
};

// What was found in a document, or why nobody can look at it.
struct Checked {
    std::string file;
    std::string root;
    std::vector<DataUtil::Finding> findings;
    Exit status = Exit::kDone;
    std::string obstacle;
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

bool IsRefused(const std::vector<DataUtil::Finding>& findings)
{
    return std::ranges::any_of(findings, [](const DataUtil::Finding& finding) {
        return finding.severity == DataUtil::Severity::kError;
    });
}

Checked Check(const std::string& file)
{
    const std::string text = ReadNamedFile(file);
    const DocumentFacts facts = FactsOf(text);
    std::vector<DataUtil::Finding> findings;
    if (facts.root == kFlatRoot) {
        findings = DataUtil::CheckFlat(text);
    } else {
        const auto assets = DataUtil::CheckAssets(text, FoldersOfFile(file, facts.id));
        findings = Merged(DataUtil::ParseFace(text).findings, assets);
    }
    findings = WithUnknownLocales(text, std::move(findings));
    const Exit status = IsRefused(findings) ? Exit::kError : Exit::kDone;
    return {file, facts.root, std::move(findings), status, ""};
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
    if (checked.status == Exit::kDone && checked.findings.empty()) PrintLine(checked.file + ": good");
}

Json ToJson(const Checked& checked)
{
    const bool isGood = checked.status == Exit::kDone;
    const Json findings = FindingsJson(checked.file, checked.findings);
    Json one = Json::object({
        {"file",     BytesToJson(checked.file)},
        {"kind",     BytesToJson(checked.root)},
        {"good",     isGood                   },
        {"findings", findings                 }
    });
    if (!checked.obstacle.empty()) one["obstacle"] = BytesToJson(checked.obstacle);
    return one;
}

// Looks at all that was named, whatever of it cannot be looked at.
class Validation {
public:
    explicit Validation(bool isJson) : mIsJson(isJson) {}

    void LookAt(const std::string& what)
    {
        try {
            for (const std::string& file : FilesOf(what)) LookAtFile(file);
        } catch (const Stop& stop) {
            TakeObstacle(what, stop);
        }
    }

    // The worst status of all.
    Exit Finish() const
    {
        if (mIsJson) PrintLine(JsonLine(mAll));
        return mWorst;
    }

private:
    void LookAtFile(const std::string& file)
    {
        try {
            Take(Check(file));
        } catch (const Stop& stop) {
            TakeObstacle(file, stop);
        }
    }

    void TakeObstacle(const std::string& name, const Stop& stop)
    {
        Checked checked;
        checked.file = name;
        checked.status = stop.Status();
        checked.obstacle = stop.what();
        std::fprintf(stderr, "wfctl: %s\n", stop.what());
        Take(checked);
    }

    void Take(const Checked& checked)
    {
        mWorst = std::max(mWorst, checked.status);
        if (mIsJson)
            mAll.push_back(ToJson(checked));
        else
            Print(checked);
    }

    const bool mIsJson;
    Json mAll = Json::array();
    Exit mWorst = Exit::kDone;
};

Exit Validate(const Options& options, const ValidateArguments& arguments)
{
    // A watch that is not running has faces and assets too.
    SelectWatch(options.root);
    Validation validation(options.json);
    for (const std::string& what : arguments.what) validation.LookAt(what);
    return validation.Finish();
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
