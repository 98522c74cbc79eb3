#include "load-measures.h"

#include "load-messages.h"

namespace Campaign {

Memory::Memory(const RunningService& service)
    : now(service.Process().ProcValue("smaps_rollup", "Pss:")),
      most(service.Process().ProcValue("status", "VmHWM:"))
{
}

double MillisecondsUntilAnswered(RawBus& manager)
{
    static int number = 0;
    const std::string marker = std::string(kMarkerBegin) + "question" + std::to_string(++number) + "-";
    const std::string question = MessageOf("date", {kManager.app, kManager.port, kPhone, ""}, marker, 0);
    const double microseconds = TestSupport::TimeOf([&] {
        manager.Send(question);
        while (MarkerOf(manager.Next()) != marker) continue;
    });
    return microseconds / 1e3;
}

}  // namespace Campaign
