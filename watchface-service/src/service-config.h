// Configuration that every watch product shares. What differs between products is in the product's own file.

#pragma once

namespace WatchfaceService {

// bool: whether the product's default watch face has been set. Nothing in this service reads it.
inline constexpr char kDefaultWatchfaceDonePref[] = "service-config-set-default-watchface-done";
// Where a device's product code would be kept; nothing in this service reads it.
inline constexpr char kProductCodeKey[] = "service-config-product-code";

// Remembers in the preferences whether the default watch face has been set.
void SetDefaultWatchfaceDone(bool done);

}  // namespace WatchfaceService
