// The suppression kernels, built once per instruction set: the including
// file defines ORNEX_SIMD_NAMESPACE (the namespace of this build) and
// ORNEX_PACK_BYTES (the width of its packs) first. No include guard, on
// purpose. Nothing here calls an out-of-line function shared with another
// build: the helpers below have internal linkage.
#include <cstddef>
#include <cstdint>

#include "detection/canny_suppression.hpp"
#include "frame/element_traits.hpp"
#include "frame/packed.hpp"

#if ORNEX_PACK_BYTES == 32 && defined(__AVX2__)
#include <immintrin.h>
#endif

namespace ornex::detection::ORNEX_SIMD_NAMESPACE {
namespace {

// mask ? ifTrue : ifFalse in every lane, masks being all ones or all zeros:
// one blend instruction in the AVX2 build, three bit operations otherwise.
template <class P>
[[gnu::always_inline]] inline P choose(typename P::Bits mask, P ifTrue, P ifFalse)
{
#if ORNEX_PACK_BYTES == 32 && defined(__AVX2__)
    if constexpr (sizeof(typename P::Bit) == 4) {
        return {(typename P::Native)_mm256_blendv_ps((__m256)ifFalse.lanes, (__m256)ifTrue.lanes, (__m256)mask)};
    } else {
        return {(typename P::Native)_mm256_blendv_pd((__m256d)ifFalse.lanes, (__m256d)ifTrue.lanes, (__m256d)mask)};
    }
#else
    return P::select(mask, ifTrue, ifFalse);
#endif
}

inline float squareRoot(float x) { return __builtin_sqrtf(x); }
inline double squareRoot(double x) { return __builtin_sqrt(x); }
inline float magnitude(float x) { return __builtin_fabsf(x); }
inline double magnitude(double x) { return __builtin_fabs(x); }

// The largest of `count` values, starting from 0; values that are not a
// number are passed over. Packed, several lanes keep their own maximum,
// which gives the same result in any order.
template <class T>
T largestValue(const T *values, ptrdiff_t count, bool packed)
{
    using P = Pack<T, ORNEX_PACK_BYTES>;
    T largest = 0;
    ptrdiff_t i = 0;
    if (packed) {
        P lanes = P::broadcast(T(0));
        for (; i + P::width <= count; i += P::width) {
            const P candidate = P::load(values + i);
            lanes = choose(candidate > lanes, candidate, lanes);
        }
        T laneValues[P::width];
        lanes.store(laneValues);
        for (T value : laneValues) {
            largest = value > largest ? value : largest;
        }
    }
    for (; i < count; ++i) {
        largest = values[i] > largest ? values[i] : largest;
    }
    return largest;
}

// Rows of a block of the suppression, with one row of margin on each side.
constexpr int32_t suppressionBlockRows = 256;

// The gradient magnitudes of rows [first, end) of one column into `out`.
template <class T>
void columnMagnitudes(const T *__restrict gradX, const T *__restrict gradY, int32_t first, int32_t end,
                      T *__restrict out)
{
    for (int32_t r = first; r < end; ++r) {
        out[r - first] = squareRoot(gradX[r] * gradX[r] + gradY[r] * gradY[r]);
    }
}

// The suppression of `count` rows of one column. The magnitude columns hold
// the rows from one above the first to one below the last. The packed loop
// runs several rows at once with every choice made by selection; the scalar
// loop (all of the column when not packed) does the same operations.
template <class T>
void suppressRows(const T *__restrict gradX, const T *__restrict gradY, const T *__restrict previous,
                  const T *__restrict current, const T *__restrict next, int32_t count, T *__restrict out,
                  bool packed)
{
    using P = Pack<T, ORNEX_PACK_BYTES>;
    int32_t i = 0;
    if (packed) {
        const P zero = P::broadcast(T(0)), one = P::broadcast(T(1));
        for (; i + P::width <= count; i += P::width) {
            const int32_t at = i + 1;
            const P gx = P::load(gradX + i), gy = P::load(gradY + i);
            const P m = P::load(current + at);
            const P up = P::load(current + at - 1), down = P::load(current + at + 1);
            const P left = P::load(previous + at), upLeft = P::load(previous + at - 1);
            const P downLeft = P::load(previous + at + 1);
            const P right = P::load(next + at), upRight = P::load(next + at - 1), downRight = P::load(next + at + 1);
            const auto sameSign = gx * gy > zero;
            const P ax = absoluteValue(gx), ay = absoluteValue(gy);
            const auto vertical = ax < ay;
            // One division: the quotient of the selected operands is the
            // selected quotient.
            const P t = choose(vertical, ax, ay) / choose(vertical, ay, ax);
            const P near1 = choose(vertical, up, right);
            const P far1 =
                choose(vertical, choose(sameSign, upLeft, upRight), choose(sameSign, downRight, upRight));
            const P far2 =
                choose(vertical, choose(sameSign, downRight, downLeft), choose(sameSign, upLeft, downLeft));
            const P near2 = choose(vertical, down, left);
            const P side1 = (one - t) * near1 + t * far1;
            const P side2 = t * far2 + (one - t) * near2;
            choose((m > side1) & (m > side2), m, zero).store(out + i);
        }
    }
    for (; i < count; ++i) {
        const int32_t at = i + 1;
        const T gx = gradX[i], gy = gradY[i];
        const T m = current[at];
        const bool sameSign = gx * gy > T(0);
        const T ax = magnitude(gx), ay = magnitude(gy);
        // Mainly vertical gradient: interpolate between the rows above and
        // below; otherwise (also when unordered) between the columns.
        T side1, side2;
        if (ax < ay) {
            const T t = ax / ay;
            side1 = (T(1) - t) * current[at - 1] + t * (sameSign ? previous[at - 1] : next[at - 1]);
            side2 = t * (sameSign ? next[at + 1] : previous[at + 1]) + (T(1) - t) * current[at + 1];
        } else {
            const T t = ay / ax;
            side1 = (T(1) - t) * next[at] + t * (sameSign ? next[at + 1] : next[at - 1]);
            side2 = t * (sameSign ? previous[at - 1] : previous[at + 1]) + (T(1) - t) * previous[at];
        }
        out[i] = m > side1 && m > side2 ? m : T(0);
    }
}

} // namespace

template <class T>
void suppress(const T *gradX, const T *gradY, T *out, int32_t numRows, int32_t numCols, bool packed)
{
    if (numRows < 1 || numCols < 1) {
        return;
    }
    const ptrdiff_t stride = numRows;
    // The outermost rows and columns: plain magnitudes.
    for (int32_t c = 0; c < numCols; ++c) {
        const ptrdiff_t base = c * stride;
        if (c == 0 || c == numCols - 1) {
            columnMagnitudes(gradX + base, gradY + base, 0, numRows, out + base);
        } else {
            columnMagnitudes(gradX + base, gradY + base, 0, 1, out + base);
            columnMagnitudes(gradX + base, gradY + base, numRows - 1, numRows, out + base + numRows - 1);
        }
    }
    // Magnitudes of three neighbouring columns, for rows first - 1 .. end.
    T magnitudes[3][suppressionBlockRows + 2];
    for (int32_t first = 1; numCols > 2 && first < numRows - 1; first += suppressionBlockRows) {
        const int32_t end = first + suppressionBlockRows < numRows - 1 ? first + suppressionBlockRows : numRows - 1;
        T *previous = magnitudes[0], *current = magnitudes[1], *next = magnitudes[2];
        columnMagnitudes(gradX, gradY, first - 1, end + 1, previous);
        columnMagnitudes(gradX + stride, gradY + stride, first - 1, end + 1, current);
        for (int32_t c = 1; c < numCols - 1; ++c) {
            const ptrdiff_t base = c * stride;
            columnMagnitudes(gradX + base + stride, gradY + base + stride, first - 1, end + 1, next);
            suppressRows(gradX + base + first, gradY + base + first, previous, current, next, end - first,
                         out + base + first, packed);
            T *const oldest = previous;
            previous = current;
            current = next;
            next = oldest;
        }
    }
    const ptrdiff_t pixels = static_cast<ptrdiff_t>(numRows) * numCols;
    const T largest = largestValue(out, pixels, packed);
    const T divisor = largest == T(0) ? ElementTraits<T>::epsilon : largest;
    for (ptrdiff_t i = 0; i < pixels; ++i) {
        out[i] = out[i] / divisor;
    }
}

template void suppress(const double *, const double *, double *, int32_t, int32_t, bool);
template void suppress(const float *, const float *, float *, int32_t, int32_t, bool);

} // namespace ornex::detection::ORNEX_SIMD_NAMESPACE
