#include "support.hpp"

#include <numbers>
#include <random>

using namespace ornex;

TYPED_TEST_SUITE(Typed, RealTypes);

TYPED_TEST(Typed, BlockMatchingUsesTheChosenSearchAndCost)
{
    using T = TypeParam;
    // Middle block: +1 costs |d| 3, d^2 9; -2 costs 4, 8. Three-step tries only -1, 0, +1.
    const int second[6] = {2, 2, 9, 0, 3, 9};
    using enum BlockSearch;
    using enum BlockCost;
    const std::tuple<BlockSearch, BlockCost, T> cases[] = {{full, absoluteDifference, 1}, {full, squaredDifference, -2},
        {threeStep, absoluteDifference, 1}, {threeStep, squaredDifference, 1}};
    for (const int a : {0, 1}) {
        const auto frame1 = makeImage<T>(6 - 5 * a, 1 + 5 * a, 1, [](int, int, int) { return 0; });
        const auto frame2 = makeImage<T>(6 - 5 * a, 1 + 5 * a, 1, [&](int r, int c, int) { return second[r + c]; });
        for (const auto &[search, cost, d] : cases) {
            const auto motion = blockMatching(frame1, frame2, {{2 - a, 1 + a}, {0, 0}, {2 - 2 * a, 2 * a}, search, cost});
            EXPECT_EQ(motion.values()[1], (MotionVector<T>{a * d, (1 - a) * d})) << a;
        }
    }
}

TYPED_TEST(Typed, FlowOfARamp)
{
    using T = TypeParam;
    // The ramp moves 0.5 right: Ix = 1, Iy = 2, It = -0.5. One sweep from zero gives -(Ix, Iy) It / (3 + 5); LK's
    // normal flow is the move's part along the gradient, 0.5 (1, 2) / 5.
    const auto frame1 = makeImage<T>(12, 13, 1, [](int r, int c, int) { return c + 2 * r; });
    const auto frame2 = makeImage<T>(12, 13, 1, [](int r, int c, int) { return c - 0.5 + 2 * r; });
    const std::tuple<VelocityField<T>, int32_t, double, double> cases[] = {
        {hornSchunck(frame1, frame2, {.smoothness = 3, .maxIterations = 1}), 1, 0.0625, 0.125},
        {hornSchunck(frame1, frame2, {3, std::nullopt, 1.0}), 1, 0.0625, 0.125},
        {lucasKanade(frame1, frame2, {4.9}), 4, 0.1, 0.2},
        {lucasKanade(frame1, frame2, {5.1}), 4, 0, 0}};
    for (const auto &[flow, margin, u, v] : cases) {
        for (int32_t k = 0; k < 12 * 13; ++k) {
            if (std::min({k % 12, k / 12, 11 - k % 12, 12 - k / 12}) >= margin) {
                EXPECT_TRUE(std::abs(flow.u(k % 12, k / 12) - u) + std::abs(flow.v(k % 12, k / 12) - v) < 1e-5) << k;
            }
        }
    }
}

TYPED_TEST(Typed, LucasKanadeGderRecoversTheMotionOfAQuadratic)
{
    using T = TypeParam;
    // Derivative taps differentiate a quadratic exactly; threshold 10 lies between the two eigenvalues.
    const double su = 0.5, sv = -0.25;
    std::vector<Image<T>> frames;
    for (int k = 0; k < 5; ++k)
        frames.push_back(
            makeImage<T>(20, 22, 1, [&](int r, int c, int) { return pow(c - k * su, 2) + pow(r - k * sv, 2); }));
    const std::vector<ImageView<const T>> views(frames.begin(), frames.end());
    const auto whole = lucasKanadeGder(views, {.threshold = 1});
    const auto none = lucasKanadeGder(views, {.threshold = 10});
    const auto part = lucasKanadeGder(views, {.threshold = 10, .normalFlow = true});
    for (int32_t k = 0; k < 80; ++k) {
        const int32_t r = 6 + k % 8, c = 6 + k / 8;
        EXPECT_TRUE(std::abs(whole.u(r, c) - su) < 2e-3 && std::abs(whole.v(r, c) - sv) < 2e-3) << r << "," << c;
        EXPECT_EQ(std::abs(none.u(r, c)) + std::abs(none.v(r, c)), T(0));
        const double length = std::hypot(double(part.u(r, c)), double(part.v(r, c)));
        EXPECT_TRUE(length > 1e-3 && length < std::hypot(su, sv) + 1e-3) << r << "," << c;
    }
}

