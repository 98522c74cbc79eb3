#include <sqlite3.h>

#include "common-util-pref.h"
#include "process.h"

namespace {

using Platform::Process;

template <typename Value>
std::pair<int, Value> Answer(std::optional<Value> value)
{
    if (!value) return {SQLITE_NOTFOUND, Value()};
    return {0, *value};
}

}  // namespace

std::pair<int, bool> CommonUtilPref::GetBool(const std::string& key)
{
    return Answer(Platform::GetAs<bool>(Process::Current().Preferences(), key));
}

std::pair<int, int> CommonUtilPref::GetInt(const std::string& key)
{
    return Answer(Platform::GetAsInt(Process::Current().Preferences(), key));
}

std::pair<int, std::string> CommonUtilPref::GetString(const std::string& key)
{
    return Answer(Platform::GetAs<std::string>(Process::Current().Preferences(), key));
}

int CommonUtilPref::SetBool(const std::string& key, bool value)
{
    return Process::Current().Preferences().Set(key, value);
}

int CommonUtilPref::SetInt(const std::string& key, int value)
{
    return Process::Current().Preferences().Set(key, int64_t{value});
}

int CommonUtilPref::SetString(const std::string& key, const std::string& value)
{
    return Process::Current().Preferences().Set(key, value);
}

void CommonUtilPref::SetTTraceEnabled(bool) {}
