// The data library for tests: answers from MemoryPlatform::DataLibrary. In a file of its own, so that a
// program which links the real library gets that one instead.

#include <cstdlib>
#include <cstring>

#include "data-util.h"
#include "platform-state.h"

using namespace MemoryPlatform;

namespace {

char* Allocated(const std::optional<std::string>& text)
{
    return text ? strdup(text->c_str()) : nullptr;
}

std::optional<std::string> Optional(const char* text)
{
    return text ? std::optional<std::string>(text) : std::nullopt;
}

// Records the call; true when it is to fail.
bool Fails(const std::string& function, const std::string& arguments)
{
    Note(function + (arguments.empty() ? "" : " " + arguments));
    return Use(function).has_value();
}

std::string WithSpec(const char* path, const char* limitSpec)
{
    return Shown(path) + " " + (limitSpec ? limitSpec : "(null)");
}

std::string ToText(const WorldClock& record)
{
    std::string out;
    for (const auto* text : {&record.complicationName, &record.timezone, &record.timezonePath,
                             &record.cityName, &record.country}) {
        out += " [" + text->value_or("(null)") + "]";
    }
    return out;
}

}  // namespace

char* data_util_resultxml_memory_converter(const char* resultXml)
{
    if (Fails("data_util_resultxml_memory_converter", resultXml)) return nullptr;
    return Allocated(Current()->data.convert(resultXml));
}

int data_util_resultxml_has_limited_complication_xml_file(const char* resultXmlPath, const char* limitSpec)
{
    if (Fails("data_util_resultxml_has_limited_complication_xml_file", WithSpec(resultXmlPath, limitSpec))) {
        return 0;
    }
    return Current()->data.hasLimited(resultXmlPath, limitSpec);
}

char* data_util_resultxml_converter_remove_limited_complication(const char* resultXmlPath,
                                                                const char* limitSpec)
{
    if (Fails("data_util_resultxml_converter_remove_limited_complication",
              WithSpec(resultXmlPath, limitSpec))) {
        return nullptr;
    }
    return Allocated(Current()->data.removeLimited(resultXmlPath, limitSpec));
}

char* data_util_resultxml_file_converter_update_worldclock(const char* resultXmlPath,
                                                           data_util_worldclock_s record)
{
    const WorldClock clock{Optional(record.complicationName), Optional(record.timezone),
                           Optional(record.timezonePath), Optional(record.cityName),
                           Optional(record.country)};
    if (Fails("data_util_resultxml_file_converter_update_worldclock", Shown(resultXmlPath) + ToText(clock))) {
        return nullptr;
    }
    return Allocated(Current()->data.updateWorldClock(resultXmlPath, clock));
}

int data_util_log_result_xml_serialize_supported(void)
{
    if (Fails("data_util_log_result_xml_serialize_supported", "")) return 0;
    return Current()->data.serializeSupported;
}

int data_util_log_item_supported(void)
{
    if (Fails("data_util_log_item_supported", "")) return 0;
    return Current()->data.logItemSupported;
}

char* data_util_log_result_xml_serialize(const char* resultXmlPath)
{
    if (Fails("data_util_log_result_xml_serialize", Shown(resultXmlPath))) return nullptr;
    return Allocated(Current()->data.serialize(resultXmlPath));
}

data_util_log_item_s* data_util_log_item_get_from_result_xml_file(const char* resultXmlPath)
{
    if (Fails("data_util_log_item_get_from_result_xml_file", Shown(resultXmlPath))) return nullptr;
    const auto items = Current()->data.items(resultXmlPath);
    if (!items) return nullptr;
    const std::size_t count = items->complicationEntries.size();
    auto** entries = static_cast<char**>(calloc(count + 1, sizeof(char*)));
    for (std::size_t i = 0; i < count; ++i) entries[i] = Allocated(items->complicationEntries[i]);
    return new data_util_log_item_s{
        Allocated(items->firstFeature),
        Allocated(items->firstValue),
        Allocated(items->secondFeature),
        Allocated(items->secondValue),
        Allocated(items->complicationFeature),
        entries,
        static_cast<int>(count),
    };
}

void data_util_log_item_free(data_util_log_item_s* item)
{
    Note("data_util_log_item_free");
    if (!item) return;
    for (int i = 0; i < item->complicationEntryCount; ++i) free(item->complicationEntries[i]);
    free(item->complicationEntries);
    for (char* text : {item->firstFeature, item->firstValue, item->secondFeature, item->secondValue,
                       item->complicationFeature}) {
        free(text);
    }
    delete item;
}
