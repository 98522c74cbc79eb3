// Pictures in the terminal.

#pragma once

#include <string>

namespace Wfctl {

// Shows the picture where stdout is a terminal with colours and there is a program that can; else nothing.
void ShowPicture(const std::string& path);

}  // namespace Wfctl
