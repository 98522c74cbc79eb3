// Launch requests as anybody may send them to the service, on a watch where things go on meanwhile: the
// retail mode comes and goes, settings change, captures are finished, time passes. A model of the requests
// says which lines they leave in the log, what they switch and record, and who may be answered: nobody but
// the last who asked for the reset of a demo unit, once, with "Result" = "OK".

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "memory-platform.h"
#include "watchface-service.h"

namespace {

using MemoryPlatform::Message;
using MemoryPlatform::Strings;

constexpr char kType[] = "wfs/req/type";
constexpr char kOperation[] = "operation";
constexpr char kRetail[] = "retail-mode";
constexpr char kRetailKey[] = "db/retailmode/enabled";
constexpr char kCapture[] = "com.corvane.watchface-capture";
constexpr const char* kShippedFaces[] = {"com.corvane.watchface-mirel-a", "com.corvane.watchface-mirel-b"};

constexpr const char* kTypes[] = {"wfs/type/log_query", "ttrace_enable", "ttrace_disable", "ttrace", ""};
constexpr const char* kOperations[] = {"configuration", "Configuration", ""};
constexpr const char* kModes[] = {"init_watch", "init_watch", "init", ""};
constexpr const char* kLanguages[] = {"en_GB", "de_DE", "ko_KR"};
constexpr std::size_t kMostOfAText = 24, kMostSteps = 40;
constexpr double kLongTime = 60;  // seconds

void Check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "launch requests: %s\n", what);
    std::abort();
}

// No text of a request has a NUL inside.
std::string AnyText(FuzzedDataProvider& input)
{
    std::string text = input.ConsumeRandomLengthString(kMostOfAText);
    std::ranges::replace(text, '\0', '0');
    return text;
}

template <std::size_t count>
void AddAny(FuzzedDataProvider& input, Message* extra, const char* key, const char* const (&usual)[count])
{
    const auto choice = input.ConsumeIntegralInRange<std::size_t>(0, count + 3);
    if (choice < count) (*extra)[key] = usual[choice];
    if (choice == count) (*extra)[key] = AnyText(input);
    if (choice == count + 1) (*extra)[key] = Strings{usual[0], AnyText(input)};
}

Message AnyExtra(FuzzedDataProvider& input)
{
    Message extra;
    AddAny(input, &extra, kType, kTypes);
    AddAny(input, &extra, kOperation, kOperations);
    AddAny(input, &extra, kRetail, kModes);
    if (input.ConsumeBool()) extra[AnyText(input)] = AnyText(input);
    return extra;
}

const std::string* TextOf(const Message& extra, const char* key)
{
    const auto it = extra.find(key);
    return it == extra.end() ? nullptr : std::get_if<std::string>(&it->second);
}
bool Says(const Message& extra, const char* key, const char* value)
{
    const std::string* text = TextOf(extra, key);
    return text && *text == value;
}

std::size_t Count(const Strings& lines, const std::string& line)
{
    return static_cast<std::size_t>(std::ranges::count(lines, line));
}

