#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "ornex_rt.h"

namespace {

using Point = std::pair<int32_t, int32_t>;

// The pixels of a rows x cols byte image that hold `value`.
std::set<Point> marked(const std::vector<uint8_t> &image, int32_t rows, uint8_t value)
{
    std::set<Point> points;
    for (size_t k = 0; k < image.size(); ++k) {
        if (image[k] == value) {
            points.insert({int32_t(k % rows), int32_t(k / rows)});
        }
    }
    return points;
}

TEST(CircleOutline, EightMirroredPointsOfAnOctantPoint)
{
    std::vector<uint8_t> image(20 * 20, 0);
    const uint8_t value = 9;
    ORNEX_Circle_SymOctantPts(image.data(), 10, 10, 2, 5, 0, 19, 0, 19, &value, 1, 20, 1, 400);
    EXPECT_EQ(marked(image, 20, 9), (std::set<Point>{{12, 15}, {8, 15}, {12, 5}, {8, 5},
                                                    {15, 12}, {5, 12}, {15, 8}, {5, 8}}));
    EXPECT_EQ(marked(image, 20, 0).size(), 400u - 8u);
}

TEST(CircleOutline, CoincidentPointsCollapse)
{
    std::vector<uint8_t> image(9 * 9, 0);
    const uint8_t value = 1;
    ORNEX_Circle_SymOctantPts(image.data(), 4, 4, 0, 0, 0, 8, 0, 8, &value, 1, 9, 1, 81);
    EXPECT_EQ(marked(image, 9, 1), (std::set<Point>{{4, 4}}));
    std::fill(image.begin(), image.end(), 0);
    ORNEX_Circle_SymOctantPts(image.data(), 4, 4, 3, 3, 0, 8, 0, 8, &value, 1, 9, 1, 81);
    EXPECT_EQ(marked(image, 9, 1), (std::set<Point>{{7, 7}, {1, 7}, {7, 1}, {1, 1}}));
    std::fill(image.begin(), image.end(), 0);
    ORNEX_Circle_SymOctantPts(image.data(), 4, 4, 0, 3, 0, 8, 0, 8, &value, 1, 9, 1, 81);
    EXPECT_EQ(marked(image, 9, 1), (std::set<Point>{{4, 7}, {4, 1}, {7, 4}, {1, 4}}));
}

TEST(CircleOutline, PointsOutsideTheRectangleAreSkippedOneByOne)
{
    // Centre on the top border: only the points at or below row 0 remain,
    // and the rectangle (rows 0..5, columns 0..6) cuts column 8 off.
    std::vector<uint8_t> image(10 * 10, 0);
    const uint8_t value = 1;
    ORNEX_Circle_SymOctantPts(image.data(), 0, 4, 1, 4, 0, 5, 0, 6, &value, 1, 10, 1, 100);
    EXPECT_EQ(marked(image, 10, 1), (std::set<Point>{{1, 0}, {4, 5}, {4, 3}}));
}

TEST(CircleOutline, WholeElementsPerPlaneForEverySize)
{
    // Two planes of 8-byte elements with a gap between them, and RGB planes
    // of 2-byte elements; every written element carries its plane's bytes.
    const int32_t rows = 7, cols = 7, stride = rows * cols + 3;
    std::vector<double> planes(2 * stride, -1.0);
    const double values[2] = {2.5, -7.25};
    ORNEX_Circle_SymOctantPts(planes.data(), 3, 3, 1, 2, 0, 6, 0, 6, values, 8, rows, 2, stride);
    int32_t written = 0;
    for (int32_t k = 0; k < rows * cols; ++k) {
        if (planes[k] != -1.0) {
            ++written;
            EXPECT_EQ(planes[k], 2.5);
            EXPECT_EQ(planes[stride + k], -7.25);
        }
    }
    EXPECT_EQ(written, 8);
    for (int32_t k = rows * cols; k < stride; ++k) {
        EXPECT_EQ(planes[k], -1.0);
    }

    std::vector<uint16_t> red(49, 0), green(49, 0), blue(49, 0);
    const uint16_t rgb[3] = {1000, 2000, 3000};
    ORNEX_Circle_SymOctantPts_RGB(red.data(), green.data(), blue.data(), 3, 3, 0, 2, 0, 6, 0, 6, rgb, 2, 7);
    for (int32_t k : {3 + 5 * 7, 3 + 1 * 7, 5 + 3 * 7, 1 + 3 * 7}) {
        EXPECT_EQ(red[k], 1000);
        EXPECT_EQ(green[k], 2000);
        EXPECT_EQ(blue[k], 3000);
    }
    EXPECT_EQ(std::count(red.begin(), red.end(), 0), 45);
}

} // namespace
