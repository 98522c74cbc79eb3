#include "bus-sdbus.h"

#include <sys/ioctl.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "application-table.h"
#include "platform-log.h"

namespace Platform {

namespace {

constexpr uint64_t kDriverTimeoutUsec = 5'000'000;
constexpr std::size_t kMostUsers = 512;

const std::string kApplicationPrefix = std::string(kApplicationNamespace) + ".";

std::string_view OrEmpty(const char* text)
{
    return text ? text : "";
}

std::string Environment(const char* name)
{
    return std::string(OrEmpty(std::getenv(name)));
}

std::string SystemBusAddress()
{
    const std::string address = Environment("DBUS_SYSTEM_BUS_ADDRESS");
    return address.empty() ? "unix:path=/run/dbus/system_bus_socket" : address;
}

bool IsFromDriver(sd_bus_message* answer)
{
    return OrEmpty(sd_bus_message_get_sender(answer)) == kDriver;
}

MessagePtr NewDriverCall(sd_bus* bus, const char* member, const std::string& argument)
{
    sd_bus_message* call = nullptr;
    if (sd_bus_message_new_method_call(bus, &call, kDriver, kDriverPath, kDriver, member) < 0) return {};
    MessagePtr owned(call);
    if (sd_bus_message_append(call, "s", argument.c_str()) < 0) return {};
    return owned;
}

}  // namespace

std::string BusAddress()
{
    for (const char* name : {"DBUS_STARTER_ADDRESS", "DBUS_SESSION_BUS_ADDRESS"}) {
        if (std::string address = Environment(name); !address.empty()) return address;
    }
    const std::string runtime = Environment("XDG_RUNTIME_DIR");
    if (!runtime.empty() && access((runtime + "/bus").c_str(), F_OK) == 0) {
        return "unix:path=" + runtime + "/bus";
    }
    return SystemBusAddress();
}

bool IsSystemBus(const std::string& address)
{
    // The address that a started program finds has the bus's id behind it.
    return address.starts_with(SystemBusAddress());
}

std::unique_ptr<Bus> Bus::Open(const std::string& address, sd_event* event, std::function<void()> onLost,
                               std::string* error)
{
    sd_bus* raw = nullptr;
    int code = sd_bus_new(&raw);
    if (code < 0) {
        *error = std::strerror(-code);
        return nullptr;
    }
    std::unique_ptr<Bus> self(new Bus(BusPtr(raw), std::move(onLost)));
    sd_bus_slot* guard = nullptr;
    code = sd_bus_add_filter(raw, &guard, OnFilter, self.get());
    self->mGuard.reset(guard);
    if (code >= 0) code = sd_bus_set_address(raw, address.c_str());
    if (code >= 0) code = sd_bus_set_bus_client(raw, true);
    if (code >= 0) code = sd_bus_start(raw);
    if (code >= 0) code = sd_bus_attach_event(raw, event, SD_EVENT_PRIORITY_NORMAL);
    // The loop's end is not the connection's: what the application answers while it ends still leaves.
    if (code >= 0) code = sd_bus_set_close_on_exit(raw, false);
    // The connection is made here; the bus greets us with our unique name.
    const char* name = nullptr;
    if (code >= 0) code = sd_bus_get_unique_name(raw, &name);
    if (code >= 0) {
        self->mApplications =
            self->MatchOwnerChanges("arg0namespace='" + std::string(kApplicationNamespace) + "'");
        return self;
    }
    *error = address + ": " + std::strerror(-code);
    return nullptr;
}

Bus::Bus(BusPtr bus, std::function<void()> onLost)
    : mOnLost(std::move(onLost)), mOwners(*this), mBus(std::move(bus))
{
}

Bus::~Bus() = default;

int Bus::OnFilter(sd_bus_message* message, void* data, sd_bus_error*)
{
    uint8_t type = 0;
    sd_bus_message_get_type(message, &type);
    if (type != SD_BUS_MESSAGE_SIGNAL) return 0;
    const auto sender = OrEmpty(sd_bus_message_get_sender(message));
    const auto interface = OrEmpty(sd_bus_message_get_interface(message));
    // Made by sd-bus itself when the connection ends; whoever is on the bus has a unique name instead.
    if (sender == "org.freedesktop.DBus.Local") {
        auto* self = static_cast<Bus*>(data);
        if (sd_bus_message_is_signal(message, nullptr, "Disconnected") > 0 && self->mOnLost) self->mOnLost();
        return 0;
    }
    if (sender == kDriver) return 0;
    if (OrEmpty(sd_bus_message_get_path(message)) == kDriverPath || interface == kDriver) return 1;
    return sd_bus_message_get_destination(message) ? 1 : 0;
}

int Bus::RequestName(const std::string& name)
{
    return sd_bus_request_name(Get(), name.c_str(), 0);
}
void Bus::ReleaseName(const std::string& name)
{
    sd_bus_release_name_async(Get(), nullptr, name.c_str(), nullptr, nullptr);
}

// `names` is the part of a match rule that says which.
SlotPtr Bus::MatchOwnerChanges(const std::string& names)
{
    const std::string rule = std::string("type='signal',sender='") + kDriver + "',path='" + kDriverPath +
                             "',interface='" + kDriver + "',member='NameOwnerChanged'," + names;
    return MatchAsync(Get(), rule, [this](sd_bus_message* signal) {
        const char *changed = nullptr, *before = nullptr, *after = nullptr;
        if (sd_bus_message_read(signal, "sss", &changed, &before, &after) < 0) return;
        mOwners.Changed(changed, before, after);
    });
}

bool Bus::Watch(const std::string& name, uint64_t generation)
{
    // The watch's applications are watched from the start, so that the ledger is exact from the first message
    // of each. Any other name is watched from its first message on.
    if (!name.starts_with(kApplicationPrefix)) mWatches[name] = MatchOwnerChanges("arg0='" + name + "'");
    const MessagePtr call = NewDriverCall(Get(), "GetNameOwner", name);
    const auto then = [this, name, generation](sd_bus_message* answer) {
        const char* owner = nullptr;
        const sd_bus_error* error = sd_bus_message_get_error(answer);
        if (!error && IsFromDriver(answer) && sd_bus_message_read(answer, "s", &owner) >= 0) {
            mOwners.Answered(name, generation, owner);
        } else if (error && sd_bus_error_has_name(error, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0) {
            mOwners.Answered(name, generation, "");
        } else {
            mOwners.Failed(name, generation);
        }
    };
    if (call && CallDetached(Get(), call.get(), kDriverTimeoutUsec, then) >= 0) return true;
    PLATFORM_FAULT("could not ask the bus for the owner of [%s]", name.c_str());
    return false;
}

void Bus::Forget(const std::string& name)
{
    mWatches.erase(name);
}

void Bus::AfterRouting(std::function<void()> then)
{
    // Any question that the bus always answers.
    const MessagePtr call = NewDriverCall(Get(), "NameHasOwner", kDriver);
    const auto answered = [then](sd_bus_message*) { then(); };
    if (!call || CallDetached(Get(), call.get(), kDriverTimeoutUsec, answered) < 0) then();
}

bool Bus::HasMoreToRead() const
{
    uint64_t messages = 0;
    int bytes = 0;
    return (sd_bus_get_n_queued_read(Get(), &messages) >= 0 && messages > 0) ||
           (ioctl(sd_bus_get_fd(Get()), FIONREAD, &bytes) == 0 && bytes > 0);
}

void Bus::ReadAhead(std::chrono::microseconds longest)
{
    const auto end = std::chrono::steady_clock::now() + longest;
    while (HasMoreToRead() && sd_bus_process(Get(), nullptr) > 0 && std::chrono::steady_clock::now() < end)
        continue;
}

std::optional<std::string> Bus::OwnerNow(const std::string& name)
{
    // Known from the next question on. This answer overtakes what waits on the connection, so it is not put
    // into the ledger, where it would stand for earlier messages.
    mOwners.Ask(name, [](const std::string&) {});
    if (const auto known = mOwners.Known(name)) return known;
    const MessagePtr call = NewDriverCall(Get(), "GetNameOwner", name);
    BusError error;
    sd_bus_message* answer = nullptr;
    if (!call) return std::nullopt;
    const int code = sd_bus_call(Get(), call.get(), kDriverTimeoutUsec, error.Out(), &answer);
    const MessagePtr owned(answer);
    const char* owner = nullptr;
    if (code >= 0 && sd_bus_message_read(answer, "s", &owner) >= 0) return owner;
    if (error.Is(SD_BUS_ERROR_NAME_HAS_NO_OWNER)) return std::string();
    return std::nullopt;
}

void Bus::UserOf(const std::string& uniqueName, std::function<void(std::optional<uid_t>)> then)
{
    if (const auto it = mUsers.find(uniqueName); it != mUsers.end()) return then(it->second);
    auto& questions = mUserQuestions[uniqueName];
    questions.push_back(std::move(then));
    if (questions.size() > 1) return;  // asked already
    const auto tellAll = [this, uniqueName](std::optional<uid_t> user) {
        const auto asked = mUserQuestions.extract(uniqueName);
        for (const auto& one : asked.mapped()) one(user);
    };
    const auto answered = [this, uniqueName, tellAll](sd_bus_message* answer) {
        uint32_t uid = 0;
        const bool told = !sd_bus_message_get_error(answer) && IsFromDriver(answer) &&
                          sd_bus_message_read(answer, "u", &uid) >= 0;
        if (!told) {
            return tellAll(std::nullopt);
        }
        if (mUsers.size() >= kMostUsers) mUsers.clear();
        mUsers[uniqueName] = uid;
        tellAll(uid);
    };
    const MessagePtr call = NewDriverCall(Get(), "GetConnectionUnixUser", uniqueName);
    if (!call || CallDetached(Get(), call.get(), kDriverTimeoutUsec, answered) < 0) tellAll(std::nullopt);
}

}  // namespace Platform
