// The evaluation store against a model of it: any requests of a few applications, in any order, up to more
// than it may keep. After each request the store holds what the model says, the log has its lines, and the
// one reply, or none, went to where the request came from.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "memory-platform.h"
#include "service-evaluation-helper.h"

namespace {

using MemoryPlatform::Message;
using MemoryPlatform::Strings;

constexpr char kPort[] = "evaluation-helper-port";
constexpr char kOp[] = "evaluation-helper-op";
constexpr char kFace[] = "evaluation-helper-watchface-name";
constexpr char kDuration[] = "evaluation-helper-data-duration";
constexpr char kResult[] = "evaluation-helper-ret";
constexpr char kSave[] = "evaluation-helper-op-save-duration";
constexpr char kLoad[] = "evaluation-helper-op-load-duration";
constexpr char kKeyEnd[] = "+evaluation-helper-data-duration";

// What the store's page says of its limits.
constexpr std::size_t kMostEntriesOfOne = 64, kMostBytesOfOne = 16384;
constexpr std::size_t kMostEntries = 512, kMostBytes = 131072;

constexpr const char* kApplications[] = {"com.example.a",
                                         "com.example.ab",
                                         "com.example.a.b",
                                         "com.example",
                                         "com.example.c",
                                         "com.example.d",
                                         "com.example.e",
                                         "com.example.f",
                                         "com.example.g",
                                         "com.example.h",
                                         "z",
                                         ""};
constexpr const char* kOperations[] = {kSave, kLoad, kSave, kLoad, "evaluation-helper-op", ""};
constexpr const char* kFaces[] = {"com.corvane.watchface-mirel-c1", "a", "a+b", "+", kKeyEnd, ""};
constexpr std::size_t kTimes[] = {1, 1, 1, 200, 700};
constexpr std::size_t kOthersEntries[] = {1, 440, 447, 448, 449, 500, 511, 512, 600};
constexpr std::size_t kMostOfAText = 24, kMostSteps = 200, kMostInARow = 80;
constexpr std::size_t kShownOfALine = 3000;  // longer lines are cut

void Check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "evaluation store: %s\n", what);
    std::abort();
}

// No text of a message has a NUL inside.
std::string AnyText(FuzzedDataProvider& input)
{
    std::string once = input.ConsumeRandomLengthString(kMostOfAText);
    for (char& c : once) c = c == '\0' ? '0' : c;
    std::string text;
    for (std::size_t times = input.PickValueInArray(kTimes); times > 0; --times) text += once;
    return text;
}

template <std::size_t count>
void AddAny(FuzzedDataProvider& input, Message* message, const char* key, const char* const (&usual)[count])
{
    const auto choice = input.ConsumeIntegralInRange<std::size_t>(0, count + 2);
    if (choice < count) (*message)[key] = usual[choice];
    if (choice == count) (*message)[key] = AnyText(input);
    if (choice == count + 1) (*message)[key] = Strings{AnyText(input), "b"};
}

Message AnyRequest(FuzzedDataProvider& input)
{
    Message request;
    AddAny(input, &request, kOp, kOperations);
    AddAny(input, &request, kFace, kFaces);
    AddAny(input, &request, kDuration, {"350", ""});
    if (input.ConsumeBool()) AddAny(input, &request, kResult, {"0", "1"});
    if (input.ConsumeBool()) AddAny(input, &request, "more", {"a"});
    return request;
}

std::string TextOf(const Message& message, const char* key)
{
    const auto it = message.find(key);
    const auto* text = it == message.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : "";
}

class Model {
public:
    bool HasRoom(const std::string& app, const std::string& key, const std::string& value) const
    {
        std::size_t ofOne = 1, bytesOfOne = key.size() + value.size();
        std::size_t all = ofOne, bytes = bytesOfOne;
        for (const auto& [kept, duration] : mKept) {
            if (kept == key || !kept.ends_with(kKeyEnd)) continue;
            const std::size_t size = kept.size() + duration.size();
            const bool isOfThisOne = kept.starts_with(app + "+");
            ofOne += isOfThisOne;
            bytesOfOne += isOfThisOne ? size : 0;
            ++all;
            bytes += size;
        }
        return ofOne <= kMostEntriesOfOne && bytesOfOne <= kMostBytesOfOne && all <= kMostEntries &&
               bytes <= kMostBytes;
    }
    void Put(const std::string& key, const std::string& value) { mKept[key] = value; }
    std::optional<std::string> Get(const std::string& key) const
    {
        const auto it = mKept.find(key);
        return it == mKept.end() ? std::nullopt : std::optional(it->second);
    }
    bool IsKeptBy(const MemoryPlatform::Platform& platform) const
    {
        const auto prefs = platform.Prefs();
        if (prefs.size() != mKept.size()) return false;
        for (const auto& [key, value] : mKept) {
            const auto it = prefs.find(key);
            if (it == prefs.end() || it->second != MemoryPlatform::StoreValue(value)) return false;
        }
        return true;
    }

private:
    std::map<std::string, std::string> mKept;
};

