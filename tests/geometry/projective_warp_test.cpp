#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int nearest = 1, bilinear = 2, bicubic = 3;

template <class T>
using Block = std::array<T, 18>;

// A column-major image of one or more planes.
template <class T>
struct Frame {
    int32_t rows, cols, planes;
    std::vector<T> values;

    Frame(int32_t r, int32_t c, T fill, int32_t p = 1) : rows(r), cols(c), planes(p), values(size_t(r) * c * p, fill)
    {
    }
    T &at(int32_t r, int32_t c, int32_t plane = 0) { return values[size_t(plane) * rows * cols + size_t(c) * rows + r]; }
    T *plane(int32_t p) { return values.data() + size_t(p) * rows * cols; }
};

// Source pixel values that name their position.
template <class T>
Frame<T> labelled(int32_t rows, int32_t cols, int32_t planes = 1)
{
    Frame<T> frame(rows, cols, T(0), planes);
    for (int32_t p = 0; p < planes; ++p) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                frame.at(r, c, p) = T(1000 * p + 100 * r + c);
            }
        }
    }
    return frame;
}

template <class T>
std::array<T, 9> affine(T columnScale, T rowScale, T columnShift, T rowShift)
{
    // p = x*m0 + y*m1 + m2 (column), q = x*m3 + y*m4 + m5 (row), w = m8.
    return {columnScale, 0, columnShift, 0, rowScale, rowShift, 0, 0, 1};
}

template <class T>
Block<T> block(const std::array<T, 9> &first, const std::array<T, 9> &second)
{
    Block<T> b{};
    std::copy(first.begin(), first.end(), b.begin());
    std::copy(second.begin(), second.end(), b.begin() + 9);
    return b;
}

// Both members through one set of names.
template <class T>
struct Warp {
    static constexpr bool isDouble = std::is_same_v<T, double>;
    static constexpr auto rect = [] {
        if constexpr (isDouble) return ORNEX_DivideRectXform_D; else return ORNEX_DivideRectXform_R;
    }();
    static constexpr auto quad = [] {
        if constexpr (isDouble) return ORNEX_DivideQuadXform_D; else return ORNEX_DivideQuadXform_R;
    }();
    static constexpr auto span = [] {
        if constexpr (isDouble) return ORNEX_ProjComputeOutPixel_D; else return ORNEX_ProjComputeOutPixel_R;
    }();
    static constexpr auto inPoints = [] {
        if constexpr (isDouble) return ORNEX_GetInPtsFrmOutPts_D; else return ORNEX_GetInPtsFrmOutPts_R;
    }();
    static constexpr auto background = [] {
        if constexpr (isDouble) return ORNEX_FillBackgroundValues_D; else return ORNEX_FillBackgroundValues_R;
    }();
};

struct Options {
    int method = nearest;
    bool exact = true;
    int32_t divisions = 0;
    int32_t rowLowerBound = 0, colLowerBound = 0;
};

// Warps a one-plane source onto a one-plane output through the rectangle
// driver (whole image or rect) and returns the driver's value.
template <class T>
int32_t warpRectangle(Frame<T> &source, Frame<T> &output, const Block<T> &b, const Options &o,
                      const int32_t *rect = nullptr)
{
    std::vector<int32_t> edges(64), scratch(24);
    const int32_t noRect[4] = {0, 0, 0, 0};
    return Warp<T>::rect(edges.data(), rect ? rect : noRect, scratch.data(), output.plane(0), nullptr, nullptr, 0,
                         output.rows - 1, 0, output.cols - 1, source.rows, 0, b.data(), source.plane(0), nullptr,
                         nullptr, o.exact, output.rows, output.cols, source.cols, o.method, o.rowLowerBound,
                         o.colLowerBound, o.divisions, rect != nullptr, 1);
}

