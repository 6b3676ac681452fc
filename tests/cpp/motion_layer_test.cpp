#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "ornex/ornex.hpp"

namespace {

using ornex::BlockCost;
using ornex::BlockSearch;
using ornex::Image;
using ornex::ImageView;

constexpr int32_t kRows = 24, kCols = 32;

// A textured frame whose content has moved `down` rows and `right` columns:
// value(r, c) = pattern(r - down, c - right).
template <class T>
Image<T> texturedFrame(double down, double right, int32_t rows = kRows, int32_t cols = kCols)
{
    Image<T> frame(rows, cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const double y = r - down, x = c - right;
            frame(r, c) = T(100 + 40 * std::sin(0.61 * x + 0.2 * y) + 30 * std::cos(0.47 * y - 0.15 * x) +
                            12 * std::sin(0.05 * x * y));
        }
    }
    return frame;
}

// Runs `call`, which must throw std::invalid_argument with `message`.
template <class Call>
void expectRejected(Call call, const std::string &message)
{
    EXPECT_THROW(call(), std::invalid_argument) << message;
    try {
        call();
    } catch (const std::invalid_argument &error) {
        EXPECT_EQ(std::string(error.what()), message);
    }
}

// The exported members that give u + v*i, per element type.
template <class T>
struct Kernels;

template <>
struct Kernels<float> {
    static constexpr auto fullMad = ORNEX_BlockMatching_Full_MAD_C;
    static constexpr auto fullMse = ORNEX_BlockMatching_Full_MSE_C;
    static constexpr auto threeStepMad = ORNEX_BlockMatching_3Step_MAD_C;
    static constexpr auto threeStepMse = ORNEX_BlockMatching_3Step_MSE_C;
    static constexpr auto hornSchunck = ORNEX_OpticalFlow_HS_C;
    static constexpr auto lucasKanade = ORNEX_OpticalFlow_LK_C;
    static constexpr auto lucasKanadeGder = ORNEX_OpticalFlow_LK_GDER_C;
};

template <>
struct Kernels<double> {
    static constexpr auto fullMad = ORNEX_BlockMatching_Full_MAD_Z;
    static constexpr auto fullMse = ORNEX_BlockMatching_Full_MSE_Z;
    static constexpr auto threeStepMad = ORNEX_BlockMatching_3Step_MAD_Z;
    static constexpr auto threeStepMse = ORNEX_BlockMatching_3Step_MSE_Z;
    static constexpr auto hornSchunck = ORNEX_OpticalFlow_HS_Z;
    static constexpr auto lucasKanade = ORNEX_OpticalFlow_LK_Z;
    static constexpr auto lucasKanadeGder = ORNEX_OpticalFlow_LK_GDER_Z;
};

// Bitwise equality, so that NaN results compare equal to themselves.
template <class T>
bool same(T a, T b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

template <class T>
void expectField(const ornex::VelocityField<T> &field, const std::vector<T> &velocity, int32_t rows, int32_t cols)
{
    ASSERT_EQ(field.u.rows(), rows);
    ASSERT_EQ(field.u.cols(), cols);
    ASSERT_EQ(field.v.rows(), rows);
    ASSERT_EQ(field.v.cols(), cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const size_t i = static_cast<size_t>(r) + static_cast<size_t>(c) * rows;
            EXPECT_TRUE(same(field.u(r, c), velocity[2 * i])) << r << "," << c;
            EXPECT_TRUE(same(field.v(r, c), velocity[2 * i + 1])) << r << "," << c;
        }
    }
}

// Medians of the smaller and the larger eigenvalue of [[a, b], [b, c]] over
// the pixels: thresholds between which the solve takes every branch.
template <class T>
std::vector<double> eigenvalueMedians(const std::vector<T> &a, const std::vector<T> &b, const std::vector<T> &c)
{
    std::vector<double> smaller, larger;
    for (size_t i = 0; i < a.size(); ++i) {
        const double mean = 0.5 * (double(a[i]) + c[i]);
        const double spread = 0.5 * std::sqrt((double(a[i]) - c[i]) * (double(a[i]) - c[i]) + 4.0 * b[i] * b[i]);
        if (mean - spread > 0) {
            smaller.push_back(mean - spread);
            larger.push_back(mean + spread);
        }
    }
    std::sort(smaller.begin(), smaller.end());
    std::sort(larger.begin(), larger.end());
    EXPECT_FALSE(smaller.empty());
    return {smaller[smaller.size() / 2], larger[larger.size() / 2]};
}

