#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T, class O>
using DiscI = void (*)(T *, const T *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, O,
                       int32_t, int32_t);
template <class T, class O>
using DiscRgb = void (*)(T *, T *, T *, const T *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                         int32_t, O);

template <class Pixel, class Opacity, DiscI<Pixel, Opacity> intensity, DiscRgb<Pixel, Opacity> rgb>
struct Member {
    using T = Pixel;
    using O = Opacity;
    static constexpr bool floating = std::is_floating_point_v<Pixel>;
    static constexpr DiscI<Pixel, Opacity> discIntensity = intensity;
    static constexpr DiscRgb<Pixel, Opacity> discRgb = rgb;
};

using Members = ::testing::Types<
    Member<double, double, ORNEX_Draw_AA_FilledCircle_I_D, ORNEX_Draw_AA_FilledCircle_RGB_D>,
    Member<float, float, ORNEX_Draw_AA_FilledCircle_I_R, ORNEX_Draw_AA_FilledCircle_RGB_R>,
    Member<uint8_t, int16_t, ORNEX_Draw_AA_FilledCircle_I_UI8, ORNEX_Draw_AA_FilledCircle_RGB_UI8>,
    Member<int8_t, int16_t, ORNEX_Draw_AA_FilledCircle_I_I8, ORNEX_Draw_AA_FilledCircle_RGB_I8>,
    Member<uint16_t, int16_t, ORNEX_Draw_AA_FilledCircle_I_UI16, ORNEX_Draw_AA_FilledCircle_RGB_UI16>,
    Member<int16_t, int16_t, ORNEX_Draw_AA_FilledCircle_I_I16, ORNEX_Draw_AA_FilledCircle_RGB_I16>>;

// What one pixel must become, decided from its own offset alone: full
// (Q >= R), ring (-R < Q < R, opacity scaled by the coverage) or empty.
template <class M>
typename M::T expectedPixel(typename M::T old, typename M::T fill, typename M::O opacity, int32_t a, int32_t b,
                            int32_t radius)
{
    using T = typename M::T;
    const int32_t q = radius * radius - a * a - b * b;
    if (q <= -radius) {
        return old;
    }
    if constexpr (M::floating) {
        const T o = q >= radius ? opacity : T(opacity * (T(q + radius) / T(2 * radius)));
        return T(double(fill) * double(o) + double(old) * (1.0 - double(o)));
    } else {
        int32_t o = opacity;
        if (q < radius) {
            const int32_t coverage = (q + radius) * 512 / radius;
            if (coverage == 0) {
                return old;
            }
            o = int16_t((opacity * coverage) >> 10);
        }
        return T((int32_t(fill) * o + int32_t(old) * int16_t(1024 - o)) >> 10);
    }
}

template <class M>
class AAFilledCircle : public ::testing::Test {};
TYPED_TEST_SUITE(AAFilledCircle, Members);

