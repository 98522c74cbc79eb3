#include "locales-icu.h"

#include <unicode/ucal.h>
#include <unicode/uchar.h>
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

// What a country's code, or an area's as "419", is called in a language; the code where it is not known.
std::string CountryName(const std::string& code, const char* language)
{
    static const auto displayCountry = LATE_ICU_UC(uloc_getDisplayCountry);
    if (!displayCountry) return code;
    const std::string locale = "und_" + code;
    const auto name = Utf8Of([&](UChar* wide, int32_t most, UErrorCode* status) {
        return displayCountry(locale.c_str(), language, wide, most, status);
    });
    return name.value_or(code);
}

// A part of a language, or an empty text where it has none.
template <typename Get>
std::string PartOf(const std::string& language, const Get& get)
{
    char part[ULOC_FULLNAME_CAPACITY] = "";
    UErrorCode status = U_ZERO_ERROR;
    get(language.c_str(), part, ULOC_FULLNAME_CAPACITY, &status);
    return U_SUCCESS(status) ? part : "?";
}

bool IsKnownScript(const std::string& language)
{
    static const auto script = LATE_ICU_UC(uloc_getScript);
    static const auto valueOf = LATE_ICU_UC(u_getPropertyValueEnum);
    if (!script || !valueOf) return true;
    const std::string code = PartOf(language, script);
    return code.empty() || valueOf(UCHAR_SCRIPT, code.c_str()) != UCHAR_INVALID_CODE;
}

bool IsKnownCountry(const std::string& language)
{
    static const auto country = LATE_ICU_UC(uloc_getCountry);
    static const auto countryCode = LATE_ICU_UC(uloc_getISO3Country);
    if (!country || !countryCode) return true;
    const std::string code = PartOf(language, country);
    const bool isArea = code.find_first_not_of("0123456789") == std::string::npos;
    return isArea ? code.empty() || CountryName(code, "en") != code : *countryCode(language.c_str()) != 0;
}

bool IsKnownLanguage(const std::string& language)
{
    static const auto languageCode = LATE_ICU_UC(uloc_getISO3Language);
    if (!languageCode) return true;
    return HasOnly(language, "_-") && !HasCutPart(language) && *languageCode(language.c_str()) &&
           IsKnownScript(language) && IsKnownCountry(language);
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

// The codes of all countries.
std::vector<std::string> Countries()
{
    static const auto list = LATE_ICU_UC(uloc_getISOCountries);
    std::vector<std::string> codes;
    for (const char* const* code = list ? list() : nullptr; code && *code; ++code) codes.emplace_back(*code);
    return codes;
}

bool HasZone(const std::string& country, const std::string& id)
{
    const std::vector<std::string> ids = Timezones(country.c_str());
    return std::ranges::find(ids, id) != ids.end();
}

// The language that most people of a country speak: "en" of "GB". Empty for what is no country's code.
std::string LanguageOfCountry(const std::string& country)
{
    static const auto withLikely = LATE_ICU_UC(uloc_addLikelySubtags);
    static const auto languageOf = LATE_ICU_UC(uloc_getLanguage);
    static const auto countryCode = LATE_ICU_UC(uloc_getISO3Country);
    const std::string alone = "und_" + country;  // where the language is missing
    if (!withLikely || !languageOf || !countryCode || !HasOnly(country, "") || !*countryCode(alone.c_str()))
        return {};
    return PartOf(PartOf(alone, withLikely), languageOf);
}

// Of a language that begins with a country's code, the one that is spoken there: "ja" of "jp".
std::string WithLanguageOfCountry(const std::string& typed)
{
    const std::size_t end = std::min(typed.find('_'), typed.size());
    const std::string language = LanguageOfCountry(typed.substr(0, end));
    return language.empty() ? "" : language + typed.substr(end);
}

// The language behind its country, "ko_KR" of "kr_KO".
std::string WithPartsExchanged(const std::string& typed)
{
    constexpr std::size_t kWhole = 5;
    if (typed.size() != kWhole || typed[2] != '_') return {};
    std::string country = typed.substr(0, 2), language = typed.substr(3);
    std::ranges::transform(country, country.begin(), [](unsigned char c) { return std::toupper(c); });
    std::ranges::transform(language, language.begin(), [](unsigned char c) { return std::tolower(c); });
    return language + "_" + country;
}

// With the code of a country in place of another of the same name: "en_GB" of "en_UK".
std::string WithCodeOfSameName(const std::string& typed)
{
    const std::size_t begin = typed.rfind('_') + 1;
    if (begin == 0 || !HasOnly(typed, "_")) return {};
    const std::string name = CountryName(typed.substr(begin), "en");
    for (const std::string& code : Countries()) {
        if (CountryName(code, "en") == name) return typed.substr(0, begin) + code;
    }
    return {};
}

// Custom ones, such as "GMT+9", included.
bool IsKnownZone(const std::string& id)
{
    static const auto canonical = LATE_ICU_I18N(ucal_getCanonicalTimeZoneID);
    if (!canonical) return true;
    if (!HasOnly(id, "_+-/:") || id == UCAL_UNKNOWN_ZONE_ID) return false;
    UChar typed[kLongestName], found[kLongestName];
    std::ranges::copy(id, typed);
    UErrorCode status = U_ZERO_ERROR;
    canonical(typed, static_cast<int32_t>(id.size()), found, static_cast<int32_t>(kLongestName), nullptr,
              &status);
    return U_SUCCESS(status);
}

// Only letters, small ones: "Vietnam" is also written "Viet Nam".
std::string Letters(std::string_view name)
{
    std::string letters;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 || std::isalpha(byte)) letters += static_cast<char>(std::tolower(byte));
    }
    return letters;
}

