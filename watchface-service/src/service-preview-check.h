// Looks at new previews when the main loop is idle, and asks for a new capture of those that came out blank,
// at most three times in a row for one watch face.
//
// Normal flow: Add() queues a watch face's read/write preview and starts the idler; the idler's task checks
// all that are queued.
//
// Not working yet: nothing is queued or checked.

#pragma once

#include <map>
#include <memory>
#include <string>

#include "common-util-tasks.h"

namespace WatchfaceService {

class WatchfaceManager;

class PreviewCheck {
public:
    explicit PreviewCheck(std::shared_ptr<WatchfaceManager> manager);
    PreviewCheck(const PreviewCheck&) = delete;
    PreviewCheck& operator=(const PreviewCheck&) = delete;

    // Queues the preview of one watch face.
    void Add(const std::string& watchName);

    // Whether the PNG at this path shows anything.
    bool IsValid(const std::string& previewPath);

    // The idle task.
    CommonUtilTaskReturn CheckIdlerCallback();

private:
    std::shared_ptr<WatchfaceManager> mWatchfaceManager;
    CommonUtilIdler mIdler;
    std::map<std::string, std::string> mPendingPreviews;  // watch-face name to preview path
    std::map<std::string, int> mRetryCounts;              // blank previews in a row
};

}  // namespace WatchfaceService
