#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T> using Image = std::vector<T>;

template <class Element, auto real, auto complex, auto derivative>
struct HsMember {
    using T = Element;
    static constexpr auto realFlow = real, complexFlow = complex, sobel = derivative;
};
using HsMembers =
    ::testing::Types<HsMember<double, ORNEX_OpticalFlow_HS_D, ORNEX_OpticalFlow_HS_Z, ORNEX_SobelDerivative_HS_D>,
                     HsMember<float, ORNEX_OpticalFlow_HS_R, ORNEX_OpticalFlow_HS_C, ORNEX_SobelDerivative_HS_R>>;
template <class M> struct HornSchunck : ::testing::Test {};
TYPED_TEST_SUITE(HornSchunck, HsMembers);

// Every call, each buffer one element longer than its size and filled with -9: [0] the result (room for complex),
// [1] velocityY (or Iy), [2..5] the line buffers, [6..11] the products, [12..15] the working columns.
template <class M, class T = typename M::T>
auto run(const Image<T> &i1, const Image<T> &i2, int32_t m, int32_t n, T lambda, bool useMax, bool useThreshold,
         int32_t sweeps, T threshold)
{
    const size_t rows = size_t(std::max(m, 0)), cols = size_t(std::max(n, 0)), px = rows * cols;
    const size_t sizes[16] = {2 * px, px, rows, rows, cols, cols, px, px, px, px, px, px, rows, rows, rows, rows};
    std::array<std::vector<Image<T>>, 3> b; // the derivatives, the real flow, the complex flow
    T *p[3][16], **d = p[0], **r = p[1], **c = p[2];
    for (int k = 0; k < 48; ++k) { p[k / 16][k % 16] = b[k / 16].emplace_back(sizes[k % 16] + 1, T(-9)).data(); }
    const T *a = i1.data(), *z = i2.data();
    M::sobel(a, z, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7], d[8], d[9], d[10], d[11], &lambda, m, n);
    M::realFlow(a, z, r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], r[8], r[9], r[10], r[11], r[12], r[13], r[14],
                r[15], &lambda, useMax, useThreshold, &sweeps, &threshold, m, n);
    M::complexFlow(a, z, c[0], c[2], c[3], c[4], c[5], c[6], c[7], c[8], c[9], c[10], c[11], c[12], c[13], c[14], c[15],
                   &lambda, useMax, useThreshold, &sweeps, &threshold, m, n);
    return b;
}

// The derivatives and the sweeps written plainly, every step in T.
template <class T>
struct SlowFlow {
    Image<T> d[8], u, v, changes; // Ix, Iy, Ix^2, IxIy, Iy^2, IxIt, IyIt, F
    SlowFlow(const Image<T> &i1, const Image<T> &i2, int32_t m, int32_t n, T lambda, bool useMax, bool useThreshold,
             int32_t sweeps, T threshold)
        : u(i1.size(), T(0)), v(u)
    {
        // Indices outside the image are replaced by the nearest edge index; differences are previous minus next.
        auto I = [&](int32_t r, int32_t c) { return i1[std::clamp(r, 0, m - 1) + std::clamp(c, 0, n - 1) * m]; };
        for (int32_t i = 0, r = 0, c = 0; i < int32_t(i1.size()); r = ++i % m, c = i / m) {
            auto columnSmoothed = [&](int32_t cc) { return I(r - 1, cc) + T(2) * I(r, cc) + I(r + 1, cc); };
            auto rowSmoothed = [&](int32_t rr) { return I(rr, c - 1) + T(2) * I(rr, c) + I(rr, c + 1); };
            const T x = (columnSmoothed(c - 1) - columnSmoothed(c + 1)) * T(0.125), t = i2[i] - i1[i];
            const T y = (rowSmoothed(r - 1) - rowSmoothed(r + 1)) * T(0.125);
            const T values[8] = {x, y, x * x, x * y, y * y, x * t, y * t, T(1) / (x * x + lambda + y * y)};
            for (int k = 0; k < 8; ++k) { d[k].push_back(values[k]); }
        }
        // Jacobi sweeps: every mean reads the previous sweep; a missing neighbour is the pixel itself.
        auto stop = [&] { return useMax && int32_t(changes.size()) == sweeps; };
        while (changes.empty() || !(stop() || (useThreshold && threshold > changes.back()))) {
            Image<T> newU = u, newV = v;
            T largest = 0;
            for (int32_t i = 0, r = 0, c = 0; i < int32_t(i1.size()); r = ++i % m, c = i / m) {
                auto mean = [&](const Image<T> &w) {
                    return T(0.25) * (w[r + 1 < m ? i + 1 : i] + w[r > 0 ? i - 1 : i] + w[c > 0 ? i - m : i] +
                                      w[c + 1 < n ? i + m : i]);
                };
                const T uMean = mean(u), vMean = mean(v);
                newU[i] = uMean - (d[2][i] * uMean + d[3][i] * vMean + d[5][i]) * d[7][i];
                newV[i] = vMean - (d[4][i] * vMean + d[3][i] * uMean + d[6][i]) * d[7][i];
                largest = std::max({largest, std::fabs(u[i] - newU[i]), std::fabs(v[i] - newV[i])});
            }
            u = newU, v = newV, changes.push_back(largest);
        }
    }
};

