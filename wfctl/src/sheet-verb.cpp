// One picture of many previews: sheet.

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>

#include "documents.h"
#include "drawing-program.h"
#include "exit-status.h"
#include "faces.h"
#include "json-text.h"
#include "locales-icu.h"
#include "picture-output.h"
#include "png-file.h"
#include "private-watch.h"
#include "progress.h"
#include "reading-files.h"
#include "sheet-document.h"
#include "shell-command.h"
#include "temporary-folder.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr int kOwnSide = 360;     // of stored previews
constexpr int kMatrixSide = 240;  // of previews in many languages

struct SheetArguments {
    std::vector<std::string> faces;
    std::string out, languages, hours;
    std::size_t columns = 0;
    int size = 0;
    bool isMatrix = false;  // in all languages and hour modes, where none are said
    bool IsMatrix() const { return isMatrix || !languages.empty() || !hours.empty(); }
};

struct SheetFace {
    Drawable drawable;
    SheetLabel label;
};

// A preview of the sheet before it is a picture there.
struct Cell {
    Drawable face;
    Look look;
    std::string stored;  // the preview that the watch has; empty: it is drawn
};

std::vector<std::string> SplitAtCommas(const std::string& text)
{
    std::vector<std::string> words;
    std::istringstream parts(text);
    for (std::string word; std::getline(parts, word, ',');) {
        if (!word.empty()) words.push_back(word);
    }
    return words;
}

// The looks in which faces are drawn, language by language.
struct Looks {
    std::vector<std::string> languages;
    std::vector<bool> hours24;
};

Looks ChosenLooks(const SheetArguments& arguments)
{
    const Look watch = WatchLook();
    Looks looks{SplitAtCommas(arguments.languages), {}};
    for (const std::string& language : looks.languages) Warn(LanguageProblem(language));
    if (looks.languages.empty()) looks.languages = {watch.language};
    for (const std::string& hours : SplitAtCommas(arguments.hours)) {
        if (hours != "12" && hours != "24")
            throw Stop(Exit::kUsage, "--hours is 12, 24 or 12,24, not [" + arguments.hours + "]");
        looks.hours24.push_back(hours == "24");
    }
    if (looks.hours24.empty()) looks.hours24 = {watch.is24Hours};
    return looks;
}

// Those that any of the documents has texts in.
std::string LanguagesOf(const std::vector<std::string>& names)
{
    std::vector<std::string> languages;
    for (const std::string& name : names) {
        const std::string file = IsFileName(name) ? name : RequireFace(name, Beside::kFiles).ResultXml();
        std::error_code error;
        if (!fs::exists(file, error)) continue;
        for (const std::string& language : FactsOf(ReadNamedFile(file)).languages) {
            if (std::ranges::find(languages, language) == languages.end()) languages.push_back(language);
        }
    }
    std::string text;
    for (const std::string& language : languages) text += (text.empty() ? "" : ",") + language;
    return text;
}

std::vector<std::string> NamesOrAll(const std::vector<std::string>& names)
{
    if (!names.empty()) return names;
    std::vector<std::string> all;
    for (const Face& face : RequireFaces()) all.push_back(face.name);
    return all;
}

std::vector<SheetFace> FindAll(const SheetArguments& arguments)
{
    std::vector<SheetFace> faces;
    for (const std::string& name : NamesOrAll(arguments.faces)) {
        Drawable face = FindDrawable(name);
        // Several files may be of one face.
        const std::string what = IsFileName(name) ? fs::path(name).filename().string() : face.name;
        SheetLabel label = face.title.empty() ? SheetLabel{what, ""} : SheetLabel{face.title, what};
        faces.push_back({std::move(face), std::move(label)});
    }
    return faces;
}

std::string HoursText(bool is24Hours)
{
    return is24Hours ? "24 hours" : "12 hours";
}

// The stored preview of a face that was named, not given as a file.
std::string StoredPreview(const Drawable& face)
{
    const auto known = FindFace(face.name);
    const bool isOfWatch = known && known->WatchfaceXml() == face.document;
    if (!isOfWatch || LookAtPng(known->Preview()).kind == PngKind::kNone) return {};
    return known->Preview();
}

struct Plan {
    std::vector<Cell> cells;
    std::vector<SheetBlock> blocks;  // their pictures in the order of the cells, still without files
};

// The previews as the watch has them, each with its name below.
Plan Gallery(const std::vector<SheetFace>& faces, const SheetArguments& arguments, const Looks& looks)
{
    Plan plan;
    SheetBlock block;
    block.columns =
        std::min(arguments.columns ? arguments.columns : PleasantColumns(faces.size()), faces.size());
    Look look = WatchLook();
    look.language = looks.languages[0];
    look.is24Hours = looks.hours24[0];
    for (const SheetFace& face : faces) {
        const std::string stored = arguments.IsMatrix() ? "" : StoredPreview(face.drawable);
        plan.cells.push_back({face.drawable, look, stored});
        block.pictures.push_back({"", 1, 1, face.drawable.isRound, face.label});
    }
    plan.blocks.push_back(std::move(block));
    return plan;
}

