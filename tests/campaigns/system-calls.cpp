#include "system-calls.h"

#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>

namespace Campaign {

namespace {

// Only what Linux and its file systems give for a call: a full or broken disk, rights, limits, memory, files
// that are immutable (EPERM), mounted on (EBUSY) or, encrypted, too long of name.
constexpr int kOpenErrors[] = {EIO,   ENOSPC, EMFILE, ENFILE, EACCES, EPERM,
                               EROFS, EDQUOT, EINTR,  ENOMEM, EBUSY,  ENAMETOOLONG};
constexpr int kReadErrors[] = {EIO, EINTR, ENOMEM};
constexpr int kWriteErrors[] = {EIO, ENOSPC, EDQUOT, EFBIG, EINTR, EROFS, ENOMEM};
constexpr int kCutErrors[] = {EIO, ENOSPC, EDQUOT, EFBIG, EINTR, EROFS, EPERM, ENOMEM};
constexpr int kSyncErrors[] = {EIO, ENOSPC, EDQUOT, EROFS, EINTR};
constexpr int kRenameErrors[] = {EIO,    ENOSPC, EACCES, EPERM,        EROFS,  EDQUOT,
                                 EMLINK, ENOMEM, EBUSY,  ENAMETOOLONG, ENOENT, EXDEV};
constexpr int kLinkErrors[] = {EIO,    ENOSPC, EACCES,       EPERM,  EROFS, EDQUOT,
                               EMLINK, ENOMEM, ENAMETOOLONG, ENOENT, EXDEV};
constexpr int kRemoveErrors[] = {EIO, ENOSPC, EACCES, EPERM, EROFS, EDQUOT, ENOMEM, EBUSY};
constexpr int kMakeErrors[] = {EIO, ENOSPC, EACCES, EPERM, EROFS, EDQUOT, EMLINK, ENOMEM, ENAMETOOLONG};
constexpr int kLookErrors[] = {EIO, EACCES, ENOMEM, ELOOP, ENAMETOOLONG};
constexpr int kDescribeErrors[] = {EIO, EACCES, ENOMEM};
constexpr int kSeekErrors[] = {EIO};
constexpr int kLockErrors[] = {EAGAIN, ENOLCK, EINTR, EIO};
constexpr int kCopyErrors[] = {EIO, ENOSPC, EXDEV, EOPNOTSUPP, EDQUOT, ENOSYS, EINVAL, EPERM, ENOMEM};
constexpr int kMapErrors[] = {ENOMEM, EAGAIN, EACCES, ENFILE, EPERM, ENODEV};
constexpr int kRightsErrors[] = {EPERM, EROFS, EIO, ENOMEM};
constexpr int kOwnerErrors[] = {EPERM, EROFS, EIO, EDQUOT, ENOMEM};
constexpr int kSocketErrors[] = {EACCES, EMFILE, ENFILE, ENOMEM, ENOBUFS};
constexpr int kConnectErrors[] = {ECONNREFUSED, EACCES, EPERM, ENOENT, EAGAIN, EINTR, ENOMEM};
constexpr int kSendErrors[] = {EAGAIN, EINTR, ENOBUFS, EPIPE, ECONNRESET, EMSGSIZE, ENOMEM, EACCES};
constexpr int kReceiveErrors[] = {EAGAIN, EINTR, ECONNRESET, ENOMEM, EACCES};
constexpr int kOptionErrors[] = {ENOPROTOOPT, EACCES, EPERM, ENOMEM};
constexpr int kSocketNameErrors[] = {ENOBUFS, EACCES};
constexpr int kPollErrors[] = {EINTR, ENOMEM};
constexpr int kPollSetErrors[] = {ENOMEM, ENOSPC};
constexpr int kWaitErrors[] = {EINTR};

using enum CallKind;
constexpr SystemCall kCalls[] = {
    {SYS_openat,          "openat",          kFile, kOpenErrors      },
    {SYS_openat2,         "openat2",         kFile, kOpenErrors      },
    {SYS_read,            "read",            kFile, kReadErrors      },
    {SYS_pread64,         "pread64",         kFile, kReadErrors      },
    {SYS_readv,           "readv",           kFile, kReadErrors      },
    {SYS_write,           "write",           kFile, kWriteErrors     },
    {SYS_pwrite64,        "pwrite64",        kFile, kWriteErrors     },
    {SYS_writev,          "writev",          kFile, kWriteErrors     },
    {SYS_fsync,           "fsync",           kFile, kSyncErrors      },
    {SYS_fdatasync,       "fdatasync",       kFile, kSyncErrors      },
    {SYS_renameat,        "renameat",        kFile, kRenameErrors    },
    {SYS_renameat2,       "renameat2",       kFile, kRenameErrors    },
    {SYS_unlinkat,        "unlinkat",        kFile, kRemoveErrors    },
    {SYS_mkdirat,         "mkdirat",         kFile, kMakeErrors      },
    {SYS_linkat,          "linkat",          kFile, kLinkErrors      },
    {SYS_symlinkat,       "symlinkat",       kFile, kMakeErrors      },
    {SYS_ftruncate,       "ftruncate",       kFile, kCutErrors       },
    {SYS_fallocate,       "fallocate",       kFile, kCutErrors       },
    {SYS_copy_file_range, "copy_file_range", kFile, kCopyErrors      },
    {SYS_ioctl,           "ioctl",           kFile, kCopyErrors      },
    {SYS_fcntl,           "fcntl",           kLock, kLockErrors      },
    {SYS_flock,           "flock",           kLock, kLockErrors      },
    {SYS_fstat,           "fstat",           kFile, kDescribeErrors  },
    {SYS_newfstatat,      "newfstatat",      kFile, kLookErrors      },
    {SYS_statx,           "statx",           kFile, kLookErrors      },
    {SYS_faccessat,       "faccessat",       kFile, kLookErrors      },
    {SYS_faccessat2,      "faccessat2",      kFile, kLookErrors      },
    {SYS_readlinkat,      "readlinkat",      kFile, kLookErrors      },
    {SYS_getdents64,      "getdents64",      kFile, kReadErrors      },
    {SYS_lseek,           "lseek",           kFile, kSeekErrors      },
    {SYS_fstatfs,         "fstatfs",         kFile, kDescribeErrors  },
    {SYS_fchmod,          "fchmod",          kFile, kRightsErrors    },
    {SYS_fchown,          "fchown",          kFile, kOwnerErrors     },
    {SYS_mmap,            "mmap",            kFile, kMapErrors       },
    {SYS_socket,          "socket",          kBus,  kSocketErrors    },
    {SYS_connect,         "connect",         kBus,  kConnectErrors   },
    {SYS_sendmsg,         "sendmsg",         kBus,  kSendErrors      },
    {SYS_sendto,          "sendto",          kBus,  kSendErrors      },
    {SYS_recvmsg,         "recvmsg",         kBus,  kReceiveErrors   },
    {SYS_recvfrom,        "recvfrom",        kBus,  kReceiveErrors   },
    {SYS_getsockopt,      "getsockopt",      kBus,  kOptionErrors    },
    {SYS_setsockopt,      "setsockopt",      kBus,  kOptionErrors    },
    {SYS_getsockname,     "getsockname",     kBus,  kSocketNameErrors},
    {SYS_ppoll,           "ppoll",           kBus,  kPollErrors      },
    {SYS_epoll_ctl,       "epoll_ctl",       kBus,  kPollSetErrors   },
    {SYS_epoll_pwait,     "epoll_pwait",     kWait, kWaitErrors      },
    {SYS_epoll_pwait2,    "epoll_pwait2",    kWait, kWaitErrors      },
 // What newer machines have no numbers for.
#ifdef SYS_open
    {SYS_open,            "open",            kFile, kOpenErrors      },
    {SYS_stat,            "stat",            kFile, kLookErrors      },
    {SYS_lstat,           "lstat",           kFile, kLookErrors      },
    {SYS_access,          "access",          kFile, kLookErrors      },
    {SYS_readlink,        "readlink",        kFile, kLookErrors      },
    {SYS_rename,          "rename",          kFile, kRenameErrors    },
    {SYS_unlink,          "unlink",          kFile, kRemoveErrors    },
    {SYS_rmdir,           "rmdir",           kFile, kRemoveErrors    },
    {SYS_mkdir,           "mkdir",           kFile, kMakeErrors      },
    {SYS_link,            "link",            kFile, kLinkErrors      },
    {SYS_symlink,         "symlink",         kFile, kMakeErrors      },
    {SYS_chmod,           "chmod",           kFile, kRightsErrors    },
    {SYS_epoll_wait,      "epoll_wait",      kWait, kWaitErrors      },
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
