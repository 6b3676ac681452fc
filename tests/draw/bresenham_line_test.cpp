#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "ornex_rt.h"

namespace {

using Pixel = std::pair<int32_t, int32_t>; // (row, column)
using PixelSet = std::set<Pixel>;

constexpr uint8_t background = 0xEE;

// Draws into a one-byte image surrounded by a frame of sentinels and returns
// the pixels that changed.
PixelSet draw(int32_t r1, int32_t c1, int32_t r2, int32_t c2, int32_t rows, int32_t cols,
              std::array<int32_t, 4> rect)
{
    std::vector<uint8_t> image(static_cast<size_t>(rows) * cols, background);
    const uint8_t ink = 7;
    ORNEX_Line_Bresenham(r1, c1, r2, c2, image.data(), rows, &ink, 1, rect[0], rect[1], rect[2], rect[3], 1, 0);
    PixelSet drawn;
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const uint8_t value = image[r + static_cast<size_t>(c) * rows];
            if (value != background) {
                EXPECT_EQ(value, ink);
                drawn.insert({r, c});
            }
        }
    }
    return drawn;
}

PixelSet drawUnclipped(int32_t r1, int32_t c1, int32_t r2, int32_t c2)
{
    return draw(r1, c1, r2, c2, 40, 40, {0, 39, 0, 39});
}

// The digital line as a formula: along the major axis from the end with the
// lower major coordinate, the k-th pixel's minor coordinate is the start's
// plus k*|minor|/|major| rounded, exact halves away from the start.
PixelSet idealLine(int32_t r1, int32_t c1, int32_t r2, int32_t c2)
{
    const bool rowMajor = std::abs(r2 - r1) >= std::abs(c2 - c1);
    int32_t major1 = rowMajor ? r1 : c1, minor1 = rowMajor ? c1 : r1;
    int32_t major2 = rowMajor ? r2 : c2, minor2 = rowMajor ? c2 : r2;
    if (major2 < major1) {
        std::swap(major1, major2);
        std::swap(minor1, minor2);
    }
    const int32_t length = major2 - major1, rise = std::abs(minor2 - minor1);
    const int32_t direction = minor2 >= minor1 ? 1 : -1;
    PixelSet pixels;
    for (int32_t k = 0; k <= length; ++k) {
        const int32_t offset = length == 0 ? 0 : (2 * k * rise + length) / (2 * length);
        const int32_t major = major1 + k, minor = minor1 + direction * offset;
        pixels.insert(rowMajor ? Pixel{major, minor} : Pixel{minor, major});
    }
    return pixels;
}

TEST(Bresenham, WorkedExamples)
{
    EXPECT_EQ(drawUnclipped(0, 0, 2, 5), (PixelSet{{0, 0}, {0, 1}, {1, 2}, {1, 3}, {2, 4}, {2, 5}}));
    // The error reaches exactly 2 >= 2 after the first pixel and steps.
    EXPECT_EQ(drawUnclipped(0, 0, 1, 2), (PixelSet{{0, 0}, {1, 1}, {1, 2}}));
    EXPECT_EQ(drawUnclipped(5, 6, 5, 6), (PixelSet{{5, 6}}));
}

TEST(Bresenham, EveryWalkCaseFollowsTheIdealLine)
{
    const int32_t cases[][4] = {
        {3, 2, 3, 30},   // horizontal
        {3, 30, 3, 2},   // horizontal, reversed
        {2, 7, 25, 7},   // vertical
        {2, 2, 20, 20},  // diagonal down-right
        {2, 20, 20, 2},  // diagonal down-left
        {20, 2, 2, 20},  // diagonal given bottom-up
        {5, 1, 12, 33},  // column-major, rows increasing
        {30, 1, 12, 33}, // column-major, rows decreasing
        {1, 5, 36, 12},  // row-major, columns increasing
        {1, 30, 36, 12}, // row-major, columns decreasing
        {0, 0, 13, 26},  // column-major with exact halves
    };
    for (const auto &l : cases) {
        EXPECT_EQ(drawUnclipped(l[0], l[1], l[2], l[3]), idealLine(l[0], l[1], l[2], l[3]))
            << l[0] << "," << l[1] << " - " << l[2] << "," << l[3];
    }
    std::mt19937 random(5);
    std::uniform_int_distribution<int32_t> coordinate(0, 39);
    for (int i = 0; i < 300; ++i) {
        const int32_t r1 = coordinate(random), c1 = coordinate(random), r2 = coordinate(random),
                      c2 = coordinate(random);
        ASSERT_EQ(drawUnclipped(r1, c1, r2, c2), idealLine(r1, c1, r2, c2))
            << r1 << "," << c1 << " - " << r2 << "," << c2;
        // Reversed end-points walk from the same end.
        ASSERT_EQ(drawUnclipped(r2, c2, r1, c1), drawUnclipped(r1, c1, r2, c2));
    }
}

