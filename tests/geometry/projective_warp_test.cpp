#include <gtest/gtest.h>

#include <array>
#include <random>

#include "ornex_rt.h"

template <class T, class D, class R>
constexpr auto pick(D d, R r)
{
    if constexpr (std::is_same_v<T, double>) return d; else return r;
}

// Sources whose values name their plane, row and column.
template <class T>
std::vector<T> labelled(int rows, int cols, int planes)
{
    std::vector<T> v(size_t(rows) * cols * planes);
    for (size_t i = 0; i < v.size(); ++i) v[i] = T(1000 * (i / (rows * cols)) + 100 * (i % rows) + i / rows % cols);
    return v;
}

// Forward (source to output) by whole or fractional rows and columns, and back.
template <class T>
std::array<T, 18> shift(T rows, T cols) { return {1, 0, cols, 0, 1, rows, 0, 0, 1, 1, 0, -cols, 0, 1, -rows, 0, 0, 1}; }

template <class T>
class ProjectiveWarp : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ProjectiveWarp, Precisions);

TYPED_TEST(ProjectiveWarp, SpansSampleAtTheSteppedPositionsInsideTheWindow)
{
    using T = TypeParam;
    const int M = 9, N = 11;
    auto source = labelled<T>(M, N, 3);
    source.resize(source.size() + M, T(0.5)); // a lower bound past the last row wins: row M is read
    const T *in[3] = {source.data(), source.data() + M * N, source.data() + 2 * M * N};
    std::mt19937 random(21);
    auto real = [&](double lo, double hi) { return T(std::uniform_real_distribution<double>(lo, hi)(random)); };
    for (int trial = 0; trial < 1500; ++trial) {
        const int method = 1 + trial % 3, column = int(random() % 12) - 2, first = int(random() % 30) - 10;
        const int last = first + int(random() % 25), rowFirst = int(random() % 12) - 3, colFirst = int(random() % 4) - 2;
        const int outRows = 1 + random() % 14, outCols = 1 + random() % 5, rowLow = random() % 8 ? random() % 3 : M, colLow = random() % 3;
        const bool exact = trial % 2 || first == last, threePlanes = random() % 2;
        const T m[9] = {real(0.5, 1.5), real(-0.3, 0.3), real(-3, 8), real(-0.3, 0.3), real(0.5, 1.5), real(-3, 8),
                        real(-0.01, 0.01), real(-0.01, 0.01), 1};
        const size_t planeSize = size_t(outRows) * outCols;
        std::vector<T> out(3 * planeSize + 2, T(-1)), expected = out;
        T *o = out.data() + 1;
        pick<T>(ORNEX_ProjComputeOutPixel_D, ORNEX_ProjComputeOutPixel_R)(
            o, o + planeSize, o + 2 * planeSize, column, rowFirst, rowFirst + outRows - 1, colFirst, colFirst + outCols - 1,
            first, last, M, threePlanes, in[0], in[1], in[2], m, N, outRows, outCols, method, exact, rowLow, colLow, 3);
        // Homogeneous (q, p, w) of (column, row) at both ends: stepped and
        // divided, or the parabola through the ends and the middle stepped by
        // forward differences.
        T h[2][3];
        for (int end = 0; end < 2; ++end)
            pick<T>(ORNEX_GetInPtsFrmOutPts_D, ORNEX_GetInPtsFrmOutPts_R)(end ? last : first, column, m, h[end], h[end] + 1, h[end] + 2);
        ASSERT_EQ(h[0][1], T(column) * m[0] + T(first) * m[1] + m[2]);
        ASSERT_EQ(h[1][2], T(column) * m[6] + T(last) * m[7] + m[8]);
        const T t = T(1) / T(last - first);
        T pos[2], step[2], curve[2], delta[3];
        for (int a = 0; a < 3; ++a) delta[a] = (h[1][a] - h[0][a]) * t;
        for (int a = 0; a < 2; ++a) {
            const T s = h[0][a] / h[0][2], e = h[1][a] / h[1][2], mid = (h[0][a] + h[1][a]) / (h[0][2] + h[1][2]);
            pos[a] = s, curve[a] = T(2) * (s - T(2) * mid + e) * (t * t), step[a] = (T(4) * mid - T(3) * s - e) * t + curve[a];
        }
        for (int r = first; column >= colFirst && column < colFirst + outCols && r <= last; ++r) {
            if (r >= rowFirst && r < rowFirst + outRows) {
                auto clamp = [](T v, int low, int size) { return v < T(low) ? T(low) : v > T(size - 1) ? T(size - 1) : v; };
                const T y = clamp(pos[0], rowLow, M), x = clamp(pos[1], colLow, N);
                for (int p = 0; p < 3; ++p) {
                    T &value = expected[1 + p * planeSize + (column - colFirst) * outRows - rowFirst + r];
                    if (method == 1) value = in[p][int(y + T(0.5)) + int(x + T(0.5)) * M];
                    else if (method == 2) pick<T>(ORNEX_PosVal_BL_Interp_D, ORNEX_PosVal_BL_Interp_R)(in[p], y, x, M, N, &value, 0, 1, 0, 0);
                    else pick<T>(ORNEX_PosVal_BC_Interp_D, ORNEX_PosVal_BC_Interp_R)(in[p], y, x, M, N, &value, 0, 1, 0, 0);
                }
            }
            for (int a = 0; a < 3 && exact; ++a) h[0][a] = h[0][a] + delta[a];
            for (int a = 0; a < 2; ++a)
                exact ? (void)(pos[a] = h[0][a] / h[0][2]) : (void)(pos[a] = pos[a] + step[a], step[a] = step[a] + T(2) * curve[a]);
        }
        ASSERT_EQ(out, expected) << "trial " << trial;
    }
}

