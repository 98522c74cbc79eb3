// A service that is sent paths, those who speak with it, and what lies where it must not reach: around its
// areas, above them, beside what a message may change, and in its databases.

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "a-running-service.h"

namespace Campaign {

inline constexpr Identity kFace{"com.example.face", "reply-port"};       // a user of the evaluation store
inline constexpr char kWorldClock[] = "com.corvane.watchface-mirel-c4";  // has one, called "city"

// Folders below the root whose contents messages may change.
inline constexpr char kFaces[] = "apps/com.corvane.watchface/shared/data/watchlist";
inline constexpr char kPictures[] = "apps/com.corvane.watchface/shared/trusted/theme/Backgrounds";
inline constexpr char kGalleries[] = "apps/com.corvane.watchface/shared/trusted/theme/GalleryBackgrounds";
inline constexpr const char* kHomes[] = {kFaces, kPictures, kGalleries};

class PathStage {
public:
    explicit PathStage(const RunningService& service);

    struct Reply {
        bool isTaken = false;
        std::string status;  // of the answer; empty: there was none
    };
    Reply Say(const Identity& from, const Values& values);
    // Likewise; the value under `arrayKey` travels as an array of that one text.
    Reply SayWithArray(const Identity& from, const Values& values, const std::string& arrayKey);

    // Whether the capture application has been asked for that preview, or is before long.
    bool IsAskedFor(const std::string& face);

    // Returns when the service has dealt with what it was told.
    void Settle();

    std::string At(const std::string& pathBelowRoot) const;
    // `path` with SOURCES, a folder of pictures that may be copied, as what it is.
    std::string InSources(const std::string& path) const;
    std::string ShippedPreview(const std::string& face) const;  // its path
    std::string ShippedDocument(const std::string& face) const;
    std::size_t LogSize() const;
    std::string LogFrom(std::size_t offset) const;

    // Links that lead out, in each home, as a program may plant them that writes there.
    void Plant() const;
    // A folder in the place of such a link, until links are planted again.
    void PutFolderForLink(const std::string& path) const;
    // A home as it was at first.
    void Clear(const char* home) const;

    // Whether a row, as "KEYS:key = value" or "PREFERENCES:key = value", was there at the last comparison.
    bool HadRow(const std::string& row) const { return mBefore.contains(row); }

    // Compares with what was there when this was called last: how much has changed that may not, each told.
    // `rows` are the beginnings of those that may.
    int CountChanges(const std::vector<std::string>& rows);

private:
    using Snapshot = std::map<std::string, std::string>;  // what is there, by path; rows

    Reply Await(const Identity& from, const std::string& message);
    std::string Canary() const;
    void SetOut() const;
    bool MayChange(const std::string& path) const;
    Snapshot Look() const;
    static std::vector<std::string> Changes(const Snapshot& before, const Snapshot& now);

    const RunningService& mService;
    TestSupport::TemporaryFolder mSources;
    std::map<std::string, std::unique_ptr<RawBus>> mPeers;
    Snapshot mBefore;
};

}  // namespace Campaign
