// Files are the product's, on a real file system; here their calls are recorded and made to fail. Members of
// classes are wrapped by their linker names, so that the file layer itself knows nothing of tests.

#include <cstring>
#include <map>
#include <mutex>

#include "app-manager.h"
#include "files.h"
#include "platform-state.h"

using MemoryPlatform::Current;
using MemoryPlatform::Note;
using MemoryPlatform::Shown;
using MemoryPlatform::Use;

// const std::string& in a linker name; once it has occurred it is S7_.
#define STRING_REF "RKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"

namespace {

// The path behind an open stream or a held lock.
class Paths {
public:
    void Set(const void* object, const std::string& path)
    {
        const std::lock_guard lock(mMutex);
        mPaths[object] = path;
    }
    std::optional<std::string> Take(const void* object)
    {
        const std::lock_guard lock(mMutex);
        const auto node = mPaths.extract(object);
        return node ? std::optional(node.mapped()) : std::nullopt;
    }

private:
    std::mutex mMutex;
    std::map<const void*, std::string> mPaths;
};

Paths& OpenStreams()
{
    static Paths paths;
    return paths;
}

Paths& HeldLocks()
{
    static Paths paths;
    return paths;
}

template <typename Result, typename Call>
Result Recorded(const char* function, const char* shown, const char* path, Call real)
{
    Note(std::string(shown) + " " + Shown(path));
    return Use(function) ? Result() : real(path);
}

int Area(const char* function, const char* shown, const char* appId, char** path,
         int (*real)(const char*, char**))
{
    Note(std::string("path ") + shown + " " + (appId ? appId : "(null)"));
    if (const auto code = Use(function)) return *code;
    const auto* state = Current();
    if (!state || !state->areaPaths.contains(function)) return real(appId, path);
    *path = strdup(state->areaPaths.at(function).c_str());
    return 0;
}

}  // namespace

extern "C" {

Eina_Bool __real_ecore_file_mkpath(const char* path);
Eina_Bool __real_ecore_file_recursive_rm(const char* path);
Eina_Bool __real_ecore_file_remove(const char* path);
Eina_Bool __real_ecore_file_exists(const char* path);
Eina_Bool __real_ecore_file_is_dir(const char* path);
Eina_List* __real_ecore_file_ls(const char* directory);
int __real_app_manager_get_shared_resource_path(const char* appId, char** path);
int __real_app_manager_get_shared_data_path(const char* appId, char** path);
int __real_app_manager_get_shared_trusted_path(const char* appId, char** path);

Eina_Bool __wrap_ecore_file_mkpath(const char* path)
{
    return Recorded<Eina_Bool>("ecore_file_mkpath", "mkpath", path, __real_ecore_file_mkpath);
}

Eina_Bool __wrap_ecore_file_recursive_rm(const char* path)
{
    return Recorded<Eina_Bool>("ecore_file_recursive_rm", "recursive_rm", path,
                               __real_ecore_file_recursive_rm);
}

Eina_Bool __wrap_ecore_file_remove(const char* path)
{
    return Recorded<Eina_Bool>("ecore_file_remove", "remove", path, __real_ecore_file_remove);
}

Eina_Bool __wrap_ecore_file_exists(const char* path)
{
    return Recorded<Eina_Bool>("ecore_file_exists", "exists", path, __real_ecore_file_exists);
}

Eina_Bool __wrap_ecore_file_is_dir(const char* path)
{
    return Recorded<Eina_Bool>("ecore_file_is_dir", "is_dir", path, __real_ecore_file_is_dir);
}

Eina_List* __wrap_ecore_file_ls(const char* path)
{
    return Recorded<Eina_List*>("ecore_file_ls", "ls", path, __real_ecore_file_ls);
}

int __wrap_app_manager_get_shared_resource_path(const char* appId, char** path)
{
    return Area("app_manager_get_shared_resource_path", "resource", appId, path,
                __real_app_manager_get_shared_resource_path);
}

int __wrap_app_manager_get_shared_data_path(const char* appId, char** path)
{
    return Area("app_manager_get_shared_data_path", "data", appId, path,
                __real_app_manager_get_shared_data_path);
}

int __wrap_app_manager_get_shared_trusted_path(const char* appId, char** path)
{
    return Area("app_manager_get_shared_trusted_path", "trusted", appId, path,
                __real_app_manager_get_shared_trusted_path);
}

// The pause takes no time; on the main thread the clock moves as if it had.
int __wrap_usleep(unsigned int microseconds)
{
    Note("usleep " + std::to_string(microseconds));
    Use("usleep");
    auto* state = Current();
    if (state && state->record->OnMain()) state->loop.Sleep(std::chrono::microseconds(microseconds));
    return 0;
}

}  // extern "C"

