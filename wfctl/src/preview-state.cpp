#include "preview-state.h"

#include <filesystem>

#include "face-update.h"

namespace Wfctl {

namespace {

struct StateWords {
    std::string_view name, text;
};

// In the order of PreviewState.
constexpr StateWords kWords[] = {
    {"good",    "good"                               },
    {"missing", "missing"                            },
    {"no-png",  "no PNG"                             },
    {"blank",   "blank: all of it has one colour"    },
    {"older",   "older than the face's watchface.xml"},
};

}  // namespace

PreviewReport CheckPreview(const Face& face)
{
    std::error_code error;
    if (!std::filesystem::exists(face.Preview(), error)) return {};
    const PngFacts picture = LookAtPng(face.Preview());
    if (picture.kind == PngKind::kNone) return {PreviewState::kNoPng, picture};
    if (picture.kind == PngKind::kBlank) return {PreviewState::kBlank, picture};
    // In the read-only area times say when the files were copied there, in any order.
    const bool isOlder = face.writable && std::filesystem::exists(face.WatchfaceXml(), error) &&
                         !IsNotOlder(face.Preview(), face.WatchfaceXml());
    return {isOlder ? PreviewState::kOlder : PreviewState::kGood, picture};
}

std::string_view NameOf(PreviewState state)
{
    return kWords[static_cast<int>(state)].name;
}

std::string_view TextOf(PreviewState state)
{
    return kWords[static_cast<int>(state)].text;
}

}  // namespace Wfctl
