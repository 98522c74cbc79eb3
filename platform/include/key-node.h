// What a watcher of a platform key is told: the key and the value it has now.

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef struct keynode_t keynode_t;

const char* vconf_keynode_get_name(const keynode_t* node);
int vconf_keynode_get_int(const keynode_t* node);   // 0 for another type
int vconf_keynode_get_bool(const keynode_t* node);  // 0 or 1; 0 for another type

#ifdef __cplusplus
}
#endif
