#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class Element, bool isComplex, auto fixed, auto gder, auto convT, auto convX, auto convY>
struct Member {
    using T = Element;
    static constexpr bool complexResult = isComplex;
    static constexpr auto lk = fixed, lkGder = gder, temporal = convT, acrossColumns = convX, downRows = convY;
};
#define ORNEX_MEMBER(T, complex, S, K)                                                                             \
    Member<T, complex, ORNEX_OpticalFlow_LK_##S, ORNEX_OpticalFlow_LK_GDER_##S, ORNEX_OFLK_ConvT_##K, ORNEX_OFLK_ConvX_##K, ORNEX_OFLK_ConvY_##K>
using Members = ::testing::Types<ORNEX_MEMBER(double, false, D, D), ORNEX_MEMBER(float, false, R, R),
                                 ORNEX_MEMBER(float, true, C, R), ORNEX_MEMBER(double, true, Z, D)>;
template <class M>
class LucasKanade : public ::testing::Test {};
TYPED_TEST_SUITE(LucasKanade, Members);

template <class T>
using Image = std::vector<T>;

// Correlation centred at h = taps/2 across columns or down rows, summed in tap order. Where the taps reach outside
// the image, the pixel is 0 (`leaveOut` false) or only the terms inside are summed.
template <class T>
Image<T> slowCorrelate(const Image<T> &in, int32_t m, int32_t n, const Image<T> &taps, bool acrossColumns, bool leaveOut)
{
    const int32_t h = int32_t(taps.size()) / 2;
    Image<T> out(in.size(), T(0));
    for (int32_t p = 0, r = 0, c = 0; p < m * n; r = ++p % m, c = p / m) {
        for (int32_t k = 0; k < int32_t(taps.size()) && (leaveOut || (std::min(r, c) >= h && r < m - h && c < n - h)); ++k) {
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
    const Image<T> derivative = {T(-1) / T(12), T(2) / T(3), T(0), T(-2) / T(3), T(1) / T(12)}, binomial = {T(1) / T(16), T(1) / T(4), T(3) / T(8), T(1) / T(4), T(1) / T(16)};
    std::mt19937 random(8);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int trial = 0; trial < 600; ++trial) {
        const bool gder = trial % 2, complex = TypeParam::complexResult;
        const int32_t m = pick(1, 9), n = pick(1, 9), pattern = trial / 2 % 4, normalFlow = trial / 8 % 2 * (1 + trial % 200);
        Image<T> taps[5], got[5]; // temporal derivative and smoothing, spatial derivative and smoothing, window
        for (auto &filter : taps) { filter.resize(size_t(pick(1, 5))), std::generate(filter.begin(), filter.end(), [&] { return T(pick(-8, 8)) / 8; }); }
        const size_t ld = taps[0].size(), ls = taps[1].size(); // Frames of noise; of stripes across the columns (Iy = 0: an eigenvalue 0); flat; of reals.
        std::vector<Image<T>> frames(std::max<size_t>({2, ld, ls}), Image<T>(size_t(m) * n));
        std::vector<const T *> pointers;
        for (auto &frame : frames) {
            const int32_t offset = pick(0, 3);
            for (int32_t p = 0; p < m * n; ++p) { frame[p] = T(pattern == 0 ? pick(0, 9) : pattern == 1 ? p / m * (p / m) % 7 + offset : pattern == 2 ? offset : std::sin(p + offset)); }
            pointers.push_back(frame.data());
        }
        auto separable = [&](const Image<T> &in, const Image<T> &across, const Image<T> &down, bool leaveOut) {
            return slowCorrelate(slowCorrelate(in, m, n, across, true, leaveOut), m, n, down, false, leaveOut);
        };
        // GDER: both temporal filters centred on the same frame. Fixed: five-point differences with the
        // previous-minus-next sign, terms outside the image left out, and It = image2 - image1.
        const Image<T> smoothed = slowTemporal(frames, ld > ls ? (ld - ls) / 2 : 0, taps[1]);
        const Image<T> ix = gder ? separable(smoothed, taps[2], taps[3], false) : slowCorrelate(frames[0], m, n, derivative, true, true);
        const Image<T> iy = gder ? separable(smoothed, taps[3], taps[2], false) : slowCorrelate(frames[0], m, n, derivative, false, true);
        Image<T> it = separable(slowTemporal(frames, ld > ls ? 0 : (ls - ld) / 2, taps[0]), taps[3], taps[3], false);
        Image<T> sums[5] = {ix, ix, iy, ix, iy}; // a, b, c, d, e
        for (size_t p = 0; p < it.size(); ++p) {
            it[p] = gder ? it[p] : frames[1][p] - frames[0][p];
            sums[0][p] *= ix[p], sums[1][p] *= iy[p], sums[2][p] *= iy[p], sums[3][p] *= it[p], sums[4][p] *= it[p];
        }
        for (auto &sum : sums) { sum = gder ? separable(sum, taps[4], taps[4], false) : separable(sum, binomial, binomial, true); }
        // Per pixel, the eigenvalues of [[a, b], [b, c]] and the full solution of it (u, v) = -(d, e).
        auto solve = [&](size_t i) {
            const T a = sums[0][i], b = sums[1][i], c = sums[2][i], d = sums[3][i], e = sums[4][i], negDet = b * b - a * c;
            const T mean = T(0.5) * (a + c), spread = T(0.5) * std::sqrt((a - c) * (a - c) + T(4) * b * b);
            return std::array<T, 9>{mean - spread, mean + spread, -(e * b - c * d) / negDet, -(b * d - e * a) / negDet, a, b, c, negDet, d + e};
        };
        // Thresholds met exactly by an eigenvalue (equal passes), or small integers.
        const T threshold = trial % 6 < 4 ? solve(size_t(pick(0, m * n - 1)))[trial % 6 / 2] : T(pick(-1, 2));
        Image<T> want(it.size() * (complex ? 2 : 1), T(0)), result(want.size(), T(-7));
        for (size_t i = 0; i < it.size(); ++i) {
            const auto [smaller, larger, u, v, a, b, c, negDet, dPlusE] = solve(i);
            const T x = a + b, y = b + c, norm = x * x + y * y, k = -dPlusE / norm;
            const T g = T(1) / std::sqrt((a - larger) * (a - larger) + b * b), n1 = b * g, n2 = (larger - a) * g;
            const T along = -(u * n1 + v * n2);
            auto put = [&](T re, T im, T squared) { complex ? (want[2 * i] = re, want[2 * i + 1] = im) : want[i] = squared; };
            if (gder && (int32_t(i) % m < int32_t(taps[4].size()) / 2 || int32_t(i) / m < int32_t(taps[4].size()) / 2)) {
                continue; // the first numWindowTaps/2 rows and columns
            } else if (gder ? !(smaller < threshold) && negDet < 0 : larger >= threshold && !(smaller < threshold)) {
                put(u, v, u * u + v * v); // a zero determinant is divided by
            } else if (!gder && larger >= threshold && !(norm < 0)) {
                put(x * k, y * k, x * k * (x * k) + y * k * (y * k)); // only the larger passes: along [[a, b], [b, c]] (1, 1)
            } else if (gder && normalFlow && !(larger < threshold) && std::fabs(negDet) > T(1e-8 / 255)) {
                // Projected on the unit eigenvector (n1, n2) of the larger eigenvalue; minus sign and crossed parts on purpose.
                put(along * n2, along * n1, along * along * (n1 * n1 + n2 * n2));
            }
        }
        std::fill_n(got, 5, Image<T>(it.size(), T(-7)));
        gder ? TypeParam::lkGder(pointers.data(), result.data(), got[0].data(), got[2].data(), got[1].data(), got[3].data(), got[4].data(),
                                 &threshold, taps[0].data(), taps[2].data(), taps[1].data(), taps[3].data(), taps[4].data(), m, n,
                                 int32_t(ld), int32_t(taps[2].size()), int32_t(ls), int32_t(taps[3].size()), int32_t(taps[4].size()),
                                 uint8_t(normalFlow))
             : TypeParam::lk(frames[0].data(), frames[1].data(), result.data(), got[0].data(), got[1].data(), got[2].data(),
                             got[3].data(), got[4].data(), &threshold, m, n);
        SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << m << "x" << n);
        for (int k = 0; k < 5; ++k) { ASSERT_EQ(got[k], sums[k]) << "sum " << k; }
        ASSERT_TRUE(std::equal(result.begin(), result.end(), want.begin(), want.end(), [](T a, T b) { return a == b || (a != a && b != b); }));
        // The exported convolutions on their own.
        TypeParam::acrossColumns(frames[0].data(), got[0].data(), taps[2].data(), m, n, int32_t(taps[2].size()));
        TypeParam::downRows(frames[0].data(), got[1].data(), taps[3].data(), m, n, int32_t(taps[3].size()));
        TypeParam::temporal(pointers.data(), got[2].data(), taps[0].data(), m * n, int32_t(ld));
        ASSERT_EQ(std::vector<Image<T>>(got, got + 3), (std::vector<Image<T>>{slowCorrelate(frames[0], m, n, taps[2], true, false),
                                        slowCorrelate(frames[0], m, n, taps[3], false, false), slowTemporal(frames, 0, taps[0])}));
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