template <class T>
int32_t warpQuadrilateral(Frame<T> &source, Frame<T> &output, const int32_t *corners, const Block<T> &b,
                          const Options &o)
{
    std::vector<int32_t> edges(64), scratch(24);
    return Warp<T>::quad(edges.data(), corners, scratch.data(), output.plane(0), nullptr, nullptr, 0,
                         output.rows - 1, 0, output.cols - 1, source.rows, 0, b.data(), source.plane(0), nullptr,
                         nullptr, o.exact, output.rows, output.cols, source.cols, o.method, o.divisions, 1);
}

template <class T>
class ProjectiveWarp : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ProjectiveWarp, Precisions);

TYPED_TEST(ProjectiveWarp, HomogeneousPointIsColumnTimesFirstColumnPlusRowTimesSecond)
{
    using T = TypeParam;
    const T m[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    T q = 0, p = 0, w = 0;
    Warp<T>::inPoints(2, 3, m, &q, &p, &w);
    // x = 3 (column), y = 2 (row): p = 3*1 + 2*2 + 3, q = 3*4 + 2*5 + 6,
    // w = 3*7 + 2*8 + 9.
    EXPECT_EQ(p, T(10));
    EXPECT_EQ(q, T(28));
    EXPECT_EQ(w, T(46));
}

TYPED_TEST(ProjectiveWarp, IdentityWithNearestNeighbourCopiesTheSource)
{
    using T = TypeParam;
    Frame<T> source = labelled<T>(20, 24);
    const auto identity = affine<T>(1, 1, 0, 0);
    for (int32_t divisions : {0, 3, 7}) {
        Frame<T> output(20, 24, T(-1));
        Options options;
        options.divisions = divisions;
        warpRectangle(source, output, block(identity, identity), options);
        EXPECT_EQ(output.values, source.values) << divisions << " divisions";
    }
}

TYPED_TEST(ProjectiveWarp, RectangleLimitsAreBoundsNotSizes)
{
    using T = TypeParam;
    Frame<T> source = labelled<T>(12, 14);
    Frame<T> output(12, 14, T(-1));
    const auto identity = affine<T>(1, 1, 0, 0);
    // Rows 2 .. 8-1, columns 3 .. 9-1: the limits are not moved by the start.
    const int32_t rect[4] = {2, 3, 8, 9};
    Options options;
    options.divisions = 2;
    warpRectangle(source, output, block(identity, identity), options, rect);
    for (int32_t c = 0; c < 14; ++c) {
        for (int32_t r = 0; r < 12; ++r) {
            const bool covered = r >= 2 && r <= 7 && c >= 3 && c <= 8;
            EXPECT_EQ(output.at(r, c), covered ? source.at(r, c) : T(-1)) << r << "," << c;
        }
    }
    // A negative number of divisions draws nothing.
    Frame<T> untouched(12, 14, T(-1));
    options.divisions = -1;
    warpRectangle(source, untouched, block(identity, identity), options, rect);
    EXPECT_EQ(untouched.values, Frame<T>(12, 14, T(-1)).values);
}

TYPED_TEST(ProjectiveWarp, ScalingByTwoSamplesHalfPositions)
{
    using T = TypeParam;
    Frame<T> source(16, 16, T(0));
    for (int32_t c = 0; c < 16; ++c) {
        for (int32_t r = 0; r < 16; ++r) {
            source.at(r, c) = T(std::sin(0.7 * r) * 10 + std::cos(0.45 * c) * 7);
        }
    }
    const Block<T> scale = block(affine<T>(2, 2, 0, 0), affine<T>(T(0.5), T(0.5), 0, 0));
    const double tolerance = std::is_same_v<T, double> ? 1e-9 : 2e-4;
    for (int32_t divisions : {0, 4}) {
        Frame<T> output(32, 32, T(-100));
        Options options;
        options.method = bilinear;
        options.divisions = divisions;
        warpRectangle(source, output, scale, options);
        for (int32_t c = 1; c < 30; ++c) {
            for (int32_t r = 1; r < 30; ++r) {
                T expected = 0;
                if constexpr (std::is_same_v<T, double>) {
                    ORNEX_PosVal_BL_Interp_D(source.plane(0), r / 2.0, c / 2.0, 16, 16, &expected, 0, 1, 0, 0);
                } else {
                    ORNEX_PosVal_BL_Interp_R(source.plane(0), r / 2.0f, c / 2.0f, 16, 16, &expected, 0, 1, 0, 0);
                }
                // Positions are stepped along each span, not recomputed.
                EXPECT_NEAR(output.at(r, c), expected, tolerance) << r << "," << c;
            }
        }
        // The source's last row and column land on row and column 30.
        EXPECT_EQ(output.at(31, 10), T(-100));
        EXPECT_NE(output.at(30, 30), T(-100));
    }
}

// A mild perspective and its inverse (the adjugate of the forward matrix).
template <class T>
Block<T> mildPerspective()
{
    // Rows of the matrix acting on column vectors (x, y, 1): column, row, w.
    const double h[3][3] = {{1.05, 0.04, 3.0}, {-0.03, 0.97, 2.0}, {0.0004, -0.0003, 1.0}};
    double inverse[3][3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const int i1 = (j + 1) % 3, i2 = (j + 2) % 3, j1 = (i + 1) % 3, j2 = (i + 2) % 3;
            inverse[i][j] = h[i1][j1] * h[i2][j2] - h[i1][j2] * h[i2][j1];
        }
    }
    // Stored column by column for the row vector [x y 1]: m0..m2 give the
    // column, m3..m5 the row, m6..m8 w.
    Block<T> b{};
    for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 3; ++j) {
            b[3 * k + j] = T(h[k][j]);
            b[9 + 3 * k + j] = T(inverse[k][j]);
        }
    }
    return b;
}

