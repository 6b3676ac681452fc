#pragma once

#include <cstdint>

namespace ornex::detection {

// Gradient magnitude kept only where it beats both interpolated neighbours
// along the gradient (strictly); the outermost rows and columns keep their
// magnitude unsuppressed. Then everything is divided by the largest value,
// or by the machine epsilon when that is 0. Runs at the process's SIMD
// level; every level gives the same bits.
template <class T>
void nonMaximumSuppression(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols);

// One build of the suppression per instruction set, each in its own
// namespace so that the builds never meet at link time. `packed` false
// gives the plain one-pixel-at-a-time loops.
namespace baseline {
template <class T>
void suppress(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols, bool packed);
}
namespace avx2 {
template <class T>
void suppress(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols, bool packed);
}

} // namespace ornex::detection
