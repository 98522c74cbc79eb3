// What only the real store has: durability across processes, damage, modes.

#include "value-store-sqlite.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "private-bus.h"

namespace {
int gFailingReads = 0;  // of files, at a place of theirs, from now on

ssize_t ReadAt(int fd, void* buffer, size_t size, off_t at)
{
    if (gFailingReads > 0) {
        --gFailingReads;
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, fd, buffer, size, at);
}
}  // namespace

// In place of the system's, for the libraries too.
extern "C" __attribute__((visibility("default"))) ssize_t pread(int fd, void* buffer, size_t size, off_t at)
{
    return ReadAt(fd, buffer, size, at);
}
extern "C" __attribute__((visibility("default"))) ssize_t pread64(int fd, void* buffer, size_t size, off_t at)
{
    return ReadAt(fd, buffer, size, at);
}

namespace {

using Platform::StoredValue;
using Platform::ValueStore;
using testing::Optional;
using testing::SizeIs;

class AValueStore : public testing::Test {
protected:
    std::string Path() const { return folder.Path() + "/values.db"; }
    void Damage() { std::ofstream(Path(), std::ios::trunc) << std::string(8192, 'x'); }

    // The files that were set aside.
    int SetAside() const
    {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
            const std::string name = entry.path();
            count += name.find(".damaged-") != std::string::npos && !name.ends_with("-wal") &&
                     !name.ends_with("-shm");
        }
        return count;
    }

    TestSupport::TemporaryFolder folder;
};

TEST_F(AValueStore, keeps_values_and_their_types_for_the_next_process)
{
    ValueStore(Path(), 0600).Set("text", std::string("a\0b", 3));
    ValueStore(Path(), 0600).Set("number", int64_t{1} << 40);
    ValueStore(Path(), 0600).Set("flag", true);
    ValueStore store(Path(), 0600);
    EXPECT_THAT(store.Get("text"), Optional(StoredValue(std::string("a\0b", 3))));
    EXPECT_THAT(store.Get("number"), Optional(StoredValue(int64_t{1} << 40)));
    EXPECT_THAT(store.Get("flag"), Optional(StoredValue(true)));
    EXPECT_THAT(store.List(), SizeIs(3));
}

TEST_F(AValueStore, gives_no_integer_that_an_int_cannot_hold)
{
    ValueStore store(Path(), 0600);
    store.Set("number", int64_t{1} << 40);
    EXPECT_EQ(Platform::GetAsInt(store, "number"), std::nullopt);
    store.Set("number", int64_t{-5});
    EXPECT_THAT(Platform::GetAsInt(store, "number"), Optional(-5));
}

TEST_F(AValueStore, tells_when_there_is_nothing_to_unset)
{
    ValueStore store(Path(), 0600);
    store.Set("key", true);
    EXPECT_EQ(store.Unset("key"), 0);
    EXPECT_NE(store.Unset("key"), 0);
    EXPECT_EQ(store.Get("key"), std::nullopt);
}

TEST_F(AValueStore, makes_its_file_for_its_owner_alone)
{
    ValueStore store(Path(), 0600);
    store.Set("key", true);
    struct stat info {};
    ASSERT_EQ(stat(Path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(AValueStore, is_for_its_group_where_the_folder_is)
{
    chmod(folder.Path().c_str(), 0770);
    const mode_t before = umask(0077);
    ValueStore store(Path(), 0660);
    store.Set("key", true);
    umask(before);
    for (const char* suffix : {"", "-wal", "-shm", ".lock"}) {
        struct stat info {};
        ASSERT_EQ(stat((Path() + suffix).c_str(), &info), 0) << suffix;
        EXPECT_EQ(info.st_mode & 0777, 0660u) << suffix;
    }
}

TEST_F(AValueStore, sets_a_damaged_file_aside_and_begins_anew)
{
    Damage();
    ValueStore store(Path(), 0600);
    EXPECT_EQ(store.Get("key"), std::nullopt);
    EXPECT_EQ(store.Set("key", true), 0);
    EXPECT_THAT(store.Get("key"), Optional(StoredValue(true)));
    EXPECT_EQ(SetAside(), 1);
}

// SQLite calls it damaged, too.
TEST_F(AValueStore, keeps_a_file_that_the_disk_does_not_give_and_reads_it_when_it_does)
{
    ValueStore store(Path(), 0600), another(Path(), 0600);
    for (const int failing : {1, 2, 3, 1'000'000}) {
        store.Set("key", int64_t{failing});
        another.Set("key", int64_t{failing} + 1);  // so that there is something to read
        gFailingReads = failing;
        store.Get("key");
        gFailingReads = 0;
        EXPECT_THAT(store.Get("key"), Optional(StoredValue(int64_t{failing} + 1)));
        EXPECT_EQ(SetAside(), 0) << failing;
    }
}

// Programs that start together: each writes a key of its own. How many could not.
int WriteFromProcesses(const std::string& path, int count)
{
    int go[2];
    if (pipe2(go, O_CLOEXEC) != 0) return count;
    std::vector<pid_t> programs;
    for (int i = 0; i < count; ++i) {
        const pid_t program = fork();
        if (program == 0) {
            close(go[1]);
            char byte = 0;
            const bool started = read(go[0], &byte, 1) == 0;  // the end, which all see at once
            ValueStore store(path, 0600);
            _exit(started && store.Set("key" + std::to_string(i), true) == 0 ? 0 : 1);
        }
        programs.push_back(program);
    }
    close(go[0]);
    close(go[1]);
    int failed = 0;
    for (const pid_t program : programs) {
        int status = -1;
        waitpid(program, &status, 0);
        failed += status != 0;
    }
    return failed;
}

TEST_F(AValueStore, is_begun_by_several_processes_at_once)
{
    constexpr int kProcesses = 6;
    for (int round = 0; round < 20; ++round) {
        const std::string path = Path() + std::to_string(round);
        EXPECT_EQ(WriteFromProcesses(path, kProcesses), 0);
        EXPECT_THAT(ValueStore(path, 0600).List(), SizeIs(kProcesses));
    }
}

TEST_F(AValueStore, that_several_processes_find_damaged_is_set_aside_once)
{
    constexpr int kProcesses = 6;
    for (int round = 1; round <= 20; ++round) {
        Damage();
        EXPECT_EQ(WriteFromProcesses(Path(), kProcesses), 0);
        EXPECT_THAT(ValueStore(Path(), 0600).List(), SizeIs(kProcesses));
        EXPECT_EQ(SetAside(), round);
    }
}

TEST_F(AValueStore, follows_a_file_that_another_process_began_anew)
{
    ValueStore store(Path(), 0600);
    store.Set("key", std::string("old"));
    std::filesystem::rename(Path(), Path() + ".away");
    for (const char* suffix : {"-wal", "-shm"}) std::filesystem::remove(Path() + suffix);
    ValueStore(Path(), 0600).Set("key", std::string("new"));
    EXPECT_THAT(store.Get("key"), Optional(StoredValue(std::string("new"))));
}

TEST_F(AValueStore, takes_keys_that_are_no_utf8)
{
    ValueStore store(Path(), 0600);
    store.Set("\xff", true);
    EXPECT_THAT(store.Get("\xff"), Optional(StoredValue(true)));
}

TEST_F(AValueStore, says_no_where_it_cannot_write)
{
    ValueStore store("/proc/values.db", 0600);
    EXPECT_NE(store.Set("key", true), 0);
    EXPECT_EQ(store.Get("key"), std::nullopt);
}

}  // namespace
