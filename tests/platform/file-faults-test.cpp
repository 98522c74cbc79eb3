// Files that the machine does not give: the caller's operation fails, and the log says why.

#include <gmock/gmock.h>
#include <unistd.h>

#include <climits>
#include <filesystem>

#include "areas.h"
#include "files.h"
#include "private-bus.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class AFile : public testing::Test {
protected:
    AFile() : before(Platform::CurrentAreas())
    {
        Platform::SetAreas({folder.Path(), folder.Path()});
        std::filesystem::create_directories(InArea("held"));
        testing::internal::CaptureStderr();
    }
    ~AFile() override { Platform::SetAreas(before); }

    std::string InArea(const std::string& name) const
    {
        return folder.Path() + "/apps/a/shared/data/" + name;
    }
    static std::string Log() { return testing::internal::GetCapturedStderr(); }

    TestSupport::TemporaryFolder folder;
    Platform::Areas before;
};

TEST_F(AFile, that_cannot_be_removed_is_a_line_of_the_log)
{
    EXPECT_FALSE(ecore_file_remove(InArea("held").c_str()));  // it is a folder
    EXPECT_THAT(Log(), HasSubstr("E/platform"));
}

TEST_F(AFile, that_cannot_be_opened_to_be_copied_is_a_line_of_the_log)
{
    ASSERT_EQ(symlink("loop", InArea("loop").c_str()), 0);
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("loop"), InArea("copy")));
    EXPECT_THAT(Log(), HasSubstr("E/platform"));
}

TEST_F(AFile, that_cannot_be_looked_for_is_a_line_of_the_log)
{
    ASSERT_EQ(symlink("loop", InArea("loop").c_str()), 0);
    EXPECT_FALSE(CommonUtilFile::Exists(InArea("loop")));
    EXPECT_THAT(Log(), HasSubstr("E/platform"));
}

TEST_F(AFile, whose_folder_cannot_be_made_is_a_line_of_the_log)
{
    EXPECT_FALSE(ecore_file_mkpath(InArea(std::string(NAME_MAX + 1, 'x')).c_str()));
    EXPECT_THAT(Log(), HasSubstr("E/platform"));
}

TEST_F(AFile, whose_folder_cannot_be_listed_is_a_line_of_the_log)
{
    ASSERT_EQ(symlink("loop", InArea("loop").c_str()), 0);
    EXPECT_EQ(ecore_file_ls(InArea("loop").c_str()), nullptr);
    EXPECT_THAT(Log(), HasSubstr("E/platform"));
}

TEST_F(AFile, that_is_not_there_is_nobodys_fault)
{
    EXPECT_EQ(ecore_file_ls(InArea("none").c_str()), nullptr);
    EXPECT_FALSE(CommonUtilFile::Exists(InArea("none")));
    EXPECT_FALSE(CommonUtilFile::Exists(InArea("none/none")));
    EXPECT_FALSE(CommonUtilFile::Copy(InArea("none"), InArea("copy")));
    EXPECT_FALSE(ecore_file_remove(InArea("none").c_str()));
    EXPECT_FALSE(ecore_file_recursive_rm(InArea("none").c_str()));
    EXPECT_EQ(ReadWholeFile(InArea("none")), "");
    EXPECT_THAT(Log(), IsEmpty());
}

}  // namespace
