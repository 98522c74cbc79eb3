#include "fonts.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace Drawing {
namespace {

// Every line is shaped at this size and scaled when it is painted. Nothing is hinted, so that changes
// nothing, and fonts need to be looked up but once for all sizes.
constexpr double kShapedSize = 64;
// Above this size, glyphs are filled as outlines instead of being kept as pictures.
constexpr double kLargestGlyphPicture = 200;  // pixels

using DescriptionPtr = std::unique_ptr<PangoFontDescription, Releases<pango_font_description_free>>;
using AttributesPtr = std::unique_ptr<PangoAttrList, Releases<pango_attr_list_unref>>;

DescriptionPtr Describe(const TextStyle& style)
{
    DescriptionPtr description(pango_font_description_new());
    pango_font_description_set_family(description.get(), FamiliesOf(style.font, style.language).c_str());
    pango_font_description_set_weight(description.get(), static_cast<PangoWeight>(style.weight));
    pango_font_description_set_absolute_size(description.get(), kShapedSize * PANGO_SCALE);
    return description;
}

// Letters of these scripts join, and a distance between them would tear words apart.
bool Joins(std::string_view text)
{
    for (const char* at = text.data(); at < text.data() + text.size(); at = g_utf8_next_char(at)) {
        const gunichar c = g_utf8_get_char(at);
        const GUnicodeScript script = c < 0x600 ? G_UNICODE_SCRIPT_LATIN : g_unichar_get_script(c);
        if (script == G_UNICODE_SCRIPT_ARABIC || script == G_UNICODE_SCRIPT_SYRIAC ||
            script == G_UNICODE_SCRIPT_DEVANAGARI || script == G_UNICODE_SCRIPT_BENGALI) {
            return true;
        }
    }
    return false;
}

// Of a text without letters; letters have their own.
PangoDirection DirectionOf(PangoLanguage* language)
{
    constexpr PangoScript kRightToLeft[] = {PANGO_SCRIPT_ARABIC, PANGO_SCRIPT_HEBREW, PANGO_SCRIPT_SYRIAC,
                                            PANGO_SCRIPT_THAANA, PANGO_SCRIPT_NKO};
    int count = 0;
    const PangoScript* scripts = pango_language_get_scripts(language, &count);
    const bool rightToLeft = count > 0 && std::find(std::begin(kRightToLeft), std::end(kRightToLeft),
                                                    scripts[0]) != std::end(kRightToLeft);
    return rightToLeft ? PANGO_DIRECTION_RTL : PANGO_DIRECTION_LTR;
}

std::string MissingOf(PangoLayout* layout)
{
    std::string missing;
    if (pango_layout_get_unknown_glyphs_count(layout) == 0) return missing;
    const PangoLayoutLine* line = pango_layout_get_line_readonly(layout, 0);
    const char* text = pango_layout_get_text(layout);
    for (const GSList* run = line->runs; run; run = run->next) {
        const auto* item = static_cast<const PangoLayoutRun*>(run->data);
        for (int i = 0; i < item->glyphs->num_glyphs; ++i) {
            if (!(item->glyphs->glyphs[i].glyph & PANGO_GLYPH_UNKNOWN_FLAG)) continue;
            const char* at = text + item->item->offset + item->glyphs->log_clusters[i];
            char name[16];
            std::snprintf(name, sizeof name, "%sU+%04X", missing.empty() ? "" : " ", g_utf8_get_char(at));
            missing += name;
        }
    }
    return missing;
}

// From (0, 0). The outline is taken as it was shaped, whatever the scale is: fonts cannot be opened at any
// size. On a surface without edges, so that no letter is left out for lying beyond them.
void ShowOutline(cairo_t* cr, PangoLayoutLine* line)
{
    const SurfacePtr boundless(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
    const ContextPtr shaped(cairo_create(boundless.get()));
    cairo_move_to(shaped.get(), 0, 0);
    pango_cairo_layout_line_path(shaped.get(), line);
    const std::unique_ptr<cairo_path_t, Releases<cairo_path_destroy>> outline(cairo_copy_path(shaped.get()));
    cairo_new_path(cr);
    cairo_append_path(cr, outline.get());
    cairo_fill(cr);
}

}  // namespace

TextStyle StyleOf(const Element& element, double defaultSize, std::string_view language)
{
    return {std::string(element.Text("font")), element.NumberOr("size", defaultSize),
            element.Integer("weight"), element.Number("spacing"), std::string(language)};
}

Area InkOf(const TextLine& line)
{
    PangoRectangle ink;
    pango_layout_line_get_extents(pango_layout_get_line_readonly(line.layout.get(), 0), &ink, nullptr);
    const double unit = line.scale / PANGO_SCALE;
    return {unit * ink.x, unit * ink.y, unit * (ink.x + ink.width), unit * (ink.y + ink.height)};
}

TextLine Fonts::ShapeWith(FontSource source, std::string_view text, const TextStyle& style)
{
    TextLine line;
    line.scale = style.size / kShapedSize;
    PangoContext* context = FontContext(source);
    PangoLanguage* language = pango_language_from_string(style.language.c_str());
    pango_context_set_language(context, language);
    pango_context_set_base_dir(context, DirectionOf(language));
    line.layout.reset(pango_layout_new(context));
    pango_layout_set_single_paragraph_mode(line.layout.get(), TRUE);
    pango_layout_set_font_description(line.layout.get(), Describe(style).get());
    pango_layout_set_text(line.layout.get(), text.data(), static_cast<int>(text.size()));
    if (style.spacing != 0 && !Joins(text)) {
        const AttributesPtr attributes(pango_attr_list_new());
        const double spacing = style.spacing / line.scale * PANGO_SCALE;
        pango_attr_list_insert(attributes.get(),
                               pango_attr_letter_spacing_new(static_cast<int>(std::lround(spacing))));
        pango_layout_set_attributes(line.layout.get(), attributes.get());
    }
    PangoRectangle logical;
    pango_layout_line_get_extents(pango_layout_get_line_readonly(line.layout.get(), 0), nullptr, &logical);
    line.width = line.scale * logical.width / PANGO_SCALE;
    line.missing = MissingOf(line.layout.get());
    return line;
}

TextLine Fonts::Shape(std::string_view text, const TextStyle& style)
{
    TextLine line = ShapeWith(FontSource::kOwn, text, style);
    if (!line.missing.empty()) {
        TextLine other = ShapeWith(FontSource::kSystem, text, style);
        if (other.missing.size() < line.missing.size()) line = std::move(other);
    }
    return line;
}

double Fonts::DigitMiddle(const TextStyle& style)
{
    const auto [known, isNew] = mDigitMiddles.try_emplace({style.font, style.weight}, 0);
    if (isNew) {
        TextStyle plain = style;
        plain.size = kShapedSize;
        plain.spacing = 0;
        const TextLine zero = Shape("0", plain);
        PangoRectangle ink;
        pango_layout_line_get_extents(pango_layout_get_line_readonly(zero.layout.get(), 0), &ink, nullptr);
        known->second = -(ink.y + ink.height / 2.0) / PANGO_SCALE / kShapedSize;
    }
    return known->second * style.size;
}

void Fonts::Show(cairo_t* cr, const TextLine& line, double x, double baseline)
{
    PangoLayoutLine* shaped = pango_layout_get_line_readonly(line.layout.get(), 0);
    cairo_save(cr);
    cairo_translate(cr, x, baseline);
    cairo_scale(cr, line.scale, line.scale);
    double across = kShapedSize, down = 0;
    cairo_user_to_device_distance(cr, &across, &down);
    if (std::hypot(across, down) > kLargestGlyphPicture) {
        ShowOutline(cr, shaped);
    } else {
        cairo_move_to(cr, 0, 0);
        pango_cairo_show_layout_line(cr, shaped);
    }
    cairo_restore(cr);
    cairo_new_path(cr);
}

}  // namespace Drawing
