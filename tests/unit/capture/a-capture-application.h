// The capture application on a watch with one face, whose old preview is known.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "capture-application.h"
#include "memory-platform.h"

inline constexpr char kService[] = "com.corvane.watchface-service";
inline constexpr char kPort[] = "watchface-capture::localport";
inline constexpr char kFace[] = "com.example.watchface-dawn";
inline constexpr char kOldPreview[] = "the old preview";

class ACaptureApplication : public testing::Test {
protected:
    ACaptureApplication()
    {
        platform.SetPortUp(kService, "watchface-service::localport");
        Install(kFace, Document("#FF0000"));
    }

    // A face in the read/write area.
    void Install(const std::string& name, const std::string& document) const
    {
        platform.WriteFile(platform.RW(FileOf(name, "watchface.xml")), document);
        platform.WriteFile(platform.RW(FileOf(name, name + ".png")), kOldPreview);
    }
    static std::string Document(const std::string& background, const std::string& body = "")
    {
        return R"(<watchface format="1" id="com.example.watchface-dawn" version="1" width="32" height="32" shape="round"
                  background=")" +
               background + R"(" default-language="en" preview-time="10:08:36" title-key="title">
                  <strings language="en"><string key="title">Dawn</string></strings>)" +
               body + "</watchface>";
    }
    static std::string FileOf(const std::string& name, const std::string& file)
    {
        return "watchlist/" + name + "/" + file;
    }
    std::string PreviewOf(const std::string& name) const
    {
        return platform.ReadFile(platform.RW(FileOf(name, name + ".png"))).value_or("no preview");
    }
    void Ask(const std::string& name)
    {
        platform.Deliver(kPort, kService,
                         {
                             {"pkgName", name}
        });
    }
    // The names that were reported as finished, in order.
    MemoryPlatform::Strings Finished() const
    {
        MemoryPlatform::Strings names;
        for (const MemoryPlatform::SentMessage& sent : platform.SentTo(kService))
            names.push_back(sent.Text("pkgid"));
        return names;
    }
    MemoryPlatform::Strings Logs() const { return platform.LogTexts("watchface-capture"); }

    MemoryPlatform::Platform platform;
    std::unique_ptr<Capture::CaptureApplication> app = std::make_unique<Capture::CaptureApplication>();
};
