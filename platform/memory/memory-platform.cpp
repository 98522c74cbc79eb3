#include "memory-platform.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "application-table.h"
#include "areas.h"
#include "log-format.h"
#include "platform-state.h"

namespace MemoryPlatform {

namespace {

namespace fs = std::filesystem;

std::atomic<State*> gCurrent = nullptr;

// In memory unless TMPDIR says otherwise: the file layer syncs what it writes, and a disk takes 25 ms for
// that.
fs::path TemporaryFolder()
{
    const fs::path memory = "/dev/shm";
    return !getenv("TMPDIR") && access(memory.c_str(), W_OK) == 0 ? memory : fs::temp_directory_path();
}

// One folder a process, so that a path which the code under test keeps for ever stays right.
class Folder {
public:
    Folder()
    {
        std::string name = (TemporaryFolder() / "memory-platform-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        mPath = name;
    }
    ~Folder()
    {
        std::error_code ignored;
        fs::remove_all(mPath, ignored);
    }
    const std::string& Path() const { return mPath; }
    // Folders that a test made unwritable are emptied too.
    void Empty() const
    {
        const auto options = fs::directory_options::skip_permission_denied;
        for (fs::recursive_directory_iterator it(mPath, options), end; it != end; ++it) {
            std::error_code ignored;
            if (it->is_directory() && !it->is_symlink()) {
                fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
            }
        }
        for (const auto& entry : fs::directory_iterator(mPath)) fs::remove_all(entry.path());
    }

private:
    std::string mPath;
};

const Folder& TheFolder()
{
    static const Folder folder;
    return folder;
}

std::string Converted(const std::string& text)
{
    return "<watchface>" + text + "</watchface>";
}

DataLibrary::Text ConvertedFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    return Converted({std::istreambuf_iterator<char>(file), {}});
}

DataLibrary DefaultData()
{
    DataLibrary data;
    data.convert = [](const std::string& text) {
        return text.empty() ? std::nullopt : DataLibrary::Text(Converted(text));
    };
    data.hasLimited = [](const std::string&, const char*) { return false; };
    data.removeLimited = [](const std::string& path, const char*) { return ConvertedFile(path); };
    data.updateWorldClock = [](const std::string& path, const WorldClock&) { return ConvertedFile(path); };
    data.serialize = [](const std::string&) { return std::nullopt; };
    data.items = [](const std::string&) { return std::nullopt; };
    return data;
}

void Replace(std::string& path, const std::string& prefix, const char* shown)
{
    if (path.starts_with(prefix)) path.replace(0, prefix.size(), shown);
}

Strings TextsOf(const std::vector<LogLine>& lines, int priority)
{
    Strings texts;
    for (const LogLine& line : lines) {
        if (line.priority == priority) texts.push_back(line.message);
    }
    return texts;
}

}  // namespace

State* Current()
{
    return gCurrent;
}

void Note(const std::string& text)
{
    if (State* state = Current()) state->record->Note(text);
}

std::optional<int> Use(const std::string& function)
{
    State* state = Current();
    return state ? state->record->Use(function) : std::nullopt;
}

std::string Shown(const std::string& path)
{
    const State* state = Current();
    if (!state) return path;
    std::string shown = path;
    const ::Platform::Areas areas{state->root, state->resources};
    const std::string faces(::Platform::kFacesId);
    Replace(shown, areas.DataOf(faces), "RW:");
    Replace(shown, areas.TrustedOf(faces), "TRUSTED:");
    Replace(shown, areas.ResourceOf(faces), "RO:");
    Replace(shown, state->root + "/", "ROOT:");
    Replace(shown, state->resources + "/", "RES:");
    return shown;
}

Platform::Platform() : mState(std::make_unique<State>())
{
    if (gCurrent) throw std::logic_error("a Platform exists already");
    const fs::path folder = TheFolder().Path();
    TheFolder().Empty();
    mState->root = folder / "root";
    mState->resources = folder / "resources";
    fs::create_directories(mState->root);
    fs::create_directories(mState->resources);
    ::Platform::SetAreas({mState->root, mState->resources});
    mState->settings = {"en_GB", "en_GB", "Europe/London", true};
    mState->data = DefaultData();
    gCurrent = mState.get();
}

Platform::~Platform()
{
    mState->record->ReleaseAll();
    // What still waits goes while its Platform is there: it may own requests that are answered at their end.
    mState->loop.Clear();
    mState->waitingReplies.clear();
    for (const app_control_h clone : mState->clones) delete clone;
    for (const app_event_handler_h handler : mState->eventHandlers) delete handler;
    gCurrent = nullptr;
    TheFolder().Empty();
}

std::string Platform::Root() const
{
    return mState->root;
}
std::string Platform::Resources() const
{
    return mState->resources;
}

std::string Platform::RW(const std::string& path) const
{
    return ::Platform::CurrentAreas().DataOf(std::string(::Platform::kFacesId)) + path;
}

std::string Platform::RO(const std::string& path) const
{
    return ::Platform::CurrentAreas().ResourceOf(std::string(::Platform::kFacesId)) + path;
}

std::string Platform::Trusted(const std::string& path) const
{
    return ::Platform::CurrentAreas().TrustedOf(std::string(::Platform::kFacesId)) + path;
}

void Platform::WriteFile(const std::string& path, const std::string& content) const
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

std::optional<std::string> Platform::ReadFile(const std::string& path) const
{
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    return std::string{std::istreambuf_iterator<char>(file), {}};
}

bool Platform::Exists(const std::string& path) const
{
    return fs::exists(fs::symlink_status(path));
}

Strings Platform::Tree(const std::string& path) const
{
    Strings names;
    if (!fs::is_directory(path)) return names;
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        names.push_back(fs::relative(entry.path(), path).string() + (entry.is_directory() ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
}

Strings Platform::Calls(const Strings& prefixes, Where where) const
{
    Strings texts;
    for (Call& call : mState->record->Calls(prefixes, where)) texts.push_back(std::move(call.text));
    return texts;
}

std::vector<Call> Platform::CallsWithThreads() const
{
    return mState->record->Calls({}, kAnyThread);
}
Strings Platform::Timeline(Where where) const
{
    return mState->record->Timeline(where);
}

void Platform::Forget()
{
    mState->record->Forget();
    mState->sent.clear();
    mState->survey.clear();
    const std::lock_guard lock(mState->launchMutex);
    mState->launches.clear();
}

std::vector<LogLine> Platform::Logs(const std::string& tag) const
{
    return mState->record->Logs(tag);
}

Strings Platform::LogTexts(const std::string& tag, Where where) const
{
    Strings texts;
    for (const LogLine& line : Logs(tag)) {
        if (where != kAnyThread && (where == kMainThread) != (line.thread == 0)) continue;
        texts.push_back(std::string{::Platform::PriorityLetter(line.priority), ' '} + line.message);
    }
    return texts;
}

Strings Platform::Errors() const
{
    return TextsOf(Logs(), DLOG_ERROR);
}
Strings Platform::Infos() const
{
    return TextsOf(Logs(), DLOG_INFO);
}
void Platform::SetLogFilter(const std::string& name)
{
    mState->logFilter = name;
}

Strings Platform::PrintedLog() const
{
    Strings lines;
    const int threshold = ::Platform::PriorityThreshold(mState->logFilter);
    for (const LogLine& line : mState->record->AllLogs()) {
        if (line.priority < threshold || threshold == DLOG_SILENT) continue;
        lines.push_back(std::string{::Platform::PriorityLetter(line.priority), '/'} + line.tag + "(" +
                        std::to_string(getpid()) + "): " + ::Platform::LogText(line.text));
    }
    return lines;
}

void Platform::ScriptAreaPath(const std::string& function, const std::string& path)
{
    mState->areaPaths[function] = path;
}

void Platform::Fail(const std::string& function, Failure failure)
{
    mState->record->Fail(function, failure);
}
int Platform::Uses(const std::string& function) const
{
    return mState->record->Uses(function);
}
void Platform::Hold(const std::string& function)
{
    mState->record->Hold(function);
}
void Platform::Release(const std::string& function)
{
    mState->record->Release(function);
}

bool Platform::WaitUntilHeld(const std::string& function, double deadline)
{
    return mState->record->WaitUntilHeld(function, deadline);
}

bool Platform::WaitForCall(const std::string& prefix, int count, double deadline)
{
    return mState->record->WaitForCall(prefix, count, deadline);
}

bool Platform::WaitForLog(const std::string& message, int count, double deadline)
{
    return mState->record->WaitForLog(message, count, deadline);
}

bool Platform::WaitForWorkersEnd(int started, double deadline)
{
    return mState->record->WaitForWorkersEnd(started, deadline);
}

double Platform::Now() const
{
    return VirtualLoop::ToSeconds(mState->loop.Now());
}
bool Platform::RunTurn()
{
    return mState->loop.RunTurn();
}
void Platform::RunUntilIdle()
{
    mState->loop.RunUntilIdle();
}
void Platform::Advance(double seconds)
{
    mState->loop.Advance(VirtualLoop::FromSeconds(seconds));
}
void Platform::Post(std::function<void()> task)
{
    mState->loop.Post(std::move(task));
}

std::optional<double> Platform::NextTimer() const
{
    const auto next = mState->loop.NextTimer();
    if (!next) return std::nullopt;
    return VirtualLoop::ToSeconds(*next - mState->loop.Now());
}

DataLibrary& Platform::Data()
{
    return mState->data;
}

void Platform::ScriptDates(const std::function<std::string(int64_t instant)>& format)
{
    mState->dates = format;
}

std::vector<SurveyRecord> Platform::Survey() const
{
    return mState->survey;
}

}  // namespace MemoryPlatform
