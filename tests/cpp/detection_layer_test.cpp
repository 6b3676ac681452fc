#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "ornex/ornex.hpp"
#include "rejection.hpp"

namespace {

template <class T>
class DetectionLayer : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(DetectionLayer, RealTypes);

// A blurred bright rectangle with a diagonal stroke and some texture.
template <class T>
ornex::Image<T> testScene(int32_t rows, int32_t cols)
{
    ornex::Image<T> image(rows, cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            double v = (r >= 4 && r < 12 && c >= 5 && c < 14) ? 0.8 : 0.1;
            if (r == c + 2) {
                v += 0.5;
            }
            v += 0.03 * ((r * 7 + c * 13) % 5);
            image(r, c) = static_cast<T>(v);
        }
    }
    return image;
}

// The kernel halves for sigma, built from what the header promises: taps out
// to ceil(3 sigma); g[k] proportional to exp(-k^2 / (2 sigma^2)) with the full
// symmetric kernel summing to 1; d[k] = -k g[k] / sigma^2, d[0] = 0.
template <class T>
void kernelHalves(double sigma, std::vector<T> &smoothing, std::vector<T> &derivative)
{
    const int reach = static_cast<int>(std::ceil(3.0 * sigma));
    std::vector<double> g(reach + 1);
    double total = 0.0;
    for (int k = 0; k <= reach; ++k) {
        g[k] = std::exp(-(k * k) / (2.0 * sigma * sigma));
        total += (k == 0 ? 1.0 : 2.0) * g[k];
    }
    smoothing.assign(reach + 1, T(0));
    derivative.assign(reach + 1, T(0));
    for (int k = 0; k <= reach; ++k) {
        g[k] /= total;
        smoothing[k] = static_cast<T>(g[k]);
        if (k > 0) {
            derivative[k] = static_cast<T>(-k * g[k] / (sigma * sigma));
        }
    }
}

void cannyDirect(bool automatic, const double *image, const double *s, const double *d, double *a, double *b,
                 uint8_t *edges, double *magnitude, const double *thresholds, int32_t rows, int32_t cols, int32_t length)
{
    (automatic ? ORNEX_EdgeCanny_autoTh_D : ORNEX_EdgeCanny_userTh_D)(image, s, d, a, b, edges, magnitude, thresholds,
                                                                       rows, cols, length);
}
void cannyDirect(bool automatic, const float *image, const float *s, const float *d, float *a, float *b,
                 uint8_t *edges, float *magnitude, const float *thresholds, int32_t rows, int32_t cols, int32_t length)
{
    (automatic ? ORNEX_EdgeCanny_autoTh_R : ORNEX_EdgeCanny_userTh_R)(image, s, d, a, b, edges, magnitude, thresholds,
                                                                       rows, cols, length);
}

template <class T>
void expectCannyMatchesKernel(const ornex::Image<T> &image, const ornex::CannyOptions &options)
{
    const auto result = ornex::canny(image, options);

    std::vector<T> smoothing, derivative;
    kernelHalves(options.sigma, smoothing, derivative);
    const size_t pixels = image.values().size();
    std::vector<T> workA(pixels), workB(pixels), magnitude(pixels);
    std::vector<uint8_t> edges(pixels);
    T thresholds[2] = {T(0), T(0)};
    if (options.thresholds) {
        thresholds[0] = static_cast<T>(options.thresholds->low);
        thresholds[1] = static_cast<T>(options.thresholds->high);
    } else {
        thresholds[0] = static_cast<T>(options.nonEdgePercent);
    }
    cannyDirect(!options.thresholds, image.data(), smoothing.data(), derivative.data(), workA.data(), workB.data(),
                edges.data(), magnitude.data(), thresholds, image.rows(), image.cols(),
                static_cast<int32_t>(smoothing.size()));

    ASSERT_EQ(result.edges.rows(), image.rows());
    ASSERT_EQ(result.edges.cols(), image.cols());
    ASSERT_EQ(result.magnitude.rows(), image.rows());
    ASSERT_EQ(result.magnitude.cols(), image.cols());
    EXPECT_EQ(result.edges.values(), edges);
    EXPECT_EQ(result.magnitude.values(), magnitude);
    // The scene has edges, so the comparison above is not between empty maps.
    size_t edgeCount = 0;
    for (uint8_t e : edges) {
        edgeCount += e;
    }
    EXPECT_GT(edgeCount, 0u);
}

