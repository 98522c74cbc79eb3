#include "bundle-oracle.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "bundle-wire-sdbus.h"
#include "systemd-handles.h"
#include "unique-fd.h"
#include "utf8.h"

namespace Fuzz {

namespace {

void Check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "bundle: %s\n", what);
    std::abort();
}

// The receiving end of a socket. A peer's bytes go in, sd-bus's messages come out.
class Wire {
public:
    Wire()
    {
        int ends[2];
        Check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0, "no sockets");
        mPeer = Platform::UniqueFd(ends[0]);
        sd_bus* bus = nullptr;
        Check(sd_bus_new(&bus) >= 0, "no bus");
        mBus.reset(bus);
        sd_bus_set_fd(bus, ends[1], ends[1]);
        sd_bus_set_server(bus, true, sd_id128_t{});
        sd_bus_set_anonymous(bus, true);
        Check(sd_bus_start(bus) >= 0, "the bus does not start");
        using namespace std::string_view_literals;
        Write("\0AUTH ANONYMOUS\r\nBEGIN\r\n"sv);
        while (sd_bus_is_ready(bus) == 0) Check(sd_bus_process(bus, nullptr) >= 0, "no greeting");
    }

    Platform::MessagePtr Deliver(std::string_view message)
    {
        sd_bus_message* received = nullptr;
        while (!message.empty()) {
            message.remove_prefix(Write(message));
            if (!received) Check(sd_bus_process(mBus.get(), &received) >= 0, "the connection was closed");
        }
        while (!received) Check(sd_bus_process(mBus.get(), &received) >= 0, "the connection was closed");
        return Platform::MessagePtr(received);
    }

    // What `append` writes, as somebody else would receive it.
    template <typename Append>
    Platform::MessagePtr Written(Append&& append)
    {
        sd_bus_message* made = nullptr;
        Check(sd_bus_message_new_signal(mBus.get(), &made, "/a", "a.a", "A") >= 0, "no message");
        Platform::MessagePtr message(made);
        Check(append(made) >= 0, "what was read cannot be written");
        Check(sd_bus_message_seal(made, 1, 0) >= 0, "what was written cannot be sent");
        return message;
    }

private:
    std::size_t Write(std::string_view bytes)
    {
        const auto written = send(mPeer.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        Check(written > 0 || errno == EAGAIN, "the socket does not take it");
        return written > 0 ? static_cast<std::size_t>(written) : 0;
    }

    Platform::UniqueFd mPeer;
    Platform::BusPtr mBus;
};

Wire& TheWire()
{
    static Wire wire;
    return wire;
}

// The bundle as the service sees it.
Values ValuesOf(bundle& read)
{
    Values values;
    for (const auto& entry : read.values) {
        const char* key = entry.first.c_str();
        if (bundle_get_type(&read, key) == BUNDLE_TYPE_STR) {
            char* text = nullptr;
            Check(bundle_get_str(&read, key, &text) == BUNDLE_ERROR_NONE, "a text is not there");
            values[key] = text;
        } else {
            int count = 0;
            const char** texts = bundle_get_str_array(&read, key, &count);
            Check(texts || count == 0, "an array is not there");
            values[key] = Strings(texts, texts + count);
        }
    }
    return values;
}

void CheckRefusal(const std::string& reason)
{
    // It goes to the sender, in a reply.
    Check(!reason.empty() && Platform::IsUtf8(reason), "a refusal has no reason");
}

Platform::BundlePtr CheckBundle(sd_bus_message* message, const std::optional<Values>& expected)
{
    std::string reason;
    Platform::BundlePtr read = Platform::ReadBundle(message, &reason);
    Check(bool{read} == expected.has_value(), read ? "an invalid bundle is taken" : "a bundle is refused");
    if (read)
        Check(ValuesOf(*read) == *expected, "a bundle is read as another one");
    else
        CheckRefusal(reason);
    return read;
}

Platform::LaunchData CheckLaunchData(sd_bus_message* message, const std::optional<Values>& expected)
{
    std::string reason;
    Platform::LaunchData read;
    const bool taken = Platform::ReadLaunchData(message, &read, &reason);
    Check(taken == expected.has_value(), taken ? "invalid launch data are taken" : "launch data are refused");
    if (taken)
        Check(Values(read.begin(), read.end()) == *expected, "launch data are read as others");
    else
        CheckRefusal(reason);
    return read;
}

// The code point of a well-formed sequence.
uint32_t CodePoint(std::string_view sequence)
{
    const auto first = static_cast<uint8_t>(sequence.front());
    uint32_t point = sequence.size() == 1 ? first : first & (0x7FU >> sequence.size());
    for (const char next : sequence.substr(1)) point = point << 6 | (static_cast<uint8_t>(next) & 0x3FU);
    return point;
}

}  // namespace

bool IsText(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = Platform::Utf8SequenceLength(text);
        const uint32_t point = length == 0 ? 0 : CodePoint(text.substr(0, length));
        if (point == 0 || (point & 0xFFFE) == 0xFFFE || (point >= 0xFDD0 && point <= 0xFDEF)) return false;
        text.remove_prefix(length);
    }
    return true;
}

bool IsTooMuch(const Values& values)
{
    std::size_t bytes = 0, strings = 0;
    for (const auto& [key, value] : values) {
        const auto* text = std::get_if<std::string>(&value);
        const Strings* texts = std::get_if<Strings>(&value);
        strings += 1 + (text ? 1 : texts->size());
        bytes += key.size() + (text ? text->size() : texts->size());
        for (const std::string& element : texts ? *texts : Strings()) bytes += element.size();
    }
    return bytes > kMostBytes || strings > kMostStrings;
}

void CheckReading(const TestSupport::Body& body, const Reading& expected)
{
    TestSupport::Header header{TestSupport::Header::kSignal, "", "/a", "a.a", "A", "a{sv}"};
    const auto message = TheWire().Deliver(TestSupport::Layout(header, body));
    const auto values = CheckBundle(message.get(), expected.bundle);
    sd_bus_message_rewind(message.get(), true);
    const auto extra = CheckLaunchData(message.get(), expected.launchData);

    if (expected.bundle) {
        const auto again =
            TheWire().Written([&](sd_bus_message* m) { return Platform::AppendBundle(m, *values); });
        CheckBundle(again.get(), expected.bundle);
    }
    if (expected.launchData) {
        const auto again =
            TheWire().Written([&](sd_bus_message* m) { return Platform::AppendLaunchData(m, extra); });
        CheckLaunchData(again.get(), expected.launchData);
    }
}

}  // namespace Fuzz
