// Playing the backup agent: backup.

#include <memory>

#include "application-table.h"
#include "backing-up.h"
#include "backup-agent.h"
#include "backup-contents.h"
#include "backup-report.h"
#include "exit-status.h"
#include "json-text.h"
#include "private-watch.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

Exit BackUp(const Options& options, const std::string& folder)
{
    SelectWatch(options.root);
    BackupWriter writer(folder);
    Connection connection;
    RequireService(connection);
    BackupAgent agent(connection);
    BackingUp backup(writer);
    BackupAgent::UntilTheEnd([&] {
        backup.Begin();
        return agent.AskForBackup([&](const bundle& item) { backup.Take(item); });
    });
    backup.AddGalleryFace();
    std::vector<std::string> notes = backup.Missing();
    for (std::string& note : NotCarried()) notes.push_back(std::move(note));
    const Current current = CurrentFace();
    const BackupManifest manifest = writer.Finish(current.app == Platform::kFacesId ? current.face : "");
    for (const std::string& note : notes) Warn("not in the backup: " + note);
    PrintSummary(options, "backed up", manifest, folder, notes);
    return Exit::kDone;
}

}  // namespace

Action DefineBackup(CLI::App& parser)
{
    const auto folder = std::make_shared<std::string>();
    parser.add_option("DIR", *folder, "a new folder for the backup")->required();
    return [folder](const Options& options) { return BackUp(options, *folder); };
}

}  // namespace Wfctl
