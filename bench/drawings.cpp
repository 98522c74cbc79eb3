// The pictures of the shipped faces, beside rsvg-convert with the same drawings as SVG. Times are the
// processor's. Cold is a whole process, from nothing to the file. Warm is one drawing more, the PNG included:
// here in a process that has drawn before; of rsvg-convert what a face takes beyond an empty picture of the
// same size. In the SVG everything is a shape but the soft shadows and the images, which are pictures; so
// rsvg-convert has no shadow to blur.

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "drawing.h"
#include "groups.h"

namespace Bench {

namespace {

namespace fs = std::filesystem;

constexpr int kProcesses = 12;         // for each face
constexpr double kMostDifference = 2;  // %
constexpr char kRsvg[] = "/usr/bin/rsvg-convert";

// The mean difference of a channel, in percent of what it can be.
double Difference(const fs::path& a, const fs::path& b)
{
    const Drawing::SurfacePtr first(cairo_image_surface_create_from_png(a.c_str())),
        second(cairo_image_surface_create_from_png(b.c_str()));
    const int height = cairo_image_surface_get_height(first.get()),
              stride = cairo_image_surface_get_stride(first.get());
    if (height != cairo_image_surface_get_height(second.get()) ||
        stride != cairo_image_surface_get_stride(second.get()))
        return 100;
    const unsigned char *p = cairo_image_surface_get_data(first.get()),
                        *q = cairo_image_surface_get_data(second.get());
    double sum = 0;
    for (int i = 0; i < height * stride; ++i) sum += std::abs(p[i] - q[i]);
    return 100 * sum / 255 / height / stride;
}

class Comparison {
public:
    Comparison(std::string capture, const fs::path& folder) : mCapture(std::move(capture)), mFolder(folder) {}

    // A face as it is shipped: its folder.
    void Measure(const fs::path& face)
    {
        const fs::path document = face / "watchface.xml";
        const std::string text = ReadFile(document);
        Drawing::Settings settings;
        settings.assetFolders = {face.string()};
        const Drawing::SvgResult svg = mRenderer.ExportSvg(text, settings);
        std::ofstream(mFolder / "face.svg") << svg.svg;
        std::ofstream(mFolder / "empty.svg")
            << R"(<svg xmlns="http://www.w3.org/2000/svg" width="360" height="360"/>)";
        Figure cold{"  of " + face.filename().string(), "ms", {}, {}, "rsvg-convert", {}};
        for (int i = 0; i < kProcesses; ++i) {
            const double rsvg = Convert("face.svg", "theirs.png");
            cold.ours.push_back(TestSupport::ProcessorTimeOf(
                {mCapture, "--draw", document, mFolder / "ours.png", "--faces", face.parent_path()}));
            cold.floor.push_back(rsvg);
            mWarm.floor.push_back(std::max(rsvg - Convert("empty.svg", "empty.png"), 0.01));
            mWarm.ours.push_back(TimeOfTwoDrawings(text, settings) / 2);
        }
        Append(cold.ours, mCold.ours);
        Append(cold.floor, mCold.floor);
        mColdByFace.push_back(std::move(cold));
        mDifference.ours.push_back(Difference(mFolder / "ours.png", mFolder / "theirs.png"));
    }

    Figures Result()
    {
        mDifference.ours = {*std::max_element(mDifference.ours.begin(), mDifference.ours.end())};
        Figures all{mWarm, mDifference, mCold};
        all.insert(all.end(), mColdByFace.begin(), mColdByFace.end());
        return all;
    }

private:
    static void Append(const std::vector<double>& samples, std::vector<double>& all)
    {
        all.insert(all.end(), samples.begin(), samples.end());
    }

    double Convert(const char* svg, const char* png)
    {
        return TestSupport::ProcessorTimeOf({kRsvg, mFolder / svg, "-o", mFolder / png});
    }

    double TimeOfTwoDrawings(const std::string& document, const Drawing::Settings& settings)
    {
        const double before = TestSupport::ProcessorTime();
        for (int i = 0; i < 2; ++i) {
            const Drawing::Result drawn = mRenderer.Draw(document, settings);
            if (Drawing::EncodePng(drawn.picture.get()).empty()) throw std::runtime_error("no picture");
        }
        return TestSupport::ProcessorTime() - before;
    }

    const std::string mCapture;
    const fs::path mFolder;
    Drawing::Renderer mRenderer;
    Figures mColdByFace;
    Figure mCold{"preview drawn by a new process", "ms", {}, {}, "rsvg-convert", AtMostTimes(0.5)};
    Figure mWarm{"one preview more", "ms", {}, {}, "rsvg-convert beyond an empty picture", AtMostTimes(0.5)};
    Figure mDifference{
        "mean difference of the pictures, the worst", "%", {}, {}, "", AtMost(kMostDifference)};
};

}  // namespace

Figures Drawings(Watch& watch, const Choices&)
{
    std::vector<fs::path> faces;
    for (const auto& entry :
         fs::directory_iterator(fs::path(watch.ShippedFile("")).parent_path().parent_path()))
        faces.push_back(entry.path());
    std::sort(faces.begin(), faces.end());
    Comparison comparison(watch.CaptureProgram(), watch.Root());
    for (const fs::path& face : faces) comparison.Measure(face);
    return comparison.Result();
}

}  // namespace Bench
