#include <atomic>
#include <chrono>
#include <thread>

#include "contract-test.h"
#include "files.h"

namespace Contract {
namespace {

using Lock = CommonUtilFileLock;

class AFileLock : public ContractTest {
protected:
    // Seconds that it took.
    template <typename Body>
    static double Took(Body&& body)
    {
        const auto start = std::chrono::steady_clock::now();
        body();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    // Locks `path` with `mode` on another thread; tells whether `released` was set by then.
    static bool SeesRelease(std::unique_ptr<Lock>& held, const std::string& path, int mode)
    {
        std::atomic<bool> starts = false;
        std::atomic<bool> released = false;
        bool seen = false;
        std::thread other([&] {
            starts = true;
            starts.notify_all();
            const Lock lock(path, mode);
            seen = released;
        });
        starts.wait(false);
        released = true;
        held.reset();
        other.join();
        return seen;
    }

    std::string path = InArea("watchface.xml");
};

TEST_F(AFileLock, needs_no_file_and_makes_none)
{
    {
        const Lock lock(path, Lock::kReadWrite);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
    EXPECT_TRUE(std::filesystem::is_empty(InArea()));
}

TEST_F(AFileLock, is_waited_for_by_a_writer)
{
    auto held = std::make_unique<Lock>(path, Lock::kReadWrite);
    EXPECT_TRUE(SeesRelease(held, path, Lock::kWrite));
}

TEST_F(AFileLock, is_waited_for_by_a_reader)
{
    auto held = std::make_unique<Lock>(path, Lock::kWrite);
    EXPECT_TRUE(SeesRelease(held, path, Lock::kRead));
}

TEST_F(AFileLock, of_a_reader_is_waited_for_by_a_writer)
{
    auto held = std::make_unique<Lock>(path, Lock::kRead);
    EXPECT_TRUE(SeesRelease(held, path, Lock::kReadWrite));
}

TEST_F(AFileLock, holds_although_the_file_is_replaced)
{
    WriteFile(path, "old");
    auto held = std::make_unique<Lock>(path, Lock::kReadWrite);
    std::filesystem::remove(path);
    WriteFile(path, "new");
    EXPECT_TRUE(SeesRelease(held, path, Lock::kReadWrite));
}

TEST_F(AFileLock, is_shared_by_readers)
{
    const Lock one(path, Lock::kRead);
    EXPECT_LT(Took([&] { const Lock other(path, Lock::kRead); }), 1);
}

TEST_F(AFileLock, is_free_again_once_it_is_released)
{
    {
        const Lock lock(path, Lock::kReadWrite);
    }
    EXPECT_LT(Took([&] { const Lock lock(path, Lock::kReadWrite); }), 1);
}

TEST_F(AFileLock, of_one_path_leaves_others_free)
{
    const Lock one(path, Lock::kReadWrite);
    EXPECT_LT(Took([&] { const Lock other(path + "2", Lock::kReadWrite); }), 1);
}

TEST_F(AFileLock, that_is_never_given_up_is_waited_for_so_long_and_no_longer)
{
    const Lock one(path, Lock::kReadWrite);
    const double waited = Took([&] { const Lock other(path, Lock::kReadWrite); });
    EXPECT_GT(waited, 0.1);
    EXPECT_LT(waited, 10);
}

}  // namespace
}  // namespace Contract
