// Platform keys: small values that all applications of the watch share. A change is announced after it is
// durable, also when the value is the one that was there before.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "key-node.h"

class CommonUtilVConf {
public:
    // (read succeeded, value); the value is false, 0 or empty when the key is missing or of another type.
    static std::pair<bool, bool> GetBool(const std::string& key);
    static std::pair<bool, int> GetInt(const std::string& key);
    static std::pair<bool, std::string> GetString(const std::string& key);

    static bool SetBool(const std::string& key, bool value);
    static bool SetInt(const std::string& key, int value);
    static bool SetString(const std::string& key, const std::string& value);
};

// Watches one key while it lives; the handler runs on the main loop.
class CommonUtilVConfCallback {
public:
    CommonUtilVConfCallback(const std::string& key, std::function<void(keynode_t*)> handler);
    ~CommonUtilVConfCallback();
    CommonUtilVConfCallback(const CommonUtilVConfCallback&) = delete;
    CommonUtilVConfCallback& operator=(const CommonUtilVConfCallback&) = delete;

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};
