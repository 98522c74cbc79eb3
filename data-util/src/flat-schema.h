// The structure of a flat document (watchface.xml), as a table. The drawing reads by it.

#pragma once

#include "schema.h"

namespace DataUtil {

const Schema& FlatSchema();

}  // namespace DataUtil