TYPED_TEST(ProjectiveWarp, DriversCoverTheMappedRegion)
{
    using T = TypeParam;
    const auto rect = pick<T>(ORNEX_DivideRectXform_D, ORNEX_DivideRectXform_R);
    const auto quad = pick<T>(ORNEX_DivideQuadXform_D, ORNEX_DivideQuadXform_R);
    const int M = 10, N = 12;
    const auto source = labelled<T>(M, N, 3);
    const T *in[3] = {source.data(), source.data() + M * N, source.data() + 2 * M * N};
    std::vector<int32_t> edges(64), scratch(24);
    // Moved by -1.5 rows and -2.5 columns, the corners round half away from
    // zero onto rows -2 .. 8 and columns -3 .. 9 of a window starting at row
    // -3, column -4; the positions come back clamped and rounded.
    const auto b = shift<T>(T(-1.5), T(-2.5));
    for (const int divisions : {0, 3, 7}) {
        std::vector<T> out(14 * 15 * 3, T(-1));
        rect(edges.data(), nullptr, scratch.data(), out.data(), nullptr, nullptr, -3, 10, -4, 10, M, 0, b.data(), in[0],
             nullptr, nullptr, 1, 14, 15, N, 1, 0, 0, divisions, 0, 2);
        for (int i = 0; i < 14 * 15 * 3; ++i) {
            const int r = i % 14 - 3, c = i / 14 % 15 - 4, p = i / (14 * 15);
            const int sr = std::min(M - 1, int(std::max(T(0), T(r) + T(1.5)) + T(0.5)));
            const int sc = std::min(N - 1, int(std::max(T(0), T(c) + T(2.5)) + T(0.5)));
            const bool covered = p < 2 && r >= -2 && r <= 8 && c >= -3 && c <= 9;
            ASSERT_EQ(out[i], covered ? in[p][sr + sc * M] : T(-1)) << divisions << ": " << r << "," << c;
        }
    }
    // A rectangle's limits are bounds, not sizes (rows 2 .. 7, columns 3 ..
    // 8); the quadrilateral driver takes the matrices the other way round;
    // negative divisions draw nothing, nor does a quadrilateral with three
    // corners on one row (which gives 0).
    const int32_t limits[4] = {2, 3, 8, 9}, corners[8] = {2, 3, 2, 8, 7, 8, 7, 3}, flat[8] = {0, 0, 0, 4, 0, 9, 9, 0};
    const auto two = shift<T>(0, 2), back = shift<T>(0, -2);
    std::vector<T> viaRect(M * N * 3, T(-1)), viaQuad = viaRect, none = viaRect;
    T *r[3] = {viaRect.data(), viaRect.data() + M * N, viaRect.data() + 2 * M * N}, *q[3] = {viaQuad.data(), viaQuad.data() + M * N, viaQuad.data() + 2 * M * N};
    rect(edges.data(), limits, scratch.data(), r[0], r[1], r[2], 0, M - 1, 0, N - 1, M, 1, two.data(), in[0], in[1], in[2], 1, M, N, N, 2, 0, 0, 2, 1, 1);
    rect(edges.data(), limits, scratch.data(), none.data(), nullptr, nullptr, 0, M - 1, 0, N - 1, M, 0, two.data(), in[0], nullptr, nullptr, 1, M, N, N, 2, 0, 0, -1, 1, 1);
    quad(edges.data(), corners, scratch.data(), q[0], q[1], q[2], 0, M - 1, 0, N - 1, M, 1, back.data(), in[0], in[1], in[2], 1, M, N, N, 3, 2, 1);
    EXPECT_EQ(quad(edges.data(), flat, scratch.data(), none.data(), nullptr, nullptr, 0, M - 1, 0, N - 1, M, 0, back.data(), in[0], nullptr, nullptr, 1, M, N, N, 1, 0, 1), 0);
    for (int i = 0; i < M * N * 3; ++i)
        EXPECT_EQ(viaRect[i], i % M >= 2 && i % M <= 7 && i / M % N >= 5 && i / M % N <= 10 ? source[i - 2 * M] : T(-1)) << i;
    EXPECT_EQ(viaQuad, viaRect);
    EXPECT_EQ(none, std::vector<T>(M * N * 3, T(-1)));

    // Perspective onto a quadrilateral, a ramp (value = row) sampled
    // bilinearly: exact division reads back the adjugate's row position, the
    // approximation comes close to it but not onto it.
    std::vector<T> ramp(60 * 70), out(80 * 90);
    for (int i = 0; i < 60 * 70; ++i) ramp[i] = T(i % 60);
    const int32_t skewed[8] = {3, 2, 0, 75, 70, 85, 62, 4}, whole[4] = {0, 0, 60, 70};
    T m[18];
    pick<T>(ORNEX_CalculateXformMtrx_D, ORNEX_CalculateXformMtrx_R)(skewed, whole, 60, 70, 1, 0, 0, m);
    for (const bool exact : {true, false}) {
        std::fill(out.begin(), out.end(), T(-1));
        rect(edges.data(), whole, scratch.data(), out.data(), 0, 0, 0, 79, 0, 89, 60, 0, m, ramp.data(), 0, 0, exact, 80, 90, 70, 2, 0, 0, 4, 0, 1);
        double worst = 0, covered = 0;
        for (int i = 0; i < 80 * 90; ++i)
            if (const double x = i / 80, y = i % 80, row = (x * m[12] + y * m[13] + m[14]) / (x * m[15] + y * m[16] + m[17]); out[i] != -1 && row > .5 && row < 58.5)
                ++covered, worst = std::max(worst, std::abs(out[i] - row));
        EXPECT_TRUE(covered > 4000 && (exact ? worst < (std::is_same_v<T, double> ? 1e-9 : 1e-3) : worst > 1e-7 && worst < 2e-2)) << worst;
    }
}

