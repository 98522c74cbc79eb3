// Which languages and time zones there are, as ICU knows them. ICU is opened when it is first asked.

#pragma once

#include <string>
#include <vector>

namespace Wfctl {

// What is wrong with a language such as "de_DE" or "ko": empty when its language, and its country where it
// names one, are known; else one line that names what may be meant. Without ICU everything is taken.
std::string LanguageProblem(const std::string& language);

// The same for a country, which is written as a language with it: "en_GB".
std::string CountryProblem(const std::string& country);

// The ids of all time zones, or of one country's; none without ICU.
std::vector<std::string> Timezones(const char* country = nullptr);

// The same for a time zone: an id such as "Asia/Seoul", or a path that holds one behind "/zoneinfo/".
std::string TimezoneProblem(const std::string& timezone);

// The country of a time zone's id, in English; empty for a zone of no country.
std::string CountryOfTimezone(const std::string& timezone);

// In English: "German (Germany)". The text itself when it is not known.
std::string LanguageName(const std::string& language);

}  // namespace Wfctl
