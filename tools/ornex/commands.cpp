#include "commands.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <optional>

#include "analysis.hpp"
#include "arguments.hpp"
#include "image_io.hpp"
#include "pictures.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

// Parses a command's words; prints its usage and returns nothing for --help.
std::optional<Arguments> parse(const std::vector<std::string> &words, const std::string &synopsis,
                               const std::string &description, std::vector<Option> options,
                               size_t positionalCount)
{
    options.push_back({"help", false, "show this text"});
    Arguments arguments(words, options);
    if (arguments.has("help")) {
        std::fputs(usage(synopsis, description, options).c_str(), stdout);
        return std::nullopt;
    }
    if (arguments.positional().size() != positionalCount) {
        throw ToolError("expects " + std::to_string(positionalCount) + " file names; usage: " + synopsis);
    }
    return arguments;
}

Interpolation interpolationOption(const Arguments &arguments)
{
    const std::string name = arguments.text("interpolation", "bilinear");
    if (name == "nearest") {
        return Interpolation::nearest;
    }
    if (name == "bilinear") {
        return Interpolation::bilinear;
    }
    if (name == "bicubic") {
        return Interpolation::bicubic;
    }
    throw ToolError("--interpolation: expects nearest, bilinear or bicubic, got '" + name + "'");
}

// A whole number within [low, high], for options that size things.
int32_t countOption(const Arguments &arguments, const std::string &name, int32_t fallback, int32_t low, int32_t high)
{
    const int32_t value = arguments.integer(name, fallback);
    if (value < low || value > high) {
        throw ToolError("--" + name + ": expects a whole number from " + std::to_string(low) + " to " +
                        std::to_string(high));
    }
    return value;
}

