#include "font-set.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <algorithm>
#include <map>
#include <memory>

#include "releases.h"

namespace Drawing {
namespace {

// The files of the set, where their packages (packaging/packages.txt) put them; others in these folders are
// passed over. Elsewhere the families are found among the system's fonts. A family without a bold font is
// thickened.
constexpr char kConfiguration[] = R"(<?xml version="1.0"?>
<fontconfig>
  <cachedir>/var/cache/fontconfig</cachedir>
  <cachedir prefix="xdg">fontconfig</cachedir>
  <dir>/usr/share/fonts/truetype/open-sans</dir>
  <dir>/usr/share/fonts/truetype/fonts-oldstandard</dir>
  <dir>/usr/share/fonts/truetype/dejavu</dir>
  <dir>/usr/share/fonts/truetype/noto</dir>
  <dir>/usr/share/fonts/truetype/nanum</dir>
  <dir>/usr/share/fonts/truetype/vlgothic</dir>
  <selectfont>
    <rejectfont><glob>/usr/share/fonts/truetype/*.ttf</glob></rejectfont>
    <acceptfont>
      <glob>/usr/share/fonts/truetype/open-sans/OpenSans-Light.ttf</glob>
      <glob>/usr/share/fonts/truetype/open-sans/OpenSans-Regular.ttf</glob>
      <glob>/usr/share/fonts/truetype/open-sans/OpenSans-Semibold.ttf</glob>
      <glob>/usr/share/fonts/truetype/open-sans/OpenSans-Bold.ttf</glob>
      <glob>/usr/share/fonts/truetype/open-sans/OpenSans-ExtraBold.ttf</glob>
      <glob>/usr/share/fonts/truetype/fonts-oldstandard/OldStandard-Regular.ttf</glob>
      <glob>/usr/share/fonts/truetype/fonts-oldstandard/OldStandard-Bold.ttf</glob>
      <glob>/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf</glob>
      <glob>/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf</glob>
      <glob>/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf</glob>
      <glob>/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf</glob>
      <glob>/usr/share/fonts/truetype/noto/NotoSansArabicUI-*</glob>
      <glob>/usr/share/fonts/truetype/noto/NotoSansDevanagariUI-*</glob>
      <glob>/usr/share/fonts/truetype/noto/NotoSansThaiUI-*</glob>
      <glob>/usr/share/fonts/truetype/nanum/NanumBarunGothic*</glob>
      <glob>/usr/share/fonts/truetype/vlgothic/VL-PGothic-*</glob>
    </acceptfont>
  </selectfont>
  <match target="font">
    <test name="weight" compare="less_eq"><const>medium</const></test>
    <test name="weight" compare="more_eq" target="pattern"><const>bold</const></test>
    <edit name="embolden" mode="assign"><bool>true</bool></edit>
    <edit name="weight" mode="assign"><const>bold</const></edit>
  </match>
</fontconfig>
)";

// What a `font` begins with, before the scripts that it lacks.
struct Face {
    std::string_view font;
    const char* families;
    const char* generic;
};
constexpr Face kFaces[] = {
    {"sans",  "Open Sans",        "sans-serif"},
    {"serif", "Old Standard TT",  "serif"     },
    {"mono",  "DejaVu Sans Mono", "monospace" },
};

// The scripts that the faces' own families lack. Chinese characters look different in Korean and Japanese, so
// the language's own family comes first.
struct Script {
    std::string_view language;
    const char* family;
};
constexpr Script kScripts[] = {
    {"ar", "Noto Sans Arabic UI"    },
    {"hi", "Noto Sans Devanagari UI"},
    {"th", "Noto Sans Thai UI"      },
    {"ko", "NanumBarunGothic"       },
    {"ja", "VL PGothic"             },
};

using MapPtr = std::unique_ptr<PangoFontMap, Releases<g_object_unref>>;
using ConfigPtr = std::unique_ptr<FcConfig, Releases<FcConfigDestroy>>;
using OptionsPtr = std::unique_ptr<cairo_font_options_t, Releases<cairo_font_options_destroy>>;

ConfigPtr ConfigurationOf(FontSource source)
{
    if (source == FontSource::kSystem) {
        if (ConfigPtr system(FcInitLoadConfigAndFonts()); system) return system;
    }
    ConfigPtr config(FcConfigCreate());
    FcConfigParseAndLoadFromMemory(config.get(), reinterpret_cast<const FcChar8*>(kConfiguration), FcTrue);
    FcConfigBuildFonts(config.get());
    return config;
}

PangoContext* OpenFonts(FontSource source)
{
    const ConfigPtr config = ConfigurationOf(source);
    // Otherwise Pango would read the system's configuration on a thread of its own as soon as there is a map.
    FcConfigSetCurrent(config.get());
    const MapPtr map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map.get()), config.get());
    PangoContext* context = pango_font_map_create_context(map.get());

    const OptionsPtr options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options.get());
    pango_cairo_context_set_resolution(context, 96);
    pango_context_set_round_glyph_positions(context, FALSE);
    return context;
}

}  // namespace

PangoContext* FontContext(FontSource source)
{
    static std::map<FontSource, PangoContext*>& contexts = *new std::map<FontSource, PangoContext*>;
    PangoContext*& context = contexts[source];
    if (!context) context = OpenFonts(source);
    return context;
}

std::string FamiliesOf(std::string_view font, std::string_view language)
{
    const auto face =
        std::find_if(std::begin(kFaces), std::end(kFaces), [&](const Face& f) { return f.font == font; });
    const Face& chosen = face == std::end(kFaces) ? kFaces[0] : *face;
    const std::string_view base = language.substr(0, language.find_first_of("-_"));
    std::string families = chosen.families;
    const auto add = [&](const char* family) { families.append(",").append(family); };
    for (const Script& script : kScripts)
        if (script.language == base) add(script.family);
    for (const Script& script : kScripts)
        if (script.language != base) add(script.family);
    add("DejaVu Sans");
    add(chosen.generic);
    return families;
}

}  // namespace Drawing
