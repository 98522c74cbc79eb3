// Which values attributes take, and how each is written in the flat document.

#include "a-face-document.h"
#include "attribute-values.h"

using DataUtil::AttributeRule;
using DataUtil::CanonicalValue;
using DataUtil::ValueKind;

namespace {

// The canonical form of `raw`, or "refused".
std::string Value(ValueKind kind, std::string_view raw, const char* choices = "")
{
    std::string problem;
    const AttributeRule rule{"it", kind, nullptr, choices};
    const auto value = CanonicalValue(rule, raw, problem);
    EXPECT_EQ(value.has_value(), problem.empty() || value.has_value());
    return value.value_or("refused");
}

struct Row {
    ValueKind kind;
    const char* raw;
    const char* canonical;
};

std::string Refused(const Row& row)
{
    return std::string(row.raw) + " of kind " + std::to_string(static_cast<int>(row.kind));
}

}  // namespace

TEST(AValue, has_one_canonical_form)
{
    constexpr Row kRows[] = {
        {ValueKind::kCoordinate, "012.50",                   "12.5"              },
        {ValueKind::kCoordinate, "-0",                       "0"                 },
        {ValueKind::kCoordinate, "-0.050",                   "-0.05"             },
        {ValueKind::kCoordinate, "7.000",                    "7"                 },
        {ValueKind::kColor,      "#abcdef",                  "#ABCDEF"           },
        {ValueKind::kColor,      "#abcdefff",                "#ABCDEF"           },
        {ValueKind::kColor,      "#abcdef80",                "#ABCDEF80"         },
        {ValueKind::kPoints,     " 0,-94.0  7.40,-14 0,24 ", "0,-94 7.4,-14 0,24"},
        {ValueKind::kLabels,     "12  -  6",                 "12 - 6"            },
        {ValueKind::kCondition,  " a=b   c!=d",              "a=b c!=d"          },
    };
    for (const Row& row : kRows) EXPECT_EQ(Value(row.kind, row.raw), row.canonical) << Refused(row);
}

TEST(AValue, is_refused_when_malformed_or_out_of_range)
{
    constexpr std::pair<ValueKind, const char*> kRows[] = {
        {ValueKind::kCoordinate,   "1e3"      },
        {ValueKind::kCoordinate,   "1,5"      },
        {ValueKind::kCoordinate,   "0x10"     },
        {ValueKind::kCoordinate,   "1."       },
        {ValueKind::kCoordinate,   ".5"       },
        {ValueKind::kCoordinate,   "1.2345"   },
        {ValueKind::kCoordinate,   "+1"       },
        {ValueKind::kCoordinate,   "nan"      },
        {ValueKind::kCoordinate,   "8193"     },
        {ValueKind::kCoordinate,   "999999"   },
        {ValueKind::kCoordinate,   "--1"      },
        {ValueKind::kLength,       "-1"       },
        {ValueKind::kShare,        "1.001"    },
        {ValueKind::kDegrees,      "361"      },
        {ValueKind::kFontSize,     "3"        },
        {ValueKind::kWeight,       "450"      },
        {ValueKind::kCanvas,       "15"       },
        {ValueKind::kCount,        "1.5"      },
        {ValueKind::kCount,        "0"        },
        {ValueKind::kColor,        "#12345"   },
        {ValueKind::kColor,        "#GG0000"  },
        {ValueKind::kLiteralColor, "main"     },
        {ValueKind::kLiteralColor, "none"     },
        {ValueKind::kSlug,         "Main"     },
        {ValueKind::kSlug,         "9lives"   },
        {ValueKind::kRoleName,     "none"     },
        {ValueKind::kStringKey,    "a b"      },
        {ValueKind::kLanguage,     "en_GB"    },
        {ValueKind::kLanguage,     "english"  },
        {ValueKind::kLanguage,     "en-"      },
        {ValueKind::kFaceId,       "a..b"     },
        {ValueKind::kFaceId,       "../x"     },
        {ValueKind::kTime,         "24:00:00" },
        {ValueKind::kTime,         "1:02:03"  },
        {ValueKind::kSkeleton,     "yyyy-MM"  },
        {ValueKind::kSkeleton,     ""         },
        {ValueKind::kPoints,       "0,0 1,1"  },
        {ValueKind::kPoints,       "0,0 1 1 1"},
        {ValueKind::kIndices,      "-1"       },
        {ValueKind::kCondition,    "a"        },
        {ValueKind::kCondition,    "a==b"     },
        {ValueKind::kSource,       "empty"    },
        {ValueKind::kLabels,       ""         },
        {ValueKind::kLabels,       "1 \n 2"   },
    };
    for (const auto& [kind, raw] : kRows) {
        EXPECT_EQ(Value(kind, raw), "refused") << raw << " of kind " << static_cast<int>(kind);
    }
}

TEST(AnAssetPath, stays_inside_the_folder_of_its_face)
{
    EXPECT_EQ(Value(ValueKind::kAsset, "dial/bars.png"), "dial/bars.png");
    EXPECT_EQ(Value(ValueKind::kAsset, "..dots..png"), "..dots..png");
    for (const char* path : {"", "/etc/passwd", "..", "../x.png", "a/../b.png", "a/./b.png", "a//b.png", "a/",
                             "a\\b.png", "a\nb.png"}) {
        EXPECT_EQ(Value(ValueKind::kAsset, path), "refused") << path;
    }
}

TEST_F(AFaceDocument, refuses_a_value_with_its_place_and_what_it_should_be)
{
    Replace("<text text-key=\"title\" x=\"180\"", "<text text-key=\"title\"\n x=\"left\"");
    ExpectOnly("E-VALUE", "x=\"left\"", "must be a number");
}

TEST_F(AFaceDocument, refuses_an_empty_value)
{
    Replace("<offer source=\"pedometer\"/>", "<offer source=\"\"/>");
    ExpectOnly("E-VALUE", "<offer source=\"\"/>");
}

TEST_F(AFaceDocument, refuses_an_asset_outside_of_its_folder)
{
    AddAfter("<scene>", "\n<image src=\"../other/x.png\" x=\"0\" y=\"0\" width=\"9\" height=\"9\"/>");
    ExpectOnly("E-ASSET-PATH", "<image", "inside the face's folder");
}

TEST_F(AFaceDocument, refuses_ticks_of_bars_without_a_length)
{
    Replace("length=\"20\" ", "");
    ExpectOnly("E-VALUE", "r=\"170\"", "length above 0");
}

TEST_F(AFaceDocument, refuses_gradient_stops_that_fall)
{
    Replace("<stop offset=\"0\"", "<stop offset=\"1\"");
    Replace("<stop offset=\"1\" color=\"#000000\"/>", "<stop offset=\"0.9\" color=\"#000000\"/>");
    ExpectOnly("E-VALUE", "offset=\"0.9\"", "may not fall");
}

TEST_F(AFaceDocument, names_the_nearest_source)
{
    Replace("<offer source=\"pedometer\"/>", "<offer source=\"pedometr\"/>");
    ExpectOnly("E-VALUE", "pedometr\"", "did you mean \"pedometer\"?");
}
