#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "application-table.h"
#include "exit-status.h"
#include "hint.h"
#include "reading-files.h"

namespace Wfctl {

namespace {

[[noreturn]] void Misused(const std::string& text)
{
    throw Stop(Exit::kUsage, text);
}

bool IsEscaped(std::string_view text, std::size_t at)
{
    constexpr std::string_view kEscapable = "@[,";
    return text[at] == '\\' && at + 1 < text.size() &&
           kEscapable.find(text[at + 1]) != std::string_view::npos;
}

std::string Unescaped(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (IsEscaped(text, at)) ++at;
        plain += text[at];
    }
    return plain;
}

// The elements between "[" and "]".
std::vector<std::string> ParseElements(std::string_view text)
{
    std::vector<std::string> elements;
    if (text.empty()) return elements;
    std::size_t begin = 0;
    for (std::size_t at = 0; at <= text.size(); ++at) {
        if (at < text.size() && IsEscaped(text, at)) {
            ++at;
        } else if (at >= text.size() || text[at] == ',') {
            elements.push_back(Unescaped(text.substr(begin, at - begin)));
            begin = at + 1;
        }
    }
    return elements;
}

std::string_view TypeName(const Platform::StoredValue& value)
{
    constexpr std::string_view kNames[] = {"string", "int", "bool"};
    return kNames[value.index()];
}

std::optional<Platform::StoredValue> ParseAs(std::string_view type, const std::string& text)
{
    if (type == "string") return text;
    if (type == "bool") {
        if (text == "true" || text == "false") return text == "true";
        return std::nullopt;
    }
    int64_t number = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (code != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace

std::string CheckedAppId(const std::string& text)
{
    if (text.empty() || text.front() == ':' || sd_bus_service_name_is_valid(text.c_str()) <= 0) {
        Misused("[" + text + "] is no application id; one looks like com.corvane.w-home");
    }
    return text;
}

PeerAddress ParsePeer(const std::string& text, bool trusted)
{
    const auto colon = text.find(':');
    PeerAddress peer{CheckedAppId(text.substr(0, colon)), {}};
    if (colon != std::string::npos) {
        peer.port = text.substr(colon + 1);
    } else if (const Platform::Application* app = Platform::FindApplication(peer.app)) {
        peer.port = trusted ? app->trustedPorts[0] : app->openPorts[0];
    }
    return peer;
}

std::string SecondsProblem(const std::string& text)
{
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool isTime = end != text.c_str() && *end == '\0' && seconds >= 0;
    return isTime ? "" : "the time is a number of seconds, 0 or more, not [" + text + "]";
}

Assignment ParseAssignment(const std::string& text)
{
    const auto equals = text.find('=');
    if (equals == std::string::npos || equals == 0) Misused("[" + text + "] is no KEY=VALUE");
    const std::string key = text.substr(0, equals);
    const std::string_view value = std::string_view(text).substr(equals + 1);
    if (value.starts_with('@')) {
        std::string bytes = ReadNamedFile(std::string(value.substr(1)));
        if (bytes.find('\0') != std::string::npos) {
            Misused("the file of [" + key + "] has a NUL byte inside, which no message can carry");
        }
        return {key, std::move(bytes)};
    }
    if (!value.starts_with('[')) return {key, Unescaped(value)};
    if (!value.ends_with(']'))
        Misused("the list of [" + key + "] does not end in ]; a text that begins with [ is \\[");
    return {key, ParseElements(value.substr(1, value.size() - 2))};
}

Platform::LaunchData ParseLaunchData(const std::vector<std::string>& assignments)
{
    Platform::LaunchData data;
    for (const std::string& text : assignments) {
        Assignment one = ParseAssignment(text);
        if (!data.emplace(one.first, std::move(one.second)).second)
            Misused("the key [" + one.first + "] is there twice");
    }
    return data;
}

Platform::BundlePtr ParseBundle(const std::vector<std::string>& assignments)
{
    Platform::BundlePtr message(bundle_create());
    for (auto& [key, value] : ParseLaunchData(assignments)) {
        std::visit([&, &name = key](const auto& held) { message->Set(name, held); }, value);
    }
    return message;
}

Platform::StoredValue ParseValue(const std::string& text, const std::string& type,
                                 const std::optional<Platform::StoredValue>& present)
{
    if (!type.empty() || present) {
        const std::string wanted = !type.empty() ? type : std::string(TypeName(*present));
        if (auto value = ParseAs(wanted, text)) return *value;
        Misused("[" + text + "] is no " + wanted +
                (type.empty() ? ", which the value that is there is; another type needs --type" : ""));
    }
    for (const char* guess : {"bool", "int"}) {
        if (auto value = ParseAs(guess, text)) return *value;
    }
    return text;
}

}  // namespace Wfctl
