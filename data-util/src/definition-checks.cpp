// Names that are misspelled where they are defined. Found first: what names them rightly is then no finding.

#include <map>
#include <set>

#include "face-checks.h"
#include "nearest-name.h"

namespace DataUtil {

namespace {

// The names of one kind: where each is defined, and how often each, defined or not, is named elsewhere.
struct Names {
    struct Definition {
        const Node* node;
        const char* attribute;
    };

    const char* kind = "";
    std::map<std::string, std::vector<Definition>, std::less<>> definitions = {};
    std::map<std::string, std::size_t, std::less<>> mentions = {};

    void Define(const Node& node, const char* attribute)
    {
        if (node.Has(attribute)) definitions[node.Get(attribute)].push_back({&node, attribute});
    }
    void Mention(const std::string& name)
    {
        if (!name.empty()) ++mentions[name];
    }
    std::size_t MentionsOf(std::string_view name) const
    {
        const auto at = mentions.find(name);
        return at == mentions.end() ? 0 : at->second;
    }
};

class DefinitionChecks {
public:
    DefinitionChecks(const Node& root, Findings& findings) : mRoot(root), mFindings(findings) {}

    void Run()
    {
        Collect(mRoot);
        if (const Node* selection = mRoot.Child(Element::kSelection)) CollectChoices(*selection);
        for (const Node* palette : mPalettes) CheckPalette(*palette);
        for (const Names* names : {&mTexts, &mRoles, &mSubjects, &mPhotos}) Check(*names);
        for (const auto& [group, names] : mOptions) Check(names);
    }

private:
    void Collect(const Node& node)
    {
        switch (node.Kind()) {
            case Element::kStrings:
                return CollectTexts(node);
            case Element::kPalette:
                mPalettes.push_back(&node);
                [[fallthrough]];
            case Element::kStyle:
            case Element::kSwitch:
                mSubjects.Define(node, "id");
                for (const Node& option : node.children) OptionsOf(node.Get("id")).Define(option, "id");
                break;
            case Element::kSlot:
                mSubjects.Define(node, "name");
                break;
            case Element::kPhotos:
                mPhotos.Define(node, "id");
                break;
            case Element::kColor:
                mRoles.Define(node, "role");
                break;
            case Element::kPresetPick:
                Mention(node.Get("group"), node.Get("option"));
                break;
            case Element::kPresetPlace:
                mSubjects.Mention(node.Get("slot"));
                break;
            case Element::kPhoto:
                mPhotos.Mention(node.Get("photos"));
                break;
            case Element::kSelection:
                return;
            default:
                break;
        }
        for (const Term& term : TermsOf(node)) Mention(term.subject, term.value);
        for (const Node::Attribute& attribute : node.attributes) {
            if (attribute.rule->kind == ValueKind::kStringKey) mTexts.Mention(attribute.value);
            if (attribute.rule->kind == ValueKind::kColor && IsRole(attribute.value))
                mRoles.Mention(attribute.value);
        }
        for (const Node& child : node.children) Collect(child);
    }

    // A translation names a text of the default language.
    void CollectTexts(const Node& strings)
    {
        const bool isDefault = strings.Get("language") == mRoot.Get("default-language");
        for (const Node& string : strings.children) {
            if (isDefault) {
                mTexts.Define(string, "key");
            } else {
                mTexts.Mention(string.Get("key"));
            }
        }
    }

    // What the user chose may be of an older document, so it only counts where the document itself names it.
    void CollectChoices(const Node& selection)
    {
        const auto mentionAgain = [](Names& names, const std::string& name) {
            if (names.MentionsOf(name) != 0) names.Mention(name);
        };
        for (const Node& choice : selection.children) {
            mentionAgain(mSubjects, choice.Get("group"));
            mentionAgain(mSubjects, choice.Get("slot"));
            mentionAgain(mPhotos, choice.Get("photos"));
            mentionAgain(OptionsOf(choice.Get("group")), choice.Get("option"));
        }
    }

