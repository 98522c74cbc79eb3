#include "current-face.h"

#include "application-table.h"
#include "peer.h"
#include "platform-keys-sdbus.h"

namespace Wfctl {

bool IsCurrent(const Current& current, const std::string& face)
{
    return current.app == Platform::kFacesId && current.face == face;
}

bool MakeCurrent(Connection& connection, const PeerAddress& self, const std::string& face, Seconds timeout)
{
    Platform::ValueStore keys(Platform::KeysPath(), 0660);
    bool announced = false;
    // The name is written last, and announced also when it is the one that was there.
    const auto watch =
        Platform::WatchKey(connection.Get(), kWatchfaceNameKey, [&announced] { announced = true; });
    connection.RoundTrip();
    Peer peer(connection, self, true, {});
    const Platform::BundlePtr message(bundle_create());
    message->Set("type", std::string("watch-idle-changed"));
    message->Set("pkgid", face);
    peer.Send(ParsePeer(std::string(Platform::kServiceId), true), true, *message);
    return connection.RunUntil([&] { return announced && IsCurrent(CurrentFace(keys), face); }, timeout);
}

}  // namespace Wfctl