// At half opacity a second blend of any pixel would show. The clip
// rectangle cuts the disc off on two sides; everything outside it is a
// sentinel that must survive. Intensity members draw two planes with a gap.
TYPED_TEST(AAFilledCircle, EveryPixelFollowsItsCoverageClassOnce)
{
    using M = TypeParam;
    using T = typename M::T;
    const T old = T(M::floating ? 0.25 : 40), fills[3] = {T(M::floating ? 1 : 100), T(M::floating ? 0.5 : 90), T(7)};
    const T sentinel = T(3);
    const typename M::O opacity = M::floating ? typename M::O(0.5) : typename M::O(512);
    for (int32_t radius = 1; radius <= 64; radius += (radius < 20 ? 1 : 7)) {
        const int32_t side = 2 * radius + 5, centre = radius + 2, planeStride = side * side + 3;
        const int32_t rowMin = 1, rowMax = side - 2, colMin = 2, colMax = centre + radius / 2;
        std::vector<T> intensity(2 * planeStride, sentinel), rgb(3 * side * side, sentinel);
        for (int32_t c = colMin; c <= colMax; ++c) {
            for (int32_t r = rowMin; r <= rowMax; ++r) {
                for (int32_t p = 0; p < 3; ++p) {
                    rgb[p * side * side + c * side + r] = old;
                    if (p < 2) {
                        intensity[p * planeStride + c * side + r] = old;
                    }
                }
            }
        }
        M::discIntensity(intensity.data(), fills, centre, centre, rowMin, rowMax, colMin, colMax, side, radius,
                         opacity, 2, planeStride);
        M::discRgb(rgb.data(), rgb.data() + side * side, rgb.data() + 2 * side * side, fills, centre, centre, rowMin,
                   rowMax, colMin, colMax, side, radius, opacity);
        for (int32_t c = 0; c < side; ++c) {
            for (int32_t r = 0; r < side; ++r) {
                const bool inside = r >= rowMin && r <= rowMax && c >= colMin && c <= colMax;
                for (int32_t p = 0; p < 3; ++p) {
                    const T want =
                        inside ? expectedPixel<M>(old, fills[p], opacity, r - centre, c - centre, radius) : sentinel;
                    ASSERT_EQ(rgb[p * side * side + c * side + r], want) << radius << ": " << r << "," << c;
                    if (p < 2) {
                        ASSERT_EQ(intensity[p * planeStride + c * side + r], want) << radius << ": " << r << "," << c;
                    }
                }
            }
        }
        EXPECT_EQ(intensity[planeStride - 1], sentinel);
    }
}

TYPED_TEST(AAFilledCircle, DegenerateRadiiAndPlanesWriteNothing)
{
    using M = TypeParam;
    using T = typename M::T;
    std::vector<T> image(49, T(5));
    const T fill = T(9);
    for (int32_t radius : {0, -1}) {
        M::discIntensity(image.data(), &fill, 3, 3, 0, 6, 0, 6, 7, radius, typename M::O(1), 1, 49);
        M::discRgb(image.data(), image.data(), image.data(), &fill, 3, 3, 0, 6, 0, 6, 7, radius, typename M::O(1));
    }
    M::discIntensity(image.data(), &fill, 3, 3, 0, 6, 0, 6, 7, 2, typename M::O(1), 0, 49);
    M::discIntensity(image.data(), &fill, 3, 3, 4, 3, 0, 6, 7, 2, typename M::O(1), 1, 49);
    EXPECT_EQ(image, std::vector<T>(49, T(5)));
}

TEST(AAFilledCircleMaps, RadiusThreeOpaqueOnBlack)
{
    std::vector<uint8_t> image(81, 0);
    const uint8_t fill = 255;
    ORNEX_Draw_AA_FilledCircle_I_UI8(image.data(), &fill, 4, 4, 0, 8, 0, 8, 9, 3, 1024, 1, 81);
    // Axis ring pixels (255*512)>>10, (3, 1) at cov 341, (2, 2) at cov 682.
    const int rows[7][9] = {{0, 0, 0, 84, 127, 84, 0, 0, 0},       {0, 0, 169, 255, 255, 255, 169, 0, 0},
                            {0, 84, 255, 255, 255, 255, 255, 84, 0}, {0, 127, 255, 255, 255, 255, 255, 127, 0},
                            {0, 84, 255, 255, 255, 255, 255, 84, 0}, {0, 0, 169, 255, 255, 255, 169, 0, 0},
                            {0, 0, 0, 84, 127, 84, 0, 0, 0}};
    for (int32_t c = 0; c < 9; ++c) {
        EXPECT_EQ(image[c * 9], 0);
        EXPECT_EQ(image[c * 9 + 8], 0);
        for (int32_t r = 1; r <= 7; ++r) {
            EXPECT_EQ(image[c * 9 + r], rows[r - 1][c]) << r << "," << c;
        }
    }
}

