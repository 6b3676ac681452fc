// Gathered interpolation runs for the projective warp, built with -mavx2
// only: no FMA, so every lane rounds as the scalar kernels do. Nothing here
// may call an inline function shared with the baseline build.
#include "geometry/sample_runs.hpp"

#include <immintrin.h>

#include <cstring>

// The gather intrinsics start from an undefined register that GCC 12 then
// reports as possibly uninitialised.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

namespace ornex::geometry::avx2 {
namespace {

struct SingleLanes {
    using Real = float;
    using Values = __m256;
    using Indices = __m256i;
    static constexpr int width = 8;

    static Values load(const float *p) { return _mm256_loadu_ps(p); }
    static void store(float *p, Values v) { _mm256_storeu_ps(p, v); }
    static Values all(float v) { return _mm256_set1_ps(v); }
    static Values negate(Values v) { return _mm256_xor_ps(v, _mm256_set1_ps(-0.0f)); }
    static Indices truncate(Values v) { return _mm256_cvttps_epi32(v); }
    static Values toReal(Indices i) { return _mm256_cvtepi32_ps(i); }
    static Indices allIndices(int32_t v) { return _mm256_set1_epi32(v); }
    static Indices add(Indices a, Indices b) { return _mm256_add_epi32(a, b); }
    static Indices smaller(Indices a, Indices b) { return _mm256_min_epi32(a, b); }
    static Indices multiply(Indices a, Indices b) { return _mm256_mullo_epi32(a, b); }
    static Values gather(const float *base, Indices i) { return _mm256_i32gather_ps(base, i, 4); }
    // taps[j] = base[start + j] in every lane: four consecutive elements per
    // lane, read as one 16-byte load each and transposed, which costs far
    // less than four gathers.
    // taps[j] = base[start + j], j = 0, 1, in every lane: one 8-byte load
    // per lane.
    static void twoTaps(const float *base, Indices start, Values taps[2])
    {
        alignas(32) int32_t at[8];
        _mm256_store_si256(reinterpret_cast<__m256i *>(at), start);
        auto pair = [&](int k) {
            long long both;
            std::memcpy(&both, base + at[k], sizeof both);
            return both;
        };
        const __m256 evenPairs = _mm256_castsi256_ps(_mm256_set_epi64x(pair(5), pair(4), pair(1), pair(0)));
        const __m256 oddPairs = _mm256_castsi256_ps(_mm256_set_epi64x(pair(7), pair(6), pair(3), pair(2)));
        taps[0] = _mm256_shuffle_ps(evenPairs, oddPairs, 0x88);
        taps[1] = _mm256_shuffle_ps(evenPairs, oddPairs, 0xDD);
    }
    static void fourTaps(const float *base, Indices start, Values taps[4])
    {
        alignas(32) int32_t at[8];
        _mm256_store_si256(reinterpret_cast<__m256i *>(at), start);
        __m256 pairs[4];
        for (int k = 0; k < 4; ++k) {
            pairs[k] = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(base + at[k])),
                                            _mm_loadu_ps(base + at[k + 4]), 1);
        }
        const __m256 low01 = _mm256_unpacklo_ps(pairs[0], pairs[1]), high01 = _mm256_unpackhi_ps(pairs[0], pairs[1]);
        const __m256 low23 = _mm256_unpacklo_ps(pairs[2], pairs[3]), high23 = _mm256_unpackhi_ps(pairs[2], pairs[3]);
        taps[0] = _mm256_shuffle_ps(low01, low23, 0x44);
        taps[1] = _mm256_shuffle_ps(low01, low23, 0xEE);
        taps[2] = _mm256_shuffle_ps(high01, high23, 0x44);
        taps[3] = _mm256_shuffle_ps(high01, high23, 0xEE);
    }
    // Whether lo <= i <= hi in every lane.
    static bool allWithin(Indices i, int32_t lo, int32_t hi)
    {
        const __m256i below = _mm256_cmpgt_epi32(_mm256_set1_epi32(lo), i);
        const __m256i above = _mm256_cmpgt_epi32(i, _mm256_set1_epi32(hi));
        return _mm256_testz_si256(_mm256_or_si256(below, above), _mm256_or_si256(below, above));
    }
    // Whether no lane holds a whole number equal to its truncation.
    static bool noneExact(Values v, Indices i)
    {
        return _mm256_movemask_ps(_mm256_cmp_ps(v, toReal(i), _CMP_EQ_OQ)) == 0;
    }
};

struct DoubleLanes {
    using Real = double;
    using Values = __m256d;
    using Indices = __m128i;
    static constexpr int width = 4;

