// What of the selected watch a backup is about.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "backup-manifest.h"
#include "faces.h"

namespace Wfctl {

// The kinds of pictures that the service backs up.
inline constexpr const char* kBackedUpPictures[] = {kThemePictures, kGalleryPictures};

// The files of the watch's pictures of a kind (BackupItem::bgType), by name.
std::map<std::string, std::string> PicturesOf(const std::string& bgType);
// Where a picture lies, or would.
std::string PathOfPicture(const std::string& bgType, const std::string& name);

bool IsFile(const std::string& path);

// Whether the user made something of the face: the service copies shipped ones as they are.
bool IsChanged(const Face& face);

// What the service does not send and a backup cannot hold, for people.
std::vector<std::string> NotCarried();

}  // namespace Wfctl
