// A flat document that somebody put into the watch's files, as the service reads it for its usage records,
// through the XML module itself. Each complication that has a role leads to one record or one line of the
// log, in the document's order; records have the labels of the table alone; and what is no such document
// leads to none.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "memory-platform.h"
#include "module-path.h"
#include "service-log-manager.h"
#include "service-watchface-manager.h"
#include "xml-module.h"

// The module is linked into this program, which is searched under this name.
std::string Platform::ModulePath(const std::string&)
{
    return "";
}

namespace {

using MemoryPlatform::Strings;

constexpr char kApplication[] = "com.corvane.watchface-service";
constexpr const char* kLabels[] = {"Battery",       "Schedule", "Weather",  "World Clock", "Alarm",
                                   "Steps",         "Water",    "Caffeine", "Heart rate",  "D-day",
                                   "Notifications", "Shortcut", "Moonphase"};

void Check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "usage records: %s\n", what);
    std::abort();
}

void AddSources(const void* node, Strings* sources)
{
    if (watch_xml_name(node) == std::string("complication") && *watch_xml_attribute(node, "role"))
        sources->emplace_back(watch_xml_attribute(node, "source"));
    for (const void* child = watch_xml_first_child(node, nullptr); child;
         child = watch_xml_next_sibling(child, nullptr)) {
        AddSources(child, sources);
    }
}

// The sources of the complications with a role; null where it is no flat document.
std::unique_ptr<Strings> SourcesIn(const std::string& path)
{
    const std::unique_ptr<void, decltype(&watch_xml_close)> document(watch_xml_open(path.c_str()),
                                                                     watch_xml_close);
    const void* root = document ? watch_xml_root(document.get()) : nullptr;
    if (!root || watch_xml_name(root) != std::string("watchface")) return nullptr;
    auto sources = std::make_unique<Strings>();
    AddSources(root, sources.get());
    return sources;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    MemoryPlatform::Platform platform;
    const std::string path = platform.RW("watchlist/own/watchface.xml");
    platform.WriteFile(path, {reinterpret_cast<const char*>(data), size});
    platform.SetKey("db/wms/clocks_set_idle", "com.corvane.watchface");
    platform.SetKey("file/private/com.corvane.watchface/watchface_name", "own");
    const auto manager = std::make_shared<WatchfaceService::WatchfaceManager>();
    WatchfaceService::LogManager(manager).SendComplicationDataOld();

    const std::vector<MemoryPlatform::SurveyRecord> records = platform.Survey();
    for (const auto& record : records) {
        const bool isLabel = std::ranges::find(kLabels, record.value) != std::end(kLabels);
        Check(record.feature && record.appId == kApplication && record.name == "1007" &&
                  record.extra.empty() && (isLabel || record.value == "None"),
              "an odd record");
    }
    const Strings errors = platform.Errors();
    const auto sources = SourcesIn(path);
    if (!sources) {
        Check(records.empty() && std::ranges::count(errors, "doc is invalid!!") == 1,
              "records of no document");
        return 0;
    }
    Strings unknown;
    for (const std::string& error : errors) {
        if (error.starts_with("complication not handled(")) unknown.push_back(error);
    }
    const bool isNone = records.size() == 1 && records.front().value == "None";
    if (isNone || sources->empty()) {
        Check(isNone && sources->empty() && unknown.empty(), "no complications, and some");
        return 0;
    }
    Check(records.size() + unknown.size() == sources->size(), "a complication is lost");
    auto next = unknown.begin();
    for (const std::string& source : *sources) {
        if (next != unknown.end() && *next == "complication not handled(" + source + ")") ++next;
    }
    Check(next == unknown.end(), "unknown complications in another order");
    return 0;
}
