#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "detection/hysteresis.hpp"
#include "ornex_rt.h"

namespace {

using Grid = std::vector<std::string>; // rows of '#' (edge) and '.'

// Runs the user-threshold driver and draws the edge map.
template <class T>
Grid cannyEdges(const std::vector<T> &image, int32_t rows, int32_t cols, const std::vector<T> &smoothing,
                const std::vector<T> &derivative, T low, T high, std::vector<T> *magnitude = nullptr)
{
    std::vector<T> a(rows * cols), b(rows * cols), c(rows * cols);
    std::vector<uint8_t> edges(rows * cols, 7);
    const T thresholds[2] = {low, high};
    const int32_t length = int32_t(smoothing.size());
    if constexpr (std::is_same_v<T, double>) {
        ORNEX_EdgeCanny_userTh_D(image.data(), smoothing.data(), derivative.data(), a.data(), b.data(), edges.data(),
                                 c.data(), thresholds, rows, cols, length);
    } else {
        ORNEX_EdgeCanny_userTh_R(image.data(), smoothing.data(), derivative.data(), a.data(), b.data(), edges.data(),
                                 c.data(), thresholds, rows, cols, length);
    }
    if (magnitude) {
        *magnitude = c;
    }
    Grid grid(rows, std::string(cols, '.'));
    for (int32_t r = 0; r < rows; ++r) {
        for (int32_t col = 0; col < cols; ++col) {
            const uint8_t flag = edges[r + col * rows];
            EXPECT_TRUE(flag == 0 || flag == 1);
            grid[r][col] = flag ? '#' : '.';
        }
    }
    return grid;
}

TEST(CannyStages, PeriodicSmoothingAndDerivatives)
{
    // One row 1 2 3 4 (and a copy below it), kernel halves of length 2.
    const std::vector<double> image = {1, 1, 2, 2, 3, 3, 4, 4}; // 2 x 4, column-major
    const double smoothing[2] = {2, 1};
    std::vector<double> h(8), v(8);
    ORNEX_RC_Gaussian_Smoothing_D(image.data(), smoothing, h.data(), v.data(), 2, 4, 2);
    // H(c) = 2 I(c) + (I(c+1) + I(c-1)), wrapping: column 0 sees 4 and 2.
    EXPECT_EQ(h, (std::vector<double>{8, 8, 8, 8, 12, 12, 12, 12}));
    // V down two rows: both neighbours of a row are the other row.
    EXPECT_EQ(v, (std::vector<double>{4, 4, 8, 8, 12, 12, 16, 16}));

    const double derivative[2] = {99, 0.5}; // element 0 is never read
    std::vector<double> d(8);
    ORNEX_C_Derivative_Image_D(image.data(), derivative, d.data(), 2, 4, 2);
    // 0.5 (I(c-1) - I(c+1)): column 0 is 0.5 (4 - 2).
    EXPECT_EQ(d, (std::vector<double>{1, 1, -1, -1, -1, -1, 1, 1}));
    ORNEX_R_Derivative_Image_D(image.data(), derivative, d.data(), 2, 4, 2);
    EXPECT_EQ(d, std::vector<double>(8, 0));
    // L = 1: no derivative terms at all.
    ORNEX_C_Derivative_Image_D(image.data(), derivative, d.data(), 2, 4, 1);
    EXPECT_EQ(d, std::vector<double>(8, 0));
}

TEST(CannyStages, SuppressionKeepsBordersAndNormalisesByTheLargest)
{
    // 4 x 4 gradients: the corner (0, 0) has magnitude 10 (unsuppressed
    // border), the interior pixel (1, 1) magnitude 5 above its neighbours
    // along x (both 0), the other interior pixels 0.
    std::vector<float> gx(16, 0), gy(16, 0), out(16, -1);
    gx[0] = 6;
    gy[0] = 8;
    gx[1 + 4] = 3;
    gy[1 + 4] = -4; // |gx| < |gy|: compared along the rows
    ORNEX_NonMaximum_Suppression_R(gx.data(), gy.data(), out.data(), 4, 4);
    EXPECT_EQ(out[0], 1.0f);
    EXPECT_EQ(out[5], 0.5f);
    for (int i = 0; i < 16; ++i) {
        if (i != 0 && i != 5) {
            EXPECT_EQ(out[i], 0.0f) << i;
        }
    }
    // All zero: divided by epsilon, still zero.
    std::fill(gx.begin(), gx.end(), 0.0f);
    std::fill(gy.begin(), gy.end(), 0.0f);
    ORNEX_NonMaximum_Suppression_R(gx.data(), gy.data(), out.data(), 4, 4);
    EXPECT_EQ(out, std::vector<float>(16, 0.0f));
}

// The suppression written plainly from its description, magnitudes computed
// on the spot, to hold the kernel's several-rows-at-once path to it.
template <class T>
std::vector<T> slowSuppression(const std::vector<T> &gx, const std::vector<T> &gy, int32_t rows, int32_t cols)
{
    auto mag = [&](int32_t r, int32_t c) {
        const size_t i = r + size_t(c) * rows;
        return std::sqrt(gx[i] * gx[i] + gy[i] * gy[i]);
    };
    std::vector<T> out(rows * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const size_t i = r + size_t(c) * rows;
            if (r == 0 || c == 0 || r == rows - 1 || c == cols - 1) {
                out[i] = mag(r, c);
                continue;
            }
            const bool same = gx[i] * gy[i] > T(0);
            T side1, side2;
            if (std::fabs(gx[i]) < std::fabs(gy[i])) {
                const T t = std::fabs(gx[i]) / std::fabs(gy[i]);
                side1 = (T(1) - t) * mag(r - 1, c) + t * (same ? mag(r - 1, c - 1) : mag(r - 1, c + 1));
                side2 = t * (same ? mag(r + 1, c + 1) : mag(r + 1, c - 1)) + (T(1) - t) * mag(r + 1, c);
            } else {
                const T t = std::fabs(gy[i]) / std::fabs(gx[i]);
                side1 = (T(1) - t) * mag(r, c + 1) + t * (same ? mag(r + 1, c + 1) : mag(r - 1, c + 1));
                side2 = t * (same ? mag(r - 1, c - 1) : mag(r + 1, c - 1)) + (T(1) - t) * mag(r, c - 1);
            }
            const T m = mag(r, c);
            out[i] = m > side1 && m > side2 ? m : T(0);
        }
    }
    T largest = 0;
    for (T v : out) {
        largest = v > largest ? v : largest;
    }
    for (T &v : out) {
        v = v / (largest == T(0) ? std::numeric_limits<T>::epsilon() : largest);
    }
    return out;
}

