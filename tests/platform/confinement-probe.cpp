// An application that starts as all of ours do, and then tries what it may not: prints the names of the
// probes that succeeded, one a line. confinement-probe OWN FOREIGN OUTSIDER SOCKET; with "memory" as the
// first argument it asks for more memory than is allowed, and prints whether it got it.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "confinement-landlock.h"
#include "probes.h"
#include "service-app.h"

namespace {

bool TryMemory()
{
    const std::unique_ptr<char[]> more(new (std::nothrow) char[Platform::kMostData + 1]);
    std::puts(more ? "got it" : "refused");
    return false;
}

bool Try(void* userData)
{
    char** const arguments = static_cast<char**>(userData);
    if (std::string(arguments[1]) == "memory") return TryMemory();
    for (const std::string& name :
         PlatformTest::Succeeding({arguments[1], arguments[2], std::atoi(arguments[3]), arguments[4]})) {
        std::puts(name.c_str());
    }
    return false;
}

}  // namespace

int main(int argc, char** argv)
{
    service_app_lifecycle_callback_s callbacks{Try, nullptr, nullptr};
    service_app_main(argc, argv, &callbacks, argv);
}
