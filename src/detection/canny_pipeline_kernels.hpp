// The drivers' gradient and suppression pass, built once per instruction
// set like the suppression kernels: the including file defines
// ORNEX_SIMD_NAMESPACE and ORNEX_PACK_BYTES and includes
// canny_suppression_kernels.hpp first. No include guard, on purpose.
//
// One walk over the image, a strip of rows at a time and column by column
// within a strip, does what the stage functions do in six passes: smoothing
// across columns and its derivative through a ring of smoothed columns,
// smoothing down rows and its derivative inside one column, the gradient
// magnitude once per pixel, and the suppression of the column before. Every
// value keeps the operations and the order of the stage functions; only the
// memory walk changes, so that each value is used while it is in cache.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif
#if ORNEX_PACK_BYTES == 32 && defined(__AVX2__)
#include <immintrin.h>
#endif

#include "detection/canny_stages.hpp"
#include "detection/hysteresis.hpp"

namespace ornex::detection::ORNEX_SIMD_NAMESPACE {
namespace {

// Calls f with the kernel length as a constant, so that the tap loops below
// unroll (1 .. maxFusedLength).
template <class F>
void withLength(int32_t length, const F &f)
{
    static_assert(maxFusedLength == 8);
    switch (length) {
    case 1: return f(std::integral_constant<int32_t, 1>{});
    case 2: return f(std::integral_constant<int32_t, 2>{});
    case 3: return f(std::integral_constant<int32_t, 3>{});
    case 4: return f(std::integral_constant<int32_t, 4>{});
    case 5: return f(std::integral_constant<int32_t, 5>{});
    case 6: return f(std::integral_constant<int32_t, 6>{});
    case 7: return f(std::integral_constant<int32_t, 7>{});
    default: return f(std::integral_constant<int32_t, 8>{});
    }
}

// out = centre weight * here + sum over k of weight k * (after k + before k),
// taps in order of k, centre first; the smoothing of both directions.
template <int32_t length, class T>
void smoothTaps(const T *const *after, const T *const *before, const T *__restrict here, const T *weights,
                int32_t count, T *__restrict out, bool packed)
{
    using P = Pack<T, ORNEX_PACK_BYTES>;
    int32_t i = 0;
    if (packed) {
        P w[maxFusedLength];
        for (int32_t k = 0; k < length; ++k) {
            w[k] = P::broadcast(weights[k]);
        }
        for (; i + P::width <= count; i += P::width) {
            P sum = w[0] * P::load(here + i);
            for (int32_t k = 1; k < length; ++k) {
                sum = sum + w[k] * (P::load(after[k] + i) + P::load(before[k] + i));
            }
            sum.store(out + i);
        }
    }
    for (; i < count; ++i) {
        T sum = weights[0] * here[i];
        for (int32_t k = 1; k < length; ++k) {
            sum = sum + weights[k] * (after[k][i] + before[k][i]);
        }
        out[i] = sum;
    }
}

// The square root of every lane.
template <class P>
[[gnu::always_inline]] inline P squareRootOf(P a)
{
    [[maybe_unused]] constexpr bool single = sizeof(typename P::Bit) == 4;
#if ORNEX_PACK_BYTES == 32 && defined(__AVX2__)
    if constexpr (single) {
        return {(typename P::Native)_mm256_sqrt_ps((__m256)a.lanes)};
    } else {
        return {(typename P::Native)_mm256_sqrt_pd((__m256d)a.lanes)};
    }
#elif ORNEX_PACK_BYTES == 16 && defined(__SSE2__)
    if constexpr (single) {
        return {(typename P::Native)_mm_sqrt_ps((__m128)a.lanes)};
    } else {
        return {(typename P::Native)_mm_sqrt_pd((__m128d)a.lanes)};
    }
#else
    for (int32_t lane = 0; lane < P::width; ++lane) {
        a.lanes[lane] = squareRoot(a.lanes[lane]);
    }
    return a;
#endif
}

// out = 0 + sum over k >= 1 of weight k * (before k - after k), in order of
// k; the derivative of both directions (the leading 0 turns -0 into +0).
// With `other` (the gradient of the other direction), also the gradient
// magnitude sqrt(other * other + out * out) into `magnitude`.
template <int32_t length, class T>
void differenceTaps(const T *const *after, const T *const *before, const T *weights, int32_t count,
                    T *__restrict out, bool packed, const T *__restrict other = nullptr,
                    T *__restrict magnitude = nullptr)
{
    using P = Pack<T, ORNEX_PACK_BYTES>;
    int32_t i = 0;
    if (packed) {
        P w[maxFusedLength];
        for (int32_t k = 1; k < length; ++k) {
            w[k] = P::broadcast(weights[k]);
        }
        const P zero = P::broadcast(T(0));
        for (; i + P::width <= count; i += P::width) {
            P sum = zero;
            for (int32_t k = 1; k < length; ++k) {
                sum = sum + w[k] * (P::load(before[k] + i) - P::load(after[k] + i));
            }
            sum.store(out + i);
            if (other) {
                const P x = P::load(other + i);
                squareRootOf(x * x + sum * sum).store(magnitude + i);
            }
        }
    }
    for (; i < count; ++i) {
        T sum = T(0);
        for (int32_t k = 1; k < length; ++k) {
            sum = sum + weights[k] * (before[k][i] - after[k][i]);
        }
        out[i] = sum;
        if (other) {
            magnitude[i] = squareRoot(other[i] * other[i] + sum * sum);
        }
    }
}

// The running maximum after the values of `count` outputs (see largestValue).
template <class T>
T largerWith(T largest, const T *values, int32_t count, bool packed)
{
    const T candidate = largestValue(values, count, packed);
    return candidate > largest ? candidate : largest;
}

#ifdef __SSE2__
#if ORNEX_PACK_BYTES == 32 && defined(__AVX2__)
constexpr int32_t streamBytes = 32;
#else
constexpr int32_t streamBytes = 16;
#endif
// streamBytes of src stored at dst (aligned to them) round the caches.
[[gnu::always_inline]] inline void streamPack(float *dst, const float *src)
{
#if ORNEX_PACK_BYTES == 32 && defined(__AVX2__)
    _mm256_stream_ps(dst, _mm256_loadu_ps(src));
#else
    _mm_stream_ps(dst, _mm_loadu_ps(src));
#endif
}
[[gnu::always_inline]] inline void streamPack(double *dst, const double *src)
{
#if ORNEX_PACK_BYTES == 32 && defined(__AVX2__)
    _mm256_stream_pd(dst, _mm256_loadu_pd(src));
#else
    _mm_stream_pd(dst, _mm_loadu_pd(src));
#endif
}
#endif

// dst = src for `count` values. Packed, the aligned middle goes round the
// caches: the walk does not read the gradients again, and a plain store
// would first fetch every line it fills.
template <class T>
void copyOut(T *__restrict dst, const T *__restrict src, int32_t count, bool packed)
{
    int32_t i = 0;
#ifdef __SSE2__
    constexpr int32_t width = streamBytes / sizeof(T);
    if (packed) {
        for (; i < count && reinterpret_cast<uintptr_t>(dst + i) % streamBytes != 0; ++i) {
            dst[i] = src[i];
        }
        for (; i + width <= count; i += width) {
            streamPack(dst + i, src + i);
        }
    }
#else
    (void)packed;
#endif
    std::memcpy(dst + i, src + i, static_cast<size_t>(count - i) * sizeof(T));
}

inline int32_t ringSlot(int32_t index, int32_t size)
{
    return wrapIndex(index, size);
}

} // namespace

template <class T>
T gradientsAndSuppression(const T *image, const T *smoothing, const T *derivative, T *gradX, T *gradY, T *out,
                          int32_t numRows, int32_t numCols, int32_t length, bool packed)
{
    const int32_t reach = length - 1, ringSize = 2 * reach + 1;
    const ptrdiff_t stride = numRows;
    // All the columns of one strip live in one block on the stack: the ring
    // of columns smoothed across columns, Gx and Gy of this column and the
    // one before, the magnitudes of three columns (one `pitch` each), and
    // one image column with the rows that smoothing and derivative down the
    // column reach beyond it, and the smoothed column. Strips are as tall as
    // the block allows for this kernel length: whole columns of a 1080-row
    // image at the common lengths, so the walk reads and writes memory in
    // order.
    constexpr int32_t reachMax = maxFusedLength - 1;
    T block[fusedBlockBytes / sizeof(T)];
    const int32_t pitch = static_cast<int32_t>((fusedBlockBytes / sizeof(T) - 6 * reachMax) / (ringSize + 9));
    const int32_t strip = pitch - 2;
    T *const ring = block;
    T *const gxColumns = ring + ringSize * pitch, *const gyColumns = gxColumns + 2 * pitch;
    T *const magnitudeColumns = gyColumns + 2 * pitch;
    T *const column = magnitudeColumns + 3 * pitch; // pitch + 4 reach values
    T *const smoothedV = column + pitch + 4 * reachMax; // pitch + 2 reach values
    auto smoothedH = [&](int32_t slot) { return ring + slot * pitch; };
    auto gx = [&](int32_t c) { return gxColumns + (c & 1) * pitch; };
    auto gy = [&](int32_t c) { return gyColumns + (c & 1) * pitch; };
    auto magnitudes = [&](int32_t c) { return magnitudeColumns + (c % 3) * pitch; };
    const T *after[maxFusedLength], *before[maxFusedLength];
    T largest = 0;

    for (int32_t top = 0; top < numRows; top += strip) {
        const int32_t bottom = top + strip < numRows ? top + strip : numRows;
        const int32_t first = top > 0 ? top - 1 : 0, end = bottom < numRows ? bottom + 1 : numRows;
        const int32_t height = end - first;
        // Smoothed across columns, column j (unwrapped: -reach .. numCols + reach).
        auto smoothColumn = [&](int32_t j) {
            const int32_t c = wrapIndex(j, numCols);
            // The image column that the next call reads first, fetched one
            // call ahead (measured faster than leaving it to the processor,
            // which sees nine column streams at once here).
            const char *ahead = reinterpret_cast<const char *>(image + wrapIndex(c + length, numCols) * stride + first);
            for (size_t byte = 0; byte < static_cast<size_t>(height) * sizeof(T); byte += 64) {
                __builtin_prefetch(ahead + byte);
            }
            for (int32_t k = 1; k < length; ++k) {
                after[k] = image + wrapIndex(c + k, numCols) * stride + first;
                before[k] = image + wrapIndex(c - k, numCols) * stride + first;
            }
            withLength(length, [&](auto taps) {
                smoothTaps<taps>(after, before, image + c * stride + first, smoothing, height,
                                 smoothedH(ringSlot(j, ringSize)), packed);
            });
        };
        for (int32_t j = -reach; j < reach; ++j) {
            smoothColumn(j);
        }
        for (int32_t c = 0; c < numCols; ++c) {
            smoothColumn(c + reach);
            // Gx: the derivative across the smoothed columns.
            T *const x = gx(c), *const y = gy(c);
            for (int32_t k = 1; k < length; ++k) {
                after[k] = smoothedH(ringSlot(c + k, ringSize));
                before[k] = smoothedH(ringSlot(c - k, ringSize));
            }
            withLength(length, [&](auto taps) {
                differenceTaps<taps>(after, before, derivative, height, x, packed);
            });
            // Gy: smoothing and derivative down this one column, periodic.
            const T *source = image + c * stride;
            const int32_t from = first - 2 * reach, to = end + 2 * reach;
            for (int32_t r = from; r < to;) {
                if (r >= 0 && r < numRows) {
                    const int32_t run = (to < numRows ? to : numRows) - r;
                    std::memcpy(column + (r - from), source + r, static_cast<size_t>(run) * sizeof(T));
                    r += run;
                } else {
                    column[r - from] = source[wrapIndex(r, numRows)];
                    ++r;
                }
            }
            const int32_t heightV = height + 2 * reach;
            for (int32_t k = 1; k < length; ++k) {
                after[k] = column + reach + k;
                before[k] = column + reach - k;
            }
            withLength(length, [&](auto taps) {
                smoothTaps<taps>(after, before, column + reach, smoothing, heightV, smoothedV, packed);
            });
            for (int32_t k = 1; k < length; ++k) {
                after[k] = smoothedV + reach + k;
                before[k] = smoothedV + reach - k;
            }
            T *const m = magnitudes(c);
            withLength(length, [&](auto taps) {
                differenceTaps<taps>(after, before, derivative, height, y, packed, x, m);
            });
            // This strip's rows of both gradients into A and B.
            const int32_t own = top - first;
            copyOut(gradX + c * stride + top, x + own, bottom - top, packed);
            copyOut(gradY + c * stride + top, y + own, bottom - top, packed);
            // The outermost rows and columns keep their plain magnitude.
            T *const target = out + c * stride;
            if (c == 0 || c == numCols - 1) {
                std::memcpy(target + top, m + own, static_cast<size_t>(bottom - top) * sizeof(T));
                largest = largerWith(largest, target + top, bottom - top, packed);
            } else {
                if (top == 0) {
                    target[0] = m[0];
                    largest = largerWith(largest, target, 1, packed);
                }
                if (bottom == numRows) {
                    target[numRows - 1] = m[numRows - 1 - first];
                    largest = largerWith(largest, target + numRows - 1, 1, packed);
                }
            }
            // The suppression of the column before, now that its right-hand
            // neighbour's magnitudes are known.
            const int32_t centre = c - 1;
            const int32_t rowFrom = top > 1 ? top : 1, rowTo = bottom < numRows - 1 ? bottom : numRows - 1;
            if (centre >= 1 && centre < numCols - 1 && rowFrom < rowTo) {
                const int32_t at = rowFrom - 1 - first;
                T *const suppressed = out + centre * stride + rowFrom;
                suppressRows(gx(centre) + at + 1, gy(centre) + at + 1, magnitudes(centre - 1) + at,
                             magnitudes(centre) + at, m + at, rowTo - rowFrom, suppressed, packed);
                largest = largerWith(largest, suppressed, rowTo - rowFrom, packed);
            }
        }
    }
#ifdef __SSE2__
    if (packed) {
        _mm_sfence(); // the streamed stores ordered before any later store
    }
#endif
    return largest;
}

template <class T>
void normaliseAndClassify(T *magnitude, T divisor, uint8_t *map, ptrdiff_t count, T low, T high)
{
    for (ptrdiff_t i = 0; i < count; ++i) {
        const T value = magnitude[i] / divisor;
        magnitude[i] = value;
        map[i] = static_cast<uint8_t>((value >= low ? reachesLow : 0) | (value >= high ? reachesHigh : 0));
    }
}

template void normaliseAndClassify(float *, float, uint8_t *, ptrdiff_t, float, float);
template void normaliseAndClassify(double *, double, uint8_t *, ptrdiff_t, double, double);

template float gradientsAndSuppression(const float *, const float *, const float *, float *, float *, float *,
                                       int32_t, int32_t, int32_t, bool);
template double gradientsAndSuppression(const double *, const double *, const double *, double *, double *,
                                        double *, int32_t, int32_t, int32_t, bool);

} // namespace ornex::detection::ORNEX_SIMD_NAMESPACE
