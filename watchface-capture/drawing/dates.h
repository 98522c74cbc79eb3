// Dates and times: what hands point at, and what texts by skeleton read, in the language and hour mode of the
// watch.

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "drawing.h"

namespace Drawing {

// The date that previews show.
inline constexpr int kPreviewYear = 2026, kPreviewMonth = 10, kPreviewDay = 14;

struct TimeOfDay {
    int hour = 0, minute = 0, second = 0;
};

// A point in time as it is seen somewhere.
struct Moment {
    double instant = 0;  // milliseconds since 1970 UTC
    std::string zone;    // where it is seen: an id; empty where nobody knows
    TimeOfDay time;      // there
};

class Dates {
public:
    Dates();
    ~Dates();
    Dates(const Dates&) = delete;
    Dates& operator=(const Dates&) = delete;

    // The preview's date at `time` in `zone`: an id, or a path with an id after "/zoneinfo/".
    Moment At(std::string_view zone, const TimeOfDay& time) const;
    // The same instant elsewhere; nothing when either zone is not known.
    std::optional<Moment> SeenIn(const Moment& moment, std::string_view zone) const;

    // UTF-8. Empty when the skeleton means nothing to the language.
    std::string Format(std::string_view skeleton, const Settings& settings, const Moment& moment);

private:
    struct Formatter;
    std::map<std::string, std::unique_ptr<Formatter>>
        mFormatters;  // by language, hour mode, zone and skeleton
};

// Upper case by the rules of the language.
std::string ToUpper(std::string_view text, std::string_view language);

}  // namespace Drawing