TYPED_TEST(ProjectiveWarp, ApproximateSpansStayCloseToExactPositions)
{
    using T = TypeParam;
    // Source values equal to their row position, so bilinear sampling reads
    // back the position that was sampled.
    Frame<T> ramp(60, 70, T(0));
    for (int32_t c = 0; c < 70; ++c) {
        for (int32_t r = 0; r < 60; ++r) {
            ramp.at(r, c) = T(r);
        }
    }
    const Block<T> b = mildPerspective<T>();
    for (const bool exact : {true, false}) {
        Frame<T> output(80, 90, T(-1));
        Options options;
        options.method = bilinear;
        options.exact = exact;
        options.divisions = 4;
        warpRectangle(ramp, output, b, options);
        double worst = 0;
        int32_t covered = 0;
        for (int32_t c = 0; c < 90; ++c) {
            for (int32_t r = 0; r < 80; ++r) {
                const double x = c, y = r;
                const double w = x * double(b[15]) + y * double(b[16]) + double(b[17]);
                const double row = (x * double(b[12]) + y * double(b[13]) + double(b[14])) / w;
                if (output.at(r, c) == T(-1) || row < 1 || row > 58) {
                    continue;
                }
                ++covered;
                worst = std::max(worst, std::fabs(double(output.at(r, c)) - row));
            }
        }
        EXPECT_GT(covered, 2500);
        const double exactTolerance = std::is_same_v<T, double> ? 1e-9 : 1e-3;
        EXPECT_LT(worst, exact ? exactTolerance : 1e-3) << (exact ? "exact" : "approximate");
    }
}

TYPED_TEST(ProjectiveWarp, QuadrilateralDriverUsesTheHalvesTheOtherWayRound)
{
    using T = TypeParam;
    Frame<T> source = labelled<T>(14, 20);
    const auto forward = affine<T>(1, 1, 5, 0);  // five columns to the right
    const auto backward = affine<T>(1, 1, -5, 0);
    const int32_t corners[8] = {2, 3, 2, 12, 10, 12, 10, 3};
    Options options;
    options.divisions = 2;
    Frame<T> viaQuad(14, 20, T(-1));
    EXPECT_NE(warpQuadrilateral(source, viaQuad, corners, block(backward, forward), options), 0);
    for (int32_t c = 0; c < 20; ++c) {
        for (int32_t r = 0; r < 14; ++r) {
            const bool covered = r >= 2 && r <= 10 && c >= 8 && c <= 17;
            EXPECT_EQ(viaQuad.at(r, c), covered ? source.at(r, c - 5) : T(-1)) << r << "," << c;
        }
    }
    // The rectangle driver takes the same matrices in the other order.
    const int32_t rect[4] = {2, 3, 11, 13};
    Frame<T> viaRect(14, 20, T(-1));
    warpRectangle(source, viaRect, block(forward, backward), options, rect);
    EXPECT_EQ(viaRect.values, viaQuad.values);
}

