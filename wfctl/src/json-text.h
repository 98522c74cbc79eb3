// What wfctl prints: JSON on one line, and values as they stand.

#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "bundle-data.h"
#include "launch-data.h"
#include "value-store-sqlite.h"

extern template class nlohmann::basic_json<nlohmann::ordered_map>;  // compiled once, for all

namespace Wfctl {

using Json = nlohmann::ordered_json;

// One line without its end; a space behind ":" and ",".
std::string JsonLine(const Json& value);

// Text, or {"base64": "…"} when the bytes are no UTF-8.
Json BytesToJson(const std::string& bytes);
// The name of a member: the text, or "base64:…".
std::string JsonName(const std::string& bytes);
Json BundleToJson(const bundle& message);
Json LaunchDataToJson(const Platform::LaunchData& extra);
Json ValueToJson(const Platform::StoredValue& value);

// A message that arrived: {"from": APP, "port": PORT, "bundle": {…}}.
Json MessageToJson(const std::string& app, const std::string& port, const bundle& message);

// A stored value as it stands.
std::string ValueText(const Platform::StoredValue& value);

// "1 key", "2 keys".
std::string Counted(std::size_t count, const std::string& what);

// Prints a line and flushes it.
void PrintLine(const std::string& line);

// Stops with Exit::kError when stdout did not take all that was printed.
void FlushOutput();

// A line on stderr, none for an empty text.
void Warn(const std::string& text);

// Whether colour is wanted on stdout: a terminal, no NO_COLOR, no TERM=dumb.
bool WantsColor();

}  // namespace Wfctl