// Some pixels moving, some at rest.
template <class T>
void expectMixed(const ornex::VelocityField<T> &field)
{
    size_t moving = 0;
    for (size_t i = 0; i < field.u.values().size(); ++i) {
        moving += field.u.values()[i] != T(0) || field.v.values()[i] != T(0);
    }
    EXPECT_GT(moving, 0u);
    EXPECT_LT(moving, field.u.values().size());
}

template <class T>
class MotionLayer : public ::testing::Test {};
using ElementTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(MotionLayer, ElementTypes);

// ---------------------------------------------------------------------------
// Block matching

// The exported driver on hand-sized working frames: the first frame the
// overlap larger, the second a margin of maxDisplacement + overlap/2 on every
// side, plus spare zeros after it for the one row and column that the last
// search regions read past it when an overlap is odd. `motion` is made
// longer than the grid and pre-filled, so that the number of blocks written
// can be checked.
template <class T>
std::vector<T> directBlockMatching(const Image<T> &frame1, const Image<T> &frame2,
                                   const ornex::BlockMatchingOptions &o, size_t motionElements)
{
    using Driver = decltype(Kernels<T>::fullMad);
    const bool full = o.search == BlockSearch::full, absolute = o.cost == BlockCost::absoluteDifference;
    const Driver driver = full ? (absolute ? Kernels<T>::fullMad : Kernels<T>::fullMse)
                               : (absolute ? Kernels<T>::threeStepMad : Kernels<T>::threeStepMse);
    const int32_t rows = frame1.rows(), cols = frame1.cols();
    const int32_t blockSize[2] = {o.blockSize.rows, o.blockSize.cols};
    const int32_t overlap[2] = {o.overlap.rows, o.overlap.cols};
    const int32_t maxDisplacement[2] = {o.maxDisplacement.rows, o.maxDisplacement.cols};
    const int32_t p1Rows = rows + overlap[0], p1Cols = cols + overlap[1];
    const int32_t p2Rows = rows + 2 * (maxDisplacement[0] + overlap[0] / 2);
    const int32_t p2Cols = cols + 2 * (maxDisplacement[1] + overlap[1] / 2);
    std::vector<T> padded1(static_cast<size_t>(p1Rows) * p1Cols, T(-1));
    std::vector<T> padded2(static_cast<size_t>(p2Rows) * (p2Cols + 1) + 1, T(0));
    std::vector<T> motion(motionElements, T(-999));
    driver(frame1.data(), frame2.data(), padded1.data(), padded2.data(), motion.data(), blockSize, overlap,
           maxDisplacement, rows, cols, p1Rows, p1Cols, p2Rows, p2Cols);
    return motion;
}

template <class T>
void expectSameAsDriver(const Image<T> &frame1, const Image<T> &frame2, const ornex::BlockMatchingOptions &options,
                        int32_t gridRows, int32_t gridCols)
{
    const Image<ornex::MotionVector<T>> motion = ornex::blockMatching(frame1, frame2, options);
    ASSERT_EQ(motion.rows(), gridRows);
    ASSERT_EQ(motion.cols(), gridCols);
    const size_t blocks = static_cast<size_t>(gridRows) * gridCols;
    const std::vector<T> expected = directBlockMatching(frame1, frame2, options, 2 * blocks + 8);
    for (size_t k = blocks; k < blocks + 4; ++k) {
        EXPECT_EQ(expected[2 * k], T(-999)) << "the driver wrote more blocks than the grid holds";
    }
    for (int32_t c = 0; c < gridCols; ++c) {
        for (int32_t r = 0; r < gridRows; ++r) {
            const size_t k = static_cast<size_t>(r) + static_cast<size_t>(c) * gridRows;
            EXPECT_EQ(motion(r, c).u, expected[2 * k]) << "block " << r << "," << c;
            EXPECT_EQ(motion(r, c).v, expected[2 * k + 1]) << "block " << r << "," << c;
        }
    }
}

