// Measures the service beside its floors, in one run, and prints one table.
//
//     watch-bench PREFIX [GROUP…] [--idle SECONDS] [--faces N] [--json FILE]
//
// PREFIX is a build tree. Everything runs on one processor.

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cstdio>
#include <fstream>

#include "groups.h"
#include "log.h"
#include "process.h"

namespace {

using namespace Bench;

struct Row {
    const char* name;
    Group measure;
};

constexpr Row kGroups[] = {
    {"start-up", StartUp },
    {"messages", Messages},
    {"updates",  Updates },
    {"keys",     Keys    },
    {"dates",    Dates   },
    {"previews", Previews},
    {"drawings", Drawings},
    {"folders",  Folders },
};

bool IsChosen(const std::vector<std::string>& chosen, const char* name)
{
    return chosen.empty() || std::find(chosen.begin(), chosen.end(), name) != chosen.end();
}

}  // namespace

// What the measured libraries log is not this program's business.
int __dlog_print(log_id_t, int, const char*, const char*, ...)
{
    return 0;
}

int main(int argc, char** argv)
{
    CLI::App parser("Measures the service beside its floors.");
    std::string prefix, json;
    std::vector<std::string> chosen, known;
    Choices choices;
    for (const Row& group : kGroups) known.emplace_back(group.name);
    parser.add_option("prefix", prefix, "a build tree")->required();
    parser.add_option("groups", chosen, "which groups; all unless some are named")
        ->check(CLI::IsMember(known));
    parser.add_option("--idle", choices.idleSeconds, "for how long wake-ups are counted")
        ->capture_default_str();
    parser.add_option("--faces", choices.mostFaces, "how far the area grows")->capture_default_str();
    parser.add_option("--json", json, "a file for the figures");
    CLI11_PARSE(parser, argc, argv);
    try {
        TestSupport::StayOnOneProcessor();
        nlohmann::ordered_json all = nlohmann::ordered_json::array();
        PrintHeading();
        for (const Row& group : kGroups) {
            if (!IsChosen(chosen, group.name)) continue;
            Watch watch(prefix, BENCH_FOLDER);
            Platform::SetAreasFromEnvironment();
            for (const Figure& figure : group.measure(watch, choices)) {
                Print(figure);
                all.push_back(ToJson(figure));
            }
        }
        if (!json.empty()) std::ofstream(json) << all.dump(2) << '\n';
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "watch-bench: %s\n", error.what());
        return 1;
    }
}
