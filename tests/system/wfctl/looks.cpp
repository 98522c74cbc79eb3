// What faces offer and what is chosen: show, edit, and updates that keep the choice.

#include <filesystem>
#include <fstream>

#include "a-watch.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr char kOwn[] = "com.example.watchface-own";

// A face with a style and a photo; `option` is its second option.
std::string OwnFace(const std::string& version, const std::string& option)
{
    return R"(<face-result format="1" id="com.example.watchface-own" version=")" + version +
           R"(" width="64" height="64" shape="round" default-language="en" preview-time="10:08:36" title-key="t">
<strings language="en"><string key="t">Own</string></strings>
<options><style id="dial" label-key="t"><option id="plain" label-key="t" default="true"/><option id=")" +
           option + R"(" label-key="t"/></style>
<photos id="picture" label-key="t" default="none.png" background="gallery"/></options>
<scene><circle cx="32" cy="32" r="30" fill="#3366CC"/>
<circle cx="32" cy="32" r="20" fill="#FFFFFF" when="dial=)" +
           option + R"("/>
<photo photos="picture" x="24" y="24" width="16" height="16"/></scene>
</face-result>)";
}

Json ById(const Json& items, const char* id)
{
    for (const Json& item : items) {
        if (item.value("id", item.value("name", "")) == id) return item;
    }
    return nullptr;
}

}  // namespace

TEST_F(AWatch, says_which_images_of_an_installed_face_it_has_not)
{
    const std::string own = Holding("own_result.xml", OwnFace("1", "round"));
    const Result installed = Run({"install", own});
    EXPECT_EQ(installed.status, 0);
    EXPECT_THAT(installed.err, HasSubstr("[none.png] is not on the watch"));
    std::ofstream(ReadWriteFace(kOwn) + "none.png") << "x";
    EXPECT_EQ(Run({"update", own}).err, "");
    EXPECT_EQ(Run({"install", StagedResultXml("com.corvane.watchface-mirel-u1")}).err, "");
}

TEST_F(AWatch, shows_colours_by_their_roles_and_world_clocks_by_their_groups)
{
    EXPECT_THAT(Run({"show", kClassic}).out, HasSubstr("accent=#3F8FE0\n"));
    EXPECT_THAT(Run({"show", "c4"}).out, HasSubstr("world-clock group zone\n"));
    const Result shown = Run({"world-clock", "show", "c4", "city"});
    EXPECT_EQ(shown.status, 1);
    EXPECT_THAT(shown.err, HasSubstr("its groups: zone, zones; "));
    EXPECT_THAT(Run({"world-clock", "show", "c1", "zone"}).err, HasSubstr("it has no world clock; "));
}

TEST_F(AWatch, shows_what_a_face_offers)
{
    const Result shown = Run({"show", kClassic, "--json"});
    ASSERT_EQ(shown.status, 0) << shown.err;
    const Json face = shown.AsJson();
    EXPECT_EQ(face["title"], "Mirel Classic");
    EXPECT_EQ(face["area"], "read-only");
    EXPECT_EQ(face["shipped"], true);
    EXPECT_EQ(face["preview"]["state"], "good");
    EXPECT_EQ(face["languages"][0], "en");
    const Json roman = ById(ById(face["groups"], "dial")["options"], "roman");
    EXPECT_EQ(roman,
              (Json{
                  {"id",      "roman"         },
                  {"label",   "Roman numerals"},
                  {"picked",  false           },
                  {"default", false           }
    }));
    EXPECT_EQ(ById(ById(face["groups"], "accent")["options"], "azure")["colors"],
              (Json{
                  {"accent", "#3F8FE0"}
    }));
    EXPECT_EQ(ById(face["slots"], "right")["source"], "pedometer");
    EXPECT_THAT(Run({"show", kClassic}).out, HasSubstr("    * index      Indices  (default)\n"));
}

TEST_F(AWatch, knows_a_face_by_the_end_of_its_name)
{
    for (const char* name : {"c1", "mirel-c1", "watchface-mirel-c1"}) {
        EXPECT_EQ(Run({"show", name, "--json"}).AsJson()["id"], kClassic) << name;
        EXPECT_EQ(Run({"set", name, "--json"}).AsJson()["current"], kClassic) << name;
    }
    for (const char* name : {"1", "irel-c1"}) EXPECT_EQ(Run({"show", name}).status, 10) << name;
}

