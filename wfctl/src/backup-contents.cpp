#include "backup-contents.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>

#include "asset-checks.h"
#include "backup-report.h"
#include "data-util.h"
#include "face-document.h"
#include "folder-entries.h"
#include "photo-files.h"
#include "reading-files.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

// With "/" at the end.
std::string FolderOfPictures(const std::string& bgType)
{
    constexpr std::string_view kPrefix = "watch-bg-";
    return PicturesFolder(bgType.substr(kPrefix.size()));
}

// Those that belong to no face of the service's.
void AddLoosePictures(std::vector<std::string>& notes)
{
    const fs::path gallery = PicturesFolder("gallery");
    std::error_code error;
    fs::recursive_directory_iterator at(gallery, error);
    for (const fs::recursive_directory_iterator end; !error && at != end; at.increment(error)) {
        if (IsFile(at->path()) && at->path().parent_path() != gallery / "U1")
            notes.push_back("the picture " + QuotedName(at->path().lexically_relative(gallery)) +
                            ": only those of u1 and of the theme are backed up");
    }
}

// What a world clock or the want of a phone changed.
void AddOtherFlatDocument(const Face& face, std::vector<std::string>& notes)
{
    if (!IsFile(face.WatchfaceXml())) return;
    const std::unique_ptr<char, decltype(&free)> flat(
        data_util_resultxml_memory_converter(ReadNamedFile(face.ResultXml()).c_str()), &free);
    if (flat && ReadNamedFile(face.WatchfaceXml()) != flat.get())
        notes.push_back("what only the watchface.xml of " + QuotedName(face.name) +
                        " has: a world clock or a limited complication");
}

// A message carries the document alone, and shipped images are on every watch.
void AddImages(const Face& face, std::vector<std::string>& notes)
{
    const auto document = DataUtil::ParseFace(ReadNamedFile(face.ResultXml())).document;
    if (!document || face.shipped) return;
    std::string images;
    for (const std::string& path : DataUtil::AssetPaths(*document))
        if (IsFile(face.folder + path)) images += (images.empty() ? "" : ", ") + QuotedName(path);
    if (!images.empty())
        notes.push_back("the images of " + QuotedName(face.name) + ": " + images + "; keep a copy of [" +
                        face.folder + "]");
}

}  // namespace

std::map<std::string, std::string> PicturesOf(const std::string& bgType)
{
    std::map<std::string, std::string> paths;
    for (const fs::path& path : EntriesOf(FolderOfPictures(bgType)))
        if (IsFile(path)) paths[path.filename()] = path;
    return paths;
}

std::string PathOfPicture(const std::string& bgType, const std::string& name)
{
    return FolderOfPictures(bgType) + name;
}

bool IsFile(const std::string& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error);
}

bool IsChanged(const Face& face)
{
    if (!IsFile(face.ResultXml())) return false;
    const std::string shipped = ShippedFaces() + face.name + "/" + face.name + "_result.xml";
    return !IsFile(shipped) || ReadNamedFile(shipped) != ReadNamedFile(face.ResultXml());
}

std::vector<std::string> NotCarried()
{
    std::vector<std::string> notes;
    AddLoosePictures(notes);
    for (const Face& face : ListFaces()) {
        if (!face.writable || !IsFile(face.ResultXml())) continue;
        AddOtherFlatDocument(face, notes);
        AddImages(face, notes);
    }
    return notes;
}

}  // namespace Wfctl
