#include "service-bg-manager.h"

namespace WatchfaceService {

BgManager::BgManager() = default;

}  // namespace WatchfaceService
