// What holds for every selection of every face.

#include "a-face-document.h"
#include "face-checks.h"
#include "faces.h"
#include "flat-checks.h"
#include "flat-schema.h"
#include "random-selection.h"

using testing::IsEmpty;

namespace {

constexpr unsigned kSelections = 20;

std::vector<std::string> ToText(const std::vector<DataUtil::Finding>& findings)
{
    std::vector<std::string> lines;
    for (const DataUtil::Finding& finding : findings) lines.push_back(DataUtil::FormatFinding(finding));
    return lines;
}

// The skeletons of the texts below `node` that are shown.
void AddSkeletons(const DataUtil::Node& node, const DataUtil::Resolution* resolution,
                  std::vector<std::string>& skeletons)
{
    for (const DataUtil::Node& child : node.children) {
        if (resolution != nullptr && !resolution->Holds(DataUtil::TermsOf(child))) continue;
        if (child.Is(DataUtil::Element::kText) && child.Has("skeleton"))
            skeletons.push_back(child.Get("skeleton"));
        AddSkeletons(child, resolution, skeletons);
    }
}

}  // namespace

class AnySelection : public testing::TestWithParam<std::string> {
protected:
    AnySelection() : mText(TextOf(GetParam())), mAuthored(*DataUtil::ParseFace(mText).document) {}

    // Calls `check` with the document of each selection.
    template <typename Check>
    void ForEach(Check check)
    {
        for (unsigned seed = 0; seed < kSelections && !HasFailure(); ++seed) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            const DataUtil::Selection selection = RandomSelection(mAuthored, seed);
            check(DataUtil::WithSelection(mText, selection), selection);
        }
    }

    std::string mText;
    DataUtil::FaceDocument mAuthored;
};

TEST_P(AnySelection, is_accepted_and_comes_back_as_it_was_written)
{
    ForEach([](const std::string& text, const DataUtil::Selection& selection) {
        const auto parsed = DataUtil::ParseFace(text);
        EXPECT_THAT(ToText(parsed.findings), IsEmpty());
        ASSERT_TRUE(parsed.document);
        EXPECT_EQ(DataUtil::SelectionOf(*parsed.document), selection);
    });
}

TEST_P(AnySelection, changes_nothing_of_the_authors_part)
{
    const std::string without = DataUtil::WithSelection(mText, {});
    ForEach([&](const std::string& text, const DataUtil::Selection&) {
        EXPECT_EQ(DataUtil::WithSelection(text, {}), without);
    });
}

TEST_P(AnySelection, gives_the_same_bytes_for_the_same_text)
{
    ForEach([](const std::string& text, const DataUtil::Selection&) {
        EXPECT_EQ(DataUtil::Flatten(*DataUtil::ParseFace(text).document),
                  DataUtil::Flatten(*DataUtil::ParseFace(text).document));
    });
}

TEST_P(AnySelection, gives_a_flat_document_without_a_finding)
{
    ForEach([](const std::string& text, const DataUtil::Selection&) {
        EXPECT_THAT(ToText(DataUtil::CheckFlat(DataUtil::Flatten(*DataUtil::ParseFace(text).document))),
                    IsEmpty());
    });
}

TEST_P(AnySelection, keeps_all_texts_and_the_skeletons_that_are_shown)
{
    ForEach([](const std::string& text, const DataUtil::Selection&) {
        const DataUtil::FaceDocument document = *DataUtil::ParseFace(text).document;
        DataUtil::Findings findings;
        DataUtil::Node flat;
        const auto tree = DataUtil::XmlTree::Load(DataUtil::Flatten(document), findings);
        ASSERT_TRUE(tree && DataUtil::ReadNodes(*tree, DataUtil::FlatSchema(), flat, findings));
        EXPECT_EQ(DataUtil::ReadTexts(flat, findings), document.texts);
        const DataUtil::Resolution resolution = DataUtil::Resolve(document);
        std::vector<std::string> shown, kept;
        AddSkeletons(*document.root.Child(DataUtil::Element::kScene), &resolution, shown);
        AddSkeletons(flat, nullptr, kept);
        EXPECT_EQ(kept, shown);
    });
}

TEST_P(AnySelection, survives_an_update_that_offers_the_same)
{
    const std::string update = DataUtil::WithSelection(mText, RandomSelection(mAuthored, kSelections));
    ForEach([&](const std::string& text, const DataUtil::Selection& selection) {
        const auto migrated = DataUtil::Migrate(update, text);
        EXPECT_THAT(ToText(migrated.notes), IsEmpty());
        EXPECT_EQ(DataUtil::SelectionOf(*DataUtil::ParseFace(migrated.text).document), selection);
    });
}

TEST_P(AnySelection, keeps_of_an_update_what_it_still_offers)
{
    ForEach([&](const std::string&, const DataUtil::Selection& selection) {
        DataUtil::Selection older = selection;
        older.picks["gone-group"] = "on";
        older.places["gone-slot"] = {"date", {}};
        older.photos["gone-photos"] = "a.png";
        const auto migrated = DataUtil::Migrate(mText, DataUtil::WithSelection(mText, older));
        EXPECT_EQ(migrated.notes.size(), 3U);
        EXPECT_EQ(DataUtil::SelectionOf(*DataUtil::ParseFace(migrated.text).document), selection);
    });
}

INSTANTIATE_TEST_SUITE_P(of_a_face, AnySelection, testing::ValuesIn(AllResultXmls()), [](const auto& face) {
    std::string name = face.param.substr(face.param.rfind('/') + 1);
    name.resize(name.find("_result.xml"));
    for (char& c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
    }
    return name;
});