    static Values load(const double *p) { return _mm256_loadu_pd(p); }
    static void store(double *p, Values v) { _mm256_storeu_pd(p, v); }
    static Values all(double v) { return _mm256_set1_pd(v); }
    static Values negate(Values v) { return _mm256_xor_pd(v, _mm256_set1_pd(-0.0)); }
    static Indices truncate(Values v) { return _mm256_cvttpd_epi32(v); }
    static Values toReal(Indices i) { return _mm256_cvtepi32_pd(i); }
    static Indices allIndices(int32_t v) { return _mm_set1_epi32(v); }
    static Indices add(Indices a, Indices b) { return _mm_add_epi32(a, b); }
    static Indices smaller(Indices a, Indices b) { return _mm_min_epi32(a, b); }
    static Indices multiply(Indices a, Indices b) { return _mm_mullo_epi32(a, b); }
    static Values gather(const double *base, Indices i) { return _mm256_i32gather_pd(base, i, 8); }
    static void twoTaps(const double *base, Indices start, Values taps[2])
    {
        alignas(16) int32_t at[4];
        _mm_store_si128(reinterpret_cast<__m128i *>(at), start);
        const __m256d firstHalves = _mm256_set_m128d(_mm_loadu_pd(base + at[2]), _mm_loadu_pd(base + at[0]));
        const __m256d secondHalves = _mm256_set_m128d(_mm_loadu_pd(base + at[3]), _mm_loadu_pd(base + at[1]));
        taps[0] = _mm256_unpacklo_pd(firstHalves, secondHalves);
        taps[1] = _mm256_unpackhi_pd(firstHalves, secondHalves);
    }
    static void fourTaps(const double *base, Indices start, Values taps[4])
    {
        alignas(16) int32_t at[4];
        _mm_store_si128(reinterpret_cast<__m128i *>(at), start);
        __m256d lanes[4];
        for (int k = 0; k < 4; ++k) {
            lanes[k] = _mm256_loadu_pd(base + at[k]);
        }
        const __m256d low01 = _mm256_unpacklo_pd(lanes[0], lanes[1]), high01 = _mm256_unpackhi_pd(lanes[0], lanes[1]);
        const __m256d low23 = _mm256_unpacklo_pd(lanes[2], lanes[3]), high23 = _mm256_unpackhi_pd(lanes[2], lanes[3]);
        taps[0] = _mm256_permute2f128_pd(low01, low23, 0x20);
        taps[1] = _mm256_permute2f128_pd(high01, high23, 0x20);
        taps[2] = _mm256_permute2f128_pd(low01, low23, 0x31);
        taps[3] = _mm256_permute2f128_pd(high01, high23, 0x31);
    }
    static bool allWithin(Indices i, int32_t lo, int32_t hi)
    {
        const __m128i below = _mm_cmpgt_epi32(_mm_set1_epi32(lo), i);
        const __m128i above = _mm_cmpgt_epi32(i, _mm_set1_epi32(hi));
        return _mm_testz_si128(_mm_or_si128(below, above), _mm_or_si128(below, above));
    }
    static bool noneExact(Values v, Indices i)
    {
        return _mm256_movemask_pd(_mm256_cmp_pd(v, toReal(i), _CMP_EQ_OQ)) == 0;
    }
};

// Runs packs through pack(y, x, destination), which returns false (and
// writes nothing) for a pack it does not take. A last partial pack is filled
// up with copies of its last position, sampled whole and only its own lanes
// kept: every lane is independent, so the padding changes no result.
template <class L, class Pack>
int32_t runPacks(const typename L::Real *ys, const typename L::Real *xs, int32_t count,
                 typename L::Real *destination, const Pack &pack)
{
    using Real = typename L::Real;
    int32_t i = 0;
    for (; i + L::width <= count; i += L::width) {
        if (!pack(L::load(ys + i), L::load(xs + i), destination + i)) {
            return i;
        }
    }
    if (i < count) {
        Real y[L::width], x[L::width], sampled[L::width];
        for (int k = 0; k < L::width; ++k) {
            y[k] = ys[i + k < count ? i + k : count - 1];
            x[k] = xs[i + k < count ? i + k : count - 1];
        }
        if (pack(L::load(y), L::load(x), sampled)) {
            for (int k = 0; i < count; ++k, ++i) {
                destination[i] = sampled[k];
            }
        }
    }
    return i;
}

