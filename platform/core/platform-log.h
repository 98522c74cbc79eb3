// The platform layer's own log lines. A refusal (the caller's mistake) is a warning, a fault (the machine's)
// an error; each is logged once, where it is noticed, with its values.

#pragma once

#include "log.h"

// NOLINTBEGIN(cppcoreguidelines-macro-usage): a macro keeps the compiler's check of the format.
#define PLATFORM_LOG(priority, ...) __dlog_print(LOG_ID_SYSTEM, priority, "platform", __VA_ARGS__)
#define PLATFORM_REFUSAL(...) PLATFORM_LOG(DLOG_WARN, __VA_ARGS__)
#define PLATFORM_FAULT(...) PLATFORM_LOG(DLOG_ERROR, __VA_ARGS__)
#define PLATFORM_NOTE(...) PLATFORM_LOG(DLOG_INFO, __VA_ARGS__)
// NOLINTEND(cppcoreguidelines-macro-usage)
