#include "service-config.h"

#include "common-util-pref.h"

namespace WatchfaceService {

void SetDefaultWatchfaceDone(bool done)
{
    CommonUtilPref::SetBool(kDefaultWatchfaceDonePref, done);
}

}  // namespace WatchfaceService
