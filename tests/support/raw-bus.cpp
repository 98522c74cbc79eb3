#include "raw-bus.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "bus-names.h"
#include "bus-sdbus.h"

namespace TestSupport {

namespace {

constexpr std::size_t kFixedHeader = 16, kFlagsAt = 2, kBodyLengthAt = 4, kSerialAt = 8, kFieldsLengthAt = 12;
constexpr char kExpectsNoReply = 1;
constexpr uint32_t kNoSerial = 1;         // of messages that nobody replies to
constexpr std::size_t kBytesFrom = 4096;  // from here on a value travels as bytes, and one that is not ASCII
constexpr std::size_t kBufferBytes = std::size_t{16} << 20;
constexpr timeval kPatience{60, 0};  // also with sanitizers on a busy machine

enum FieldCode : char {
    kPath = 1,
    kInterface = 2,
    kMember = 3,
    kErrorName = 4,
    kReplySerial = 5,
    kDestination = 6,
    kSignature = 8,
};

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

// A field of a header: what it holds as a text, or as a number.
struct Field {
    char code;
    std::string_view text;
    uint32_t number;
};

// The field at a multiple of 8; moves on to the next one.
Field NextField(std::string_view fields, std::size_t* at)
{
    const char code = fields[*at], type = fields[*at + 2];
    const std::size_t value = *at + 4;  // behind the code and a signature of one letter
    if (type == 'u') {
        *at = Aligned(value + 4, 8);
        return {code, {}, WordAt(fields, value)};
    }
    const bool isSignature = type == 'g';
    const std::size_t length =
        isSignature ? static_cast<unsigned char>(fields[value]) : WordAt(fields, value);
    const std::size_t begin = value + (isSignature ? 1 : 4);
    *at = Aligned(begin + length + 1, 8);
    return {code, fields.substr(begin, length), 0};
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

std::string Layout(const Header& header, const Body& body)
{
    Body message;
    const char begin[] = {'l', header.type, kExpectsNoReply, 1};  // little-endian; version 1
    message.Raw({begin, sizeof begin});
    message.Word(static_cast<uint32_t>(body.Layout().size()));
    message.Word(kNoSerial);
    message.Array([&] {
        const auto field = [&](char code, char type, const std::string& value) {
            if (value.empty()) return;
            message.Align(8);
            message.Raw({&code, 1});
            message.Signature({&type, 1});
            type == 'g' ? message.Signature(value) : message.Text(value);
        };
        field(kPath, 'o', header.path);
        field(kInterface, 's', header.interface);
        field(kMember, 's', header.member);
        field(kDestination, 's', header.destination);
        field(kSignature, 'g', header.signature);
    });
    message.Align(8);
    return message.Layout() + body.Layout();
}

std::string PortMessage(const std::string& app, const std::string& port, const std::string& fromApp,
                        const std::string& fromPort, const Values& values, bool trusted)
{
    Body body;
    for (const std::string& text : {port, fromApp, fromPort}) body.Text(text);
    body.Array([&] {
        for (const auto& [key, value] : values) {
            body.Align(8);
            body.Text(key);
            const bool isText = value.size() < kBytesFrom && std::all_of(value.begin(), value.end(), isascii);
            body.Signature(isText ? "s" : "ay");
            isText ? body.Text(value) : body.Bytes(value);
        }
    });
    return Layout({Header::kCall, app, Platform::kPortPath, Platform::kPortInterface,
                   trusted ? "SendTrusted" : "Send", "sssa{sv}"},
                  body);
}

std::string DriverCall(const std::string& member, const std::string& signature, const Body& body)
{
    return Layout(
        {Header::kCall, Platform::kDriver, Platform::kDriverPath, Platform::kDriver, member, signature},
        body);
}

std::string NameRequest(const std::string& name)
{
    Body body;
    body.Text(name);
    body.Word(4);  // nobody waits for a name
    return DriverCall("RequestName", "su", body);
}

std::string NameRelease(const std::string& name)
{
    Body body;
    body.Text(name);
    return DriverCall("ReleaseName", "s", body);
}

RawBus::RawBus(const std::string& address) : mSocket(ConnectedSocket(address)), mBuffer(kBufferBytes)
{
    using namespace std::string_literals;
    Send("\0AUTH EXTERNAL "s + HexUser() + "\r\n");
    while (Unread().find('\n') == std::string::npos) Receive();
    if (!Unread().starts_with("OK ")) throw std::runtime_error("the bus refuses us");
    mBegin = mEnd;
    Send("BEGIN\r\n");
    ReplyTo(Call(DriverCall("Hello", "", {})));
}

void RawBus::RequestName(const std::string& name)
{
    Send(NameRequest(name));
}

void RawBus::AddMatch(const std::string& rule)
{
    Body body;
    body.Text(rule);
    Send(DriverCall("AddMatch", "s", body));
}

void RawBus::Send(std::string_view message)
{
    while (!message.empty()) {
        const ssize_t sent = send(mSocket.Get(), message.data(), message.size(), MSG_NOSIGNAL);
        if (sent < 0) throw std::runtime_error("the bus is gone");
        message.remove_prefix(static_cast<std::size_t>(sent));
    }
}

uint32_t RawBus::Call(std::string message)
{
    ++mLastSerial;
    message[kFlagsAt] = 0;
    std::memcpy(message.data() + kSerialAt, &mLastSerial, sizeof mLastSerial);
    Send(message);
    return mLastSerial;
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
        const std::size_t fieldsLength = WordAt(Await(kFixedHeader), kFieldsLengthAt);
        const std::size_t header = Aligned(kFixedHeader + fieldsLength, 8);
        const std::size_t size = header + WordAt(Unread(), kBodyLengthAt);
        const std::string_view bytes = Await(size).substr(0, size);
        mBegin += size;
        Message message{static_cast<Header::Type>(bytes[1]), 0, {}, bytes.substr(header)};
        const std::string_view fields = bytes.substr(kFixedHeader, fieldsLength);
        for (std::size_t at = 0; at < fields.size();) {
            const Field field = NextField(fields, &at);
            if (field.code == kReplySerial) message.replyTo = field.number;
            if (field.code == kErrorName) message.error = field.text;
        }
        if (message.replyTo != kNoSerial) return message;  // the driver may answer all the same
    }
}

bool RawBus::HasNext(std::chrono::milliseconds patience) const
{
    pollfd socket{mSocket.Get(), POLLIN, 0};
    return !Unread().empty() || poll(&socket, 1, static_cast<int>(patience.count())) > 0;
}

RawBus::Message RawBus::ReplyTo(uint32_t call)
{
    for (;;) {
        const Message message = Next();
        if (message.replyTo == call) return message;
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

std::string_view RawBus::Message::Value(std::string_view key) const
{
    std::size_t at = 0;
    for (int i = 0; i < 3; ++i) at = Aligned(at + sizeof(uint32_t) + WordAt(body, at) + 1, 4);  // the ports
    at = Aligned(at + sizeof(uint32_t), 8);
    while (at < body.size()) {
        const std::string_view found = body.substr(at + 4, WordAt(body, at));
        at += 4 + found.size() + 1;
        const std::string_view signature = body.substr(at + 1, static_cast<unsigned char>(body[at]));
        if (signature != "s" && signature != "ay")
            return {};  // nothing behind an array of texts is looked for
        at = Aligned(at + signature.size() + 2, 4);
        const std::string_view value = body.substr(at + 4, WordAt(body, at));
        if (found == key) return value;
        at = Aligned(at + 4 + value.size() + (signature == "s" ? 1 : 0), 8);
    }
    return {};
}

void RunEcho(const std::string& address, const std::string& name, const std::string& answer)
{
    try {
        RawBus bus(address);
        bus.RequestName(name);
        for (;;) {
            if (bus.Next().type == Header::kCall) bus.Send(answer);
        }
    } catch (const std::exception&) {
        _exit(EXIT_SUCCESS);  // the bus went, and the bench with it
    }
}

}  // namespace TestSupport
