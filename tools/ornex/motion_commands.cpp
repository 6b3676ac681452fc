#include "commands.hpp"

#include <cstdio>
#include <optional>

#include "analysis.hpp"
#include "arguments.hpp"
#include "command_options.hpp"
#include "flow_files.hpp"
#include "flow_pictures.hpp"
#include "image_io.hpp"
#include "pictures.hpp"
#include "progress.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

// Writes the picture once the data file (if any) is written; if the picture
// fails, the data file goes too, so that a failed run leaves nothing.
void writeImageAfter(const std::string &dataFile, const std::string &path, const LoadedImage &picture)
{
    try {
        writePicture(path, picture);
    } catch (...) {
        if (!dataFile.empty()) {
            std::remove(dataFile.c_str());
        }
        throw;
    }
}

BlockMatchingOptions blockOptions(const Arguments &arguments)
{
    BlockMatchingOptions options;
    const int32_t block = countOption(arguments, "block", 16, 2, 512);
    const int32_t range = countOption(arguments, "range", 8, 0, 256);
    options.blockSize = {block, block};
    options.maxDisplacement = {range, range};
    const std::string search = arguments.text("search", "full"), cost = arguments.text("cost", "mad");
    if (search != "full" && search != "three-step") {
        throw UsageError("--search: expects full or three-step, got '" + search + "'");
    }
    if (cost != "mad" && cost != "mse") {
        throw UsageError("--cost: expects mad or mse, got '" + cost + "'");
    }
    options.search = search == "full" ? BlockSearch::full : BlockSearch::threeStep;
    options.cost = cost == "mad" ? BlockCost::absoluteDifference : BlockCost::squaredDifference;
    return options;
}

} // namespace

int runMotion(const std::vector<std::string> &words)
{
    const auto arguments = parse(
        words, "ornex motion FRAME1 FRAME2 OUTPUT [options]",
        "Block-matching motion from FRAME1 to FRAME2: draws each block's vector as an arrow from the block's\n"
        "centre to where its content went, over FRAME1, and prints the median vector (u across columns, v down\n"
        "rows, positive to the right and down).",
        {{"block", true, "block size in pixels (default 16)"},
         {"range", true, "largest displacement searched, in pixels (default 8)"},
         {"search", true, "full or three-step (default full)"},
         {"cost", true, "mad (absolute differences) or mse (squared differences); default mad"},
         {"save-vectors", true, "also write the vectors to this .csv file: row,col (block centre),u,v"}},
        3);
    if (!arguments) {
        return 0;
    }
    const BlockMatchingOptions options = blockOptions(*arguments);
    const std::string csv = arguments->text("save-vectors", "");
    if (arguments->has("save-vectors")) {
        requireCsvName(csv);
    }
    reportStage("reading the frames");
    const LoadedImage first = readPicture(arguments->positional()[0]);
    const Picture &frame1 = first.pixels, frame2 = readImage(arguments->positional()[1]);
    const Picture grey1 = toGrey(frame1.view()), grey2 = toGrey(frame2.view());
    reportStage("block matching");
    const auto vectors = blockMatching(grey1.view(), grey2.view(), options);
    const int32_t block = options.blockSize.rows;
    Picture drawn = toColour(frame1.view());
    std::vector<double> us, vs;
    for (int32_t bc = 0; bc < vectors.cols(); ++bc) {
        for (int32_t br = 0; br < vectors.rows(); ++br) {
            const auto vector = vectors(br, bc);
            us.push_back(vector.u);
            vs.push_back(vector.v);
            drawArrow(colourPlanes(drawn), Point{br * block + block / 2, bc * block + block / 2}, vector.u, vector.v,
                      {1.0, 0.9, 0.1});
        }
    }
    if (!csv.empty()) {
        writeBlockVectors(csv, vectors, options.blockSize, options.blockSize);
    }
    // Drawn over the first frame: its depth and alpha as they were.
    writeImageAfter(csv, arguments->positional()[2], {std::move(drawn), first.alpha, first.bitDepth});
    std::fprintf(reportStreamFor(arguments->positional()[2]), "%zu blocks; median vector (u, v) = (%.1f, %.1f)\n",
                 us.size(), median(us), median(vs));
    return 0;
}

