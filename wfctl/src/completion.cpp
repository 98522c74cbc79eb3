#include "completion.h"

#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <optional>
#include <set>
#include <span>
#include <sstream>

#include "application-table.h"
#include "arguments.h"
#include "exit-status.h"
#include "face-document.h"
#include "faces.h"
#include "locales-icu.h"
#include "lost-and-found.h"
#include "photo-files.h"
#include "private-watch.h"
#include "system-setting-table.h"
#include "value-store-sqlite.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

using Words = std::vector<Completion>;

// What is typed before the word that is completed.
struct Line {
    const Verb* verb;
    std::vector<std::string> arguments;  // behind the verb
    std::string typed = {};              // of the word itself
    std::string type = {};               // what --type says
};

// What may stand in one place.
struct Place {
    Words words;
    bool files = false;
};

// The words that can follow those of a verb's name which are complete.
Words VerbWords(std::span<const std::string> complete)
{
    std::string before;
    for (const std::string& word : complete) before += word + " ";
    Words words;
    for (const Verb& verb : Verbs()) {
        if (!verb.name.starts_with(before)) continue;
        const std::string_view rest = verb.name.substr(before.size());
        const std::string_view word = rest.substr(0, rest.find(' '));
        const bool isLast = word.size() == rest.size();
        if (words.empty() || words.back().word != word)
            words.push_back({std::string(word), isLast ? std::string(verb.help) : ""});
    }
    return words;
}

Place Files(const Line&)
{
    return {{}, true};
}

// By their names; by the ends of these where no whole name begins as it is typed.
Place FacesOf(const Line& line)
{
    Place place, ends;
    bool isWhole = false;
    for (const Face& face : ListFaces()) {
        const std::string title = TitleOf(face.ResultXml());
        place.words.push_back({face.name, title});
        isWhole = isWhole || face.name.starts_with(line.typed);
        for (std::size_t at = 0; (at = face.name.find_first_of("-.", at)) != std::string::npos;)
            ends.words.push_back({face.name.substr(++at), title});
    }
    return isWhole ? place : ends;
}

Place FacesAndFiles(const Line& line)
{
    Place place = FacesOf(line);
    place.files = true;
    return place;
}

Place Applications(const Line&)
{
    Place place;
    for (const Platform::Application& application : Platform::kApplications)
        place.words.push_back({std::string(application.id), ""});
    return place;
}

Place StoredIn(const std::string& path)
{
    Place place;
    Platform::ValueStore store(path, 0600);
    for (const auto& [key, value] : store.List()) place.words.push_back({key, ""});
    return place;
}

// Of the platform; of an application where the word before names one.
Place Keys(const Line& line)
{
    if (!line.verb->name.starts_with("pref")) return StoredIn(Platform::KeysPath());
    return line.arguments.empty() ? Place() : StoredIn(Platform::PreferencesPath(line.arguments[0]));
}

Place Settings(const Line& line)
{
    const std::string end = line.verb->name == "setting set" ? "=" : "";
    Place place;
    if (line.typed.starts_with("timezone=")) {
        for (const std::string& zone : Timezones()) place.words.push_back({"timezone=" + zone, ""});
        return place;
    }
    for (const Platform::SystemSetting& setting : Platform::kSystemSettings)
        place.words.push_back({std::string(setting.name) + end, ""});
    return place;
}

std::optional<DataUtil::FaceDocument> DocumentOf(const std::string& face)
{
    return DataUtil::ParseFace(ReadNamedFile(RequireFace(face).ResultXml())).document;
}

// The document of the face that the line names.
std::optional<DataUtil::FaceDocument> NamedFace(const Line& line)
{
    return line.arguments.empty() ? std::nullopt : DocumentOf(line.arguments[0]);
}

std::vector<const DataUtil::Slot*> WorldClocksOf(const DataUtil::FaceDocument& face)
{
    std::vector<const DataUtil::Slot*> slots;
    for (const DataUtil::Slot& slot : face.slots) {
        if (slot.OfferOf(std::string(DataUtil::kWorldClockSource))) slots.push_back(&slot);
    }
    return slots;
}

