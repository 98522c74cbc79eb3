// The verbs of wfctl, one row each. What `--help` prints is made from the rows, and so is what is parsed.

#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "exit-status.h"
#include "hint.h"

namespace Wfctl {

// What every verb takes.
struct Options {
    std::string root;  // of a private watch; empty: the watch of the environment
    bool json = false;
};

using Action = std::function<Exit(const Options&)>;

struct Verb {
    std::string_view name;       // one word or two: "send", "key get"
    std::string_view arguments;  // as in the usage line, without --root and --json
    std::string_view help;       // one line
    std::string_view example;    // a command that works
    // Adds the verb's arguments to the parser; what it returns runs after they are parsed.
    Action (*define)(CLI::App& parser);
};

// In the order in which help lists them.
std::span<const Verb> Verbs();

// The row that the words begin with, and how many words name it; null when there is none.
const Verb* FindVerb(std::span<const std::string> words, std::size_t* length);

// "did you mean key get? " for words that name no verb, or empty.
std::string VerbHint(std::span<const std::string> words);

// The verbs of two words of which this one is the first.
Names VerbsOf(std::string_view word);

// What may stand alone, or in front of a verb.
struct FrontOption {
    std::string_view name, help;
};
inline constexpr FrontOption kFrontOptions[] = {
    {"--help",    "list the verbs"                     },
    {"--version", "print the version"                  },
    {"--root",    "the private watch below this folder"},
    {"--json",    "print JSON"                         },
};

// How many words in front of the verb are options and their values: more than there are where a value is
// missing.
std::size_t OptionsBefore(std::span<const std::string> words);

// The parser of one verb, with the options that every verb takes.
Action DefineVerb(const Verb& verb, CLI::App& parser, Options& options);

// Parses and runs; prints what went wrong. The arguments are those behind the program's name.
int RunCommandLine(std::vector<std::string> arguments);

// Defined by the groups of verbs.
Action DefineUp(CLI::App&);
Action DefineDown(CLI::App&);
Action DefineStatus(CLI::App&);
Action DefineList(CLI::App&);
Action DefineShow(CLI::App&);
Action DefineCurrent(CLI::App&);
Action DefineSet(CLI::App&);
Action DefineInstall(CLI::App&);
Action DefineUpdate(CLI::App&);
Action DefineEdit(CLI::App&);
Action DefinePreviewRequest(CLI::App&);
Action DefinePreviewCheck(CLI::App&);
Action DefinePreview(CLI::App&);
Action DefineValidate(CLI::App&);
Action DefineFlatten(CLI::App&);
Action DefineRender(CLI::App&);
Action DefineSheet(CLI::App&);
Action DefineDelete(CLI::App&);
Action DefineBgAdd(CLI::App&);
Action DefineBgDel(CLI::App&);
Action DefineBgSave(CLI::App&);
Action DefineBgCancel(CLI::App&);
Action DefineBgList(CLI::App&);
Action DefineBackup(CLI::App&);
Action DefineRestore(CLI::App&);
Action DefineWorldClockShow(CLI::App&);
Action DefineWorldClockPrepare(CLI::App&);
Action DefineWorldClockUpdate(CLI::App&);
Action DefineDate(CLI::App&);
Action DefineEvaluateSave(CLI::App&);
Action DefineEvaluateLoad(CLI::App&);
Action DefineSend(CLI::App&);
Action DefineListen(CLI::App&);
Action DefineLaunch(CLI::App&);
Action DefineKeyGet(CLI::App&);
Action DefineKeySet(CLI::App&);
Action DefineKeyUnset(CLI::App&);
Action DefineKeyList(CLI::App&);
Action DefineKeyWatch(CLI::App&);
Action DefinePrefGet(CLI::App&);
Action DefinePrefSet(CLI::App&);
Action DefinePrefUnset(CLI::App&);
Action DefinePrefList(CLI::App&);
Action DefineSettingGet(CLI::App&);
Action DefineSettingSet(CLI::App&);
Action DefineSettingList(CLI::App&);
Action DefineSettingWatch(CLI::App&);
Action DefineMonitor(CLI::App&);
Action DefineDoctor(CLI::App&);
Action DefineCompletion(CLI::App&);
Action DefineHelp(CLI::App&);
Action DefineManual(CLI::App&);
Action DefineSurveyList(CLI::App&);
Action DefineSurveyQuery(CLI::App&);
Action DefineTraceOn(CLI::App&);
Action DefineTraceOff(CLI::App&);

}  // namespace Wfctl
