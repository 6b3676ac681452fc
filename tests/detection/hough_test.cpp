#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr double pi = 3.14159265358979323846;

template <class T>
std::vector<T> sineTable(int numTheta)
{
    std::vector<T> table(numTheta);
    for (int t = 0; t < numTheta; ++t) table[t] = T(std::sin((-90.0 + 90.0 * t / (numTheta - 1)) * pi / 180));
    table.front() = -1, table.back() = 0;
    return table;
}

// Votes into an accumulator with numRho spare elements on both sides, which
// bins just outside the rho range reach (the bin is not range-checked).
template <class T>
std::vector<T> vote(const std::vector<uint8_t> &image, int rows, int cols, int numRho, int numTheta, T rho0)
{
    const auto table = sineTable<T>(numTheta);
    std::vector<T> acc(size_t(numRho) * (2 * numTheta), T(-3));
    if constexpr (std::is_same_v<T, double>)
        ORNEX_Hough_D(image.data(), acc.data() + numRho, table.data(), &rho0, rows, cols, numRho, numTheta);
    else
        ORNEX_Hough_R(image.data(), acc.data() + numRho, table.data(), &rho0, rows, cols, numRho, numTheta);
    return acc;
}

template <class T>
class HoughTest : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(HoughTest, Precisions);

TYPED_TEST(HoughTest, VotesMatchThePlainLoop)
{
    using T = TypeParam;
    std::mt19937 random(5);
    for (int trial = 0; trial < 60; ++trial) {
        const int rows = random() % 12, cols = random() % 12, numTheta = 2 + random() % 20;
        // rho0 = -(k + 0.5) and numRho = 2k + 2 make the scale 1: the -90 and
        // 0 degree columns land on exact halves, rounded away from zero. A
        // range one short of the image puts a few bins at -1.
        const int k = std::max(0, int(std::hypot(rows, cols)) - int(random() % 2));
        const int numRho = 2 * k + 2;
        const T rho0 = -(T(k) + T(0.5)), scale = T(numRho - 1) / (rho0 * T(-2.0));
        std::vector<uint8_t> image(size_t(rows) * cols);
        for (auto &p : image) p = random() % 3 == 0 ? uint8_t(1 + random() % 255) : 0;
        const auto table = sineTable<T>(numTheta);
        std::vector<T> expected(size_t(numRho) * (2 * numTheta), T(-3));
        std::fill(expected.begin() + numRho, expected.end() - numRho, T(0));
        for (int c = 0; c < cols; ++c)
            for (int r = 0; r < rows; ++r) {
                if (!image[r + c * rows]) continue;
                for (int t = 0; t < 2 * numTheta - 2; ++t) {
                    const int j = t - numTheta;
                    const T value = t < numTheta ? (table[t] * T(r) - table[numTheta - 1 - t] * T(c) - rho0) * scale
                                                 : (-table[numTheta - 2 - j] * T(r) - table[1 + j] * T(c) - rho0) * scale;
                    expected[numRho + t * numRho + int(value > 0 ? value + T(0.5) : value - T(0.5))] += 1;
                }
            }
        ASSERT_EQ(vote<T>(image, rows, cols, numRho, numTheta, rho0), expected) << trial;
    }
}

TYPED_TEST(HoughTest, DrawnLinePeaksAtItsParameters)
{
    using T = TypeParam;
    // column cos 30 + row sin 30 = 20 in a 64 x 64 image.
    const int rows = 64, cols = 64, numTheta = 91, numRho = 181;
    std::vector<uint8_t> image(rows * cols, 0);
    for (int r = 0; r < rows; ++r) {
        const int c = int(std::lround((20 - r * std::sin(pi / 6)) / std::cos(pi / 6)));
        if (c >= 0 && c < cols) image[r + c * rows] = 1;
    }
    const auto acc = vote<T>(image, rows, cols, numRho, numTheta, T(-90.5));
    const auto peak = std::max_element(acc.begin(), acc.end()) - acc.begin() - numRho;
    // 30 degrees is column numTheta + 29; rho 20 is bin (20 + 90.5) * 180 / 181.
    EXPECT_EQ(peak / numRho, numTheta + 29);
    EXPECT_NEAR(double(peak % numRho), (20 + 90.5) * 180 / 181, 1.0);
}