TEST(CannyStages, SuppressionAgreesWithThePlainDescription)
{
    std::mt19937 random(8);
    std::uniform_int_distribution<int> small(-3, 3);
    for (int trial = 0; trial < 20; ++trial) {
        const int32_t rows = 3 + trial * 7 % 23, cols = 3 + trial * 5 % 11;
        std::vector<float> gx(rows * cols), gy(rows * cols), out(rows * cols);
        for (size_t i = 0; i < gx.size(); ++i) {
            // Small integers make ties and zero gradients common.
            gx[i] = float(small(random)) / 2;
            gy[i] = float(small(random)) / 2;
        }
        ORNEX_NonMaximum_Suppression_R(gx.data(), gy.data(), out.data(), rows, cols);
        ASSERT_EQ(out, slowSuppression(gx, gy, rows, cols)) << "trial " << trial;
        std::vector<double> dx(gx.begin(), gx.end()), dy(gy.begin(), gy.end()), dout(rows * cols);
        ORNEX_NonMaximum_Suppression_D(dx.data(), dy.data(), dout.data(), rows, cols);
        ASSERT_EQ(dout, slowSuppression(dx, dy, rows, cols)) << "trial " << trial;
    }
}

TEST(Canny, ConstantImageHasNoEdges)
{
    std::vector<double> magnitude;
    const auto edges = cannyEdges<double>(std::vector<double>(30, 5.0), 5, 6, {0.5, 0.25}, {0, 0.5}, 0.1, 0.2,
                                          &magnitude);
    EXPECT_EQ(edges, Grid(5, std::string(6, '.')));
    EXPECT_EQ(magnitude, std::vector<double>(30, 0.0));
}