TYPED_TEST(HornSchunck, AgreesWithSlowFlow)
{
    using T = typename TypeParam::T;
    std::mt19937 random(11);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t m = trial % 15 ? pick(1, 7) : pick(-2, 3); // some sides 0 or negative: no pixels
        const int32_t n = trial % 15 ? pick(1, 7) : pick(-3, m > 0 ? 0 : 3);
        const int32_t sweeps = pick(1, 4), mode = trial % 3;
        const T lambda = T(pick(1, 16)) / 4;
        Image<T> i1(size_t(std::max(m, 0) * std::max(n, 0))), i2(i1.size());
        for (size_t p = 0; p < i1.size(); ++p) {
            i1[p] = T(trial % 2 ? pick(0, 9) : pick(-500, 500) / 9.0), i2[p] = i1[p] + T(trial % 7 ? pick(-2, 2) : 0);
        }
        // A threshold met exactly by a sweep's change, which does not stop (200 sweeps at most); a threshold; a count.
        const T threshold =
            mode ? T(pick(1, 100)) / 64 : SlowFlow<T>(i1, i2, m, n, lambda, true, false, sweeps, 0).changes.back();
        const int32_t cap = mode == 0 ? 200 : sweeps;
        const SlowFlow<T> want(i1, i2, m, n, lambda, mode != 1, mode != 2, cap, threshold);
        SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << m << "x" << n);
        const auto out = run<TypeParam>(i1, i2, m, n, lambda, mode != 1, mode != 2, cap, threshold);
        const auto &[d, real, complex] = out;
        for (int k = 0; k < 8; ++k) {
            const Image<T> &got = d[k + 4 * (k > 1)];
            ASSERT_EQ(Image<T>(got.begin(), got.begin() + ptrdiff_t(i1.size())), want.d[k]);
        }
        for (size_t i = 0; i < i1.size(); ++i) { // _C/_Z set u and v aside in the first and third product arrays
            const T u = want.u[i], v = want.v[i];
            const Image<T> got{real[0][i], real[1][i], complex[0][2 * i], complex[0][2 * i + 1], complex[6][i],
                               complex[8][i]};
            ASSERT_EQ(got, Image<T>({u * u + v * v, v, u, v, u, v})) << i;
        }
        for (const auto &buffers : out) {
            for (const Image<T> &b : buffers) {
                ASSERT_EQ(b.back(), T(-9));
                ASSERT_TRUE(!i1.empty() || b == Image<T>(b.size(), T(-9)));
            }
        }
    }
}

template <class Element, bool isComplex, auto fixed, auto gder, auto convT, auto convX, auto convY>
struct LkMember {
    using T = Element;
    static constexpr bool complexResult = isComplex;
    static constexpr auto lk = fixed, lkGder = gder, temporal = convT, acrossColumns = convX, downRows = convY;
};
#define ORNEX_MEMBER(T, complex, S, K)                                                                             \
    LkMember<T, complex, ORNEX_OpticalFlow_LK_##S, ORNEX_OpticalFlow_LK_GDER_##S, ORNEX_OFLK_ConvT_##K,            \
             ORNEX_OFLK_ConvX_##K, ORNEX_OFLK_ConvY_##K>
using LkMembers = ::testing::Types<ORNEX_MEMBER(double, false, D, D), ORNEX_MEMBER(float, false, R, R),
                                   ORNEX_MEMBER(float, true, C, R), ORNEX_MEMBER(double, true, Z, D)>;
template <class M> struct LucasKanade : ::testing::Test {};
TYPED_TEST_SUITE(LucasKanade, LkMembers);

// Correlation centred at h = taps/2 across columns or down rows, summed in tap order. Where the taps reach outside
// the image, the pixel is 0 (`leaveOut` false) or only the terms inside are summed.
template <class T>
Image<T> slowCorrelate(const Image<T> &in, int32_t m, int32_t n, const Image<T> &taps, bool acrossColumns,
                       bool leaveOut)
{
    const int32_t h = int32_t(taps.size()) / 2;
    Image<T> out(in.size(), T(0));
    for (int32_t p = 0, r = 0, c = 0; p < m * n; r = ++p % m, c = p / m) {
        const bool inside = std::min(r, c) >= h && r < m - h && c < n - h;
        for (int32_t k = 0; k < int32_t(taps.size()) && (leaveOut || inside); ++k) {
            const int32_t row = acrossColumns ? r : r - h + k, col = acrossColumns ? c - h + k : c;
            out[p] = row >= 0 && row < m && col >= 0 && col < n ? out[p] + taps[k] * in[row + col * m] : out[p];
        }
    }
    return out;
}