TYPED_TEST(MotionLayer, BlockMatchingGivesTheDriversVectorsForEverySearchAndCost)
{
    using T = TypeParam;
    const Image<T> frame1 = texturedFrame<T>(0, 0), frame2 = texturedFrame<T>(1, 2);
    for (BlockSearch search : {BlockSearch::full, BlockSearch::threeStep}) {
        for (BlockCost cost : {BlockCost::absoluteDifference, BlockCost::squaredDifference}) {
            SCOPED_TRACE(testing::Message() << "search " << int(search) << ", cost " << int(cost));
            ornex::BlockMatchingOptions options;
            options.blockSize = {8, 8};
            options.maxDisplacement = {4, 4};
            options.search = search;
            options.cost = cost;
            expectSameAsDriver(frame1, frame2, options, 3, 4);
            // Overlapping blocks: steps of 6 rows and 6 columns.
            options.overlap = {2, 2};
            options.maxDisplacement = {3, 5};
            expectSameAsDriver(frame1, frame2, options, 4, 5);
            // Odd overlaps and no displacement across the columns.
            options.blockSize = {6, 10};
            options.overlap = {1, 3};
            options.maxDisplacement = {2, 0};
            expectSameAsDriver(frame1, frame2, options, 4, 4);
        }
    }
}

TYPED_TEST(MotionLayer, BlockMatchingFindsAShiftOfOneRowAndTwoColumns)
{
    using T = TypeParam;
    // Content moved one row down and two columns right: u = 2, v = 1 for
    // every block whose moved copy lies inside the second frame.
    const Image<T> frame1 = texturedFrame<T>(0, 0), frame2 = texturedFrame<T>(1, 2);
    ornex::BlockMatchingOptions options;
    options.maxDisplacement = {4, 4};
    const auto motion = ornex::blockMatching(frame1, frame2, options);
    ASSERT_EQ(motion.rows(), 3);
    ASSERT_EQ(motion.cols(), 4);
    for (int32_t c = 0; c + 1 < motion.cols(); ++c) {
        for (int32_t r = 0; r + 1 < motion.rows(); ++r) {
            EXPECT_EQ(motion(r, c), (ornex::MotionVector<T>{2, 1})) << r << "," << c;
        }
    }
}

TYPED_TEST(MotionLayer, BlockMatchingRejectsBadArguments)
{
    using T = TypeParam;
    const Image<T> frame = texturedFrame<T>(0, 0), narrower = texturedFrame<T>(0, 0, kRows, kCols - 1);
    const Image<T> twoPlanes(kRows, kCols, 2);
    auto with = [](auto change) {
        ornex::BlockMatchingOptions options;
        change(options);
        return options;
    };
    expectRejected([&] { ornex::blockMatching(frame, narrower); }, "frames: must have the same size");
    expectRejected([&] { ornex::blockMatching(ImageView<const T>{}, frame); }, "frame1: must be a non-empty image");
    expectRejected([&] { ornex::blockMatching(twoPlanes, twoPlanes); }, "frame1: must have one plane");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.blockSize = {0, 8}; })); },
                   "blockSize: must be positive");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.blockSize = {8, -2}; })); },
                   "blockSize: must be positive");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.overlap = {8, 0}; })); },
                   "overlap: must be smaller than the block size");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.overlap = {0, 9}; })); },
                   "overlap: must be smaller than the block size");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.overlap = {-1, 0}; })); },
                   "overlap: must not be negative");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.maxDisplacement = {3, -1}; })); },
                   "maxDisplacement: must not be negative");
    expectRejected(
        [&] {
            ornex::blockMatching(frame, frame, with([](auto &o) { o.maxDisplacement = {1 << 30, 0}; }));
        },
        "maxDisplacement: too large for the frame size");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.blockSize = {kRows + 1, 8}; })); },
                   "frames: must hold at least one block");
    expectRejected([&] { ornex::blockMatching(frame, frame, with([](auto &o) { o.blockSize = {8, kCols + 1}; })); },
                   "frames: must hold at least one block");
    // A block exactly the frame's size is one block.
    const auto whole = ornex::blockMatching(frame, frame, with([](auto &o) { o.blockSize = {kRows, kCols}; }));
    EXPECT_EQ(whole.rows(), 1);
    EXPECT_EQ(whole.cols(), 1);
}

// ---------------------------------------------------------------------------
// Horn-Schunck

