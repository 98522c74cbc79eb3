// What stands on the command line: peers, `key=value` pairs, typed values.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bundle-wire-sdbus.h"
#include "launch-data.h"
#include "value-store-sqlite.h"

namespace Wfctl {

// An application and a port of it. The port may be empty: a sender without one.
struct PeerAddress {
    std::string app;
    std::string port;
};

// APP or APP:PORT, split at the first ":" (ports hold colons of their own). Without a port it is the
// application's first of that kind in the table of applications.
PeerAddress ParsePeer(const std::string& text, bool trusted);

// An application's id; usage error when it is none.
std::string CheckedAppId(const std::string& text);

// KEY=VALUE. A value is a text, `@FILE` (its bytes; `@-` is stdin) or `[a,b]`; `\@`, `\[` and `\,` stand for
// the characters themselves.
using Assignment = std::pair<std::string, Platform::LaunchValue>;
Assignment ParseAssignment(const std::string& text);

Platform::BundlePtr ParseBundle(const std::vector<std::string>& assignments);
Platform::LaunchData ParseLaunchData(const std::vector<std::string>& assignments);

// A value to store. `type` is "string", "int", "bool" or empty: then the type of the value that is there,
// else bool for true and false, int for a decimal integer, else string.
Platform::StoredValue ParseValue(const std::string& text, const std::string& type,
                                 const std::optional<Platform::StoredValue>& present);

// A check of options that take a time: empty, or what is wrong with it.
std::string SecondsProblem(const std::string& text);

}  // namespace Wfctl
