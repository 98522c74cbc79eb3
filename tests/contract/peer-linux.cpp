#include "peer-linux.h"

#include <stdexcept>

#include "launch-sdbus.h"
#include "platform-keys-sdbus.h"

namespace Contract {

namespace {

Platform::BundlePtr BundleOf(const Message& message)
{
    Platform::BundlePtr made(bundle_create());
    for (const auto& [key, value] : message) {
        std::visit([&, name = key](const auto& content) { made->Set(name, content); }, value);
    }
    return made;
}

Message MessageOf(const bundle& values)
{
    Message message;
    for (const auto& [key, value] : values.values) {
        if (const auto* text = std::get_if<std::string>(&value))
            message[key] = *text;
        else
            message[key] = std::get<Platform::StringArrayValue>(value).strings;
    }
    return message;
}

Platform::StoredValue StoredOf(const KeyValue& value)
{
    if (const auto* number = std::get_if<int>(&value)) return int64_t{*number};
    if (const auto* flag = std::get_if<bool>(&value)) return *flag;
    return std::get<std::string>(value);
}

}  // namespace

BusPeer::BusPeer(const std::string& address, std::string appId, std::string toApp)
    : mAppId(std::move(appId)), mToApp(std::move(toApp))
{
    std::promise<void> ready;
    auto isReady = ready.get_future();
    mThread =
        std::thread([this, address, ready = std::move(ready)]() mutable { Run(address, std::move(ready)); });
    isReady.get();
}

BusPeer::~BusPeer()
{
    mWork->Post([this] { sd_event_exit(mEvent, 0); });
    mThread.join();
}

void BusPeer::Run(const std::string& address, std::promise<void> ready)
{
    sd_event_new(&mEvent);
    const Platform::EventPtr event(mEvent);
    sd_bus_new(&mBus);
    const Platform::BusPtr bus(mBus);
    sd_bus_set_address(mBus, address.c_str());
    sd_bus_set_bus_client(mBus, true);
    sd_bus_start(mBus);
    sd_bus_attach_event(mBus, mEvent, SD_EVENT_PRIORITY_NORMAL);
    sd_bus_slot* slot = nullptr;
    sd_bus_add_filter(mBus, &slot, OnCall, this);
    const Platform::SlotPtr filter(slot);
    mWork = std::make_unique<Platform::LoopInbox>(mEvent);
    if (sd_bus_request_name(mBus, mAppId.c_str(), 0) < 0) throw std::runtime_error("no name for a peer");
    ready.set_value();
    sd_event_loop(mEvent);
    mWork.reset();
}

void BusPeer::OnThread(std::function<void()> work)
{
    std::promise<void> done;
    mWork->Post([&] {
        work();
        done.set_value();
    });
    done.get_future().get();
}

int BusPeer::OnCall(sd_bus_message* message, void* data, sd_bus_error*)
{
    auto* self = static_cast<BusPeer*>(data);
    if (sd_bus_message_is_method_call(message, Platform::kPortInterface, nullptr) > 0)
        return self->Take(message);
    if (sd_bus_message_is_method_call(message, Platform::kApplicationInterface, "Launch") > 0) {
        return self->Answer(message);
    }
    return 0;
}

int BusPeer::Take(sd_bus_message* message)
{
    const char *port = nullptr, *from = nullptr, *fromPort = nullptr;
    std::string error;
    sd_bus_message_read(message, "sss", &port, &from, &fromPort);
    const auto content = Platform::ReadBundle(message, &error);
    if (!content) return 0;
    const std::lock_guard lock(mMutex);
    const bool trusted = sd_bus_message_is_method_call(message, nullptr, "SendTrusted") > 0;
    if (!mListening.contains({port, trusted})) return 0;
    mInbox.push_back({from, fromPort, port, MessageOf(*content)});
    return 1;
}

int BusPeer::Answer(sd_bus_message* message)
{
    const std::lock_guard lock(mMutex);
    if (!mLaunchAnswer) return 0;
    Platform::LaunchData extra(mLaunchAnswer->extra.begin(), mLaunchAnswer->extra.end());
    sd_bus_message* raw = nullptr;
    sd_bus_message_new_method_return(message, &raw);
    const Platform::MessagePtr answer(raw);
    sd_bus_message_append(raw, "i", mLaunchAnswer->result);
    Platform::AppendLaunchData(raw, extra);
    sd_bus_send(mBus, raw, nullptr);
    return 1;
}

void BusPeer::Listen(const std::string& port, bool trusted)
{
    OnThread([&] {
        sd_bus_request_name(mBus, Platform::PortBusName(mAppId, port, trusted).c_str(), 0);
        while (sd_bus_process(mBus, nullptr) > 0) {
        }  // what came before the port was up is lost
        const std::lock_guard lock(mMutex);
        mListening.insert({port, trusted});
    });
}

std::vector<Received> BusPeer::Inbox() const
{
    const std::lock_guard lock(mMutex);
    return mInbox;
}

void BusPeer::Send(const std::string& port, bool trusted, const Message& message, const std::string& fromPort)
{
    OnThread([&] {
        int code = 0;
        const auto call = Platform::NewPortMessage(mBus, mToApp, port, trusted, mAppId, fromPort,
                                                   *BundleOf(message), true, &code);
        Platform::CallDetached(mBus, call.get(), 0, [](sd_bus_message*) {});
    });
}

std::function<std::optional<LaunchAnswer>()> BusPeer::Launch(const Message& extra)
{
    struct Shared {
        std::mutex mutex;
        std::optional<LaunchAnswer> answer;
    };
    const auto shared = std::make_shared<Shared>();
    OnThread([&] {
        int code = 0;
        const Platform::LaunchData data(extra.begin(), extra.end());
        const auto call = Platform::NewLaunchCall(mBus, mToApp, mAppId, data, &code);
        Platform::CallDetached(mBus, call.get(), UINT64_MAX, [shared](sd_bus_message* reply) {
            LaunchAnswer answer;
            Platform::LaunchData got;
            std::string error;
            if (sd_bus_message_read(reply, "i", &answer.result) < 0) return;
            Platform::ReadLaunchData(reply, &got, &error);
            answer.extra.insert(got.begin(), got.end());
            const std::lock_guard lock(shared->mutex);
            shared->answer = answer;
        });
    });
    return [shared] {
        const std::lock_guard lock(shared->mutex);
        return shared->answer;
    };
}

void BusPeer::AnswerLaunches(const LaunchAnswer& answer)
{
    const std::lock_guard lock(mMutex);
    mLaunchAnswer = answer;
}

void BusPeer::SetKey(const std::string& key, const KeyValue& value)
{
    Platform::ValueStore store(Platform::KeysPath(), 0660);
    OnThread([&] { Platform::SetKey(store, mBus, key, StoredOf(value)); });
}

}  // namespace Contract
