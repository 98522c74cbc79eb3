// Messages as anybody may send them to the service's port, one after another, while time passes, peers come
// and go, other programs write keys, and the service begins anew. Kinds and keys are those of the vocabulary,
// now and then another; values are usual ones, ways out of the areas, or any text. The model says what each
// message may lead to: whom it tells what, which keys it writes, which files it changes; and that nobody else
// is heard.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "data-util.h"
#include "handles.h"
#include "memory-platform.h"
#include "peer-messages-model.h"
#include "service-msg-control.h"
#include "service-watchface-manager.h"

namespace {

namespace fs = std::filesystem;

using MemoryPlatform::Message;
using MemoryPlatform::Strings;

constexpr char kPort[] = "watchface-service::localport";
constexpr std::size_t kMostSteps = 16, kMostOfAText = 24;
constexpr double kLongTime = 5;  // seconds

constexpr const char* kSenders[] = {"com.corvane.watch-utils.service",
                                    "com.corvane.w-home",
                                    "com.corvane.w-manager-service",
                                    "com.corvane.watchface-editor",
                                    "com.corvane.watch-utils.setting-list",
                                    "com.corvane.watchface",
                                    "com.corvane.worldclock-map",
                                    "com.corvane.worldclock-city-detail",
                                    "com.corvane.watchface-capture",
                                    "com.corvane.watchface-service",
                                    "org.example.stranger",
                                    ""};

struct PeerPort {
    const char* app;
    const char* port;
};
constexpr PeerPort kPeerPorts[] = {
    {"com.corvane.watchface-capture",        "watchface-capture::localport"  },
    {"com.corvane.watchface-editor",         "watch-face-editor::localport"  },
    {"com.corvane.watch-utils.setting-list", "clocksetting::localport"       },
    {"com.corvane.w-home",                   "w-home::localport"             },
    {"com.corvane.w-manager-service",        "w-manager-service::localport"  },
    {"com.corvane.watch-utils.service",      "watch-utils-service::localport"},
};

// Which keys a kind of message has a use for.
struct Kind {
    const char* type;
    std::vector<const char*> keys;
};
const Kind kKinds[] = {
    {"watch-idle-changed",               {"pkgid", "operation"}                                       },
    {"watch-setting-created",            {"pkgid", "data/xml_data", "data/label", "data/icon_path"}   },
    {"watch-setting-updated",            {"pkgid", "data/xml_data", "data/label", "data/icon_path"}   },
    {"watch-setting-deleted",            {"pkgid", "data/xml_data"}                                   },
    {"watch-capture-finished",           {"pkgid"}                                                    },
    {"watch-icu-convert",                {"data/skeleton", "data/timestamp", "data/bestpattern"}      },
    {"watch-dual-clock-data",            {"pkgid", "group/name", "city"}                              },
    {"watch-prepare-update-world-clock", {"pkgid"}                                                    },
    {"watch-setting-update-world-clock",
     {"data/worldclock/complication_name", "data/worldclock/timezone", "data/worldclock/timezone_path",
      "data/worldclock/cityname", "data/worldclock/country", "data/xml_data"}                         },
    {"watch-bg-add",                     {"bg_type", "bg_list", "watch-bg-pending", "watch-bg-direct"}},
    {"watch-bg-del",                     {"bg_type", "bg_list", "watch-bg-pending", "watch-bg-direct"}},
    {"watch-bg-save",                    {"bg_type", "bg_list"}                                       },
    {"watch-bg-cancel",                  {"bg_type", "bg_list"}                                       },
    {"watch-req-watchlists",             {"pkgid"}                                                    },
    {"watch",                            {"pkgid", "result_xml", "operation", "message"}              },
    {"image",                            {"file_path", "file_name", "bg_type", "operation", "message"}},
    {"",                                 {"pkgid", "data/xml_data", "operation", "message"}           },
};

constexpr char kFace[] =
    R"(<face-result format="1" id="com.corvane.watchface-mirel-c1" version="1" width="90" height="90" shape="round"
 default-language="en" preview-time="10:08:36" title-key="t">
<strings language="en"><string key="t">T</string></strings>
<scene><slot name="city" group="g" label-key="t" role="dial" x="9" y="9" width="60" height="40" color="#FFFFFF">
<offer source="worldclock" city="Tokyo" timezone-path="Asia/Tokyo"/><fallback source="empty"/></slot></scene></face-result>)";

