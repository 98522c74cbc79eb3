// A peer that no longer reads what it is sent: others are answered, and the memory has a bound.

#pragma once

#include <memory>

#include "a-running-service.h"

namespace Campaign {

class StoppedReader {
public:
    // It leaves so many MiB unread each time.
    StoppedReader(const RunningService& service, int megabytes);

    // It stops, reads again, stops again, leaves and comes anew. Whether the memory stays in its bounds.
    bool Run();

private:
    bool Fill();

    const RunningService& mService;
    const int mMegabytes;
    std::unique_ptr<RawBus> mHome, mUser, mManager;
    double mLongest = 0;
    long mMost = 0;
};

}  // namespace Campaign
