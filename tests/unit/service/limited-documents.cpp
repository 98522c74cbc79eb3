// Limited complications in a face that ships, by the data library itself.

#include "a-watchface-manager.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

constexpr char kC1[] = "com.corvane.watchface-mirel-c1";
constexpr char kNameKey[] = "file/private/com.corvane.watchface/watchface_name";

class AShippedFace : public AWatchfaceManager {
protected:
    AShippedFace()
    {
        platform.SetPortUp(kCapture, kCapturePort);
        platform.SetKey(kNameKey, kC1);
    }

    // The face's result XML with one part replaced.
    std::string ResultXml(const std::string& part = "<selection/>",
                          const std::string& by = "<selection/>") const
    {
        const std::string file = std::string(kC1) + "/" + kC1 + "_result.xml";
        std::string text = platform.ReadFile(WATCH_FACES "/" + file).value();
        EXPECT_THAT(text, HasSubstr(part));
        return text.replace(text.find(part), part.size(), by);
    }
    std::string WithWeather() const
    {
        return ResultXml("<selection/>", "<selection><place slot=\"date\" source=\"weather\"/></selection>");
    }
    // The source that a slot of the read/write watchface.xml has.
    std::string SourceOf(const std::string& slot) const
    {
        const std::string text = platform.ReadFile(InRW("watchface.xml")).value_or("");
        const auto begin = text.find("<complication name=\"" + slot + "\"");
        if (begin == std::string::npos) return "(none)";
        const std::string element = text.substr(begin, text.find('>', begin) - begin);
        const auto source = element.find(" source=\"") + 9;
        return element.substr(source, element.find('"', source) - source);
    }
    std::string InRW(const std::string& file) const
    {
        return platform.RW("watchlist/" + std::string(kC1) + "/" + file);
    }
    std::string InRO(const std::string& file) const
    {
        return platform.RO("watchlist/" + std::string(kC1) + "/" + file);
    }
    const std::string resultFile = std::string(kC1) + "_result.xml";
};

}  // namespace

TEST_F(AShippedFace, stays_as_it_is_while_nothing_on_it_needs_the_phone)
{
    platform.WriteFile(InRO(resultFile), ResultXml());
    manager.CheckComplications(1);
    EXPECT_FALSE(platform.Exists(platform.RW("watchlist")));
    EXPECT_THAT(platform.Sent(), IsEmpty());
    EXPECT_THAT(platform.Calls({"key set"}), IsEmpty());
}

TEST_F(AShippedFace, shows_a_fallback_in_place_of_a_complication_that_needs_the_phone)
{
    ASSERT_TRUE(manager.UpdateWatchface(kC1, WithWeather()));
    ASSERT_EQ(SourceOf("date"), "weather");
    platform.Forget();
    manager.CheckComplications(2);
    EXPECT_EQ(SourceOf("date"), "date");
    EXPECT_EQ(SourceOf("left"), "battery");
    EXPECT_THAT(platform.Calls({"key set"}), ElementsAre("key set " + std::string(kNameKey) + "=" + kC1));
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
    EXPECT_THAT(platform.LogTexts("data-util"), IsEmpty());
}

TEST_F(AShippedFace, keeps_in_its_result_xml_what_was_removed_and_loses_it_again_at_each_check)
{
    ASSERT_TRUE(manager.UpdateWatchface(kC1, WithWeather()));
    manager.CheckComplications(1);
    EXPECT_EQ(platform.ReadFile(InRW(resultFile)), WithWeather());
    platform.Forget();
    manager.CheckComplications(1);
    EXPECT_THAT(platform.SentTo(kCapture), SizeIs(1));
    EXPECT_EQ(SourceOf("date"), "date");
}

TEST_F(AShippedFace, is_brought_into_the_read_write_area_when_its_own_default_needs_the_phone)
{
    platform.WriteFile(InRO(resultFile),
                       ResultXml("<fallback source=\"date\"/>",
                                 "<fallback source=\"weather\"/>\n      <fallback source=\"date\"/>"));
    platform.WriteFile(InRO("watchface.xml"), "<shipped/>");
    manager.CheckComplications(1);
    EXPECT_EQ(SourceOf("date"), "date");
    EXPECT_EQ(platform.ReadFile(InRW(resultFile)), platform.ReadFile(InRO(resultFile)));
    EXPECT_EQ(platform.ReadFile(InRO("watchface.xml")), "<shipped/>");
}

TEST_F(AShippedFace, is_limited_by_a_list_of_sources_instead)
{
    ASSERT_TRUE(manager.UpdateWatchface(kC1, WithWeather()));
    EXPECT_TRUE(manager.HasLimitedComplication(kC1, true, "water battery"));
    EXPECT_FALSE(manager.HasLimitedComplication(kC1, true, "water caffeine"));
    EXPECT_TRUE(manager.CheckAndRemoveLimitedComplication(kC1, true, "water battery"));
    EXPECT_EQ(SourceOf("left"), "empty");
    EXPECT_EQ(SourceOf("date"), "weather");
}

TEST_F(AShippedFace, whose_document_is_damaged_stays_as_it_is_and_is_told)
{
    platform.WriteFile(InRW(resultFile), "<face-result>");
    platform.WriteFile(InRW("watchface.xml"), "<earlier/>");
    platform.Forget();
    EXPECT_FALSE(manager.HasLimitedComplication(kC1, true));
    EXPECT_FALSE(manager.RemoveLimitedComplication(kC1));
    EXPECT_EQ(platform.ReadFile(InRW("watchface.xml")), "<earlier/>");
    EXPECT_EQ(platform.Errors().back(), "data_util_resultxml_memory_converter is failed");
    EXPECT_THAT(platform.LogTexts("data-util"), Not(IsEmpty()));
}
