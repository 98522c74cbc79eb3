// System settings as applications read them.

#pragma once

#include "system-setting-table.h"
#include "value-store-sqlite.h"

namespace Wfctl {

// The platform key, or what the environment says while it is unset.
Platform::StoredValue SettingValue(Platform::ValueStore& keys, const Platform::SystemSetting& setting);

// The same where no store is at hand.
Platform::StoredValue SettingFromEnvironment(const Platform::SystemSetting& setting);

}  // namespace Wfctl
