// The fixtures of the conversation with the backup agent.

#pragma once

#include <string>

#include "a-msg-control.h"
#include "handles.h"

// A message as it leaves for a peer: every key and its value, and none beside them.
inline std::string ToAgent(const MemoryPlatform::Message& message)
{
    return "com.corvane.watch-utils.service watch-utils-service::localport " +
           MemoryPlatform::ToText(message);
}
inline std::string ToWms(const MemoryPlatform::Message& message)
{
    return "com.corvane.w-manager-service w-manager-service::localport " + MemoryPlatform::ToText(message);
}
inline std::string ToEditor(const MemoryPlatform::Message& message)
{
    return "com.corvane.watchface-editor watch-face-editor::localport " + MemoryPlatform::ToText(message);
}

class ABackupConversation : public AMsgControl {
protected:
    ABackupConversation() { platform.Forget(); }

    // The agent says this; what the service makes of it.
    bool Say(const MemoryPlatform::Message& message)
    {
        const WatchfaceService::BundlePtr said(MemoryPlatform::NewBundle(message));
        return control.BackupAndRestore(said.get());
    }
};

inline constexpr char kGalleryFace[] = "com.corvane.watchface-mirel-u1";
inline constexpr char kFace[] = "com.corvane.watchface-mirel-c1";

class ARestore : public ABackupConversation {
protected:
    ARestore()
    {
        for (const char* name : {kGalleryFace, kFace, "com.corvane.watchface-mirel-u3", "a"}) Ship(name);
        platform.SetPortUp(kCapture, kCapturePort);
        platform.Forget();
    }

    void Ship(const std::string& watchName)
    {
        platform.WriteFile(platform.RO("watchlist/" + watchName + "/" + watchName + "_result.xml"), "<a/>");
    }
    // A file that the agent has put somewhere.
    std::string Restored(const std::string& name) const
    {
        platform.WriteFile(platform.Root() + "/restored/" + name, "restored");
        return platform.Root() + "/restored/" + name;
    }
    void Store(const std::string& path) const
    {
        platform.WriteFile(platform.Trusted("theme/" + path), "old");
    }

    bool Give(MemoryPlatform::Message item)
    {
        item["operation"] = "corvane_cloud_restore";
        return Say(item);
    }
    bool GiveFace(const std::string& watchName, const std::string& text = "<a/>")
    {
        return Give({
            {"type",       "watch"  },
            {"pkgid",      watchName},
            {"result_xml", text     }
        });
    }
    bool GiveImage(const std::string& path, const std::string& bgType)
    {
        return Give({
            {"type",      "image"},
            {"file_path", path   },
            {"bg_type",   bgType }
        });
    }
    bool GiveCurrent(const std::string& watchName)
    {
        return Give({
            {"type",  "watch-idle-changed"},
            {"pkgid", watchName           }
        });
    }
    // Up to where images are taken.
    void BeginWithTheGalleryFace()
    {
        GiveFace(kGalleryFace);
        Give({});
        platform.Forget();
    }

    bool ImagesAreTaken()
    {
        platform.Forget();
        GiveImage(Restored("probe"), "watch-bg-digital");
        return platform.Exists(platform.Trusted("theme/Backgrounds/probe"));
    }
};
