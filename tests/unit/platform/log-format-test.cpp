#include "log-format.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace Platform;
using testing::EndsWith;

TEST(ALogText, keeps_plain_text_and_utf8_as_it_stands)
{
    EXPECT_EQ(LogText("Zürich 서울 القاهرة \\x0A"), "Zürich 서울 القاهرة \\x0A");
}

TEST(ALogText, shows_control_characters_as_hex)
{
    EXPECT_EQ(LogText("a\nb\x1b[2J\x7f"), "a\\x0Ab\\x1B[2J\\x7F");
}

TEST(ALogText, shows_the_control_characters_above_ascii_as_hex)
{
    EXPECT_EQ(LogText("\xc2\x9b"), "\\xC2\\x9B");
    EXPECT_EQ(LogText("\xc2\xa0"), "\xc2\xa0");
}

TEST(ALogText, shows_bytes_that_are_no_utf8_as_hex)
{
    EXPECT_EQ(LogText("\xff"), "\\xFF");
    EXPECT_EQ(LogText("\xc0\xaf"), "\\xC0\\xAF");           // overlong
    EXPECT_EQ(LogText("\xed\xa0\x80"), "\\xED\\xA0\\x80");  // surrogate
    EXPECT_EQ(LogText("\xf4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");
    EXPECT_EQ(LogText("\xe2\x82"), "\\xE2\\x82");  // cut off
}

TEST(ALogText, of_four_kilobytes_is_whole)
{
    const std::string text(4096, 'x');
    EXPECT_EQ(LogText(text), text);
}

TEST(ALogText, is_cut_at_four_kilobytes_and_says_how_much_is_missing)
{
    const std::string shown = LogText(std::string(5000, 'x'));
    EXPECT_EQ(shown.substr(0, 4096), std::string(4096, 'x'));
    EXPECT_THAT(shown, EndsWith("x…[+904 bytes]"));
}

TEST(ALogText, is_never_cut_inside_a_character)
{
    EXPECT_EQ(LogText(std::string(4095, 'x') + "€€"), std::string(4095, 'x') + "…[+6 bytes]");
}

TEST(ALogThreshold, follows_the_name_and_is_info_for_any_other)
{
    EXPECT_EQ(PriorityThreshold("debug"), DLOG_DEBUG);
    EXPECT_EQ(PriorityThreshold("warning"), DLOG_WARN);
    EXPECT_EQ(PriorityThreshold("error"), DLOG_ERROR);
    EXPECT_EQ(PriorityThreshold("silent"), DLOG_SILENT);
    EXPECT_EQ(PriorityThreshold(""), DLOG_INFO);
    EXPECT_EQ(PriorityThreshold("loud"), DLOG_INFO);
}

TEST(APriority, has_one_letter)
{
    EXPECT_EQ(PriorityLetter(DLOG_ERROR), 'E');
    EXPECT_EQ(PriorityLetter(DLOG_WARN), 'W');
    EXPECT_EQ(PriorityLetter(DLOG_INFO), 'I');
    EXPECT_EQ(PriorityLetter(DLOG_DEBUG), 'D');
}

}  // namespace
