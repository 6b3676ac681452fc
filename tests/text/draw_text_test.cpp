#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

// One glyph blended plainly, pixel by pixel; planes is 1 or 3.
template <class T>
void plainGlyph(const std::vector<uint8_t> &glyph, int x, int y, int xo, int yo, int gw, int gh, int cols, int rows,
                std::vector<T> *planes, int count, const T *colour, T o, bool aa, bool transposed)
{
    for (int r = 0; r < gh; ++r)
        for (int c = 0; c < gw; ++c) {
            const int row = transposed ? x + xo + c : y - yo + r, col = transposed ? y - yo + r : x + xo + c;
            const T a = T(glyph[r * gw + c] / 255.0);
            if (row < 0 || row >= rows || col < 0 || col >= cols || a == 0) continue;
            for (int p = 0; p < count; ++p) {
                T &pixel = planes[p][1 + row + col * rows];
                const T value = !aa || a == 1 ? colour[p] : a * (colour[p] - pixel) + pixel;
                pixel = o < 1 ? (1 - o) * pixel + value * o : value;
            }
        }
}

template <class T>
class DrawText : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(DrawText, Precisions);

TYPED_TEST(DrawText, EveryBlenderMatchesThePlainBlendAndClips)
{
    using T = TypeParam;
    constexpr int code = std::is_same_v<T, double> ? 0 : 1;
    std::mt19937 random(31);
    for (int trial = 0; trial < 2000; ++trial) {
        const bool aa = trial % 2, rgb = trial / 2 % 2, transposed = random() % 2;
        const int rows = 1 + random() % 6, cols = 1 + random() % 6, gw = random() % 5, gh = random() % 5;
        const int x = int(random() % 10) - 4, y = int(random() % 10) - 2, xo = int(random() % 5) - 2,
                  yo = int(random() % 5) - 2;
        std::vector<uint8_t> glyph(gw * gh);
        for (auto &g : glyph) g = random() % 3 ? uint8_t(random() % 3 ? random() % 256 : 255) : 0;
        const T opacities[] = {0, T(0.3), T(0.75), 1, 2}, colour[3] = {T(0.25), T(-3), T(7.5)};
        const T opacity = opacities[random() % 5];
        std::vector<T> planes[3], expected[3];
        for (int p = 0; p < 3; ++p) {
            planes[p].resize(rows * cols + 2);
            for (T &v : planes[p]) v = T(std::uniform_real_distribution<double>(-2, 2)(random));
            expected[p] = planes[p];
        }
        plainGlyph(glyph, x, y, xo, yo, gw, gh, cols, rows, expected, rgb ? 3 : 1, colour, opacity, aa, transposed);
        if (rgb)
            ORNEX_GetDrawTextFcn_RGB(code, aa)(glyph.data(), x, y, xo, yo, gw, gh, cols, rows, planes[0].data() + 1,
                                               planes[1].data() + 1, planes[2].data() + 1, colour, &opacity, transposed);
        else
            ORNEX_GetDrawTextFcn_I(code, aa)(glyph.data(), x, y, xo, yo, gw, gh, cols, rows, planes[0].data() + 1,
                                             colour, &opacity, transposed);
        for (int p = 0; p < 3; ++p) ASSERT_EQ(planes[p], expected[p]) << "trial " << trial << " plane " << p;
    }
}

TEST(DrawText, SelectionTablesHoldOnlyTheFloatingBlenders)
{
    const ORNEX_DrawTextFcn_I intensity[2][2] = {{ORNEX_DrawText_I_double, ORNEX_DrawText_I_double_AA},
                                                 {ORNEX_DrawText_I_single, ORNEX_DrawText_I_single_AA}};
    const ORNEX_DrawTextFcn_RGB rgb[2][2] = {{ORNEX_DrawText_RGB_double, ORNEX_DrawText_RGB_double_AA},
                                             {ORNEX_DrawText_RGB_single, ORNEX_DrawText_RGB_single_AA}};
    for (int code = -1; code <= 9; ++code)
        for (uint8_t aa : {0, 1}) {
            EXPECT_EQ(ORNEX_GetDrawTextFcn_I(code, aa), code == 0 || code == 1 ? intensity[code][aa] : nullptr);
            EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(code, aa), code == 0 || code == 1 ? rgb[code][aa] : nullptr);
        }
}

} // namespace