Place Picks(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    for (const auto& group : face->groups) {
        for (const auto& option : group.options) place.words.push_back({group.id + "=" + option.id, ""});
    }
    return place;
}

Place Placements(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    const std::string atZone = line.typed.substr(0, line.typed.find('@'));
    if (atZone.size() != line.typed.size()) {
        for (const std::string& zone : Timezones()) place.words.push_back({atZone + "@" + zone, ""});
        return place;
    }
    for (const auto& slot : face->slots) {
        for (const auto& offer : slot.offers) place.words.push_back({slot.name + "=" + offer.source, ""});
        place.words.push_back({slot.name + "=empty", ""});
    }
    return place;
}

Place Presets(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    for (const auto& preset : face->presets) place.words.push_back({preset.id, ""});
    return place;
}

Place Zones(const Line&)
{
    Place place;
    for (const std::string& zone : Timezones()) place.words.push_back({zone, ""});
    return place;
}

Place Groups(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    std::set<std::string> groups;
    for (const DataUtil::Slot* slot : WorldClocksOf(*face)) groups.insert(slot->group);
    for (const std::string& group : groups) place.words.push_back({group, ""});
    return place;
}

Place WorldClocks(const Line&)
{
    Platform::ValueStore preferences(Platform::PreferencesPath(std::string(Platform::kServiceId)), 0600);
    const auto face =
        DocumentOf(Platform::GetAs<std::string>(preferences, kWorldClockTargetPref).value_or(""));
    Place place;
    if (!face) return place;
    for (const DataUtil::Slot* slot : WorldClocksOf(*face)) place.words.push_back({slot->name, ""});
    return place;
}

Place Photos(const Line& line)
{
    Place place;
    const auto face = NamedFace(line);
    if (!face) return place;
    for (const auto& photos : face->photos) {
        for (const std::string& name : PicturesIn(PhotoPath(photos, "")))
            place.words.push_back({photos.id + "=" + name, ""});
        place.words.push_back({photos.id + "=", "its default"});
    }
    return place;
}

Place Pictures(const Line& line)
{
    Place place;
    for (const std::string& name : PicturesIn(PicturesFolder(line.type.empty() ? kUsualPictures : line.type)))
        place.words.push_back({name, ""});
    return place;
}

Place LostTimes(const Line&)
{
    Place place;
    for (const std::string& time : TimesOfLost()) place.words.push_back({time, ""});
    return place;
}

Place VerbNames(const Line& line)
{
    return {VerbWords(line.arguments)};
}

// What is complete for which option: by its name, or by what it takes; a positional by its name. The first
// row counts whose verb the line's begins with.
struct Completer {
    std::string_view verb, option;
    Place (*complete)(const Line&);  // null: the words
    std::string_view words = {};
};

// clang-format off
constexpr Completer kCompleters[] = {
    {"setting",  "NAME",       Settings},
    {"set",      "NAME",       FacesOf},
    {"evaluate", "NAME",       FacesOf},
    {"bg del",   "NAME",       Pictures},
    {"bg",       "--type",     nullptr, "gallery-u1 gallery digital"},
    {"doctor",   "--undo",     LostTimes},
    {"manual",   "VERB",       VerbNames},
    {"",         "NAME=VALUE", Settings},
    {"",         "--type",     nullptr, "string int bool"},
    {"",         "--language", nullptr, "en_GB en_US de_DE ko_KR ja_JP ar_EG"},
    {"",         "--hours",    nullptr, "12 24"},
    {"",         "SHELL",      nullptr, "bash zsh fish"},
    {"",         "FACE",       FacesOf},
    {"",         "FACE|FILE",  FacesAndFiles},
    {"",         "FILE|FACE",  FacesAndFiles},
    {"",         "FILE|NAME",  FacesAndFiles},
    {"",         "APP",        Applications},
    {"",         "APP[:PORT]", Applications},
    {"",         "KEY",        Keys},
    {"",         "--pick",     Picks},
    {"",         "--place",    Placements},
    {"",         "--preset",   Presets},
    {"",         "--photo",    Photos},
    {"",         "--timezone", Zones},
    {"",         "AREA/CITY[:CITY]", Zones},
    {"",         "GROUP",      Groups},
    {"",         "SLOT",       WorldClocks},
    {"",         "DIR",        Files},
    {"",         "PNG",        Files},
    {"",         "-o",         Files},
    {"",         "PICTURE",    Files},
    {"",         "RESULT.xml", Files},
};
// clang-format on

