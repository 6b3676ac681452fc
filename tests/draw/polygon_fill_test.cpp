#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T, class O>
using FillIntensity = int32_t (*)(int32_t *, int32_t, const int32_t *, int32_t *, T *, int32_t, int32_t, int32_t,
                                  int32_t, int32_t, const T *, O, int32_t, int32_t);
template <class T, class O>
using FillRgb = int32_t (*)(int32_t *, int32_t, const int32_t *, int32_t *, T *, T *, T *, int32_t, int32_t, int32_t,
                            int32_t, int32_t, const T *, O);
template <class T, class O>
using ScanIntensity = void (*)(T *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, const int32_t *,
                               const T *, O, int32_t, int32_t, int32_t);

template <class Pixel, class Opacity, FillIntensity<Pixel, Opacity> intensity, FillRgb<Pixel, Opacity> rgb,
          ScanIntensity<Pixel, Opacity> scan>
struct Member {
    using T = Pixel;
    using O = Opacity;
    static constexpr bool fixedPoint = std::is_integral_v<Opacity>;
    static constexpr Opacity opaque = fixedPoint ? Opacity(1024) : Opacity(1);
    static constexpr Opacity half = fixedPoint ? Opacity(512) : Opacity(0.5);
    static constexpr FillIntensity<Pixel, Opacity> fillIntensity = intensity;
    static constexpr FillRgb<Pixel, Opacity> fillRgb = rgb;
    static constexpr ScanIntensity<Pixel, Opacity> scanIntensity = scan;
};

using Members = ::testing::Types<
    Member<double, double, ORNEX_FillOnePolygon_I_D, ORNEX_FillOnePolygon_RGB_D, ORNEX_FillVerticalScanLine_I_D>,
    Member<float, float, ORNEX_FillOnePolygon_I_R, ORNEX_FillOnePolygon_RGB_R, ORNEX_FillVerticalScanLine_I_R>,
    Member<uint8_t, int16_t, ORNEX_FillOnePolygon_I_Bool, ORNEX_FillOnePolygon_RGB_Bool,
           ORNEX_FillVerticalScanLine_I_Bool>,
    Member<uint8_t, int16_t, ORNEX_FillOnePolygon_I_UI8, ORNEX_FillOnePolygon_RGB_UI8,
           ORNEX_FillVerticalScanLine_I_UI8>,
    Member<int8_t, int16_t, ORNEX_FillOnePolygon_I_I8, ORNEX_FillOnePolygon_RGB_I8, ORNEX_FillVerticalScanLine_I_I8>,
    Member<uint16_t, int16_t, ORNEX_FillOnePolygon_I_UI16, ORNEX_FillOnePolygon_RGB_UI16,
           ORNEX_FillVerticalScanLine_I_UI16>,
    Member<int16_t, int16_t, ORNEX_FillOnePolygon_I_I16, ORNEX_FillOnePolygon_RGB_I16,
           ORNEX_FillVerticalScanLine_I_I16>>;

// A column-major image with the scratch the filler needs.
template <class T>
struct Canvas {
    int32_t rows;
    int32_t cols;
    std::vector<T> pixels;

    Canvas(int32_t r, int32_t c, T value, int32_t planes = 1) : rows(r), cols(c), pixels(r * c * planes, value) {}
    T &at(int32_t r, int32_t c, int32_t plane = 0) { return pixels[plane * rows * cols + c * rows + r]; }
};

template <class M>
void fill(Canvas<typename M::T> &canvas, const std::vector<int32_t> &vertices, typename M::T value,
          typename M::O opacity, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax)
{
    const int32_t n = static_cast<int32_t>(vertices.size()) / 2;
    std::vector<int32_t> edges(16 * n + 1), records(6 * n + 1);
    M::fillIntensity(edges.data(), static_cast<int32_t>(vertices.size()), vertices.data(), records.data(),
                     canvas.pixels.data(), rowMin, rowMax, colMin, colMax, canvas.rows, &value, opacity, 1,
                     canvas.rows * canvas.cols);
}

template <class M>
void fillWhole(Canvas<typename M::T> &canvas, const std::vector<int32_t> &vertices, typename M::T value,
               typename M::O opacity)
{
    fill<M>(canvas, vertices, value, opacity, 0, canvas.rows - 1, 0, canvas.cols - 1);
}

