#include "folder-rights-posix.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "unique-fd.h"

namespace Platform {

namespace {
constexpr mode_t kRights = 0777, kOthers = 0077;
}

void TakeRightsOf(int folder, int made, mode_t most)
{
    struct stat above {
    }, self{};
    if (fstat(folder, &above) != 0 || fstat(made, &self) != 0) return;
    // Without the bits that hand the group down: a confined program may not set these.
    const mode_t rights = (most & ~kOthers) | (most & above.st_mode & kOthers);
    if ((self.st_mode & kRights) != rights) fchmod(made, rights);
}

void TakeRightsOf(const std::string& folder, int made, mode_t most)
{
    const UniqueFd opened(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (opened) TakeRightsOf(opened.Get(), made, most);
}

}  // namespace Platform
