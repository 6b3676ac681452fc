#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T>
T w1(T s) { return s * s * s - 2 * s * s + 1; }
template <class T>
T w2(T s) { return -s * s * s + 5 * s * s - 8 * s + 4; }

// Four taps with the a = -1 cubic, two next to the first and the
// second-to-last line, one at an integer position.
template <class T>
T cubicAlong(T f, int i, int size, bool integer, const T *v, int stride)
{
    if (integer) return v[i * stride];
    if (i == 0 || i == size - 2) return (1 - f) * v[i * stride] + f * v[(i + 1) * stride];
    return v[(i - 1) * stride] * w2(1 + f) + v[i * stride] * w1(f) + v[(i + 1) * stride] * w1(1 - f) +
           v[(i + 2) * stride] * w2(2 - f);
}

template <class T>
T plainSample(int method, const T *s, T y, T x, int M, int N)
{
    if (method == 1) return s[int(y + (y >= 0 ? T(0.5) : T(-0.5))) + int(x + (x >= 0 ? T(0.5) : T(-0.5))) * M];
    const int r = int(y), c = int(x), r1 = std::min(r + 1, M - 1), c1 = std::min(c + 1, N - 1);
    const T fy = y - T(r), fx = x - T(c);
    auto S = [&](int rr, int cc) { return s[rr + cc * M]; };
    if (method == 2)
        return (S(r, c1) * (1 - fy) + S(r1, c1) * fy) * fx + (S(r, c) * (1 - fy) + S(r1, c) * fy) * (1 - fx);
    T column[4];
    const bool oneColumn = x == T(c), twoColumns = c == 0 || c == N - 2;
    const int first = oneColumn || twoColumns ? c : c - 1, count = oneColumn ? 1 : twoColumns ? 2 : 4;
    for (int k = 0; k < count; ++k) column[k] = cubicAlong(fy, r, M, y == T(r), s + (first + k) * M, 1);
    return count == 4 ? cubicAlong(fx, 1, 4, false, column, 1) : cubicAlong(fx, 0, 2, count == 1, column, 1);
}

template <class T>
void sample(int method, const T *s, T y, T x, int M, int N, T *d, int index, int planes, int ss, int ds)
{
    constexpr bool D = std::is_same_v<T, double>;
    if constexpr (D) {
        if (method == 1) ORNEX_NN_Interp_D(s, y, x, M, d, index, planes, ss, ds);
        else if (method == 2) ORNEX_PosVal_BL_Interp_D(s, y, x, M, N, d, index, planes, ss, ds);
        else ORNEX_PosVal_BC_Interp_D(s, y, x, M, N, d, index, planes, ss, ds);
    } else {
        if (method == 1) ORNEX_NN_Interp_R(s, y, x, M, d, index, planes, ss, ds);
        else if (method == 2) ORNEX_PosVal_BL_Interp_R(s, y, x, M, N, d, index, planes, ss, ds);
        else ORNEX_PosVal_BC_Interp_R(s, y, x, M, N, d, index, planes, ss, ds);
    }
}

template <class T>
class Interpolation : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Interpolation, Precisions);

TYPED_TEST(Interpolation, EveryKernelMatchesThePlainDefinitionOnEveryPlane)
{
    using T = TypeParam;
    std::mt19937 random(3);
    for (int trial = 0; trial < 3000; ++trial) {
        const int M = 2 + random() % 6, N = 2 + random() % 6, planes = 1 + random() % 4, method = 1 + trial % 3;
        std::vector<T> source(size_t(M) * N * planes);
        for (T &v : source) v = T(std::uniform_real_distribution<double>(-50, 50)(random));
        // Positions on the grid, on halves and quarters, and anywhere; the
        // nearest kernel may round the last half up past the image only if
        // the image is big enough, so keep it inside.
        auto position = [&](int size) {
            const int kind = random() % 3;
            const T limit = T(method == 1 ? size - 1.5 : size - 1);
            const T p = kind == 0 ? T(int(random() % size)) : kind == 1 ? T(int(random() % (4 * size))) / 4
                                                                        : T(std::uniform_real_distribution<double>(0, limit)(random));
            return std::min(p, limit);
        };
        const T y = position(M), x = position(N);
        const int index = random() % 3, stride = planes * 2 + 1;
        std::vector<T> out(index + stride * planes + 1, T(-999));
        std::vector<T> expected = out;
        for (int p = 0; p < planes; ++p)
            expected[index + p * stride] = plainSample(method, source.data() + p * M * N, y, x, M, N);
        sample<T>(method, source.data(), y, x, M, N, out.data(), index, planes, M * N, stride);
        for (size_t i = 0; i < out.size(); ++i) {
            // The cubic weights are polynomials whose evaluation order is free.
            const T tolerance = method == 3 ? T(std::is_same_v<T, double> ? 1e-11 : 2e-4) : T(0);
            ASSERT_NEAR(out[i], expected[i], tolerance) << "method " << method << " at " << y << ", " << x;
        }
    }
}

TYPED_TEST(Interpolation, KnownValues)
{
    using T = TypeParam;
    // On the ramp 3r + 5c + 1 the cubic weights at fraction 0.5 are
    // (-1/8, 5/8, 5/8, -1/8): the ramp itself. At 0.25 they are -0.140625,
    // 0.890625, 0.296875, -0.046875, centred at 0.34375: the a = -1 kernel
    // overshoots a ramp there.
    std::vector<T> ramp(8 * 9);
    for (int i = 0; i < 72; ++i) ramp[i] = T(3 * (i % 8) + 5 * (i / 8) + 1);
    T out[4];
    sample<T>(3, ramp.data(), T(2.5), T(3.5), 8, 9, out, 0, 1, 0, 0);
    sample<T>(3, ramp.data(), T(3), T(3.25), 8, 9, out + 1, 0, 1, 0, 0);
    sample<T>(1, ramp.data(), T(2.5), T(-0.4), 8, 9, out + 2, 0, 1, 0, 0);
    sample<T>(2, ramp.data(), T(7), T(8), 8, 9, out + 3, 0, 1, 0, 0);
    EXPECT_EQ(out[0], T(3 * 2.5 + 5 * 3.5 + 1));
    EXPECT_EQ(out[1], T(10 + 5 * 3.34375));
    EXPECT_EQ(out[2], T(3 * 3 + 1)) << "halves away from zero, -0.4 to column 0";
    EXPECT_EQ(out[3], T(3 * 7 + 5 * 8 + 1)) << "the last row and column clamp their neighbours";
}

} // namespace
