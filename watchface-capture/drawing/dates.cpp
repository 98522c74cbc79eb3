#include "dates.h"

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <utility>

#include "zone-id.h"

namespace Drawing {
namespace {

constexpr size_t kMostFormatters = 64;
constexpr char16_t kNoBreakSpace = 0xa0, kNarrowSpace = 0x202f;

// A name that is none reads as a language that nobody knows: ICU ends the process over it.
icu::Locale LocaleOf(const std::string& language)
{
    icu::Locale locale(language.c_str());
    return locale.isBogus() ? icu::Locale() : locale;
}

using ZonePtr = std::unique_ptr<icu::TimeZone>;

// Null for a zone that is not known, which ICU would show as UTC.
ZonePtr ZoneOf(const std::string& id)
{
    ZonePtr zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(id)));
    icu::UnicodeString known;
    if (zone->getID(known) == UNICODE_STRING_SIMPLE(UCAL_UNKNOWN_ZONE_ID)) zone.reset();
    return zone;
}

// What a watch that does not know its zone counts in.
ZonePtr ZoneOrUtc(ZonePtr zone)
{
    return zone ? std::move(zone) : ZonePtr(icu::TimeZone::getGMT()->clone());
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

    Formatter(std::string_view skeleton, const Settings& settings, const std::string& zone)
    {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Locale locale = LocaleOf(settings.language);
        const icu::UnicodeString pattern = PatternOf(skeleton, settings, locale, status);
        if (U_FAILURE(status)) return;
        format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
        format->adoptTimeZone(ZoneOrUtc(ZoneOf(zone)).release());
        if (U_FAILURE(status)) format.reset();
    }
};

Dates::Dates() = default;
Dates::~Dates() = default;

Moment Dates::At(std::string_view zone, const TimeOfDay& time) const
{
    Moment moment{0, std::string(Platform::ZoneIdOf(zone)), time};
    ZonePtr known = ZoneOf(moment.zone);
    if (!known) moment.zone.clear();
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(ZoneOrUtc(std::move(known)).release(), status);
    if (U_FAILURE(status)) return moment;
    calendar.clear();
    calendar.set(kPreviewYear, kPreviewMonth - 1, kPreviewDay, time.hour, time.minute, time.second);
    moment.instant = calendar.getTime(status);
    return moment;
}

std::optional<Moment> Dates::SeenIn(const Moment& moment, std::string_view zone) const
{
    const std::string id(Platform::ZoneIdOf(zone));
    const ZonePtr known = ZoneOf(id);
    if (!known || moment.zone.empty()) return std::nullopt;
    int32_t offset = 0, saving = 0;
    UErrorCode status = U_ZERO_ERROR;
    known->getOffset(moment.instant, false, offset, saving, status);
    if (U_FAILURE(status)) return std::nullopt;
    constexpr int64_t kSecond = 1000, kMinute = 60, kHour = 60, kDay = 24;
    const int64_t seconds = (static_cast<int64_t>(moment.instant) + offset + saving) / kSecond;
    return Moment{
        moment.instant,
        id,
        {static_cast<int>(seconds / (kMinute * kHour) % kDay), static_cast<int>(seconds / kMinute % kHour),
          static_cast<int>(seconds % kMinute)}
    };
}

std::string Dates::Format(std::string_view skeleton, const Settings& settings, const Moment& moment)
{
    const std::string key =
        settings.language + (settings.hours24 ? "|24|" : "|12|") + moment.zone + "|" + std::string(skeleton);
    if (mFormatters.size() > kMostFormatters) mFormatters.clear();
    auto& formatter = mFormatters[key];
    if (!formatter) formatter = std::make_unique<Formatter>(skeleton, settings, moment.zone);
    if (!formatter->format) return {};
    icu::UnicodeString text;
    std::string result;
    formatter->format->format(moment.instant, text);
    // A narrow space all but disappears at the sizes of a watch, and not every font has it.
    text.findAndReplace(icu::UnicodeString(kNarrowSpace), icu::UnicodeString(kNoBreakSpace))
        .toUTF8String(result);
    return result;
}

std::string ToUpper(std::string_view text, std::string_view language)
{
    std::string result;
    auto wide = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    return wide.toUpper(LocaleOf(std::string(language))).toUTF8String(result);
}

}  // namespace Drawing
