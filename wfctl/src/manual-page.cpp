#include "manual-page.h"

#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cctype>
#include <string_view>

#include "completion.h"
#include "help-text.h"
#include "manual-text.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

constexpr char kRevised[] = "2026-11-21";  // when these pages were last looked through

// A text as man takes it: hyphens that can be searched for, bold between backquotes, no requests at the
// beginning of a line.
std::string Escaped(std::string_view text)
{
    constexpr std::string_view kEllipsis = "…";
    std::string escaped;
    bool isBold = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i).starts_with(kEllipsis)) {
            escaped += "\\[u2026]";
            i += kEllipsis.size() - 1;
        } else if (text[i] == '\\') {
            escaped += "\\e";
        } else if (text[i] == '-') {
            escaped += "\\-";
        } else if (text[i] == '`') {
            escaped += (isBold = !isBold) ? "\\fB" : "\\fR";
        } else if (text[i] == '\'') {
            escaped += "\\(aq";
        } else {
            escaped += text[i];
        }
    }
    return escaped.starts_with('.') ? "\\&" + escaped : escaped;
}

std::string Option(const CLI::Option& option)
{
    return ".TP\n.B " + Escaped(OptionText(option)) + "\n" + Escaped(option.get_description()) + "\n";
}

// "wfctl-key-get".
std::string PageName(std::string_view verb)
{
    std::string name = "wfctl-" + std::string(verb);
    std::ranges::replace(name, ' ', '-');
    return name;
}

// An option stays on one line with what it takes.
std::string Arguments(const Verb& verb)
{
    std::string text;
    int depth = 0;
    for (const char c : Escaped(verb.arguments)) {
        depth += c == '[' ? 1 : c == ']' ? -1 : 0;
        text += c == ' ' && depth > 0 ? "\\ " : std::string(1, c);
    }
    return text.empty() ? "" : text + "\n";
}

std::string Head(std::string name, std::string_view help)
{
    const std::string title = Escaped(name);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
    return ".TH " + Escaped(name) + " 1 " + kRevised +
           " \"wfctl " WATCH_VERSION "\" \"User Commands\"\n.nh\n.ad l\n.SH NAME\n" + title + " \\- " +
           Escaped(help) + "\n";
}

struct Term {
    const char *term, *text;
};

constexpr Term kExitStatuses[] = {
    {"0",   "done"                                          },
    {"1",   "an error, or the service said no"              },
    {"2",   "a mistake on the command line"                 },
    {"3",   "no answer in time"                             },
    {"4",   "not permitted"                                 },
    {"8",   "no watch is running"                           },
    {"9",   "nothing to do"                                 },
    {"10",  "there is no such face, file, key or preference"},
    {"130", "interrupted"                                   },
};

constexpr Term kEnvironment[] = {
    {"DBUS_SESSION_BUS_ADDRESS", "the watch's bus"                                                            },
    {"WATCH_ROOT",               "what the watch writes: databases and areas"                                 },
    {"WATCH_RESOURCES",          "the faces that are shipped"                                                 },
    {"NO_COLOR",                 "nothing is printed in colour"                                               },
    {"WATCH_LOG",                "what a watch that is brought up logs: debug, info, warning, error or silent"},
};

constexpr Term kFiles[] = {
    {"DIR/watch.env", "sets the first three of these; to be sourced by a shell"},
    {"DIR/watch.log", "the log of every program of a private watch"            },
};

template <std::size_t n>
std::string Terms(const char* title, const Term (&terms)[n])
{
    std::string text = std::string(".SH ") + title + "\n";
    for (const Term& term : terms) text += ".TP\n.B " + Escaped(term.term) + "\n" + Escaped(term.text) + "\n";
    return text;
}

std::string SeeAlso(const Verb& verb)
{
    std::string text = ".BR wfctl (1)";
    for (const std::string_view other : RelatedTo(verb))
        text += ",\n.BR " + Escaped(PageName(other)) + " (1)";
    return text + "\n";
}

constexpr char kSeeOthers[] = ".BR busctl (1),\n.BR dbus\\-daemon (1)\n";

}  // namespace

std::string ManualPage()
{
    std::string text =
        Head("wfctl", "talk to the face service of a watch") +
        ".SH SYNOPSIS\n.B wfctl\n.I VERB\n\\[u2026]\n"
        "[\\fB\\-\\-root\\fR \\fIDIR\\fR] [\\fB\\-\\-json\\fR]\n"
        ".SH DESCRIPTION\n"
        "Brings up private watches, shows and changes the faces of a watch, and sends, receives\n"
        "and watches what its applications send each other, as whichever application you say.\n"
        ".SH VERBS\nEach has a page of its own.\n";
    for (const Verb& verb : Verbs())
        text += ".TP\n.BR " + Escaped(PageName(verb.name)) + " (1)\n" + Escaped(verb.help) + "\n";
    return text +
           ".SH OPTIONS\nEvery verb takes these.\n"
           ".TP\n.B \\-\\-root DIR\nthe private watch below this folder; else it is that of the environment\n"
           ".TP\n.B \\-\\-json\nprint JSON\n"
           ".TP\n.B \\-h, \\-\\-help\nshow the help\n" +
           Terms("EXIT STATUS", kExitStatuses) + Terms("ENVIRONMENT", kEnvironment) + Terms("FILES", kFiles) +
           ".SH SEE ALSO\n" + kSeeOthers;
}

std::string ManualPage(const Verb& verb)
{
    CLI::App parser;
    Options options;
    DefineVerb(verb, parser, options);
    std::string text = Head(PageName(verb.name), verb.help) + ".SH SYNOPSIS\n.B wfctl " + Escaped(verb.name) +
                       "\n" + Arguments(verb) + ".SH DESCRIPTION\n" + Escaped(DescriptionOf(verb)) +
                       "\n.SH OPTIONS\n";
    for (const CLI::Option* option : parser.get_options()) text += Option(*option);
    return text + ".SH EXAMPLES\n.EX\n" + Escaped(verb.example) + "\n.EE\n" +
           Terms("EXIT STATUS", kExitStatuses) + ".SH SEE ALSO\n" + SeeAlso(verb);
}

std::vector<InstalledPage> InstalledPages()
{
    std::vector<InstalledPage> pages = {
        {"man/man1/wfctl.1",                     ManualPage()            },
        {"bash-completion/completions/wfctl",    CompletionScript("bash")},
        {"zsh/site-functions/_wfctl",            CompletionScript("zsh") },
        {"fish/vendor_completions.d/wfctl.fish", CompletionScript("fish")},
    };
    for (const Verb& verb : Verbs())
        pages.push_back({"man/man1/" + PageName(verb.name) + ".1", ManualPage(verb)});
    return pages;
}

}  // namespace Wfctl
