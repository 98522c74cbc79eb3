// The messages whose fields become paths, in groups, and what these have in common.

#pragma once

#include "path-messages.h"

namespace Campaign {

using PathMessageList = std::vector<PathMessage>;

// Each adds its own. A face is installed, updated, deleted, shown or drawn.
void AddFaces(const PathStage& stage, PathMessageList& all);
// Pictures are added or deleted, at once or held until they are saved.
void AddPictures(PathMessageList& all);
// Items of a backup are given back.
void AddRestored(const PathStage& stage, PathMessageList& all);
// World clocks and evaluations are set and asked for.
void AddValues(PathMessageList& all);

inline constexpr char kVariant[] = "watch-bg-gallery-u1";
inline constexpr char kAnyVariant[] = "watch-bg-gallery-PATH";
inline constexpr char kHarmlessPicture[] = "SOURCES/harmless.png";

// What is tried as the path of a file that is to be copied.
const std::vector<Path>& SourcePaths();
// The rows that a change of the current face may change.
const std::vector<std::string>& CurrentFaceRows();

// Below the root.
std::string FaceFile(const std::string& name);
std::string InVariant(const std::string& name);

}  // namespace Campaign
