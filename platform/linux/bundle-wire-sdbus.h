// Bundles on the wire: `a{sv}` whose values are `s`, `as`, `ay` or `aay`. The byte forms carry strings that
// are not UTF-8 or have noncharacters, which sd-bus refuses in `s`, and long ones, which it checks slowly.

#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>

#include "bundle-data.h"
#include "launch-data.h"

namespace Platform {

using BundlePtr = std::unique_ptr<bundle, BundleDeleter>;

// Longest message, as the sum of its keys and values.
inline constexpr std::size_t kMostBundleBytes = std::size_t{8} << 20;
// Most keys, values and elements of arrays together: empty strings count for no bytes, and yet each is held.
inline constexpr std::size_t kMostBundleStrings = std::size_t{1} << 16;
// What holding a string takes beside its bytes, and so at most holding a bundle.
inline constexpr std::size_t kBytesBesideString = 64;
inline constexpr std::size_t kMostBundleMemory = kMostBundleBytes + kMostBundleStrings * kBytesBesideString;
// From this length on a string travels as bytes.
inline constexpr std::size_t kBytesFrom = 4096;

// Appends the bundle; a negative code when it is too large or has a key that is not UTF-8.
int AppendBundle(sd_bus_message* message, const bundle& values);

// Reads a bundle; null with the reason in `*error` when it breaks a rule: another type, a NUL inside, a key
// twice, too large.
BundlePtr ReadBundle(sd_bus_message* message, std::string* error);

// The extra data of a launch request: `a{sv}` of `s` and `as`.
int AppendLaunchData(sd_bus_message* message, const LaunchData& extra);
bool ReadLaunchData(sd_bus_message* message, LaunchData* extra, std::string* error);

// What holding the bundle takes, in bytes.
std::size_t BundleBytes(const bundle& values);

}  // namespace Platform