template <class M>
class PolygonFill : public ::testing::Test {};
TYPED_TEST_SUITE(PolygonFill, Members);

// A rectangle's outline: its two long sides run along the scan, its two
// short sides have zero length.
std::vector<int32_t> rectangle(int32_t r0, int32_t c0, int32_t r1, int32_t c1)
{
    return {r0, c0, r0, c1, r1, c1, r1, c0};
}

TYPED_TEST(PolygonFill, RectangleFillsBothEndRowsAndColumnsExactly)
{
    using M = TypeParam;
    using T = typename M::T;
    Canvas<T> canvas(10, 12, T(3));
    fillWhole<M>(canvas, rectangle(2, 3, 6, 8), T(7), M::opaque);
    for (int32_t c = 0; c < canvas.cols; ++c) {
        for (int32_t r = 0; r < canvas.rows; ++r) {
            const bool inside = r >= 2 && r <= 6 && c >= 3 && c <= 8;
            EXPECT_EQ(canvas.at(r, c), inside ? T(7) : T(3)) << r << "," << c;
        }
    }
}

TYPED_TEST(PolygonFill, ClippedAtAllFourBounds)
{
    using M = TypeParam;
    using T = typename M::T;
    Canvas<T> canvas(10, 12, T(0));
    // Larger than the image on every side, clipped to rows 1..7, columns 2..9.
    fill<M>(canvas, rectangle(-5, -6, 20, 30), T(9), M::opaque, 1, 7, 2, 9);
    for (int32_t c = 0; c < canvas.cols; ++c) {
        for (int32_t r = 0; r < canvas.rows; ++r) {
            const bool inside = r >= 1 && r <= 7 && c >= 2 && c <= 9;
            EXPECT_EQ(canvas.at(r, c), inside ? T(9) : T(0)) << r << "," << c;
        }
    }
}

TYPED_TEST(PolygonFill, OpacityBlendsOnceAndZeroLeavesTheImage)
{
    using M = TypeParam;
    using T = typename M::T;
    Canvas<T> canvas(8, 8, T(4));
    fillWhole<M>(canvas, rectangle(1, 1, 5, 5), T(10), typename M::O(0));
    for (const T value : canvas.pixels) {
        EXPECT_EQ(value, T(4));
    }
    // Half way between 10 and 4 is 7 in every member: (10*512 + 4*512) >> 10.
    fillWhole<M>(canvas, rectangle(1, 1, 5, 5), T(10), M::half);
    EXPECT_EQ(canvas.at(1, 1), T(7));
    EXPECT_EQ(canvas.at(5, 5), T(7));
    EXPECT_EQ(canvas.at(3, 2), T(7));
    EXPECT_EQ(canvas.at(0, 0), T(4));
    EXPECT_EQ(canvas.at(6, 6), T(4));
}

TYPED_TEST(PolygonFill, MultiplePlanesAndRgbGetTheirOwnFillValues)
{
    using M = TypeParam;
    using T = typename M::T;
    const std::vector<int32_t> square = rectangle(1, 2, 3, 4);
    std::vector<int32_t> edges(64), records(24);

    // Two planes with a gap between them that must survive.
    const int32_t rows = 5, cols = 6, stride = rows * cols + 3;
    std::vector<T> image(2 * stride, T(1));
    const T planeFills[2] = {T(20), T(30)};
    M::fillIntensity(edges.data(), 8, square.data(), records.data(), image.data(), 0, rows - 1, 0, cols - 1, rows,
                     planeFills, M::opaque, 2, stride);

    Canvas<T> red(rows, cols, T(1)), green(rows, cols, T(1)), blue(rows, cols, T(1));
    const T rgbFills[3] = {T(11), T(12), T(13)};
    M::fillRgb(edges.data(), 8, square.data(), records.data(), red.pixels.data(), green.pixels.data(),
               blue.pixels.data(), 0, rows - 1, 0, cols - 1, rows, rgbFills, M::opaque);

    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const bool inside = r >= 1 && r <= 3 && c >= 2 && c <= 4;
            EXPECT_EQ(image[c * rows + r], inside ? T(20) : T(1));
            EXPECT_EQ(image[stride + c * rows + r], inside ? T(30) : T(1));
            EXPECT_EQ(red.at(r, c), inside ? T(11) : T(1));
            EXPECT_EQ(green.at(r, c), inside ? T(12) : T(1));
            EXPECT_EQ(blue.at(r, c), inside ? T(13) : T(1));
        }
    }
    for (int32_t k = rows * cols; k < stride; ++k) {
        EXPECT_EQ(image[k], T(1));
    }
}

