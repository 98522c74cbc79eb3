// Checking flat documents (watchface.xml). What is made from a checked result XML passes; this is for those
// written by hand or found somewhere.

#pragma once

#include <string_view>
#include <vector>

#include "finding.h"

namespace DataUtil {

// All findings of a flat document, by place. Pure; throws nothing but std::bad_alloc.
std::vector<Finding> CheckFlat(std::string_view watchfaceXml);

}  // namespace DataUtil
