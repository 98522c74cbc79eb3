// Times of files, which are those of a clock that may be put back.

#pragma once

#include <ctime>
#include <utility>

namespace Wfctl {

inline bool IsEarlier(const timespec& one, const timespec& other)
{
    return std::pair(one.tv_sec, one.tv_nsec) < std::pair(other.tv_sec, other.tv_nsec);
}

}  // namespace Wfctl
