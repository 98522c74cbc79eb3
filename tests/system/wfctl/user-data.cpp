// What the user adds to a watch and takes away: pictures, world clocks, faces; and dates as the watch writes
// them.

#include <filesystem>

#include "a-watch.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kWorldClock[] = "com.corvane.watchface-mirel-c4";
constexpr char kAlbum[] = "com.corvane.watchface-mirel-u1";

class AWatchOfSomebody : public AWatch {
protected:
    // A picture that ships, under a name of the user's.
    std::string Picture(const std::string& name) const
    {
        return Holding(name, ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    }
    std::string Gallery() const
    {
        return mRoot + "/apps/com.corvane.watchface/shared/trusted/theme/GalleryBackgrounds/U1/";
    }
};

}  // namespace

TEST_F(AWatchOfSomebody, keeps_their_pictures)
{
    const Result added = Run({"bg", "add", Picture("b.png"), Picture("a.png")});
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, Gallery() + "b.png\n" + Gallery() + "a.png\n");
    EXPECT_EQ(Run({"bg", "list"}).out, "a.png\nb.png\n");
    EXPECT_EQ(Run({"bg", "list", "--type", "digital"}).out, "");
    EXPECT_EQ(Run({"bg", "del", "a.png"}).status, 0);
    EXPECT_EQ(Run({
                      "bg", "list", "--json"
    })
                  .AsJson(),
              Json::object({{"folder", Gallery()}, {"pictures", {"b.png"}}}));
}

TEST_F(AWatchOfSomebody, keeps_pictures_of_the_theme_apart)
{
    ASSERT_EQ(Run({"bg", "add", Picture("a.png"), "--type", "digital"}).status, 0);
    EXPECT_EQ(Run({"bg", "list"}).out, "");
    EXPECT_EQ(Run({"bg", "list", "--type", "digital"}).out, "a.png\n");
}

TEST_F(AWatchOfSomebody, takes_a_damaged_picture_with_a_warning)
{
    EXPECT_EQ(Run({"bg", "add", Picture("whole.png")}).err, "");
    const std::string whole = ContentsOf(Picture("whole.png"));
    const std::pair<std::string, std::string> damaged[] = {
        {Holding("cut.png", whole.substr(0, whole.size() / 2)),                   "is a damaged PNG"},
        {Holding("cut.jpg",                 "\xff\xd8\xff \xff\xda and so on"),               "is a JPEG that is cut short"},
    };
    for (const auto& [file, problem] : damaged) {
        const Result added = Run({"bg", "add", file});
        EXPECT_EQ(added.status, 0) << file;
        EXPECT_THAT(added.err, StartsWith("wfctl: warning: [" + file + "] " + problem)) << file;
    }
    EXPECT_EQ(Run({"bg", "list"}).out, "cut.jpg\ncut.png\nwhole.png\n");
}

TEST_F(AWatchOfSomebody, takes_back_what_is_pending)
{
    ASSERT_EQ(Run({"bg", "add", Picture("old.png")}).status, 0);
    ASSERT_EQ(Run({"bg", "add", Picture("new.png"), "--pending"}).status, 0);
    ASSERT_EQ(Run({"bg", "del", "old.png", "--pending"}).status, 0);
    ASSERT_EQ(Run({"bg", "cancel"}).status, 0);
    EXPECT_EQ(Run({"bg", "list"}).out, "old.png\n");
}

TEST_F(AWatchOfSomebody, carries_out_what_is_pending)
{
    ASSERT_EQ(Run({"bg", "add", Picture("old.png")}).status, 0);
    ASSERT_EQ(Run({"bg", "add", Picture("new.png"), "--pending"}).status, 0);
    ASSERT_EQ(Run({"bg", "del", "old.png", "--pending"}).status, 0);
    ASSERT_EQ(Run({"bg", "save"}).status, 0);
    EXPECT_EQ(Run({"bg", "list"}).out, "new.png\n");
}

TEST_F(AWatchOfSomebody, takes_no_file_that_is_no_picture)
{
    const Result added = Run({"bg", "add", Picture("a.png"), Holding("notes.txt", "text")});
    EXPECT_EQ(added.status, 1);
    EXPECT_THAT(added.err, HasSubstr("neither a PNG nor a JPEG"));
    EXPECT_EQ(Run({"bg", "add", "/nonexistent.png"}).status, 10);
    EXPECT_EQ(Run({"bg", "list"}).out, "");
}

TEST_F(AWatchOfSomebody, does_not_know_pictures_that_it_has_not)
{
    EXPECT_EQ(Run({"bg", "del", "none.png"}).status, 10);
}

TEST_F(AWatchOfSomebody, leaves_no_copy_of_a_picture_where_it_was_handed_over)
{
    ASSERT_EQ(Run({"bg", "add", Picture("a.png")}).status, 0);
    EXPECT_TRUE(fs::is_empty(mRoot + "/apps/com.corvane.watchface-editor/shared/data/wfctl"));
}

