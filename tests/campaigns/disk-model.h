// What may be on the disk when its power is cut, given what a program did to its files.
//
// The model, after ext4 with ordered data, and weaker where that leaves room:
// - Names (made, linked, renamed, removed) reach the disk in their order: a state has some first part of
//   them. A sync of a file or folder has with it every name up to the last that concerns it, and no later
//   one.
// - Bytes reach the disk in any order, in sectors of 512 bytes, each of which is old or new: of what was
//   written to a file since its last sync, a state has all, none, any sectors, or the length without the
//   bytes.
// - What a sync returned from is there. What maps of memory change is not (SQLite keeps nothing in them that
//   it cannot make again).

#pragma once

#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "file-recorder.h"

namespace Campaign {

class DiskModel {
public:
    explicit DiskModel(const FileRecorder& recorder);

    // The next event has happened.
    void Advance(const FileEvent& event);

    // By their path; an empty folder is like an empty file.
    using Files = std::map<std::string, std::string>;

    // When no power is cut: as the program sees them.
    Files Whole() const;

    // When the power is cut now; one of the states that there may be. Of the files that are not wanted the
    // path alone is given.
    using Wanted = std::function<bool(const std::string& path)>;
    Files CutPower(std::mt19937& random, const Wanted& isWanted) const;

private:
    bool Concerns(const FileEvent& name, Node node) const;
    static void Rename(const FileEvent& event, std::map<std::string, Node>& names);
    static void Write(const FileEvent& event, std::string& content);
    static void WriteSome(const FileEvent& event, std::mt19937& random, std::string& content);
    std::string SyncedContentOf(Node node) const;
    std::string WholeContentOf(Node node) const;
    std::string ContentOf(Node node, std::mt19937& random) const;
    // What has a content, and empty folders.
    Files FilesOf(const std::map<std::string, Node>& names,
                  const std::function<std::string(const std::string& path, Node)>& content) const;

    std::map<std::string, Node> mNames;  // on the disk
    std::map<Node, std::string> mContents;
    std::map<std::string, Node> mLatestNames;  // as the program sees them
    std::vector<FileEvent> mPendingNames;      // that may be on it
    std::map<Node, std::vector<FileEvent>> mPendingBytes;
};

}  // namespace Campaign