// Whether some language calls the country so.
bool IsNameOf(std::string_view name, const std::string& country)
{
    const auto isSo = [&](std::string_view language) {
        return Letters(CountryName(country, std::string(language).c_str())) == Letters(name);
    };
    return std::ranges::any_of(Languages(), isSo);
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

Meant MeantLanguage(const std::string& language)
{
    if (IsKnownLanguage(language)) return std::nullopt;
    std::string typed = language;
    std::ranges::replace(typed, '-', '_');  // as ICU writes it
    for (const std::string& meant :
         {WithLanguageOfCountry(typed), WithCodeOfSameName(typed), WithPartsExchanged(typed)}) {
        if (!meant.empty() && IsKnownLanguage(meant)) return meant;
    }
    return std::string(DataUtil::NearestName(typed, Languages()));
}

Meant MeantTimezone(const std::string& timezone)
{
    const std::string id(Platform::ZoneIdOf(timezone));
    if (IsKnownZone(id)) return std::nullopt;
    const std::vector<std::string> ids = Timezones();
    std::string_view meant = WithSameCity(id, ids);
    if (meant.empty()) meant = DataUtil::NearestName(id, {ids.begin(), ids.end()});
    if (meant.empty()) meant = WithNearCity(id, ids);
    return std::string(meant);
}

Meant MeantCountry(const std::string& name, const std::string& timezone)
{
    const std::string id(Platform::ZoneIdOf(timezone));
    for (const std::string& country : Countries()) {
        const std::string english = CountryName(country, "en");
        const bool isNear = !DataUtil::NearestName(name, {english}).empty();
        if (isNear && HasZone(country, id)) return IsNameOf(name, country) ? std::nullopt : Meant(english);
    }
    return std::nullopt;
}

std::string LanguageProblem(const std::string& language)
{
    const Meant meant = MeantLanguage(language);
    return meant ? Problem("language", language, *meant, "de_DE") : "";
}

std::string CountryProblem(const std::string& country)
{
    const Meant meant = MeantLanguage(country);
    if (!meant) return {};
    const std::string language = LanguageOfCountry(country);
    return Problem("country", country, language.empty() ? *meant : language + "_" + country, "en_GB");
}

std::string TimezoneProblem(const std::string& timezone)
{
    const Meant meant = MeantTimezone(timezone);
    return meant ? Problem("time zone", timezone, *meant, "Europe/Berlin") : "";
}

std::string CountryOfTimezone(const std::string& timezone)
{
    const std::string id(Platform::ZoneIdOf(timezone));
    for (const std::string& country : Countries()) {
        if (HasZone(country, id)) return CountryName(country, "en");
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
