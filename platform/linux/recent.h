// The values of the keys that were asked for last.

#pragma once

#include <algorithm>
#include <cstddef>
#include <list>
#include <string>
#include <utility>

namespace Platform {

// Holds at most `kMost` values; what was asked for longest ago leaves first. A pointer to a value holds until
// the value leaves.
template <typename Value, std::size_t kMost>
class Recent {
public:
    // Null when there is none.
    Value* Find(const std::string& key)
    {
        const auto at = std::find_if(mEntries.begin(), mEntries.end(),
                                     [&](const auto& entry) { return entry.first == key; });
        if (at == mEntries.end()) return nullptr;
        mEntries.splice(mEntries.begin(), mEntries, at);
        return &at->second;
    }

    // The key has no value yet.
    Value* Add(const std::string& key, Value value)
    {
        if (mEntries.size() == kMost) mEntries.pop_back();
        return &mEntries.emplace_front(key, std::move(value)).second;
    }

private:
    std::list<std::pair<std::string, Value>> mEntries;
};

}  // namespace Platform
