#include <gtest/gtest.h>

#include <array>
#include <random>

#include "ornex_rt.h"

using Corners = std::array<int32_t, 8>; // (row, column) of corners 0..3
using Rect = std::array<int32_t, 4>;

// The closed form, its adjugate and the moves by the origin, written out.
template <class T>
std::vector<T> plainBlock(const Corners &q, const Rect &rect, int rows, int cols, int mode, int inverseOffset, bool useRect)
{
    const bool fromRect = mode != 1 || useRect;
    const T c = fromRect ? T(mode == 1 ? rect[1] : -rect[1]) : 0, r = fromRect ? T(mode == 1 ? rect[0] : -rect[0]) : 0;
    const T H = T((fromRect ? rect[2] : rows) - 1), W = T((fromRect ? rect[3] : cols) - 1);
    const T x0 = T(q[1]), x1 = T(q[3]), x2 = T(q[5]), x3 = T(q[7]), y0 = T(q[0]), y1 = T(q[2]), y2 = T(q[4]), y3 = T(q[6]);
    const T sx = x0 - x1 + x2 - x3, sy = y0 - y1 + y2 - y3, dx1 = x1 - x2, dx2 = x3 - x2, dy1 = y1 - y2, dy2 = y3 - y2;
    const T D = dx2 * dy1 - dx1 * dy2, g = (dx2 * sy - dy2 * sx) / (W * D), h = (sx * dy1 - dx1 * sy) / (H * D);
    std::vector<T> m = {x1 * g + (x1 - x0) / W, x3 * h + (x3 - x0) / H, x0, y1 * g + (y1 - y0) / W, y3 * h + (y3 - y0) / H, y0, g, h, 1};
    m.insert(m.end(), {m[4] - m[7] * m[5], m[7] * m[2] - m[1], m[5] * m[1] - m[4] * m[2], m[6] * m[5] - m[3], m[0] - m[6] * m[2],
                       m[3] * m[2] - m[5] * m[0], m[7] * m[3] - m[6] * m[4], m[6] * m[1] - m[7] * m[0], m[4] * m[0] - m[3] * m[1]});
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

template <class T>
class ProjectiveMatrix : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(ProjectiveMatrix, Precisions);

TYPED_TEST(ProjectiveMatrix, BlocksAndProductsMatchTheClosedForm)
{
    using T = TypeParam;
    constexpr bool D = std::is_same_v<T, double>;
    std::mt19937 random(11);
    auto any = [&](int lo, int hi) { return int32_t(lo + int(random() % (hi - lo + 1))); };
    for (int trial = 0; trial < 400; ++trial) {
        // Corners near those of a 200 x 200 square, in order round it.
        Corners q, second;
        for (int k = 0; k < 8; ++k) q[k] = (k >= 3 && k <= 6 ? 200 : 0) + any(-25, 25), second[k] = q[k] + any(-9, 9);
        if (trial % 5 == 0) second = q;
        const Rect rect = {any(-40, 40), any(-40, 40), any(2, 90), any(2, 90)};
        const int rows = any(2, 90), cols = any(2, 90), mode = any(0, 3), inverseOffset = any(0, 2);
        const bool useRect = random() % 2, both = random() % 2;
        std::vector<T> b(20, T(-1)), q2q(56, T(-5));
        if constexpr (D) ORNEX_CalculateXformMtrx_D(q.data(), rect.data(), rows, cols, mode, inverseOffset, useRect, b.data() + 1);
        else ORNEX_CalculateXformMtrx_R(q.data(), rect.data(), rows, cols, mode, inverseOffset, useRect, b.data() + 1);
        ASSERT_EQ(std::vector<T>(b.begin() + 1, b.end() - 1), plainBlock<T>(q, rect, rows, cols, mode, inverseOffset, useRect)) << trial;
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
                for (int k = 0; k < 3; ++k) s = s + left[i % 3 + 3 * k] * (k == 2 && i == 8 ? T(1) : right[k + 3 * (i / 3)]);
                expected.push_back(pass && !both ? T(-5) : s);
            }
        expected.push_back(T(-5));
        if constexpr (D) ORNEX_CalculateQ2QXformMtrx_D(q.data(), rows, cols, q2q.data() + 1, second.data(), both);
        else ORNEX_CalculateQ2QXformMtrx_R(q.data(), rows, cols, q2q.data() + 1, second.data(), both);
        ASSERT_EQ(q2q, expected) << trial;

        // Geometry: corner k of the W x H rectangle lands on corner k of the
        // quadrilateral; the same quadrilateral twice gives det(A) times I.
        const double W = cols - 1, H = rows - 1, x[4] = {0, W, W, 0}, y[4] = {0, 0, H, H}, tolerance = D ? 1e-9 : 2e-3;
        for (int k = 0; k < 4; ++k) {
            const double w = x[k] * A[6] + y[k] * A[7] + A[8];
            EXPECT_NEAR((x[k] * A[0] + y[k] * A[1] + A[2]) / w, q[2 * k + 1], 200 * tolerance);
            EXPECT_NEAR((x[k] * A[3] + y[k] * A[4] + A[5]) / w, q[2 * k], 200 * tolerance);
        }
        const double det = A[0] * (A[4] - A[7] * A[5]) - A[3] * (A[1] - A[7] * A[2]) + A[6] * (A[1] * A[5] - A[4] * A[2]);
        for (int i = 0; trial % 5 == 0 && i < 9; ++i) EXPECT_NEAR(q2q[37 + i], i % 4 ? 0 : det, std::fabs(det) * tolerance);
    }
}

TEST(Collinearity, CornersOneToThreeExactlyWithWrapAround)
{
    // Corner 0 between 3 and 1 is not tested; 65536 * 65536 wraps to 0.
    const Corners flat0 = {5, 5, 0, 10, 10, 10, 10, 0}, wrapped = {65536, 0, 0, 0, 0, -65536, 70000, -70000};
    EXPECT_TRUE(!ORNEX_Are3PtsCollinear(flat0.data()) && ORNEX_Are3PtsCollinear(wrapped.data()));
    std::mt19937 random(13);
    for (int trial = 0; trial < 20000; ++trial) {
        Corners p;
        for (auto &v : p) v = trial % 2 ? int32_t(random() % 5) - 2 : int32_t(random());
        auto d = [&](int i, int j) { return uint32_t(p[2 * (i % 4) + j]) - uint32_t(p[2 * ((i + 1) % 4) + j]); };
        bool any = false;
        for (int k = 1; k <= 3; ++k) any = any || d(k, 1) * d(k - 1, 0) == d(k, 0) * d(k - 1, 1);
        ASSERT_EQ(ORNEX_Are3PtsCollinear(p.data()), any) << trial;
    }
}
