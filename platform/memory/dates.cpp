// Dates are written as by the product; here it is recorded, scripted and made to fail.

#include "common-util-i18n.h"
#include "dates-icu.h"
#include "platform-state.h"

using MemoryPlatform::Note;

class CommonUtilI18NDateFormatter::Impl {
public:
    const Platform::DateRequest request;
};

CommonUtilI18NDateFormatter::CommonUtilI18NDateFormatter(const std::string& skeleton,
                                                         const std::string& timezonePath,
                                                         const std::string& language, bool bestPattern)
    : mImpl(new Impl{
          {skeleton, timezonePath, language, bestPattern}
})
{
    Note("formatter [" + skeleton + "] [" + timezonePath + "] [" + language + "] " +
         (bestPattern ? "true" : "false"));
}

CommonUtilI18NDateFormatter::~CommonUtilI18NDateFormatter()
{
    Note("formatter released");
}

std::string CommonUtilI18NDateFormatter::Format(int64_t instant,
                                                CommonUtilI18NDateFormatterTimestampType type)
{
    Note("format " + std::to_string(instant));
    if (MemoryPlatform::Use("CommonUtilI18NDateFormatter::Format")) return {};
    if (type != kCommonUtilI18NTimestampMilliseconds) return {};
    const auto& script = MemoryPlatform::Current()->dates;
    return script ? script(instant) : Platform::FormatDate(mImpl->request, instant);
}
