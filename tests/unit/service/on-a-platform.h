// The base of all fixtures, OnAPlatform: a platform of the test's own, which has been asked for the watch
// faces' areas already. The service asks for them once in the life of its process, whichever test comes
// first.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "memory-platform.h"
#include "service-watchface-manager.h"

// The application that draws the previews.
inline constexpr char kCapture[] = "com.corvane.watchface-capture";
inline constexpr char kCapturePort[] = "watchface-capture::localport";

class OnAPlatform : public testing::Test {
protected:
    OnAPlatform()
    {
        WatchfaceService::WatchfaceManager::GeneratePath(false, WatchfaceService::PATH_TYPE_FOLDER, "");
        platform.Forget();
    }

    MemoryPlatform::Platform platform;
};
