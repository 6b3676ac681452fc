#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "flow_images.hpp"
#include "ornex_rt.h"

namespace {

TEST(LucasKanadeKernels, TemporalFilterMeetsTheLastFrameWithTheFirstTap)
{
    const std::vector<double> f0 = {1, 2, 3}, f1 = {10, 20, 40};
    const double *frames[2] = {f0.data(), f1.data()};
    const double taps[2] = {1, -1};
    std::vector<double> out(3, -1);
    ORNEX_OFLK_ConvT_D(frames, out.data(), taps, 3, 2);
    EXPECT_EQ(out, (std::vector<double>{9, 18, 37}));
    ORNEX_OFLK_ConvT_D(frames, out.data(), taps, 0, 2);
    EXPECT_EQ(out, (std::vector<double>{9, 18, 37})) << "no pixels: nothing written";
}

TEST(LucasKanadeKernels, SpatialFiltersCorrelateAndClearEveryBorder)
{
    // in(r, c) = 10 r + c on 5 rows by 6 columns, taps (1, 2, 4), h = 1.
    const int32_t rows = 5, cols = 6;
    std::vector<float> in(rows * cols), out(rows * cols, -1);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            in[r + c * rows] = float(10 * r + c);
        }
    }
    const float taps[3] = {1, 2, 4};
    ORNEX_OFLK_ConvX_R(in.data(), out.data(), taps, rows, cols, 3);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const bool inside = r >= 1 && r < rows - 1 && c >= 1 && c < cols - 1;
            // 1 in(c-1) + 2 in(c) + 4 in(c+1) = 70 r + 7 c + 3.
            EXPECT_EQ(out[r + c * rows], inside ? float(70 * r + 7 * c + 3) : 0.0f) << r << "," << c;
        }
    }
    ORNEX_OFLK_ConvY_R(in.data(), out.data(), taps, rows, cols, 3);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const bool inside = r >= 1 && r < rows - 1 && c >= 1 && c < cols - 1;
            // 1 in(r-1) + 2 in(r) + 4 in(r+1) = 70 r + 30 + 7 c.
            EXPECT_EQ(out[r + c * rows], inside ? float(70 * r + 30 + 7 * c) : 0.0f) << r << "," << c;
        }
    }
    // Five taps on 4x4: no pixel lies two away from every edge.
    std::vector<double> small(16, 3), smallOut(16, -1);
    const double five[5] = {1, 1, 1, 1, 1};
    ORNEX_OFLK_ConvX_D(small.data(), smallOut.data(), five, 4, 4, 5);
    EXPECT_EQ(smallOut, std::vector<double>(16, 0));
}

struct FixedFilterRun {
    int32_t rows, cols;
    std::vector<double> result, sums[5];

    FixedFilterRun(const std::vector<double> &image1, const std::vector<double> &image2, int32_t m, int32_t n,
                   double threshold, bool complexResult = false)
        : rows(m), cols(n), result((complexResult ? 2 : 1) * m * n, -7)
    {
        for (auto &s : sums) {
            s.assign(m * n, -7);
        }
        auto run = complexResult ? ORNEX_OpticalFlow_LK_Z : ORNEX_OpticalFlow_LK_D;
        run(image1.data(), image2.data(), result.data(), sums[0].data(), sums[1].data(), sums[2].data(),
            sums[3].data(), sums[4].data(), &threshold, m, n);
    }
    double sum(int k, int32_t r, int32_t c) const { return sums[k][r + c * rows]; }
};

