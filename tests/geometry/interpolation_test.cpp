#include <gtest/gtest.h>

#include <random>

#include "ornex_rt.h"

// Along one axis: the value itself at an integer position, a linear blend
// next to the first and the second-to-last line, else the a = -1 cubic.
template <class T>
T along(T f, int i, int size, bool integer, const T *v)
{
    auto w1 = [](T s) { return s * s * s - 2 * s * s + 1; };
    auto w2 = [](T s) { return -s * s * s + 5 * s * s - 8 * s + 4; };
    if (integer || i == 0 || i == size - 2) return integer ? v[i] : (1 - f) * v[i] + f * v[i + 1];
    return v[i - 1] * w2(1 + f) + v[i] * w1(f) + v[i + 1] * w1(1 - f) + v[i + 2] * w2(2 - f);
}

template <class T>
T plainSample(int method, const T *s, T y, T x, int M, int N)
{
    const int r = int(y), c = int(x), r1 = std::min(r + 1, M - 1), c1 = std::min(c + 1, N - 1);
    const T fy = y - T(r), fx = x - T(c);
    if (method == 1) return s[int(y + (y >= 0 ? T(0.5) : T(-0.5))) + int(x + (x >= 0 ? T(0.5) : T(-0.5))) * M];
    if (method == 2) return (s[r + c1 * M] * (1 - fy) + s[r1 + c1 * M] * fy) * fx + (s[r + c * M] * (1 - fy) + s[r1 + c * M] * fy) * (1 - fx);
    T column[4];
    const int count = x == T(c) ? 1 : c == 0 || c == N - 2 ? 2 : 4, first = count == 4 ? c - 1 : c;
    for (int k = 0; k < count; ++k) column[k] = along(fy, r, M, y == T(r), s + (first + k) * M);
    return along(fx, count == 4, count, count == 1, column);
}

template <class T, class D, class R>
constexpr auto pick(D d, R r)
{
    if constexpr (std::is_same_v<T, double>) return d; else return r;
}

template <class T>
class Interpolation : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Interpolation, Precisions);

TYPED_TEST(Interpolation, EveryKernelMatchesAPlainLoopOnEveryPlane)
{
    using T = TypeParam;
    std::mt19937 random(3);
    for (int trial = 0; trial < 3000; ++trial) {
        const int M = 1 + random() % 6, N = 1 + random() % 6, planes = 1 + random() % 4, method = 1 + trial % 3;
        // Planes M elements apart with infinite gaps: a tap past the last row
        // or column gives NaN. M + 1 finite values lead, for the nearest
        // kernel's rounding of -0.5 to -1.
        const int inStride = M * N + M, outStride = 2 * planes + 1, index = random() % 3, lead = M + 1;
        std::vector<T> buffer(lead + size_t(inStride) * planes, T(INFINITY));
        for (int i = -lead; i < M * N * planes; ++i)
            buffer[lead + (i < 0 ? i : i % (M * N) + i / (M * N) * inStride)] = T(std::uniform_real_distribution<double>(-50, 50)(random));
        const T *source = buffer.data() + lead;
        // On the grid, on quarters (halves included) or anywhere, up to the
        // last line; the nearest kernel from -0.5 to where it rounds to it.
        auto position = [&](int size) {
            const T low = T(method == 1 ? -0.5 : 0), high = std::max(T(0), T(size - (method == 1 ? 1.5 : 1)));
            const int kind = random() % 3;
            return std::min(high, kind == 0 ? T(int(random() % size)) : kind == 1 ? low + T(int(random() % (4 * size))) / 4
                                                                              : T(std::uniform_real_distribution<double>(low, high)(random)));
        };
        const T y = position(M), x = position(N);
        std::vector<T> out(index + outStride * planes + 1, T(-999)), expected = out;
        for (int p = 0; p < planes; ++p) expected[index + p * outStride] = plainSample(method, source + p * inStride, y, x, M, N);
        if (method == 1) pick<T>(ORNEX_NN_Interp_D, ORNEX_NN_Interp_R)(source, y, x, M, out.data(), index, planes, inStride, outStride);
        const auto area = method == 2 ? pick<T>(ORNEX_PosVal_BL_Interp_D, ORNEX_PosVal_BL_Interp_R)
                                      : pick<T>(ORNEX_PosVal_BC_Interp_D, ORNEX_PosVal_BC_Interp_R);
        if (method != 1) area(source, y, x, M, N, out.data(), index, planes, inStride, outStride);
        // The cubic weights are polynomials whose order of evaluation is free.
        const T tolerance = method == 3 ? T(std::is_same_v<T, double> ? 1e-11 : 2e-4) : T(0);
        for (size_t i = 0; i < out.size(); ++i)
            if (out[i] != expected[i]) ASSERT_NEAR(out[i], expected[i], tolerance) << method << " at " << y << ", " << x << " of " << M << "x" << N;
    }
}
