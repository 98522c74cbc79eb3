// Build-time program: writes the table of locales with a 12-hour clock from ICU's locale data, so that the
// programs need no ICU to know their hour mode at start.

#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/uloc.h>

#include <cstdio>
#include <memory>
#include <set>
#include <string>

namespace {

bool IsTwelveHour(const icu::Locale& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> generator(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    if (U_FAILURE(status)) return false;
    const UDateFormatHourCycle cycle = generator->getDefaultHourCycle(status);
    return U_SUCCESS(status) && (cycle == UDAT_HOUR_CYCLE_11 || cycle == UDAT_HOUR_CYCLE_12);
}

void Print(const char* name, const std::set<std::string>& locales)
{
    std::printf("inline constexpr std::string_view %s[] = {\n", name);
    for (const std::string& locale : locales) std::printf("    \"%s\",\n", locale.c_str());
    std::printf("};\n");
}

}  // namespace

int main()
{
    std::set<std::string> known;
    std::set<std::string> twelve;
    const auto add = [&](const std::string& name, const icu::Locale& locale) {
        known.insert(name);
        if (IsTwelveHour(locale)) twelve.insert(name);
    };
    for (int32_t i = 0; i < uloc_countAvailable(); ++i) {
        const icu::Locale locale(uloc_getAvailable(i));
        const std::string language = locale.getLanguage();
        const std::string region = locale.getCountry();
        // Scripts are left out as locale names of the environment do.
        add(region.empty() ? language : language + "_" + region, locale);
        if (!region.empty()) add("und_" + region, icu::Locale("und", region.c_str()));
    }
    std::printf(
        "// Generated from ICU's locale data; sorted by name.\n\n#pragma once\n\n#include <string_view>\n\n");
    std::printf("namespace Platform {\n\n");
    Print("kKnownLocales", known);
    std::printf("\n");
    Print("kTwelveHourLocales", twelve);
    std::printf("\n}  // namespace Platform\n");
    return 0;
}
