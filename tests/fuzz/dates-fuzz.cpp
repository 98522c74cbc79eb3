// Dates by any skeleton, at any instant, in any language and zone: both are keys that others write. Three
// bytes choose language, time zone and kind of pattern, eight are the instant. Of the rest the first line is
// the skeleton; a second one is the language, a third the time zone, in place of those that the bytes chose.
// Whatever they say, the text is UTF-8 and bounded, and the same when it is asked for again after another
// one.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "dates-icu.h"
#include "log.h"
#include "utf8.h"

int __dlog_print(log_id_t, int, const char*, const char*, ...)
{
    return 0;
}

namespace {

constexpr const char* kLanguages[] = {
    "en_US", "de_DE.UTF-8", "ko-KR", "ar_EG", "fa_IR", "th_TH", "he@calendar=hebrew", "zh@calendar=chinese",
    "xx",    "../"};
constexpr const char* kZones[] = {"Europe/Berlin", "/usr/share/zoneinfo/America/Argentina/Ushuaia",
                                  "Asia/Kolkata", "GMT+5:45", "Mars/Base"};
constexpr std::size_t kMostBytes = 100'000;

template <std::size_t kCount>
const char* Pick(const char* const (&from)[kCount], uint8_t byte)
{
    return from[byte % kCount];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    constexpr std::size_t kHead = 3 + sizeof(int64_t);
    if (size < kHead) return 0;
    int64_t instant = 0;
    std::memcpy(&instant, data + 3, sizeof instant);
    Platform::DateRequest request{"", Pick(kZones, data[1]), Pick(kLanguages, data[0]), (data[2] & 1) != 0};
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data) + kHead, size - kHead));
    for (std::string* line : {&request.skeleton, &request.language, &request.timezonePath}) {
        if (std::string text; std::getline(lines, text)) *line = text;
    }
    const std::string text = Platform::FormatDate(request, instant);
    Platform::FormatDate({"yMd", Pick(kZones, data[2]), request.language, !request.bestPattern}, 0);
    const bool isSame = Platform::FormatDate(request, instant) == text;
    if (!isSame || text.size() > kMostBytes || !Platform::IsUtf8(text)) std::abort();
    return 0;
}
