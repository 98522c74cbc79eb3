#include <unistd.h>

#include "groups.h"

namespace Bench {

namespace {

constexpr int kStarts = 40;

Figure Start(Watch& watch)
{
    Figure figure{
        "start until the name is owned", "ms", {}, {}, "a program with sd-bus alone", AtMostTimes(2.5)};
    const auto start = [&](const std::vector<std::string>& command, const char* name) {
        std::unique_ptr<Program> program;
        const double time =
            watch.TimeUntilOwned(name, [&] { program = std::make_unique<Program>(command); }) / 1000;
        program.reset();
        watch.AwaitOwner(name, false);
        return time;
    };
    for (int i = 0; i < kStarts; ++i) {
        figure.ours.push_back(start({watch.ServiceProgram()}, kService));
        figure.floor.push_back(start({watch.BareProgram(), kBare}, kBare));
    }
    return figure;
}

Figure Memory(const Program& service, const Program& bare)
{
    const auto megabytes = [](const Program& program) {
        return static_cast<double>(program.ProcValue("smaps_rollup", "Pss:")) / 1024;
    };
    return {"memory before the first message (PSS)", "MB",     {megabytes(service)}, {megabytes(bare)},
            "a program with sd-bus alone",           AtMost(4)};
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
    Figures figures{Start(watch)};
    const Program& service = watch.Service();
    std::unique_ptr<Program> bare;
    watch.TimeUntilOwned(kBare, [&] {
        bare = std::make_unique<Program>(std::vector<std::string>{watch.BareProgram(), kBare});
    });
    figures.push_back(Memory(service, *bare));
    figures.push_back(WakeUps(service, *bare, choices.idleSeconds));
    return figures;
}

}  // namespace Bench