TEST_F(AWatch, knows_no_face_by_an_end_that_several_have)
{
    const std::string other = "com.example.watchface-mirel-c1";
    fs::create_directories(ReadWriteFace(other));
    std::ofstream(ReadWriteFace(other) + "without_result_xml") << "";
    EXPECT_EQ(Run({"show", "mirel-c1"}).status, 10);
    EXPECT_EQ(Run({"show", kClassic}).status, 0);
}

TEST_F(AWatch, shows_labels_in_a_language)
{
    EXPECT_THAT(Run({"show", kClassic, "--language", "de_DE"}).out, HasSubstr("Zifferblatt"));
    EXPECT_THAT(Run({"show", kClassic, "--language", "DE_de_x"}).out, HasSubstr("Zifferblatt"));
    EXPECT_THAT(Run({"show", kClassic, "--language", "xx"}).out, HasSubstr("Roman numerals"));
}

TEST_F(AFolder, is_enough_to_show_a_document)
{
    EXPECT_THAT(Wfctl({"show", StagedResultXml(kDigital)}).out, StartsWith("Mirel Digital\n"));
    const std::string flat = fs::path(StagedResultXml(kDigital)).parent_path() / "watchface.xml";
    const Json shown = Wfctl({"show", flat, "--json"}).AsJson();
    EXPECT_EQ(shown["kind"], "watchface");
    EXPECT_EQ(shown["title"], "Mirel Digital");
    EXPECT_FALSE(shown["complications"].empty());
    EXPECT_EQ(Wfctl({"show", Holding("bad.xml", "<face-result/>")}).status, 1);
    EXPECT_EQ(Wfctl({"show", "com.example.none"}).status, 10);
}

