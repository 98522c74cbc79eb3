// World clocks: world-clock show, prepare, update; and dates as the watch writes them: date.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "application-table.h"
#include "bundle-data.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "hint.h"
#include "log-tail.h"
#include "private-watch.h"
#include "reading-files.h"
#include "selection-edit.h"
#include "service-peer.h"
#include "shell-command.h"
#include "verb-table.h"
#include "world-clock-fields.h"
#include "world-clock.h"

namespace Wfctl {

namespace {

constexpr int64_t kSetByHand = 1;  // the "updatedMode" of what a person chose

struct WorldClockArguments {
    std::string face, slot, group, clock;
    std::string as = kEditorId;
    double timeout = kPatience;
};

struct DateArguments {
    std::string skeleton, instant;
    bool isPattern = false;
    double timeout = kPatience;
};

DataUtil::FaceDocument DocumentOf(const Face& face)
{
    DataUtil::ParseResult parsed = DataUtil::ParseFace(ReadNamedFile(face.ResultXml()));
    if (parsed.document) return *std::move(parsed.document);
    throw Stop(Exit::kError, "the document of [" + face.name +
                                 "] is refused; type: " + WatchCommand("validate " + ShellWord(face.name)));
}

const DataUtil::Slot& SlotOf(const DataUtil::FaceDocument& document, const std::string& name)
{
    Names known;
    for (const DataUtil::Slot& slot : document.slots) {
        if (!slot.OfferOf(std::string(DataUtil::kWorldClockSource))) continue;
        if (slot.name == name) return slot;
        known.push_back(slot.name);
    }
    throw Stop(Exit::kUsage,
               "[" + document.id + "] has no world clock [" + name + "]" +
                   OrMeant(name, known, known.empty() ? "it has none" : "known: " + Listed(known)));
}

// What `world-clock show` can be asked about.
Names WorldClockGroups(const DataUtil::FaceDocument& document)
{
    Names groups;
    for (const DataUtil::Slot& slot : document.slots) {
        const bool isNew = std::ranges::find(groups, slot.group) == groups.end();
        if (isNew && slot.OfferOf(std::string(DataUtil::kWorldClockSource))) groups.push_back(slot.group);
    }
    return groups;
}

// The service reads these when it is asked for a group; whoever sets a world clock keeps them.
void KeepInPreferences(const std::string& face, const std::string& group, const DataUtil::WorldClock& clock)
{
    Platform::ValueStore preferences(Platform::PreferencesPath(std::string(Platform::kServiceId)), 0600);
    const std::string prefix = face + "-" + group + "-";
    for (const WorldClockField& field : kWorldClockFields) {
        const std::string name = prefix + std::string(field.name);
        if (field.value)
            preferences.Set(name, clock.*field.value);
        else
            preferences.Set(name, kSetByHand);
    }
}

Exit Show(const Options& options, const WorldClockArguments& arguments)
{
    SelectWatch(options.root);
    const Face face = RequireFace(arguments.face);
    Connection connection;
    RequireService(connection);
    ServicePeer peer(connection, arguments.as);
    bundle message;
    message.Set("type", std::string("watch-dual-clock-data"));
    message.Set("pkgid", face.name);
    message.Set("group/name", arguments.group);
    const Json reply = peer.Ask(message, Seconds(arguments.timeout));
    if (options.json) PrintLine(JsonLine(reply));
    const Json& fields = reply["bundle"];
    for (const WorldClockField& field : kWorldClockFields) {
        if (!options.json && fields.contains(field.name))
            PrintLine(std::string(field.name) + ": " + fields[field.name].get<std::string>());
    }
    if (IsSuccess(reply)) return Exit::kDone;
    const DataUtil::FaceDocument document = DocumentOf(face);
    const Names groups = WorldClockGroups(document);
    const bool isKnown = std::ranges::find(groups, arguments.group) != groups.end();
    const std::string known =
        groups.empty() ? "it has no world clock; " : "its groups: " + Listed(groups) + "; ";
    throw Stop(Exit::kError, "not everything is stored of the world clock of group [" + arguments.group +
                                 "] of [" + face.name + "]" +
                                 OrMeant(arguments.group, groups,
                                         (isKnown ? "" : known) + "type: wfctl world-clock update --help"));
}

// The face that the next update is for: the one that was current when the service was told that it comes.
std::string PreparedFace()
{
    const std::string path = Platform::PreferencesPath(std::string(Platform::kServiceId));
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return {};
    Platform::ValueStore preferences(path, 0600);
    return Platform::GetAs<std::string>(preferences, kWorldClockTargetPref).value_or("");
}

bundle Preparation()
{
    bundle message;
    message.Set("type", std::string("watch-prepare-update-world-clock"));
    return message;
}

Exit Prepare(const Options& options, const WorldClockArguments& arguments)
{
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    const Current current = CurrentFace();
    if (current.face.empty())
        throw Stop(Exit::kNotFound, "no face is current yet; type: " + WatchCommand("set FACE"));
    ServicePeer(connection, arguments.as).Tell(Preparation());
    if (PreparedFace() != current.face)
        throw Stop(Exit::kError, "the service did not keep that the next update is for [" + current.face +
                                     "]; look for watchface-service in " + LogPlace("watchface-service"));
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"face", BytesToJson(current.face)}
        })));
    }
    return Exit::kDone;
}

