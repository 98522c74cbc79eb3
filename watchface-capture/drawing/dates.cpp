#include "dates.h"

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

namespace Drawing {
namespace {

constexpr size_t kMostFormatters = 64;

// "/usr/share/zoneinfo/Asia/Seoul" as "Asia/Seoul".
icu::UnicodeString ZoneId(std::string_view path)
{
    constexpr std::string_view kFolder = "zoneinfo/";
    const size_t folder = path.rfind(kFolder);
    if (folder != std::string_view::npos) path.remove_prefix(folder + kFolder.size());
    return icu::UnicodeString::fromUTF8({path.data(), static_cast<int32_t>(path.size())});
}

}  // namespace

struct Dates::Formatter {
    std::unique_ptr<icu::SimpleDateFormat> format;
    std::unique_ptr<icu::GregorianCalendar> calendar;

    Formatter(std::string_view skeleton, const Settings& settings)
    {
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale locale(settings.language.c_str());
        // `j` and `J` follow the watch's own hour mode, which the locale carries.
        locale.setUnicodeKeywordValue("hc", settings.hours24 ? "h23" : "h12", status);
        const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
            icu::DateTimePatternGenerator::createInstance(locale, status));
        if (U_FAILURE(status)) return;
        const auto pattern = patterns->getBestPattern(
            icu::UnicodeString::fromUTF8({skeleton.data(), static_cast<int32_t>(skeleton.size())}), status);
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
    if (U_SUCCESS(status)) formatter->format->format(instant, text).toUTF8String(result);
    return result;
}

std::string ToUpper(std::string_view text, std::string_view language)
{
    std::string result;
    auto wide = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    return wide.toUpper(icu::Locale(std::string(language).c_str())).toUTF8String(result);
}

}  // namespace Drawing
