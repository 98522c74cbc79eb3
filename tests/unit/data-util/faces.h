// The result XMLs that tests of all faces run on.

#pragma once

#include <string>
#include <vector>

// The paths of the faces that this watch ships, sorted.
std::vector<std::string> ShippedResultXmls();
// The same, the documents of docs/examples and the one that has one of each element.
std::vector<std::string> AllResultXmls();
