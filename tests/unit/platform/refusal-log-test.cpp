#include "refusal-log.h"

#include <gmock/gmock.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "log-format.h"

namespace {
std::vector<std::string> gLines;
}  // namespace

int __dlog_print(log_id_t, int, const char*, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    gLines.push_back(Platform::FormatText(format, arguments));
    va_end(arguments);
    return 0;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ARefusalLog : public testing::Test {
protected:
    ARefusalLog() { gLines.clear(); }
    Platform::RefusalLog log;
};

TEST_F(ARefusalLog, names_the_sender_and_the_reason)
{
    log.Refused("com.example.peer", "because");
    EXPECT_THAT(gLines, ElementsAre("message of [com.example.peer] refused: because"));
}

TEST_F(ARefusalLog, prints_ten_lines_a_second_and_then_counts)
{
    for (int i = 0; i < 25; ++i) log.Refused("com.example.peer", "because");
    EXPECT_THAT(gLines, SizeIs(10));
    gLines.clear();
    log.EndSecond();
    EXPECT_THAT(gLines, ElementsAre("15 more messages of [com.example.peer] refused"));
}

TEST_F(ARefusalLog, counts_each_sender_for_itself)
{
    for (int i = 0; i < 11; ++i) log.Refused("com.example.loud", "because");
    gLines.clear();
    log.Refused("com.example.quiet", "because");
    EXPECT_THAT(gLines, SizeIs(1));
}

TEST_F(ARefusalLog, says_nothing_at_the_end_of_a_quiet_second)
{
    log.Refused("com.example.peer", "because");
    gLines.clear();
    log.EndSecond();
    EXPECT_THAT(gLines, IsEmpty());
}

TEST_F(ARefusalLog, asks_once_a_second_to_be_ended)
{
    EXPECT_TRUE(log.Refused("com.example.peer", "because"));
    EXPECT_FALSE(log.Refused("com.example.peer", "because"));
    log.EndSecond();
    EXPECT_TRUE(log.Refused("com.example.peer", "because"));
}

TEST_F(ARefusalLog, keeps_no_more_senders_than_its_limit)
{
    for (int i = 0; i < 1000; ++i) log.Refused("com.example.peer" + std::to_string(i), "because");
    EXPECT_LE(gLines.size(), Platform::RefusalLog::kMostSenders + Platform::RefusalLog::kLinesASecond);
}

}  // namespace
