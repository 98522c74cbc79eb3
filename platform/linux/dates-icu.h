// Dates as texts, by ICU, which is opened when the first one is asked for. On the main thread alone.
//
// ICU takes long to open a language (half a millisecond) and little for all that follows, so the languages
// that were asked for last stay open, with the patterns found in them. Every request names its own language
// and zone: a change of either holds from the next request on.

#pragma once

#include <cstdint>
#include <string>

namespace Platform {

// What a date formatter is made with; see common-util-i18n.h.
struct DateRequest {
    std::string skeleton, timezonePath, language;
    bool bestPattern = false;
};

// UTF-8. Empty, with one line in the log, where the request cannot be understood.
std::string FormatDate(const DateRequest& request, int64_t milliseconds);

}  // namespace Platform