TYPED_TEST(ProjectiveWarp, CollinearQuadrilateralReturnsZeroAndDrawsNothing)
{
    using T = TypeParam;
    Frame<T> source = labelled<T>(10, 10);
    Frame<T> output(10, 10, T(-1));
    const auto identity = affine<T>(1, 1, 0, 0);
    // Corners 0, 1 and 2 lie on row 0.
    const int32_t flat[8] = {0, 0, 0, 4, 0, 9, 9, 0};
    EXPECT_EQ(warpQuadrilateral(source, output, flat, block(identity, identity), Options{}), 0);
    EXPECT_EQ(output.values, Frame<T>(10, 10, T(-1)).values);
}

TYPED_TEST(ProjectiveWarp, SpanIsWrittenOnlyInsideTheWindowAtItsOwnIndices)
{
    using T = TypeParam;
    Frame<T> source = labelled<T>(12, 12);
    const auto identity = affine<T>(1, 1, 0, 0);
    // Window rows 2..9, columns 1..6: pixel (r, c) at (c - 1)*10 - 2 + r.
    for (const bool exact : {true, false}) {
        std::vector<T> output(10 * 6, T(-1));
        Warp<T>::span(output.data(), nullptr, nullptr, 3, 2, 9, 1, 6, -3, 4, 12, 0, source.plane(0), nullptr,
                      nullptr, identity.data(), 12, 10, 6, nearest, exact, 0, 0, 1);
        for (int32_t k = 0; k < 60; ++k) {
            const int32_t row = k % 10 + 2, column = k / 10 + 1;
            const bool written = column == 3 && row >= 2 && row <= 4;
            EXPECT_EQ(output[k], written ? source.at(row, 3) : T(-1)) << k;
        }
        // Outside the window's columns, or rows wholly above it: nothing.
        std::vector<T> untouched(60, T(-1));
        Warp<T>::span(untouched.data(), nullptr, nullptr, 7, 2, 9, 1, 6, 0, 4, 12, 0, source.plane(0), nullptr,
                      nullptr, identity.data(), 12, 10, 6, nearest, exact, 0, 0, 1);
        Warp<T>::span(untouched.data(), nullptr, nullptr, 3, 2, 9, 1, 6, -5, 1, 12, 0, source.plane(0), nullptr,
                      nullptr, identity.data(), 12, 10, 6, nearest, exact, 0, 0, 1);
        // A source without pixels (a heap block of exactly none) has nothing
        // to sample.
        const std::unique_ptr<T[]> empty(new T[0]);
        Warp<T>::span(untouched.data(), nullptr, nullptr, 3, 2, 9, 1, 6, -3, 4, 0, 0, empty.get(), nullptr, nullptr,
                      identity.data(), 0, 10, 6, nearest, exact, 0, 0, 1);
        EXPECT_EQ(untouched, std::vector<T>(60, T(-1)));
    }
}

template <class T>
T sampleAt(int method, const Frame<T> &source, T y, T x)
{
    T value = 0;
    const T *plane = source.values.data();
    if constexpr (std::is_same_v<T, double>) {
        if (method == bilinear) {
            ORNEX_PosVal_BL_Interp_D(plane, y, x, source.rows, source.cols, &value, 0, 1, 0, 0);
        } else {
            ORNEX_PosVal_BC_Interp_D(plane, y, x, source.rows, source.cols, &value, 0, 1, 0, 0);
        }
    } else {
        if (method == bilinear) {
            ORNEX_PosVal_BL_Interp_R(plane, y, x, source.rows, source.cols, &value, 0, 1, 0, 0);
        } else {
            ORNEX_PosVal_BC_Interp_R(plane, y, x, source.rows, source.cols, &value, 0, 1, 0, 0);
        }
    }
    return value;
}

