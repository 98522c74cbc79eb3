// Face documents: the calls behind which the data library works.
//
// A face has two documents. The *result XML* holds all that its author offers plus what the user
// selected; `watchface.xml` is flat and ready to draw. Every call that makes the second from the first
// is a pure function of its text: the same text in, the same bytes out.
//
// Paths and texts are zero-terminated UTF-8 and stay the caller's. A text that a call returns was
// allocated with malloc; the caller releases it with free(). A document that is refused gives null; the
// reasons are in the log under the tag "data-util", one line each, with line and column.

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// The text of `watchface.xml` made from the text of a result XML, or null.
char* data_util_resultxml_memory_converter(const char* resultXml);

// Non-zero when the result XML at this path holds a complication that the watch may not offer.
// `limitSpec` is passed on unchanged by every caller; null is the rule of this watch.
int data_util_resultxml_has_limited_complication_xml_file(const char* resultXmlPath, const char* limitSpec);

// The text of `watchface.xml` made from the result XML at this path without its limited complications,
// or null.
char* data_util_resultxml_converter_remove_limited_complication(const char* resultXmlPath,
                                                                const char* limitSpec);

// What a world-clock slot is to show. Each text may be null; they belong to the caller.
typedef struct data_util_worldclock_s {
    const char* complicationName;
    const char* timezone;
    const char* timezonePath;
    const char* cityName;
    const char* country;
} data_util_worldclock_s;

// The text of `watchface.xml` made from the result XML at this path with the record applied, or null.
char* data_util_resultxml_file_converter_update_worldclock(const char* resultXmlPath,
                                                           data_util_worldclock_s record);

// What this build of the library can tell for usage records.
int data_util_log_result_xml_serialize_supported(void);
int data_util_log_item_supported(void);

// The combination of selected options as one text, or null.
char* data_util_log_result_xml_serialize(const char* resultXmlPath);

// A face's usage items. Any text and any entry may be null.
typedef struct data_util_log_item_s {
    char* firstFeature;
    char* firstValue;
    char* secondFeature;
    char* secondValue;
    char* complicationFeature;
    char** complicationEntries;
    int complicationEntryCount;
} data_util_log_item_s;

// The items of the result XML at this path, or null; released with data_util_log_item_free().
data_util_log_item_s* data_util_log_item_get_from_result_xml_file(const char* resultXmlPath);
void data_util_log_item_free(data_util_log_item_s* item);

#ifdef __cplusplus
}
#endif