template <class T>
std::vector<T> directHornSchunck(const Image<T> &frame1, const Image<T> &frame2, T smoothness,
                                 bool useMaxIterations, int32_t maxIterations, bool useThreshold, T threshold)
{
    const int32_t m = frame1.rows(), n = frame1.cols();
    const size_t pixels = static_cast<size_t>(m) * n;
    std::vector<T> velocity(2 * pixels, T(-5));
    std::vector<T> col1(m), col2(m), row1(n), row2(n);
    std::vector<T> xx(pixels), xy(pixels), yy(pixels), xt(pixels), yt(pixels), inv(pixels);
    std::vector<T> uA(m), uB(m), vA(m), vB(m);
    Kernels<T>::hornSchunck(frame1.data(), frame2.data(), velocity.data(), col1.data(), col2.data(), row1.data(),
                            row2.data(), xx.data(), xy.data(), yy.data(), xt.data(), yt.data(), inv.data(), uA.data(),
                            uB.data(), vA.data(), vB.data(), &smoothness, useMaxIterations, useThreshold,
                            &maxIterations, &threshold, m, n);
    return velocity;
}

TYPED_TEST(MotionLayer, HornSchunckGivesTheKernelsFieldForEachStopRule)
{
    using T = TypeParam;
    const Image<T> frame1 = texturedFrame<T>(0, 0), frame2 = texturedFrame<T>(0.25, 0.5);
    ornex::HornSchunckOptions options;
    options.smoothness = 2.5;
    options.maxIterations = 7;
    expectField(ornex::hornSchunck(frame1, frame2, options),
                directHornSchunck(frame1, frame2, T(2.5), true, 7, false, T(0)), kRows, kCols);
    options.maxIterations.reset();
    options.threshold = 0.01;
    expectField(ornex::hornSchunck(frame1, frame2, options),
                directHornSchunck(frame1, frame2, T(2.5), false, 0, true, T(0.01)), kRows, kCols);
    options.maxIterations = 3;
    expectField(ornex::hornSchunck(frame1, frame2, options),
                directHornSchunck(frame1, frame2, T(2.5), true, 3, true, T(0.01)), kRows, kCols);
    // The defaults: smoothness 1, ten sweeps.
    expectField(ornex::hornSchunck(frame1, frame2), directHornSchunck(frame1, frame2, T(1), true, 10, false, T(0)),
                kRows, kCols);
}

TYPED_TEST(MotionLayer, HornSchunckMatchesTheSquaredSpeedMembers)
{
    using T = TypeParam;
    // The squared-speed members leave v in their second output: the layer's
    // v must be that, and u^2 + v^2 the first output.
    const Image<T> frame1 = texturedFrame<T>(0, 0), frame2 = texturedFrame<T>(-0.5, 0.25);
    ornex::HornSchunckOptions options;
    options.maxIterations = 4;
    const auto flow = ornex::hornSchunck(frame1, frame2, options);
    const size_t pixels = static_cast<size_t>(kRows) * kCols;
    std::vector<T> speed(pixels), v(pixels), col1(kRows), col2(kRows), row1(kCols), row2(kCols);
    std::vector<T> products(6 * pixels), columns(4 * kRows);
    const T smoothness = 1;
    const int32_t maxIterations = 4;
    const T threshold = 0;
    T *p = products.data();
    if constexpr (std::is_same_v<T, float>) {
        ORNEX_OpticalFlow_HS_R(frame1.data(), frame2.data(), speed.data(), v.data(), col1.data(), col2.data(),
                               row1.data(), row2.data(), p, p + pixels, p + 2 * pixels, p + 3 * pixels,
                               p + 4 * pixels, p + 5 * pixels, columns.data(), columns.data() + kRows,
                               columns.data() + 2 * kRows, columns.data() + 3 * kRows, &smoothness, 1, 0,
                               &maxIterations, &threshold, kRows, kCols);
    } else {
        ORNEX_OpticalFlow_HS_D(frame1.data(), frame2.data(), speed.data(), v.data(), col1.data(), col2.data(),
                               row1.data(), row2.data(), p, p + pixels, p + 2 * pixels, p + 3 * pixels,
                               p + 4 * pixels, p + 5 * pixels, columns.data(), columns.data() + kRows,
                               columns.data() + 2 * kRows, columns.data() + 3 * kRows, &smoothness, 1, 0,
                               &maxIterations, &threshold, kRows, kCols);
    }
    bool moving = false;
    for (size_t i = 0; i < pixels; ++i) {
        const T u = flow.u.values()[i], vi = flow.v.values()[i];
        EXPECT_EQ(vi, v[i]) << i;
        EXPECT_EQ(u * u + vi * vi, speed[i]) << i;
        moving = moving || speed[i] > T(0);
    }
    EXPECT_TRUE(moving);
}