bundle NewClock(const Face& face, const DataUtil::Slot& slot, const DataUtil::WorldClock& clock)
{
    bundle message;
    message.Set("type", std::string("watch-setting-update-world-clock"));
    message.Set("pkgid", face.name);
    message.Set("data/worldclock/complication_name", slot.name);
    message.Set("data/worldclock/timezone", clock.timezone);
    message.Set("data/worldclock/timezone_path", clock.timezonePath);
    message.Set("data/worldclock/cityname", clock.city);
    message.Set("data/worldclock/country", clock.country);
    return message;
}

// The service answers that a clock could be changed, whether or not it could write the flat document.
bool IsUnwritten(const std::string& now, const std::string& before, DataUtil::FaceDocument document,
                 const DataUtil::Slot& slot, const DataUtil::WorldClock& clock)
{
    if (now.empty()) return true;
    if (now != before) return false;
    std::string problem;
    DataUtil::UpdateWorldClock(
        document, slot.name.c_str(),
        {clock.city.c_str(), clock.country.c_str(), clock.timezone.c_str(), clock.timezonePath.c_str()},
        problem);
    return now != DataUtil::Flatten(document);
}

Exit Update(const Options& options, const WorldClockArguments& arguments)
{
    SelectWatch(options.root);
    Connection connection;
    const std::string target = PreparedFace();
    if (target.empty())
        throw Stop(Exit::kNothingToDo, "no update was prepared; type: " + WatchCommand("set FACE") +
                                           ", then: " + WatchCommand("world-clock prepare"));
    const Face face = RequireFace(target);
    const DataUtil::FaceDocument document = DocumentOf(face);
    const DataUtil::Slot& slot = SlotOf(document, arguments.slot);
    const DataUtil::WorldClock clock = ParseWorldClock(arguments.clock);
    RequireService(connection);
    ServicePeer peer(connection, arguments.as);
    peer.RequireAnswers();
    const std::string before = BytesOfFile(face.WatchfaceXml());
    const LogTail log;
    const Json reply = peer.Ask(NewClock(face, slot, clock), Seconds(arguments.timeout));
    const Face written = WritableFace(face.name);
    if (IsSuccess(reply) && IsUnwritten(BytesOfFile(written.WatchfaceXml()), before, document, slot, clock))
        NotWritten(written.WatchfaceXml(), face.name, log);
    if (options.json) PrintLine(JsonLine(reply));
    if (!IsSuccess(reply)) {
        throw Stop(Exit::kError,
                   "the service could not change the world clock; look for watchface-service in " +
                       LogPlace("watchface-service"));
    }
    KeepInPreferences(face.name, slot.group, clock);
    if (!options.json)
        PrintLine(slot.name + " of " + face.name + ": " + clock.city + " (" + clock.timezonePath + ")");
    return Exit::kDone;
}

