// Face documents: the calls behind which the data library works.
//
// A face has two documents. The *result XML* holds all that its author offers plus what the user
// selected; `watchface.xml` is flat and ready to draw. Every call that makes the second from the first
// is a pure function of its text: the same text in, the same bytes out. docs/face-format.md describes both.
//
// Paths and texts are zero-terminated UTF-8 and stay the caller's. A text that a call returns was
// allocated with malloc; the caller releases it with free(). A path must lead to a regular file of at most
// 1 MiB. A file that cannot be read and a document that is refused give null (or 0); the reasons are in the
// log under the tag "data-util": one line for the file, or one for each finding, with line and column. The
// calls change no file, wait for nothing and may be made on any thread.

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// The text of `watchface.xml` made from the text of a result XML, or null. At most 1 MiB.
char* data_util_resultxml_memory_converter(const char* resultXml);

// 1 when a complication that the result XML at this path shows is limited, else 0. With a null `limitSpec`
// those are limited whose source shows data of a paired phone; else the sources that it lists, separated by
// spaces, and no others.
int data_util_resultxml_has_limited_complication_xml_file(const char* resultXmlPath, const char* limitSpec);

// The text of `watchface.xml` made from the result XML at this path, or null. Each complication that is
// limited shows the first of its fallbacks that is not, in the end "empty".
char* data_util_resultxml_converter_remove_limited_complication(const char* resultXmlPath,
                                                                const char* limitSpec);

// What a slot is to show as its world clock. The texts belong to the caller. `complicationName` is the slot's
// name; each of the others may be null and then stays as the document has it. An empty country or time zone
// takes that value away.
typedef struct data_util_worldclock_s {
    const char* complicationName;
    const char* timezone;      // the zone's name, at most 64 characters
    const char* timezonePath;  // its IANA id, or a path that has one behind "/zoneinfo/"
    const char* cityName;      // at most 64 characters
    const char* country;       // at most 64 characters
} data_util_worldclock_s;

// The text of `watchface.xml` made from the result XML at this path with the record applied, or null: also,
// with one line in the log, when the record names no slot that offers a world clock, or has a bad value.
char* data_util_resultxml_file_converter_update_worldclock(const char* resultXmlPath,
                                                           data_util_worldclock_s record);

// Whether this build of the library can tell the combination and the items below. Both answer 1.
int data_util_log_result_xml_serialize_supported(void);
int data_util_log_item_supported(void);

// What the result XML at this path has chosen, as one text, or null: "group=option" for each shown group,
// "photos=own" or "photos=default" for all shown photos, "slot=source" for each shown slot, separated by
// spaces; groups, photos and slots in document order. Empty when nothing is shown.
char* data_util_log_result_xml_serialize(const char* resultXmlPath);

// A face's usage items. Any text and any entry may be null. The first and the second pair are the features
// and picked options of the groups that have a feature; the entries are the sources of the shown slots that
// are not empty.
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
