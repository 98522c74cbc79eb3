// Looks at new previews when the main loop is idle, and asks for a new capture of those that came out blank,
// at most three times in a row for one watch face.
//
// Normal flow: Add() queues a watch face's read/write preview and starts the idler; the idler's task checks
// all that are queued. A preview that shows something ends the row; so does the fourth blank one, which is
// left as it is.

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

    // Queues the preview of one watch face, once however often it is added before it is checked. A preview
    // that is not there is only logged.
    void Add(const std::string& watchName);

    // Whether the PNG at this path shows anything: one byte in its middle row decides. False also for what
    // cannot be decoded.
    bool IsValid(const std::string& previewPath);

    // The idle task: checks what is queued, in the order of the names.
    CommonUtilTaskReturn CheckIdlerCallback();

private:
    void CaptureAgain(const std::string& watchName);

    std::shared_ptr<WatchfaceManager> mWatchfaceManager;
    CommonUtilIdler mIdler;
    std::map<std::string, std::string> mPendingPreviews;  // watch-face name to preview path
    std::map<std::string, int> mRetryCounts;              // blank previews in a row
};

}  // namespace WatchfaceService
