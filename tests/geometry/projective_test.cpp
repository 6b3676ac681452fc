#include <tuple>

#include "precisions.hpp"

// Forward (source to output) by whole or fractional rows and columns, and back.
template <class T>
std::array<T, 18> shift(T rows, T cols) { return {1, 0, cols, 0, 1, rows, 0, 0, 1, 1, 0, -cols, 0, 1, -rows, 0, 0, 1}; }

PRECISION_SUITE(Projective);

using Corners = std::array<int32_t, 8>; // (row, column) of corners 0..3
using Rect = std::array<int32_t, 4>;

// The closed form, its adjugate and the moves by the origin, written out.
template <class T>
std::vector<T> plainBlock(const Corners &q, const Rect &rect, int rows, int cols, int mode, int inverseOffset,
                          bool useRect)
{
    const bool fromRect = mode != 1 || useRect;
    const T c = fromRect ? T(mode == 1 ? rect[1] : -rect[1]) : 0, r = fromRect ? T(mode == 1 ? rect[0] : -rect[0]) : 0;
    const T H = T((fromRect ? rect[2] : rows) - 1), W = T((fromRect ? rect[3] : cols) - 1);
    const T x0 = T(q[1]), x1 = T(q[3]), x2 = T(q[5]), x3 = T(q[7]);
    const T y0 = T(q[0]), y1 = T(q[2]), y2 = T(q[4]), y3 = T(q[6]);
    const T sx = x0 - x1 + x2 - x3, sy = y0 - y1 + y2 - y3, dx1 = x1 - x2, dx2 = x3 - x2, dy1 = y1 - y2, dy2 = y3 - y2;
    const T D = dx2 * dy1 - dx1 * dy2, g = (dx2 * sy - dy2 * sx) / (W * D), h = (sx * dy1 - dx1 * sy) / (H * D);
    std::vector<T> m = {x1 * g + (x1 - x0) / W, x3 * h + (x3 - x0) / H, x0,
                        y1 * g + (y1 - y0) / W, y3 * h + (y3 - y0) / H, y0, g, h, 1};
    m.insert(m.end(), {m[4] - m[7] * m[5], m[7] * m[2] - m[1], m[5] * m[1] - m[4] * m[2],
                       m[6] * m[5] - m[3], m[0] - m[6] * m[2], m[3] * m[2] - m[5] * m[0],
                       m[7] * m[3] - m[6] * m[4], m[6] * m[1] - m[7] * m[0], m[4] * m[0] - m[3] * m[1]});
    const bool moveAdjugate = mode == 1 || (mode == 2 && inverseOffset >= 1);
    const T sign = mode == 1 ? 1 : -1;
    for (int k = 0; k < 3; ++k) {
        if (mode != 1 && c != 0) m[2 + 3 * k] = m[2 + 3 * k] + c * m[3 * k];
        if (mode != 1 && r != 0) m[2 + 3 * k] = m[2 + 3 * k] + r * m[1 + 3 * k];
        if (moveAdjugate && c != 0) m[9 + k] = m[9 + k] + sign * c * m[15 + k];
        if (moveAdjugate && r != 0) m[12 + k] = m[12 + k] + sign * r * m[15 + k];
    }
    return m;
}

TYPED_TEST(Projective, BlocksAndProductsMatchTheClosedForm)
{
    using T = TypeParam;
    std::mt19937 random(11);
    auto any = [&](int lo, int hi) { return int32_t(lo + int(random() % (hi - lo + 1))); };
    for (int trial = 0; trial < 400; ++trial) {
        Corners q, second;
        for (int k = 0; k < 8; ++k)
            q[k] = (k >= 3 && k <= 6 ? 200 : 0) + any(-25, 25), second[k] = q[k] + any(-9, 9);
        if (trial % 5 == 0) second = q;
        const Rect rect = {any(-40, 40), any(-40, 40), any(2, 90), any(2, 90)};
        const int rows = any(2, 90), cols = any(2, 90), mode = any(0, 3), inverseOffset = any(0, 2);
        const bool useRect = random() % 2, both = random() % 2;
        std::vector<T> b(20, T(-1)), q2q(56, T(-5));
        pick<T>(ORNEX_CalculateXformMtrx_D, ORNEX_CalculateXformMtrx_R)(
            q.data(), rect.data(), rows, cols, mode, inverseOffset, useRect, b.data() + 1);
        const auto block = plainBlock<T>(q, rect, rows, cols, mode, inverseOffset, useRect);
        ASSERT_EQ(std::vector<T>(b.begin() + 1, b.end() - 1), block) << trial;
        ASSERT_TRUE(b.front() == T(-1) && b.back() == T(-1));

        // Second to first and (on request) first to second: adj(B) A, adj(A) B.
        const auto A = plainBlock<T>(q, {0, 0, rows, cols}, rows, cols, 3, 0, false);
        const auto B = plainBlock<T>(second, {0, 0, rows, cols}, rows, cols, 1, 0, false);
        std::vector<T> expected = {T(-5)};
        expected.insert(expected.end(), A.begin(), A.end()), expected.insert(expected.end(), B.begin(), B.end());
        for (int pass = 0; pass < 2; ++pass)
            for (int i = 0; i < 9; ++i) {
                const T *left = (pass ? A : B).data() + 9, *right = (pass ? B : A).data();
                T s = 0;
                for (int k = 0; k < 3; ++k)
                    s = s + left[i % 3 + 3 * k] * (k == 2 && i == 8 ? T(1) : right[k + 3 * (i / 3)]);
                expected.push_back(pass && !both ? T(-5) : s);
            }
        expected.push_back(T(-5));
        const auto q2qMatrix = pick<T>(ORNEX_CalculateQ2QXformMtrx_D, ORNEX_CalculateQ2QXformMtrx_R);
        q2qMatrix(q.data(), rows, cols, q2q.data() + 1, second.data(), both);
        ASSERT_EQ(q2q, expected) << trial;
    }
}

