#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int nearest = 1, bilinear = 2, bicubic = 3;

template <class T, class D, class R>
constexpr auto pick(D d, R r)
{
    if constexpr (std::is_same_v<T, double>) return d; else return r;
}

template <class T>
struct Warp {
    static constexpr auto rect = pick<T>(ORNEX_DivideRectXform_D, ORNEX_DivideRectXform_R);
    static constexpr auto quad = pick<T>(ORNEX_DivideQuadXform_D, ORNEX_DivideQuadXform_R);
    static constexpr auto cell = pick<T>(ORNEX_XformOneSubdivision_D, ORNEX_XformOneSubdivision_R);
    static constexpr auto span = pick<T>(ORNEX_ProjComputeOutPixel_D, ORNEX_ProjComputeOutPixel_R);
    static constexpr auto inPoints = pick<T>(ORNEX_GetInPtsFrmOutPts_D, ORNEX_GetInPtsFrmOutPts_R);
    static constexpr auto background = pick<T>(ORNEX_FillBackgroundValues_D, ORNEX_FillBackgroundValues_R);
    static constexpr auto matrix = pick<T>(ORNEX_CalculateXformMtrx_D, ORNEX_CalculateXformMtrx_R);
    static constexpr auto sampler = [](int method) {
        return method == bilinear ? pick<T>(ORNEX_PosVal_BL_Interp_D, ORNEX_PosVal_BL_Interp_R)
                                  : pick<T>(ORNEX_PosVal_BC_Interp_D, ORNEX_PosVal_BC_Interp_R);
    };
};

// Source values that name their plane, row and column.
template <class T>
std::vector<T> labelled(int rows, int cols, int planes = 1)
{
    std::vector<T> v(size_t(rows) * cols * planes);
    for (size_t i = 0; i < v.size(); ++i) v[i] = T(1000 * (i / (rows * cols)) + 100 * (i % rows) + i / rows % cols);
    return v;
}

template <class T>
std::array<T, 18> shifts(T forwardRows, T forwardCols)
{
    return {1, 0, forwardCols, 0, 1, forwardRows, 0, 0, 1, 1, 0, -forwardCols, 0, 1, -forwardRows, 0, 0, 1};
}

template <class T>
class ProjectiveWarp : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ProjectiveWarp, Precisions);

// Positions of one span: homogeneous values stepped and divided (exact), or
// forward differences of the parabola through the ends and the middle.
TYPED_TEST(ProjectiveWarp, SpansSampleAtTheSteppedPositionsInsideTheWindow)
{
    using T = TypeParam;
    const int M = 9, N = 11;
    const auto source = labelled<T>(M, N, 3);
    std::mt19937 random(21);
    auto real = [&](double lo, double hi) { return T(std::uniform_real_distribution<double>(lo, hi)(random)); };
    for (int trial = 0; trial < 1500; ++trial) {
        const int method = 1 + trial % 3, column = int(random() % 12) - 2, first = int(random() % 30) - 10;
        const int last = first + int(random() % 25), rowFirst = int(random() % 12) - 3, colFirst = int(random() % 4) - 2;
        const int outRows = 1 + random() % 14, outCols = 1 + random() % 5, rowLow = random() % 3, colLow = random() % 3;
        const bool exact = trial % 2 || first == last, threePlanes = random() % 2;
        const T m[9] = {real(0.5, 1.5), real(-0.3, 0.3), real(-3, 8), real(-0.3, 0.3), real(0.5, 1.5), real(-3, 8),
                        real(-0.01, 0.01), real(-0.01, 0.01), 1};
        const size_t planeSize = size_t(outRows) * outCols;
        std::vector<T> out(3 * planeSize + 2, T(-1)), expected = out;
        T *o = out.data() + 1, *e = expected.data() + 1;
        Warp<T>::span(o, o + planeSize, o + 2 * planeSize, column, rowFirst, rowFirst + outRows - 1, colFirst,
                      colFirst + outCols - 1, first, last, M, threePlanes, source.data(), source.data() + M * N,
                      source.data() + 2 * M * N, m, N, outRows, outCols, method, exact, rowLow, colLow, 3);
        T q0, p0, w0, q1, p1, w1;
        Warp<T>::inPoints(first, column, m, &q0, &p0, &w0);
        Warp<T>::inPoints(last, column, m, &q1, &p1, &w1);
        ASSERT_EQ(p0, T(column) * m[0] + T(first) * m[1] + m[2]);
        ASSERT_EQ(w1, T(column) * m[6] + T(last) * m[7] + m[8]);
        const T t = T(1) / T(last - first);
        T y = q0 / w0, x = p0 / w0, dy = 0, dx = 0, ay = 0, ax = 0;
        const T dq = (q1 - q0) * t, dp = (p1 - p0) * t, dw = (w1 - w0) * t;
        if (!exact) {
            const T ey = q1 / w1, ex = p1 / w1, my = (q0 + q1) / (w0 + w1), mx = (p0 + p1) / (w0 + w1);
            ay = T(2) * (y - T(2) * my + ey) * (t * t), ax = T(2) * (x - T(2) * mx + ex) * (t * t);
            dy = (T(4) * my - T(3) * y - ey) * t + ay, dx = (T(4) * mx - T(3) * x - ex) * t + ax;
        }
        const bool inColumns = column >= colFirst && column < colFirst + outCols;
        for (int r = first; inColumns && r <= last; ++r) {
            if (r >= rowFirst && r < rowFirst + outRows) {
                auto clamp = [](T v, int low, int size) { return v < T(low) ? T(low) : v > T(size - 1) ? T(size - 1) : v; };
                const T cy = clamp(y, rowLow, M), cx = clamp(x, colLow, N);
                for (int p = 0; p < 3; ++p) {
                    T &value = e[p * planeSize + (column - colFirst) * outRows - rowFirst + r];
                    const T *plane = source.data() + p * M * N;
                    if (method == nearest) value = plane[int(cy + T(0.5)) + int(cx + T(0.5)) * M];
                    else Warp<T>::sampler(method)(plane, cy, cx, M, N, &value, 0, 1, 0, 0);
                }
            }
            if (exact) {
                q0 = q0 + dq, p0 = p0 + dp, w0 = w0 + dw, y = q0 / w0, x = p0 / w0;
            } else {
                y = y + dy, x = x + dx, dy = dy + T(2) * ay, dx = dx + T(2) * ax;
            }
        }
        ASSERT_EQ(out, expected) << "trial " << trial;
    }
}

