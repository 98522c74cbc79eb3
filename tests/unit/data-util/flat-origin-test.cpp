// Which flat documents are made from a face document.

#include "flat-origin.h"

#include "a-face-document.h"
#include "limited-complications.h"
#include "world-clock.h"

class TheOriginOfAFlatDocument : public AFullFaceDocument {
protected:
    TheOriginOfAFlatDocument() { Select("<selection/>"); }

    DataUtil::FaceDocument Document() const { return *DataUtil::ParseFace(mText).document; }
    bool IsMade(const std::string& flat) const { return DataUtil::IsMadeFrom(flat, Document()); }

    std::string Updated(const char* slot, const DataUtil::WorldClockUpdate& update) const
    {
        DataUtil::FaceDocument document = Document();
        std::string problem;
        EXPECT_TRUE(DataUtil::UpdateWorldClock(document, slot, update, problem)) << problem;
        return DataUtil::Flatten(document);
    }
};

TEST_F(TheOriginOfAFlatDocument, is_its_document)
{
    EXPECT_TRUE(IsMade(Flat()));
}

TEST_F(TheOriginOfAFlatDocument, is_its_document_without_limited_complications)
{
    DataUtil::FaceDocument document = Document();
    DataUtil::RemoveLimited(document, DataUtil::LimitRule(nullptr));
    const std::string flat = DataUtil::Flatten(document);
    ASSERT_NE(flat, Flat());
    EXPECT_TRUE(IsMade(flat));
}

TEST_F(TheOriginOfAFlatDocument, is_its_document_whatever_world_clock_was_set)
{
    const DataUtil::WorldClockUpdate updates[] = {
        {"Lima <&> \"", "Peru",  "PET",   "America/Lima"},
        {"Lima",        "",      "",      "America/Lima"},
        {nullptr,       nullptr, nullptr, nullptr       },
    };
    for (const char* slot : {"place", "info"}) {
        for (const auto& update : updates) EXPECT_TRUE(IsMade(Updated(slot, update))) << slot;
    }
}

TEST_F(TheOriginOfAFlatDocument, is_no_document_of_another_selection)
{
    const std::string before = Flat();
    for (const char* selection : {"<selection><pick group=\"dial\" option=\"dots\"/></selection>",
                                  "<selection><place slot=\"info\" source=\"date\"/></selection>"}) {
        Select(selection);
        ASSERT_NE(Flat(), before);
        EXPECT_FALSE(IsMade(before)) << selection;
    }
}

TEST_F(TheOriginOfAFlatDocument, with_a_world_clock_is_no_document_of_another_selection)
{
    const std::string before = Updated("place", {"Lima", "Peru", "PET", "America/Lima"});
    Select("<selection><pick group=\"dial\" option=\"dots\"/></selection>");
    EXPECT_FALSE(IsMade(before));
}

TEST_F(TheOriginOfAFlatDocument, that_is_none_is_no_document)
{
    for (const char* text : {"", "x", "<watchface/>"}) EXPECT_FALSE(IsMade(text)) << text;
}
