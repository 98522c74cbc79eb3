#include "shell-command.h"

#include "areas.h"
#include "private-watch.h"

namespace Wfctl {

std::string ShellWord(const std::string& name)
{
    constexpr char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
    const bool isPlain = !name.empty() && name.find_first_not_of(kPlain) == std::string::npos;
    return isPlain ? name : ShellQuoted(name);
}

std::string CommandOn(const std::string& root, const std::string& words)
{
    return "wfctl --root " + ShellQuoted(root) + " " + words;
}

std::string WatchCommand(const std::string& words)
{
    const std::string& root = NamedRoot();
    return root.empty() ? "wfctl " + words : CommandOn(root, words);
}

std::string RunningWatchCommand(const std::string& words)
{
    if (!IsDown()) return WatchCommand(words);
    // Also without --root, since the environment's bus is gone then.
    const std::string& root = Platform::CurrentAreas().root;
    return CommandOn(root, "up") + " && " + CommandOn(root, words);
}

}  // namespace Wfctl
