// Every look of a face that is worth drawing: all options met with all others, in each language and hour
// mode.

#pragma once

#include <set>
#include <string>
#include <vector>

// What is wrong with a face in all its looks, each fault once with the first look that has it: the face, the
// options, the language, the hour mode, and the place in the flat document with that line. `folder` holds the
// face's result XML and its assets.
std::vector<std::string> FaultsOfFace(const std::string& folder);

// The folders of all faces below `faces`, in order.
std::vector<std::string> FacesIn(const std::string& faces);
