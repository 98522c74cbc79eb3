#include "bundle-wire-sdbus.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "utf8.h"

namespace Platform {

namespace {

constexpr std::size_t kMostShown = 256;  // of a peer's text in a refusal

// U+FDD0 to U+FDEF, and the last two of each plane. sd-bus takes them neither to write nor to read.
bool IsNoncharacter(std::string_view sequence)
{
    const auto byte = [&](std::size_t i) { return static_cast<uint8_t>(sequence[i]); };
    const std::size_t last = sequence.size() - 1;
    if (last == 2 && byte(0) == 0xEF && byte(1) == 0xB7) return byte(2) >= 0x90 && byte(2) <= 0xAF;
    if (last < 2 || byte(last - 1) != 0xBF || byte(last) < 0xBE) return false;
    return last == 2 ? byte(0) == 0xEF : (byte(1) & 0x0F) == 0x0F;
}

bool TravelsAsBytes(std::string_view text)
{
    if (text.size() >= kBytesFrom) return true;
    while (!text.empty()) {
        const std::size_t length = Utf8SequenceLength(text);
        if (length == 0 || IsNoncharacter(text.substr(0, length))) return true;
        text.remove_prefix(length);
    }
    return false;
}

int AppendBytes(sd_bus_message* m, const std::string& text)
{
    return sd_bus_message_append_array(m, 'y', text.data(), text.size());
}

int AppendString(sd_bus_message* m, const std::string& text)
{
    const bool bytes = TravelsAsBytes(text);
    int code = sd_bus_message_open_container(m, 'v', bytes ? "ay" : "s");
    if (code >= 0) code = bytes ? AppendBytes(m, text) : sd_bus_message_append_basic(m, 's', text.c_str());
    return code < 0 ? code : sd_bus_message_close_container(m);
}

int AppendStrings(sd_bus_message* m, const StringArray& strings)
{
    bool bytes = false;
    for (const std::string& text : strings) bytes = bytes || TravelsAsBytes(text);
    int code = sd_bus_message_open_container(m, 'v', bytes ? "aay" : "as");
    if (code >= 0) code = sd_bus_message_open_container(m, 'a', bytes ? "ay" : "s");
    for (const std::string& text : strings) {
        if (code < 0) return code;
        code = bytes ? AppendBytes(m, text) : sd_bus_message_append_basic(m, 's', text.c_str());
    }
    if (code >= 0) code = sd_bus_message_close_container(m);
    return code < 0 ? code : sd_bus_message_close_container(m);
}

// One entry of `a{sv}`: `append` writes the variant.
template <typename Append>
int AppendEntry(sd_bus_message* m, const std::string& key, Append&& append)
{
    int code = sd_bus_message_open_container(m, 'e', "sv");
    if (code >= 0) code = sd_bus_message_append_basic(m, 's', key.c_str());
    if (code >= 0) code = append();
    return code < 0 ? code : sd_bus_message_close_container(m);
}

bool ReadString(sd_bus_message* m, std::string* out)
{
    const char* text = nullptr;
    if (sd_bus_message_read_basic(m, 's', &text) < 0) return false;
    *out = text;
    return true;
}

bool ReadBytes(sd_bus_message* m, std::string* out)
{
    const void* data = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(m, 'y', &data, &size) < 0) return false;
    out->assign(static_cast<const char*>(data), size);
    return out->find('\0') == std::string::npos;
}

bool ReadStrings(sd_bus_message* m, const char* element, StringArray* out)
{
    if (sd_bus_message_enter_container(m, 'a', element) < 0) return false;
    while (sd_bus_message_at_end(m, false) == 0) {
        std::string text;
        if (!(*element == 's' ? ReadString(m, &text) : ReadBytes(m, &text))) return false;
        out->push_back(std::move(text));
        if (out->size() > kMostBundleStrings) return false;
    }
    return sd_bus_message_exit_container(m) >= 0;
}

// The variant at hand, as text or texts. `bytes`: whether the byte forms are taken too.
using WireValue = std::variant<std::string, StringArray>;
bool ReadValue(sd_bus_message* m, bool bytes, WireValue* value, std::string* error)
{
    const char* contents = nullptr;
    if (sd_bus_message_peek_type(m, nullptr, &contents) < 0 || !contents) {
        *error = "a value cannot be read";
        return false;
    }
    const std::string type = contents;
    if (sd_bus_message_enter_container(m, 'v', type.c_str()) < 0) return false;
    bool read = false;
    std::string text;
    StringArray texts;
    if (type == "s") read = ReadString(m, &text);
    if (type == "ay" && bytes) read = ReadBytes(m, &text);
    if (type == "as") read = ReadStrings(m, "s", &texts);
    if (type == "aay" && bytes) read = ReadStrings(m, "ay", &texts);
    if (!read) {
        *error = "a value of type " + type + " is not taken, or has a NUL or too many strings inside";
        return false;
    }
    if (type == "s" || type == "ay")
        *value = std::move(text);
    else
        *value = std::move(texts);
    return sd_bus_message_exit_container(m) >= 0;
}

// What a bundle amounts to.
struct Amount {
    std::size_t bytes = 0;
    std::size_t strings = 0;

