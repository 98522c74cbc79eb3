// Usage records of the current watch face and its complications. Lives for one request.
//
// A *feature* is a short code of the survey; its *value* says what was found. What the complications show is
// told in the first of three ways that the data library knows: as one *combination* text under the watch
// face's product code, as the *log item* of its result XML, or, the legacy way, as a label for each
// complication of `watchface.xml`. Every failure is logged and ends only the report that it belongs to.

#pragma once

#include <memory>
#include <string>

namespace WatchfaceService {

class WatchfaceManager;

class LogManager {
public:
    explicit LogManager(std::shared_ptr<WatchfaceManager> manager);

    // The complications, then which watch face is current.
    void SendSurveyLogs();

    // The three ways. The first two send nothing for a watch face without a result XML.
    void SendCombinationData();
    void SendComplicationDataFromLogItem();
    void SendComplicationDataOld();

    // What one result XML yields.
    void LogCombinationDataFromFile(const std::string& feature, const std::string& resultXmlPath);
    void LogItemDataFromFile(const std::string& resultXmlPath);

private:
    std::shared_ptr<WatchfaceManager> mWatchfaceManager;
};

}  // namespace WatchfaceService
