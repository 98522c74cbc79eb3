#include "path-stage.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "bus-names.h"
#include "stored-values.h"

namespace Campaign {

namespace {

namespace fs = std::filesystem;
using TestSupport::Body;
using TestSupport::Clock;
using TestSupport::Header;
using namespace std::chrono_literals;

constexpr char kNeighbour[] = "neighbour";  // in each home; nobody speaks of it
constexpr auto kPatience = 20s;

void WriteFile(const fs::path& path, const std::string& content)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

// What the service has been told of a world clock by an application that keeps one.
void StoreWorldClock(const std::string& preferences)
{
    const std::string face = kWorldClock;
    std::string sql;
    for (const char* field : {"timezonePath", "timezone", "city", "country"})
        sql += "INSERT INTO value VALUES (CAST('" + face + "-city-" + field + "' AS BLOB), 0, x'41');";
    sql += "INSERT INTO value VALUES (CAST('" + face + "-city-updatedMode' AS BLOB), 1, 1);";
    Execute(preferences, sql);
}

std::string Content(const fs::path& path)
{
    const fs::file_status status = fs::symlink_status(path);
    if (fs::is_symlink(status)) return "link to " + fs::read_symlink(path).string();
    if (fs::is_regular_file(status)) return "file " + TestSupport::ReadFile(path);
    return fs::is_directory(status) ? "folder" : "something else";
}

void PlantLink(const fs::path& link, const std::string& target)
{
    if (fs::is_symlink(link) && fs::read_symlink(link) == target) return;
    fs::create_directories(link.parent_path());
    fs::remove_all(link);
    fs::create_symlink(target, link);
}

}  // namespace

PathStage::PathStage(const RunningService& service) : mService(service)
{
    for (const Identity& identity : {kManager, kEditor, kHome, kCapture, kBackupAgent, kWorldClockMap})
        mPeers[identity.app] = service.Connect(identity);
    mPeers[kFace.app] = service.Connect(kFace, false);
    for (const char* name : {"harmless.png", "kept", "link", "planted.png", "folder/in-it"})
        WriteFile(mSources.Path() + "/" + name, std::string("the picture ") + name);
    SetOut();
    // Both databases are there before anything is compared.
    Say(kHome, {
                   {"type",  "watch-idle-changed"},
                   {"pkgid", kWorldClock         }
    });
    StoreWorldClock(At(kPreferences.path));
    mBefore = Look();
}

void PathStage::SetOut() const
{
    // What the links lead to looks like a face and like pictures.
    const std::string document = ShippedDocument(kWorldClock);
    for (const char* file : {"/link_result.xml", "/x/link/x_result.xml", "/kept"})
        WriteFile(Canary() + file, document);
    for (const fs::path home : kHomes) {
        WriteFile(At(home) + "/" + kNeighbour + "/kept", "a neighbour's");
        // In each folder above there is something that the paths name.
        for (fs::path above = home.parent_path(); !above.empty(); above = above.parent_path()) {
            for (const char* name : {"escaped", "ESCAPED"})
                WriteFile(At(above) + "/" + name + "/kept", "what lies elsewhere");
        }
    }
}

PathStage::Reply PathStage::Say(const Identity& from, const Values& values)
{
    if (from.app != std::string(kFace.app)) return Await(from, ToService(from, values));
    return Await(from,
                 TestSupport::PortMessage(kService, kEvaluationPort, from.app, from.port, values, false));
}

PathStage::Reply PathStage::SayWithArray(const Identity& from, const Values& values,
                                         const std::string& arrayKey)
{
    Body body;
    for (const char* text : {kServicePort, from.app, from.port}) body.Text(text);
    body.Array([&] {
        for (const auto& [key, value] : values) {
            const bool isArray = key == arrayKey;
            body.Align(8);
            body.Text(key);
            body.Signature(isArray ? "as" : "s");
            Body array;
            array.Text(value);
            isArray ? body.Bytes(array.Layout()) : body.Text(value);
        }
    });
    return Await(from, TestSupport::Layout({Header::kCall, kService, Platform::kPortPath,
                                            Platform::kPortInterface, "SendTrusted", "sssa{sv}"},
                                           body));
}

PathStage::Reply PathStage::Await(const Identity& from, const std::string& message)
{
    RawBus& bus = *mPeers.at(from.app);
    const uint32_t call = bus.Call(message);
    Reply reply;
    for (;;) {
        const RawBus::Message said = bus.Next();
        if (said.type == Header::kCall) {
            for (const char* key : {"status", "evaluation-helper-ret"}) {
                if (const auto value = said.Value(key); !value.empty()) reply.status = value;
            }
        }
        if (said.replyTo != call) continue;
        reply.isTaken = said.type == Header::kReply;
        return reply;
    }
}

bool PathStage::IsAskedFor(const std::string& face)
{
    RawBus& capture = *mPeers.at(kCapture.app);
    for (const auto deadline = Clock::now() + kPatience; Clock::now() < deadline;) {
        if (capture.HasNext(10ms) && capture.Next().Value("pkgName") == face) return true;
    }
    return false;
}

void PathStage::Settle()
{
    RunningService::AnswerTime(*mPeers.at(kManager.app));
}

std::string PathStage::At(const std::string& pathBelowRoot) const
{
    return mService.Root() + "/" + pathBelowRoot;
}

std::string PathStage::Canary() const
{
    return At("canary");
}

std::string PathStage::InSources(const std::string& path) const
{
    constexpr std::string_view kName = "SOURCES";
    std::string text = path;
    if (const auto at = text.find(kName); at != std::string::npos)
        text.replace(at, kName.size(), mSources.Path());
    return text;
}

std::string PathStage::ShippedPreview(const std::string& face) const
{
    return mService.ShippedFaces() + face + "/" + face + ".png";
}

std::string PathStage::ShippedDocument(const std::string& face) const
{
    return TestSupport::ReadFile(mService.ShippedFaces() + face + "/" + face + "_result.xml");
}

std::size_t PathStage::LogSize() const
{
    return fs::file_size(At("log"));
}

std::string PathStage::LogFrom(std::size_t offset) const
{
    std::ifstream log(At("log"));
    log.seekg(static_cast<std::streamoff>(offset));
    return {std::istreambuf_iterator<char>(log), {}};
}

void PathStage::Plant() const
{
    for (const char* home : kHomes) {
        for (const char* name : {"/link", "/LINK"}) PlantLink(At(home) + name, Canary());
        PlantLink(At(home) + "/planted.png", Canary() + "/kept");
    }
    PlantLink(At(kGalleries) + "/U1/link", Canary());
    PlantLink(At(kGalleries) + "/U1/planted.png", Canary() + "/kept");
    for (const char* file : {"planted_result.xml", "watchface.xml", "planted.png"})
        PlantLink(At(kFaces) + "/planted/" + file, Canary() + "/kept");
}

void PathStage::PutFolderForLink(const std::string& path) const
{
    fs::remove(path);
    fs::create_directories(path);
}

void PathStage::Clear(const char* home) const
{
    std::vector<fs::path> others;
    for (const auto& entry : fs::directory_iterator(At(home))) {
        if (entry.path().filename() != kNeighbour) others.push_back(entry);
    }
    for (const fs::path& other : others) fs::remove_all(other);
}

// Of the homes only the neighbours may not; databases are compared by their rows.
bool PathStage::MayChange(const std::string& path) const
{
    const auto isIn = [&](const char* home) {
        return path.starts_with(At(home) + "/") && !path.starts_with(At(home) + "/" + kNeighbour);
    };
    return std::ranges::any_of(kHomes, isIn) || path.find(".db") != std::string::npos || path == At("log") ||
           path == At("common/locks");
}

PathStage::Snapshot PathStage::Look() const
{
    Snapshot snapshot;
    for (const std::string& folder : {mService.Root(), mSources.Path()}) {
        for (fs::recursive_directory_iterator at(folder), end; at != end; ++at) {
            if (MayChange(at->path())) {
                at.disable_recursion_pending();
            } else {
                snapshot[at->path()] = Content(at->path());
            }
        }
    }
    for (const std::string& above : {mService.Root() + "/..", mSources.Path() + "/..", std::string(),
                                     std::string("/etc"), fs::current_path().string()}) {
        for (const char* name : {"/escaped", "/ESCAPED", "/planted", "/watchlist", "/theme"}) {
            if (fs::symlink_status(above + name).type() != fs::file_type::not_found)
                snapshot[above + name] = Content(above + name);
        }
    }
    for (const Store& store : kStores) {
        for (const auto& [key, value] : StoredValues(At(store.path)))
            snapshot[store.label + key + " = " + value];
    }
    return snapshot;
}

std::vector<std::string> PathStage::Changes(const Snapshot& before, const Snapshot& now)
{
    std::vector<std::string> changes;
    for (const auto& [path, content] : before) {
        const auto found = now.find(path);
        if (found == now.end() || found->second != content) changes.push_back(path);
    }
    for (const auto& [path, content] : now) {
        if (!before.contains(path)) changes.push_back(path);
    }
    return changes;
}

int PathStage::CountChanges(const std::vector<std::string>& rows)
{
    Snapshot now = Look();
    int count = 0;
    for (const std::string& change : Changes(mBefore, now)) {
        const auto begins = [&](const std::string& row) { return change.starts_with(row); };
        if (std::ranges::any_of(rows, begins)) continue;
        std::fprintf(stderr, "  changed: %.200s\n", change.c_str());
        ++count;
    }
    mBefore = std::move(now);
    return count;
}

}  // namespace Campaign
