// Checking the assets that a face document names against the files that are there.

#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "face-document.h"

namespace DataUtil {

// The paths of the images of the document and of the default images of its photos, as it names them; each
// once.
std::set<std::string> AssetPaths(const FaceDocument& document);

// The findings about the images of the result XML and the default images of its photos, by place: those that
// are not there, are no PNG of at most 4096 x 4096 pixels, or have more than twice the width or height of the
// box that they are shown in. Those of a refused document as far as it can be read. Each is looked up in
// `folders` in turn; links below them are not followed. Only the first bytes of a file are read.
std::vector<Finding> CheckAssets(std::string_view resultXml, const std::vector<std::string>& folders);

}  // namespace DataUtil
