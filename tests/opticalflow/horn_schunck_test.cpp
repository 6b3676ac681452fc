#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class Element, auto real, auto complex, auto derivative>
struct Member {
    using T = Element;
    static constexpr auto realFlow = real, complexFlow = complex, sobel = derivative;
};
using Members =
    ::testing::Types<Member<double, ORNEX_OpticalFlow_HS_D, ORNEX_OpticalFlow_HS_Z, ORNEX_SobelDerivative_HS_D>,
                     Member<float, ORNEX_OpticalFlow_HS_R, ORNEX_OpticalFlow_HS_C, ORNEX_SobelDerivative_HS_R>>;
template <class M>
class HornSchunck : public ::testing::Test {};
TYPED_TEST_SUITE(HornSchunck, Members);

enum Call { derivatives, realFlow, complexFlow };

// One call, every buffer one element longer than its size and filled with -9: [0] the result (room for complex),
// [1] velocityY (or Iy), [2..5] the line buffers, [6..11] the products, [12..15] the working columns.
template <class M, class T = typename M::T>
std::vector<std::vector<T>> run(Call call, const std::vector<T> &i1, const std::vector<T> &i2, int32_t m, int32_t n,
                                T lambda, bool useMax, bool useThreshold, int32_t sweeps, T threshold)
{
    const size_t rows = size_t(std::max(m, 0)), cols = size_t(std::max(n, 0)), px = rows * cols;
    std::vector<std::vector<T>> b;
    T *p[16], **next = p;
    for (size_t size : {2 * px, px, rows, rows, cols, cols, px, px, px, px, px, px, rows, rows, rows, rows}) { *next++ = b.emplace_back(size + 1, T(-9)).data(); }
    call == derivatives ? M::sobel(i1.data(), i2.data(), p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11], &lambda, m, n)
    : call == realFlow  ? M::realFlow(i1.data(), i2.data(), p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11], p[12],
                                      p[13], p[14], p[15], &lambda, useMax, useThreshold, &sweeps, &threshold, m, n)
                        : M::complexFlow(i1.data(), i2.data(), p[0], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11], p[12],
                                         p[13], p[14], p[15], &lambda, useMax, useThreshold, &sweeps, &threshold, m, n);
    return b;
}

