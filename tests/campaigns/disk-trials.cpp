#include "disk-trials.h"

#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace Campaign {

namespace {

namespace fs = std::filesystem;

constexpr unsigned long kPage = 4096;
constexpr char kPlenty[] = "size=64m";
constexpr const char* kFolders[] = {
    // that the service is confined to
    "apps/com.corvane.watchface/shared/data",
    "apps/com.corvane.watchface/shared/trusted",
    "common",
};
constexpr double kLongestLocked = 10;  // seconds

// Of the current face: it writes values alone.
const Operation& Change()
{
    return Operations().back();
}

void Clear(const std::string& folder)
{
    std::vector<fs::path> entries(fs::directory_iterator(folder), {});
    for (const fs::path& entry : entries) fs::remove_all(entry);
}

void Copy(const std::string& from, const std::string& to)
{
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

}  // namespace

DiskTrials::DiskTrials(const std::string& prefix) : mWatch(prefix)
{
    if (mount("disk", mWatch.Root().c_str(), "tmpfs", 0, kPlenty) != 0) throw std::runtime_error("no disk");
    Start();
    mFormer = FormerState(mWatch);
    for (const Operation& operation : Operations()) Rehearse(operation);
    mWatch.Restore(mFormer);
    mWatch.Stop();
    Copy(mWatch.Root(), mKept.Path());
    Start();
}

DiskTrials::~DiskTrials()
{
    if (mWatch.IsRunning()) mWatch.Service().Kill();
    umount2(mWatch.Root().c_str(), MNT_DETACH);
}

void DiskTrials::TryFullDisk(const Operation& operation, unsigned long freePages)
{
    Begin(operation);
    Remount(Limit(freePages));
    Attempt();
    Remount(kPlenty);
    Judge();
    TryAgain();
}

void DiskTrials::TryStartOnFullDisk(unsigned long freePages)
{
    Begin(Change());
    mWatch.Stop();
    Remount(Limit(freePages));
    mLogged = mWatch.LogSize();
    if (mWatch.Start())
        mWatch.Settle();
    else
        JudgeEnd();
    Remount(kPlenty);
    LookForDamage(mFormer);
    if (!mWatch.IsRunning()) Start();
    TryAgain();
}

void DiskTrials::TryReadOnly(const Operation& operation, const char* folder)
{
    Begin(operation);
    const std::string path = mWatch.Root() + "/" + folder;
    mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr);
    if (mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0)
        Violation("the folder does not become read-only");
    Attempt();
    umount2(path.c_str(), MNT_DETACH);
    Judge();
    TryAgain();
}

void DiskTrials::TryReadOnlyStart(const Operation& operation)
{
    Begin(operation);
    mWatch.Stop();
    if (mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        Violation("the disk does not become read-only");
    Start();
    mLogged = mWatch.LogSize();
    Attempt();
    mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT, nullptr);
    if (mWatch.Look() != mFormer) Violation("stores something");
    Judge();
    TryAgain();
}

void DiskTrials::TryEmptyAreas(const Operation& operation)
{
    Begin(operation);
    for (const char* area : {"data", "trusted"}) Clear(mWatch.Root() + "/" + kArea + "/" + area);
    Attempt();
    if (MakesSomething() && mAnswer == Answer::kFailure) Violation("fails");
    for (const std::string& path : EffectsUndone(mWatch.Look())) Violation("is not made: " + path);
    TryAgain();
}

void DiskTrials::TryMovedFolders(const Operation& operation)
{
    Begin(operation);
    for (const char* folder : kFolders) fs::rename(At(folder), At(folder) + ".away");
    Attempt();
    for (const char* folder : kFolders) {
        fs::remove_all(At(folder));
        fs::rename(At(folder) + ".away", At(folder));
    }
    JudgeMade();
    TryAgain();
}