    void Mention(const std::string& subject, const std::string& value)
    {
        mSubjects.Mention(subject);
        OptionsOf(subject).Mention(value);
    }

    Names& OptionsOf(const std::string& group)
    {
        return mOptions.try_emplace(group, Names{"option"}).first->second;
    }

    // The options of a palette set the same roles: one that some lack may be meant by another, near to it,
    // that not all have. The more often a name stands in the document, the rather it is the right one.
    void CheckPalette(const Node& palette)
    {
        std::map<std::string_view, std::size_t> setters;
        for (const Node& option : palette.children) {
            for (const std::string_view role : RolesOf(option)) ++setters[role];
        }
        const auto weight = [&](std::string_view role) { return setters[role] + mRoles.MentionsOf(role); };
        for (const Node& option : palette.children) {
            const auto set = RolesOf(option);
            std::vector<std::string_view> lacking;
            for (const auto& [role, count] : setters) {
                if (!set.contains(role) && !mFindings.IsRefused(role)) lacking.push_back(role);
            }
            for (const Node& color : option.children) {
                const std::string& role = color.Get("role");
                if (lacking.empty() || mFindings.IsRefused(role) || setters[role] == palette.children.size())
                    continue;
                const std::string_view meant = mGuesses.Nearest(role, lacking);
                if (meant.empty() || weight(role) > weight(meant)) continue;
                if (weight(role) == weight(meant) && &option == &palette.children.front()) continue;
                Report("E-COVERAGE", {&color, "role"},
                       "not every option sets the role " + Quoted(role) + OrMeant(meant), meant);
            }
        }
    }

    static std::set<std::string_view> RolesOf(const Node& option)
    {
        std::set<std::string_view> roles;
        for (const Node& color : option.children) {
            if (color.Has("role")) roles.insert(color.Get("role"));
        }
        return roles;
    }

    // A definition is misspelled when nothing names it, while more places name one that is not defined and is
    // nearer to it than to any other.
    void Check(const Names& names)
    {
        std::vector<std::string_view> unknown;
        for (const auto& [name, count] : names.mentions) {
            if (count > 1 && !names.definitions.contains(name) && !mFindings.IsRefused(name))
                unknown.push_back(name);
        }
        if (unknown.empty()) return;
        std::vector<std::string_view> defined;
        for (const auto& [name, places] : names.definitions) defined.push_back(name);
        for (const auto& [name, places] : names.definitions) {
            if (names.MentionsOf(name) != 0 || mFindings.IsRefused(name)) continue;
            const std::string_view meant = mGuesses.Nearest(name, unknown);
            if (meant.empty() || names.MentionsOf(meant) <= places.size() ||
                mGuesses.Nearest(meant, defined) != name)
                continue;
            Report("E-REF-UNKNOWN", places.front(),
                   "nothing uses the " + std::string(names.kind) + " " + Quoted(name) +
                       ", but one that is not there" + OrMeant(meant),
                   meant);
        }
    }

    // What has the right name and what has the wrong one mean each other, and nothing else is wrong with
    // them.
    void Report(const char* code, Names::Definition definition, std::string message, std::string_view meant)
    {
        mFindings.Add(code, definition.node->Where(definition.attribute), std::move(message));
        mFindings.Refuse(definition.node->Get(definition.attribute));
        mFindings.Refuse(meant);
    }

    const Node& mRoot;
    Findings& mFindings;
    NameGuesses mGuesses;  // not those of the findings, which are for names that nothing defines
    std::vector<const Node*> mPalettes;
    Names mTexts{"text"};
    Names mRoles{"role"};
    Names mSubjects{"group or slot"};
    Names mPhotos{"photos"};
    std::map<std::string, Names> mOptions;  // group -> its options
};

}  // namespace

bool IsRole(std::string_view color)
{
    return !color.empty() && color != "none" && !color.starts_with('#');
}

void CheckDefinitions(const Node& root, Findings& findings)
{
    DefinitionChecks(root, findings).Run();
}

}  // namespace DataUtil
