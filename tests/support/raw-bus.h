// The bus with nothing around it: bytes that were laid out before are written to the daemon's socket, and
// what comes back is only split into messages. It is the floor of everything that goes over the bus, the side
// of a conversation that is not measured, and a peer that keeps to no rule.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "unique-fd.h"

namespace TestSupport {

// The arguments of a message, in the bus's own layout for little-endian machines.
class Body {
public:
    void Word(uint32_t value);
    void Text(std::string_view text);            // s
    void Signature(std::string_view signature);  // g
    void Bytes(std::string_view bytes);          // ay
    void Raw(std::string_view bytes);
    void Align(std::size_t to);
    // An array whose elements are aligned to 8 bytes; `fill` appends them.
    void Array(const std::function<void()>& fill);

    const std::string& Layout() const { return mBytes; }

private:
    std::string mBytes;
};

// What a message says beside its arguments. Empty texts are left out.
struct Header {
    enum Type : char { kCall = 1, kReply = 2, kError = 3, kSignal = 4 };
    Type type = kCall;
    std::string destination, path, interface, member, signature;
};

// Messages that expect no reply, as their bytes.
std::string Layout(const Header& header, const Body& body);
std::string DriverCall(const std::string& member, const std::string& signature, const Body& body);
std::string NameRequest(const std::string& name);
std::string NameRelease(const std::string& name);

using Values = std::vector<std::pair<std::string, std::string>>;

// Likewise, to a port; values of 4 KiB and more, and those that are not ASCII, travel as bytes.
std::string PortMessage(const std::string& app, const std::string& port, const std::string& fromApp,
                        const std::string& fromPort, const Values& values, bool trusted = true);

class RawBus {
public:
    // Connects and says hello. Throws std::runtime_error.
    explicit RawBus(const std::string& address);

    // Nobody says how these ended; what is sent after them comes after them.
    void RequestName(const std::string& name);
    void AddMatch(const std::string& rule);

    // A message that was laid out.
    void Send(std::string_view message);
    // Likewise, but now it expects a reply, which will refer to the number returned.
    uint32_t Call(std::string message);

    // What was received; its views last until the next one is.
    struct Message {
        Header::Type type;
        uint32_t replyTo;        // 0: to nothing
        std::string_view error;  // its name
        std::string_view body;

        // The n-th of the strings that the body begins with; of a port's message the port, the sender, its
        // port.
        std::string_view Text(std::size_t n) const;
        // The text or bytes that a port's message has under a key; empty when there is none.
        std::string_view Value(std::string_view key) const;
    };
    // The next one; throws when none comes within 20 s.
    Message Next();
    // Whether there is something to read, or the end of the connection, within that time.
    bool HasNext(std::chrono::milliseconds patience) const;
    // The reply to a call; what comes before is passed over.
    Message ReplyTo(uint32_t call);

private:
    std::string_view Unread() const { return {mBuffer.data() + mBegin, mEnd - mBegin}; }
    void Receive();
    std::string_view Await(std::size_t bytes);

    Platform::UniqueFd mSocket;
    std::vector<char> mBuffer;
    std::size_t mBegin = 0, mEnd = 0;  // what of it was received and not read
    uint32_t mLastSerial = 1;          // of a call; 1 is that of what expects no reply
};

// What a message costs that is only carried: a process that owns `name` and answers each call with `answer`.
// Does not return.
[[noreturn]] void RunEcho(const std::string& address, const std::string& name, const std::string& answer);

}  // namespace TestSupport
