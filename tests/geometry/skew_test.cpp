#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "ornex_rt.h"

enum Kernel { nearest, linear, cubic };

// Output position k of a line shifted by s, the source surrounded by the
// background.
template <class T>
std::vector<T> plainSkew(Kernel kernel, const std::vector<T> &src, int outLength, T s, T bg)
{
    const int n = int(src.size());
    auto w1 = [](T t) { return t * t * t - 2 * t * t + 1; };
    auto w2 = [](T t) { return -t * t * t + 5 * t * t - 8 * t + 4; };
    auto S = [&](int j) { return j >= 0 && j < n ? src[j] : bg; };
    std::vector<T> out(outLength, bg);
    const int i = kernel == nearest ? int(std::floor(s + T(0.5))) : int(s);
    const T f = std::fabs(s - T(i));
    for (int k = 0; k < outLength; ++k) {
        const T a = s > 0 ? 1 - (s - T(i)) : T(i) - s;
        const int j = s > 0 ? k - i - 2 : k - i - 1; // the first of the four cubic taps
        if (kernel == nearest || f == 0) out[k] = S(k - i);
        else if (kernel == linear && s > 0) out[k] = k >= i && k <= i + n ? f * S(k - i - 1) + (1 - f) * S(k - i) : bg;
        else if (kernel == linear) out[k] = k - i < n ? (1 - f) * S(k - i) + f * S(k - i + 1) : bg;
        else if (j + 3 >= 0 && j < n) out[k] = w2(1 + a) * S(j) + w1(a) * S(j + 1) + w1(1 - a) * S(j + 2) + w2(2 - a) * S(j + 3);
    }
    return out;
}

template <class T>
class Skew : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Skew, Precisions);

TYPED_TEST(Skew, EveryKernelMatchesTheShiftedLineWithBackgroundAround)
{
    using T = TypeParam;
    std::mt19937 random(17);
    for (int trial = 0; trial < 4000; ++trial) {
        const Kernel kernel = Kernel(trial % 3);
        const int n = random() % 9, outLength = random() % 16, first = random() % (outLength + 2);
        const int srcStride = 1 + random() % 3, dstStride = 1 + random() % 3;
        const T bg = T(int(random() % 7) - 3);
        // Whole, half and quarter offsets and any in between, both signs.
        const double q = int(random() % 101) - 50;
        const T s = T(random() % 2 ? q / 4 : q / 4 + std::uniform_real_distribution<double>(-0.3, 0.3)(random));
        std::vector<T> src(n), strided(size_t(n) * srcStride, T(1e6));
        for (int j = 0; j < n; ++j) strided[j * srcStride] = src[j] = T(std::uniform_real_distribution<double>(-9, 9)(random));
        const auto line = n ? plainSkew(kernel, src, outLength, s, bg) : std::vector<T>(outLength, bg);
        std::vector<T> expected((outLength + 1) * dstStride, T(-77)), out = expected; // stored from position `first` on
        for (int k = first; k < outLength; ++k) expected[(k - first) * dstStride] = line[k];
        auto run = [&](auto f) { f(strided.data(), n, outLength, s, srcStride, dstStride, out.data(), first, &bg); };
        if constexpr (std::is_same_v<T, double>)
            kernel == nearest ? run(ORNEX_Skew_NNI_D) : kernel == linear ? run(ORNEX_Skew_BLI_D) : run(ORNEX_Skew_BCI_D);
        else
            kernel == nearest ? run(ORNEX_Skew_NNI_R) : kernel == linear ? run(ORNEX_Skew_BLI_R) : run(ORNEX_Skew_BCI_R);
        const T tolerance = kernel == cubic ? T(std::is_same_v<T, double> ? 1e-12 : 2e-5) : T(0);
        for (size_t k = 0; k < out.size(); ++k)
            ASSERT_NEAR(out[k], expected[k], tolerance) << kernel << " offset " << s << " length " << n << " at " << k;
    }
}