TYPED_TEST(DetectionLayer, CannyWithUserThresholdsEqualsTheKernel)
{
    const auto image = testScene<TypeParam>(18, 21);
    ornex::CannyOptions options;
    options.thresholds = ornex::CannyThresholds{0.1, 0.3};
    expectCannyMatchesKernel(image, options);
    options.sigma = 0.6;
    options.thresholds = ornex::CannyThresholds{0.05, 0.05};
    expectCannyMatchesKernel(image, options);
}

TYPED_TEST(DetectionLayer, CannyWithAutomaticThresholdsEqualsTheKernel)
{
    const auto image = testScene<TypeParam>(18, 21);
    ornex::CannyOptions options;
    expectCannyMatchesKernel(image, options);
    options.sigma = 1.4;
    options.nonEdgePercent = 85.0;
    expectCannyMatchesKernel(image, options);
}

TYPED_TEST(DetectionLayer, CannyRejectsBadArguments)
{
    const auto image = testScene<TypeParam>(18, 21);
    auto withSigma = [](double sigma) {
        ornex::CannyOptions o;
        o.sigma = sigma;
        return o;
    };
    auto withThresholds = [](double low, double high) {
        ornex::CannyOptions o;
        o.thresholds = ornex::CannyThresholds{low, high};
        return o;
    };
    auto withPercent = [](double percent) {
        ornex::CannyOptions o;
        o.nonEdgePercent = percent;
        return o;
    };
    expectRejected([&] { ornex::canny(image, withSigma(0.0)); }, "sigma");
    expectRejected([&] { ornex::canny(image, withSigma(-1.0)); }, "sigma");
    expectRejected([&] { ornex::canny(image, withSigma(std::nan(""))); }, "sigma");
    expectRejected([&] { ornex::canny(image, withThresholds(0.4, 0.2)); }, "thresholds");
    expectRejected([&] { ornex::canny(image, withThresholds(-0.1, 0.2)); }, "thresholds");
    expectRejected([&] { ornex::canny(image, withThresholds(0.1, 1.5)); }, "thresholds");
    expectRejected([&] { ornex::canny(image, withPercent(100.5)); }, "nonEdgePercent");
    expectRejected([&] { ornex::canny(image, withPercent(-1.0)); }, "nonEdgePercent");
    // sigma 2 needs 7 rows and columns, sigma 1 needs 4.
    expectRejected([&] { ornex::canny(testScene<TypeParam>(6, 21), withSigma(2.0)); }, "image");
    expectRejected([&] { ornex::canny(testScene<TypeParam>(3, 3), ornex::CannyOptions{}); }, "image");
    EXPECT_NO_THROW(ornex::canny(testScene<TypeParam>(4, 4), ornex::CannyOptions{}));
    expectRejected([&] { ornex::canny(ornex::Image<TypeParam>(), ornex::CannyOptions{}); }, "image");
    expectRejected([&] { ornex::canny(ornex::Image<TypeParam>(8, 8, 2), ornex::CannyOptions{}); }, "image");
}

// A horizontal run along row 4, a diagonal and a few loose pixels (at
// least 5 x 3).
ornex::Image<uint8_t> testEdges(int32_t rows, int32_t cols)
{
    ornex::Image<uint8_t> edges(rows, cols);
    for (int32_t c = 0; c < cols; ++c) {
        edges(4, c) = 1;
    }
    for (int32_t k = 0; k < std::min(rows, cols); ++k) {
        edges(k, k) = 255;
    }
    edges(rows - 1, 2) = 7;
    edges(0, cols - 1) = 1;
    return edges;
}

