#include "common-util-i18n.h"
#include "dates-icu.h"

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
}
CommonUtilI18NDateFormatter::~CommonUtilI18NDateFormatter() = default;

std::string CommonUtilI18NDateFormatter::Format(int64_t instant,
                                                CommonUtilI18NDateFormatterTimestampType type)
{
    if (type != kCommonUtilI18NTimestampMilliseconds) return {};
    return Platform::FormatDate(mImpl->request, instant);
}
