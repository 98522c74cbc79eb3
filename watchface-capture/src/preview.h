// Drawing the preview of one face of the watch.

#pragma once

#include <string>

#include "drawing.h"

namespace Capture {

class Preview {
public:
    // Draws the face's watchface.xml (the read/write copy, else the installed one) as the watch is set, and
    // replaces its preview in the read/write area in one step. When that cannot be done the old preview
    // stays, one log line says why, and the result is false. `name` is foreign. No folder is ever made.
    bool Replace(const std::string& name);

private:
    Drawing::Renderer mRenderer;
};

}  // namespace Capture
