#include "system-calls.h"

#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>

namespace Campaign {

namespace {

constexpr int kOpenErrors[] = {EIO, ENOSPC, EMFILE, ENFILE, EACCES, EROFS, EDQUOT, EINTR, ENOMEM};
constexpr int kReadErrors[] = {EIO, EINTR, ENOMEM};
constexpr int kWriteErrors[] = {EIO, ENOSPC, EDQUOT, EFBIG, EINTR, EROFS};
constexpr int kSyncErrors[] = {EIO, ENOSPC, EDQUOT, EROFS, EINTR};
constexpr int kNameErrors[] = {EIO, ENOSPC, EACCES, EROFS, EDQUOT, EMLINK, ENOMEM};
constexpr int kLookErrors[] = {EIO, EACCES, ENOMEM, ELOOP};
constexpr int kLockErrors[] = {EAGAIN, ENOLCK, EINTR};
constexpr int kCopyErrors[] = {EIO, ENOSPC, EXDEV, EOPNOTSUPP, EDQUOT, ENOSYS};
constexpr int kMapErrors[] = {ENOMEM, EAGAIN, EACCES, ENFILE};
constexpr int kRightsErrors[] = {EPERM, EROFS, EIO};
constexpr int kSendErrors[] = {EAGAIN, EINTR, ENOBUFS, EPIPE, ECONNRESET, EMSGSIZE};
constexpr int kReceiveErrors[] = {EAGAIN, EINTR, ECONNRESET, ENOMEM, EIO};
constexpr int kConnectErrors[] = {ECONNREFUSED, EACCES, EMFILE, ENFILE, ENOMEM, EINTR};

using enum CallKind;
constexpr SystemCall kCalls[] = {
    {SYS_openat,          "openat",          kFile, kOpenErrors   },
    {SYS_openat2,         "openat2",         kFile, kOpenErrors   },
    {SYS_read,            "read",            kFile, kReadErrors   },
    {SYS_pread64,         "pread64",         kFile, kReadErrors   },
    {SYS_readv,           "readv",           kFile, kReadErrors   },
    {SYS_write,           "write",           kFile, kWriteErrors  },
    {SYS_pwrite64,        "pwrite64",        kFile, kWriteErrors  },
    {SYS_writev,          "writev",          kFile, kWriteErrors  },
    {SYS_fsync,           "fsync",           kFile, kSyncErrors   },
    {SYS_fdatasync,       "fdatasync",       kFile, kSyncErrors   },
    {SYS_renameat,        "renameat",        kFile, kNameErrors   },
    {SYS_renameat2,       "renameat2",       kFile, kNameErrors   },
    {SYS_unlinkat,        "unlinkat",        kFile, kNameErrors   },
    {SYS_mkdirat,         "mkdirat",         kFile, kNameErrors   },
    {SYS_linkat,          "linkat",          kFile, kNameErrors   },
    {SYS_symlinkat,       "symlinkat",       kFile, kNameErrors   },
    {SYS_ftruncate,       "ftruncate",       kFile, kWriteErrors  },
    {SYS_fallocate,       "fallocate",       kFile, kWriteErrors  },
    {SYS_copy_file_range, "copy_file_range", kFile, kCopyErrors   },
    {SYS_ioctl,           "ioctl",           kFile, kCopyErrors   },
    {SYS_fcntl,           "fcntl",           kFile, kLockErrors   },
    {SYS_flock,           "flock",           kFile, kLockErrors   },
    {SYS_fstat,           "fstat",           kFile, kLookErrors   },
    {SYS_newfstatat,      "newfstatat",      kFile, kLookErrors   },
    {SYS_statx,           "statx",           kFile, kLookErrors   },
    {SYS_faccessat,       "faccessat",       kFile, kLookErrors   },
    {SYS_faccessat2,      "faccessat2",      kFile, kLookErrors   },
    {SYS_readlinkat,      "readlinkat",      kFile, kLookErrors   },
    {SYS_getdents64,      "getdents64",      kFile, kReadErrors   },
    {SYS_lseek,           "lseek",           kFile, kLookErrors   },
    {SYS_fstatfs,         "fstatfs",         kFile, kLookErrors   },
    {SYS_fchmod,          "fchmod",          kFile, kRightsErrors },
    {SYS_mmap,            "mmap",            kFile, kMapErrors    },
    {SYS_socket,          "socket",          kBus,  kConnectErrors},
    {SYS_connect,         "connect",         kBus,  kConnectErrors},
    {SYS_sendmsg,         "sendmsg",         kBus,  kSendErrors   },
    {SYS_sendto,          "sendto",          kBus,  kSendErrors   },
    {SYS_recvmsg,         "recvmsg",         kBus,  kReceiveErrors},
    {SYS_recvfrom,        "recvfrom",        kBus,  kReceiveErrors},
    {SYS_epoll_pwait,     "epoll_pwait",     kWait, {}            },
    {SYS_epoll_pwait2,    "epoll_pwait2",    kWait, {}            },
 // What newer machines have no numbers for.
#ifdef SYS_open
    {SYS_open,            "open",            kFile, kOpenErrors   },
    {SYS_stat,            "stat",            kFile, kLookErrors   },
    {SYS_lstat,           "lstat",           kFile, kLookErrors   },
    {SYS_access,          "access",          kFile, kLookErrors   },
    {SYS_readlink,        "readlink",        kFile, kLookErrors   },
    {SYS_rename,          "rename",          kFile, kNameErrors   },
    {SYS_unlink,          "unlink",          kFile, kNameErrors   },
    {SYS_rmdir,           "rmdir",           kFile, kNameErrors   },
    {SYS_mkdir,           "mkdir",           kFile, kNameErrors   },
    {SYS_link,            "link",            kFile, kNameErrors   },
    {SYS_symlink,         "symlink",         kFile, kNameErrors   },
    {SYS_chmod,           "chmod",           kFile, kRightsErrors },
    {SYS_epoll_wait,      "epoll_wait",      kWait, {}            },
#endif
};

}  // namespace

std::span<const SystemCall> SystemCalls()
{
    return kCalls;
}

const SystemCall* FindSystemCall(int number)
{
    const auto found = std::ranges::find(kCalls, number, &SystemCall::number);
    return found == std::end(kCalls) ? nullptr : found;
}

}  // namespace Campaign
