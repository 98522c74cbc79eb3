// Texts and dates in the watch's language.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

class CommonUtilI18NStringUtility {
public:
    // Upper case of UTF-8 text by Unicode's rules, the same in every language.
    static std::string ToUpper(const std::string& text);
};

// What the instant given to the formatter counts.
enum CommonUtilI18NDateFormatterTimestampType {
    kCommonUtilI18NTimestampMilliseconds = 0,  // since 1970-01-01 00:00 UTC
};

// Writes dates in one language and time zone. Making one costs nothing: what is dear is kept by the platform.
class CommonUtilI18NDateFormatter {
public:
    // `skeleton` is a Unicode date-time skeleton, UTF-8, of at most 1024 bytes; with `bestPattern` the
    // language's best pattern for it is used, without it the skeleton is taken as the pattern. `timezonePath`
    // is an id ("Asia/Seoul") or a path that has one behind "/zoneinfo/". `language` is a locale's name:
    // "de_DE", "pt-BR", "de_DE.UTF-8". Calendar and digits are the language's own.
    CommonUtilI18NDateFormatter(const std::string& skeleton, const std::string& timezonePath,
                                const std::string& language, bool bestPattern);
    ~CommonUtilI18NDateFormatter();
    CommonUtilI18NDateFormatter(const CommonUtilI18NDateFormatter&) = delete;
    CommonUtilI18NDateFormatter& operator=(const CommonUtilI18NDateFormatter&) = delete;

    // UTF-8. Empty where it cannot be written: a skeleton that is empty, too long, no UTF-8 or without
    // meaning; a pattern with a letter that has none; an unknown time zone; what is no name of a language. An
    // instant beyond the calendar's ends is written as the end. On the main loop's thread.
    std::string Format(int64_t instant, CommonUtilI18NDateFormatterTimestampType type);

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};
