// The bus with nothing around it: bytes that were laid out before are written to the daemon's socket, and
// what comes back is only split into messages. It is the floor of everything that goes over the bus, and the
// side of the conversations that is not measured.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "unique-fd.h"

namespace Bench {

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

// A message to a port as its bytes; values of 4 KiB and more travel as bytes.
std::string PortMessage(const std::string& app, const std::string& port, const std::string& fromApp,
                        const std::string& fromPort,
                        const std::vector<std::pair<std::string, std::string>>& values);

// A signal to everybody, with one text, as its bytes.
std::string SignalMessage(const std::string& path, const std::string& interface, const std::string& member,
                          std::string_view text);

class RawBus {
public:
    // Connects and says hello. Throws std::runtime_error.
    explicit RawBus(const std::string& address);

    void RequestName(const std::string& name);
    void AddMatch(const std::string& rule);

    // A message that was laid out.
    void Send(std::string_view message);

    struct Message {
        char type;                                   // 1: a call, 4: a signal
        std::string_view body;                       // until the next one is read
        std::string_view Text(std::size_t n) const;  // the n-th of the strings that the body begins with
    };
    // The next call or signal; throws when none comes within 20 s.
    Message Next();

private:
    void CallDriver(const char* member, const char* signature, const Body& body);
    std::string_view Unread() const { return {mBuffer.data() + mBegin, mEnd - mBegin}; }
    void Receive();
    std::string_view Await(std::size_t bytes);

    Platform::UniqueFd mSocket;
    std::vector<char> mBuffer;
    std::size_t mBegin = 0, mEnd = 0;  // what of it was received and not read
};

// What a message costs that is only carried: a process that owns `name` and answers each call with `answer`.
// Does not return.
[[noreturn]] void RunEcho(const std::string& address, const std::string& name, const std::string& answer);

}  // namespace Bench
