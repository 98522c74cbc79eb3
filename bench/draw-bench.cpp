// Drawing the shipped faces, beside rsvg-convert with the same drawings as SVG, measured in one run.
//
//     draw-bench WATCHFACE_CAPTURE FACES
//
// Times are the processor's, so that what else runs does not count. Cold is a whole process, from nothing to
// the file. Warm is one drawing more, the PNG included: here in a process that has drawn before; of
// rsvg-convert what a face takes beyond an empty picture of the same size. The pictures are compared, and a
// mean difference of 2 % or more is a failure. In the SVG everything is a shape but the soft shadows and the
// images, which are pictures; so rsvg-convert has no shadow to blur.

#include <cairo.h>
#include <sched.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "drawing.h"
#include "face-document.h"
#include "figures.h"
#include "private-bus.h"

namespace {

namespace fs = std::filesystem;

constexpr int kProcesses = 25;
constexpr int kDrawings = 50;
constexpr double kMostDifference = 0.02;
constexpr char kRsvg[] = "/usr/bin/rsvg-convert";

double Milliseconds(const timeval& user, const timeval& system)
{
    return 1e3 * static_cast<double>(user.tv_sec + system.tv_sec) +
           1e-3 * static_cast<double>(user.tv_usec + system.tv_usec);
}

// Of this process so far.
double Used()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

std::string Read(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("no file " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

void Write(const fs::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// What a program takes, from nothing to its end.
double TimeOf(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_t pid = 0;
    // Not a fork, whose copy of this process would be taken down at the program's expense.
    if (posix_spawn(&pid, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0)
        throw std::runtime_error(command[0] + " cannot be started");
    int status = 0;
    rusage used{};
    wait4(pid, &status, 0, &used);
    if (status != 0) throw std::runtime_error(command[0] + " failed");
    return Milliseconds(used.ru_utime, used.ru_stime);
}

// A face as everybody draws it.
struct Face {
    std::string name, document;
    Drawing::Settings settings;
};

std::vector<Face> FacesIn(const fs::path& folder)
{
    std::vector<Face> faces;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        const fs::path result = entry.path() / (name + "_result.xml");
        if (!fs::exists(result)) continue;
        const DataUtil::ParseResult parsed = DataUtil::ParseFace(Read(result));
        if (!parsed.document) throw std::runtime_error(name + " is refused");
        Face face{name.substr(name.find("mirel")), DataUtil::Flatten(*parsed.document), {}};
        face.settings.assetFolders = {entry.path().string()};
        faces.push_back(std::move(face));
    }
    std::sort(faces.begin(), faces.end(), [](const Face& a, const Face& b) { return a.name < b.name; });
    return faces;
}

// The mean difference of a channel, as a share of what it can be.
double Difference(const fs::path& a, const fs::path& b)
{
    const Drawing::SurfacePtr first(cairo_image_surface_create_from_png(a.c_str())),
        second(cairo_image_surface_create_from_png(b.c_str()));
    const int height = cairo_image_surface_get_height(first.get()),
              stride = cairo_image_surface_get_stride(first.get());
    if (height != cairo_image_surface_get_height(second.get()) ||
        stride != cairo_image_surface_get_stride(second.get()))
        return 1;
    const unsigned char *p = cairo_image_surface_get_data(first.get()),
                        *q = cairo_image_surface_get_data(second.get());
    double sum = 0;
    for (int i = 0; i < height * stride; ++i) sum += std::abs(p[i] - q[i]);
    return sum / 255 / height / stride;
}

class Drawings {
public:
    Drawings(std::string capture, fs::path folder) : mCapture(std::move(capture)), mFolder(std::move(folder))
    {
    }

    void Measure(const Face& face)
    {
        Write(mFolder / "watchface.xml", face.document);
        const Drawing::SvgResult svg = mRenderer.ExportSvg(face.document, face.settings);
        Write(mFolder / "face.svg", svg.svg);
        Write(mFolder / "empty.svg", EmptyLike(face));
        std::vector<double> cold, rsvg, empty, warm;
        for (int i = 0; i < kProcesses; ++i) {
            cold.push_back(TimeOf({mCapture, "--draw", mFolder / "watchface.xml", mFolder / "ours.png",
                                   "--faces", fs::path(face.settings.assetFolders[0]).parent_path()}));
            rsvg.push_back(TimeOf({kRsvg, mFolder / "face.svg", "-o", mFolder / "theirs.png"}));
            empty.push_back(TimeOf({kRsvg, mFolder / "empty.svg", "-o", mFolder / "empty.png"}));
        }
        for (int i = 0; i < kDrawings; ++i) warm.push_back(Warm(face));
        using Figures::Median;
        Figures::Print(
            {("cold drawing, " + face.name).c_str(), "ms", Median(cold), Median(rsvg), "rsvg-convert"});
        Figures::Print({("warm drawing, " + face.name).c_str(), "ms", Median(warm),
                        Median(rsvg) - Median(empty), "rsvg-convert beyond an empty picture"});
        const double difference = Difference(mFolder / "ours.png", mFolder / "theirs.png");
        std::printf("%-34s %10.2f %%\n", ("mean difference, " + face.name).c_str(), 100 * difference);
        if (difference >= kMostDifference)
            throw std::runtime_error("the pictures of " + face.name + " differ");
    }

private:
    double Warm(const Face& face)
    {
        const double before = Used();
        const Drawing::Result drawn = mRenderer.Draw(face.document, face.settings);
        if (Drawing::EncodePng(drawn.picture.get()).empty()) throw std::runtime_error("no picture");
        return Used() - before;
    }

    std::string EmptyLike(const Face& face)
    {
        const Drawing::Result drawn = mRenderer.Draw(face.document, face.settings);
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
               std::to_string(cairo_image_surface_get_width(drawn.picture.get())) + "\" height=\"" +
               std::to_string(cairo_image_surface_get_height(drawn.picture.get())) + "\"/>";
    }

    std::string mCapture;
    fs::path mFolder;
    Drawing::Renderer mRenderer;
};

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 3) {
        std::fprintf(stderr, "usage: draw-bench WATCHFACE_CAPTURE FACES\n");
        return 2;
    }
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(0, &one);
    sched_setaffinity(0, sizeof one, &one);

    const TestSupport::TemporaryFolder folder(BENCH_FOLDER);
    Drawings drawings(argv[1], folder.Path());
    std::printf("%-34s %15s %15s %7s\n", "", "ours", "floor", "ratio");
    for (const Face& face : FacesIn(argv[2])) drawings.Measure(face);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "draw-bench: %s\n", error.what());
    return 1;
}
