// What must hold for documents, however hostile. Each check ends the process when it does not.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "face-document.h"

namespace Fuzz {

[[noreturn]] void Fail(const char* what, std::string_view text);

// Each finding has a code, a place inside the text and one line of message; they are in the order of the
// text.
void CheckFindings(const std::vector<DataUtil::Finding>& findings, std::string_view text);

// The flat document is the same each time, has no error, and its texts are the document's.
void CheckFlattening(const DataUtil::FaceDocument& document);

}  // namespace Fuzz
