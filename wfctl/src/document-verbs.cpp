// Face documents without a watch: flatten, render.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

#include "arguments.h"
#include "child-process.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "json-text.h"
#include "private-watch.h"
#include "process.h"
#include "settings.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr char kDrawingProgram[] = "watchface-capture";

struct FlattenArguments {
    std::string file, out;
};

struct RenderArguments {
    std::string what, out, language, timezone;
    int hours = 0;
    int size = 0;
};

void WriteOut(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text << std::flush;
    if (!file) throw Stop(Exit::kError, "the file [" + path + "] cannot be written: " + std::strerror(errno));
}

void PrintFindings(const std::string& file, const std::vector<DataUtil::Finding>& findings)
{
    for (const DataUtil::Finding& finding : findings) {
        std::fprintf(stderr, "%s:%s\n", file.c_str(), DataUtil::FormatFinding(finding).c_str());
    }
}

Json FindingsJson(const std::vector<DataUtil::Finding>& findings)
{
    Json array = Json::array();
    for (const DataUtil::Finding& finding : findings) {
        array.push_back(Json::object({
            {"code",    finding.code                },
            {"line",    finding.line                },
            {"column",  finding.column              },
            {"path",    BytesToJson(finding.path)   },
            {"message", BytesToJson(finding.message)}
        }));
    }
    return array;
}

Exit FlattenFile(const Options& options, const FlattenArguments& arguments)
{
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(ReadNamedFile(arguments.file));
    if (!options.json) PrintFindings(arguments.file, parsed.findings);
    const std::string flat = parsed.document ? DataUtil::Flatten(*parsed.document) : std::string();
    if (parsed.document && !arguments.out.empty()) WriteOut(arguments.out, flat);
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"accepted",  parsed.document.has_value()                 },
            {"findings",  FindingsJson(parsed.findings)               },
            {"watchface", parsed.document ? Json(flat) : Json(nullptr)}
        })));
    } else if (parsed.document && arguments.out.empty()) {
        std::fwrite(flat.data(), 1, flat.size(), stdout);
    }
    return parsed.document ? Exit::kDone : Exit::kError;
}