TEST(AAFilledCircleMaps, RadiusTwoInDoubleAndClippedAtACorner)
{
    std::vector<double> image(49, 0.0);
    const double one = 1.0;
    ORNEX_Draw_AA_FilledCircle_I_D(image.data(), &one, 3, 3, 0, 6, 0, 6, 7, 2, 0.5, 1, 49);
    double total = 0;
    for (double v : image) {
        total += v;
    }
    EXPECT_EQ(image[3 * 7 + 3], 0.5);
    EXPECT_EQ(image[3 * 7 + 1], 0.25);  // (2, 0): cov 2/4
    EXPECT_EQ(image[2 * 7 + 1], 0.125); // (2, 1): cov 1/4
    EXPECT_EQ(image[1 * 7 + 1], 0.0);   // (2, 2) is empty
    EXPECT_EQ(total, 13 * 0.5);

    // Centre on the corner of the rectangle: only the quadrant is written.
    std::vector<uint8_t> corner(36, 7);
    const uint8_t fill = 200;
    for (int32_t c = 1; c <= 5; ++c) {
        for (int32_t r = 1; r <= 5; ++r) {
            corner[c * 6 + r] = 0;
        }
    }
    ORNEX_Draw_AA_FilledCircle_I_UI8(corner.data() + 7, &fill, 0, 0, 0, 4, 0, 4, 6, 2, 1024, 1, 36);
    const int quadrant[3][3] = {{200, 200, 100}, {200, 200, 50}, {100, 50, 0}};
    for (int32_t c = 0; c < 6; ++c) {
        for (int32_t r = 0; r < 6; ++r) {
            const bool inImage = r >= 1 && c >= 1;
            const int want = !inImage ? 7 : (r <= 3 && c <= 3 ? quadrant[r - 1][c - 1] : 0);
            EXPECT_EQ(corner[c * 6 + r], want) << r << "," << c;
        }
    }
}

TEST(AAFilledCircleMaps, CoverageTruncatedToZeroSkipsOnlyInFixedPoint)
{
    // Radius 518, offset (404, 325): Q + R = 1, cov 512/518 = 0 in Q10 but
    // 1/1036 in double. A window around the pixel keeps the image small.
    const int32_t radius = 518, side = 5, row = 404 - 2, col = 325 - 2;
    std::vector<uint8_t> bytes(side * side, 0);
    std::vector<double> reals(side * side, 0.0);
    const uint8_t fill = 255;
    const double one = 1.0;
    ORNEX_Draw_AA_FilledCircle_I_UI8(bytes.data() - (row + col * side), &fill, 0, 0, row, row + side - 1, col,
                                     col + side - 1, side, radius, 1024, 1, 0);
    ORNEX_Draw_AA_FilledCircle_I_D(reals.data() - (row + col * side), &one, 0, 0, row, row + side - 1, col,
                                   col + side - 1, side, radius, 1.0, 1, 0);
    EXPECT_EQ(bytes[2 + 2 * side], 0);
    EXPECT_EQ(reals[2 + 2 * side], 1.0 / 1036.0);
}

TEST(AAFilledCircleMaps, ColourMayPointIntoTheImage)
{
    // Two planes whose colours are the centre pixel and the one below it:
    // plane 1 must get the 0 that pixel held at entry, not plane 0's 800.
    std::vector<int16_t> image(2 * 121, 0);
    image[5 * 11 + 5] = 800;
    ORNEX_Draw_AA_FilledCircle_I_I16(image.data(), &image[5 * 11 + 5], 5, 5, 0, 10, 0, 10, 11, 4, 1024, 2, 121);
    EXPECT_EQ(image[5 * 11 + 1], 400); // (-4, 0): cov 512
    EXPECT_EQ(image[5 * 11 + 6], 800);
    EXPECT_EQ(std::vector<int16_t>(image.begin() + 121, image.end()), std::vector<int16_t>(121, 0));
}

