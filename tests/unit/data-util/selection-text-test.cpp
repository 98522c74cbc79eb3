// Selections as data: read from a document, written into a text, carried over to a new version.

#include "a-face-document.h"

using DataUtil::Migrate;
using DataUtil::Placement;
using DataUtil::Selection;
using DataUtil::WithSelection;
using DataUtil::WorldClock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ASelectionText : public AFullFaceDocument {
protected:
    static Selection Some()
    {
        Selection selection;
        selection.preset = "calm";
        selection.picks = {
            {"dial", "bars"},
            {"tone", "blue"}
        };
        selection.places = {
            {"info",  {"empty", {}}                                          },
            {"place", {"worldclock", WorldClock{"A <&\"'> B", "", "", "UTC"}}}
        };
        selection.photos = {
            {"backdrop", "it's \"me\" & <you>.png"}
        };
        return selection;
    }

    static Selection Read(const std::string& text)
    {
        const auto parsed = DataUtil::ParseFace(text);
        EXPECT_TRUE(parsed.document) << text;
        EXPECT_THAT(parsed.findings, IsEmpty());
        return parsed.document ? DataUtil::SelectionOf(*parsed.document) : Selection();
    }

    // The text without its selection element.
    static std::string Cut(std::string text)
    {
        const std::size_t begin = text.find("<selection");
        if (begin == std::string::npos) return text;
        constexpr std::string_view end = "</selection>";
        return text.erase(begin, text.find(end) + end.size() - begin);
    }
};

TEST_F(ASelectionText, is_read_as_the_document_has_it)
{
    const Selection selection = Read(mText);
    EXPECT_EQ(selection.preset, "far");
    EXPECT_THAT(selection.picks, ElementsAre(testing::Pair("tone", "blue")));
    EXPECT_THAT(selection.places, ElementsAre(testing::Pair("ring", Placement{"battery", {}})));
    EXPECT_THAT(selection.photos, ElementsAre(testing::Pair("backdrop", "beach 1.jpg")));
}

TEST_F(ASelectionText, has_valid_entries_only)
{
    Select(
        "<selection preset=\"wild\"><pick group=\"dial\" option=\"rings\"/><place slot=\"info\" "
        "source=\"alarm\"/>"
        "<photo photos=\"sky\" file=\"a\"/></selection>");
    const auto parsed = DataUtil::ParseFace(mText);
    EXPECT_TRUE(DataUtil::SelectionOf(*parsed.document).IsEmpty());
}

TEST_F(ASelectionText, comes_back_as_it_was_written)
{
    EXPECT_EQ(Read(WithSelection(mText, Some())), Some());
}

TEST_F(ASelectionText, replaces_the_old_one_and_no_other_byte)
{
    EXPECT_EQ(Cut(WithSelection(mText, Some())), Cut(mText));
}

TEST_F(ASelectionText, replaces_an_empty_element)
{
    const std::string before = Cut(mText);
    Select("<selection preset = 'far' />");
    EXPECT_EQ(Cut(WithSelection(mText, Some())), before);
    EXPECT_EQ(Read(WithSelection(mText, Some())), Some());
}

TEST_F(ASelectionText, is_gone_when_it_is_empty)
{
    EXPECT_EQ(WithSelection(mText, {}), Cut(mText));
}

TEST_F(ASelectionText, is_made_where_there_was_none_and_leaves_no_trace_when_it_goes)
{
    const std::string without = Cut(mText);
    const std::string with = WithSelection(without, Some());
    EXPECT_EQ(Read(with), Some());
    EXPECT_EQ(Cut(with), without);
    EXPECT_EQ(WithSelection(with, {}), without);
}

TEST_F(ASelectionText, is_the_same_text_for_the_same_selection)
{
    const std::string once = WithSelection(mText, Some());
    EXPECT_EQ(WithSelection(once, Some()), once);
}

TEST_F(ASelectionText, is_not_mistaken_for_what_looks_like_one)
{
    AddBefore("<options>", "<!-- <selection> --><?note <selection/>?>");
    const std::string text = WithSelection(mText, Some());
    EXPECT_THAT(text, HasSubstr("<!-- <selection> --><?note <selection/>?><options>"));
    EXPECT_EQ(Read(text), Some());
}

TEST_F(ASelectionText, is_the_roots_own)
{
    const std::string text = "<face-result><scene><selection/></scene><selection/></face-result>";
    EXPECT_EQ(WithSelection(text, {}), "<face-result><scene><selection/></scene></face-result>");
}

TEST_F(ASelectionText, is_found_behind_a_byte_order_mark_and_other_languages)
{
    Replace("<string key=\"title\">Noon</string>", "<string key=\"title\">정오</string>");
    mText = "\xEF\xBB\xBF" + mText;
    EXPECT_EQ(Read(WithSelection(mText, Some())), Some());
    EXPECT_EQ(Cut(WithSelection(mText, Some())), Cut(mText));
}

