// Which languages, countries and time zones there are, as ICU knows them. ICU is opened when it is first
// asked; without it everything is taken.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Wfctl {

// What stands for a name that there is not: nothing for one that there is, and an empty text where none is
// near.
using Meant = std::optional<std::string>;

// Of a language such as "de_DE", "pt-BR" or "ko", as ICU writes it: "pt_BR".
Meant MeantLanguage(const std::string& language);

// Of a time zone: an id such as "Asia/Seoul", or a path that holds one behind "/zoneinfo/". Always an id.
Meant MeantTimezone(const std::string& timezone);

// Of the name of a time zone's country, in whatever language. Only a name that is near to the English one is
// taken for a slip: "Holland" in Europe/Amsterdam is none.
Meant MeantCountry(const std::string& name, const std::string& timezone);

// What is wrong with a language such as "de_DE" or "ko": empty when its language, and its country where it
// names one, are known; else one line that names what may be meant.
std::string LanguageProblem(const std::string& language);

// The same for a country, which is written as a language with it: "en_GB".
std::string CountryProblem(const std::string& country);

// The same for a time zone, an id or a path.
std::string TimezoneProblem(const std::string& timezone);

// The ids of all time zones, or of one country's; none without ICU.
std::vector<std::string> Timezones(const char* country = nullptr);

// The country of a time zone's id, in English; empty for a zone of no country.
std::string CountryOfTimezone(const std::string& timezone);

// In English: "German (Germany)". The text itself when it is not known.
std::string LanguageName(const std::string& language);

}  // namespace Wfctl
