#include "precisions.hpp"

// The a = -1 cubic weights for taps at distance 0..1 and 1..2.
template <class T> T w1(T s) { return s * s * s - 2 * s * s + 1; }
template <class T> T w2(T s) { return -s * s * s + 5 * s * s - 8 * s + 4; }

// Along one axis: the value itself at an integer position, a linear blend
// next to the first and the second-to-last line, else the cubic.
template <class T>
T along(T f, int i, int size, bool integer, const T *v)
{
    if (integer) return v[i];
    if (i == 0 || i == size - 2) return (1 - f) * v[i] + f * v[i + 1];
    return v[i - 1] * w2(1 + f) + v[i] * w1(f) + v[i + 1] * w1(1 - f) + v[i + 2] * w2(2 - f);
}

template <class T>
T plainSample(int method, const T *s, T y, T x, int M, int N)
{
    const int r = int(y), c = int(x), r1 = std::min(r + 1, M - 1), c1 = std::min(c + 1, N - 1);
    const T fy = y - T(r), fx = x - T(c);
    auto round = [](T v) { return int(v + (v >= 0 ? T(0.5) : T(-0.5))); };
    if (method == 1) return s[round(y) + round(x) * M];
    auto down = [&](int col) { return s[r + col * M] * (1 - fy) + s[r1 + col * M] * fy; };
    if (method == 2) return down(c1) * fx + down(c) * (1 - fx);
    T column[4];
    const int count = x == T(c) ? 1 : c == 0 || c == N - 2 ? 2 : 4, first = count == 4 ? c - 1 : c;
    for (int k = 0; k < count; ++k) column[k] = along(fy, r, M, y == T(r), s + (first + k) * M);
    return along(fx, count == 4, count, count == 1, column);
}

// Output position k of a line shifted by s, the source surrounded by the background.
template <class T>
std::vector<T> plainSkew(int kernel, const std::vector<T> &src, int outLength, T s, T bg)
{
    const int n = int(src.size());
    auto S = [&](int j) { return j >= 0 && j < n ? src[j] : bg; };
    std::vector<T> out(outLength, bg);
    const int i = kernel == 0 ? int(std::floor(s + T(0.5))) : int(s);
    const T f = std::fabs(s - T(i));
    for (int k = 0; k < outLength; ++k) {
        const T a = s > 0 ? 1 - (s - T(i)) : T(i) - s;
        const int j = s > 0 ? k - i - 2 : k - i - 1; // the first of the four cubic taps
        if (kernel == 0 || f == 0) out[k] = S(k - i);
        else if (kernel == 1 && s > 0) out[k] = k >= i && k <= i + n ? f * S(k - i - 1) + (1 - f) * S(k - i) : bg;
        else if (kernel == 1) out[k] = k - i < n ? (1 - f) * S(k - i) + f * S(k - i + 1) : bg;
        else if (j + 3 >= 0 && j < n)
            out[k] = w2(1 + a) * S(j) + w1(a) * S(j + 1) + w1(1 - a) * S(j + 2) + w2(2 - a) * S(j + 3);
    }
    return out;
}

PRECISION_SUITE(Resampling);

