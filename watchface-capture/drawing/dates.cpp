#include "dates.h"

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

namespace Drawing {
namespace {

constexpr size_t kMostFormatters = 64;
constexpr char16_t kNoBreakSpace = 0xa0, kNarrowSpace = 0x202f;

// "/usr/share/zoneinfo/Asia/Seoul" as "Asia/Seoul".
icu::UnicodeString ZoneId(std::string_view path)
{
    constexpr std::string_view kFolder = "zoneinfo/";
    const size_t folder = path.rfind(kFolder);
    if (folder != std::string_view::npos) path.remove_prefix(folder + kFolder.size());
    return icu::UnicodeString::fromUTF8({path.data(), static_cast<int32_t>(path.size())});
}

bool IsNumber(std::string_view skeleton)
{
    constexpr std::string_view kNumbers = "dDywHhms";
    const char letter = skeleton.front();
    if (skeleton.find_first_not_of(letter) != std::string_view::npos) return false;
    const bool month = (letter == 'M' || letter == 'L') && skeleton.size() <= 2;
    return month || kNumbers.find(letter) != std::string_view::npos;
}

// The pattern without its day period and the blanks around it.
icu::UnicodeString WithoutDayPeriod(const icu::UnicodeString& pattern)
{
    icu::UnicodeString kept;
    bool quoted = false;
    for (int32_t i = 0; i < pattern.length(); ++i) {
        const char16_t c = pattern[i];
        if (c == '\'') quoted = !quoted;
        if (!quoted && (c == 'a' || c == 'b' || c == 'B')) continue;
        kept += c;
    }
    const auto isBlank = [](char16_t c) { return c == u' ' || c == kNoBreakSpace || c == kNarrowSpace; };
    int32_t begin = 0, end = kept.length();
    while (begin < end && isBlank(kept[begin])) ++begin;
    while (end > begin && isBlank(kept[end - 1])) --end;
    return {kept, begin, end - begin};
}

// What the letters of a skeleton become for an hour mode, and how closely their number is followed.
struct Skeleton {
    std::string letters;
    bool withoutDayPeriod = false;
    UDateTimePatternMatchOptions match = UDATPG_MATCH_NO_OPTIONS;

    Skeleton(std::string_view skeleton, bool hours24) : letters(skeleton)
    {
        for (char& c : letters) {
            if (c == 'J' && !hours24) withoutDayPeriod = true;
            if (c == 'j' || c == 'J') c = hours24 ? 'H' : 'h';
        }
        // A language decides between "6:30" and "06:30"; two letters ask for two digits.
        const size_t hour = letters.find_first_of("Hh");
        const bool two =
            hour != std::string::npos && letters.find(letters[hour], hour + 1) != std::string::npos;
        if (two || hour == std::string::npos) match = UDATPG_MATCH_ALL_FIELDS_LENGTH;
    }
};

icu::UnicodeString PatternOf(std::string_view text, const Settings& settings, const icu::Locale& locale,
                             UErrorCode& status)
{
    const Skeleton skeleton(text, settings.hours24);
    const auto letters = icu::UnicodeString::fromUTF8(skeleton.letters);
    // A number that stands alone has no word beside it: languages would make "14일" of a date window's 14.
    if (IsNumber(skeleton.letters) && text.front() != 'j') return letters;
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    if (U_FAILURE(status)) return {};
    const auto pattern = patterns->getBestPattern(letters, skeleton.match, status);
    return skeleton.withoutDayPeriod ? WithoutDayPeriod(pattern) : pattern;
}

}  // namespace

struct Dates::Formatter {
    std::unique_ptr<icu::SimpleDateFormat> format;
    std::unique_ptr<icu::GregorianCalendar> calendar;

    Formatter(std::string_view skeleton, const Settings& settings)
    {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Locale locale(settings.language.c_str());
        const icu::UnicodeString pattern = PatternOf(skeleton, settings, locale, status);
        if (U_FAILURE(status)) return;
        std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(ZoneId(settings.timezone)));
        calendar = std::make_unique<icu::GregorianCalendar>(*zone, status);
        format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
        format->adoptTimeZone(zone.release());
        if (U_FAILURE(status)) format.reset();
    }
};

Dates::Dates() = default;
Dates::~Dates() = default;

std::string Dates::Format(std::string_view skeleton, const Settings& settings, const TimeOfDay& time)
{
    const std::string key = settings.language + (settings.hours24 ? "|24|" : "|12|") + settings.timezone +
                            "|" + std::string(skeleton);
    if (mFormatters.size() > kMostFormatters) mFormatters.clear();
    auto& formatter = mFormatters[key];
    if (!formatter) formatter = std::make_unique<Formatter>(skeleton, settings);
    if (!formatter->format) return {};
    UErrorCode status = U_ZERO_ERROR;
    formatter->calendar->clear();
    formatter->calendar->set(kPreviewYear, kPreviewMonth - 1, kPreviewDay, time.hour, time.minute,
                             time.second);
    const UDate instant = formatter->calendar->getTime(status);
    icu::UnicodeString text;
    std::string result;
    if (U_SUCCESS(status)) {
        formatter->format->format(instant, text);
        // A narrow space all but disappears at the sizes of a watch, and not every font has it.
        text.findAndReplace(icu::UnicodeString(kNarrowSpace), icu::UnicodeString(kNoBreakSpace))
            .toUTF8String(result);
    }
    return result;
}

std::string ToUpper(std::string_view text, std::string_view language)
{
    std::string result;
    auto wide = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    return wide.toUpper(icu::Locale(std::string(language).c_str())).toUTF8String(result);
}

}  // namespace Drawing
