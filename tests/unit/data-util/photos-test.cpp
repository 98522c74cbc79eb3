// Photos: the user's pictures.

#include "a-face-document.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using APhoto = AFullFaceDocument;

TEST_F(APhoto, becomes_its_place_its_file_and_its_default)
{
    EXPECT_EQ(FlatLine("default=\"bg/plain.png\""),
              "<photo background=\"gallery\" prefix=\"NOON1\" file=\"beach 1.jpg\" default=\"bg/plain.png\" "
              "x=\"0\" y=\"0\" width=\"400\" height=\"320\"/>");
}

TEST_F(APhoto, has_no_file_while_none_is_chosen)
{
    EXPECT_EQ(FlatLine("default=\"bg/face.png\""),
              "<photo background=\"theme\" default=\"bg/face.png\" x=\"20\" y=\"20\" width=\"80\" "
              "height=\"80\" fit=\"contain\" opacity=\"0.75\"/>");
}

TEST_F(APhoto, is_left_out_while_its_photos_are_hidden)
{
    Select(
        "<selection><pick group=\"dial\" option=\"dots\"/>"
        "<photo photos=\"portrait\" file=\"me.png\"/></selection>");
    EXPECT_THAT(Flat(), Not(HasSubstr("bg/face.png")));
}

TEST_F(APhoto, is_left_out_while_its_own_condition_does_not_hold)
{
    Replace("<photo photos=\"backdrop\" x", "<photo when=\"dial=dots\" photos=\"backdrop\" x");
    EXPECT_THAT(Flat(), Not(HasSubstr("bg/plain.png")));
}

TEST_F(APhoto, of_unknown_photos_is_refused)
{
    Replace("<photo photos=\"backdrop\" x", "<photo photos=\"backdrops\" x");
    ExpectOnly("E-REF-UNKNOWN", "<photo photos=\"backdrops\"", "did you mean \"backdrop\"?");
}

TEST_F(APhoto, that_nothing_shows_is_warned_of)
{
    Replace(
        "    <photo photos=\"portrait\" x=\"20\" y=\"20\" width=\"80\" height=\"80\" fit=\"contain\" "
        "opacity=\"0.75\"/>\n",
        "");
    ExpectOnly("W-UNUSED", "<photos id=\"portrait\"");
}

TEST_F(APhoto, may_be_shown_twice)
{
    Replace("  </scene>", "<photo photos=\"backdrop\" x=\"0\" y=\"0\" width=\"9\" height=\"9\"/></scene>");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(APhoto, has_an_id_that_no_group_has)
{
    Replace("<photos id=\"portrait\"", "<photos id=\"tone\"");
    EXPECT_THAT(Codes(), testing::Contains("E-ID-DUPLICATE"));
}

TEST_F(APhoto, has_an_id_that_no_slot_has)
{
    Replace("<slot name=\"ring\"", "<slot name=\"portrait\"");
    EXPECT_THAT(Codes(), testing::Contains("E-ID-DUPLICATE"));
}

TEST_F(APhoto, may_be_named_in_no_condition)
{
    Replace("<text text-key=\"title\"", "<text when=\"backdrop=own\" text-key=\"title\"");
    ExpectOnly("E-REF-UNKNOWN", "backdrop=own", "nothing can depend on the photos");
}

TEST_F(APhoto, needs_a_default_image)
{
    Replace(" default=\"bg/plain.png\"", "");
    ExpectOnly("E-ATTRIBUTE-MISSING", "<photos id=\"backdrop\"", "\"default\"");
}

TEST_F(APhoto, needs_a_default_image_inside_its_folder)
{
    Replace("default=\"bg/plain.png\"", "default=\"../plain.png\"");
    ExpectOnly("E-ASSET-PATH", "<photos id=\"backdrop\"");
}

TEST_F(APhoto, needs_to_say_where_it_lies)
{
    Replace(" background=\"theme\"", "");
    ExpectOnly("E-ATTRIBUTE-MISSING", "<photos id=\"portrait\"", "\"background\"");
}

TEST_F(APhoto, has_a_prefix_in_the_gallery_only)
{
    Replace("background=\"gallery\" prefix=\"NOON1\"", "background=\"theme\" prefix=\"NOON1\"");
    ExpectOnly("E-ATTRIBUTE-CHOICE", "prefix=\"NOON1\"", "gallery");
}

TEST_F(APhoto, may_do_without_a_prefix)
{
    Replace(" prefix=\"NOON1\"", "");
    EXPECT_THAT(FlatLine("bg/plain.png"), HasSubstr("background=\"gallery\" file="));
}

TEST_F(APhoto, is_one_of_four_at_most)
{
    std::string photos;
    for (int i = 0; i < 3; ++i) {
        const std::string id = "p" + std::to_string(i);
        photos += "<photos id=\"" + id +
                  "\" label-key=\"portrait\" default=\"bg/face.png\" background=\"theme\"/>\n";
        Replace("  </scene>",
                "<photo photos=\"" + id + "\" x=\"0\" y=\"0\" width=\"9\" height=\"9\"/>\n  </scene>");
    }
    AddBefore("  </options>", photos);
    ExpectOnly("E-CHILD-COUNT", "<photos id=\"p2\"", "at most 4");
}

TEST_F(APhoto, is_refused_when_its_file_is_no_bare_name)
{
    for (const char* file : {".", "..", "a/b.png", "/a.png", "a&#10;b.png", "a&#x7F;b.png", "a&#x85;b.png"}) {
        Select("<selection><photo photos=\"backdrop\" file=\"" + std::string(file) + "\"/></selection>");
        EXPECT_THAT(Codes(), testing::ElementsAre("E-VALUE")) << file;
    }
}

TEST_F(APhoto, takes_a_file_name_of_255_bytes_and_not_one_more)
{
    const std::string longest(255, 'x');
    Select("<selection><photo photos=\"backdrop\" file=\"" + longest + "\"/></selection>");
    EXPECT_THAT(Codes(), IsEmpty());
    Select("<selection><photo photos=\"backdrop\" file=\"" + longest + "x\"/></selection>");
    EXPECT_THAT(Codes(), testing::ElementsAre("E-VALUE"));
}

TEST_F(APhoto, chosen_for_photos_that_do_not_exist_leaves_a_note)
{
    Select("<selection><photo photos=\"sky\" file=\"a.png\"/></selection>");
    ExpectOnly("N-PICK-UNKNOWN", "photos=\"sky\"");
}

TEST_F(APhoto, chosen_twice_is_the_last_and_leaves_a_note)
{
    Select(
        "<selection><photo photos=\"backdrop\" file=\"a.png\"/>\n"
        "<photo photos=\"backdrop\" file=\"b.png\"/></selection>");
    ExpectOnly("N-PICK-REPEATED", "b.png");
    EXPECT_THAT(Flat(), HasSubstr("file=\"b.png\""));
}
