#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T, class W>
using IntensityFunction = void (*)(int32_t, int32_t, int32_t, int32_t, T *, int32_t, int32_t, int32_t, int32_t,
                                   int32_t, const W *, int32_t, int32_t, int32_t);
template <class T, class W>
using RgbFunction = void (*)(int32_t, int32_t, int32_t, int32_t, T *, T *, T *, int32_t, int32_t, int32_t, int32_t,
                             int32_t, const W *, int32_t);

template <class Pixel, class Weight, bool isFixed, IntensityFunction<Pixel, Weight> intensity,
          RgbFunction<Pixel, Weight> rgb>
struct Member {
    using T = Pixel;
    using W = Weight;
    static constexpr bool fixedPoint = isFixed;
    static constexpr IntensityFunction<Pixel, Weight> drawIntensity = intensity;
    static constexpr RgbFunction<Pixel, Weight> drawRgb = rgb;
    // 1.0 as the table holds it.
    static constexpr Weight one = isFixed ? Weight(1024) : Weight(1);
};

using Members = ::testing::Types<
    Member<double, double, false, ORNEX_Draw_AA_Line_I_D, ORNEX_Draw_AA_Line_RGB_D>,
    Member<float, float, false, ORNEX_Draw_AA_Line_I_R, ORNEX_Draw_AA_Line_RGB_R>,
    Member<uint8_t, int16_t, true, ORNEX_Draw_AA_Line_I_UI8, ORNEX_Draw_AA_Line_RGB_UI8>,
    Member<int8_t, int16_t, true, ORNEX_Draw_AA_Line_I_I8, ORNEX_Draw_AA_Line_RGB_I8>,
    Member<uint16_t, uint16_t, true, ORNEX_Draw_AA_Line_I_UI16, ORNEX_Draw_AA_Line_RGB_UI16>,
    Member<int16_t, int16_t, true, ORNEX_Draw_AA_Line_I_I16, ORNEX_Draw_AA_Line_RGB_I16>>;

template <class M>
class AntialiasedLine : public ::testing::Test {};
TYPED_TEST_SUITE(AntialiasedLine, Members);

// A table that replaces a pixel by its distance index plus one: row 0 keeps
// nothing, row 1 holds d + 1. Untouched pixels stay 0.
template <class M>
std::vector<typename M::W> probeTable()
{
    std::vector<typename M::W> table(2 * 25, 0);
    for (int d = 0; d < 25; ++d) {
        table[25 + d] = typename M::W(d + 1);
    }
    return table;
}

// Draws with the probe table into a rows x cols image (rectangle = image)
// and returns the image as rows of values.
template <class M>
std::vector<std::vector<int>> probe(int32_t r1, int32_t c1, int32_t r2, int32_t c2, int32_t rows, int32_t cols)
{
    using T = typename M::T;
    std::vector<T> image(static_cast<size_t>(rows) * cols, T(0));
    const auto table = probeTable<M>();
    M::drawIntensity(r1, c1, r2, c2, image.data(), rows, 0, rows - 1, 0, cols - 1, table.data(), 1, 1, 0);
    std::vector<std::vector<int>> result(rows, std::vector<int>(cols));
    for (int32_t r = 0; r < rows; ++r) {
        for (int32_t c = 0; c < cols; ++c) {
            result[r][c] = static_cast<int>(image[r + static_cast<size_t>(c) * rows]);
        }
    }
    return result;
}

using Grid = std::vector<std::vector<int>>;

TYPED_TEST(AntialiasedLine, SinglePointAndHorizontalLinesUseIndices0And16)
{
    EXPECT_EQ(probe<TypeParam>(2, 1, 2, 1, 4, 3), (Grid{{0, 0, 0}, {0, 17, 0}, {0, 1, 0}, {0, 17, 0}}));
    // Reversed end-points give the same line; the first row has no row above.
    EXPECT_EQ(probe<TypeParam>(0, 3, 0, 1, 3, 4), (Grid{{0, 1, 1, 1}, {0, 17, 17, 17}, {0, 0, 0, 0}}));
}

TYPED_TEST(AntialiasedLine, VerticalLinesDrawOnlyTopDown)
{
    EXPECT_EQ(probe<TypeParam>(0, 1, 2, 1, 3, 3), (Grid{{17, 1, 17}, {17, 1, 17}, {17, 1, 17}}));
    EXPECT_EQ(probe<TypeParam>(2, 1, 0, 1, 3, 3), (Grid{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}));
    // At the last column there is no neighbour to the right.
    EXPECT_EQ(probe<TypeParam>(0, 2, 1, 2, 2, 3), (Grid{{0, 17, 1}, {0, 17, 1}}));
}