TYPED_TEST(MotionLayer, HornSchunckRejectsBadArguments)
{
    using T = TypeParam;
    const Image<T> frame = texturedFrame<T>(0, 0), shorter = texturedFrame<T>(0, 0, kRows - 1, kCols);
    auto with = [](auto change) {
        ornex::HornSchunckOptions options;
        change(options);
        return options;
    };
    expectRejected([&] { ornex::hornSchunck(frame, shorter); }, "frames: must have the same size");
    expectRejected([&] { ornex::hornSchunck(frame, ImageView<const T>{}); }, "frame2: must be a non-empty image");
    expectRejected([&] { ornex::hornSchunck(frame, frame, with([](auto &o) { o.maxIterations.reset(); })); },
                   "options: needs an iteration limit or a threshold");
    expectRejected([&] { ornex::hornSchunck(frame, frame, with([](auto &o) { o.maxIterations = 0; })); },
                   "maxIterations: must be positive");
    expectRejected([&] { ornex::hornSchunck(frame, frame, with([](auto &o) { o.threshold = 0.0; })); },
                   "threshold: must be positive");
    expectRejected(
        [&] {
            ornex::hornSchunck(frame, frame,
                               with([](auto &o) { o.threshold = std::numeric_limits<double>::quiet_NaN(); }));
        },
        "threshold: must be positive");
    expectRejected([&] { ornex::hornSchunck(frame, frame, with([](auto &o) { o.smoothness = 0; })); },
                   "smoothness: must be positive");
    expectRejected([&] { ornex::hornSchunck(frame, frame, with([](auto &o) { o.smoothness = -1; })); },
                   "smoothness: must be positive");
}

// ---------------------------------------------------------------------------
// Lucas-Kanade, fixed filters

TYPED_TEST(MotionLayer, LucasKanadeGivesTheKernelsField)
{
    using T = TypeParam;
    const Image<T> frame1 = texturedFrame<T>(0, 0), frame2 = texturedFrame<T>(0.3, -0.4);
    const size_t pixels = static_cast<size_t>(kRows) * kCols;
    std::vector<T> a(pixels), b(pixels), c(pixels), d(pixels), e(pixels);
    auto direct = [&](T tau) {
        std::vector<T> velocity(2 * pixels, T(-5));
        Kernels<T>::lucasKanade(frame1.data(), frame2.data(), velocity.data(), a.data(), b.data(), c.data(),
                                d.data(), e.data(), &tau, kRows, kCols);
        return velocity;
    };
    direct(T(1));
    const std::vector<double> medians = eigenvalueMedians(a, b, c);
    for (double threshold : {0.0039, medians[0], medians[1]}) {
        SCOPED_TRACE(threshold);
        const std::vector<T> velocity = direct(T(threshold));
        ornex::LucasKanadeOptions options;
        options.threshold = threshold;
        const auto flow = ornex::lucasKanade(frame1, frame2, options);
        expectField(flow, velocity, kRows, kCols);
        if (threshold == medians[1]) {
            expectMixed(flow);
        }
    }
}

TYPED_TEST(MotionLayer, LucasKanadeRejectsBadArguments)
{
    using T = TypeParam;
    const Image<T> frame = texturedFrame<T>(0, 0), narrower = texturedFrame<T>(0, 0, kRows, kCols - 3);
    ornex::LucasKanadeOptions zero;
    zero.threshold = 0;
    ornex::LucasKanadeOptions notANumber;
    notANumber.threshold = std::numeric_limits<double>::quiet_NaN();
    expectRejected([&] { ornex::lucasKanade(narrower, frame); }, "frames: must have the same size");
    expectRejected([&] { ornex::lucasKanade(frame, frame, zero); }, "threshold: must be positive");
    expectRejected([&] { ornex::lucasKanade(frame, frame, notANumber); }, "threshold: must be positive");
}

// ---------------------------------------------------------------------------
// Lucas-Kanade, Gaussian-derivative filters

