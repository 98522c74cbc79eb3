// What of the user's pictures no face can show. Those that the drawing knows are tested with whole watches.

#include "photo-files.h"

#include <gmock/gmock.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "temporary-folder.h"

using namespace Wfctl;
namespace fs = std::filesystem;

namespace {

class APhoto : public testing::Test {
protected:
    std::string ProblemOf(const std::string& bytes) const
    {
        std::ofstream(mPath, std::ios::binary) << bytes;
        return PhotoProblem(mPath);
    }

    const TemporaryFolder mFolder;
    const std::string mPath = mFolder.Path() + "/a.jpg";
};

// While it lives, root may read only what its files say.
class RootLikeOthers {
public:
    RootLikeOthers()
    {
        syscall(SYS_capget, &mHeader, mFormer.data());
        auto less = mFormer;
        less[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        syscall(SYS_capset, &mHeader, less.data());
    }
    RootLikeOthers(const RootLikeOthers&) = delete;
    RootLikeOthers& operator=(const RootLikeOthers&) = delete;
    ~RootLikeOthers() { syscall(SYS_capset, &mHeader, mFormer.data()); }

private:
    __user_cap_header_struct mHeader{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> mFormer{};
};

}  // namespace

TEST_F(APhoto, that_is_a_jpeg_has_to_have_its_end)
{
    const std::string head = "\xff\xd8\xff\xe1 a preview \xff\xda and its end \xff\xd9";
    EXPECT_EQ(ProblemOf(head + " \xff\xda and so on \xff\xd9"), "");
    EXPECT_EQ(ProblemOf(head + " \xff\xda and so on"), "is a JPEG that is cut short");
}

TEST_F(APhoto, that_is_a_png_has_to_be_decodable)
{
    EXPECT_EQ(ProblemOf("\x89PNG\r\n\x1a\n and so on"),
              "is a damaged PNG, or one of more than 4096 pixels a side");
}

TEST_F(APhoto, is_of_a_kind_that_can_be_drawn)
{
    EXPECT_EQ(ProblemOf("GIF89a"), "is neither a PNG nor a JPEG");
    EXPECT_EQ(ProblemOf(""), "is neither a PNG nor a JPEG");
}

TEST_F(APhoto, is_a_file_of_its_own)
{
    fs::create_symlink("/etc/passwd", mPath);
    EXPECT_EQ(PhotoProblem(mPath), "is no regular file");
    fs::remove(mPath);
    fs::create_directory(mPath);
    EXPECT_EQ(PhotoProblem(mPath), "is no regular file");
}

TEST_F(APhoto, is_no_larger_than_a_drawing_reads)
{
    ProblemOf("\xff\xd8\xff");
    fs::resize_file(mPath, (32U << 20) + 1);
    EXPECT_EQ(PhotoProblem(mPath), "is larger than 32 MiB");
}

TEST_F(APhoto, can_be_read)
{
    ProblemOf("\xff\xd8\xff");
    fs::permissions(mPath, fs::perms::none);
    const RootLikeOthers like;
    EXPECT_EQ(PhotoProblem(mPath), "cannot be read (Permission denied)");
}
