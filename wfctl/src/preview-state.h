// Whether a face's preview is what it should be.

#pragma once

#include <string_view>

#include "faces.h"
#include "png-file.h"

namespace Wfctl {

enum class PreviewState { kGood, kMissing, kNoPng, kBlank, kOlder };

struct PreviewReport {
    PreviewState state = PreviewState::kMissing;
    PngFacts picture;
};
PreviewReport CheckPreview(const Face& face);

// "good", "missing", "no-png", "blank", "older": for programs.
std::string_view NameOf(PreviewState state);
// For people: "older than its watchface.xml".
std::string_view TextOf(PreviewState state);

}  // namespace Wfctl
