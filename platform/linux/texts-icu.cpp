// Texts by Unicode's rules, with ICU opened when the first one is needed.

#include <unicode/ustring.h>

#include <vector>

#include "common-util-i18n.h"
#include "late-icu.h"

std::string CommonUtilI18NStringUtility::ToUpper(const std::string& text)
{
    static const auto fromUtf8 = LATE_ICU_UC(u_strFromUTF8WithSub);
    static const auto toUpper = LATE_ICU_UC(u_strToUpper);
    static const auto toUtf8 = LATE_ICU_UC(u_strToUTF8);
    if (!fromUtf8 || !toUpper || !toUtf8) return text;

    constexpr UChar32 kReplacement = 0xFFFD;
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    std::vector<UChar> plain(text.size() + 1);
    fromUtf8(plain.data(), static_cast<int32_t>(plain.size()), &length, text.data(),
             static_cast<int32_t>(text.size()), kReplacement, nullptr, &status);
    std::vector<UChar> upper(3 * static_cast<std::size_t>(length) + 1);  // a letter becomes three at most
    length = toUpper(upper.data(), static_cast<int32_t>(upper.size()), plain.data(), length, "", &status);
    std::string out(3 * static_cast<std::size_t>(length) + 1, '\0');
    int32_t bytes = 0;
    toUtf8(out.data(), static_cast<int32_t>(out.size()), &bytes, upper.data(), length, &status);
    if (U_FAILURE(status)) return text;
    out.resize(static_cast<std::size_t>(bytes));
    return out;
}
