#include "ornex_rt.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "detection/canny_stages.hpp"
#include "detection/hysteresis.hpp"
#include "frame/element_traits.hpp"

namespace ornex::detection {
namespace {

// `thresholds`: (low, high) on the 0..1 scale, or with `automatic` the
// share of pixels, in per cent, that are to count as non-edge.
template <bool automatic, class T>
void canny(const T *image, const T *smoothing, const T *derivative, T *a, T *b, uint8_t *edges, T *c,
           const T *thresholds, int32_t numRows, int32_t numCols, int32_t length)
{
    // An image without pixels has no edge map to clear or trace.
    if (numRows < 1 || numCols < 1) {
        return;
    }
    const ptrdiff_t pixels = static_cast<ptrdiff_t>(numRows) * numCols;
    const int32_t border = length / 2;
    if (length >= 1 && length <= maxFusedLength) {
        // Gx into A, Gy into B, the suppressed magnitude into C, in one walk;
        // the normalisation is left for the pass that classifies.
        const T largest = gradientsAndSuppression(image, smoothing, derivative, a, b, c, numRows, numCols, length);
        const T divisor = largest == T(0) ? ElementTraits<T>::epsilon : largest;
        if constexpr (automatic) {
            for (ptrdiff_t i = 0; i < pixels; ++i) {
                c[i] = c[i] / divisor;
            }
        } else {
            normaliseAndClassify(c, divisor, edges, pixels, thresholds[0], thresholds[1]);
        }
    } else {
        const size_t bytes = static_cast<size_t>(pixels) * sizeof(T);
        smoothAcrossColumns(image, smoothing, a, numRows, numCols, length);
        smoothDownRows(image, smoothing, b, numRows, numCols, length);
        // Each direction is differentiated from the image smoothed along that
        // same direction only; the cross-direction smoothing is left out.
        differentiateAcrossColumns(a, derivative, c, numRows, numCols, length);
        std::memcpy(a, c, bytes);
        differentiateDownRows(b, derivative, c, numRows, numCols, length);
        std::memcpy(b, c, bytes);
        nonMaximumSuppression(a, b, c, numRows, numCols);
        if constexpr (!automatic) {
            classify(c, edges, pixels, Thresholds<T>{thresholds[0], thresholds[1]});
        }
    }
    if constexpr (automatic) {
        classify(c, edges, pixels, automaticThresholds(c, *thresholds, numRows, numCols, border));
    }
    int16_t *stackA = reinterpret_cast<int16_t *>(a), *stackB = reinterpret_cast<int16_t *>(b);
    Hysteresis(edges, {stackA, stackB, stackA + pixels, stackB + pixels}, numRows, numCols).run();
    finishEdgeMap(edges, numRows, numCols, border);
}

} // namespace
} // namespace ornex::detection

using ornex::detection::canny;

#define ORNEX_CANNY_ARGS(T) const T *image, const T *smoothing, const T *derivative, T *workA, T *workB, uint8_t *edges, T *magnitude, const T *thresholds, int32_t numRows, int32_t numCols, int32_t length
#define ORNEX_CANNY_PASS image, smoothing, derivative, workA, workB, edges, magnitude, thresholds, numRows, numCols, length

extern "C" {
void ORNEX_EdgeCanny_userTh_D(ORNEX_CANNY_ARGS(double)) { canny<false>(ORNEX_CANNY_PASS); }
void ORNEX_EdgeCanny_userTh_R(ORNEX_CANNY_ARGS(float)) { canny<false>(ORNEX_CANNY_PASS); }
void ORNEX_EdgeCanny_autoTh_D(ORNEX_CANNY_ARGS(double)) { canny<true>(ORNEX_CANNY_PASS); }
void ORNEX_EdgeCanny_autoTh_R(ORNEX_CANNY_ARGS(float)) { canny<true>(ORNEX_CANNY_PASS); }
}