std::string InstantOf(const DateArguments& arguments)
{
    if (arguments.instant.empty()) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    }
    char* end = nullptr;
    errno = 0;
    std::strtoll(arguments.instant.c_str(), &end, 10);
    if (*end == '\0' && errno == 0) return arguments.instant;
    throw Stop(Exit::kUsage, "[" + arguments.instant + "] is no number of milliseconds since 1970");
}

// Characters that no skeleton has; the service would give them back as they stand.
void CheckSkeleton(const DateArguments& arguments)
{
    constexpr std::string_view kLetters = "GyYuUrQqMLlwWdDFgEecabBhHkKjJCmsSAzZOvVXx";
    // The answer would be an empty text, which is as none.
    if (arguments.skeleton.empty())
        throw Stop(Exit::kUsage, "an empty date pattern shows nothing; one looks like yMMMEd or Jmm");
    const bool isSkeleton = arguments.skeleton.find_first_not_of(kLetters) == std::string::npos;
    if (arguments.isPattern || isSkeleton) return;
    throw Stop(Exit::kUsage, "[" + arguments.skeleton +
                                 "] is no date skeleton, which has letters of dates alone, as yMMMEd or Jmm; "
                                 "did you mean --pattern?");
}

// The answer goes to the phone-side manager, whoever asks.
Exit Date(const Options& options, const DateArguments& arguments)
{
    CheckSkeleton(arguments);
    const std::string instant = InstantOf(arguments);
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    ServicePeer peer(connection, kManagerId);
    bundle message;
    message.Set("type", std::string("watch-icu-convert"));
    message.Set("data/timestamp", instant);
    message.Set("data/skeleton", arguments.skeleton);
    message.Set("data/bestpattern", std::string(arguments.isPattern ? "false" : "true"));
    const auto isAnswer = [](const bundle& answer) { return !TextOf(answer, "formattedstring").empty(); };
    const Json reply = peer.Ask(message, isAnswer, Seconds(arguments.timeout));
    PrintLine(options.json ? JsonLine(reply) : reply["bundle"]["formattedstring"].get<std::string>());
    return Exit::kDone;
}

void AddAsking(CLI::App& parser, WorldClockArguments& arguments)
{
    parser.add_option("--as", arguments.as, "the application that asks (default: the editor)")
        ->type_name("APP");
    parser.add_option("--timeout", arguments.timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
}

}  // namespace

Action DefineWorldClockShow(CLI::App& parser)
{
    const auto arguments = std::make_shared<WorldClockArguments>();
    parser.add_option("FACE", arguments->face, "the watch face")->required();
    parser.add_option("GROUP", arguments->group, "the group of its world clock")->required();
    AddAsking(parser, *arguments);
    return [arguments](const Options& options) { return Show(options, *arguments); };
}

Action DefineWorldClockPrepare(CLI::App& parser)
{
    const auto arguments = std::make_shared<WorldClockArguments>();
    AddAsking(parser, *arguments);
    return [arguments](const Options& options) { return Prepare(options, *arguments); };
}

Action DefineWorldClockUpdate(CLI::App& parser)
{
    const auto arguments = std::make_shared<WorldClockArguments>();
    parser.add_option("SLOT", arguments->slot, "the world clock of the prepared face")->required();
    parser.add_option("AREA/CITY[:CITY]", arguments->clock, "its time zone, and the name to show")
        ->required();
    AddAsking(parser, *arguments);
    return [arguments](const Options& options) { return Update(options, *arguments); };
}

Action DefineDate(CLI::App& parser)
{
    const auto arguments = std::make_shared<DateArguments>();
    parser.add_option("SKELETON", arguments->skeleton, "what to show, as yMMMEd or Jmm")->required();
    parser.add_option("--at", arguments->instant, "milliseconds since 1970 UTC (default: now)")
        ->type_name("MS");
    parser.add_flag("--pattern", arguments->isPattern, "the skeleton is the pattern, as it stands");
    parser.add_option("--timeout", arguments->timeout, "how long to wait (default: 20 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Date(options, *arguments); };
}

}  // namespace Wfctl
