#include "stopped-reader.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "load-measures.h"
#include "load-messages.h"

namespace Campaign {

namespace {

constexpr Identity kUser{"com.example.user", "answers"};

}  // namespace

StoppedReader::StoppedReader(const RunningService& service, int megabytes)
    : mService(service),
      mMegabytes(megabytes),
      mHome(service.Connect(kHome)),
      mUser(service.Connect(kUser, false)),
      mManager(service.Connect(kManager))
{
}

bool StoppedReader::Run()
{
    const bool isBounded = Fill();
    // It reads again ...
    while (mManager->HasNext(std::chrono::milliseconds(200))) mManager->Next();
    const double again = MillisecondsUntilAnswered(*mManager);
    // ... or leaves.
    const bool isBoundedAgain = Fill();
    mManager = nullptr;
    mManager = mService.Connect(kManager);
    const double anew = MillisecondsUntilAnswered(*mManager);
    std::printf(
        "stopped reader: 2 x %d MiB unread; others waited %.2f ms at most; at most %ld KiB; "
        "reads again: %.2f ms, left and came anew: %.2f ms\n",
        mMegabytes, mLongest, mMost, again, anew);
    return isBounded && isBoundedAgain;
}

// Each picture is told to the one that does not read.
bool StoppedReader::Fill()
{
    const Sender home{kHome.app, kHome.port, kAnsweredPeer, ""};
    const std::string picture = MessageOf("picture in place", home, "unread", std::size_t{1} << 20);
    const Sender user{kUser.app, kUser.port, kEvaluationUser, ""};
    for (int i = 0; i < mMegabytes; ++i) {
        mHome->ReplyTo(mHome->Call(picture));
        const std::string marker = std::string(kMarkerBegin) + std::to_string(i) + "-";
        const double milliseconds = TestSupport::TimeOf([&] {
                                        mUser->Send(MessageOf("duration loaded", user, marker, 100));
                                        while (MarkerOf(mUser->Next()) != marker) continue;
                                    }) /
                                    1e3;
        mLongest = std::max(mLongest, milliseconds);
        mMost = std::max(mMost, Memory(mService).now);
    }
    return kKeepsFreedMemory || mMost <= kMostGrowth;
}

}  // namespace Campaign
