#include <sqlite3.h>

#include "common-util-pref.h"
#include "evaluation-limits.h"
#include "platform-log.h"
#include "process.h"

namespace {

using Platform::Process;
using Platform::StoredValue;
using Platform::ValueStore;

static_assert(Platform::kNoRoomForEvaluation == SQLITE_FULL);

template <typename Value>
std::pair<int, Value> Answer(std::optional<Value> value)
{
    if (!value) return {SQLITE_NOTFOUND, Value()};
    return {0, *value};
}

// Nothing comes between this and the write: an application alone writes its preferences.
int FindRoom(ValueStore& store, const std::string& key, const StoredValue& value)
{
    ValueStore::Sizes kept;
    if (const int code = store.ListSizes(Platform::kEvaluationKeyEnd, &kept)) return code;
    const auto* text = std::get_if<std::string>(&value);
    Platform::EvaluationRoom room(key, text ? text->size() : 0);
    for (const auto& [keptKey, valueBytes] : kept) room.Keeps(keptKey, valueBytes);
    const std::string refusal = room.Refusal();
    if (refusal.empty()) return SQLITE_OK;
    PLATFORM_REFUSAL("%s", refusal.c_str());
    return Platform::kNoRoomForEvaluation;
}

int Write(const std::string& key, const StoredValue& value)
{
    ValueStore& store = Process::Current().Preferences();
    if (Platform::IsEvaluationKey(key)) {
        if (const int code = FindRoom(store, key, value)) return code;
    }
    return store.Set(key, value);
}

}  // namespace

std::pair<int, bool> CommonUtilPref::GetBool(const std::string& key)
{
    return Answer(Platform::GetAs<bool>(Process::Current().Preferences(), key));
}

std::pair<int, int> CommonUtilPref::GetInt(const std::string& key)
{
    return Answer(Platform::GetAsInt(Process::Current().Preferences(), key));
}

std::pair<int, std::string> CommonUtilPref::GetString(const std::string& key)
{
    return Answer(Platform::GetAs<std::string>(Process::Current().Preferences(), key));
}

int CommonUtilPref::SetBool(const std::string& key, bool value)
{
    return Write(key, value);
}

int CommonUtilPref::SetInt(const std::string& key, int value)
{
    return Write(key, int64_t{value});
}

int CommonUtilPref::SetString(const std::string& key, const std::string& value)
{
    return Write(key, value);
}

void CommonUtilPref::SetTTraceEnabled(bool enabled)
{
    Process::Current().Tracing().Set(enabled);
}
