#include "commands.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>

#include "analysis.hpp"
#include "arguments.hpp"
#include "command_options.hpp"
#include "file_jobs.hpp"
#include "image_io.hpp"
#include "pictures.hpp"
#include "progress.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

CannyOptions cannyOptions(const Arguments &arguments)
{
    arguments.refuseTogether("auto", {"low", "high"});
    CannyOptions options;
    options.sigma = arguments.number("sigma", 1.5);
    if (options.sigma <= 0) {
        throw UsageError("--sigma: must be positive");
    }
    if (arguments.has("auto")) {
        options.nonEdgePercent = arguments.number("auto", 70);
        if (options.nonEdgePercent < 0 || options.nonEdgePercent > 100) {
            throw UsageError("--auto: expects a percentage from 0 to 100");
        }
        return options;
    }
    const double low = arguments.number("low", 0.08), high = arguments.number("high", 0.2);
    if (low < 0 || low > 1 || high < 0 || high > 1) {
        throw UsageError((low < 0 || low > 1 ? "--low" : "--high") + std::string(": expects a value from 0 to 1"));
    }
    if (low > high) {
        throw UsageError("--low: must not exceed --high (" + arguments.text("high", "0.2") + ")");
    }
    options.thresholds = CannyThresholds{low, high};
    return options;
}

// The Hough options of --theta-step, refused before any file is read: the
// transform of a one-pixel image checks them as it would on any image.
HoughOptions houghOptions(const Arguments &arguments)
{
    HoughOptions options;
    options.thetaResolution = arguments.number("theta-step", 1.0);
    try {
        ornex::hough<double>(Image<uint8_t>(1, 1).view(), options);
    } catch (const std::invalid_argument &refusal) {
        rethrowRefusal(refusal);
    }
    return options;
}

const std::vector<Option> cannyOptionList = {
    {"sigma", true, "width of the Gaussian (default 1.5)"},
    {"low", true, "low hysteresis threshold on 0..1 (default 0.08)"},
    {"high", true, "high hysteresis threshold on 0..1 (default 0.2)"},
    {"auto", true, "choose the thresholds so that this percentage of pixels is not an edge"},
};

std::vector<Option> with(std::vector<Option> options, const std::vector<Option> &more)
{
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

} // namespace

int runEdges(const std::vector<std::string> &words)
{
    const std::string synopsis = "ornex edges INPUT OUTPUT [options]  |  ornex edges INPUT... --out-dir DIR [options]";
    const auto arguments = parseFiles(words, synopsis,
                                      "Canny edges of an image (colour images are turned to grey by luma), white on black;\n"
                                      "prints the number of edge pixels.",
                                      cannyOptionList);
    if (!arguments) {
        return 0;
    }
    const CannyOptions options = cannyOptions(*arguments);
    return runJobs("edges", fileJobs(*arguments, synopsis), [&](const FileJob &job) {
        job.stage("reading " + job.input);
        const LoadedImage input = readPicture(job.input);
        const Picture grey = toGrey(input.pixels.view());
        job.stage("Canny edges of " + job.input);
        const auto edges = canny(grey.view(), options);
        job.stage("writing " + job.output);
        writePicture(job.output, edgePicture(edges.edges).view(), std::nullopt, input.bitDepth);
        std::fprintf(job.report(), "%s%td edge pixels\n", job.count > 1 ? (job.input + ": ").c_str() : "",
                     std::count(edges.edges.values().begin(), edges.edges.values().end(), 1));
    });
}

int runLines(const std::vector<std::string> &words)
{
    const std::string synopsis = "ornex lines INPUT OUTPUT [options]  |  ornex lines INPUT... --out-dir DIR [options]";
    const auto arguments =
        parseFiles(words, synopsis,
                   "Finds the strongest straight lines (Canny edges, then the Hough transform) and draws them in red\n"
                   "over the image; prints theta (degrees), rho and the end points of each.",
                   with(cannyOptionList, {{"count", true, "how many lines (default 5)"},
                                          {"theta-step", true, "angle resolution in degrees, dividing 90 (default 1)"}}));
    if (!arguments) {
        return 0;
    }
    const int32_t count = countOption(*arguments, "count", 5, 1, 1000);
    const HoughOptions lineOptions = houghOptions(*arguments);
    const CannyOptions options = cannyOptions(*arguments);
    return runJobs("lines", fileJobs(*arguments, synopsis), [&](const FileJob &job) {
        job.stage("reading " + job.input);
        const LoadedImage input = readPicture(job.input);
        const Picture &image = input.pixels;
        const Picture grey = toGrey(image.view());
        job.stage("Canny edges of " + job.input);
        const auto edges = canny(grey.view(), options);
        job.stage("Hough transform of " + job.input);
        const auto hough = ornex::hough<double>(edges.edges.view(), lineOptions);
        Picture drawn = toColour(image.view());
        if (job.count > 1) {
            std::fprintf(job.report(), "%s:\n", job.input.c_str());
        }
        for (const HoughPeak &peak : strongestLines(hough, size_t(count))) {
            const auto ends = houghLines<double>({peak.theta}, {peak.rho}, image.rows(), image.cols())[0];
            std::fprintf(job.report(), "theta %7.2f  rho %8.2f  votes %6.0f  from (%d, %d) to (%d, %d)\n",
                         peak.theta * 180 / std::numbers::pi, peak.rho, peak.votes, ends.first.row, ends.first.col,
                         ends.second.row, ends.second.col);
            if (ends.first.row >= 0) {
                drawAntialiasedLine(colourPlanes(drawn), ends.first, ends.second, {1.0, 0.15, 0.15});
            }
        }
        job.stage("writing " + job.output);
        writePicture(job.output, {std::move(drawn), input.alpha, input.bitDepth}); // the input's alpha as it was
    });
}