class Watch {
public:
    Watch()
    {
        for (const std::string name : kShippedFaces) {
            mPlatform.WriteFile(mPlatform.RO("watchlist/" + name + "/without_result_xml"), "");
            mPlatform.WriteFile(mPlatform.RO("watchlist/" + name + "/watchface.xml"), "<watchface/>");
        }
        mPlatform.SetPortUp(kCapture, "watchface-capture::localport");
        mApp = std::make_unique<WatchfaceService::WatchfaceServiceApp>();
        mPlatform.RunUntilIdle();
    }
    ~Watch() { CheckEnd(); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    void Ask(const Message& extra)
    {
        mPlatform.Forget();
        auto request = std::make_unique<MemoryPlatform::ReceivedRequest>(extra);
        mApp->OnAppControl(request->Handle());
        request->Close();
        CheckDone(extra);
        const bool isReset = mIsRetail && Says(extra, kRetail, "init_watch");
        if (!isReset) {
            Check(request->IsAnswered() && request->Result() == APP_CONTROL_RESULT_FAILED &&
                      request->ReplyExtra().empty(),
                  "it answers or keeps what is no reset");
            Check(mPlatform.Calls({"app_control_clone", "launch reply"}).empty(),
                  "it holds what is no reset");
            return;
        }
        Check(mPlatform.Calls({"app_control_clone"}).size() == 1, "it does not hold the reset once");
        mResets.push_back(std::move(request));
        mHeld = true;
        CheckAnswers();
    }

    void SetRetailMode(int value)
    {
        mPlatform.SetKey(kRetailKey, value);
        Run();
        mIsRetail = value != 0;
    }
    void SetLanguage(const std::string& language) { mPlatform.SetLanguage(language), Run(); }
    void Advance(double seconds) { Forget(), mPlatform.Advance(seconds), CheckAnswers(); }
    void Finish(const std::string& face)
    {
        Forget();
        mPlatform.Deliver("watchface-service::localport", kCapture,
                          {
                              {"type",  "watch-capture-finished"},
                              {"pkgid", face                    }
        });
        CheckAnswers();
    }

private:
    void Forget() { mPlatform.Forget(); }
    void Run()
    {
        Forget();
        mPlatform.RunUntilIdle();
        CheckAnswers();
    }

    // The log and what was switched or recorded, of one request.
    void CheckDone(const Message& extra)
    {
        if (Says(extra, kType, "ttrace_enable")) mTrace = true;
        if (Says(extra, kType, "ttrace_disable")) mTrace = false;
        Check(mPlatform.TraceEnabled() == mTrace, "the trace is switched wrong");
        Check(mPlatform.Survey().empty() != Says(extra, kType, "wfs/type/log_query"), "it records wrong");
        const Strings log = mPlatform.LogTexts();
        const std::string* operation = TextOf(extra, kOperation);
        const std::string* mode = TextOf(extra, kRetail);
        const std::string retail = mIsRetail ? "1" : "0";
        if (operation) Check(Count(log, "I operation[" + *operation + "]") == 1, "no line of the operation");
        if (mode)
            Check(Count(log, "I retail-mode[" + *mode + "][" + retail + "]") == 1, "no line of the mode");
        Check(Count(log, "E received watchface configuration operation!!") ==
                  std::size_t{Says(extra, kOperation, "configuration")},
              "it configures wrong");
        Check(Count(log, "E retailmode init_watch received!!") ==
                  std::size_t{mIsRetail && Says(extra, kRetail, "init_watch")},
              "it resets wrong");
        std::size_t unread = 0;
        for (const char* key : {kType, kOperation, kRetail}) unread += !TextOf(extra, key);
        const auto isUnread = [](const std::string& line) {
            return line.starts_with("I app_control_get_extra_data returns -");
        };
        Check(static_cast<std::size_t>(std::ranges::count_if(log, isUnread)) == unread, "it misreads a key");
    }

    // Since Forget(): no answer but one to the last reset, which is held.
    void CheckAnswers()
    {
        const std::size_t replies = mPlatform.Calls({"launch reply"}).size();
        Check(replies <= std::size_t{mHeld}, "it answers more than what it holds");
        if (replies == 1) mHeld = false;
        for (std::size_t i = 0; i < mResets.size(); ++i) {
            const bool isLast = i + 1 == mResets.size();
            const bool wasHeldToTheEnd = mWasAnswered.size() > i && mWasAnswered[i];
            const bool mayBeAnswered = wasHeldToTheEnd || (isLast && !mHeld);
            Check(mResets[i]->IsAnswered() == mayBeAnswered, "it answers another, or none");
            if (mayBeAnswered) CheckOk(*mResets[i]);
        }
        mWasAnswered.resize(mResets.size());
        if (!mResets.empty() && !mHeld) mWasAnswered.back() = true;
    }

    static void CheckOk(const MemoryPlatform::ReceivedRequest& request)
    {
        Check(request.Result() == APP_CONTROL_RESULT_SUCCEEDED, "a reset fails");
        Check(request.ReplyExtra() ==
                  Message{
                      {"Result", "OK"}
        },
              "it answers something else");
    }

    // What is held goes unanswered when the service ends.
    void CheckEnd()
    {
        Forget();
        mApp.reset();
        Check(mPlatform.Calls({"launch reply"}).empty(), "it answers when it ends");
        if (mHeld) {
            Check(mResets.back()->IsAnswered() && mResets.back()->Result() == APP_CONTROL_RESULT_FAILED,
                  "it keeps what it held");
        }
    }

    MemoryPlatform::Platform mPlatform;
    std::vector<std::unique_ptr<MemoryPlatform::ReceivedRequest>> mResets;
    std::vector<bool> mWasAnswered;
    std::unique_ptr<WatchfaceService::WatchfaceServiceApp> mApp;
    bool mIsRetail = false, mTrace = false, mHeld = false;
};

enum class Step { kAsk, kRetailMode, kLanguage, kFinish, kFinishAll, kAdvance, kMaxValue = kAdvance };

void TakeStep(FuzzedDataProvider& input, Watch* watch)
{
    switch (input.ConsumeEnum<Step>()) {
        case Step::kAsk:
            return watch->Ask(AnyExtra(input));
        case Step::kRetailMode:
            return watch->SetRetailMode(input.ConsumeIntegralInRange<int>(-1, 2));
        case Step::kLanguage:
            return watch->SetLanguage(input.PickValueInArray(kLanguages));
        case Step::kFinish:
            return watch->Finish(input.ConsumeBool() ? kShippedFaces[0] : AnyText(input));
        case Step::kFinishAll:
            for (const char* face : kShippedFaces) watch->Finish(face);
            return;
        case Step::kAdvance:
            return watch->Advance(input.ConsumeFloatingPointInRange<double>(0, kLongTime));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Watch watch;
    for (std::size_t steps = 0; input.remaining_bytes() > 0 && steps < kMostSteps; ++steps) {
        TakeStep(input, &watch);
    }
    return 0;
}