TEST(Bresenham, ClippedLinesRestartAtTheClippedStart)
{
    std::mt19937 random(6);
    std::uniform_int_distribution<int32_t> coordinate(-30, 70);
    const std::array<int32_t, 4> rect{5, 30, 8, 34};
    for (int i = 0; i < 300; ++i) {
        int32_t p1[2] = {coordinate(random), coordinate(random)};
        int32_t p2[2] = {coordinate(random), coordinate(random)};
        const PixelSet drawn = draw(p1[0], p1[1], p2[0], p2[1], 40, 40, rect);
        // Order the end-points as the drawer does, then clip them.
        const bool rowMajor = std::abs(p2[0] - p1[0]) >= std::abs(p2[1] - p1[1]);
        if ((rowMajor ? p2[0] - p1[0] : p2[1] - p1[1]) < 0) {
            std::swap(p1, p2);
        }
        if (!ORNEX_ClipLine(p1, p2, rect.data())) {
            ASSERT_TRUE(drawn.empty());
            continue;
        }
        ASSERT_EQ(drawn, idealLine(p1[0], p1[1], p2[0], p2[1]));
        for (const Pixel &pixel : drawn) {
            ASSERT_TRUE(pixel.first >= rect[0] && pixel.first <= rect[1] && pixel.second >= rect[2] &&
                        pixel.second <= rect[3]);
        }
    }
    EXPECT_TRUE(draw(-5, -5, -1, 20, 40, 40, {0, 39, 0, 39}).empty());
}

TEST(Bresenham, CopiesElementBytesIntoEveryPlane)
{
    // Three-byte elements (no fixed-size copy), two planes 30 elements apart
    // in one buffer of 5x4 planes.
    const int32_t rows = 5, cols = 4, planeStride = 30;
    std::vector<uint8_t> buffer(3 * (planeStride + rows * cols), 0);
    const uint8_t value[6] = {1, 2, 3, 4, 5, 6};
    ORNEX_Line_Bresenham(1, 0, 1, 2, buffer.data(), rows, value, 3, 0, 4, 0, 3, 2, planeStride);
    for (int32_t c = 0; c < 3; ++c) {
        const size_t plane0 = 3 * (1 + static_cast<size_t>(c) * rows), plane1 = plane0 + 3 * planeStride;
        EXPECT_EQ((std::vector<uint8_t>(buffer.begin() + plane0, buffer.begin() + plane0 + 3)),
                  (std::vector<uint8_t>{1, 2, 3}));
        EXPECT_EQ((std::vector<uint8_t>(buffer.begin() + plane1, buffer.begin() + plane1 + 3)),
                  (std::vector<uint8_t>{4, 5, 6}));
    }
    EXPECT_EQ(std::count(buffer.begin(), buffer.end(), 0), static_cast<long>(buffer.size() - 18));

    // No planes: nothing written.
    std::vector<double> image(20, 0.5);
    const double ink = 9;
    ORNEX_Line_Bresenham(0, 0, 4, 3, image.data(), 5, &ink, 8, 0, 4, 0, 3, 0, 20);
    EXPECT_EQ(image, std::vector<double>(20, 0.5));
}

TEST(Bresenham, RgbTakesOneValuePerPlane)
{
    const int32_t rows = 4, cols = 6;
    std::vector<uint16_t> red(rows * cols, 0), green(rows * cols, 0), blue(rows * cols, 0);
    const uint16_t colour[3] = {1000, 2000, 3000};
    ORNEX_Line_Bresenham_RGB(0, 0, 3, 5, red.data(), green.data(), blue.data(), rows, colour, 2, 0, 3, 0, 5);
    // (0,0)-(3,5): columns 0..5 with rows round(3k/5) = 0, 1, 1, 2, 2, 3.
    const int32_t expectedRows[6] = {0, 1, 1, 2, 2, 3};
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const bool on = expectedRows[c] == r;
            EXPECT_EQ(red[r + c * rows], on ? 1000 : 0);
            EXPECT_EQ(green[r + c * rows], on ? 2000 : 0);
            EXPECT_EQ(blue[r + c * rows], on ? 3000 : 0);
        }
    }
}

} // namespace
