#include "log.h"

#include "contract-test.h"

namespace Contract {
namespace {

using testing::ElementsAre;

// "E/wfctl(123): text"
auto Line(const std::string& letter, const std::string& text)
{
    using namespace testing;
    return AllOf(StartsWith(letter + "/wfctl("), ContainsRegex("^./wfctl\\([0-9]+\\): "),
                 EndsWith("): " + text));
}

class ALog : public ContractTest {
protected:
    static int Print(int priority, const char* text)
    {
        return __dlog_print(LOG_ID_MAIN, priority, "wfctl", "%s", text);
    }

    Strings PrintedAtEachPriority(const std::string& filter)
    {
        return harness->Printed(filter, [] {
            Print(DLOG_DEBUG, "d");
            Print(DLOG_INFO, "i");
            Print(DLOG_WARN, "w");
            Print(DLOG_ERROR, "e");
        });
    }
};

TEST_F(ALog, line_has_priority_tag_process_and_text)
{
    EXPECT_THAT(PrintedAtEachPriority("debug"),
                ElementsAre(Line("D", "d"), Line("I", "i"), Line("W", "w"), Line("E", "e")));
}

TEST_F(ALog, is_filtered)
{
    EXPECT_THAT(PrintedAtEachPriority("info"), ElementsAre(Line("I", "i"), Line("W", "w"), Line("E", "e")));
    EXPECT_THAT(PrintedAtEachPriority("warning"), ElementsAre(Line("W", "w"), Line("E", "e")));
    EXPECT_THAT(PrintedAtEachPriority("error"), ElementsAre(Line("E", "e")));
    EXPECT_THAT(PrintedAtEachPriority("silent"), ElementsAre());
}

TEST_F(ALog, with_an_unknown_filter_prints_info)
{
    EXPECT_THAT(PrintedAtEachPriority("loud"), ElementsAre(Line("I", "i"), Line("W", "w"), Line("E", "e")));
}

TEST_F(ALog, tells_whether_a_line_was_written)
{
    const Strings lines = harness->Printed("info", [] {
        const bool printed = Print(DLOG_ERROR, "text") > 0;
        const bool filtered = Print(DLOG_DEBUG, "text") == 0;
        Print(DLOG_INFO, printed ? "printed" : "not printed");
        Print(DLOG_INFO, filtered ? "filtered" : "not filtered");
    });
    EXPECT_THAT(lines, ElementsAre(Line("E", "text"), Line("I", "printed"), Line("I", "filtered")));
}

TEST_F(ALog, formats_as_printf_does)
{
    const Strings lines = harness->Printed("info", [] {
        __dlog_print(LOG_ID_MAIN, DLOG_INFO, "wfctl", "%s: %s(%d) > %x", "file.cpp", "Function", 7, 255);
    });
    EXPECT_THAT(lines, ElementsAre(Line("I", "file.cpp: Function(7) > ff")));
}

TEST_F(ALog, shows_control_characters_and_bad_bytes_as_numbers)
{
    const Strings lines = harness->Printed("info", [] {
        Print(DLOG_INFO, "a\nb\tc\x1B[31m\x7F");
        Print(DLOG_INFO, "caf\xE9 시계 \xC2\x85");
    });
    EXPECT_THAT(lines,
                ElementsAre(Line("I", "a\\x0Ab\\x09c\\x1B[31m\\x7F"), Line("I", "caf\\xE9 시계 \\xC2\\x85")));
}

TEST_F(ALog, cuts_a_line_at_4_KiB)
{
    const Strings lines = harness->Printed("info", [] {
        Print(DLOG_INFO, std::string(4096, 'x').c_str());
        Print(DLOG_INFO, std::string(5000, 'x').c_str());
    });
    EXPECT_THAT(lines, ElementsAre(Line("I", std::string(4096, 'x')),
                                   Line("I", std::string(4096, 'x') + "…[+904 bytes]")));
}

}  // namespace
}  // namespace Contract