// Each face over languages and hour modes. The languages are the columns, the hour modes rows; with one
// language the hour modes are the columns. More columns than are wanted go on in another block below.
Plan Matrix(const std::vector<SheetFace>& faces, const SheetArguments& arguments, const Looks& looks)
{
    struct Column {
        SheetLabel head;
        std::string language;
        std::vector<bool> hours24;
    };
    std::vector<Column> columns;
    const bool hoursAcross = looks.languages.size() == 1;
    for (const std::string& language : looks.languages) {
        if (!hoursAcross)
            columns.push_back({
                {LanguageName(language), language},
                language, looks.hours24
            });
    }
    for (const bool is24Hours : looks.hours24) {
        const std::string& language = looks.languages[0];
        if (hoursAcross)
            columns.push_back({
                {HoursText(is24Hours), language},
                language, {is24Hours                   }
            });
    }
    Plan plan;
    Look look = WatchLook();
    const std::size_t most = arguments.columns ? arguments.columns : columns.size();
    for (std::size_t first = 0; first < columns.size(); first += most) {
        const std::size_t end = std::min(first + most, columns.size());
        SheetBlock block;
        block.columns = end - first;
        for (std::size_t i = first; i < end; ++i) block.heads.push_back(columns[i].head);
        for (const SheetFace& face : faces) {
            for (std::size_t hour = 0; hour < columns[first].hours24.size(); ++hour) {
                SheetLabel side = face.label;
                if (!hoursAcross) side.note = HoursText(columns[first].hours24[hour]);
                block.sides.push_back(std::move(side));
                for (std::size_t i = first; i < end; ++i) {
                    look.language = columns[i].language;
                    look.is24Hours = columns[i].hours24[hour];
                    plan.cells.push_back({face.drawable, look, ""});
                    block.pictures.push_back({"", 1, 1, face.drawable.isRound, {}});
                }
            }
        }
        plan.blocks.push_back(std::move(block));
    }
    return plan;
}

// The pictures of all cells into the folder, named by their number; false where there is none.
std::vector<bool> MakePictures(const Options& options, std::vector<Cell>& cells, const std::string& folder,
                               int side)
{
    std::vector<Picture> wanted;
    std::vector<std::size_t> numbers;
    std::vector<bool> good(cells.size(), true);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string out = folder + "/" + std::to_string(i) + ".png";
        std::error_code error;
        if (!cells[i].stored.empty() && fs::copy_file(cells[i].stored, out, error)) continue;
        cells[i].stored.clear();
        cells[i].look.size = side;
        wanted.push_back({cells[i].face, cells[i].look, out});
        numbers.push_back(i);
    }
    if (wanted.empty()) return good;
    const Progress progress("drawing", wanted.size(), !options.json);
    const std::vector<bool> drawn = Draw(wanted, [&progress](std::size_t done) { progress.Show(done); });
    for (std::size_t i = 0; i < numbers.size(); ++i) good[numbers[i]] = drawn[i];
    return good;
}

int ChosenSide(const Plan& plan, const SheetArguments& arguments)
{
    const int wanted = arguments.size > 0 ? arguments.size : arguments.IsMatrix() ? kMatrixSide : kOwnSide;
    const int side = FittingSide(plan.blocks, wanted);
    if (side == 0) throw Stop(Exit::kUsage, "there are too many previews for one picture; name fewer faces");
    if (arguments.size == 0 || side == wanted) return side;
    const SheetSize size = MeasureSheet(plan.blocks, wanted);
    throw Stop(Exit::kUsage, "the picture would have " + std::to_string(size.width) + "x" +
                                 std::to_string(size.height) +
                                 " pixels, and 4096 a side is the most; say --size " + std::to_string(side) +
                                 " or less, or another --columns");
}

Json SheetJson(const std::string& out, const SheetSize& size, const std::vector<Cell>& cells,
               const std::vector<bool>& good)
{
    Json previews = Json::array();
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const Cell& cell = cells[i];
        Json one = Json::object({
            {"face",  BytesToJson(cell.face.name)},
            {"drawn", cell.stored.empty()        }
        });
        if (cell.stored.empty()) {
            one["language"] = BytesToJson(cell.look.language);
            one["hours"] = cell.look.is24Hours ? 24 : 12;
        }
        one["good"] = static_cast<bool>(good[i]);
        previews.push_back(std::move(one));
    }
    return Json::object({
        {"picture",  BytesToJson(out)   },
        {"width",    size.width         },
        {"height",   size.height        },
        {"previews", std::move(previews)}
    });
}

