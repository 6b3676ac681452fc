// Several families called from two threads at once, each on its own
// buffers, must give what they give alone: the kernels keep no state, and
// what the library sets up once (its choice of packed paths) is set up
// safely. The ThreadSanitizer configuration runs this test.

#include <thread>

#include "support.hpp"

using namespace ornex;

namespace {

// One frame's work through most families; every result is kept.
struct Results {
    std::vector<float> values;
    void add(const std::vector<float> &more) { values.insert(values.end(), more.begin(), more.end()); }
};

Results process(int seed)
{
    const auto texture = [seed](int r, int c, int) { return std::sin(0.3 * r + 0.11 * c * seed) + 0.01 * ((r * c) % 7); };
    const Image<float> frame1 = makeImage<float>(64, 80, 1, texture);
    const Image<float> frame2 =
        makeImage<float>(64, 80, 1, [&](int r, int c, int p) { return texture(r - 1, c - 2, p); });
    Results out;
    const auto motion = blockMatching(frame1.view(), frame2.view());
    for (const auto &vector : motion.values()) {
        out.add({vector.u, vector.v});
    }
    const auto flow = hornSchunck(frame1.view(), frame2.view(), {.maxIterations = 20, .levels = 2});
    out.add(flow.u.values());
    out.add(lucasKanade(frame1.view(), frame2.view()).v.values());
    const auto edges = canny(frame1.view(), {.sigma = 1.2});
    out.add(edges.magnitude.values());
    out.add(hough<float>(edges.edges.view()).accumulator.values());
    const auto transform = homography<float>(Rect{0, 0, 64, 80}, Quad{{{3, 0}, {0, 79}, {63, 70}, {60, 5}}}, 64, 80);
    out.add(warp(frame1.view(), 64, 80, transform, {Interpolation::bicubic, false, 3}).values());
    out.add(shear(frame1.view(), ShearDirection::vertical, 0.3).values());
    Image<float> canvas(64, 80);
    fillAntialiasedPolygon(canvas.view(), {{2, 3}, {60, 20 + seed}, {30, 77}}, {1.0f}, 0.75);
    drawAntialiasedLine(canvas.view(), {0, 0}, {63, 40 + seed}, {0.5f});
    fillAntialiasedCircle(canvas.view(), {30, 30}, 12 + seed, {0.25f});
    out.add(canvas.values());
    return out;
}

} // namespace

TEST(Threads, TwoThreadsGiveWhatEachGivesAlone)
{
    const Results alone1 = process(1), alone2 = process(2);
    ASSERT_NE(alone1.values, alone2.values);
    for (int round = 0; round < 3; ++round) {
        Results together1, together2;
        std::thread first([&] { together1 = process(1); });
        std::thread second([&] { together2 = process(2); });
        first.join();
        second.join();
        // Same bits, NaN included: compare as bytes.
        ASSERT_EQ(together1.values.size(), alone1.values.size());
        ASSERT_EQ(together2.values.size(), alone2.values.size());
        EXPECT_EQ(std::memcmp(together1.values.data(), alone1.values.data(), alone1.values.size() * sizeof(float)), 0);
        EXPECT_EQ(std::memcmp(together2.values.data(), alone2.values.data(), alone2.values.size() * sizeof(float)), 0);
    }
}
