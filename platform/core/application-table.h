// The applications of the watch: who they are on the bus, which program they are, where they listen, and
// as which user they run on a device. Activation files, units and the bus policy are made from this table.

#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Platform {

struct Application {
    std::string_view id;
    std::string_view program;  // its executable below libexec; empty when it is another project's
    std::array<std::string_view, 2> trustedPorts;
    std::array<std::string_view, 1> openPorts;
    std::string_view user;    // on a device
    std::string_view client;  // the one application that may speak to it there; empty: each may
};

// Every application of the watch has a name below this one.
inline constexpr std::string_view kApplicationNamespace = "com.corvane";

inline constexpr std::string_view kServiceId = "com.corvane.watchface-service";
inline constexpr std::string_view kFacesId = "com.corvane.watchface";
inline constexpr std::string_view kCaptureId = "com.corvane.watchface-capture";

// On a device: where the watch keeps what it writes, and the group of all users of applications, who alone
// get there.
inline constexpr std::string_view kDeviceRoot = "/var/lib/watch";
inline constexpr std::string_view kDeviceGroup = "watch";

// clang-format off
inline constexpr Application kApplications[] = {
    // id                                     program              trusted ports                      open ports                  user                 client
    {kServiceId,                              "watchface-service", {"watchface-service::localport"},   {"evaluation-helper-port"}, "watchface",           ""},
    {kCaptureId,                              "watchface-capture", {"watchface-capture::localport"},   {},                         "watchface-capture",   kServiceId},
    {kFacesId,                                "",                  {},                                 {},                         "watch-viewer",        ""},
    {"com.corvane.watch-utils.setting-list",  "",                  {"clocksetting::localport"},        {},                         "watch-settings",      ""},
    {"com.corvane.watchface-editor",          "",                  {"watch-face-editor::localport"},   {},                         "watch-editor",        ""},
    {"com.corvane.w-home",                    "",                  {"w-home::localport"},              {},                         "watch-home",          ""},
    {"com.corvane.w-manager-service",         "",                  {"w-manager-service::localport"},   {},                         "watch-manager",       ""},
    {"com.corvane.worldclock-map",            "",                  {},                                 {},                         "watch-worldclock",    ""},
    {"com.corvane.worldclock-city-detail",    "",                  {},                                 {},                         "watch-worldclock",    ""},
    {"com.corvane.watch-utils.service",       "",                  {"watch-utils-service::localport"}, {},                         "watch-utils",         ""},
};
// clang-format on

constexpr const Application* FindApplication(std::string_view id)
{
    for (const Application& app : kApplications) {
        if (app.id == id) return &app;
    }
    return nullptr;
}

// The id of a program of ours, at compile time.
consteval const char* IdOfProgram(std::string_view program)
{
    for (const Application& app : kApplications) {
        if (app.program == program) return app.id.data();  // a literal, so it ends in a zero
    }
    throw "the table of applications has no such program";
}

}  // namespace Platform
