// What one element must satisfy beyond its structure, in a result XML and in a flat document alike.

#pragma once

#include <set>
#include <string>
#include <string_view>

#include "face-node.h"

namespace DataUtil {

// Everything that shows in the element and its children alone: paint, gradients, ticks, where pictures lie,
// the values of a world clock.
void CheckElement(const Node& node, Findings& findings);

// A slot or a complication against the canvas, whose size `root` has.
void CheckBox(const Node& node, const Node& root, Findings& findings);

// True for an id that is new among `known`. One that is there already is a finding; `what` names its kind.
bool TakeId(std::set<std::string>& known, const Node& node, const char* attribute, const char* what,
            Findings& findings);

// True when a complication of that role can show the source.
bool CanShow(std::string_view role, std::string_view source);

}  // namespace DataUtil
