#include "ornex_rt.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "frame/rounding.hpp"
#include "geometry/cubic_weights.hpp"

namespace ornex::geometry {
namespace {

// Offsets beyond this many positions shift a line wholly out of view; they
// are clamped so that the position arithmetic stays in range.
constexpr double farOffset = 1e15;

template <class T>
int64_t wholePositions(T value)
{
    const double clamped = std::clamp(static_cast<double>(value), -farOffset, farOffset);
    return static_cast<int64_t>(clamped);
}

// The output line: positions k = 0 .. length-1, of which those from
// firstWritten on are stored, the destination advancing only when a value is
// stored.
template <class T>
struct OutputLine {
    T *destination;
    ptrdiff_t stride;
    int64_t length;
    int64_t firstWritten;

    void put(int64_t k, T value)
    {
        if (k >= firstWritten) {
            *destination = value;
            destination += stride;
        }
    }
};

template <class T>
struct SourceLine {
    const T *values;
    int64_t length;
    ptrdiff_t stride;

    T operator[](int64_t j) const { return values[j * stride]; }
};

// Output k shows source position k - shift, the background elsewhere.
template <class T>
void copyShifted(const SourceLine<T> &source, int64_t shift, OutputLine<T> &out, T background)
{
    for (int64_t k = 0; k < out.length; ++k) {
        const bool inside = k >= shift && k < shift + source.length;
        out.put(k, inside ? source[k - shift] : background);
    }
}

// Nearest neighbour: the offset rounded, halves upward.
template <class T>
void skewNearest(const SourceLine<T> &source, T offset, OutputLine<T> out, T background)
{
    copyShifted(source, wholePositions(nearestHalfUp(offset)), out, background);
}

// Linear: the line behaves as if surrounded by the background, so exactly
// one blended value lies at each end of a fractionally shifted line.
template <class T>
void skewLinear(const SourceLine<T> &source, T offset, OutputLine<T> out, T background)
{
    const int64_t whole = wholePositions(offset);
    const T fraction = std::fabs(offset - T(whole));
    // An empty line has no end value to blend: the background throughout.
    if (fraction == T(0) || source.length < 1) {
        copyShifted(source, whole, out, background);
        return;
    }
    int64_t k = 0;
    if (offset > T(0)) {
        for (; k < std::min(whole, out.length); ++k) {
            out.put(k, background);
        }
        if (k < out.length) {
            out.put(k, (T(1) - fraction) * source[0] + fraction * background);
            ++k;
        }
        for (; k < std::min(whole + source.length, out.length); ++k) {
            out.put(k, fraction * source[k - whole - 1] + (T(1) - fraction) * source[k - whole]);
        }
        if (k < out.length && k == whole + source.length) {
            out.put(k, fraction * source[source.length - 1] + (T(1) - fraction) * background);
            ++k;
        }
    } else {
        const int64_t lastPosition = whole + source.length - 1; // shows the last source value
        for (; k < std::min(lastPosition, out.length); ++k) {
            out.put(k, (T(1) - fraction) * source[k - whole] + fraction * source[k - whole + 1]);
        }
        if (k < out.length && k == lastPosition) {
            out.put(k, (T(1) - fraction) * source[source.length - 1] + fraction * background);
            ++k;
        }
    }
    for (; k < out.length; ++k) {
        out.put(k, background);
    }
}

// Cubic convolution (a = -1): each output blends four consecutive source
// positions, a tap outside the line taking the background; where all four
// lie outside, the output is the background itself.
template <class T>
void skewCubic(const SourceLine<T> &source, T offset, OutputLine<T> out, T background)
{
    const int64_t whole = wholePositions(offset);
    const T a = offset > T(0) ? T(1) - (offset - T(whole)) : T(whole) - offset;
    // Output k starts its stencil at source position k + firstTap.
    const int64_t firstTap = offset > T(0) ? -whole - 2 : -whole - 1;
    const T w0 = farWeight(T(1) + a), w1 = nearWeight(a), w2 = nearWeight(T(1) - a), w3 = farWeight(T(2) - a);
    auto tap = [&](int64_t j) { return j >= 0 && j < source.length ? source[j] : background; };
    for (int64_t k = 0; k < out.length; ++k) {
        const int64_t j = k + firstTap;
        if (j + 3 < 0 || j >= source.length) {
            out.put(k, background);
        } else {
            out.put(k, w0 * tap(j) + w1 * tap(j + 1) + w2 * tap(j + 2) + w3 * tap(j + 3));
        }
    }
}

template <class T, void (*skew)(const SourceLine<T> &, T, OutputLine<T>, T)>
void skewLine(const T *source, int32_t sourceLength, int32_t outputLength, T offset, uint32_t sourceStride,
              uint32_t destinationStride, T *destination, int32_t firstWritten, const T *background)
{
    skew({source, sourceLength, static_cast<ptrdiff_t>(sourceStride)}, offset,
         {destination, static_cast<ptrdiff_t>(destinationStride), outputLength, firstWritten}, *background);
}

} // namespace
} // namespace ornex::geometry

using ornex::geometry::skewLine;
namespace geometry = ornex::geometry;

#define ORNEX_SKEW_ARGS(T) const T *source, int32_t sourceLength, int32_t outputLength, T offset, uint32_t sourceStride, uint32_t destinationStride, T *destination, int32_t firstWritten, const T *background
#define ORNEX_SKEW_PASS source, sourceLength, outputLength, offset, sourceStride, destinationStride, destination, firstWritten, background

extern "C" {
void ORNEX_Skew_NNI_D(ORNEX_SKEW_ARGS(double)) { skewLine<double, geometry::skewNearest<double>>(ORNEX_SKEW_PASS); }
void ORNEX_Skew_NNI_R(ORNEX_SKEW_ARGS(float)) { skewLine<float, geometry::skewNearest<float>>(ORNEX_SKEW_PASS); }
void ORNEX_Skew_BLI_D(ORNEX_SKEW_ARGS(double)) { skewLine<double, geometry::skewLinear<double>>(ORNEX_SKEW_PASS); }
void ORNEX_Skew_BLI_R(ORNEX_SKEW_ARGS(float)) { skewLine<float, geometry::skewLinear<float>>(ORNEX_SKEW_PASS); }
void ORNEX_Skew_BCI_D(ORNEX_SKEW_ARGS(double)) { skewLine<double, geometry::skewCubic<double>>(ORNEX_SKEW_PASS); }
void ORNEX_Skew_BCI_R(ORNEX_SKEW_ARGS(float)) { skewLine<float, geometry::skewCubic<float>>(ORNEX_SKEW_PASS); }
}
