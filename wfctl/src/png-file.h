// What a look at a picture tells.

#pragma once

#include <string>

namespace Wfctl {

enum class PngKind {
    kNone,   // not a PNG that can be decoded, or one with a side of more than 4096 pixels
    kBlank,  // all of it has one colour, or none
    kGood,
};

struct PngFacts {
    PngKind kind = PngKind::kNone;
    int width = 0, height = 0;  // pixels
};

// Decodes the PNG.
PngFacts LookAtPng(const std::string& path);

}  // namespace Wfctl
