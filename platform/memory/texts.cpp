#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "common-util-i18n.h"
#include "platform-state.h"

std::string CommonUtilI18NStringUtility::ToUpper(const std::string& text)
{
    std::string upper;
    icu::UnicodeString::fromUTF8(text).toUpper(icu::Locale::getRoot()).toUTF8String(upper);
    return upper;
}

class CommonUtilI18NDateFormatter::Impl {
public:
    std::string skeleton, timezone, language;
    bool bestPattern;
};

CommonUtilI18NDateFormatter::CommonUtilI18NDateFormatter(const std::string& skeleton,
                                                         const std::string& timezonePath,
                                                         const std::string& language, bool bestPattern)
    : mImpl(new Impl{skeleton, timezonePath, language, bestPattern})
{
}

CommonUtilI18NDateFormatter::~CommonUtilI18NDateFormatter() = default;

std::string CommonUtilI18NDateFormatter::Format(int64_t instant, CommonUtilI18NDateFormatterTimestampType)
{
    const Impl& with = *mImpl;
    MemoryPlatform::Note("format " + with.skeleton + " " + with.timezone + " " + with.language + " " +
                         (with.bestPattern ? "true " : "false ") + std::to_string(instant));
    return MemoryPlatform::Current()->dateFormat(with.skeleton, with.timezone, with.language,
                                                 with.bestPattern, instant);
}
