// Reading and filling messages.

#pragma once

#include <string>

#include "common-util-ipc-control.h"
#include "handles.h"

namespace WatchfaceService {

// Empty when there is no string under the key.
inline std::string Get(bundle* message, const char* key)
{
    return CommonUtilIPCControl::BundleGetString(message, key);
}

// In place of what is there.
inline void Add(const BundlePtr& message, const char* key, const std::string& value)
{
    bundle_add_str(message.get(), key, value.c_str());
}

}  // namespace WatchfaceService
