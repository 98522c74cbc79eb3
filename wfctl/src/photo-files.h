// The user's pictures: by kind, and as faces look for them.

#pragma once

#include <string>
#include <vector>

#include "face-document.h"

namespace Wfctl {

// The kind of pictures that `bg` is about where nobody says another.
inline constexpr char kUsualPictures[] = "gallery-u1";

// Where the pictures of a kind lie, which is "gallery-u1", "gallery" or "digital", with "/" at the end.
std::string PicturesFolder(const std::string& kind);
std::vector<std::string> PicturesIn(const std::string& folder);  // their names in order

// Where a picture of that bare name is looked for; see the format's page.
std::string PhotoPath(const DataUtil::Photos& photos, const std::string& name);

// Why a face cannot show the file, as "is neither a PNG nor a JPEG"; empty where it can. Of a JPEG only its
// beginning and its end are looked at.
std::string PhotoProblem(const std::string& path);

// The command that puts a file there: "wfctl bg add --type gallery-u1 'cat.jpg'".
std::string AddCommand(const DataUtil::Photos& photos, const std::string& file);

}  // namespace Wfctl
