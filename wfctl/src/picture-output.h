// Pictures in the terminal.

#pragma once

#include <string>

namespace Wfctl {

// Shows the picture where stdout is a terminal with colours and there is a program that can; else nothing.
void ShowPicture(const std::string& path);

// A check of options that name a picture to write: empty, or what is wrong with the name.
std::string PictureNameProblem(const std::string& path);

}  // namespace Wfctl
