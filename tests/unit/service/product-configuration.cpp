// What the product says about watch faces.

#include <set>

#include "on-a-platform.h"
#include "service-config-mirel.h"
#include "service-config.h"

using namespace WatchfaceService;
using MemoryPlatform::StoreValue;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TheProduct : public OnAPlatform {};

std::string Mirel(const std::string& suffix)
{
    return "com.corvane.watchface-mirel-" + suffix;
}

}  // namespace

TEST_F(TheProduct, owns_every_name_that_begins_with_its_prefix)
{
    EXPECT_TRUE(IsMirelWatchface("com.corvane.watchface-mirel-c1", false));
    EXPECT_TRUE(IsMirelWatchface("com.corvane.watchface-mirel-anything else", false));
    EXPECT_TRUE(IsMirelWatchface("com.corvane.watchface-mirel-", false));
}

TEST_F(TheProduct, does_not_own_names_with_anything_before_its_prefix)
{
    EXPECT_FALSE(IsMirelWatchface("xcom.corvane.watchface-mirel-c1", false));
    EXPECT_FALSE(IsMirelWatchface(" com.corvane.watchface-mirel-c1", false));
}

TEST_F(TheProduct, does_not_own_names_without_its_whole_prefix)
{
    EXPECT_FALSE(IsMirelWatchface("com.corvane.watchface-mirel", false));
    EXPECT_FALSE(IsMirelWatchface("com.corvane.watchface-kelp-u1", false));
    EXPECT_FALSE(IsMirelWatchface("", false));
}

TEST_F(TheProduct, owns_the_same_names_whatever_the_flag_is)
{
    EXPECT_TRUE(IsMirelWatchface("com.corvane.watchface-mirel-c1", true));
    EXPECT_FALSE(IsMirelWatchface("com.corvane.watchface-kelp-u1", true));
}

TEST_F(TheProduct, has_one_gallery_watch_face)
{
    EXPECT_TRUE(IsGalleryWatchface("com.corvane.watchface-mirel-u1"));
    EXPECT_FALSE(IsGalleryWatchface("com.corvane.watchface-mirel-u10"));
    EXPECT_FALSE(IsGalleryWatchface("com.corvane.watchface-mirel-u2"));
    EXPECT_FALSE(IsGalleryWatchface(""));
}

TEST_F(TheProduct, tags_the_backgrounds_of_its_gallery_watch_face_alone)
{
    EXPECT_EQ(GetWatchfaceBgTag("com.corvane.watchface-mirel-u1"), "U1");
    EXPECT_EQ(GetWatchfaceBgTag("com.corvane.watchface-mirel-u2"), "");
    EXPECT_EQ(GetWatchfaceBgTag(""), "");
}

TEST_F(TheProduct, cleans_no_watch_face_that_has_nothing_limited)
{
    EXPECT_FALSE(AllowLimitedComplication());
}

TEST_F(TheProduct, does_nothing_at_set_up_time)
{
    const auto manager = std::make_shared<WatchfaceManager>();
    OnSetupWizardReturned(manager);
    ApplyWatchfaceConfiguration(manager.get());
    EXPECT_THAT(platform.Timeline(), IsEmpty());
    EXPECT_EQ(manager.use_count(), 1);
}

TEST_F(TheProduct, has_a_code_of_four_characters_for_each_of_its_eight_coded_watch_faces)
{
    std::set<std::string> codes;
    for (const char* suffix : {"u3", "c1", "c2", "c3", "c4", "u1", "u6", "e1"}) {
        const std::string code = GetProductCode(Mirel(suffix));
        EXPECT_EQ(code.size(), 4u) << suffix;
        codes.insert(code);
    }
    EXPECT_EQ(codes.size(), 8u);
}

TEST_F(TheProduct, has_no_code_for_any_other_name)
{
    for (const char* suffix : {"", "u2", "u5", "u8", "u9", "c5", "c1 ", "C1"}) {
        EXPECT_EQ(GetProductCode(Mirel(suffix)), "") << suffix;
    }
    EXPECT_EQ(GetProductCode(""), "");
    EXPECT_EQ(GetProductCode("com.corvane.watchface-kelp-u1"), "");
}

TEST_F(TheProduct, has_a_label_id_for_each_of_its_twelve_labelled_watch_faces)
{
    std::set<std::string> labels;
    for (const char* suffix : {"c1", "c2", "c3", "c4", "e1", "u1", "u2", "u3", "u5", "u6", "u8", "u9"}) {
        const std::string label = GetLabelId(Mirel(suffix));
        EXPECT_NE(label, "") << suffix;
        labels.insert(label);
    }
    EXPECT_EQ(labels.size(), 12u);
}

TEST_F(TheProduct, has_no_label_id_for_any_other_name)
{
    for (const char* suffix : {"", "u4", "u7", "c5", "e2", "u10"})
        EXPECT_EQ(GetLabelId(Mirel(suffix)), "") << suffix;
    EXPECT_EQ(GetLabelId(""), "");
    EXPECT_EQ(GetLabelId("com.corvane.watchface-kelp-u1"), "");
}

TEST_F(TheProduct, puts_its_own_watch_face_in_the_place_of_the_older_familys)
{
    for (const std::string suffix : {"u1", "u3", "u6"}) {
        platform.WriteFile(platform.RO("watchlist/" + Mirel(suffix) + "/watchface.xml"), "");
        EXPECT_EQ(GetWatchfaceFamily("com.corvane.watchface-kelp-" + suffix), Mirel(suffix));
    }
    EXPECT_THAT(
        platform.LogTexts(),
        ElementsAre("E replace [com.corvane.watchface-kelp-u1] with [com.corvane.watchface-mirel-u1]",
                    "E replace [com.corvane.watchface-kelp-u3] with [com.corvane.watchface-mirel-u3]",
                    "E replace [com.corvane.watchface-kelp-u6] with [com.corvane.watchface-mirel-u6]"));
}

TEST_F(TheProduct, has_no_counterpart_whose_folder_is_not_in_the_read_only_area_but_logs_the_replacement)
{
    platform.WriteFile(platform.RW("watchlist/com.corvane.watchface-mirel-u3/watchface.xml"), "");
    platform.WriteFile(platform.RO("watchlist/com.corvane.watchface-kelp-u3/watchface.xml"), "");
    EXPECT_EQ(GetWatchfaceFamily("com.corvane.watchface-kelp-u3"), "");
    EXPECT_THAT(
        platform.Timeline(),
        ElementsAre("log E replace [com.corvane.watchface-kelp-u3] with [com.corvane.watchface-mirel-u3]",
                    "exists RO:watchlist/com.corvane.watchface-mirel-u3/"));
}

TEST_F(TheProduct, takes_any_other_installed_name_for_itself)
{
    platform.WriteFile(platform.RO("watchlist/com.example.face/watchface.xml"), "");
    EXPECT_EQ(GetWatchfaceFamily("com.example.face"), "com.example.face");
    EXPECT_EQ(GetWatchfaceFamily("com.corvane.watchface-kelp-u2"), "");
    EXPECT_THAT(platform.LogTexts(), IsEmpty());
}

TEST_F(TheProduct, remembers_whether_the_default_watch_face_has_been_set)
{
    SetDefaultWatchfaceDone(true);
    EXPECT_EQ(platform.Pref("service-config-set-default-watchface-done"), StoreValue(true));
    SetDefaultWatchfaceDone(false);
    EXPECT_EQ(platform.Pref("service-config-set-default-watchface-done"), StoreValue(false));
}
