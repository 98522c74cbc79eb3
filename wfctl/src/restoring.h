// Giving a backup to the selected watch.
//
// The service, which is told of each item by the backup agent, takes the faces that this watch ships and,
// behind the face of the pictures, the pictures. Faces of one's own it takes only from who installs them, and
// what it drew before the pictures came has to be drawn again; both are done here once the agent has
// finished.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backup-folder.h"
#include "connection.h"
#include "face-update.h"
#include "faces.h"
#include "progress.h"

namespace Wfctl {

class Restoring {
public:
    Restoring(Connection& connection, const Backup& backup);

    // Gives all to the watch, and waits for the previews that are drawn again. Stops with
    // Exit::kInterrupted, Exit::kError or Exit::kNoAnswer and how much is on the watch.
    void Run();

    // What of the backup the watch does not hold, for people.
    std::vector<std::string> Missing() const;
    // The faces whose previews show another picture than they do.
    const std::vector<std::string>& Stale() const { return mStale; }

private:
    void GiveAll();
    void Install(const BackupItem& item);
    void SetCurrent();
    void DrawAgain();
    FaceUpdater& AsEditor();
    // Whether the watch holds just that.
    bool Has(const BackupItem& item) const;
    bool HasFace(const BackupItem& item) const;
    bool HasPicture(const BackupItem& item) const;
    bool HasCurrent() const;
    bool ShowsPictures(const Face& face) const;

    Connection& mConnection;
    const Backup& mBackup;
    std::vector<BackupItem> mItems;  // in the order in which they are given
    const Progress mProgress;
    std::vector<std::string> mStale;
    std::unique_ptr<FaceUpdater> mUpdater;
};

}  // namespace Wfctl