bool RealExists(const std::string& path) __asm__("__real__ZN14CommonUtilFile6ExistsE" STRING_REF);
bool WrapExists(const std::string& path) __asm__("__wrap__ZN14CommonUtilFile6ExistsE" STRING_REF);
bool WrapExists(const std::string& path)
{
    Note("exists " + Shown(path));
    return !Use("CommonUtilFile::Exists") && RealExists(path);
}

bool RealCopy(const std::string& from,
              const std::string& to) __asm__("__real__ZN14CommonUtilFile4CopyE" STRING_REF "S7_");
bool WrapCopy(const std::string& from,
              const std::string& to) __asm__("__wrap__ZN14CommonUtilFile4CopyE" STRING_REF "S7_");
bool WrapCopy(const std::string& from, const std::string& to)
{
    Note("copy " + Shown(from) + " -> " + Shown(to));
    return !Use("CommonUtilFile::Copy") && RealCopy(from, to);
}

std::string RealRead(const std::string& path) __asm__("__real__Z13ReadWholeFile" STRING_REF);
std::string WrapRead(const std::string& path) __asm__("__wrap__Z13ReadWholeFile" STRING_REF);
std::string WrapRead(const std::string& path)
{
    Note("read " + Shown(path));
    return Use("ReadWholeFile") ? std::string() : RealRead(path);
}

void RealOpen(FileOutputStream* self,
              const std::string& path) __asm__("__real__ZN16FileOutputStreamC1E" STRING_REF);
void WrapOpen(FileOutputStream* self,
              const std::string& path) __asm__("__wrap__ZN16FileOutputStreamC1E" STRING_REF);
void WrapOpen(FileOutputStream* self, const std::string& path)
{
    Note("open " + Shown(path));
    OpenStreams().Set(self, path);
    // No stream opens without a path.
    RealOpen(self, Use("FileOutputStream") ? std::string() : path);
}

void RealClose(FileOutputStream* self) __asm__("__real__ZN16FileOutputStream5CloseEv");
void WrapClose(FileOutputStream* self) __asm__("__wrap__ZN16FileOutputStream5CloseEv");
void WrapClose(FileOutputStream* self)
{
    if (const auto path = OpenStreams().Take(self)) Note("close " + Shown(*path));
    RealClose(self);
}

void RealEnd(FileOutputStream* self) __asm__("__real__ZN16FileOutputStreamD1Ev");
void WrapEnd(FileOutputStream* self) __asm__("__wrap__ZN16FileOutputStreamD1Ev");
void WrapEnd(FileOutputStream* self)
{
    if (const auto path = OpenStreams().Take(self)) Note("close " + Shown(*path));
    RealEnd(self);
}

void RealLock(CommonUtilFileLock* self, const std::string& path,
              int mode) __asm__("__real__ZN18CommonUtilFileLockC1E" STRING_REF "i");
void WrapLock(CommonUtilFileLock* self, const std::string& path,
              int mode) __asm__("__wrap__ZN18CommonUtilFileLockC1E" STRING_REF "i");
void WrapLock(CommonUtilFileLock* self, const std::string& path, int mode)
{
    Note("lock " + Shown(path) + " " + std::to_string(mode));
    HeldLocks().Set(self, path);
    RealLock(self, path, mode);
}

void RealUnlock(CommonUtilFileLock* self) __asm__("__real__ZN18CommonUtilFileLockD1Ev");
void WrapUnlock(CommonUtilFileLock* self) __asm__("__wrap__ZN18CommonUtilFileLockD1Ev");
void WrapUnlock(CommonUtilFileLock* self)
{
    if (const auto path = HeldLocks().Take(self)) Note("unlock " + Shown(*path));
    RealUnlock(self);
}