TYPED_TEST(ProjectiveWarp, DriversCoverTheMappedRegion)
{
    using T = TypeParam;
    const int M = 10, N = 12;
    const auto source = labelled<T>(M, N, 3);
    std::vector<int32_t> edges(64), scratch(24);
    // Rows and columns moved by -1.5 and -2.5: corners round half away from
    // zero onto rows -2 .. 8 and columns -3 .. 9 of a window starting at row
    // -3, column -4; positions come back clamped and rounded.
    const auto b = shifts<T>(T(-1.5), T(-2.5));
    const int32_t noRect[4] = {};
    for (const int divisions : {0, 3, 7}) {
        std::vector<T> out(14 * 15 * 3, T(-1));
        Warp<T>::rect(edges.data(), noRect, scratch.data(), out.data(), nullptr, nullptr, -3, 10, -4, 10, M, 0,
                      b.data(), source.data(), nullptr, nullptr, 1, 14, 15, N, nearest, 0, 0, divisions, 0, 2);
        for (int i = 0; i < 14 * 15 * 3; ++i) {
            const int r = i % 14 - 3, c = i / 14 % 15 - 4, p = i / (14 * 15);
            const int sr = std::min(M - 1, int(std::max(T(0), T(r) + T(1.5)) + T(0.5)));
            const int sc = std::min(N - 1, int(std::max(T(0), T(c) + T(2.5)) + T(0.5)));
            const bool covered = p < 2 && r >= -2 && r <= 8 && c >= -3 && c <= 9;
            ASSERT_EQ(out[i], covered ? source[p * M * N + sr + sc * M] : T(-1)) << divisions << ": " << r << "," << c;
        }
    }
    // A rectangle's limits are bounds, not sizes (rows 2 .. 7, columns 3 ..
    // 8); the same shift through the quadrilateral driver takes the matrices
    // the other way round; a negative number of divisions draws nothing.
    const int32_t rect[4] = {2, 3, 8, 9}, quad[8] = {2, 3, 2, 8, 7, 8, 7, 3};
    const auto half = shifts<T>(0, 2), other = shifts<T>(0, -2);
    std::vector<T> viaRect(M * N * 3, T(-1)), viaQuad = viaRect, none = viaRect;
    for (const int d : {2, -1}) {
        Warp<T>::rect(edges.data(), rect, scratch.data(), d > 0 ? viaRect.data() : none.data(), viaRect.data() + M * N,
                      viaRect.data() + 2 * M * N, 0, M - 1, 0, N - 1, M, 1, half.data(), source.data(),
                      source.data() + M * N, source.data() + 2 * M * N, 1, M, N, N, bilinear, 0, 0, d, 1, 1);
    }
    Warp<T>::quad(edges.data(), quad, scratch.data(), viaQuad.data(), viaQuad.data() + M * N, viaQuad.data() + 2 * M * N,
                  0, M - 1, 0, N - 1, M, 1, other.data(), source.data(), source.data() + M * N,
                  source.data() + 2 * M * N, 1, M, N, N, bicubic, 2, 1);
    for (int i = 0; i < M * N * 3; ++i) {
        const int r = i % M, c = i / M % N;
        EXPECT_EQ(viaRect[i], r >= 2 && r <= 7 && c >= 5 && c <= 10 ? source[i - 2 * M] : T(-1)) << i;
    }
    EXPECT_EQ(viaQuad, viaRect);
    EXPECT_EQ(none, std::vector<T>(M * N * 3, T(-1)));
    // Three corners on one row: 0 and nothing drawn.
    const int32_t flat[8] = {0, 0, 0, 4, 0, 9, 9, 0};
    EXPECT_EQ(Warp<T>::quad(edges.data(), flat, scratch.data(), none.data(), nullptr, nullptr, 0, M - 1, 0, N - 1, M,
                            0, other.data(), source.data(), nullptr, nullptr, 1, M, N, N, nearest, 0, 1),
              0);
    EXPECT_EQ(none, std::vector<T>(M * N * 3, T(-1)));
}

