#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

// Entry t stands for 4096 sqrt(1 - (t/4096)^2), rounded.
std::vector<int16_t> squareRootTable()
{
    std::vector<int16_t> table(4096);
    for (int t = 0; t < 4096; ++t) {
        const double u = t / 4096.0;
        table[t] = int16_t(std::lround(4096.0 * std::sqrt(1.0 - u * u)));
    }
    return table;
}

TEST(AACircleDelta, DistanceToTheNextWholePixelInQ10)
{
    const auto table = squareRootTable();
    uint8_t outside = 7;
    // On the axis the crossing is a whole pixel: full weight, 1024 not 0.
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(0, 9, 9, table.data(), &outside), 1024);
    EXPECT_EQ(outside, 1);
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(0, 8, 9, table.data(), &outside), 1024);
    EXPECT_EQ(outside, 0);
    // x = 3, r = 5: t = 12288/5 = 2457, entry 4096 sqrt(1 - 0.59985^2) =
    // 3277.25 -> 3277, s = 16385 (just past 4 pixels): (4096 - 1) >> 2.
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(3, 4, 5, table.data(), &outside), 1023);
    EXPECT_EQ(outside, 0);
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(3, 5, 5, table.data(), &outside), 1023);
    EXPECT_EQ(outside, 1);
    // Past the last index used the table is read at 3223.
    const int32_t s = table[3223] * 10;
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(10, 0, 10, table.data(), &outside), (4096 - s % 4096) / 4);
}

TEST(AACircleKernels, QuadPointsReplaceOnTheAxesOrTheCorners)
{
    std::vector<uint32_t> image(11 * 11, 1);
    ORNEX_AACircle_SymQuadPtsRGB_UI32(image.data(), image.data(), image.data(), 5, 5, 0, 4, 0, 10, 0, 10, 11,
                                      0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu);
    std::vector<int32_t> corners(11 * 11, 1);
    const int32_t value = INT32_MIN;
    // Column 9 lies outside the rectangle (columns 0..8).
    ORNEX_AACircle_SymQuadPtsI_I32(corners.data(), 5, 5, 3, 4, 0, 10, 0, 8, 11, &value, 1, 121);
    for (int32_t c = 0; c < 11; ++c) {
        for (int32_t r = 0; r < 11; ++r) {
            const bool axis = (r == 5 && (c == 1 || c == 9)) || (c == 5 && (r == 1 || r == 9));
            EXPECT_EQ(image[r + 11 * c], axis ? 0xFFFFFFFFu : 1u) << r << "," << c;
            const bool corner = (r == 2 || r == 8) && c == 1;
            EXPECT_EQ(corners[r + 11 * c], corner ? INT32_MIN : 1) << r << "," << c;
        }
    }
}

// (row, column) offsets of the eight mirror images of (a, b).
std::vector<std::pair<int, int>> mirrors(int a, int b)
{
    return {{a, b}, {-a, b}, {-a, -b}, {a, -b}, {b, a}, {-b, a}, {-b, -a}, {b, -a}};
}

TEST(AACircleKernels, OctantPairsKeepComplementaryShares)
{
    const int32_t n = 21, cr = 10, cc = 10;
    const uint8_t termsA[1] = {5}, termsB[1] = {7};
    // Flag set, w = 1024: the walked pixels keep all their background and
    // add termsA; the partners at b - 1 keep nothing and become termsB.
    std::vector<uint8_t> image(n * n, 100);
    ORNEX_AACircle_SymOctantPtsI_UI8(image.data(), cr, cc, 2, 6, 0, 20, 0, 20, n, termsA, termsB, 1024, 1, 1, n * n);
    for (auto [dr, dc] : mirrors(2, 6)) {
        EXPECT_EQ(image[(cr + dr) + n * (cc + dc)], 105);
    }
    for (auto [dr, dc] : mirrors(2, 5)) {
        EXPECT_EQ(image[(cr + dr) + n * (cc + dc)], 7);
    }
    EXPECT_EQ(std::count(image.begin(), image.end(), 100), n * n - 16);

    // Flag clear, w = 256: walked pixels keep 768/1024, partners at b + 1
    // keep 256/1024: (100*768 >> 10) + 5 = 80, (100*256 >> 10) + 7 = 32.
    std::fill(image.begin(), image.end(), 100);
    ORNEX_AACircle_SymOctantPtsI_UI8(image.data(), cr, cc, 2, 6, 0, 20, 0, 20, n, termsA, termsB, 256, 0, 1, n * n);
    for (auto [dr, dc] : mirrors(2, 6)) {
        EXPECT_EQ(image[(cr + dr) + n * (cc + dc)], 80);
    }
    for (auto [dr, dc] : mirrors(2, 7)) {
        EXPECT_EQ(image[(cr + dr) + n * (cc + dc)], 32);
    }

    // Floating: 100*0.25 + 5 and 100*0.75 + 7, in all three planes.
    std::vector<double> red(n * n, 100), green(n * n, 100), blue(n * n, 100);
    ORNEX_AACircle_SymOctantPtsRGB_D(red.data(), green.data(), blue.data(), cr, cc, 2, 6, 0, 20, 0, 20, n, 5, 5, 5, 7,
                                     7, 7, 0.25, 1);
    for (auto *plane : {&red, &green, &blue}) {
        EXPECT_EQ((*plane)[(cr + 2) + n * (cc + 6)], 30.0);
        EXPECT_EQ((*plane)[(cr - 5) + n * (cc - 2)], 82.0);
    }
}

