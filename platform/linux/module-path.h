// Where this project's own modules are, which programs open late.

#pragma once

#include <string>

namespace Platform {

// The path of a module's file, in the build tree or the installation that this program runs from.
std::string ModulePath(const std::string& file);

}  // namespace Platform
