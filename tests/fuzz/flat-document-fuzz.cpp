// Flat documents: checking ends, and says why at places that exist.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "document-oracle.h"
#include "flat-checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Fuzz::CheckFindings(DataUtil::CheckFlat(text), text);
    return 0;
}
