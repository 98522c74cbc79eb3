// The fixture of every contract test.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "areas.h"
#include "bundle-data.h"
#include "harness.h"

namespace Contract {

inline constexpr char kFaces[] = "com.corvane.watchface";
inline constexpr char kHome[] = "com.corvane.w-home";
inline constexpr char kHomePort[] = "w-home::localport";
inline constexpr char kEditor[] = "com.corvane.watchface-editor";

using BundlePtr = std::unique_ptr<bundle, Platform::BundleDeleter>;

class ContractTest : public testing::Test {
protected:
    // A path in the read/write area of the faces, which exists.
    static std::string InArea(const std::string& path = "")
    {
        const std::string area = Platform::CurrentAreas().DataOf(kFaces);
        std::filesystem::create_directories(area);
        return area + path;
    }

    static void WriteFile(const std::string& path, const std::string& content)
    {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }

    static std::optional<std::string> ReadFile(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        if (!file) return std::nullopt;
        return std::string{std::istreambuf_iterator<char>(file), {}};
    }

    static BundlePtr MakeBundle(const Message& message)
    {
        BundlePtr made(bundle_create());
        for (const auto& [key, value] : message) {
            std::visit([&, name = key](const auto& content) { made->Set(name, content); }, value);
        }
        return made;
    }

    static Message ContentOf(const bundle* message)
    {
        Message content;
        for (const auto& [key, value] : message->values) {
            if (const auto* text = std::get_if<std::string>(&value)) {
                content[key] = *text;
            } else {
                content[key] = std::get<Platform::StringArrayValue>(value).strings;
            }
        }
        return content;
    }

    const std::unique_ptr<Harness> harness = Harness::Make();
};

}  // namespace Contract
