// The owner ledger against a model of the bus.
//
// The input is a sequence of steps: peers take and give up names and send messages, the bus reads one of our
// requests, we read one of its messages. The model knows who owned the name when the bus routed a message;
// the ledger must say the same, however far requests, changes and answers are apart. For an application of
// the watch, whose changes are matched from the start, that holds without exception. A foreign name is
// matched from its first message on: what happened between the message and the match cannot be told, and any
// owner of that time will do.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "owner-ledger.h"

namespace {

constexpr std::size_t kMostNames = 3;
constexpr std::size_t kMostQuestions = 6;
constexpr std::size_t kPeers = 3;

struct Name {
    std::string text;
    bool isApplication;
    std::string owner = {};
    bool matched = false;  // as the bus has it
};

// What we ask of the bus, in order.
struct Request {
    enum Kind { kMatch, kUnmatch, kOwner } kind;
    std::size_t name;
    uint64_t generation = 0;
};

struct Message {
    std::size_t name;
    std::set<std::string> right;  // the owner when it was routed, and later ones that cannot be told from it
    bool isAnswered = false;
};

// What the bus sends us, in order.
struct Event {
    enum Kind { kMessage, kChanged, kAnswered, kFailed } kind;
    std::size_t name;
    uint64_t generation = 0;
    std::string before = {}, after = {};
    std::shared_ptr<Message> message = {};
};

[[noreturn]] void Fail(const char* what)
{
    std::fprintf(stderr, "owner ledger: %s\n", what);
    std::abort();
}

void Check(bool holds, const char* what)
{
    if (!holds) Fail(what);
}

class Bus final : public Platform::OwnerLedger::Watcher {
public:
    bool Watch(const std::string& name, uint64_t generation) override
    {
        const std::size_t index = IndexOf(name);
        if (!mNames[index].isApplication) mRequests.push_back({Request::kMatch, index});
        mRequests.push_back({Request::kOwner, index, generation});
        return true;
    }

    void Forget(const std::string& name) override
    {
        const std::size_t index = IndexOf(name);
        if (!mNames[index].isApplication) mRequests.push_back({Request::kUnmatch, index});
    }

    // A peer takes the name, or whoever has it gives it up (peer 0).
    void ChangeOwner(std::size_t index, std::size_t peer)
    {
        Name& name = mNames[index];
        const std::string after = peer == 0 ? "" : ":1." + std::to_string(peer);
        if (after == name.owner) return;
        if (name.matched || name.isApplication) {
            mEvents.push_back({Event::kChanged, index, 0, name.owner, after});
        }
        name.owner = after;
        if (name.isApplication) return;
        for (const auto& message : mOpen) {
            if (message->name == index) message->right.insert(after);
        }
    }

    void Send(std::size_t index)
    {
        const auto message = std::make_shared<Message>(Message{index, {mNames[index].owner}});
        mEvents.push_back({Event::kMessage, index, 0, {}, {}, message});
        if (!mNames[index].isApplication) mOpen.push_back(message);
    }

    void ReadRequest(bool fails)
    {
        if (mRequests.empty()) return;
        const Request request = mRequests.front();
        mRequests.pop_front();
        Name& name = mNames[request.name];
        if (request.kind == Request::kMatch) name.matched = true;
        if (request.kind == Request::kUnmatch) name.matched = false;
        if (request.kind != Request::kOwner) return;
        const auto kind = fails ? Event::kFailed : Event::kAnswered;
        mEvents.push_back({kind, request.name, request.generation, {}, name.owner});
    }

    void Deliver()
    {
        if (mEvents.empty()) return;
        const Event event = mEvents.front();
        mEvents.pop_front();
        const std::string& name = mNames[event.name].text;
        if (event.kind == Event::kMessage) Ask(event.message);
        if (event.kind == Event::kChanged) mLedger.Changed(name, event.before, event.after);
        if (event.kind == Event::kAnswered) mLedger.Answered(name, event.generation, event.after);
        if (event.kind == Event::kFailed) {
            for (const auto& message : mAsked) {
                if (message->name == event.name) message->right.insert("");
            }
            mLedger.Failed(name, event.generation);
        }
        std::erase_if(mAsked, [](const auto& message) { return message->isAnswered; });
        std::erase_if(mOpen, [](const auto& message) { return message->isAnswered; });
        Check(mLedger.NamesWatched() <= kMostNames, "more names than its limit");
        Check(mLedger.QuestionsWaiting() <= kMostQuestions, "more questions than its limit");
        Check(mLedger.QuestionsWaiting() == mAsked.size(), "questions are miscounted");
    }

    void Finish()
    {
        while (!mRequests.empty() || !mEvents.empty()) {
            ReadRequest(false);
            Deliver();
        }
        Check(mAsked.empty(), "a question was never answered");
        for (const Name& name : mNames) {
            const auto known = mLedger.Known(name.text);
            if (known) Check(*known == name.owner, "what it knows is out of date");
        }
    }

private:
    std::size_t IndexOf(const std::string& name) const
    {
        const auto it =
            std::find_if(mNames.begin(), mNames.end(), [&](const Name& n) { return n.text == name; });
        Check(it != mNames.end(), "a name nobody asked about");
        return static_cast<std::size_t>(it - mNames.begin());
    }

    void Ask(const std::shared_ptr<Message>& message)
    {
        mAsked.push_back(message);
        const bool taken = mLedger.Ask(mNames[message->name].text, [message](const std::string& owner) {
            Check(!message->isAnswered, "one question was answered twice");
            Check(message->right.contains(owner), "not the owner when the message was routed");
            message->isAnswered = true;
        });
        if (!taken) message->isAnswered = true;  // refused: the ledger is full
    }

    std::vector<Name> mNames = {
        {"com.corvane.one", true },
        {"com.corvane.two", true },
        {"com.example.one", false},
        {"com.example.two", false}
    };
    std::deque<Request> mRequests;
    std::deque<Event> mEvents;
    std::vector<std::shared_ptr<Message>> mOpen;   // sent in a foreign name and not answered yet
    std::vector<std::shared_ptr<Message>> mAsked;  // the ledger has them
    Platform::OwnerLedger mLedger{*this, kMostNames, kMostQuestions};

public:
    std::size_t Names() const { return mNames.size(); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    Bus bus;
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t step = data[i] & 7;
        const std::size_t name = (data[i] >> 3) % bus.Names();
        const std::size_t peer = (data[i] >> 5) % (kPeers + 1);
        if (step <= 1) bus.ChangeOwner(name, peer);
        if (step == 2 || step == 3) bus.Send(name);
        if (step == 4) bus.ReadRequest(false);
        if (step == 5) bus.ReadRequest(data[i] >= 0xF0);
        if (step >= 6) bus.Deliver();
    }
    bus.Finish();
    return 0;
}
