#include <cairo-svg.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "dates.h"
#include "drawing.h"
#include "fonts.h"
#include "images.h"
#include "painter.h"
#include "texts.h"
#include "vector-groups.h"

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

// The canvas' inside, as a path; turned round, so that it can be cut out of a larger one.
void TraceCanvas(cairo_t* cr, const Element& root)
{
    const double width = root.Number("width"), height = root.Number("height");
    if (!root.Is("shape", "round")) {
        cairo_rectangle(cr, 0, 0, width, height);
        return;
    }
    cairo_save(cr);
    cairo_translate(cr, width / 2, height / 2);
    cairo_scale(cr, width / 2, height / 2);
    cairo_new_sub_path(cr);
    cairo_arc_negative(cr, 0, 0, 1, 2 * std::numbers::pi, 0);
    cairo_close_path(cr);
    cairo_restore(cr);
}

// Nothing is painted outside a round canvas. Only its corners are touched, where clipping would slow down all
// that is painted.
void CutShape(cairo_t* cr, const Element& root)
{
    if (!root.Is("shape", "round")) return;
    cairo_new_path(cr);
    cairo_rectangle(cr, -1, -1, root.Number("width") + 2, root.Number("height") + 2);
    TraceCanvas(cr, root);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_set_operator(cr, CAIRO_OPERATOR_CLEAR);
    cairo_fill(cr);
}

void ExpectSuccess(std::initializer_list<cairo_status_t> statuses)
{
    for (const cairo_status_t status : statuses) {
        if (status != CAIRO_STATUS_SUCCESS) throw DocumentError({0, 0, cairo_status_to_string(status)});
    }
}

cairo_status_t Append(void* text, const unsigned char* bytes, unsigned length)
try {
    static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), length);
    return CAIRO_STATUS_SUCCESS;
} catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
}

// A document that has been read, and the size of its picture.
struct Page {
    std::unique_ptr<DataUtil::XmlTree> tree;
    Element root;
    Texts texts;
    double scale;       // pixels a canvas unit
    int width, height;  // pixels

    Page(std::string_view document, const Settings& settings, std::vector<Finding>& warnings)
        : tree(ReadTree(document)),
          root(ReadRoot(*tree, warnings)),
          texts(*tree, root.Text("default-language"), warnings)
    {
        const double longer = std::max(root.Number("width"), root.Number("height"));
        const double size = settings.size > 0 ? std::min(settings.size, Limits::kLargestSide)
                                              : std::min<double>(longer, Limits::kLargestOwnSize);
        scale = size / longer;
        width = Pixels(root.Number("width"));
        height = Pixels(root.Number("height"));
    }

private:
    int Pixels(double side) const { return std::max(1, static_cast<int>(std::lround(side * scale))); }
};

}  // namespace

class Renderer::Impl {
public:
    SurfacePtr Draw(std::string_view document, const Settings& settings, const Observer& observer,
                    std::vector<Finding>& warnings)
    {
        const Page page(document, settings, warnings);
        SurfacePtr picture(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, page.width, page.height));
        const ContextPtr cr(cairo_create(picture.get()));
        VectorGroups none;
        Paint(page, Medium::kPixels, cr.get(), none, settings, observer, warnings);
        CutShape(cr.get(), page.root);
        cairo_surface_flush(picture.get());
        ExpectSuccess({cairo_status(cr.get()), cairo_surface_status(picture.get())});
        return picture;
    }

    std::string Export(std::string_view document, const Settings& settings, std::vector<Finding>& warnings)
    {
        const Page page(document, settings, warnings);
        std::string svg;
        VectorGroups groups;
        const SurfacePtr surface(cairo_svg_surface_create_for_stream(Append, &svg, page.width, page.height));
        cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
        const ContextPtr cr(cairo_create(surface.get()));
        cairo_scale(cr.get(), page.scale, page.scale);
        TraceCanvas(cr.get(), page.root);
        cairo_clip(cr.get());
        cairo_identity_matrix(cr.get());
        Paint(page, Medium::kVectors, cr.get(), groups, settings, nullptr, warnings);
        cairo_surface_finish(surface.get());
        ExpectSuccess({cairo_status(cr.get()), cairo_surface_status(surface.get())});
        return svg;
    }

private:
    void Paint(const Page& page, Medium medium, cairo_t* cr, VectorGroups& groups, const Settings& settings,
               const Observer& observer, std::vector<Finding>& warnings)
    {
        std::vector<std::string> folders = settings.assetFolders;
        if (!settings.facesFolder.empty())
            folders.push_back(settings.facesFolder + "/" + std::string(page.root.Text("id")));
        Images images(std::move(folders));
        const Moment moment = mDates.At(settings.timezone, ParseTime(page.root.Text("preview-time")));
        Painter painter{cr,         medium,     *page.tree,  settings, page.texts, mFonts,
                        mDates,     images,     groups,      warnings, moment,     moment,
                        page.scale, page.width, page.height, 0,        {},         observer};
        cairo_scale(cr, page.scale, page.scale);
        if (const auto background = page.root.Paint("background")) {
            SetSource(cr, *background);
            cairo_paint(cr);
        }
        PaintChildren(painter, page.root);
    }

    Fonts mFonts;
    Dates mDates;
};

namespace {

// What is wrong with a document ends the drawing here.
template <typename Draw>
Finding ErrorOf(const Draw& draw)
{
    try {
        draw();
        return {};
    } catch (const DocumentError& error) {
        return error.What();
    } catch (const std::bad_alloc&) {
        return {0, 0, "memory is short"};
    }
}

}  // namespace

Renderer::Renderer() : mImpl(std::make_unique<Impl>()) {}
Renderer::~Renderer() = default;

Result Renderer::Draw(std::string_view document, const Settings& settings, const Observer& observer)
{
    Result result;
    result.error =
        ErrorOf([&] { result.picture = mImpl->Draw(document, settings, observer, result.warnings); });
    return result;
}

SvgResult Renderer::ExportSvg(std::string_view document, const Settings& settings)
{
    SvgResult result;
    result.error = ErrorOf([&] { result.svg = mImpl->Export(document, settings, result.warnings); });
    return result;
}

void ReleaseSurface::operator()(cairo_surface_t* surface) const
{
    cairo_surface_destroy(surface);
}

std::string Describe(const std::string& file, const Finding& finding)
{
    if (finding.line == 0) return file + ": " + finding.text;
    return file + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ": " +
           finding.text;
}

}  // namespace Drawing
