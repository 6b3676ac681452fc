#include "ornex_rt.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "detection/canny_stages.hpp"
#include "detection/hysteresis.hpp"

namespace ornex::detection {
namespace {

// Rows 0..B-1 and M-B..M-1, columns 0..B-1 and N-B-1..N-1: the right-hand
// band is one column wider than the left, even with B = 0, on purpose.
inline void clearBorder(uint8_t *edges, int32_t numRows, int32_t numCols, int32_t border)
{
    const int32_t topRows = std::min(border, numRows);
    const int32_t bottomFirst = std::max(numRows - border, topRows);
    for (int32_t c = 0; c < numCols; ++c) {
        uint8_t *column = edges + static_cast<ptrdiff_t>(c) * numRows;
        if (c < border || c >= numCols - border - 1) {
            std::memset(column, 0, static_cast<size_t>(numRows));
        } else {
            std::memset(column, 0, static_cast<size_t>(topRows));
            std::memset(column + bottomFirst, 0, static_cast<size_t>(numRows - bottomFirst));
        }
    }
}

template <class T>
struct CannyBuffers {
    T *workA, *workB;
    uint8_t *edges;
    T *magnitude; // work buffer C
};

template <class T, class ChooseThresholds>
void canny(const T *image, const T *smoothing, const T *derivative, const CannyBuffers<T> &buffers,
           int32_t numRows, int32_t numCols, int32_t length, const ChooseThresholds &chooseThresholds)
{
    // An image without pixels has no edge map to clear or trace.
    if (numRows < 1 || numCols < 1) {
        return;
    }
    const size_t bytes = static_cast<size_t>(numRows) * numCols * sizeof(T);
    T *a = buffers.workA, *b = buffers.workB, *c = buffers.magnitude;
    smoothAcrossColumns(image, smoothing, a, numRows, numCols, length);
    smoothDownRows(image, smoothing, b, numRows, numCols, length);
    // Each direction is differentiated from the image smoothed along that
    // same direction only; the cross-direction smoothing is left out.
    differentiateAcrossColumns(a, derivative, c, numRows, numCols, length);
    std::memcpy(a, c, bytes);
    differentiateDownRows(b, derivative, c, numRows, numCols, length);
    std::memcpy(b, c, bytes);
    nonMaximumSuppression(a, b, c, numRows, numCols);
    const int32_t border = length / 2;
    const Thresholds<T> thresholds = chooseThresholds(c, border);
    const ptrdiff_t pixels = static_cast<ptrdiff_t>(numRows) * numCols;
    int16_t *stackA = reinterpret_cast<int16_t *>(a), *stackB = reinterpret_cast<int16_t *>(b);
    Hysteresis<T>(c, buffers.edges, {stackA, stackB, stackA + pixels, stackB + pixels}, thresholds, numRows,
                  numCols)
        .run();
    clearBorder(buffers.edges, numRows, numCols, border);
}

template <class T>
void cannyUserThresholds(const T *image, const T *smoothing, const T *derivative, T *workA, T *workB,
                         uint8_t *edges, T *magnitude, const T *thresholds, int32_t numRows, int32_t numCols,
                         int32_t length)
{
    canny(image, smoothing, derivative, CannyBuffers<T>{workA, workB, edges, magnitude}, numRows, numCols, length,
          [thresholds](const T *, int32_t) { return Thresholds<T>{thresholds[0], thresholds[1]}; });
}

template <class T>
void cannyAutomaticThresholds(const T *image, const T *smoothing, const T *derivative, T *workA, T *workB,
                              uint8_t *edges, T *magnitude, const T *percentage, int32_t numRows, int32_t numCols,
                              int32_t length)
{
    canny(image, smoothing, derivative, CannyBuffers<T>{workA, workB, edges, magnitude}, numRows, numCols, length,
          [&](const T *normalised, int32_t border) {
              return automaticThresholds(normalised, *percentage, numRows, numCols, border);
          });
}

} // namespace
} // namespace ornex::detection

using ornex::detection::cannyAutomaticThresholds;
using ornex::detection::cannyUserThresholds;

#define ORNEX_CANNY_ARGS(T) const T *image, const T *smoothing, const T *derivative, T *workA, T *workB, uint8_t *edges, T *magnitude, const T *thresholds, int32_t numRows, int32_t numCols, int32_t length
#define ORNEX_CANNY_PASS image, smoothing, derivative, workA, workB, edges, magnitude, thresholds, numRows, numCols, length

extern "C" {
void ORNEX_EdgeCanny_userTh_D(ORNEX_CANNY_ARGS(double)) { cannyUserThresholds(ORNEX_CANNY_PASS); }
void ORNEX_EdgeCanny_userTh_R(ORNEX_CANNY_ARGS(float)) { cannyUserThresholds(ORNEX_CANNY_PASS); }
void ORNEX_EdgeCanny_autoTh_D(ORNEX_CANNY_ARGS(double)) { cannyAutomaticThresholds(ORNEX_CANNY_PASS); }
void ORNEX_EdgeCanny_autoTh_R(ORNEX_CANNY_ARGS(float)) { cannyAutomaticThresholds(ORNEX_CANNY_PASS); }
}
