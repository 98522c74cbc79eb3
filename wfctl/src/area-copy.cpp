#include "area-copy.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "areas.h"
#include "exit-status.h"
#include "files.h"
#include "hint.h"

namespace Wfctl {

AreaCopy::AreaCopy(const std::string& file, const std::string& app, const std::string& name)
{
    const std::string folder = Platform::CurrentAreas().DataOf(app) + "wfctl/";
    mPath = folder + name;
    const std::string from = std::filesystem::absolute(file).string();
    if (ecore_file_mkpath(folder.c_str()) && CommonUtilFile::Copy(from, mPath)) return;
    throw Stop(Exit::kError, "[" + file + "] could not be copied to [" + mPath + "]");
}

AreaCopy::~AreaCopy()
{
    ecore_file_remove(mPath.c_str());
}

PictureKind KindOfBytes(std::string_view bytes)
{
    if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return PictureKind::kPng;
    return bytes.starts_with("\xff\xd8\xff") ? PictureKind::kJpeg : PictureKind::kNone;
}

PictureKind KindOfPicture(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        const std::string why = std::strerror(errno);
        throw Stop(Exit::kNotFound, "the picture [" + file + "] cannot be read: " + why + OrMeantFile(file));
    }
    std::array<char, 8> head{};
    stream.read(head.data(), head.size());
    return KindOfBytes({head.data(), static_cast<std::size_t>(stream.gcount())});
}

}  // namespace Wfctl
