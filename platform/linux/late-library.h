// Libraries that are opened when they are first needed: a program that starts and waits pays for none of
// them.

#pragma once

#include <string>
#include <utility>

namespace Platform {

// A library's function, or null with one line in the log. `library` is opened once and stays open.
class LateLibrary {
public:
    explicit LateLibrary(std::string name) : mName(std::move(name)) {}
    void* Find(const char* symbol);

private:
    const std::string mName;
    void* mHandle = nullptr;
    bool mTried = false;
};

// An entry point: its type and name, found at the first call. It lives for the process.
template <typename Function>
class LateFunction {
public:
    LateFunction(LateLibrary& library, const char* symbol)
        : mFunction(reinterpret_cast<Function*>(library.Find(symbol)))
    {
    }
    explicit operator bool() const { return mFunction != nullptr; }
    template <typename... Arguments>
    auto operator()(Arguments... arguments) const
    {
        return mFunction(arguments...);
    }

private:
    Function* mFunction;
};

}  // namespace Platform
