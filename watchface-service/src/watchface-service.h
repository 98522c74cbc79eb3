// The application object of the service. It owns the managers and the watchers on platform keys and system
// settings, and lives from the platform's create callback to its terminate callback.
//
// Its members are made in the order in which they stand below, each finished before the next, and go in the
// reverse order. All of it happens on the main loop's thread.

#pragma once

#include <memory>
#include <string>

#include "app-control.h"
#include "common-util-app.h"
#include "common-util-keys.h"
#include "common-util-system-settings.h"
#include "common-util-tasks.h"
#include "service-evaluation-helper.h"
#include "service-msg-control.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

class WatchfaceServiceApp : public CommonUtilAppInterface {
public:
    WatchfaceServiceApp();
    ~WatchfaceServiceApp() override;
    WatchfaceServiceApp(const WatchfaceServiceApp&) = delete;
    WatchfaceServiceApp& operator=(const WatchfaceServiceApp&) = delete;

    // Launch requests. Not working yet: they are left unanswered.
    void OnAppControl(app_control_s* request) override;

    // Every requested preview is there. Not working yet.
    void OnUpdatePreviewDoneCallback();

private:
    void OnSystemSettingsChanged(system_settings_key_e key);
    void OnRetailModeKeyChanged(keynode_t* node);
    CommonUtilTaskReturn OnInitialPreviewIdle();
    void RegeneratePreviews();
    void ReadRetailMode();

    CommonUtilSystemSettingsCallback mTimeFormatCallback;
    CommonUtilSystemSettingsCallback mLanguageCallback;
    CommonUtilSystemSettingsCallback mCountryCallback;
    std::shared_ptr<WatchfaceManager> mWatchfaceManager;
    std::unique_ptr<MsgControl> mMsgControl;
    CommonUtilJob mPreviewUpdateJob;
    bool mIs24HourMode;
    std::string mLanguage;
    std::string mCountry;
    std::string mReserved;  // this product keeps nothing in it
    std::unique_ptr<CommonUtilJob> mComplicationCheckJob;
    std::unique_ptr<CommonUtilVConfCallback> mStandaloneKeyCallback;
    std::unique_ptr<CommonUtilVConfCallback> mEulaKeyCallback;
    std::unique_ptr<CommonUtilVConfCallback> mReturnedFromWpcKeyCallback;
    bool mIsRetailMode = false;
    app_control_h mRetailmodeAppControl = nullptr;  // a held launch request, ours to destroy
    CommonUtilVConfCallback mRetailModeKeyCallback;
    CommonUtilIdler mInitialPreviewIdler;
    EvaluationHelper mEvaluationHelper;
};

}  // namespace WatchfaceService
