#include "verb-table.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <iterator>

#include "help-text.h"
#include "hint.h"
#include "json-text.h"
#include "nearest-name.h"

namespace Wfctl {

namespace {

// clang-format off
constexpr Verb kVerbs[] = {
    {"up", "--root DIR [--resources DIR]",
     "bring up a private watch: own bus, databases and areas below DIR",
     "wfctl up --root /tmp/watch && . /tmp/watch/watch.env", DefineUp},
    {"down", "--root DIR",
     "take down what `up` started; the watch's data stays",
     "wfctl down --root /tmp/watch", DefineDown},
    {"status", "",
     "what is running, on which bus, and which trust holds there",
     "wfctl status --json", DefineStatus},
    {"list", "",
     "the watch faces: area, title, whether current, whether it has a preview",
     "wfctl list", DefineList},
    {"show", "FACE|FILE [--language L]",
     "what a watch face is and offers: options, complications, photos, presets, and what is chosen",
     "wfctl show com.corvane.watchface-mirel-c1", DefineShow},
    {"current", "",
     "the current clock application and watch face",
     "wfctl current", DefineCurrent},
    {"set", "NAME [--as APP] [--timeout S]",
     "make a watch face the current one, as the settings list does",
     "wfctl set com.corvane.watchface-mirel-c1", DefineSet},
    {"install", "RESULT.xml [--name NAME] [--icon PNG] [--label TEXT] [--keep-selection] [--as APP] [--no-wait] [--timeout S]",
     "install a watch face, as the phone-side manager does, and wait for its preview",
     "wfctl install my-face_result.xml --label 'My face'", DefineInstall},
    {"update", "RESULT.xml [--name NAME] [--icon PNG] [--label TEXT] [--keep-selection] [--as APP] [--no-wait] [--timeout S]",
     "update a watch face and wait for its preview",
     "wfctl update com.corvane.watchface-mirel-c1_result.xml --keep-selection", DefineUpdate},
    {"edit", "FACE [--pick GROUP=OPTION]… [--place SLOT=SOURCE[@ZONE[:CITY]]]… [--preset ID] [--photo PHOTOS=FILE]… [--reset] [--dry-run] [--as APP] [--timeout S]",
     "change what a watch face shows, as the editor does, and wait for its preview",
     "wfctl edit com.corvane.watchface-mirel-c1 --pick dial=roman --pick accent=azure --place right=pedometer", DefineEdit},
    {"delete", "FACE [--as APP] [--timeout S]",
     "delete a watch face, or the changes to one that was shipped",
     "wfctl delete c1", DefineDelete},
    {"bg add", "PICTURE… [--type KIND] [--pending] [--as APP] [--timeout S]",
     "add background pictures of the user's, as the editor does",
     "wfctl bg add holiday.jpg", DefineBgAdd},
    {"bg del", "NAME… [--type KIND] [--pending] [--as APP] [--timeout S]",
     "delete background pictures",
     "wfctl bg del holiday.jpg", DefineBgDel},
    {"bg save", "[--type KIND] [--as APP] [--timeout S]",
     "keep what is pending",
     "wfctl bg save", DefineBgSave},
    {"bg cancel", "[--type KIND] [--as APP] [--timeout S]",
     "take back what is pending",
     "wfctl bg cancel", DefineBgCancel},
    {"bg list", "[--type KIND]",
     "the background pictures, by name",
     "wfctl bg list --type digital", DefineBgList},
    {"backup", "DIR",
     "back up stored faces, pictures and the current face into a new folder",
     "wfctl backup my-watch", DefineBackup},
    {"restore", "DIR [--yes] [--check]",
     "give this watch what a backup holds, and compare it afterwards",
     "wfctl restore my-watch", DefineRestore},
    {"world-clock show", "FACE GROUP [--as APP] [--timeout S]",
     "what is stored of the world clock of a group",
     "wfctl world-clock show c4 zone", DefineWorldClockShow},
    {"world-clock prepare", "[--as APP] [--timeout S]",
     "the current watch face is the one that the next update is for",
     "wfctl world-clock prepare", DefineWorldClockPrepare},
    {"world-clock update", "SLOT AREA/CITY[:CITY] [--as APP] [--timeout S]",
     "set a world clock of the prepared watch face, as the world-clock application does",
     "wfctl world-clock update city Asia/Seoul", DefineWorldClockUpdate},
    {"date", "SKELETON [--at MS] [--pattern] [--timeout S]",
     "a date as the watch writes it, asked for as the phone-side manager",
     "wfctl date yMMMMEEEEd", DefineDate},
    {"evaluate save", "NAME DURATION [--as APP[:PORT]] [--timeout S]",
     "keep a duration, any text, of an application for a watch face",
     "wfctl evaluate save c1 350", DefineEvaluateSave},
    {"evaluate load", "NAME [--as APP[:PORT]] [--timeout S]",
     "print the duration that an application keeps for a watch face",
     "wfctl evaluate load c1", DefineEvaluateLoad},
    {"preview request", "FACE… [--as APP] [--timeout S]",
     "have the service draw previews again, and wait for them",
     "wfctl preview request com.corvane.watchface-mirel-c1", DefinePreviewRequest},
    {"preview check", "[FACE…]",
     "which previews are missing, no PNG, blank or older than their face; status 1 when one is",
     "wfctl preview check", DefinePreviewCheck},
    {"preview", "[FACE…] [--matrix] [-o OUT.png] [--language L,L…] [--hours 12,24]",
     "show previews; with --matrix, faces over languages and hour modes on one sheet",
     "wfctl preview --matrix c1 -o c1-matrix.png", DefinePreview},
    {"validate", "FILE|FACE…",
     "all that is wrong with result XMLs, flat documents and their assets; status 1 when one is refused",
     "wfctl validate my-face_result.xml", DefineValidate},
    {"flatten", "RESULT.xml [-o OUT]",
     "check a result XML and make the flat document from it, without a watch",
     "wfctl flatten my-face_result.xml -o watchface.xml", DefineFlatten},
    {"render", "FILE|NAME [-o OUT] [--language L] [--hours N] [--timezone TZ] [--size N]",
     "draw a watch face's preview as PNG or SVG, without a watch",
     "wfctl render my-face_result.xml -o my-face.png --language de_DE", DefineRender},
    {"sheet", "[FACE…] -o OUT.png [--language L,L…] [--hours 12,24] [--columns N] [--size N]",
     "one picture of all previews, or of faces in several languages and hour modes",
     "wfctl sheet -o faces.png --language en_GB,de_DE,ko_KR --hours 12,24", DefineSheet},
    {"send", "--as APP[:PORT] APP[:PORT] KEY=VALUE… [--wait S] [--count N] [--untrusted]",
     "send a message as an application; with --wait print what comes back",
     "wfctl send --as com.corvane.w-home com.corvane.watchface-service type=watch-idle-changed pkgid=com.corvane.watchface-mirel-c1",
     DefineSend},
    {"listen", "--as APP[:PORT] [--count N] [--timeout S] [--untrusted]",
     "be an application's message port; one JSON line a message",
     "wfctl listen --as com.corvane.watchface-editor:watch-face-editor::localport --count 1", DefineListen},
    {"launch", "APP KEY=VALUE… [--as APP] [--wait S]",
     "send a launch request and print the answer",
     "wfctl launch com.corvane.watchface-capture", DefineLaunch},
    {"key get", "KEY",
     "print a platform key",
     "wfctl key get db/wms/clocks_set_idle", DefineKeyGet},
    {"key set", "KEY VALUE [--type TYPE]",
     "write a platform key and announce it",
     "wfctl key set db/retailmode/enabled 1", DefineKeySet},
    {"key unset", "KEY…",
     "remove platform keys and announce it",
     "wfctl key unset db/system/language", DefineKeyUnset},
    {"key list", "",
     "all platform keys, one KEY=VALUE a line",
     "wfctl key list --json", DefineKeyList},
    {"key watch", "KEY… [--count N] [--timeout S]",
     "print keys whenever they are written",
     "wfctl key watch db/wms/clocks_set_idle", DefineKeyWatch},
    {"pref get", "APP KEY",
     "print a preference of an application",
     "wfctl pref get com.corvane.watchface-service wfs-pref-idle-change-request-from", DefinePrefGet},
    {"pref set", "APP KEY VALUE [--type TYPE]",
     "write a preference of an application",
     "wfctl pref set com.corvane.watchface-service my-preference true", DefinePrefSet},
    {"pref unset", "APP KEY…",
     "remove preferences of an application",
     "wfctl pref unset com.corvane.watchface-service my-preference", DefinePrefUnset},
    {"pref list", "APP",
     "all preferences of an application, one KEY=VALUE a line",
     "wfctl pref list com.corvane.watchface-service", DefinePrefList},
    {"setting get", "NAME",
     "print a system setting: language, country, 24-hour or timezone",
     "wfctl setting get language", DefineSettingGet},
    {"setting set", "NAME=VALUE…",
     "write system settings (also: NAME VALUE)",
     "wfctl setting set language=de_DE 24-hour=true timezone=Europe/Berlin", DefineSettingSet},
    {"setting list", "",
     "all system settings, one NAME=VALUE a line",
     "wfctl setting list", DefineSettingList},
    {"setting watch", "[--count N] [--timeout S]",
     "print system settings whenever they are written",
     "wfctl setting watch", DefineSettingWatch},
    {"survey list", "",
     "the usage records that were kept, oldest first",
     "wfctl survey list", DefineSurveyList},
    {"survey query", "[--timeout S]",
     "have the service record the current watch face and its complications, and print the records",
     "wfctl survey query", DefineSurveyQuery},
    {"trace on", "",
     "begin to record what the watch's programs do, and when",
     "wfctl trace on", DefineTraceOn},
    {"trace off", "[-o OUT.json]",
     "end the recording, and say where it is",
     "wfctl trace off -o my-trace.json", DefineTraceOff},
    {"monitor", "[APP…] [--count N] [--timeout S]",
     "print the watch's messages, launches and key changes as they go by",
     "wfctl monitor --timeout 30", DefineMonitor},
    {"doctor", "[--fix] [--undo TIME]",
     "find what is wrong with the watch, and say what to type",
     "wfctl doctor --fix", DefineDoctor},
    {"completion", "SHELL",
     "print what makes bash, zsh or fish complete wfctl's words",
     "wfctl completion bash", DefineCompletion},
    {"help", "[VERB…]",
     "explain a verb, or list the verbs",
     "wfctl help edit", DefineHelp},
    {"manual", "[VERB…] [--into DIR]",
     "print a manual page, as man takes it",
     "wfctl manual edit", DefineManual},
};
// clang-format on

// The words of the command line, with the options in front of the verb moved behind it.
std::vector<std::string> VerbFirst(std::vector<std::string> arguments)
{
    const std::size_t before = std::min(OptionsBefore(arguments), arguments.size());
    const auto word = arguments.begin() + static_cast<std::ptrdiff_t>(before);
    // One word or two name the verb; the options go behind both.
    std::size_t length = 0;
    const std::vector<std::string> rest(word, arguments.end());
    FindVerb(rest, &length);
    if (length == 0 && !rest.empty() && !VerbsOf(rest[0]).empty()) length = 1;  // a group's help
    std::rotate(arguments.begin(), word, word + static_cast<std::ptrdiff_t>(length));
    return arguments;
}

int Complain(Exit status, const std::string& text)
{
    if (!text.empty()) std::fprintf(stderr, "wfctl: %s\n", text.c_str());
    return static_cast<int>(status);
}

// "--language" for an option that there is not; empty where none is meant.
std::string MeantOption(const CLI::App& parser)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : parser.get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    for (const std::string& word : parser.remaining()) {
        if (!word.starts_with("--")) continue;
        const std::string_view meant = MeantName(word.substr(0, word.find('=')), NamesOf(names));
        if (!meant.empty()) return std::string(meant);
    }
    return {};
}

std::string ParseErrorText(const CLI::ParseError& error, const CLI::App& parser)
{
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError)) return error.what();
    std::string words;
    for (const std::string& word : parser.remaining()) words += "[" + word + "] ";
    return words + "is not expected here";
}