int runWarp(const std::vector<std::string> &words)
{
    const std::string synopsis = "ornex warp INPUT OUTPUT --to R0,C0,R1,C1,R2,C2,R3,C3 [options]  |  "
                                 "ornex warp INPUT... --out-dir DIR --to ... [options]";
    const auto arguments = parseFiles(
        words, synopsis,
        "Warps the whole image so that its corners (top-left, top-right, bottom-right, bottom-left) land on\n"
        "the four given (row, column) points of the output.",
        {{"to", true, "the four output corners, 8 numbers"},
         {"size", true, "output ROWS,COLS (default the input's)"},
         {"interpolation", true, "nearest, bilinear or bicubic (default bilinear)"},
         {"approximate", false, "quadratic positions along each span instead of exact division"},
         {"subdivisions", true, "cells per side minus one (default 4)"},
         {"background", true, "value for uncovered pixels, 0..1 (default 0)"}});
    if (!arguments) {
        return 0;
    }
    if (!arguments->has("to")) {
        throw UsageError("--to: the four output corners are required");
    }
    const std::vector<double> corners = arguments->numbers("to", 8);
    for (const double corner : corners) {
        if (!(std::fabs(corner) <= 536870912.0)) {
            throw UsageError("--to: corners must lie within -536870912 .. 536870912");
        }
    }
    Quad to;
    for (int k = 0; k < 4; ++k) {
        to[k] = Point{int32_t(std::lround(corners[2 * k])), int32_t(std::lround(corners[2 * k + 1]))};
    }
    WarpOptions options;
    options.interpolation = interpolationOption(*arguments);
    options.exact = !arguments->has("approximate");
    options.subdivisions = countOption(*arguments, "subdivisions", 4, 0, 1000);
    options.background = {arguments->number("background", 0.0)};
    std::optional<std::vector<double>> size;
    if (arguments->has("size")) {
        size = arguments->numbers("size", 2);
        if ((*size)[0] < 1 || (*size)[1] < 1 || (*size)[0] > 30000 || (*size)[1] > 30000) {
            throw UsageError("--size: expects ROWS,COLS from 1 to 30000");
        }
    }
    return runJobs("warp", fileJobs(*arguments, synopsis), [&](const FileJob &job) {
        job.stage("reading " + job.input);
        const LoadedImage input = readPicture(job.input);
        const Picture &image = input.pixels;
        const int32_t rows = size ? int32_t((*size)[0]) : image.rows(), cols = size ? int32_t((*size)[1]) : image.cols();
        const auto transform =
            homography<double>(Rect{0, 0, image.rows(), image.cols()}, to, image.rows(), image.cols());
        job.stage("warping " + job.input);
        LoadedImage warped{warp<double>(image.view(), rows, cols, transform, options), std::nullopt, input.bitDepth};
        if (input.alpha) { // warped as one more plane, transparent where nothing lands
            WarpOptions alphaOptions = options;
            alphaOptions.background = {0.0};
            warped.alpha = warp<double>(input.alpha->view(), rows, cols, transform, alphaOptions);
        }
        job.stage("writing " + job.output);
        writePicture(job.output, warped);
    });
}

int runShear(const std::vector<std::string> &words)
{
    const std::string synopsis =
        "ornex shear INPUT OUTPUT --amount A [options]  |  ornex shear INPUT... --out-dir DIR --amount A [options]";
    const auto arguments =
        parseFiles(words, synopsis,
                   "Shears the image: row r moves right by A*r (or, with --vertical, column c moves down by A*c);\n"
                   "the output grows to hold every moved pixel.",
                   {{"amount", true, "pixels of movement per row or column, -10..10"},
                    {"vertical", false, "move columns down instead of rows right"},
                    {"interpolation", true, "nearest, bilinear or bicubic (default bilinear)"},
                    {"background", true, "value for uncovered pixels, 0..1 (default 0)"}});
    if (!arguments) {
        return 0;
    }
    if (!arguments->has("amount")) {
        throw UsageError("--amount: required");
    }
    const double amount = arguments->number("amount", 0);
    if (std::fabs(amount) > 10) {
        throw UsageError("--amount: expects a value from -10 to 10");
    }
    ShearOptions options;
    options.interpolation = interpolationOption(*arguments);
    options.background = {arguments->number("background", 0.0)};
    const auto direction = arguments->has("vertical") ? ShearDirection::vertical : ShearDirection::horizontal;
    return runJobs("shear", fileJobs(*arguments, synopsis), [&](const FileJob &job) {
        job.stage("reading " + job.input);
        const LoadedImage input = readPicture(job.input);
        job.stage("shearing " + job.input);
        LoadedImage sheared{shear(input.pixels.view(), direction, amount, options), std::nullopt, input.bitDepth};
        if (input.alpha) { // sheared as one more plane, transparent where nothing lands
            ShearOptions alphaOptions = options;
            alphaOptions.background = {0.0};
            sheared.alpha = shear(input.alpha->view(), direction, amount, alphaOptions);
        }
        job.stage("writing " + job.output);
        writePicture(job.output, sheared);
    });
}

} // namespace ornex::tool
