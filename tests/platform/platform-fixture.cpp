#include "platform-fixture.h"

#include <cstdlib>

namespace PlatformTest {

using Platform::MessagePtr;

Peer::Peer(const std::string& address)
{
    sd_bus* raw = nullptr;
    sd_bus_new(&raw);
    sd_bus_set_address(raw, address.c_str());
    sd_bus_set_bus_client(raw, true);
    sd_bus_start(raw);
    sd_bus_attach_event(raw, Platform::MainLoop(), SD_EVENT_PRIORITY_NORMAL);
    mBus.reset(raw);
}

std::string Peer::UniqueName() const
{
    const char* name = nullptr;
    sd_bus_get_unique_name(Get(), &name);
    return name ? name : "";
}

void Peer::Own(const std::string& name)
{
    ASSERT_GE(sd_bus_request_name(Get(), name.c_str(), 0), 0) << name;
}

void Peer::OwnLater(const std::string& name)
{
    sd_bus_request_name_async(
        Get(), nullptr, name.c_str(), 0, [](sd_bus_message*, void*, sd_bus_error*) { return 0; }, nullptr);
}

void Peer::ReleaseLater(const std::string& name)
{
    sd_bus_release_name_async(
        Get(), nullptr, name.c_str(), [](sd_bus_message*, void*, sd_bus_error*) { return 0; }, nullptr);
}

void Peer::Send(const std::string& claimed, const bundle& message, const std::string& port, bool trusted)
{
    int code = 0;
    SendRaw(
        Platform::NewPortMessage(Get(), kApp, port, trusted, claimed, "reply::port", message, true, &code));
}

void Peer::WaitUntilRouted()
{
    ASSERT_GE(sd_bus_call_method(Get(), Platform::kDriver, Platform::kDriverPath, Platform::kDriver, "GetId",
                                 nullptr, nullptr, ""),
              0);
}

void Peer::SendRaw(MessagePtr call)
{
    const auto answered = [this](sd_bus_message* answer) {
        const sd_bus_error* error = sd_bus_message_get_error(answer);
        mAnswers.push_back(error ? error->name : "");
    };
    ASSERT_GE(Platform::CallDetached(Get(), call.get(), 0, answered), 0);
}

std::string Received::Text(const std::string& key) const
{
    const auto it = values.find(key);
    const auto* text = it == values.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : "(none)";
}

AnApplication::AnApplication()
{
    unsetenv("DBUS_STARTER_ADDRESS");
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str(), 1);
    setenv("WATCH_ROOT", root.Path().c_str(), 1);
    process = Platform::Process::Start(kApp);
}

AnApplication::~AnApplication() = default;

void AnApplication::OpenPort(const std::string& name, bool trusted)
{
    process->Ports().Open(
        name, trusted, [this](int, const std::string& app, const std::string& port, bool t, bundle* message) {
            received.push_back({
                app, port, t, {message->values.begin(), message->values.end()}
            });
        });
}

void AnApplication::Announce()
{
    std::string failed;
    ASSERT_EQ(process->Ports().Announce(&failed), 0) << failed;
    ASSERT_GE(process->GetBus().RequestName(kApp), 0);
}

void AnApplication::Settle(Peer& peer)
{
    // The bus keeps the order, so a round trip from the peer to us ends after all that it sent before.
    bool back = false;
    sd_bus_message* raw = nullptr;
    sd_bus_message_new_method_call(peer.Get(), &raw, kApp, "/", "org.freedesktop.DBus.Peer", "Ping");
    const MessagePtr call(raw);
    Platform::CallDetached(peer.Get(), raw, 0, [&](sd_bus_message*) { back = true; });
    ASSERT_TRUE(RunUntil([&] { return back; }));
}

Platform::BundlePtr Bundle(const std::map<std::string, std::string>& values)
{
    Platform::BundlePtr b(bundle_create());
    for (const auto& [key, value] : values) b->Set(key, value);
    return b;
}

}  // namespace PlatformTest
