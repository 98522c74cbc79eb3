#include "owner-ledger.h"

#include <utility>

namespace Platform {

OwnerLedger::OwnerLedger(Watcher& watcher, std::size_t mostNames, std::size_t mostQuestions)
    : mWatcher(watcher), mMostNames(mostNames), mMostQuestions(mostQuestions)
{
}

bool OwnerLedger::Ask(const std::string& name, Then then)
{
    Entry* entry = Enter(name);
    if (!entry) return false;
    if (entry->owner) {
        const std::string owner = *entry->owner;  // `then` may change the ledger
        then(owner);
        return true;
    }
    if (mQuestions >= mMostQuestions) return false;
    entry->waiting.push_back(std::move(then));
    ++mQuestions;
    return true;
}

std::optional<std::string> OwnerLedger::Known(const std::string& name) const
{
    const auto it = mEntries.find(name);
    return it == mEntries.end() ? std::nullopt : it->second.owner;
}

void OwnerLedger::Answered(const std::string& name, uint64_t generation, const std::string& owner)
{
    Entry* entry = Find(name, generation);
    // A change that came before the answer has told more than the answer does.
    if (!entry || entry->owner) return;
    Resolve(*entry, owner);
}

void OwnerLedger::Failed(const std::string& name, uint64_t generation)
{
    Entry* entry = Find(name, generation);
    if (!entry || entry->owner) return;
    Resolve(*entry, std::string());
    // Not known to be without owner: the next question asks the bus again.
    entry = Find(name, generation);
    if (!entry) return;
    mByAge.erase(entry->age);
    mEntries.erase(name);
    mWatcher.Forget(name);
}

void OwnerLedger::Changed(const std::string& name, const std::string& before, const std::string& after)
{
    const auto it = mEntries.find(name);
    if (it == mEntries.end()) return;
    const uint64_t generation = it->second.generation;
    if (!it->second.owner) Resolve(it->second, before);
    if (Entry* entry = Find(name, generation)) entry->owner = after;
}

OwnerLedger::Entry* OwnerLedger::Find(const std::string& name, uint64_t generation)
{
    const auto it = mEntries.find(name);
    return it != mEntries.end() && it->second.generation == generation ? &it->second : nullptr;
}

OwnerLedger::Entry* OwnerLedger::Enter(const std::string& name)
{
    auto it = mEntries.find(name);
    if (it != mEntries.end()) {
        mByAge.splice(mByAge.end(), mByAge, it->second.age);
        return &it->second;
    }
    if (mEntries.size() >= mMostNames && !MakeRoom()) return nullptr;
    Entry& entry = mEntries[name];
    entry.generation = ++mGenerations;
    entry.age = mByAge.insert(mByAge.end(), name);
    mWatcher.Watch(name, entry.generation);
    return &entry;
}

bool OwnerLedger::MakeRoom()
{
    for (const std::string& name : mByAge) {
        const auto it = mEntries.find(name);
        if (!it->second.waiting.empty()) continue;
        const std::string gone = name;
        mByAge.erase(it->second.age);
        mEntries.erase(it);
        mWatcher.Forget(gone);
        return true;
    }
    return false;
}

void OwnerLedger::Resolve(Entry& entry, const std::string& owner)
{
    entry.owner = owner;
    const std::vector<Then> waiting = std::exchange(entry.waiting, {});
    mQuestions -= waiting.size();
    for (const Then& then : waiting) then(owner);  // may change the ledger; `entry` is not used after this
}

}  // namespace Platform
