// A file descriptor with an owner.

#pragma once

#include <unistd.h>

#include <utility>

namespace Platform {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : mFd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(mFd, other.mFd);
        return *this;
    }
    ~UniqueFd() { Reset(); }

    void Reset()
    {
        if (mFd >= 0) close(mFd);
        mFd = -1;
    }
    int Get() const { return mFd; }
    int Release() { return std::exchange(mFd, -1); }
    explicit operator bool() const { return mFd >= 0; }

private:
    int mFd = -1;
};

}  // namespace Platform
