// Rights of what is made in a folder.
//
// On a device the programs of a watch run as different users and share folders through groups. Whoever set a
// folder up said who may do what there; the umask of the program that comes first has no say.

#pragma once

#include <sys/types.h>

#include <string>

namespace Platform {

// Gives `made`, a file or folder in the open folder `folder`, those rights of `most` for group and others
// that they have in the folder; the owner's stay. What is another user's is left as it is.
void TakeRightsOf(int folder, int made, mode_t most);
void TakeRightsOf(const std::string& folder, int made, mode_t most);

}  // namespace Platform
