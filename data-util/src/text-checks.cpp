#include <algorithm>
#include <set>

#include "face-checks.h"
#include "nearest-name.h"

namespace DataUtil {

namespace {

constexpr const char* kKeyAttributes[] = {"title-key", "label-key", "text-key"};

class TextChecks {
public:
    TextChecks(const FaceDocument& document, Findings& findings) : mDocument(document), mFindings(findings) {}

    void Run()
    {
        const auto at = mDocument.texts.find(mDocument.defaultLanguage);
        if (at == mDocument.texts.end()) {
            if (mDocument.defaultLanguage.empty()) return;
            mFindings.Add("E-REF-UNKNOWN", mDocument.root.Where("default-language"),
                          "there are no texts of the default language " + Quoted(mDocument.defaultLanguage));
            return;
        }
        for (const auto& [key, text] : at->second) mKeys.emplace_back(key);
        CheckUses(mDocument.root);
        for (const Node& node : mDocument.root.children) {
            if (node.Is(Element::kStrings)) CheckLanguage(node);
        }
    }

private:
    bool Exists(std::string_view key) const { return std::binary_search(mKeys.begin(), mKeys.end(), key); }

    void CheckUses(const Node& node)
    {
        for (const char* attribute : kKeyAttributes) {
            const std::string& key = node.Get(attribute);
            if (key.empty() || mFindings.IsFull()) continue;
            mUsed.insert(key);
            if (Exists(key)) continue;
            mFindings.Add("E-REF-UNKNOWN", node.Where(attribute),
                          "the default language has no text " + Quoted(key) + Suggestion(key, mKeys));
        }
        for (const Node& child : node.children) CheckUses(child);
    }

    void CheckLanguage(const Node& strings)
    {
        const bool isDefault = strings.Get("language") == mDocument.defaultLanguage;
        std::set<std::string_view> present;
        for (const Node& string : strings.children) {
            const std::string& key = string.Get("key");
            if (key.empty() || mFindings.IsFull()) continue;
            present.insert(key);
            if (isDefault && mUsed.count(key) == 0) {
                mFindings.Add("W-UNUSED", string.Where("key"),
                              "nothing uses the text " + Quoted(key) + "; remove it");
            } else if (!Exists(key)) {
                mFindings.Add("E-REF-UNKNOWN", string.Where("key"),
                              "the default language has no text " + Quoted(key) + Suggestion(key, mKeys));
            }
        }
        if (!isDefault) ReportUntranslated(strings, present);
    }

    void ReportUntranslated(const Node& strings, const std::set<std::string_view>& present)
    {
        std::string missing;
        int count = 0;
        for (const std::string_view key : mKeys) {
            if (present.count(key) != 0) continue;
            if (++count <= 3) missing += (missing.empty() ? "" : ", ") + std::string(key);
        }
        if (count == 0) return;
        if (count > 3) missing += " and " + std::to_string(count - 3) + " more";
        mFindings.Add("W-UNTRANSLATED", strings.Where("language"),
                      Quoted(strings.Get("language")) + " lacks " + missing +
                          "; the default language is shown for them");
    }

    const FaceDocument& mDocument;
    Findings& mFindings;
    std::vector<std::string_view> mKeys;  // of the default language, sorted
    std::set<std::string_view> mUsed;
};

}  // namespace

void CheckTexts(const FaceDocument& document, Findings& findings)
{
    TextChecks(document, findings).Run();
}

}  // namespace DataUtil