int runFlow(const std::vector<std::string> &words)
{
    const auto arguments = parse(
        words, "ornex flow FRAME1 FRAME2 OUTPUT [options]",
        "Dense optical flow from FRAME1 to FRAME2 (u across columns, v down rows, positive where the content\n"
        "moved right or down), drawn in colour-wheel coding: the hue is the direction (red right, yellow down,\n"
        "cyan left, violet up), the saturation the length (full from the 99th percentile on), white still; the wheel in the\n"
        "top-right corner is the legend. Prints the median over moving pixels and the colour scale.",
        {{"method", true, "hs (Horn-Schunck) or lk (Lucas-Kanade); default hs"},
         {"iterations", true, "Horn-Schunck sweeps (default 100)"},
         {"smoothness", true, "Horn-Schunck smoothness weight (default 0.002, for values on 0..1)"},
         {"threshold", true, "Lucas-Kanade eigenvalue threshold (default 0.0039)"},
         {"levels", true, "coarse-to-fine pyramid levels, for motions of more than a pixel or two (default 1)"},
         {"save-flow", true, "also write the field to this file: .flo (Middlebury) or .npy (numpy, rows x cols x 2)"}},
        3);
    if (!arguments) {
        return 0;
    }
    const std::string method = arguments->text("method", "hs");
    if (method != "hs" && method != "lk") {
        throw UsageError("--method: expects hs or lk, got '" + method + "'");
    }
    for (const char *onlyForHs : {"iterations", "smoothness"}) {
        if (method == "lk" && arguments->has(onlyForHs)) {
            throw UsageError("--" + std::string(onlyForHs) + ": applies to --method hs only");
        }
    }
    if (method == "hs" && arguments->has("threshold")) {
        throw UsageError("--threshold: applies to --method lk only");
    }
    const int32_t levels = countOption(*arguments, "levels", 1, 1, 16);
    HornSchunckOptions hsOptions;
    hsOptions.maxIterations = countOption(*arguments, "iterations", 100, 1, 100000);
    hsOptions.smoothness = arguments->number("smoothness", 0.002);
    hsOptions.levels = levels;
    LucasKanadeOptions lkOptions;
    lkOptions.threshold = arguments->number("threshold", lkOptions.threshold);
    lkOptions.levels = levels;
    const std::string saveTo = arguments->text("save-flow", "");
    if (arguments->has("save-flow")) {
        flowFileFormat(saveTo);
    }
    reportStage("reading the frames");
    const Picture grey1 = toGrey(readImage(arguments->positional()[0]).view());
    const Picture grey2 = toGrey(readImage(arguments->positional()[1]).view());
    reportStage(method == "hs" ? "Horn-Schunck flow" : "Lucas-Kanade flow");
    const auto flow = method == "hs" ? hornSchunck(grey1.view(), grey2.view(), hsOptions)
                                     : lucasKanade(grey1.view(), grey2.view(), lkOptions);
    const FlowPicture picture = flowPicture(flow);
    if (!saveTo.empty()) {
        writeFlow(saveTo, flow);
    }
    writeImageAfter(saveTo, arguments->positional()[2], {picture.picture, std::nullopt, 8});
    const FlowSummary summary = summarizeFlow(flow);
    std::FILE *report = reportStreamFor(arguments->positional()[2]);
    std::fprintf(report, "median (u, v) = (%.2f, %.2f) over %zu moving pixels\n", summary.u, summary.v, summary.moving);
    std::fprintf(report, "colour scale: full colour from a motion of %.2f pixels on, white none\n", picture.largest);
    return 0;
}

} // namespace ornex::tool