TEST_F(AWatch, changes_what_a_face_shows)
{
    const Result edited =
        Run({"edit", kClassic, "--pick", "dial=roman", "--place", "right=water", "--pick", "accent=azure"});
    ASSERT_EQ(edited.status, 0) << edited.err;
    const std::string preview = ReadWriteFace(kClassic) + kClassic + ".png";
    EXPECT_EQ(edited.out,
              "dial: index -> roman\naccent: copper -> azure\nright: pedometer -> water\n" + preview + "\n");
    EXPECT_NE(ContentsOf(preview), ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    const Json face = Run({"show", kClassic, "--json"}).AsJson();
    EXPECT_EQ(face["area"], "read-write");
    EXPECT_THAT(Run({"show", kClassic}).out, HasSubstr(" read-write, shipped\n"));
    EXPECT_EQ(ById(ById(face["groups"], "dial")["options"], "roman")["picked"], true);
    EXPECT_EQ(ById(face["slots"], "right")["source"], "water");
}

TEST_F(AWatch, adds_one_change_to_another_and_takes_all_back)
{
    ASSERT_EQ(Run({"edit", kClassic, "--pick", "dial=roman"}).status, 0);
    const Result second = Run({"edit", kClassic, "--pick", "accent=azure", "--json"});
    EXPECT_EQ(second.AsJson()["changes"],
              Json::parse(R"([{"what": "accent", "before": "copper", "after": "azure", "shown": true}])"));
    EXPECT_EQ(Run({"edit", kClassic, "--pick", "accent=azure"}).status, 9);
    EXPECT_EQ(Run({"edit", kClassic, "--reset"}).out.substr(0, 21), "dial: roman -> index\n");
    EXPECT_THAT(ContentsOf(ReadWriteFace(kClassic) + kClassic + "_result.xml"), Not(HasSubstr("<pick")));
    EXPECT_EQ(Run({"edit", kClassic, "--reset"}).status, 9);
}

TEST_F(AWatch, changes_nothing_in_a_dry_run)
{
    const Result dry = Run({"edit", kClassic, "--pick", "dial=roman", "--dry-run"});
    EXPECT_EQ(dry.status, 0);
    EXPECT_EQ(
        dry.out,
        "dial: index -> roman\n<selection>\n  <pick group=\"dial\" option=\"roman\" />\n</selection>\n");
    EXPECT_THAT(Run({"edit", kClassic, "--pick", "dial=roman", "--dry-run", "--json"}).AsJson()["selection"],
                HasSubstr("option=\"roman\""));
    EXPECT_FALSE(fs::exists(ReadWriteFace(kClassic)));
}

TEST_F(AWatch, changes_nothing_that_a_face_does_not_offer)
{
    const Result edited = Run({"edit", kClassic, "--pick", "accent=azure", "--pick", "dial=romn"});
    EXPECT_EQ(edited.status, 2);
    EXPECT_THAT(edited.err, HasSubstr("did you mean roman?"));
    EXPECT_EQ(Run({"edit", kClassic}).status, 2);
    EXPECT_EQ(Run({"edit", kClassic, "--preset", "none"}).status, 2);
    EXPECT_EQ(Run({"edit", "com.example.none", "--reset"}).status, 10);
    EXPECT_EQ(Run({"edit", kClassic, "--pick", "dial=roman", "--as", "com.corvane.watchface"}).status, 2);
    EXPECT_EQ(Run({"edit", kClassic, "--reset"}).status, 9);
    EXPECT_FALSE(fs::exists(ReadWriteFace(kClassic)));
}

TEST_F(AWatch, tells_its_manager_of_an_edit)
{
    const auto manager = Listen({"--as", kManager, "--count", "1"});
    ASSERT_EQ(Run({"edit", kClassic, "--pick", "dial=roman"}).status, 0);
    const Json told = Json::parse(manager->NextLine().value_or("null"));
    EXPECT_EQ(told["bundle"]["type"], "watch-setting-updated");
    EXPECT_EQ(told["bundle"]["pkgid"], kClassic);
    EXPECT_EQ(told["bundle"]["data/label"], "Mirel Classic");
    EXPECT_THAT(told["bundle"]["data/xml_data"], HasSubstr("option=\"roman\""));
}

TEST_F(AWatch, tells_of_a_photo_that_is_not_there)
{
    ASSERT_EQ(Run({"install", Holding("own_result.xml", OwnFace("1", "round"))}).status, 0);
    const Result edited = Run({"edit", kOwn, "--photo", "picture=cat.png"});
    EXPECT_EQ(edited.status, 0) << edited.err;
    EXPECT_THAT(edited.err, HasSubstr("/theme/GalleryBackgrounds/cat.png] yet"));
    EXPECT_THAT(edited.out, StartsWith("picture: default -> cat.png\n"));
    EXPECT_EQ(ById(Run({"show", kOwn, "--json"}).AsJson()["photos"], "picture")["file"], "cat.png");
    EXPECT_THAT(Run({"edit", kOwn, "--pick", "dial=round"}).err, Not(HasSubstr("cat.png")));
    const Result again = Run({"edit", kOwn, "--photo", "picture=cat.png"});
    EXPECT_EQ(again.status, 9);
    EXPECT_THAT(again.err, HasSubstr("cat.png] yet")) << "it is named, and still missing";
    const Result path = Run({"edit", kOwn, "--photo", "picture=/tmp/cat.png"});
    EXPECT_EQ(path.status, 2);
    EXPECT_THAT(path.err,
                HasSubstr("wfctl bg add --type gallery '/tmp/cat.png', then: --photo 'picture=cat.png'"));
}

TEST_F(AWatch, keeps_the_selection_in_an_update_that_is_to)
{
    ASSERT_EQ(Run({"install", Holding("1.xml", OwnFace("1", "round"))}).status, 0);
    ASSERT_EQ(Run({"edit", kOwn, "--pick", "dial=round", "--photo", "picture=cat.png"}).status, 0);
    const std::string second = Holding("2.xml", OwnFace("2", "round"));
    const Result kept = Run({"update", second, "--keep-selection"});
    ASSERT_EQ(kept.status, 0) << kept.err;
    const Json face = Run({"show", kOwn, "--json"}).AsJson();
    EXPECT_EQ(face["version"], "2");
    EXPECT_EQ(ById(ById(face["groups"], "dial")["options"], "round")["picked"], true);
    ASSERT_EQ(Run({"update", second}).status, 0);
    EXPECT_EQ(ContentsOf(ReadWriteFace(kOwn) + kOwn + "_result.xml"), ContentsOf(second));
}

TEST_F(AWatch, says_what_of_the_selection_an_update_no_longer_offers)
{
    ASSERT_EQ(Run({"install", Holding("1.xml", OwnFace("1", "round"))}).status, 0);
    ASSERT_EQ(Run({"edit", kOwn, "--pick", "dial=round", "--photo", "picture=cat.png"}).status, 0);
    const Result updated = Run({"update", Holding("2.xml", OwnFace("2", "oval")), "--keep-selection"});
    ASSERT_EQ(updated.status, 0) << updated.err;
    EXPECT_THAT(updated.err, HasSubstr(std::string(kOwn) + "_result.xml:"));
    EXPECT_THAT(updated.err, HasSubstr("N-PICK-UNKNOWN"));
    const Json face = Run({"show", kOwn, "--json"}).AsJson();
    EXPECT_EQ(ById(ById(face["groups"], "dial")["options"], "plain")["picked"], true);
    EXPECT_EQ(ById(face["photos"], "picture")["file"], "cat.png");
}