TEST_F(AWatchOfSomebody, shows_the_picture_that_is_chosen)
{
    ASSERT_EQ(Run({"bg", "add", Picture("a.png")}).status, 0);
    ASSERT_EQ(Run({"edit", kAlbum, "--photo", "picture=a.png"}).status, 0);
    const std::string preview = ReadWriteFace(kAlbum) + kAlbum + ".png";
    const std::string chosen = ContentsOf(preview);
    EXPECT_NE(chosen, ContentsOf(ReadOnlyFace(kAlbum) + kAlbum + ".png"));
    ASSERT_EQ(Run({"bg", "del", "a.png"}).status, 0);
    ASSERT_EQ(Run({"preview", "request", kAlbum}).status, 0);
    EXPECT_NE(ContentsOf(preview), chosen);
}

TEST_F(AWatchOfSomebody, sets_the_world_clock_of_the_face_that_was_prepared)
{
    ASSERT_EQ(Run({"set", kWorldClock}).status, 0);
    ASSERT_EQ(Run({"world-clock", "prepare"}).status, 0);
    ASSERT_EQ(Run({"set", kDigital}).status, 0);
    const Result updated = Run({"world-clock", "update", "city", "Asia/Seoul:Gangnam"});
    ASSERT_EQ(updated.status, 0) << updated.err;
    EXPECT_EQ(updated.out, std::string("city of ") + kWorldClock + ": Gangnam (Asia/Seoul)\n");
    EXPECT_THAT(ContentsOf(ReadWriteFace(kWorldClock) + "watchface.xml"), HasSubstr("city=\"Gangnam\""));
    EXPECT_EQ(Run({"world-clock", "show", kWorldClock, "zone"}).out,
              "city: Gangnam\ncountry: South Korea\ntimezone: Asia/Seoul\ntimezonePath: Asia/Seoul\n"
              "updatedMode: 1\n");
}

TEST_F(AWatchOfSomebody, prepares_no_world_clock_without_a_current_face)
{
    const Result prepared = Run({"world-clock", "prepare"});
    EXPECT_EQ(prepared.status, 10);
    EXPECT_EQ(prepared.err, "wfctl: no face is current yet; type: wfctl set FACE\n");
}

TEST_F(AWatchOfSomebody, sets_no_world_clock_without_a_preparation)
{
    EXPECT_EQ(Run({"world-clock", "update", "city", "Asia/Seoul"}).status, 9);
}

TEST_F(AWatchOfSomebody, sets_no_world_clock_that_there_is_not)
{
    ASSERT_EQ(Run({"set", kWorldClock}).status, 0);
    ASSERT_EQ(Run({"world-clock", "prepare"}).status, 0);
    const Result slot = Run({"world-clock", "update", "citty", "Asia/Seoul"});
    EXPECT_EQ(slot.status, 2);
    EXPECT_THAT(slot.err, HasSubstr("did you mean city?"));
    EXPECT_EQ(Run({"world-clock", "update", "date", "Asia/Seoul"}).status, 2);
    EXPECT_EQ(Run({"world-clock", "update", "city", "Asia/Soul"}).status, 2);
    const Result stored = Run({"world-clock", "show", kWorldClock, "zone"});
    EXPECT_EQ(stored.status, 1);
    EXPECT_EQ(stored.out, "");
}

TEST_F(AWatchOfSomebody, writes_dates_in_its_language)
{
    ASSERT_EQ(Run({"setting", "set", "language=ko_KR", "timezone=Asia/Seoul"}).status, 0);
    EXPECT_EQ(Run({"date", "yMMMMEEEEd", "--at", "0"}).out,
              "1970\xEB\x85\x84 1\xEC\x9B\x94 1\xEC\x9D\xBC \xEB\xAA\xA9\xEC\x9A\x94\xEC\x9D\xBC\n");
    EXPECT_EQ(Run({"date", "HH", "--pattern", "--at", "0"}).out, "09\n");
    EXPECT_EQ(Run({"date", "y", "--at", "today"}).status, 2);
}

TEST_F(AWatchOfSomebody, goes_back_to_the_shipped_face_when_its_changes_are_deleted)
{
    ASSERT_EQ(Run({"edit", kClassic, "--pick", "dial=roman"}).status, 0);
    const Result deleted = Run({"delete", kClassic});
    ASSERT_EQ(deleted.status, 0) << deleted.err;
    EXPECT_THAT(deleted.out, HasSubstr("as it was shipped again"));
    EXPECT_FALSE(fs::exists(ReadWriteFace(kClassic)));
    EXPECT_EQ(Run({"delete", kClassic}).status, 9);
    EXPECT_EQ(Run({"delete", "com.example.none"}).status, 10);
}

TEST_F(AWatchOfSomebody, tells_the_manager_when_the_editor_deletes)
{
    ASSERT_EQ(Run({"edit", kClassic, "--pick", "dial=roman"}).status, 0);
    const auto manager = Listen({"--as", kManager, "--count", "1"});
    ASSERT_EQ(Run({"delete", kClassic, "--as", kEditor}).status, 0);
    const Json heard = Json::parse(manager->NextLine().value_or("null"));
    EXPECT_EQ(heard["bundle"], Json::object({
                                   {"type",  "watch-setting-deleted"},
                                   {"pkgid", kClassic               }
    }));
}
