// What a program cannot do any more once it has started. Each probe runs in a process of its own kind: the
// confinement is for good.

#include "confinement-landlock.h"

#include <gmock/gmock.h>
#include <linux/landlock.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "areas.h"
#include "log-capture.h"
#include "private-bus.h"
#include "probes.h"
#include "unique-fd.h"

namespace {

using PlatformTest::Probe;
using PlatformTest::ProbePlaces;
using testing::ElementsAreArray;

int KernelLevel()
{
    return static_cast<int>(
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION));
}

std::vector<std::string> NotRefusedAt(int level)
{
    std::vector<std::string> names;
    for (const Probe& probe : PlatformTest::Probes()) {
        if (probe.from == 0 || probe.from > level) names.emplace_back(probe.name);
    }
    return names;
}

std::vector<std::string> Lines(FILE* stream)
{
    std::vector<std::string> lines;
    std::array<char, 256> line{};
    while (std::fgets(line.data(), line.size(), stream)) {
        lines.emplace_back(line.data());
        lines.back().pop_back();
    }
    return lines;
}

class AConfinedProcess : public testing::Test {
protected:
    AConfinedProcess()
    {
        MakePlaces();
        Listen();
        // One that is there to be signalled, and goes with this process.
        outsider = fork();
        if (outsider == 0) {
            pause();
            _exit(0);
        }
    }
    ~AConfinedProcess() override
    {
        kill(outsider, SIGKILL);
        waitpid(outsider, nullptr, 0);
    }

    void MakePlaces()
    {
        std::filesystem::remove_all(Own());
        std::filesystem::remove_all(Foreign());
        std::filesystem::create_directories(Own());
        std::filesystem::create_directories(Foreign() + "/empty");
        std::ofstream(Own() + "/mine") << "mine";
        std::ofstream(Foreign() + "/theirs") << "theirs";
    }
    std::string Own() const { return folder.Path() + "/apps/com.corvane.watchface/shared/data"; }
    std::string Foreign() const { return folder.Path() + "/apps/com.corvane.watchface-editor"; }
    std::string Socket() const { return folder.Path(); }
    ProbePlaces Places() const { return {Own(), Foreign(), outsider, Socket()}; }

