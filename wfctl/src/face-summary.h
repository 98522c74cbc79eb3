// What a face document is and offers, as `show` prints it.

#pragma once

#include <string>

#include "documents.h"
#include "json-text.h"

namespace Wfctl {

// A result XML: its facts, groups with their options, slots, photos, presets, and what is in effect of them.
// Labels are in `language` where the document has it. Stops with Exit::kError and the findings on stderr when
// the document is refused.
Json SummaryOfResult(const std::string& file, const std::string& xml, const std::string& language);

// A flat document: its facts and complications.
Json SummaryOfFlat(const std::string& xml);

// The same for people.
void PrintSummary(const Json& summary);

}  // namespace Wfctl
