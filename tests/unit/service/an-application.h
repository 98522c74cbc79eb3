// The fixture of the application object: a watch on which the service has not started yet. Its language,
// country and hour mode are those that the shipped previews were made for.

#pragma once

#include <memory>
#include <string>

#include "inner-calls.h"
#include "on-a-platform.h"
#include "watchface-service.h"

class AnApplication : public OnAPlatform {
protected:
    void Start() { app = std::make_unique<WatchfaceService::WatchfaceServiceApp>(); }

    // A start that leaves no trace; after it only what the test does is seen.
    void StartQuietly()
    {
        Start();
        platform.RunUntilIdle();
        platform.Forget();
    }

    // A watch face in the read-only area that needs no document.
    void Ship(const std::string& name) const
    {
        platform.WriteFile(platform.RO("watchlist/" + name + "/without_result_xml"), "");
        platform.WriteFile(platform.RO("watchlist/" + name + "/watchface.xml"), "<watchface/>");
    }

    // Two faces of this product and one of another; the capture application is up.
    void ShipFaces()
    {
        for (const char* name : {kFirst, kSecond, "com.example.face"}) Ship(name);
        platform.SetPortUp(kCapture, kCapturePort);
    }

    // The names that a capture was asked for, in order.
    MemoryPlatform::Strings Captured() const
    {
        MemoryPlatform::Strings names;
        for (const auto& sent : platform.SentTo(kCapture)) names.push_back(sent.Text("pkgName"));
        return names;
    }

    // As the platform does it: the request ends with the application's callback, unless that holds it.
    std::unique_ptr<MemoryPlatform::ReceivedRequest> Ask(const MemoryPlatform::Message& extra)
    {
        auto request = std::make_unique<MemoryPlatform::ReceivedRequest>(extra);
        app->OnAppControl(request->Handle());
        request->Close();
        return request;
    }

    // The capture application says that it is finished.
    void Finish(const std::string& name)
    {
        ASSERT_TRUE(platform.Deliver("watchface-service::localport", kCapture,
                                     {
                                         {"type",  "watch-capture-finished"},
                                         {"pkgid", name                    }
        }));
    }

    static constexpr char kFirst[] = "com.corvane.watchface-mirel-a";
    static constexpr char kSecond[] = "com.corvane.watchface-mirel-b";
    static constexpr char kInitialDone[] = "wfs/pref/initial_preview_update_done";

    InnerCalls innerCalls;
    std::unique_ptr<WatchfaceService::WatchfaceServiceApp> app;
};
