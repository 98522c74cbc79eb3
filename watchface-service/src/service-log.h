// The service's log lines: tag "watchface-service", text "FILE: FUNCTION(LINE) > MESSAGE".
//
// LOG_ERROR is for failures and notable decisions, LOG_INFO for progress and for results of platform calls.
// Both take a printf format that is a literal and its arguments. The texts are part of the service's
// contract: whoever watches the log looks for them as they stand, also where one names another call than
// the one made.

#pragma once

#include "log.h"

namespace WatchfaceService {

inline constexpr char kLogTag[] = "watchface-service";

}  // namespace WatchfaceService

#define WATCHFACE_SERVICE_LOG(priority, format, ...)                                                        \
    __dlog_print(LOG_ID_MAIN, priority, ::WatchfaceService::kLogTag, "%s: %s(%d) > " format, __FILE_NAME__, \
                 __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

#define LOG_ERROR(...) WATCHFACE_SERVICE_LOG(DLOG_ERROR, __VA_ARGS__)
#define LOG_INFO(...) WATCHFACE_SERVICE_LOG(DLOG_INFO, __VA_ARGS__)

// "CALL returns RESULT(HEX)" where the result of a platform call, which is evaluated once, is not 0.
#define LOG_FAILURE(call, result)                                                \
    do {                                                                         \
        const int returned = (result);                                           \
        if (returned != 0) LOG_INFO(call " returns %d(%x)", returned, returned); \
    } while (false)
