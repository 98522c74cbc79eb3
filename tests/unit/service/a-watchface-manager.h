// The fixture of all that a WatchfaceManager does.

#pragma once

#include <memory>

#include "on-a-platform.h"

class AWatchfaceManager : public OnAPlatform {
protected:
    std::unique_ptr<WatchfaceService::WatchfaceManager> owner =
        std::make_unique<WatchfaceService::WatchfaceManager>();
    WatchfaceService::WatchfaceManager& manager = *owner;
};
