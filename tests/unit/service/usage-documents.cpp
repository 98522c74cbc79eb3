// What is reported of a face that ships, by the data library itself.

#include "on-a-platform.h"
#include "service-log-manager.h"

using MemoryPlatform::SurveyRecord;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;
using WatchfaceService::LogManager;
using WatchfaceService::WatchfaceManager;

namespace {

constexpr char kC1[] = "com.corvane.watchface-mirel-c1";

class AShippedFacesUsage : public OnAPlatform {
protected:
    AShippedFacesUsage()
    {
        platform.SetKey("db/wms/clocks_set_idle", "com.corvane.watchface");
        platform.SetKey("file/private/com.corvane.watchface/watchface_name", kC1);
        const std::string file = std::string(kC1) + "/" + kC1 + "_result.xml";
        manager->UpdateWatchface(kC1, platform.ReadFile(WATCH_FACES "/" + file).value());
    }

    static SurveyRecord Status(const std::string& feature, const std::string& value)
    {
        return {false, "com.corvane.watchface-service", feature, value, ""};
    }
    static SurveyRecord Legacy(const std::string& label)
    {
        return {true, "com.corvane.watchface-service", "1007", label, ""};
    }

    std::shared_ptr<WatchfaceManager> manager = std::make_shared<WatchfaceManager>();
    LogManager reports{manager};
};

}  // namespace

TEST_F(AShippedFacesUsage, is_one_text_and_the_name)
{
    reports.SendSurveyLogs();
    const auto records = platform.Survey();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].name, "MC01");
    EXPECT_THAT(records[0].value, AllOf(StartsWith("dial=index "), HasSubstr(" left=battery ")));
    EXPECT_EQ(records[1], Status("ST00", kC1));
}

TEST_F(AShippedFacesUsage, is_told_by_its_log_item)
{
    reports.SendComplicationDataFromLogItem();
    EXPECT_THAT(platform.Survey(), IsSupersetOf({Status("ST02", "battery"), Status("ST02", "pedometer"),
                                                 Status("ST02", "date"), Status("ST02", "heartrate")}));
}

TEST_F(AShippedFacesUsage, is_told_by_labels_in_the_legacy_way)
{
    reports.SendComplicationDataOld();
    EXPECT_THAT(platform.Survey(), ElementsAre(Legacy("Battery"), Legacy("Steps"), Legacy("Heart rate")));
    EXPECT_THAT(platform.Errors(), Contains("complication not handled(date)"));
}
