#include "commands.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <numbers>

#include "analysis.hpp"
#include "arguments.hpp"
#include "flow_pictures.hpp"
#include "image_io.hpp"
#include "pictures.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

constexpr int32_t sceneRows = 240, sceneCols = 320;

// The two long lines drawn into the scene, which the Hough stage must find.
const Point drawnLines[2][2] = {{{200, 10}, {60, 310}}, {{12, 190}, {232, 262}}};

Picture buildScene(const Font &font)
{
    Picture scene(sceneRows, sceneCols, 3);
    for (int32_t c = 0; c < sceneCols; ++c) {
        for (int32_t r = 0; r < sceneRows; ++r) {
            const double texture = 0.12 * std::sin(0.23 * c + 0.8 * std::sin(0.07 * r)) + 0.08 * std::cos(0.19 * r);
            scene(r, c, 0) = 0.30 + texture;
            scene(r, c, 1) = 0.34 + texture;
            scene(r, c, 2) = 0.42 + texture;
        }
    }
    RgbView<double> planes = colourPlanes(scene);
    fillAntialiasedPolygon(planes, {{40, 30}, {28, 125}, {112, 142}, {122, 48}}, {0.85, 0.25, 0.2});
    fillAntialiasedPolygon(planes, {{150, 60}, {205, 95}, {150, 130}, {185, 95}}, {0.95, 0.8, 0.2}, 0.8);
    fillAntialiasedCircle(planes, {150, 235}, 30, {0.25, 0.45, 0.95}, 0.85);
    drawAntialiasedCircle(planes, {150, 235}, 42, {0.2, 0.95, 0.4});
    drawAntialiasedCircle(planes, {70, 230}, 25, {0.9, 0.9, 0.95});
    for (const auto &line : drawnLines) {
        drawAntialiasedLine(planes, line[0], line[1], {1.0, 1.0, 0.3});
    }
    drawText(planes, "ornex_rt", {228, 14}, font, {1.0, 1.0, 1.0});
    return scene;
}

// Where the transform's first matrix (source to output) carries (row, col).
std::array<double, 2> mapped(const ProjectiveTransform<double> &t, double row, double col)
{
    const auto &m = t.block;
    const double w = col * m[6] + row * m[7] + m[8];
    return {(col * m[3] + row * m[4] + m[5]) / w, (col * m[0] + row * m[1] + m[2]) / w};
}

class Report {
public:
    template <class Stage>
    auto time(const std::string &name, const Stage &stage)
    {
        const auto start = std::chrono::steady_clock::now();
        auto result = stage();
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        std::printf("%-16s %8.2f ms\n", name.c_str(), ms);
        return result;
    }
};

} // namespace

