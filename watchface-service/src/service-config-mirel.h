// What the product "mirel" says about watch faces: which belong to it, what they are called, and which of its
// own takes the place of an older family's. The tables are constants.
//
// A *family* is a product's set of preloaded watch faces; their names begin with the family's prefix. A
// *product code* stands for a watch face in usage records; a *label id* names its display name in the
// translation catalogue.
//
// A name that is in no table gives the empty string; nothing here fails.

#pragma once

#include <memory>
#include <string>

namespace WatchfaceService {

class WatchfaceManager;

// Whether `watchName` begins with this product's prefix. The flag has no meaning in this product.
bool IsMirelWatchface(const std::string& watchName, bool flag);

// Whether this is the watch face that shows pictures of the user's gallery.
bool IsGalleryWatchface(const std::string& watchName);

// The folder of a watch face's gallery pictures: "U1" for the gallery watch face, else empty.
std::string GetWatchfaceBgTag(const std::string& watchName);

// Whether a watch face is cleaned of limited complications even when it has none; never in this product.
bool AllowLimitedComplication();

// Hooks for set-up time. They do nothing in this product.
void OnSetupWizardReturned(std::shared_ptr<WatchfaceManager> manager);
void ApplyWatchfaceConfiguration(WatchfaceManager* manager);

std::string GetProductCode(const std::string& watchName);
std::string GetLabelId(const std::string& watchName);

// The watch face of this product that stands for `watchName`: its counterpart where it is of an older family,
// else itself. Empty when that one is not installed in the read-only area.
std::string GetWatchfaceFamily(const std::string& watchName);

}  // namespace WatchfaceService
