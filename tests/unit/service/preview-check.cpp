// Whether a preview shows anything, and what happens to those that do not. Pictures are real and read by
// cairo.
//
// The byte that decides is at (height / 2) * stride + width / 2 + 3; in memory a pixel is blue, green, red,
// alpha.

#include "service-preview-check.h"

#include <cairo.h>
#include <sys/stat.h>

#include "on-a-platform.h"
#include "png-writer.h"

using namespace TestSupport;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using WatchfaceService::PreviewCheck;

namespace {

class APreviewCheck : public OnAPlatform {
protected:
    APreviewCheck() { platform.SetPortUp(kCapture, kCapturePort); }

    std::string PreviewOf(const std::string& name) const
    {
        return platform.RW("watchlist/" + name + "/" + name + ".png");
    }
    void Store(const std::string& name, const std::string& png) { platform.WriteFile(PreviewOf(name), png); }

    // A new preview that is looked at.
    void AddAndCheck(const std::string& name)
    {
        check.Add(name);
        platform.RunUntilIdle();
    }
    MemoryPlatform::Strings Captures() const
    {
        MemoryPlatform::Strings names;
        for (const auto& sent : platform.SentTo(kCapture)) names.push_back(sent.Text("pkgName"));
        return names;
    }

    bool IsValid(const std::string& bytes)
    {
        platform.WriteFile(platform.Root() + "/picture", bytes);
        return check.IsValid(platform.Root() + "/picture");
    }

    const std::string blank = Png(8, 8, kTransparent);
    const std::string black = Png(8, 8, kBlack);
    std::shared_ptr<WatchfaceService::WatchfaceManager> manager =
        std::make_shared<WatchfaceService::WatchfaceManager>();
    PreviewCheck check{manager};
};

// A pixel of one kind in a picture of another.
std::string Spot(int width, int height, int x, int y, Color spot, Color rest)
{
    return Png(width, height, [=](int atX, int atY) { return atX == x && atY == y ? spot : rest; });
}

constexpr Color kYellow = {255, 255, 0, 255};   // without blue
constexpr Color kMagenta = {255, 0, 255, 255};  // without green
constexpr Color kCyan = {0, 255, 255, 255};     // without red
constexpr Color kBlue = {0, 0, 255, 255};

}  // namespace

// The one byte

TEST_F(APreviewCheck, takes_a_transparent_preview_for_blank)
{
    EXPECT_FALSE(IsValid(Png(360, 360, kTransparent)));
    EXPECT_FALSE(IsValid(Png(8, 8, kTransparent)));
}

TEST_F(APreviewCheck, takes_an_opaque_preview_for_valid)
{
    EXPECT_TRUE(IsValid(Png(360, 360, kBlack)));
    EXPECT_TRUE(IsValid(Png(8, 8, kBlack)));
}

TEST_F(APreviewCheck, looks_in_a_width_that_is_a_multiple_of_8_at_the_alpha_of_its_eighth_pixel)
{
    EXPECT_TRUE(IsValid(Spot(16, 9, 2, 4, kBlack, kTransparent)));
    EXPECT_FALSE(IsValid(Spot(16, 9, 2, 4, kTransparent, kWhite)));
    EXPECT_TRUE(IsValid(Spot(360, 360, 45, 180, kBlack, kTransparent)));
    EXPECT_FALSE(IsValid(Spot(360, 360, 45, 180, kTransparent, kWhite)));
}

TEST_F(APreviewCheck, does_not_look_at_the_pixel_in_the_middle)
{
    EXPECT_FALSE(IsValid(Spot(16, 9, 8, 4, kWhite, kTransparent)));
    EXPECT_TRUE(IsValid(Spot(16, 9, 8, 4, kTransparent, kWhite)));
}

TEST_F(APreviewCheck, looks_in_the_row_below_the_middle_of_an_even_height)
{
    EXPECT_TRUE(IsValid(Spot(8, 2, 1, 1, kBlack, kTransparent)));
    EXPECT_FALSE(IsValid(Spot(8, 2, 1, 0, kBlack, kTransparent)));
    EXPECT_TRUE(IsValid(Spot(8, 3, 1, 1, kBlack, kTransparent)));
    EXPECT_FALSE(IsValid(Spot(8, 3, 1, 2, kBlack, kTransparent)));
}