// (s01 (1 - fy) + s11 fy) fx + (s00 (1 - fy) + s10 fy) (1 - fx), lanes
// stopping at the first pack with a position left of or above the image.
template <class L>
int32_t bilinearLanes(const typename L::Real *plane, int32_t numRows, int32_t numCols,
                      const typename L::Real *ys, const typename L::Real *xs, int32_t count,
                      typename L::Real *destination)
{
    using V = typename L::Values;
    const V one = L::all(1);
    const auto lastRow = L::allIndices(numRows - 1), lastColumn = L::allIndices(numCols - 1);
    const auto rows = L::allIndices(numRows), oneIndex = L::allIndices(1);
    return runPacks<L>(ys, xs, count, destination, [&](V y, V x, typename L::Real *out) {
        const auto r0 = L::truncate(y), c0 = L::truncate(x);
        if (!L::allWithin(r0, 0, numRows - 1) || !L::allWithin(c0, 0, numCols - 1)) {
            return false;
        }
        const V fy = y - L::toReal(r0), fx = x - L::toReal(c0);
        V near[2], far[2];
        if (L::allWithin(r0, 0, numRows - 2) && L::allWithin(c0, 0, numCols - 2)) {
            // Away from the last row and column the far taps are the next
            // row and column: two neighbours per column, one load each.
            const auto nearColumn = L::multiply(c0, rows);
            L::twoTaps(plane, L::add(r0, nearColumn), near);
            L::twoTaps(plane, L::add(L::add(r0, nearColumn), rows), far);
        } else {
            const auto r1 = L::smaller(L::add(r0, oneIndex), lastRow);
            const auto c1 = L::smaller(L::add(c0, oneIndex), lastColumn);
            const auto nearColumn = L::multiply(c0, rows), farColumn = L::multiply(c1, rows);
            near[0] = L::gather(plane, L::add(r0, nearColumn));
            near[1] = L::gather(plane, L::add(r1, nearColumn));
            far[0] = L::gather(plane, L::add(r0, farColumn));
            far[1] = L::gather(plane, L::add(r1, farColumn));
        }
        const V s00 = near[0], s10 = near[1], s01 = far[0], s11 = far[1];
        L::store(out, (s01 * (one - fy) + s11 * fy) * fx + (s00 * (one - fy) + s10 * fy) * (one - fx));
        return true;
    });
}

// Cubic convolution weights (a = -1) for taps -1, 0, 1, 2, in the scalar
// kernel's evaluation order.
template <class L>
struct LaneWeights {
    using V = typename L::Values;
    V before, at, after, beyond;

    static V nearWeight(V s) { return s * s * s - L::all(2) * s * s + L::all(1); }
    static V farWeight(V s) { return L::negate(s) * s * s + L::all(5) * s * s - L::all(8) * s + L::all(4); }
    explicit LaneWeights(V f)
        : before(farWeight(L::all(1) + f)), at(nearWeight(f)), after(nearWeight(L::all(1) - f)),
          beyond(farWeight(L::all(2) - f))
    {
    }
    V blend(V v0, V v1, V v2, V v3) const { return v0 * before + v1 * at + v2 * after + v3 * beyond; }
};

// Only packs whose positions are all fractional and at least one tap away
// from the first and the last two rows and columns: there both axes use
// the four-tap stencil.
template <class L>
int32_t bicubicLanes(const typename L::Real *plane, int32_t numRows, int32_t numCols,
                     const typename L::Real *ys, const typename L::Real *xs, int32_t count,
                     typename L::Real *destination)
{
    using V = typename L::Values;
    const auto rows = L::allIndices(numRows);
    return runPacks<L>(ys, xs, count, destination, [&](V y, V x, typename L::Real *out) {
        const auto r = L::truncate(y), c = L::truncate(x);
        if (!L::allWithin(r, 1, numRows - 3) || !L::allWithin(c, 1, numCols - 3) || !L::noneExact(y, r) ||
            !L::noneExact(x, c)) {
            return false;
        }
        const LaneWeights<L> down(y - L::toReal(r)), across(x - L::toReal(c));
        V columns[4];
        for (int k = 0; k < 4; ++k) {
            // Rows r - 1 .. r + 2 of column c + k - 1.
            V taps[4];
            L::fourTaps(plane, L::add(L::multiply(L::add(c, L::allIndices(k - 1)), rows), L::add(r, L::allIndices(-1))),
                        taps);
            columns[k] = down.blend(taps[0], taps[1], taps[2], taps[3]);
        }
        L::store(out, across.blend(columns[0], columns[1], columns[2], columns[3]));
        return true;
    });
}

} // namespace

int32_t bilinearRun(const float *plane, int32_t numRows, int32_t numCols, const float *ys, const float *xs,
                    int32_t count, float *destination)
{
    return bilinearLanes<SingleLanes>(plane, numRows, numCols, ys, xs, count, destination);
}

int32_t bilinearRun(const double *plane, int32_t numRows, int32_t numCols, const double *ys, const double *xs,
                    int32_t count, double *destination)
{
    return bilinearLanes<DoubleLanes>(plane, numRows, numCols, ys, xs, count, destination);
}

int32_t bicubicRun(const float *plane, int32_t numRows, int32_t numCols, const float *ys, const float *xs,
                   int32_t count, float *destination)
{
    return bicubicLanes<SingleLanes>(plane, numRows, numCols, ys, xs, count, destination);
}

int32_t bicubicRun(const double *plane, int32_t numRows, int32_t numCols, const double *ys, const double *xs,
                   int32_t count, double *destination)
{
    return bicubicLanes<DoubleLanes>(plane, numRows, numCols, ys, xs, count, destination);
}

} // namespace ornex::geometry::avx2