TEST(AACircleKernels, IntegerBlendsWrapAndCoincidentPointsBlendAgain)
{
    const int32_t n = 9;
    // 250 kept in full plus 10 is 260, stored as 4: no saturation.
    std::vector<uint8_t> image(n * n, 250);
    const uint8_t ten[1] = {10}, none[1] = {0};
    ORNEX_AACircle_SymOctantPtsI_UI8(image.data(), 4, 4, 1, 3, 0, 8, 0, 8, n, ten, none, 1024, 1, 1, n * n);
    EXPECT_EQ(image[(4 + 1) + n * (4 + 3)], 4);

    // a = b: each diagonal point is in the first set twice, blended twice:
    // (100*512 >> 10) + 10 = 60, then (60*512 >> 10) + 10 = 40.
    std::vector<int16_t> signedImage(n * n, 100);
    const int16_t termA[1] = {10}, termB[1] = {0};
    ORNEX_AACircle_SymOctantPtsI_I16(signedImage.data(), 4, 4, 3, 3, 0, 8, 0, 8, n, termA, termB, 512, 0, 1, n * n);
    EXPECT_EQ(signedImage[(4 + 3) + n * (4 + 3)], 40);
    EXPECT_EQ(signedImage[(4 - 3) + n * (4 + 3)], 40);
}

struct Canvas {
    int32_t size;
    std::vector<double> pixels;

    Canvas(int32_t n, double value) : size(n), pixels(size_t(n) * n, value) {}
    double at(int32_t r, int32_t c) const { return pixels[r + size_t(c) * size]; }
};

Canvas drawDouble(int32_t n, int32_t cr, int32_t cc, int32_t radius, double background = 0, double value = 1)
{
    Canvas canvas(n, background);
    ORNEX_Draw_AA_Circle_I_D(canvas.pixels.data(), &value, 0, radius, cr, cc, 0, n - 1, 0, n - 1, n, radius, 1,
                             n * n);
    return canvas;
}

TEST(AACircle, RadiusOneAndZeroDrawOnlyTheStartPoints)
{
    Canvas one = drawDouble(7, 3, 3, 1, 0, 2);
    for (int32_t c = 0; c < 7; ++c) {
        for (int32_t r = 0; r < 7; ++r) {
            const bool axis = std::abs(r - 3) + std::abs(c - 3) == 1;
            EXPECT_EQ(one.at(r, c), axis ? 2.0 : 0.0) << r << "," << c;
        }
    }
    // Radius 0 never reaches the table's division.
    std::vector<uint8_t> bytes(25, 0);
    const uint8_t value = 9;
    ORNEX_Draw_AA_Circle_I_UI8(bytes.data(), &value, nullptr, 0, 0, 2, 2, 0, 4, 0, 4, 5, 0, 1, 25);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 9), 1);
    EXPECT_EQ(bytes[2 + 5 * 2], 9);
}

TEST(AACircle, PairsStraddleTheExactCircleWithWeightsThatSumToOne)
{
    const double background = 0.25;
    for (int32_t radius : {6, 13, 25, 40}) {
        const int32_t n = 2 * radius + 5, centre = radius + 2;
        const Canvas canvas = drawDouble(n, centre, centre, radius, background, 1.0);
        // Everything drawn lies within a pixel of the circle.
        for (int32_t c = 0; c < n; ++c) {
            for (int32_t r = 0; r < n; ++r) {
                if (canvas.at(r, c) != background) {
                    EXPECT_LT(std::fabs(std::hypot(r - centre, c - centre) - radius), 1.0)
                        << "radius " << radius << " at " << r << "," << c;
                }
            }
        }
        // Away from the axes and the diagonal, row offset x is covered by
        // the two pixels around the exact crossing y*: each takes one minus
        // its distance d from it of the colour and keeps d of the background.
        for (int32_t x = 1; x < radius / std::sqrt(2.0) - 2; ++x) {
            const double exact = std::sqrt(double(radius * radius - x * x));
            const int32_t below = int32_t(std::floor(exact)), above = int32_t(std::ceil(exact));
            double coverage = 0;
            for (int32_t y = 0; y <= radius + 1; ++y) {
                const double value = canvas.at(centre + x, centre + y);
                if (y == below || y == above) {
                    const double d = std::fabs(y - exact);
                    EXPECT_NEAR(value, background * d + (1.0 - d), 1e-12) << "radius " << radius << " x " << x;
                } else {
                    EXPECT_EQ(value, background) << "radius " << radius << " x " << x << " y " << y;
                }
                coverage += (value - background) / (1.0 - background);
            }
            EXPECT_NEAR(coverage, 1.0, 1e-12);
        }
    }
}