TYPED_TEST(PolygonFill, ScanLinePairsEdgesAndNeverBlendsARowTwice)
{
    using M = TypeParam;
    using T = typename M::T;
    // Active rows 2,5 | 5,9 | 7,12 | 14: the second span starts after row 5,
    // the third after row 9, and the odd last edge has no partner.
    const int32_t activeRows[] = {2, 5, 5, 9, 7, 12, 14};
    Canvas<T> canvas(16, 3, T(4));
    const T value = T(10);
    M::scanIntensity(canvas.pixels.data(), 1, 0, 15, 0, 2, 16, 7, activeRows, &value, M::half, 0, 1, 48);
    for (int32_t r = 0; r < 16; ++r) {
        EXPECT_EQ(canvas.at(r, 1), r >= 2 && r <= 12 ? T(7) : T(4)) << r;
        EXPECT_EQ(canvas.at(r, 0), T(4));
        EXPECT_EQ(canvas.at(r, 2), T(4));
    }
    // Rows clipped to 4..10; a column outside colMin..colMax or fewer than two
    // edges draw nothing.
    M::scanIntensity(canvas.pixels.data(), 0, 4, 10, 0, 2, 16, 7, activeRows, &value, M::opaque, 0, 1, 48);
    M::scanIntensity(canvas.pixels.data(), 2, 0, 15, 0, 1, 16, 7, activeRows, &value, M::opaque, 0, 1, 48);
    M::scanIntensity(canvas.pixels.data(), 2, 0, 15, 0, 2, 16, 1, activeRows, &value, M::opaque, 0, 1, 48);
    for (int32_t r = 0; r < 16; ++r) {
        EXPECT_EQ(canvas.at(r, 0), r >= 4 && r <= 10 ? T(10) : T(4)) << r;
        EXPECT_EQ(canvas.at(r, 2), T(4));
    }
}

// Even-odd membership of the point (row, col) by counting the edges that a
// ray toward smaller rows crosses.
bool insideEvenOdd(const std::vector<int32_t> &v, double row, double col)
{
    const size_t n = v.size() / 2;
    bool inside = false;
    for (size_t i = 0; i < n; ++i) {
        const size_t j = (i + 1) % n;
        const double r1 = v[2 * i], c1 = v[2 * i + 1], r2 = v[2 * j], c2 = v[2 * j + 1];
        if ((c1 > col) != (c2 > col)) {
            const double crossing = r1 + (col - c1) * (r2 - r1) / (c2 - c1);
            if (crossing < row) {
                inside = !inside;
            }
        }
    }
    return inside;
}

double distanceToOutline(const std::vector<int32_t> &v, double row, double col)
{
    const size_t n = v.size() / 2;
    double best = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < n; ++i) {
        const size_t j = (i + 1) % n;
        const double r1 = v[2 * i], c1 = v[2 * i + 1], dr = v[2 * j] - r1, dc = v[2 * j + 1] - c1;
        const double lengthSquared = dr * dr + dc * dc;
        double t = lengthSquared > 0 ? ((row - r1) * dr + (col - c1) * dc) / lengthSquared : 0;
        t = t < 0 ? 0 : (t > 1 ? 1 : t);
        best = std::min(best, std::hypot(row - (r1 + t * dr), col - (c1 + t * dc)));
    }
    return best;
}

// Pixels farther than one pixel from every edge are filled exactly when the
// even-odd rule puts them inside.
template <class M>
void expectEvenOdd(const std::vector<int32_t> &vertices, int32_t rows, int32_t cols)
{
    using T = typename M::T;
    Canvas<T> canvas(rows, cols, T(0));
    fillWhole<M>(canvas, vertices, T(1), M::opaque);
    int32_t checked = 0;
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            if (distanceToOutline(vertices, r, c) <= 1.0) {
                continue;
            }
            ++checked;
            EXPECT_EQ(canvas.at(r, c), insideEvenOdd(vertices, r, c) ? T(1) : T(0)) << r << "," << c;
        }
    }
    EXPECT_GT(checked, rows * cols / 2);
}

