#include <gtest/gtest.h>

#include <random>

#include "ornex_rt.h"

template <class T>
class DrawText : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(DrawText, Precisions);

// Every blender, reached through the selection tables, against a plain
// blend: glyph placement and transposition, clipping, coverage and opacity.
TYPED_TEST(DrawText, EveryBlenderMatchesThePlainBlendAndClips)
{
    using T = TypeParam;
    std::mt19937 random(31);
    auto same = [](T a, T b) { return a == b || (a != a && b != b); };
    for (int trial = 0; trial < 3000; ++trial) {
        const bool aa = trial % 2, rgb = trial / 2 % 2, transposed = random() % 2;
        const int rows = 1 + random() % 6, cols = 1 + random() % 6, gw = random() % 5, gh = random() % 5;
        const int x = int(random() % 10) - 4, y = int(random() % 10) - 2, xo = int(random() % 5) - 2, yo = int(random() % 5) - 2;
        std::vector<uint8_t> glyph(gw * gh);
        for (auto &g : glyph) g = random() % 3 ? uint8_t(random() % 3 ? random() % 256 : 255) : 0;
        const T opacity = std::vector<T>{0, T(0.3), T(0.75), 1, 2}[random() % 5], colour[3] = {T(0.25), T(-3), T(7.5)};
        std::vector<T> planes[3], expected[3];
        for (int p = 0; p < 3; ++p) {
            planes[p].resize(rows * cols + 2); // one sentinel on each side
            for (T &v : planes[p]) v = random() % 16 ? T(std::uniform_real_distribution<double>(-2, 2)(random)) : T(INFINITY);
            expected[p] = planes[p];
        }
        for (int r = 0; r < gh; ++r)
            for (int c = 0; c < gw; ++c) {
                const int row = transposed ? x + xo + c : y - yo + r, col = transposed ? y - yo + r : x + xo + c;
                const T a = T(glyph[r * gw + c] / 255.0);
                for (int p = 0; row >= 0 && row < rows && col >= 0 && col < cols && a != 0 && p < (rgb ? 3 : 1); ++p) {
                    T &pixel = expected[p][1 + row + col * rows];
                    const T value = !aa || a == 1 ? colour[p] : a * (colour[p] - pixel) + pixel;
                    pixel = opacity < 1 ? (1 - opacity) * pixel + value * opacity : value;
                }
            }
        const int code = std::is_same_v<T, double> ? 0 : 1;
        if (rgb)
            ORNEX_GetDrawTextFcn_RGB(code, aa)(glyph.data(), x, y, xo, yo, gw, gh, cols, rows, planes[0].data() + 1,
                                               planes[1].data() + 1, planes[2].data() + 1, colour, &opacity, transposed);
        else
            ORNEX_GetDrawTextFcn_I(code, aa)(glyph.data(), x, y, xo, yo, gw, gh, cols, rows, planes[0].data() + 1, colour, &opacity, transposed);
        for (int p = 0; p < 3; ++p)
            ASSERT_TRUE(std::equal(planes[p].begin(), planes[p].end(), expected[p].begin(), same)) << "trial " << trial << " plane " << p;
    }
}

TEST(DrawText, SelectionTablesHoldOnlyTheFloatingBlenders)
{
    // Which blender each entry is, the blend test above tells apart.
    for (int code = -1; code <= 9; ++code)
        for (uint8_t aa : {0, 1, 2}) {
            EXPECT_EQ(ORNEX_GetDrawTextFcn_I(code, aa) != nullptr, (code == 0 || code == 1) && aa < 2) << code;
            EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(code, aa) != nullptr, (code == 0 || code == 1) && aa < 2) << code;
        }
    EXPECT_TRUE(ORNEX_GetDrawTextFcn_I(1, 1) == ORNEX_DrawText_I_single_AA && ORNEX_GetDrawTextFcn_RGB(0, 0) == ORNEX_DrawText_RGB_double);
}