TEST(Canny, ImagesWithoutPixelsTouchNoBuffer)
{
    // Buffers of exactly their stated size, none when M or N is below 1:
    // AddressSanitizer reports any element touched (-1 x -1 is not one
    // pixel), and a negative size taken as a byte count crashes outright.
    const double smoothing[2] = {1, 0}, derivative[2] = {0, 0.5}, thresholds[2] = {0.1, 0.2}, percentage = 70;
    for (const auto &[rows, cols] : {std::pair{0, 3}, {-1, 3}, {3, -1}, {-1, -1}}) {
        const std::unique_ptr<double[]> image(new double[0]), a(new double[0]), b(new double[0]), c(new double[0]);
        const std::unique_ptr<uint8_t[]> edges(new uint8_t[0]);
        ORNEX_EdgeCanny_userTh_D(image.get(), smoothing, derivative, a.get(), b.get(), edges.get(), c.get(),
                                 thresholds, rows, cols, 2);
        ORNEX_EdgeCanny_autoTh_D(image.get(), smoothing, derivative, a.get(), b.get(), edges.get(), c.get(),
                                 &percentage, rows, cols, 2);
    }
}

TEST(Canny, RightBorderBandIsOneColumnWider)
{
    // Identical rows 0 50 100 100 100 100 100 100 50 0: with the identity
    // smoothing (1, 0) and derivative 0.5 (I(c-1) - I(c+1)), columns 1 and 8
    // are the two strict maxima of |Gx| (50 against 25 on each side). The
    // mirror-symmetric edges come out asymmetric: B = 1 clears column 0 on
    // the left but columns 8 and 9 on the right, and rows 0 and 5.
    const int32_t rows = 6, cols = 10;
    const double profile[10] = {0, 50, 100, 100, 100, 100, 100, 100, 50, 0};
    std::vector<double> image(rows * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            image[r + c * rows] = profile[c];
        }
    }
    const Grid expected = {"..........", ".#........", ".#........", ".#........", ".#........", ".........."};
    EXPECT_EQ(cannyEdges<double>(image, rows, cols, {1, 0}, {0, 0.5}, 0.9, 0.95), expected);
    std::vector<float> single(image.begin(), image.end());
    EXPECT_EQ(cannyEdges<float>(single, rows, cols, {1, 0}, {0, 0.5}, 0.9f, 0.95f), expected);
}

TEST(Canny, SingleBrightPixelGivesItsFourNeighbours)
{
    // A bright pixel at (4, 4): Gx is +-0.5 v beside it and Gy +-0.5 v above
    // and below; the pixel itself has no gradient. Each of the four is a
    // strict maximum along its gradient, and the trace links them through
    // their diagonal contacts.
    const int32_t rows = 9, cols = 9;
    std::vector<double> image(rows * cols, 0);
    image[4 + 4 * rows] = 80;
    const Grid expected = {".........", ".........", ".........", "....#....", "...#.#...",
                           "....#....", ".........", ".........", "........."};
    EXPECT_EQ(cannyEdges<double>(image, rows, cols, {1, 0, 0}, {0, 0.5, 0}, 0.5, 0.9), expected);
}

