#include "locale-findings.h"

#include <algorithm>
#include <string>

#include "documents.h"
#include "locale-names.h"
#include "locales-icu.h"
#include "nearest-name.h"
#include "zone-id.h"

namespace Wfctl {

namespace {

using DataUtil::Finding;
using DataUtil::LocaleName;

// A tag has hyphens.
Meant MeantTag(const LocaleName& language)
{
    Meant meant = MeantLanguage(language.name);
    if (meant) std::ranges::replace(*meant, '_', '-');
    return meant;
}

// A path keeps its folder.
Meant MeantZone(const LocaleName& zone)
{
    const Meant meant = MeantTimezone(zone.name);
    if (!meant || meant->empty()) return meant;
    return zone.name.substr(0, zone.name.size() - Platform::ZoneIdOf(zone.name).size()) + *meant;
}

Meant MeantCountryOf(const LocaleName& country)
{
    return MeantCountry(country.name, country.zone);
}

// One row per kind, in the order of the kinds.
struct Check {
    const char* code;
    const char* what;
    const char* form;  // to write where nothing is near
    Meant (*meant)(const LocaleName& name);
};
constexpr Check kChecks[] = {
    {"W-LANGUAGE-UNKNOWN", "language",  "; write a tag as \"pt-BR\"",            MeantTag      },
    {"W-ZONE-UNKNOWN",     "time zone", "; write an id as \"America/New_York\"", MeantZone     },
    {"W-COUNTRY-UNKNOWN",  "country",   "",                                      MeantCountryOf},
};

bool IsRefused(const DataUtil::Place& place, const std::vector<Finding>& findings)
{
    return std::ranges::any_of(findings, [&](const Finding& finding) {
        return finding.severity == DataUtil::Severity::kError && finding.line == place.line &&
               finding.column == place.column;
    });
}

}  // namespace

std::vector<Finding> WithUnknownLocales(std::string_view document, std::vector<Finding> findings)
{
    std::vector<Finding> unknown;
    for (const LocaleName& name : DataUtil::LocaleNamesOf(document)) {
        if (findings.size() + unknown.size() >= DataUtil::Findings::kMostFindings) break;
        const Check& check = kChecks[static_cast<std::size_t>(name.kind)];
        const Meant meant = check.meant(name);
        if (!meant || IsRefused(name.place, findings)) continue;
        const std::string hint = meant->empty() ? check.form : DataUtil::OrMeant(*meant);
        unknown.push_back(
            {DataUtil::Severity::kWarning, check.code, name.place.line, name.place.column, name.place.path,
             std::string("there is no ") + check.what + " " + DataUtil::Quoted(name.name) + hint});
    }
    return Merged(std::move(findings), unknown);
}

}  // namespace Wfctl
