// Calls within the service that leave nothing on the platform to be seen by. While an
// InnerCalls lives, they stand in the platform's timeline beside the calls of the platform:
//
//   inner OnSetupWizardReturned | inner ApplyWatchfaceConfiguration
//   inner CheckComplications MODE | inner SendSurveyLogs
//   inner join                       (of a thread; before it waits)
//
// The calls are made all the same. The linker puts what records them in front of them.

#pragma once

#include <string>
#include <vector>

#include "service-watchface-manager.h"

class InnerCalls {
public:
    InnerCalls();
    ~InnerCalls();
    InnerCalls(const InnerCalls&) = delete;
    InnerCalls& operator=(const InnerCalls&) = delete;

    // Whom the product's hooks were given, and whose complications were checked; one entry a call.
    const std::vector<const WatchfaceService::WatchfaceManager*>& Managers() const { return mManagers; }

    // For what records.
    static void Note(const std::string& call, const WatchfaceService::WatchfaceManager* manager);

private:
    std::vector<const WatchfaceService::WatchfaceManager*> mManagers;
};
