// Platform keys over the bus: whoever writes a key announces it, after the value is durable, also when the
// value is the one that was there before. The value comes from the store, never from the announcement.

#pragma once

#include <functional>
#include <string>

#include "bus-names.h"
#include "systemd-handles.h"
#include "value-store-sqlite.h"

namespace Platform {

// Announces a change; 0 or a negative code.
int AnnounceKey(sd_bus* bus, const std::string& key);

// Runs `changed` after every announcement of the key, while the slot lives.
SlotPtr WatchKey(sd_bus* bus, const std::string& key, std::function<void()> changed);

// Writes, then announces. 0, or a code.
int SetKey(ValueStore& store, sd_bus* bus, const std::string& key, const StoredValue& value);

}  // namespace Platform
