// Paths that may be changed.
//
// Every operation that changes files goes through OpenWritable(): it takes the path apart, refuses what must
// not be touched, and opens the folder above the last component so that nobody can swap it for a link while
// the operation runs. The writable areas are the shared data and trusted folders of the applications below
// the watch's root.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "unique-fd.h"

namespace Platform {

// Files with this prefix are half-written; listings leave them out.
inline constexpr char kUnfinishedPrefix[] = ".watch-new-";

enum class PathRule {
    kFolder,     // no "." and ".." components, below a writable area
    kFile,       // also with a name behind the last "/"
    kRecursive,  // as a folder, but no empty components, and not the root of an area
};

struct WritableTarget {
    UniqueFd parent;   // the folder above, opened
    std::string name;  // the last component
};

// The folder above `path`, opened, and the last component. A refusal is logged with `operation`; a folder
// that is missing just gives nothing.
std::optional<WritableTarget> OpenWritable(const std::string& path, PathRule rule, const char* operation);

// The area that `path` lies in, with "/" at its end, and the components below it, for making folders.
struct AreaPath {
    std::string area;
    std::string areaBelowRoot;  // "apps/A/shared/data/"
    std::vector<std::string> components;
};
std::optional<AreaPath> SplitWritable(const std::string& path, PathRule rule, const char* operation);

// Opens the folder of the area, made with its parents where it is missing; invalid on failure.
UniqueFd MakeArea(const AreaPath& path);

// One line about a path whose links lead out of its area.
void RefuseEscape(const char* operation, const std::string& path);

// Opens the folder `name` in `parent`, made with the rights of that where it is missing; invalid on failure.
UniqueFd MakeFolderBeneath(int parent, const std::string& name);

// Opens a folder below `parent` without leaving it, whatever links there are; invalid on failure.
UniqueFd OpenFolderBeneath(int parent, const std::string& relative);

}  // namespace Platform
