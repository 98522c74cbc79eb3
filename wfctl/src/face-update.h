// Having the service store a face's result XML, as one of its peers does, and waiting for the new preview.

#pragma once

#include <functional>
#include <string>

#include "connection.h"
#include "faces.h"
#include "json-text.h"
#include "service-peer.h"

namespace Wfctl {

inline constexpr char kCreated[] = "watch-setting-created";
inline constexpr char kUpdated[] = "watch-setting-updated";

struct FaceUpdate {
    std::string type;  // kCreated, kUpdated
    std::string name;
    std::string xml;
    std::string label;  // the name to display; empty: none is sent
    std::string icon;   // a PNG to start with; empty: none
    bool awaitsPreview = true;
    Seconds timeout{kPatience};  // for the answer, and for the preview
    std::string file{};          // that the document is from, for errors
};

// The face's own document, stored once more: after that the service has the preview drawn again. Stops with
// Exit::kError when the face has no result XML.
FaceUpdate SameAgain(const Face& face, Seconds timeout);

// Is the application while it lives; one face after the other.
class FaceUpdater {
public:
    // Stops with Exit::kUsage when the service would not answer this application there.
    FaceUpdater(Connection& connection, const std::string& as);
    FaceUpdater(const FaceUpdater&) = delete;
    FaceUpdater& operator=(const FaceUpdater&) = delete;

    // Sends, and waits until the service has answered and another picture lies at the face's preview path.
    // `onReply`, which may be empty, gets the answer at once. Stops with Exit::kError and the reasons when
    // the service refuses, or, before `onReply`, when it could not write what it took, and with
    // Exit::kNoAnswer when the time is over.
    void Store(const FaceUpdate& update, const std::function<void(const Json&)>& onReply = {});

private:
    Connection& mConnection;
    ServicePeer mPeer;
};

// Whether the file at `path` is there and at least as new as the one at `than`. One that is dated ahead of
// the clock was written before the clock was put back; what came since is taken for newer.
bool IsNotOlder(const std::string& path, const std::string& than);

}  // namespace Wfctl