TEST_F(ASelectionText, is_not_put_into_what_is_not_well_formed)
{
    for (const char* text : {"", "<face-result>", "<!DOCTYPE a><face-result/>", "no"}) {
        EXPECT_EQ(WithSelection(text, Some()), text);
    }
}

TEST_F(ASelectionText, leaves_out_what_a_world_clock_takes_from_its_offer)
{
    EXPECT_THAT(WithSelection(mText, Some()),
                HasSubstr("<place slot=\"place\" source=\"worldclock\" city=\"A "
                          "&lt;&amp;&quot;'&gt; B\" timezone-path=\"UTC\"/>"));
}

using AMigration = ASelectionText;

TEST_F(AMigration, carries_the_whole_selection_over)
{
    std::string newer = mText;
    newer.replace(newer.find("version=\"7\""), 11, "version=\"8\"");
    const auto migrated = Migrate(WithSelection(newer, {}), WithSelection(mText, Some()));
    EXPECT_THAT(migrated.notes, IsEmpty());
    EXPECT_EQ(Read(migrated.text), Some());
    EXPECT_THAT(migrated.text, HasSubstr("version=\"8\""));
}

TEST_F(AMigration, puts_the_users_selection_in_the_place_of_the_authors)
{
    const auto migrated = Migrate(mText, WithSelection(mText, {}));
    EXPECT_EQ(migrated.text, WithSelection(mText, {}));
}

TEST_F(AMigration, drops_what_the_new_text_does_not_offer_with_a_note_each)
{
    const std::string old = WithSelection(mText, Some());
    Replace("<option id=\"blue\"", "<option id=\"green\"");
    Replace("<preset id=\"calm\"", "<preset id=\"quiet\"");
    Replace("<photos id=\"backdrop\"", "<photos id=\"sky\"");
    Replace("<photo photos=\"backdrop\" x", "<photo photos=\"sky\" x");
    Replace("<offer source=\"worldclock\" city=\"Oslo\" timezone-path=\"/usr/share/zoneinfo/Europe/Oslo\"/>",
            "");
    Select("<selection/>");
    const auto migrated = Migrate(mText, old);
    std::vector<std::string> messages;
    for (const auto& note : migrated.notes) {
        EXPECT_EQ(note.code, "N-PICK-UNKNOWN");
        messages.push_back(note.message);
    }
    EXPECT_THAT(messages,
                ElementsAre(HasSubstr("\"calm\""), HasSubstr("\"blue\""), HasSubstr("\"backdrop\"")));
    Selection kept = Some();
    kept.preset.clear();
    kept.picks.erase("tone");
    kept.photos.clear();
    EXPECT_EQ(Read(migrated.text), kept);
}

TEST_F(AMigration, keeps_picks_by_id_when_options_change_their_order)
{
    const std::string old = WithSelection(mText, Some());
    const std::string option = "      <option id=\"dots\" label-key=\"dial.dots\"/>\n";
    Replace(option, "");
    AddBefore("      <option id=\"bars\"", option);
    EXPECT_EQ(Read(Migrate(mText, old).text), Some());
}

TEST_F(AMigration, tells_the_place_of_a_note_in_the_old_text)
{
    const std::string newer = WithSelection(mText, {});
    Select("<selection>\n<pick group=\"strap\" option=\"red\"/></selection>");
    const auto migrated = Migrate(newer, mText);
    ASSERT_EQ(migrated.notes.size(), 1U);
    EXPECT_EQ(migrated.notes[0].line, LineOf("strap"));
}

TEST_F(AMigration, takes_the_selection_of_an_old_text_whose_authors_part_is_wrong_by_now)
{
    const std::string newer = WithSelection(mText, {});
    Replace("<ticks when", "<tick when");
    const auto migrated = Migrate(newer, mText);
    EXPECT_EQ(Read(migrated.text).preset, "far");
    EXPECT_THAT(migrated.notes, IsEmpty());
}

TEST_F(AMigration, takes_nothing_of_an_old_text_that_cannot_be_read)
{
    const auto migrated = Migrate(mText, "<face-result>");
    EXPECT_EQ(migrated.text, WithSelection(mText, {}));
    ASSERT_EQ(migrated.notes.size(), 1U);
    EXPECT_EQ(migrated.notes[0].code, "E-SYNTAX");
}

TEST_F(AMigration, gives_a_new_text_that_is_refused_back_with_its_findings)
{
    std::string newer = mText;
    newer.replace(newer.find("version=\"7\""), 11, "version=\"x\"");
    const auto migrated = Migrate(newer, mText);
    EXPECT_EQ(migrated.text, newer);
    ASSERT_EQ(migrated.notes.size(), 1U);
    EXPECT_EQ(migrated.notes[0].code, "E-VALUE");
}
