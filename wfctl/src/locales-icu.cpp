#include "locales-icu.h"

#include <unicode/ucal.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

#include "late-icu.h"
#include "nearest-name.h"
#include "zone-id.h"

namespace Wfctl {

namespace {

constexpr std::size_t kLongestName = 64;

// Letters, digits and what stands between them: nothing that ICU reads as a keyword or an encoding.
bool HasOnly(const std::string& text, std::string_view others)
{
    return !text.empty() && text.size() <= kLongestName && std::all_of(text.begin(), text.end(), [&](char c) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        return isLetter || (c >= '0' && c <= '9') || others.find(c) != std::string_view::npos;
    });
}

// A part of one letter is neither a script nor a country: the rest of one is missing.
bool HasCutPart(const std::string& language)
{
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = language.find_first_of("_-", begin);
        if (std::min(end, language.size()) - begin < 2) return true;
    }
    return false;
}

bool IsKnownLanguage(const std::string& language)
{
    static const auto languageCode = LATE_ICU_UC(uloc_getISO3Language);
    static const auto country = LATE_ICU_UC(uloc_getCountry);
    static const auto countryCode = LATE_ICU_UC(uloc_getISO3Country);
    if (!languageCode || !country || !countryCode) return true;
    if (!HasOnly(language, "_-") || HasCutPart(language) || !*languageCode(language.c_str())) return false;
    char named[ULOC_COUNTRY_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    const bool hasCountry =
        country(language.c_str(), named, ULOC_COUNTRY_CAPACITY, &status) > 0 || U_FAILURE(status);
    return !hasCountry || *countryCode(language.c_str());
}

std::vector<std::string_view> Languages()
{
    static const auto count = LATE_ICU_UC(uloc_countAvailable);
    static const auto available = LATE_ICU_UC(uloc_getAvailable);
    std::vector<std::string_view> languages;
    if (!count || !available) return languages;
    for (int32_t i = 0; i < count(); ++i) languages.emplace_back(available(i));
    return languages;
}

// What ICU writes as wide characters, as UTF-8; nothing when it fails. `write` takes the room, its length and
// the status, and gives the length.
template <typename Write>
std::optional<std::string> Utf8Of(const Write& write)
{
    static const auto toUtf8 = LATE_ICU_UC(u_strToUTF8);
    constexpr int32_t kMost = 128;
    UErrorCode status = U_ZERO_ERROR;
    UChar wide[kMost];
    const int32_t length = write(wide, kMost, &status);
    char text[3 * kMost];
    int32_t bytes = 0;
    if (toUtf8) toUtf8(text, 3 * kMost, &bytes, wide, std::min(length, kMost), &status);
    if (!toUtf8 || U_FAILURE(status)) return std::nullopt;
    return std::string(text, static_cast<std::size_t>(bytes));
}

// The shortest id that holds the last part of what was typed: people know the city, not its continent.
std::string_view WithSameCity(std::string_view timezone, const std::vector<std::string>& ids)
{
    constexpr std::size_t kShortest = 3;
    const std::string_view city = timezone.substr(timezone.rfind('/') + 1);
    const auto isSame = [](char one, char other) { return std::tolower(one) == std::tolower(other); };
    std::string_view found;
    for (const std::string& id : ids) {
        const bool holds = std::search(id.begin(), id.end(), city.begin(), city.end(), isSame) != id.end();
        if (holds && (found.empty() || id.size() < found.size())) found = id;
    }
    return city.size() < kShortest ? std::string_view() : found;
}

// The id whose city is spelled most like what was typed.
std::string_view WithNearCity(std::string_view typed, const std::vector<std::string>& ids)
{
    const auto cityOf = [](std::string_view id) {
        std::string city(id.substr(id.rfind('/') + 1));
        std::ranges::transform(city, city.begin(), [](unsigned char c) { return std::tolower(c); });
        return city;
    };
    std::vector<std::string> cities;
    std::ranges::transform(ids, std::back_inserter(cities), cityOf);
    const std::string_view nearest = DataUtil::NearestName(cityOf(typed), {cities.begin(), cities.end()});
    const auto at = std::ranges::find(cities, nearest);
    return nearest.empty() ? std::string_view() : ids[static_cast<std::size_t>(at - cities.begin())];
}

std::string MeantLanguage(std::string language)
{
    std::replace(language.begin(), language.end(), '-', '_');  // as ICU writes it
    return std::string(DataUtil::NearestName(language, Languages()));
}

std::string Problem(const char* what, const std::string& text, std::string_view meant, const char* example)
{
    return std::string("there is no ") + what + " [" + text + "]; " +
           (meant.empty() ? std::string("one looks like ") + example + "."
                          : "did you mean " + std::string(meant) + "?");
}

}  // namespace

