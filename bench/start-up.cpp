#include <unistd.h>

#include "groups.h"

namespace Bench {

namespace {

constexpr int kStarts = 40;

Figures StartAndMemory(Watch& watch)
{
    Figure time{
        "start until the name is owned", "ms", {}, {}, "a program with sd-bus alone", AtMostTimes(2.5)};
    // What others use too counts in part, so it depends on what else runs.
    Figure memory{"memory before the first message (PSS)", "MB",     {}, {},
                  "a program with sd-bus alone",           AtMost(4)};
    const auto start = [&](const std::vector<std::string>& command, const char* name,
                           std::vector<double>& times, std::vector<double>& megabytes) {
        std::unique_ptr<Program> program;
        times.push_back(watch.TimeUntilOwned(name, [&] { program = std::make_unique<Program>(command); }) /
                        1000);
        megabytes.push_back(static_cast<double>(program->ProcValue("smaps_rollup", "Pss:")) / 1024);
        program.reset();
        watch.AwaitOwner(name, false);
    };
    for (int i = 0; i < kStarts; ++i) {
        start({watch.ServiceProgram()}, kService, time.ours, memory.ours);
        start({watch.BareProgram(), kBare}, kBare, time.floor, memory.floor);
    }
    return {time, memory};
}

Figure WakeUps(const Program& service, const Program& bare, int seconds)
{
    const auto wakeUps = [](const Program& program) {
        return static_cast<double>(program.ProcValue("status", "voluntary_ctxt_switches:"));
    };
    const double before = wakeUps(service), bareBefore = wakeUps(bare);
    sleep(static_cast<unsigned>(seconds));
    return {"wake-ups in " + std::to_string(seconds) + " s idle",
            "",
            {wakeUps(service) - before},
            {wakeUps(bare) - bareBefore},
            "a program with sd-bus alone",
            AtMost(0)};
}

}  // namespace

Figures StartUp(Watch& watch, const Choices& choices)
{
    Figures figures = StartAndMemory(watch);
    const Program& service = watch.Service();
    std::unique_ptr<Program> bare;
    watch.TimeUntilOwned(kBare, [&] {
        bare = std::make_unique<Program>(std::vector<std::string>{watch.BareProgram(), kBare});
    });
    figures.push_back(WakeUps(service, *bare, choices.idleSeconds));
    return figures;
}

}  // namespace Bench
