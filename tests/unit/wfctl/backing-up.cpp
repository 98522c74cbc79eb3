// What of a watch does not reach a backup.

#include "backing-up.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "areas.h"
#include "backup-contents.h"
#include "temporary-folder.h"

using namespace Wfctl;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

namespace fs = std::filesystem;

constexpr char kPng[] = "\x89PNG\r\n\x1a\n and so on";
constexpr char kTooOdd[] = "the picture \"a.png\": it is neither a PNG nor a JPEG, or too large";
constexpr char kNotSent[] = "the picture \"a.png\": the service did not send it";

class ABackupOfPictures : public testing::Test {
protected:
    ABackupOfPictures() { Platform::SetAreas({mFolder.Path() + "/watch", mFolder.Path() + "/resources"}); }

    static void Plant(const char* bgType, const std::string& bytes)
    {
        const std::string path = PathOfPicture(bgType, "a.png");
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
    }
    void Take(const char* bgType)
    {
        bundle item;
        item.Set("type", std::string("image"));
        item.Set("file_name", std::string("a.png"));
        item.Set("file_path", PathOfPicture(bgType, "a.png"));
        item.Set("bg_type", std::string(bgType));
        mBackup.Take(item);
    }

    const TemporaryFolder mFolder;
    BackupWriter mWriter{mFolder.Path() + "/backup"};
    BackingUp mBackup{mWriter};
};

}  // namespace

TEST_F(ABackupOfPictures, misses_none_that_was_sent)
{
    for (const char* bgType : kBackedUpPictures) {
        Plant(bgType, kPng);
        Take(bgType);
    }
    EXPECT_THAT(mBackup.Missing(), ElementsAre());
}

TEST_F(ABackupOfPictures, says_why_one_was_left_out_and_no_more_of_it)
{
    Plant(kThemePictures, "a text");
    Take(kThemePictures);
    EXPECT_THAT(mBackup.Missing(), ElementsAre(kTooOdd));
}

TEST_F(ABackupOfPictures, misses_one_though_another_of_its_name_was_left_out)
{
    Plant(kThemePictures, "a text");
    Plant(kGalleryPictures, kPng);
    Take(kThemePictures);
    EXPECT_THAT(mBackup.Missing(), UnorderedElementsAre(kTooOdd, kNotSent));
}

TEST_F(ABackupOfPictures, that_is_begun_again_forgets_what_was_left_out)
{
    Plant(kThemePictures, "a text");
    Take(kThemePictures);
    mBackup.Begin();
    EXPECT_THAT(mBackup.Missing(), ElementsAre(kNotSent));
}