Exit Sheet(const Options& options, const SheetArguments& arguments)
{
    SelectWatch(options.root);
    const Looks looks = ChosenLooks(arguments);
    const std::vector<SheetFace> faces = FindAll(arguments);
    const bool isMatrix = looks.languages.size() * looks.hours24.size() > 1;
    Plan plan = isMatrix ? Matrix(faces, arguments, looks) : Gallery(faces, arguments, looks);
    const int side = ChosenSide(plan, arguments);
    const TemporaryFolder scratch;  // only now: documents may come from a terminal, which is waited for
    const std::vector<bool> good = MakePictures(options, plan.cells, scratch.Path(), side);
    std::size_t cell = 0;
    for (SheetBlock& block : plan.blocks) {
        for (SheetPicture& picture : block.pictures) {
            const std::string file = std::to_string(cell) + ".png";
            if (good[cell++]) {
                const PngFacts facts = LookAtPng(scratch.Path() + "/" + file);
                picture.file = file;
                picture.width = facts.width;
                picture.height = facts.height;
            }
        }
    }
    const SheetSize size = MeasureSheet(plan.blocks, side);
    const std::string document = scratch.Path() + "/sheet.xml";
    WriteFile(document, SheetDocument(plan.blocks, side));
    Drawable sheet{document, "", "sheet", "", false, "the sheet"};
    Look look = WatchLook();
    look.size = std::max(size.width, size.height);
    if (!Draw({
            {sheet, look, arguments.out}
    })[0])
        throw Stop(Exit::kError, "the sheet [" + arguments.out + "] could not be drawn");
    if (!options.json) ShowPicture(arguments.out);
    PrintLine(options.json ? JsonLine(SheetJson(arguments.out, size, plan.cells, good)) : arguments.out);
    const auto missing = std::count(good.begin(), good.end(), false);
    if (missing == 0) return Exit::kDone;
    throw Stop(Exit::kError, std::to_string(missing) + " of " + std::to_string(good.size()) +
                                 " previews could not be drawn and are blank on the sheet");
}

// A face's preview as the watch has it.
Exit ShowPreviews(const Options& options, const SheetArguments& arguments)
{
    SelectWatch(options.root);
    Json previews = Json::array();
    for (const std::string& name : NamesOrAll(arguments.faces)) {
        const Face face = RequireFace(name);
        if (LookAtPng(face.Preview()).kind == PngKind::kNone)
            throw Stop(Exit::kNotFound, "[" + face.name + "] has no preview; type: " +
                                            WatchCommand("preview request " + ShellWord(face.name)));
        previews.push_back(BytesToJson(face.Preview()));
        if (options.json) continue;
        ShowPicture(face.Preview());
        PrintLine(face.Preview());
    }
    if (options.json) PrintLine(JsonLine(previews));
    return Exit::kDone;
}

// A sheet of named faces; without -o for the terminal alone.
Exit PreviewMatrix(const Options& options, SheetArguments arguments)
{
    if (arguments.faces.empty()) throw Stop(Exit::kUsage, "which watch face? type: wfctl preview --help");
    SelectWatch(options.root);
    if (arguments.languages.empty()) arguments.languages = LanguagesOf(arguments.faces);
    if (arguments.hours.empty()) arguments.hours = "12,24";
    if (!arguments.out.empty()) return Sheet(options, arguments);
    throw Stop(Exit::kUsage, "where to? say -o OUT.png");
}

}  // namespace

Action DefinePreview(CLI::App& parser)
{
    const auto arguments = std::make_shared<SheetArguments>();
    parser.add_option("FACE", arguments->faces, "the watch faces; with --matrix files, too (default: all)");
    auto* matrix = parser.add_flag("--matrix", arguments->isMatrix,
                                   "draw them over languages and hour modes, on one sheet");
    const auto forMatrix = [&](CLI::Option* option, const char* type) {
        option->type_name(type)->needs(matrix);
    };
    forMatrix(parser.add_option("-o,--output", arguments->out, "the sheet")->check(PictureNameProblem),
              "OUT.png");
    forMatrix(parser.add_option("--language", arguments->languages, "(default: those of the documents)"),
              "L,L…");
    forMatrix(parser.add_option("--hours", arguments->hours, "(default: 12,24)"), "12,24");
    return [arguments](const Options& options) {
        return arguments->isMatrix ? PreviewMatrix(options, *arguments) : ShowPreviews(options, *arguments);
    };
}

Action DefineSheet(CLI::App& parser)
{
    const auto arguments = std::make_shared<SheetArguments>();
    parser.add_option("FACE", arguments->faces,
                      "watch faces, result XMLs or watchface.xml files (default: all faces)");
    parser.add_option("-o,--output", arguments->out, "the picture")
        ->type_name("OUT.png")
        ->required()
        ->check(PictureNameProblem);
    parser.add_option("--language", arguments->languages, "draw every face in these languages")
        ->type_name("L,L…");
    parser.add_option("--hours", arguments->hours, "draw every face in these hour modes")->type_name("12,24");
    parser.add_option("--columns", arguments->columns, "previews in a row (default: as it looks well)")
        ->type_name("N")
        ->check(CLI::Range(1, 100));
    parser
        .add_option("--size", arguments->size,
                    "pixels of each preview's longer side (default: 360; 240 in several languages)")
        ->type_name("N")
        ->check(CLI::Range(16, 1024));
    return [arguments](const Options& options) { return Sheet(options, *arguments); };
}

}  // namespace Wfctl
