// The application object of the service. It owns the managers and the watchers on platform keys and system
// settings, and lives from the platform's create callback to its terminate callback.
//
// What it decides: whether all previews have to be captured again, at start-up (the ones that ship were made
// for British English and 24 hours) and whenever language, country or hour mode change; when limited
// complications are looked for; and what launch requests ask for. One kind of launch request is held: a
// reset in retail mode is answered when the previews that it asked for are there.
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

    // Does what each of the known extra data asks for, in the order of kLaunchKeys; one request may ask for
    // several things. What it does not know it ignores.
    void OnAppControl(app_control_s* request) override;

    // The requested previews are there, or given up: answers the held request and takes itself out of the
    // watch-face manager's slot. Without a held request it does neither.
    void OnUpdatePreviewDoneCallback();

private:
    struct LaunchKey {
        const char* key;
        void (WatchfaceServiceApp::*handle)(app_control_h request, const std::string& value);
    };

    // One row per key of extra data.
    static const LaunchKey kLaunchKeys[];

    void OnRequestType(app_control_h request, const std::string& type);
    void OnOperation(app_control_h request, const std::string& operation);
    void OnRetailMode(app_control_h request, const std::string& mode);

    void WatchSetupWizard();
    // Whether all previews are to be captured; where that is settled for good, remembers it.
    bool DecideInitialPreviews() const;
    CommonUtilTaskReturn OnInitialPreviewIdle();
    void RegeneratePreviews();

    void OnSystemSettingsChanged(system_settings_key_e key);
    bool Take24HourMode();
    void OnRetailModeKeyChanged(keynode_t* node);
    void OnVConfCheckComplicationKeyChanged(keynode_t* node);
    void OnVConfSetupWizardReturnedFromWPCKeyChanged(keynode_t* node);
    void CheckComplicationsSoon(int mode);

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
    app_control_h mRetailmodeAppControl = nullptr;  // the held launch request, ours to destroy
    CommonUtilVConfCallback mRetailModeKeyCallback;
    CommonUtilIdler mInitialPreviewIdler;
    EvaluationHelper mEvaluationHelper;
};

}  // namespace WatchfaceService
