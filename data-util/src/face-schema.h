// The structure of a result XML, as a table.

#pragma once

#include "schema.h"
#include "shared-rules.h"

namespace DataUtil {

const Schema& FaceSchema();

inline const ElementRule& RuleOf(Element element)
{
    return FaceSchema().RuleOf(element);
}

}  // namespace DataUtil
