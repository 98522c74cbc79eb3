// Face documents without a watch: flatten, render.

#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "documents.h"
#include "drawing-program.h"
#include "exit-status.h"
#include "face-document.h"
#include "json-text.h"
#include "locale-findings.h"
#include "locales-icu.h"
#include "picture-output.h"
#include "private-watch.h"
#include "reading-files.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

struct FlattenArguments {
    std::string file, out;
};

struct RenderArguments {
    std::string what, out, language, timezone;
    int hours = 0;
    int size = 0;
};

Exit FlattenFile(const Options& options, const FlattenArguments& arguments)
{
    const std::string text = ReadNamedFile(arguments.file);
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    const std::vector<DataUtil::Finding> all = WithUnknownLocales(text, parsed.findings);
    if (!options.json) PrintFindings(arguments.file, all);
    const std::string flat = parsed.document ? DataUtil::Flatten(*parsed.document) : std::string();
    if (parsed.document && !arguments.out.empty()) WriteFile(arguments.out, flat);
    if (options.json) {
        const Json findings = FindingsJson(arguments.file, all);
        PrintLine(JsonLine(Json::object({
            {"accepted",  parsed.document.has_value()                 },
            {"findings",  findings                                    },
            {"watchface", parsed.document ? Json(flat) : Json(nullptr)}
        })));
    } else if (parsed.document && arguments.out.empty()) {
        std::fwrite(flat.data(), 1, flat.size(), stdout);
    }
    return parsed.document ? Exit::kDone : Exit::kError;
}

// The watch's look, but for what the user says. What nobody knows is told; a language may still be one of the
// document's own.
Look ChosenLook(const RenderArguments& arguments)
{
    Look look = WatchLook();
    if (arguments.hours != 0) look.is24Hours = arguments.hours == 24;
    if (!arguments.language.empty()) Warn(LanguageProblem(look.language = arguments.language));
    if (const std::string problem = arguments.timezone.empty() ? "" : TimezoneProblem(arguments.timezone);
        !problem.empty())
        Warn(problem);
    else if (!arguments.timezone.empty())
        look.timezone = arguments.timezone;
    look.size = arguments.size;
    return look;
}

// The picture's name where the user gave none; what is there by that name may be another's.
std::string NewPicture(const Drawable& drawable)
{
    std::string out = drawable.name + ".png";
    std::error_code error;
    if (!std::filesystem::exists(std::filesystem::symlink_status(out, error))) return out;
    throw Stop(Exit::kError, "[" + out + "] is there already; to draw over it, add: -o " + ShellQuoted(out));
}

Exit Render(const Options& options, const RenderArguments& arguments)
{
    // Without a running watch the environment's areas are looked at, and only read.
    SelectWatch(options.root);
    const Drawable drawable = FindDrawable(arguments.what);
    const std::string out = arguments.out.empty() ? NewPicture(drawable) : arguments.out;
    if (!Draw({
            {drawable, ChosenLook(arguments), out}
    })[0])
        throw Stop(Exit::kError, "[" + arguments.what + "] could not be drawn");
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"picture", BytesToJson(out)}
        })));
    } else {
        ShowPicture(out);
        PrintLine(out);
    }
    return Exit::kDone;
}

}  // namespace

Action DefineFlatten(CLI::App& parser)
{
    const auto arguments = std::make_shared<FlattenArguments>();
    parser.add_option("RESULT.xml", arguments->file, "the result XML; - is stdin")->required();
    parser.add_option("-o,--output", arguments->out, "where the flat document goes (default: stdout)")
        ->type_name("OUT");
    return [arguments](const Options& options) { return FlattenFile(options, *arguments); };
}

Action DefineRender(CLI::App& parser)
{
    const auto arguments = std::make_shared<RenderArguments>();
    parser
        .add_option("FILE|NAME", arguments->what,
                    "a result XML, a watchface.xml, or a watch face of the watch")
        ->required();
    parser
        .add_option("-o,--output", arguments->out,
                    "the picture, an SVG where its name ends in .svg (default: the face's name with .png, "
                    "which must be new)")
        ->type_name("OUT")
        ->check(PictureNameProblem);
    parser.add_option("--language", arguments->language, "of texts and dates (default: the watch's)")
        ->type_name("L");
    parser.add_option("--hours", arguments->hours, "12 or 24 (default: the watch's)")
        ->type_name("N")
        ->check(CLI::IsMember({12, 24}));
    parser.add_option("--timezone", arguments->timezone, "of the preview's time (default: the watch's)")
        ->type_name("TZ");
    parser.add_option("--size", arguments->size, "pixels of the longer side")
        ->type_name("N")
        ->check(CLI::Range(1, 4096));
    return [arguments](const Options& options) { return Render(options, *arguments); };
}

}  // namespace Wfctl