TYPED_TEST(PolygonFill, AgreesWithTheEvenOddRuleAwayFromEdges)
{
    using M = TypeParam;
    // Concave, with an edge along the scan and one across it.
    expectEvenOdd<M>({2, 2, 2, 30, 20, 30, 10, 16, 28, 4}, 32, 34);
    // A five-pointed star drawn in one stroke: its centre is outside.
    expectEvenOdd<M>({1, 20, 38, 30, 14, 2, 14, 38, 38, 10}, 40, 41);
    // A bow tie crossing itself, partly outside the image.
    expectEvenOdd<M>({-4, 3, 30, 40, -4, 40, 30, 3}, 28, 44);
}

TYPED_TEST(PolygonFill, OnlyEdgesEndingWithTheLastSortedEdgeDrawTheirLastColumn)
{
    using M = TypeParam;
    using T = typename M::T;
    // Triangle A(0,0) B(50,100) C(100,0): both long edges end at column 100,
    // which is also where the last sorted edge ends, so the tip is drawn.
    Canvas<T> triangle(101, 101, T(0));
    fillWhole<M>(triangle, {0, 0, 50, 100, 100, 0}, T(1), M::opaque);
    EXPECT_EQ(triangle.at(50, 100), T(1));

    // With a notch D(90,60) E(80,40) the last sorted edge is E->D, ending at
    // column 60: the two notch edges ending there draw column 60 (reaching
    // D), while A-B and C-B are dropped at column 100 before it is drawn.
    Canvas<T> notched(101, 101, T(0));
    fillWhole<M>(notched, {0, 0, 50, 100, 100, 0, 90, 60, 80, 40}, T(1), M::opaque);
    for (int32_t r = 0; r < 101; ++r) {
        EXPECT_EQ(notched.at(r, 100), T(0)) << r;
    }
    EXPECT_EQ(notched.at(50, 99), T(1));
    EXPECT_EQ(notched.at(90, 60), T(1));
    EXPECT_EQ(notched.at(89, 59), T(0));
}

TYPED_TEST(PolygonFill, NoVertexOrOneVertexDrawsNothing)
{
    using M = TypeParam;
    using T = typename M::T;
    Canvas<T> canvas(4, 4, T(2));
    fillWhole<M>(canvas, {}, T(9), M::opaque);
    fillWhole<M>(canvas, {1, 1}, T(9), M::opaque);
    fillWhole<M>(canvas, {1, 1, 3, 1}, T(9), M::opaque);
    // A negative count has no edge: no scratch exists to be read.
    const int32_t vertex[2] = {1, 1};
    const T value = T(9);
    M::fillIntensity(nullptr, -2, vertex, nullptr, canvas.pixels.data(), 0, 3, 0, 3, 4, &value, M::opaque, 1, 16);
    for (const T value : canvas.pixels) {
        EXPECT_EQ(value, T(2));
    }
}

TEST(PolygonBlend, FloatingMembersWeighFillAndOld)
{
    // 9*0.25 + 1*0.75 = 3 in double; the single member sums in double:
    // 1*0.2f + 2*(1 - 0.2f) = 1.7999999970 rounds to the single 1.79999995,
    // where single arithmetic throughout would give 1.80000007.
    std::vector<double> image = {1, 1, 1, 1};
    const double fillD = 9;
    ORNEX_FillPolygon_InterpFlt_I_D(image.data(), &fillD, 1, 0.25, 1, 2, 1, 4);
    EXPECT_EQ(image, (std::vector<double>{1, 3, 3, 1}));

    std::vector<float> red = {2, 2}, green = {2, 2}, blue = {2, 2};
    const float fills[3] = {1, 1, 1};
    ORNEX_FillPolygon_InterpFlt_RGB_R(red.data(), fills, 1, 0.2f, green.data(), blue.data(), 0, 0);
    EXPECT_EQ(red[1], 1.79999995f);
    EXPECT_EQ(green[1], 1.79999995f);
    EXPECT_EQ(blue[1], 1.79999995f);
    EXPECT_EQ(red[0], 2.0f);
}

