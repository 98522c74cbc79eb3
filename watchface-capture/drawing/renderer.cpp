#include <algorithm>
#include <charconv>
#include <cmath>

#include "dates.h"
#include "drawing.h"
#include "fonts.h"
#include "images.h"
#include "painter.h"
#include "texts.h"

namespace Drawing {
namespace {

constexpr int kFormat = 1;

TimeOfDay ParseTime(std::string_view text)  // checked: HH:MM:SS
{
    const auto two = [&](size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
    return {two(0), two(3), two(6)};
}

std::unique_ptr<DataUtil::XmlTree> ReadTree(std::string_view text)
{
    DataUtil::Findings findings;
    auto tree = DataUtil::XmlTree::Load(text, findings);
    if (tree) return tree;
    const auto all = findings.Take();
    if (all.empty()) throw DocumentError({0, 0, "the document cannot be read"});
    throw DocumentError({all.front().line, all.front().column, all.front().message});
}

Element ReadRoot(const DataUtil::XmlTree& tree, std::vector<Finding>& warnings)
{
    const DataUtil::ElementRule& rule = DataUtil::FlatSchema().Root();
    const std::string name = tree.Root().name();
    const auto fail = [&](const std::string& text) {
        const DataUtil::Place place = tree.PlaceOf(tree.Root(), "");
        throw DocumentError({place.line, place.column, "<" + name + ">: " + text});
    };
    if (name != rule.name) fail("the root of a flat document is \"watchface\"");
    // Before anything else: a later format may have other rules.
    if (tree.Root().attribute("format").as_int(kFormat) != kFormat) fail("the format has to be 1");
    return {tree, tree.Root(), rule, warnings};
}

// Nothing is painted outside a round canvas. Only its corners are touched.
void CutShape(cairo_t* cr, double width, double height)
{
    cairo_new_path(cr);
    cairo_rectangle(cr, -1, -1, width + 2, height + 2);
    cairo_save(cr);
    cairo_translate(cr, width / 2, height / 2);
    cairo_scale(cr, width / 2, height / 2);
    cairo_new_sub_path(cr);
    cairo_arc_negative(cr, 0, 0, 1, 2 * std::numbers::pi, 0);
    cairo_close_path(cr);
    cairo_restore(cr);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_set_operator(cr, CAIRO_OPERATOR_DEST_OUT);
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_fill(cr);
}

}  // namespace

class Renderer::Impl {
public:
    SurfacePtr Draw(std::string_view document, const Settings& settings, std::vector<Finding>& warnings)
    {
        const auto tree = ReadTree(document);
        const Element root = ReadRoot(*tree, warnings);
        const Texts texts(*tree, root.Text("default-language"), warnings);
        const double width = root.Number("width"), height = root.Number("height"),
                     longer = std::max(width, height);
        const double size = settings.size > 0 ? std::min(settings.size, Limits::kLargestSide)
                                              : std::min<double>(longer, Limits::kLargestOwnSize);
        const double scale = size / longer;
        const auto pixels = [scale](double side) {
            return std::max(1, static_cast<int>(std::lround(side * scale)));
        };

        SurfacePtr picture(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels(width), pixels(height)));
        const ContextPtr cr(cairo_create(picture.get()));
        cairo_scale(cr.get(), scale, scale);
        Images images;
        const Moment moment = mDates.At(settings.timezone, ParseTime(root.Text("preview-time")));
        Painter painter{cr.get(), *tree,  settings, texts,         mFonts,         mDates, images, warnings,
                        moment,   moment, scale,    pixels(width), pixels(height), 0,      {}};
        if (const auto background = root.Paint("background")) {
            SetSource(cr.get(), *background);
            cairo_paint(cr.get());
        }
        PaintChildren(painter, root);
        if (root.Is("shape", "round")) CutShape(cr.get(), width, height);
        cairo_surface_flush(picture.get());
        for (const cairo_status_t status : {cairo_status(cr.get()), cairo_surface_status(picture.get())}) {
            if (status != CAIRO_STATUS_SUCCESS) throw DocumentError({0, 0, cairo_status_to_string(status)});
        }
        return picture;
    }

private:
    Fonts mFonts;
    Dates mDates;
};

Renderer::Renderer() : mImpl(std::make_unique<Impl>()) {}
Renderer::~Renderer() = default;

Result Renderer::Draw(std::string_view document, const Settings& settings)
{
    Result result;
    try {
        result.picture = mImpl->Draw(document, settings, result.warnings);
    } catch (const DocumentError& error) {
        result.error = error.What();
    } catch (const std::bad_alloc&) {
        result.error = {0, 0, "memory is short"};
    }
    return result;
}

void ReleaseSurface::operator()(cairo_surface_t* surface) const
{
    cairo_surface_destroy(surface);
}

std::string NameOf(std::string_view document)
{
    DataUtil::Findings findings;
    const auto tree = DataUtil::XmlTree::Load(document, findings);
    if (!tree) return {};
    std::string problem;
    const DataUtil::AttributeRule rule{"id", DataUtil::ValueKind::kFaceId};
    return DataUtil::CanonicalValue(rule, tree->Root().attribute("id").value(), problem).value_or("");
}

std::string Describe(const std::string& file, const Finding& finding)
{
    if (finding.line == 0) return file + ": " + finding.text;
    return file + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ": " +
           finding.text;
}

}  // namespace Drawing