// The verb that may be meant by the words, of which one or two name it.
std::string_view MeantVerb(std::span<const std::string> words)
{
    const std::string two = words.size() > 1 ? words[0] + " " + words[1] : words[0];
    const Names siblings = VerbsOf(words[0]);
    if (!siblings.empty()) return MeantName(two, siblings);
    // One word of two names a group of verbs.
    Names names, firsts;
    for (const Verb& verb : kVerbs) {
        names.push_back(verb.name);
        firsts.push_back(verb.name.substr(0, verb.name.find(' ')));
    }
    const std::string_view meant = MeantName(two, names);
    return meant.empty() ? DataUtil::NearestName(words[0], firsts) : meant;
}

// Behind a verb of one word that took another's second word for an argument: "; did you mean the verb …?"
std::string OtherVerbHint(const Verb& verb, const std::vector<std::string>& arguments)
{
    const Names siblings = VerbsOf(verb.name);
    if (siblings.empty() || arguments.size() < 2) return {};
    const std::string_view meant = MeantName(arguments[0] + " " + arguments[1], siblings);
    return meant.empty() ? "" : "; did you mean the verb " + std::string(meant) + "?";
}

bool IsHelp(const std::string& word)
{
    return word == "--help" || word == "-h";
}

int UnknownOption(const std::string& word)
{
    Names known;
    for (const FrontOption& option : kFrontOptions) known.push_back(option.name);
    return Complain(Exit::kUsage, "there is no option [" + word + "]" +
                                      OrMeant(word.substr(0, word.find('=')), known, "type: wfctl --help"));
}

