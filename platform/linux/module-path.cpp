#include "module-path.h"

#include "process.h"

namespace Platform {

std::string ModulePath(const std::string& file)
{
    return InstallPrefix() + "/" WATCH_LIBDIR "/watch/" + file;
}

}  // namespace Platform
