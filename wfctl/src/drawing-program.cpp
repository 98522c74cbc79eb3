#include "drawing-program.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "application-table.h"
#include "areas.h"
#include "child-process.h"
#include "documents.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "json-text.h"
#include "locale-findings.h"
#include "process.h"
#include "reading-files.h"
#include "settings.h"
#include "temporary-folder.h"
#include "value-store-sqlite.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr char kDrawingProgram[] = "watchface-capture";
constexpr std::size_t kDocumentWord = 1;  // of its words

// A result XML that the user named. Its assets lie beside it, and those that do not in the folder of the
// watch's face that it is a copy of.
Drawable Flattened(const std::string& file, const std::string& text)
{
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    PrintFindings(file, WithUnknownLocales(text, parsed.findings));
    if (!parsed.document) throw Stop(Exit::kError, "[" + file + "] is refused, so there is nothing to draw");
    const std::string& id = parsed.document->id;
    std::vector<std::string> assets = {fs::absolute(file).parent_path()};
    if (const auto face = FindFace(id)) assets.push_back(face->folder);
    const DocumentFacts facts = FactsOf(text);
    return {"",
            ShippedFaces(),
            id,
            facts.title,
            facts.isRound,
            file,
            std::move(assets),
            DataUtil::Flatten(*parsed.document)};
}

std::string SettingText(std::string_view name)
{
    const Platform::SystemSetting& setting = *Platform::FindSystemSetting(name);
    std::error_code error;
    if (!fs::exists(Platform::KeysPath(), error)) return ValueText(SettingFromEnvironment(setting));
    Platform::ValueStore keys(Platform::KeysPath(), 0660);
    return ValueText(SettingValue(keys, setting));
}

std::vector<std::string> WordsFor(const Picture& picture, const std::string& document)
{
    std::vector<std::string> words = {"--draw",
                                      document,
                                      picture.out,
                                      "--language",
                                      picture.look.language,
                                      "--hours",
                                      picture.look.is24Hours ? "24" : "12",
                                      "--timezone",
                                      picture.look.timezone,
                                      "--trusted",
                                      Platform::CurrentAreas().TrustedOf(std::string(Platform::kFacesId))};
    if (!picture.what.faces.empty()) words.insert(words.end(), {"--faces", picture.what.faces});
    for (const std::string& folder : picture.what.assets) words.insert(words.end(), {"--assets", folder});
    if (picture.look.size > 0) words.insert(words.end(), {"--size", std::to_string(picture.look.size)});
    return words;
}

std::string Program()
{
    std::string program = Platform::InstallPrefix() + "/" WATCH_LIBEXECDIR "/watch/" + kDrawingProgram;
    if (access(program.c_str(), X_OK) == 0) return program;
    throw Stop(Exit::kNotFound,
               "the drawing program [" + program + "] is missing; build or install it first");
}

// "watchface.xml:41:3: warning: …", with the document's name as the user knows it, and without a place that
// the user's document does not have.
std::string AsKnown(std::string line, const std::string& document, const Drawable& about)
{
    if (!line.starts_with(document + ":")) return line;
    line.erase(0, document.size());
    if (about.made.empty()) return about.shownAs + line;
    return about.shownAs + ":" + line.substr(std::min(line.find_first_not_of(":0123456789"), line.size()));
}

// Passes on what was said about a picture.
void PrintComplaints(const Command& command, const Drawable& about, std::set<std::string>& printed)
{
    std::ifstream lines(command.errors);
    for (std::string line; std::getline(lines, line);) {
        line = AsKnown(std::move(line), command.arguments[kDocumentWord], about);
        if (printed.insert(line).second) std::fprintf(stderr, "%s\n", line.c_str());
    }
}

}  // namespace

Drawable FindDrawable(const std::string& what)
{
    if (!IsFileName(what)) {
        const Face face = RequireFace(what, Beside::kFiles);
        const DocumentFacts facts = FactsOf(ReadNamedFile(face.WatchfaceXml()));
        return {face.WatchfaceXml(), ShippedFaces(), face.name,
                facts.title,         facts.isRound,  face.WatchfaceXml()};
    }
    const std::string text = ReadNamedFile(what);
    const DocumentFacts facts = FactsOf(text);
    if (facts.root == kResultRoot) return Flattened(what, text);
    return {what, "", fs::absolute(what).stem().string(), facts.title, facts.isRound, what};
}

Look WatchLook()
{
    return {SettingText("language"), SettingText("timezone"), SettingText("24-hour") == "true"};
}

std::vector<bool> Draw(const std::vector<Picture>& pictures, const std::function<void(std::size_t)>& onDrawn)
{
    const std::string program = Program();
    const TemporaryFolder scratch;
    std::vector<Command> commands;
    commands.reserve(pictures.size());
    for (const Picture& picture : pictures) {
        const std::string own = scratch.Path() + "/" + std::to_string(commands.size());
        if (!picture.what.made.empty()) WriteFile(own + ".xml", picture.what.made);
        const std::string document = picture.what.made.empty() ? picture.what.document : own + ".xml";
        commands.push_back({program, WordsFor(picture, document), own});
    }
    const std::vector<int> statuses = RunPrograms(commands, std::thread::hardware_concurrency(), onDrawn);
    std::set<std::string> printed;
    std::vector<bool> drawn;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        PrintComplaints(commands[i], pictures[i].what, printed);
        drawn.push_back(statuses[i] == 0);
    }
    return drawn;
}

}  // namespace Wfctl
