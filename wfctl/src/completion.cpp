#include "completion.h"

#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <iterator>

#include "completion-candidates.h"
#include "exit-status.h"
#include "help-text.h"
#include "private-watch.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

using Words = std::vector<Completion>;

Words OptionWords(const CLI::App& parser)
{
    Words words;
    for (const CLI::Option* option : parser.get_options()) {
        for (const std::string& name : option->get_lnames())
            words.push_back({"--" + name, option->get_description()});
        for (const std::string& name : option->get_snames())
            words.push_back({"-" + name, option->get_description()});
    }
    return words;
}

// Goes through what is typed beside a verb, up to the place that is completed.
class Beside {
public:
    Beside(const Verb& verb, CLI::App& parser) : mLine{&verb, {}, {}, {}}, mParser(parser) {}

    void Take(const std::string& word)
    {
        if (mOpen) {
            if (IsNamed(*mOpen, "--root")) mRoot = word;
            if (IsNamed(*mOpen, "--type")) mLine.type = word;
            mOpen = nullptr;
        } else if (word.starts_with("-")) {
            const CLI::Option* option = mParser.get_option_no_throw(word);
            if (option && !TypeOf(*option).empty()) mOpen = option;
        } else {
            mLine.arguments.push_back(word);
        }
    }

    Completions Next(std::string_view typed) const
    {
        if (!mOpen && typed.starts_with("-")) return {OptionWords(mParser), false};
        SelectWatch(mRoot);
        Line line = mLine;
        line.typed = typed;
        if (mOpen) return CandidatesFor(*mOpen, line);
        const CLI::Option* last = nullptr;
        std::size_t number = 0;
        for (const CLI::Option* option : mParser.get_options()) {
            if (!option->get_positional()) continue;
            last = option;
            if (number++ == mLine.arguments.size()) break;
        }
        const bool isTaken = last && number <= mLine.arguments.size() && last->get_items_expected_max() <= 1;
        return last && !isTaken ? CandidatesFor(*last, line) : Completions();
    }

private:
    Line mLine;
    CLI::App& mParser;
    const CLI::Option* mOpen = nullptr;  // whose value comes next
    std::string mRoot;
};

// Where no verb is whole yet: options, or the words of verbs.
Completions BeforeVerb(std::span<const std::string> words, const std::string& typed)
{
    if (!typed.starts_with("-")) return {VerbWords(words), false};
    Completions place;
    for (const FrontOption& option : kFrontOptions)
        place.words.push_back({std::string(option.name), std::string(option.help)});
    return place;
}

Completions NextPlace(std::span<const std::string> words)
{
    const auto complete = words.first(words.size() - 1);
    const std::size_t before = OptionsBefore(complete);
    if (before > complete.size()) return {{}, true};  // --root takes a folder
    const auto named = complete.subspan(before);
    std::size_t length = 0;
    const Verb* verb = FindVerb(named, &length);
    if (!verb) return BeforeVerb(named, words.back());
    CLI::App parser;
    Options options;
    DefineVerb(*verb, parser, options);
    Beside beside(*verb, parser);
    for (const std::string& word : complete.first(before)) beside.Take(word);
    for (const std::string& word : named.subspan(length)) beside.Take(word);
    Completions place = beside.Next(words.back());
    // "preview" is a verb, and "preview check" is another.
    if (named.size() == length) std::ranges::copy(VerbWords(named), std::back_inserter(place.words));
    return place;
}

}  // namespace

Completions Complete(std::span<const std::string> words)
{
    Completions place;
    try {
        place = NextPlace(words);
    } catch (const std::exception&) {
        // No watch, no such face: nothing is completed then.
    }
    std::erase_if(place.words,
                  [&](const Completion& completion) { return !completion.word.starts_with(words.back()); });
    return place;
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

}  // namespace Wfctl
