#include "draw-command.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "drawing.h"

namespace Capture {
namespace {

constexpr int kDone = 0, kFailed = 1, kUsage = 2;
constexpr size_t kLargestDocument = 1u << 20;

// Writes beside the target and renames, so that nobody ever sees half a picture.
bool Replace(const std::string& path, const std::string& bytes)
{
    std::string unfinished = path + ".XXXXXX";
    const int fd = mkostemp(unfinished.data(), O_CLOEXEC);
    if (fd < 0) return false;
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t wrote = write(fd, bytes.data() + done, bytes.size() - done);
        if (wrote <= 0) break;
        done += static_cast<size_t>(wrote);
    }
    const mode_t mask = umask(0);
    umask(mask);
    const bool good = done == bytes.size() && fchmod(fd, 0666 & ~mask) == 0;
    const bool closed = close(fd) == 0;
    if (good && closed && rename(unfinished.c_str(), path.c_str()) == 0) return true;
    const int reason = errno;
    unlink(unfinished.c_str());
    errno = reason;
    return false;
}

int Fail(const std::string& line)
{
    std::fprintf(stderr, "%s\n", line.c_str());
    return kFailed;
}

// The file that a document becomes.
struct Drawn {
    std::string bytes;
    Drawing::Finding error;
    std::vector<Drawing::Finding> warnings;
};

Drawn DrawPng(const std::string& document, const Drawing::Settings& settings)
{
    Drawing::Renderer renderer;
    Drawing::Result result = renderer.Draw(document, settings);
    return {result.picture ? Drawing::EncodePng(result.picture.get()) : "", std::move(result.error),
            std::move(result.warnings)};
}

Drawn DrawSvg(const std::string& document, const Drawing::Settings& settings)
{
    Drawing::Renderer renderer;
    Drawing::SvgResult result = renderer.ExportSvg(document, settings);
    return {std::move(result.svg), std::move(result.error), std::move(result.warnings)};
}

std::string FolderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

int Draw(const std::string& in, const std::string& out, Drawing::Settings settings)
{
    std::string document, problem;
    if (!ReadWholeFile(in, kLargestDocument, document, problem))
        return Fail(in + ": cannot be read: " + problem);
    settings.assetFolders.push_back(FolderOf(in));
    const Drawn drawn = out.ends_with(".svg") ? DrawSvg(document, settings) : DrawPng(document, settings);
    for (const Drawing::Finding& warning : drawn.warnings) {
        std::fprintf(
            stderr, "%s\n",
            Drawing::Describe(in, {warning.line, warning.column, "warning: " + warning.text}).c_str());
    }
    if (!drawn.error.text.empty()) return Fail(Drawing::Describe(in, drawn.error));
    if (drawn.bytes.empty()) return Fail(out + ": cannot be written: memory is short");
    if (!Replace(out, drawn.bytes)) return Fail(out + ": cannot be written: " + std::strerror(errno));
    return kDone;
}

}  // namespace

int RunDrawCommand(int argc, char** argv, const ConfineTo& confine)
{
    CLI::App app("Draws a face's watchface.xml as a PNG or SVG", "watchface-capture");
    Drawing::Settings settings;
    bool draw = false;
    std::string in, out;
    int hours = 24;
    app.add_flag("--draw", draw, "Draw a file instead of serving the watch")->required();
    app.add_option("IN", in, "The face's watchface.xml")->required();
    app.add_option("OUT", out, "The PNG to write; an SVG where its name ends in .svg")->required();
    app.add_option("--language", settings.language, "Language of texts and dates")->capture_default_str();
    app.add_option("--hours", hours, "Hour mode")->check(CLI::IsMember({12, 24}))->capture_default_str();
    app.add_option("--timezone", settings.timezone, "Time zone of the preview's time")->capture_default_str();
    app.add_option("--size", settings.size, "Pixels of the longer side; the canvas' own by default")
        ->check(CLI::Range(1, Drawing::Limits::kLargestSide));
    app.add_option("--assets", settings.assetFolders,
                   "Folder where assets are looked up first; repeated for more")
        ->allow_extra_args(false);
    app.add_option("--faces", settings.facesFolder, "Folder of faces where assets are looked up too");
    app.add_option("--trusted", settings.trustedFolder, "Folder of the user's pictures (theme/… below it)");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kUsage;
    }
    settings.hours24 = hours == 24;
    if (!confine(FolderOf(out))) return Fail(out + ": not drawn: the process could not be confined");
    return Draw(in, out, settings);
}

}  // namespace Capture