// A smooth random texture: two dozen plane waves of periods 14 to 80 pixels, weaker as they get finer.
struct Texture {
    std::vector<std::array<double, 4>> waves; // across, down, phase, amplitude
    Texture()
    {
        std::mt19937 random(7);
        std::uniform_real_distribution<double> angle(0, 2 * std::numbers::pi), frequency(0.08, 0.45);
        for (int k = 0; k < 24; ++k) {
            const double a = angle(random), f = frequency(random);
            waves.push_back({f * std::cos(a), f * std::sin(a), angle(random), 0.2 / (1 + 8 * f)});
        }
    }
    // The texture moved by (du, dv): what was at (r - dv, c - du).
    template <class T>
    Image<T> moved(int32_t size, double du, double dv) const
    {
        return makeImage<T>(size, size, 1, [&](int r, int c, int) {
            double sum = 0.5;
            for (const auto &[across, down, phase, amplitude] : waves) sum += amplitude * std::sin(across * (c - du) + down * (r - dv) + phase);
            return sum;
        });
    }
};

// Medians of u and v away from an 8-pixel border.
template <class Field>
std::array<double, 2> medianFlow(const Field &flow)
{
    std::vector<double> u, v;
    for (int32_t c = 8; c < flow.u.cols() - 8; ++c)
        for (int32_t r = 8; r < flow.u.rows() - 8; ++r) u.push_back(flow.u(r, c)), v.push_back(flow.v(r, c));
    std::ranges::nth_element(u, u.begin() + u.size() / 2), std::ranges::nth_element(v, v.begin() + v.size() / 2);
    return {u[u.size() / 2], v[v.size() / 2]};
}

// Every method reports where the content went: right and down are positive.
TYPED_TEST(Typed, MotionComesOutInTheContentsDirection)
{
    using T = TypeParam;
    const Texture texture;
    for (const auto &[du, dv] : {std::pair{1.0, 0.0}, {0.0, -1.0}, {-1.0, 1.0}, {1.0, 1.0}}) {
        const auto frame1 = texture.moved<T>(64, 0, 0), frame2 = texture.moved<T>(64, du, dv), frame3 = texture.moved<T>(64, 2 * du, 2 * dv);
        const std::pair<const char *, std::array<double, 2>> found[] = {
            {"hs", medianFlow(hornSchunck(frame1, frame2, {.smoothness = 0.002, .maxIterations = 100}))},
            {"lk", medianFlow(lucasKanade(frame1, frame2, {1e-4}))},
            {"gder", medianFlow(lucasKanadeGder({frame1, frame2, frame3}, {.threshold = 1e-4}))}};
        for (const auto &[method, median] : found)
            EXPECT_TRUE(std::abs(median[0] - du) < 0.25 && std::abs(median[1] - dv) < 0.25) << method << " " << median[0] << "," << median[1] << " for " << du << "," << dv;
        const auto blocks = blockMatching(frame1, frame2, {{8, 8}, {0, 0}, {3, 3}});
        EXPECT_EQ(blocks(3, 3), (MotionVector<T>{T(du), T(dv)})) << du << "," << dv;
    }
}

// A move of (3, 2) is too far for one level; four levels find it. A 14-pixel frame has no coarser level (it would be 7).
TYPED_TEST(Typed, CoarseToFineFollowsMovesOfSeveralPixels)
{
    using T = TypeParam;
    const Texture texture;
    const auto frame1 = texture.moved<T>(96, 0, 0), frame2 = texture.moved<T>(96, 3, 2);
    const auto near = [](std::array<double, 2> m) { return std::hypot(m[0] - 3, m[1] - 2) < 0.25; };
    for (const int32_t levels : {1, 4}) {
        const auto hs = medianFlow(hornSchunck(frame1, frame2, {.smoothness = 0.002, .maxIterations = 100, .levels = levels}));
        const auto lk = medianFlow(lucasKanade(frame1, frame2, {1e-4, levels}));
        EXPECT_EQ(near(hs), levels == 4) << levels << ": " << hs[0] << "," << hs[1];
        EXPECT_EQ(near(lk), levels == 4) << levels << ": " << lk[0] << "," << lk[1];
    }
    const auto small1 = texture.moved<T>(14, 0, 0), small2 = texture.moved<T>(14, 1, 0);
    EXPECT_EQ(lucasKanade(small1, small2, {1e-4, 3}).u.values(), lucasKanade(small1, small2, {1e-4}).u.values());
    // A NaN spreads through the field; the warps it steers still read inside the frame.
    auto spoilt = frame2;
    spoilt(40, 50) = NAN;
    const auto nan = hornSchunck(frame1, spoilt, {.levels = 3});
    EXPECT_TRUE(std::isnan(nan.u(40, 50)) && nan.u.rows() == 96 && nan.u.cols() == 96);
}

