// Usage records: what is reported to the survey of the watch's maker.

#pragma once

#include <string>

class CommonUtilLogManager {
public:
    static void SendStatusSurveyInfo(const std::string& appId, const std::string& feature,
                                     const std::string& value, const std::string& extra);
    static void SendFeatureSurveyInfo(const std::string& appId, const std::string& feature,
                                      const std::string& value, const std::string& extra);
};