TEST(LucasKanadeFixed, TermsOutsideTheImageAreLeftOut)
{
    // I(r, c) = c and It = 1 on 12 x 12. Ix = -1 where all four taps fit
    // (columns 2..9); in column 0 only -2/3 I(1) + 1/12 I(2) = -1/2; in
    // column 1 2/3 I(0) - 2/3 I(2) + 1/12 I(3) = -13/12. On rows 2..9 all the
    // weights down the rows are present and sum to 1, so d = sum w Ix It is
    // the sum across columns: column 0 gets 3/8 (-1/2) + 1/4 (-13/12) +
    // 1/16 (-1) = -25/48, column 5 gets -1.
    const int32_t rows = 12, cols = 12;
    std::vector<double> image1(rows * cols), image2(rows * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            image1[r + c * rows] = c;
            image2[r + c * rows] = c + 1;
        }
    }
    const FixedFilterRun run(image1, image2, rows, cols, 1e30);
    for (int32_t r = 2; r <= 9; ++r) {
        EXPECT_NEAR(run.sum(3, r, 0), -25.0 / 48, 1e-14);
        EXPECT_NEAR(run.sum(3, r, 5), -1.0, 1e-14);
    }
    // Down the rows the taps cancel on rows 2..9, but row 0 keeps only
    // -2/3 I(1) + 1/12 I(2) = -7c/12 and row 1 only 2/3 I(0) - 2/3 I(2) +
    // 1/12 I(3) = c/12. Across columns 3..7 the weights average c to 5, so
    // e at row 0 is 3/8 (-35/12) + 1/4 (5/12) = -95/96; rows 4..7 stay 0.
    EXPECT_NEAR(run.sum(4, 0, 5), -95.0 / 96, 1e-13);
    for (int32_t r = 4; r <= 7; ++r) {
        EXPECT_NEAR(run.sum(4, r, 5), 0.0, 1e-13);
    }
    // Nothing passes an enormous threshold.
    EXPECT_EQ(run.result, std::vector<double>(rows * cols, 0));
}

TEST(LucasKanadeFixed, EigenvalueEqualToTheThresholdPasses)
{
    // A black image: a = b = c = 0, so both eigenvalues are 0. A threshold
    // of 0 lets both pass and the full solution divides 0 by a zero
    // determinant; any positive threshold gives 0.
    const std::vector<double> black(25, 0);
    const FixedFilterRun passing(black, black, 5, 5, 0.0);
    for (double value : passing.result) {
        EXPECT_TRUE(std::isnan(value));
    }
    const FixedFilterRun failing(black, black, 5, 5, 1e-300);
    EXPECT_EQ(failing.result, std::vector<double>(25, 0));
}

TEST(LucasKanadeFixed, TranslatedPatternGivesTheDefinedSign)
{
    // Content moving 0.3 rows down and 0.4 columns right; with the
    // previous-minus-next derivative the solution is u = -0.4, v = -0.3.
    const int32_t rows = 30, cols = 30;
    const auto image1 = smoothPattern<double>(rows, cols, 0, 0);
    const auto image2 = smoothPattern<double>(rows, cols, 0.3, 0.4);
    const FixedFilterRun run(image1, image2, rows, cols, 1e-3, true);
    EXPECT_NEAR(interiorMean(run.result, rows, cols, 5, 2, 0), -0.4, 0.05);
    EXPECT_NEAR(interiorMean(run.result, rows, cols, 5, 2, 1), -0.3, 0.05);
    const FixedFilterRun squared(image1, image2, rows, cols, 1e-3);
    EXPECT_NEAR(interiorMean(squared.result, rows, cols, 5), 0.25, 0.05);
}

// The Gaussian-derivative driver on three frames with forward-looking
// filters: temporal derivative (1, 0, -1)/2 meets the last frame first, so it
// is (F2 - F0)/2; spatial derivative (-1/2, 0, 1/2) is (next - previous)/2.
template <class T>
std::vector<T> gder(const std::vector<std::vector<T>> &frames, int32_t rows, int32_t cols, T threshold,
                    bool normalFlow, bool complexResult)
{
    const T tempDeriv[3] = {0.5, 0, -0.5}, spatDeriv[3] = {-0.5, 0, 0.5};
    const T tempSmooth[1] = {1}, spatSmooth[3] = {0.25, 0.5, 0.25};
    const T window[5] = {1.0 / 16, 4.0 / 16, 6.0 / 16, 4.0 / 16, 1.0 / 16};
    const T *framePointers[3] = {frames[0].data(), frames[1].data(), frames[2].data()};
    std::vector<T> result((complexResult ? 2 : 1) * rows * cols, T(-7));
    std::vector<T> sums[5];
    for (auto &s : sums) {
        s.assign(rows * cols, T(-7));
    }
    auto run = [&](auto flow) {
        flow(framePointers, result.data(), sums[0].data(), sums[1].data(), sums[2].data(), sums[3].data(),
             sums[4].data(), &threshold, tempDeriv, spatDeriv, tempSmooth, spatSmooth, window, rows, cols, 3, 3, 1, 3,
             5, normalFlow);
    };
    if constexpr (std::is_same_v<T, double>) {
        complexResult ? run(ORNEX_OpticalFlow_LK_GDER_Z) : run(ORNEX_OpticalFlow_LK_GDER_D);
    } else {
        complexResult ? run(ORNEX_OpticalFlow_LK_GDER_C) : run(ORNEX_OpticalFlow_LK_GDER_R);
    }
    return result;
}