void DiskTrials::TryNewFolders(const Operation& operation)
{
    Begin(operation);
    for (const char* folder : kFolders) {
        fs::rename(At(folder), At(folder) + ".away");
        Copy(At(folder) + ".away", At(folder));
        fs::remove_all(At(folder) + ".away");
    }
    Attempt();
    mWatch.Stop();
    Judge();
    Start();
    TryAgain();
}

void DiskTrials::TryLocked(const Operation& operation, const Store& store)
{
    Begin(operation);
    sqlite3* holder = nullptr;
    sqlite3_open(At(store.path).c_str(), &holder);
    if (sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) != SQLITE_OK)
        Violation("the database cannot be locked");
    const double took = TestSupport::TimeOf([&] { Attempt(); }) / 1e6;
    sqlite3_close(holder);
    if (took > kLongestLocked) Violation("takes " + std::to_string(took) + " s");
    mLongest = std::max(mLongest, took);
    Judge();
    TryAgain();
}

void DiskTrials::TryDamaged(const Operation& operation, const Store& store)
{
    Begin(operation);
    PutDamagedFile(store);
    Attempt();
    mWatch.Stop();
    JudgeDamaged(store);
}

void DiskTrials::TryDamagedStart(const Store& store)
{
    Begin(Change());
    mWatch.Stop();
    PutDamagedFile(store);
    Start();
    Attempt();
    mWatch.Stop();
    if (!IsSetAside(store)) Violation("starts with a damaged database");
    JudgeDamaged(store);
}

void DiskTrials::Start()
{
    if (!mWatch.Start()) throw std::runtime_error("the service does not start");
    mWatch.Settle();
}

void DiskTrials::Rehearse(const Operation& operation)
{
    mWatch.Restore(mFormer);
    operation.run(mWatch);
    mWatch.Settle();
    mLatter[operation.name] = mWatch.Look();
}

void DiskTrials::Begin(const Operation& operation)
{
    mOperation = &operation;
    ++mTried;
    if (!mWatch.IsRunning()) Start();
    mWatch.Restore(mFormer);
    mLogged = mWatch.LogSize();
}

void DiskTrials::Attempt()
{
    mAnswer = mOperation->run(mWatch);
    mWatch.Settle();
    if (!mWatch.IsRunning()) Violation("ends");
    if (mOperation->isAnswered && mAnswer == Answer::kNone) Violation("does not answer");
}

void DiskTrials::TryAgain()
{
    mWatch.Restore(mFormer);
    const Answer answer = mOperation->run(mWatch);
    mWatch.Settle();
    const bool isRight = mOperation->isAnswered ? answer == Answer::kSuccess : answer != Answer::kFailure;
    if (!isRight) Violation("fails afterwards");
    if (mWatch.Look() != Latter()) Violation("does not do all afterwards");
}

std::string DiskTrials::Limit(unsigned long freePages) const
{
    struct statvfs disk {};
    statvfs(mWatch.Root().c_str(), &disk);
    return "size=" + std::to_string((disk.f_blocks - disk.f_bfree + freePages) * kPage);
}

void DiskTrials::Remount(const std::string& options)
{
    if (mount(nullptr, mWatch.Root().c_str(), nullptr, MS_REMOUNT, options.c_str()) != 0)
        Violation("the disk does not change to " + options);
}

// A file in its place, so that what is known of the former is of no use to anybody.
void DiskTrials::PutDamagedFile(const Store& store)
{
    const std::string path = At(store.path);
    std::ofstream(path + ".new", std::ios::binary) << std::string(2 * kPage, 'x');
    fs::rename(path + ".new", path);
    for (const char* end : {"-wal", "-shm"}) fs::remove(path + end);
}

bool DiskTrials::IsSetAside(const Store& store) const
{
    const fs::directory_iterator folder(fs::path(At(store.path)).parent_path());
    return std::any_of(begin(folder), end(folder), [](const auto& entry) {
        return entry.path().string().find(".damaged-") != std::string::npos;
    });
}

