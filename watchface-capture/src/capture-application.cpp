#include "capture-application.h"

#include "capture-log.h"
#include "service-app.h"

namespace Capture {
namespace {

constexpr char kPort[] = "watchface-capture::localport";
constexpr char kServiceId[] = "com.corvane.watchface-service";
constexpr char kServicePort[] = "watchface-service::localport";
constexpr double kIdleSeconds = 10;
// More requests than a watch has faces many times over; whoever sends more gets an answer without a picture.
constexpr size_t kMostWaiting = 4096;

}  // namespace

CaptureApplication::CaptureApplication()
    : mDrawJob([this] { DrawNext(); }),
      mLeaveTimer(kIdleSeconds, [this] { return OnIdleTooLong(); }),
      mPort(kPort, true, [this](int, const std::string& sender, const std::string&, bool, bundle* message) {
          OnMessage(sender, message);
      })
{
    mLeaveTimer.Start();
}

// What has arrived is worked off before leaving.
CaptureApplication::~CaptureApplication()
{
    while (!mWaiting.empty()) DrawNext();
}

void CaptureApplication::OnAppControl(app_control_s* request)
{
    app_control_h reply = nullptr;
    int result = app_control_create(&reply);
    if (result == APP_CONTROL_ERROR_NONE) {
        result = app_control_reply_to_launch_request(reply, request, APP_CONTROL_RESULT_SUCCEEDED);
        app_control_destroy(reply);
    }
    if (result != APP_CONTROL_ERROR_NONE)
        CAPTURE_ERROR("a launch request could not be answered (%d)", result);
    Stay();
    if (mWaiting.empty()) mLeaveTimer.Start();  // anew: requests are about to come
}

void CaptureApplication::OnMessage(const std::string& sender, bundle* message)
{
    if (sender != kServiceId) {
        CAPTURE_ERROR("a request of [%s] is ignored: only the service may ask", sender.c_str());
        return;
    }
    const std::string name = CommonUtilIPCControl::BundleGetString(message, "pkgName");
    if (mWaiting.size() >= kMostWaiting) {
        CAPTURE_ERROR("watchface[%s] is not drawn: %zu requests are waiting", name.c_str(), mWaiting.size());
        Finish(name);
        return;
    }
    Stay();
    mWaiting.push_back(name);
    mDrawJob.Start();
}

void CaptureApplication::DrawNext()
{
    if (mWaiting.empty()) return;
    const std::string name = mWaiting.front();
    mWaiting.pop_front();
    mPreview.Replace(name);
    Finish(name);
    if (mWaiting.empty()) {
        mLeaveTimer.Start();
    } else {
        mDrawJob.Start();
    }
}

void CaptureApplication::Finish(const std::string& name)
{
    bundle* message = bundle_create();
    int result = message ? 0 : BUNDLE_ERROR_OUT_OF_MEMORY;
    if (message) {
        bundle_add_str(message, "type", "watch-capture-finished");
        bundle_add_str(message, "pkgid", name.c_str());
        result = CommonUtilIPCControl::SendTrustedMessage(kServiceId, kServicePort, message, &mPort);
        bundle_free(message);
    }
    if (result != 0)
        CAPTURE_ERROR("the service could not be told of watchface[%s] (%d)", name.c_str(), result);
}

void CaptureApplication::Stay()
{
    mLeaveTimer.Stop();
    mLeaveIdler.reset();
}

CommonUtilTaskReturn CaptureApplication::OnIdleTooLong()
{
    mLeaveIdler = std::make_unique<CommonUtilIdler>([] {
        service_app_exit();
        return kCommonUtilTaskEnd;
    });
    mLeaveIdler->Start();
    return kCommonUtilTaskEnd;
}

}  // namespace Capture
