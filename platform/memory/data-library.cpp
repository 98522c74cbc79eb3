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

// An item that knows what it holds, whatever a test makes of its count.
struct LentItem : data_util_log_item_s {
    std::size_t entries = 0;
};

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
    auto* item = new LentItem;
    item->entries = items->complicationEntries.size();
    item->firstFeature = Allocated(items->firstFeature);
    item->firstValue = Allocated(items->firstValue);
    item->secondFeature = Allocated(items->secondFeature);
    item->secondValue = Allocated(items->secondValue);
    item->complicationFeature = Allocated(items->complicationFeature);
    item->complicationEntries = static_cast<char**>(calloc(item->entries + 1, sizeof(char*)));
    for (std::size_t i = 0; i < item->entries; ++i) {
        item->complicationEntries[i] = Allocated(items->complicationEntries[i]);
    }
    item->complicationEntryCount = static_cast<int>(item->entries);
    return Current()->data.lentItem = item;
}

void data_util_log_item_free(data_util_log_item_s* item)
{
    Note("data_util_log_item_free");
    if (!item) return;
    const auto* lent = static_cast<LentItem*>(item);
    for (std::size_t i = 0; i < lent->entries; ++i) free(item->complicationEntries[i]);
    free(item->complicationEntries);
    for (char* text : {item->firstFeature, item->firstValue, item->secondFeature, item->secondValue,
                       item->complicationFeature}) {
        free(text);
    }
    if (Current()->data.lentItem == item) Current()->data.lentItem = nullptr;
    delete lent;
}
