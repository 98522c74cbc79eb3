// Platform keys and preferences.

#include "common-util-keys.h"
#include "common-util-pref.h"
#include "evaluation-limits.h"
#include "platform-log.h"
#include "platform-state.h"

// The name is the C interface's.
struct keynode_t {
    std::string name;
    std::optional<MemoryPlatform::StoreValue> value;
};

using namespace MemoryPlatform;

namespace {

constexpr int kNoSuchValue = -126;

std::string ToText(const StoreValue& value)
{
    if (const bool* on = std::get_if<bool>(&value)) return *on ? "true" : "false";
    if (const int* number = std::get_if<int>(&value)) return std::to_string(*number);
    return std::get<std::string>(value);
}

template <typename Value>
std::optional<Value> Find(const std::map<std::string, StoreValue>& store, const std::string& key)
{
    const auto it = store.find(key);
    const Value* value = it == store.end() ? nullptr : std::get_if<Value>(&it->second);
    return value ? std::optional<Value>(*value) : std::nullopt;
}

// The value comes from the store when the watcher is told, not from the change.
void Announce(State& state, const std::string& key)
{
    state.loop.Post([key] {
        State& now = *Current();
        keynode_t node{key, std::nullopt};
        if (const auto it = now.keys.find(key); it != now.keys.end()) node.value = it->second;
        ForEachRegistered(now.keyWatchers, key, [&](const auto& watcher) { watcher.handler(&node); });
    });
}

template <typename Value>
std::pair<bool, Value> GetKey(const std::string& key)
{
    Note("key get " + key);
    if (Use("CommonUtilVConf::Get")) return {false, Value()};
    const auto value = Find<Value>(Current()->keys, key);
    return {value.has_value(), value.value_or(Value())};
}

bool WriteKey(const std::string& key, const StoreValue& value)
{
    Note("key set " + key + "=" + ToText(value));
    if (Use("CommonUtilVConf::Set")) return false;
    Current()->keys[key] = value;
    Announce(*Current(), key);
    return true;
}

template <typename Value>
std::pair<int, Value> GetPref(const std::string& key)
{
    Note("pref get " + key);
    if (const auto code = Use("CommonUtilPref::Get")) return {*code, Value()};
    const auto value = Find<Value>(Current()->prefs, key);
    return {value ? 0 : kNoSuchValue, value.value_or(Value())};
}

std::size_t TextBytes(const StoreValue& value)
{
    const auto* text = std::get_if<std::string>(&value);
    return text ? text->size() : 0;
}

int FindRoom(const std::string& key, const StoreValue& value)
{
    ::Platform::EvaluationRoom room(key, TextBytes(value));
    for (const auto& [keptKey, kept] : Current()->prefs) room.Keeps(keptKey, TextBytes(kept));
    const std::string refusal = room.Refusal();
    if (refusal.empty()) return 0;
    PLATFORM_REFUSAL("%s", refusal.c_str());
    return ::Platform::kNoRoomForEvaluation;
}

int WritePref(const std::string& key, const StoreValue& value)
{
    Note("pref set " + key + "=" + ToText(value));
    if (const auto code = Use("CommonUtilPref::Set")) return *code;
    if (::Platform::IsEvaluationKey(key)) {
        if (const int code = FindRoom(key, value)) return code;
    }
    Current()->prefs[key] = value;
    return 0;
}

}  // namespace

std::pair<bool, bool> CommonUtilVConf::GetBool(const std::string& key)
{
    return GetKey<bool>(key);
}
std::pair<bool, int> CommonUtilVConf::GetInt(const std::string& key)
{
    return GetKey<int>(key);
}
std::pair<bool, std::string> CommonUtilVConf::GetString(const std::string& key)
{
    return GetKey<std::string>(key);
}
bool CommonUtilVConf::SetBool(const std::string& key, bool value)
{
    return WriteKey(key, value);
}
bool CommonUtilVConf::SetInt(const std::string& key, int value)
{
    return WriteKey(key, value);
}
bool CommonUtilVConf::SetString(const std::string& key, const std::string& value)
{
    return WriteKey(key, value);
}

class CommonUtilVConfCallback::Impl {
public:
    std::shared_ptr<Registration<KeyHandler>> watcher;
};

CommonUtilVConfCallback::CommonUtilVConfCallback(const std::string& key,
                                                 std::function<void(keynode_t*)> handler)
    : mImpl(std::make_unique<Impl>())
{
    Note("key watch " + key);
    mImpl->watcher = Register(Current()->keyWatchers, key, std::move(handler));
}

CommonUtilVConfCallback::~CommonUtilVConfCallback()
{
    Note("key unwatch " + mImpl->watcher->name);
    if (State* state = Current()) Unregister(state->keyWatchers, mImpl->watcher);
}

const char* vconf_keynode_get_name(const keynode_t* node)
{
    return node ? node->name.c_str() : nullptr;
}

int vconf_keynode_get_int(const keynode_t* node)
{
    const int* value = node && node->value ? std::get_if<int>(&*node->value) : nullptr;
    return value ? *value : 0;
}

int vconf_keynode_get_bool(const keynode_t* node)
{
    const bool* value = node && node->value ? std::get_if<bool>(&*node->value) : nullptr;
    return value && *value;
}

std::pair<int, bool> CommonUtilPref::GetBool(const std::string& key)
{
    return GetPref<bool>(key);
}
std::pair<int, int> CommonUtilPref::GetInt(const std::string& key)
{
    return GetPref<int>(key);
}
std::pair<int, std::string> CommonUtilPref::GetString(const std::string& key)
{
    return GetPref<std::string>(key);
}
int CommonUtilPref::SetBool(const std::string& key, bool value)
{
    return WritePref(key, value);
}
int CommonUtilPref::SetInt(const std::string& key, int value)
{
    return WritePref(key, value);
}
int CommonUtilPref::SetString(const std::string& key, const std::string& value)
{
    return WritePref(key, value);
}

void CommonUtilPref::SetTTraceEnabled(bool enabled)
{
    Note(std::string("ttrace ") + (enabled ? "true" : "false"));
    Current()->trace = enabled;
}

namespace MemoryPlatform {

void Platform::SetKey(const std::string& key, const StoreValue& value)
{
    mState->keys[key] = value;
    Announce(*mState, key);
}

void Platform::UnsetKey(const std::string& key)
{
    mState->keys.erase(key);
    Announce(*mState, key);
}

std::optional<StoreValue> Platform::Key(const std::string& key) const
{
    const auto it = mState->keys.find(key);
    return it == mState->keys.end() ? std::nullopt : std::optional(it->second);
}

void Platform::SetPref(const std::string& key, const StoreValue& value)
{
    mState->prefs[key] = value;
}
void Platform::UnsetPref(const std::string& key)
{
    mState->prefs.erase(key);
}

std::optional<StoreValue> Platform::Pref(const std::string& key) const
{
    const auto it = mState->prefs.find(key);
    return it == mState->prefs.end() ? std::nullopt : std::optional(it->second);
}

std::map<std::string, StoreValue> Platform::Prefs() const
{
    return mState->prefs;
}
bool Platform::TraceEnabled() const
{
    return mState->trace;
}

}  // namespace MemoryPlatform
