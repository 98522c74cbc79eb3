#include "picture-output.h"

#include "child-process.h"
#include "json-text.h"

namespace Wfctl {

void ShowPicture(const std::string& path)
{
    if (!WantsColor()) return;
    const std::string viewer = FindProgram("chafa");
    if (!viewer.empty()) RunProgram(viewer, {"--size=40x20", path});
}

}  // namespace Wfctl
