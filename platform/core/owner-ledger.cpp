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
    if (!entry || entry->owner) return;
    entry->owner = owner;
    Tell(*entry, owner);
}

void OwnerLedger::Failed(const std::string& name, uint64_t generation)
{
    Entry* entry = Find(name, generation);
    if (!entry || entry->owner) return;
    entry->owner.emplace();  // for questions asked meanwhile
    Tell(*entry, std::string());
    // Not known to be without owner: the next question asks the bus again.
    entry = Find(name, generation);
    if (entry) Drop(name);
}

void OwnerLedger::Changed(const std::string& name, const std::string& before, const std::string& after)
{
    const auto it = mEntries.find(name);
    if (it == mEntries.end()) return;
    Entry& entry = it->second;
    if (entry.owner) {
        entry.owner = after;
    } else {
        Tell(entry, before);
    }
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
    if (mWatcher.Watch(name, entry.generation)) return &entry;
    Drop(name);
    return nullptr;
}

bool OwnerLedger::MakeRoom()
{
    for (const std::string& name : mByAge) {
        const auto it = mEntries.find(name);
        if (!it->second.waiting.empty()) continue;
        Drop(std::string(name));
        return true;
    }
    return false;
}

void OwnerLedger::Drop(const std::string& name)
{
    const auto it = mEntries.find(name);
    mByAge.erase(it->second.age);
    mEntries.erase(it);
    mWatcher.Forget(name);
}

void OwnerLedger::Tell(Entry& entry, const std::string& owner)
{
    const std::vector<Then> waiting = std::exchange(entry.waiting, {});
    mQuestions -= waiting.size();
    for (const Then& then : waiting) then(owner);  // may change the ledger; `entry` is not used after this
}

}  // namespace Platform
