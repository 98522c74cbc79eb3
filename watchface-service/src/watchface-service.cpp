#include "watchface-service.h"

#include <functional>
#include <utility>

#include "key-node.h"
#include "persisted-keys.h"
#include "service-log.h"

namespace WatchfaceService {

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
    ReadRetailMode();
}

WatchfaceServiceApp::~WatchfaceServiceApp()
{
    if (!mRetailmodeAppControl) return;
    const int result = app_control_destroy(mRetailmodeAppControl);
    if (result != APP_CONTROL_ERROR_NONE) LOG_INFO("app_control_destroy returns %d(%x)", result, result);
    mRetailmodeAppControl = nullptr;
}

void WatchfaceServiceApp::ReadRetailMode()
{
    const auto [read, value] = CommonUtilVConf::GetInt(kRetailModeKey);
    mIsRetailMode = read && value != 0;
}

void WatchfaceServiceApp::OnRetailModeKeyChanged(keynode_t* node)
{
    mIsRetailMode = vconf_keynode_get_int(node) != 0;
}

void WatchfaceServiceApp::RegeneratePreviews()
{
    mWatchfaceManager->RegeneratePreviews();
}

void WatchfaceServiceApp::OnAppControl(app_control_s*) {}

void WatchfaceServiceApp::OnUpdatePreviewDoneCallback() {}

void WatchfaceServiceApp::OnSystemSettingsChanged(system_settings_key_e) {}

CommonUtilTaskReturn WatchfaceServiceApp::OnInitialPreviewIdle()
{
    return kCommonUtilTaskEnd;
}

}  // namespace WatchfaceService
