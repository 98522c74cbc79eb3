#include "file-recorder.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "program.h"

namespace Campaign {

namespace {

namespace fs = std::filesystem;

constexpr int kNone = -1;  // the call has no such argument
constexpr std::size_t kMostSaid = 1 << 16;

std::string DescriptorPath(const PendingCall& call, int descriptor)
{
    return "/proc/" + std::to_string(call.process) + "/fd/" + std::to_string(descriptor);
}

std::string LinkTarget(const std::string& path)
{
    char target[4096];
    const ssize_t size = readlink(path.c_str(), target, sizeof target);
    return size > 0 ? std::string(target, static_cast<std::size_t>(size)) : std::string();
}

// Where the next write() goes.
uint64_t PositionOf(const PendingCall& call, int descriptor)
{
    std::ifstream info("/proc/" + std::to_string(call.process) + "/fdinfo/" + std::to_string(descriptor));
    std::string label;
    uint64_t position = 0;
    info >> label >> position;
    return position;
}

bool Exists(const std::string& path)
{
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

// Of a path like /proc/self/fd/7.
int LastNumber(const std::string& path)
{
    return static_cast<int>(std::strtol(path.c_str() + path.rfind('/') + 1, nullptr, 10));
}

int Argument(const PendingCall& call, int n)
{
    return static_cast<int>(call.arguments[n]);
}

}  // namespace

// Every call that may reach a file.
const FileRecorder::Recording FileRecorder::kRecordings[] = {
    {SYS_openat,          &FileRecorder::RecordOpen      },
    {SYS_mkdirat,         &FileRecorder::RecordMakeFolder},
    {SYS_linkat,          &FileRecorder::RecordLink      },
    {SYS_renameat,        &FileRecorder::RecordRename    },
    {SYS_unlinkat,        &FileRecorder::RecordUnlink    },
    {SYS_write,           &FileRecorder::RecordWrite     },
    {SYS_pwrite64,        &FileRecorder::RecordWrite     },
    {SYS_ftruncate,       &FileRecorder::RecordCut       },
    {SYS_fsync,           &FileRecorder::RecordSync      },
    {SYS_fdatasync,       &FileRecorder::RecordSync      },
    {SYS_copy_file_range, &FileRecorder::RecordCopy      },
    {SYS_ioctl,           &FileRecorder::RecordCopy      },
    {SYS_mmap,            &FileRecorder::RecordMap       },
    {SYS_openat2,         &FileRecorder::NoteOpen        },
    {SYS_renameat2,       &FileRecorder::NoteChange      },
    {SYS_symlinkat,       &FileRecorder::NoteLink        },
    {SYS_writev,          &FileRecorder::NoteWrite       },
    {SYS_fallocate,       &FileRecorder::NoteWrite       },
    {SYS_read,            nullptr                        },
    {SYS_pread64,         nullptr                        },
    {SYS_readv,           nullptr                        },
    {SYS_fcntl,           nullptr                        },
    {SYS_flock,           nullptr                        },
    {SYS_fstat,           nullptr                        },
    {SYS_newfstatat,      nullptr                        },
    {SYS_statx,           nullptr                        },
    {SYS_faccessat,       nullptr                        },
    {SYS_faccessat2,      nullptr                        },
    {SYS_readlinkat,      nullptr                        },
    {SYS_getdents64,      nullptr                        },
    {SYS_lseek,           nullptr                        },
    {SYS_fstatfs,         nullptr                        },
    {SYS_fchmod,          nullptr                        },
    {SYS_fchown,          nullptr                        },
#ifdef SYS_open
    {SYS_open,            &FileRecorder::RecordOpen      },
    {SYS_mkdir,           &FileRecorder::RecordMakeFolder},
    {SYS_rename,          &FileRecorder::RecordRename    },
    {SYS_unlink,          &FileRecorder::RecordUnlink    },
    {SYS_rmdir,           &FileRecorder::RecordUnlink    },
    {SYS_link,            &FileRecorder::NoteChange      },
    {SYS_symlink,         &FileRecorder::NoteLink        },
    {SYS_stat,            nullptr                        },
    {SYS_lstat,           nullptr                        },
    {SYS_access,          nullptr                        },
    {SYS_readlink,        nullptr                        },
    {SYS_chmod,           nullptr                        },
#endif
};

std::string ContentOf(const fs::path& path)
{
    return fs::is_symlink(path) ? fs::read_symlink(path).string() : TestSupport::ReadFile(path);
}

FileRecorder::FileRecorder(std::string folder) : mFolder(std::move(folder))
{
    mNames[""] = mNodes++;
    for (const auto& entry : fs::recursive_directory_iterator(mFolder)) {
        const std::string path = fs::path(entry).lexically_relative(mFolder);
        const Node node = NewNode(path);
        if (!fs::is_directory(entry.symlink_status())) mFirstContents[node] = ContentOf(entry);
    }
    mFirstNames = mNames;
    for (const SystemCall& call : SystemCalls()) {
        if (call.kind == CallKind::kFile && !Find(call.number))
            throw std::runtime_error(std::string("does it change files? ") + call.name);
    }
}

const FileRecorder::Recording* FileRecorder::Find(int number)
{
    const auto recording = std::ranges::find(kRecordings, number, &Recording::number);
    return recording == std::end(kRecordings) ? nullptr : recording;
}

int FileRecorder::operator()(const PendingCall& call)
{
    if (call.call.number == SYS_sendmsg) return RecordSend(call);
    const Recording* recording = Find(call.call.number);
    return recording && recording->record ? (this->*recording->record)(call) : 0;
}

Node FileRecorder::NewNode(const std::string& path)
{
    return mNames[path] = mNodes++;
}

// Below the folder; empty when it is not.
std::string FileRecorder::PathOf(const PendingCall& call, int folder, int name) const
{
    std::string path = call.TextAt(name);
    if (!path.starts_with('/') && folder != kNone)
        path = LinkTarget(DescriptorPath(call, Argument(call, folder))) + "/" + path;
    path = fs::path(path).lexically_normal();
    return path.starts_with(mFolder + "/") ? path.substr(mFolder.size() + 1) : std::string();
}

// Of an open file or folder below the folder; kNoNode: it is none. A file without a name is a new one.
Node FileRecorder::NodeOf(const PendingCall& call, int descriptor)
{
    const std::string link = DescriptorPath(call, descriptor);
    struct stat info {};
    if (stat(link.c_str(), &info) != 0) return kNoNode;
    if (const auto known = mInodes.find(info.st_ino); known != mInodes.end()) return known->second;
    const std::string path = LinkTarget(link);
    if (!path.starts_with(mFolder + "/")) return path == mFolder ? mNames.at("") : kNoNode;
    const auto named = mNames.find(path.substr(mFolder.size() + 1));
    return mInodes[info.st_ino] = named == mNames.end() ? mNodes++ : named->second;
}

int FileRecorder::RecordOpen(const PendingCall& call)
{
    const bool isAt = call.call.number == SYS_openat;
    const int flags = Argument(call, isAt ? 2 : 1);
    if (flags & O_TRUNC) NoteChange(call);
    if (!(flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE) return 0;
    const std::string path = PathOf(call, isAt ? 0 : kNone, isAt ? 1 : 0);
    if (!path.empty() && !Exists(mFolder + "/" + path))
        mEvents.push_back({FileEvent::kName, NewNode(path), path, {}, {}});
    return 0;
}

int FileRecorder::RecordMakeFolder(const PendingCall& call)
{
    const bool isAt = call.call.number == SYS_mkdirat;
    const std::string path = PathOf(call, isAt ? 0 : kNone, isAt ? 1 : 0);
    if (!path.empty() && !Exists(mFolder + "/" + path))
        mEvents.push_back({FileEvent::kName, NewNode(path), path, {}, {}});
    return 0;
}

int FileRecorder::RecordLink(const PendingCall& call)
{
    const std::string from = call.TextAt(1), path = PathOf(call, 2, 3);
    if (path.empty()) return 0;
    const Node node = NodeOf(call, LastNumber(from));
    mNames[path] = node;
    mEvents.push_back({FileEvent::kName, node, path, {}, {}});
    return 0;
}

int FileRecorder::RecordRename(const PendingCall& call)
{
    const bool isAt = call.call.number == SYS_renameat;
    const std::string from = PathOf(call, isAt ? 0 : kNone, isAt ? 1 : 0);
    const std::string to = PathOf(call, isAt ? 2 : kNone, isAt ? 3 : 1);
    const auto found = mNames.find(from);
    if (to.empty() || found == mNames.end()) return 0;
    const Node node = found->second;
    mNames.erase(found);
    mNames[to] = node;
    mEvents.push_back({FileEvent::kName, node, to, from, {}});
    return 0;
}

int FileRecorder::RecordUnlink(const PendingCall& call)
{
    const bool isAt = call.call.number == SYS_unlinkat;
    const bool isOfFolder = call.call.number != SYS_unlinkat ? fs::is_directory(call.TextAt(0))
                                                             : (Argument(call, 2) & AT_REMOVEDIR) != 0;
    const std::string path = PathOf(call, isAt ? 0 : kNone, isAt ? 1 : 0);
    const fs::path whole = mFolder + "/" + path;
    // A folder is tried as a file first, and stays then.
    if (path.empty() || !Exists(whole) || fs::is_directory(whole) != isOfFolder) return 0;
    if (isOfFolder && !fs::is_empty(whole)) return 0;
    mNames.erase(path);
    mEvents.push_back({FileEvent::kUnname, kNoNode, path, {}, {}});
    return 0;
}

int FileRecorder::RecordWrite(const PendingCall& call)
{
    const Node node = NodeOf(call, Argument(call, 0));
    if (node == kNoNode) return 0;
    const uint64_t offset =
        call.call.number == SYS_pwrite64 ? call.arguments[3] : PositionOf(call, Argument(call, 0));
    mEvents.push_back(
        {FileEvent::kWrite, node, {}, {}, call.BytesAt(call.arguments[1], call.arguments[2]), offset});
    return 0;
}

int FileRecorder::RecordCut(const PendingCall& call)
{
    const Node node = NodeOf(call, Argument(call, 0));
    if (node != kNoNode) mEvents.push_back({FileEvent::kCut, node, {}, {}, {}, call.arguments[1]});
    return 0;
}

int FileRecorder::RecordSync(const PendingCall& call)
{
    const Node node = NodeOf(call, Argument(call, 0));
    if (node != kNoNode) mEvents.push_back({FileEvent::kSync, node, {}, {}, {}});
    return 0;
}

// Refused, so that what is copied is written, which shows the bytes.
int FileRecorder::RecordCopy(const PendingCall& call)
{
    const bool isCopy = call.call.number == SYS_copy_file_range || call.arguments[1] == FICLONE;
    return isCopy ? EOPNOTSUPP : 0;
}

int FileRecorder::RecordSend(const PendingCall& call)
{
    const std::string header = call.BytesAt(call.arguments[1], sizeof(msghdr));
    if (header.size() != sizeof(msghdr)) return 0;
    msghdr message{};
    std::memcpy(&message, header.data(), sizeof message);
    const std::string vectors =
        call.BytesAt(reinterpret_cast<uint64_t>(message.msg_iov), message.msg_iovlen * sizeof(iovec));
    std::string said;
    for (std::size_t i = 0; i + sizeof(iovec) <= vectors.size() && said.size() < kMostSaid;
         i += sizeof(iovec)) {
        iovec part{};
        std::memcpy(&part, vectors.data() + i, sizeof part);
        said += call.BytesAt(reinterpret_cast<uint64_t>(part.iov_base), part.iov_len);
    }
    mEvents.push_back({FileEvent::kSaid, kNoNode, {}, {}, std::move(said)});
    return 0;
}

// What a map changes is written when the kernel likes to.
int FileRecorder::RecordMap(const PendingCall& call)
{
    const bool isWritten = (call.arguments[2] & PROT_WRITE) && (call.arguments[3] & MAP_SHARED);
    const int descriptor = Argument(call, 4);
    if (!isWritten || descriptor < 0 || NodeOf(call, descriptor) == kNoNode) return 0;
    return LinkTarget(DescriptorPath(call, descriptor)).ends_with("-shm") ? 0 : NoteChange(call);
}

int FileRecorder::NoteChange(const PendingCall& call)
{
    mUnrecorded.insert(call.call.name);
    return 0;
}

int FileRecorder::NoteWrite(const PendingCall& call)
{
    return NodeOf(call, Argument(call, 0)) == kNoNode ? 0 : NoteChange(call);
}

int FileRecorder::NoteOpen(const PendingCall& call)
{
    const std::string how = call.BytesAt(call.arguments[2], sizeof(uint64_t));
    uint64_t flags = 0;
    std::ranges::copy(how, reinterpret_cast<char*>(&flags));
    return flags & (O_CREAT | O_TRUNC) ? NoteChange(call) : 0;
}

// Nothing changes where there is something already.
int FileRecorder::NoteLink(const PendingCall& call)
{
    const bool isAt = call.call.number == SYS_symlinkat;
    const std::string path = PathOf(call, isAt ? 1 : kNone, isAt ? 2 : 1);
    return path.empty() || Exists(mFolder + "/" + path) ? 0 : NoteChange(call);
}

}  // namespace Campaign
