// The capture application: draws previews for the service.
//
// The service launches it, waits for the answer, and sends one request a face to its port. Requests wait in a
// queue and are drawn one per turn of the main loop, in order, so that messages keep flowing. Every request
// is answered with "watch-capture-finished", also when nothing could be drawn: then the old preview stays,
// and the log says why. After a while without work the application leaves; an idle one never wakes up before
// that.

#pragma once

#include <deque>
#include <memory>
#include <string>

#include "common-util-app.h"
#include "common-util-ipc-control.h"
#include "common-util-tasks.h"
#include "preview.h"

namespace Capture {

class CaptureApplication : public CommonUtilAppInterface {
public:
    CaptureApplication();
    ~CaptureApplication() override;
    CaptureApplication(const CaptureApplication&) = delete;
    CaptureApplication& operator=(const CaptureApplication&) = delete;

    void OnAppControl(app_control_s* request) override;

private:
    void OnMessage(const std::string& sender, bundle* message);
    void DrawNext();
    void Finish(const std::string& name);
    void Stay();
    CommonUtilTaskReturn OnIdleTooLong();

    Preview mPreview;
    std::deque<std::string> mWaiting;  // names, in the order of their requests
    CommonUtilJob mDrawJob;
    CommonUtilTimer mLeaveTimer;
    // Runs once nothing else is pending, so that a message that has arrived keeps the application.
    std::unique_ptr<CommonUtilIdler> mLeaveIdler;
    CommonUtilIPCControl mPort;  // last: its messages use all of the above
};

}  // namespace Capture
