// What a C interface does when memory runs out: nothing is thrown across it.

#pragma once

#include <new>

namespace Platform {

// The code that `body` gives, or `kOutOfMemory` when it throws for want of memory.
template <int kOutOfMemory, typename Body>
int Guarded(Body&& body)
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

}  // namespace Platform