TYPED_TEST(Resampling, EveryPointKernelMatchesAPlainLoopOnEveryPlane)
{
    using T = TypeParam;
    std::mt19937 random(3);
    for (int trial = 0; trial < 3000; ++trial) {
        const int M = 1 + random() % 6, N = 1 + random() % 6, planes = 1 + random() % 4, method = 1 + trial % 3;
        // Planes M elements apart with infinite gaps: a tap past the last row or column gives
        // NaN. M + 1 finite values lead, for the nearest kernel's rounding of -0.5 to -1.
        const int inStride = M * N + M, outStride = 2 * planes + 1, index = random() % 3, lead = M + 1;
        std::vector<T> buffer(lead + size_t(inStride) * planes, T(INFINITY));
        for (int i = -lead; i < M * N * planes; ++i)
            buffer[lead + (i < 0 ? i : i % (M * N) + i / (M * N) * inStride)] = uniform<T>(random, -50, 50);
        const T *source = buffer.data() + lead;
        // On the grid, on quarters or anywhere, up to the last line (nearest: from -0.5 on).
        auto position = [&](int size) {
            const T low = T(method == 1 ? -0.5 : 0), high = std::max(T(0), T(size - (method == 1 ? 1.5 : 1)));
            const int kind = random() % 3;
            const T quarter = low + T(int(random() % (4 * size))) / 4;
            const T anywhere = kind == 2 ? uniform<T>(random, low, high) : T(0);
            return std::min(high, kind == 0 ? T(int(random() % size)) : kind == 1 ? quarter : anywhere);
        };
        const T y = position(M), x = position(N);
        std::vector<T> out(index + outStride * planes + 1, T(-999)), expected = out;
        for (int p = 0; p < planes; ++p)
            expected[index + p * outStride] = plainSample(method, source + p * inStride, y, x, M, N);
        const auto nearest = pick<T>(ORNEX_NN_Interp_D, ORNEX_NN_Interp_R);
        const auto area = method == 2 ? pick<T>(ORNEX_PosVal_BL_Interp_D, ORNEX_PosVal_BL_Interp_R)
                                      : pick<T>(ORNEX_PosVal_BC_Interp_D, ORNEX_PosVal_BC_Interp_R);
        if (method == 1) nearest(source, y, x, M, out.data(), index, planes, inStride, outStride);
        else area(source, y, x, M, N, out.data(), index, planes, inStride, outStride);
        // The cubic weights are polynomials whose order of evaluation is free.
        const T allowed = method == 3 ? T(std::is_same_v<T, double> ? 1e-11 : 2e-4) : T(0);
        for (size_t i = 0; i < out.size(); ++i)
            ASSERT_TRUE(out[i] == expected[i] || std::fabs(out[i] - expected[i]) <= allowed)
                << out[i] << " vs " << expected[i] << " by " << method << " at " << y << "," << x << " in " << M << N;
    }
}

TYPED_TEST(Resampling, EverySkewKernelMatchesTheShiftedLineWithBackgroundAround)
{
    using T = TypeParam;
    std::mt19937 random(17);
    for (int trial = 0; trial < 4000; ++trial) {
        const int kernel = trial % 3, n = random() % 9, outLength = random() % 16, first = random() % (outLength + 2);
        const int srcStride = 1 + random() % 3, dstStride = 1 + random() % 3;
        const T bg = T(int(random() % 7) - 3);
        const double q = int(random() % 101) - 50;
        const T s = T(random() % 2 ? q / 4 : q / 4 + uniform(random, -0.3, 0.3));
        std::vector<T> src(n), strided(size_t(n) * srcStride, T(1e6));
        for (int j = 0; j < n; ++j) strided[j * srcStride] = src[j] = uniform<T>(random, -9, 9);
        const auto line = n ? plainSkew(kernel, src, outLength, s, bg) : std::vector<T>(outLength, bg);
        std::vector<T> expected((outLength + 1) * dstStride, T(-77)), out = expected;
        for (int k = first; k < outLength; ++k) expected[(k - first) * dstStride] = line[k];
        const auto skew = std::array{pick<T>(ORNEX_Skew_NNI_D, ORNEX_Skew_NNI_R),
                                     pick<T>(ORNEX_Skew_BLI_D, ORNEX_Skew_BLI_R),
                                     pick<T>(ORNEX_Skew_BCI_D, ORNEX_Skew_BCI_R)}[kernel];
        skew(strided.data(), n, outLength, s, srcStride, dstStride, out.data(), first, &bg);
        const T allowed = kernel == 2 ? T(std::is_same_v<T, double> ? 1e-12 : 2e-5) : T(0);
        for (size_t k = 0; k < out.size(); ++k)
            ASSERT_NEAR(out[k], expected[k], allowed) << kernel << " offset " << s << " length " << n << " at " << k;
    }
}
