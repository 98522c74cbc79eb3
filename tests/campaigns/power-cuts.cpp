// Records what the service does to its files while faces are edited, and cuts the power of a model of the
// disk after each step.
//
//     power-cuts-campaign PREFIX [--rounds N] [--states N] [--databases N]
//
// N states are spread over all steps; of some of them the databases are opened by SQLite and read whole. What
// may not happen ends the campaign as failed: an answered update, an announced key, an answered or earlier
// preference that is lost, a file that was never written whole, a database that SQLite finds damaged. So does
// a recording in which nothing was promised, or which, replayed, gives other files than there are.

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>

#include "a-tried-watch.h"
#include "disk-model.h"
#include "stored-values.h"
#include "writable-path-posix.h"

namespace {

using namespace Campaign;
namespace fs = std::filesystem;

constexpr char kFaceKey[] = "file/private/com.corvane.watchface/watchface_name";
constexpr char kRequesterPreference[] = "wfs-pref-idle-change-request-from";
constexpr char kClockPreference[] = "wfs-watch-name-world-clock-update";
constexpr char kUpdate[] = "watch-setting-updated";
constexpr char kAddition[] = "watch-bg-add";
constexpr char kSuccess[] = "success";  // an answer has its question with it
constexpr char kSavedAnswer[] = "evaluation-helper-ret";
constexpr int kMostRounds = 10000;
constexpr int kInstallEvery = 8;  // rounds
constexpr int kRestartEvery = 50;
constexpr int kPictures = 5;

bool IsOfFaces(const std::string& path)
{
    return path.find("/shared/") != std::string::npos &&
           path.find(Platform::kUnfinishedPrefix) == std::string::npos;
}

bool IsOfDatabase(const std::string& path)
{
    return path.ends_with(".db") || path.ends_with(".db-wal");
}

// Round n makes the face "face-n" the current one, in the name of one of these by turns, and saves "time-n".
const Identity& RequesterOf(int round)
{
    static constexpr Identity kRequesters[] = {kManager, kEditor, kHome, kCapture};
    return kRequesters[static_cast<std::size_t>(round) % std::size(kRequesters)];
}

int RoundOf(const std::string& value)
{
    const auto dash = value.rfind('-');
    const bool isOurs = value.starts_with("face-") || value.starts_with("time-");
    return isOurs ? static_cast<int>(std::strtol(value.c_str() + dash + 1, nullptr, 10)) : 0;
}

std::string EvaluationPreference()
{
    return std::string(kEvaluator.app) + "+" + kClassicFace + "+evaluation-helper-data-duration";
}

// What the databases say.
struct Stored {
    std::string face, requester, clock, duration;
};

struct Recorded {
    FileRecorder recorder;
    std::map<std::size_t, int> rounds;  // by the event that each begins with
    DiskModel::Files files;             // that there are in the end
};

void Require(bool isDone)
{
    if (!isDone) throw std::runtime_error("the watch does not work");
}

// All below the folder, as the model has them.
DiskModel::Files FilesBelow(const std::string& folder)
{
    DiskModel::Files files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = fs::path(entry).lexically_relative(folder);
        if (!fs::is_directory(entry.symlink_status())) {
            files[path] = ContentOf(entry);
        } else if (fs::is_empty(entry)) {
            files[path];
        }
    }
    return files;
}

