#include "service-log-manager.h"

#include <utility>

namespace WatchfaceService {

LogManager::LogManager(std::shared_ptr<WatchfaceManager> manager) : mWatchfaceManager(std::move(manager)) {}

void LogManager::SendSurveyLogs() {}

}  // namespace WatchfaceService
