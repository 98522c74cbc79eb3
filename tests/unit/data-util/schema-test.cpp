// The RELAX NG schemas, by xmllint.

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "a-face-document.h"
#include "faces.h"
#include "planted-faults.h"
#include "random-selection.h"

using testing::HasSubstr;

namespace {

// A folder of documents, judged together.
class Documents {
public:
    Documents()
    {
        std::string pattern = testing::TempDir() + "documents-XXXXXX";
        mFolder = mkdtemp(pattern.data());
    }
    ~Documents() { std::filesystem::remove_all(mFolder); }
    Documents(const Documents&) = delete;
    Documents& operator=(const Documents&) = delete;

    void Add(const std::string& text)
    {
        std::ofstream(mFolder + "/" + std::to_string(mCount++) + ".xml", std::ios::binary) << text;
    }

    // What xmllint says of each document; the line of number i has "/i.xml validates" or "/i.xml fails".
    std::string Judged(const std::string& schema) const
    {
        const std::string out = mFolder + "/verdict";
        const std::string command = "cd '" + mFolder + "' && xmllint --noout --relaxng '" SCHEMAS "/" +
                                    schema + "' ./*.xml >'" + out + "' 2>&1";
        EXPECT_NE(std::system(command.c_str()), -1);
        return TextOf(out);
    }

    void ExpectAccepted(const std::string& schema) const
    {
        const std::string verdict = Judged(schema);
        for (int i = 0; i < mCount; ++i)
            EXPECT_THAT(verdict, HasSubstr("/" + std::to_string(i) + ".xml validates\n"));
    }

private:
    std::string mFolder;
    int mCount = 0;
};

std::string Everything()
{
    return TextOf(DOCUMENTS "/everything_result.xml");
}

}  // namespace

TEST(TheSchemaOfResultXmls, accepts_every_face_with_any_selection)
{
    Documents documents;
    for (const std::string& path : AllResultXmls()) {
        const std::string text = TextOf(path);
        documents.Add(text);
        const auto parsed = DataUtil::ParseFace(text);
        ASSERT_TRUE(parsed.document) << path;
        for (unsigned seed = 0; seed < 5; ++seed)
            documents.Add(DataUtil::WithSelection(text, RandomSelection(*parsed.document, seed)));
    }
    documents.ExpectAccepted("face-result.rng");
}

TEST(TheSchemaOfFlatDocuments, accepts_every_face_with_any_selection)
{
    Documents documents;
    for (const std::string& path : AllResultXmls()) {
        const std::string text = TextOf(path);
        const auto parsed = DataUtil::ParseFace(text);
        ASSERT_TRUE(parsed.document) << path;
        documents.Add(DataUtil::Flatten(*parsed.document));
        for (unsigned seed = 0; seed < 5; ++seed) {
            const auto chosen =
                DataUtil::ParseFace(DataUtil::WithSelection(text, RandomSelection(*parsed.document, seed)));
            documents.Add(DataUtil::Flatten(*chosen.document));
        }
    }
    documents.ExpectAccepted("watchface.rng");
}

TEST(TheSchemaOfResultXmls, refuses_each_structural_fault)
{
    Documents documents;
    std::vector<PlantedFault> faults;
    for (const PlantedFault& fault : PlantedFaults()) {
        if (!fault.isStructural) continue;
        documents.Add(Plant(Everything(), fault));
        faults.push_back(fault);
    }
    EXPECT_GE(faults.size(), 15U);
    const std::string verdict = documents.Judged("face-result.rng");
    for (std::size_t i = 0; i < faults.size(); ++i)
        EXPECT_THAT(verdict, HasSubstr("/" + std::to_string(i) + ".xml fails to validate\n")) << faults[i].to;
}

TEST(TheSchemaOfFlatDocuments, refuses_structural_faults)
{
    struct Fault {
        const char* from;
        const char* to;
    };
    constexpr Fault kFaults[] = {
        {"<watchface format",                                       "<watchface when=\"a=b\" format"        },
        {"<layer opacity=\"0.8\">",                                 "<layer>"                               },
        {"<text text=\"Lima\"",                                     "<text text=\"Lima\" text-key=\"title\""},
        {"<text text=\"Lima\"",                                     "<text"                                 },
        {"<text text=\"Lima\"",                                     "<text city=\"place\""                  },
        {"stroke=\"#0000FF80\" stroke-width=\"2\"",                 "stroke=\"main\" stroke-width=\"2\""    },
        {"role=\"icon-text\"",                                      "role=\"icon\""                         },
        {"source=\"battery\"",                                      "source=\"power\""                      },
        {"kind=\"hour24\"",                                         "kind=\"day\""                          },
        {"background=\"theme\"",                                    "background=\"moon\""                   },
        {"timezone-path=\"America/Lima\" role",                     "timezone-path=\"../Lima\" role"        },
        {"</watchface>",                                            "<options/></watchface>"                },
        {"    <bar length=\"20\" width=\"2\" fill=\"#0000FF\"/>\n", ""                                      },
        {"x=\"290\" y=\"220\"",                                     "x=\"290\""                             },
        {"x=\"290\" y=\"220\"",                                     "x=\"9000\" y=\"220\""                  },
    };
    const std::string flat = DataUtil::Flatten(*DataUtil::ParseFace(Everything()).document);
    Documents documents;
    for (const Fault& fault : kFaults) documents.Add(Plant(flat, {"", fault.from, fault.to, "", true}));
    const std::string verdict = documents.Judged("watchface.rng");
    for (std::size_t i = 0; i < std::size(kFaults); ++i)
        EXPECT_THAT(verdict, HasSubstr("/" + std::to_string(i) + ".xml fails to validate\n"))
            << kFaults[i].to;
}