void RunRound(TriedWatch& watch, int round)
{
    const std::string face = "face-" + std::to_string(round);
    watch.Ask(RequesterOf(round), {
                                      {"type",  "watch-idle-changed"},
                                      {"pkgid", face                }
    });
    watch.Ask(kHome, {
                         {"type", "watch-prepare-update-world-clock"}
    });
    const Answer saved =
        watch.Ask(kEvaluator, {
                                  {"evaluation-helper-op",             "evaluation-helper-op-save-duration"},
                                  {"evaluation-helper-watchface-name", kClassicFace                        },
                                  {"evaluation-helper-data-duration",  "time-" + std::to_string(round)     }
    });
    Require(saved == Answer::kSuccess);
    const std::string preview = watch.ShippedPreview(round % 2 ? kClassicFace : kDigitalFace);
    Require(UpdateTo(watch, round, preview) == Answer::kSuccess);
    if (round % kInstallEvery == 0) {
        watch.Ask(kManager, {
                                {"type",  "watch-setting-deleted"},
                                {"pkgid", kDigitalFace           }
        });
        Require(InstallDigitalFace(watch) == Answer::kSuccess);
    }
    const std::string picture = watch.Picture("picture-" + std::to_string(round % kPictures) + ".png",
                                              "picture of round " + std::to_string(round));
    const Answer added = watch.Ask(
        kEditor, {
                     {"type",    kAddition            },
                     {"bg_type", "watch-bg-gallery-u1"},
                     {"bg_list", picture              }
    });
    Require(added == Answer::kSuccess);
    watch.Settle();
}

Recorded Record(const std::string& prefix, int rounds)
{
    TriedWatch watch(prefix);
    Require(watch.Start());
    FormerState(watch);
    watch.Stop();
    Recorded recorded{FileRecorder(watch.Root()), {}, {}};
    FileRecorder& recorder = recorded.recorder;
    std::mutex recording;  // calls come on a thread of their own
    const auto record = [&](const PendingCall& call) {
        const std::lock_guard lock(recording);
        return recorder(call);
    };
    const auto count = [&] {
        const std::lock_guard lock(recording);
        return recorder.Events().size();
    };
    Require(watch.Start(record));
    watch.Settle();
    for (int round = 1; round <= rounds; ++round) {
        recorded.rounds[count()] = round;
        RunRound(watch, round);
        if (round % kRestartEvery == 0) {  // the databases are closed and opened, too
            watch.Stop();
            Require(watch.Start(record));
            watch.Settle();
        }
    }
    watch.Stop();
    recorded.files = FilesBelow(watch.Root());
    return recorded;
}

// What must be there, event after event.
class Promises {
public:
    explicit Promises(const FileRecorder& recorder) : mContents(recorder.FirstContents())
    {
        for (const auto& [path, node] : recorder.FirstNames()) {
            if (IsOfFaces(path) && mContents.contains(node)) mVersions[path] = {mContents.at(node)};
        }
    }

    void Advance(const FileEvent& event)
    {
        switch (event.kind) {
            case FileEvent::kWrite:
                if (std::string& content = mContents[event.node]; content.size() == event.offset)
                    content += event.bytes;  // faces' files are written from their beginning to their end
                break;
            case FileEvent::kName:
                if (IsOfFaces(event.path) && mContents.contains(event.node)) {
                    mVersions[event.path].push_back(mContents[event.node]);
                    mRemoved.erase(event.path);
                }
                break;
            case FileEvent::kUnname:
                mAnswered.erase(event.path);
                mRemoved.insert(event.path);
                break;
            case FileEvent::kSaid:
                Said(event.bytes);
                break;
            default:
                break;
        }
    }

    void Begin(int round) { mRound = round; }

    // What is wrong with the files of faces; empty when nothing is.
    std::string Fault(const DiskModel::Files& files) const
    {
        for (const auto& [path, least] : mAnswered) {
            const auto file = files.find(path);
            const auto& versions = mVersions.at(path);
            const auto from = versions.begin() + static_cast<std::ptrdiff_t>(least);
            if (file == files.end() || std::find(from, versions.end(), file->second) == versions.end())
                return "an answered change is lost: " + path;
        }
        for (const auto& [path, content] : files) {
            const auto versions = mVersions.find(path);
            if (versions == mVersions.end()) continue;  // an empty folder, or no face's
            if (std::ranges::find(versions->second, content) == versions->second.end())
                return "a file is torn: " + path;
        }
        return {};
    }

