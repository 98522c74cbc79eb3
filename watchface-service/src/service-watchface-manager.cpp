#include "service-watchface-manager.h"

#include <utility>

#include "app-manager.h"
#include "common-util-ipc-control.h"
#include "common-util-keys.h"
#include "data-util.h"
#include "files.h"
#include "folder-listing.h"
#include "handles.h"
#include "message-vocabulary.h"
#include "persisted-keys.h"
#include "service-config-mirel.h"
#include "service-config.h"
#include "service-log.h"

namespace WatchfaceService {

namespace {

constexpr char kWatchlist[] = "watchlist/";
constexpr char kResultXmlSuffix[] = "_result.xml";

constexpr char kResetWatchface[] = "com.corvane.watchface-mirel-c1";  // shown after a demo unit's reset

constexpr double kFirstFallbackInterval = 1.0;  // seconds
constexpr double kFallbackSecondsPerRequest = 0.5;
constexpr unsigned int kPauseMicroseconds = 200'000;  // between requests, and between launches
constexpr int kLaunchRetries = 5;

std::string WithSlash(std::string path)
{
    if (!path.ends_with('/')) path += '/';
    return path;
}

// Leaves `base` as it is when the platform gives no path.
void AskForBase(int (*ask)(const char*, char**), const char* askName, std::string& base)
{
    char* path = nullptr;
    const int result = ask(Peer::kViewer, &path);
    const CStringPtr owner(path);
    if (result != 0) LOG_ERROR("%s returns %d(%x)", askName, result, result);
    if (path) base = WithSlash(path) + kWatchlist;
}

bool CopyFileToRW(int pathType, const std::string& watchName)
{
    return CommonUtilFile::Copy(WatchfaceManager::GeneratePath(false, pathType, watchName),
                                WatchfaceManager::GeneratePath(true, pathType, watchName));
}

bool FileExists(bool isRW, int pathType, const std::string& watchName)
{
    return CommonUtilFile::Exists(WatchfaceManager::GeneratePath(isRW, pathType, watchName));
}

// The result XML, or the marker that stands for it; never both.
bool CopyResultXmlOrMarkerToRW(const std::string& watchName)
{
    for (const int pathType : {PATH_TYPE_RESULT_XML, PATH_TYPE_WITHOUT_RESULT_XML}) {
        if (FileExists(false, pathType, watchName)) return CopyFileToRW(pathType, watchName);
    }
    LOG_ERROR("result.xml or without_result_xml not found!!");
    return false;
}

void SendCaptureRequest(bundle* request, const std::string& watchName)
{
    bundle_add_str(request, MessageKey::kPkgName, watchName.c_str());
    CommonUtilIPCControl::SendTrustedMessage(Peer::kCapture, PeerPort::kCapture, request);
}

}  // namespace

WatchfaceManager::WatchfaceManager()
    : mFallbackTimer(kFirstFallbackInterval, std::bind(&WatchfaceManager::OnFallbackTimerExpired, this))
{
}

WatchfaceManager::~WatchfaceManager()
{
    if (mLaunchCaptureAppThread.joinable()) mLaunchCaptureAppThread.join();
}

// Where the files are

std::string WatchfaceManager::GeneratePath(bool isRW, int pathType, const std::string& watchName)
{
    static std::string readOnlyBase;
    static std::string readWriteBase;
    if (readOnlyBase.empty() || readWriteBase.empty()) {
        AskForBase(app_manager_get_shared_resource_path, "app_manager_get_shared_resource_path",
                   readOnlyBase);
        AskForBase(app_manager_get_shared_data_path, "app_manager_get_shared_data_path", readWriteBase);
    }

    const std::string& base = isRW ? readWriteBase : readOnlyBase;
    const std::string folder = WithSlash((base.empty() ? kWatchlist : base) + watchName);
    if (pathType == PATH_TYPE_FOLDER) return folder;

    // Only told: whoever asks for a file has looked at the name before.
    if (watchName.empty()) LOG_ERROR("watchName is empty!!");
    switch (pathType) {
        case PATH_TYPE_RESULT_XML:
            return folder + watchName + kResultXmlSuffix;
        case PATH_TYPE_WATCHFACE_XML:
            return folder + "watchface.xml";
        case PATH_TYPE_PREVIEW:
            return folder + watchName + ".png";
        case PATH_TYPE_WITHOUT_RESULT_XML:
            return folder + "without_result_xml";
        default:
            return folder;
    }
}

bool WatchfaceManager::HasRWWatchlist() const
{
    return !ListFolder(GeneratePath(true, PATH_TYPE_FOLDER, "")).empty();
}

void WatchfaceManager::ScanWatchfaces(WatchfaceMap& watchfaces, bool isRW) const
{
    for (const std::string& name : ListFolder(GeneratePath(isRW, PATH_TYPE_FOLDER, ""))) {
        if (FileExists(isRW, PATH_TYPE_RESULT_XML, name) ||
            FileExists(isRW, PATH_TYPE_WITHOUT_RESULT_XML, name)) {
            watchfaces[name] = isRW;
        }
    }
}

WatchfaceManager::WatchfaceMap WatchfaceManager::AllWatchfaces() const
{
    WatchfaceMap watchfaces;
    ScanWatchfaces(watchfaces, false);
    ScanWatchfaces(watchfaces, true);
    return watchfaces;
}

// The current watch face

void WatchfaceManager::SetWatchface(const std::string& watchName, bool force)
{
    if (!force) {
        // What is current already is written again on purpose: the keys' listeners then load it anew.
        if (CommonUtilVConf::GetString(kIdleClockKey).second != Peer::kViewer) return;
        if (CommonUtilVConf::GetString(kWatchfaceNameKey).second != watchName) return;
    }
    LOG_ERROR("set watchface to [%s]", watchName.c_str());
    CommonUtilVConf::SetString(kIdleClockKey, Peer::kViewer);
    CommonUtilVConf::SetString(kWatchfaceNameKey, watchName);
    LOG_ERROR("idle clock set done!!");
}

std::pair<std::string, std::string> WatchfaceManager::GetCurrentWatchface() const
{
    const std::string appId = CommonUtilVConf::GetString(kIdleClockKey).second;
    LOG_ERROR("current idle clock[%s]", appId.c_str());
    if (appId != Peer::kViewer) return {appId, ""};

    const std::string watchName = CommonUtilVConf::GetString(kWatchfaceNameKey).second;
    LOG_ERROR("current watch name[%s]", watchName.c_str());
    return {appId, watchName};
}

// Installing and updating

bool WatchfaceManager::UpdateWatchface(const std::string& watchName, const std::string& data)
{
    if (watchName.empty() || data.empty()) {
        LOG_ERROR("watchName or data is empty!!");
        return false;
    }
    if (!ecore_file_mkpath(GeneratePath(true, PATH_TYPE_FOLDER, watchName).c_str())) {
        LOG_ERROR("ecore_file_mkpath failed!!");
        return false;
    }
    const CStringPtr xml(data_util_resultxml_memory_converter(data.c_str()));
    if (!xml) {
        LOG_ERROR("data_util_resultxml_memory_converter is failed");
        return false;
    }

    // Whether the writes succeed is not looked at; the answer tells that the data was good.
    FileOutputStream resultXml(GeneratePath(true, PATH_TYPE_RESULT_XML, watchName));
    resultXml.Write(data);
    resultXml.Close();

    const std::string path = GeneratePath(true, PATH_TYPE_WATCHFACE_XML, watchName);
    const CommonUtilFileLock lock(path, CommonUtilFileLock::kReadWrite);
    FileOutputStream watchfaceXml(path);
    watchfaceXml.Write(xml.get());
    watchfaceXml.Close();
    return true;
}

bool WatchfaceManager::CopyWatchfaceToRW(const std::string& watchName)
{
    if (watchName.empty()) {
        LOG_ERROR("watchName is empty!!");
        return false;
    }
    const std::string folder = GeneratePath(true, PATH_TYPE_FOLDER, watchName);
    if (!ecore_file_mkpath(folder.c_str())) return false;

    if (!CopyResultXmlOrMarkerToRW(watchName) || !CopyFileToRW(PATH_TYPE_WATCHFACE_XML, watchName)) {
        ecore_file_recursive_rm(folder.c_str());
        return false;
    }
    CopyFileToRW(PATH_TYPE_PREVIEW, watchName);  // a watch face without one is complete
    return true;
}

// Limited complications

bool WatchfaceManager::HasLimitedComplication(const std::string& watchName, bool isRW, const char* limitSpec)
{
    if (watchName.empty()) {
        LOG_ERROR("watchName is empty!!");
        return false;
    }
    return data_util_resultxml_has_limited_complication_xml_file(
               GeneratePath(isRW, PATH_TYPE_RESULT_XML, watchName).c_str(), limitSpec) != 0;
}

bool WatchfaceManager::RemoveLimitedComplication(const std::string& watchName, const char* limitSpec)
{
    if (watchName.empty()) {
        LOG_ERROR("watchName is empty!!");
        return false;
    }
    if (!ecore_file_mkpath(GeneratePath(true, PATH_TYPE_FOLDER, watchName).c_str())) {
        LOG_ERROR("ecore_file_mkpath failed!!");
        return false;
    }
    const CStringPtr xml(data_util_resultxml_converter_remove_limited_complication(
        GeneratePath(true, PATH_TYPE_RESULT_XML, watchName).c_str(), limitSpec));
    if (!xml || !*xml) {
        // The text names the other converter; what reads the log knows it by this name.
        LOG_ERROR("data_util_resultxml_memory_converter is failed");
        return false;
    }
    // Without the lock that UpdateWatchface() takes.
    FileOutputStream watchfaceXml(GeneratePath(true, PATH_TYPE_WATCHFACE_XML, watchName));
    watchfaceXml.Write(xml.get());
    watchfaceXml.Close();
    return true;
}

bool WatchfaceManager::CheckAndRemoveLimitedComplication(const std::string& watchName, bool isRW,
                                                         const char* limitSpec)
{
    if (watchName.empty()) {
        LOG_ERROR("watchName is empty!!");
        return false;
    }
    if (!HasLimitedComplication(watchName, isRW, limitSpec) && !AllowLimitedComplication()) return false;
    // Each step is tried whatever became of the one before; the preview shows what there is.
    if (!isRW) CopyWatchfaceToRW(watchName);
    RemoveLimitedComplication(watchName, limitSpec);
    RequestPreviewCapture(watchName);
    return true;
}

void WatchfaceManager::CheckComplications(int mode)
{
    if (mode != kModeLo && mode != kModeStandalone) {
        LOG_ERROR("not standalone neither LO");
        return;
    }
    WatchfaceMap watchfaces = AllWatchfaces();
    // The one that is shown comes first, and is loaded anew when something was removed from it.
    const std::string current = CommonUtilVConf::GetString(kWatchfaceNameKey).second;
    if (const auto shown = watchfaces.find(current); shown != watchfaces.end()) {
        if (CheckAndRemoveLimitedComplication(current, shown->second)) {
            CommonUtilVConf::SetString(kWatchfaceNameKey, current);
        }
        watchfaces.erase(shown);
    }
    for (const auto& [watchName, isRW] : watchfaces) CheckAndRemoveLimitedComplication(watchName, isRW);
}

// Previews

void WatchfaceManager::RequestPreviewCapture(const std::string& watchName)
{
    if (watchName.empty()) {
        LOG_ERROR("watchName is empty!!");
        return;
    }
    if (CommonUtilIPCControl::CheckTrustedRemotePort(Peer::kCapture, PeerPort::kCapture) != 1) {
        LOG_ERROR("port isn't exist");
        PreLaunchCaptureApp();
        mWaitingWatchfaces.push_back(watchName);
        return;
    }
    LOG_ERROR("port is already exist");
    const BundlePtr request(bundle_create());
    SendCaptureRequest(request.get(), watchName);
    mCaptureProcessingWatchfaces.push_back(watchName);
    if (mWaitingWatchfaces.empty()) {
        RestartFallbackTimer();
    } else {
        SendPendingCaptureRequests();
    }
    LOG_INFO("mCaptureProcessingWatchfaces[%d]", static_cast<int>(mCaptureProcessingWatchfaces.size()));
}

void WatchfaceManager::SendPendingCaptureRequests()
{
    for (const std::string& watchName : mWaitingWatchfaces) {
        const BundlePtr request(bundle_create());
        if (request) SendCaptureRequest(request.get(), watchName);
        // Also what could not be sent is outstanding; the fallback timer gives it up.
        mCaptureProcessingWatchfaces.push_back(watchName);
        usleep(kPauseMicroseconds);
    }
    RestartFallbackTimer();
    mWaitingWatchfaces.clear();
}

void WatchfaceManager::RestartFallbackTimer()
{
    mFallbackTimer.Stop();
    mFallbackTimer.SetInterval(static_cast<double>(mCaptureProcessingWatchfaces.size()) *
                               kFallbackSecondsPerRequest);
    mFallbackTimer.Start();
}

CommonUtilTaskReturn WatchfaceManager::OnFallbackTimerExpired()
{
    LOG_ERROR("update preview fallback timer expired!!");
    mCaptureProcessingWatchfaces.clear();
    CallPreviewDoneCallback();
    return kCommonUtilTaskEnd;
}

void WatchfaceManager::CallPreviewDoneCallback()
{
    // A copy, because the callback may empty its own slot while it runs.
    const std::function<void()> callback = mPreviewDoneCallback;
    if (callback) callback();
}

void WatchfaceManager::SetPreviewDoneCallback(std::function<void()> callback)
{
    mPreviewDoneCallback = std::move(callback);
}

void WatchfaceManager::UpdatePreview(const std::string& watchName, const std::string& previewPath)
{
    if (watchName.empty()) {
        LOG_ERROR("watchName is empty!!");
        return;
    }
    if (previewPath.empty()) {
        RequestPreviewCapture(watchName);
        return;
    }
    if (!CommonUtilFile::Copy(previewPath, GeneratePath(true, PATH_TYPE_PREVIEW, watchName))) {
        LOG_ERROR("CommonUtilFile::Copy failed!!");
        RequestPreviewCapture(watchName);
    }
}

void WatchfaceManager::UpdatePreviewDone(const std::string& watchName)
{
    if (mCaptureProcessingWatchfaces.empty()) return;
    std::erase(mCaptureProcessingWatchfaces, watchName);
    if (!mCaptureProcessingWatchfaces.empty()) return;
    LOG_ERROR("update preview done!!");
    CallPreviewDoneCallback();
    mFallbackTimer.Stop();
}

void WatchfaceManager::RegeneratePreviews()
{
    for (const auto& [watchName, isRW] : AllWatchfaces()) {
        if (!IsMirelWatchface(watchName, false)) continue;
        if (!isRW) CopyWatchfaceToRW(watchName);
        RequestPreviewCapture(watchName);
    }
}

void WatchfaceManager::ResetWatchfaces()
{
    LOG_ERROR("LIVE DEMO UNIT INIT APP START");
    if (!ecore_file_recursive_rm(GeneratePath(true, PATH_TYPE_FOLDER, "").c_str())) {
        LOG_ERROR("ecore_file_recursive_rm(watchlist_path) failed!!");
    }
    SetDefaultWatchfaceDone(false);
    ApplyWatchfaceConfiguration(this);
    RegeneratePreviews();
    // The clock application itself stays as it is.
    CommonUtilVConf::SetString(kWatchfaceNameKey, kResetWatchface);
    LOG_ERROR("LIVE DEMO UNIT INIT APP END");
}

// Launching the capture application

void WatchfaceManager::PreLaunchCaptureApp()
{
    {
        const std::lock_guard lock(mLaunchMutex);
        if (mLaunchWorking) {
            LOG_INFO("mLaunchCaptureAppThread is working!!");
            return;
        }
    }
    // The worker itself sets the flag, so two calls in a row may both come here; the second then waits
    // for the first one's worker.
    if (mLaunchCaptureAppThread.joinable()) mLaunchCaptureAppThread.join();
    mLaunchCaptureAppThread = std::thread(&WatchfaceManager::PreLaunchCaptureAppThread, this);
    LOG_ERROR("mLaunchCaptureAppThread created!!");
}

void WatchfaceManager::PreLaunchCaptureAppThread()
{
    LOG_INFO("");
    SetLaunchWorking(true);
    LaunchCaptureApp();
    SetLaunchWorking(false);
}

void WatchfaceManager::LaunchCaptureApp()
{
    app_control_h handle = nullptr;
    int result = app_control_create(&handle);
    const AppControlPtr request(handle);
    if (result != APP_CONTROL_ERROR_NONE) {
        LOG_ERROR("app_control_create is failed(%d)", result);
        return;
    }
    result = app_control_set_app_id(handle, Peer::kCapture);
    if (result != APP_CONTROL_ERROR_NONE) {
        LOG_ERROR("app_control_set_app_id is failed(%d)", result);
        return;
    }
    result = app_control_send_launch_request(handle, OnLaunchReply, this);
    if (result >= 0) {
        LOG_ERROR("app_control_send_launch_request is success(%d)", result);
        return;
    }
    LOG_ERROR("app_control_send_launch_request is fail(%d)", result);
    if (result == APP_CONTROL_ERROR_LAUNCH_FAILED) RetryLaunch(handle);
}

void WatchfaceManager::RetryLaunch(app_control_h request)
{
    for (int i = 0; i < kLaunchRetries; ++i) {
        usleep(kPauseMicroseconds);
        LOG_ERROR("Waiting for app control socket initial time");
        const int result = app_control_send_launch_request(request, OnLaunchReply, this);
        if (result != APP_CONTROL_ERROR_LAUNCH_FAILED) return;
    }
    LOG_ERROR("MAXIUM_DELAY_TIME is over");
}

void WatchfaceManager::SetLaunchWorking(bool working)
{
    const std::lock_guard lock(mLaunchMutex);
    mLaunchWorking = working;
}

// Whatever the answer is: an application that answers has its port up.
void WatchfaceManager::OnLaunchReply(app_control_h, app_control_h, app_control_result_e, void* manager)
{
    if (manager) static_cast<WatchfaceManager*>(manager)->SendPendingCaptureRequests();
}

}  // namespace WatchfaceService
