// The calls of data-util.h.

#include <dlfcn.h>

#include <cstdlib>
#include <memory>

#include "a-face-document.h"
#include "data-util.h"
#include "log-capture.h"
#include "log.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

struct Frees {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Frees>;

}  // namespace

class TheConverter : public AFaceDocument {
protected:
    TheConverter() { LogCapture::Clear(); }

    Text Convert() const { return Text(data_util_resultxml_memory_converter(mText.c_str())); }
};

TEST_F(TheConverter, gives_the_flat_document_and_logs_nothing)
{
    const Text flat = Convert();
    ASSERT_TRUE(flat);
    EXPECT_EQ(flat.get(), Flat());
    EXPECT_THAT(LogCapture::Lines(), IsEmpty());
}

TEST_F(TheConverter, gives_null_for_null)
{
    EXPECT_EQ(data_util_resultxml_memory_converter(nullptr), nullptr);
}

TEST_F(TheConverter, refuses_with_one_line_at_error_priority_for_each_error)
{
    Replace("version=\"3\"", "version=\"zero\"");
    Replace("value=\"#0000FF\"", "value=\"blue\"");
    EXPECT_FALSE(Convert());
    ASSERT_EQ(LogCapture::Lines().size(), 2U);
    for (const LogCapture::Line& line : LogCapture::Lines()) {
        EXPECT_EQ(line.priority, DLOG_ERROR);
        EXPECT_EQ(line.tag, "data-util");
    }
    EXPECT_THAT(LogCapture::Lines()[0].text,
                StartsWith("2:57: E-VALUE: version=\"zero\" must be a whole number"));
    EXPECT_THAT(LogCapture::Lines()[1].text, StartsWith(std::to_string(LineOf("\"blue\"/>")) + ":"));
}

TEST_F(TheConverter, logs_a_warning_at_warning_priority_and_converts)
{
    Replace("    <string key=\"tone.red\">Rot</string>\n", "");
    EXPECT_TRUE(Convert());
    ASSERT_EQ(LogCapture::Lines().size(), 1U);
    EXPECT_EQ(LogCapture::Lines()[0].priority, DLOG_WARN);
}

TEST_F(TheConverter, logs_a_note_at_info_priority_and_converts)
{
    Replace("<selection>", "<selection><pick group=\"tone\" option=\"green\"/>");
    EXPECT_TRUE(Convert());
    ASSERT_EQ(LogCapture::Lines().size(), 1U);
    EXPECT_EQ(LogCapture::Lines()[0].priority, DLOG_INFO);
}

TEST_F(TheConverter, does_not_take_what_a_document_says_for_a_format)
{
    Replace("value=\"#0000FF\"", "value=\"%s%n\"");
    EXPECT_FALSE(Convert());
    EXPECT_THAT(LogCapture::Lines().at(0).text, testing::HasSubstr("%s%n"));
}

TEST(TheDataLibrary, says_that_it_tells_nothing_for_usage_records)
{
    EXPECT_EQ(data_util_log_result_xml_serialize_supported(), 0);
    EXPECT_EQ(data_util_log_item_supported(), 0);
    EXPECT_EQ(data_util_log_result_xml_serialize("/x"), nullptr);
    EXPECT_EQ(data_util_log_item_get_from_result_xml_file("/x"), nullptr);
}

TEST(TheDataLibrary, knows_no_limited_complications_and_no_world_clock)
{
    EXPECT_EQ(data_util_resultxml_has_limited_complication_xml_file("/x", nullptr), 0);
    EXPECT_EQ(data_util_resultxml_converter_remove_limited_complication("/x", nullptr), nullptr);
    EXPECT_EQ(data_util_resultxml_file_converter_update_worldclock("/x", {}), nullptr);
}

TEST(TheDataLibrary, releases_no_item_at_all)
{
    data_util_log_item_free(nullptr);
}

TEST(TheModule, opens_with_the_log_of_its_host_and_converts)
{
    LogCapture::Clear();
    void* module = dlopen(DATA_UTIL_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    using Converter = decltype(&data_util_resultxml_memory_converter);
    const auto convert = reinterpret_cast<Converter>(dlsym(module, "data_util_resultxml_memory_converter"));
    ASSERT_NE(convert, nullptr);
    EXPECT_EQ(convert("<x/>"), nullptr);
    ASSERT_EQ(LogCapture::Lines().size(), 1U);
    EXPECT_THAT(LogCapture::Lines()[0].text, StartsWith("1:1: E-ROOT: "));
    dlclose(module);
}
