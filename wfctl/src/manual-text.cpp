#include "manual-text.h"

#include <algorithm>
#include <iterator>

namespace Wfctl {

namespace {

// Of a verb, or of all whose first word it is.
struct Description {
    std::string_view verb, text;
};

// clang-format off
constexpr Description kDescriptions[] = {
    {"up",
     "Starts a bus, and a supervisor that keeps it and the service up until `wfctl down`. The folder is made where it "
     "is not there, and holds all that the watch writes. Sourcing DIR/watch.env makes it the watch of a shell."},
    {"down", "Ends the service, the supervisor and the bus. `wfctl up` brings the same watch up again."},
    {"status",
     "Looks, and starts nothing. Whom trusted ports trust differs: on a private watch every program of the same user, on a "
     "device those that the policy of the bus lets speak as an application."},
    {"list", "Needs no running watch. A face that was changed or installed lies in the read/write area, one as it was "
             "shipped in the read-only one."},
    {"show", "Needs no running watch. What is in effect is marked with `*`; what a condition hides says so."},
    {"current", "Prints the application that shows the time, and its face. The status is 10 while none was ever set."},
    {"set", "Sends what the settings list sends. A face may be named by the end of its name, as `c1`."},
    {"install",
     "Checks the document, and sends it when it is good. The service stores it, makes the flat document from it and has "
     "the preview drawn. A message carries no images: which of the document's the watch has not is told."},
    {"update",
     "Checks the document, and sends it when it is good. It replaces the stored one, with what was chosen in it; "
     "`--keep-selection` takes that over, and tells what the new document does not offer any more."},
    {"edit",
     "Changes the selection in the stored document, sends it as the editor does, and prints what is shown otherwise than "
     "before. `wfctl show FACE` lists what there is to choose. A world clock's city is the id's, or what follows a "
     "further colon."},
    {"delete", "Takes the read/write copy away: a face that was shipped is then as it was shipped, another one is gone."},
    {"bg add", "The pictures are copied to where faces find the user's. With `--pending` they are on trial until "
               "`wfctl bg save` or `wfctl bg cancel`."},
    {"bg del", "A face that shows a picture which is gone shows its own when its preview is drawn the next time."},
    {"bg", "Background pictures are the user's, of one face or of the theme. Those that were added or deleted with "
           "`--pending` are on trial until they are saved or cancelled."},
    {"backup", "Stores what is the user's alone. The folder must be new, and has a manifest by which it is checked."},
    {"restore", "Checks the folder whole before anything is changed, and compares the watch with it afterwards. What "
                "would be lost is listed, and asked about unless `--yes` is there."},
    {"world-clock", "Faces have world clocks in groups. The current face is prepared first; an update then plays the "
                    "world-clock application. The change is gone when the face is updated."},
    {"date", "A skeleton names fields, as yMMMEd does; their order and the words between them are the language's. "
             "`Jmm` has the hours of the watch's mode."},
    {"evaluate", "Any application may keep a text for a face with the service, within limits, over an open port."},
    {"preview request", "Stores a face's own document once more, after which the service has its preview drawn again."},
    {"preview check", "Needs no running watch. Prints one line for each face."},
    {"preview", "Needs no running watch. Prints where the previews lie, and draws them on a terminal where `chafa` is "
                "installed."},
    {"validate", "Prints each fault with its place, its code and what may be meant. Images are looked up beside the "
                 "document."},
    {"flatten", "Needs no watch. The flat document is what programs draw; the service makes the same from the same text."},
    {"render", "Needs no running watch, and draws as a watch would. Images of a file are taken from beside it. A picture "
               "that is there is drawn over only where `-o` names it."},
    {"sheet", "Previews that the watch has are taken, others drawn. With languages or hour modes every face is drawn in "
              "each, a language a column, an hour mode a row."},
    {"send", "A value is a text, `@FILE` (its bytes) or `[a,b]`, a list. Nothing is checked: what the service does not "
             "know is sent as it stands, and what may be a slip is told."},
    {"listen", "Holds the application's name on the bus, so that messages for it come here. While it listens, other "
               "verbs speak as the same application through it."},
    {"launch", "Starts the application where it does not run, and hands it extra data."},
    {"key", "Platform keys are shared by all applications of the watch. A new value is a bool for true and false, an "
            "int for a decimal integer, else a string; one that is there keeps its type unless `--type` says another."},
    {"pref", "Preferences are an application's own. A new value is a bool for true and false, an int for a decimal "
             "integer, else a string; one that is there keeps its type unless `--type` says another."},
    {"setting", "The settings are language, country, 24-hour and timezone. One that was never set has the value of the "
                "environment."},
    {"survey", "Usage records say which face is shown with which complications, and for how long; the service keeps a "
               "limited number of them."},
    {"trace", "The recording has what all programs of the watch did, when, and for how long, in one file that trace "
              "viewers read."},
    {"monitor", "Says who sends to whom, the type of each message, and its keys with their sizes, never the values. It "
                "sends nothing itself. With applications, only what these send and get."},
    {"doctor", "Looks at files alone, and deletes nothing. With `--fix` the service is asked to draw previews again, and "
               "what nobody needs is moved below lost+found, from where `--undo` puts it back."},
    {"completion", "An installation has these scripts where the shells look for them. They ask `wfctl` itself, so that "
                   "what is completed is what there is."},
    {"help", "Prints what `--help` behind the verb prints; of the first of two words, the verbs of that group."},
    {"manual", "An installation has these pages where `man` looks for them."},
};

// Verbs of different first words that belong together; those of the same first word do.
constexpr std::string_view kTogether[][5] = {
    {"up",         "down",            "status",        "doctor"            },
    {"list",       "show",            "current",       "set"               },
    {"install",    "update",          "edit",          "delete", "validate"},
    {"edit",       "show",            "bg add"                             },
    {"validate",   "flatten",         "render"                             },
    {"render",     "sheet",           "preview"                            },
    {"preview request", "preview check", "doctor"                          },
    {"backup",     "restore"                                               },
    {"send",       "listen",          "launch",        "monitor"           },
    {"key list",   "pref list",       "setting list"                       },
    {"completion", "help",            "manual"                             },
};
// clang-format on

std::string_view FirstWord(std::string_view name)
{
    return name.substr(0, name.find(' '));
}

bool AreTogether(std::string_view one, std::string_view other)
{
    if (FirstWord(one) == FirstWord(other)) return true;
    return std::ranges::any_of(kTogether, [&](const auto& verbs) {
        return std::ranges::find(verbs, one) != std::end(verbs) &&
               std::ranges::find(verbs, other) != std::end(verbs);
    });
}

}  // namespace

std::string_view DescriptionOf(const Verb& verb)
{
    const auto isOf = [&](const Description& description) {
        return description.verb == verb.name || description.verb == FirstWord(verb.name);
    };
    const auto* found = std::ranges::find_if(kDescriptions, isOf);
    return found == std::end(kDescriptions) ? std::string_view() : found->text;
}

Names RelatedTo(const Verb& verb)
{
    Names names;
    for (const Verb& other : Verbs()) {
        if (other.name != verb.name && AreTogether(verb.name, other.name)) names.push_back(other.name);
    }
    return names;
}

}  // namespace Wfctl