TEST(Collinearity, CornersOneToThreeExactlyWithWrapAround)
{
    std::mt19937 random(13); // corner 0 between 3 and 1 is not tested; the products wrap round
    for (int trial = 0; trial < 20000; ++trial) {
        Corners p;
        for (auto &v : p) v = trial % 2 ? int32_t(random() % 5) - 2 : int32_t(random());
        auto d = [&](int i, int j) { return uint32_t(p[2 * (i % 4) + j]) - uint32_t(p[2 * ((i + 1) % 4) + j]); };
        auto on = [&](int k) { return d(k, 1) * d(k - 1, 0) == d(k, 0) * d(k - 1, 1); };
        ASSERT_EQ(ORNEX_Are3PtsCollinear(p.data()), on(1) || on(2) || on(3)) << trial;
    }
}

TYPED_TEST(Projective, SpansSampleAtTheSteppedPositionsInsideTheWindow)
{
    using T = TypeParam;
    const int M = 9, N = 11;
    std::mt19937 random(21);
    std::vector<T> source(3 * M * N + M, T(0.5)); // a lower bound past the last row wins: row M is read
    for (int i = 0; i < 3 * M * N; ++i) source[i] = T(i);
    const T *in[3] = {source.data(), source.data() + M * N, source.data() + 2 * M * N};
    auto real = [&](double lo, double hi) { return uniform<T>(random, lo, hi); };
    for (int trial = 0; trial < 1500; ++trial) {
        // Every ninth span starts far above the window: its rows there only step the position.
        const bool tall = trial % 9 == 4;
        const int method = 1 + trial % 3, column = int(random() % 12) - 2;
        const int first = tall ? -int(random() % 300000) : int(random() % 30) - 10;
        const int last = tall ? int(random() % 20) : first + int(random() % 25), rowFirst = int(random() % 12) - 3;
        const int colFirst = int(random() % 4) - 2, outRows = 1 + random() % 14, outCols = 1 + random() % 5;
        const int rowLow = random() % 8 ? random() % 3 : M, colLow = random() % 3;
        const bool exact = trial % 2 || first == last, threePlanes = random() % 2;
        const T m[9] = {real(0.5, 1.5),   real(-0.3, 0.3),   real(-3, 8), real(-0.3, 0.3), real(0.5, 1.5),
                        real(-3, 8), real(-0.01, 0.01), real(-0.01, 0.01), 1};
        const size_t planeSize = size_t(outRows) * outCols;
        std::vector<T> out(3 * planeSize + 2, T(-1)), expected = out;
        T *o = out.data() + 1;
        pick<T>(ORNEX_ProjComputeOutPixel_D, ORNEX_ProjComputeOutPixel_R)(
            o, o + planeSize, o + 2 * planeSize, column, rowFirst, rowFirst + outRows - 1, colFirst,
            colFirst + outCols - 1, first, last, M, threePlanes, in[0], in[1], in[2], m, N, outRows, outCols, method,
            exact, rowLow, colLow, 3);
        // (q, p, w) stepped and divided, or the parabola through the ends and middle by forward differences.
        T h[2][3];
        const auto homogeneous = pick<T>(ORNEX_GetInPtsFrmOutPts_D, ORNEX_GetInPtsFrmOutPts_R);
        for (int end = 0; end < 2; ++end) homogeneous(end ? last : first, column, m, h[end], h[end] + 1, h[end] + 2);
        ASSERT_EQ(h[0][1], T(column) * m[0] + T(first) * m[1] + m[2]);
        ASSERT_EQ(h[1][2], T(column) * m[6] + T(last) * m[7] + m[8]);
        const T t = T(1) / T(last - first);
        T pos[2], step[2], curve[2], delta[3];
        for (int a = 0; a < 3; ++a) delta[a] = (h[1][a] - h[0][a]) * t;
        for (int a = 0; a < 2; ++a) {
            const T s = h[0][a] / h[0][2], e = h[1][a] / h[1][2], mid = (h[0][a] + h[1][a]) / (h[0][2] + h[1][2]);
            pos[a] = s, curve[a] = T(2) * (s - T(2) * mid + e) * (t * t);
            step[a] = (T(4) * mid - T(3) * s - e) * t + curve[a];
        }
        const auto area = method == 2 ? pick<T>(ORNEX_PosVal_BL_Interp_D, ORNEX_PosVal_BL_Interp_R)
                                      : pick<T>(ORNEX_PosVal_BC_Interp_D, ORNEX_PosVal_BC_Interp_R);
        auto clamp = [](T v, int low, int size) { return v < T(low) ? T(low) : v > T(size - 1) ? T(size - 1) : v; };
        for (int r = first; column >= colFirst && column < colFirst + outCols && r <= last; ++r) {
            const T y = clamp(pos[0], rowLow, M), x = clamp(pos[1], colLow, N);
            for (int p = 0; p < 3 && r >= rowFirst && r < rowFirst + outRows; ++p) {
                T &value = expected[1 + p * planeSize + (column - colFirst) * outRows - rowFirst + r];
                if (method == 1) value = in[p][int(y + T(0.5)) + int(x + T(0.5)) * M];
                else area(in[p], y, x, M, N, &value, 0, 1, 0, 0);
            }
            for (int a = 0; a < 3 && exact; ++a) h[0][a] = h[0][a] + delta[a];
            for (int a = 0; a < 2 && exact; ++a) pos[a] = h[0][a] / h[0][2];
            for (int a = 0; a < 2 && !exact; ++a) pos[a] = pos[a] + step[a], step[a] = step[a] + T(2) * curve[a];
        }
        ASSERT_EQ(out, expected) << "trial " << trial;
    }
}

