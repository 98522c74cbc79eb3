// A sheet: many previews on one picture. It is a flat document like a face's, so the drawing program draws
// it; the previews are its images.
//
// A *block* is a grid of pictures, row by row. Its columns may have heads above them and its rows names at
// their left; a picture may have a caption below it. Blocks stand below each other.

#pragma once

#include <string>
#include <vector>

namespace Wfctl {

// Two lines of text: the second is smaller and paler. Either may be empty. UTF-8.
struct SheetLabel {
    std::string name, note;
};

struct SheetPicture {
    std::string file;           // a PNG in the sheet's folder; empty: a placeholder is drawn
    int width = 1, height = 1;  // of the PNG; only their ratio matters
    bool isRound = true;
    SheetLabel caption;
};

struct SheetBlock {
    std::size_t columns = 1;
    std::vector<SheetLabel> heads;  // one for each column, or none
    std::vector<SheetLabel> sides;  // one for each row, or none
    std::vector<SheetPicture> pictures;
};

struct SheetSize {
    int width = 0, height = 0;
};

// The sheet's size in pixels when the longer side of each picture has `side` pixels.
SheetSize MeasureSheet(const std::vector<SheetBlock>& blocks, int side);

// The largest `side` up to `wanted` with which the sheet is not larger than a drawing may be; 0 when even
// tiny pictures are too many.
int FittingSide(const std::vector<SheetBlock>& blocks, int wanted);

// The flat document. One canvas unit is one pixel.
std::string SheetDocument(const std::vector<SheetBlock>& blocks, int side);

// How many columns show `count` pictures as a rather wide rectangle with few places left empty.
std::size_t PleasantColumns(std::size_t count);

}  // namespace Wfctl
