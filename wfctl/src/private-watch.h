// A private watch: a folder DIR with the watch's data, and a bus of its own.
//
// What lies in DIR: watch.env (for people: sourced by a shell), watch.state (for wfctl: the same, what
// unset settings are taken from, and the processes), watch.log (every program's log), watch.lock (held while
// `up` or `down` works), watch.resources (where the shipped faces are), and the data. The first two are there
// while the watch is up. The bus's socket and its generated files lie in a *run folder* with a short name,
// because a socket's path may have 107 bytes only; a note in it says which DIR it is of.

#pragma once

#include <map>
#include <optional>
#include <string>

#include "child-process.h"
#include "unique-fd.h"

namespace Wfctl {

struct WatchPaths {
    std::string root;  // absolute, without links
    std::string Env() const { return root + "/watch.env"; }
    std::string State() const { return root + "/watch.state"; }
    std::string Log() const { return root + "/watch.log"; }
    std::string Lock() const { return root + "/watch.lock"; }
    std::string Resources() const { return root + "/watch.resources"; }
};

// What settings that nobody has set are taken from.
inline constexpr const char* kLocaleVariables[] = {"LC_ALL", "LC_TIME", "LANG", "TZ"};

struct WatchState {
    std::string root;
    std::string resources;
    std::string runFolder;
    std::map<std::string, std::string> locale;  // kLocaleVariables as its programs have them; empty: unset
    ProcessMark supervisor;
    ProcessMark bus;

    std::string Socket() const { return runFolder + "/bus"; }
    std::string BusConfig() const { return runFolder + "/bus.conf"; }
    std::string Services() const { return runFolder + "/services"; }
    std::string RootNote() const { return runFolder + "/root"; }
    std::string Address() const { return "unix:path=" + Socket(); }
};

// 'text' as one word of a shell.
std::string ShellQuoted(const std::string& text);

// Lines NAME='…', with or without "export" in front; what is not such a line is left out.
std::map<std::string, std::string> ParseShellAssignments(const std::string& text);

// The watch below DIR, which exists.
WatchPaths PathsOf(const std::string& dir);

// The variables of this process.
std::map<std::string, std::string> LocaleOfEnvironment();

std::optional<WatchState> ReadState(const WatchPaths& paths);
void WriteState(const WatchPaths& paths, const WatchState& state);
void WriteEnv(const WatchState& state);

// Makes the run folder with the bus's configuration and one activation file for every application that has a
// program below `libexec`.
std::string MakeRunFolder();
std::string BusConfigText(const WatchState& state);
std::string ActivationFileText(const std::string& appId, const std::string& program);
void WriteBusFiles(const WatchState& state, const std::string& libexec);

void RemoveRunFolder(const WatchState& state);

// Removes what `up` made: the run folder, watch.env and watch.state. Never data.
void RemoveRunFiles(const WatchPaths& paths, const WatchState& state);

// Held while the watch is brought up or taken down.
Platform::UniqueFd LockWatch(const WatchPaths& paths);

// Stops with Exit::kNotPermitted when the watch is another user's: root, too, would leave files in it that
// its programs cannot change.
void RequireOwnWatch(const WatchPaths& paths);

// Where this process's watch logs: the file's name, or how to read the journal's lines with that tag.
std::string LogPlace(const std::string& tag);

// Whether the selected watch is one that `up` made.
bool IsPrivateWatch();

// Whether it is one, and is down.
bool IsDown();

// Takes the watch below DIR for this process; without DIR it is that of the environment. One that is down has
// its files, and an address at which no bus answers. Stops with Exit::kNoWatch when there is none below DIR,
// and with Exit::kNotPermitted when it is another user's.
void SelectWatch(const std::string& dir);

// Where the selected watch's data lie, be it up or down. Stops with Exit::kNoWatch when there is no such
// folder.
const std::string& RequireRoot();

// DIR of the selected watch as the user gave it; empty where the environment decided.
const std::string& NamedRoot();

// What is wrong, and what to type, where the bus at `address` is not that of the selected watch: the
// environment has a part of a private watch only, or an old one. Empty where nothing speaks against it.
std::string WhyOtherWatch(const std::string& address);

// What to type to have the selected watch up, or one where none is selected.
std::string HowToStart();

// Of the selected watch, whose bus at `address` has ended: what is wrong, and what to type.
std::string WhyBusGone(const std::string& address);

// Of the selected watch, whose bus does not answer: what is wrong, and what to type. `error` has the bus's
// address and the reason.
std::string WhyNoWatch(const std::string& error);

}  // namespace Wfctl