TYPED_TEST(AntialiasedLine, FortyFiveDegreesKeepsTheCentreOnTheLine)
{
    // m = 1, cos = 725/1024 or 0.70711: the centre stays at distance 0
    // (index 0) and steps every column; the neighbours above and below lie
    // at 0.707 pixel, index 11 both by truncation (725*16 >> 10) and by
    // rounding (11.31).
    EXPECT_EQ(probe<TypeParam>(0, 0, 3, 3, 4, 4),
              (Grid{{1, 12, 0, 0}, {12, 1, 12, 0}, {0, 12, 1, 12}, {0, 0, 12, 1}}));
    // Given from the other end, columns are ordered first: the same line.
    EXPECT_EQ(probe<TypeParam>(3, 3, 0, 0, 4, 4), probe<TypeParam>(0, 0, 3, 3, 4, 4));
    // Rising to the right: rows step by -1 and the neighbours swap sides.
    EXPECT_EQ(probe<TypeParam>(3, 0, 0, 3, 4, 4),
              (Grid{{0, 0, 12, 1}, {0, 12, 1, 12}, {12, 1, 12, 0}, {1, 12, 0, 0}}));
}

TYPED_TEST(AntialiasedLine, ShallowLineDistances)
{
    // (0,0)-(1,4), column-major with m = 1/4.
    // Floating: cos = 0.970143, thr = 0.242536 = cos*m, so the row steps
    // after column 1; distances 0, 0.2425, -0.4851, -0.2425, 0 give centre
    // indices 0, 4, 8, 4, 0 (rounded) and neighbours at D -+ cos.
    // Fixed: m = 256, cos = 4 - 35 - 1 + 1024 = 992, thr = 248; distances 0,
    // 248, -496, -248, 0 give indices 0, 3, 7, 3, 0 (truncated).
    const Grid expected = TypeParam::fixedPoint
                              ? Grid{{1, 4, 8, 12, 16}, {16, 12, 8, 4, 1}, {0, 0, 24, 20, 16}}
                              : Grid{{1, 5, 9, 13, 17}, {17, 13, 9, 5, 1}, {0, 0, 24, 20, 17}};
    EXPECT_EQ(probe<TypeParam>(0, 0, 1, 4, 3, 5), expected);
}

TYPED_TEST(AntialiasedLine, RowMajorStepsWithinToleranceColumnMajorDoesNot)
{
    if (!TypeParam::fixedPoint) {
        GTEST_SKIP() << "the fixed-point walk shows the one-unit tolerance";
    }
    // m = 512, cos = 32 - 140 - 1 + 1024 = 915, thr = 0; a step adds
    // (-512*915) >> 10 = -458 and no step adds (915*512) >> 10 = 457.
    // Row-major (0,0)-(4,2): D = 0, -458, -1, -459, -2. At row 2 D - thr =
    // -1 still steps, so rows 3 and 4 lie in column 2.
    EXPECT_EQ(probe<TypeParam>(0, 0, 4, 2, 5, 4),
              (Grid{{1, 15, 0, 0}, {8, 8, 22, 0}, {15, 1, 15, 0}, {0, 8, 8, 22}, {0, 15, 1, 15}}));
    // Column-major (0,0)-(2,4): D = 0, -458, -1, 456, -2. At column 2 D = -1
    // is below thr and does not step; the step comes a column later.
    EXPECT_EQ(probe<TypeParam>(0, 0, 2, 4, 3, 5),
              (Grid{{1, 8, 15, 22, 0}, {15, 8, 1, 8, 15}, {0, 22, 15, 8, 1}}));
}

TYPED_TEST(AntialiasedLine, NeighboursStopAtTheRectangleNotTheImage)
{
    using T = typename TypeParam::T;
    const auto table = probeTable<TypeParam>();
    // A 6x6 image clipped to rows 1..4, columns 1..4: a horizontal line in
    // row 1 has no neighbour in row 0, and it is cut to columns 1..4.
    std::vector<T> image(36, T(0));
    TypeParam::drawIntensity(1, -3, 1, 9, image.data(), 6, 1, 4, 1, 4, table.data(), 1, 1, 0);
    for (int32_t c = 0; c < 6; ++c) {
        const bool inside = c >= 1 && c <= 4;
        EXPECT_EQ(image[0 + 6 * c], T(0));
        EXPECT_EQ(image[1 + 6 * c], T(inside ? 1 : 0));
        EXPECT_EQ(image[2 + 6 * c], T(inside ? 17 : 0));
    }
}

