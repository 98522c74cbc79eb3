#include "platform-keys-sdbus.h"

#include <cstring>
#include <limits>
#include <utility>

#include "common-util-keys.h"
#include "platform-log.h"
#include "process.h"
#include "trace-event-json.h"

namespace Platform {

namespace {

// The part of a match rule that says which key. The bus and sd-bus read quotes and backslashes inside a rule
// differently, so a key that has them is told from others only when the announcement is here.
std::string MatchOf(const std::string& key)
{
    return key.find_first_of("'\\") == std::string::npos ? ",arg0='" + key + "'" : std::string();
}

}  // namespace

int AnnounceKey(sd_bus* bus, const std::string& key)
{
    const int code = sd_bus_emit_signal(bus, kKeysPath, kKeysInterface, "Changed", "s", key.c_str());
    if (code < 0) PLATFORM_FAULT("change of [%s] not announced: %s", key.c_str(), std::strerror(-code));
    return code < 0 ? code : 0;
}

SlotPtr WatchKey(sd_bus* bus, const std::string& key, std::function<void()> changed)
{
    const std::string rule = std::string("type='signal',path='") + kKeysPath + "',interface='" +
                             kKeysInterface + "',member='Changed'" + MatchOf(key);
    return MatchAsync(bus, rule, [key, changed = std::move(changed)](sd_bus_message* signal) {
        const char* announced = nullptr;
        if (sd_bus_message_read(signal, "s", &announced) < 0 || key != announced) return;
        const TraceSpan span("key", "changed", {"key", key});
        changed();
    });
}

int SetKey(ValueStore& store, sd_bus* bus, const std::string& key, const StoredValue& value)
{
    if (const int code = store.Set(key, value); code != 0) return code;
    return AnnounceKey(bus, key);
}

}  // namespace Platform

// What a watcher is told: the key, and the value read from the store.
struct keynode_t {
    std::string name;
    std::optional<Platform::StoredValue> value;
};

const char* vconf_keynode_get_name(const keynode_t* node)
{
    return node ? node->name.c_str() : nullptr;
}

int vconf_keynode_get_int(const keynode_t* node)
{
    const auto* number = node && node->value ? std::get_if<int64_t>(&*node->value) : nullptr;
    using Limits = std::numeric_limits<int>;
    if (!number || *number < Limits::min() || *number > Limits::max()) return 0;
    return static_cast<int>(*number);
}

int vconf_keynode_get_bool(const keynode_t* node)
{
    const auto* flag = node && node->value ? std::get_if<bool>(&*node->value) : nullptr;
    return flag && *flag ? 1 : 0;
}

namespace {

using Platform::Process;

template <typename Value>
std::pair<bool, Value> Answer(std::optional<Value> value)
{
    return {value.has_value(), value.value_or(Value())};
}

bool Write(const std::string& key, const Platform::StoredValue& value)
{
    Process& process = Process::Current();
    return Platform::SetKey(process.Keys(), process.GetBus().Get(), key, value) == 0;
}

}  // namespace

std::pair<bool, bool> CommonUtilVConf::GetBool(const std::string& key)
{
    return Answer(Platform::GetAs<bool>(Process::Current().Keys(), key));
}

std::pair<bool, int> CommonUtilVConf::GetInt(const std::string& key)
{
    return Answer(Platform::GetAsInt(Process::Current().Keys(), key));
}

std::pair<bool, std::string> CommonUtilVConf::GetString(const std::string& key)
{
    return Answer(Platform::GetAs<std::string>(Process::Current().Keys(), key));
}

bool CommonUtilVConf::SetBool(const std::string& key, bool value)
{
    return Write(key, value);
}
bool CommonUtilVConf::SetInt(const std::string& key, int value)
{
    return Write(key, int64_t{value});
}
bool CommonUtilVConf::SetString(const std::string& key, const std::string& value)
{
    return Write(key, value);
}

class CommonUtilVConfCallback::Impl {
public:
    Impl(const std::string& key, std::function<void(keynode_t*)> handler)
        : mHandler(std::make_shared<std::function<void(keynode_t*)>>(std::move(handler)))
    {
        mWatch = Platform::WatchKey(Process::Current().GetBus().Get(), key, [this, key] {
            const auto kept = mHandler;  // the watcher may be destroyed inside its handler
            keynode_t node{key, Process::Current().Keys().Get(key)};
            (*kept)(&node);
        });
    }

private:
    std::shared_ptr<std::function<void(keynode_t*)>> mHandler;
    Platform::SlotPtr mWatch;
};

CommonUtilVConfCallback::CommonUtilVConfCallback(const std::string& key,
                                                 std::function<void(keynode_t*)> handler)
    : mImpl(std::make_unique<Impl>(key, std::move(handler)))
{
}
CommonUtilVConfCallback::~CommonUtilVConfCallback() = default;