// The values that a key usually has, and worse ones.
class Words {
public:
    explicit Words(const MemoryPlatform::Platform& platform, const std::string& outside)
    {
        const std::string theme = platform.Trusted("theme/");
        const Strings faces{"com.corvane.watchface-mirel-c1",
                            "com.corvane.watchface-mirel-u1",
                            "com.corvane.watchface-kelp-u1",
                            "com.corvane.watchface-mirel-e1",
                            "own",
                            "link",
                            "a/b",
                            "..",
                            "../../../../../../outside",
                            "/"};
        const Strings pictures{outside + "/cat.png",
                               outside + "/dog.png",
                               outside + "/none.png",
                               outside,
                               theme + "GalleryBackgrounds/U1/cat.png",
                               "cat.png",
                               "../Backgrounds/bear.png",
                               "/",
                               ".."};
        mWords = {
            {"pkgid",                             faces                                            },
            {"data/xml_data",                     {kFace}                                          },
            {"result_xml",                        {kFace}                                          },
            {"data/label",                        {"Face"}                                         },
            {"data/icon_path",                    pictures                                         },
            {"bg_list",                           pictures                                         },
            {"file_path",                         pictures                                         },
            {"bg_type",
             {"watch-bg-gallery-u1", "watch-bg-gallery", "watch-bg-digital", "watch-bg-gallery-link",
              "watch-bg-gallery-../../../..", "watch-bg-gallery-a/b"}                              },
            {"watch-bg-pending",                  {"true"}                                         },
            {"watch-bg-direct",                   {"true"}                                         },
            {"data/skeleton",                     {"yMd"}                                          },
            {"data/timestamp",                    {"1", "-1000", "1798761600000"}                  },
            {"group/name",                        {"zone", "half"}                                 },
            {"data/worldclock/complication_name", {"city"}                                         },
            {"data/worldclock/timezone_path",     {"Asia/Seoul"}                                   },
            {"operation",                         {"corvane_cloud_restore", "corvane_cloud_backup"}},
            {"message",                           {"restore_start", "restore_finished"}            },
        };
    }

    const Strings& Of(const std::string& key) const
    {
        static const Strings kOther{"x"};
        const auto it = mWords.find(key);
        return it == mWords.end() ? kOther : it->second;
    }

private:
    std::map<std::string, Strings> mWords;
};

// No text of a message has a NUL inside.
std::string AnyText(FuzzedDataProvider& input)
{
    std::string text = input.ConsumeRandomLengthString(kMostOfAText);
    std::ranges::replace(text, '\0', '0');
    return text;
}

std::string AnyValue(FuzzedDataProvider& input, const Words& words, const std::string& key)
{
    const Strings& usual = words.Of(key);
    const auto choice = input.ConsumeIntegralInRange<std::size_t>(0, usual.size() + 1);
    if (choice > usual.size()) return AnyText(input);
    std::string text = usual[choice == usual.size() ? 0 : choice];
    if (choice < usual.size() || text.empty()) return text;
    // One that is damaged.
    const std::size_t at = input.ConsumeIntegralInRange<std::size_t>(0, text.size() - 1);
    if (input.ConsumeBool()) return text.substr(0, at);
    return text.replace(at, 1, AnyText(input));
}

void AddAny(FuzzedDataProvider& input, const Words& words, Message* message, const std::string& key)
{
    enum Form { kAbsent, kArray, kText, kMaxValue = 7 };
    switch (input.ConsumeIntegralInRange<int>(0, kMaxValue)) {
        case kAbsent:
            return;
        case kArray: {
            Strings values(input.ConsumeIntegralInRange<std::size_t>(0, 3));
            for (std::string& value : values) value = AnyValue(input, words, key);
            (*message)[key] = values;
            return;
        }
        default:
            (*message)[key] = AnyValue(input, words, key);
    }
}

Message AnyMessage(FuzzedDataProvider& input, const Words& words)
{
    Message message;
    const Kind& kind = kKinds[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kKinds) - 1)];
    if (*kind.type) message["type"] = kind.type;
    for (const char* key : kind.keys) AddAny(input, words, &message, key);
    const auto more = input.ConsumeIntegralInRange<int>(0, 15);
    if (more == 1) message[AnyText(input)] = AnyText(input);
    if (more == 2) AddAny(input, words, &message, "type");
    if (more == 3) AddAny(input, words, &message, "status");
    return message;
}

// A folder of the platform's, and beside its areas what nobody may touch.
class Watch {
public:
    Watch()
        : mFolder(fs::path(mPlatform.Root()).parent_path()),
          mOutside(mFolder + "/outside"),
          mWords(mPlatform, mOutside)
    {
        Furnish();
        mModel = std::make_unique<PeerMessages::Model>(mPlatform, mFolder);
        Start();
    }

    const Words& TheWords() const { return mWords; }

