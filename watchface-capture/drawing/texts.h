// The texts of a document in the language of the watch.

#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "element.h"

namespace Drawing {

class Texts {
public:
    // Reads every `strings` of the document. Throws DocumentError.
    Texts(const DataUtil::XmlTree& tree, std::string_view defaultLanguage, std::vector<Finding>& warnings);

    struct Text {
        std::string_view text;
        std::string_view language;
    };
    // The text in `language` ("pt_BR", "pt-BR"), else with the language's last parts cut off, else in the
    // document's default language. Without data when no language has the key.
    Text Find(std::string_view key, std::string_view language) const;

private:
    using Keys = std::map<std::string, std::string, std::less<>>;
    std::map<std::string, Keys, std::less<>> mLanguages;  // tags in small letters
    std::string mDefault;
};

// "pt_BR" as "pt-br".
std::string LanguageTag(std::string_view language);

}  // namespace Drawing
