// The background images that the user has added to watch faces.
//
// Not working yet: nothing is stored, added, deleted or listed.

#pragma once

namespace WatchfaceService {

class BgManager {
public:
    BgManager();
    BgManager(const BgManager&) = delete;
    BgManager& operator=(const BgManager&) = delete;
};

}  // namespace WatchfaceService
