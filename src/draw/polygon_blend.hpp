#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/blending.hpp"
#include "frame/image_planes.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {

// The opacity argument: the floating members take their own type, the
// integer and logical members a Q10 signed 16-bit value.
template <class T>
using OpacityOf = std::conditional_t<std::is_floating_point_v<T>, T, int16_t>;

template <class T>
void blendRunOfPlane(T *run, int32_t count, T fill, OpacityOf<T> opacity)
{
    if constexpr (std::is_floating_point_v<T>) {
        const FloatingOpacityBlend<T, double> blend(fill, double(opacity));
        for (int32_t i = 0; i < count; ++i) {
            run[i] = blend(run[i]);
        }
    } else {
        const Q10OpacityBlend<T> blend(fill, opacity);
        if (blend.replaces()) {
            std::fill_n(run, count, blend.replacement());
            return;
        }
        for (int32_t i = 0; i < count; ++i) {
            run[i] = blend(run[i]);
        }
    }
}

// One pixel of blendRunOfPlane. Keeping nothing of the old value gives the
// same value as the replacement there, so no test is needed.
template <class T>
inline void blendPixel(T *pixel, T fill, OpacityOf<T> opacity)
{
    if constexpr (std::is_floating_point_v<T>) {
        *pixel = FloatingOpacityBlend<T, double>(fill, double(opacity))(*pixel);
    } else {
        *pixel = Q10OpacityBlend<T>(fill, opacity)(*pixel);
    }
}

// Blends the fill value of each plane into rows firstRow .. lastRow of one
// column, the first of them at element startIndex.
template <class T, class Planes>
void blendRun(const Planes &planes, const T *fillValue, int32_t startIndex, OpacityOf<T> opacity, int32_t firstRow,
              int32_t lastRow)
{
    const int32_t count = wrapAdd(wrapSub(lastRow, firstRow), 1);
    if (count <= 0) {
        return;
    }
    for (int32_t p = 0; p < planes.count(); ++p) {
        blendRunOfPlane(planes.plane(p) + startIndex, count, fillValue[p], opacity);
    }
}

} // namespace ornex::draw
