#include "disk-model.h"

#include <algorithm>

namespace Campaign {

namespace {

constexpr std::size_t kSector = 512;

std::string FolderOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

}  // namespace

DiskModel::DiskModel(const FileRecorder& recorder)
    : mNames(recorder.FirstNames()), mContents(recorder.FirstContents()), mLatestNames(mNames)
{
}

void DiskModel::Advance(const FileEvent& event)
{
    switch (event.kind) {
        case FileEvent::kName:
        case FileEvent::kUnname:
            mPendingNames.push_back(event);
            if (event.kind == FileEvent::kUnname) mPendingNames.back().node = mLatestNames[event.path];
            Rename(event, mLatestNames);
            break;
        case FileEvent::kWrite:
        case FileEvent::kCut:
            mPendingBytes[event.node].push_back(event);
            break;
        case FileEvent::kSync: {
            for (const FileEvent& write : mPendingBytes[event.node]) Write(write, mContents[event.node]);
            mPendingBytes.erase(event.node);
            std::size_t done = mPendingNames.size();
            while (done > 0 && !Concerns(mPendingNames[done - 1], event.node)) --done;
            for (std::size_t i = 0; i < done; ++i) Rename(mPendingNames[i], mNames);
            mPendingNames.erase(mPendingNames.begin(),
                                mPendingNames.begin() + static_cast<std::ptrdiff_t>(done));
            break;
        }
        case FileEvent::kSaid:
            break;
    }
}

// Whether it changes the file or folder itself.
bool DiskModel::Concerns(const FileEvent& name, Node node) const
{
    const auto isFolderOf = [&](const std::string& path) {
        const auto folder = mLatestNames.find(FolderOf(path));
        return folder != mLatestNames.end() && folder->second == node;
    };
    return name.node == node || isFolderOf(name.path) || (!name.moved.empty() && isFolderOf(name.moved));
}

void DiskModel::Rename(const FileEvent& event, std::map<std::string, Node>& names)
{
    if (!event.moved.empty()) names.erase(event.moved);
    if (event.kind == FileEvent::kName) {
        names[event.path] = event.node;
    } else {
        names.erase(event.path);
    }
}

void DiskModel::Write(const FileEvent& event, std::string& content)
{
    if (event.kind == FileEvent::kCut) {
        content.resize(event.offset);
        return;
    }
    content.resize(std::max<std::size_t>(content.size(), event.offset + event.bytes.size()));
    std::ranges::copy(event.bytes, content.begin() + static_cast<std::ptrdiff_t>(event.offset));
}

// A part of it, sector by sector of the file.
void DiskModel::WriteSome(const FileEvent& event, std::mt19937& random, std::string& content)
{
    for (std::size_t at = 0; at < event.bytes.size();) {
        const std::size_t end = std::min(event.bytes.size(), at + kSector - (event.offset + at) % kSector);
        if (random() % 2) {
            FileEvent part = event;
            part.offset += at;
            part.bytes = event.bytes.substr(at, end - at);
            Write(part, content);
        }
        at = end;
    }
}

std::string DiskModel::SyncedContentOf(Node node) const
{
    const auto synced = mContents.find(node);
    return synced == mContents.end() ? std::string() : synced->second;
}

std::string DiskModel::WholeContentOf(Node node) const
{
    std::string content = SyncedContentOf(node);
    const auto pending = mPendingBytes.find(node);
    if (pending == mPendingBytes.end()) return content;
    for (const FileEvent& write : pending->second) Write(write, content);
    return content;
}

std::string DiskModel::ContentOf(Node node, std::mt19937& random) const
{
    std::string content = SyncedContentOf(node);
    const auto pending = mPendingBytes.find(node);
    if (pending == mPendingBytes.end()) return content;
    enum { kAll, kNone, kSome, kLengthOnly, kWays };
    const auto way = random() % kWays;
    for (const FileEvent& write : pending->second) {
        if (way == kAll) Write(write, content);
        if (way == kSome) WriteSome(write, random, content);
        if (way == kLengthOnly && write.kind == FileEvent::kWrite)
            content.resize(std::max<std::size_t>(content.size(), write.offset + write.bytes.size()));
    }
    return content;
}

DiskModel::Files DiskModel::FilesOf(
    const std::map<std::string, Node>& names,
    const std::function<std::string(const std::string& path, Node)>& content) const
{
    Files files;
    for (const auto& [path, node] : names) {
        const bool hasBytes = mContents.contains(node) || mPendingBytes.contains(node);
        const auto below = names.lower_bound(path + "/");
        const bool isFolder = !hasBytes && below != names.end() && below->first.starts_with(path + "/");
        if (!isFolder && !path.empty()) files[path] = content(path, node);
    }
    return files;
}

DiskModel::Files DiskModel::Whole() const
{
    return FilesOf(mLatestNames, [this](const std::string&, Node node) { return WholeContentOf(node); });
}

DiskModel::Files DiskModel::CutPower(std::mt19937& random, const Wanted& isWanted) const
{
    std::map<std::string, Node> names = mNames;
    const std::size_t reached = random() % (mPendingNames.size() + 1);
    for (std::size_t i = 0; i < reached; ++i) Rename(mPendingNames[i], names);
    return FilesOf(names, [&](const std::string& path, Node node) {
        return isWanted(path) ? ContentOf(node, random) : std::string();
    });
}

}  // namespace Campaign