// The positions of one span as the warp defines them: exact division of
// linearly stepped homogeneous values, or forward differences of the
// quadratic through the two ends and the homogeneous middle.
template <class T>
std::vector<std::array<T, 2>> spanPositions(const T *m, int32_t column, int32_t first, int32_t last, bool exact)
{
    T q0, p0, w0, q1, p1, w1;
    Warp<T>::inPoints(first, column, m, &q0, &p0, &w0);
    Warp<T>::inPoints(last, column, m, &q1, &p1, &w1);
    const T t = T(1) / T(last - first);
    std::vector<std::array<T, 2>> positions;
    if (exact) {
        const T dq = (q1 - q0) * t, dp = (p1 - p0) * t, dw = (w1 - w0) * t;
        for (int32_t row = first; row <= last; ++row) {
            positions.push_back({q0 / w0, p0 / w0});
            q0 = q0 + dq;
            p0 = p0 + dp;
            w0 = w0 + dw;
        }
        return positions;
    }
    T y = q0 / w0, x = p0 / w0;
    const T ey = q1 / w1, ex = p1 / w1, my = (q0 + q1) / (w0 + w1), mx = (p0 + p1) / (w0 + w1);
    const T ay = T(2) * (y - T(2) * my + ey) * (t * t), ax = T(2) * (x - T(2) * mx + ex) * (t * t);
    T dy = (T(4) * my - T(3) * y - ey) * t + ay, dx = (T(4) * mx - T(3) * x - ex) * t + ax;
    for (int32_t row = first; row <= last; ++row) {
        positions.push_back({y, x});
        y = y + dy;
        x = x + dx;
        dy = dy + T(2) * ay;
        dx = dx + T(2) * ax;
    }
    return positions;
}

TYPED_TEST(ProjectiveWarp, SpansSampleExactlyAsTheKernelsDoAtTheSteppedPositions)
{
    using T = TypeParam;
    Frame<T> source(40, 50, T(0));
    for (int32_t c = 0; c < 50; ++c) {
        for (int32_t r = 0; r < 40; ++r) {
            source.at(r, c) = T(std::sin(0.37 * r + 0.11 * c) * 50 + std::cos(0.23 * c) * 20);
        }
    }
    // Output rows 0..99 of column 20 run from above the source to below it,
    // across fractional columns; the ends are clamped.
    const T m[9] = {T(0.01), T(0.3), T(10.7), T(0.02), T(0.5), T(-5.3), T(0.0001), T(0.001), T(1)};
    for (const bool exact : {true, false}) {
        const auto positions = spanPositions<T>(m, 20, 0, 99, exact);
        for (const int method : {bilinear, bicubic}) {
            std::vector<T> output(100, T(-1));
            Warp<T>::span(output.data(), nullptr, nullptr, 20, 0, 99, 20, 20, 0, 99, 40, 0, source.plane(0), nullptr,
                          nullptr, m, 50, 100, 1, method, exact, 0, 0, 1);
            for (int32_t row = 0; row < 100; ++row) {
                const T y = std::clamp(positions[row][0], T(0), T(39));
                const T x = std::clamp(positions[row][1], T(0), T(49));
                ASSERT_EQ(output[row], sampleAt(method, source, y, x))
                    << "row " << row << (exact ? " exact" : " approximate") << " method " << method;
            }
        }
    }
}

TYPED_TEST(ProjectiveWarp, PositionsAreClampedToTheLowerBoundsAndTheImage)
{
    using T = TypeParam;
    Frame<T> source = labelled<T>(10, 10);
    // Output column c shows source column c - 4, row r shows row r + 3.
    const auto shift = affine<T>(1, 1, -4, 3);
    std::vector<T> output(10, T(-1));
    // Column 2 samples column -2: raised to the column lower bound 1. Rows
    // 5..9 sample rows 8..12: lowered to 9 from row 7 on; row 0 samples row
    // 3, raised to the row lower bound 4.
    Warp<T>::span(output.data(), nullptr, nullptr, 2, 0, 9, 2, 2, 0, 9, 10, 0, source.plane(0), nullptr, nullptr,
                  shift.data(), 10, 10, 1, nearest, 1, 4, 1, 1);
    const int32_t expectedRows[10] = {4, 4, 5, 6, 7, 8, 9, 9, 9, 9};
    for (int32_t r = 0; r < 10; ++r) {
        EXPECT_EQ(output[r], source.at(expectedRows[r], 1)) << r;
    }
}

