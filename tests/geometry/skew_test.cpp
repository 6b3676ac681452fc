#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

enum Kernel { nearest, linear, cubic };

template <class T>
T w1(T s) { return s * s * s - 2 * s * s + 1; }
template <class T>
T w2(T s) { return -s * s * s + 5 * s * s - 8 * s + 4; }

// Output position k of a line shifted by s, the source surrounded by the
// background.
template <class T>
std::vector<T> plainSkew(Kernel kernel, const std::vector<T> &src, int outLength, T s, T bg)
{
    const int n = int(src.size());
    auto S = [&](int j) { return j >= 0 && j < n ? src[j] : bg; };
    std::vector<T> out(outLength, bg);
    const int i = kernel == nearest ? int(std::floor(s + T(0.5))) : int(s);
    const T f = std::fabs(s - T(i));
    for (int k = 0; k < outLength; ++k) {
        if (kernel == nearest || f == 0) {
            out[k] = S(k - i);
        } else if (kernel == linear && s > 0) {
            if (k >= i && k <= i + n) out[k] = f * S(k - i - 1) + (1 - f) * S(k - i);
        } else if (kernel == linear) {
            if (k - i < n) out[k] = (1 - f) * S(k - i) + f * S(k - i + 1);
        } else {
            const T a = s > 0 ? 1 - (s - T(i)) : T(i) - s;
            const int j = s > 0 ? k - i - 2 : k - i - 1; // first of the four taps
            if (j + 3 >= 0 && j < n)
                out[k] = w2(1 + a) * S(j) + w1(a) * S(j + 1) + w1(1 - a) * S(j + 2) + w2(2 - a) * S(j + 3);
        }
    }
    return out;
}

template <class T>
void skew(Kernel kernel, const std::vector<T> &src, int srcStride, int outLength, T s, int dstStride, T *dst,
          int first, T bg)
{
    auto run = [&](auto f) { f(src.data(), int(src.size()) / srcStride, outLength, s, srcStride, dstStride, dst, first, &bg); };
    if constexpr (std::is_same_v<T, double>)
        kernel == nearest ? run(ORNEX_Skew_NNI_D) : kernel == linear ? run(ORNEX_Skew_BLI_D) : run(ORNEX_Skew_BCI_D);
    else
        kernel == nearest ? run(ORNEX_Skew_NNI_R) : kernel == linear ? run(ORNEX_Skew_BLI_R) : run(ORNEX_Skew_BCI_R);
}

template <class T>
class Skew : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Skew, Precisions);

TYPED_TEST(Skew, EveryKernelMatchesTheShiftedLineWithBackgroundAround)
{
    using T = TypeParam;
    std::mt19937 random(17);
    for (int trial = 0; trial < 3000; ++trial) {
        const Kernel kernel = Kernel(trial % 3);
        const int n = 1 + random() % 9, outLength = random() % 16, first = random() % (outLength + 2);
        const int srcStride = 1 + random() % 3, dstStride = 1 + random() % 3;
        std::vector<T> src(n);
        for (T &v : src) v = T(std::uniform_real_distribution<double>(-9, 9)(random));
        const T bg = T(int(random() % 7) - 3);
        // Integer, half and quarter offsets and any in between, both signs.
        const double q = int(random() % 101) - 50;
        const T s = T(random() % 2 ? q / 4 : q / 4 + std::uniform_real_distribution<double>(-0.3, 0.3)(random));
        std::vector<T> strided(size_t(n) * srcStride, T(1e6));
        for (int j = 0; j < n; ++j) strided[j * srcStride] = src[j];
        const auto line = plainSkew(kernel, src, outLength, s, bg);
        std::vector<T> expected((outLength + 1) * dstStride, T(-77)), out = expected;
        for (int k = first; k < outLength; ++k) expected[(k - first) * dstStride] = line[k];
        skew<T>(kernel, strided, srcStride, outLength, s, dstStride, out.data(), first, bg);
        const T tolerance = kernel == cubic ? T(std::is_same_v<T, double> ? 1e-12 : 2e-5) : T(0);
        for (size_t k = 0; k < out.size(); ++k)
            ASSERT_NEAR(out[k], expected[k], tolerance) << kernel << " offset " << s << " length " << n << " at " << k;
    }
}

TYPED_TEST(Skew, KnownLines)
{
    using T = TypeParam;
    const std::vector<T> line = {1, 2, 3};
    T out[5];
    // 0.5 shifts by one position, -0.5 by none; an empty line shows the
    // background.
    skew<T>(nearest, line, 1, 5, T(0.5), 1, out, 0, T(9));
    EXPECT_EQ(std::vector<T>(out, out + 5), (std::vector<T>{9, 1, 2, 3, 9}));
    skew<T>(nearest, line, 1, 5, T(-0.5), 1, out, 0, T(9));
    EXPECT_EQ(std::vector<T>(out, out + 5), (std::vector<T>{1, 2, 3, 9, 9}));
    for (Kernel kernel : {nearest, linear, cubic}) {
        skew<T>(kernel, {}, 1, 3, T(0.5), 1, out, 0, T(5));
        EXPECT_EQ(std::vector<T>(out, out + 3), std::vector<T>(3, T(5))) << kernel;
    }
    // Cubic at offset 0.5: weights (-1/8, 5/8, 5/8, -1/8), position 0 sees
    // source -0.5 with taps -2, -1 on the background 0.
    skew<T>(cubic, {8, 16, 24, 32, 48}, 1, 5, T(0.5), 1, out, 0, T(0));
    EXPECT_EQ(out[0], T(0.625 * 8 - 0.125 * 16));
    EXPECT_EQ(out[2], T(20));
}

} // namespace