Place Fixed(std::string_view words)
{
    Place place;
    std::istringstream text{std::string(words)};
    for (std::string word; text >> word;) place.words.push_back({word, ""});
    return place;
}

bool Names(const CLI::Option& option, std::string_view name)
{
    const auto has = [&](const std::vector<std::string>& names, std::string_view dashes) {
        return std::ranges::any_of(names,
                                   [&](const std::string& one) { return std::string(dashes) + one == name; });
    };
    return has(option.get_lnames(), "--") || has(option.get_snames(), "-");
}

Place PlaceOf(const CLI::Option& option, const Line& line)
{
    const std::string takes = option.get_positional() ? option.get_name(true) : TypeOf(option);
    for (const Completer& completer : kCompleters) {
        const bool isIt = completer.option == takes || Names(option, completer.option);
        if (!isIt || !line.verb->name.starts_with(completer.verb)) continue;
        return completer.complete ? completer.complete(line) : Fixed(completer.words);
    }
    return {};
}

Words OptionWords(const CLI::App& parser)
{
    Words words;
    for (const CLI::Option* option : parser.get_options()) {
        for (const std::string& name : option->get_lnames())
            words.push_back({"--" + name, option->get_description()});
    }
    return words;
}

// Goes through what is typed behind a verb, up to the place that is completed.
class Behind {
public:
    Behind(const Verb& verb, CLI::App& parser) : mLine{&verb, {}, {}, {}}, mParser(parser) {}

    void Take(const std::string& word)
    {
        if (mOpen) {
            if (Names(*mOpen, "--root")) mRoot = word;
            if (Names(*mOpen, "--type")) mLine.type = word;
            mOpen = nullptr;
        } else if (word.starts_with("-")) {
            const CLI::Option* option = mParser.get_option_no_throw(word);
            if (option && !TypeOf(*option).empty()) mOpen = option;
        } else {
            mLine.arguments.push_back(word);
        }
    }

    Place Next(std::string_view typed) const
    {
        if (!mOpen && typed.starts_with("-")) return {OptionWords(mParser), false};
        SelectWatch(mRoot);
        Line line = mLine;
        line.typed = typed;
        if (mOpen) return PlaceOf(*mOpen, line);
        const CLI::Option* last = nullptr;
        std::size_t number = 0;
        for (const CLI::Option* option : mParser.get_options()) {
            if (!option->get_positional()) continue;
            last = option;
            if (number++ == mLine.arguments.size()) break;
        }
        const bool isTaken = last && number <= mLine.arguments.size() && last->get_items_expected_max() <= 1;
        return last && !isTaken ? PlaceOf(*last, line) : Place();
    }

private:
    Line mLine;
    CLI::App& mParser;
    const CLI::Option* mOpen = nullptr;  // whose value comes next
    std::string mRoot;
};

Place NextPlace(std::span<const std::string> words)
{
    const auto complete = words.first(words.size() - 1);
    std::size_t length = 0;
    const Verb* verb = FindVerb(complete, &length);
    if (!verb) return {VerbWords(complete), false};
    CLI::App parser;
    Options options;
    DefineVerb(*verb, parser, options);
    Behind behind(*verb, parser);
    for (const std::string& word : complete.subspan(length)) behind.Take(word);
    Place place = behind.Next(words.back());
    // "preview" is a verb, and "preview check" is another.
    if (complete.size() == length) std::ranges::copy(VerbWords(complete), std::back_inserter(place.words));
    return place;
}

}  // namespace

