#include "shell-command.h"

#include "private-watch.h"

namespace Wfctl {

std::string ShellWord(const std::string& name)
{
    constexpr char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
    const bool isPlain = !name.empty() && name.find_first_not_of(kPlain) == std::string::npos;
    return isPlain ? name : ShellQuoted(name);
}

std::string CommandOn(const std::string& root)
{
    return root.empty() ? "wfctl" : "wfctl --root " + ShellQuoted(root);
}

}  // namespace Wfctl