    void Deliver(const std::string& sender, const Message& message)
    {
        Begin();
        mPlatform.Deliver(kPort, sender, message);
        Settle();
        mModel->CheckMessage(sender, message);
    }
    void DeliverNothing(const std::string& sender)
    {
        Begin();
        mPlatform.DeliverNothing(kPort, sender);
        Settle();
        mModel->CheckQuiet();
    }
    void Advance(double seconds)
    {
        Begin();
        mPlatform.Advance(seconds);
        mModel->CheckQuiet();
    }
    void ReplyToLaunch()
    {
        Begin();
        mPlatform.ReplyToLaunch();
        Settle();
        mModel->CheckQuiet();
    }
    void Restart()
    {
        Begin();
        // What waits for a reply knows the manager.
        while (mPlatform.ReplyToLaunch()) Settle();
        mControl.reset();
        Start();
        Settle();
        mModel->ForgetHeld();
        mModel->CheckQuiet();
    }
    void SetPort(const PeerPort& peer, bool up) { mPlatform.SetPortUp(peer.app, peer.port, up); }
    void SetCurrent(const std::string& clock, const std::string& face)
    {
        mPlatform.SetKey("db/wms/clocks_set_idle", clock);
        mPlatform.SetKey("file/private/com.corvane.watchface/watchface_name", face);
    }

private:
    void Furnish()
    {
        // Else nothing but refusals would be tried.
        static const bool isGood =
            WatchfaceService::CStringPtr(data_util_resultxml_memory_converter(kFace)) != nullptr;
        if (!isGood) std::abort();
        for (const std::string name : {"com.corvane.watchface-mirel-c1", "com.corvane.watchface-mirel-u1"}) {
            mPlatform.WriteFile(mPlatform.RO("watchlist/" + name + "/" + name + "_result.xml"), kFace);
            mPlatform.WriteFile(mPlatform.RO("watchlist/" + name + "/watchface.xml"), "<watchface/>");
        }
        mPlatform.WriteFile(mPlatform.RO("watchlist/com.corvane.watchface-mirel-e1/without_result_xml"), "");
        mPlatform.WriteFile(mPlatform.RW("watchlist/own/own_result.xml"), kFace);
        mPlatform.WriteFile(mPlatform.Trusted("theme/GalleryBackgrounds/U1/cat.png"), "old cat");
        mPlatform.WriteFile(mPlatform.Trusted("theme/Backgrounds/bear.png"), "old bear");
        mPlatform.WriteFile(mPlatform.Root() + "/apps/org.example.other/shared/data/kept", "other's");
        for (const char* name : {"cat.png", "dog.png"}) mPlatform.WriteFile(mOutside + "/" + name, name);
        fs::create_symlink(mOutside, mPlatform.RW("watchlist/link"));
        fs::create_symlink(mOutside, mPlatform.Trusted("theme/GalleryBackgrounds/LINK"));
        for (const char* field : {"timezonePath", "timezone", "city", "country"}) {
            mPlatform.SetPref("own-zone-" + std::string(field), field);
        }
        mPlatform.SetPref("own-zone-updatedMode", 2);
        mPlatform.SetPref("own-half-city", 3);
        mPlatform.SetPref("own-half-country", "L");
        mPlatform.SetPref("own-half-updatedMode", 1);
        for (const PeerPort& peer : kPeerPorts) SetPort(peer, true);
    }
    void Start()
    {
        mControl.reset();
        mManager = std::make_shared<WatchfaceService::WatchfaceManager>();
        mControl = std::make_unique<WatchfaceService::MsgControl>(mManager);
    }
    void Begin()
    {
        mWorkersBefore = mWorkers;
        mModel->Begin();
    }
    // Also what starts the capture application is over.
    void Settle()
    {
        mPlatform.RunUntilIdle();
        const auto started = std::ranges::count(mPlatform.LogTexts(), "E mLaunchCaptureAppThread created!!");
        mWorkers = mWorkersBefore + static_cast<int>(started);
        mPlatform.WaitForWorkersEnd(mWorkers);
    }

    MemoryPlatform::Platform mPlatform;
    const std::string mFolder, mOutside;
    const Words mWords;
    std::unique_ptr<PeerMessages::Model> mModel;
    std::shared_ptr<WatchfaceService::WatchfaceManager> mManager;
    std::unique_ptr<WatchfaceService::MsgControl> mControl;
    int mWorkers = 0, mWorkersBefore = 0;
};

void TakeStep(FuzzedDataProvider& input, Watch* watch)
{
    enum Step { kNothing, kAdvance, kPeer, kCurrent, kRestart, kReply, kMaxValue = 15 };
    switch (input.ConsumeIntegralInRange<int>(0, kMaxValue)) {
        case kNothing:
            return watch->DeliverNothing(input.PickValueInArray(kSenders));
        case kAdvance:
            return watch->Advance(input.ConsumeFloatingPointInRange<double>(0, kLongTime));
        case kPeer: {
            const auto which = input.ConsumeIntegralInRange<std::size_t>(0, std::size(kPeerPorts) - 1);
            return watch->SetPort(kPeerPorts[which], input.ConsumeBool());
        }
        case kCurrent:
            return watch->SetCurrent(input.ConsumeBool() ? "com.corvane.watchface" : AnyText(input),
                                     AnyValue(input, watch->TheWords(), "pkgid"));
        case kRestart:
            return watch->Restart();
        case kReply:
            return watch->ReplyToLaunch();
        default: {
            const std::string sender = input.PickValueInArray(kSenders);
            return watch->Deliver(sender, AnyMessage(input, watch->TheWords()));
        }
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
