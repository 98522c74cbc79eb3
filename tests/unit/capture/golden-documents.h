// The documents whose drawings are kept as golden pictures.

#pragma once

#include <string>
#include <vector>

#include "drawing.h"

namespace Golden {

inline constexpr int kFaceSize = 180;  // pixels of a face in its sheet

// The names of golden/NAME.xml, in order, and their texts.
std::vector<std::string> Documents();
std::string Document(const std::string& name);
Drawing::Settings DocumentSettings();

// The names of the faces that ship, in order, and their flat documents.
std::vector<std::string> Faces();
std::string FlatDocument(const std::string& face);
Drawing::Settings FaceSettings(const std::string& face);

// Draws, and expects neither an error nor a warning.
Drawing::SurfacePtr Draw(const std::string& document, const Drawing::Settings& settings);
// As 32-bit ARGB, whatever it was.
Drawing::SurfacePtr Argb(cairo_surface_t* picture);

}  // namespace Golden