ornex::Image<uint8_t> onePixel()
{
    ornex::Image<uint8_t> edges(1, 1);
    edges(0, 0) = 1;
    return edges;
}

void houghDirect(const uint8_t *image, double *accumulator, const double *sines, const double *rho0, int32_t rows,
                 int32_t cols, int32_t numRho, int32_t numTheta)
{
    ORNEX_Hough_D(image, accumulator, sines, rho0, rows, cols, numRho, numTheta);
}
void houghDirect(const uint8_t *image, float *accumulator, const float *sines, const float *rho0, int32_t rows,
                 int32_t cols, int32_t numRho, int32_t numTheta)
{
    ORNEX_Hough_R(image, accumulator, sines, rho0, rows, cols, numRho, numTheta);
}

template <class T>
void expectHoughMatchesKernel(const ornex::Image<uint8_t> &edges, double thetaResolution, double rhoResolution)
{
    const auto result = ornex::hough<T>(edges, {thetaResolution, rhoResolution});

    // Sines of -90 .. 0 degrees in 90 / thetaResolution even steps; a rho
    // axis of whole steps reaching past the image diagonal on both sides.
    const double pi = std::numbers::pi;
    const int n = static_cast<int>(std::lround(90.0 / thetaResolution));
    std::vector<T> sines(n + 1);
    for (int t = 0; t <= n; ++t) {
        sines[t] = static_cast<T>(std::sin((-90.0 + 90.0 * t / n) * pi / 180.0));
    }
    const double diagonal = std::sqrt(double((edges.rows() - 1) * (edges.rows() - 1)) +
                                      double((edges.cols() - 1) * (edges.cols() - 1)));
    const int steps = std::max(1, static_cast<int>(std::ceil(diagonal / rhoResolution)));
    const int numRho = 2 * steps + 1;
    const T rho0 = static_cast<T>(-steps * rhoResolution);
    std::vector<T> accumulator(size_t(numRho) * (2 * n), T(-1));
    houghDirect(edges.data(), accumulator.data(), sines.data(), &rho0, edges.rows(), edges.cols(), numRho, n + 1);

    ASSERT_EQ(result.accumulator.rows(), numRho);
    ASSERT_EQ(result.accumulator.cols(), 2 * n);
    EXPECT_EQ(result.accumulator.values(), accumulator);
    ASSERT_EQ(result.rho.size(), size_t(numRho));
    ASSERT_EQ(result.theta.size(), size_t(2 * n));
    for (int k = 0; k < numRho; ++k) {
        EXPECT_EQ(result.rho[k], static_cast<T>(-steps * rhoResolution + k * rhoResolution)) << k;
    }
    for (int j = 0; j < 2 * n; ++j) {
        EXPECT_EQ(result.theta[j], static_cast<T>((-90.0 + 90.0 * j / n) * pi / 180.0)) << j;
    }

    // Every vote landed on the axis: each edge pixel votes once per theta.
    double votes = 0, pixels = 0;
    for (T v : accumulator) {
        votes += v;
    }
    for (uint8_t e : edges.values()) {
        pixels += e != 0;
    }
    EXPECT_EQ(votes, pixels * 2 * n);
    if (edges.rows() < 5) {
        return;
    }
    // The run along row 4 lies at theta -90 degrees (column 0), rho -4.
    const int bin = static_cast<int>(std::lround((-4.0 - (-steps * rhoResolution)) / rhoResolution));
    EXPECT_GE(result.accumulator(bin, 0), T(edges.cols()));
}

TYPED_TEST(DetectionLayer, HoughEqualsTheKernel)
{
    const auto edges = testEdges(9, 13);
    expectHoughMatchesKernel<TypeParam>(edges, 1.0, 1.0);
    expectHoughMatchesKernel<TypeParam>(edges, 15.0, 0.5);
    expectHoughMatchesKernel<TypeParam>(edges, 90.0, 2.0);
    expectHoughMatchesKernel<TypeParam>(onePixel(), 30.0, 1.0);
}

