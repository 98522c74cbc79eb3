// The base of all fixtures: a platform of the test's own, which has been asked for the watch faces' areas
// already. The service asks for them once in the life of its process, whichever test comes first.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "memory-platform.h"
#include "service-watchface-manager.h"

class OnAPlatform : public testing::Test {
protected:
    OnAPlatform()
    {
        WatchfaceService::WatchfaceManager::GeneratePath(false, WatchfaceService::PATH_TYPE_FOLDER, "");
        platform.Forget();
    }

    MemoryPlatform::Platform platform;
};
