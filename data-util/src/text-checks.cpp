#include "text-checks.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include "element-checks.h"
#include "nearest-name.h"
#include "uses.h"

namespace DataUtil {

namespace {

constexpr const char* kKeyAttributes[] = {"title-key", "label-key", "text-key"};

class TextChecks {
public:
    TextChecks(const Node& root, const Texts& texts, UnusedTexts unused, Findings& findings)
        : mRoot(root), mTexts(texts), mUnused(unused), mFindings(findings)
    {
    }

    void Run()
    {
        const std::string& language = mRoot.Get("default-language");
        const auto at = mTexts.find(language);
        if (at == mTexts.end()) {
            if (mFindings.IsRefused(language)) return;
            mFindings.Add("E-REF-UNKNOWN", mRoot.Where("default-language"),
                          "there are no texts of the default language " + Quoted(language) +
                              mFindings.Suggestion(language, Languages()));
            return;
        }
        for (const auto& [key, text] : at->second) mKeys.emplace_back(key);
        CheckUses(mRoot);
        for (const Node& node : mRoot.children) {
            if (node.Is(Element::kStrings)) CheckLanguage(node);
        }
    }

private:
    std::vector<std::string_view> Languages() const
    {
        std::vector<std::string_view> languages;
        for (const auto& [language, texts] : mTexts) languages.emplace_back(language);
        return languages;
    }

    bool Exists(std::string_view key) const { return std::binary_search(mKeys.begin(), mKeys.end(), key); }

    void CheckUses(const Node& node)
    {
        for (const char* attribute : kKeyAttributes) {
            const std::string& key = node.Get(attribute);
            if (mFindings.IsFull()) return;
            if (mFindings.IsRefused(key)) continue;
            const bool exists = Exists(key);
            const std::string_view meant = exists ? key : mFindings.Nearest(key, mKeys);
            mUsed.Add(meant);
            if (!exists) ReportUnknown(node.Where(attribute), key, meant);
        }
        for (const Node& child : node.children) CheckUses(child);
    }

    void ReportUnknown(const Place& place, std::string_view key, std::string_view meant)
    {
        mFindings.Add("E-REF-UNKNOWN", place,
                      "the default language has no text " + Quoted(key) + MeantOrKnown(meant, mKeys));
    }

    void CheckLanguage(const Node& strings)
    {
        const bool isDefault = strings.Get("language") == mRoot.Get("default-language");
        std::set<std::string_view> present;
        for (const Node& string : strings.children) {
            const std::string& key = string.Get("key");
            if (key.empty() || mFindings.IsFull()) continue;
            present.insert(key);
            if (mFindings.IsRefused(key)) continue;
            if (isDefault && mUnused == UnusedTexts::kReported && !mUsed.Has(key)) {
                mFindings.Add("W-UNUSED", string.Where("key"),
                              "nothing uses the text " + Quoted(key) + "; remove it");
            } else if (!Exists(key)) {
                const std::string_view meant = mFindings.Nearest(key, mKeys);
                present.insert(meant);
                ReportUnknown(string.Where("key"), key, meant);
            }
        }
        if (!isDefault) ReportUntranslated(strings, present);
    }

    void ReportUntranslated(const Node& strings, const std::set<std::string_view>& present)
    {
        std::string missing;
        int count = 0;
        for (const std::string_view key : mKeys) {
            if (present.count(key) != 0 || mFindings.IsRefused(key)) continue;
            if (++count <= 3) missing += (missing.empty() ? "" : ", ") + std::string(key);
        }
        if (count == 0) return;
        if (count > 3) missing += " and " + std::to_string(count - 3) + " more";
        const std::string& language = strings.Get("language");
        mFindings.Add("W-UNTRANSLATED", strings.Where("language"),
                      (language.empty() ? "this language" : Quoted(language)) + " lacks " + missing +
                          "; the default language is shown for them");
    }

    const Node& mRoot;
    const Texts& mTexts;
    const UnusedTexts mUnused;
    Findings& mFindings;
    std::vector<std::string_view> mKeys;  // of the default language, sorted
    Uses mUsed;
};

}  // namespace

Texts ReadTexts(const Node& root, Findings& findings)
{
    Texts texts;
    std::set<std::string> languages;
    for (const Node& strings : root.children) {
        if (!strings.Is(Element::kStrings)) continue;
        std::string language = strings.Get("language");
        std::transform(language.begin(), language.end(), language.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        if (!language.empty() && !languages.insert(language).second) {
            findings.Add("E-ID-DUPLICATE", strings.Where("language"),
                         "the texts of " + Quoted(strings.Get("language")) +
                             " are already there; put all into one element");
        }
        std::set<std::string> keys;
        auto& ofLanguage = texts[strings.Get("language")];
        for (const Node& string : strings.children) {
            if (TakeId(keys, string, "key", "text with the key", findings))
                ofLanguage.emplace(string.Get("key"), string.text);
        }
    }
    return texts;
}

void CheckTexts(const Node& root, const Texts& texts, UnusedTexts unused, Findings& findings)
{
    TextChecks(root, texts, unused, findings).Run();
}

}  // namespace DataUtil
