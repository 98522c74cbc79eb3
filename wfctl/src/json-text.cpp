#include "json-text.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "digest.h"
#include "exit-status.h"
#include "utf8.h"

template class nlohmann::basic_json<nlohmann::ordered_map>;

namespace Wfctl {

namespace {

template <typename Values, typename ToText>
Json ObjectOf(const Values& values, ToText&& toJson)
{
    Json object = Json::object();
    for (const auto& [key, value] : values) object[JsonName(key)] = toJson(value);
    return object;
}

Json ArrayOf(const std::vector<std::string>& strings)
{
    Json array = Json::array();
    for (const std::string& text : strings) array.push_back(BytesToJson(text));
    return array;
}

}  // namespace

std::string JsonLine(const Json& value)
{
    std::string text;
    const auto append = [&text](const std::string& item) {
        if (text.size() > 1) text += ", ";
        text += item;
    };
    if (value.is_object()) {
        text = "{";
        for (const auto& [key, held] : value.items()) append(Json(key).dump() + ": " + JsonLine(held));
        return text + "}";
    }
    if (value.is_array()) {
        text = "[";
        for (const Json& held : value) append(JsonLine(held));
        return text + "]";
    }
    return value.dump();
}

Json BytesToJson(const std::string& bytes)
{
    if (Platform::IsUtf8(bytes)) return bytes;
    return Json::object({
        {"base64", Base64(bytes)}
    });
}

std::string JsonName(const std::string& bytes)
{
    return Platform::IsUtf8(bytes) ? bytes : "base64:" + Base64(bytes);
}

Json BundleToJson(const bundle& message)
{
    return ObjectOf(message.values, [](const bundle::Value& value) {
        const auto* text = std::get_if<std::string>(&value);
        return text ? BytesToJson(*text) : ArrayOf(std::get<Platform::StringArrayValue>(value).strings);
    });
}

Json LaunchDataToJson(const Platform::LaunchData& extra)
{
    return ObjectOf(extra, [](const Platform::LaunchValue& value) {
        const auto* text = std::get_if<std::string>(&value);
        return text ? BytesToJson(*text) : ArrayOf(std::get<std::vector<std::string>>(value));
    });
}

Json ValueToJson(const Platform::StoredValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) return BytesToJson(*text);
    if (const auto* number = std::get_if<int64_t>(&value)) return *number;
    return std::get<bool>(value);
}

Json MessageToJson(const std::string& app, const std::string& port, const bundle& message)
{
    return Json::object({
        {"from",   app                  },
        {"port",   port                 },
        {"bundle", BundleToJson(message)}
    });
}

std::string ValueText(const Platform::StoredValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
    return std::get<bool>(value) ? "true" : "false";
}

std::string Counted(std::size_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void PrintLine(const std::string& line)
{
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    FlushOutput();
}

void FlushOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Stop(Exit::kError, "stdout cannot be written");
}

void Warn(const std::string& text)
{
    if (!text.empty()) std::fprintf(stderr, "wfctl: warning: %s\n", text.c_str());
}

bool WantsColor()
{
    const char* noColor = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    if (noColor && *noColor) return false;
    return isatty(STDOUT_FILENO) && terminal && std::string_view(terminal) != "dumb";
}

}  // namespace Wfctl