bool DiskTrials::IsFaultLogged() const
{
    return mWatch.LogFrom(mLogged).find("E/platform") != std::string::npos;
}

// A face that is not there cannot be deleted.
bool DiskTrials::MakesSomething() const
{
    const std::vector<std::string> effects = Undone(mFormer, Latter());
    return std::ranges::any_of(effects, [this](const auto& path) { return Latter().contains(path); });
}

// What the operation does, and has not done.
std::vector<std::string> DiskTrials::EffectsUndone(const State& now) const
{
    const std::vector<std::string> effects = Undone(mFormer, Latter());
    std::vector<std::string> undone = Undone(now, Latter());
    std::erase_if(undone,
                  [&](const std::string& path) { return std::ranges::find(effects, path) == effects.end(); });
    return undone;
}

// A start that did not come to its end.
void DiskTrials::JudgeEnd()
{
    const int status = mWatch.Service().Status().value_or(0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) == 0)
        Violation("ends badly, status " + std::to_string(status));
    if (!IsFaultLogged()) Violation("ends, and logs no fault");
    ++mNotDone;
}

// With space to look at the databases.
void DiskTrials::Judge()
{
    JudgeUndone(Undone(LookForDamage(Latter()), Latter()));
}

// What was not there could not be removed.
void DiskTrials::JudgeMade()
{
    std::vector<std::string> undone = Undone(LookForDamage(Latter()), Latter());
    std::erase_if(undone, [this](const std::string& path) { return !Latter().contains(path); });
    JudgeUndone(undone);
}

void DiskTrials::JudgeUndone(const std::vector<std::string>& undone)
{
    if (undone.empty()) return;
    ++mNotDone;
    if (!IsFaultLogged()) Violation("does not do all, and logs no fault: " + undone.front());
    if (mAnswer != Answer::kSuccess) return;
    for (const std::string& path : undone) {
        const auto isEndOfIt = [&](const char* end) { return path.ends_with(end); };
        if (std::ranges::none_of(mOperation->untested, isEndOfIt)) Violation("succeeds without " + path);
    }
}

// When the service has stopped.
void DiskTrials::JudgeDamaged(const Store& store)
{
    if (IsSetAside(store)) {
        ++mSetAside[store.label];
        if (mWatch.LogFrom(mLogged).find("was damaged") == std::string::npos)
            Violation("sets a database aside, and does not log it");
    } else {  // nobody has asked it
        fs::copy_file(mKept.Path() + "/" + store.path, At(store.path), fs::copy_options::overwrite_existing);
    }
    const State now = mWatch.Look();
    for (const std::string& path : EffectsUndone(now)) Violation("is not kept afterwards: " + path);
    for (const std::string& path : Undone(now, Latter())) {
        // Without its preferences the service takes this start for the first, and draws all faces.
        const bool isNew = now.contains(path) && mWatch.IsShipped(path, now.at(path));
        if (!path.starts_with(store.label) && !isNew) Violation("is lost with a database: " + path);
    }
    Clear(mWatch.Root());
    Copy(mKept.Path(), mWatch.Root());
    Start();
    TryAgain();
}

State DiskTrials::LookForDamage(const State& latter)
{
    const State now = mWatch.Look();
    if (!mWatch.AreDatabasesWhole()) Violation("a database is damaged or set aside");
    const auto isShipped = [this](const std::string& path, const std::string& content) {
        return mWatch.IsShipped(path, content);
    };
    for (const std::string& what : Damage(now, mFormer, latter, isShipped)) Violation(what);
    for (const std::string& path : mWatch.Leftovers()) Violation("is left: " + path);
    return now;
}

void DiskTrials::Violation(const std::string& what)
{
    ++mViolations;
    std::printf("! %s, %s: %s\n", mTrial.c_str(), mOperation->name, what.c_str());
    std::fflush(stdout);
}

}  // namespace Campaign
