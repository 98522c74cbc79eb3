// Bundles and extra data, as tests write and read them.

#include <cstdio>

#include "bundle-data.h"
#include "platform-state.h"

namespace MemoryPlatform {

namespace {

std::string Quoted(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        if (c == '\n') {
            out += "\\n";
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string ToText(const Strings& strings)
{
    std::string out;
    for (const std::string& s : strings) out += (out.empty() ? "" : ", ") + Quoted(s);
    return "[" + out + "]";
}

}  // namespace

bundle* NewBundle(const Message& message)
{
    auto made = std::make_unique<bundle>();
    for (const auto& [key, value] : message) {
        std::visit([&, name = key](const auto& content) { made->Set(name, content); }, value);
    }
    return made.release();
}

Message ContentOf(const bundle* message)
{
    Message content;
    if (!message) return content;
    for (const auto& [key, value] : message->values) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            content[key] = *text;
        } else {
            content[key] = std::get<::Platform::StringArrayValue>(value).strings;
        }
    }
    return content;
}

std::string ToText(const Message& message)
{
    std::string out;
    for (const auto& [key, value] : message) {
        const auto* text = std::get_if<std::string>(&value);
        out += (out.empty() ? "" : ", ") + Quoted(key) + ": ";
        out += text ? Quoted(*text) : ToText(std::get<Strings>(value));
    }
    return "{" + out + "}";
}

Message ContentOf(const ::Platform::LaunchData& extra)
{
    return {extra.begin(), extra.end()};
}
::Platform::LaunchData LaunchDataOf(const Message& message)
{
    return {message.begin(), message.end()};
}

std::string SentMessage::Text(const std::string& key) const
{
    const auto it = message.find(key);
    const auto* text = it == message.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : std::string();
}

}  // namespace MemoryPlatform
