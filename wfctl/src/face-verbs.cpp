// The watch's faces: list, current, set.

#include <algorithm>
#include <memory>

#include "application-table.h"
#include "connection.h"
#include "current-face.h"
#include "exit-status.h"
#include "faces.h"
#include "hint.h"
#include "json-text.h"
#include "private-watch.h"
#include "shell-command.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

constexpr double kSetPatience = 10;

struct SetArguments {
    std::string name;
    std::string as = "com.corvane.watch-utils.setting-list";
    double timeout = kSetPatience;
};

Json FaceJson(const Face& face, const Current& current)
{
    return Json::object({
        {"name",    BytesToJson(face.name)                    },
        {"title",   BytesToJson(TitleOf(face.ResultXml()))    },
        {"area",    face.writable ? "read-write" : "read-only"},
        {"shipped", face.shipped                              },
        {"current", IsCurrent(current,                          face.name)},
        {"preview",         face.hasPreview ? BytesToJson(face.Preview()) : Json(nullptr)                                          }
    });
}

void PrintFaces(const std::vector<Face>& faces, const Current& current)
{
    std::size_t width = 0;
    for (const Face& face : faces) width = std::max(width, face.name.size());
    const bool color = WantsColor();
    for (const Face& face : faces) {
        std::string name = face.name;
        name.resize(width, ' ');
        const bool isCurrent = IsCurrent(current, face.name);
        if (isCurrent && color) name.insert(0, "\033[1m").append("\033[0m");
        PrintLine((isCurrent ? "* " : "  ") + name + (face.writable ? "  read-write" : "  read-only ") +
                  (face.hasPreview ? "  preview     " : "  no preview  ") + TitleOf(face.ResultXml()));
    }
}

Exit List(const Options& options)
{
    SelectWatch(options.root);
    const std::vector<Face> faces = RequireFaces();
    const Current current = CurrentFace();
    if (options.json) {
        Json array = Json::array();
        for (const Face& face : faces) array.push_back(FaceJson(face, current));
        PrintLine(JsonLine(array));
    } else {
        PrintFaces(faces, current);
    }
    return Exit::kDone;
}

Exit PrintCurrent(const Options& options)
{
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    const Current current = CurrentFace();
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"app",  BytesToJson(current.app) },
            {"face", BytesToJson(current.face)}
        })));
    }
    if (current.app.empty())
        throw Stop(Exit::kNotFound, "no clock is set yet; type: " + WatchCommand("set NAME"));
    if (!options.json) {
        PrintLine("clock: " + current.app);
        // The key keeps the last face while another clock application is shown.
        PrintLine((current.app == Platform::kFacesId ? "face:  " : "face:  (not shown) ") + current.face);
    }
    return Exit::kDone;
}

Exit Set(const Options& options, const SetArguments& arguments)
{
    const PeerAddress self = ParsePeer(arguments.as, true);
    if (!Platform::FindApplication(self.app)) {
        throw Stop(Exit::kUsage, "the service does not listen to [" + self.app + "]" +
                                     OrMeant(self.app, ApplicationIds(),
                                             "say --as with one of " + Listed(ApplicationIds())));
    }
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    const std::string name = RequireFace(arguments.name).name;
    if (!MakeCurrent(connection, self, name, Seconds(arguments.timeout))) {
        throw Stop(Exit::kNoAnswer, "the service did not make [" + name +
                                        "] the current watch face in time; look for watchface-service in " +
                                        LogPlace("watchface-service"));
    }
    if (options.json)
        PrintLine(JsonLine(Json::object({
            {"current", BytesToJson(name)}
        })));
    return Exit::kDone;
}

}  // namespace

Action DefineList(CLI::App&)
{
    return List;
}
Action DefineCurrent(CLI::App&)
{
    return PrintCurrent;
}

Action DefineSet(CLI::App& parser)
{
    const auto arguments = std::make_shared<SetArguments>();
    parser.add_option("NAME", arguments->name, "the watch face")->required();
    parser.add_option("--as", arguments->as, "the application that asks (default: the settings list)")
        ->type_name("APP");
    parser.add_option("--timeout", arguments->timeout, "how long to wait (default: 10 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Set(options, *arguments); };
}

}  // namespace Wfctl
