#include "asset-checks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "face-schema.h"
#include "file-descriptor.h"
#include "nearest-name.h"

namespace DataUtil {

namespace {

constexpr uint32_t kLargestSide = 4096;
constexpr std::size_t kHeaderSize = 24;  // up to width and height

// What is known of an asset. Without a problem it is a picture of that size.
struct Asset {
    const char* code = nullptr;
    const char* problem = nullptr;
    int width = 0;
    int height = 0;
};

uint32_t BigEndian(std::string_view bytes)
{
    uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

Asset AssetOf(std::string_view header)
{
    constexpr std::string_view kStart("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    if (header.size() < kHeaderSize || !header.starts_with(kStart))
        return {"E-ASSET-TYPE", "is no PNG; convert it", 0, 0};
    const uint32_t width = BigEndian(header.substr(16));
    const uint32_t height = BigEndian(header.substr(20));
    if (width == 0 || height == 0 || width > kLargestSide || height > kLargestSide)
        return {"E-ASSET-TYPE", "is no PNG of 1 to 4096 pixels a side", 0, 0};
    return {nullptr, nullptr, static_cast<int>(width), static_cast<int>(height)};
}

// The asset in that folder, or nothing when the folder has none of that path.
std::optional<Asset> Look(const std::string& folder, std::string_view path)
{
    FileDescriptor at(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (std::size_t slash; at.IsOpen() && (slash = path.find('/')) != std::string_view::npos;
         path.remove_prefix(slash + 1)) {
        at.Reset(openat(at.Get(), std::string(path.substr(0, slash)).c_str(),
                        O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    if (!at.IsOpen()) return std::nullopt;
    const std::string name(path);
    struct stat status = {};
    if (fstatat(at.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    const FileDescriptor file(openat(at.Get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode))
        return Asset{"E-ASSET-MISSING", "is no file that can be read", 0, 0};
    std::string header(kHeaderSize, '\0');
    const ssize_t size = read(file.Get(), header.data(), header.size());
    header.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return AssetOf(header);
}

void CollectImages(const Node& node, std::set<std::string>& paths)
{
    if (node.Is(Element::kImage)) paths.insert(node.Get("src"));
    for (const Node& child : node.children) CollectImages(child, paths);
}

class AssetChecks {
public:
    explicit AssetChecks(const std::vector<std::string>& folders) : mFolders(folders) {}

    std::vector<Finding> Run(const Node& root)
    {
        CollectPhotos(root);
        Check(root);
        return mFindings.Take();
    }

private:
    void CollectPhotos(const Node& node)
    {
        if (node.Is(Element::kPhotos)) mDefaults.emplace(node.Get("id"), node.Get("default"));
        for (const Node& child : node.children) CollectPhotos(child);
    }

    void Check(const Node& node)
    {
        if (node.Is(Element::kPhotos)) {
            CheckFile(node, "default");
        } else if (node.Is(Element::kImage)) {
            CheckFile(node, "src");
            CheckSize(node.Get("src"), node);
        } else if (node.Is(Element::kPhoto)) {
            const auto photos = mDefaults.find(node.Get("photos"));
            if (photos != mDefaults.end()) CheckSize(photos->second, node);
        }
        for (const Node& child : node.children) Check(child);
    }

    // A path that was refused is empty.
    void CheckFile(const Node& node, const char* attribute)
    {
        const std::string& path = node.Get(attribute);
        if (path.empty()) return;
        const Asset& asset = Find(path);
        if (asset.code != nullptr)
            mFindings.Add(asset.code, node.Where(attribute), Quoted(path) + " " + asset.problem);
    }

    const Asset& Find(const std::string& path)
    {
        const auto known = mAssets.find(path);
        if (known != mAssets.end()) return known->second;
        Asset asset{"E-ASSET-MISSING", "is not there; add it to the face's folder", 0, 0};
        for (const std::string& folder : mFolders) {
            if (const auto found = Look(folder, path)) {
                asset = *found;
                break;
            }
        }
        return mAssets.emplace(path, asset).first->second;
    }

    void CheckSize(const std::string& path, const Node& node)
    {
        if (path.empty() || !node.Has("width") || !node.Has("height")) return;
        const Asset& asset = Find(path);
        // In thousandths, as the box.
        const auto exceeds = [&](int pixels, const char* side) {
            return pixels * 1000 > 2 * ParseThousandths(node.Get(side)).value_or(0);
        };
        if (asset.code != nullptr || (!exceeds(asset.width, "width") && !exceeds(asset.height, "height")))
            return;
        mFindings.Add("W-ASSET-SIZE", node.Where(),
                      Quoted(path) + " has " + std::to_string(asset.width) + " x " +
                          std::to_string(asset.height) + " pixels for a box of " + node.Get("width") + " x " +
                          node.Get("height") + "; scale it down");
    }

    const std::vector<std::string>& mFolders;
    std::map<std::string, std::string> mDefaults;  // photos -> the image that stands for them
    std::map<std::string, Asset> mAssets;
    Findings mFindings;
};

}  // namespace

std::set<std::string> AssetPaths(const FaceDocument& document)
{
    std::set<std::string> paths;
    for (const Photos& photos : document.photos) paths.insert(photos.defaultImage);
    CollectImages(document.root, paths);
    return paths;
}

std::vector<Finding> CheckAssets(std::string_view resultXml, const std::vector<std::string>& folders)
{
    Findings ignored;
    Node root;
    const auto tree = XmlTree::Load(resultXml, ignored);
    if (!tree || !ReadNodes(*tree, FaceSchema(), root, ignored)) return {};
    return AssetChecks(folders).Run(root);
}

}  // namespace DataUtil