Completions Complete(std::span<const std::string> words)
{
    Place place;
    try {
        place = NextPlace(words);
    } catch (const std::exception&) {
        // No watch, no such face: nothing is completed then.
    }
    std::erase_if(place.words,
                  [&](const Completion& completion) { return !completion.word.starts_with(words.back()); });
    return {std::move(place.words), place.files};
}

int PrintCompletions(std::span<const std::string> words)
{
    if (words.empty()) return static_cast<int>(Exit::kUsage);
    const Completions completions = Complete(words);
    for (const Completion& completion : completions.words) {
        std::printf("%s%s%s\n", completion.word.c_str(), completion.description.empty() ? "" : "\t",
                    completion.description.c_str());
    }
    if (completions.files) std::puts(kCompleteFiles);
    return static_cast<int>(Exit::kDone);
}

const char* CompletionScript(std::string_view shell)
{
    if (shell == "bash") {
        return R"(# bash completion for wfctl
_wfctl()
{
    local line files=
    COMPREPLY=()
    while IFS= read -r line; do
        if [ "$line" = ":files" ]; then files=1; else COMPREPLY+=("${line%%$'\t'*}"); fi
    done < <("${COMP_WORDS[0]}" --complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    if [ -n "$files" ]; then
        compopt -o filenames 2>/dev/null
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
    fi
    if [ "${#COMPREPLY[@]}" -eq 1 ] && [ "${COMPREPLY[0]%=}" != "${COMPREPLY[0]}" ]; then
        compopt -o nospace 2>/dev/null
    fi
    # A word with "=" is several to bash, of which the last is completed.
    if [ "${COMP_WORDS[COMP_CWORD]}" = "=" ] || [ "${COMP_WORDS[COMP_CWORD-1]}" = "=" ]; then
        _wfctl_behind_equals
    fi
}
_wfctl_behind_equals()
{
    local at=$COMP_CWORD typed line
    [ "${COMP_WORDS[at]}" = "=" ] || at=$((at - 1))
    typed=${COMP_WORDS[at-1]}=
    [ "$at" -lt "$COMP_CWORD" ] && typed+=${COMP_WORDS[COMP_CWORD]}
    COMPREPLY=()
    while IFS= read -r line; do
        line=${line%%$'\t'*}
        [ "$line" = ":files" ] || COMPREPLY+=("${line#*=}")
    done < <("${COMP_WORDS[0]}" --complete "${COMP_WORDS[@]:1:at-2}" "$typed" 2>/dev/null)
}
complete -F _wfctl wfctl
)";
    }
    if (shell == "zsh") {
        return R"(#compdef wfctl
# zsh completion for wfctl
_wfctl()
{
    local line word
    local -a described
    local files=
    while IFS= read -r line; do
        if [[ $line == ":files" ]]; then
            files=1
        else
            word=${line%%$'\t'*}
            word=${word//:/\\:}
            if [[ $line == *$'\t'* ]]; then described+=("$word:${line#*$'\t'}"); else described+=("$word"); fi
        fi
    done < <("${words[1]}" --complete "${(@)words[2,CURRENT]}" 2>/dev/null)
    (( ${#described} )) && _describe wfctl described
    [[ -n $files ]] && _files
    return 0
}
if [[ ${funcstack[1]} == _wfctl ]]; then _wfctl "$@"; else compdef _wfctl wfctl; fi
)";
    }
    if (shell == "fish") {
        return R"(# fish completion for wfctl
function __wfctl_complete
    set -l words (commandline -opc) (commandline -ct)
    for line in (command $words[1] --complete $words[2..-1] 2>/dev/null)
        if test "$line" = ":files"
            __fish_complete_path (commandline -ct)
        else
            printf '%s\n' $line
        end
    end
end
complete -c wfctl -f -a '(__wfctl_complete)'
)";
    }
    return nullptr;
}

}  // namespace Wfctl
