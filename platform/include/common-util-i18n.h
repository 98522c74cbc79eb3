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

class CommonUtilI18NDateFormatter {
public:
    // `skeleton` is a Unicode date-time skeleton; with `bestPattern` the language's best pattern for it is
    // used, without it the skeleton is taken as the pattern. `timezonePath` is a zoneinfo path or an id.
    CommonUtilI18NDateFormatter(const std::string& skeleton, const std::string& timezonePath,
                                const std::string& language, bool bestPattern);
    ~CommonUtilI18NDateFormatter();
    CommonUtilI18NDateFormatter(const CommonUtilI18NDateFormatter&) = delete;
    CommonUtilI18NDateFormatter& operator=(const CommonUtilI18NDateFormatter&) = delete;

    // Empty when it cannot be formatted.
    std::string Format(int64_t instant, CommonUtilI18NDateFormatterTimestampType type);

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};
