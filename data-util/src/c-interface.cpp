// The calls of data-util.h over the library. Nothing is thrown across them: what throws gives null.

#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "document-file.h"
#include "face-document.h"
#include "limited-complications.h"
#include "log.h"
#include "nearest-name.h"
#include "usage-items.h"
#include "world-clock.h"
#include "xml-gate.h"

// Only these calls are visible outside of the module.
#pragma GCC visibility push(default)
#include "data-util.h"
#pragma GCC visibility pop

namespace {

using DataUtil::FaceDocument;

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

void LogError(const std::string& text)
{
    __dlog_print(LOG_ID_MAIN, DLOG_ERROR, kTag, "%s", text.c_str());
}

// What `work` gives; when it throws, nothing of its type (null or 0) and one line.
template <typename Work>
auto Guarded(const char* call, Work work) -> decltype(work())
{
    try {
        return work();
    } catch (const std::exception& error) {
        __dlog_print(LOG_ID_MAIN, DLOG_ERROR, kTag, "%s failed: %s", call, error.what());
        return {};
    }
}

std::optional<FaceDocument> Parsed(std::string_view resultXml)
{
    DataUtil::ParseResult parsed = DataUtil::ParseFace(resultXml);
    for (const DataUtil::Finding& finding : parsed.findings) {
        __dlog_print(LOG_ID_MAIN, PriorityOf(finding.severity), kTag, "%s",
                     DataUtil::FormatFinding(finding).c_str());
    }
    return std::move(parsed.document);
}

std::optional<FaceDocument> ReadFace(const char* path)
{
    if (path == nullptr) return std::nullopt;
    std::string problem;
    const auto text = DataUtil::ReadDocumentFile(path, problem);
    if (text) return Parsed(*text);
    LogError(DataUtil::Quoted(path) + " cannot be read: " + problem);
    return std::nullopt;
}

// For the caller to free().
char* Allocated(std::string_view text)
{
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

char* Converted(const std::optional<FaceDocument>& document)
{
    if (!document) return nullptr;
    const std::string flat = DataUtil::Flatten(*document);
    if (flat.size() <= DataUtil::kMostBytes) return Allocated(flat);
    LogError("E-LIMIT-SIZE: the flat document would have " + std::to_string(flat.size()) +
             " bytes; at most " + std::to_string(DataUtil::kMostBytes) + " are allowed");
    return nullptr;
}

struct FreesItem {
    void operator()(data_util_log_item_s* item) const { data_util_log_item_free(item); }
};

data_util_log_item_s* LogItem(const DataUtil::UsageItems& items)
{
    std::unique_ptr<data_util_log_item_s, FreesItem> item(
        static_cast<data_util_log_item_s*>(std::calloc(1, sizeof(data_util_log_item_s))));
    if (!item) throw std::bad_alloc();
    char** const pairs[][2] = {
        {&item->firstFeature,  &item->firstValue },
        {&item->secondFeature, &item->secondValue}
    };
    for (std::size_t i = 0; i < items.picks.size() && i < std::size(pairs); ++i) {
        *pairs[i][0] = Allocated(items.picks[i].first);
        *pairs[i][1] = Allocated(items.picks[i].second);
    }
    if (!items.complicationFeature.empty()) item->complicationFeature = Allocated(items.complicationFeature);
    if (items.complications.empty()) return item.release();
    item->complicationEntries = static_cast<char**>(std::calloc(items.complications.size(), sizeof(char*)));
    if (item->complicationEntries == nullptr) throw std::bad_alloc();
    for (const std::string& source : items.complications)
        item->complicationEntries[item->complicationEntryCount++] = Allocated(source);
    return item.release();
}

}  // namespace

char* data_util_resultxml_memory_converter(const char* resultXml)
{
    if (resultXml == nullptr) return nullptr;
    return Guarded(__func__, [&] { return Converted(Parsed(resultXml)); });
}

int data_util_resultxml_has_limited_complication_xml_file(const char* resultXmlPath, const char* limitSpec)
{
    return Guarded(__func__, [&] {
        const auto document = ReadFace(resultXmlPath);
        return document && DataUtil::HasLimited(*document, DataUtil::LimitRule(limitSpec)) ? 1 : 0;
    });
}

char* data_util_resultxml_converter_remove_limited_complication(const char* resultXmlPath,
                                                                const char* limitSpec)
{
    return Guarded(__func__, [&] {
        auto document = ReadFace(resultXmlPath);
        if (document) DataUtil::RemoveLimited(*document, DataUtil::LimitRule(limitSpec));
        return Converted(document);
    });
}

char* data_util_resultxml_file_converter_update_worldclock(const char* resultXmlPath,
                                                           data_util_worldclock_s record)
{
    return Guarded(__func__, [&]() -> char* {
        auto document = ReadFace(resultXmlPath);
        if (!document) return nullptr;
        const DataUtil::WorldClockUpdate update{record.cityName, record.country, record.timezone,
                                                record.timezonePath};
        std::string problem;
        if (DataUtil::UpdateWorldClock(*document, record.complicationName, update, problem))
            return Converted(document);
        LogError("no world clock is set: " + problem);
        return nullptr;
    });
}

int data_util_log_result_xml_serialize_supported(void)
{
    return 1;
}

int data_util_log_item_supported(void)
{
    return 1;
}

char* data_util_log_result_xml_serialize(const char* resultXmlPath)
{
    return Guarded(__func__, [&]() -> char* {
        const auto document = ReadFace(resultXmlPath);
        return document ? Allocated(DataUtil::CombinationText(*document)) : nullptr;
    });
}

data_util_log_item_s* data_util_log_item_get_from_result_xml_file(const char* resultXmlPath)
{
    return Guarded(__func__, [&]() -> data_util_log_item_s* {
        const auto document = ReadFace(resultXmlPath);
        return document ? LogItem(DataUtil::UsageItemsOf(*document)) : nullptr;
    });
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
