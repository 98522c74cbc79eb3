// A file of the user's where the service may read it, while this lives.

#pragma once

#include <string>
#include <string_view>

namespace Wfctl {

class AreaCopy {
public:
    // Copies into the data area of `app`, as `name`. Stops with Exit::kNotFound or Exit::kError.
    AreaCopy(const std::string& file, const std::string& app, const std::string& name);
    ~AreaCopy();
    AreaCopy(const AreaCopy&) = delete;
    AreaCopy& operator=(const AreaCopy&) = delete;

    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

enum class PictureKind { kNone, kPng, kJpeg };

// By the first bytes.
PictureKind KindOfBytes(std::string_view bytes);
// Stops with Exit::kNotFound when the file cannot be read.
PictureKind KindOfPicture(const std::string& file);

}  // namespace Wfctl
