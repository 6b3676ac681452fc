#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "ornex_rt.h"

constexpr double pi = 3.14159265358979323846;
constexpr int pad = 40; // bins outside the rho range land here (they are not range-checked)

template <class T>
class Hough : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Hough, Precisions);

TYPED_TEST(Hough, VotesMatchThePlainLoopAndALinePeaksAtItsParameters)
{
    using T = TypeParam;
    std::mt19937 random(5);
    auto vote = [](const std::vector<uint8_t> &image, int rows, int cols, int numRho, int numTheta, T rho0) {
        std::vector<T> table(numTheta), acc(size_t(numRho) * (2 * numTheta - 2) + 2 * pad, T(-3));
        for (int t = 0; t < numTheta; ++t) table[t] = T(std::sin(pi / 2 * (t - numTheta + 1) / (numTheta - 1)));
        if constexpr (std::is_same_v<T, double>)
            ORNEX_Hough_D(image.data(), acc.data() + pad, table.data(), &rho0, rows, cols, numRho, numTheta);
        else
            ORNEX_Hough_R(image.data(), acc.data() + pad, table.data(), &rho0, rows, cols, numRho, numTheta);
        return std::pair{acc, table};
    };
    for (int trial = 0; trial < 100; ++trial) {
        const int rows = random() % 12, cols = random() % 12, numTheta = 2 + random() % 20;
        // rho0 = -(k + 0.5), numRho = 2k + 2: the scale is 1 and the -90 and
        // 0 degree columns land on exact halves; a short range gives bins
        // below 0 and past the end, as does a positive rho0 (scale -1).
        const int k = random() % 18, numRho = 2 * k + 2;
        const T rho0 = (trial % 4 ? -1 : 1) * (T(k) + T(0.5)), scale = T(numRho - 1) / (rho0 * T(-2.0));
        std::vector<uint8_t> image(size_t(rows) * cols);
        for (auto &p : image) p = random() % 3 == 0 ? uint8_t(1 + random() % 255) : 0;
        const auto [acc, s] = vote(image, rows, cols, numRho, numTheta, rho0);
        std::vector<T> expected(acc.size(), T(0));
        std::fill_n(expected.begin(), pad, T(-3)), std::fill_n(expected.end() - pad, pad, T(-3));
        for (int i = 0; i < rows * cols; ++i)
            for (int t = 0, j = -numTheta, r = i % rows, c = i / rows; image[i] && t < 2 * numTheta - 2; ++t, ++j) {
                const T value = t < numTheta ? (s[t] * T(r) - s[numTheta - 1 - t] * T(c) - rho0) * scale
                                             : (-s[numTheta - 2 - j] * T(r) - s[1 + j] * T(c) - rho0) * scale;
                expected[pad + t * numRho + int(value > 0 ? value + T(0.5) : value - T(0.5))] += 1;
            }
        ASSERT_EQ(acc, expected) << trial;
    }
    // column cos 30 + row sin 30 = 20 in 64 x 64: 30 degrees is theta column
    // numTheta + 29, rho 20 bin (20 + 90.5) * 180 / 181.
    std::vector<uint8_t> line(64 * 64, 0);
    for (int r = 0; r < 64; ++r)
        if (const long c = std::lround((20 - r * 0.5) / std::cos(pi / 6)); c >= 0) line[r + 64 * c] = 1;
    const auto acc = vote(line, 64, 64, 181, 91, T(-90.5)).first;
    const auto peak = std::max_element(acc.begin(), acc.end()) - acc.begin() - pad;
    EXPECT_EQ(peak / 181, 91 + 29);
    EXPECT_NEAR(double(peak % 181), (20 + 90.5) * 180 / 181, 1.0);
}

TYPED_TEST(Hough, EndPointsAreTheFirstTwoBorderCrossings)
{
    using T = TypeParam;
    const T eps = std::numeric_limits<T>::epsilon();
    auto run = [](const std::vector<T> &theta, const std::vector<T> &rho, int rows, int cols) {
        std::vector<int32_t> points(4 * theta.size() + 4, -9);
        std::vector<T> real(4 * theta.size() + 4, T(-9));
        const int n = int(theta.size());
        if constexpr (std::is_same_v<T, double>) {
            ORNEX_HoughLines_D(theta.data(), rho.data(), points.data(), n, rows, cols);
            ORNEX_HoughLines_DO(theta.data(), rho.data(), real.data(), n, rows, cols);
        } else {
            ORNEX_HoughLines_R(theta.data(), rho.data(), points.data(), n, rows, cols);
            ORNEX_HoughLines_RO(theta.data(), rho.data(), real.data(), n, rows, cols);
        }
        EXPECT_EQ(std::vector<T>(points.begin(), points.end()), real);
        return real;
    };
    // theta 0, rho 5: column 5 from top to bottom; through the corner at 45
    // degrees top and left both give (0, 0), kept twice; far outside: -1;
    // column + row = 20 in 16 x 16: right border at row 5, bottom at column 5.
    EXPECT_EQ(run({0, T(pi / 4), 0}, {5, 0, 500}, 10, 12), (std::vector<T>{0, 5, 9, 5, 0, 0, 0, 0, -1, -1, -1, -1, -9, -9, -9, -9}));
    EXPECT_EQ(run({T(pi / 4)}, {T(20 / std::sqrt(2.0))}, 16, 16), (std::vector<T>{5, 15, 15, 5, -9, -9, -9, -9}));
    EXPECT_EQ(run({}, {}, 10, 12), std::vector<T>(4, T(-9)));

    std::mt19937 random(9);
    std::vector<T> theta(600), rho(600);
    for (size_t i = 0; i < theta.size(); ++i) {
        theta[i] = T(i % 5 ? std::uniform_real_distribution<double>(-pi / 2, pi / 2)(random) : pi / 180 * int(random() % 181 - 90));
        rho[i] = T(i % 3 ? std::uniform_real_distribution<double>(-25, 25)(random) : int(random() % 41 - 10) / 2.0);
        // A top crossing at exactly column -0.5, which rounds up to 0.
        const T c = T(std::cos(double(theta[i]))) + eps, target = T(-0.5) * c;
        if (i % 4 == 3 && (target - eps) + eps == target && target / c == T(-0.5)) rho[i] = target - eps;
    }
    const int rows = 1 + random() % 20, cols = 1 + random() % 20;
    std::vector<T> expected(4 * theta.size() + 4, T(-9));
    for (size_t i = 0; i < theta.size(); ++i) {
        const T r = rho[i] + eps, a = r / (T(std::cos(double(theta[i]))) + eps), b = r / (T(std::sin(double(theta[i]))) + eps);
        const T top = std::floor(a + T(0.5)), left = std::floor(b + T(0.5)),
                right = std::floor((a - T(cols - 1)) * (b / a) + T(0.5)), bottom = std::floor(a - (a / b) * T(rows - 1) + T(0.5));
        const T found[4][2] = {{0, top}, {left, 0}, {right, T(cols - 1)}, {T(rows - 1), bottom}};
        auto in = [](T v, int size) { return v >= 0 && v <= T(size - 1); };
        const bool inside[4] = {in(top, cols), in(left, rows), in(right, rows), in(bottom, cols)};
        std::vector<T> points;
        for (int k = 0; k < 4 && points.size() < 4; ++k)
            if (inside[k]) points.insert(points.end(), found[k], found[k] + 2);
        if (points.size() < 4) points.assign(4, T(-1));
        std::copy(points.begin(), points.end(), expected.begin() + 4 * i);
    }
    EXPECT_EQ(run(theta, rho, rows, cols), expected);
}