TEST(PolygonBlend, FixedMembersShiftWithoutSaturating)
{
    // (200*768 + 100*256) >> 10 = 175.
    std::vector<uint8_t> bytes = {100, 100};
    const uint8_t fill8 = 200;
    ORNEX_FillPolygon_InterpFix_I_UI8(bytes.data(), &fill8, 0, 768, 0, 0, 1, 2);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{175, 100}));

    // An opacity above 1024 overshoots and wraps: (200*2048 + 100*-1024) >> 10
    // = 300, stored as 300 - 256 = 44.
    ORNEX_FillPolygon_InterpFix_I_UI8(bytes.data(), &fill8, 1, 2048, 0, 0, 1, 2);
    EXPECT_EQ(bytes[1], 44);

    // Signed: (-100*512 + 50*512) >> 10 = -25600 >> 10 = -25 (floor).
    std::vector<int16_t> shorts = {50};
    const int16_t fill16 = -100;
    ORNEX_FillPolygon_InterpFix_RGB_I16(shorts.data(), &fill16, 0, 512, shorts.data(), shorts.data(), 0, -1);
    EXPECT_EQ(shorts[0], 50) << "an empty run";
    std::vector<int16_t> r = {50}, g = {51}, b = {-51};
    const int16_t fills[3] = {-100, -100, -100};
    ORNEX_FillPolygon_InterpFix_RGB_I16(r.data(), fills, 0, 512, g.data(), b.data(), 0, 0);
    EXPECT_EQ(r[0], -25);
    EXPECT_EQ(g[0], -25); // -25088 >> 10 = -24.5 rounded down
    EXPECT_EQ(b[0], -76); // -77312 >> 10 = -75.5 rounded down

    // Logical images hold bytes and blend like them.
    std::vector<uint8_t> flags = {0, 0};
    const uint8_t one = 1;
    ORNEX_FillPolygon_InterpFix_I_Bool(flags.data(), &one, 0, 1024, 0, 1, 1, 2);
    EXPECT_EQ(flags, (std::vector<uint8_t>{1, 1}));
}

TEST(IntCoordinates, RoundsHalvesAwayFromZeroAndWidensIntegers)
{
    int32_t out[4] = {};
    const double doubles[] = {9, 9, 9, 9, 2.5, -2.5, 0.49, std::nan("")};
    ORNEX_GetIntCoordinates(doubles, 0, out, 4, 1);
    EXPECT_EQ(out[0], 3);
    EXPECT_EQ(out[1], -3);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[3], INT32_MIN);

    const float singles[] = {2.5f, -2.5f, 0.49f, -0.5f};
    ORNEX_GetIntCoordinates(singles, 1, out, 4, 0);
    EXPECT_EQ(out[0], 3);
    EXPECT_EQ(out[1], -3);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[3], -1);

    const int8_t bytes[] = {-5, 7};
    ORNEX_GetIntCoordinates(bytes, 2, out, 2, 0);
    EXPECT_EQ(out[0], -5);
    EXPECT_EQ(out[1], 7);
    const uint8_t ubytes[] = {255, 0, 1, 2};
    ORNEX_GetIntCoordinates(ubytes, 3, out, 2, 1);
    EXPECT_EQ(out[0], 1);
    EXPECT_EQ(out[1], 2);
    const int16_t shorts[] = {-30000};
    ORNEX_GetIntCoordinates(shorts, 4, out, 1, 0);
    EXPECT_EQ(out[0], -30000);
    const uint16_t ushorts[] = {65535};
    ORNEX_GetIntCoordinates(ushorts, 5, out, 1, 0);
    EXPECT_EQ(out[0], 65535);
    const int32_t ints[] = {INT32_MIN};
    ORNEX_GetIntCoordinates(ints, 6, out, 1, 0);
    EXPECT_EQ(out[0], INT32_MIN);
    const uint32_t uints[] = {4294967295u};
    ORNEX_GetIntCoordinates(uints, 7, out, 1, 0);
    EXPECT_EQ(out[0], -1);

    out[0] = 42;
    ORNEX_GetIntCoordinates(doubles, 8, out, 1, 0);
    EXPECT_EQ(out[0], 42);
}

} // namespace
