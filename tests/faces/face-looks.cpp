#include "face-looks.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "covering-array.h"
#include "face-document.h"
#include "ink-checks.h"

namespace fs = std::filesystem;

namespace {

constexpr std::array<const char*, 5> kLanguages = {"en_GB", "de_DE", "ko_KR", "ja_JP", "ar_EG"};

// The text with "#" for every colour.
std::string WithoutColors(std::string_view text)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    while (!text.empty()) {
        const std::size_t behind = text.find('#') == text.npos ? text.size() : text.find('#') + 1;
        result += text.substr(0, behind);
        text.remove_prefix(behind);
        text.remove_prefix(std::min(text.find_first_not_of(kDigits), text.size()));
    }
    return result;
}

struct Mode {
    bool hours24;
    const char* name;
    const char* widest;  // a time of as many digits as there can be
};
constexpr Mode kModes[] = {
    {false, "12 hours", "12:58:48"},
    {true,  "24 hours", "22:58:48"},
};
constexpr int kSize = 36;  // pixels; what is told of the drawing does not depend on them

std::string Read(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A group's options or a slot's sources, none included.
struct Factor {
    bool isGroup = true;
    std::string id;
    std::vector<std::string> values;
};

std::vector<Factor> FactorsOf(const DataUtil::FaceDocument& document)
{
    std::vector<Factor> factors;
    for (const DataUtil::Group& group : document.groups) {
        Factor& factor = factors.emplace_back(Factor{true, group.id, {}});
        for (const DataUtil::Option& option : group.options) factor.values.push_back(option.id);
    }
    for (const DataUtil::Slot& slot : document.slots) {
        Factor& factor = factors.emplace_back(Factor{false, slot.name, {}});
        for (const DataUtil::Offer& offer : slot.offers) factor.values.push_back(offer.source);
        factor.values.emplace_back("empty");
    }
    return factors;
}

struct Look {
    std::string name;
    DataUtil::Selection selection;
};

// Every option with every option of other groups and with every source; and the presets.
std::vector<Look> LooksOf(const DataUtil::FaceDocument& document)
{
    const std::vector<Factor> factors = FactorsOf(document);
    std::vector<std::size_t> sizes;
    sizes.reserve(factors.size());
    for (const Factor& factor : factors) sizes.push_back(factor.values.size());
    std::vector<Look> looks(1);
    for (const auto& row :
         CoveringArray(sizes, [&](size_t a, size_t b) { return factors[a].isGroup || factors[b].isGroup; })) {
        Look& look = looks.emplace_back();
        for (std::size_t i = 0; i < factors.size(); ++i) {
            const std::string& value = factors[i].values[row[i]];
            look.name += (i ? " " : "") + factors[i].id + "=" + value;
            if (factors[i].isGroup)
                look.selection.picks[factors[i].id] = value;
            else
                look.selection.places[factors[i].id] = {value, {}};
        }
    }
    for (const DataUtil::Preset& preset : document.presets) {
        Look& look = looks.emplace_back(Look{"preset=" + preset.id, {}});
        look.selection.preset = preset.id;
    }
    return looks;
}

std::string LineOf(const std::string& text, int line)
{
    std::size_t begin = 0;
    while (--line > 0) begin = text.find('\n', begin) + 1;
    const std::size_t from = text.find_first_not_of(' ', begin);
    return text.substr(from, text.find('\n', begin) - from);
}

class Face {
public:
    explicit Face(const fs::path& folder) : mFolder(folder), mName(folder.filename()) {}

    std::vector<std::string> Faults()
    {
        mText = Read(mFolder / (mName + "_result.xml"));
        const DataUtil::ParseResult parsed = DataUtil::ParseFace(mText);
        if (!parsed.document) return {mName + ": its result XML is refused"};
        const DataUtil::Node& root = parsed.document->root;
        mCanvas = {std::stod(root.Get("width")), std::stod(root.Get("height")), root.Get("shape") == "round"};
        for (const Look& look : LooksOf(*parsed.document)) CheckLook(look);
        return std::move(mFaults);
    }

private:
    void CheckLook(const Look& look)
    {
        const DataUtil::ParseResult parsed =
            DataUtil::ParseFace(DataUtil::WithSelection(mText, look.selection));
        const std::string flat = DataUtil::Flatten(*parsed.document);
        if (!mSeen.insert(flat).second) return;  // the options that differ are hidden
        const std::string named = mName + " with " + (look.name.empty() ? "its defaults" : look.name);
        for (const char* language : kLanguages) {
            for (const Mode& mode : kModes) {
                Drawing::Settings settings;
                settings.language = language;
                settings.hours24 = mode.hours24;
                const std::string where = named + ", " + language + ", " + mode.name;
                CheckDrawing(where, flat, settings);
                CheckDrawing(where + " at " + mode.widest, At(flat, mode.widest), settings);
            }
        }
    }

    static std::string At(std::string flat, const std::string& time)
    {
        constexpr std::string_view kAttribute = "preview-time=\"";
        return flat.replace(flat.find(kAttribute) + kAttribute.size(), time.size(), time);
    }

    void CheckDrawing(const std::string& where, const std::string& flat, Drawing::Settings settings)
    {
        settings.size = kSize;
        settings.assetFolders = {mFolder.string()};
        std::vector<Drawing::Ink> inks;
        const Drawing::Result result =
            mRenderer.Draw(flat, settings, [&](const Drawing::Ink& ink) { inks.push_back(ink); });
        if (!result.picture) Add(where, flat, result.error, "");
        for (const Drawing::Finding& warning : result.warnings) Add(where, flat, warning, "");
        for (const Fault& fault : FaultsOf(inks, mCanvas)) Add(where, flat, fault.element, ": " + fault.what);
    }

    // The same line of a flat document with the same fault counts once, whatever else and whichever colour is
    // chosen.
    void Add(const std::string& where, const std::string& flat, const Drawing::Finding& at,
             const std::string& what)
    {
        const std::string line = at.line > 0 ? LineOf(flat, at.line) : "";
        if (!mKnown.insert(WithoutColors(line) + at.text + what).second) return;
        mFaults.push_back(where + "\n  watchface.xml:" + std::to_string(at.line) + ":" +
                          std::to_string(at.column) + ": " + at.text + what + "\n  " + line);
    }

    const fs::path mFolder;
    const std::string mName;
    std::string mText;
    Canvas mCanvas;
    Drawing::Renderer mRenderer;
    std::set<std::string> mSeen, mKnown;
    std::vector<std::string> mFaults;
};

}  // namespace

std::vector<std::string> FaultsOfFace(const std::string& folder)
{
    return Face(folder).Faults();
}

std::vector<std::string> FacesIn(const std::string& faces)
{
    std::vector<std::string> folders;
    for (const auto& entry : fs::directory_iterator(faces)) {
        const std::string name = entry.path().filename();
        if (fs::exists(entry.path() / (name + "_result.xml"))) folders.push_back(entry.path());
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}
