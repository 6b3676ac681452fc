#pragma once

#include <cstddef>
#include <cstdint>

namespace ornex::detection {

// Gradient magnitude kept only where it beats both interpolated neighbours
// along the gradient (strictly); the outermost rows and columns keep their
// magnitude unsuppressed. Then everything is divided by the largest value,
// or by the machine epsilon when that is 0. Runs at the process's SIMD
// level; every level gives the same bits.
template <class T>
void nonMaximumSuppression(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols);

// The drivers' first half in one walk: Gx and Gy into gradX and gradY, the
// suppressed magnitude, not yet normalised, into `out`; returns its largest
// value (from 0). For kernels of length 1 .. maxFusedLength.
template <class T>
T gradientsAndSuppression(const T *image, const T *smoothing, const T *derivative, T *gradX, T *gradY, T *out,
                          int32_t numRows, int32_t numCols, int32_t length);
constexpr int32_t maxFusedLength = 8;

// magnitude /= divisor, and the threshold bits of each result into `map`
// (see classify in hysteresis.hpp), for `count` values.
template <class T>
void normaliseAndClassify(T *magnitude, T divisor, uint8_t *map, ptrdiff_t count, T low, T high);
// The stack block that holds that walk's columns; its strips of rows are as
// tall as the block allows.
constexpr size_t fusedBlockBytes = 160 * 1024;

// One build of the suppression per instruction set, each in its own
// namespace so that the builds never meet at link time. `packed` false
// gives the plain one-pixel-at-a-time loops.
namespace baseline {
template <class T>
void normaliseAndClassify(T *magnitude, T divisor, uint8_t *map, ptrdiff_t count, T low, T high);
template <class T>
void suppress(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols, bool packed);
template <class T>
T gradientsAndSuppression(const T *image, const T *smoothing, const T *derivative, T *gradX, T *gradY, T *out,
                          int32_t numRows, int32_t numCols, int32_t length, bool packed);
}
namespace avx2 {
template <class T>
void normaliseAndClassify(T *magnitude, T divisor, uint8_t *map, ptrdiff_t count, T low, T high);
template <class T>
void suppress(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols, bool packed);
template <class T>
T gradientsAndSuppression(const T *image, const T *smoothing, const T *derivative, T *gradX, T *gradY, T *out,
                          int32_t numRows, int32_t numCols, int32_t length, bool packed);
}

} // namespace ornex::detection
