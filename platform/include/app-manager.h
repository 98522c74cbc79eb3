// Where applications keep what they share. Each call gives a new string, with a "/" at its end, that the
// caller releases with free(), and returns 0; on failure it returns a negative code and leaves `*path`.

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

int app_manager_get_shared_resource_path(const char* appId, char** path);  // read-only, as installed
int app_manager_get_shared_data_path(const char* appId, char** path);      // read/write
int app_manager_get_shared_trusted_path(const char* appId, char** path);   // written by the service alone

#ifdef __cplusplus
}
#endif