TEST(AAFilledCircleMaps, TotalCoverageNearTheDiscAreaAndSymmetric)
{
    const double one = 1.0;
    for (int32_t radius = 1; radius <= 100; radius += 3) {
        const int32_t side = 2 * radius + 3, centre = radius + 1;
        std::vector<double> image(side * side, 0.0);
        ORNEX_Draw_AA_FilledCircle_I_D(image.data(), &one, centre, centre, 0, side - 1, 0, side - 1, side, radius, 1.0,
                                       1, side * side);
        double total = 0;
        for (int32_t c = 0; c < side; ++c) {
            for (int32_t r = 0; r < side; ++r) {
                const double v = image[c * side + r];
                total += v;
                const int32_t mr = 2 * centre - r, mc = 2 * centre - c;
                ASSERT_EQ(v, image[mc * side + r]);
                ASSERT_EQ(v, image[c * side + mr]);
                ASSERT_EQ(v, image[r * side + c]);
            }
        }
        EXPECT_NEAR(total, M_PI * radius * radius, 0.05 * 2 * M_PI * radius) << radius;
    }
}

TEST(AAFilledCircleKernels, SpansThroughTheFourAndEightPoints)
{
    const int32_t side = 9;
    const uint16_t fill = 1000;
    auto count = [&](auto kernel, int32_t a, int32_t b, int32_t rowMin, int32_t rowMax, int32_t colMax) {
        std::vector<uint16_t> image(side * side, 0);
        kernel(image.data(), 4, 4, a, b, rowMin, rowMax, 0, colMax, side, &fill, int16_t(512), 1, side * side);
        int written = 0;
        for (uint16_t v : image) {
            EXPECT_TRUE(v == 0 || v == 500) << "a pixel blended twice";
            written += v != 0;
        }
        return written;
    };
    EXPECT_EQ(count(ORNEX_AACircle_4PtsLinesI_UI16, 2, 0, 0, 8, 8), 5);
    EXPECT_EQ(count(ORNEX_AACircle_4PtsLinesI_UI16, 2, 3, 0, 8, 8), 10);
    EXPECT_EQ(count(ORNEX_AACircle_4PtsLinesI_UI16, -1, 2, 4, 4, 8), 0);
    EXPECT_EQ(count(ORNEX_AACircle_8PtsLinesI_UI16, 2, 2, 0, 8, 8), 10);
    EXPECT_EQ(count(ORNEX_AACircle_8PtsLinesI_UI16, 0, 3, 0, 8, 8), 9);
    EXPECT_EQ(count(ORNEX_AACircle_8PtsLinesI_UI16, -2, 2, 0, 8, 8), 10);
    EXPECT_EQ(count(ORNEX_AACircle_8PtsLinesI_UI16, 2, 1, 0, 8, 8), 10 + 6);
    // colMax between cc and cc + b: only the left column of each pair.
    EXPECT_EQ(count(ORNEX_AACircle_4PtsLinesI_UI16, 2, 3, 0, 8, 5), 5);
    EXPECT_EQ(count(ORNEX_AACircle_4PtsLinesI_UI16, 3, 2, 2, 6, 8), 10);

    std::vector<float> red(side * side, 0.f), green(side * side, 0.f), blue(side * side, 0.f);
    const float colour[3] = {1.f, 2.f, 4.f};
    ORNEX_AACircle_8PtsLinesRGB_R(red.data(), green.data(), blue.data(), 4, 4, 3, 0, 0, 8, 0, 8, side, colour, 0.5f);
    EXPECT_EQ(red[4 * side + 1], 0.5f);
    EXPECT_EQ(green[1 * side + 4], 1.0f);
    EXPECT_EQ(blue[4 * side + 4], 2.0f);
    EXPECT_EQ(blue[3 * side + 3], 0.0f);
}

} // namespace
