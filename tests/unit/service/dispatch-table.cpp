// Every kind of message from every kind of sender: who gets which message, with which keys, in which order.

// The table is shared with the test of the built programs.

#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <tuple>

#include "a-msg-control.h"

using MemoryPlatform::Message;
using MemoryPlatform::Strings;
using nlohmann::json;
using testing::Combine;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::ValuesIn;

namespace {

constexpr char kFace[] = "com.corvane.watchface-mirel-c1";
constexpr char kDocument[] = "<a/>";

struct Sender {
    std::string appId;
    std::string name;  // in a transcript
    std::string kind;

    friend void PrintTo(const Sender& sender, std::ostream* out) { *out << sender.name; }
};

// A message, what was asked before, and for each kind of sender the transcript of all that leaves.
struct Row {
    std::string name;
    std::vector<Message> before;
    Message message;
    std::map<std::string, Strings> told;

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

const json& Table()
{
    static const json table = json::parse(std::ifstream(DISPATCH_TABLE));
    return table;
}

std::vector<Sender> Senders()
{
    std::vector<Sender> senders;
    for (const json& sender : Table().at("senders"))
        senders.push_back({sender.at("app"), sender.at("name"), sender.at("kind")});
    return senders;
}

Message MessageOf(const json& values)
{
    Message message;
    for (const auto& [key, value] : values.items()) {
        if (value.is_array())
            message[key] = value.get<Strings>();
        else
            message[key] = value.get<std::string>();
    }
    return message;
}

std::vector<Row> Rows()
{
    std::vector<Row> rows;
    for (const json& row : Table().at("rows")) {
        rows.push_back({row.at("name"), {}, MessageOf(row.at("message")), row.at("told")});
        for (const json& message : row.value("before", json::array()))
            rows.back().before.push_back(MessageOf(message));
    }
    return rows;
}

// "SENDER" and the like for what they stand for, wherever they occur.
std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

class AMessageOfAKind : public AMsgControl {
protected:
    AMessageOfAKind()
    {
        platform.SetPortUp(kEditor, "watch-face-editor::localport");
        platform.SetPortUp(kSettingList, "clocksetting::localport");
        platform.SetPortUp(kHome, "w-home::localport");
        platform.SetPortUp(kCapture, kCapturePort);
        platform.ScriptDates([](int64_t) { return "DATE"; });
        platform.WriteFile(Picture(), "picture");
        platform.WriteFile(platform.RW("watchlist/stored/stored_result.xml"), kDocument);
        platform.WriteFile(platform.Trusted("theme/GalleryBackgrounds/U1/old"), "stored");
        platform.SetPref("wfs-watch-name-world-clock-update", "stored");
        platform.SetPref("stored-g-timezonePath", "P");
        platform.SetPref("stored-g-timezone", "T");
        platform.SetPref("stored-g-city", "C");
        platform.SetPref("stored-g-country", "L");
        platform.SetPref("stored-g-updatedMode", 2);
    }

    std::string Picture() const { return platform.Root() + "/pictures/i.png"; }

    void Play(const std::string& sender, Message message)
    {
        for (auto& [key, value] : message) {
            if (auto* text = std::get_if<std::string>(&value)) *text = Meant(*text);
        }
        Deliver(sender, message);
    }

    // A value of the table, or a line of a transcript.
    std::string Meant(const std::string& text) const
    {
        return Replaced(Replaced(Replaced(text, "FACE", kFace), "DOCUMENT", kDocument), "PICTURE", Picture());
    }

    static std::string Name(const std::string& appId)
    {
        for (const Sender& sender : Senders()) {
            if (appId == sender.appId) return sender.name;
        }
        return appId;
    }

    Strings Transcript() const
    {
        Strings lines;
        for (const auto& sent : platform.Sent()) {
            std::string line = Name(sent.appId);
            for (const auto& [key, value] : sent.message) {
                const auto* text = std::get_if<std::string>(&value);
                line += " " + key + "=" + (text ? *text : "[" + Joined(std::get<Strings>(value)) + "]");
            }
            lines.push_back(Replaced(Replaced(line, platform.RW(), "RW:"), platform.Trusted(), "TRUSTED:"));
        }
        return lines;
    }

private:
    static std::string Joined(const Strings& texts)
    {
        std::string all;
        for (const std::string& text : texts) all += (all.empty() ? "" : ",") + text;
        return all;
    }
};

class AMessageFromAPeer : public AMessageOfAKind,
                          public testing::WithParamInterface<std::tuple<Row, Sender>> {};

TEST_P(AMessageFromAPeer, is_told_to_those_whom_it_concerns)
{
    const auto& [row, sender] = GetParam();
    for (const Message& message : row.before) Play(kViewer, message);
    platform.Forget();
    Play(sender.appId, row.message);

    Strings expected = row.told.at(sender.kind);
    for (std::string& line : expected) line = Meant(Replaced(line, "SENDER", sender.name));
    EXPECT_THAT(Transcript(), ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(table, AMessageFromAPeer, Combine(ValuesIn(Rows()), ValuesIn(Senders())),
                         [](const auto& at) {
                             return std::get<0>(at.param).name + "_from_" + std::get<1>(at.param).name;
                         });

class AMessageFromAStranger : public AMessageOfAKind, public testing::WithParamInterface<Row> {};

TEST_P(AMessageFromAStranger, is_told_to_nobody_and_changes_nothing)
{
    const Strings files = platform.Tree(platform.Root());
    const auto prefs = platform.Prefs();
    platform.Forget();
    Play("com.example.app", GetParam().message);
    EXPECT_THAT(platform.Calls(), IsEmpty());
    EXPECT_EQ(platform.Errors().back(), "request from not allowed app[com.example.app]");
    EXPECT_EQ(platform.LogTexts().size(), 2U);
    EXPECT_EQ(platform.Tree(platform.Root()), files);
    EXPECT_EQ(platform.Prefs(), prefs);
}

INSTANTIATE_TEST_SUITE_P(table, AMessageFromAStranger, ValuesIn(Rows()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
