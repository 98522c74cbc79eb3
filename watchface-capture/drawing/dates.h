// Dates and times by skeleton, in the language and hour mode of the watch.

#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "painter.h"

namespace Drawing {

// The date that previews show.
inline constexpr int kPreviewYear = 2026, kPreviewMonth = 10, kPreviewDay = 14;

class Dates {
public:
    Dates();
    ~Dates();
    Dates(const Dates&) = delete;
    Dates& operator=(const Dates&) = delete;

    // UTF-8. Empty when the skeleton means nothing to the language.
    std::string Format(std::string_view skeleton, const Settings& settings, const TimeOfDay& time);

private:
    struct Formatter;
    std::map<std::string, std::unique_ptr<Formatter>>
        mFormatters;  // by language, hour mode, zone and skeleton
};

// Upper case by the rules of the language.
std::string ToUpper(std::string_view text, std::string_view language);

}  // namespace Drawing
