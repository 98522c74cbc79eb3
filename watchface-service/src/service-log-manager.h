// Usage records of the current watch face and its complications. Lives for one request.
//
// Not working yet: no record is sent.

#pragma once

#include <memory>

namespace WatchfaceService {

class WatchfaceManager;

class LogManager {
public:
    explicit LogManager(std::shared_ptr<WatchfaceManager> manager);

    void SendSurveyLogs();

private:
    std::shared_ptr<WatchfaceManager> mWatchfaceManager;
};

}  // namespace WatchfaceService
