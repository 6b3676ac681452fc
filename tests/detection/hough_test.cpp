#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr double pi = 3.14159265358979323846;

// sin(theta) for theta from -90 to 0 degrees in numTheta steps.
template <class T>
std::vector<T> sineTable(int32_t numTheta)
{
    std::vector<T> table(numTheta);
    for (int32_t t = 0; t < numTheta; ++t) {
        table[t] = T(std::sin((-90.0 + 90.0 * t / (numTheta - 1)) * pi / 180));
    }
    return table;
}

template <class T>
std::vector<T> vote(const std::vector<uint8_t> &image, int32_t rows, int32_t cols, int32_t numRho, int32_t numTheta,
                    T rho0)
{
    const auto table = sineTable<T>(numTheta);
    std::vector<T> accumulator(size_t(numRho) * (2 * numTheta - 2), T(-3));
    if constexpr (std::is_same_v<T, double>) {
        ORNEX_Hough_D(image.data(), accumulator.data(), table.data(), &rho0, rows, cols, numRho, numTheta);
    } else {
        ORNEX_Hough_R(image.data(), accumulator.data(), table.data(), &rho0, rows, cols, numRho, numTheta);
    }
    return accumulator;
}

template <class T>
class Hough : public ::testing::Test {};
using ElementTypes = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Hough, ElementTypes);

TYPED_TEST(Hough, OnePixelVotesOncePerThetaColumn)
{
    using T = TypeParam;
    const int32_t rows = 20, cols = 30, numRho = 73, numTheta = 10;
    const T rho0 = T(-36);
    std::vector<uint8_t> image(rows * cols, 0);
    const int32_t r = 7, c = 19;
    image[r + c * rows] = 255;
    const auto accumulator = vote<T>(image, rows, cols, numRho, numTheta, rho0);
    const auto table = sineTable<T>(numTheta);
    const T scale = T(numRho - 1) / (rho0 * T(-2.0));
    for (int32_t t = 0; t < 2 * numTheta - 2; ++t) {
        // The written formula, and its bin rounded half away from zero.
        T value;
        if (t < numTheta) {
            value = (table[t] * T(r) - table[numTheta - 1 - t] * T(c) - rho0) * scale;
        } else {
            const int32_t k = t - numTheta;
            value = (-table[numTheta - 2 - k] * T(r) - table[1 + k] * T(c) - rho0) * scale;
        }
        const int32_t bin = int32_t(value > 0 ? value + T(0.5) : value - T(0.5));
        for (int32_t k = 0; k < numRho; ++k) {
            ASSERT_EQ(accumulator[t * numRho + k], T(k == bin ? 1 : 0)) << "theta column " << t << ", bin " << k;
        }
        // And the geometry: rho = column cos(theta) + row sin(theta).
        const double theta = (t < numTheta ? -90.0 + 10.0 * t : 10.0 * (t - numTheta + 1)) * pi / 180;
        const double rho = c * std::cos(theta) + r * std::sin(theta);
        EXPECT_NEAR(bin, (rho - rho0) * scale, 0.51) << "theta column " << t;
    }
}

TYPED_TEST(Hough, DrawnLinePeaksAtItsParameters)
{
    using T = TypeParam;
    // The line column cos 30 + row sin 30 = 20 through a 64 x 64 image.
    const int32_t rows = 64, cols = 64, numTheta = 91, numRho = 181;
    const T rho0 = T(-90.5);
    std::vector<uint8_t> image(rows * cols, 0);
    const double theta = 30 * pi / 180;
    for (int32_t r = 0; r < rows; ++r) {
        const int32_t c = int32_t(std::lround((20 - r * std::sin(theta)) / std::cos(theta)));
        if (c >= 0 && c < cols) {
            image[r + c * rows] = 1;
        }
    }
    const auto accumulator = vote<T>(image, rows, cols, numRho, numTheta, rho0);
    const auto peak = std::max_element(accumulator.begin(), accumulator.end()) - accumulator.begin();
    // 30 degrees is column numTheta + 29 (90 degrees above entry 30); rho 20
    // is bin (20 + 90.5) * 180 / 181.
    EXPECT_EQ(peak / numRho, numTheta + 29);
    EXPECT_NEAR(double(peak % numRho), (20 + 90.5) * 180 / 181, 1.0);
}

TYPED_TEST(Hough, EmptyImagesOnlyClearTheAccumulator)
{
    using T = TypeParam;
    EXPECT_EQ(vote<T>(std::vector<uint8_t>(12, 0), 3, 4, 9, 5, T(-4)), std::vector<T>(9 * 8, T(0)));
    EXPECT_EQ(vote<T>(std::vector<uint8_t>(12, 1), 0, 4, 9, 5, T(-4)), std::vector<T>(9 * 8, T(0)));
}

template <class T, class P>
std::vector<P> endPoints(const std::vector<T> &theta, const std::vector<T> &rho, int32_t rows, int32_t cols)
{
    std::vector<P> points(4 * std::max<size_t>(theta.size(), 1), P(-9));
    auto run = [&](auto function) { function(theta.data(), rho.data(), points.data(), int32_t(theta.size()), rows, cols); };
    if constexpr (std::is_same_v<T, double> && std::is_same_v<P, int32_t>) {
        run(ORNEX_HoughLines_D);
    } else if constexpr (std::is_same_v<T, double>) {
        run(ORNEX_HoughLines_DO);
    } else if constexpr (std::is_same_v<P, int32_t>) {
        run(ORNEX_HoughLines_R);
    } else {
        run(ORNEX_HoughLines_RO);
    }
    return points;
}

TYPED_TEST(Hough, EndPointsOnTheBorder)
{
    using T = TypeParam;
    // theta 0, rho 5: the vertical line at column 5, from the top border to
    // the bottom one.
    EXPECT_EQ((endPoints<T, int32_t>({T(0)}, {T(5)}, 10, 12)), (std::vector<int32_t>{0, 5, 9, 5}));
    EXPECT_EQ((endPoints<T, T>({T(0)}, {T(5)}, 10, 12)), (std::vector<T>{0, 5, 9, 5}));
    // Through the corner (0, 0) at 45 degrees the top and left candidates
    // both give (0, 0): kept twice.
    EXPECT_EQ((endPoints<T, int32_t>({T(pi / 4)}, {T(0)}, 10, 12)), (std::vector<int32_t>{0, 0, 0, 0}));
    // A line far outside the image: -1 everywhere.
    EXPECT_EQ((endPoints<T, int32_t>({T(0)}, {T(500)}, 10, 12)), (std::vector<int32_t>{-1, -1, -1, -1}));
    // No lines: nothing written.
    EXPECT_EQ((endPoints<T, int32_t>({}, {}, 10, 12)), (std::vector<int32_t>{-9, -9, -9, -9}));
}

TYPED_TEST(Hough, EndPointsOfASlantedLine)
{
    using T = TypeParam;
    // theta 45 degrees, rho 10 / sqrt(2) * 2: column + row = 20 in a 16 x 16
    // image crosses the right border at row 5 and the bottom at column 5;
    // the top (column 20) and left (row 20) candidates fall outside.
    const T theta = T(pi / 4), rho = T(20 / std::sqrt(2.0));
    EXPECT_EQ((endPoints<T, int32_t>({theta}, {rho}, 16, 16)), (std::vector<int32_t>{5, 15, 15, 5}));
}

} // namespace