TEST(LucasKanadeGaussianDerivative, ImagesWithoutPixelsTouchNoBuffer)
{
    // Every buffer a heap block of exactly its stated size, none when M or N
    // is below 1, so that AddressSanitizer sees any element touched: -2 x -3
    // is not six pixels.
    const std::unique_ptr<double[]> none(new double[0]);
    double *nothing = none.get();
    const double *frames[1] = {nothing};
    const double one = 1;
    for (const auto &[rows, cols] : {std::pair{0, 4}, {-1, 4}, {-2, -3}}) {
        ORNEX_OpticalFlow_LK_GDER_D(frames, nothing, nothing, nothing, nothing, nothing, nothing, &one, &one, &one,
                                    &one, &one, &one, rows, cols, 1, 1, 1, 1, 1, 1);
    }
}

TEST(LucasKanadeGaussianDerivative, TranslatedPatternMovesWithTheContent)
{
    // Content moving 0.25 rows down and 0.5 columns right per frame; with
    // forward-looking filters the flow has the motion's own sign. The
    // smoothing frame is the middle one: the one-tap smoothing filter starts
    // (3 - 1)/2 = 1 frame later.
    const int32_t rows = 32, cols = 32;
    std::vector<std::vector<float>> frames;
    for (int k = 0; k < 3; ++k) {
        frames.push_back(smoothPattern<float>(rows, cols, 0.25 * k, 0.5 * k));
    }
    const auto flow = gder<float>(frames, rows, cols, 1e-3f, false, true);
    EXPECT_NEAR(interiorMean(flow, rows, cols, 6, 2, 0), 0.5, 0.05);
    EXPECT_NEAR(interiorMean(flow, rows, cols, 6, 2, 1), 0.25, 0.05);
    // Only the first two rows and columns are cleared by the solve.
    for (int32_t c = 0; c < cols; ++c) {
        EXPECT_EQ(flow[2 * (0 + c * rows)], 0.0f);
        EXPECT_EQ(flow[2 * (1 + c * rows) + 1], 0.0f);
    }
}

TEST(LucasKanadeGaussianDerivative, WeakDirectionGivesNormalFlowOnlyWhenAsked)
{
    // Stripes across the columns moving 0.4 columns right per frame, over a
    // faint static texture down the rows: the larger eigenvalue (about 100)
    // passes a threshold of 1, the smaller (about 0.1) does not.
    const int32_t rows = 24, cols = 24;
    std::vector<std::vector<double>> frames(3, std::vector<double>(rows * cols));
    for (int k = 0; k < 3; ++k) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                frames[k][r + c * rows] = 50 * std::sin(0.3 * (c - 0.4 * k)) + 2 * std::sin(0.25 * r);
            }
        }
    }
    EXPECT_EQ(gder<double>(frames, rows, cols, 1.0, false, true), std::vector<double>(2 * rows * cols, 0.0));
    // The normal (n1, n2) is close to (+-1, 0) and the full solution to
    // (0.4, 0), so s = -(0.4 n1) and the crossed placement puts s n2 (about
    // 0) in the real part and s n1 = -0.4 n1^2 in the imaginary part.
    const auto normal = gder<double>(frames, rows, cols, 1.0, true, true);
    EXPECT_NEAR(interiorMean(normal, rows, cols, 6, 2, 0), 0.0, 0.05);
    EXPECT_NEAR(interiorMean(normal, rows, cols, 6, 2, 1), -0.4, 0.05);
    // The real-valued member gives s^2 (n1^2 + n2^2), about 0.16.
    const auto squared = gder<double>(frames, rows, cols, 1.0, true, false);
    EXPECT_NEAR(interiorMean(squared, rows, cols, 6), 0.16, 0.03);
}

} // namespace
