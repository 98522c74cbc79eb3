#include "service-peer.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "application-table.h"
#include "exit-status.h"
#include "hint.h"
#include "private-watch.h"

namespace Wfctl {

namespace {

// Whom the service answers, each at its first port of the table of applications.
constexpr const char* kAnsweredPeers[] = {
    kManagerId,
    kEditorId,
    "com.corvane.w-home",
    "com.corvane.watch-utils.setting-list",
};

PeerAddress AnsweredPeer(const std::string& as)
{
    PeerAddress peer = ParsePeer(as, true);
    const bool isAnswered =
        std::any_of(std::begin(kAnsweredPeers), std::end(kAnsweredPeers),
                    [&](const char* id) { return peer.app == id && peer.port == ParsePeer(id, true).port; });
    if (isAnswered) return peer;
    std::string all;
    for (const char* id : kAnsweredPeers) all += std::string(all.empty() ? "" : ", ") + id;
    throw Stop(Exit::kUsage, "the service would not answer [" + as + "], so nobody would know how it went" +
                                 OrMeant(peer.app, {std::begin(kAnsweredPeers), std::end(kAnsweredPeers)},
                                         "say --as with one of " + all + ", or use wfctl send"));
}

}  // namespace

std::string TextOf(const bundle& message, const char* key)
{
    const auto it = message.values.find(std::string_view(key));
    const auto* text = it == message.values.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : "";
}

bool IsSuccess(const Json& answer)
{
    return answer["bundle"].value("status", "") == "success";
}

ServicePeer::ServicePeer(Connection& connection, const std::string& as)
    : ServicePeer(connection, AnsweredPeer(as), ParsePeer(std::string(Platform::kServiceId), true), true)
{
}

ServicePeer::ServicePeer(Connection& connection, PeerAddress self, PeerAddress service)
    : ServicePeer(connection, std::move(self), std::move(service), false)
{
}

ServicePeer::ServicePeer(Connection& connection, PeerAddress self, PeerAddress service, bool trusted)
    : mConnection(connection),
      mSelf(std::move(self)),
      mService(std::move(service)),
      mIsTrusted(trusted),
      mPeer(connection, mSelf, trusted,
            [this](const std::string& app, const std::string& port, const bundle& message) {
                Receive(app, port, message);
            })
{
}

void ServicePeer::RequireAnswers()
{
    if (mPeer.HasNames() || mConnection.IsNameBelow(mSelf.app + (mIsTrusted ? ".trusted." : ".open.")))
        return;
    const auto pid = mConnection.ProcessBehind(mSelf.app);
    throw Stop(Exit::kError, "[" + mSelf.app + "] is running already" +
                                 (pid ? " (pid " + std::to_string(*pid) + ")" : std::string()) +
                                 " and has no " + (mIsTrusted ? "trusted" : "untrusted") +
                                 " port, where the answer would come; end it or use another --as");
}

void ServicePeer::Receive(const std::string& app, const std::string& port, const bundle& message)
{
    const bool isWaiting = mIsAnswer && mAnswer.is_null();
    if (isWaiting && app == Platform::kServiceId && (*mIsAnswer)(message))
        mAnswer = MessageToJson(app, port, message);
}

void ServicePeer::Tell(const bundle& message)
{
    mPeer.Send(mService, mIsTrusted, message);
}

Json ServicePeer::Ask(const bundle& message, const Fits& isAnswer, Seconds timeout)
{
    RequireAnswers();
    mIsAnswer = &isAnswer;
    mAnswer = nullptr;
    const auto deadline = DeadlineIn(timeout);
    mPeer.Send(mService, mIsTrusted, message, timeout);
    const Seconds left = std::max(Seconds(deadline - std::chrono::steady_clock::now()), Seconds(0));
    const bool isAnswered = mConnection.RunUntil([this] { return !mAnswer.is_null(); }, left);
    mIsAnswer = nullptr;
    if (isAnswered) return mAnswer;
    const std::string about = TextOf(message, "pkgid");
    throw Stop(Exit::kNoAnswer, "the service took the message " +
                                    (about.empty() ? "" : "about [" + about + "] ") + "but did not answer [" +
                                    mSelf.app + "] in time; look for watchface-service in " +
                                    LogPlace("watchface-service"));
}

Json ServicePeer::Ask(const bundle& message, Seconds timeout)
{
    const auto isAnswer = [&](const bundle& answer) {
        return TextOf(answer, "type") == TextOf(message, "type") &&
               TextOf(answer, "pkgid") == TextOf(message, "pkgid") && !TextOf(answer, "status").empty();
    };
    return Ask(message, isAnswer, timeout);
}

}  // namespace Wfctl