CannyOptions cannyOptions(const Arguments &arguments)
{
    CannyOptions options;
    options.sigma = arguments.number("sigma", 1.5);
    if (arguments.has("auto")) {
        options.nonEdgePercent = arguments.number("auto", 70);
    } else {
        options.thresholds = CannyThresholds{arguments.number("low", 0.08), arguments.number("high", 0.2)};
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
    const auto arguments = parse(words, "ornex edges INPUT OUTPUT [options]",
                                 "Canny edges of an image (colour images are averaged to grey), white on black.",
                                 cannyOptionList, 2);
    if (!arguments) {
        return 0;
    }
    const Picture grey = toGrey(readImage(arguments->positional()[0]).view());
    const auto edges = canny(grey.view(), cannyOptions(*arguments));
    writeImage(arguments->positional()[1], edgePicture(edges.edges).view());
    std::printf("%td edge pixels\n", std::count(edges.edges.values().begin(), edges.edges.values().end(), 1));
    return 0;
}

int runLines(const std::vector<std::string> &words)
{
    const auto arguments =
        parse(words, "ornex lines INPUT OUTPUT [options]",
              "Finds the strongest straight lines (Canny edges, then the Hough transform) and draws them in red\n"
              "over the image; prints theta (degrees), rho and the end points of each.",
              with(cannyOptionList, {{"count", true, "how many lines (default 5)"},
                                {"theta-step", true, "angle resolution in degrees, dividing 90 (default 1)"}}),
              2);
    if (!arguments) {
        return 0;
    }
    const Picture image = readImage(arguments->positional()[0]);
    const int32_t count = countOption(*arguments, "count", 5, 1, 1000);
    HoughOptions houghOptions;
    houghOptions.thetaResolution = arguments->number("theta-step", 1.0);
    const Picture grey = toGrey(image.view());
    const auto edges = canny(grey.view(), cannyOptions(*arguments));
    const auto hough = ornex::hough<double>(edges.edges.view(), houghOptions);
    Picture drawn = toColour(image.view());
    for (const HoughPeak &peak : strongestLines(hough, size_t(count))) {
        const auto ends = houghLines<double>({peak.theta}, {peak.rho}, image.rows(), image.cols())[0];
        std::printf("theta %7.2f  rho %8.2f  votes %6.0f  from (%d, %d) to (%d, %d)\n",
                    peak.theta * 180 / std::numbers::pi, peak.rho, peak.votes, ends.first.row, ends.first.col,
                    ends.second.row, ends.second.col);
        if (ends.first.row >= 0) {
            drawAntialiasedLine(colourPlanes(drawn), ends.first, ends.second, {1.0, 0.15, 0.15});
        }
    }
    writeImage(arguments->positional()[1], drawn.view());
    return 0;
}

int runWarp(const std::vector<std::string> &words)
{
    const auto arguments = parse(
        words, "ornex warp INPUT OUTPUT --to R0,C0,R1,C1,R2,C2,R3,C3 [options]",
        "Warps the whole image so that its corners (top-left, top-right, bottom-right, bottom-left) land on\n"
        "the four given (row, column) points of the output.",
        {{"to", true, "the four output corners, 8 numbers"},
         {"size", true, "output ROWS,COLS (default the input's)"},
         {"interpolation", true, "nearest, bilinear or bicubic (default bilinear)"},
         {"approximate", false, "quadratic positions along each span instead of exact division"},
         {"subdivisions", true, "cells per side minus one (default 4)"},
         {"background", true, "value for uncovered pixels, 0..1 (default 0)"}},
        2);
    if (!arguments) {
        return 0;
    }
    if (!arguments->has("to")) {
        throw ToolError("--to: the four output corners are required");
    }
    const std::vector<double> corners = arguments->numbers("to", 8);
    Quad to;
    for (int k = 0; k < 4; ++k) {
        to[k] = Point{int32_t(std::lround(corners[2 * k])), int32_t(std::lround(corners[2 * k + 1]))};
    }
    WarpOptions options;
    options.interpolation = interpolationOption(*arguments);
    options.exact = !arguments->has("approximate");
    options.subdivisions = countOption(*arguments, "subdivisions", 4, 0, 1000);
    options.background = {arguments->number("background", 0.0)};
    Picture image = readImage(arguments->positional()[0]);
    int32_t rows = image.rows(), cols = image.cols();
    if (arguments->has("size")) {
        const std::vector<double> size = arguments->numbers("size", 2);
        if (size[0] < 1 || size[1] < 1 || size[0] > 30000 || size[1] > 30000) {
            throw ToolError("--size: expects ROWS,COLS from 1 to 30000");
        }
        rows = int32_t(size[0]), cols = int32_t(size[1]);
    }
    const auto transform = homography<double>(Rect{0, 0, image.rows(), image.cols()}, to, image.rows(), image.cols());
    writeImage(arguments->positional()[1], warp<double>(image.view(), rows, cols, transform, options).view());
    return 0;
}

int runShear(const std::vector<std::string> &words)
{
    const auto arguments =
        parse(words, "ornex shear INPUT OUTPUT --amount A [options]",
              "Shears the image: row r moves right by A*r (or, with --vertical, column c moves down by A*c);\n"
              "the output grows to hold every moved pixel.",
              {{"amount", true, "pixels of movement per row or column, -10..10"},
               {"vertical", false, "move columns down instead of rows right"},
               {"interpolation", true, "nearest, bilinear or bicubic (default bilinear)"},
               {"background", true, "value for uncovered pixels, 0..1 (default 0)"}},
              2);
    if (!arguments) {
        return 0;
    }
    if (!arguments->has("amount")) {
        throw ToolError("--amount: required");
    }
    const double amount = arguments->number("amount", 0);
    if (std::fabs(amount) > 10) {
        throw ToolError("--amount: expects a value from -10 to 10");
    }
    ShearOptions options;
    options.interpolation = interpolationOption(*arguments);
    options.background = {arguments->number("background", 0.0)};
    const Picture image = readImage(arguments->positional()[0]);
    const auto direction = arguments->has("vertical") ? ShearDirection::vertical : ShearDirection::horizontal;
    writeImage(arguments->positional()[1], shear(image.view(), direction, amount, options).view());
    return 0;
}

} // namespace ornex::tool
