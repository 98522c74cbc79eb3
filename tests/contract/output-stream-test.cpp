#include <fcntl.h>
#include <unistd.h>

#include "contract-test.h"
#include "files.h"

namespace Contract {
namespace {

namespace fs = std::filesystem;

class AnOutputStream : public ContractTest {
protected:
    std::string path = InArea("watchface.xml");
};

TEST_F(AnOutputStream, writes_a_new_file)
{
    FileOutputStream stream(path);
    stream.Write("<watchface>");
    stream.Write(std::string_view("\0\xFF", 2));
    stream.Write("");
    stream.Write("</watchface>");
    EXPECT_TRUE(stream.Good());
    stream.Close();
    EXPECT_TRUE(stream.Good());
    EXPECT_EQ(ReadFile(path), std::string("<watchface>\0\xFF</watchface>", 25));
}

TEST_F(AnOutputStream, leaves_exactly_the_new_bytes)
{
    WriteFile(path, "a longer old content");
    FileOutputStream stream(path);
    stream.Write("new");
    stream.Close();
    EXPECT_EQ(ReadFile(path), "new");
}

TEST_F(AnOutputStream, empties_a_file_that_it_writes_nothing_to)
{
    WriteFile(path, "old");
    FileOutputStream(path).Close();
    EXPECT_EQ(ReadFile(path), "");
}

TEST_F(AnOutputStream, closes_when_it_is_destroyed)
{
    {
        FileOutputStream stream(path);
        stream.Write("new");
    }
    EXPECT_EQ(ReadFile(path), "new");
}

TEST_F(AnOutputStream, may_be_closed_twice)
{
    FileOutputStream stream(path);
    stream.Write("new");
    stream.Close();
    stream.Close();
    EXPECT_TRUE(stream.Good());
    EXPECT_EQ(ReadFile(path), "new");
}

TEST_F(AnOutputStream, keeps_the_old_content_until_it_closes)
{
    WriteFile(path, "old");
    FileOutputStream stream(path);
    stream.Write("new");
    EXPECT_EQ(ReadFile(path), "old");
    stream.Close();
    EXPECT_EQ(ReadFile(path), "new");
}

TEST_F(AnOutputStream, replaces_the_file_in_one_step)
{
    WriteFile(path, "old");
    const int reader = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    FileOutputStream stream(path);
    stream.Write("new");
    stream.Close();
    char content[8] = {};
    EXPECT_EQ(read(reader, content, sizeof content), 3);
    EXPECT_STREQ(content, "old");
    close(reader);
}

TEST_F(AnOutputStream, writes_large_content)
{
    const std::string content(3'000'000, 'x');
    {
        FileOutputStream stream(path);
        stream.Write(content);
    }
    EXPECT_EQ(ReadFile(path), content);
}

TEST_F(AnOutputStream, leaves_nothing_else_behind)
{
    {
        FileOutputStream stream(path);
        stream.Write("new");
    }
    const fs::path folder = fs::path(path).parent_path();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST_F(AnOutputStream, without_a_folder_only_sets_its_state)
{
    FileOutputStream stream(InArea("nothing/watchface.xml"));
    EXPECT_FALSE(stream.Good());
    stream.Write("new");
    stream.Close();
    EXPECT_FALSE(stream.Good());
    EXPECT_FALSE(fs::exists(InArea("nothing")));
}

TEST_F(AnOutputStream, keeps_the_old_content_when_it_fails)
{
    WriteFile(path, "old");
    FileOutputStream stream(path);
    stream.Write("new");
    // A folder in the file's place cannot be replaced by a file.
    fs::remove(path);
    WriteFile(path + "/inside", "kept");
    stream.Close();
    EXPECT_FALSE(stream.Good());
    EXPECT_EQ(ReadFile(path + "/inside"), "kept");
    const fs::path folder = fs::path(path).parent_path();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

}  // namespace
}  // namespace Contract
