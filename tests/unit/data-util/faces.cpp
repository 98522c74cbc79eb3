#include "faces.h"

#include <algorithm>
#include <filesystem>

namespace {

void AddFrom(const std::filesystem::directory_iterator& folder, std::vector<std::string>& paths)
{
    for (const auto& file : folder) {
        if (file.path().filename().string().ends_with("_result.xml")) paths.push_back(file.path());
    }
}

}  // namespace

std::vector<std::string> ShippedResultXmls()
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(SHIPPED_FACES)) {
        const std::string name = entry.path().filename();
        const std::filesystem::path path = entry.path() / (name + "_result.xml");
        if (std::filesystem::exists(path)) paths.push_back(path);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::string> AllResultXmls()
{
    std::vector<std::string> paths = ShippedResultXmls();
    AddFrom(std::filesystem::directory_iterator(EXAMPLES), paths);
    AddFrom(std::filesystem::directory_iterator(DOCUMENTS), paths);
    std::sort(paths.begin(), paths.end());
    return paths;
}
