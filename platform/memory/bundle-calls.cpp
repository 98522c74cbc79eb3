// Bundles are the product's; only their failures are scripted.

#include "bundle.h"
#include "platform-state.h"

using MemoryPlatform::Use;

extern "C" {

bundle* __real_bundle_create(void);
bundle* __real_bundle_dup(bundle* original);
int __real_bundle_add_str(bundle* b, const char* key, const char* value);
int __real_bundle_add_str_array(bundle* b, const char* key, const char** values, int count);
int __real_bundle_del(bundle* b, const char* key);

bundle* __wrap_bundle_create(void)
{
    return Use("bundle_create") ? nullptr : __real_bundle_create();
}

bundle* __wrap_bundle_dup(bundle* original)
{
    return Use("bundle_dup") ? nullptr : __real_bundle_dup(original);
}

int __wrap_bundle_add_str(bundle* b, const char* key, const char* value)
{
    if (const auto code = Use("bundle_add_str")) return *code;
    return __real_bundle_add_str(b, key, value);
}

int __wrap_bundle_add_str_array(bundle* b, const char* key, const char** values, int count)
{
    if (const auto code = Use("bundle_add_str_array")) return *code;
    return __real_bundle_add_str_array(b, key, values, count);
}

int __wrap_bundle_del(bundle* b, const char* key)
{
    if (const auto code = Use("bundle_del")) return *code;
    return __real_bundle_del(b, key);
}

}  // extern "C"
