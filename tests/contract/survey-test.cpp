// Usage records.

#include "common-util-log-manager.h"
#include "contract-test.h"

namespace Contract {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AUsageRecord : public ContractTest {
protected:
    static SurveyRecord Status(const std::string& feature, const std::string& value,
                               const std::string& extra = "")
    {
        return {false, kFaces, feature, value, extra};
    }
    static SurveyRecord Feature(const std::string& feature, const std::string& value)
    {
        return {true, kFaces, feature, value, ""};
    }
};

TEST_F(AUsageRecord, is_not_there_before_it_is_sent)
{
    EXPECT_THAT(harness->Survey(), IsEmpty());
}

TEST_F(AUsageRecord, is_kept_with_its_kind_and_its_texts)
{
    CommonUtilLogManager::SendStatusSurveyInfo(kFaces, "ST00", "a face", "more");
    CommonUtilLogManager::SendFeatureSurveyInfo(kFaces, "1007", "Steps", "");
    EXPECT_THAT(harness->Survey(), ElementsAre(Status("ST00", "a face", "more"), Feature("1007", "Steps")));
}

TEST_F(AUsageRecord, is_kept_as_often_as_it_is_sent_and_in_that_order)
{
    for (const char* value : {"b", "a", "b"})
        CommonUtilLogManager::SendStatusSurveyInfo(kFaces, "F", value, "");
    EXPECT_THAT(harness->Survey(), ElementsAre(Status("F", "b"), Status("F", "a"), Status("F", "b")));
}

TEST_F(AUsageRecord, may_have_empty_and_foreign_texts)
{
    CommonUtilLogManager::SendStatusSurveyInfo(kFaces, "", "", "");
    CommonUtilLogManager::SendStatusSurveyInfo(kFaces, "시계", "'; --", "\n\xFF");
    EXPECT_THAT(harness->Survey(), ElementsAre(Status("", ""), Status("시계", "'; --", "\n\xFF")));
}

}  // namespace
}  // namespace Contract
