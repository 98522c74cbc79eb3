// The bundle behind the C interface: what the platforms read from and write to the wire.

#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

#include "bundle.h"

namespace Platform {

using StringArray = std::vector<std::string>;

// A bundle's value. `StringArrayValue` keeps the pointers that the C interface hands out.
struct StringArrayValue {
    StringArray strings;
    std::vector<const char*> pointers;  // into `strings`
};

}  // namespace Platform

struct bundle {
    // Keys in byte order, so that a bundle is printed and sent the same way every time.
    using Value = std::variant<std::string, Platform::StringArrayValue>;
    std::map<std::string, Value, std::less<>> values;

    void Set(const std::string& key, std::string value);
    void Set(const std::string& key, Platform::StringArray strings);
};

namespace Platform {

struct BundleDeleter {
    void operator()(bundle* b) const { bundle_free(b); }
};

}  // namespace Platform
