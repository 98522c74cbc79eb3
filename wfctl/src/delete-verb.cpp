// Deleting a watch face's read/write copy: delete.

#include <memory>

#include "exit-status.h"
#include "faces.h"
#include "private-watch.h"
#include "service-peer.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

struct DeleteArguments {
    std::string name;
    std::string as = kManagerId;
    double timeout = kPatience;
};

Exit Delete(const Options& options, const DeleteArguments& arguments)
{
    SelectWatch(options.root);
    const Face face = RequireFace(arguments.name);
    if (!face.writable) {
        throw Stop(Exit::kNothingToDo, "[" + face.name +
                                           "] is as it was shipped; only changes to it, and faces that were "
                                           "installed later, can be deleted");
    }
    Connection connection;
    RequireService(connection);
    ServicePeer peer(connection, arguments.as);
    bundle message;
    message.Set("type", std::string("watch-setting-deleted"));
    message.Set("pkgid", face.name);
    const Json reply = peer.Ask(message, Seconds(arguments.timeout));
    if (!IsSuccess(reply)) {
        throw Stop(Exit::kError, "the service could not delete [" + face.name +
                                     "]; look for watchface-service in " + LogPlace("watchface-service"));
    }
    if (options.json) {
        PrintLine(JsonLine(reply));
    } else if (face.shipped) {
        PrintLine(face.name + " is as it was shipped again");
    }
    return Exit::kDone;
}

}  // namespace

Action DefineDelete(CLI::App& parser)
{
    const auto arguments = std::make_shared<DeleteArguments>();
    parser.add_option("FACE", arguments->name, "the watch face")->required();
    parser.add_option("--as", arguments->as, "the application that asks (default: the phone-side manager)")
        ->type_name("APP");
    parser.add_option("--timeout", arguments->timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Delete(options, *arguments); };
}

}  // namespace Wfctl
