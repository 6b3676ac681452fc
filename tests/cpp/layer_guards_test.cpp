// The hazards the C interface leaves to its caller, which the C++ layer must
// close: whatever it accepts runs inside its buffers (the sanitizer build
// runs these too), and what it cannot do safely it refuses.

#include <random>

#include "support.hpp"

using namespace ornex;

namespace {

std::mt19937 random32(20261124);

#if defined(__SIZEOF_INT128__)
constexpr int64_t farCorner = int64_t(1) << 29;
#else
// Without 128-bit integers the quadratic warp walks the rows of far cells
// one by one.
constexpr int64_t farCorner = int64_t(1) << 16;
#endif

int32_t coordinate(int64_t range)
{
    return int32_t(int64_t(random32() % uint64_t(2 * range + 1)) - range);
}

bool convex(const Quad &q)
{
    int turn = 0;
    for (int k = 0; k < 4; ++k) {
        const Point &a = q[k], &b = q[(k + 1) % 4], &c = q[(k + 2) % 4];
        const long double cross = (long double)(b.col - (int64_t)a.col) * (c.row - (int64_t)b.row) -
                                  (long double)(b.row - (int64_t)a.row) * (c.col - (int64_t)b.col);
        const int sign = (cross > 0) - (cross < 0);
        if (sign == 0 || (turn != 0 && sign != turn)) {
            return false;
        }
        turn = sign;
    }
    return true;
}

} // namespace

TYPED_TEST_SUITE(Typed, RealTypes);

TYPED_TEST(Typed, WarpsOnlyOntoConvexQuadrilaterals)
{
    using T = TypeParam;
    const Image<T> source = makeImage<T>(20, 24, 1, [](int r, int c, int) { return r * 0.25 + c; });
    const Rect whole{0, 0, 20, 24};
    const Quad from{{{1, 1}, {0, 20}, {19, 23}, {15, 2}}};
    const char *const notConvex = "to: must be a convex quadrilateral with its corners going round";
    const char *const nearHorizon = "to: comes within a pixel of where the transform divides by zero";
    const char *const nearCells = "subdivisions: cut the source quadrilateral into cells that reach past where the "
                                  "transform divides by zero; use none, or a fuller quadrilateral";
    expectRejections({
        {[&] { homography<T>(whole, Quad{{{0, 0}, {0, 30}, {0, 10}, {30, 30}}}, 20, 24); }, notConvex}, // bow-tie
        {[&] { homography<T>(whole, Quad{{{0, 0}, {0, 30}, {5, 15}, {30, 0}}}, 20, 24); }, notConvex},  // dart
        {[&] { homography<T>(from, Quad{{{7, 11}, {1, 14}, {21, -10}, {-15, 22}}}, 20, 24); }, notConvex},
        {[&] { homography<T>(whole, Quad{{{0, 0}, {0, 1 << 30}, {9, 9}, {9, 0}}}, 20, 24); },
         "to: corners must lie within -536870912 .. 536870912"},
        // Convex, but the pixels just outside it reach the horizon, where the
        // warp's positions are not numbers.
        {[&] { homography<T>(Rect{0, 0, 4, 3}, Quad{{{10, 1}, {5, 11}, {3, 18}, {2, 23}}}, 4, 3); }, nearHorizon},
    });
    ProjectiveTransform<T> broken = homography<T>(whole, Quad{{{0, 0}, {0, 23}, {19, 23}, {19, 0}}}, 20, 24);
    broken.block[4] = std::numeric_limits<T>::quiet_NaN();
    expectRejections({{[&] { warp(source.view(), 10, 10, broken); }, "transform: its matrices must be finite"}});

    // Corners going round either way, and far out, are accepted and warp
    // inside the source; random corners are refused exactly when not convex.
    int warped = 0;
    for (int k = 0; k < 600; ++k) {
        const int64_t range = k % 3 == 0 ? 40 : k % 3 == 1 ? 4000 : farCorner;
        const Quad to{{{coordinate(range), coordinate(range)},
                       {coordinate(range), coordinate(range)},
                       {coordinate(range), coordinate(range)},
                       {coordinate(range), coordinate(range)}}};
        try {
            const auto t = k % 2 ? homography<T>(whole, to, 20, 24) : homography<T>(from, to, 20, 24);
            warp(source.view(), 30, 30, t, {Interpolation(1 + k % 3), k % 4 < 2, k % 5});
            EXPECT_TRUE(convex(to));
            ++warped;
        } catch (const std::invalid_argument &refusal) {
            // Cells of the quadrilateral reach a pixel further than the
            // quadrilateral itself.
            if (refusal.what() != std::string(nearCells) || k % 2 || k % 5 == 0) {
                EXPECT_STREQ(refusal.what(), convex(to) ? nearHorizon : notConvex);
            }
        }
    }
    EXPECT_GT(warped, 100);
}

