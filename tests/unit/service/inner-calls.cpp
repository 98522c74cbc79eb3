#include "inner-calls.h"

#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform-state.h"
#include "service-log-manager.h"

using WatchfaceService::LogManager;
using WatchfaceService::WatchfaceManager;

namespace {

InnerCalls* gInnerCalls = nullptr;

using ManagerPtr = std::shared_ptr<WatchfaceManager>;

#define SETUP_WIZARD_RETURNED \
    "_ZN16WatchfaceService21OnSetupWizardReturnedESt10shared_ptrINS_16WatchfaceManagerEE"
#define APPLY_CONFIGURATION "_ZN16WatchfaceService27ApplyWatchfaceConfigurationEPNS_16WatchfaceManagerE"
#define CHECK_COMPLICATIONS "_ZN16WatchfaceService16WatchfaceManager18CheckComplicationsEi"
#define SEND_SURVEY_LOGS "_ZN16WatchfaceService10LogManager14SendSurveyLogsEv"
#define THREAD_JOIN "_ZNSt6thread4joinEv"

}  // namespace

InnerCalls::InnerCalls()
{
    gInnerCalls = this;
}

InnerCalls::~InnerCalls()
{
    gInnerCalls = nullptr;
}

void InnerCalls::Note(const std::string& call, const WatchfaceManager* manager)
{
    if (!gInnerCalls) return;
    MemoryPlatform::Note("inner " + call);
    if (manager) gInnerCalls->mManagers.push_back(manager);
}

void RealReturned(ManagerPtr manager) __asm__("__real_" SETUP_WIZARD_RETURNED);
void WrapReturned(ManagerPtr manager) __asm__("__wrap_" SETUP_WIZARD_RETURNED);
void WrapReturned(ManagerPtr manager)
{
    InnerCalls::Note("OnSetupWizardReturned", manager.get());
    RealReturned(std::move(manager));
}

void RealConfigure(WatchfaceManager* manager) __asm__("__real_" APPLY_CONFIGURATION);
void WrapConfigure(WatchfaceManager* manager) __asm__("__wrap_" APPLY_CONFIGURATION);
void WrapConfigure(WatchfaceManager* manager)
{
    InnerCalls::Note("ApplyWatchfaceConfiguration", manager);
    RealConfigure(manager);
}

void RealCheck(WatchfaceManager* self, int mode) __asm__("__real_" CHECK_COMPLICATIONS);
void WrapCheck(WatchfaceManager* self, int mode) __asm__("__wrap_" CHECK_COMPLICATIONS);
void WrapCheck(WatchfaceManager* self, int mode)
{
    InnerCalls::Note("CheckComplications " + std::to_string(mode), self);
    RealCheck(self, mode);
}

void RealSend(LogManager* self) __asm__("__real_" SEND_SURVEY_LOGS);
void WrapSend(LogManager* self) __asm__("__wrap_" SEND_SURVEY_LOGS);
void WrapSend(LogManager* self)
{
    InnerCalls::Note("SendSurveyLogs", nullptr);
    RealSend(self);
}

void RealJoin(std::thread* self) __asm__("__real_" THREAD_JOIN);
void WrapJoin(std::thread* self) __asm__("__wrap_" THREAD_JOIN);
void WrapJoin(std::thread* self)
{
    InnerCalls::Note("join", nullptr);
    RealJoin(self);
}
