// Where documents name languages, time zones and countries.

#include "locale-names.h"

#include "a-face-document.h"

using DataUtil::LocaleKind;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

class ADocumentWithLocales : public AFaceDocument {
protected:
    ADocumentWithLocales()
    {
        AddBefore("<fallback source=\"battery\"/>",
                  "<offer source=\"worldclock\" city=\"Tokyo\" country=\"Japan\" timezone=\"JST\"\n  "
                  "timezone-path=\"/usr/share/zoneinfo/Asia/Tokyo\"/>");
        Replace("role=\"gauge\"", "role=\"text\"");
        AddAfter("<selection>",
                 "<place slot=\"top\" source=\"worldclock\" country=\"Peru\" timezone=\"America/Lima\"/>");
    }

    // In the document's order.
    std::vector<std::pair<LocaleKind, std::string>> Names() const
    {
        std::vector<std::pair<LocaleKind, std::string>> names;
        for (const DataUtil::LocaleName& name : DataUtil::LocaleNamesOf(mText))
            names.emplace_back(name.kind, name.name);
        return names;
    }
    // Instead of the layer's condition.
    void GiveLayer(const char* attributes) { Replace("<layer when=\"dial=bars\"", attributes); }
};

TEST_F(ADocumentWithLocales, is_accepted_whatever_they_are)
{
    EXPECT_THAT(Codes(), IsEmpty());
    Replace("Asia/Tokyo", "Asia/Tokoy");
    Replace("strings language=\"de\"", "strings language=\"zz\"");
    Replace("Peru", "Preu");
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(ADocumentWithLocales, tells_all_in_order)
{
    EXPECT_THAT(Names(),
                ElementsAre(Pair(LocaleKind::kLanguage, "en"), Pair(LocaleKind::kLanguage, "en"),
                            Pair(LocaleKind::kLanguage, "de"), Pair(LocaleKind::kCountry, "Japan"),
                            Pair(LocaleKind::kZone, "/usr/share/zoneinfo/Asia/Tokyo"),
                            Pair(LocaleKind::kCountry, "Peru"), Pair(LocaleKind::kZone, "America/Lima")));
}

TEST_F(ADocumentWithLocales, tells_where_they_stand)
{
    const auto names = DataUtil::LocaleNamesOf(mText);
    ASSERT_EQ(names.size(), 7U);
    EXPECT_EQ(names[4].place.line, LineOf("  timezone-path="));
    EXPECT_EQ(names[4].place.column, 3);
    EXPECT_EQ(names[4].place.path, "/face-result/scene[1]/slot[top]/offer[3]/@timezone-path");
}

TEST_F(ADocumentWithLocales, tells_the_zone_beside_a_country)
{
    const auto names = DataUtil::LocaleNamesOf(mText);
    ASSERT_EQ(names.size(), 7U);
    EXPECT_EQ(names[3].zone, "/usr/share/zoneinfo/Asia/Tokyo");
    EXPECT_EQ(names[5].zone, "");
}

TEST_F(ADocumentWithLocales, names_a_zone_by_its_sources_word_only_where_a_layer_has_no_path)
{
    GiveLayer("<layer timezone=\"CET\" timezone-path=\"Europe/Oslo\"");
    EXPECT_THAT(Names(), Contains(Pair(LocaleKind::kZone, "Europe/Oslo")));
    EXPECT_THAT(Names(), Not(Contains(Pair(LocaleKind::kZone, "CET"))));
    Replace(" timezone-path=\"Europe/Oslo\"", "");
    EXPECT_THAT(Names(), Contains(Pair(LocaleKind::kZone, "CET")));
}

TEST_F(ADocumentWithLocales, tells_them_though_it_is_refused)
{
    Replace("shape=\"round\"", "shape=\"rund\"");
    EXPECT_EQ(Names().size(), 7U);
}

TEST_F(ADocumentWithLocales, tells_no_value_that_is_malformed)
{
    Replace("Asia/Tokyo", "Asia//Tokyo");
    EXPECT_EQ(Names().size(), 6U);
}

TEST_F(ADocumentWithLocales, tells_those_of_its_flat_document)
{
    mText = Flat();
    EXPECT_THAT(Names(), ElementsAre(Pair(LocaleKind::kLanguage, "en"), Pair(LocaleKind::kLanguage, "en"),
                                     Pair(LocaleKind::kLanguage, "de"), Pair(LocaleKind::kCountry, "Peru"),
                                     Pair(LocaleKind::kZone, "America/Lima"),
                                     Pair(LocaleKind::kZone, "/usr/share/zoneinfo/Asia/Tokyo")));
}

TEST(ATextThatIsNoDocument, names_nothing)
{
    for (const char* text : {"", "<face-result", "<html language=\"en\"/>"})
        EXPECT_THAT(DataUtil::LocaleNamesOf(text), IsEmpty()) << text;
}
