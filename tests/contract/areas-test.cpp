#include <cstdlib>

#include "app-manager.h"
#include "contract-test.h"

namespace Contract {
namespace {

using Ask = int (*)(const char* appId, char** path);

std::string PathOf(Ask ask)
{
    char* path = nullptr;
    if (ask(kFaces, &path) != 0 || !path) return "(none)";
    std::string text = path;
    free(path);
    return text;
}

class AnArea : public ContractTest {};

TEST_F(AnArea, for_writing_lies_below_the_root)
{
    const std::string app = harness->Root() + "/apps/com.corvane.watchface/shared/";
    EXPECT_EQ(PathOf(app_manager_get_shared_data_path), app + "data/");
    EXPECT_EQ(PathOf(app_manager_get_shared_trusted_path), app + "trusted/");
}

TEST_F(AnArea, for_reading_lies_below_the_resources)
{
    EXPECT_EQ(PathOf(app_manager_get_shared_resource_path),
              Platform::CurrentAreas().resources + "/com.corvane.watchface/shared/res/");
}

TEST_F(AnArea, needs_an_application_and_a_place_for_the_answer)
{
    for (const Ask ask : {app_manager_get_shared_data_path, app_manager_get_shared_trusted_path,
                          app_manager_get_shared_resource_path}) {
        char untouched = 0;
        char* path = &untouched;
        EXPECT_LT(ask(nullptr, &path), 0);
        EXPECT_LT(ask("", &path), 0);
        EXPECT_EQ(path, &untouched);
        EXPECT_LT(ask(kFaces, nullptr), 0);
    }
}

}  // namespace
}  // namespace Contract
