#include <span>
#include <string>
#include <vector>

#include "completion.h"
#include "supervisor.h"
#include "verb-table.h"

int main(int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == Wfctl::kSuperviseWord) return Wfctl::Supervise(arguments[1]);
    if (!arguments.empty() && arguments[0] == Wfctl::kCompleteWord)
        return Wfctl::PrintCompletions(std::span(arguments).subspan(1));
    return Wfctl::RunCommandLine(std::move(arguments));
}
