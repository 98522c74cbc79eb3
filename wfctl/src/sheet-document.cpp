#include "sheet-document.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "utf8.h"

namespace Wfctl {

namespace {

constexpr int kLargestSheet = 4096;  // what a canvas may have
constexpr int kSmallestSide = 24;
constexpr std::size_t kLongestText = 256;  // bytes; more would not be legible

constexpr char kBackground[] = "#ECEDF0";
constexpr char kShadow[] = "#1B202A";
constexpr char kPlaceholder[] = "#D9DCE1";
constexpr char kNameColor[] = "#23272F";
constexpr char kNoteColor[] = "#7B818C";

// The lengths of a sheet follow from the side of its pictures.
struct Measures {
    explicit Measures(int pictureSide)
        : side(pictureSide),
          margin(std::max(side / 7, 14)),
          gap(std::max(side / 10, 8)),
          name(std::clamp(side / 16, 7, 20)),
          note(std::max(name * 7 / 10, 5)),
          label(name * 3 / 2 + note * 3 / 2)
    {
    }
    int side, margin, gap;
    int name, note;  // heights of letters
    int label;       // height of a name and a note
};

bool HasCaptions(const SheetBlock& block)
{
    return std::any_of(block.pictures.begin(), block.pictures.end(),
                       [](const SheetPicture& one) { return !one.caption.name.empty(); });
}

int RowsOf(const SheetBlock& block)
{
    return static_cast<int>((block.pictures.size() + block.columns - 1) / block.columns);
}

// The width of the column of row names: room for the longest, which is drawn smaller beyond a limit.
int SideWidth(const SheetBlock& block, const Measures& measures)
{
    std::size_t letters = 0;
    for (const SheetLabel& label : block.sides)
        letters = std::max({letters, label.name.size(), label.note.size() * 7 / 10});
    const auto width = static_cast<int>(std::min<std::size_t>(letters, 100)) * measures.name * 2 / 3;
    return std::clamp(width, measures.name * 4, measures.name * 13);
}

// Where the parts of one block lie.
struct BlockPlaces {
    BlockPlaces(const SheetBlock& block, const Measures& measures, int topEdge)
        : left(measures.margin + (block.sides.empty() ? 0 : SideWidth(block, measures) + measures.gap)),
          top(topEdge + (block.heads.empty() ? 0 : measures.label + measures.gap / 2)),
          columnStep(measures.side + measures.gap),
          rowStep(measures.side + measures.gap +
                  (HasCaptions(block) ? measures.label + measures.gap / 2 : 0)),
          right(left + static_cast<int>(block.columns) * columnStep - measures.gap),
          bottom(top + RowsOf(block) * rowStep - measures.gap)
    {
    }
    int left, top;  // of the first picture
    int columnStep, rowStep;
    int right, bottom;
};

std::vector<BlockPlaces> PlacesOf(const std::vector<SheetBlock>& blocks, const Measures& measures)
{
    std::vector<BlockPlaces> places;
    int top = measures.margin;
    for (const SheetBlock& block : blocks) {
        places.emplace_back(block, measures, top);
        top = places.back().bottom + measures.margin;
    }
    return places;
}

// Text as an attribute's value: what XML cannot hold becomes "?".
std::string Escaped(const std::string& text)
{
    if (!Platform::IsUtf8(text)) return "?";
    std::string out;
    for (const char c : Platform::Utf8Prefix(text, kLongestText)) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '"')
            out += "&quot;";
        else
            out += static_cast<unsigned char>(c) < 0x20 ? '?' : c;
    }
    return out;
}

// Writes the elements of the document.
class Writer {
public:
    explicit Writer(const Measures& measures) : mMeasures(measures) {}

    void Block(const SheetBlock& block, const BlockPlaces& places);
    std::string Document(const SheetSize& size) const;

private:
    void Picture(const SheetPicture& picture, int x, int y);
    void Shadow(int cx, int cy);
    void Label(const SheetLabel& label, int x, int top, int width, const char* align);
    void Line(const std::string& text, int x, int baseline, int width, const char* align, bool isName);

    const Measures& mMeasures;
    std::string mElements;
};

