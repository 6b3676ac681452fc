#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

enum Kernel { nearest, linear, cubic };

template <class T>
std::vector<T> skew(Kernel kernel, const std::vector<T> &source, int32_t outputLength, T offset, T background,
                    int32_t firstWritten = 0)
{
    std::vector<T> out(outputLength, T(-77));
    auto run = [&](auto function) {
        function(source.data(), int32_t(source.size()), outputLength, offset, 1, 1, out.data(), firstWritten,
                 &background);
    };
    if constexpr (std::is_same_v<T, double>) {
        kernel == nearest ? run(ORNEX_Skew_NNI_D) : kernel == linear ? run(ORNEX_Skew_BLI_D) : run(ORNEX_Skew_BCI_D);
    } else {
        kernel == nearest ? run(ORNEX_Skew_NNI_R) : kernel == linear ? run(ORNEX_Skew_BLI_R) : run(ORNEX_Skew_BCI_R);
    }
    return out;
}

template <class T>
class Skew : public ::testing::Test {};
using ElementTypes = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Skew, ElementTypes);

TYPED_TEST(Skew, NearestRoundsHalvesUp)
{
    using T = TypeParam;
    const std::vector<T> line = {1, 2, 3};
    EXPECT_EQ(skew<T>(nearest, line, 5, T(0.5), T(9)), (std::vector<T>{9, 1, 2, 3, 9}));
    EXPECT_EQ(skew<T>(nearest, line, 5, T(-0.5), T(9)), (std::vector<T>{1, 2, 3, 9, 9}));
    EXPECT_EQ(skew<T>(nearest, line, 5, T(-1.5), T(9)), (std::vector<T>{2, 3, 9, 9, 9}));
}

TYPED_TEST(Skew, IntegerOffsetsCopy)
{
    using T = TypeParam;
    const std::vector<T> line = {4, 5, 6};
    for (Kernel kernel : {nearest, linear, cubic}) {
        EXPECT_EQ(skew<T>(kernel, line, 6, T(2), T(-1)), (std::vector<T>{-1, -1, 4, 5, 6, -1})) << kernel;
        EXPECT_EQ(skew<T>(kernel, line, 4, T(-1), T(-1)), (std::vector<T>{5, 6, -1, -1})) << kernel;
    }
}

TYPED_TEST(Skew, LinearBlendsOneValueWithTheBackgroundAtEachEnd)
{
    using T = TypeParam;
    const std::vector<T> s = {8, 16, 40};
    const T bg = 100, f = T(0.25), g = T(1) - f;
    // Offset 1.25: position 1 sees source -0.25, position 4 source 2.75.
    EXPECT_EQ(skew<T>(linear, s, 7, T(1.25), bg),
              (std::vector<T>{bg, g * s[0] + f * bg, f * s[0] + g * s[1], f * s[1] + g * s[2], f * s[2] + g * bg,
                              bg, bg}));
    // Offset -0.25: position k sees source k + 0.25; position 2 the last.
    EXPECT_EQ(skew<T>(linear, s, 5, T(-0.25), bg),
              (std::vector<T>{g * s[0] + f * s[1], g * s[1] + f * s[2], g * s[2] + f * bg, bg, bg}));
    // Offset -1.25: i = -1, the line enters at source 1.
    EXPECT_EQ(skew<T>(linear, s, 3, T(-1.25), bg), (std::vector<T>{g * s[1] + f * s[2], g * s[2] + f * bg, bg}));
}

TEST(SkewPrecision, SinglePrecisionRoundsEveryStep)
{
    // Offset 1.1: the fraction is 1.1 - 1 formed in the member's precision
    // (0.100000024 in single), and the blend (1 - f) s0 + f bg is rounded
    // at every step; the two members differ.
    const std::vector<float> single = {1.0f / 3, 2, 3};
    const float f = 1.1f - 1.0f;
    const float expectedSingle = (1.0f - f) * single[0] + f * 7.0f;
    EXPECT_EQ(skew<float>(linear, single, 2, 1.1f, 7.0f)[1], expectedSingle);
    const std::vector<double> wide = {double(single[0]), 2, 3};
    const double fd = 1.1 - 1.0;
    const double expectedDouble = (1.0 - fd) * wide[0] + fd * 7.0;
    EXPECT_EQ(skew<double>(linear, wide, 2, 1.1, 7.0)[1], expectedDouble);
    EXPECT_NE(double(expectedSingle), expectedDouble);
}

TYPED_TEST(Skew, CubicUsesTheBackgroundForTapsOutsideTheLine)
{
    using T = TypeParam;
    // Offset 0.5: a = 0.5, w1(0.5) = 0.625, w2(1.5) = -0.125. Position 0
    // sees source -0.5: taps -2, -1 (background 0), 0 and 1.
    const std::vector<T> s = {8, 16, 24, 32, 48};
    const auto out = skew<T>(cubic, s, 8, T(0.5), T(0));
    EXPECT_EQ(out[0], T(0.625) * T(8) - T(0.125) * T(16));
    // Inside, a linear run is reproduced: position 2 sees source 1.5 = 20.
    EXPECT_EQ(out[2], T(20));
    // Position 6 sees source 5.5: taps 4..7, only source 4 inside.
    EXPECT_EQ(out[6], T(-0.125) * T(48));
    // Position 7: taps 5..8 all outside, the background itself.
    EXPECT_EQ(out[7], T(0));
}

TYPED_TEST(Skew, BackgroundOnlyAndFirstWrittenPosition)
{
    using T = TypeParam;
    const std::vector<T> line = {1, 2, 3};
    for (Kernel kernel : {nearest, linear, cubic}) {
        EXPECT_EQ(skew<T>(kernel, line, 4, T(9.5), T(5)), std::vector<T>(4, T(5))) << kernel;
        EXPECT_EQ(skew<T>(kernel, line, 4, T(-9.5), T(5)), std::vector<T>(4, T(5))) << kernel;
        // An empty line (no source element to read) shows the background.
        EXPECT_EQ(skew<T>(kernel, {}, 3, T(0.5), T(5)), std::vector<T>(3, T(5))) << kernel;
        // Nothing stored from position 4 of 4 on.
        EXPECT_EQ(skew<T>(kernel, line, 4, T(1), T(5), 4), std::vector<T>(4, T(-77))) << kernel;
        // From position 2 on: the values of positions 2 and 3, stored first.
        EXPECT_EQ(skew<T>(kernel, line, 4, T(1), T(5), 2), (std::vector<T>{2, 3, -77, -77})) << kernel;
    }
}

} // namespace