TEST_F(APreviewCheck, looks_in_other_widths_at_the_channel_that_half_the_width_comes_to)
{
    // width / 2 + 3: 8 is blue, 9 green, 10 red of the third pixel; 11 would be its alpha.
    EXPECT_FALSE(IsValid(Png(10, 1, kYellow)));
    EXPECT_TRUE(IsValid(Png(10, 1, kMagenta)));
    EXPECT_FALSE(IsValid(Png(12, 1, kMagenta)));
    EXPECT_TRUE(IsValid(Png(12, 1, kCyan)));
    EXPECT_FALSE(IsValid(Png(14, 1, kCyan)));
    EXPECT_TRUE(IsValid(Png(14, 1, kYellow)));
    EXPECT_TRUE(IsValid(Spot(10, 1, 2, 0, kBlue, kTransparent)));
    EXPECT_FALSE(IsValid(Spot(10, 1, 2, 0, kYellow, kWhite)));
}

TEST_F(APreviewCheck, halves_an_odd_width_downwards)
{
    EXPECT_FALSE(IsValid(Spot(11, 1, 2, 0, kYellow, kWhite)));
    EXPECT_FALSE(IsValid(Spot(9, 1, 1, 0, kTransparent, kWhite)));
}

TEST_F(APreviewCheck, takes_a_black_preview_for_blank_where_the_byte_is_not_an_alpha)
{
    EXPECT_FALSE(IsValid(Png(12, 12, kBlack)));
}

TEST_F(APreviewCheck, takes_a_byte_of_1_for_valid)
{
    EXPECT_TRUE(IsValid(Png(8, 8, Color{0, 0, 0, 1})));
}

TEST_F(APreviewCheck, stays_within_the_smallest_pictures)
{
    for (const int width : {1, 2, 3, 4, 5, 6, 7, 8, 9}) {
        for (const int height : {1, 2, 3}) {
            EXPECT_TRUE(IsValid(Png(width, height, kWhite))) << width << "x" << height;
            EXPECT_FALSE(IsValid(Png(width, height, kTransparent))) << width << "x" << height;
        }
    }
}

TEST_F(APreviewCheck, logs_the_size)
{
    IsValid(Png(10, 3, kWhite));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("I preview size:10x3 stride:40"));
}

// Kinds of pictures

TEST_F(APreviewCheck, reads_pictures_of_every_kind)
{
    struct Row {
        const char* name;
        PngKind kind;
    };
    const Row rows[] = {
        {"rgba",             {PNG_COLOR_TYPE_RGBA, 8}         },
        {"rgba interlaced",  {PNG_COLOR_TYPE_RGBA, 8, true}   },
        {"rgba of 16 bits",  {PNG_COLOR_TYPE_RGBA, 16}        },
        {"grey and alpha",   {PNG_COLOR_TYPE_GRAY_ALPHA, 8}   },
        {"... of 16 bits",   {PNG_COLOR_TYPE_GRAY_ALPHA, 16}  },
        {"palette of 1 bit", {PNG_COLOR_TYPE_PALETTE, 1}      },
        {"... of 2 bits",    {PNG_COLOR_TYPE_PALETTE, 2}      },
        {"... of 4 bits",    {PNG_COLOR_TYPE_PALETTE, 4, true}},
        {"... of 8 bits",    {PNG_COLOR_TYPE_PALETTE, 8}      },
    };
    for (const Row& row : rows) {
        EXPECT_TRUE(IsValid(Png(16, 16, kBlack, row.kind))) << row.name;
        EXPECT_FALSE(IsValid(Png(16, 16, kTransparent, row.kind))) << row.name;
        EXPECT_TRUE(IsValid(Png(1, 1, kBlack, row.kind))) << row.name;
    }
}

TEST_F(APreviewCheck, takes_a_picture_that_has_no_alpha_for_opaque)
{
    const PngKind kinds[] = {
        {PNG_COLOR_TYPE_RGB, 8 },
        {PNG_COLOR_TYPE_RGB, 16},
        {PNG_COLOR_TYPE_RGB, 8,  true},
        {PNG_COLOR_TYPE_GRAY,                  1 },
        {PNG_COLOR_TYPE_GRAY,                  2},
        {PNG_COLOR_TYPE_GRAY,                  4 },
        {PNG_COLOR_TYPE_GRAY,                  8, true},
        {PNG_COLOR_TYPE_GRAY,              16               }
    };
    for (const PngKind& kind : kinds) {
        EXPECT_TRUE(IsValid(Png(16, 16, kBlack, kind))) << kind.colorType << " " << kind.bitDepth;
        EXPECT_FALSE(IsValid(Png(12, 12, kBlack, kind))) << kind.colorType << " " << kind.bitDepth;
        EXPECT_TRUE(IsValid(Png(12, 12, kWhite, kind))) << kind.colorType << " " << kind.bitDepth;
    }
}

