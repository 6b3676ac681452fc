#include "ornex_rt.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace ornex::geometry {
namespace {

// Zero backgrounds are written as zero bytes (so -0.0 comes out as +0.0).
template <class T>
void fillPlane(T *plane, size_t count, T value, bool zeroAsBytes)
{
    if (zeroAsBytes && value == T(0)) {
        std::memset(plane, 0, count * sizeof(T));
    } else {
        std::fill_n(plane, count, value);
    }
}

template <class T>
void fillBackground(const T *background, T *out0, T *out1, T *out2, int32_t outRows, int32_t outCols,
                    bool threePlanes, bool oneValueForAll, int32_t numPlanes)
{
    const size_t planeSize = outRows > 0 && outCols > 0 ? size_t(outRows) * size_t(outCols) : 0;
    if (threePlanes) {
        T *planes[3] = {out0, out1, out2};
        const T values[3] = {background[0], oneValueForAll ? background[0] : background[1],
                             oneValueForAll ? background[0] : background[2]};
        const bool allZero = values[0] == T(0) && values[1] == T(0) && values[2] == T(0);
        for (int k = 0; k < 3; ++k) {
            fillPlane(planes[k], planeSize, values[k], allZero);
        }
        return;
    }
    if (numPlanes <= 0) {
        return;
    }
    if (oneValueForAll) {
        fillPlane(out0, planeSize * size_t(numPlanes), background[0], true);
        return;
    }
    for (int32_t k = 0; k < numPlanes; ++k) {
        fillPlane(out0 + planeSize * size_t(k), planeSize, background[k], false);
    }
}

} // namespace
} // namespace ornex::geometry

#define ORNEX_BACKGROUND_ARGS(T) const T *background, T *out0, T *out1, T *out2, int32_t outRows, int32_t outCols, uint8_t threePlanes, uint8_t oneValueForAll, int32_t numPlanes
#define ORNEX_BACKGROUND_PASS background, out0, out1, out2, outRows, outCols, threePlanes != 0, oneValueForAll != 0, numPlanes

extern "C" {
void ORNEX_FillBackgroundValues_D(ORNEX_BACKGROUND_ARGS(double)) { ornex::geometry::fillBackground(ORNEX_BACKGROUND_PASS); }
void ORNEX_FillBackgroundValues_R(ORNEX_BACKGROUND_ARGS(float)) { ornex::geometry::fillBackground(ORNEX_BACKGROUND_PASS); }
}
