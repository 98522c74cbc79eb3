#include <nettle/base16.h>
#include <nettle/base64.h>
#include <nettle/sha2.h>

#include <array>

#include "digest.h"

namespace Wfctl {

namespace {

const uint8_t* Raw(std::string_view bytes)
{
    return reinterpret_cast<const uint8_t*>(bytes.data());
}

}  // namespace

std::string Sha256(std::string_view bytes)
{
    sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, bytes.size(), Raw(bytes));
    std::array<uint8_t, SHA256_DIGEST_SIZE> digest;
    sha256_digest(&context, digest.size(), digest.data());
    std::string text(BASE16_ENCODE_LENGTH(digest.size()), '\0');
    base16_encode_update(text.data(), digest.size(), digest.data());
    return text;
}

std::string Base64(std::string_view bytes)
{
    std::string text(BASE64_ENCODE_RAW_LENGTH(bytes.size()), '\0');
    base64_encode_raw(text.data(), bytes.size(), Raw(bytes));
    return text;
}

std::optional<std::string> FromBase64(std::string_view text)
{
    base64_decode_ctx context;
    base64_decode_init(&context);
    std::string bytes(BASE64_DECODE_LENGTH(text.size()), '\0');
    std::size_t size = bytes.size();
    if (!base64_decode_update(&context, &size, reinterpret_cast<uint8_t*>(bytes.data()), text.size(),
                              text.data()) ||
        !base64_decode_final(&context))
        return std::nullopt;
    bytes.resize(size);
    return bytes;
}

}  // namespace Wfctl