TYPED_TEST(ProjectiveWarp, ThreePlanesAndStackedPlanesWarpAlike)
{
    using T = TypeParam;
    Frame<T> source = labelled<T>(9, 11, 3);
    const auto identity = affine<T>(1, 1, 0, 0);
    const Block<T> b = block(identity, identity);
    std::vector<int32_t> edges(64), scratch(24);
    const int32_t noRect[4] = {};
    Frame<T> separate(9, 11, T(-1), 3), stacked(9, 11, T(-1), 3);
    for (int method : {nearest, bilinear, bicubic}) {
        Warp<T>::rect(edges.data(), noRect, scratch.data(), separate.plane(0), separate.plane(1), separate.plane(2), 0,
                      8, 0, 10, 9, 1, b.data(), source.plane(0), source.plane(1), source.plane(2), 1, 9, 11, 11,
                      method, 0, 0, 1, 0, 0);
        Warp<T>::rect(edges.data(), noRect, scratch.data(), stacked.plane(0), nullptr, nullptr, 0, 8, 0, 10, 9, 0,
                      b.data(), source.plane(0), nullptr, nullptr, 1, 9, 11, 11, method, 0, 0, 1, 0, 3);
        // At integer positions every kernel gives the source value.
        EXPECT_EQ(separate.values, source.values) << method;
        EXPECT_EQ(stacked.values, source.values) << method;
    }
}

TYPED_TEST(ProjectiveWarp, BackgroundPerPlaneOneForAllAndZero)
{
    using T = TypeParam;
    const T values[3] = {T(1.5), T(-2), T(7)};
    Frame<T> stacked(3, 4, T(9), 3);
    Warp<T>::background(values, stacked.plane(0), nullptr, nullptr, 3, 4, 0, 0, 2);
    for (int32_t k = 0; k < 12; ++k) {
        EXPECT_EQ(stacked.values[k], T(1.5));
        EXPECT_EQ(stacked.values[12 + k], T(-2));
        EXPECT_EQ(stacked.values[24 + k], T(9)) << "only numPlanes planes";
    }
    Warp<T>::background(values, stacked.plane(0), nullptr, nullptr, 3, 4, 0, 1, 3);
    EXPECT_EQ(stacked.values, std::vector<T>(36, T(1.5)));

    Frame<T> red(3, 4, T(9)), green(3, 4, T(9)), blue(3, 4, T(9));
    Warp<T>::background(values, red.plane(0), green.plane(0), blue.plane(0), 3, 4, 1, 0, 0);
    EXPECT_EQ(red.values, std::vector<T>(12, T(1.5)));
    EXPECT_EQ(green.values, std::vector<T>(12, T(-2)));
    EXPECT_EQ(blue.values, std::vector<T>(12, T(7)));
    Warp<T>::background(values + 2, red.plane(0), green.plane(0), blue.plane(0), 3, 4, 1, 1, 0);
    EXPECT_EQ(green.values, std::vector<T>(12, T(7)));

    // Zero is written as zero bytes: a negative zero comes out positive.
    const T negativeZeros[3] = {T(-0.0), T(-0.0), T(-0.0)};
    Warp<T>::background(negativeZeros, red.plane(0), green.plane(0), blue.plane(0), 3, 4, 1, 0, 0);
    Warp<T>::background(negativeZeros, stacked.plane(0), nullptr, nullptr, 3, 4, 0, 1, 3);
    EXPECT_FALSE(std::signbit(blue.values[5]));
    EXPECT_FALSE(std::signbit(stacked.values[30]));
    EXPECT_EQ(stacked.values, std::vector<T>(36, T(0)));
}

} // namespace
