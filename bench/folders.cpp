// What the service does with every face of the read/write area, in growing areas. Times are those of one
// face, so that they stay the same where the whole grows in a straight line.

#include <dirent.h>
#include <expat.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <pugixml.hpp>
#include <stdexcept>

#include "folder-listing.h"
#include "groups.h"
#include "service-watchface-manager.h"

namespace Bench {

namespace {

namespace fs = std::filesystem;
using WatchfaceService::WatchfaceManager;

constexpr int kSmallest = 10;
// A backup is sent at once: one of 10,000 faces (160 MB) is more than the 32 MiB that the bus keeps for an
// agent who reads more slowly than the service writes, as all do on one processor.
constexpr int kMostForBackup = 1000;
constexpr int kFacesASample = 2000;  // or the whole area, once
constexpr char kSender[] = "com.example.sender";
constexpr char kFinished[] = "backup_finished";

std::string NameOf(int number)
{
    char name[32];
    std::snprintf(name, sizeof name, "com.example.face-%05d", number);
    return name;
}

void MakeFaces(const std::string& folder, int from, int to, const std::string& resultXml)
{
    for (int i = from; i < to; ++i) {
        fs::create_directories(folder + NameOf(i));
        std::ofstream(folder + NameOf(i) + "/" + NameOf(i) + "_result.xml") << resultXml;
    }
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// The names in a folder, in order: what a list of faces is at least.
std::vector<std::string> NamesIn(DIR* folder)
{
    std::vector<std::string> names;
    while (const dirent* entry = readdir(folder)) {
        if (*entry->d_name != '.') names.emplace_back(entry->d_name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::unique_ptr<DIR, CloseFolder> OpenFolder(const std::string& path)
{
    std::unique_ptr<DIR, CloseFolder> folder(opendir(path.c_str()));
    if (!folder) throw std::runtime_error("no folder " + path);
    return folder;
}

// Calls `each` with the folder's descriptor and each face's name, and place and size of its result XML.
template <typename Each>
void ForEachFace(const std::string& path, const Each& each)
{
    const auto folder = OpenFolder(path);
    for (const std::string& name : NamesIn(folder.get())) {
        const std::string place = name + "/" + name + "_result.xml";
        struct stat status {};
        if (fstatat(dirfd(folder.get()), place.c_str(), &status, 0) == 0)
            each(dirfd(folder.get()), name, place, status.st_size);
    }
}

std::string ReadAt(int folder, const std::string& place, off_t size)
{
    std::string text(static_cast<std::size_t>(size), '\0');
    const int file = openat(folder, place.c_str(), O_RDONLY);
    if (read(file, text.data(), text.size()) != size) throw std::runtime_error("no file " + place);
    close(file);
    return text;
}

void ReadXml(const std::string& text)
{
    XML_Parser parser = XML_ParserCreate("UTF-8");
    const auto status = XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE);
    XML_ParserFree(parser);
    pugi::xml_document tree;
    if (status != XML_STATUS_OK || !tree.load_buffer(text.data(), text.size()))
        throw std::runtime_error("no XML");
}

std::string BackupItem(const std::string& fromApp, const std::string& name, const std::string& text)
{
    return PortMessage(kBackupAgent, kBackupAgentPort, fromApp, "",
                       {
                           {"type",            "watch-setting-backup"},
                           {"pkgid",           name                  },
                           {"data/result_xml", text                  }
    });
}

// A process that lists, reads and sends the same bytes whenever it gets a message.
pid_t StartSender(const Watch& watch)
{
    const pid_t pid = fork();
    if (pid != 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    RawBus bus(watch.Address());
    bus.RequestName(kSender);
    const std::string finished = PortMessage(kBackupAgent, kBackupAgentPort, kSender, "",
                                             {
                                                 {"message", kFinished}
    });
    for (;;) {
        if (bus.Next().Text(0) != "sender") continue;
        ForEachFace(watch.FacesFolder(),
                    [&](int at, const std::string& name, const std::string& place, off_t size) {
                        bus.Send(BackupItem(kSender, name, ReadAt(at, place, size)));
                    });
        bus.Send(finished);
    }
}

double TimeOfBackup(Watch& watch, const std::string& request)
{
    return TimeOf([&] {
        watch.Peers().Send(request);
        for (;;) {
            const RawBus::Message message = watch.Peers().Next();
            if (message.Text(0) == kBackupAgentPort && message.body.size() < 1000 &&
                message.body.find(kFinished) != std::string_view::npos)
                return;
        }
    });
}

// The figures of one size of the area.
class Area {
public:
    Area(Watch& watch, int faces) : mWatch(watch), mFaces(faces) {}

    Figures Measure()
    {
        const std::string folder = mWatch.FacesFolder();
        WatchfaceManager manager;
        mFigures.push_back(Compare(
            "list", "readdir, in order", [&] { WatchfaceService::ListFolder(folder); },
            [&] { NamesIn(OpenFolder(folder).get()); }));
        mFigures.push_back(Compare(
            "scan", "readdir, in order, fstatat",
            [&] {
                WatchfaceManager::WatchfaceMap found;
                manager.ScanWatchfaces(found, true);
                if (static_cast<int>(found.size()) < mFaces) throw std::runtime_error("faces are missing");
            },
            [&] { ForEachFace(folder, [](int, const auto&, const auto&, off_t) {}); }));
        mFigures.push_back(Compare(
            "check", "readdir, in order, fstatat, reading the same bytes, as XML",
            [&] {
                for (int i = 0; i < mFaces; ++i) manager.HasLimitedComplication(NameOf(i), true);
            },
            [&] {
                ForEachFace(folder, [](int at, const auto&, const std::string& place, off_t size) {
                    ReadXml(ReadAt(at, place, size));
                });
            }));
        if (mFaces <= kMostForBackup) mFigures.push_back(BackUp());
        return mFigures;
    }

private:
    template <typename Ours, typename Floor>
    Figure Compare(const char* what, const char* floorIs, const Ours& ours, const Floor& floor)
    {
        Figure figure = NewFigure(what, floorIs);
        for (int i = 0; i < std::max(kFacesASample / mFaces, 3); ++i) {
            figure.ours.push_back(TimeOf(ours) / mFaces);
            figure.floor.push_back(TimeOf(floor) / mFaces);
        }
        return figure;
    }

    Figure NewFigure(const std::string& what, const char* floorIs) const
    {
        return {
            what + " " + std::to_string(mFaces) + " faces, each", "us", {}, {}, floorIs, AtMostTimes(1.3)};
    }

    Figure BackUp()
    {
        const std::string toService = PortMessage(kService, kServicePort, kBackupAgent, kBackupAgentPort,
                                                  {
                                                      {"operation", "corvane_cloud_backup"}
        });
        const std::string toSender = PortMessage(kSender, "sender", kBackupAgent, kBackupAgentPort, {});
        Figure figure = NewFigure("back up", "readdir, in order, fstatat, reading, the bus");
        for (int i = 0; i < 5; ++i) {
            figure.ours.push_back(TimeOfBackup(mWatch, toService) / mFaces);
            figure.floor.push_back(TimeOfBackup(mWatch, toSender) / mFaces);
        }
        return figure;
    }

    Watch& mWatch;
    const int mFaces;
    Figures mFigures;
};

}  // namespace

Figures Folders(Watch& watch, const Choices& choices)
{
    watch.Service();
    const std::string resultXml = ReadFile(watch.ShippedFile("_result.xml"));
    fs::create_directories(watch.FacesFolder());
    const pid_t sender = StartSender(watch);
    Figures all;
    for (int faces = kSmallest, before = 0; faces <= choices.mostFaces;
         before = std::exchange(faces, 10 * faces)) {
        MakeFaces(watch.FacesFolder(), before, faces, resultXml);
        for (Figure& figure : Area(watch, faces).Measure()) all.push_back(std::move(figure));
    }
    kill(sender, SIGKILL);
    waitpid(sender, nullptr, 0);
    return all;
}

}  // namespace Bench
