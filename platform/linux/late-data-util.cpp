// The data library, opened when the first document is worked on.

#include "data-util.h"
#include "late-library.h"
#include "module-path.h"

namespace {

Platform::LateLibrary& Module()
{
    static Platform::LateLibrary library(Platform::ModulePath("data-util.so"));
    return library;
}

}  // namespace

// Each call goes to the module's function of the same name; without the module it answers `otherwise`.
#define FORWARD(name, otherwise, ...)                                              \
    static const Platform::LateFunction<decltype(name)> function(Module(), #name); \
    if (!function) return otherwise;                                               \
    return function(__VA_ARGS__)

char* data_util_resultxml_memory_converter(const char* resultXml)
{
    FORWARD(data_util_resultxml_memory_converter, nullptr, resultXml);
}

int data_util_resultxml_has_limited_complication_xml_file(const char* resultXmlPath, const char* limitSpec)
{
    FORWARD(data_util_resultxml_has_limited_complication_xml_file, 0, resultXmlPath, limitSpec);
}

char* data_util_resultxml_converter_remove_limited_complication(const char* resultXmlPath,
                                                                const char* limitSpec)
{
    FORWARD(data_util_resultxml_converter_remove_limited_complication, nullptr, resultXmlPath, limitSpec);
}

char* data_util_resultxml_file_converter_update_worldclock(const char* resultXmlPath,
                                                           data_util_worldclock_s record)
{
    FORWARD(data_util_resultxml_file_converter_update_worldclock, nullptr, resultXmlPath, record);
}

int data_util_log_result_xml_serialize_supported(void)
{
    FORWARD(data_util_log_result_xml_serialize_supported, 0);
}
int data_util_log_item_supported(void)
{
    FORWARD(data_util_log_item_supported, 0);
}

char* data_util_log_result_xml_serialize(const char* resultXmlPath)
{
    FORWARD(data_util_log_result_xml_serialize, nullptr, resultXmlPath);
}

data_util_log_item_s* data_util_log_item_get_from_result_xml_file(const char* resultXmlPath)
{
    FORWARD(data_util_log_item_get_from_result_xml_file, nullptr, resultXmlPath);
}

void data_util_log_item_free(data_util_log_item_s* item)
{
    FORWARD(data_util_log_item_free, , item);
}