template <class T, class P>
std::vector<P> endPoints(const std::vector<T> &theta, const std::vector<T> &rho, int rows, int cols)
{
    std::vector<P> points(4 * theta.size() + 4, P(-9));
    auto run = [&](auto f) { f(theta.data(), rho.data(), points.data(), int(theta.size()), rows, cols); };
    constexpr bool D = std::is_same_v<T, double>, I = std::is_same_v<P, int32_t>;
    if constexpr (D && I) run(ORNEX_HoughLines_D); else if constexpr (D) run(ORNEX_HoughLines_DO);
    else if constexpr (I) run(ORNEX_HoughLines_R); else run(ORNEX_HoughLines_RO);
    return points;
}

// The crossings written plainly: top, left, right, bottom, two at most.
template <class T>
std::vector<T> plainEndPoints(const std::vector<T> &theta, const std::vector<T> &rho, int rows, int cols)
{
    const T eps = std::numeric_limits<T>::epsilon();
    std::vector<T> out(4 * theta.size() + 4, T(-9));
    for (size_t i = 0; i < theta.size(); ++i) {
        const T r = rho[i] + eps, a = r / (T(std::cos(double(theta[i]))) + eps),
                b = r / (T(std::sin(double(theta[i]))) + eps);
        const T top = std::floor(a + T(0.5)), left = std::floor(b + T(0.5)),
                right = std::floor((a - T(cols - 1)) * (b / a) + T(0.5)),
                bottom = std::floor(a - (a / b) * T(rows - 1) + T(0.5));
        const T candidates[4][2] = {{0, top}, {left, 0}, {right, T(cols - 1)}, {T(rows - 1), bottom}};
        const bool inside[4] = {top >= 0 && top <= cols - 1, left >= 0 && left <= rows - 1,
                                right >= 0 && right <= rows - 1, bottom >= 0 && bottom <= cols - 1};
        std::vector<T> found;
        for (int k = 0; k < 4 && found.size() < 4; ++k)
            if (inside[k]) found.insert(found.end(), candidates[k], candidates[k] + 2);
        if (found.size() < 4) found.assign(4, T(-1));
        std::copy(found.begin(), found.end(), out.begin() + 4 * i);
    }
    return out;
}

TYPED_TEST(HoughTest, EndPointsOnTheBorder)
{
    using T = TypeParam;
    // theta 0, rho 5: the column 5 from the top border to the bottom one;
    // through the corner at 45 degrees both top and left give (0, 0), kept
    // twice; a line far outside gives -1 four times; no line writes nothing.
    const std::vector<int32_t> expected = {0, 5, 9, 5, 0, 0, 0, 0, -1, -1, -1, -1, -9, -9, -9, -9};
    EXPECT_EQ((endPoints<T, int32_t>({0, T(pi / 4), 0}, {5, 0, 500}, 10, 12)), expected);
    EXPECT_EQ((endPoints<T, T>({0, T(pi / 4), 0}, {5, 0, 500}, 10, 12)), std::vector<T>(expected.begin(), expected.end()));
    EXPECT_EQ((endPoints<T, int32_t>({}, {}, 10, 12)), std::vector<int32_t>(4, -9));
    // column + row = 20 in 16 x 16 crosses the right border at row 5 and the
    // bottom at column 5.
    EXPECT_EQ((endPoints<T, int32_t>({T(pi / 4)}, {T(20 / std::sqrt(2.0))}, 16, 16)),
              (std::vector<int32_t>{5, 15, 15, 5, -9, -9, -9, -9}));

    std::mt19937 random(9);
    std::vector<T> theta(400), rho(400);
    for (size_t i = 0; i < theta.size(); ++i) {
        theta[i] = i % 5 == 0 ? T(pi / 180 * int(random() % 181 - 90))
                              : T(std::uniform_real_distribution<double>(-pi / 2, pi / 2)(random));
        rho[i] = i % 3 == 0 ? T(int(random() % 41) - 10) / 2 : T(std::uniform_real_distribution<double>(-25, 25)(random));
    }
    const int rows = 1 + random() % 20, cols = 1 + random() % 20;
    const auto expected2 = plainEndPoints(theta, rho, rows, cols);
    EXPECT_EQ((endPoints<T, T>(theta, rho, rows, cols)), expected2);
    EXPECT_EQ((endPoints<T, int32_t>(theta, rho, rows, cols)), std::vector<int32_t>(expected2.begin(), expected2.end()));
}

} // namespace
