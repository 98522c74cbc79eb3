// A watch on a disk of its own that is taken away in one way after the other, and what must hold each time:
// an operation is done, or is not and the log says so, and is done as a whole when the disk is as it should
// be.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "a-tried-watch.h"
#include "stored-values.h"

namespace Campaign {

// The folders of the areas, below the root.
inline constexpr char kArea[] = "apps/com.corvane.watchface/shared";

// The process may mount. Each trial begins with the same state and ends when the same operation has succeeded
// again; what may not happen is printed and counted.
class DiskTrials {
public:
    // Throws std::runtime_error when there is no disk to be had, or the service does not start.
    explicit DiskTrials(const std::string& prefix);
    ~DiskTrials();
    DiskTrials(const DiskTrials&) = delete;
    DiskTrials& operator=(const DiskTrials&) = delete;

    // What the trials that follow are called.
    void Name(const std::string& trial) { mTrial = trial; }

    void TryFullDisk(const Operation& operation, unsigned long freePages);
    void TryStartOnFullDisk(unsigned long freePages);
    // A folder below the root. Of the root itself, what is open already can be written all the same.
    void TryReadOnly(const Operation& operation, const char* folder);
    // It stores nothing.
    void TryReadOnlyStart(const Operation& operation);
    // What lies in the areas is gone, and nothing of it is missed.
    void TryEmptyAreas(const Operation& operation);
    // The folders themselves are elsewhere for a while.
    void TryMovedFolders(const Operation& operation);
    // Others stand in the place of the folders, with the same in them: a program that was confined to the
    // former ones has them when it starts again.
    void TryNewFolders(const Operation& operation);
    // Somebody holds a database and does not give it up.
    void TryLocked(const Operation& operation, const Store& store);
    // A database is damaged under the running service: what it holds is lost, what is written then is kept.
    void TryDamaged(const Operation& operation, const Store& store);
    void TryDamagedStart(const Store& store);

    int Tried() const { return mTried; }
    // Trials in which the disk kept an operation from being done.
    int NotDone() const { return mNotDone; }
    double Longest() const { return mLongest; }  // seconds, with a database that is locked
    int SetAside(const Store& store) const { return mSetAside.at(store.label); }
    bool IsClean() const { return mViolations == 0; }

private:
    void Start();
    void Rehearse(const Operation& operation);
    void Begin(const Operation& operation);
    void Attempt();
    void TryAgain();

    std::string At(const char* path) const { return mWatch.Root() + "/" + path; }
    const State& Latter() const { return mLatter.at(mOperation->name); }
    std::string Limit(unsigned long freePages) const;
    void Remount(const std::string& options);
    void PutDamagedFile(const Store& store);
    bool IsSetAside(const Store& store) const;
    bool IsFaultLogged() const;
    bool MakesSomething() const;
    std::vector<std::string> EffectsUndone(const State& now) const;

    void JudgeEnd();
    void Judge();
    void JudgeMade();
    void JudgeUndone(const std::vector<std::string>& undone);
    void JudgeDamaged(const Store& store);
    State LookForDamage(const State& latter);
    void Violation(const std::string& what);

    TriedWatch mWatch;
    TestSupport::TemporaryFolder mKept{"/dev/shm"};  // the disk as it is at first
    State mFormer;
    std::map<std::string, State> mLatter;  // by operation
    std::map<std::string, int> mSetAside{
        {kKeys.label,        0},
        {kPreferences.label, 0}
    };
    const Operation* mOperation = nullptr;
    std::string mTrial;
    Answer mAnswer = Answer::kNone;
    std::size_t mLogged = 0;  // before the attempt
    double mLongest = 0;
    int mTried = 0, mNotDone = 0, mViolations = 0;
};

}  // namespace Campaign
