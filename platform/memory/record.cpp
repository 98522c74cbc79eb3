#include "record.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "log-format.h"

namespace MemoryPlatform {

namespace {

// Everything that Fail(), Uses() and Hold() know.
const std::set<std::string>& Functions()
{
    static const std::set<std::string> functions = {
        "CheckTrustedRemotePort",
        "CommonUtilFile::Copy",
        "CommonUtilFile::Exists",
        "CommonUtilI18NDateFormatter::Format",
        "CommonUtilPref::Get",
        "CommonUtilPref::Set",
        "CommonUtilVConf::Get",
        "CommonUtilVConf::Set",
        "FileOutputStream",
        "ReadWholeFile",
        "SendMessage",
        "SendTrustedMessage",
        "app_control_add_extra_data",
        "app_control_clone",
        "app_control_create",
        "app_control_destroy",
        "app_control_get_extra_data",
        "app_control_reply_to_launch_request",
        "app_control_send_launch_request",
        "app_control_set_app_id",
        "app_manager_get_shared_data_path",
        "app_manager_get_shared_resource_path",
        "app_manager_get_shared_trusted_path",
        "bundle_add_str",
        "bundle_add_str_array",
        "bundle_create",
        "bundle_del",
        "bundle_dup",
        "cairo_image_surface_create_from_png",
        "data_util_log_item_get_from_result_xml_file",
        "data_util_log_item_supported",
        "data_util_log_result_xml_serialize",
        "data_util_log_result_xml_serialize_supported",
        "data_util_resultxml_converter_remove_limited_complication",
        "data_util_resultxml_file_converter_update_worldclock",
        "data_util_resultxml_has_limited_complication_xml_file",
        "data_util_resultxml_memory_converter",
        "ecore_file_exists",
        "ecore_file_is_dir",
        "ecore_file_ls",
        "ecore_file_mkpath",
        "ecore_file_recursive_rm",
        "ecore_file_remove",
        "service_app_add_event_handler",
        "usleep",
    };
    return functions;
}

const std::string& Known(const std::string& function)
{
    if (!Functions().contains(function)) throw std::invalid_argument("no scripted function " + function);
    return function;
}

bool Matches(int thread, Where where)
{
    return where == kAnyThread || (where == kMainThread) == (thread == 0);
}

bool Matches(const std::string& text, const Strings& prefixes)
{
    const auto begins = [&](const std::string& prefix) { return text.starts_with(prefix); };
    return prefixes.empty() || std::any_of(prefixes.begin(), prefixes.end(), begins);
}

}  // namespace

// A thread's number in one Record; its end is the thread's end.
class Record::Attendance {
public:
    ~Attendance()
    {
        if (const auto record = mRecord.lock()) record->Leave();
    }
    bool IsAt(const std::shared_ptr<Record>& record) const
    {
        return !mRecord.owner_before(record) && !record.owner_before(mRecord);
    }
    void Enter(const std::shared_ptr<Record>& record, int number)
    {
        mRecord = record;
        mNumber = number;
    }
    int Number() const { return mNumber; }

private:
    std::weak_ptr<Record> mRecord;
    int mNumber = 0;
};

Record::Record() = default;

int Record::ThreadNumber()
{
    if (OnMain()) return 0;
    thread_local Attendance attendance;
    const auto self = shared_from_this();
    if (!attendance.IsAt(self)) {
        const std::lock_guard lock(mMutex);
        attendance.Enter(self, ++mWorkersSeen);
        mChanged.notify_all();
    }
    return attendance.Number();
}

void Record::Leave()
{
    const std::lock_guard lock(mMutex);
    ++mWorkersEnded;
    mChanged.notify_all();
}

void Record::Note(const std::string& text)
{
    const int thread = ThreadNumber();
    const std::lock_guard lock(mMutex);
    mEntries.push_back({text, thread, false});
    mChanged.notify_all();
}

void Record::NoteLog(LogLine line)
{
    line.thread = ThreadNumber();
    const std::lock_guard lock(mMutex);
    // What the platform's own layer says is no part of what the code under test says.
    if (line.tag != "platform") {
        std::string text =
            std::string("log ") + ::Platform::PriorityLetter(line.priority) + " " + line.message;
        mEntries.push_back({std::move(text), line.thread, true});
    }
    mLogs.push_back(std::move(line));
    mChanged.notify_all();
}

std::optional<int> Record::Use(const std::string& function)
{
    Known(function);
    const bool worker = ThreadNumber() != 0;
    std::unique_lock lock(mMutex);
    if (worker && mHeld.contains(function)) {
        const auto waiting = mWaiting.insert(function);
        mChanged.notify_all();
        mChanged.wait(lock, [&] { return !mHeld.contains(function); });
        mWaiting.erase(waiting);
    }
    const int use = ++mUses[function];
    for (const Script& script : mScripts[function]) {
        if (use >= script.first && use - script.first < script.failure.times) return script.failure.code;
    }
    return std::nullopt;
}

std::vector<Call> Record::Calls(const Strings& prefixes, Where where) const
{
    const std::lock_guard lock(mMutex);
    std::vector<Call> calls;
    for (const Entry& entry : mEntries) {
        if (entry.isLog || !Matches(entry.thread, where) || !Matches(entry.text, prefixes)) continue;
        calls.push_back({entry.text, entry.thread});
    }
    return calls;
}

Strings Record::Timeline(Where where) const
{
    const std::lock_guard lock(mMutex);
    Strings lines;
    for (const Entry& entry : mEntries) {
        if (Matches(entry.thread, where)) lines.push_back(entry.text);
    }
    return lines;
}

std::vector<LogLine> Record::Logs(const std::string& tag) const
{
    std::vector<LogLine> lines = AllLogs();
    std::erase_if(lines, [&](const LogLine& line) { return line.tag != tag; });
    return lines;
}

std::vector<LogLine> Record::AllLogs() const
{
    const std::lock_guard lock(mMutex);
    return mLogs;
}

void Record::Forget()
{
    const std::lock_guard lock(mMutex);
    mEntries.clear();
    mLogs.clear();
}

void Record::Fail(const std::string& function, Failure failure)
{
    const std::lock_guard lock(mMutex);
    mScripts[Known(function)].push_back({mUses[function] + failure.use, failure});
}

int Record::Uses(const std::string& function) const
{
    const std::lock_guard lock(mMutex);
    const auto it = mUses.find(Known(function));
    return it == mUses.end() ? 0 : it->second;
}

void Record::Hold(const std::string& function)
{
    const std::lock_guard lock(mMutex);
    mHeld.insert(Known(function));
}

void Record::Release(const std::string& function)
{
    const std::lock_guard lock(mMutex);
    mHeld.erase(Known(function));
    mChanged.notify_all();
}

void Record::ReleaseAll()
{
    const std::lock_guard lock(mMutex);
    mHeld.clear();
    mChanged.notify_all();
}

bool Record::WaitFor(double deadline, const std::function<bool()>& condition)
{
    std::unique_lock lock(mMutex);
    return mChanged.wait_for(lock, std::chrono::duration<double>(deadline), condition);
}

bool Record::WaitUntilHeld(const std::string& function, double deadline)
{
    Known(function);
    return WaitFor(deadline, [&] { return mWaiting.contains(function); });
}

bool Record::WaitForCall(const std::string& prefix, int count, double deadline)
{
    return WaitFor(deadline, [&] {
        return std::count_if(mEntries.begin(), mEntries.end(), [&](const Entry& entry) {
                   return !entry.isLog && entry.text.starts_with(prefix);
               }) >= count;
    });
}

bool Record::WaitForLog(const std::string& message, int count, double deadline)
{
    return WaitFor(deadline, [&] {
        return std::count_if(mLogs.begin(), mLogs.end(),
                             [&](const LogLine& line) { return line.message == message; }) >= count;
    });
}

bool Record::WaitForWorkersEnd(int started, double deadline)
{
    return WaitFor(deadline, [&] { return mWorkersSeen >= started && mWorkersEnded == mWorkersSeen; });
}

}  // namespace MemoryPlatform
