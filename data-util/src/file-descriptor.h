// An open file that closes itself.

#pragma once

#include <unistd.h>

namespace DataUtil {

class FileDescriptor {
public:
    // Takes over what open() gave; a failure too, which is not closed.
    explicit FileDescriptor(int descriptor) : mDescriptor(descriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { Reset(-1); }

    int Get() const { return mDescriptor; }
    bool IsOpen() const { return mDescriptor >= 0; }
    void Reset(int descriptor)
    {
        if (mDescriptor >= 0) close(mDescriptor);
        mDescriptor = descriptor;
    }

private:
    int mDescriptor;
};

}  // namespace DataUtil