TEST(MotionLayerTables, GaussianTapsWorkedByHand)
{
    // (e, 1, e) / (1 + 2e) with e = exp(-1 / 1.28); d[0] = 2 e^-2 / (2 (e^-1/2 + 4 e^-2)).
    const auto smoothing = lucasKanadeSmoothingTaps(0.8, 3), d = lucasKanadeDerivativeTaps(1.0, 5);
    ASSERT_TRUE(smoothing.size() == 3 && d.size() == 5);
    EXPECT_TRUE(std::abs(smoothing[0] - 0.23899426562299) < 1e-13 && std::abs(d[0] - 0.11790104443903) < 1e-13 && d[2] == 0);
    EXPECT_EQ(lucasKanadeDerivativeTaps(0.8, 3), (std::vector<double>{0.5, 0, -0.5}));
}

TYPED_TEST(Typed, ArgumentsAreCheckedWithTheirMessages)
{
    using T = TypeParam;
    const auto flat = makeImage<T>(24, 32, 1, [](int, int, int) { return 1; });
    const Image<T> narrower(24, 31), twoPlanes(24, 32, 2);
    const std::vector<ImageView<const T>> three{flat, flat, flat};
    const auto bm = [&](BlockMatchingOptions o) { return [=, &flat] { blockMatching(flat, flat, o); }; };
    const auto hs = [&](HornSchunckOptions o) { return [=, &flat] { hornSchunck(flat, flat, o); }; };
    const auto gder = [&](LucasKanadeGderOptions o) { return [=, &three] { lucasKanadeGder(three, o); }; };
    LucasKanadeGderOptions noWindow;
    noWindow.filters = LucasKanadeFilters{{0.5, 0, -0.5}, {0.25, 0.5, 0.25}, {0.5, 0, -0.5}, {1}, {}};
    expectRejections({
        {[&] { blockMatching(flat, narrower); }, "frames: must have the same size"},
        {[&] { blockMatching(ImageView<const T>{}, flat); }, "frame1: must be a non-empty image"},
        {[&] { blockMatching(twoPlanes, twoPlanes); }, "frame1: must have one plane"},
        {bm({{8, 0}}), "blockSize: must be positive"},
        {bm({{8, 8}, {-1, 0}}), "overlap: must not be negative"},
        {bm({{8, 8}, {8, 0}}), "overlap: must be smaller than the block size"},
        {bm({{8, 8}, {0, 0}, {3, -1}}), "maxDisplacement: must not be negative"},
        {bm({{8, 8}, {0, 0}, {1 << 30, 0}}), "maxDisplacement: too large for the frame size"},
        {bm({{25, 8}}), "frames: must hold at least one block"},
        {[&] { hornSchunck(flat, ImageView<const T>{}); }, "frame2: must be a non-empty image"},
        {hs({.maxIterations = std::nullopt}), "options: needs an iteration limit or a threshold"},
        {hs({.maxIterations = 0}), "maxIterations: must be positive"},
        {hs({1, 10, 0.0}), "threshold: must be positive"},
        {hs({.smoothness = 0}), "smoothness: must be positive"},
        {hs({.levels = 0}), "levels: must be positive"},
        {[&] { hornSchunck(flat, twoPlanes, {.levels = 2}); }, "frame2: must have one plane"},
        {[&] { lucasKanade(flat, flat, {0.01, -1}); }, "levels: must be positive"},
        {[&] { lucasKanade(flat, flat, {std::nan("")}); }, "threshold: must be positive"},
        {[&] { lucasKanadeGder({flat, flat}); }, "frames: too few for the temporal filters"},
        {[&] { lucasKanadeGder({flat, ImageView<const T>{}, flat}); }, "frames: must be a non-empty image"},
        {gder({.spatialLength = 4}), "spatialLength: must be odd and at least 3"},
        {gder({.windowLength = 1}), "windowLength: must be odd and at least 3"},
        {gder({.temporalSigma = 0}), "temporalSigma: must be positive"},
        {gder({.threshold = std::nan("")}), "threshold: must be a number"},
        {gder(noWindow), "filters.window: must not be empty"},
        {[] { lucasKanadeSmoothingTaps(1.0, 4); }, "length: must be odd and at least 3"},
        {[] { lucasKanadeDerivativeTaps(INFINITY, 5); }, "sigma: must be positive"},
    });
}
