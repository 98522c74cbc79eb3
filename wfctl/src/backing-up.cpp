#include "backing-up.h"

#include <algorithm>

#include "backup-contents.h"
#include "reading-files.h"
#include "service-peer.h"

namespace Wfctl {

namespace {

constexpr char kGalleryFace[] = "com.corvane.watchface-mirel-u1";

std::size_t Expected()
{
    const auto faces = ListFaces();
    auto count = static_cast<std::size_t>(std::ranges::count_if(faces, &Face::writable));
    for (const char* bgType : kBackedUpPictures) count += PicturesOf(bgType).size();
    return count;
}

BackupItem ItemOf(const std::string& name, const std::string& bgType)
{
    BackupItem item;
    item.name = name;
    item.bgType = bgType;
    return item;
}

}  // namespace

BackingUp::BackingUp(BackupWriter& writer)
    : mWriter(writer), mExpected(Expected()), mProgress("backing up", std::max<std::size_t>(mExpected, 1))
{
}

void BackingUp::Begin()
{
    mWriter.Clear();
    mLeftOut.clear();
    mNotes.clear();
}

void BackingUp::Take(const bundle& item)
{
    const std::string type = TextOf(item, "type");
    if (type == "watch") {
        Add(TextOf(item, "pkgid"), "", TextOf(item, "result_xml"));
    } else if (type == "image") {
        const std::string path = TextOf(item, "file_path");
        if (IsFile(path)) Add(TextOf(item, "file_name"), TextOf(item, "bg_type"), ReadNamedFile(path));
    }
    mProgress.Show(std::min(mWriter.Items().size(), mExpected));
}

void BackingUp::AddGalleryFace()
{
    const auto isPicture = [](const BackupItem& item) { return !item.IsFace(); };
    if (std::ranges::none_of(mWriter.Items(), isPicture) || Has(kGalleryFace)) return;
    const std::string shipped = ShippedFaces() + kGalleryFace + "/" + kGalleryFace + "_result.xml";
    if (IsFile(shipped)) Add(kGalleryFace, "", ReadNamedFile(shipped));
}

std::vector<std::string> BackingUp::Missing() const
{
    mProgress.Clear();
    std::vector<std::string> notes = mNotes;
    const auto require = [&](const std::string& name, const std::string& bgType) {
        if (!Has(name, bgType) && !mLeftOut.contains({bgType, name}))
            notes.push_back(ItemOf(name, bgType).Title() + ": the service did not send it");
    };
    for (const Face& face : ListFaces())
        if (face.writable && IsFile(face.ResultXml())) require(face.name, "");
    for (const char* bgType : kBackedUpPictures)
        for (const auto& picture : PicturesOf(bgType)) require(picture.first, bgType);
    return notes;
}

bool BackingUp::Has(const std::string& name, const std::string& bgType) const
{
    return std::ranges::any_of(
        mWriter.Items(), [&](const BackupItem& item) { return item.bgType == bgType && item.name == name; });
}

void BackingUp::Add(const std::string& name, const std::string& bgType, const std::string& bytes)
{
    if (mWriter.Add(name, bgType, bytes)) return;
    mLeftOut.insert({bgType, name});
    const BackupItem item = ItemOf(name, bgType);
    mNotes.push_back(item.Title() + (item.IsFace() ? ": its document is one that no watch takes"
                                                   : ": it is neither a PNG nor a JPEG, or too large"));
}

}  // namespace Wfctl
