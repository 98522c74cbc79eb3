// Files that are read whole: those that people name, and the watch's own.

#pragma once

#include <string>

namespace Wfctl {

// The bytes of a file that the user named. Of more than 32 MiB one byte more is read, and nobody takes that.
std::string ReadNamedFile(const std::string& path);

// The same; empty where there is no file at that path.
std::string BytesOfFile(const std::string& path);

// Those of a file that nobody named; empty also where it cannot be read, as when its disk fails.
std::string ReadableBytes(const std::string& path);

}  // namespace Wfctl
