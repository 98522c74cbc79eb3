// What a document's checks cannot know: which languages, time zones and countries there are.

#pragma once

#include <string_view>
#include <vector>

#include "finding.h"

namespace Wfctl {

// The findings of a document with a warning for each language, time zone and country of it that there is not,
// by place. What is refused already is told no second time, and nothing beyond the most findings that
// checking keeps. The watch takes such a document.
std::vector<DataUtil::Finding> WithUnknownLocales(std::string_view document,
                                                  std::vector<DataUtil::Finding> findings);

}  // namespace Wfctl