int Printed(const std::string& text)
{
    std::fputs(text.c_str(), stdout);
    try {
        FlushOutput();
        return static_cast<int>(Exit::kDone);
    } catch (const Stop& stop) {
        return Complain(stop.Status(), stop.what());
    }
}

int UnknownVerb(const std::vector<std::string>& arguments)
{
    if (arguments.empty()) return Complain(Exit::kUsage, "which verb? type: wfctl --help");
    const std::string& word = arguments[0];
    if (IsHelp(word)) return Printed(OverviewText());
    if (word == "--version") return Printed("wfctl " WATCH_VERSION "\n");
    if (word.starts_with("-")) return UnknownOption(word);
    const std::string siblings = Listed(VerbsOf(word));
    const std::string hint = VerbHint(arguments);
    if (siblings.empty())
        return Complain(Exit::kUsage, "there is no verb [" + word + "]; " + hint + "type: wfctl --help");
    if (std::ranges::any_of(arguments, IsHelp)) return Printed(GroupText(word));
    if (arguments.size() == 1 || arguments[1].starts_with("-"))
        return Complain(Exit::kUsage, "[" + word + "] takes another word: " + siblings);
    return Complain(Exit::kUsage,
                    "there is no verb [" + word + " " + arguments[1] + "]; " + hint + "known: " + siblings);
}

}  // namespace

