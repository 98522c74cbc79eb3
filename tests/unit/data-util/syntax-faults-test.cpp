// What is said of a text that is not well-formed, and where.

#include <gtest/gtest.h>

#include "face-document.h"

namespace {

struct Slip {
    const char* text;
    const char* finding;  // behind "LINE:COL: E-SYNTAX: not well-formed XML: "
    int line, column;
};

constexpr Slip kSlips[] = {
    {"<a>\n<b><c/>\n</a>",                                         "\"</a>\" where \"<b>\" of line 2 is open; close it with \"</b>\"",                    3, 1 },
    {"<a>\n<layer x='1'>\n</layr></a>",
     "\"</layr>\" where \"<layer>\" of line 2 is open; close it with \"</layer>\"",                                                                       3, 1 },
    {"<face-results>\n</face-result>",
     "\"<face-results>\", which \"</face-result>\" of line 2 closes; open it with \"<face-result>\"",                                                     1, 1 },
    {"<options>\n <palete>\n</palette>",
     "\"<palete>\", which \"</palette>\" of line 3 closes; open it with \"<palette>\"",                                                                   2, 2 },
    {"<face-result>\n<scen>\n</scene>",
     "\"<scen>\", which \"</scene>\" of line 3 closes; open it with \"<scene>\"",                                                                         2, 1 },
    {"<face-result>\n<string language='de'>\n<string/></strings>",
     "\"<string>\", which \"</strings>\" of line 3 closes; open it with \"<strings>\"",                                                                   2, 1 },
    {"<watchface>\n<complicaton>\n</complication>",
     "\"<complicaton>\", which \"</complication>\" of line 3 closes; open it with \"<complication>\"",                                                    2, 1 },
    {"<face-resutl>\n<optons>\n</options>",
     "\"<optons>\", which \"</options>\" of line 3 closes; open it with \"<options>\"",                                                                   2, 1 },
    {"<scene>\n<palete>\n</palette>",
     "\"<palete>\", which \"</palette>\" of line 3 closes; open it with \"<palette>\"",                                                                   2, 1 },
    {"<scene>\n<layer>\n<hand>\n</layer>",
     "\"</layer>\" where \"<hand>\" of line 3 is open; close it with \"</hand>\"",                                                                        4, 1 },
    {"<options>\n<styel>\n</scene>",
     "\"</scene>\" where \"<styel>\" of line 2 is open; close it with \"</styel>\"",                                                                      3, 1 },
    {"<a>\n  <b\n/>\n<c>",                                         "the text ends where \"<c>\" of line 4 is open; close it with \"</c>\"",               4, 4 },
    {"<a></a></b>",                                                "\"</b>\" closes no element; remove it",                                               1, 8 },
    {"<a/>\n<b/>",                                                 "nothing may follow the end of the root element",                                      2, 1 },
    {"<a>x & y</a>",                                               "a bare \"&\"; write \"&amp;\"",                                                       1, 6 },
    {"<a>AT&T</a>",                                                "a bare \"&\"; write \"&amp;\"",                                                       1, 6 },
    {"<a x='fish & chips'/>",                                      "a bare \"&\"; write \"&amp;\"",                                                       1, 12},
    {"<a>&nbsp;</a>",                                              "undefined entity; only &amp; &lt; &gt; &quot; &apos; and numeric references exist",   1,
     4                                                                                                                                                         },
    {"<a>1 < 2</a>",                                               "a bare \"<\"; write \"&lt;\"",                                                        1, 6 },
    {"<a x=\"1<2\"/>",                                             "\"<\" in the value of an attribute; write \"&lt;\", or end the value with its quote",
     1,                                                                                                                                                      8 },
    {"<a>\n<b x='1>Text</b></a>",
     "\"<\" in the value of an attribute; write \"&lt;\", or end the value with its quote",                                                               2, 13},
    {"<a>\n<b x='1'\n<c/></a>",                                    "\"<\" within the tag that line 2 begins; end that with \">\"",                        3, 1 },
    {"<a x=5/>",                                                   "the value of an attribute stands in quotes",                                          1, 6 },
    {"<a>\x01</a>",                                                "invalid token",                                                                       1, 4 },
    {"<a><b",                                                      "the text ends before what begins here does",                                          1, 4 },
};

}  // namespace

TEST(ATextThatIsNotWellFormed, has_a_finding_that_says_what_to_write)
{
    for (const Slip& slip : kSlips) {
        const auto findings = DataUtil::ParseFace(slip.text).findings;
        ASSERT_EQ(findings.size(), 1U) << slip.text;
        EXPECT_EQ(DataUtil::FormatFinding(findings[0]),
                  std::to_string(slip.line) + ":" + std::to_string(slip.column) +
                      ": E-SYNTAX: not well-formed XML: " + slip.finding)
            << slip.text;
    }
}

TEST(ATextThatIsNotWellFormed, is_quoted_in_part_however_long_its_names_are)
{
    const std::string name(100000, 'n');
    const auto findings = DataUtil::ParseFace("<" + name + "></" + name + "x>").findings;
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_LT(findings[0].message.size(), 500U);
}