TYPED_TEST(Typed, CellsOfAThinQuadrilateralStayClearOfTheHorizon)
{
    using T = TypeParam;
    // Pixel k of the source holds k + 1; with nearest sampling every output
    // pixel must hold one of them or the background 0.
    const Image<T> source = makeImage<T>(15, 3, 1, [](int r, int c, int) { return 1 + r + 15 * c; });
    const auto drawnFromSource = [&](const Image<T> &out) {
        return std::all_of(out.values().begin(), out.values().end(),
                           [](T v) { return v == T(0) || (v >= T(1) && v <= T(45) && v == std::floor(v)); });
    };
    WarpOptions options;
    options.interpolation = Interpolation::nearest;
    options.exact = false;
    // The division points of this sliver round to (7, 1) and (11, 1); (7, 1)
    // lies outside it, on the far side of the transform's horizon, and its
    // cell would be sampled where the divisor is zero.
    const Quad sliver{{{3, 0}, {7, 0}, {14, 1}, {11, 1}}};
    const auto t = homography<T>(sliver, Quad{{{-2, -2}, {7, 0}, {16, -1}, {16, -6}}}, 15, 3);
    options.subdivisions = 1;
    const char *const nearCells = "subdivisions: cut the source quadrilateral into cells that reach past where the "
                                  "transform divides by zero; use none, or a fuller quadrilateral";
    expectRejections({{[&] { warp(source.view(), 17, 16, t, options); }, nearCells}});
    options.subdivisions = 0;
    EXPECT_TRUE(drawnFromSource(warp(source.view(), 17, 16, t, options)));

    // Random slivers onto the output's square, corners moved up to four
    // pixels: whatever is accepted samples the source only.
    int warped = 0, refused = 0;
    for (int k = 0; k < 400; ++k) {
        const int32_t top = int32_t(random32() % 10), bottom = int32_t(random32() % 10);
        const Quad from{{{top, 0}, {top + 1 + int32_t(random32() % 5), 0}, {bottom + 5, 2}, {bottom, 2}}};
        const Quad to{{{1 + coordinate(4), 1 + coordinate(4)},
                       {1 + coordinate(4), 10 + coordinate(4)},
                       {10 + coordinate(4), 10 + coordinate(4)},
                       {10 + coordinate(4), 1 + coordinate(4)}}};
        options.subdivisions = 1 + k % 4;
        options.exact = k % 2;
        try {
            const Image<T> out = warp(source.view(), 12, 12, homography<T>(from, to, 15, 3), options);
            EXPECT_TRUE(drawnFromSource(out)) << k;
            ++warped;
        } catch (const std::invalid_argument &refusal) {
            refused += refusal.what() == std::string(nearCells);
        }
    }
    EXPECT_GT(warped, 20);
    EXPECT_GT(refused, 20);
}

