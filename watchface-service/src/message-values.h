// Reading and filling messages.

#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

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

inline void AddArray(const BundlePtr& message, const char* key, const std::vector<std::string>& values)
{
    std::vector<const char*> texts;
    texts.reserve(values.size());
    for (const std::string& value : values) texts.push_back(value.c_str());
    bundle_add_str_array(message.get(), key, texts.data(), static_cast<int>(texts.size()));
}

// A message of these keys and texts; null when none can be made.
inline BundlePtr NewMessage(std::initializer_list<std::pair<const char*, std::string>> texts)
{
    BundlePtr message(bundle_create());
    for (const auto& [key, text] : texts) Add(message, key, text);
    return message;
}

}  // namespace WatchfaceService
