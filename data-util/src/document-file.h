// Documents on disk.

#pragma once

#include <optional>
#include <string>

namespace DataUtil {

// The bytes of a regular file of at most kMostBytes; else nothing, and `problem` says in one line why. Never
// waits for what is no regular file.
std::optional<std::string> ReadDocumentFile(const std::string& path, std::string& problem);

}  // namespace DataUtil