    void Listen()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        Socket().copy(address.sun_path + 1, sizeof address.sun_path - 2);
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + Socket().size());
        ASSERT_EQ(bind(listener.Get(), reinterpret_cast<sockaddr*>(&address), length), 0);
        ASSERT_EQ(listen(listener.Get(), 64), 0);
    }

    // What `act` prints in a process of its own.
    template <typename Act>
    std::vector<std::string> InAProcess(Act act)
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe(ends.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            act();
            std::fflush(stdout);
            _exit(0);
        }
        close(ends[1]);
        FILE* const stream = fdopen(ends[0], "r");
        std::vector<std::string> lines = Lines(stream);
        std::fclose(stream);
        waitpid(child, nullptr, 0);
        return lines;
    }

    std::vector<std::string> SucceedingUnder(const Platform::Confinement& confinement, int level)
    {
        return InAProcess([&] {
            if (!Platform::Confine(confinement, level)) std::puts("not confined");
            for (const std::string& name : PlatformTest::Succeeding(Places())) std::puts(name.c_str());
        });
    }

    // Of a program that starts as all of ours do.
    std::vector<std::string> OutputOf(const std::vector<std::string>& arguments)
    {
        const TestSupport::PrivateBus bus;
        return InAProcess([&] {
            setenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str(), 1);
            setenv("WATCH_ROOT", folder.Path().c_str(), 1);
            std::vector<char*> words{const_cast<char*>(CONFINEMENT_PROBE)};
            for (const std::string& argument : arguments)
                words.push_back(const_cast<char*>(argument.c_str()));
            words.push_back(nullptr);
            execv(CONFINEMENT_PROBE, words.data());
        });
    }

    TestSupport::TemporaryFolder folder;
    pid_t outsider = -1;
    Platform::UniqueFd listener{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

TEST_F(AConfinedProcess, cannot_do_what_each_level_of_the_kernels_guard_refuses)
{
    const int known = KernelLevel();
    if (known < 1) GTEST_SKIP() << "this kernel has no Landlock";
    for (int level = 1; level <= std::min(known, Platform::kNewestLandlock); ++level) {
        MakePlaces();
        EXPECT_THAT(SucceedingUnder({{Own()}, {}, false}, level), ElementsAreArray(NotRefusedAt(level)))
            << "level " << level;
    }
}

TEST_F(AConfinedProcess, is_as_free_as_before_where_the_kernel_has_no_guard)
{
    const auto free = SucceedingUnder({{Own()}, {}, false}, 0);
    // Some spoil what later ones need, so not all of them succeed.
    EXPECT_THAT(free, testing::IsSupersetOf({"write a foreign file", "start a program"}));
}

TEST_F(AConfinedProcess, reads_only_what_is_listed_where_something_is)
{
    if (KernelLevel() < 1) GTEST_SKIP() << "this kernel has no Landlock";
    EXPECT_THAT(SucceedingUnder({{Own()}, {{"/usr"}}, false}, 1),
                testing::Not(testing::Contains("read a foreign file")));
    EXPECT_THAT(SucceedingUnder({{Own()}, {{"/usr", Foreign()}}, false}, 1),
                testing::Contains("read a foreign file"));
    EXPECT_THAT(SucceedingUnder({{Own()}, {{"/usr", Foreign() + "/theirs"}}, false}, 1),
                testing::Contains("read a foreign file"));
}

TEST_F(AConfinedProcess, writes_its_own_areas_and_no_other_applications)
{
    Platform::SetAreas({folder.Path(), folder.Path() + "/faces"});
    const std::string apps = folder.Path() + "/apps/", common = folder.Path() + "/common/";
    const std::string data = apps + "com.corvane.watchface/shared/data/";
    EXPECT_THAT(Platform::ConfinementOf("com.corvane.watchface-service").writable,
                testing::UnorderedElementsAre(common, apps + "com.corvane.watchface-service/", data,
                                              apps + "com.corvane.watchface/shared/trusted/"));
    EXPECT_THAT(Platform::ConfinementOf("com.corvane.watchface-capture").writable,
                testing::UnorderedElementsAre(common, apps + "com.corvane.watchface-capture/", data));
    EXPECT_TRUE(std::filesystem::is_directory(data));
}

TEST_F(AConfinedProcess, reads_what_the_user_may_unless_the_unit_lists_something)
{
    Platform::SetAreas({folder.Path(), folder.Path() + "/faces"});
    EXPECT_FALSE(Platform::ConfinementOf("com.corvane.watchface-service").readable);
    setenv("WATCH_READABLE", "/media:/home/user/Pictures", 1);
    const auto confinement = Platform::ConfinementOf("com.corvane.watchface-service");
    unsetenv("WATCH_READABLE");
    ASSERT_TRUE(confinement.readable);
    EXPECT_THAT(*confinement.readable,
                testing::IsSupersetOf({std::string("/media"), std::string("/home/user/Pictures"),
                                       folder.Path(), folder.Path() + "/faces"}));
}

TEST_F(AConfinedProcess, may_reach_an_abstract_socket_when_its_bus_is_one)
{
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:abstract=/tmp/a-bus", 1);
    EXPECT_TRUE(Platform::ConfinementOf("com.corvane.watchface-service").needsAbstractSockets);
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/tmp/a-bus", 1);
    EXPECT_FALSE(Platform::ConfinementOf("com.corvane.watchface-service").needsAbstractSockets);
    setenv("NOTIFY_SOCKET", "@/run/notify", 1);
    EXPECT_TRUE(Platform::ConfinementOf("com.corvane.watchface-service").needsAbstractSockets);
    unsetenv("NOTIFY_SOCKET");
}

TEST_F(AConfinedProcess, is_every_application_of_ours_from_its_start)
{
    const int level = std::min(KernelLevel(), Platform::kNewestLandlock);
    if (level < 1) GTEST_SKIP() << "this kernel has no Landlock";
    EXPECT_THAT(OutputOf({Own(), Foreign(), std::to_string(outsider), Socket()}),
                ElementsAreArray(NotRefusedAt(level)));
}

TEST_F(AConfinedProcess, gets_no_more_memory_than_it_needs)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers reserve more than any limit";
#endif
    EXPECT_THAT(OutputOf({"memory"}), testing::ElementsAre("refused"));
}

}  // namespace