    bool Fits() const { return bytes <= kMostBundleBytes && strings <= kMostBundleStrings; }
    void Add(const std::string& text)
    {
        bytes += text.size();
        ++strings;
    }
    void Add(const StringArray& texts)
    {
        for (const std::string& text : texts) bytes += text.size() + 1;
        strings += texts.size();
    }
};

Amount AmountOf(const bundle& values)
{
    Amount sum;
    for (const auto& [key, value] : values.values) {
        sum.Add(key);
        if (const auto* text = std::get_if<std::string>(&value))
            sum.Add(*text);
        else
            sum.Add(std::get<StringArrayValue>(value).strings);
    }
    return sum;
}

// Walks `a{sv}`; `put(key, value)` is false for a key that is there already.
template <typename Put>
bool ReadEntries(sd_bus_message* m, bool bytes, std::string* error, Put&& put)
{
    *error = "the message cannot be read";
    Amount sum;
    if (sd_bus_message_enter_container(m, 'a', "{sv}") < 0) return false;
    while (sd_bus_message_enter_container(m, 'e', "sv") > 0) {
        std::string key;
        WireValue value;
        if (!ReadString(m, &key) || !ReadValue(m, bytes, &value, error)) return false;
        sum.Add(key);
        std::visit([&](const auto& held) { sum.Add(held); }, value);
        if (!sum.Fits()) {
            *error = "it is larger than 8 MiB, or has more than 65536 strings";
            return false;
        }
        if (!put(key, std::move(value))) {
            *error = "the key [" + std::string(Utf8Prefix(key, kMostShown)) + "] is there twice";
            return false;
        }
        if (sd_bus_message_exit_container(m) < 0) return false;
    }
    return sd_bus_message_exit_container(m) >= 0;
}

}  // namespace

std::size_t BundleBytes(const bundle& values)
{
    const Amount sum = AmountOf(values);
    return sum.bytes + sum.strings * kBytesBesideString;
}

int AppendBundle(sd_bus_message* message, const bundle& values)
{
    if (!AmountOf(values).Fits()) return -EMSGSIZE;
    int code = sd_bus_message_open_container(message, 'a', "{sv}");
    for (const auto& [key, value] : values.values) {
        if (code < 0) return code;
        code = AppendEntry(message, key, [&, &held = value] {
            const auto* text = std::get_if<std::string>(&held);
            return text ? AppendString(message, *text)
                        : AppendStrings(message, std::get<StringArrayValue>(held).strings);
        });
    }
    return code < 0 ? code : sd_bus_message_close_container(message);
}

BundlePtr ReadBundle(sd_bus_message* message, std::string* error)
{
    BundlePtr values(bundle_create());
    if (!values) return {};
    const bool read = ReadEntries(message, true, error, [&](const std::string& key, WireValue value) {
        if (values->values.contains(key)) return false;
        std::visit([&](auto& held) { values->Set(key, std::move(held)); }, value);
        return true;
    });
    return read ? std::move(values) : nullptr;
}

int AppendLaunchData(sd_bus_message* message, const LaunchData& extra)
{
    int code = sd_bus_message_open_container(message, 'a', "{sv}");
    for (const auto& [key, value] : extra) {
        if (code < 0) return code;
        code = AppendEntry(message, key, [&, &held = value] {
            if (const auto* text = std::get_if<std::string>(&held)) {
                return sd_bus_message_append(message, "v", "s", text->c_str());
            }
            int inner = sd_bus_message_open_container(message, 'v', "as");
            if (inner >= 0) inner = sd_bus_message_open_container(message, 'a', "s");
            for (const std::string& text : std::get<StringArray>(held)) {
                if (inner >= 0) inner = sd_bus_message_append_basic(message, 's', text.c_str());
            }
            if (inner >= 0) inner = sd_bus_message_close_container(message);
            return inner < 0 ? inner : sd_bus_message_close_container(message);
        });
    }
    return code < 0 ? code : sd_bus_message_close_container(message);
}

bool ReadLaunchData(sd_bus_message* message, LaunchData* extra, std::string* error)
{
    return ReadEntries(message, false, error, [&](const std::string& key, WireValue value) {
        return extra->emplace(key, std::move(value)).second;
    });
}

}  // namespace Platform