TYPED_TEST(ProjectiveWarp, ApproximateSpansStayCloseToExactDivision)
{
    using T = TypeParam;
    // A 60 x 70 ramp (value = row) onto a perspective quadrilateral: bilinear
    // sampling reads back the row position the adjugate gives.
    const int M = 60, N = 70;
    std::vector<T> ramp(M * N);
    for (int i = 0; i < M * N; ++i) ramp[i] = T(i % M);
    const int32_t corners[8] = {3, 2, 0, 75, 70, 85, 62, 4}, rect[4] = {0, 0, M, N};
    T b[18];
    Warp<T>::matrix(corners, rect, M, N, 1, 0, 0, b);
    std::vector<int32_t> edges(64), scratch(24);
    for (const bool exact : {true, false}) {
        std::vector<T> out(80 * 90, T(-1));
        Warp<T>::rect(edges.data(), rect, scratch.data(), out.data(), nullptr, nullptr, 0, 79, 0, 89, M, 0, b,
                      ramp.data(), nullptr, nullptr, exact, 80, 90, N, bilinear, 0, 0, 4, 0, 1);
        double worst = 0;
        int covered = 0;
        for (int i = 0; i < 80 * 90; ++i) {
            const double x = i / 80, y = i % 80, w = x * b[15] + y * b[16] + b[17];
            const double row = (x * b[12] + y * b[13] + b[14]) / w;
            if (out[i] == T(-1) || row < 0.5 || row > M - 1.5) continue;
            ++covered, worst = std::max(worst, std::fabs(out[i] - row));
        }
        EXPECT_GT(covered, 4000);
        EXPECT_LT(worst, exact ? (std::is_same_v<T, double> ? 1e-9 : 1e-3) : 2e-2) << exact;
        EXPECT_TRUE(exact || worst > 1e-7) << "approximate positions differ from exact ones";
    }
}

TYPED_TEST(ProjectiveWarp, OneCellAndBackgrounds)
{
    using T = TypeParam;
    const auto source = labelled<T>(6, 6);
    const auto b = shifts<T>(1, -1);
    std::vector<int32_t> edges(64), scratch(24);
    // An axis-aligned cell covers its corners' rows and columns inclusive.
    const int32_t cell[8] = {2, 0, 2, 3, 5, 3, 5, 0};
    std::vector<T> out(36, T(-1));
    Warp<T>::cell(edges.data(), 8, cell, scratch.data(), out.data(), nullptr, nullptr, 0, 5, 0, 5, 6, 0, b.data() + 9,
                  source.data(), nullptr, nullptr, 1, 6, 6, 6, nearest, 0, 0, 1);
    for (int i = 0; i < 36; ++i)
        EXPECT_EQ(out[i], i % 6 >= 2 && i / 6 <= 3 ? source[i - 1 + 6] : T(-1)) << i;

    // Per plane, one value for all, and zero as zero bytes (no negative zero).
    const T values[3] = {T(1.5), T(-2), T(7)}, zeros[3] = {T(-0.0), T(-0.0), T(-0.0)};
    std::vector<T> planes(3 * 12 + 1, T(9));
    Warp<T>::background(values, planes.data(), nullptr, nullptr, 3, 4, 0, 0, 2);
    for (int i = 0; i < 37; ++i) EXPECT_EQ(planes[i], i < 12 ? T(1.5) : i < 24 ? T(-2) : T(9)) << i;
    Warp<T>::background(values, planes.data(), nullptr, nullptr, 3, 4, 0, 1, 3);
    for (int i = 0; i < 37; ++i) EXPECT_EQ(planes[i], i < 36 ? T(1.5) : T(9)) << i;
    std::vector<T> r(12, T(9)), g = r, bl = r;
    Warp<T>::background(values, r.data(), g.data(), bl.data(), 3, 4, 1, 0, 0);
    EXPECT_EQ(r[11] + g[0] * 10 + bl[5] * 100, T(1.5 - 20 + 700));
    Warp<T>::background(values + 2, r.data(), g.data(), bl.data(), 3, 4, 1, 1, 0);
    EXPECT_EQ(r[3] + g[11] + bl[0], T(21));
    Warp<T>::background(zeros, r.data(), g.data(), bl.data(), 3, 4, 1, 0, 0);
    Warp<T>::background(zeros, planes.data(), nullptr, nullptr, 3, 4, 0, 1, 3);
    EXPECT_FALSE(std::signbit(bl[5]) || std::signbit(planes[30]) || planes[35] != 0 || planes[36] != T(9));
}

} // namespace
