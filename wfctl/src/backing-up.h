// Putting what the service sends for a backup into a folder.

#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "backup-folder.h"
#include "bundle-data.h"
#include "progress.h"

namespace Wfctl {

class BackingUp {
public:
    explicit BackingUp(BackupWriter& writer);

    // Forgets what came before.
    void Begin();
    // An item as the service sends it.
    void Take(const bundle& item);
    // Once all is taken. The service takes pictures back only after the face that shows them; a face that
    // nobody changed is not sent.
    void AddGalleryFace();
    // What of the watch is not in the folder, for people.
    std::vector<std::string> Missing() const;

private:
    bool Has(const std::string& name, const std::string& bgType = "") const;
    void Add(const std::string& name, const std::string& bgType, const std::string& bytes);

    BackupWriter& mWriter;
    const std::size_t mExpected;
    const Progress mProgress;
    std::set<std::pair<std::string, std::string>> mLeftOut;  // kind and name
    std::vector<std::string> mNotes;                         // why
};

}  // namespace Wfctl