TYPED_TEST(Projective, DriversCoverTheMappedRegion)
{
    using T = TypeParam;
    const auto rect = pick<T>(ORNEX_DivideRectXform_D, ORNEX_DivideRectXform_R);
    const auto quad = pick<T>(ORNEX_DivideQuadXform_D, ORNEX_DivideQuadXform_R);
    const int M = 10, N = 12;
    std::vector<T> source(3 * M * N);
    for (int i = 0; i < 3 * M * N; ++i) source[i] = T(i);
    const T *in[3] = {source.data(), source.data() + M * N, source.data() + 2 * M * N};
    int32_t e[64], s[24]; // edge and sorting scratch
    // Moved by -1.5 rows and -2.5 columns, the corners round half away from zero
    // onto rows -2 .. 8 and columns -3 .. 9; positions come back clamped and rounded.
    const auto b = shift<T>(T(-1.5), T(-2.5));
    for (const int d : {0, 3, 7}) {
        std::vector<T> out(14 * 15 * 3, T(-1));
        rect(e, 0, s, out.data(), 0, 0, -3, 10, -4, 10, M, 0, b.data(), in[0], 0, 0, 1, 14, 15, N, 1, 0, 0, d, 0, 2);
        for (int i = 0; i < 14 * 15 * 3; ++i) {
            const int r = i % 14 - 3, c = i / 14 % 15 - 4, p = i / (14 * 15);
            const int sr = std::min(M - 1, int(std::max(T(0), T(r) + T(1.5)) + T(0.5)));
            const int sc = std::min(N - 1, int(std::max(T(0), T(c) + T(2.5)) + T(0.5)));
            const bool covered = p < 2 && r >= -2 && r <= 8 && c >= -3 && c <= 9;
            ASSERT_EQ(out[i], covered ? in[p][sr + sc * M] : T(-1)) << d << ": " << r << "," << c;
        }
    }
    // A rectangle's limits are bounds, not sizes; the quadrilateral driver takes the matrices
    // the other way round; negative divisions or three corners on one row draw nothing.
    const int32_t limits[4] = {2, 3, 8, 9}, corners[8] = {2, 3, 2, 8, 7, 8, 7, 3}, flat[8] = {0, 0, 0, 4, 0, 9, 9, 0};
    const auto two = shift<T>(0, 2), back = shift<T>(0, -2);
    std::vector<T> viaRect(M * N * 3, T(-1)), viaQuad = viaRect, none = viaRect;
    T *r = viaRect.data(), *q = viaQuad.data(), *n = none.data();
    const int P = M * N;
    rect(e, limits, s, r, r + P, r + 2 * P, 0, M - 1, 0, N - 1, M, 1, two.data(), in[0], in[1], in[2], 1, M, N, N, 2,
         0, 0, 2, 1, 1);
    rect(e, limits, s, n, 0, 0, 0, M - 1, 0, N - 1, M, 0, two.data(), in[0], 0, 0, 1, M, N, N, 2, 0, 0, -1, 1, 1);
    quad(e, corners, s, q, q + P, q + 2 * P, 0, M - 1, 0, N - 1, M, 1, back.data(), in[0], in[1], in[2], 1, M, N, N,
         3, 2, 1);
    EXPECT_EQ(quad(e, flat, s, n, 0, 0, 0, M - 1, 0, N - 1, M, 0, back.data(), in[0], 0, 0, 1, M, N, N, 1, 0, 1), 0);
    for (int i = 0; i < M * N * 3; ++i) {
        const bool inside = i % M >= 2 && i % M <= 7 && i / M % N >= 5 && i / M % N <= 10;
        EXPECT_EQ(viaRect[i], inside ? source[i - 2 * M] : T(-1)) << i;
    }
    EXPECT_EQ(viaQuad, viaRect);
    EXPECT_EQ(none, std::vector<T>(M * N * 3, T(-1)));

    // A ramp (value = row) in perspective: exact division reads back the row, the approximation is near.
    std::vector<T> ramp(60 * 70);
    for (int i = 0; i < 60 * 70; ++i) ramp[i] = T(i % 60);
    const int32_t skewed[8] = {3, 2, 0, 75, 70, 85, 62, 4}, whole[4] = {0, 0, 60, 70};
    T m[18];
    pick<T>(ORNEX_CalculateXformMtrx_D, ORNEX_CalculateXformMtrx_R)(skewed, whole, 60, 70, 1, 0, 0, m);
    for (const bool exact : {true, false}) {
        std::vector<T> out(80 * 90, T(-1));
        rect(e, whole, s, out.data(), 0, 0, 0, 79, 0, 89, 60, 0, m, ramp.data(), 0, 0, exact, 80, 90, 70, 2, 0, 0, 4,
             0, 1);
        double worst = 0, covered = 0;
        for (int i = 0; i < 80 * 90; ++i) {
            const double x = i / 80, y = i % 80, r = (x * m[12] + y * m[13] + m[14]) / (x * m[15] + y * m[16] + m[17]);
            if (out[i] != -1 && r > .5 && r < 58.5) ++covered, worst = std::max(worst, std::abs(out[i] - r));
        }
        EXPECT_GT(covered, 4000);
        EXPECT_TRUE(exact ? worst < (std::is_same_v<T, double> ? 1e-9 : 1e-3) : worst > 1e-7 && worst < 2e-2) << worst;
    }
}

