#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "attacks.h"
#include "path-messages.h"

namespace Campaign {

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kAnyRow{"KEYS:", "PREFERENCES:"};

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// One kind of message, with a harmless value and with all paths.
class PathAttack {
public:
    PathAttack(PathStage& stage, const PathMessage& message) : mStage(stage), mMessage(message) {}

    // Before the first of the paths.
    void Rehearse()
    {
        if (!DoesWhatItIsFor()) throw std::runtime_error(std::string(mMessage.field) + ": it does nothing");
    }

    void Run(Outcome* outcome)
    {
        bool isRefused = false;
        for (const Path& path : *mMessage.paths) {
            const bool isText = std::ranges::all_of(path.text, isascii);
            if (*mMessage.arrayKey && !isText) continue;  // an array of texts has UTF-8 alone
            ++outcome->tried;
            mMessage.prepare(mStage, path.text);
            mStage.Plant();
            const std::size_t logged = mStage.LogSize();
            const PathStage::Reply reply = Say(path.text);
            mStage.Settle();
            const std::string log = mStage.LogFrom(logged);
            isRefused = isRefused || log.find(" refused for [") != std::string::npos;
            outcome->accepted += mStage.CountChanges(mMessage.rows);
            outcome->accepted += !IsDealtWith(path, reply, log);
        }
        if (mMessage.isRefused && !isRefused)
            throw std::runtime_error(std::string(mMessage.field) + ": no path is looked at");
    }

private:
    bool DoesWhatItIsFor()
    {
        for (const char* home : kHomes) mStage.Clear(home);
        mMessage.prepare(mStage, mMessage.harmless);
        mStage.Plant();
        mStage.Settle();
        mStage.CountChanges(kAnyRow);
        const std::string what = Replaced(mMessage.effectOn, "PATH", mMessage.harmless);
        const bool wasThere = IsThere(what);
        const PathStage::Reply reply = Say(mMessage.harmless);
        mStage.Settle();
        mStage.CountChanges(kAnyRow);
        switch (mMessage.effect) {
            case PathMessage::kMakes:
            case PathMessage::kSetsRow:
                return !wasThere && IsThere(what);
            case PathMessage::kRemoves:
                return wasThere && !IsThere(what);
            case PathMessage::kAsks:
                return mStage.IsAskedFor(what);
            case PathMessage::kAnswers:
                return reply.status == what;
        }
        return false;
    }

    bool IsThere(const std::string& what) const
    {
        return mMessage.effect == PathMessage::kSetsRow ? mStage.HadRow(what) : fs::exists(mStage.At(what));
    }

    PathStage::Reply Say(const std::string& path)
    {
        Values values = mMessage.values;
        for (auto& [key, value] : values) value = mStage.InSources(Replaced(value, "PATH", path));
        return *mMessage.arrayKey ? mStage.SayWithArray(mMessage.from, values, mMessage.arrayKey)
                                  : mStage.Say(mMessage.from, values);
    }

    bool IsDealtWith(const Path& path, const PathStage::Reply& reply, const std::string& log) const
    {
        const std::string right = path.kind == Path::kLeadsOut ? mMessage.answer
                                  : path.kind == Path::kIsLink ? mMessage.answerToLink
                                                               : "";
        const bool isRight = right.empty() || reply.status == right;
        const bool isLogged = log.find(mMessage.logged) != std::string::npos;
        if (!reply.isTaken || !isRight || !isLogged) {
            std::fprintf(stderr, "  %s, \"%.60s\": %staken, answered \"%s\"%s\n", mMessage.field,
                         path.text.c_str(), reply.isTaken ? "" : "not ", reply.status.c_str(),
                         isLogged ? "" : ", not logged");
        }
        return reply.isTaken && isRight && isLogged;
    }

    PathStage& mStage;
    const PathMessage& mMessage;
};

}  // namespace

Outcome NamePaths(const Scene& scene)
{
    PathStage stage(scene.service);
    const std::vector<PathMessage> messages = PathMessages(stage);
    for (const PathMessage& message : messages) PathAttack(stage, message).Rehearse();
    Outcome outcome;
    while (outcome.tried < scene.times) {
        for (const PathMessage& message : messages) PathAttack(stage, message).Run(&outcome);
    }
    return outcome;
}

}  // namespace Campaign