TEST(MotionLayerTaps, GaussianTapsHaveTheirDefiningSums)
{
    // Three taps: (e, 1, e) / (1 + 2e) with e = exp(-1 / (2 sigma^2)); the
    // derivative -t g(t) / sum t^2 g(t) is (1/2, 0, -1/2) for every sigma.
    const double e = std::exp(-0.5 / (0.8 * 0.8));
    const std::vector<double> smoothing = ornex::lucasKanadeSmoothingTaps(0.8, 3);
    ASSERT_EQ(smoothing.size(), 3u);
    EXPECT_DOUBLE_EQ(smoothing[0], e / (1 + 2 * e));
    EXPECT_DOUBLE_EQ(smoothing[1], 1 / (1 + 2 * e));
    EXPECT_DOUBLE_EQ(smoothing[2], e / (1 + 2 * e));
    EXPECT_EQ(ornex::lucasKanadeDerivativeTaps(0.8, 3), (std::vector<double>{0.5, 0, -0.5}));
    EXPECT_EQ(ornex::lucasKanadeDerivativeTaps(3.0, 3), (std::vector<double>{0.5, 0, -0.5}));

    // Seven taps: smoothing symmetric and summing to 1; derivative odd,
    // summing to 0, and a unit ramp t gives -1.
    const std::vector<double> g = ornex::lucasKanadeSmoothingTaps(1.3, 7), d = ornex::lucasKanadeDerivativeTaps(1.3, 7);
    ASSERT_EQ(g.size(), 7u);
    ASSERT_EQ(d.size(), 7u);
    double gSum = 0, dSum = 0, ramp = 0;
    for (int k = 0; k < 7; ++k) {
        EXPECT_DOUBLE_EQ(g[k], g[6 - k]);
        EXPECT_DOUBLE_EQ(d[k], -d[6 - k]);
        EXPECT_NEAR(g[k] / g[3], std::exp(-(k - 3) * (k - 3) / (2 * 1.3 * 1.3)), 1e-14);
        gSum += g[k];
        dSum += d[k];
        ramp += (k - 3) * d[k];
    }
    EXPECT_NEAR(gSum, 1, 1e-14);
    EXPECT_NEAR(dSum, 0, 1e-14);
    EXPECT_NEAR(ramp, -1, 1e-14);
    EXPECT_GT(d[0], 0) << "previous minus next: the earliest tap is positive";

    expectRejected([] { ornex::lucasKanadeSmoothingTaps(1.0, 4); }, "length: must be odd and at least 3");
    expectRejected([] { ornex::lucasKanadeDerivativeTaps(1.0, 1); }, "length: must be odd and at least 3");
    expectRejected([] { ornex::lucasKanadeSmoothingTaps(0.0, 5); }, "sigma: must be positive");
    expectRejected([] { ornex::lucasKanadeDerivativeTaps(std::numeric_limits<double>::infinity(), 5); },
                   "sigma: must be positive");
}

template <class T>
std::vector<T> asTaps(const std::vector<double> &taps)
{
    return std::vector<T>(taps.begin(), taps.end());
}

// The exported driver with the five filters given by hand.
template <class T>
std::vector<T> directGder(const std::vector<Image<T>> &frames, const std::vector<double> &tempDeriv,
                          const std::vector<double> &spatDeriv, const std::vector<double> &tempSmooth,
                          const std::vector<double> &spatSmooth, const std::vector<double> &window, T threshold,
                          bool normalFlow, std::vector<double> *medians = nullptr)
{
    const int32_t m = frames[0].rows(), n = frames[0].cols();
    const size_t pixels = static_cast<size_t>(m) * n;
    std::vector<const T *> pointers;
    for (const Image<T> &frame : frames) {
        pointers.push_back(frame.data());
    }
    const std::vector<T> td = asTaps<T>(tempDeriv), sd = asTaps<T>(spatDeriv), ts = asTaps<T>(tempSmooth),
                         ss = asTaps<T>(spatSmooth), w = asTaps<T>(window);
    std::vector<T> velocity(2 * pixels, T(-5));
    std::vector<T> xx(pixels), yy(pixels), xy(pixels), xt(pixels), yt(pixels);
    Kernels<T>::lucasKanadeGder(pointers.data(), velocity.data(), xx.data(), yy.data(), xy.data(), xt.data(),
                                yt.data(), &threshold, td.data(), sd.data(), ts.data(), ss.data(), w.data(), m, n,
                                int32_t(td.size()), int32_t(sd.size()), int32_t(ts.size()), int32_t(ss.size()),
                                int32_t(w.size()), normalFlow);
    if (medians) {
        *medians = eigenvalueMedians(xx, xy, yy);
    }
    return velocity;
}

