// What manual pages say of verbs beyond the table of verbs.

#pragma once

#include <string_view>

#include "hint.h"
#include "verb-table.h"

namespace Wfctl {

// Some sentences; words that are typed stand between backquotes. Every verb has some.
std::string_view DescriptionOf(const Verb& verb);

// The verbs whose pages help whoever reads this one's, in the order of the table.
Names RelatedTo(const Verb& verb);

}  // namespace Wfctl