    // The preference that says who asks for a face is written before the face, that of world clocks after it,
    // the duration after both.
    std::string FaultOfValues(const Stored& stored) const
    {
        const auto isOneOf = [this](int round, int least) { return round >= least && round <= mRound; };
        const int face = RoundOf(stored.face), clock = RoundOf(stored.clock);
        if (!isOneOf(face, mAnnounced)) return "an announced key is lost: " + stored.face;
        if (!isOneOf(RoundOf(stored.duration), mSaved))
            return "an answered preference is lost: " + stored.duration;
        if (!isOneOf(clock, mSaved) || clock > face) return "a preference is lost: " + stored.clock;
        for (int round = face; round <= mRound; ++round) {
            if (round == 0 || stored.requester == RequesterOf(round).app) return {};
        }
        return "a preference is lost: " + stored.requester;
    }

    // Why it is not that everything was promised in this many rounds; empty when it was.
    std::string Missing(int rounds) const
    {
        if (mUpdated != rounds) return "the last update was not answered";
        if (mAdded != rounds) return "the last picture was not answered";
        if (mAnnounced != rounds) return "the last key was not announced";
        if (mSaved != rounds) return "the last preference was not answered";
        return {};
    }

private:
    void Said(const std::string& message)
    {
        const auto has = [&message](const char* text) { return message.find(text) != std::string::npos; };
        if (has(kSuccess)) Answered();
        if (has(kSuccess) && has(kUpdate)) mUpdated = mRound;
        if (has(kSuccess) && has(kAddition)) mAdded = mRound;
        if (has(kFaceKey)) mAnnounced = mRound;
        if (has(kSavedAnswer)) mSaved = mRound;
    }

    void Answered()
    {
        for (const auto& [path, versions] : mVersions) {
            if (!mRemoved.contains(path)) mAnswered[path] = versions.size() - 1;
        }
    }

    std::map<Node, std::string> mContents;
    std::map<std::string, std::vector<std::string>> mVersions;  // of each path, whole
    std::map<std::string, std::size_t> mAnswered;               // the oldest version that may be there
    std::set<std::string> mRemoved;
    int mUpdated = 0, mAdded = 0, mAnnounced = 0, mSaved = 0;  // the last round that it was in
    int mRound = 0;
};

class Cutter {
public:
    Cutter(const Recorded& recorded, long states, long databases)
        : mRecorded(recorded), mStates(states), mDatabases(databases)
    {
    }

    bool Run()
    {
        DiskModel disk(mRecorded.recorder);
        Promises promises(mRecorded.recorder);
        const auto& events = mRecorded.recorder.Events();
        const long count = static_cast<long>(events.size());
        for (long i = 0; i < count; ++i) {
            const auto round = mRecorded.rounds.find(static_cast<std::size_t>(i));
            if (round != mRecorded.rounds.end()) promises.Begin(round->second);
            disk.Advance(events[static_cast<std::size_t>(i)]);
            promises.Advance(events[static_cast<std::size_t>(i)]);
            // As many as there are to be up to here.
            for (; mTried < mStates * (i + 1) / count; ++mTried) CutFiles(disk, promises, i);
            for (; mOpened < mDatabases * (i + 1) / count; ++mOpened) CutDatabases(disk, promises, i);
        }
        Note(promises.Missing(static_cast<int>(mRecorded.rounds.size())), count);
        CompareWithFolder(disk.Whole());
        for (const std::string& call : mRecorded.recorder.Unrecorded())
            Note("what this changes is not recorded: " + call, count);
        return mFaults == 0;
    }

