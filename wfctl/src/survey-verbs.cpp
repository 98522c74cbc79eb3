// Usage records: survey.

#include <filesystem>

#include "application-table.h"
#include "arguments.h"
#include "exit-status.h"
#include "json-text.h"
#include "launching.h"
#include "log-format.h"
#include "private-watch.h"
#include "survey-store-sqlite.h"
#include "utc-time.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

using Platform::SurveyRecord;

constexpr double kPatienceForAPass = 30;  // seconds

struct QueryArguments {
    double timeout = kPatienceForAPass;
};

std::string Service()
{
    return std::string(Platform::kServiceId);
}

Json RecordToJson(const SurveyRecord& record)
{
    return Json::object({
        {"time",        Platform::UtcText(record.time)         },
        {"application", BytesToJson(record.application)        },
        {"kind",        record.isFeature ? "feature" : "status"},
        {"feature",     BytesToJson(record.feature)            },
        {"value",       BytesToJson(record.value)              },
        {"extra",       BytesToJson(record.extra)              }
    });
}

std::string RecordLine(const SurveyRecord& record)
{
    std::string line = Platform::UtcText(record.time) + "  " + record.application + "  " +
                       (record.isFeature ? "feature" : "status ") + "  " + record.feature + "  " +
                       record.value;
    if (!record.extra.empty()) line += "  " + record.extra;
    return Platform::LogText(line);
}

void Print(const Options& options, const std::vector<SurveyRecord>& records)
{
    Json array = Json::array();
    for (const SurveyRecord& record : records) {
        if (options.json)
            array.push_back(RecordToJson(record));
        else
            PrintLine(RecordLine(record));
    }
    if (options.json) PrintLine(JsonLine(array));
}

// Nothing is made where nothing was recorded yet.
std::vector<SurveyRecord> RecordsBehind(int64_t id)
{
    const std::string path = Platform::SurveyPath(Service());
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return {};
    return Platform::SurveyStore(path).List(id);
}

Exit List(const Options& options)
{
    SelectWatch(options.root);
    RequireRoot();
    Print(options, RecordsBehind(0));
    return Exit::kDone;
}

// The service leaves such a request unanswered; that it is done with it is what is waited for.
Exit Query(const Options& options, const QueryArguments& arguments)
{
    SelectWatch(options.root);
    Connection connection;
    const std::vector<SurveyRecord> before = RecordsBehind(0);
    Platform::LaunchData request;
    request["wfs/req/type"] = std::string("wfs/type/log_query");
    SendLaunch(connection, Service(), "", request, Seconds(arguments.timeout));
    const std::vector<SurveyRecord> recorded = RecordsBehind(before.empty() ? 0 : before.back().id);
    if (recorded.empty()) {
        throw Stop(Exit::kError, "the service recorded nothing; look for watchface-service in " +
                                     LogPlace("watchface-service"));
    }
    Print(options, recorded);
    return Exit::kDone;
}

}  // namespace

Action DefineSurveyList(CLI::App&)
{
    return List;
}

Action DefineSurveyQuery(CLI::App& parser)
{
    const auto arguments = std::make_shared<QueryArguments>();
    parser.add_option("--timeout", arguments->timeout, "how long to wait (default: 30 s)")
        ->type_name("S")
        ->check(SecondsProblem);
    return [arguments](const Options& options) { return Query(options, *arguments); };
}

}  // namespace Wfctl
