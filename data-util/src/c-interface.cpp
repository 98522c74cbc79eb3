// The calls of data-util.h over the library. Nothing is thrown across them: what throws gives null.

#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>

#include "face-document.h"
#include "log.h"

// Only these calls are visible outside of the module.
#pragma GCC visibility push(default)
#include "data-util.h"
#pragma GCC visibility pop

namespace {

constexpr const char* kTag = "data-util";

int PriorityOf(DataUtil::Severity severity)
{
    switch (severity) {
        case DataUtil::Severity::kError:
            return DLOG_ERROR;
        case DataUtil::Severity::kWarning:
            return DLOG_WARN;
        default:
            return DLOG_INFO;
    }
}

void Log(const DataUtil::Finding& finding)
{
    __dlog_print(LOG_ID_MAIN, PriorityOf(finding.severity), kTag, "%s",
                 DataUtil::FormatFinding(finding).c_str());
}

// For the caller to free().
char* Allocated(const std::string& text)
{
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy != nullptr) std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

char* Converted(std::string_view resultXml)
{
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(resultXml);
    for (const DataUtil::Finding& finding : parsed.findings) Log(finding);
    return parsed.document ? Allocated(DataUtil::Flatten(*parsed.document)) : nullptr;
}

}  // namespace

char* data_util_resultxml_memory_converter(const char* resultXml)
{
    if (resultXml == nullptr) return nullptr;
    try {
        return Converted(resultXml);
    } catch (const std::exception& error) {
        __dlog_print(LOG_ID_MAIN, DLOG_ERROR, kTag, "no watchface.xml made: %s", error.what());
        return nullptr;
    }
}

int data_util_resultxml_has_limited_complication_xml_file(const char*, const char*)
{
    return 0;
}

char* data_util_resultxml_converter_remove_limited_complication(const char*, const char*)
{
    return nullptr;
}

char* data_util_resultxml_file_converter_update_worldclock(const char*, data_util_worldclock_s)
{
    return nullptr;
}

int data_util_log_result_xml_serialize_supported(void)
{
    return 0;
}

int data_util_log_item_supported(void)
{
    return 0;
}

char* data_util_log_result_xml_serialize(const char*)
{
    return nullptr;
}

data_util_log_item_s* data_util_log_item_get_from_result_xml_file(const char*)
{
    return nullptr;
}

void data_util_log_item_free(data_util_log_item_s* item)
{
    if (item == nullptr) return;
    std::free(item->firstFeature);
    std::free(item->firstValue);
    std::free(item->secondFeature);
    std::free(item->secondValue);
    std::free(item->complicationFeature);
    for (int i = 0; item->complicationEntries != nullptr && i < item->complicationEntryCount; ++i) {
        std::free(item->complicationEntries[i]);
    }
    std::free(item->complicationEntries);
    std::free(item);
}