// Frames from `first` on; the last frame meets the first tap.
template <class T>
Image<T> slowTemporal(const std::vector<Image<T>> &frames, size_t first, const Image<T> &taps)
{
    Image<T> out(frames[0].size(), T(0));
    for (size_t p = 0; p < out.size(); ++p) {
        for (size_t k = 0; k < taps.size(); ++k) { out[p] = out[p] + taps[k] * frames[first + taps.size() - 1 - k][p]; }
    }
    return out;
}

TYPED_TEST(LucasKanade, AgreesWithSlowFlow)
{
    using T = typename TypeParam::T;
    const Image<T> derivative = {T(-1) / T(12), T(2) / T(3), T(0), T(-2) / T(3), T(1) / T(12)};
    const Image<T> binomial = {T(1) / T(16), T(1) / T(4), T(3) / T(8), T(1) / T(4), T(1) / T(16)};
    std::mt19937 random(8);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int trial = 0; trial < 600; ++trial) {
        const bool gder = trial % 2, complex = TypeParam::complexResult;
        const int32_t m = pick(1, 9), n = pick(1, 9), pattern = trial / 2 % 4;
        const int32_t normalFlow = trial / 8 % 2 * (1 + trial % 200);
        Image<T> taps[5], got[5]; // temporal derivative and smoothing, spatial derivative and smoothing, window
        for (auto &filter : taps) {
            for (int k = pick(1, 5); k > 0; --k) { filter.push_back(T(pick(-8, 8)) / 8); }
        }
        const size_t ld = taps[0].size(), ls = taps[1].size();
        // Frames of noise; of stripes across the columns (Iy = 0: an eigenvalue 0); flat; of reals.
        std::vector<Image<T>> frames(std::max<size_t>({2, ld, ls}), Image<T>(size_t(m) * n));
        std::vector<const T *> pointers;
        for (auto &frame : frames) {
            const int32_t offset = pick(0, 3);
            for (int32_t p = 0; p < m * n; ++p) {
                const T kinds[4] = {T(pick(0, 9)), T(p / m * (p / m) % 7 + offset), T(offset), T(std::sin(p + offset))};
                frame[p] = kinds[pattern];
            }
            pointers.push_back(frame.data());
        }
        auto separable = [&](const Image<T> &in, const Image<T> &across, const Image<T> &down, bool leaveOut) {
            return slowCorrelate(slowCorrelate(in, m, n, across, true, leaveOut), m, n, down, false, leaveOut);
        };
        // GDER: both temporal filters centred on the same frame. Fixed: five-point differences with the
        // previous-minus-next sign, terms outside the image left out, and It = image2 - image1.
        const size_t first = ld > ls ? (ld - ls) / 2 : 0;
        const Image<T> smoothed = slowTemporal(frames, first, taps[1]);
        const Image<T> across = slowCorrelate(smoothed, m, n, taps[2], true, false);
        const Image<T> gderX = slowCorrelate(across, m, n, taps[3], false, false);
        const Image<T> ix = gder ? gderX : slowCorrelate(frames[0], m, n, derivative, true, true);
        const Image<T> iy = gder ? separable(smoothed, taps[3], taps[2], false)
                                 : slowCorrelate(frames[0], m, n, derivative, false, true);
        Image<T> it = separable(slowTemporal(frames, ld > ls ? 0 : (ls - ld) / 2, taps[0]), taps[3], taps[3], false);
        Image<T> sums[5] = {ix, ix, iy, ix, iy}; // a, b, c, d, e
        for (size_t p = 0; p < it.size(); ++p) {
            it[p] = gder ? it[p] : frames[1][p] - frames[0][p];
            sums[0][p] *= ix[p], sums[1][p] *= iy[p], sums[2][p] *= iy[p], sums[3][p] *= it[p], sums[4][p] *= it[p];
        }
        for (auto &sum : sums) {
            sum = gder ? separable(sum, taps[4], taps[4], false) : separable(sum, binomial, binomial, true);
        }
        // Per pixel, the eigenvalues of [[a, b], [b, c]] and the full solution of it (u, v) = -(d, e).
        auto solve = [&](size_t i) {
            const T a = sums[0][i], b = sums[1][i], c = sums[2][i], d = sums[3][i], e = sums[4][i];
            const T negDet = b * b - a * c, u = -(e * b - c * d) / negDet, v = -(b * d - e * a) / negDet;
            const T mean = T(0.5) * (a + c), spread = T(0.5) * std::sqrt((a - c) * (a - c) + T(4) * b * b);
            return std::array<T, 9>{mean - spread, mean + spread, u, v, a, b, c, negDet, d + e};
        };
        // Thresholds met exactly by an eigenvalue (equal passes), or small integers.
        const T threshold = trial % 6 < 4 ? solve(size_t(pick(0, m * n - 1)))[trial % 6 / 2] : T(pick(-1, 2));
        Image<T> want(it.size() * (complex ? 2 : 1), T(0)), result(want.size(), T(-7));
        const int32_t margin = int32_t(taps[4].size()) / 2; // GDER leaves this many first rows and columns alone
        for (size_t i = 0; i < it.size(); ++i) {
            const auto [smaller, larger, u, v, a, b, c, negDet, dPlusE] = solve(i);
            const T x = a + b, y = b + c, norm = x * x + y * y, k = -dPlusE / norm;
            const T g = T(1) / std::sqrt((a - larger) * (a - larger) + b * b), n1 = b * g, n2 = (larger - a) * g;
            const T along = -(u * n1 + v * n2);
            auto put = [&](T re, T im, T sq) { complex ? (want[2 * i] = re, want[2 * i + 1] = im) : want[i] = sq; };
            if (gder && (int32_t(i) % m < margin || int32_t(i) / m < margin)) {
                continue;
            } else if (gder ? !(smaller < threshold) && negDet < 0 : larger >= threshold && !(smaller < threshold)) {
                put(u, v, u * u + v * v); // a zero determinant is divided by
            } else if (!gder && larger >= threshold && !(norm < 0)) {
                put(x * k, y * k, x * k * (x * k) + y * k * (y * k)); // only the larger passes: along (1, 1) mapped
            } else if (gder && normalFlow && !(larger < threshold) && std::fabs(negDet) > T(1e-8 / 255)) {
                // On the unit eigenvector (n1, n2) of the larger eigenvalue; minus sign and crossed parts on purpose.
                put(along * n2, along * n1, along * along * (n1 * n1 + n2 * n2));
            }
        }
        std::fill_n(got, 5, Image<T>(it.size(), T(-7)));
        gder ? TypeParam::lkGder(pointers.data(), result.data(), got[0].data(), got[2].data(), got[1].data(),
                                 got[3].data(), got[4].data(), &threshold, taps[0].data(), taps[2].data(),
                                 taps[1].data(), taps[3].data(), taps[4].data(), m, n, int32_t(ld),
                                 int32_t(taps[2].size()), int32_t(ls), int32_t(taps[3].size()),
                                 int32_t(taps[4].size()), uint8_t(normalFlow))
             : TypeParam::lk(frames[0].data(), frames[1].data(), result.data(), got[0].data(), got[1].data(),
                             got[2].data(), got[3].data(), got[4].data(), &threshold, m, n);
        SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << m << "x" << n);
        for (int k = 0; k < 5; ++k) { ASSERT_EQ(got[k], sums[k]) << "sum " << k; }
        auto same = [](T a, T b) { return a == b || (a != a && b != b); };
        ASSERT_TRUE(std::equal(result.begin(), result.end(), want.begin(), want.end(), same));
        TypeParam::temporal(pointers.data() + first, got[0].data(), taps[1].data(), m * n, int32_t(ls));
        TypeParam::acrossColumns(smoothed.data(), got[1].data(), taps[2].data(), m, n, int32_t(taps[2].size()));
        TypeParam::downRows(across.data(), got[2].data(), taps[3].data(), m, n, int32_t(taps[3].size()));
        ASSERT_EQ(std::vector<Image<T>>(got, got + 3), (std::vector<Image<T>>{smoothed, across, gderX}));
    }
}

// Below one row, column or pixel nothing is read or written: one sentinel serves as every buffer.
TYPED_TEST(LucasKanade, ImagesWithoutPixelsTouchNoBuffer)
{
    for (const auto &[m, n] : {std::pair{0, 3}, {3, 0}, {0, 0}, {-1, 3}, {3, -2}, {-2, -3}}) {
        typename TypeParam::T b = -7, *frames[1] = {&b};
        TypeParam::lk(&b, &b, &b, &b, &b, &b, &b, &b, &b, m, n);
        TypeParam::lkGder(frames, &b, &b, &b, &b, &b, &b, &b, &b, &b, &b, &b, &b, m, n, 1, 1, 1, 1, 1, 1);
        TypeParam::acrossColumns(&b, &b, &b, m, n, 1), TypeParam::downRows(&b, &b, &b, m, n, 1);
        TypeParam::temporal(frames, &b, &b, std::min(m, n), 1);
        EXPECT_EQ(b, -7) << m << " x " << n;
    }
}

} // namespace
