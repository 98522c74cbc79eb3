// Installing and updating watch faces: install, update.

#include <sys/inotify.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "application-table.h"
#include "areas.h"
#include "connection.h"
#include "event-loop-sdevent.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "files.h"
#include "json-text.h"
#include "peer.h"
#include "private-watch.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr double kPatience = 20;
constexpr char kResultSuffix[] = "_result";

struct InstallArguments {
    std::string type;  // of the message
    std::string file, name, icon, label;
    std::string as = "com.corvane.w-manager-service";
    bool noWait = false;
    double timeout = kPatience;
};

// Which picture lies at a path: changes with every replacement.
struct FileMark {
    ino_t inode = 0;
    timespec changed{};
    bool operator==(const FileMark& other) const
    {
        return inode == other.inode && changed.tv_sec == other.changed.tv_sec &&
               changed.tv_nsec == other.changed.tv_nsec;
    }
};

FileMark MarkOfFile(const std::string& path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? FileMark{info.st_ino, info.st_ctim} : FileMark{};
}

// The user's icon, copied to where the service may read it, while this lives.
class IconCopy {
public:
    IconCopy(const std::string& icon, const std::string& app, const std::string& face)
    {
        if (icon.empty()) return;
        std::ifstream file(icon, std::ios::binary);
        char signature[8] = {};
        if (!file) throw Stop(Exit::kNotFound, "the picture [" + icon + "] cannot be read");
        if (!file.read(signature, sizeof signature) || std::string(signature, 4) != "\x89PNG") {
            throw Stop(Exit::kError, "[" + icon + "] is no PNG");
        }
        const std::string folder = Platform::CurrentAreas().DataOf(app) + "wfctl/";
        mPath = folder + face + ".png";
        if (ecore_file_mkpath(folder.c_str()) && CommonUtilFile::Copy(fs::absolute(icon).string(), mPath))
            return;
        throw Stop(Exit::kError, "the picture [" + icon + "] could not be copied to [" + mPath + "]");
    }
    ~IconCopy()
    {
        if (!mPath.empty()) ecore_file_remove(mPath.c_str());
    }
    IconCopy(const IconCopy&) = delete;
    IconCopy& operator=(const IconCopy&) = delete;
    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

// What the service and the data library wrote into the watch's log from here on.
class LogTail {
public:
    LogTail() : mPath(WatchPaths{Platform::CurrentAreas().root}.Log())
    {
        std::error_code error;
        const auto size = fs::file_size(mPath, error);
        mStart = error ? 0 : size;
    }
    // The lines that say why a document was refused; empty when there is no such log.
    std::string Reasons() const
    {
        std::ifstream log(mPath, std::ios::binary);
        log.seekg(static_cast<std::streamoff>(mStart));
        std::string reasons;
        for (std::string line; std::getline(log, line);) {
            const bool isRefusal =
                line.find("W/platform(") != std::string::npos && line.find(" refused") != std::string::npos;
            if (isRefusal || line.find("/data-util(") != std::string::npos) reasons += "\n  " + line;
        }
        return reasons;
    }

private:
    const std::string mPath;
    std::uintmax_t mStart = 0;
};

struct Document {
    std::string xml, name, label;
};

// The face's name and label where the user gave none: the document's own.
Document ReadDocument(const InstallArguments& arguments)
{
    Document document{ReadNamedFile(arguments.file), arguments.name, arguments.label};
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(document.xml);
    if (parsed.document) {
        if (document.name.empty()) document.name = parsed.document->id;
        if (document.label.empty()) document.label = TitleOf(arguments.file);
    }
    std::string stem = fs::path(arguments.file).stem().string();
    if (document.name.empty() && stem.ends_with(kResultSuffix)) {
        document.name = stem.substr(0, stem.size() - std::string_view(kResultSuffix).size());
    }
    if (document.name.empty()) {
        throw Stop(Exit::kUsage,
                   "[" + arguments.file +
                       "] does not say which watch face it is, because it cannot be read as one; "
                       "type: wfctl flatten " +
                       ShellQuoted(arguments.file) + ", or say --name NAME");
    }
    return document;
}

Platform::BundlePtr NewMessage(const InstallArguments& arguments, const Document& document,
                               const std::string& icon)
{
    Platform::BundlePtr message(bundle_create());
    message->Set("type", arguments.type);
    message->Set("pkgid", document.name);
    message->Set("data/xml_data", document.xml);
    if (!document.label.empty()) message->Set("data/label", document.label);
    if (!icon.empty()) message->Set("data/icon_path", icon);
    return message;
}

std::string TextOf(const bundle& message, const char* key)
{
    const auto it = message.values.find(std::string_view(key));
    const auto* text = it == message.values.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : "";
}

bool IsNotOlder(const std::string& path, const std::string& than)
{
    struct stat one {
    }, other{};
    if (stat(path.c_str(), &one) != 0 || stat(than.c_str(), &other) != 0) return false;
    const bool sameSecond = one.st_mtim.tv_sec == other.st_mtim.tv_sec;
    return sameSecond ? one.st_mtim.tv_nsec >= other.st_mtim.tv_nsec
                      : one.st_mtim.tv_sec > other.st_mtim.tv_sec;
}

// Waits until another picture lies at the face's preview path: one that is not older than the document,
// because a picture that was asked for before may come meanwhile.
bool AwaitPreview(Connection& connection, const Face& face, const FileMark& before, Seconds most)
{
    const auto hasChanged = [&] {
        const FileMark now = MarkOfFile(face.Preview());
        return now.inode != 0 && !(now == before) && IsNotOlder(face.Preview(), face.WatchfaceXml());
    };
    sd_event_source* raw = nullptr;
    const auto wakeUp = [](sd_event_source*, const inotify_event*, void*) { return 0; };
    sd_event_add_inotify(Platform::MainLoop(), &raw, face.folder.c_str(),
                         IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE, wakeUp, nullptr);
    const Platform::EventSourcePtr source(raw);
    return connection.RunUntil(hasChanged, most);
}

[[noreturn]] void Refused(const Document& document, const LogTail& log)
{
    const std::string reasons = log.Reasons();
    throw Stop(Exit::kError, "the service refused [" + document.name + "]; " +
                                 (reasons.empty() ? "look for data-util in " + LogPlace("data-util")
                                                  : "its log says:" + reasons));
}

Exit Install(const Options& options, const InstallArguments& arguments)
{
    const PeerAddress self = ParsePeer(arguments.as, true);
    const Document document = ReadDocument(arguments);
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    const Face face = WritableFace(document.name);
    const FileMark before = MarkOfFile(face.Preview());
    const IconCopy icon(arguments.icon, self.app, document.name);
    const LogTail log;
    std::string status;
    Peer peer(
        connection, self, true, [&](const std::string& app, const std::string& port, const bundle& reply) {
            const bool isOurs = app == Platform::kServiceId && TextOf(reply, "pkgid") == document.name &&
                                TextOf(reply, "type") == arguments.type;
            if (!isOurs || !status.empty() || TextOf(reply, "status").empty()) return;
            status = TextOf(reply, "status");
            PrintLine(JsonLine(MessageToJson(app, port, reply)));
        });
    peer.Send(ParsePeer(std::string(Platform::kServiceId), true), true,
              *NewMessage(arguments, document, icon.Path()));
    if (!connection.RunUntil([&] { return !status.empty(); }, Seconds(arguments.timeout))) {
        throw Stop(Exit::kNoAnswer,
                   "the service took the message but did not answer [" + self.app +
                       "]; it answers the settings list, the editor, home and the phone-side manager");
    }
    if (status != "success") Refused(document, log);
    if (arguments.noWait || AwaitPreview(connection, face, before, Seconds(arguments.timeout)))
        return Exit::kDone;
    throw Stop(Exit::kNoAnswer, "[" + document.name + "] is stored, but no new preview came to [" +
                                    face.Preview() +
                                    "] in time; `wfctl status` says whether the capture application runs");
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
    parser.add_flag("--no-wait", arguments->noWait, "do not wait for the preview");
    parser.add_option("--timeout", arguments->timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(CLI::NonNegativeNumber);
    return [arguments](const Options& options) { return Install(options, *arguments); };
}

}  // namespace

Action DefineInstall(CLI::App& parser)
{
    return Define(parser, "watch-setting-created");
}
Action DefineUpdate(CLI::App& parser)
{
    return Define(parser, "watch-setting-updated");
}

}  // namespace Wfctl