template <class T>
std::vector<ImageView<const T>> viewsOf(const std::vector<Image<T>> &frames)
{
    return std::vector<ImageView<const T>>(frames.begin(), frames.end());
}

TYPED_TEST(MotionLayer, LucasKanadeGderWithCallerTapsGivesTheKernelsField)
{
    using T = TypeParam;
    // Five frames moving a third of a row down and half a column right per
    // frame; a five-tap temporal derivative with a three-tap smoothing (which
    // then starts one frame later), an even window, and both solve modes.
    std::vector<Image<T>> frames;
    for (int k = 0; k < 5; ++k) {
        frames.push_back(texturedFrame<T>(k / 3.0, k * 0.5));
    }
    ornex::LucasKanadeFilters filters;
    filters.temporalDerivative = {-1.0 / 12, 2.0 / 3, 0, -2.0 / 3, 1.0 / 12};
    filters.temporalSmoothing = {0.25, 0.5, 0.25};
    filters.spatialDerivative = {0.5, 0, -0.5};
    filters.spatialSmoothing = {0.2, 0.6, 0.2};
    filters.window = {0.125, 0.375, 0.375, 0.125};
    std::vector<double> medians;
    directGder(frames, filters.temporalDerivative, filters.spatialDerivative, filters.temporalSmoothing,
               filters.spatialSmoothing, filters.window, T(1), false, &medians);
    for (bool normalFlow : {false, true}) {
        for (double threshold : medians) {
            SCOPED_TRACE(testing::Message() << "normal flow " << normalFlow << ", threshold " << threshold);
            ornex::LucasKanadeGderOptions options;
            options.filters = filters;
            options.threshold = threshold;
            options.normalFlow = normalFlow;
            const auto flow = ornex::lucasKanadeGder(viewsOf(frames), options);
            expectField(flow,
                        directGder(frames, filters.temporalDerivative, filters.spatialDerivative,
                                   filters.temporalSmoothing, filters.spatialSmoothing, filters.window, T(threshold),
                                   normalFlow),
                        kRows, kCols);
            if (normalFlow || threshold == medians[0]) {
                expectMixed(flow);
            }
        }
    }
}

TYPED_TEST(MotionLayer, LucasKanadeGderBuildsItsFiltersFromSigmas)
{
    using T = TypeParam;
    std::vector<Image<T>> frames;
    for (int k = 0; k < 3; ++k) {
        frames.push_back(texturedFrame<T>(k * 0.25, k * -0.5));
    }
    // The defaults: three frames, temporal sigma 1; spatial sigma 1 over 5
    // taps; window sigma 1.5 over 5 taps.
    expectField(ornex::lucasKanadeGder(viewsOf(frames)),
                directGder(frames, ornex::lucasKanadeDerivativeTaps(1.0, 3), ornex::lucasKanadeDerivativeTaps(1.0, 5),
                           ornex::lucasKanadeSmoothingTaps(1.0, 3), ornex::lucasKanadeSmoothingTaps(1.0, 5),
                           ornex::lucasKanadeSmoothingTaps(1.5, 5), T(0.0039), false),
                kRows, kCols);
    // Other sigmas and lengths, a temporal filter of five taps over five
    // frames, normal flow, and a threshold that only some pixels pass.
    frames.push_back(texturedFrame<T>(0.75, -1.5));
    frames.push_back(texturedFrame<T>(1.0, -2.0));
    const auto temporalDerivative = ornex::lucasKanadeDerivativeTaps(1.2, 5);
    const auto temporalSmoothing = ornex::lucasKanadeSmoothingTaps(1.2, 5);
    const auto spatialDerivative = ornex::lucasKanadeDerivativeTaps(1.4, 7);
    const auto spatialSmoothing = ornex::lucasKanadeSmoothingTaps(1.4, 7);
    const auto window = ornex::lucasKanadeSmoothingTaps(0.9, 3);
    std::vector<double> medians;
    directGder(frames, temporalDerivative, spatialDerivative, temporalSmoothing, spatialSmoothing, window, T(1), true,
               &medians);
    ornex::LucasKanadeGderOptions options;
    options.temporalSigma = 1.2;
    options.temporalLength = 5;
    options.spatialSigma = 1.4;
    options.spatialLength = 7;
    options.windowSigma = 0.9;
    options.windowLength = 3;
    options.normalFlow = true;
    options.threshold = medians[0];
    const auto flow = ornex::lucasKanadeGder({frames[0], frames[1], frames[2], frames[3], frames[4]}, options);
    expectField(flow,
                directGder(frames, temporalDerivative, spatialDerivative, temporalSmoothing, spatialSmoothing, window,
                           T(medians[0]), true),
                kRows, kCols);
    expectMixed(flow);
}

