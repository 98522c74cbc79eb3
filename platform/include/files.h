// Files, as the service needs them. Paths are bytes. Operations that change something refuse "." and ".."
// components and whatever lies outside the writable areas; a refusal is one log line and counts as failure.

#pragma once

#ifdef __cplusplus
#include <memory>
#include <string>
#include <string_view>
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Eina_Bool;

// A list of pointers. Its owner frees the data and then the nodes, one by one.
typedef struct Eina_List {
    void* data;
    struct Eina_List* next;
} Eina_List;

// Unlinks and frees `node`; the data is not touched. Returns the new head.
Eina_List* eina_list_remove_list(Eina_List* list, Eina_List* node);

Eina_Bool ecore_file_mkpath(const char* path);        // with parents; true when it exists afterwards
Eina_Bool ecore_file_recursive_rm(const char* path);  // false also when there is nothing to remove
Eina_Bool ecore_file_remove(const char* path);        // one file
Eina_Bool ecore_file_exists(const char* path);
Eina_Bool ecore_file_is_dir(const char* path);
Eina_List* ecore_file_ls(const char* directory);    // names in byte order, each allocated with malloc
const char* ecore_file_file_get(const char* path);  // the last component, inside `path`

// Sleeps on the calling thread. The one pause that the service takes itself.
int usleep(unsigned int microseconds);

#ifdef __cplusplus
}

class CommonUtilFile {
public:
    static bool Exists(const std::string& path);

    // Replaces `to` atomically by a copy of the regular file `from`, of at most 32 MiB; anything else
    // counts as missing. False leaves `to` as it was.
    static bool Copy(const std::string& from, const std::string& to);
};

// Holds a lock on a path (not on an inode) while it lives. Other processes that lock the same path wait,
// for a bounded time; then the lock is taken as given and one log line says so.
class CommonUtilFileLock {
public:
    enum Mode { kRead = 1, kWrite = 2, kReadWrite = 3 };
    CommonUtilFileLock(const std::string& path, int mode);
    ~CommonUtilFileLock();
    CommonUtilFileLock(const CommonUtilFileLock&) = delete;
    CommonUtilFileLock& operator=(const CommonUtilFileLock&) = delete;

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

// The bytes of the regular file `path`, of at most 32 MiB, as far as they can be read; anything else counts
// as empty. Never waits for a writer.
std::string ReadWholeFile(const std::string& path);

// One file written as a whole. To its user it opens with truncation, takes bytes and closes; failures
// only set its state, which nobody has to test. Underneath, the new content replaces the old at Close() in
// one step: until then, and after any failure, the file holds its old content whole.
class FileOutputStream {
public:
    explicit FileOutputStream(const std::string& path);
    ~FileOutputStream();  // closes
    FileOutputStream(const FileOutputStream&) = delete;
    FileOutputStream& operator=(const FileOutputStream&) = delete;

    void Write(std::string_view bytes);
    void Close();
    bool Good() const;

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

#endif
