// What wfctl reads of people and of files. The first byte chooses the reader, the rest is what it reads. What
// is refused stops with a usage error or is left out; of what is taken, writing it and reading it again gives
// the same.

#include <stdlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "area-copy.h"
#include "arguments.h"
#include "exit-status.h"
#include "json-text.h"
#include "locales-icu.h"
#include "log.h"
#include "photo-files.h"
#include "png-file.h"
#include "private-watch.h"
#include "selection-edit.h"
#include "shell-command.h"
#include "utf8.h"

int __dlog_print(log_id_t, int, const char*, const char*, ...)
{
    return 0;
}

namespace {

namespace fs = std::filesystem;

using Strings = std::vector<std::string>;

void Check(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "tool input: %s\n", what);
    std::abort();
}

// A folder in memory, as long as the process.
class Folder {
public:
    Folder()
    {
        char path[] = "/dev/shm/tool-input-XXXXXX";
        Check(mkdtemp(path) != nullptr, "no folder");
        mPath = path;
    }
    ~Folder() { fs::remove_all(mPath); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& Path() const { return mPath; }
    std::string Holding(const char* name, const std::string& bytes) const
    {
        std::ofstream(mPath + "/" + name, std::ios::binary | std::ios::trunc) << bytes;
        return mPath + "/" + name;
    }

private:
    std::string mPath;
};

const Folder& TheFolder()
{
    static const Folder folder;
    return folder;
}

// Runs what may stop; whether it was refused as a mistake of the user's.
bool IsRefused(const std::function<void()>& read)
{
    try {
        read();
        return false;
    } catch (const Wfctl::Stop& stop) {
        Check(stop.Status() == Wfctl::Exit::kUsage && *stop.what(), "it stops otherwise than as misused");
        return true;
    }
}

Strings LinesOf(const std::string& text)
{
    Strings lines;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

// Lines of a shell, as in watch.env.
void ReadShellAssignments(const std::string& text)
{
    const auto values = Wfctl::ParseShellAssignments(text);
    std::string written;
    for (const auto& [name, value] : values) {
        Check(name.find('\n') == std::string::npos, "a name has lines");
        written += "export " + name + "=" + Wfctl::ShellQuoted(value) + "\n";
    }
    Check(Wfctl::ParseShellAssignments(written) == values, "assignments change when they are written");
    const std::string word = Wfctl::ShellWord(text);
    Check(Wfctl::ParseShellAssignments("A=" + Wfctl::ShellQuoted(text)).at("A") == text,
          "a quoted text changes");
    Check(word == text || word == Wfctl::ShellQuoted(text), "an odd word of a shell");
}

// watch.state, whose processes are signalled.
void ReadWatchState(const std::string& text)
{
    TheFolder().Holding("watch.state", text);
    const Wfctl::WatchPaths paths{TheFolder().Path()};
    const auto state = Wfctl::ReadState(paths);
    if (!state) return;
    for (const Wfctl::ProcessMark* process : {&state->supervisor, &state->bus}) {
        Check(process->pid >= 0, "a process has a negative number");
        Check(process->pid == 0 || text.find(std::to_string(process->pid)) != std::string::npos,
              "a process has a number that nobody wrote");
    }
    Wfctl::WriteState(paths, *state);
    const auto again = Wfctl::ReadState(paths);
    const auto isSame = [&](const Wfctl::ProcessMark Wfctl::WatchState::*process) {
        return ((*again).*process).pid == ((*state).*process).pid &&
               ((*again).*process).startTime == ((*state).*process).startTime;
    };
    Check(again && again->runFolder == state->runFolder && again->resources == state->resources &&
              isSame(&Wfctl::WatchState::supervisor) && isSame(&Wfctl::WatchState::bus),
          "a state changes when it is written");
}

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '@' || c == '[' || c == ',') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string Written(const Wfctl::Assignment& assignment)
{
    std::string text = assignment.first + "=";
    if (const auto* one = std::get_if<std::string>(&assignment.second)) return text + Escaped(*one);
    const Strings& elements = std::get<Strings>(assignment.second);
    for (std::size_t i = 0; i < elements.size(); ++i) text += (i ? "," : "[") + Escaped(elements[i]);
    return text + (elements.empty() ? "[]" : "]");
}

// KEY=VALUE in each line; the bundle of them all is one line of JSON.
void ReadAssignments(const std::string& text)
{
    Strings taken;
    for (const std::string& line : LinesOf(text)) {
        // A file would be read.
        if (line.find("=@") != std::string::npos) continue;
        Wfctl::Assignment assignment;
        if (IsRefused([&] { assignment = Wfctl::ParseAssignment(line); })) continue;
        Check(Wfctl::ParseAssignment(Written(assignment)) == assignment,
              "an assignment changes when it is written");
        taken.push_back(line);
    }
    if (IsRefused([&] { Wfctl::ParseBundle(taken); })) return;
    const Wfctl::Json json = Wfctl::BundleToJson(*Wfctl::ParseBundle(taken));
    const std::string line = Wfctl::JsonLine(json);
    Check(Platform::IsUtf8(line) && line.find('\n') == std::string::npos, "a bundle is not one line");
    Check(Wfctl::Json::parse(line) == json && json.size() == taken.size(), "a bundle changes in its line");
    Check(Wfctl::LaunchDataToJson(Wfctl::ParseLaunchData(taken)) == json, "a launch's data is another");
}

// Peers, application ids, times and values.
void ReadWords(const std::string& text)
{
    Wfctl::PeerAddress peer;
    if (!IsRefused([&] { peer = Wfctl::ParsePeer(text, true); })) {
        const bool hasPort = text.find(':') != std::string::npos;
        Check(hasPort ? peer.app + ":" + peer.port == text : peer.app == text, "a peer is another");
        Check(Wfctl::CheckedAppId(peer.app) == peer.app, "an application is none");
    }
    Wfctl::SecondsProblem(text);
    for (const char* type : {"", "string", "int", "bool"}) {
        std::optional<Platform::StoredValue> value;
        if (IsRefused([&] { value = Wfctl::ParseValue(text, type, std::nullopt); })) continue;
        Check(Wfctl::ParseValue(Wfctl::ValueText(*value), "", value) == *value,
              "a value changes when it is written");
        Check(Wfctl::Json::parse(Wfctl::JsonLine(Wfctl::ValueToJson(*value))) == Wfctl::ValueToJson(*value),
              "a value changes in its line");
    }
}

// World clocks as people type them; names of languages and zones.
void ReadWorldClock(const std::string& text)
{
    DataUtil::WorldClock clock;
    if (!IsRefused([&] { clock = Wfctl::ParseWorldClock(text); })) {
        const auto colon = text.find(':');
        Check(clock.timezone == clock.timezonePath && clock.timezone == text.substr(0, colon),
              "another zone");
        Check(!clock.city.empty(), "a clock of no city");
        Check(colon == std::string::npos || clock.city == text.substr(colon + 1), "another city");
        Check(Wfctl::TimezoneProblem(clock.timezone).empty(), "a zone that nobody knows");
        Check(Platform::IsUtf8(clock.country), "a country is no UTF-8");
    }
    Check(!Platform::IsUtf8(text) || Platform::IsUtf8(Wfctl::LanguageName(text)),
          "a language's name is no UTF-8");
}

// Pictures that a face is to show.
void ReadPicture(const std::string& bytes)
{
    const std::string file = TheFolder().Holding("picture", bytes);
    const std::string problem = Wfctl::PhotoProblem(file);
    const Wfctl::PictureKind kind = Wfctl::KindOfPicture(file);
    Check(kind == Wfctl::KindOfBytes(bytes), "the kind is not that of the bytes");
    Check(kind != Wfctl::PictureKind::kNone || !problem.empty(), "it takes what is no picture");
    const Wfctl::PngFacts facts = Wfctl::LookAtPng(file);
    const bool isPng = facts.kind != Wfctl::PngKind::kNone;
    Check(isPng == (facts.width > 0 && facts.height > 0), "a picture has no size");
    if (kind == Wfctl::PictureKind::kPng) Check(isPng == problem.empty(), "its answer to a PNG is not so");
    if (kind == Wfctl::PictureKind::kJpeg && problem.empty()) {
        const auto end = bytes.rfind("\xff\xd9");
        Check(end != std::string::npos && bytes.rfind("\xff\xda", end) != std::string::npos,
              "a JPEG has no end");
    }
}

struct Reader {
    void (*read)(const std::string&);
    bool isFile;  // else typed: no text on a command line has a NUL inside
};
constexpr Reader kReaders[] = {
    {ReadShellAssignments, true },
    {ReadWatchState,       true },
    {ReadAssignments,      false},
    {ReadWords,            false},
    {ReadWorldClock,       false},
    {ReadPicture,          true },
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const Reader& reader = kReaders[data[0] % std::size(kReaders)];
    std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (!reader.isFile) text.resize(std::min(text.find('\0'), text.size()));
    reader.read(text);
    return 0;
}
