#include <signal.h>
#include <sqlite3.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>

#include "groups.h"
#include "platform-keys-sdbus.h"

namespace Bench {

namespace {

constexpr int kWrites = 500;
constexpr char kKey[] = "db/bench/key";
constexpr char kRawPath[] = "/com/example/bench", kRawInterface[] = "com.example.Bench1";

Platform::BusPtr OpenBus(const std::string& address)
{
    sd_bus* raw = nullptr;
    sd_bus_new(&raw);
    Platform::BusPtr bus(raw);
    sd_bus_set_address(raw, address.c_str());
    sd_bus_set_bus_client(raw, true);
    if (sd_bus_start(raw) < 0) throw std::runtime_error("no bus");
    return bus;
}

// Another process, which says "seen" for each change that it is told of; first it says that it watches.
class Watcher {
public:
    template <typename Run>
    explicit Watcher(const Run& run)
    {
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error("no pipe");
        mPid = fork();
        if (mPid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            run([end = ends[1]] {
                if (write(end, "", 1) != 1) _exit(EXIT_FAILURE);
            });
            _exit(EXIT_SUCCESS);
        }
        close(ends[1]);
        mSeen = Platform::UniqueFd(ends[0]);
        AwaitSeen();
    }
    ~Watcher()
    {
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    void AwaitSeen() const
    {
        char byte = 0;
        if (read(mSeen.Get(), &byte, 1) != 1) throw std::runtime_error("the watcher is gone");
    }

private:
    pid_t mPid = -1;
    Platform::UniqueFd mSeen;
};

// Reads the value, as a listener of the platform does.
template <typename Seen>
void WatchTheKey(const std::string& address, const Seen& seen)
{
    const Platform::BusPtr bus = OpenBus(address);
    Platform::ValueStore keys(Platform::KeysPath(), 0600);
    const Platform::SlotPtr slot = Platform::WatchKey(bus.get(), kKey, [&] {
        if (keys.Get(kKey)) seen();
    });
    seen();
    for (;;) {
        while (sd_bus_process(bus.get(), nullptr) > 0) continue;
        sd_bus_wait(bus.get(), UINT64_MAX);
    }
}

template <typename Seen>
void WatchTheSignal(const std::string& address, const Seen& seen)
{
    RawBus bus(address);
    bus.AddMatch("type='signal',interface='" + std::string(kRawInterface) + "'");
    bus.RequestName("com.example.watcher");
    while (bus.Next().Text(0) != "com.example.watcher") continue;  // the match was made before the name
    seen();
    for (;;) {
        bus.Next();
        seen();
    }
}

// One statement in a database that promises what the platform's does.
class DurableWrite {
public:
    explicit DurableWrite(const std::string& path)
    {
        sqlite3* raw = nullptr;
        if (sqlite3_open(path.c_str(), &raw) != SQLITE_OK) throw std::runtime_error("no database");
        mDatabase.reset(raw);
        sqlite3_exec(raw,
                     "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;"
                     "CREATE TABLE value(key TEXT PRIMARY KEY, value) WITHOUT ROWID",
                     nullptr, nullptr, nullptr);
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(raw, "REPLACE INTO value VALUES(?, ?)", -1, &statement, nullptr);
        mStatement.reset(statement);
    }

    void operator()(int value)
    {
        sqlite3_bind_text(mStatement.get(), 1, kKey, -1, SQLITE_STATIC);
        sqlite3_bind_int(mStatement.get(), 2, value);
        if (sqlite3_step(mStatement.get()) != SQLITE_DONE) throw std::runtime_error("no database");
        sqlite3_reset(mStatement.get());
    }

private:
    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3, Close> mDatabase;
    std::unique_ptr<sqlite3_stmt, Close> mStatement;
};

}  // namespace

Figures Keys(Watch& watch, const Choices&)
{
    const Platform::BusPtr bus = OpenBus(watch.Address());
    Platform::ValueStore keys(Platform::KeysPath(), 0600);
    keys.Set(kKey, int64_t{0});
    const Watcher listener([&](const auto& seen) { WatchTheKey(watch.Address(), seen); });
    const Watcher rawListener([&](const auto& seen) { WatchTheSignal(watch.Address(), seen); });
    DurableWrite write(watch.Root() + "/floor.db");
    TestSupport::Body text;
    text.Text(kKey);
    const std::string signal = TestSupport::Layout(
        {TestSupport::Header::kSignal, "", kRawPath, kRawInterface, "Changed", "s"}, text);

    Figure figure{"key written, and known in another process",
                  "us",
                  {},
                  {},
                  "one durable SQLite write, one signal",
                  AtMostTimes(1.5)};
    for (int i = 1; i <= kWrites; ++i) {
        figure.ours.push_back(TimeOf([&] {
            Platform::SetKey(keys, bus.get(), kKey, int64_t{i});
            sd_bus_flush(bus.get());
            listener.AwaitSeen();
        }));
        figure.floor.push_back(TimeOf([&] {
            write(i);
            watch.Peers().Send(signal);
            rawListener.AwaitSeen();
        }));
    }
    return {figure};
}

}  // namespace Bench
