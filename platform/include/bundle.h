// Bundles: string-keyed records carried by launch requests and port messages.
//
// A value is a string or an array of strings. Keys are unique; adding under a key that is present
// replaces its value. All texts are copied on the way in; what a getter hands out belongs to the bundle
// and is valid until that key changes or the bundle is freed.

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef struct bundle bundle;

// What bundle_get_type() answers.
enum { BUNDLE_TYPE_NONE = -1, BUNDLE_TYPE_STR = 0x401, BUNDLE_TYPE_STR_ARRAY = 0x501 };

typedef enum {
    BUNDLE_ERROR_NONE = 0,
    BUNDLE_ERROR_INVALID_PARAMETER = -22,
    BUNDLE_ERROR_OUT_OF_MEMORY = -12,
    BUNDLE_ERROR_KEY_NOT_AVAILABLE = -126,
} bundle_error_e;

bundle* bundle_create(void);           // null when memory is short
bundle* bundle_dup(bundle* original);  // a deep copy, or null
int bundle_free(bundle* b);

int bundle_add_str(bundle* b, const char* key, const char* value);
int bundle_add_str_array(bundle* b, const char* key, const char** values, int count);
int bundle_del(bundle* b, const char* key);

// `*value` becomes null when there is no string under the key.
int bundle_get_str(bundle* b, const char* key, char** value);
// The array and its length, or null and 0 when there is no array under the key.
const char** bundle_get_str_array(bundle* b, const char* key, int* count);
int bundle_get_type(bundle* b, const char* key);
int bundle_get_count(bundle* b);

#ifdef __cplusplus
}
#endif
