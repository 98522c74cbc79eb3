#include "watchface-service.h"

#include <functional>
#include <utility>

#include "common-util-pref.h"
#include "handles.h"
#include "key-node.h"
#include "persisted-keys.h"
#include "service-config-mirel.h"
#include "service-log-manager.h"
#include "service-log.h"

namespace WatchfaceService {

namespace {

// What the previews that ship were made for, together with the 24-hour mode.
constexpr char kShippedLanguage[] = "en_GB";
constexpr char kShippedCountry[] = "en_GB";

constexpr char kLimitingVendor[] = "LO";  // the maker of a phone that limits complications

namespace RequestType {
constexpr char kLogQuery[] = "wfs/type/log_query";
constexpr char kTraceOn[] = "ttrace_enable";
constexpr char kTraceOff[] = "ttrace_disable";
}  // namespace RequestType

constexpr char kConfigurationOperation[] = "configuration";
constexpr char kRetailReset[] = "init_watch";
constexpr char kReplyKey[] = "Result";
constexpr char kReplyValue[] = "OK";

// Whether the text setting differs from what is known of it, which then follows.
bool TakeText(system_settings_key_e key, const char* name, std::string& known)
{
    const std::string now = CommonUtilSystemSettings::GetString(key);
    if (now == known) return false;
    LOG_INFO("%s changed [%s] -> [%s]", name, known.c_str(), now.c_str());
    known = now;
    return true;
}

}  // namespace

using namespace std::placeholders;

WatchfaceServiceApp::WatchfaceServiceApp()
    : mTimeFormatCallback(SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR,
                          std::bind(&WatchfaceServiceApp::OnSystemSettingsChanged, this, _1)),
      mLanguageCallback(SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE,
                        std::bind(&WatchfaceServiceApp::OnSystemSettingsChanged, this, _1)),
      mCountryCallback(SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY,
                       std::bind(&WatchfaceServiceApp::OnSystemSettingsChanged, this, _1)),
      mWatchfaceManager(std::make_shared<WatchfaceManager>()),
      mMsgControl(std::make_unique<MsgControl>(mWatchfaceManager)),
      mPreviewUpdateJob(std::bind(&WatchfaceServiceApp::RegeneratePreviews, this)),
      mIs24HourMode(CommonUtilSystemSettings::Get24HourMode()),
      mLanguage(CommonUtilSystemSettings::GetString(SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE)),
      mCountry(CommonUtilSystemSettings::GetString(SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY)),
      mRetailModeKeyCallback(kRetailModeKey,
                             std::bind(&WatchfaceServiceApp::OnRetailModeKeyChanged, this, _1)),
      mInitialPreviewIdler(std::bind(&WatchfaceServiceApp::OnInitialPreviewIdle, this))
{
    WatchSetupWizard();
    mIsRetailMode = CommonUtilVConf::GetInt(kRetailModeKey).second != 0;
    if (DecideInitialPreviews()) mInitialPreviewIdler.Start();
}

WatchfaceServiceApp::~WatchfaceServiceApp()
{
    if (!mRetailmodeAppControl) return;
    LOG_FAILURE("app_control_destroy", app_control_destroy(mRetailmodeAppControl));
    mRetailmodeAppControl = nullptr;
}

// Start-up. A read that fails answers false or 0.

void WatchfaceServiceApp::WatchSetupWizard()
{
    if (!CommonUtilVConf::GetBool(kFirstBootKey).second) return;
    LOG_INFO("check setup wizard done");
    const auto check = std::bind(&WatchfaceServiceApp::OnVConfCheckComplicationKeyChanged, this, _1);
    mStandaloneKeyCallback = std::make_unique<CommonUtilVConfCallback>(kStandaloneKey, check);
    mEulaKeyCallback = std::make_unique<CommonUtilVConfCallback>(kEulaFinishedKey, check);
    if (CommonUtilVConf::GetBool(kReturnedFromWpcKey).second) {
        LOG_INFO("setup wizard returned from wpc!!");
        OnSetupWizardReturned(mWatchfaceManager);
        return;
    }
    mReturnedFromWpcKeyCallback = std::make_unique<CommonUtilVConfCallback>(
        kReturnedFromWpcKey,
        std::bind(&WatchfaceServiceApp::OnVConfSetupWizardReturnedFromWPCKeyChanged, this, _1));
}

bool WatchfaceServiceApp::DecideInitialPreviews() const
{
    if (CommonUtilPref::GetBool(kInitialPreviewDonePref).second) return false;
    if (mWatchfaceManager->HasRWWatchlist()) {
        LOG_ERROR("watchfaces found in RW area!! set preview update!!");
        return true;
    }
    if (mLanguage == kShippedLanguage && mCountry == kShippedCountry && mIs24HourMode) {
        LOG_ERROR("initial preview matched!! set initial preview update done flag");
        CommonUtilPref::SetBool(kInitialPreviewDonePref, true);
        return false;
    }
    LOG_ERROR("set preview update!! initial language[%s] country[%s] 24 hour mode[%d]", mLanguage.c_str(),
              mCountry.c_str(), mIs24HourMode);
    return true;
}

CommonUtilTaskReturn WatchfaceServiceApp::OnInitialPreviewIdle()
{
    mWatchfaceManager->RegeneratePreviews();
    CommonUtilPref::SetBool(kInitialPreviewDonePref, true);
    return kCommonUtilTaskEnd;
}

void WatchfaceServiceApp::RegeneratePreviews()
{
    mWatchfaceManager->RegeneratePreviews();
}

// Launch requests

const WatchfaceServiceApp::LaunchKey WatchfaceServiceApp::kLaunchKeys[] = {
    {"wfs/req/type", &WatchfaceServiceApp::OnRequestType},
    {"operation",    &WatchfaceServiceApp::OnOperation  },
    {"retail-mode",  &WatchfaceServiceApp::OnRetailMode },
};

void WatchfaceServiceApp::OnAppControl(app_control_s* request)
{
    for (const LaunchKey& row : kLaunchKeys) {
        char* value = nullptr;
        LOG_FAILURE("app_control_get_extra_data", app_control_get_extra_data(request, row.key, &value));
        const CStringPtr owned(value);
        if (value) (this->*row.handle)(request, value);
    }
}

void WatchfaceServiceApp::OnRequestType(app_control_h, const std::string& type)
{
    if (type == RequestType::kLogQuery) {
        LogManager(mWatchfaceManager).SendSurveyLogs();
    } else if (type == RequestType::kTraceOn) {
        CommonUtilPref::SetTTraceEnabled(true);
    } else if (type == RequestType::kTraceOff) {
        CommonUtilPref::SetTTraceEnabled(false);
    }
}

void WatchfaceServiceApp::OnOperation(app_control_h, const std::string& operation)
{
    LOG_INFO("operation[%s]", operation.c_str());
    if (operation != kConfigurationOperation) return;
    LOG_ERROR("received watchface configuration operation!!");
    const std::shared_ptr<WatchfaceManager> manager = mWatchfaceManager;
    ApplyWatchfaceConfiguration(manager.get());
}

void WatchfaceServiceApp::OnRetailMode(app_control_h request, const std::string& mode)
{
    LOG_INFO("retail-mode[%s][%d]", mode.c_str(), mIsRetailMode);
    if (!mIsRetailMode || mode != kRetailReset) return;
    LOG_ERROR("retailmode init_watch received!!");
    // One that is held already is let go of unanswered; the platform ends it with the process.
    LOG_FAILURE("app_control_clone", app_control_clone(&mRetailmodeAppControl, request));
    mWatchfaceManager->SetPreviewDoneCallback(
        std::bind(&WatchfaceServiceApp::OnUpdatePreviewDoneCallback, this));
    mWatchfaceManager->ResetWatchfaces();
}

// Every step is tried whatever became of the ones before.
void WatchfaceServiceApp::OnUpdatePreviewDoneCallback()
{
    if (!mRetailmodeAppControl) {
        LOG_ERROR("mRetailmodeAppControl nullptr!!");
        return;
    }
    LOG_ERROR("retailmode send reply!!");
    app_control_h reply = nullptr;
    LOG_FAILURE("app_control_create", app_control_create(&reply));
    // The text names another call than the one made; what reads the log knows it by this name.
    LOG_FAILURE("app_control_get_extra_data", app_control_add_extra_data(reply, kReplyKey, kReplyValue));
    LOG_FAILURE(
        "app_control_reply_to_launch_request",
        app_control_reply_to_launch_request(reply, mRetailmodeAppControl, APP_CONTROL_RESULT_SUCCEEDED));
    LOG_FAILURE("app_control_destroy(reply)", app_control_destroy(reply));
    LOG_FAILURE("app_control_destroy", app_control_destroy(mRetailmodeAppControl));
    mRetailmodeAppControl = nullptr;
    mWatchfaceManager->SetPreviewDoneCallback(nullptr);
}

// Watchers

void WatchfaceServiceApp::OnSystemSettingsChanged(system_settings_key_e key)
{
    bool changed = false;
    switch (key) {
        case SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR:
            changed = Take24HourMode();
            break;
        case SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE:
            changed = TakeText(key, "SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE", mLanguage);
            break;
        case SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY:
            changed = TakeText(key, "SYSTEM_SETTINGS_KEY_LOCALE_COUNTRY", mCountry);
            break;
        default:
            break;
    }
    if (changed) mPreviewUpdateJob.Start();
}

bool WatchfaceServiceApp::Take24HourMode()
{
    const bool now = CommonUtilSystemSettings::Get24HourMode();
    if (now == mIs24HourMode) return false;
    LOG_INFO("SYSTEM_SETTINGS_KEY_LOCALE_TIMEFORMAT_24HOUR changed [%d] -> [%d]", mIs24HourMode, now);
    mIs24HourMode = now;
    return true;
}

void WatchfaceServiceApp::OnRetailModeKeyChanged(keynode_t* node)
{
    mIsRetailMode = vconf_keynode_get_int(node) != 0;
}

void WatchfaceServiceApp::OnVConfCheckComplicationKeyChanged(keynode_t* node)
{
    const std::string key = vconf_keynode_get_name(node);
    LOG_INFO("key[%s]", key.c_str());
    if (key == kEulaFinishedKey) {
        const bool limits = CommonUtilVConf::GetString(kHostVendorKey).second == kLimitingVendor;
        if (limits && vconf_keynode_get_bool(node)) CheckComplicationsSoon(kModeLo);
    } else if (key == kStandaloneKey) {
        if (vconf_keynode_get_int(node) != 0) CheckComplicationsSoon(kModeStandalone);
    }
}

void WatchfaceServiceApp::CheckComplicationsSoon(int mode)
{
    mComplicationCheckJob =
        std::make_unique<CommonUtilJob>([this, mode] { mWatchfaceManager->CheckComplications(mode); });
    LOG_INFO("check limited complication!!");
    mComplicationCheckJob->Start();
}

void WatchfaceServiceApp::OnVConfSetupWizardReturnedFromWPCKeyChanged(keynode_t* node)
{
    const std::string key = vconf_keynode_get_name(node);
    LOG_INFO("key[%s]", key.c_str());
    if (key != kReturnedFromWpcKey || vconf_keynode_get_bool(node) != 1) return;
    LOG_INFO("setup wizard returned from wpc!!");
    OnSetupWizardReturned(mWatchfaceManager);
}

}  // namespace WatchfaceService