// The derivatives and the sweeps written plainly, every step in T.
template <class T>
struct SlowFlow {
    std::vector<T> d[8], u, v, changes; // Ix, Iy, Ix^2, IxIy, Iy^2, IxIt, IyIt, F
    SlowFlow(const std::vector<T> &i1, const std::vector<T> &i2, int32_t m, int32_t n, T lambda, bool useMax,
             bool useThreshold, int32_t sweeps, T threshold)
        : u(i1.size(), T(0)), v(u)
    {
        // Indices outside the image are replaced by the nearest edge index; differences are previous minus next.
        auto I = [&](int32_t r, int32_t c) { return i1[std::clamp(r, 0, m - 1) + std::clamp(c, 0, n - 1) * m]; };
        for (int32_t i = 0, r = 0, c = 0; i < m * n; r = ++i % m, c = i / m) {
            auto columnSmoothed = [&](int32_t cc) { return I(r - 1, cc) + T(2) * I(r, cc) + I(r + 1, cc); };
            auto rowSmoothed = [&](int32_t rr) { return I(rr, c - 1) + T(2) * I(rr, c) + I(rr, c + 1); };
            const T x = (columnSmoothed(c - 1) - columnSmoothed(c + 1)) * T(0.125), t = i2[i] - i1[i];
            const T y = (rowSmoothed(r - 1) - rowSmoothed(r + 1)) * T(0.125);
            const T values[8] = {x, y, x * x, x * y, y * y, x * t, y * t, T(1) / (x * x + lambda + y * y)};
            for (int k = 0; k < 8; ++k) { d[k].push_back(values[k]); }
        }
        // Jacobi sweeps: every mean reads the previous sweep; a missing neighbour is the pixel itself.
        while (changes.empty() || !((useMax && int32_t(changes.size()) == sweeps) || (useThreshold && threshold > changes.back()))) {
            std::vector<T> newU = u, newV = v;
            T largest = 0;
            for (int32_t i = 0, r = 0, c = 0; i < m * n; r = ++i % m, c = i / m) {
                auto mean = [&](const std::vector<T> &w) {
                    return T(0.25) * (w[r + 1 < m ? i + 1 : i] + w[r > 0 ? i - 1 : i] + w[c > 0 ? i - m : i] + w[c + 1 < n ? i + m : i]);
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
        const int32_t m = pick(1, 7), n = pick(1, 7), sweeps = pick(1, 4), mode = trial % 3;
        const T lambda = T(pick(1, 16)) / 4;
        std::vector<T> i1(size_t(m) * n), i2(i1.size());
        for (size_t p = 0; p < i1.size(); ++p) { i1[p] = T(trial % 2 ? pick(0, 9) : pick(-500, 500) / 9.0), i2[p] = i1[p] + T(trial % 7 ? pick(-2, 2) : 0); }
        // A threshold met exactly by a sweep's change, which does not stop (200 sweeps at most); a threshold; a count.
        const T threshold = mode ? T(pick(1, 100)) / 64 : SlowFlow<T>(i1, i2, m, n, lambda, true, false, sweeps, 0).changes.back();
        const int32_t cap = mode == 0 ? 200 : sweeps;
        const SlowFlow<T> want(i1, i2, m, n, lambda, mode != 1, mode != 2, cap, threshold);
        SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << m << "x" << n);
        const auto d = run<TypeParam>(derivatives, i1, i2, m, n, lambda, false, false, 0, T(0));
        for (int k = 0; k < 8; ++k) { ASSERT_EQ(std::vector<T>(d[k + 4 * (k > 1)].begin(), d[k + 4 * (k > 1)].begin() + m * n), want.d[k]); }
        const auto real = run<TypeParam>(realFlow, i1, i2, m, n, lambda, mode != 1, mode != 2, cap, threshold);
        const auto complex = run<TypeParam>(complexFlow, i1, i2, m, n, lambda, mode != 1, mode != 2, cap, threshold);
        for (int32_t i = 0; i < m * n; ++i) { // _C/_Z set u and v aside in the first and third product arrays
            const T u = want.u[i], v = want.v[i], got[6] = {real[0][i], real[1][i], complex[0][2 * i], complex[0][2 * i + 1], complex[6][i], complex[8][i]};
            ASSERT_EQ(std::vector<T>(got, got + 6), std::vector<T>({u * u + v * v, v, u, v, u, v})) << i;
        }
    }
}

TYPED_TEST(HornSchunck, ImagesWithoutPixelsTouchNoBuffer)
{
    using T = typename TypeParam::T;
    for (const auto &[m, n] : {std::pair{0, 3}, {3, 0}, {0, 0}, {-1, 3}, {3, -2}, {-2, -3}}) {
        for (Call call : {derivatives, realFlow, complexFlow}) {
            for (const auto &b : run<TypeParam>(call, {1}, {1}, m, n, T(1), true, false, 2, T(0))) { EXPECT_EQ(b, std::vector<T>(b.size(), T(-9))); }
        }
    }
}

TYPED_TEST(HornSchunck, RampMovingRightGivesTheDefinedSign)
{
    using T = typename TypeParam::T;
    // I = c moving 0.4 columns right: It = -0.4, Iy = 0 and away from the edges Ix = -1 (previous minus next), so
    // Ix u + It = 0 at u = -0.4: the flow has the opposite sign of the motion; v stays 0.
    std::vector<T> image1(30 * 40), image2(30 * 40);
    for (size_t p = 0; p < image1.size(); ++p) { image1[p] = T(p / 30), image2[p] = T(p / 30 - 0.4); }
    const auto flow = run<TypeParam>(complexFlow, image1, image2, 30, 40, T(1), true, false, 300, T(0));
    for (size_t p = 30 * 15; p < 30 * 25; ++p) { EXPECT_NEAR(flow[0][2 * p], -0.4, 1e-3); EXPECT_EQ(flow[0][2 * p + 1], T(0)); }
}

} // namespace
