#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/ustring.h>

#include <iterator>
#include <stdexcept>
#include <string_view>

#include "common-util-i18n.h"
#include "groups.h"

namespace Bench {

namespace {

constexpr std::string_view kSkeletons[] = {"yMMMd", "jm", "MMMMEEEEd", "Hms"};
constexpr int64_t kInstant = 1'791'965'370'123;
constexpr int kRounds = 2000;

// ICU with everything open that the dates of kSkeletons need: what any program has to do for their texts. The
// formats stay open until the program ends.
class OpenDates {
public:
    OpenDates()
    {
        UErrorCode status = U_ZERO_ERROR;
        UDateTimePatternGenerator* patterns = udatpg_open(kLanguage, &status);
        for (const std::string_view skeleton : kSkeletons) {
            const std::u16string letters(skeleton.begin(), skeleton.end());
            const std::u16string zone(std::begin(kTimezone), std::end(kTimezone) - 1);
            UChar pattern[64];
            const int32_t length = udatpg_getBestPattern(
                patterns, letters.data(), static_cast<int32_t>(letters.size()), pattern, 64, &status);
            mFormats.push_back(udat_open(UDAT_PATTERN, UDAT_PATTERN, kLanguage, zone.data(),
                                         static_cast<int32_t>(zone.size()), pattern, length, &status));
        }
        udatpg_close(patterns);
        if (U_FAILURE(status)) throw std::runtime_error("no ICU");
    }

    std::string Text(std::size_t skeleton, int64_t instant) const
    {
        UErrorCode status = U_ZERO_ERROR;
        UChar wide[128];
        char text[384];
        int32_t length =
            udat_format(mFormats[skeleton], static_cast<UDate>(instant), wide, 128, nullptr, &status);
        u_strToUTF8(text, sizeof text, &length, wide, length, &status);
        return {text, static_cast<std::size_t>(length)};
    }

private:
    std::vector<UDateFormat*> mFormats;
};

// A formatter of its own for each date, as for each request.
std::string ByAFormatter(std::size_t skeleton, int64_t instant)
{
    return CommonUtilI18NDateFormatter(std::string(kSkeletons[skeleton]), kTimezone, kLanguage, true)
        .Format(instant, kCommonUtilI18NTimestampMilliseconds);
}

// A date, of ten of each skeleton in turns.
template <typename Write>
double TimeOfADate(int64_t instant, const Write& write)
{
    constexpr int kOfEach = 10;
    const double time = TimeOf([&] {
        for (int j = 0; j < kOfEach; ++j) {
            for (std::size_t i = 0; i < std::size(kSkeletons); ++i) {
                if (write(i, instant + j).empty()) throw std::runtime_error("no date");
            }
        }
    });
    return time / kOfEach / std::size(kSkeletons);
}

}  // namespace

Figures Dates(Watch&, const Choices&)
{
    const OpenDates open;
    const auto byIcu = [&](std::size_t i, int64_t instant) { return open.Text(i, instant); };
    Figure figure{
        "date, its language asked for before", "us", {}, {}, "ICU with everything open", AtMostTimes(2)};
    TimeOfADate(kInstant, ByAFormatter);  // opens the language
    for (int i = 0; i < kRounds; ++i) {
        const int64_t instant = kInstant + 1000 * i;
        figure.ours.push_back(TimeOfADate(instant, ByAFormatter));
        figure.floor.push_back(TimeOfADate(instant, byIcu));
    }
    return {figure};
}

}  // namespace Bench
