// The calls of data-util.h.

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "a-face-document.h"
#include "data-util.h"
#include "log-capture.h"
#include "log.h"
#include "xml-gate.h"

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

TEST(TheDataLibrary, says_that_it_can_tell_for_usage_records)
{
    EXPECT_EQ(data_util_log_result_xml_serialize_supported(), 1);
    EXPECT_EQ(data_util_log_item_supported(), 1);
}

class TheDataLibraryOnFiles : public AFullFaceDocument {
protected:
    TheDataLibraryOnFiles()
    {
        std::string pattern = testing::TempDir() + "data-util-XXXXXX";
        mFolder = mkdtemp(pattern.data());
        mPath = mFolder + "/face_result.xml";
        LogCapture::Clear();
    }
    ~TheDataLibraryOnFiles() override { std::filesystem::remove_all(mFolder); }

    // The path of a file with the text.
    const char* File() const
    {
        std::ofstream(mPath, std::ios::binary) << mText;
        return mPath.c_str();
    }

    // All calls that read a file give null or 0, and each writes the same single line.
    void ExpectRefused(const std::string& path, const std::string& says) const
    {
        const char* file = path.c_str();
        EXPECT_EQ(data_util_resultxml_has_limited_complication_xml_file(file, nullptr), 0);
        EXPECT_EQ(data_util_resultxml_converter_remove_limited_complication(file, nullptr), nullptr);
        EXPECT_EQ(data_util_resultxml_file_converter_update_worldclock(file, {"place", {}, {}, {}, {}}),
                  nullptr);
        EXPECT_EQ(data_util_log_result_xml_serialize(file), nullptr);
        EXPECT_EQ(data_util_log_item_get_from_result_xml_file(file), nullptr);
        ASSERT_EQ(LogCapture::Lines().size(), 5U);
        for (const LogCapture::Line& line : LogCapture::Lines()) {
            EXPECT_EQ(line.priority, DLOG_ERROR);
            EXPECT_THAT(line.text, testing::HasSubstr(says));
        }
    }

    std::string mFolder;
    std::string mPath;
};

TEST_F(TheDataLibraryOnFiles, tells_whether_a_limited_complication_is_shown)
{
    EXPECT_EQ(data_util_resultxml_has_limited_complication_xml_file(File(), nullptr), 1);
    EXPECT_EQ(data_util_resultxml_has_limited_complication_xml_file(File(), "alarm"), 0);
    EXPECT_THAT(LogCapture::Lines(), IsEmpty());
}

TEST_F(TheDataLibraryOnFiles, converts_without_limited_complications)
{
    const Text flat(data_util_resultxml_converter_remove_limited_complication(File(), nullptr));
    ASSERT_TRUE(flat);
    EXPECT_THAT(flat.get(), testing::HasSubstr("name=\"info\" group=\"data\" source=\"date\""));
}

TEST_F(TheDataLibraryOnFiles, converts_with_a_world_clock)
{
    const Text flat(data_util_resultxml_file_converter_update_worldclock(
        File(), {"place", "PET", "America/Lima", "Lima", "Peru"}));
    ASSERT_TRUE(flat);
    EXPECT_THAT(flat.get(), testing::HasSubstr("city=\"Lima\" country=\"Peru\" timezone=\"PET\" "
                                               "timezone-path=\"America/Lima\""));
}

TEST_F(TheDataLibraryOnFiles, refuses_a_record_that_cannot_be_applied_with_one_line)
{
    EXPECT_EQ(data_util_resultxml_file_converter_update_worldclock(File(), {"ring", {}, {}, {}, {}}),
              nullptr);
    EXPECT_EQ(data_util_resultxml_file_converter_update_worldclock(File(), {nullptr, {}, {}, {}, {}}),
              nullptr);
    EXPECT_EQ(data_util_resultxml_file_converter_update_worldclock(File(), {"place", {}, "x y", {}, {}}),
              nullptr);
    ASSERT_EQ(LogCapture::Lines().size(), 3U);
    EXPECT_EQ(LogCapture::Lines()[0].priority, DLOG_ERROR);
    EXPECT_EQ(LogCapture::Lines()[0].text, "no world clock is set: \"ring\" does not offer \"worldclock\"");
    EXPECT_THAT(LogCapture::Lines()[1].text, testing::HasSubstr("there is no slot \"\""));
    EXPECT_THAT(LogCapture::Lines()[2].text, testing::HasSubstr("timezone-path=\"x y\" must be"));
}