class Conversation {
public:
    void Ask(const std::string& app, const std::string& port, const Message& request)
    {
        mPlatform.Forget();
        Check(mPlatform.Deliver(kPort, app, request, port), "its port is closed");
        const std::string op = TextOf(request, kOp);
        const bool hasSender = !app.empty() && !port.empty();
        if (!hasSender) {
            CheckSilence({"E remoteAppId[" + app + "] or remotePort[" + port + "] is empty!!"});
        } else if (op == kSave) {
            CheckSaved(app, port, request);
        } else if (op == kLoad) {
            CheckLoaded(app, port, request);
        } else {
            CheckSilence({"I app[" + app + "] op[" + op + "]", "E wrong op[" + op + "]"});
        }
        Check(mModel.IsKeptBy(mPlatform), "it keeps something else");
    }

    // A preference of the service, or one that somebody has put there by hand.
    void Put(const std::string& key, const std::string& value)
    {
        mPlatform.SetPref(key, value);
        mModel.Put(key, value);
    }

private:
    void CheckSaved(const std::string& app, const std::string& port, const Message& request)
    {
        const std::string key = app + "+" + TextOf(request, kFace) + kKeyEnd;
        const std::string duration = TextOf(request, kDuration);
        const bool isKept = mModel.HasRoom(app, key, duration);
        if (isKept) mModel.Put(key, duration);
        Message reply = CheckedReply(app, port);
        Check((TextOf(reply, kResult) == "0") == isKept, "it says otherwise than what it did");
        CheckLog(app, request, "saved", duration);
        CheckRest(std::move(reply), request);
    }

    void CheckLoaded(const std::string& app, const std::string& port, const Message& request)
    {
        const auto kept = mModel.Get(app + "+" + TextOf(request, kFace) + kKeyEnd);
        Message reply = CheckedReply(app, port);
        Check((TextOf(reply, kResult) == "0") == kept.has_value(), "it says otherwise than what there is");
        Check(reply.contains(kDuration) && TextOf(reply, kDuration) == kept.value_or(""), "it loads another");
        CheckLog(app, request, "loaded", kept.value_or(""));
        reply.erase(kDuration);
        if (request.contains(kDuration)) reply[kDuration] = request.at(kDuration);
        CheckRest(std::move(reply), request);
    }

    Message CheckedReply(const std::string& app, const std::string& port) const
    {
        const auto sent = mPlatform.Sent();
        Check(sent.size() == 1, "it does not answer once");
        Check(sent[0].appId == app && sent[0].port == port && !sent[0].trusted, "it answers somebody else");
        Check(sent[0].senderPort == kPort, "it answers from another port");
        Check(sent[0].message.contains(kResult), "its answer has no result");
        return sent[0].message;
    }

    static void CheckRest(Message reply, const Message& request)
    {
        reply.erase(kResult);
        if (request.contains(kResult)) reply[kResult] = request.at(kResult);
        Check(reply == request, "its answer is not the request");
    }

    void CheckLog(const std::string& app, const Message& request, const std::string& done,
                  const std::string& duration) const
    {
        CheckLines({"I app[" + app + "] op[" + TextOf(request, kOp) + "]",
                    "I watchface[" + app + "] " + done + " duration[" + duration + "]"});
    }

    void CheckSilence(const Strings& lines) const
    {
        Check(mPlatform.Sent().empty(), "it answers");
        CheckLines(lines);
    }

    void CheckLines(const Strings& lines) const
    {
        const Strings logged = mPlatform.LogTexts();
        Check(logged.size() == lines.size(), "it logs more or less");
        for (std::size_t i = 0; i < lines.size(); ++i) {
            Check(lines[i].size() > kShownOfALine || lines[i] == logged[i], "it logs something else");
        }
    }

    MemoryPlatform::Platform mPlatform;
    WatchfaceService::EvaluationHelper mStore;
    Model mModel;
};

enum class Step { kAsk, kSaveMany, kPut, kFill, kMaxValue = kFill };

void SaveMany(FuzzedDataProvider& input, Conversation* conversation)
{
    const std::string app = input.PickValueInArray(kApplications);
    const std::string duration = AnyText(input);
    for (std::size_t face = input.ConsumeIntegralInRange<std::size_t>(0, kMostInARow); face > 0; --face) {
        conversation->Ask(app, "back",
                          {
                              {kOp,       kSave               },
                              {kFace,     std::to_string(face)},
                              {kDuration, duration            }
        });
    }
}

// As many entries as an earlier life of the service may have left, and some more.
void Fill(FuzzedDataProvider& input, Conversation* conversation)
{
    const std::size_t count = input.PickValueInArray(kOthersEntries);
    const std::string duration = AnyText(input);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string app = "com.example.x" + std::to_string(i / kMostEntriesOfOne);
        conversation->Put(app + "+" + std::to_string(i) + kKeyEnd, duration.substr(0, i));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Conversation conversation;
    for (std::size_t steps = 0; input.remaining_bytes() > 0 && steps < kMostSteps; ++steps) {
        const std::string app = input.PickValueInArray(kApplications);
        switch (input.ConsumeEnum<Step>()) {
            case Step::kAsk:
                conversation.Ask(app, input.ConsumeIntegral<uint8_t>() ? "back" : "", AnyRequest(input));
                break;
            case Step::kSaveMany:
                SaveMany(input, &conversation);
                break;
            case Step::kFill:
                Fill(input, &conversation);
                break;
            case Step::kPut:
                conversation.Put(app + AnyText(input) + (input.ConsumeBool() ? kKeyEnd : ""), AnyText(input));
                break;
        }
    }
    return 0;
}