TEST(AACircle, AnOctantEndingOnTheDiagonalReplacesWithTheLargerWeight)
{
    // Radius 3 walks (1, 3) and ends at x = y = 2, where y* = sqrt(5).
    const Canvas canvas = drawDouble(9, 4, 4, 3, 5.0, 1.0);
    const double exact = std::sqrt(5.0), frac = std::ceil(exact) - exact;
    const double weight = std::max(frac, 1 - frac);
    for (int dr : {-2, 2}) {
        for (int dc : {-2, 2}) {
            EXPECT_DOUBLE_EQ(canvas.at(4 + dr, 4 + dc), weight);
        }
    }
}

TEST(AACircle, PlanesScaleWithTheirValuesAndRgbMatchesIntensity)
{
    const int32_t n = 25, centre = 12, radius = 9;
    const Canvas reference = drawDouble(n, centre, centre, radius);
    std::vector<double> planes(2 * n * n, 0.0);
    const double values[2] = {2.0, 0.5};
    ORNEX_Draw_AA_Circle_I_D(planes.data(), values, 0, radius, centre, centre, 0, n - 1, 0, n - 1, n, radius, 2,
                             n * n);
    std::vector<double> red(n * n, 0.0), green(n * n, 0.0), blue(n * n, 0.0);
    const double rgb[3] = {1.0, 4.0, 0.25};
    ORNEX_Draw_AA_Circle_RGB_D(red.data(), green.data(), blue.data(), rgb, 0, radius, centre, centre, 0, n - 1, 0,
                               n - 1, n, radius);
    // On a zero background every value is a sum of weights times the
    // colour, and scaling by a power of two is exact.
    for (int32_t k = 0; k < n * n; ++k) {
        EXPECT_EQ(planes[k], 2.0 * reference.pixels[k]);
        EXPECT_EQ(planes[n * n + k], 0.5 * reference.pixels[k]);
        EXPECT_EQ(red[k], reference.pixels[k]);
        EXPECT_EQ(green[k], 4.0 * reference.pixels[k]);
        EXPECT_EQ(blue[k], 0.25 * reference.pixels[k]);
    }
}

TEST(AACircle, ClippingSkipsPixelsWithoutShorteningTheWalk)
{
    // The same circle drawn whole in a larger image, 20 rows and columns on.
    const Canvas whole = drawDouble(80, 26, 50, 12);
    Canvas clipped(40, 0.0);
    const double value = 1;
    ORNEX_Draw_AA_Circle_I_D(clipped.pixels.data(), &value, 0, 12, 6, 30, 2, 39, 0, 35, 40, 12, 1, 1600);
    for (int32_t c = 0; c < 40; ++c) {
        for (int32_t r = 0; r < 40; ++r) {
            const bool inside = r >= 2 && c <= 35;
            EXPECT_EQ(clipped.at(r, c), inside ? whole.at(r + 20, c + 20) : 0.0) << r << "," << c;
        }
    }
}

TEST(AACircle, OtherMembersFollowTheDoubleOutline)
{
    const auto table = squareRootTable();
    const int32_t n = 61, centre = 30, radius = 27;
    const Canvas reference = drawDouble(n, centre, centre, radius, 0, 1);
    std::vector<float> singles(n * n, 0.0f);
    const float one = 1.0f;
    ORNEX_Draw_AA_Circle_I_R(singles.data(), &one, 0, radius, centre, centre, 0, n - 1, 0, n - 1, n, radius, 1, n * n);
    std::vector<uint16_t> words(n * n, 0);
    const uint16_t full = 60000;
    ORNEX_Draw_AA_Circle_I_UI16(words.data(), &full, table.data(), 0, radius, centre, centre, 0, n - 1, 0, n - 1, n,
                                radius, 1, n * n);
    std::vector<int8_t> red(n * n, 0), green(n * n, 0), blue(n * n, 0);
    const int8_t rgb[3] = {100, -100, 0};
    ORNEX_Draw_AA_Circle_RGB_I8(red.data(), green.data(), blue.data(), rgb, table.data(), 0, radius, centre, centre,
                                0, n - 1, 0, n - 1, n, radius);
    for (int32_t k = 0; k < n * n; ++k) {
        EXPECT_NEAR(singles[k], reference.pixels[k], 1e-5);
        // The table index truncates x*4096/r, so the crossing it gives is off
        // by up to about r/4096 of a pixel, plus the Q10 rounding.
        EXPECT_NEAR(words[k], 60000 * reference.pixels[k], 60000 * (radius + 4) / 4096.0);
        EXPECT_NEAR(red[k], 100 * reference.pixels[k], 2.0);
        EXPECT_NEAR(green[k], -100 * reference.pixels[k], 2.0);
        EXPECT_EQ(blue[k], 0);
    }
}

} // namespace
