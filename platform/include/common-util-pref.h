// Preferences: the application's own small values. Nobody is told of a change.

#pragma once

#include <string>
#include <utility>

class CommonUtilPref {
public:
    // (code, value): 0 is success; otherwise the value is false, 0 or empty.
    static std::pair<int, bool> GetBool(const std::string& key);
    static std::pair<int, int> GetInt(const std::string& key);
    static std::pair<int, std::string> GetString(const std::string& key);

    // 0 on success. Entries of the evaluation store are limited in number and size; what is beyond is not
    // kept, and another code is returned.
    static int SetBool(const std::string& key, bool value);
    static int SetInt(const std::string& key, int value);
    static int SetString(const std::string& key, const std::string& value);

    // Switches the platform's trace of messages, launches, keys, files and jobs.
    static void SetTTraceEnabled(bool enabled);
};
