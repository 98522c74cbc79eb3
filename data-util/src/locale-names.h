// Where a document names languages, time zones and countries.
//
// Which of them there are is not known here: what is well-formed is accepted, and a watch that does not know
// it shows its default language or its own time. Tools ask those who know.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "finding.h"

namespace DataUtil {

enum class LocaleKind {
    kLanguage,  // a tag with hyphens: "pt-BR"
    kZone,      // an id, or a path that has one behind "/zoneinfo/"
    kCountry,   // of a world clock, as it is shown, in whatever language
};

struct LocaleName {
    LocaleKind kind;
    std::string name;
    std::string zone;  // of a country: the `timezone-path` beside it, or empty
    Place place;       // of the attribute
};

// The languages, zones and countries that a result XML or a flat document names, in document order; those of
// a refused document as far as it can be read. Pure; throws nothing but std::bad_alloc.
//
// A `timezone` names a zone where it is written as an id ("Asia/Tokyo") or alone says what a layer shows. Any
// other is whatever the zone's source calls it.
std::vector<LocaleName> LocaleNamesOf(std::string_view document);

}  // namespace DataUtil
