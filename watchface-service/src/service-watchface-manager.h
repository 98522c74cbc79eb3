// The watch faces of this watch: where their files are, which one is current, how they are installed, and how
// their previews are made.
//
// A *watch face* is known by its name (a package id) and is a folder of that name in one of two areas: the
// read-only area, as shipped, and the read/write area. It exists in an area that holds its result XML or, for
// one that cannot be edited, the marker "without_result_xml". Where both areas hold it, the read/write one
// wins. Only the read/write area is ever written.
//
// The *result XML* is what the author offers and what the user selected; `watchface.xml` is made from it. The
// *preview* is drawn by the capture application, one request message each. When its port is not up, a worker
// thread launches it while the names wait in a queue; its answer to the launch sends them. A request that was
// sent is *outstanding* until the capture application says that it is finished, or until the fallback timer
// gives it up. When the last one is gone, the preview-done callback is called.
//
// All operations run on the main loop's thread, except the launch worker, which shares one flag with it.

#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "app-control.h"
#include "bundle.h"
#include "common-util-tasks.h"

namespace WatchfaceService {

// What GeneratePath() is asked for; any other number means the folder.
enum PathType {
    PATH_TYPE_FOLDER = 0,
    PATH_TYPE_RESULT_XML = 1,
    PATH_TYPE_WATCHFACE_XML = 2,
    PATH_TYPE_PREVIEW = 3,
    PATH_TYPE_WITHOUT_RESULT_XML = 4,
};

// The watch's connection modes in which complications are limited.
inline constexpr int kModeLo = 1;          // the phone is of the vendor "LO", its user agreement accepted
inline constexpr int kModeStandalone = 2;  // the watch was set up without a phone

class WatchfaceManager {
public:
    // Watch-face name to area: true = read/write.
    using WatchfaceMap = std::map<std::string, bool>;

    WatchfaceManager();
    ~WatchfaceManager();  // waits for the launch worker
    WatchfaceManager(const WatchfaceManager&) = delete;
    WatchfaceManager& operator=(const WatchfaceManager&) = delete;

    // The path of a watch face's folder (ending in "/") or of one of its files. The name is taken as it is;
    // an empty one with PATH_TYPE_FOLDER gives the folder of all watch faces. Relative when the platform
    // names no area.
    static std::string GeneratePath(bool isRW, int pathType, const std::string& watchName);

    // Whether the read/write area holds any entry in its folder of watch faces.
    bool HasRWWatchlist() const;

    // Makes the watch face the current one. Without `force` only when it is that already: the same values
    // are then written again, for whoever listens to the keys.
    void SetWatchface(const std::string& watchName, bool force);

    // (id of the current clock application, watch-face name); the name is empty unless that application is
    // the watch-face viewer.
    std::pair<std::string, std::string> GetCurrentWatchface() const;

    // Stores `data` as the watch face's result XML and the `watchface.xml` made from it. False when an
    // argument is empty, the folder cannot be made or the data is refused; failed writes are not told.
    bool UpdateWatchface(const std::string& watchName, const std::string& data);

    // Copies a watch face from the read-only into the read/write area. On failure no part of it stays there.
    bool CopyWatchfaceToRW(const std::string& watchName);

    // A *limited* complication is one that this watch may not offer. `limitSpec` goes to the data library
    // unchanged; null is the watch's own rule.

    // Whether the result XML of that area holds one; false also for an empty name.
    bool HasLimitedComplication(const std::string& watchName, bool isRW, const char* limitSpec = nullptr);

    // Makes the read/write `watchface.xml` anew from the result XML beside it, without limited
    // complications; the result XML keeps them. False when the name is empty, the folder cannot be made or
    // the data library refuses; a failed write is not told.
    bool RemoveLimitedComplication(const std::string& watchName, const char* limitSpec = nullptr);

    // Where that area's watch face has limited complications: brings it into the read/write area, removes
    // them there and asks for a preview. True when it had some, however that went.
    bool CheckAndRemoveLimitedComplication(const std::string& watchName, bool isRW,
                                           const char* limitSpec = nullptr);

    // Does so for every watch face, the current one first. `mode` is the watch's connection mode; in any
    // other than the two above nothing is done.
    void CheckComplications(int mode);

    // Asks the capture application for a preview, launching it first when it is not there.
    void RequestPreviewCapture(const std::string& watchName);

    // Starts the launch worker unless it is working.
    void PreLaunchCaptureApp();

    // Takes over the preview at `previewPath`; asks for one where there is none or it cannot be copied.
    void UpdatePreview(const std::string& watchName, const std::string& previewPath);

    // The capture application has finished this watch face.
    void UpdatePreviewDone(const std::string& watchName);

    // Called with every end of outstanding requests, until replaced; empty for none.
    void SetPreviewDoneCallback(std::function<void()> callback);

    // Adds the watch faces of one area to `watchfaces`, over entries that are there.
    void ScanWatchfaces(WatchfaceMap& watchfaces, bool isRW) const;

    // Brings every watch face of this product into the read/write area and asks for its preview.
    void RegeneratePreviews();

    // Puts a demo unit back to what was shipped.
    void ResetWatchfaces();

private:
    WatchfaceMap AllWatchfaces() const;  // of both areas; where both hold one, the read/write one

    static void OnLaunchReply(app_control_h request, app_control_h reply, app_control_result_e result,
                              void* manager);
    void SendPendingCaptureRequests();
    void RestartFallbackTimer();
    CommonUtilTaskReturn OnFallbackTimerExpired();
    void CallPreviewDoneCallback();

    void PreLaunchCaptureAppThread();
    void LaunchCaptureApp();
    void RetryLaunch(app_control_h request);
    void SetLaunchWorking(bool working);

    std::vector<std::string> mWaitingWatchfaces;            // until the capture application's port is up
    std::vector<std::string> mCaptureProcessingWatchfaces;  // outstanding; a name once per request
    std::function<void()> mPreviewDoneCallback;
    CommonUtilTimer mFallbackTimer;
    std::thread mLaunchCaptureAppThread;
    std::mutex mLaunchMutex;
    bool mLaunchWorking = false;  // guarded by mLaunchMutex
};

}  // namespace WatchfaceService