TYPED_TEST(MotionLayer, LucasKanadeGderRejectsBadArguments)
{
    using T = TypeParam;
    const Image<T> frame = texturedFrame<T>(0, 0), narrower = texturedFrame<T>(0, 0, kRows, kCols - 1);
    const std::vector<ImageView<const T>> three = {frame, frame, frame};
    auto with = [](auto change) {
        ornex::LucasKanadeGderOptions options;
        change(options);
        return options;
    };
    auto callerFilters = [](auto change) {
        ornex::LucasKanadeGderOptions options;
        options.filters = ornex::LucasKanadeFilters{{0.5, 0, -0.5}, {0.25, 0.5, 0.25}, {0.5, 0, -0.5}, {1}, {1}};
        change(*options.filters);
        return options;
    };
    expectRejected([&] { ornex::lucasKanadeGder({frame, narrower, frame}); }, "frames: must have the same size");
    expectRejected([&] { ornex::lucasKanadeGder({frame, frame}); }, "frames: too few for the temporal filters");
    expectRejected([&] { ornex::lucasKanadeGder(std::vector<ImageView<const T>>{}); },
                   "frames: too few for the temporal filters");
    expectRejected([&] { ornex::lucasKanadeGder({frame, ImageView<const T>{}, frame}); },
                   "frames: must be a non-empty image");
    expectRejected([&] { ornex::lucasKanadeGder({frame, frame, frame}, with([](auto &o) { o.temporalLength = 5; })); },
                   "frames: too few for the temporal filters");
    expectRejected([&] { ornex::lucasKanadeGder(three, with([](auto &o) { o.spatialLength = 4; })); },
                   "spatialLength: must be odd and at least 3");
    expectRejected([&] { ornex::lucasKanadeGder(three, with([](auto &o) { o.windowLength = 1; })); },
                   "windowLength: must be odd and at least 3");
    expectRejected([&] { ornex::lucasKanadeGder(three, with([](auto &o) { o.temporalSigma = 0; })); },
                   "temporalSigma: must be positive");
    expectRejected([&] { ornex::lucasKanadeGder(three, with([](auto &o) { o.windowSigma = -1; })); },
                   "windowSigma: must be positive");
    expectRejected(
        [&] {
            ornex::lucasKanadeGder(three,
                                   with([](auto &o) { o.threshold = std::numeric_limits<double>::quiet_NaN(); }));
        },
        "threshold: must be a number");
    expectRejected([&] { ornex::lucasKanadeGder(three, callerFilters([](auto &f) { f.window.clear(); })); },
                   "filters.window: must not be empty");
    expectRejected([&] { ornex::lucasKanadeGder(three, callerFilters([](auto &f) { f.temporalDerivative.clear(); })); },
                   "filters.temporalDerivative: must not be empty");
    expectRejected([&] { ornex::lucasKanadeGder(three, callerFilters([](auto &f) { f.spatialSmoothing.clear(); })); },
                   "filters.spatialSmoothing: must not be empty");
    // The caller's filters replace the Gaussian ones, whose settings are then
    // not looked at; a five-tap temporal filter needs five frames.
    const auto ownFilters = callerFilters([](auto &) {});
    EXPECT_NO_THROW(ornex::lucasKanadeGder(three, ownFilters));
    expectRejected(
        [&] {
            ornex::lucasKanadeGder(three, callerFilters([](auto &f) { f.temporalDerivative.assign(5, 0.2); }));
        },
        "frames: too few for the temporal filters");
}

} // namespace