TEST_F(TheDataLibraryOnFiles, tells_the_combination)
{
    const Text text(data_util_log_result_xml_serialize(File()));
    EXPECT_STREQ(text.get(),
                 "dial=bars tone=blue seconds=on backdrop=own portrait=default place=worldclock "
                 "info=weather ring=battery");
}

TEST_F(TheDataLibraryOnFiles, tells_the_usage_items)
{
    data_util_log_item_s* item = data_util_log_item_get_from_result_xml_file(File());
    ASSERT_NE(item, nullptr);
    EXPECT_STREQ(item->firstFeature, "DIAL");
    EXPECT_STREQ(item->firstValue, "bars");
    EXPECT_STREQ(item->secondFeature, "SEC9");
    EXPECT_STREQ(item->secondValue, "on");
    EXPECT_STREQ(item->complicationFeature, "CU01");
    ASSERT_EQ(item->complicationEntryCount, 3);
    EXPECT_STREQ(item->complicationEntries[0], "worldclock");
    EXPECT_STREQ(item->complicationEntries[1], "weather");
    EXPECT_STREQ(item->complicationEntries[2], "battery");
    data_util_log_item_free(item);
}

TEST_F(TheDataLibraryOnFiles, leaves_out_the_usage_items_that_there_are_not)
{
    Replace(" usage=\"DIAL\"", "");
    Replace("\n             complication-usage=\"CU01\"", "");
    Select(
        "<selection><place slot=\"info\" source=\"empty\"/>"
        "<place slot=\"place\" source=\"empty\"/></selection>");
    data_util_log_item_s* item = data_util_log_item_get_from_result_xml_file(File());
    ASSERT_NE(item, nullptr);
    EXPECT_STREQ(item->firstFeature, "SEC9");
    EXPECT_EQ(item->secondFeature, nullptr);
    EXPECT_EQ(item->secondValue, nullptr);
    EXPECT_EQ(item->complicationFeature, nullptr);
    EXPECT_EQ(item->complicationEntries, nullptr);
    EXPECT_EQ(item->complicationEntryCount, 0);
    data_util_log_item_free(item);
}

TEST_F(TheDataLibraryOnFiles, refuses_a_document_with_an_error)
{
    Replace("version=\"7\"", "version=\"x\"");
    ExpectRefused(File(), "E-VALUE");
}

TEST_F(TheDataLibraryOnFiles, refuses_a_file_that_does_not_exist)
{
    ExpectRefused(mPath, "cannot be read: No such file");
}

TEST_F(TheDataLibraryOnFiles, refuses_a_folder)
{
    ExpectRefused(mFolder, "cannot be read: not a regular file");
}

TEST_F(TheDataLibraryOnFiles, does_not_wait_for_a_pipe)
{
    ASSERT_EQ(mkfifo(mPath.c_str(), 0600), 0);
    ExpectRefused(mPath, "cannot be read: not a regular file");
}

TEST_F(TheDataLibraryOnFiles, reads_no_more_than_a_document_may_have)
{
    mText.assign(DataUtil::kMostBytes + 1, ' ');
    ExpectRefused(File(), "cannot be read: more than 1048576 bytes");
}

TEST_F(TheDataLibraryOnFiles, gives_null_for_no_path)
{
    EXPECT_EQ(data_util_resultxml_has_limited_complication_xml_file(nullptr, nullptr), 0);
    EXPECT_EQ(data_util_resultxml_converter_remove_limited_complication(nullptr, nullptr), nullptr);
    EXPECT_EQ(data_util_resultxml_file_converter_update_worldclock(nullptr, {}), nullptr);
    EXPECT_EQ(data_util_log_result_xml_serialize(nullptr), nullptr);
    EXPECT_EQ(data_util_log_item_get_from_result_xml_file(nullptr), nullptr);
}

TEST_F(TheConverter, refuses_a_flat_document_beyond_the_limit_of_size)
{
    // A quote costs six bytes in the flat document.
    std::string labels;
    for (int i = 0; i < 60; ++i) labels += std::string(32, '"') + " ";
    std::string numerals;
    while (numerals.size() < 400000) {
        numerals += "<numerals cx=\"1\" cy=\"1\" r=\"1\" labels='" + labels + "' size=\"9\" color=\"main\"/>";
    }
    Replace("  </scene>", numerals + "</scene>");
    EXPECT_FALSE(Convert());
    ASSERT_EQ(LogCapture::Lines().size(), 1U);
    EXPECT_THAT(LogCapture::Lines()[0].text, StartsWith("E-LIMIT-SIZE: the flat document would have"));
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
