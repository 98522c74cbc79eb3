// The messages whose fields become paths, parts of one, or keys of a database; what each does, and what is
// said to a path that lies elsewhere.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "path-stage.h"

namespace Campaign {

// A path that lies elsewhere, or is none.
struct Path {
    enum Kind {
        kLeadsOut,  // whoever uses it must be refused
        kIsLink,    // to a folder elsewhere; may itself be removed
        kIsOdd,     // stays where it is used, or is taken apart
    };
    std::string text;
    Kind kind;
};

struct PathMessage {
    using Preparation = void (*)(PathStage&, const std::string& path);

    // `values` and what follows have PATH for the path.
    PathMessage(const char* fieldAttacked, const Identity& sender, Values messageValues);

    // With a harmless value it does one of these:
    enum Effect {
        kMakes,    // a file below the root, which was not there
        kRemoves,  // such a file
        kSetsRow,  // of a database
        kAsks,     // for the preview of a face
        kAnswers,  // with that status
    };
    PathMessage& Does(Effect what, std::string which, std::string withValue);
    // The others than kPaths.
    PathMessage& Tries(const std::vector<Path>& others);
    PathMessage& After(Preparation step);
    // What is said to a path that leads out, and to one that is a link; empty: nothing that counts.
    PathMessage& Answers(const char* toOneThatLeadsOut, const char* toLink);
    // The platform refuses some of the paths, and logs it.
    PathMessage& IsRefused();
    // The log tells this each time.
    PathMessage& Logs(const char* text);
    // Rows that it may change, by their beginnings.
    PathMessage& MaySet(std::vector<std::string> beginnings);
    // The value under this key travels as an array.
    PathMessage& WithArray(const char* key);

    const char* field;
    Identity from;
    Values values;
    Effect effect = kMakes;
    std::string effectOn, harmless;
    const std::vector<Path>* paths;
    Preparation prepare;
    const char* answer = "";
    const char* answerToLink = "";
    bool isRefused = false;
    const char* logged = "";
    std::vector<std::string> rows;
    const char* arrayKey = "";
};

std::vector<PathMessage> PathMessages(const PathStage& stage);

}  // namespace Campaign
