#include "load-messages.h"

#include <stdexcept>

#include "bundle-wire-sdbus.h"
#include "bus-names.h"

namespace Campaign {

namespace {

using TestSupport::Body;
using TestSupport::Header;

constexpr char kMarkerKey[] = "marker";
constexpr unsigned kAllowedPeer = kPhone | kAnsweredPeer | kUnansweredPeer;
constexpr unsigned kHasPort = kPhone | kAnsweredPeer;
constexpr unsigned kAnyone = kAllowedPeer | kAgent | kEvaluationUser;

bool IsPeer(const Sender& sender)
{
    return sender.role != kEvaluationUser;
}

const char* PortFor(const Sender& sender)
{
    return IsPeer(sender) ? kServicePort : kEvaluationPort;
}

std::string To(const char* port, const Sender& sender, const Values& values)
{
    return TestSupport::PortMessage(kService, port, sender.app, sender.port, values, IsPeer(sender));
}

// With a value that brings the sum of keys and values to `bytes`.
Values Grown(Values values, std::size_t bytes)
{
    constexpr std::string_view kKey = "filler";
    std::size_t sum = kKey.size();
    for (const auto& [key, value] : values) sum += key.size() + value.size();
    values.emplace_back(kKey, std::string(bytes > sum ? bytes - sum : 0, 'x'));
    return values;
}

std::string UnknownType(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    return To(kServicePort, sender,
              Grown(
                  {
                      {"type", marker}
    },
                  bytes));
}

std::string Date(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    const Values request{
        {"type",             "watch-icu-convert"     },
        {"data/skeleton",    "yMMMd '" + marker + "'"},
        {"data/timestamp",   "0"                     },
        {"data/bestpattern", "false"                 },
    };
    return To(kServicePort, sender, Grown(request, bytes));
}

std::string NoType(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    return To(kServicePort, sender,
              Grown(
                  {
                      {kMarkerKey, marker}
    },
                  bytes));
}

std::string UpdateWithoutXml(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    const Values update{
        {"type",     "watch-setting-updated"},
        {"pkgid",    "load"                 },
        {kMarkerKey, marker                 },
    };
    return To(kServicePort, sender, Grown(update, bytes));
}

std::string WorldClock(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    const Values request{
        {"type",       "watch-dual-clock-data"},
        {"pkgid",      "load"                 },
        {"group/name", "any"                  },
        {kMarkerKey,   marker                 },
    };
    return To(kServicePort, sender, Grown(request, bytes));
}

std::string CancelPictures(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    const Values cancel{
        {"type",     "watch-bg-cancel"    },
        {"bg_type",  "watch-bg-gallery-u1"},
        {kMarkerKey, marker               },
    };
    return To(kServicePort, sender, Grown(cancel, bytes));
}

std::string PictureInPlace(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    const Values picture{
        {"type",            "watch-bg-add"       },
        {"bg_type",         "watch-bg-gallery-u1"},
        {"bg_list",         "a.png"              },
        {"watch-bg-direct", "true"               },
        {kMarkerKey,        marker               },
    };
    return To(kServicePort, sender, Grown(picture, bytes));
}

// Written to three files before it is answered.
std::string InstalledFace(const Sender& sender, const std::string& marker, std::size_t)
{
    return To(kServicePort, sender,
              {
                  {"type",          "watch-setting-created"     },
                  {"pkgid",         "com.corvane.watchface-load"},
                  {"data/xml_data", sender.resultXml            },
                  {kMarkerKey,      marker                      },
    });
}

// Written to the keys before it is told.
std::string CurrentFace(const Sender& sender, const std::string& marker, std::size_t)
{
    return To(kServicePort, sender,
              {
                  {"type",  "watch-idle-changed"},
                  {"pkgid", marker              },
    });
}

std::string RestoreFinished(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    const Values item{
        {"operation", marker            },
        {"message",   "restore_finished"},
    };
    return To(kServicePort, sender, Grown(item, bytes));
}

Values Evaluation(const std::string& operation, const std::string& face, const std::string& marker)
{
    return {
        {"evaluation-helper-op",             operation},
        {"evaluation-helper-watchface-name", face     },
        {"evaluation-helper-data-duration",  marker   },
        {kMarkerKey,                         marker   },
    };
}

std::string SaveDuration(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    return To(kEvaluationPort, sender,
              Grown(Evaluation("evaluation-helper-op-save-duration", "one", marker), bytes));
}

std::string LoadDuration(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    return To(kEvaluationPort, sender,
              Grown(Evaluation("evaluation-helper-op-load-duration", "one", marker), bytes));
}

std::string WrongOperation(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    return To(kEvaluationPort, sender, Grown(Evaluation(marker, "one", marker), bytes));
}

// A call whose bundle `fill` writes, well or not.
template <typename Fill>
std::string Raw(const Sender& sender, Fill fill)
{
    Body body;
    for (const std::string& text : {std::string(PortFor(sender)), sender.app, sender.port}) body.Text(text);
    body.Array([&] { fill(body); });
    return TestSupport::Layout({Header::kCall, kService, Platform::kPortPath, Platform::kPortInterface,
                                IsPeer(sender) ? "SendTrusted" : "Send", "sssa{sv}"},
                               body);
}

void Text(Body& body, const std::string& key, const std::string& value)
{
    body.Align(8);
    body.Text(key);
    body.Signature("s");
    body.Text(value);
}

std::string Number(const Sender& sender, const std::string& marker, std::size_t)
{
    return Raw(sender, [&](Body& body) {
        Text(body, "type", marker);
        body.Align(8);
        body.Text("number");
        body.Signature("u");
        body.Word(1);
    });
}

std::string KeyTwice(const Sender& sender, const std::string& marker, std::size_t)
{
    return Raw(sender, [&](Body& body) {
        Text(body, "type", marker);
        Text(body, "type", marker);
    });
}

std::string NulInside(const Sender& sender, const std::string& marker, std::size_t)
{
    return Raw(sender, [&](Body& body) {
        body.Align(8);
        body.Text("type");
        body.Signature("ay");
        body.Bytes(marker + std::string("\0x", 2));
    });
}

std::string NoArguments(const Sender& sender, const std::string& marker, std::size_t)
{
    Body body;
    body.Text(marker);
    return TestSupport::Layout({Header::kCall, kService, Platform::kPortPath, Platform::kPortInterface,
                                IsPeer(sender) ? "SendTrusted" : "Send", "s"},
                               body);
}

std::string NoSuchPort(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    return To("no::port", sender,
              Grown(
                  {
                      {"type", marker}
    },
                  bytes));
}

std::string AnothersName(const Sender& sender, const std::string& marker, std::size_t bytes)
{
    const Sender another{"com.corvane.worldclock-city-detail", "", sender.role, ""};
    return To(PortFor(sender), another,
              Grown(
                  {
                      {"type", marker}
    },
                  bytes));
}

std::string TooLarge(const Sender& sender, const std::string& marker, std::size_t)
{
    return To(PortFor(sender), sender,
              Grown(
                  {
                      {"type", marker}
    },
                  Platform::kMostBundleBytes + 1));
}

// clang-format off
constexpr MessageKind kKinds[] = {
    // name                     who                     seen                           share  grows  layout
    {"unknown type",            kAllowedPeer,           kInTheLog,                       200, true,  UnknownType     },
    {"date",                    kAllowedPeer,           kAtTheManager,                   300, true,  Date            },
    {"no type",                 kHasPort,               kAtTheSender,                    100, true,  NoType          },
    {"update without XML",      kHasPort,               kAtTheSender,                    100, true,  UpdateWithoutXml},
    {"world clock",             kHasPort,               kAtTheSender,                    100, true,  WorldClock      },
    {"cancelled pictures",      kHasPort,               kAtTheSender,                    100, true,  CancelPictures  },
    {"picture in place",        kAnsweredPeer,          kAtTheSender | kAtTheManager,    100, true,  PictureInPlace  },
    {"installed face",          kPhone,                 kAtTheSender,                     10, false, InstalledFace   },
    {"current face",            kAnsweredPeer,          kAtTheManager,                    10, false, CurrentFace     },
    {"end of a restore",        kAgent,                 kInTheLog,                       500, true,  RestoreFinished },
    {"duration saved",          kEvaluationUser,        kAtTheSender,                    100, true,  SaveDuration    },
    {"duration loaded",         kEvaluationUser,        kAtTheSender,                    400, true,  LoadDuration    },
    {"wrong operation",         kEvaluationUser,        kInTheLog,                       200, true,  WrongOperation  },
    {"number",                  kAnyone,                kNowhere,                         15, false, Number          },
    {"key twice",               kAnyone,                kNowhere,                         15, false, KeyTwice        },
    {"NUL inside",              kAnyone,                kNowhere,                         15, false, NulInside       },
    {"no arguments",            kAnyone,                kNowhere,                         15, false, NoArguments     },
    {"no such port",            kAnyone,                kNowhere,                         15, true,  NoSuchPort      },
    {"another's name",          kAnyone,                kNowhere,                         15, true,  AnothersName    },
    {"too large",               kAnyone,                kNowhere,                          1, false, TooLarge        },
};
// clang-format on

}  // namespace

std::span<const MessageKind> MessageKinds()
{
    return kKinds;
}

std::string MessageOf(const std::string& name, const Sender& sender, const std::string& marker,
                      std::size_t bytes)
{
    for (const MessageKind& kind : MessageKinds()) {
        if (kind.name == name) return kind.layout(sender, marker, bytes);
    }
    throw std::logic_error("no such kind of message");
}

std::string_view MarkerOf(const RawBus::Message& message)
{
    for (const char* key : {kMarkerKey, "formattedstring", "pkgid"}) {
        const std::string_view value = message.Value(key);
        if (const std::size_t begin = value.find(kMarkerBegin); begin != std::string_view::npos)
            return value.substr(begin);
    }
    return {};
}

}  // namespace Campaign
