#include "late-library.h"

#include <dlfcn.h>

#include "platform-log.h"

namespace Platform {

void* LateLibrary::Find(const char* symbol)
{
    if (!mTried) {
        mTried = true;
        mHandle = dlopen(mName.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!mHandle) PLATFORM_FAULT("could not open a library: %s", dlerror());
    }
    if (!mHandle) return nullptr;
    void* address = dlsym(mHandle, symbol);
    if (!address) PLATFORM_FAULT("a library is not the one this was built for: %s", dlerror());
    return address;
}

}  // namespace Platform