std::vector<std::string> Timezones(const char* country)
{
    static const auto open = LATE_ICU_I18N(ucal_openTimeZoneIDEnumeration);
    static const auto next = LATE_ICU_UC(uenum_next);
    static const auto close = LATE_ICU_UC(uenum_close);
    std::vector<std::string> ids;
    if (!open || !next || !close) return ids;
    UErrorCode status = U_ZERO_ERROR;
    UEnumeration* all = open(UCAL_ZONE_TYPE_ANY, country, nullptr, &status);
    while (const char* id = U_SUCCESS(status) ? next(all, nullptr, &status) : nullptr) ids.emplace_back(id);
    if (all) close(all);
    return ids;
}

std::string LanguageProblem(const std::string& language)
{
    if (IsKnownLanguage(language)) return {};
    return Problem("language", language, MeantLanguage(language), "de_DE");
}

std::string CountryProblem(const std::string& country)
{
    static const auto withLikely = LATE_ICU_UC(uloc_addLikelySubtags);
    static const auto languageOf = LATE_ICU_UC(uloc_getLanguage);
    static const auto countryCode = LATE_ICU_UC(uloc_getISO3Country);
    if (IsKnownLanguage(country)) return {};
    const std::string alone = "und_" + country;  // where the language is missing
    std::string meant;
    if (withLikely && languageOf && countryCode && HasOnly(country, "") && *countryCode(alone.c_str())) {
        char likely[ULOC_FULLNAME_CAPACITY] = "", language[ULOC_LANG_CAPACITY] = "";
        UErrorCode status = U_ZERO_ERROR;
        withLikely(alone.c_str(), likely, ULOC_FULLNAME_CAPACITY, &status);
        languageOf(likely, language, ULOC_LANG_CAPACITY, &status);
        if (U_SUCCESS(status)) meant = std::string(language) + "_" + country;
    }
    return Problem("country", country, meant.empty() ? MeantLanguage(country) : meant, "en_GB");
}

std::string TimezoneProblem(const std::string& timezone)
{
    const std::string_view id = Platform::ZoneIdOf(timezone);
    const std::vector<std::string> ids = Timezones();
    if (ids.empty() || std::find(ids.begin(), ids.end(), id) != ids.end()) return {};
    std::string_view meant = WithSameCity(id, ids);
    if (meant.empty()) meant = DataUtil::NearestName(id, {ids.begin(), ids.end()});
    if (meant.empty()) meant = WithNearCity(id, ids);
    return Problem("time zone", timezone, meant, "Europe/Berlin");
}

std::string CountryOfTimezone(const std::string& timezone)
{
    static const auto countries = LATE_ICU_UC(uloc_getISOCountries);
    static const auto displayCountry = LATE_ICU_UC(uloc_getDisplayCountry);
    if (!countries || !displayCountry) return {};
    const std::string id(Platform::ZoneIdOf(timezone));
    for (const char* const* country = countries(); *country; ++country) {
        const std::vector<std::string> ids = Timezones(*country);
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) continue;
        const std::string locale = std::string("und_") + *country;
        const auto name = Utf8Of([&](UChar* wide, int32_t most, UErrorCode* status) {
            return displayCountry(locale.c_str(), "en", wide, most, status);
        });
        return name.value_or("");
    }
    return {};
}

std::string LanguageName(const std::string& language)
{
    static const auto displayName = LATE_ICU_UC(uloc_getDisplayName);
    if (!displayName || !IsKnownLanguage(language)) return language;
    const auto name = Utf8Of([&](UChar* wide, int32_t most, UErrorCode* status) {
        return displayName(language.c_str(), "en", wide, most, status);
    });
    return name.value_or(language);
}

}  // namespace Wfctl