TYPED_TEST(Projective, EmptySourcesAndBackgrounds)
{
    using T = TypeParam;
    const auto b = shift<T>(1, -1);
    std::vector<T> out(36, T(-1));
    // A source without pixels has nothing to sample: not a byte of it is read.
    pick<T>(ORNEX_ProjComputeOutPixel_D, ORNEX_ProjComputeOutPixel_R)(out.data(), 0, 0, 3, 0, 5, 0, 5, 0, 5, 0, 0,
                                                                      nullptr, 0, 0, b.data(), 0, 6, 6, 1, 1, 0, 0, 1);
    EXPECT_EQ(out[18], T(-1));
    // Per plane or one value for all, stacked or as three planes, -0 stored as +0, nothing past the planes.
    const T values[3] = {T(1.5), T(-2), T(7)}, zeros[3] = {T(-0.0), T(-0.0), T(-0.0)};
    const std::tuple<const T *, int, int, int> fills[] = {{values, 0, 0, 2}, {values, 1, 0, 0}, {values + 1, 0, 1, 3},
                                                          {values + 2, 1, 1, 0}, {zeros, 0, 1, 3}, {zeros, 1, 0, 0}};
    for (const auto &[background, three, one, planes] : fills) {
        std::vector<T> a(37, T(9));
        pick<T>(ORNEX_FillBackgroundValues_D, ORNEX_FillBackgroundValues_R)(
            background, a.data(), three ? &a[12] : nullptr, three ? &a[24] : nullptr, 3, 4, three, one, planes);
        for (int i = 0; i < 37; ++i) {
            const T want = i < 12 * (three ? 3 : planes) ? background[one ? 0 : i / 12] : T(9);
            EXPECT_TRUE(a[i] == want && (want != 0 || !std::signbit(a[i]))) << three << one << planes << " at " << i;
        }
    }
}
