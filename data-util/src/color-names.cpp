#include "color-names.h"

#include <algorithm>
#include <iterator>

namespace DataUtil {

namespace {

struct NamedColor {
    std::string_view name;
    std::string_view value;
};
// The basic ones, and "orange".
constexpr NamedColor kColors[] = {
    {"aqua",    "#00FFFF"},
    {"black",   "#000000"},
    {"blue",    "#0000FF"},
    {"fuchsia", "#FF00FF"},
    {"gray",    "#808080"},
    {"green",   "#008000"},
    {"grey",    "#808080"},
    {"lime",    "#00FF00"},
    {"maroon",  "#800000"},
    {"navy",    "#000080"},
    {"olive",   "#808000"},
    {"orange",  "#FFA500"},
    {"purple",  "#800080"},
    {"red",     "#FF0000"},
    {"silver",  "#C0C0C0"},
    {"teal",    "#008080"},
    {"white",   "#FFFFFF"},
    {"yellow",  "#FFFF00"},
};

}  // namespace

std::string_view ValueOfColor(std::string_view name)
{
    const auto row = std::find_if(std::begin(kColors), std::end(kColors),
                                  [&](const NamedColor& color) { return color.name == name; });
    return row == std::end(kColors) ? std::string_view() : row->value;
}

}  // namespace DataUtil
