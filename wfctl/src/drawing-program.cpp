#include "drawing-program.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "application-table.h"
#include "areas.h"
#include "arguments.h"
#include "child-process.h"
#include "documents.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "json-text.h"
#include "locale-findings.h"
#include "process.h"
#include "settings.h"
#include "temporary-folder.h"
#include "value-store-sqlite.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr char kDrawingProgram[] = "watchface-capture";

// A result XML that the user named.
Drawable FlattenedInto(const std::string& scratch, const std::string& file, const std::string& text)
{
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    PrintFindings(file, WithUnknownLocales(text, parsed.findings));
    if (!parsed.document) throw Stop(Exit::kError, "[" + file + "] is refused, so there is nothing to draw");
    const std::string& id = parsed.document->id;
    WriteFile(scratch + "/watchface.xml", DataUtil::Flatten(*parsed.document));
    // A face's assets lie beside its result XML; one that lies elsewhere is an edited copy of a shipped
    // face's.
    const fs::path folder = fs::absolute(file).parent_path();
    const auto shipped = FindFace(id);
    const bool isCopy = shipped && folder.filename() != id;
    std::error_code error;
    fs::create_directory_symlink(isCopy ? fs::path(shipped->folder) : folder, fs::path(scratch) / id, error);
    const DocumentFacts facts = FactsOf(text);
    return {scratch + "/watchface.xml", scratch, id, facts.title, facts.isRound, file + " (flattened)"};
}

std::string SettingText(std::string_view name)
{
    const Platform::SystemSetting& setting = *Platform::FindSystemSetting(name);
    std::error_code error;
    if (!fs::exists(Platform::KeysPath(), error)) return ValueText(SettingFromEnvironment(setting));
    Platform::ValueStore keys(Platform::KeysPath(), 0660);
    return ValueText(SettingValue(keys, setting));
}

std::vector<std::string> WordsFor(const Picture& picture)
{
    std::vector<std::string> words = {"--draw",
                                      picture.what.document,
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

// Passes on what was said about a picture, with the document's name as the user knows it.
void PrintComplaints(const std::string& file, const Drawable& about, std::set<std::string>& printed)
{
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(about.document)) line.replace(0, about.document.size(), about.shownAs);
        if (printed.insert(line).second) std::fprintf(stderr, "%s\n", line.c_str());
    }
}

}  // namespace

Drawable FindDrawable(const std::string& what, const std::string& scratch)
{
    if (!IsFileName(what)) {
        const Face face = RequireFace(what, Beside::kFiles);
        const DocumentFacts facts = FactsOf(ReadNamedFile(face.WatchfaceXml()));
        return {face.WatchfaceXml(), ShippedFaces(), face.name,
                facts.title,         facts.isRound,  face.WatchfaceXml()};
    }
    const std::string text = ReadNamedFile(what);
    const DocumentFacts facts = FactsOf(text);
    if (facts.root == kResultRoot) return FlattenedInto(scratch, what, text);
    return {what, "", fs::absolute(what).stem().string(), facts.title, facts.isRound, what};
}

Look WatchLook()
{
    return {SettingText("language"), SettingText("timezone"), SettingText("24-hour") == "true"};
}

std::vector<bool> Draw(const std::vector<Picture>& pictures, const std::function<void(std::size_t)>& onDrawn)
{
    const std::string program = Program();
    const TemporaryFolder complaints;
    std::vector<Command> commands;
    commands.reserve(pictures.size());
    for (const Picture& picture : pictures) {
        commands.push_back(
            {program, WordsFor(picture), complaints.Path() + "/" + std::to_string(commands.size())});
    }
    const std::vector<int> statuses = RunPrograms(commands, std::thread::hardware_concurrency(), onDrawn);
    std::set<std::string> printed;
    std::vector<bool> drawn;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        PrintComplaints(commands[i].errors, pictures[i].what, printed);
        drawn.push_back(statuses[i] == 0);
    }
    return drawn;
}

}  // namespace Wfctl
