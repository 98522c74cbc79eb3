// A selection that a user of the face could have made, the same for the same seed.

#pragma once

#include "face-document.h"

DataUtil::Selection RandomSelection(const DataUtil::FaceDocument& document, unsigned seed);
