// The words of the service's messages and launch requests, as docs/messages.md has them, and the names of
// what is stored: for people who type one wrongly, since the service passes over what it does not know.

#pragma once

#include <string>

#include "hint.h"
#include "launch-data.h"

struct bundle;

namespace Wfctl {

Names MessageTypes();  // values of "type"
Names MessageKeys();
Names LaunchKeys();
Names LaunchValues();

// The platform keys that the watch's programs use.
Names KeyNames();
// The service's preferences. Those of a world clock are named after a face and a group of it: there are the
// ones of whatever face and group `near` begins with.
std::vector<std::string> PreferenceNames(std::string_view near);

// What is sent all the same, with a line on stderr for each word that may be a slip. Nothing for other
// applications than the service.
void WarnOfMessageSlips(const std::string& app, const bundle& message);
void WarnOfLaunchSlips(const std::string& app, const Platform::LaunchData& extra);

}  // namespace Wfctl
