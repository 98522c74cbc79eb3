// What a program does to the files below a folder, in order: what they are called, what is written into
// them, what is told to be on the disk, and what it says to others meanwhile.

#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "gated-program.h"

namespace Campaign {

// A file or folder, whatever it is called.
using Node = int;
inline constexpr Node kNoNode = -1;

struct FileEvent {
    enum Kind {
        kName,    // `node` is called `path` from now on, which another may have been before
        kUnname,  // `path` is called nothing
        kWrite,   // `bytes` at `offset` of `node`
        kCut,     // `node` has `offset` bytes
        kSync,    // `node`, a file or folder, is to be on the disk
        kSaid,    // `bytes`, to the bus
    };
    Kind kind;
    Node node = kNoNode;
    std::string path;   // below the folder
    std::string moved;  // kName: what it was called before and is no more; or empty
    std::string bytes;
    uint64_t offset = 0;
};

// Of a file, or where a link leads.
std::string ContentOf(const std::filesystem::path& path);

class FileRecorder {
public:
    // What is below the folder now is on the disk, and is part of every state. Throws when there are calls of
    // which it is not known whether they change files.
    explicit FileRecorder(std::string folder);

    // Makes the watcher of a program.
    int operator()(const PendingCall& call);

    const std::map<std::string, Node>& FirstNames() const { return mFirstNames; }
    const std::map<Node, std::string>& FirstContents() const { return mFirstContents; }
    // Not while a call is recorded.
    const std::vector<FileEvent>& Events() const { return mEvents; }
    // Calls that have changed files in a way that no event tells.
    const std::set<std::string>& Unrecorded() const { return mUnrecorded; }

private:
    struct Recording {
        int number;
        int (FileRecorder::*record)(const PendingCall&);  // null: it changes no name and no byte
    };
    static const Recording kRecordings[];
    static const Recording* Find(int number);  // null: it reaches no file

    int RecordOpen(const PendingCall& call);
    int RecordMakeFolder(const PendingCall& call);
    int RecordLink(const PendingCall& call);
    int RecordRename(const PendingCall& call);
    int RecordUnlink(const PendingCall& call);
    int RecordWrite(const PendingCall& call);
    int RecordCut(const PendingCall& call);
    int RecordSync(const PendingCall& call);
    int RecordCopy(const PendingCall& call);
    int RecordSend(const PendingCall& call);
    int RecordMap(const PendingCall& call);
    int NoteChange(const PendingCall& call);
    int NoteWrite(const PendingCall& call);
    int NoteOpen(const PendingCall& call);
    int NoteLink(const PendingCall& call);

    std::string PathOf(const PendingCall& call, int folder, int name) const;
    Node NodeOf(const PendingCall& call, int descriptor);
    Node NewNode(const std::string& path);

    const std::string mFolder;
    std::map<std::string, Node> mFirstNames, mNames;
    std::map<Node, std::string> mFirstContents;
    std::map<uint64_t, Node> mInodes;
    Node mNodes = 0;
    std::vector<FileEvent> mEvents;
    std::set<std::string> mUnrecorded;
};

}  // namespace Campaign
