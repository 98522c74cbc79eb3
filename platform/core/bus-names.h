// What the applications of a watch offer each other on the bus. The bus policy is made from these, too.

#pragma once

#include <cstddef>

namespace Platform {

// What the bus may keep for one that does not read, in bytes. A bus takes nothing more from whose messages it
// keeps too many (127 MiB by default): with a limit no lower, one that does not read what the service sends
// would silence the service for all.
inline constexpr std::size_t kMostUnreadBytes = std::size_t{32} << 20;

// Messages to a port.
inline constexpr char kPortPath[] = "/com/corvane/platform/port";
inline constexpr char kPortInterface[] = "com.corvane.platform.MessagePort1";

// Launch requests.
inline constexpr char kApplicationPath[] = "/com/corvane/platform/app";
inline constexpr char kApplicationInterface[] = "com.corvane.platform.Application1";

// The announcement of a platform key that was written.
inline constexpr char kKeysPath[] = "/com/corvane/platform/keys";
inline constexpr char kKeysInterface[] = "com.corvane.platform.Keys1";

}  // namespace Platform
