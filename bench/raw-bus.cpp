#include "raw-bus.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "bus-names.h"
#include "bus-sdbus.h"

namespace Bench {

namespace {

constexpr char kMethodCall = 1, kSignal = 4;  // types of messages
constexpr std::size_t kFixedHeader = 16;
constexpr std::size_t kBytesFrom = 4096;  // from here on a value travels as bytes
constexpr std::size_t kBufferBytes = std::size_t{4} << 20;
constexpr timeval kPatience{20, 0};

std::size_t Aligned(std::size_t size, std::size_t to)
{
    return (size + to - 1) / to * to;
}

uint32_t WordAt(std::string_view bytes, std::size_t at)
{
    uint32_t value = 0;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

struct Header {
    char type;
    std::string destination, path, interface, member, signature;
};

// A message that expects no reply.
std::string Layout(const Header& header, const Body& body)
{
    Body message;
    const char begin[] = {'l', header.type, 1, 1};  // little-endian; no reply expected; version 1
    message.Raw({begin, sizeof begin});
    message.Word(static_cast<uint32_t>(body.Layout().size()));
    message.Word(1);  // a serial, which nobody refers to
    message.Array([&] {
        const auto field = [&](char code, char type, const std::string& value) {
            if (value.empty()) return;
            message.Align(8);
            message.Raw({&code, 1});
            message.Signature({&type, 1});
            type == 'g' ? message.Signature(value) : message.Text(value);
        };
        field(1, 'o', header.path);
        field(2, 's', header.interface);
        field(3, 's', header.member);
        field(6, 's', header.destination);
        field(8, 'g', header.signature);
    });
    message.Align(8);
    return message.Layout() + body.Layout();
}

Platform::UniqueFd ConnectedSocket(const std::string& address)
{
    constexpr std::string_view kScheme = "unix:path=";
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    const std::string path = address.substr(kScheme.size(), address.find(',') - kScheme.size());
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    Platform::UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (connect(socket.Get(), reinterpret_cast<sockaddr*>(&name), sizeof name) != 0)
        throw std::runtime_error("no bus at " + address);
    setsockopt(socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
    return socket;
}

// The uid in decimal digits, in hexadecimal, as the bus wants it.
std::string HexUser()
{
    std::string hex;
    for (const char digit : std::to_string(getuid())) hex += {'3', digit};
    return hex;
}

}  // namespace

void Body::Raw(std::string_view bytes)
{
    mBytes.append(bytes);
}

void Body::Align(std::size_t to)
{
    mBytes.resize(Aligned(mBytes.size(), to));
}

void Body::Word(uint32_t value)
{
    Align(4);
    mBytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void Body::Text(std::string_view text)
{
    Word(static_cast<uint32_t>(text.size()));
    mBytes.append(text).push_back('\0');
}

void Body::Signature(std::string_view signature)
{
    mBytes.push_back(static_cast<char>(signature.size()));
    mBytes.append(signature).push_back('\0');
}

void Body::Bytes(std::string_view bytes)
{
    Word(static_cast<uint32_t>(bytes.size()));
    mBytes.append(bytes);
}

void Body::Array(const std::function<void()>& fill)
{
    Word(0);
    const std::size_t lengthAt = mBytes.size() - sizeof(uint32_t);
    Align(8);
    const std::size_t begin = mBytes.size();
    fill();
    const auto length = static_cast<uint32_t>(mBytes.size() - begin);
    std::memcpy(mBytes.data() + lengthAt, &length, sizeof length);
}

std::string PortMessage(const std::string& app, const std::string& port, const std::string& fromApp,
                        const std::string& fromPort,
                        const std::vector<std::pair<std::string, std::string>>& values)
{
    Body body;
    for (const std::string& text : {port, fromApp, fromPort}) body.Text(text);
    body.Array([&] {
        for (const auto& [key, value] : values) {
            body.Align(8);
            body.Text(key);
            const bool isLong = value.size() >= kBytesFrom;
            body.Signature(isLong ? "ay" : "s");
            isLong ? body.Bytes(value) : body.Text(value);
        }
    });
    return Layout(
        {kMethodCall, app, Platform::kPortPath, Platform::kPortInterface, "SendTrusted", "sssa{sv}"}, body);
}

std::string SignalMessage(const std::string& path, const std::string& interface, const std::string& member,
                          std::string_view text)
{
    Body body;
    body.Text(text);
    return Layout({kSignal, "", path, interface, member, "s"}, body);
}

RawBus::RawBus(const std::string& address) : mSocket(ConnectedSocket(address)), mBuffer(kBufferBytes)
{
    using namespace std::string_literals;
    Send("\0AUTH EXTERNAL "s + HexUser() + "\r\n");
    while (Unread().find('\n') == std::string::npos) Receive();
    if (!Unread().starts_with("OK ")) throw std::runtime_error("the bus refuses us");
    mBegin = mEnd;
    Send("BEGIN\r\n");
    CallDriver("Hello", "", {});
}

void RawBus::CallDriver(const char* member, const char* signature, const Body& body)
{
    Send(Layout({kMethodCall, Platform::kDriver, Platform::kDriverPath, Platform::kDriver, member, signature},
                body));
}

void RawBus::RequestName(const std::string& name)
{
    Body body;
    body.Text(name);
    body.Word(0);
    CallDriver("RequestName", "su", body);
}

void RawBus::AddMatch(const std::string& rule)
{
    Body body;
    body.Text(rule);
    CallDriver("AddMatch", "s", body);
}

void RawBus::Send(std::string_view message)
{
    while (!message.empty()) {
        const ssize_t sent = send(mSocket.Get(), message.data(), message.size(), MSG_NOSIGNAL);
        if (sent < 0) throw std::runtime_error("the bus is gone");
        message.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void RawBus::Receive()
{
    if (mBegin == mEnd) mBegin = mEnd = 0;
    if (mEnd == mBuffer.size()) {
        std::memmove(mBuffer.data(), mBuffer.data() + mBegin, mEnd - mBegin);
        mEnd -= std::exchange(mBegin, 0);
    }
    const ssize_t got = recv(mSocket.Get(), mBuffer.data() + mEnd, mBuffer.size() - mEnd, 0);
    if (got < 0 && errno == EAGAIN) throw std::runtime_error("a program does not answer");
    if (got <= 0) throw std::runtime_error("the bus is gone");
    mEnd += static_cast<std::size_t>(got);
}

std::string_view RawBus::Await(std::size_t bytes)
{
    if (bytes > mBuffer.size()) throw std::runtime_error("a message is too long");
    while (Unread().size() < bytes) Receive();
    return Unread();
}

RawBus::Message RawBus::Next()
{
    for (;;) {
        const std::size_t header = Aligned(kFixedHeader + WordAt(Await(kFixedHeader), 12), 8);
        const std::size_t body = WordAt(Unread(), 4);
        const std::string_view bytes = Await(header + body).substr(0, header + body);
        mBegin += bytes.size();
        if (bytes[1] == kMethodCall || bytes[1] == kSignal) return {bytes[1], bytes.substr(header)};
    }
}

std::string_view RawBus::Message::Text(std::size_t n) const
{
    std::size_t at = 0;
    for (;; --n) {
        if (at + sizeof(uint32_t) > body.size()) return {};
        const std::size_t length = WordAt(body, at);
        if (n == 0) return body.substr(at + sizeof(uint32_t), length);
        at = Aligned(at + sizeof(uint32_t) + length + 1, 4);
    }
}

void RunEcho(const std::string& address, const std::string& name, const std::string& answer)
{
    try {
        RawBus bus(address);
        bus.RequestName(name);
        for (;;) {
            if (bus.Next().type == kMethodCall) bus.Send(answer);
        }
    } catch (const std::exception&) {
        _exit(EXIT_SUCCESS);  // the bus went, and the bench with it
    }
}

}  // namespace Bench