int runDemo(const std::vector<std::string> &words)
{
    const std::vector<Option> options = {{"help", false, "show this text"}};
    const Arguments arguments(words, options);
    if (arguments.has("help") || arguments.positional().size() > 1) {
        std::fputs(usage("ornex demo [OUTDIR]",
                         "Draws a scene, moves it by a known projective warp and shift, runs every family on the\n"
                         "pair and writes one PNG per stage and summary.png into OUTDIR (default ornex-demo).",
                         options)
                       .c_str(),
                   arguments.has("help") ? stdout : stderr);
        return arguments.has("help") ? 0 : 2;
    }
    const std::string folder = arguments.positional().empty() ? "ornex-demo" : arguments.positional()[0];
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throw ToolError("cannot create '" + folder + "': " + error.message());
    }
    auto path = [&](const std::string &name) { return (std::filesystem::path(folder) / name).string(); };

    const Font sceneFont(30), labelFont(15);
    Report report;
    std::vector<Panel> panels;

    Picture scene = report.time("scene", [&] { return buildScene(sceneFont); });
    const Quad moved{Point{3, 5}, Point{4, sceneCols - 1 + 4}, Point{sceneRows - 1 + 3, sceneCols - 1 + 6},
                     Point{sceneRows - 1 + 2, 5}};
    const auto motion = homography<double>(Rect{0, 0, sceneRows, sceneCols}, moved, sceneRows, sceneCols);
    WarpOptions moveOptions;
    moveOptions.background = {0.3};
    Picture frame2 = report.time("second frame", [&] {
        return warp(colourPlanes(scene), sceneRows, sceneCols, motion, moveOptions);
    });
    panels.push_back({"scene", scene});
    panels.push_back({"moved by a projective warp", frame2});
    const Picture grey1 = toGrey(scene.view()), grey2 = toGrey(frame2.view());

    // Block matching: the median vector of interior blocks against the
    // motion the warp gives their centres.
    BlockMatchingOptions blockOptions;
    blockOptions.blockSize = {16, 16};
    blockOptions.maxDisplacement = {8, 8};
    const auto vectors = report.time("block matching", [&] { return blockMatching(grey1.view(), grey2.view(), blockOptions); });
    std::vector<double> us, vs, knownUs, knownVs;
    Picture motionPicture = toColour(grey1.view());
    for (int32_t bc = 1; bc + 1 < vectors.cols(); ++bc) {
        for (int32_t br = 1; br + 1 < vectors.rows(); ++br) {
            const double row = br * 16 + 7.5, col = bc * 16 + 7.5;
            const auto to = mapped(motion, row, col);
            us.push_back(vectors(br, bc).u);
            vs.push_back(vectors(br, bc).v);
            knownUs.push_back(to[1] - col);
            knownVs.push_back(to[0] - row);
            drawArrow(colourPlanes(motionPicture), Point{int32_t(row), int32_t(col)}, vectors(br, bc).u,
                      vectors(br, bc).v, {1.0, 0.9, 0.1});
        }
    }
    std::printf("    median vector (u, v) = (%.1f, %.1f); the warp moves block centres by (%.1f, %.1f)\n", median(us),
                median(vs), median(knownUs), median(knownVs));
    panels.push_back({"block matching", motionPicture});

    // Dense flow on a one-pixel move of smoothed frames: the small, smooth
    // motion these methods are made for.
    const Quad nudged{Point{1, 1}, Point{1, sceneCols}, Point{sceneRows, sceneCols}, Point{sceneRows, 1}};
    const Picture smoothGrey1 = smoothed(grey1.view());
    const Picture nudgedGrey = smoothed(toGrey(
        warp(colourPlanes(scene), sceneRows, sceneCols,
             homography<double>(Rect{0, 0, sceneRows, sceneCols}, nudged, sceneRows, sceneCols), moveOptions)
            .view())
                                           .view());
    auto flowPanel = [&](const VelocityField<double> &flow, const char *name) {
        const FlowSummary summary = summarizeFlow(flow);
        std::printf("    %s median (u, v) = (%.2f, %.2f) over %zu moving pixels; the content moved by (1, 1)\n",
                    name, summary.u, summary.v, summary.moving);
        return flowPicture(flow).picture;
    };
    HornSchunckOptions hsOptions;
    hsOptions.maxIterations = 100;
    // Gradients of pictures on 0..1 are small: a weight of 1 would drown them.
    hsOptions.smoothness = 0.002;
    const auto hs = report.time("Horn-Schunck", [&] { return hornSchunck(smoothGrey1.view(), nudgedGrey.view(), hsOptions); });
    panels.push_back({"Horn-Schunck flow", flowPanel(hs, "Horn-Schunck")});
    const auto lk = report.time("Lucas-Kanade", [&] { return lucasKanade(smoothGrey1.view(), nudgedGrey.view()); });
    panels.push_back({"Lucas-Kanade flow", flowPanel(lk, "Lucas-Kanade")});

    CannyOptions cannyOptions;
    cannyOptions.sigma = 1.2;
    cannyOptions.thresholds = CannyThresholds{0.08, 0.2};
    const auto edges = report.time("Canny", [&] { return canny(grey1.view(), cannyOptions); });
    const auto edgeCount = std::count(edges.edges.values().begin(), edges.edges.values().end(), 1);
    std::printf("    %td edge pixels\n", edgeCount);
    panels.push_back({"Canny edges", edgePicture(edges.edges)});

    const auto hough = report.time("Hough", [&] { return ornex::hough<double>(edges.edges.view()); });
    const auto peaks = strongestLines(hough, 6);
    Picture linePicture = toColour(grey1.view());
    for (const HoughPeak &peak : peaks) {
        const auto ends = houghLines<double>({peak.theta}, {peak.rho}, sceneRows, sceneCols)[0];
        drawAntialiasedLine(colourPlanes(linePicture), ends.first, ends.second, {1.0, 0.2, 0.2});
    }
    for (const auto &line : drawnLines) {
        const auto drawn = lineParameters(line[0], line[1]);
        double bestTheta = 0, bestRho = 0, bestDistance = 1e9;
        for (const HoughPeak &peak : peaks) {
            const double theta = peak.theta, rho = peak.rho;
            const double distance = std::fabs(theta - drawn[0]) * 180 / std::numbers::pi + std::fabs(rho - drawn[1]);
            if (distance < bestDistance) {
                bestDistance = distance, bestTheta = theta, bestRho = rho;
            }
        }
        std::printf("    drawn line theta %.1f deg, rho %.1f: nearest strong line theta %.1f deg, rho %.1f\n",
                    drawn[0] * 180 / std::numbers::pi, drawn[1], bestTheta * 180 / std::numbers::pi, bestRho);
    }
    panels.push_back({"Hough lines", linePicture});

    const Quad tilted{Point{30, 40}, Point{0, 300}, Point{239, 319}, Point{200, 10}};
    WarpOptions warpOptions;
    warpOptions.interpolation = Interpolation::bicubic;
    warpOptions.exact = false;
    warpOptions.subdivisions = 16;
    const Picture warped = report.time("projective warp", [&] {
        return warp(colourPlanes(scene), sceneRows, sceneCols,
                    homography<double>(Rect{0, 0, sceneRows, sceneCols}, tilted, sceneRows, sceneCols), warpOptions);
    });
    panels.push_back({"projective warp", warped});
    const Picture sheared = report.time("shear", [&] { return shear(scene.view(), ShearDirection::horizontal, 0.3); });
    panels.push_back({"shear", sheared});

    const char *names[] = {"scene.png", "frame2.png", "motion.png", "flow_hs.png", "flow_lk.png",
                           "edges.png", "lines.png",  "warp.png",   "shear.png"};
    for (size_t k = 0; k < panels.size(); ++k) {
        writeImage(path(names[k]), panels[k].picture.view());
    }
    const Picture sheet = report.time("contact sheet", [&] { return contactSheet(panels, 3, 180, 240, labelFont); });
    writeImage(path("summary.png"), sheet.view());
    std::printf("wrote %zu stage images and summary.png to %s/\n", panels.size(), folder.c_str());
    return 0;
}

} // namespace ornex::tool
