// The fixture of all that a WatchfaceManager does, and matchers for what the service logs and writes.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "memory-platform.h"
#include "service-watchface-manager.h"

class AWatchfaceManager : public testing::Test {
protected:
    MemoryPlatform::Platform platform;
    std::unique_ptr<WatchfaceService::WatchfaceManager> owner =
        std::make_unique<WatchfaceService::WatchfaceManager>();
    WatchfaceService::WatchfaceManager& manager = *owner;
};
