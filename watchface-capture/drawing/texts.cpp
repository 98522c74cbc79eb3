#include "texts.h"

namespace Drawing {

std::string LanguageTag(std::string_view language)
{
    std::string tag(language.substr(0, language.find_first_of(".@")));
    for (char& c : tag) {
        if (c == '_') c = '-';
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return tag;
}

Texts::Texts(const DataUtil::XmlTree& tree, std::string_view defaultLanguage, std::vector<Finding>& warnings)
    : mDefault(LanguageTag(defaultLanguage))
{
    for (const pugi::xml_node node : tree.Root().children("strings")) {
        const Element strings(tree, node, DataUtil::Element::kStrings, warnings);
        Keys& keys = mLanguages[LanguageTag(strings.Text("language"))];
        for (const Element& entry : strings.Children(warnings)) {
            std::string text;
            for (const pugi::xml_node part : entry.Node().children()) text += part.value();
            if (text.size() > Limits::kTextBytes) entry.Fail("the text is longer than 512 bytes");
            keys.emplace(entry.Text("key"), std::move(text));
        }
    }
}

Texts::Text Texts::Find(std::string_view key, std::string_view language) const
{
    const std::string tag = LanguageTag(language);
    const auto in = [&](std::string_view candidate) -> Text {
        const auto keys = mLanguages.find(candidate);
        if (keys == mLanguages.end()) return {};
        const auto found = keys->second.find(key);
        if (found == keys->second.end()) return {};
        return {found->second, keys->first};
    };
    for (std::string_view candidate = tag; !candidate.empty();) {
        if (const Text found = in(candidate); found.text.data()) return found;
        const size_t cut = candidate.rfind('-');
        candidate = cut == std::string_view::npos ? std::string_view() : candidate.substr(0, cut);
    }
    return in(mDefault);
}

}  // namespace Drawing
