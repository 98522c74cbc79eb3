// The platform log. Every line has a priority, a tag (the program or library that speaks) and a text.

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    DLOG_UNKNOWN = 0,
    DLOG_DEFAULT,
    DLOG_VERBOSE,
    DLOG_DEBUG,
    DLOG_INFO,
    DLOG_WARN,
    DLOG_ERROR,
    DLOG_FATAL,
    DLOG_SILENT
} log_priority;

typedef enum { LOG_ID_MAIN = 0, LOG_ID_RADIO, LOG_ID_SYSTEM, LOG_ID_APPS } log_id_t;

// Writes one line; the format is printf's. Control characters and bytes that are no UTF-8 appear as
// `\xHH`, and a line is cut at 4 KiB. May be called on any thread. Returns the number of bytes written,
// 0 when the line was filtered, or a negative number.
int __dlog_print(log_id_t id, int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 4, 5), visibility("default")));

#ifdef __cplusplus
}
#endif
