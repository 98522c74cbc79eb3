// The user's background pictures: bg add, del, save, cancel, list.

#include <algorithm>
#include <filesystem>
#include <memory>

#include "area-copy.h"
#include "bundle-data.h"
#include "exit-status.h"
#include "hint.h"
#include "photo-files.h"
#include "private-watch.h"
#include "service-peer.h"
#include "shell-command.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

struct BackgroundArguments {
    std::vector<std::string> names;  // files to add, names to delete
    std::string kind = kUsualPictures;
    std::string as = kEditorId;
    bool isPending = false;
    bool isDirect = false;
    double timeout = kPatience;
};

// "gallery-u1", "gallery", "digital".
std::string TypeOf(const BackgroundArguments& arguments)
{
    return "watch-bg-" + arguments.kind;
}

bundle NewMessage(const char* type, const BackgroundArguments& arguments)
{
    bundle message;
    message.Set("type", std::string(type));
    message.Set("bg_type", TypeOf(arguments));
    if (arguments.isPending) message.Set("watch-bg-pending", std::string("true"));
    return message;
}

void Ask(ServicePeer& peer, const bundle& message, const Options& options,
         const BackgroundArguments& arguments, const std::string& what)
{
    const Json reply = peer.Ask(message, Seconds(arguments.timeout));
    if (options.json) PrintLine(JsonLine(reply));
    if (IsSuccess(reply)) return;
    throw Stop(Exit::kError, "the service could not " + what + "; look for watchface-service in " +
                                 LogPlace("watchface-service"));
}

Exit Add(const Options& options, const BackgroundArguments& arguments)
{
    SelectWatch(options.root);
    for (const std::string& file : arguments.names) {
        if (KindOfPicture(file) == PictureKind::kNone)
            throw Stop(Exit::kError, "[" + file + "] is neither a PNG nor a JPEG");
    }
    Connection connection;
    RequireService(connection);
    ServicePeer peer(connection, arguments.as);
    for (const std::string& file : arguments.names) {
        const std::string name = fs::path(file).filename();
        const AreaCopy copy(file, peer.Application(), name);
        if (const std::string problem = PhotoProblem(copy.Path()); !problem.empty())
            Warn("[" + file + "] " + problem +
                 "; a face for which it is chosen shows its own picture instead");
        bundle message = NewMessage("watch-bg-add", arguments);
        message.Set("bg_list", copy.Path());
        Ask(peer, message, options, arguments, "add [" + file + "]");
        if (!options.json) PrintLine(PicturesFolder(arguments.kind) + name);
    }
    return Exit::kDone;
}

Exit Del(const Options& options, const BackgroundArguments& arguments)
{
    SelectWatch(options.root);
    const std::vector<std::string> present = PicturesIn(PicturesFolder(arguments.kind));
    for (const std::string& name : arguments.names) {
        if (std::ranges::find(present, name) != present.end()) continue;
        throw Stop(
            Exit::kNotFound,
            "there is no picture [" + name + "] in [" + PicturesFolder(arguments.kind) + "]" +
                OrMeant(name, NamesOf(present), "type: " + WatchCommand("bg list --type " + arguments.kind)));
    }
    Connection connection;
    RequireService(connection);
    ServicePeer peer(connection, arguments.as);
    bundle message = NewMessage("watch-bg-del", arguments);
    message.Set("bg_list", arguments.names);
    Ask(peer, message, options, arguments, "delete what was named");
    return Exit::kDone;
}

Exit EndPending(const Options& options, const BackgroundArguments& arguments, const char* type)
{
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    ServicePeer peer(connection, arguments.as);
    Ask(peer, NewMessage(type, arguments), options, arguments, "end what is pending");
    return Exit::kDone;
}

Exit List(const Options& options, const BackgroundArguments& arguments)
{
    SelectWatch(options.root);
    RequireRoot();
    const std::vector<std::string> names = PicturesIn(PicturesFolder(arguments.kind));
    if (options.json) {
        Json list = Json::array();
        for (const std::string& name : names) list.push_back(BytesToJson(name));
        PrintLine(JsonLine(Json::object({
            {"folder",   BytesToJson(PicturesFolder(arguments.kind))},
            {"pictures", list                                       }
        })));
        return Exit::kDone;
    }
    for (const std::string& name : names) PrintLine(name);
    return Exit::kDone;
}

void AddKind(CLI::App& parser, BackgroundArguments& arguments)
{
    parser
        .add_option(
            "--type", arguments.kind,
            "gallery-u1 (the pictures of that face; the default), gallery, or digital for the theme's")
        ->type_name("KIND")
        ->check([](const std::string& kind) {
            const bool known = kind == "digital" || kind == "gallery" || kind.starts_with("gallery-");
            return known ? std::string()
                         : "the kind is gallery-u1, gallery or digital, not " + kind +
                               OrMeant(kind, {"gallery-u1", "gallery", "digital"});
        });
}

void AddAsking(CLI::App& parser, BackgroundArguments& arguments)
{
    AddKind(parser, arguments);
    parser.add_option("--as", arguments.as, "the application that asks (default: the editor)")
        ->type_name("APP");
    parser.add_option("--timeout", arguments.timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
}

Action DefineEndPending(CLI::App& parser, const char* type)
{
    const auto arguments = std::make_shared<BackgroundArguments>();
    AddAsking(parser, *arguments);
    return [arguments, type](const Options& options) { return EndPending(options, *arguments, type); };
}

}  // namespace

Action DefineBgAdd(CLI::App& parser)
{
    const auto arguments = std::make_shared<BackgroundArguments>();
    parser.add_option("PICTURE", arguments->names, "PNG or JPEG files")->required();
    parser.add_flag("--pending", arguments->isPending, "taken back by `bg cancel`, kept by `bg save`");
    AddAsking(parser, *arguments);
    return [arguments](const Options& options) { return Add(options, *arguments); };
}

Action DefineBgDel(CLI::App& parser)
{
    const auto arguments = std::make_shared<BackgroundArguments>();
    parser.add_option("NAME", arguments->names, "names as `bg list` prints them")->required();
    parser.add_flag("--pending", arguments->isPending, "only once `bg save` comes");
    AddAsking(parser, *arguments);
    return [arguments](const Options& options) { return Del(options, *arguments); };
}

Action DefineBgSave(CLI::App& parser)
{
    return DefineEndPending(parser, "watch-bg-save");
}

Action DefineBgCancel(CLI::App& parser)
{
    return DefineEndPending(parser, "watch-bg-cancel");
}

Action DefineBgList(CLI::App& parser)
{
    const auto arguments = std::make_shared<BackgroundArguments>();
    AddKind(parser, *arguments);
    return [arguments](const Options& options) { return List(options, *arguments); };
}

}  // namespace Wfctl