std::string Attribute(const char* name, int value)
{
    return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

void Writer::Line(const std::string& text, int x, int baseline, int width, const char* align, bool isName)
{
    if (text.empty()) return;
    mElements += "  <text text=\"" + Escaped(text) + "\"" + Attribute("x", x) + Attribute("y", baseline) +
                 " align=\"" + align + "\"" + Attribute("size", isName ? mMeasures.name : mMeasures.note) +
                 (isName ? " weight=\"600\"" : "") + " color=\"" + (isName ? kNameColor : kNoteColor) + "\"" +
                 Attribute("max-width", width) + "/>\n";
}

void Writer::Label(const SheetLabel& label, int x, int top, int width, const char* align)
{
    Line(label.name, x, top + mMeasures.name * 11 / 10, width, align, true);
    Line(label.note, x, top + mMeasures.name * 3 / 2 + mMeasures.note * 11 / 10, width, align, false);
}

// A soft shade below a round picture, as if it lay on the sheet.
void Writer::Shadow(int cx, int cy)
{
    const int r = mMeasures.side / 2;
    const int drop = std::max(r / 20, 1);
    const int reach = r + std::max(r / 9, 3);
    const std::string centre = Attribute("cx", cx) + Attribute("cy", cy + drop);
    const auto offset = std::to_string(static_cast<double>(r - 2 * drop) / reach).substr(0, 5);
    mElements += "  <circle" + centre + Attribute("r", reach) + "><radial-gradient" + centre +
                 Attribute("r", reach) + "><stop offset=\"" + offset + "\" color=\"" + kShadow +
                 "70\"/><stop offset=\"1\" color=\"" + kShadow + "00\"/></radial-gradient></circle>\n";
}

void Writer::Picture(const SheetPicture& picture, int x, int y)
{
    const int side = mMeasures.side, cx = x + side / 2, cy = y + side / 2;
    const int longer = std::max({picture.width, picture.height, 1});
    const int width = std::max(side * picture.width / longer, 1);
    const int height = std::max(side * picture.height / longer, 1);
    const bool isSquare = width == height;
    if (picture.isRound && isSquare) Shadow(cx, cy);
    if (picture.file.empty()) {
        mElements += "  <circle" + Attribute("cx", cx) + Attribute("cy", cy) + Attribute("r", side / 2) +
                     " fill=\"" + kPlaceholder + "\"/>\n";
        return Line("no picture", cx, cy + mMeasures.note / 3, side * 3 / 4, "center", false);
    }
    mElements += "  <image src=\"" + Escaped(picture.file) + "\"" + Attribute("x", cx - width / 2) +
                 Attribute("y", cy - height / 2) + Attribute("width", width) + Attribute("height", height) +
                 "/>\n";
}

void Writer::Block(const SheetBlock& block, const BlockPlaces& places)
{
    const int side = mMeasures.side;
    for (std::size_t i = 0; i < block.heads.size(); ++i) {
        const int x = places.left + static_cast<int>(i) * places.columnStep + side / 2;
        Label(block.heads[i], x, places.top - mMeasures.label - mMeasures.gap / 2, side, "center");
    }
    for (std::size_t i = 0; i < block.sides.size(); ++i) {
        const int middle = places.top + static_cast<int>(i) * places.rowStep + side / 2;
        Label(block.sides[i], mMeasures.margin, middle - mMeasures.label / 2, SideWidth(block, mMeasures),
              "left");
    }
    for (std::size_t i = 0; i < block.pictures.size(); ++i) {
        const int x = places.left + static_cast<int>(i % block.columns) * places.columnStep;
        const int y = places.top + static_cast<int>(i / block.columns) * places.rowStep;
        Picture(block.pictures[i], x, y);
        Label(block.pictures[i].caption, x + side / 2, y + side + mMeasures.gap / 2, side, "center");
    }
}

std::string Writer::Document(const SheetSize& size) const
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<watchface format=\"1\" id=\"sheet\" version=\"1\"" +
           Attribute("width", size.width) + Attribute("height", size.height) +
           " shape=\"square\" background=\"" + kBackground +
           "\" default-language=\"en\" preview-time=\"10:08:36\" title-key=\"title\">\n"
           "  <strings language=\"en\"><string key=\"title\">Sheet</string></strings>\n" +
           mElements + "</watchface>\n";
}

}  // namespace

SheetSize MeasureSheet(const std::vector<SheetBlock>& blocks, int side)
{
    const Measures measures(side);
    SheetSize size;
    for (const BlockPlaces& places : PlacesOf(blocks, measures)) {
        size.width = std::max(size.width, places.right + measures.margin);
        size.height = places.bottom + measures.margin;
    }
    return size;
}

int FittingSide(const std::vector<SheetBlock>& blocks, int wanted)
{
    for (int side = wanted; side >= std::min(wanted, kSmallestSide); --side) {
        const SheetSize size = MeasureSheet(blocks, side);
        if (size.width <= kLargestSheet && size.height <= kLargestSheet) return side;
    }
    return 0;
}

std::string SheetDocument(const std::vector<SheetBlock>& blocks, int side)
{
    const Measures measures(side);
    Writer writer(measures);
    const std::vector<BlockPlaces> places = PlacesOf(blocks, measures);
    for (std::size_t i = 0; i < blocks.size(); ++i) writer.Block(blocks[i], places[i]);
    return writer.Document(MeasureSheet(blocks, side));
}

std::size_t PleasantColumns(std::size_t count)
{
    const double root = std::sqrt(static_cast<double>(count));
    const auto least = std::max<std::size_t>(1, static_cast<std::size_t>(std::ceil(root)));
    const auto most = std::max(least, static_cast<std::size_t>(std::ceil(root * 1.4)));
    std::size_t best = least;
    const auto empty = [count](std::size_t columns) { return (columns - count % columns) % columns; };
    for (std::size_t columns = least; columns <= most; ++columns) {
        if (empty(columns) < empty(best)) best = columns;
    }
    return best;
}

}  // namespace Wfctl
