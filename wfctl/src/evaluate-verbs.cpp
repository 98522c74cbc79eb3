// Durations that an application keeps with the service, one for each watch face: evaluate save, load.

#include <memory>

#include "application-table.h"
#include "bundle-data.h"
#include "evaluation-limits.h"
#include "exit-status.h"
#include "faces.h"
#include "hint.h"
#include "private-watch.h"
#include "service-peer.h"
#include "shell-command.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

constexpr char kOperation[] = "evaluation-helper-op";
constexpr char kFaceName[] = "evaluation-helper-watchface-name";
constexpr char kDuration[] = "evaluation-helper-data-duration";
constexpr char kResult[] = "evaluation-helper-ret";

constexpr char kReplyPort[] = "wfctl-evaluate";

struct EvaluateArguments {
    std::string face, duration;
    std::string as = kEditorId;
    double timeout = kPatience;
};

// The service keeps a duration under any name. A whole one is taken as it stands, so that one of a face which
// is gone can still be read.
std::string NameOf(const std::string& face)
{
    return face.find('.') == std::string::npos ? RequireFace(face).name : face;
}

PeerAddress SelfOf(const EvaluateArguments& arguments)
{
    PeerAddress self = ParsePeer(arguments.as, false);
    if (self.port.empty()) self.port = kReplyPort;
    return self;
}

// What came back, printed with --json.
Json Ask(const Options& options, const EvaluateArguments& arguments, bundle request)
{
    const PeerAddress self = SelfOf(arguments);
    WarnOfSlip("there is no application", self.app, ApplicationIds());
    Connection connection;
    RequireService(connection);
    ServicePeer peer(connection, self, ParsePeer(std::string(Platform::kServiceId), false));
    const auto isAnswer = [&](const bundle& answer) {
        return TextOf(answer, kOperation) == TextOf(request, kOperation) &&
               TextOf(answer, kFaceName) == TextOf(request, kFaceName) && !TextOf(answer, kResult).empty();
    };
    Json reply = peer.Ask(request, isAnswer, Seconds(arguments.timeout));
    if (options.json) PrintLine(JsonLine(reply));
    return reply;
}

bundle NewRequest(const char* operation, const std::string& name)
{
    bundle request;
    request.Set(kOperation, std::string("evaluation-helper-op-") + operation);
    request.Set(kFaceName, name);
    return request;
}

std::string ResultOf(const Json& reply)
{
    return reply["bundle"].value(kResult, "");
}

Exit Save(const Options& options, const EvaluateArguments& arguments)
{
    SelectWatch(options.root);
    const std::string name = NameOf(arguments.face);
    const std::vector<std::string> faces = FaceNames();
    WarnOfSlip("there is no watch face", name, NamesOf(faces));
    bundle request = NewRequest("save-duration", name);
    request.Set(kDuration, arguments.duration);
    const std::string result = ResultOf(Ask(options, arguments, std::move(request)));
    if (result == "0") return Exit::kDone;
    const bool isFull = result == std::to_string(Platform::kNoRoomForEvaluation);
    throw Stop(Exit::kError, "the duration of [" + name + "] was not saved (" + result + "): " +
                                 (isFull ? "there is no room for more; type: " +
                                               WatchCommand("pref list " + std::string(Platform::kServiceId))
                                         : "look for platform in " + LogPlace("platform")));
}

Exit Load(const Options& options, const EvaluateArguments& arguments)
{
    SelectWatch(options.root);
    const std::string name = NameOf(arguments.face);
    const Json reply = Ask(options, arguments, NewRequest("load-duration", name));
    if (ResultOf(reply) != "0") {
        const std::vector<std::string> faces = FaceNames();
        throw Stop(
            Exit::kNotFound,
            "[" + SelfOf(arguments).app + "] has saved no duration of [" + name + "]" +
                OrMeant(name, NamesOf(faces),
                        "type: " + WatchCommand("evaluate save " + ShellWord(arguments.face) + " DURATION")));
    }
    const Json& duration = reply["bundle"][kDuration];
    if (!options.json) PrintLine(duration.is_string() ? duration.get<std::string>() : JsonLine(duration));
    return Exit::kDone;
}

void AddArguments(CLI::App& parser, EvaluateArguments& arguments)
{
    parser
        .add_option("--as", arguments.as,
                    "the application whose duration it is, and the open port that is answered (default: the "
                    "editor)")
        ->type_name("APP[:PORT]");
    parser.add_option("--timeout", arguments.timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
}

void AddName(CLI::App& parser, EvaluateArguments& arguments)
{
    parser.add_option("NAME", arguments.face, "a watch face, or a whole name as it stands")->required();
}

}  // namespace

Action DefineEvaluateSave(CLI::App& parser)
{
    const auto arguments = std::make_shared<EvaluateArguments>();
    AddName(parser, *arguments);
    parser.add_option("DURATION", arguments->duration, "any text")->required();
    AddArguments(parser, *arguments);
    return [arguments](const Options& options) { return Save(options, *arguments); };
}

Action DefineEvaluateLoad(CLI::App& parser)
{
    const auto arguments = std::make_shared<EvaluateArguments>();
    AddName(parser, *arguments);
    AddArguments(parser, *arguments);
    return [arguments](const Options& options) { return Load(options, *arguments); };
}

}  // namespace Wfctl
