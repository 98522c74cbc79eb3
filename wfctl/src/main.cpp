#include <string>
#include <vector>

#include "supervisor.h"
#include "verb-table.h"

int main(int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == Wfctl::kSuperviseWord) return Wfctl::Supervise(arguments[1]);
    return Wfctl::RunCommandLine(std::move(arguments));
}
