// The application's log lines.

#pragma once

#include "log.h"

// NOLINTBEGIN(cppcoreguidelines-macro-usage): a macro keeps the compiler's check of the format.
#define CAPTURE_LOG(priority, ...) __dlog_print(LOG_ID_MAIN, priority, "watchface-capture", __VA_ARGS__)
#define CAPTURE_ERROR(...) CAPTURE_LOG(DLOG_ERROR, __VA_ARGS__)
#define CAPTURE_WARNING(...) CAPTURE_LOG(DLOG_WARN, __VA_ARGS__)
#define CAPTURE_INFO(...) CAPTURE_LOG(DLOG_INFO, __VA_ARGS__)
// NOLINTEND(cppcoreguidelines-macro-usage)