// What is no picture

TEST_F(APreviewCheck, logs_the_status_of_what_is_no_picture_and_takes_it_for_blank)
{
    EXPECT_FALSE(IsValid("not a picture, but longer than a picture's first lines"));
    EXPECT_THAT(platform.LogTexts(), ElementsAre("E cairo_image_surface_create_from_png failed!! (" +
                                                 std::to_string(CAIRO_STATUS_READ_ERROR) + ")"));
}

TEST_F(APreviewCheck, takes_what_cannot_be_decoded_for_blank)
{
    const std::string large = Png(64, 64, kWhite);
    EXPECT_FALSE(IsValid(""));
    EXPECT_FALSE(IsValid(large.substr(0, 8)));
    EXPECT_FALSE(IsValid(large.substr(0, 24)));
    EXPECT_FALSE(IsValid(large.substr(0, large.size() / 2)));
    EXPECT_FALSE(IsValid(large.substr(0, large.size() - 12)));  // without its last chunk
    std::string damaged = large;
    damaged[damaged.size() / 2] ^= 0x55;
    EXPECT_FALSE(IsValid(damaged));
    EXPECT_THAT(platform.Errors(), SizeIs(6));
    EXPECT_THAT(platform.Infos(), IsEmpty());
}

TEST_F(APreviewCheck, takes_what_is_not_there_for_blank)
{
    EXPECT_FALSE(check.IsValid(platform.Root() + "/missing.png"));
    EXPECT_FALSE(check.IsValid(""));
    EXPECT_THAT(platform.Errors(), SizeIs(2));
}

TEST_F(APreviewCheck, takes_folders_and_pipes_for_blank_and_does_not_wait_for_them)
{
    EXPECT_FALSE(check.IsValid(platform.Root()));
    const std::string pipe = platform.Root() + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(check.IsValid(pipe));
}

TEST_F(APreviewCheck, takes_a_picture_of_more_than_4096_pixels_a_side_for_blank)
{
    EXPECT_TRUE(IsValid(Png(4096, 1, kWhite)));
    EXPECT_TRUE(IsValid(Png(1, 4096, kWhite)));
    EXPECT_FALSE(IsValid(Png(4097, 1, kWhite)));
    EXPECT_FALSE(IsValid(Png(1, 4097, kWhite)));
}

TEST_F(APreviewCheck, takes_a_header_that_claims_20000_pixels_a_side_for_blank)
{
    std::string bomb = Png(1, 1, kWhite, {PNG_COLOR_TYPE_GRAY, 1});
    bomb.replace(16, 8, std::string("\0\0\x4E\x20\0\0\x4E\x20", 8));
    EXPECT_FALSE(IsValid(bomb));
}

TEST_F(APreviewCheck, releases_every_picture)
{
    IsValid(black);
    IsValid(blank);
    IsValid("not a picture");
    EXPECT_THAT(platform.Calls({"png released"}), SizeIs(3));
}

TEST_F(APreviewCheck, logs_what_it_looks_at_before_it_lets_go_of_it)
{
    IsValid(black);
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("png ROOT:picture", "log I preview size:8x8 stride:32", "png released"));
    platform.Forget();
    platform.Fail("cairo_image_surface_create_from_png");
    IsValid(black);
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("png ROOT:picture", StartsWith("log E cairo_image_surface_create"), "png released"));
}

// Adding

TEST_F(APreviewCheck, waits_with_a_new_preview_until_nothing_else_is_to_be_done)
{
    Store("a", blank);
    platform.Post([] {});
    check.Add("a");
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log I watchface[a]", "exists RW:watchlist/a/a.png", "idler start"));
    platform.RunTurn();  // what was posted
    EXPECT_THAT(platform.Calls({"png"}), IsEmpty());
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"png RW"}), SizeIs(1));
}

TEST_F(APreviewCheck, only_logs_that_a_preview_is_not_there)
{
    AddAndCheck("a");
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I watchface[a]", "exists RW:watchlist/a/a.png",
                                                 "log E preview for watchface[a] not found!!"));
}