TEST(Canny, FilledRectangleGivesItsOutline)
{
    // Rows 10..29, columns 12..35 of a 40 x 48 image. Every edge pixel lies
    // within one pixel of the rectangle's boundary, and the boundary is
    // mostly found.
    const int32_t rows = 40, cols = 48;
    std::vector<float> image(rows * cols, 20);
    for (int32_t c = 12; c <= 35; ++c) {
        for (int32_t r = 10; r <= 29; ++r) {
            image[r + c * rows] = 200;
        }
    }
    // Gaussian (sigma 1) and derivative-of-Gaussian halves, length 4.
    std::vector<float> smoothing(4), derivative(4);
    for (int k = 0; k < 4; ++k) {
        smoothing[k] = float(std::exp(-0.5 * k * k) / 2.5066282746);
        derivative[k] = float(k * std::exp(-0.5 * k * k) / 2.5066282746);
    }
    const auto edges = cannyEdges<float>(image, rows, cols, smoothing, derivative, 0.2f, 0.5f);
    auto nearBoundary = [](int32_t r, int32_t c) {
        const bool rowsInside = r >= 9 && r <= 30, colsInside = c >= 11 && c <= 36;
        const bool nearRowEdge = (std::abs(r - 9.5) <= 1.5 || std::abs(r - 29.5) <= 1.5) && colsInside;
        const bool nearColEdge = (std::abs(c - 11.5) <= 1.5 || std::abs(c - 35.5) <= 1.5) && rowsInside;
        return nearRowEdge || nearColEdge;
    };
    int edgeCount = 0;
    for (int32_t r = 0; r < rows; ++r) {
        for (int32_t c = 0; c < cols; ++c) {
            if (edges[r][c] == '#') {
                ++edgeCount;
                EXPECT_TRUE(nearBoundary(r, c)) << r << "," << c;
            }
        }
    }
    // The outline is 2 * (20 + 24) = 88 pixels long.
    EXPECT_GT(edgeCount, 70);
}

TEST(CannyAutomatic, FullPercentageGivesThresholdsOneAndPointFour)
{
    const std::vector<float> magnitude = {0, 0.1f, 0.5f, 1, 0.7f, 0.2f};
    const auto thresholds = ornex::detection::automaticThresholds<float>(magnitude.data(), 100.0f, 2, 3, 0);
    EXPECT_EQ(thresholds.high, 1.0f);
    EXPECT_EQ(thresholds.low, 0.4f);
    // 50 per cent of 6 pixels is 3: bins 0 (0), 25 (0.1) and 51 (0.2) reach
    // 3 but the sum must exceed it, which bin 127 (0.5) does: k = 128.
    const auto half = ornex::detection::automaticThresholds<float>(magnitude.data(), 50.0f, 2, 3, 0);
    EXPECT_EQ(half.high, 0.5f);
    EXPECT_EQ(half.low, 0.5f * 0.4f);
}

TEST(Hysteresis, FollowsOneChainInsteadOfFloodFilling)
{
    // A seed S (>= high) at (2, 2) with two weak branches (>= low) going up
    // and down. The trace takes the first branch found (upward, position 1),
    // walks it to its end and then unwinds without looking at the rest, so
    // the downward branch stays unmarked although it touches the seed.
    const std::vector<std::string> map = {
        "..w..", // row 0
        "..w..", // row 1
        "..S..", // row 2
        "..w..", // row 3
        "..w..", // row 4
    };
    const int32_t rows = 5, cols = 5;
    std::vector<double> magnitude(rows * cols, 0);
    for (int32_t r = 0; r < rows; ++r) {
        for (int32_t c = 0; c < cols; ++c) {
            magnitude[r + c * rows] = map[r][c] == 'S' ? 1.0 : map[r][c] == 'w' ? 0.5 : 0.0;
        }
    }
    std::vector<int16_t> stacks(4 * rows * cols);
    std::vector<uint8_t> edges(rows * cols, 9);
    ornex::detection::TraceStack stack{stacks.data(), stacks.data() + rows * cols, stacks.data() + 2 * rows * cols,
                                       stacks.data() + 3 * rows * cols};
    ornex::detection::Hysteresis<double>(magnitude.data(), edges.data(), stack, {0.4, 0.9}, rows, cols).run();
    std::vector<std::string> marked(rows, std::string(cols, '.'));
    for (int32_t r = 0; r < rows; ++r) {
        for (int32_t c = 0; c < cols; ++c) {
            marked[r][c] = edges[r + c * rows] ? '#' : '.';
        }
    }
    EXPECT_EQ(marked, (std::vector<std::string>{"..#..", "..#..", "..#..", ".....", "....."}));
}

} // namespace
