#pragma once

// Edge and line detection: Canny edges, the Hough accumulator and the end
// points of Hough lines.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <optional>
#include <vector>

#include "ornex/image.hpp"
#include "ornex/kernels.hpp"
#include "ornex_rt.h"

namespace ornex {

namespace detail {

template <class T>
concept DetectionReal = requires { Kernels<T>::hough; };

} // namespace detail

// ---------------------------------------------------------------------------
// Canny edges

// Low and high hysteresis thresholds on the 0..1 scale of the normalised
// gradient magnitude.
struct CannyThresholds {
    double low = 0.1;
    double high = 0.2;
};

struct CannyOptions {
    // Width of the Gaussian. The kernel reaches R = ceil(3 sigma) pixels to
    // each side, so its halves have L = R + 1 taps:
    //   smoothing  g[k] = exp(-k^2 / (2 sigma^2)) / S, S = g[0] + 2 (g[1] + ... + g[R])
    //              (the unnormalised values in S), so the whole kernel sums to 1;
    //   derivative d[0] = 0, d[k] = -k g[k] / sigma^2 (the normalised g), the
    //              derivative of that Gaussian, so a rising ramp of slope 1
    //              gives a gradient of about +1.
    // Both are computed in double and rounded to the image's element type.
    double sigma = 1.0;
    // Given: used as they are. Empty: chosen from the magnitude histogram so
    // that about nonEdgePercent per cent of the pixels fall below the high one.
    std::optional<CannyThresholds> thresholds;
    double nonEdgePercent = 70.0;
};

template <class T>
struct CannyResult {
    Image<uint8_t> edges;  // 1 on an edge, 0 elsewhere; 0 in the L/2 outermost rows and columns (L/2 + 1 on the right)
    Image<T> magnitude;    // gradient magnitude after non-maximum suppression, scaled to 0..1
};

namespace detail {

struct CannyKernelHalves {
    std::vector<double> smoothing, derivative;
};

inline CannyKernelHalves cannyKernelHalves(double sigma)
{
    const int32_t length = static_cast<int32_t>(std::ceil(3.0 * sigma)) + 1;
    CannyKernelHalves halves{std::vector<double>(static_cast<size_t>(length)),
                             std::vector<double>(static_cast<size_t>(length), 0.0)};
    double sum = 0.0;
    for (int32_t k = 0; k < length; ++k) {
        halves.smoothing[k] = std::exp(-double(k) * k / (2.0 * sigma * sigma));
        sum += k == 0 ? halves.smoothing[k] : 2.0 * halves.smoothing[k];
    }
    for (int32_t k = 0; k < length; ++k) {
        halves.smoothing[k] /= sum;
    }
    for (int32_t k = 1; k < length; ++k) {
        halves.derivative[k] = -double(k) * halves.smoothing[k] / (sigma * sigma);
    }
    return halves;
}

template <DetectionReal T>
CannyResult<T> canny(ImageView<const T> image, const CannyOptions &options)
{
    requireImage(image, "image");
    require(image.planes == 1, "image", "must have one plane");
    require(options.sigma > 0.0 && std::isfinite(options.sigma), "sigma", "must be positive and finite");
    require(std::ceil(3.0 * options.sigma) + 1.0 <= double(std::min(image.rows, image.cols)), "image",
            "smaller than the kernel for this sigma needs (ceil(3 sigma) + 1 rows and columns)");
    // The edge tracing keeps row and column indices in 16 bits.
    require(image.rows <= 32768 && image.cols <= 32768, "image", "must have at most 32768 rows and columns");
    if (options.thresholds) {
        const CannyThresholds &t = *options.thresholds;
        require(t.low >= 0.0 && t.low <= 1.0 && t.high >= 0.0 && t.high <= 1.0, "thresholds",
                "must lie in [0, 1]");
        require(t.low <= t.high, "thresholds", "low must not exceed high");
    } else {
        require(options.nonEdgePercent >= 0.0 && options.nonEdgePercent <= 100.0, "nonEdgePercent",
                "must lie in [0, 100]");
    }

    const CannyKernelHalves halves = cannyKernelHalves(options.sigma);
    const std::vector<T> smoothing(halves.smoothing.begin(), halves.smoothing.end());
    const std::vector<T> derivative(halves.derivative.begin(), halves.derivative.end());
    const auto length = static_cast<int32_t>(smoothing.size());
    std::vector<T> workA(image.size()), workB(image.size());
    CannyResult<T> result{Image<uint8_t>(image.rows, image.cols), Image<T>(image.rows, image.cols)};
    std::array<T, 2> thresholds{};
    if (options.thresholds) {
        thresholds = {static_cast<T>(options.thresholds->low), static_cast<T>(options.thresholds->high)};
    } else {
        thresholds = {static_cast<T>(options.nonEdgePercent), T(0)};
    }
    (options.thresholds ? Kernels<T>::cannyUserThresholds : Kernels<T>::cannyAutoThresholds)(
        image.data, smoothing.data(), derivative.data(), workA.data(), workB.data(), result.edges.data(),
        result.magnitude.data(), thresholds.data(), image.rows, image.cols, length);
    return result;
}

} // namespace detail

// Canny edges of a one-plane image: Gaussian smoothing and derivatives (see
// CannyOptions::sigma), non-maximum suppression, hysteresis.
//   ornex::CannyOptions options;
//   options.sigma = 1.5;
//   options.thresholds = ornex::CannyThresholds{0.05, 0.15}; // or leave empty for automatic
//   auto [edges, magnitude] = ornex::canny(image, options);
inline CannyResult<float> canny(ImageView<const float> image, const CannyOptions &options = {})
{
    return detail::canny<float>(image, options);
}
inline CannyResult<double> canny(ImageView<const double> image, const CannyOptions &options = {})
{
    return detail::canny<double>(image, options);
}

// ---------------------------------------------------------------------------
// Hough transform

struct HoughOptions {
    // Degrees between neighbouring theta columns; 90 must be a whole multiple
    // of it. Theta runs from -90 degrees up to (not including) 90.
    double thetaResolution = 1.0;
    // Pixels between neighbouring rho bins.
    double rhoResolution = 1.0;
};

// The accumulator has one row per rho bin and one column per theta:
// accumulator(k, j) counts the edge pixels on the line
// rho[k] = column cos(theta[j]) + row sin(theta[j]), theta in radians.
template <class T>
struct HoughTransform {
    Image<T> accumulator;
    std::vector<T> rho;
    std::vector<T> theta;
};

// Where one line crosses the image border; both points are (-1, -1) when it
// does not cross the image.
struct LineEnds {
    Point first;
    Point second;
    bool operator==(const LineEnds &) const = default;
};

// Votes every nonzero pixel of an edge map into a (rho, theta) accumulator.
// With n = 90 / thetaResolution, the sine table holds sin(theta) for theta =
// -90 + 90 t / n degrees, t = 0 .. n, and theta column j stands for
// -90 + 90 j / n degrees (j = 0 .. 2n - 1). The rho axis is symmetric:
// R = ceil(diagonal / rhoResolution) with diagonal = sqrt((rows-1)^2 +
// (cols-1)^2) (at least 1), 2R + 1 bins from -R rhoResolution to
// +R rhoResolution, so every pixel's rho falls inside it.
//   auto h = ornex::hough<float>(edges);            // 1 degree, 1 pixel
//   auto fine = ornex::hough(edges, {0.5, 0.5});    // double accumulator
//   float votes = h.accumulator(k, j);              // line rho = h.rho[k], theta = h.theta[j]
template <class T = double>
    requires detail::DetectionReal<T>
HoughTransform<T> hough(ImageView<const uint8_t> edges, const HoughOptions &options = {})
{
    using detail::require;
    detail::requireImage(edges, "edges");
    require(edges.planes == 1, "edges", "must have one plane");
    const double thetaSteps = 90.0 / options.thetaResolution;
    require(options.thetaResolution > 0.0 && std::isfinite(thetaSteps), "thetaResolution", "must be positive");
    require(thetaSteps <= 1e6, "thetaResolution", "too fine (at most a million steps per 90 degrees)");
    const auto n = static_cast<int32_t>(std::lround(thetaSteps));
    require(n >= 1 && std::abs(n * options.thetaResolution - 90.0) <= 1e-9 * 90.0, "thetaResolution",
            "must divide 90 degrees into whole steps");
    require(options.rhoResolution > 0.0 && std::isfinite(options.rhoResolution), "rhoResolution",
            "must be positive and finite");
    const double diagonal = std::hypot(double(edges.rows - 1), double(edges.cols - 1));
    const double rhoSteps = std::max(1.0, std::ceil(diagonal / options.rhoResolution));
    require(rhoSteps <= 1e8, "rhoResolution", "too fine for the image");

    const int32_t numTheta = n + 1;
    const auto numRho = 2 * static_cast<int32_t>(rhoSteps) + 1;
    const double pi = std::numbers::pi;
    std::vector<T> sines(static_cast<size_t>(numTheta));
    for (int32_t t = 0; t < numTheta; ++t) {
        const double degrees = -90.0 + 90.0 * t / n;
        sines[t] = static_cast<T>(std::sin(degrees * pi / 180.0));
    }
    HoughTransform<T> result{Image<T>(numRho, 2 * numTheta - 2), std::vector<T>(static_cast<size_t>(numRho)),
                             std::vector<T>(static_cast<size_t>(2 * numTheta - 2))};
    const double rhoFirst = -rhoSteps * options.rhoResolution;
    for (int32_t k = 0; k < numRho; ++k) {
        result.rho[k] = static_cast<T>(rhoFirst + k * options.rhoResolution);
    }
    for (int32_t j = 0; j < 2 * numTheta - 2; ++j) {
        result.theta[j] = static_cast<T>((-90.0 + 90.0 * j / n) * pi / 180.0);
    }
    const T rho0 = static_cast<T>(rhoFirst);
    detail::Kernels<T>::hough(edges.data, result.accumulator.data(), sines.data(), &rho0, edges.rows, edges.cols,
                              numRho, numTheta);
    return result;
}

// The two points where each line rho[i] = column cos(theta[i]) + row
// sin(theta[i]) (theta in radians) crosses the border of an image of
// imageRows x imageCols, tried on the top, left, right and bottom borders in
// that order. A line through a corner may report that corner twice.
//   std::vector<double> theta{0.0}, rho{5.0};
//   auto ends = ornex::houghLines(theta, rho, 20, 30);
//   // ends[0] == {{0, 5}, {19, 5}}
template <detail::DetectionReal T>
std::vector<LineEnds> houghLines(const std::vector<T> &theta, const std::vector<T> &rho, int32_t imageRows,
                                 int32_t imageCols)
{
    using detail::require;
    require(rho.size() == theta.size(), "rho", "must have as many values as theta");
    require(theta.size() <= size_t(std::numeric_limits<int32_t>::max() / 4), "theta", "too many lines");
    require(imageRows > 0, "imageRows", "must be positive");
    require(imageCols > 0, "imageCols", "must be positive");
    const auto numLines = static_cast<int32_t>(theta.size());
    std::vector<int32_t> points(4 * theta.size());
    detail::Kernels<T>::houghLines(theta.data(), rho.data(), points.data(), numLines, imageRows, imageCols);
    std::vector<LineEnds> ends(theta.size());
    for (size_t i = 0; i < ends.size(); ++i) {
        ends[i] = {{points[4 * i], points[4 * i + 1]}, {points[4 * i + 2], points[4 * i + 3]}};
    }
    return ends;
}

} // namespace ornex
