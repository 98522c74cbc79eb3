// Backups as folders: what is written, and what is refused.

#include "backup-folder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "digest.h"
#include "exit-status.h"
#include "temporary-folder.h"

using namespace Wfctl;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

namespace fs = std::filesystem;

constexpr char kFace[] = "com.example.face-u1";
constexpr char kPng[] = "\x89PNG\r\n\x1a\n and so on";

std::string FaceXml()
{
    return R"(<face-result format="1" id="com.example.face-u1" version="1" width="360" height="360" shape="round"
 default-language="en" preview-time="10:08:36" title-key="t">
<strings language="en"><string key="t">T</string></strings>
<scene><circle cx="1" cy="1" r="1" fill="#FFFFFF"/></scene></face-result>)";
}

// How the work ended.
struct End {
    Exit status = Exit::kDone;
    std::string text;
};
template <typename Work>
End EndOf(const Work& work)
{
    try {
        work();
    } catch (const Stop& stop) {
        return {stop.Status(), stop.what()};
    }
    return {};
}

constexpr char kManifest[] = R"({
 "format": 1, "made": "2026-11-21T07:00:00Z", "current": "com.example.face-u1",
 "items": [
  {"kind": "face", "name": "com.example.face-u1", "file": "faces/com.example.face-u1.xml", "size": 292, "sha256": "63bb"},
  {"kind": "picture", "type": "watch-bg-gallery-u1", "name": "a.png", "file": "pictures/u1/a.png", "size": 18,
   "sha256": "e103"}]})";

// What is said of the manifest with a part of it replaced.
std::string ComplaintWith(const std::string& part, const std::string& by)
{
    std::string text = kManifest;
    const std::size_t at = text.find(part);
    if (at == std::string::npos) return "the manifest has no " + part;
    text.replace(at, part.size(), by);
    return EndOf([&] { ParseManifest(text); }).text;
}

// On a disk in memory where there is one: nothing is tested here that a power cut would show.
class ABackup : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        if (fs::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 1);
    }
    static void TearDownTestSuite() { unsetenv("TMPDIR"); }

    std::string Folder() const { return mFolder.Path() + "/backup"; }
    std::string File(const std::string& name) const { return Folder() + "/" + name; }

    void Write()
    {
        BackupWriter writer(Folder());
        EXPECT_TRUE(writer.Add(kFace, "", FaceXml()));
        EXPECT_TRUE(writer.Add("a.png", kGalleryPictures, kPng));
        writer.Finish(kFace);
    }

    static std::string Contents(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void Put(const std::string& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary) << bytes;
    }

    // Another file of an item, of which the manifest knows.
    void PutAsListed(std::size_t index, const std::string& bytes) const
    {
        BackupManifest manifest = ParseManifest(Contents(File("manifest.json")));
        BackupItem& item = manifest.items.at(index);
        Put(File(item.file), bytes);
        item.size = bytes.size();
        item.sha256 = Sha256(bytes);
        Put(File("manifest.json"), ManifestText(manifest));
    }

    End Check() const
    {
        return EndOf([&] { Backup backup(Folder()); });
    }

    const TemporaryFolder mFolder;
};

class AWrittenBackup : public ABackup {
protected:
    AWrittenBackup() { Write(); }
};

}  // namespace

TEST_F(AWrittenBackup, is_read_as_it_was_written)
{
    const Backup backup(Folder());
    ASSERT_THAT(backup.Manifest().items, SizeIs(2));
    const BackupItem &face = backup.Manifest().items[0], &picture = backup.Manifest().items[1];
    EXPECT_TRUE(face.IsFace());
    EXPECT_EQ(face.name, kFace);
    EXPECT_EQ(backup.Read(face), FaceXml());
    EXPECT_EQ(picture.bgType, kGalleryPictures);
    EXPECT_EQ(picture.name, "a.png");
    EXPECT_EQ(backup.Read(picture), kPng);
    EXPECT_EQ(backup.Manifest().current, kFace);
    EXPECT_EQ(backup.Manifest().made.size(), sizeof "2026-01-01T00:00:00Z" - 1);
}

