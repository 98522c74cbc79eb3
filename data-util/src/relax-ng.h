// The structure of documents for tools that are not ours: a RELAX NG schema made from a table.
//
// It says what the table says, as far as RELAX NG can: elements, attributes, forms of values, and how many
// children at least. What documents mean (references, conditions, upper limits) only the checks know.

#pragma once

#include <string>

#include "schema.h"

namespace DataUtil {

std::string RelaxNg(const Schema& schema);

}  // namespace DataUtil
