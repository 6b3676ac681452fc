#pragma once

// Motion between frames: block matching and dense optical flow
// (Horn-Schunck, Lucas-Kanade with fixed or Gaussian-derivative filters).
// Every function takes float or double frames and computes in that type.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "ornex/flow_pyramid.hpp"
#include "ornex/image.hpp"
#include "ornex/kernels.hpp"
#include "ornex_rt.h"

namespace ornex {

// A displacement: u across columns, v down rows.
template <class T>
struct MotionVector {
    T u = 0;
    T v = 0;
    bool operator==(const MotionVector &) const = default;
};

// The velocity of every pixel: u across columns, v down rows.
template <class T>
struct VelocityField {
    Image<T> u, v;
};

namespace detail {

template <class T>
concept FlowElement = requires { Kernels<T>::hornSchunck; };

constexpr int64_t largestFlowSize = std::numeric_limits<int32_t>::max();

// The kernels count pixels in 32-bit integers.
template <class T>
void requireFlowFrame(const ImageView<const T> &frame, const char *argument)
{
    requireImage(frame, argument);
    require(frame.planes == 1, argument, "must have one plane");
    require(frame.planeSize() <= largestFlowSize, argument, "too large");
}

template <class T>
void requireFlowFramePair(const ImageView<const T> &frame1, const ImageView<const T> &frame2)
{
    requireFlowFrame(frame1, "frame1");
    requireFlowFrame(frame2, "frame2");
    require(frame1.sameShape(frame2), "frames", "must have the same size");
}

// u and v out of an interleaved complex field, turned round: the flow
// kernels take spatial derivatives as previous minus next and temporal ones
// as later minus earlier, so content moving right by one pixel comes out as
// u = -1. The layer reports the direction the content moved.
template <class T>
VelocityField<T> splitVelocity(const std::vector<T> &velocity, int32_t rows, int32_t cols)
{
    VelocityField<T> field{Image<T>(rows, cols), Image<T>(rows, cols)};
    for (size_t i = 0; i < field.u.values().size(); ++i) {
        field.u.values()[i] = -velocity[2 * i];
        field.v.values()[i] = -velocity[2 * i + 1];
    }
    return field;
}

inline void requireFlowLevels(int32_t levels)
{
    require(levels >= 1, "levels", "must be positive");
}

inline void requireFlowGaussian(double sigma, int32_t length, const char *sigmaName, const char *lengthName)
{
    require(std::isfinite(sigma) && sigma > 0, sigmaName, "must be positive");
    require(length >= 3 && length % 2 == 1, lengthName, "must be odd and at least 3");
}

// g(t) = exp(-t^2 / (2 sigma^2)) at t = -h .. h, h = length / 2.
inline std::vector<double> flowGaussianSamples(double sigma, int32_t length)
{
    std::vector<double> samples(static_cast<size_t>(length));
    const int32_t half = length / 2;
    for (int32_t k = 0; k < length; ++k) {
        const double t = k - half;
        samples[static_cast<size_t>(k)] = std::exp(-t * t / (2 * sigma * sigma));
    }
    return samples;
}

} // namespace detail

// ---------------------------------------------------------------------------
// Block matching

enum class BlockSearch { full, threeStep };
enum class BlockCost { absoluteDifference, squaredDifference };

struct BlockMatchingOptions {
    struct Extent {
        int32_t rows = 0;
        int32_t cols = 0;
    };
    Extent blockSize{8, 8};
    // Rows and columns that neighbouring blocks share; below the block size.
    Extent overlap{0, 0};
    // Largest displacement searched in each direction.
    Extent maxDisplacement{7, 7};
    // full tries every displacement; threeStep a shrinking 3x3 pattern.
    BlockSearch search = BlockSearch::full;
    BlockCost cost = BlockCost::absoluteDifference;
};

namespace detail {

template <FlowElement T>
Image<MotionVector<T>> blockMatching(ImageView<const T> frame1, ImageView<const T> frame2,
                                     const BlockMatchingOptions &options)
{
    requireFlowFramePair(frame1, frame2);
    const BlockMatchingOptions::Extent block = options.blockSize, overlap = options.overlap,
                                       displacement = options.maxDisplacement;
    require(block.rows > 0 && block.cols > 0, "blockSize", "must be positive");
    require(overlap.rows >= 0 && overlap.cols >= 0, "overlap", "must not be negative");
    require(overlap.rows < block.rows && overlap.cols < block.cols, "overlap", "must be smaller than the block size");
    require(displacement.rows >= 0 && displacement.cols >= 0, "maxDisplacement", "must not be negative");
    require(options.search == BlockSearch::full || options.search == BlockSearch::threeStep, "search",
            "must be full or threeStep");
    require(options.cost == BlockCost::absoluteDifference || options.cost == BlockCost::squaredDifference, "cost",
            "must be absoluteDifference or squaredDifference");
    const int32_t rows = frame1.rows, cols = frame1.cols;
    require(rows >= block.rows && cols >= block.cols, "frames", "must hold at least one block");

    // The first frame sits half the overlap in; the last block reaches a
    // whole overlap past the frame.
    const int64_t padded1Rows = int64_t{rows} + overlap.rows, padded1Cols = int64_t{cols} + overlap.cols;
    // The second frame sits a whole search margin in, on every side.
    const int64_t padded2Rows = rows + 2 * (int64_t{displacement.rows} + overlap.rows / 2);
    const int64_t padded2Cols = cols + 2 * (int64_t{displacement.cols} + overlap.cols / 2);
    require(padded1Rows <= largestFlowSize && padded1Cols <= largestFlowSize && padded2Rows <= largestFlowSize &&
                padded2Cols <= largestFlowSize,
            "maxDisplacement", "too large for the frame size");

    const int32_t stepRows = block.rows - overlap.rows, stepCols = block.cols - overlap.cols;
    Image<MotionVector<T>> motion(rows / stepRows, cols / stepCols);
    std::vector<T> padded1(static_cast<size_t>(padded1Rows * padded1Cols));
    // With an odd overlap the last search regions reach one row and one
    // column past the second working frame: the spare zeros keep that read
    // inside memory.
    std::vector<T> padded2(static_cast<size_t>(padded2Rows * (padded2Cols + 1) + 1));
    std::vector<T> vectors(2 * motion.values().size());

    const bool full = options.search == BlockSearch::full;
    const bool absolute = options.cost == BlockCost::absoluteDifference;
    using K = Kernels<T>;
    const auto driver = full ? (absolute ? K::blockMatchingFullMad : K::blockMatchingFullMse)
                             : (absolute ? K::blockMatchingThreeStepMad : K::blockMatchingThreeStepMse);
    const int32_t blockSize[2] = {block.rows, block.cols};
    const int32_t overlapSize[2] = {overlap.rows, overlap.cols};
    const int32_t maxDisplacement[2] = {displacement.rows, displacement.cols};
    driver(frame1.data, frame2.data, padded1.data(), padded2.data(), vectors.data(), blockSize, overlapSize,
           maxDisplacement, rows, cols, static_cast<int32_t>(padded1Rows), static_cast<int32_t>(padded1Cols),
           static_cast<int32_t>(padded2Rows), static_cast<int32_t>(padded2Cols));
    for (size_t k = 0; k < motion.values().size(); ++k) {
        motion.values()[k] = {vectors[2 * k], vectors[2 * k + 1]};
    }
    return motion;
}

} // namespace detail

// Motion of each block of frame1 into frame2: where its content went, u
// across columns and v down rows, in whole pixels. Blocks step by blockSize -
// overlap from the top-left corner; the result has one element per block
// (rows / step down, cols / step across), blocks that do not fit whole at
// the bottom and right are left out.
//
//   ornex::BlockMatchingOptions options;
//   options.blockSize = {16, 16};
//   options.search = ornex::BlockSearch::threeStep;
//   auto motion = ornex::blockMatching(previous, current, options);  // motion(0, 0).u
inline Image<MotionVector<float>> blockMatching(ImageView<const float> frame1, ImageView<const float> frame2,
                                                const BlockMatchingOptions &options = {})
{
    return detail::blockMatching(frame1, frame2, options);
}

inline Image<MotionVector<double>> blockMatching(ImageView<const double> frame1, ImageView<const double> frame2,
                                                 const BlockMatchingOptions &options = {})
{
    return detail::blockMatching(frame1, frame2, options);
}

// ---------------------------------------------------------------------------
// Horn-Schunck optical flow

struct HornSchunckOptions {
    // Added to Ix^2 + Iy^2 in every update; larger values give smoother
    // fields. Must be positive.
    double smoothness = 1.0;
    // Stop after this many sweeps, and/or once no velocity changes by
    // `threshold` or more in a sweep. At least one of the two must be set.
    std::optional<int32_t> maxIterations = 10;
    std::optional<double> threshold;
    // Coarse to fine over this many pyramid levels (each half the size of
    // the one below, none under 8 pixels on a side), the sweeps above run
    // on each; 1 works on the frames alone. Motions of more than a pixel or
    // two need several.
    int32_t levels = 1;
};

namespace detail {

template <FlowElement T>
VelocityField<T> hornSchunckOneLevel(ImageView<const T> frame1, ImageView<const T> frame2,
                                     const HornSchunckOptions &options)
{
    requireFlowFramePair(frame1, frame2);
    require(options.maxIterations.has_value() || options.threshold.has_value(), "options",
            "needs an iteration limit or a threshold");
    const T smoothness = static_cast<T>(options.smoothness);
    // A zero smoothness divides by zero wherever the first frame is flat.
    require(std::isfinite(smoothness) && smoothness > 0, "smoothness", "must be positive");
    require(!options.maxIterations || *options.maxIterations > 0, "maxIterations", "must be positive");
    const T threshold = static_cast<T>(options.threshold.value_or(0));
    require(!options.threshold || threshold > 0, "threshold", "must be positive");

    const int32_t rows = frame1.rows, cols = frame1.cols;
    const size_t pixels = frame1.size();
    std::vector<T> velocity(2 * pixels);
    std::vector<T> colSmooth(2 * static_cast<size_t>(rows)), rowSmooth(2 * static_cast<size_t>(cols));
    std::vector<T> products(6 * pixels);
    std::vector<T> columns(4 * static_cast<size_t>(rows));
    const int32_t maxIterations = options.maxIterations.value_or(0);
    T *product = products.data();
    T *column = columns.data();
    Kernels<T>::hornSchunck(
        frame1.data, frame2.data, velocity.data(), colSmooth.data(), colSmooth.data() + rows, rowSmooth.data(),
        rowSmooth.data() + cols, product, product + pixels, product + 2 * pixels, product + 3 * pixels,
        product + 4 * pixels, product + 5 * pixels, column, column + rows, column + 2 * rows, column + 3 * rows,
        &smoothness, options.maxIterations.has_value(), options.threshold.has_value(), &maxIterations, &threshold,
        rows, cols);
    return splitVelocity(velocity, rows, cols);
}

template <FlowElement T>
VelocityField<T> hornSchunck(ImageView<const T> frame1, ImageView<const T> frame2, const HornSchunckOptions &options)
{
    requireFlowFramePair(frame1, frame2);
    requireFlowLevels(options.levels);
    return coarseToFine(frame1, frame2, options.levels, [&](ImageView<const T> first, ImageView<const T> second) {
        return hornSchunckOneLevel(first, second, options);
    });
}

} // namespace detail

// Dense flow from frame1 to frame2 by Horn-Schunck sweeps starting from zero
// velocity, in pixels: u across columns, v down rows, positive where the
// content moved right or down.
//
//   ornex::HornSchunckOptions options;
//   options.maxIterations = 50;
//   options.threshold = 1e-3;
//   options.levels = 4;
//   auto flow = ornex::hornSchunck(previous, current, options);  // flow.u, flow.v
inline VelocityField<float> hornSchunck(ImageView<const float> frame1, ImageView<const float> frame2,
                                        const HornSchunckOptions &options = {})
{
    return detail::hornSchunck(frame1, frame2, options);
}

inline VelocityField<double> hornSchunck(ImageView<const double> frame1, ImageView<const double> frame2,
                                         const HornSchunckOptions &options = {})
{
    return detail::hornSchunck(frame1, frame2, options);
}

// ---------------------------------------------------------------------------
// Lucas-Kanade optical flow, fixed filters

struct LucasKanadeOptions {
    // Both eigenvalues of a pixel's weighted gradient matrix at or above it:
    // the full velocity; only the larger: the flow along the dominant
    // gradient; neither: zero. Must be positive (zero would let flat regions
    // divide by zero).
    double threshold = 0.0039;
    // Coarse to fine over this many pyramid levels, as for Horn-Schunck.
    int32_t levels = 1;
};

namespace detail {

template <FlowElement T>
VelocityField<T> lucasKanadeOneLevel(ImageView<const T> frame1, ImageView<const T> frame2,
                                     const LucasKanadeOptions &options)
{
    requireFlowFramePair(frame1, frame2);
    const T threshold = static_cast<T>(options.threshold);
    require(threshold > 0, "threshold", "must be positive");

    const size_t pixels = frame1.size();
    std::vector<T> velocity(2 * pixels), sums(5 * pixels);
    T *sum = sums.data();
    Kernels<T>::lucasKanade(frame1.data, frame2.data, velocity.data(), sum, sum + pixels, sum + 2 * pixels,
                            sum + 3 * pixels, sum + 4 * pixels, &threshold, frame1.rows, frame1.cols);
    return splitVelocity(velocity, frame1.rows, frame1.cols);
}

template <FlowElement T>
VelocityField<T> lucasKanade(ImageView<const T> frame1, ImageView<const T> frame2, const LucasKanadeOptions &options)
{
    requireFlowFramePair(frame1, frame2);
    requireFlowLevels(options.levels);
    return coarseToFine(frame1, frame2, options.levels, [&](ImageView<const T> first, ImageView<const T> second) {
        return lucasKanadeOneLevel(first, second, options);
    });
}

} // namespace detail

// Dense flow from frame1 to frame2 by Lucas-Kanade over 5x5 binomially
// weighted neighbourhoods, with five-point derivatives; in pixels, positive
// where the content moved right (u) or down (v).
//
//   ornex::LucasKanadeOptions options;
//   options.threshold = 0.01;
//   auto flow = ornex::lucasKanade(previous, current, options);  // flow.u, flow.v
inline VelocityField<float> lucasKanade(ImageView<const float> frame1, ImageView<const float> frame2,
                                        const LucasKanadeOptions &options = {})
{
    return detail::lucasKanade(frame1, frame2, options);
}

inline VelocityField<double> lucasKanade(ImageView<const double> frame1, ImageView<const double> frame2,
                                         const LucasKanadeOptions &options = {})
{
    return detail::lucasKanade(frame1, frame2, options);
}

// ---------------------------------------------------------------------------
// Lucas-Kanade optical flow, Gaussian-derivative filters

// A sampled Gaussian exp(-t^2 / (2 sigma^2)), t = -length/2 .. length/2,
// scaled to sum to 1. `length` must be odd and at least 3.
//
//   auto window = ornex::lucasKanadeSmoothingTaps(1.5, 5);
inline std::vector<double> lucasKanadeSmoothingTaps(double sigma, int32_t length)
{
    detail::requireFlowGaussian(sigma, length, "sigma", "length");
    std::vector<double> taps = detail::flowGaussianSamples(sigma, length);
    double total = 0;
    for (double tap : taps) {
        total += tap;
    }
    for (double &tap : taps) {
        tap /= total;
    }
    return taps;
}

// The matching derivative taps -t g(t), scaled so that sum t * tap = -1.
// Across columns and down rows this is previous minus next, like the fixed
// filters (a unit ramp gives -1); in time the last frame meets the first tap,
// so a frame sequence rising by 1 per frame gives +1.
//
//   auto derivative = ornex::lucasKanadeDerivativeTaps(1.0, 5);
inline std::vector<double> lucasKanadeDerivativeTaps(double sigma, int32_t length)
{
    detail::requireFlowGaussian(sigma, length, "sigma", "length");
    std::vector<double> taps = detail::flowGaussianSamples(sigma, length);
    const int32_t half = length / 2;
    double moment = 0;
    for (int32_t k = 0; k < length; ++k) {
        const double t = k - half;
        moment += t * t * taps[static_cast<size_t>(k)];
    }
    for (int32_t k = 0; k < length; ++k) {
        const double t = k - half;
        taps[static_cast<size_t>(k)] = -t * taps[static_cast<size_t>(k)] / moment;
    }
    return taps;
}

// The caller's own filter taps, applied without reversal across columns and
// down rows; in time the last frame meets the first tap. The result is
// turned round as for the Gaussian filters, so taps that differentiate the
// same way (previous minus next in space, a rising sequence positive in
// time) give the content's direction.
struct LucasKanadeFilters {
    std::vector<double> temporalDerivative, temporalSmoothing;
    std::vector<double> spatialDerivative, spatialSmoothing;
    // Neighbourhood weights, across columns and down rows.
    std::vector<double> window;
};

struct LucasKanadeGderOptions {
    // Both eigenvalues at or above it with a positive determinant: the full
    // velocity; otherwise zero, or with normalFlow the flow along the
    // eigenvector of the larger eigenvalue if that passes.
    double threshold = 0.0039;
    bool normalFlow = false;
    // Filters built from sampled Gaussians (lengths odd, at least 3); the
    // temporal filters need temporalLength frames.
    double temporalSigma = 1.0;
    int32_t temporalLength = 3;
    double spatialSigma = 1.0;
    int32_t spatialLength = 5;
    double windowSigma = 1.5;
    int32_t windowLength = 5;
    // When given, used instead of the Gaussian filters above.
    std::optional<LucasKanadeFilters> filters;
};

namespace detail {

inline void requireFlowTaps(const std::vector<double> &taps, const char *argument)
{
    require(!taps.empty(), argument, "must not be empty");
    require(static_cast<int64_t>(taps.size()) <= largestFlowSize, argument, "too long");
}

template <FlowElement T>
std::vector<T> flowTaps(const std::vector<double> &taps)
{
    return std::vector<T>(taps.begin(), taps.end());
}

template <FlowElement T>
VelocityField<T> lucasKanadeGder(const std::vector<ImageView<const T>> &frames, const LucasKanadeGderOptions &options)
{
    LucasKanadeFilters filters;
    if (options.filters) {
        filters = *options.filters;
        requireFlowTaps(filters.temporalDerivative, "filters.temporalDerivative");
        requireFlowTaps(filters.temporalSmoothing, "filters.temporalSmoothing");
        requireFlowTaps(filters.spatialDerivative, "filters.spatialDerivative");
        requireFlowTaps(filters.spatialSmoothing, "filters.spatialSmoothing");
        requireFlowTaps(filters.window, "filters.window");
    } else {
        requireFlowGaussian(options.temporalSigma, options.temporalLength, "temporalSigma", "temporalLength");
        requireFlowGaussian(options.spatialSigma, options.spatialLength, "spatialSigma", "spatialLength");
        requireFlowGaussian(options.windowSigma, options.windowLength, "windowSigma", "windowLength");
        filters = {lucasKanadeDerivativeTaps(options.temporalSigma, options.temporalLength),
                   lucasKanadeSmoothingTaps(options.temporalSigma, options.temporalLength),
                   lucasKanadeDerivativeTaps(options.spatialSigma, options.spatialLength),
                   lucasKanadeSmoothingTaps(options.spatialSigma, options.spatialLength),
                   lucasKanadeSmoothingTaps(options.windowSigma, options.windowLength)};
    }
    // Both temporal filters are centred on the same frame, so the longer one
    // decides how many frames are read.
    const size_t framesRead = std::max(filters.temporalDerivative.size(), filters.temporalSmoothing.size());
    require(frames.size() >= framesRead, "frames", "too few for the temporal filters");
    std::vector<const T *> framePointers;
    for (const ImageView<const T> &frame : frames) {
        requireFlowFrame(frame, "frames");
        require(frame.sameShape(frames[0]), "frames", "must have the same size");
        framePointers.push_back(frame.data);
    }
    const T threshold = static_cast<T>(options.threshold);
    require(!std::isnan(threshold), "threshold", "must be a number");

    const std::vector<T> temporalDerivative = flowTaps<T>(filters.temporalDerivative);
    const std::vector<T> temporalSmoothing = flowTaps<T>(filters.temporalSmoothing);
    const std::vector<T> spatialDerivative = flowTaps<T>(filters.spatialDerivative);
    const std::vector<T> spatialSmoothing = flowTaps<T>(filters.spatialSmoothing);
    const std::vector<T> window = flowTaps<T>(filters.window);
    const int32_t rows = frames[0].rows, cols = frames[0].cols;
    const size_t pixels = frames[0].size();
    std::vector<T> velocity(2 * pixels), sums(5 * pixels);
    T *sum = sums.data();
    Kernels<T>::lucasKanadeGder(
        framePointers.data(), velocity.data(), sum, sum + pixels, sum + 2 * pixels, sum + 3 * pixels,
        sum + 4 * pixels, &threshold, temporalDerivative.data(), spatialDerivative.data(), temporalSmoothing.data(),
        spatialSmoothing.data(), window.data(), rows, cols, static_cast<int32_t>(temporalDerivative.size()),
        static_cast<int32_t>(spatialDerivative.size()), static_cast<int32_t>(temporalSmoothing.size()),
        static_cast<int32_t>(spatialSmoothing.size()), static_cast<int32_t>(window.size()), options.normalFlow);
    return splitVelocity(velocity, rows, cols);
}

} // namespace detail

// Dense flow at the middle of a short frame sequence (oldest first) by
// Lucas-Kanade with Gaussian-derivative filters, in pixels per frame,
// positive where the content moves right (u) or down (v). The first
// max(temporal filter lengths) frames are used. Pixels in the first
// windowLength / 2 rows or columns get zero.
//
//   ornex::LucasKanadeGderOptions options;
//   options.normalFlow = true;
//   auto flow = ornex::lucasKanadeGder({frame0, frame1, frame2}, options);  // flow.u, flow.v
inline VelocityField<float> lucasKanadeGder(const std::vector<ImageView<const float>> &frames,
                                            const LucasKanadeGderOptions &options = {})
{
    return detail::lucasKanadeGder(frames, options);
}

inline VelocityField<double> lucasKanadeGder(const std::vector<ImageView<const double>> &frames,
                                             const LucasKanadeGderOptions &options = {})
{
    return detail::lucasKanadeGder(frames, options);
}

} // namespace ornex