TEST_F(APreviewCheck, does_not_look_at_the_read_only_preview)
{
    platform.WriteFile(platform.RO("watchlist/a/a.png"), blank);
    AddAndCheck("a");
    EXPECT_THAT(platform.Errors(), ElementsAre("preview for watchface[a] not found!!"));
}

TEST_F(APreviewCheck, checks_once_what_is_added_twice)
{
    Store("a", blank);
    check.Add("a");
    check.Add("a");
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"png RW"}), SizeIs(1));
    EXPECT_THAT(Captures(), ElementsAre("a"));
}

TEST_F(APreviewCheck, checks_the_previews_in_the_order_of_their_names)
{
    for (const char* name : {"b", "a", "B"}) Store(name, black);
    for (const char* name : {"b", "a", "B"}) check.Add(name);
    platform.Forget();
    platform.RunUntilIdle();
    EXPECT_THAT(
        platform.Calls({"png RW"}),
        ElementsAre("png RW:watchlist/B/B.png", "png RW:watchlist/a/a.png", "png RW:watchlist/b/b.png"));
}

TEST_F(APreviewCheck, checks_the_preview_as_it_is_when_its_turn_comes)
{
    Store("a", blank);
    check.Add("a");
    Store("a", black);
    platform.RunUntilIdle();
    EXPECT_THAT(Captures(), IsEmpty());
}

TEST_F(APreviewCheck, takes_a_preview_that_has_gone_meanwhile_for_blank)
{
    Store("a", black);
    check.Add("a");
    std::remove(PreviewOf("a").c_str());
    platform.RunUntilIdle();
    EXPECT_THAT(Captures(), ElementsAre("a"));
}

// What a check leads to

TEST_F(APreviewCheck, lets_a_valid_preview_be)
{
    Store("a", black);
    check.Add("a");
    platform.Forget();
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(), ElementsAre("log I check watchface[a]", "png RW:watchlist/a/a.png",
                                                 "log I preview size:8x8 stride:32", "png released"));
}

TEST_F(APreviewCheck, asks_for_a_blank_preview_again)
{
    Store("a", blank);
    check.Add("a");
    platform.Forget();
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Timeline(),
                ElementsAre("log I check watchface[a]", "png RW:watchlist/a/a.png",
                            "log I preview size:8x8 stride:32", "png released",
                            "log E  preview is invalid!! request to generate!!",
                            StartsWith("port check com.corvane.watchface-capture"),
                            "log E port is already exist", StartsWith("send com.corvane.watchface-capture"),
                            "timer stop", "timer start 0.5", "log I mCaptureProcessingWatchfaces[1]"));
}

TEST_F(APreviewCheck, goes_on_after_a_blank_preview)
{
    Store("a", blank);
    Store("b", "no picture");
    Store("c", black);
    for (const char* name : {"a", "b", "c"}) check.Add(name);
    platform.RunUntilIdle();
    EXPECT_THAT(platform.Calls({"png RW"}), SizeIs(3));
    EXPECT_THAT(Captures(), ElementsAre("a", "b"));
}

TEST_F(APreviewCheck, looks_no_more_at_what_it_has_checked)
{
    Store("a", blank);
    Store("b", black);
    AddAndCheck("a");
    AddAndCheck("b");
    EXPECT_THAT(platform.Calls({"png RW"}),
                ElementsAre("png RW:watchlist/a/a.png", "png RW:watchlist/b/b.png"));
}

TEST_F(APreviewCheck, ends_its_idle_task)
{
    Store("a", blank);
    check.Add("a");
    EXPECT_TRUE(platform.RunTurn());
    EXPECT_FALSE(platform.RunTurn());
    EXPECT_EQ(check.CheckIdlerCallback(), kCommonUtilTaskEnd);
}

// Blank previews in a row

TEST_F(APreviewCheck, asks_three_times_and_drops_the_fourth_blank_preview_in_a_row)
{
    Store("a", blank);
    for (int i = 0; i < 4; ++i) AddAndCheck("a");
    EXPECT_THAT(Captures(), ElementsAre("a", "a", "a"));
    EXPECT_THAT(platform.Errors(),
                Contains("invalid preview generated more than 3 times!! ignored!!").Times(1));
    EXPECT_EQ(platform.Errors().back(), "invalid preview generated more than 3 times!! ignored!!");
}

