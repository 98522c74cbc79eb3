// Pictures of faces, drawn by the capture application's program without a bus.

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Wfctl {

// A face that can be drawn.
struct Drawable {
    std::string document;  // the file of its flat document; empty where it is `made`
    std::string faces;     // a folder of faces where more assets are looked up; may be empty
    std::string name;
    std::string title;  // may be empty
    bool isRound = true;
    std::string shownAs;                   // how messages name the document
    std::vector<std::string> assets = {};  // folders where they are looked up first
    std::string made = {};                 // from shownAs, in which nothing has this flat document's lines
};

// What `what` names: a result XML, a flat document, or a watch face of the selected watch. A result XML is
// flattened, and its findings go to stderr. Stops when there is no such thing or it is refused.
Drawable FindDrawable(const std::string& what);

// As what a face is drawn.
struct Look {
    std::string language, timezone;
    bool is24Hours = true;
    int size = 0;  // pixels of the longer side; 0: the document's own
};

// As the selected watch is set.
Look WatchLook();

struct Picture {
    Drawable what;
    Look look;
    std::string out;
};

// Draws the pictures, several at once. What the program says goes to stderr, each line once. One result for
// each picture: whether it was drawn. Stops with Exit::kNotFound when the program is missing. `onDrawn`,
// which may be empty, is told how many are done.
std::vector<bool> Draw(const std::vector<Picture>& pictures,
                       const std::function<void(std::size_t)>& onDrawn = {});

}  // namespace Wfctl