TYPED_TEST(Typed, BlockMatchingFindsAShiftWithEveryOverlap)
{
    using T = TypeParam;
    const auto texture = [](double r, double c) { return std::sin(0.9 * r + 0.3 * c) + std::cos(0.5 * c - 0.7 * r); };
    const Image<T> frame1 = makeImage<T>(23, 29, 1, [&](int r, int c, int) { return texture(r, c); });
    // The content moves 1 row down and 2 columns right.
    const Image<T> frame2 = makeImage<T>(23, 29, 1, [&](int r, int c, int) { return texture(r - 1, c - 2); });
    for (const int32_t block : {5, 6, 7})
        for (int32_t overlap = 0; overlap < block; ++overlap)
            for (const BlockSearch search : {BlockSearch::full, BlockSearch::threeStep}) {
                BlockMatchingOptions options;
                options.blockSize = {block, block + 1};
                options.overlap = {overlap, overlap};
                options.maxDisplacement = {3, 3};
                options.search = search;
                const auto motion = blockMatching(frame1.view(), frame2.view(), options);
                const int32_t step = block - overlap;
                ASSERT_EQ(motion.rows(), 23 / step);
                if (search == BlockSearch::full) {
                    // A block well inside both frames sees the whole move.
                    EXPECT_EQ(motion(1, 1), (MotionVector<T>{2, 1})) << block << ' ' << overlap;
                }
            }
}

TEST(LayerGuards, LinesFarOutsideStayInsideTheImage)
{
    // The image sits inside a larger buffer whose other bytes must stay 0.
    constexpr int32_t rows = 40, cols = 50, guard = 4096;
    std::vector<uint8_t> buffer(size_t(rows) * cols + 2 * guard, 0);
    const ImageView<uint8_t> image{buffer.data() + guard, rows, cols, 1};
    std::vector<float> fbuffer(size_t(rows) * cols + 2 * guard, 0.0f);
    const ImageView<float> fimage{fbuffer.data() + guard, rows, cols, 1};
    int drawn = 0;
    for (int k = 0; k < 20000; ++k) {
        const int64_t range = int64_t(1) << (random32() % 31);
        const Point from{coordinate(range), coordinate(range)};
        const Point to{int32_t(std::clamp<int64_t>(from.row + coordinate(32000), INT32_MIN, INT32_MAX)),
                       int32_t(std::clamp<int64_t>(from.col + coordinate(32000), INT32_MIN, INT32_MAX))};
        drawLine(image, from, to, {uint8_t(1)});
        drawAntialiasedLine(fimage, from, to, {1.0f});
        ++drawn;
    }
    EXPECT_EQ(drawn, 20000);
    for (int32_t i = 0; i < guard; ++i) {
        ASSERT_EQ(buffer[size_t(i)], 0);
        ASSERT_EQ(buffer[buffer.size() - 1 - size_t(i)], 0);
        ASSERT_EQ(fbuffer[size_t(i)], 0.0f);
        ASSERT_EQ(fbuffer[fbuffer.size() - 1 - size_t(i)], 0.0f);
    }
    expectRejections({{[&] { drawLine(image, {0, 0}, {0, 40000}, {uint8_t(1)}); },
                       "to: must lie within 32000 rows and columns of from"}});
}

TEST(LayerGuards, RowMajorBuffersCopyBothWays)
{
    // Pixel (r, c) channel p holds 100 r + 10 c + p, rows 7 values apart
    // (two of them padding), as a cv::Mat with a padded step lays them out.
    constexpr int32_t rows = 3, cols = 2, planes = 2, pitch = 7;
    std::vector<int16_t> rowMajor(rows * pitch, -1);
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t c = 0; c < cols; ++c)
            for (int32_t p = 0; p < planes; ++p)
                rowMajor[size_t(r * pitch + c * planes + p)] = int16_t(100 * r + 10 * c + p);
    const Image<int16_t> image = fromRowMajor(rowMajor.data(), rows, cols, planes, pitch * sizeof(int16_t));
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t c = 0; c < cols; ++c)
            for (int32_t p = 0; p < planes; ++p)
                EXPECT_EQ(image.data()[p * rows * cols + c * rows + r], 100 * r + 10 * c + p);
    std::vector<int16_t> back(rows * pitch, -1);
    toRowMajor(image.view(), back.data(), pitch * sizeof(int16_t));
    EXPECT_EQ(back, rowMajor); // the padding is left alone
    std::vector<int16_t> packed(rows * cols * planes);
    toRowMajor(image.view(), packed.data());
    EXPECT_EQ(fromRowMajor(packed.data(), rows, cols, planes).values(), image.values());
    expectRejections({{[&] { fromRowMajor(packed.data(), rows, cols, planes, 2); }, "rowStride: shorter than a row"}});
}