TEST_F(APreviewCheck, asks_for_no_capture_beside_the_line_that_drops_a_preview)
{
    Store("a", blank);
    for (int i = 0; i < 3; ++i) AddAndCheck("a");
    platform.Forget();
    AddAndCheck("a");
    EXPECT_THAT(platform.LogTexts(),
                ElementsAre("I watchface[a]", "I check watchface[a]", "I preview size:8x8 stride:32",
                            "E invalid preview generated more than 3 times!! ignored!!"));
    EXPECT_THAT(Captures(), IsEmpty());
}

TEST_F(APreviewCheck, counts_from_one_again_after_the_fourth)
{
    Store("a", blank);
    for (int i = 0; i < 8; ++i) AddAndCheck("a");
    EXPECT_THAT(Captures(), SizeIs(6));
    EXPECT_THAT(platform.Errors(),
                Contains("invalid preview generated more than 3 times!! ignored!!").Times(2));
}

TEST_F(APreviewCheck, counts_from_one_again_after_a_valid_preview)
{
    Store("a", blank);
    for (int i = 0; i < 3; ++i) AddAndCheck("a");
    Store("a", black);
    AddAndCheck("a");
    Store("a", blank);
    for (int i = 0; i < 3; ++i) AddAndCheck("a");
    EXPECT_THAT(Captures(), SizeIs(6));
    EXPECT_THAT(platform.Errors(), testing::Not(Contains(StartsWith("invalid preview"))));
}

TEST_F(APreviewCheck, keeps_the_count_when_a_preview_is_missing)
{
    Store("a", blank);
    for (int i = 0; i < 3; ++i) AddAndCheck("a");
    std::remove(PreviewOf("a").c_str());
    AddAndCheck("a");
    Store("a", blank);
    AddAndCheck("a");
    EXPECT_THAT(Captures(), SizeIs(3));
    EXPECT_EQ(platform.Errors().back(), "invalid preview generated more than 3 times!! ignored!!");
}

TEST_F(APreviewCheck, counts_what_cannot_be_decoded_as_blank)
{
    Store("a", "no picture");
    for (int i = 0; i < 4; ++i) AddAndCheck("a");
    EXPECT_THAT(Captures(), SizeIs(3));
}

TEST_F(APreviewCheck, counts_for_each_watch_face_by_itself)
{
    Store("a", blank);
    Store("b", blank);
    for (int i = 0; i < 3; ++i) AddAndCheck("a");
    for (int i = 0; i < 3; ++i) AddAndCheck("b");
    EXPECT_THAT(Captures(), ElementsAre("a", "a", "a", "b", "b", "b"));
    AddAndCheck("a");
    EXPECT_THAT(Captures(), SizeIs(6));
}

TEST_F(APreviewCheck, keeps_the_counts_of_all_others_when_a_preview_is_valid)
{
    Store("a", blank);
    Store("b", black);
    for (int i = 0; i < 3; ++i) AddAndCheck("a");
    AddAndCheck("b");
    AddAndCheck("a");
    EXPECT_THAT(Captures(), ElementsAre("a", "a", "a"));
    EXPECT_EQ(platform.Errors().back(), "invalid preview generated more than 3 times!! ignored!!");
}

TEST_F(APreviewCheck, keeps_the_counts_of_all_others_when_a_preview_is_dropped)
{
    Store("a", blank);
    Store("b", blank);
    for (int i = 0; i < 3; ++i) AddAndCheck("b");
    for (int i = 0; i < 4; ++i) AddAndCheck("a");
    platform.Forget();
    AddAndCheck("b");
    EXPECT_THAT(Captures(), IsEmpty());
    EXPECT_EQ(platform.Errors().back(), "invalid preview generated more than 3 times!! ignored!!");
}

TEST_F(APreviewCheck, goes_on_after_a_dropped_preview)
{
    Store("a", blank);
    Store("b", blank);
    for (int i = 0; i < 3; ++i) AddAndCheck("a");
    platform.Forget();
    check.Add("a");
    AddAndCheck("b");
    EXPECT_THAT(Captures(), ElementsAre("b"));
}

TEST_F(APreviewCheck, launches_the_capture_application_where_it_is_not_running)
{
    platform.SetPortUp(kCapture, kCapturePort, false);
    Store("a", blank);
    AddAndCheck("a");
    ASSERT_TRUE(platform.WaitForWorkersEnd());
    EXPECT_THAT(platform.Launches(), SizeIs(1));
}

TEST_F(APreviewCheck, shares_its_manager)
{
    EXPECT_EQ(manager.use_count(), 2);
}
