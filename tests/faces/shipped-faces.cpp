// Every face that ships, in all its looks.

#include <gtest/gtest.h>

#include <filesystem>

#include "face-looks.h"

namespace fs = std::filesystem;

class AShippedFace : public testing::TestWithParam<std::string> {};

TEST_P(AShippedFace, keeps_everything_in_its_place_with_all_options_languages_and_hour_modes)
{
    for (const std::string& fault : FaultsOfFace(GetParam())) ADD_FAILURE() << fault;
}

INSTANTIATE_TEST_SUITE_P(Installed, AShippedFace, testing::ValuesIn(FacesIn(INSTALLED_FACES)),
                         [](const auto& face) {
                             const std::string name = fs::path(face.param).filename();
                             return name.substr(name.rfind('-') + 1);
                         });
