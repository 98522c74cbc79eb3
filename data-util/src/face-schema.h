// The structure of a result XML, as a table.

#pragma once

#include "schema.h"

namespace DataUtil {

const Schema& FaceSchema();

}  // namespace DataUtil
