// The fixture of the service's conversation with its peers.

#pragma once

#include <memory>
#include <string>

#include "on-a-platform.h"
#include "service-msg-control.h"

inline constexpr char kSettingList[] = "com.corvane.watch-utils.setting-list";
inline constexpr char kEditor[] = "com.corvane.watchface-editor";
inline constexpr char kHome[] = "com.corvane.w-home";
inline constexpr char kWms[] = "com.corvane.w-manager-service";
inline constexpr char kViewer[] = "com.corvane.watchface";
inline constexpr char kWorldClockMap[] = "com.corvane.worldclock-map";
inline constexpr char kWorldClockCityDetail[] = "com.corvane.worldclock-city-detail";
inline constexpr char kBackupAgent[] = "com.corvane.watch-utils.service";

class AMsgControl : public OnAPlatform {
protected:
    // A message that reaches the service's port; its log and sends are looked at afterwards.
    void Deliver(const std::string& sender, const MemoryPlatform::Message& message)
    {
        ASSERT_TRUE(platform.Deliver("watchface-service::localport", sender, message, "sender-port"));
    }

    // "APP PORT {...}" of every message that left, in order.
    MemoryPlatform::Strings Sent() const
    {
        MemoryPlatform::Strings lines;
        for (const auto& sent : platform.Sent()) {
            lines.push_back(sent.appId + " " + sent.port + " " + MemoryPlatform::ToText(sent.message));
        }
        return lines;
    }

    std::shared_ptr<WatchfaceService::WatchfaceManager> manager =
        std::make_shared<WatchfaceService::WatchfaceManager>();
    WatchfaceService::MsgControl control{manager};
};
