#include "dates-icu.h"

#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "late-icu.h"
#include "platform-log.h"
#include "recent.h"
#include "zone-id.h"

namespace Platform {

namespace {

constexpr std::size_t kLongestSkeleton = 1024;  // bytes
constexpr std::size_t kLongestName = 128;       // of a language, a zone
constexpr std::size_t kMostLanguages = 4;       // each holds about 100 kB
constexpr std::size_t kMostPatterns = 64;       // a language

#define ENTRY(member, library, name) const LateFunction<decltype(name)> member = LATE_ICU_##library(name)

struct IcuEntries {
    ENTRY(errorName, UC, u_errorName);
    ENTRY(fromUtf8, UC, u_strFromUTF8);
    ENTRY(toUtf8, UC, u_strToUTF8);
    ENTRY(canonicalLocale, UC, uloc_canonicalize);
    ENTRY(openPatterns, I18N, udatpg_open);
    ENTRY(closePatterns, I18N, udatpg_close);
    ENTRY(bestPattern, I18N, udatpg_getBestPattern);
    ENTRY(openFormat, I18N, udat_open);
    ENTRY(closeFormat, I18N, udat_close);
    ENTRY(applyPattern, I18N, udat_applyPattern);
    ENTRY(setCalendar, I18N, udat_setCalendar);
    ENTRY(format, I18N, udat_formatForFields);
    ENTRY(canonicalZone, I18N, ucal_getCanonicalTimeZoneID);
    ENTRY(openCalendar, I18N, ucal_open);
    ENTRY(closeCalendar, I18N, ucal_close);

    const bool areComplete = errorName && fromUtf8 && toUtf8 && canonicalLocale && openPatterns &&
                             closePatterns && bestPattern && openFormat && closeFormat && applyPattern &&
                             setCalendar && format && canonicalZone && openCalendar && closeCalendar;
};

#undef ENTRY

const IcuEntries& Icu()
{
    static const IcuEntries entries;
    return entries;
}

template <auto Close>
struct Closes {
    void operator()(auto* handle) const { (Icu().*Close)(handle); }
};
using PatternsPtr = std::unique_ptr<UDateTimePatternGenerator, Closes<&IcuEntries::closePatterns>>;
using FormatPtr = std::unique_ptr<UDateFormat, Closes<&IcuEntries::closeFormat>>;
using CalendarPtr = std::unique_ptr<UCalendar, Closes<&IcuEntries::closeCalendar>>;

int32_t Length(const auto& text)
{
    return static_cast<int32_t>(text.size());
}

// What `write` writes into a buffer, given its size, however long that is. Empty after a failure.
template <typename Text>
Text Written(UErrorCode* status, auto write)
{
    Text text(128, 0);
    int32_t length = write(text.data(), Length(text));
    if (*status == U_BUFFER_OVERFLOW_ERROR) {
        *status = U_ZERO_ERROR;
        text.resize(static_cast<std::size_t>(length));
        length = write(text.data(), length);
    }
    text.resize(U_SUCCESS(*status) ? static_cast<std::size_t>(length) : 0);
    return text;
}

std::u16string FromUtf8(std::string_view text, UErrorCode* status)
{
    return Written<std::u16string>(status, [&](UChar* out, int32_t size) {
        int32_t length = 0;
        Icu().fromUtf8(out, size, &length, text.data(), Length(text), status);
        return length;
    });
}

std::string ToUtf8(std::u16string_view text, UErrorCode* status)
{
    return Written<std::string>(status, [&](char* out, int32_t size) {
        int32_t length = 0;
        Icu().toUtf8(out, size, &length, text.data(), Length(text), status);
        return length;
    });
}

// ICU's name of a language: "de_DE.UTF-8" and "de-DE" are "de_DE".
std::string LocaleOf(const std::string& language, UErrorCode* status)
{
    constexpr std::string_view kOfNames =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.@=;";
    std::string locale;
    if (language.size() <= kLongestName && language.find_first_not_of(kOfNames) == std::string::npos) {
        locale = Written<std::string>(status, [&](char* out, int32_t size) {
            return Icu().canonicalLocale(language.c_str(), out, size, status);
        });
    }
    // Without a language ICU would write numbers for names; one that it has no room for ends the process.
    const std::size_t letters = std::min(locale.find_first_of("_@"), locale.size());
    if (letters == 0 || letters >= ULOC_LANG_CAPACITY) *status = U_ILLEGAL_ARGUMENT_ERROR;
    return locale;
}

// The id of a time zone; fails for one that ICU does not know, which would be shown as UTC.
std::u16string ZoneOf(std::string_view path, UErrorCode* status)
{
    const std::u16string id = FromUtf8(ZoneIdOf(path), status);
    UChar canonical[kLongestName];
    Icu().canonicalZone(id.data(), Length(id), canonical, int32_t{kLongestName}, nullptr, status);
    if (id == u"" UCAL_UNKNOWN_ZONE_ID) *status = U_ILLEGAL_ARGUMENT_ERROR;
    return id;
}

// One language's names, patterns and way of writing, in one zone after another.
class OpenLanguage {
public:
    OpenLanguage(const std::string& language, UErrorCode* status)
        : mLocale(LocaleOf(language, status)),
          mFormat(U_SUCCESS(*status) ? Icu().openFormat(UDAT_PATTERN, UDAT_PATTERN, mLocale.c_str(), u"UTC",
                                                        -1, u"y", 1, status)
                                     : nullptr)
    {
    }

