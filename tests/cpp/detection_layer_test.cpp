#include <numeric>

#include "support.hpp"

TYPED_TEST_SUITE(Typed, RealTypes);

// Steps 0 -> 1 at k = 6 and 1 -> 0.7 at k = 14 along the columns (or rows): gradients 1 and 0.3.
template <class T>
ornex::Image<T> twoSteps(bool downRows)
{
    return makeImage<T>(downRows ? 24 : 16, downRows ? 16 : 24, 1, [=](int r, int c, int) {
        const int k = downRows ? r : c;
        return k < 6 ? 0.0 : k == 6 ? 0.5 : k < 14 ? 1.0 : k == 14 ? 0.85 : 0.7;
    });
}

TYPED_TEST(Typed, CannyFindsTheStepsItsThresholdsAdmit)
{
    using T = TypeParam;
    // With 0.2, 0.5 the weaker step is a weak edge with no strong neighbour.
    const std::pair<std::optional<ornex::CannyThresholds>, bool> cases[] = {
        {ornex::CannyThresholds{0.1, 0.2}, true}, {ornex::CannyThresholds{0.2, 0.5}, false}, {std::nullopt, false}};
    for (const bool downRows : {false, true}) {
        for (const auto &[thresholds, weakerKept] : cases) {
            const auto [edges, magnitude] = ornex::canny(twoSteps<T>(downRows).view(), {1.0, thresholds});
            for (int32_t along = 3; along < 13; ++along) {
                const auto at = [&](const auto &image, int k) { return downRows ? image(k, along) : image(along, k); };
                for (int32_t k = 0; k < 24; ++k)
                    EXPECT_TRUE((!thresholds && k != 6) || at(edges, k) == (k == 6 || (k == 14 && weakerKept))) << k;
                EXPECT_NEAR(at(magnitude, 14) / at(magnitude, 6), 0.3, 1e-4);
            }
        }
    }
}

TEST(DetectionLayerTables, CannyKernelHalvesWorkedByHand)
{
    // g[k] = exp(-k^2/2) / (1 + 2 (e^-0.5 + e^-2 + e^-4.5)), d[k] = -k g[k]; sigma 0.5: d[k] = -k g[k] / 0.25.
    const auto halves = ornex::detail::cannyKernelHalves(1.0), narrow = ornex::detail::cannyKernelHalves(0.5);
    ASSERT_TRUE(halves.smoothing.size() == 4 && narrow.smoothing.size() == 3);
    EXPECT_TRUE(std::abs(halves.smoothing[0] - 0.39905027965245) + std::abs(halves.smoothing[3] - 0.00443304817524) < 1e-14);
    EXPECT_NEAR(halves.derivative[3], -0.01329914452573, 1e-14);
    EXPECT_NEAR(narrow.derivative[1], -4 * narrow.smoothing[1], 1e-15);
}

TYPED_TEST(Typed, HoughPutsEachRunOnItsLine)
{
    using T = TypeParam;
    // Row 4 and column 7 of a 9 x 13 map: 21 pixels; rho reaches ceil(sqrt(8^2 + 12^2) / step) steps.
    const auto edges = makeImage<uint8_t>(9, 13, 1, [](int r, int c, int) { return r == 4 || c == 7; });
    const std::tuple<double, double, int32_t, int32_t> cases[] = {{1, 1, 180, 15}, {0.5, 0.5, 360, 29}, {90, 0.25, 2, 58}};
    for (const auto &[thetaStep, rhoStep, thetas, reach] : cases) {
        const auto h = ornex::hough<T>(edges, {thetaStep, rhoStep});
        ASSERT_TRUE(h.accumulator.rows() == 2 * reach + 1 && h.accumulator.cols() == thetas);
        EXPECT_TRUE(h.rho.front() == T(-reach * rhoStep) && h.rho.back() == T(reach * rhoStep));
        EXPECT_TRUE(h.theta[0] == -std::numbers::pi_v<T> / 2 && std::abs(h.theta[thetas / 2]) < 1e-15 &&
                    std::abs(h.theta[1] - h.theta[0] - thetaStep * std::numbers::pi / 180) < 1e-6);
        EXPECT_EQ(h.accumulator(int32_t(-4 / rhoStep) + reach, 0), T(13));
        EXPECT_EQ(h.accumulator(int32_t(7 / rhoStep) + reach, thetas / 2), T(9));
        EXPECT_EQ(std::accumulate(h.accumulator.values().begin(), h.accumulator.values().end(), 0.0), 21.0 * thetas);
    }
    EXPECT_EQ(ornex::hough(edges).accumulator.cols(), 180);
}

TYPED_TEST(Typed, HoughLinesCrossTheBorderWhereTheLineDoes)
{
    using T = TypeParam;
    // column cos(theta) + row sin(theta) = rho: column 5, row 4, column + row = 10, a line far outside.
    const T pi = std::numbers::pi_v<T>;
    const auto ends = ornex::houghLines<T>({0, -pi / 2, pi / 4, 0}, {5, -4, T(10 / std::numbers::sqrt2), 1000}, 20, 30);
    EXPECT_EQ(ends, (std::vector<ornex::LineEnds>{
                        {{0, 5}, {19, 5}}, {{4, 0}, {4, 29}}, {{0, 10}, {10, 0}}, {{-1, -1}, {-1, -1}}}));
}

TYPED_TEST(Typed, ArgumentsAreCheckedWithTheirMessages)
{
    using T = TypeParam;
    const auto image = twoSteps<T>(false);
    const ornex::Image<uint8_t> edges(9, 13);
    const auto canny = [&](ornex::CannyOptions o) { return [=, &image] { ornex::canny(image.view(), o); }; };
    const auto hough = [&](double theta, double rho) { return [=, &edges] { ornex::hough<T>(edges, {theta, rho}); }; };
    const auto thresholds = [](double low, double high) { return ornex::CannyOptions{1, {{low, high}}}; };
    expectRejections({
        {canny({.sigma = std::nan("")}), "sigma: must be positive and finite"},
        {canny(thresholds(0.4, 0.2)), "thresholds: low must not exceed high"},
        {canny(thresholds(0.1, 1.5)), "thresholds: must lie in [0, 1]"},
        {canny({1, std::nullopt, 100.5}), "nonEdgePercent: must lie in [0, 100]"},
        {canny({.sigma = 5.01}),
         "image: smaller than the kernel for this sigma needs (ceil(3 sigma) + 1 rows and columns)"},
        {[] { ornex::canny(ornex::Image<T>().view()); }, "image: must be a non-empty image"},
        {[] { ornex::canny(ornex::Image<T>(8, 8, 2).view()); }, "image: must have one plane"},
        {[] { ornex::hough<T>(ornex::Image<uint8_t>()); }, "edges: must be a non-empty image"},
        {[] { ornex::hough<T>(ornex::Image<uint8_t>(4, 4, 2)); }, "edges: must have one plane"},
        {hough(0, 1), "thetaResolution: must be positive"},
        {hough(7, 1), "thetaResolution: must divide 90 degrees into whole steps"},
        {hough(1, 0), "rhoResolution: must be positive and finite"},
        {[] { ornex::houghLines<T>({0, 1}, {0}, 10, 10); }, "rho: must have as many values as theta"},
        {[] { ornex::houghLines<T>({0}, {0}, 0, 10); }, "imageRows: must be positive"},
        {[] { ornex::houghLines<T>({0}, {0}, 10, -1); }, "imageCols: must be positive"},
    });
    EXPECT_NO_THROW(canny({.sigma = 5})());
}
