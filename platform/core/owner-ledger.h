// Who owns which name on the bus, at the moment the bus routed the message that is being looked at.
//
// The bus puts everything on one connection in one order: messages, changes of owners, answers. The ledger is
// told of changes and answers in that order, so what it knows when a message is looked at is what held when
// the bus routed it. Asking the bus anew for each message would answer for a later moment.
//
// Normal flow: Ask() about a name that is not watched yet makes the bus side watch it (the match stands
// before the question is sent) and waits. A change that comes before the answer tells those who wait: its
// *old* owner is the one that held while they waited. It does not make the name known, since an earlier watch
// of the name may still have matched it, with changes behind it that no match saw. The answer does: it is the
// owner, for those who wait and from then on, when Ask() answers at once.
//
// Names watched and questions waiting are bounded. A name that nobody waits for gives way to a new one.

#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

class OwnerLedger {
public:
    // The bus side. Watch() subscribes to the owner changes of the name and then asks for its owner; the
    // answer goes to Answered() with the same generation.
    class Watcher {
    public:
        virtual ~Watcher() = default;
        virtual bool Watch(const std::string& name, uint64_t generation) = 0;  // false: it could not ask
        virtual void Forget(const std::string& name) = 0;
    };

    // The owner's unique name; empty when the name has none or it could not be told.
    using Then = std::function<void(const std::string& owner)>;

    static constexpr std::size_t kMostNames = 256;
    static constexpr std::size_t kMostQuestions = std::size_t{16} << 10;

    explicit OwnerLedger(Watcher& watcher, std::size_t mostNames = kMostNames,
                         std::size_t mostQuestions = kMostQuestions);
    OwnerLedger(const OwnerLedger&) = delete;
    OwnerLedger& operator=(const OwnerLedger&) = delete;

    // Runs `then` at once when the owner is known, else when it is. False when the ledger is full: `then` is
    // dropped.
    bool Ask(const std::string& name, Then then);

    // The owner (empty: nobody) when it is known.
    std::optional<std::string> Known(const std::string& name) const;

    // Events, in the order in which they came over the connection.
    void Answered(const std::string& name, uint64_t generation, const std::string& owner);
    void Failed(const std::string& name, uint64_t generation);
    void Changed(const std::string& name, const std::string& before, const std::string& after);

    std::size_t NamesWatched() const { return mEntries.size(); }
    std::size_t QuestionsWaiting() const { return mQuestions; }

private:
    struct Entry {
        uint64_t generation = 0;
        std::optional<std::string> owner;
        std::vector<Then> waiting;
        std::list<std::string>::iterator age;  // in mByAge
    };

    Entry* Find(const std::string& name, uint64_t generation);
    Entry* Enter(const std::string& name);
    bool MakeRoom();
    void Drop(const std::string& name);
    void Tell(Entry& entry, const std::string& owner);

    Watcher& mWatcher;
    const std::size_t mMostNames;
    const std::size_t mMostQuestions;
    std::map<std::string, Entry> mEntries;
    std::list<std::string> mByAge;  // the one asked longest ago first
    std::size_t mQuestions = 0;
    uint64_t mGenerations = 0;
};

}  // namespace Platform
