// Playing the backup agent: restore.

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

#include "backup-contents.h"
#include "backup-folder.h"
#include "backup-report.h"
#include "event-loop-sdevent.h"
#include "exit-status.h"
#include "json-text.h"
#include "private-watch.h"
#include "reading-files.h"
#include "restoring.h"
#include "shell-command.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

struct RestoreArguments {
    std::string folder;
    bool yes = false;
    bool isCheck = false;
};

// What of this watch is the user's and does not stay: by name, by path.
struct Lost {
    std::vector<std::string> faces, pictures;  // that the backup has otherwise
    std::vector<std::string> removed;          // pictures that it has not
};

Lost LostTo(const Backup& backup)
{
    Lost lost;
    const std::vector<BackupItem>& items = backup.Manifest().items;
    for (const BackupItem& item : items) {
        const Face face = WritableFace(item.name);
        if (item.IsFace() && IsChanged(face) && ReadNamedFile(face.ResultXml()) != backup.Read(item))
            lost.faces.push_back(item.name);
    }
    if (std::ranges::none_of(items, IsGalleryFace)) return lost;
    for (const char* bgType : kBackedUpPictures) {
        for (const auto& [name, path] : PicturesOf(bgType)) {
            const auto isIt = [&, &name = name](const BackupItem& item) {
                return item.bgType == bgType && item.name == name;
            };
            const auto item = std::ranges::find_if(items, isIt);
            if (item == items.end())
                lost.removed.push_back(path);
            else if (backup.Read(*item) != ReadNamedFile(path))
                lost.pictures.push_back(path);
        }
    }
    return lost;
}

std::string TitleAndNames(const std::string& title, const std::vector<std::string>& names)
{
    std::string text = title + ":\n";
    for (const std::string& name : names) text += "  " + QuotedName(name) + "\n";
    return text;
}

// What is lost, for people; empty when nothing is.
std::string TextOf(const Lost& lost)
{
    std::string text;
    std::vector<std::string> replaced = lost.faces;
    replaced.insert(replaced.end(), lost.pictures.begin(), lost.pictures.end());
    if (!replaced.empty())
        text += TitleAndNames(CountedItems(lost.faces.size(), lost.pictures.size()) +
                                  " of this watch will be replaced by what the backup holds",
                              replaced);
    if (!lost.removed.empty())
        text += TitleAndNames(CountedItems(0, lost.removed.size()) +
                                  " of this watch will be removed, which the backup does not hold",
                              lost.removed);
    return text;
}

// What is typed before the next return. The loop runs meanwhile, since it alone hears of Ctrl-C.
std::string TypedLine(Connection& connection)
{
    bool isReady = false;
    sd_event_source* raw = nullptr;
    const auto wakeUp = [](sd_event_source*, int, uint32_t, void* ready) {
        *static_cast<bool*>(ready) = true;
        return 0;
    };
    sd_event_add_io(Platform::MainLoop(), &raw, STDIN_FILENO, EPOLLIN, wakeUp, &isReady);
    const Platform::EventSourcePtr source(raw);
    std::string line;
    for (char c = 0; c != '\n'; isReady = false) {
        connection.RunUntil([&] { return isReady; }, kForEver);
        if (read(STDIN_FILENO, &c, 1) != 1) break;
        if (c != '\n') line += c;
    }
    return line;
}

void AskForConsent(Connection& connection, const Lost& lost, const RestoreArguments& arguments)
{
    const std::string text = TextOf(lost);
    if (text.empty() || arguments.yes) return;
    if (!isatty(STDIN_FILENO))
        throw Stop(Exit::kUsage, text + "nothing was changed; type: " +
                                     WatchCommand("restore --yes " + ShellQuoted(arguments.folder)));
    std::cerr << text << "Go on? [y/N] " << std::flush;
    const std::string answer = TypedLine(connection);
    if (answer != "y" && answer != "Y" && answer != "yes")
        throw Stop(Exit::kNothingToDo, "nothing was changed");
}

std::string Joined(const std::vector<std::string>& texts, const char* between)
{
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : between) + text;
    return all;
}

// Stops unless the watch has all, and shows it.
void RequireAll(const Restoring& restoring)
{
    const std::vector<std::string> missing = restoring.Missing();
    if (!missing.empty())
        throw Stop(Exit::kError, "this watch did not take " + Joined(missing, ", ") +
                                     "; all else is restored; look for watchface-service in " +
                                     LogPlace("watchface-service"));
    if (restoring.Stale().empty()) return;
    std::string faces;
    for (const std::string& face : restoring.Stale()) faces += " " + ShellWord(face);
    throw Stop(Exit::kNoAnswer,
               "all is restored, but previews show other pictures than their faces do; type: " +
                   WatchCommand("preview request" + faces));
}

Exit Restore(const Options& options, const RestoreArguments& arguments)
{
    std::optional<Progress> checking;
    const Backup backup(arguments.folder, [&](std::size_t checked, std::size_t all) {
        if (!checking) checking.emplace("checking", all);
        checking->Show(checked);
    });
    checking.reset();
    const BackupManifest& manifest = backup.Manifest();
    if (arguments.isCheck) {
        PrintSummary(options, "whole:", manifest, arguments.folder, {});
        return Exit::kDone;
    }
    if (manifest.items.empty() && manifest.current.empty())
        throw Stop(Exit::kNothingToDo,
                   "[" + arguments.folder + "] is the backup of a watch that nobody had changed");
    SelectWatch(options.root);
    Connection connection;
    RequireService(connection);
    AskForConsent(connection, LostTo(backup), arguments);
    Restoring restoring(connection, backup);
    restoring.Run();
    RequireAll(restoring);
    PrintSummary(options, "restored", manifest, arguments.folder, {});
    return Exit::kDone;
}

}  // namespace

Action DefineRestore(CLI::App& parser)
{
    const auto arguments = std::make_shared<RestoreArguments>();
    parser.add_option("DIR", arguments->folder, "the folder of a backup")->required();
    parser.add_flag("--yes", arguments->yes, "replace faces and pictures of this watch without asking");
    parser.add_flag("--check", arguments->isCheck,
                    "only look whether the backup is whole; no watch is needed");
    return [arguments](const Options& options) { return Restore(options, *arguments); };
}

}  // namespace Wfctl
