#include "hint.h"

#include <algorithm>
#include <filesystem>

#include "application-table.h"
#include "folder-entries.h"
#include "json-text.h"
#include "nearest-name.h"

namespace Wfctl {

namespace {

constexpr std::size_t kShortestBeginning = 2;

}  // namespace

Names NamesOf(const std::vector<std::string>& texts)
{
    return {texts.begin(), texts.end()};
}

std::string_view MeantName(std::string_view name, const Names& known)
{
    if (std::ranges::find(known, name) != known.end()) return {};
    const auto goesOn = [&](std::string_view one) { return one.starts_with(name); };
    if (name.size() >= kShortestBeginning && std::ranges::count_if(known, goesOn) == 1)
        return *std::ranges::find_if(known, goesOn);
    return DataUtil::NearestName(name, known);
}

std::string OrMeant(std::string_view name, const Names& known, const std::string& next)
{
    const std::string_view meant = MeantName(name, known);
    if (meant.empty()) return next.empty() ? "" : "; " + next;
    return "; did you mean " + std::string(meant) + "?" + (next.empty() ? "" : " " + next);
}

void WarnOfSlip(const std::string& what, std::string_view name, const Names& known)
{
    const std::string meant = OrMeant(name, known);
    if (!meant.empty()) Warn(what + " [" + std::string(name) + "]" + meant);
}

std::function<std::string(const std::string&)> OneOf(const std::string& what,
                                                     const std::vector<std::string>& words)
{
    return [=](const std::string& word) {
        if (std::ranges::find(words, word) != words.end()) return std::string();
        const Names known = NamesOf(words);
        return what + " is one of " + Listed(known) + ", not " + word + OrMeant(word, known);
    };
}

std::string Listed(const Names& names)
{
    std::string all;
    for (const std::string_view name : names) all += (all.empty() ? "" : ", ") + std::string(name);
    return all;
}

Names ApplicationIds()
{
    Names ids;
    for (const Platform::Application& application : Platform::kApplications) ids.push_back(application.id);
    return ids;
}

std::string OrMeantFile(const std::string& path)
{
    namespace fs = std::filesystem;
    const fs::path file = fs::path(path).has_filename() ? fs::path(path) : fs::path(path).parent_path();
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    std::vector<std::string> names;
    std::error_code error;
    if (fs::exists(file, error)) return {};
    for (const fs::path& entry : EntriesOf(folder)) names.push_back(entry.filename());
    const std::string_view meant = MeantName(file.filename().string(), NamesOf(names));
    return meant.empty() ? "" : "; did you mean " + (file.parent_path() / meant).string() + "?";
}

}  // namespace Wfctl
