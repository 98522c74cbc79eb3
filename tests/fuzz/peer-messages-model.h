// What the service may do about one message, as docs/messages.md and docs/backup.md tell it: whom it tells
// what (key for key, and in which order), which keys and preferences it writes, and which files it changes.
//
// The model knows what is held of pictures and how far a restore is, and takes everything else from the watch
// as it was before the message. Whether the service could do what it was asked, its answer tells; what the
// answer tells must then be so in the files.
//
// Normal flow: Begin(), the message, CheckMessage(); or Begin(), time or whatever else, CheckQuiet(). What is
// not as it should be is told on stderr, and the process aborts.

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "memory-platform.h"

namespace PeerMessages {

using MemoryPlatform::Message;
using MemoryPlatform::Strings;
using Told = std::vector<std::pair<std::string, Message>>;

// All below a folder by relative path: "/" for a folder, "@" and its target for a link, "=" and its bytes for
// a file.
using Tree = std::map<std::string, std::string>;

// One way in which it may go.
struct Outcome {
    bool success = true;
    Told told = {};
    Strings stores = {};  // "pref set K=V", "key set K=V"
};

// Below which folders files may change, and how.
struct Change {
    Strings below = {};
    bool adds = false, removes = false;
};

struct Expected {
    std::vector<Outcome> outcomes = {{}};
    Change change = {};
    std::function<void(bool success)> effect = {};  // where the answer tells how it went
    bool inAnyOrder = false;
    std::function<bool()> wasDone = {};  // where it tells nobody; without it there is no effect then
};

inline constexpr char kViewer[] = "com.corvane.watchface";
inline constexpr char kEditor[] = "com.corvane.watchface-editor";
inline constexpr char kManager[] = "com.corvane.w-manager-service";
inline constexpr char kBackupAgent[] = "com.corvane.watch-utils.service";
bool IsLocalEditor(const std::string& id);
bool IsReached(const std::string& id);  // by its id alone
bool MaySend(const std::string& id);

inline constexpr char kGallery[] = "watch-bg-gallery";
inline constexpr char kGalleryU1[] = "watch-bg-gallery-u1";
inline constexpr char kGalleryFace[] = "com.corvane.watchface-mirel-u1";
inline constexpr char kRequesterPref[] = "wfs-pref-idle-change-request-from";

std::string DateOf(int64_t instant);  // some cannot be written
std::string LastComponent(const std::string& path);
bool IsPlain(const std::string& name);  // one component, and no odd one
std::string PrefixOf(const std::string& bgType);
void Order(Told& told);  // what a folder lists comes in no order

class Model {
public:
    // The areas of the platform, and all else that must not change, lie below `folder`.
    Model(MemoryPlatform::Platform& platform, const std::string& folder);

    void Begin();
    void CheckMessage(const std::string& sender, const Message& message);
    // Nothing but captures was asked for, and no file changed.
    void CheckQuiet() { Check({}); }
    // The service has begun anew.
    void ForgetHeld() { mHeld.clear(), mRestore = kNoGalleryFace; }

private:
    enum RestoreState { kNoGalleryFace, kGalleryFaceRestored, kOldPicturesRemoved };
    struct Held {
        Strings added, removed;
    };
    struct Kind {
        const char* type;
        Expected (Model::*expect)();
    };
    static const Kind kKinds[];

    Expected ExpectedOfPeer();
    Expected Dates();
    Expected CurrentFace();
    Expected Document();
    Expected Deletion();
    Expected StoredClock();
    Expected Announcement();
    Expected WorldClock();
    Expected Addition();
    Expected Removal();
    Expected Save() { return Ended(&Held::removed); }
    Expected Cancellation() { return Ended(&Held::added); }
    Expected Ended(Strings Held::*names);

    Expected ExpectedOfAgent();
    void AddBackup(Told* told) const;
    Expected Item();
    void RemoveOldPictures(Expected* expected);
    Expected RestoredFace(const std::string& face);
    void RestorePicture(Expected* expected);

    void Check(const Expected& expected);
    void CheckChanges(const Change& change, const std::string& told) const;
    [[noreturn]] void Broken(const std::string& what) const;
    void Require(bool holds, const char* what) const
    {
        if (!holds) Broken(what);
    }

    std::string Text(const char* key) const;
    std::string Name() const { return Text("pkgid"); }
    Strings ListenersToDeletions() const;
    Message Whole(bool success) const;
    Message WithoutXml(bool success) const;
    Outcome Replied(Message reply, bool success) const;
    void AddSetFace(Outcome* outcome, const std::string& face) const;
    void RequireGone(const std::string& bgType, const Strings& names) const;

    std::string Relative(const std::string& path) const;  // without odd components
    std::string FaceFile(const std::string& face, const std::string& suffix) const;
    std::string Pictures(const std::string& bgType) const;
    Strings PicturesIn(const std::string& bgType) const;
    bool HasFile(const Tree& tree, const std::string& path) const;
    bool HasNewFiles() const;
    void RequireStored(const std::string& face, const std::string& document) const;

    MemoryPlatform::Platform& mPlatform;
    const std::string mFolder;
    std::map<std::string, Held> mHeld;  // by prefix
    RestoreState mRestore = kNoGalleryFace;

    Tree mBefore, mAfter;
    std::map<std::string, MemoryPlatform::StoreValue> mPrefs;  // before
    std::string mClock, mFace;                                 // likewise
    std::string mSender;
    Message mMessage;
};

}  // namespace PeerMessages
