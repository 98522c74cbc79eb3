// Folders that several users share: who may do what with what is made in them.

#include <sys/stat.h>

#include "contract-test.h"
#include "files.h"

namespace Contract {
namespace {

namespace fs = std::filesystem;

class ASharedFolder : public ContractTest {
protected:
    ASharedFolder() : umaskBefore(umask(0077)) { chmod(InArea().c_str(), 0775); }
    ~ASharedFolder() override { umask(umaskBefore); }

    static mode_t RightsOf(const std::string& path)
    {
        struct stat info {};
        return stat(path.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
    }

    const mode_t umaskBefore;
};

TEST_F(ASharedFolder, passes_its_rights_on_to_folders_whatever_the_umask)
{
    EXPECT_TRUE(ecore_file_mkpath(InArea("watchlist/a").c_str()));
    EXPECT_EQ(RightsOf(InArea("watchlist")), 0775u);
    EXPECT_EQ(RightsOf(InArea("watchlist/a")), 0775u);
}

TEST_F(ASharedFolder, passes_reading_on_to_files)
{
    FileOutputStream(InArea("watchface.xml")).Write("<watchface/>");
    CommonUtilFile::Copy(InArea("watchface.xml"), InArea("copy.xml"));
    EXPECT_EQ(RightsOf(InArea("watchface.xml")), 0644u);
    EXPECT_EQ(RightsOf(InArea("copy.xml")), 0644u);
}

TEST_F(ASharedFolder, keeps_from_others_what_they_may_not_do_in_it)
{
    chmod(InArea().c_str(), 0750);
    EXPECT_TRUE(ecore_file_mkpath(InArea("watchlist").c_str()));
    FileOutputStream(InArea("watchface.xml")).Write("<watchface/>");
    EXPECT_EQ(RightsOf(InArea("watchlist")), 0750u);
    EXPECT_EQ(RightsOf(InArea("watchface.xml")), 0640u);
}

TEST_F(ASharedFolder, of_all_programs_has_locks_that_its_group_may_take)
{
    const std::string common = Platform::CurrentAreas().Common();
    fs::create_directories(common);
    fs::remove(common + "locks");
    chmod(common.c_str(), 0770);
    const CommonUtilFileLock lock(InArea("watchface.xml"), CommonUtilFileLock::kReadWrite);
    EXPECT_EQ(RightsOf(common + "locks"), 0660u);
}

}  // namespace
}  // namespace Contract