std::string VerbHint(std::span<const std::string> words)
{
    const std::string_view meant = words.empty() ? "" : MeantVerb(words);
    return meant.empty() ? "" : "did you mean " + std::string(meant) + "? ";
}

std::span<const Verb> Verbs()
{
    return kVerbs;
}

Names VerbsOf(std::string_view word)
{
    const std::string before = std::string(word) + " ";
    Names verbs;
    for (const Verb& verb : kVerbs) {
        if (verb.name.starts_with(before)) verbs.push_back(verb.name);
    }
    return verbs;
}

const Verb* FindVerb(std::span<const std::string> words, std::size_t* length)
{
    *length = 0;
    for (const Verb& verb : kVerbs) {
        const std::size_t count = verb.name.find(' ') == std::string_view::npos ? 1 : 2;
        if (words.size() < count) continue;
        const std::string name = count == 1 ? words[0] : words[0] + " " + words[1];
        if (name != verb.name) continue;
        *length = count;
        return &verb;
    }
    return nullptr;
}

std::size_t OptionsBefore(std::span<const std::string> words)
{
    std::size_t count = 0;
    while (count < words.size() && words[count].starts_with("-")) count += words[count] == "--root" ? 2 : 1;
    return count;
}

Action DefineVerb(const Verb& verb, CLI::App& parser, Options& options)
{
    parser.set_help_flag("-h,--help", "show the help");
    Action action = verb.define(parser);
    parser.add_option("--root", options.root, "the private watch below this folder")->type_name("DIR");
    parser.add_flag("--json", options.json, "print JSON");
    return action;
}

int RunCommandLine(std::vector<std::string> arguments)
{
    arguments = VerbFirst(std::move(arguments));
    std::size_t length = 0;
    const Verb* verb = FindVerb(arguments, &length);
    if (!verb) return UnknownVerb(arguments);
    CLI::App parser;
    Options options;
    try {
        const Action action = DefineVerb(*verb, parser, options);
        // The parser takes its words from the end.
        std::vector<std::string> words(arguments.rbegin(),
                                       arguments.rend() - static_cast<std::ptrdiff_t>(length));
        parser.parse(words);
        const Exit exit = action(options);
        FlushOutput();
        return static_cast<int>(exit);
    } catch (const CLI::CallForHelp&) {
        return Printed(HelpText(*verb));
    } catch (const CLI::ParseError& error) {
        const std::string what = ParseErrorText(error, parser);
        const std::string meant = MeantOption(parser);
        return Complain(Exit::kUsage, what + (what.ends_with('?') ? " " : "; ") +
                                          (meant.empty() ? "" : "did you mean " + meant + "? ") +
                                          "type: wfctl " + std::string(verb->name) + " --help");
    } catch (const Stop& stop) {
        const bool isNameless = stop.Status() == Exit::kNotFound;
        return Complain(stop.Status(), stop.what() + (isNameless ? OtherVerbHint(*verb, arguments) : ""));
    } catch (const std::exception& error) {
        return Complain(Exit::kError, error.what());
    }
}

}  // namespace Wfctl
