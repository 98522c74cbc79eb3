#include "peer-messages-model.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "common-util-i18n.h"
#include "common-util-ipc-control.h"
#include "unique-fd.h"

namespace PeerMessages {

namespace {

using MemoryPlatform::ToText;

struct Peer {
    const char* id;
    const char* port;
    bool isLocalEditor;
};

// Who can be told something, and where: the first three of what others delete, the first four by their id.
constexpr Peer kPeers[] = {
    {"com.corvane.watchface-editor",         "watch-face-editor::localport",   true },
    {"com.corvane.watch-utils.setting-list", "clocksetting::localport",        true },
    {"com.corvane.w-home",                   "w-home::localport",              true },
    {"com.corvane.w-manager-service",        "w-manager-service::localport",   false},
    {"com.corvane.watch-utils.service",      "watch-utils-service::localport", false},
    {"com.corvane.watchface-capture",        "watchface-capture::localport",   false},
};
constexpr std::size_t kToldOfDeletions = 3, kReachedByTheirId = 4;
constexpr const char* kOtherSenders[] = {"com.corvane.watchface", "com.corvane.worldclock-map",
                                         "com.corvane.worldclock-city-detail"};

constexpr char kCapture[] = "com.corvane.watchface-capture";
constexpr char kClockKey[] = "db/wms/clocks_set_idle";
constexpr char kFaceKey[] = "file/private/com.corvane.watchface/watchface_name";
constexpr std::size_t kLongestPlainName = 128;

const Peer* FindPeer(const std::string& id)
{
    const auto* peer = std::ranges::find_if(kPeers, [&](const Peer& p) { return id == p.id; });
    return peer == std::end(kPeers) ? nullptr : peer;
}

bool IsBelow(const std::string& path, const std::string& folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

std::string Shown(const Told& told)
{
    std::string text;
    for (const auto& [to, message] : told) text += "\n  " + to + " " + ToText(message);
    return text.empty() ? "\n  nothing" : text;
}

std::string ReadAll(int fd)
{
    char buffer[4096];
    std::string bytes;
    for (ssize_t n = 0; (n = read(fd, buffer, sizeof buffer)) > 0;) {
        bytes.append(buffer, static_cast<std::size_t>(n));
    }
    return bytes;
}

void AddFolder(int parent, const char* name, const std::string& path, Tree* tree)
{
    DIR* folder = fdopendir(openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const int fd = folder ? dirfd(folder) : -1;
    while (const dirent* entry = folder ? readdir(folder) : nullptr) {
        const std::string_view entryName = entry->d_name;
        if (entryName == "." || entryName == "..") continue;
        const std::string below = path + entry->d_name;
        if (entry->d_type == DT_LNK) {
            char target[PATH_MAX];
            const ssize_t n = readlinkat(fd, entry->d_name, target, sizeof target);
            (*tree)[below] = "@" + std::string(target, n > 0 ? static_cast<std::size_t>(n) : 0);
        } else if (entry->d_type == DT_DIR) {
            (*tree)[below] = "/";
            AddFolder(fd, entry->d_name, below + "/", tree);
        } else {
            const Platform::UniqueFd file(openat(fd, entry->d_name, O_RDONLY | O_CLOEXEC));
            (*tree)[below] = "=" + ReadAll(file.Get());
        }
    }
    if (folder) closedir(folder);
}

Tree TreeOf(const std::string& folder)
{
    Tree tree;
    AddFolder(AT_FDCWD, folder.c_str(), "", &tree);
    std::erase_if(tree, [](const auto& one) { return IsBelow(one.first, "root/common"); });  // the locks
    return tree;
}

}  // namespace

// Words

bool IsReached(const std::string& id)
{
    const Peer* peer = FindPeer(id);
    return peer && peer < kPeers + kReachedByTheirId;
}

bool MaySend(const std::string& id)
{
    return IsReached(id) || id == kCapture || std::ranges::find(kOtherSenders, id) != std::end(kOtherSenders);
}

bool IsLocalEditor(const std::string& id)
{
    const Peer* peer = FindPeer(id);
    return peer && peer->isLocalEditor;
}

std::string LastComponent(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

bool IsPlain(const std::string& name)
{
    return !name.empty() && name.find('/') == std::string::npos && name != "." && name != ".." &&
           name.size() <= kLongestPlainName;
}

std::string PrefixOf(const std::string& bgType)
{
    const std::size_t at = std::size(kGallery);
    return bgType.size() > at && bgType.starts_with(kGallery)
               ? CommonUtilI18NStringUtility::ToUpper(bgType.substr(at))
               : "";
}

void Order(Told& told)
{
    for (auto& [to, message] : told) {
        for (auto& [key, value] : message) {
            if (auto* strings = std::get_if<Strings>(&value)) std::ranges::sort(*strings);
        }
    }
    std::ranges::sort(told);
}

std::string DateOf(int64_t instant)
{
    return instant % 2 ? std::string() : "at " + std::to_string(instant);
}

Model::Model(MemoryPlatform::Platform& platform, const std::string& folder)
    : mPlatform(platform), mFolder(folder)
{
    platform.ScriptDates(DateOf);
}

void Model::Broken(const std::string& what) const
{
    std::fprintf(stderr, "peer messages: %s\n  %s: %s\n", what.c_str(), mSender.c_str(),
                 ToText(mMessage).c_str());
    for (const auto& line : mPlatform.Timeline()) std::fprintf(stderr, "  %s\n", line.c_str());
    for (const auto& line : mPlatform.LogTexts("platform")) std::fprintf(stderr, "  %s\n", line.c_str());
    std::abort();
}

// Before and after

void Model::Begin()
{
    const auto text = [this](const char* key) {
        const auto value = mPlatform.Key(key);
        const auto* held = value ? std::get_if<std::string>(&*value) : nullptr;
        return held ? *held : std::string();
    };
    mBefore = mAfter.empty() ? TreeOf(mFolder) : std::exchange(mAfter, {});
    mPrefs = mPlatform.Prefs();
    mClock = text(kClockKey);
    mFace = text(kFaceKey);
    mSender.clear();
    mMessage.clear();
    mPlatform.Forget();
}

void Model::CheckMessage(const std::string& sender, const Message& message)
{
    mSender = sender;
    mMessage = message;
    Check(sender == kBackupAgent ? ExpectedOfAgent() : ExpectedOfPeer());
}

void Model::Check(const Expected& expected)
{
    mAfter = TreeOf(mFolder);
    Told told;
    for (const auto& sent : mPlatform.Sent()) {
        const Peer* peer = FindPeer(sent.appId);
        Require(peer && sent.port == peer->port && sent.trusted, "it speaks to a stranger");
        if (sent.appId != kCapture) {
            told.emplace_back(sent.appId, sent.message);
        } else {
            Require(sent.message.size() == 1 && sent.message.contains("pkgName"), "an odd capture request");
        }
    }
    const std::string shown = Shown(told);
    const Strings stores = mPlatform.Calls({"key set", "pref set"});
    if (expected.inAnyOrder) Order(told);
    std::vector<const Outcome*> fitting;
    for (const Outcome& outcome : expected.outcomes) {
        if (outcome.told == told && outcome.stores == stores) fitting.push_back(&outcome);
    }
    if (fitting.empty()) {
        std::string wanted;
        for (const Outcome& outcome : expected.outcomes) wanted += Shown(outcome.told) + "\n  or";
        for (const std::string& store : stores) wanted += "\n  " + store;
        Broken("it tells or stores" + shown + "\nand not" + wanted);
    }
    CheckChanges(expected.change, shown);
    if (!expected.effect) return;
    if (fitting.size() == 1)
        expected.effect(fitting.front()->success);
    else if (expected.wasDone)
        expected.effect(expected.wasDone());
}

void Model::CheckChanges(const Change& change, const std::string& told) const
{
    const auto isAllowed = [&](const std::string& path, bool isRemoved) {
        if (!(isRemoved ? change.removes : change.adds)) return false;
        return std::ranges::any_of(change.below, [&](const std::string& folder) {
            const bool isOnTheWay = !isRemoved && IsBelow(folder, path) && mAfter.at(path) == "/";
            return isOnTheWay || IsBelow(path, folder);
        });
    };
    for (const auto& [path, what] : mBefore) {
        if (!mAfter.contains(path) && !isAllowed(path, true))
            Broken("it removes " + path + ", and tells" + told);
    }
    for (const auto& [path, what] : mAfter) {
        const auto before = mBefore.find(path);
        const bool isSame = before != mBefore.end() && before->second == what;
        if (!isSame && !isAllowed(path, false)) Broken("it writes " + path + ", and tells" + told);
    }
}

// Where things are

std::string Model::Relative(const std::string& path) const
{
    std::string normal = std::filesystem::path(path.substr(mFolder.size() + 1)).lexically_normal().string();
    if (normal.ends_with('/')) normal.pop_back();
    return normal;
}

std::string Model::FaceFile(const std::string& face, const std::string& suffix) const
{
    return mPlatform.RW("watchlist/" + face + (face.ends_with('/') ? "" : "/") + suffix);
}

std::string Model::Pictures(const std::string& bgType) const
{
    if (!bgType.starts_with(kGallery)) return mPlatform.Trusted("theme/Backgrounds/");
    const std::string prefix = PrefixOf(bgType);
    return mPlatform.Trusted("theme/GalleryBackgrounds/" + prefix + (prefix.empty() ? "" : "/"));
}

Strings Model::PicturesIn(const std::string& bgType) const
{
    const std::string folder = Relative(Pictures(bgType)) + "/";
    Strings names;
    for (const auto& [path, what] : mBefore) {
        const bool isInIt = path.starts_with(folder) && path.find('/', folder.size()) == std::string::npos;
        if (isInIt && what.front() == '=') names.push_back(path.substr(folder.size()));
    }
    return names;
}

bool Model::HasFile(const Tree& tree, const std::string& path) const
{
    const auto it = tree.find(Relative(path));
    return it != tree.end() && it->second.front() == '=';
}

bool Model::HasNewFiles() const
{
    return std::ranges::any_of(mAfter, [this](const auto& one) {
        const auto before = mBefore.find(one.first);
        return one.second != "/" && (before == mBefore.end() || before->second != one.second);
    });
}

void Model::RequireStored(const std::string& face, const std::string& document) const
{
    if (!IsPlain(face)) return;
    const auto stored = mAfter.find(Relative(FaceFile(face, face + "_result.xml")));
    Require(stored != mAfter.end() && stored->second == "=" + document, "what it accepts is not stored");
    Require(HasFile(mAfter, FaceFile(face, "watchface.xml")), "what it accepts is not made flat");
}

// Messages

std::string Model::Text(const char* key) const
{
    const auto it = mMessage.find(key);
    const auto* text = it == mMessage.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : std::string();
}

Strings Model::ListenersToDeletions() const
{
    Strings listeners;
    for (const Peer& peer : std::vector(kPeers, kPeers + kToldOfDeletions)) {
        if (CommonUtilIPCControl::CheckTrustedRemotePort(peer.id, peer.port)) listeners.emplace_back(peer.id);
    }
    return listeners;
}

Message Model::Whole(bool success) const
{
    Message reply = mMessage;
    reply["status"] = success ? "success" : "fail";
    return reply;
}

Message Model::WithoutXml(bool success) const
{
    Message reply = Whole(success);
    reply.erase("data/xml_data");
    return reply;
}

Outcome Model::Replied(Message reply, bool success) const
{
    Outcome outcome;
    outcome.success = success;
    if (IsReached(mSender)) outcome.told.emplace_back(mSender, std::move(reply));
    return outcome;
}

void Model::AddSetFace(Outcome* outcome, const std::string& face) const
{
    outcome->stores.push_back("key set " + std::string(kClockKey) + "=" + kViewer);
    outcome->stores.push_back("key set " + std::string(kFaceKey) + "=" + face);
}

}  // namespace PeerMessages
