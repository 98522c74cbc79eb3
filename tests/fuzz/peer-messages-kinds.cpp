// What peers ask for, kind by kind.

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "peer-messages-model.h"

namespace PeerMessages {

namespace {

constexpr char kTargetPref[] = "wfs-watch-name-world-clock-update";

}  // namespace

const Model::Kind Model::kKinds[] = {
    {"watch-icu-convert",                &Model::Dates       },
    {"watch-idle-changed",               &Model::CurrentFace },
    {"watch-setting-created",            &Model::Document    },
    {"watch-setting-updated",            &Model::Document    },
    {"watch-setting-deleted",            &Model::Deletion    },
    {"watch-dual-clock-data",            &Model::StoredClock },
    {"watch-prepare-update-world-clock", &Model::Announcement},
    {"watch-setting-update-world-clock", &Model::WorldClock  },
    {"watch-bg-add",                     &Model::Addition    },
    {"watch-bg-del",                     &Model::Removal     },
    {"watch-bg-save",                    &Model::Save        },
    {"watch-bg-cancel",                  &Model::Cancellation},
};

Expected Model::ExpectedOfPeer()
{
    const std::string type = Text("type");
    if (type.empty()) return {{Replied(WithoutXml(false), false)}};
    const auto* kind = std::ranges::find_if(kKinds, [&](const Kind& k) { return type == k.type; });
    if (!MaySend(mSender) || kind == std::end(kKinds)) return {};
    return (this->*kind->expect)();
}

Expected Model::Dates()
{
    Outcome outcome;
    const std::string date = DateOf(std::strtoll(Text("data/timestamp").c_str(), nullptr, 10));
    if (!Text("data/skeleton").empty() && !date.empty()) {
        outcome.told.push_back({
            kManager, {{"type", "watch-icu-convert"}, {"formattedstring", date}}
        });
    }
    return {{outcome}};
}

Expected Model::CurrentFace()
{
    Outcome outcome;
    outcome.stores.push_back(std::string("pref set ") + kRequesterPref + "=" + mSender);
    AddSetFace(&outcome, Name());
    if (IsLocalEditor(mSender) && !Name().empty()) {
        outcome.told.push_back({
            kManager, {{"type", "watch-idle-changed"}, {"pkgid", Name()}}
        });
    }
    return {{outcome}};
}

Expected Model::Document()
{
    const std::string type = Text("type"), face = Name(), preview = FaceFile(face, face + ".png");
    const bool isSupplied = !Text("data/icon_path").empty();
    Message reply = WithoutXml(true);
    reply["data/icon_path"] = preview;
    Outcome success = Replied(reply, true);
    if (mClock == kViewer && mFace == face) AddSetFace(&success, face);
    if (IsLocalEditor(mSender)) {
        Message notice{
            {"type",          type                 },
            {"pkgid",         face                 },
            {"data/xml_data", Text("data/xml_data")}
        };
        if (!Text("data/label").empty()) notice["data/label"] = Text("data/label");
        if (isSupplied) notice["data/icon_path"] = preview;
        success.told.emplace_back(kManager, notice);
    }
    if (type == "watch-setting-updated" && mSender == kManager) {
        success.told.push_back({
            kEditor, {{"type", type}, {"pkgid", face}}
        });
    }
    const auto effect = [this, face](bool isDone) {
        if (isDone) return RequireStored(face, Text("data/xml_data"));
        Require(!HasNewFiles(), "a refused document changes a file");
    };
    const Change change{{Relative(FaceFile(face, ""))}, true, false};
    if (face.empty() || Text("data/xml_data").empty()) return {{Replied(WithoutXml(false), false)}};
    return {
        {success, Replied(WithoutXml(false), false)},
        change, effect
    };
}

Expected Model::Deletion()
{
    const std::string face = Name();
    const Message notice{
        {"type",  "watch-setting-deleted"},
        {"pkgid", face                   }
    };
    Outcome success = Replied(WithoutXml(true), true), failure = Replied(WithoutXml(false), false);
    for (const std::string& listener : ListenersToDeletions()) {
        failure.told.emplace_back(listener, notice);
        if (!IsLocalEditor(mSender)) success.told.emplace_back(listener, notice);
    }
    if (IsLocalEditor(mSender)) success.told.emplace_back(kManager, notice);
    const auto effect = [this, face](bool isDone) {
        const bool isThere = mAfter.contains(Relative(FaceFile(face, "")));
        const bool wasThere = mBefore.contains(Relative(FaceFile(face, "")));
        Require(isDone ? wasThere && !isThere : wasThere == isThere, "its answer to a deletion is not so");
    };
    if (face.empty()) return {{Replied(WithoutXml(false), false)}};
    Strings below{Relative(FaceFile(face, ""))};
    if (face == kGalleryFace) below.push_back(Relative(Pictures(kGalleryU1)));
    return {
        {success, failure},
        { below,  false,    true},
        effect
    };
}

Expected Model::StoredClock()
{
    constexpr const char* kFields[] = {"timezonePath", "timezone", "city", "country"};
    const std::string prefix = Name() + "-" + Text("group/name") + "-";
    Message fields;
    if (!Name().empty() && !Text("group/name").empty()) {
        for (const char* field : kFields) {
            const auto stored = mPrefs.find(prefix + field);
            if (stored == mPrefs.end()) continue;
            if (const auto* text = std::get_if<std::string>(&stored->second)) fields[field] = *text;
        }
        const auto mode = mPrefs.find(prefix + "updatedMode");
        const auto* number = mode == mPrefs.end() ? nullptr : std::get_if<int>(&mode->second);
        if (number) fields["updatedMode"] = std::to_string(*number);
    }
    const bool isComplete = fields.size() == std::size(kFields) + 1;
    Message reply = Whole(isComplete);
    for (const auto& [field, text] : fields) reply[field] = text;
    return {{Replied(reply, isComplete)}};
}

Expected Model::Announcement()
{
    Outcome outcome;
    outcome.stores.push_back(std::string("pref set ") + kTargetPref + "=" + mFace);
    return {{outcome}};
}

Expected Model::WorldClock()
{
    const auto target = mPrefs.find(kTargetPref);
    const auto* text = target == mPrefs.end() ? nullptr : std::get_if<std::string>(&target->second);
    const std::string face = text ? *text : "";
    Outcome success = Replied(WithoutXml(true), true);
    if (mClock == kViewer && mFace == face) AddSetFace(&success, face);
    Expected expected{
        {success, Replied(WithoutXml(false), false)}
    };
    // A face that is found nowhere, as far as a name of one component tells.
    const bool isFound = HasFile(mBefore, FaceFile(face, face + "_result.xml"));
    if (!isFound) expected.outcomes.push_back({false});
    if (face.empty()) expected.outcomes = {isFound ? Replied(WithoutXml(false), false) : Outcome{false}};
    expected.change = {{Relative(FaceFile(face, ""))}, true, !isFound};
    expected.effect = [this, face](bool isDone) {
        if (isDone && IsPlain(face))
            Require(HasFile(mAfter, FaceFile(face, "watchface.xml")), "a world clock leads to no document");
    };
    return expected;
}

Expected Model::Addition()
{
    const std::string bgType = Text("bg_type"), source = Text("bg_list");
    const bool isGallery = bgType.starts_with(kGallery);
    const bool isHeld = isGallery && Text("watch-bg-pending") == "true";
    const bool isDirect = isGallery && !isHeld && Text("watch-bg-direct") == "true";
    const std::string name = LastComponent(source), place = Pictures(bgType) + name;
    Outcome success = Replied(Whole(true), true);
    if (IsLocalEditor(mSender)) {
        Message notice = mMessage;
        if (!isDirect) notice["bg_list"] = place;
        success.told.emplace_back(kManager, notice);
    }
    if (isDirect) return {{success}};
    const auto effect = [this, bgType, place, name, isHeld](bool isDone) {
        Require(isDone ? HasFile(mAfter, place) : !HasNewFiles(), "its answer to an addition is not so");
        if (isDone && isHeld) mHeld[PrefixOf(bgType)].added.push_back(name);
    };
    Expected expected{
        {success,                      Replied(Whole(false), false)},
        {{Relative(Pictures(bgType))}, true,                 false },
        effect
    };
    if (source.empty()) expected.outcomes = {Replied(Whole(false), false)};
    expected.wasDone = [this, source, place] {
        const auto bytes = [this](const std::string& path) { return mAfter.at(Relative(path)); };
        return HasNewFiles() || (source.starts_with(mFolder + "/") && HasFile(mAfter, source) &&
                                 HasFile(mAfter, place) && bytes(place) == bytes(source));
    };
    return expected;
}

void Model::RequireGone(const std::string& bgType, const Strings& names) const
{
    for (const std::string& name : names) {
        Require(!IsPlain(name) || !HasFile(mAfter, Pictures(bgType) + name), "a removed picture is there");
    }
}

Expected Model::Removal()
{
    const std::string bgType = Text("bg_type");
    const bool isGallery = bgType.starts_with(kGallery);
    const bool isHeld = isGallery && Text("watch-bg-pending") == "true";
    const bool isDirect = isGallery && !isHeld && Text("watch-bg-direct") == "true";
    Message notice = mMessage;
    Strings names;
    if (const auto it = notice.find("bg_list"); it != notice.end()) {
        if (auto* path = std::get_if<std::string>(&it->second)) {
            *path = LastComponent(*path);
            names.push_back(*path);
        } else {
            for (std::string& one : std::get<Strings>(it->second)) names.push_back(one = LastComponent(one));
        }
    }
    if (!isDirect && names.empty()) return {{Replied(Whole(false), false)}};
    Expected expected{{Replied(Whole(true), true)}};
    if (!isHeld && IsLocalEditor(mSender)) expected.outcomes.front().told.emplace_back(kManager, notice);
    if (isDirect) return expected;
    if (isHeld) {
        Strings& held = mHeld[PrefixOf(bgType)].removed;
        held.insert(held.end(), names.begin(), names.end());
        return expected;
    }
    expected.change = {{Relative(Pictures(bgType))}, false, true};
    expected.effect = [this, bgType, names](bool) { RequireGone(bgType, names); };
    return expected;
}

// Of a save the held removals, of a cancellation the held additions.
Expected Model::Ended(Strings Held::*which)
{
    const std::string prefix = PrefixOf(Text("bg_type"));
    const std::string bgType = kGallery + (prefix.empty() ? "" : "-" + prefix);
    const Held held = std::exchange(mHeld[prefix], {});
    const Strings names = held.*which;
    Expected expected{{{}}};
    Outcome& outcome = expected.outcomes.front();
    if (!names.empty()) {
        outcome.told.push_back({
            kManager, {{"type", "watch-bg-del"}, {"bg_type", kGallery}, {"bg_list", names}}
        });
    }
    for (auto& reply : Replied(Whole(true), true).told) outcome.told.push_back(reply);
    for (const std::string& name : names) {
        if (IsPlain(name)) expected.change.below.push_back(Relative(Pictures(bgType) + name));
    }
    expected.change.removes = true;
    expected.effect = [this, bgType, names](bool) { RequireGone(bgType, names); };
    return expected;
}

}  // namespace PeerMessages
