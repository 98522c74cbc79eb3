// Bytes as text: digests and base64.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Wfctl {

// SHA-256 in hexadecimal.
std::string Sha256(std::string_view bytes);

std::string Base64(std::string_view bytes);
// Nothing when the text is no base64.
std::optional<std::string> FromBase64(std::string_view text);

}  // namespace Wfctl