TEST(ADigest, is_what_other_programs_find)
{
    EXPECT_EQ(Sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Base64, comes_back_as_it_was)
{
    for (const std::string bytes : {"", "a", "ab", "abc", "\xff\xfe\xfd\xfc"})
        EXPECT_EQ(FromBase64(Base64(bytes)), bytes);
    EXPECT_EQ(FromBase64("YQ"), std::nullopt);
    EXPECT_EQ(FromBase64("****"), std::nullopt);
}

TEST_F(ABackup, that_is_not_finished_leaves_nothing)
{
    {
        BackupWriter writer(Folder());
        writer.Add(kFace, "", FaceXml());
    }
    EXPECT_TRUE(fs::is_empty(mFolder.Path()));
}

TEST_F(AWrittenBackup, is_not_made_over_another_one)
{
    const End end = EndOf([&] { BackupWriter writer(Folder()); });
    EXPECT_EQ(end.status, Exit::kError);
    EXPECT_THAT(end.text, HasSubstr("is there already"));
    EXPECT_EQ(Check().text, "");
}

TEST_F(ABackup, may_be_made_in_an_empty_folder)
{
    fs::create_directory(Folder());
    Write();
    EXPECT_EQ(Check().text, "");
}

TEST_F(ABackup, that_is_begun_again_holds_only_what_came_then)
{
    BackupWriter writer(Folder());
    writer.Add(kFace, "", FaceXml());
    writer.Clear();
    writer.Add("com.example.other-u1", "", FaceXml());
    writer.Add("a.png", kThemePictures, kPng);
    writer.Finish("");
    EXPECT_THAT(Backup(Folder()).Manifest().items, SizeIs(2));
    EXPECT_FALSE(fs::exists(File("faces/com.example.face-u1.xml")));
}

TEST_F(ABackup, keeps_names_that_no_disk_and_no_json_takes)
{
    const std::string odd = "\xff\nodd";
    {
        BackupWriter writer(Folder());
        EXPECT_TRUE(writer.Add(kFace, "", FaceXml()));
        EXPECT_TRUE(writer.Add(odd, kGalleryPictures, kPng));
        EXPECT_TRUE(writer.Add("item 2", kGalleryPictures, kPng));
        writer.Finish("");
    }
    const Backup backup(Folder());
    ASSERT_THAT(backup.Manifest().items, SizeIs(3));
    EXPECT_EQ(backup.Manifest().items[1].name, odd);
    EXPECT_EQ(backup.Manifest().items[1].file, "pictures/u1/item 2");
    EXPECT_EQ(backup.Manifest().items[2].name, "item 2");
}

TEST_F(ABackup, takes_nothing_that_a_watch_would_not_take_back)
{
    BackupWriter writer(Folder());
    EXPECT_FALSE(writer.Add(kFace, "", "<face-result"));
    EXPECT_FALSE(writer.Add("a.txt", kGalleryPictures, "text"));
    EXPECT_THAT(writer.Items(), IsEmpty());
}

TEST_F(ABackup, that_is_not_there_is_not_found)
{
    EXPECT_EQ(Check().status, Exit::kNotFound);
}

TEST_F(AWrittenBackup, with_a_changed_file_is_refused_by_the_items_name)
{
    std::string bytes = Contents(File("pictures/u1/a.png"));
    bytes.back() ^= 1;
    Put(File("pictures/u1/a.png"), bytes);
    EXPECT_EQ(Check().status, Exit::kError);
    EXPECT_THAT(Check().text, HasSubstr("the picture \"a.png\" is damaged"));
}

TEST_F(AWrittenBackup, with_a_shorter_file_is_refused)
{
    fs::resize_file(File("pictures/u1/a.png"), 3);
    EXPECT_THAT(Check().text, HasSubstr("the picture \"a.png\" is damaged"));
}

TEST_F(AWrittenBackup, without_a_file_is_refused)
{
    fs::remove(File("pictures/u1/a.png"));
    EXPECT_THAT(Check().text, HasSubstr("the picture \"a.png\" is missing"));
}

TEST_F(AWrittenBackup, with_a_link_in_the_place_of_a_file_is_refused)
{
    fs::rename(File("pictures/u1/a.png"), mFolder.Path() + "/elsewhere");
    fs::create_symlink(mFolder.Path() + "/elsewhere", File("pictures/u1/a.png"));
    EXPECT_THAT(Check().text, HasSubstr("the picture \"a.png\" is missing"));
}

TEST_F(AWrittenBackup, with_a_link_in_the_place_of_a_folder_is_refused)
{
    fs::rename(File("pictures"), mFolder.Path() + "/elsewhere");
    fs::create_directory_symlink(mFolder.Path() + "/elsewhere", File("pictures"));
    EXPECT_THAT(Check().text, HasSubstr("the picture \"a.png\" is missing"));
}

TEST_F(AWrittenBackup, with_a_pipe_in_the_place_of_a_file_is_refused_at_once)
{
    fs::remove(File("pictures/u1/a.png"));
    ASSERT_EQ(mkfifo(File("pictures/u1/a.png").c_str(), 0600), 0);
    EXPECT_THAT(Check().text, HasSubstr("the picture \"a.png\" is no regular file"));
}

TEST_F(AWrittenBackup, with_a_face_that_no_watch_takes_is_refused)
{
    PutAsListed(0, "<no-face/>");
    EXPECT_THAT(Check().text,
                HasSubstr("the face \"com.example.face-u1\" is a document that no watch takes"));
}

TEST_F(AWrittenBackup, with_a_picture_of_another_kind_is_refused)
{
    PutAsListed(1, "GIF89a");
    EXPECT_THAT(Check().text, HasSubstr("the picture \"a.png\" is neither a PNG nor a JPEG"));
}

TEST_F(AWrittenBackup, with_a_file_larger_than_it_may_be_is_refused)
{
    const struct {
        const char *file, *title;
        uintmax_t most;  // bytes
    } kFiles[] = {
        {"pictures/u1/a.png",             "the picture \"a.png\"",            32U << 20},
        {"faces/com.example.face-u1.xml", "the face \"com.example.face-u1\"", 1U << 20 },
        {"manifest.json",                 "the manifest",                     4U << 20 },
    };
    for (const auto& [file, title, most] : kFiles) {
        const uintmax_t size = fs::file_size(File(file));
        fs::resize_file(File(file), most + 1);
        EXPECT_THAT(Check().text, HasSubstr(title + std::string(" is too large")));
        fs::resize_file(File(file), size);
        EXPECT_EQ(Check().text, "") << file;
    }
}

TEST_F(ABackup, with_more_items_than_it_may_have_is_refused)
{
    std::string items = "1";
    for (int i = 0; i < 10'000; ++i) items += ",1";
    EXPECT_THAT(EndOf([&] { ParseManifest(R"({"format": 1, "items": [)" + items + "]}"); }).text,
                HasSubstr("more than 10000"));
}

TEST_F(ABackup, with_pictures_but_without_the_face_they_belong_to_is_refused)
{
    {
        BackupWriter writer(Folder());
        EXPECT_TRUE(writer.Add("com.example.other", "", FaceXml()));
        EXPECT_TRUE(writer.Add("a.png", kThemePictures, kPng));
        writer.Finish("");
    }
    EXPECT_THAT(Check().text, HasSubstr("not the face that they belong to"));
}

TEST_F(ABackup, whose_manifest_leads_out_of_it_is_refused)
{
    for (const char* file : {"../a.png", "/etc/passwd", "faces/../../a.png", "faces/.hidden", "manifest.json",
                             "faces/", "faces/a/b", "pictures/u1/../../faces/x"}) {
        EXPECT_THAT(ComplaintWith("faces/com.example.face-u1.xml", file), HasSubstr("not below faces/"))
            << file;
    }
}

TEST_F(AWrittenBackup, with_a_link_in_the_place_of_its_manifest_is_refused)
{
    fs::rename(File("manifest.json"), mFolder.Path() + "/elsewhere");
    fs::create_symlink(mFolder.Path() + "/elsewhere", File("manifest.json"));
    EXPECT_THAT(Check().text, HasSubstr("manifest.json] cannot be read: Too many levels"));
}

TEST_F(ABackup, whose_manifest_names_what_no_watch_can_hold_is_refused)
{
    for (const char* name : {"\"\"", "\".\"", "\"..\"", "\"../x\"", "\"a/b\"", "\"a\\u0000b\""}) {
        EXPECT_THAT(ComplaintWith("\"a.png\"", name), HasSubstr("has a name that no watch takes")) << name;
    }
}

TEST_F(ABackup, of_another_format_is_refused_by_its_number)
{
    EXPECT_THAT(ComplaintWith("\"format\": 1", "\"format\": 2"), HasSubstr("has format 2"));
}

TEST_F(ABackup, whose_current_face_is_no_name_is_refused)
{
    EXPECT_THAT(ComplaintWith("\"current\": \"com.example.face-u1\"", "\"current\": \"../x\""),
                HasSubstr("the current face has a name that no watch takes"));
}

TEST_F(ABackup, that_is_nested_without_end_is_refused)
{
    constexpr std::size_t kDepth = 1'000'000;
    const std::string nest = std::string(kDepth, '[') + std::string(kDepth, ']');
    EXPECT_THAT(ComplaintWith("\"format\": 1", "\"format\": " + nest), HasSubstr("no JSON of a backup"));
    EXPECT_THAT(ComplaintWith("\"name\": \"a.png\"", "\"name\": " + nest),
                HasSubstr("neither a text nor base64"));
}

TEST_F(ABackup, cannot_write_to_the_terminal_by_its_texts)
{
    EXPECT_THAT(ComplaintWith("\"kind\": \"face\"", "\"kind\": \"\\u001b[2J\""), HasSubstr("\\u001b[2J"));
    EXPECT_THAT(ComplaintWith("\"a.png\"", "\"\\u001b/\""), HasSubstr("\\u001b/"));
}

TEST_F(ABackup, with_a_damaged_manifest_is_refused)
{
    const std::pair<const char*, const char*> kDamages[] = {
        {"{",                   "["                            },
        {"\"items\"",           "\"itemz\""                    },
        {"\"kind\": \"face\"",  "\"kind\": 1"                  },
        {"\"kind\": \"face\"",  "\"kind\": \"fake\""           },
        {"watch-bg-gallery-u1", "watch-bg-gallery-u2"          },
        {"\"name\": \"a.png\"", "\"name\": 7"                  },
        {"\"name\": \"a.png\"", "\"name\": {\"base64\": \"*\"}"},
        {"\"sha256\"",          "\"sha\""                      },
        {"\"file\"",            "\"fale\""                     },
    };
    for (const auto& [part, by] : kDamages) {
        EXPECT_THAT(ComplaintWith(part, by), HasSubstr("the manifest is damaged")) << part;
    }
}

TEST_F(ABackup, that_has_a_name_twice_is_refused)
{
    BackupManifest manifest = ParseManifest(kManifest);
    manifest.items.push_back(manifest.items[1]);
    manifest.items.back().file = "pictures/u1/b.png";
    EXPECT_THAT(EndOf([&] { ParseManifest(ManifestText(manifest)); }).text,
                HasSubstr("the picture \"a.png\" is in the manifest twice"));
}

TEST_F(ABackup, that_has_a_file_twice_is_refused)
{
    BackupManifest manifest = ParseManifest(kManifest);
    manifest.items.push_back(manifest.items[1]);
    manifest.items.back().name = "b.png";
    EXPECT_THAT(EndOf([&] { ParseManifest(ManifestText(manifest)); }).text,
                HasSubstr("the picture \"b.png\" is in the manifest twice"));
}

TEST_F(ABackup, with_a_size_that_is_none_is_refused)
{
    for (const char* size : {"\"size\": -1", "\"size\": 1.5", "\"size\": \"16\"", "\"zise\": 1"}) {
        EXPECT_THAT(ComplaintWith("\"size\": 18", size), HasSubstr("has no size")) << size;
    }
}
