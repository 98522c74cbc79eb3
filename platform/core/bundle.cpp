#include "bundle.h"

#include <new>
#include <utility>

#include "bundle-data.h"
#include "guarded.h"

void bundle::Set(const std::string& key, std::string value)
{
    values[key] = std::move(value);
}

void bundle::Set(const std::string& key, Platform::StringArray strings)
{
    Platform::StringArrayValue value;
    value.strings = std::move(strings);
    for (const std::string& s : value.strings) value.pointers.push_back(s.c_str());
    // Moving the vector keeps its elements where they are, and with them the pointers.
    values[key] = std::move(value);
}

namespace {

const bundle::Value* Find(const bundle* b, const char* key)
{
    if (!b || !key) return nullptr;
    const auto it = b->values.find(std::string_view(key));
    return it == b->values.end() ? nullptr : &it->second;
}

}  // namespace

bundle* bundle_create(void)
{
    return new (std::nothrow) bundle;
}

bundle* bundle_dup(bundle* original)
{
    if (!original) return nullptr;
    bundle* copy = bundle_create();
    if (!copy) return nullptr;
    const int code = Platform::Guarded<BUNDLE_ERROR_OUT_OF_MEMORY>([&] {
        for (const auto& [key, value] : original->values) {
            if (const auto* text = std::get_if<std::string>(&value)) {
                copy->Set(key, *text);
            } else {
                copy->Set(key, std::get<Platform::StringArrayValue>(value).strings);
            }
        }
        return BUNDLE_ERROR_NONE;
    });
    if (code == BUNDLE_ERROR_NONE) return copy;
    bundle_free(copy);
    return nullptr;
}

int bundle_free(bundle* b)
{
    if (!b) return BUNDLE_ERROR_INVALID_PARAMETER;
    delete b;
    return BUNDLE_ERROR_NONE;
}

int bundle_add_str(bundle* b, const char* key, const char* value)
{
    if (!b || !key || !value) return BUNDLE_ERROR_INVALID_PARAMETER;
    return Platform::Guarded<BUNDLE_ERROR_OUT_OF_MEMORY>([&] {
        b->Set(key, std::string(value));
        return BUNDLE_ERROR_NONE;
    });
}

int bundle_add_str_array(bundle* b, const char* key, const char** values, int count)
{
    if (!b || !key || count < 0 || (count > 0 && !values)) return BUNDLE_ERROR_INVALID_PARAMETER;
    return Platform::Guarded<BUNDLE_ERROR_OUT_OF_MEMORY>([&] {
        Platform::StringArray strings;
        for (int i = 0; i < count; ++i) strings.emplace_back(values[i] ? values[i] : "");
        b->Set(key, std::move(strings));
        return BUNDLE_ERROR_NONE;
    });
}

int bundle_del(bundle* b, const char* key)
{
    if (!b || !key) return BUNDLE_ERROR_INVALID_PARAMETER;
    return b->values.erase(key) ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_KEY_NOT_AVAILABLE;
}

int bundle_get_str(bundle* b, const char* key, char** value)
{
    if (!value) return BUNDLE_ERROR_INVALID_PARAMETER;
    *value = nullptr;
    const bundle::Value* found = Find(b, key);
    const auto* text = found ? std::get_if<std::string>(found) : nullptr;
    if (!text) return BUNDLE_ERROR_KEY_NOT_AVAILABLE;
    // The C interface hands out a plain pointer; nobody writes through it.
    *value = const_cast<char*>(text->c_str());
    return BUNDLE_ERROR_NONE;
}

const char** bundle_get_str_array(bundle* b, const char* key, int* count)
{
    if (count) *count = 0;
    bundle::Value* found = const_cast<bundle::Value*>(Find(b, key));
    auto* array = found ? std::get_if<Platform::StringArrayValue>(found) : nullptr;
    if (!array) return nullptr;
    if (count) *count = static_cast<int>(array->pointers.size());
    return array->pointers.data();
}

int bundle_get_type(bundle* b, const char* key)
{
    const bundle::Value* found = Find(b, key);
    if (!found) return BUNDLE_TYPE_NONE;
    return std::holds_alternative<std::string>(*found) ? BUNDLE_TYPE_STR : BUNDLE_TYPE_STR_ARRAY;
}

int bundle_get_count(bundle* b)
{
    return b ? static_cast<int>(b->values.size()) : 0;
}