TEST(DetectionLayerHough, DefaultsToDoubleAndOneDegreeOnePixel)
{
    const auto edges = testEdges(9, 13);
    const ornex::HoughTransform<double> result = ornex::hough(edges);
    EXPECT_EQ(result.accumulator.cols(), 180);
    EXPECT_EQ(result.accumulator.rows(), 2 * 15 + 1); // diagonal sqrt(8^2 + 12^2) = 14.4
}

TYPED_TEST(DetectionLayer, HoughRejectsBadArguments)
{
    const auto edges = testEdges(9, 13);
    auto run = [&](double thetaResolution, double rhoResolution) {
        return [&edges, thetaResolution, rhoResolution] {
            ornex::hough<TypeParam>(edges, {thetaResolution, rhoResolution});
        };
    };
    expectRejected([&] { ornex::hough<TypeParam>(ornex::Image<uint8_t>()); }, "edges");
    expectRejected([&] { ornex::hough<TypeParam>(ornex::Image<uint8_t>(4, 4, 2)); }, "edges");
    expectRejected(run(0.0, 1.0), "thetaResolution");
    expectRejected(run(-1.0, 1.0), "thetaResolution");
    expectRejected(run(7.0, 1.0), "thetaResolution");
    expectRejected(run(100.0, 1.0), "thetaResolution");
    expectRejected(run(std::nan(""), 1.0), "thetaResolution");
    expectRejected(run(1.0, 0.0), "rhoResolution");
    expectRejected(run(1.0, -2.0), "rhoResolution");
    expectRejected(run(1.0, INFINITY), "rhoResolution");
}

void houghLinesDirect(const double *theta, const double *rho, int32_t *points, int32_t n, int32_t rows, int32_t cols)
{
    ORNEX_HoughLines_D(theta, rho, points, n, rows, cols);
}
void houghLinesDirect(const float *theta, const float *rho, int32_t *points, int32_t n, int32_t rows, int32_t cols)
{
    ORNEX_HoughLines_R(theta, rho, points, n, rows, cols);
}

TYPED_TEST(DetectionLayer, HoughLinesEqualsTheKernel)
{
    using T = TypeParam;
    const T pi = std::numbers::pi_v<T>;
    const std::vector<T> theta{T(0), pi / 4, -pi / 4, pi / 3, -pi / 2, T(0.3), T(1.2)};
    const std::vector<T> rho{T(5), T(6), T(-3), T(10), T(-2), T(1000), T(0)};
    const int32_t rows = 20, cols = 30;
    const auto ends = ornex::houghLines(theta, rho, rows, cols);

    std::vector<int32_t> points(4 * theta.size(), 12345);
    houghLinesDirect(theta.data(), rho.data(), points.data(), int32_t(theta.size()), rows, cols);
    ASSERT_EQ(ends.size(), theta.size());
    for (size_t i = 0; i < ends.size(); ++i) {
        EXPECT_EQ(ends[i].first, (ornex::Point{points[4 * i], points[4 * i + 1]})) << i;
        EXPECT_EQ(ends[i].second, (ornex::Point{points[4 * i + 2], points[4 * i + 3]})) << i;
    }
    // theta 0, rho 5: the vertical line through column 5.
    EXPECT_EQ(ends[0], (ornex::LineEnds{{0, 5}, {rows - 1, 5}}));
    // rho 1000 misses the image.
    EXPECT_EQ(ends[5], (ornex::LineEnds{{-1, -1}, {-1, -1}}));
    EXPECT_TRUE(ornex::houghLines(std::vector<T>{}, std::vector<T>{}, rows, cols).empty());
}

TYPED_TEST(DetectionLayer, HoughLinesRejectsBadArguments)
{
    using T = TypeParam;
    const std::vector<T> two{T(0), T(1)}, one{T(0)};
    expectRejected([&] { ornex::houghLines(two, one, 10, 10); }, "rho");
    expectRejected([&] { ornex::houghLines(one, one, 0, 10); }, "imageRows");
    expectRejected([&] { ornex::houghLines(one, one, 10, -1); }, "imageCols");
}

} // namespace