// A folder that goes with its scope.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (fs::temp_directory_path() / "wfctl-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw Stop(Exit::kError, std::string("no temporary folder: ") + std::strerror(errno));
        mPath = name;
    }
    ~TemporaryFolder()
    {
        std::error_code error;
        fs::remove_all(mPath, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

// What the drawing program gets: the flat document, and the folder of faces with more assets.
struct Drawable {
    std::string document;
    std::string faces;
    std::string name;  // for the picture
};

// A file that the user named; a result XML is flattened into `scratch`.
Drawable DrawableOfFile(const std::string& file, const std::string& scratch)
{
    const std::string text = ReadNamedFile(file);
    const fs::path path = fs::absolute(file);
    if (text.find("<face-result") == std::string::npos) return {file, "", path.stem().string()};
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    PrintFindings(file, parsed.findings);
    if (!parsed.document) throw Stop(Exit::kError, "[" + file + "] is refused, so there is nothing to draw");
    const std::string id = parsed.document->id;
    WriteOut(scratch + "/watchface.xml", DataUtil::Flatten(*parsed.document));
    // A face's assets lie beside its result XML; one that lies elsewhere is an edited copy of a shipped
    // face's.
    const auto shipped = FindFace(id);
    const bool isCopy = shipped && path.parent_path().filename() != id;
    std::error_code error;
    fs::create_directory_symlink(isCopy ? fs::path(shipped->folder) : path.parent_path(),
                                 fs::path(scratch) / id, error);
    return {scratch + "/watchface.xml", scratch, id};
}

Drawable FindDrawable(const std::string& what, const std::string& scratch)
{
    std::error_code error;
    if (fs::is_regular_file(what, error)) return DrawableOfFile(what, scratch);
    const auto face = FindFace(what);
    if (!face) {
        throw Stop(Exit::kNotFound, "there is no file and no watch face [" + what + "]; type: wfctl list");
    }
    return {face->WatchfaceXml(), ShippedFaces(), face->name};
}

std::string SettingText(std::string_view name)
{
    const Platform::SystemSetting& setting = *Platform::FindSystemSetting(name);
    std::error_code error;
    if (!fs::exists(Platform::KeysPath(), error)) return ValueText(SettingFromEnvironment(setting));
    Platform::ValueStore keys(Platform::KeysPath(), 0660);
    return ValueText(SettingValue(keys, setting));
}

void Show(const Options& options, const std::string& picture)
{
    if (options.json)
        return PrintLine(JsonLine(Json::object({
            {"picture", BytesToJson(picture)}
        })));
    const std::string viewer = isatty(STDOUT_FILENO) && WantsColor() ? FindProgram("chafa") : std::string();
    if (!viewer.empty()) RunProgram(viewer, {"--size=40x20", picture});
    PrintLine(picture);
}

Exit Render(const Options& options, const RenderArguments& arguments)
{
    // Without a running watch the environment's areas are looked at, and only read.
    SelectWatch(options.root);
    const std::string program = Platform::InstallPrefix() + "/" WATCH_LIBEXECDIR "/watch/" + kDrawingProgram;
    if (access(program.c_str(), X_OK) != 0) {
        throw Stop(Exit::kNotFound,
                   "the drawing program [" + program + "] is missing; build or install it first");
    }
    const TemporaryFolder scratch;
    const Drawable drawable = FindDrawable(arguments.what, scratch.Path());
    const std::string out = arguments.out.empty() ? drawable.name + ".png" : arguments.out;
    std::string hours = std::to_string(arguments.hours);
    if (arguments.hours == 0) hours = SettingText("24-hour") == "true" ? "24" : "12";
    std::vector<std::string> words = {
        "--draw",
        drawable.document,
        out,
        "--language",
        arguments.language.empty() ? SettingText("language") : arguments.language,
        "--hours",
        hours,
        "--timezone",
        arguments.timezone.empty() ? SettingText("timezone") : arguments.timezone};
    if (!drawable.faces.empty()) words.insert(words.end(), {"--faces", drawable.faces});
    if (arguments.size > 0) words.insert(words.end(), {"--size", std::to_string(arguments.size)});
    if (RunProgram(program, words) != 0)
        throw Stop(Exit::kError, "[" + arguments.what + "] could not be drawn");
    Show(options, out);
    return Exit::kDone;
}

}  // namespace

Action DefineFlatten(CLI::App& parser)
{
    const auto arguments = std::make_shared<FlattenArguments>();
    parser.add_option("RESULT.xml", arguments->file, "the result XML; - is stdin")->required();
    parser.add_option("-o", arguments->out, "where the flat document goes (default: stdout)")
        ->type_name("OUT");
    return [arguments](const Options& options) { return FlattenFile(options, *arguments); };
}

Action DefineRender(CLI::App& parser)
{
    const auto arguments = std::make_shared<RenderArguments>();
    parser
        .add_option("FILE|NAME", arguments->what,
                    "a result XML, a watchface.xml, or a watch face of the watch")
        ->required();
    parser.add_option("-o", arguments->out, "the picture (default: the face's name with .png)")
        ->type_name("OUT.png");
    parser.add_option("--language", arguments->language, "of texts and dates (default: the watch's)")
        ->type_name("L");
    parser.add_option("--hours", arguments->hours, "12 or 24 (default: the watch's)")
        ->type_name("N")
        ->check(CLI::IsMember({12, 24}));
    parser.add_option("--timezone", arguments->timezone, "of the preview's time (default: the watch's)")
        ->type_name("TZ");
    parser.add_option("--size", arguments->size, "pixels of the longer side")
        ->type_name("N")
        ->check(CLI::Range(1, 4096));
    return [arguments](const Options& options) { return Render(options, *arguments); };
}

}  // namespace Wfctl