    long Leftovers() const { return mLeftovers; }

private:
    // The memory that a database shares is written by no call.
    void CompareWithFolder(DiskModel::Files replayed)
    {
        DiskModel::Files real = mRecorded.files;
        const auto isShared = [](const auto& file) { return file.first.ends_with("-shm"); };
        std::erase_if(replayed, isShared);
        std::erase_if(real, isShared);
        const long end = static_cast<long>(mRecorded.recorder.Events().size());
        for (const auto& [path, content] : real) {
            const auto file = replayed.find(path);
            if (file == replayed.end() || file->second != content) Note("replayed, it differs: " + path, end);
        }
        for (const auto& [path, content] : replayed) {
            if (!real.contains(path)) Note("it is not there: " + path, end);
        }
    }

    void CutFiles(const DiskModel& disk, const Promises& promises, long event)
    {
        const DiskModel::Files files = disk.CutPower(mRandom, IsOfFaces);
        Note(promises.Fault(files), event);
        mLeftovers += std::ranges::count_if(files, [](const auto& file) {
            return file.first.find(Platform::kUnfinishedPrefix) != std::string::npos;
        });
    }

    void CutDatabases(const DiskModel& disk, const Promises& promises, long event)
    {
        for (const auto& [path, content] : disk.CutPower(mRandom, IsOfDatabase)) {
            const fs::path place = mFolder.Path() + "/" + path;
            if (!IsOfDatabase(path)) continue;
            fs::create_directories(place.parent_path());
            std::ofstream(place, std::ios::binary) << content;
        }
        try {
            Note(promises.FaultOfValues(Read()), event);
        } catch (const std::runtime_error& error) {
            Note(error.what(), event);
        }
        for (const auto& entry : fs::directory_iterator(mFolder.Path())) fs::remove_all(entry);
    }

    Stored Read()
    {
        return {ValueOf(kKeys, kFaceKey), ValueOf(kPreferences, kRequesterPreference),
                ValueOf(kPreferences, kClockPreference), ValueOf(kPreferences, EvaluationPreference())};
    }

    std::string ValueOf(const Store& store, const std::string& key)
    {
        const std::string path = mFolder.Path() + "/" + store.path;
        const std::string fault = FaultInDatabase(path);
        if (!fault.empty()) throw std::runtime_error(path + ": " + fault);
        return StoredValues(path)[key];
    }

    void Note(const std::string& fault, long event)
    {
        if (fault.empty()) return;
        if (++mFaults <= 20) std::printf("! power cut after step %ld: %s\n", event, fault.c_str());
    }

    const Recorded& mRecorded;
    const long mStates, mDatabases;
    long mTried = 0, mOpened = 0, mFaults = 0, mLeftovers = 0;
    std::mt19937 mRandom{20};
    TestSupport::TemporaryFolder mFolder{"/dev/shm"};
};

int Run(const std::string& prefix, int rounds, long states, long databases)
{
    const Recorded recorded = Record(prefix, rounds);
    const auto begin = TestSupport::Clock::now();
    Cutter cutter(recorded, states, databases);
    const bool isClean = cutter.Run();
    const double seconds = TestSupport::Microseconds(TestSupport::Clock::now() - begin) / 1e6;
    std::printf(
        "%d rounds of %zu steps: %ld states, of %ld the databases opened, in %.1f s; "
        "an unfinished file in %ld states\n",
        rounds, recorded.recorder.Events().size(), states, databases, seconds, cutter.Leftovers());
    return isClean ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App parser("Cuts the power of a modelled disk under a service of its own.");
    std::string prefix;
    int rounds = 10;
    long states = 5000, databases = 500;
    parser.add_option("prefix", prefix, "a build tree")->required();
    parser.add_option("--rounds", rounds, "of edits that are recorded")
        ->check(CLI::Range(1, kMostRounds))
        ->capture_default_str();
    parser.add_option("--states", states, "of the disk that are looked at")->capture_default_str();
    parser.add_option("--databases", databases, "more, whose databases are opened")->capture_default_str();
    CLI11_PARSE(parser, argc, argv);
    if (!CanGatePrograms()) {
        std::printf("left out: system calls cannot be watched here\n");
        return kSkipped;
    }
    try {
        return Run(prefix, rounds, states, databases);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "power-cuts: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
