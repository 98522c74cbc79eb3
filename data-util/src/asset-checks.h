// Checking the assets that a face document names against the files that are there.

#pragma once

#include <set>
#include <string>
#include <vector>

#include "face-document.h"

namespace DataUtil {

// The paths of the images of the document and of the default images of its photos, as it names them; each
// once.
std::set<std::string> AssetPaths(const FaceDocument& document);

// The findings about the images of the document and the default images of its photos, by place: those that
// are not there, are no PNG of at most 4096 x 4096 pixels, or have more than twice the width or height of the
// box that they are shown in. Each is looked up in `folders` in turn; links below them are not followed. Only
// the first bytes of a file are read.
std::vector<Finding> CheckAssets(const FaceDocument& document, const std::vector<std::string>& folders);

}  // namespace DataUtil