TYPED_TEST(AntialiasedLine, BlendsWithoutAccumulatingCoverage)
{
    using T = typename TypeParam::T;
    using W = typename TypeParam::W;
    // The weight table as a caller builds it: 1 - coverage in row 0 and
    // coverage * colour in row 1, coverage falling linearly to 0 at 1.5 px.
    // At the centre coverage is 1, at index 16 it is 1 - 16/24 = 1/3.
    const double colour = 90;
    std::vector<W> table(50);
    for (int d = 0; d < 25; ++d) {
        const double coverage = 1.0 - d / 24.0;
        table[d] = TypeParam::fixedPoint ? W(std::lround(1024 * (1 - coverage))) : W(1 - coverage);
        table[25 + d] = W(std::lround(coverage * colour));
    }
    std::vector<T> image(9, T(30));
    // A point drawn twice: its neighbour below (index 16) is blended twice.
    for (int pass = 0; pass < 2; ++pass) {
        TypeParam::drawIntensity(1, 1, 1, 1, image.data(), 3, 0, 2, 0, 2, table.data(), 1, 1, 0);
    }
    // Centre: keep 0, term 90, twice -> 90. Neighbour: keep 2/3, term 30:
    // 30 -> 30*2/3 + 30 = 50 -> 50*2/3 + 30 = 63.33.
    EXPECT_EQ(image[1 + 3], T(90));
    if (TypeParam::fixedPoint) {
        // keep = round(1024*2/3) = 683: (683*30) >> 10 = 20, + 30 = 50;
        // (683*50) >> 10 = 33, + 30 = 63.
        EXPECT_EQ(image[2 + 3], T(63));
    } else {
        const T keep = T(1 - (1 - 16 / 24.0)), term = T(30);
        EXPECT_EQ(image[2 + 3], T(keep * T(keep * T(30) + term) + term));
    }
}

TYPED_TEST(AntialiasedLine, IntegerMembersWrapInsteadOfSaturating)
{
    using T = typename TypeParam::T;
    using W = typename TypeParam::W;
    if (!TypeParam::fixedPoint) {
        GTEST_SKIP() << "floating members have no wrap-around";
    }
    // Keep everything and add a term that overflows the type at the centre.
    const bool wide = sizeof(T) == 2, isSigned = T(-1) < T(0);
    const int old = isSigned ? (wide ? 30000 : 100) : (wide ? 60000 : 200);
    const int term = wide ? 10000 : 100;
    std::vector<W> table(50, 0);
    table[0] = 1024;
    table[25] = W(term);
    table[16] = 1024;
    std::vector<T> image(3, T(old));
    TypeParam::drawIntensity(1, 0, 1, 0, image.data(), 3, 0, 2, 0, 0, table.data(), 1, 1, 0);
    const int modulus = wide ? 65536 : 256;
    const int wrapped = (old + term) % modulus;
    EXPECT_EQ(image[1], T(isSigned && wrapped >= modulus / 2 ? wrapped - modulus : wrapped));
    EXPECT_EQ(image[0], T(old));

    // Signed pixels widen with their sign: (512 * -100) >> 10 = -50.
    if (isSigned) {
        table[0] = 512;
        table[25] = 0;
        image[1] = T(-100);
        TypeParam::drawIntensity(1, 0, 1, 0, image.data(), 3, 0, 2, 0, 0, table.data(), 1, 1, 0);
        EXPECT_EQ(image[1], T(-50));
    }
}

TYPED_TEST(AntialiasedLine, PlanesTakeTheirOwnColourRows)
{
    using T = typename TypeParam::T;
    using W = typename TypeParam::W;
    // Rows: 0 keep nothing; 1 unused; 2, 3, 4 the colours of three planes.
    std::vector<W> table(5 * 25, W(0));
    for (int d = 0; d < 25; ++d) {
        table[2 * 25 + d] = W(10);
        table[3 * 25 + d] = W(20);
        table[4 * 25 + d] = W(30);
    }
    std::vector<T> red(4, T(0)), green(4, T(0)), blue(4, T(0));
    TypeParam::drawRgb(0, 1, 0, 1, red.data(), green.data(), blue.data(), 2, 0, 1, 0, 1, table.data(), 2);
    // 2x2 planes: the point (0,1) and its neighbour (1,1).
    EXPECT_EQ(red, (std::vector<T>{T(0), T(0), T(10), T(10)}));
    EXPECT_EQ(green, (std::vector<T>{T(0), T(0), T(20), T(20)}));
    EXPECT_EQ(blue, (std::vector<T>{T(0), T(0), T(30), T(30)}));

    // Intensity form: two planes 4 elements apart in one buffer.
    std::vector<T> planes(8, T(0));
    TypeParam::drawIntensity(0, 1, 0, 1, planes.data(), 2, 0, 1, 0, 1, table.data(), 3, 2, 4);
    EXPECT_EQ(planes, (std::vector<T>{T(0), T(0), T(20), T(20), T(0), T(0), T(30), T(30)}));
}

} // namespace
