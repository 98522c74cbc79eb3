#include "common-util-i18n.h"
#include "contract-test.h"

namespace Contract {
namespace {

class UpperCase : public ContractTest {};

TEST_F(UpperCase, follows_unicode)
{
    EXPECT_EQ(CommonUtilI18NStringUtility::ToUpper("u1"), "U1");
    EXPECT_EQ(CommonUtilI18NStringUtility::ToUpper("straße é"), "STRASSE É");
    EXPECT_EQ(CommonUtilI18NStringUtility::ToUpper("시계"), "시계");
    EXPECT_EQ(CommonUtilI18NStringUtility::ToUpper(""), "");
}

TEST_F(UpperCase, is_the_same_in_every_language)
{
    harness->SetSetting(SYSTEM_SETTINGS_KEY_LOCALE_LANGUAGE, "tr_TR");
    EXPECT_EQ(CommonUtilI18NStringUtility::ToUpper("i"), "I");
}

}  // namespace
}  // namespace Contract