    std::string Format(const DateRequest& request, int64_t milliseconds, UErrorCode* status)
    {
        const std::u16string pattern =
            request.bestPattern ? BestPattern(request.skeleton, status) : FromUtf8(request.skeleton, status);
        SetZone(request.timezonePath, status);
        if (U_FAILURE(*status)) return {};
        Icu().applyPattern(mFormat.get(), false, pattern.data(), Length(pattern));
        const auto text = Written<std::u16string>(status, [&](UChar* out, int32_t size) {
            return Icu().format(mFormat.get(), static_cast<UDate>(milliseconds), out, size, nullptr, status);
        });
        return ToUtf8(text, status);
    }

private:
    std::u16string BestPattern(const std::string& skeleton, UErrorCode* status)
    {
        if (const std::u16string* known = mBestPatterns.Find(skeleton)) return *known;
        const std::u16string letters = FromUtf8(skeleton, status);
        if (!mPatterns) mPatterns.reset(Icu().openPatterns(mLocale.c_str(), status));
        const auto pattern = Written<std::u16string>(status, [&](UChar* out, int32_t size) {
            return Icu().bestPattern(mPatterns.get(), letters.data(), Length(letters), out, size, status);
        });
        return U_SUCCESS(*status) ? *mBestPatterns.Add(skeleton, pattern) : std::u16string();
    }

    void SetZone(const std::string& path, UErrorCode* status)
    {
        if (path == mZonePath) return;
        const std::u16string zone = ZoneOf(path, status);
        if (U_FAILURE(*status)) return;
        // The calendar is the language's own: the Thai year of 2026 is 2569.
        const CalendarPtr calendar(
            Icu().openCalendar(zone.data(), Length(zone), mLocale.c_str(), UCAL_DEFAULT, status));
        if (U_FAILURE(*status)) return;
        Icu().setCalendar(mFormat.get(), calendar.get());
        mZonePath = path;
    }

    std::string mLocale;
    FormatPtr mFormat;                                    // its pattern is the last request's
    std::string mZonePath = "UTC";                        // of the format's calendar
    PatternsPtr mPatterns;                                // opened when the first best pattern is asked for
    Recent<std::u16string, kMostPatterns> mBestPatterns;  // by skeleton
};

// Null after a failure.
OpenLanguage* Opened(const std::string& language, UErrorCode* status)
{
    static Recent<OpenLanguage, kMostLanguages> languages;
    if (OpenLanguage* known = languages.Find(language)) return known;
    OpenLanguage opened(language, status);
    return U_SUCCESS(*status) ? languages.Add(language, std::move(opened)) : nullptr;
}

}  // namespace

std::string FormatDate(const DateRequest& request, int64_t milliseconds)
{
    if (!Icu().areComplete) return {};
    const bool isBounded = request.skeleton.size() <= kLongestSkeleton;
    UErrorCode status = isBounded ? U_ZERO_ERROR : U_ILLEGAL_ARGUMENT_ERROR;
    OpenLanguage* language = isBounded ? Opened(request.language, &status) : nullptr;
    std::string text = language ? language->Format(request, milliseconds, &status) : std::string();
    if (U_SUCCESS(status)) return text;
    PLATFORM_REFUSAL("a date cannot be written: skeleton [%.80s], time zone [%.80s], language [%.80s]: %s",
                     request.skeleton.c_str(), request.timezonePath.c_str(), request.language.c_str(),
                     Icu().errorName(status));
    return {};
}

}  // namespace Platform