TYPED_TEST(ProjectiveWarp, OneCellAndBackgrounds)
{
    using T = TypeParam;
    const auto source = labelled<T>(6, 6, 1);
    const auto b = shift<T>(1, -1);
    std::vector<int32_t> edges(64), scratch(24);
    // An axis-aligned cell covers its corners' rows and columns inclusive.
    const int32_t cell[8] = {2, 0, 2, 3, 5, 3, 5, 0};
    std::vector<T> out(36, T(-1));
    pick<T>(ORNEX_XformOneSubdivision_D, ORNEX_XformOneSubdivision_R)(edges.data(), 8, cell, scratch.data(), out.data(), nullptr, nullptr, 0, 5, 0, 5, 6, 0, b.data() + 9, source.data(), nullptr, nullptr, 1, 6, 6, 6, 1, 0, 0, 1);
    for (int i = 0; i < 36; ++i) EXPECT_EQ(out[i], i % 6 >= 2 && i / 6 <= 3 ? source[i - 1 + 6] : T(-1)) << i;
    // A source without pixels (a zero-length heap block) has nothing to sample.
    const std::unique_ptr<T[]> empty(new T[0]);
    pick<T>(ORNEX_ProjComputeOutPixel_D, ORNEX_ProjComputeOutPixel_R)(out.data(), 0, 0, 3, 0, 5, 0, 5, 0, 5, 0, 0, empty.get(), 0, 0, b.data(), 0, 6, 6, 1, 1, 0, 0, 1);
    EXPECT_EQ(out[18], T(-1));
    // Per plane or one value for all, stacked or as three planes; zero as
    // zero bytes (no negative zero); nothing past the planes.
    const auto fill = pick<T>(ORNEX_FillBackgroundValues_D, ORNEX_FillBackgroundValues_R);
    const T values[3] = {T(1.5), T(-2), T(7)}, zeros[3] = {T(-0.0), T(-0.0), T(-0.0)};
    std::vector<T> a(37, T(9)), b3(37, T(9));
    fill(values, a.data(), nullptr, nullptr, 3, 4, 0, 0, 2);
    fill(values, b3.data(), b3.data() + 12, b3.data() + 24, 3, 4, 1, 0, 0);
    for (int i = 0; i < 37; ++i) EXPECT_TRUE(a[i] == (i < 24 ? values[i / 12] : 9) && b3[i] == (i < 36 ? values[i / 12] : 9)) << i;
    fill(values + 1, a.data(), nullptr, nullptr, 3, 4, 0, 1, 3);
    fill(values + 2, b3.data(), b3.data() + 12, b3.data() + 24, 3, 4, 1, 1, 0);
    for (int i = 0; i < 37; ++i) EXPECT_TRUE(a[i] == (i < 36 ? values[1] : 9) && b3[i] == (i < 36 ? values[2] : 9)) << i;
    fill(zeros, a.data(), nullptr, nullptr, 3, 4, 0, 1, 3);
    fill(zeros, b3.data(), b3.data() + 12, b3.data() + 24, 3, 4, 1, 0, 0);
    for (int i = 0; i < 37; ++i) EXPECT_TRUE(a[i] == (i < 36 ? 0 : 9) && !std::signbit(a[i]) && !std::signbit(b3[i])) << i;
}
