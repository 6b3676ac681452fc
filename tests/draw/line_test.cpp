#include "draw_support.hpp"

#include <set>

namespace {

using namespace drawtest;
using Pixel = std::pair<int32_t, int32_t>;

int32_t wrap(int64_t v) { return int32_t(uint32_t(uint64_t(v))); }

// Cohen-Sutherland written out: row borders first, every cut taken from the end-point as the caller gave it, n/d
// rounded halves away from zero, 32-bit products wrapping. Returns -1 when 1000 passes do not end it (by its own
// rules such a segment loops for ever; the clipper rejects it).
int32_t slowClip(int32_t *p1, int32_t *p2, const int32_t *rect)
{
    const int32_t entry[2][2] = {{p1[0], p1[1]}, {p2[0], p2[1]}};
    int32_t *p[2] = {p1, p2};
    bool moved[2] = {false, false};
    auto code = [&](const int32_t *q) {
        return (q[1] < rect[2] ? 1 : q[1] > rect[3] ? 2 : 0) | (q[0] < rect[0] ? 4 : q[0] > rect[1] ? 8 : 0);
    };
    for (int pass = 0; pass < 1000; ++pass) {
        const int32_t c1 = code(p1), c2 = code(p2), k = c1 != 0 ? 0 : 1, c = k == 0 ? c1 : c2;
        if ((c1 | c2) == 0 || (c1 & c2) != 0)
            return (c1 | c2) == 0;
        if (moved[k])
            p[k][0] = entry[k][0], p[k][1] = entry[k][1];
        const int32_t dRow = wrap(int64_t(p2[0]) - p1[0]), dCol = wrap(int64_t(p2[1]) - p1[1]);
        const int axis = (c & 12) != 0 ? 0 : 1, border = rect[axis == 0 ? ((c & 4) ? 0 : 1) : ((c & 1) ? 2 : 3)];
        const int32_t n = wrap(int64_t(wrap(int64_t(border) - p[k][axis])) * (axis == 0 ? dCol : dRow));
        const int32_t d = axis == 0 ? dRow : dCol, q = wrap(2 * int64_t(n)) / d;
        p[k][1 - axis] = wrap(int64_t(p[k][1 - axis]) + ((n >= 0) == (d >= 0) ? (q + 1) / 2 : (q - 1) / 2));
        p[k][axis] = border, moved[k] = true;
    }
    return -1;
}

TEST(ClipLine, HandWorkedCuts)
{
    // p1, p2, rect, result, p1 and p2 after clipping.
    const std::array<int32_t, 13> cases[] = {
        // Pass 1 cuts row 0 at column -8 + round(80/12) = -1; pass 2 starts again from (-8,-8): row -8 + round(96/10)
        // = 2 (from (0,-1) it would be 1).
        {-8, -8, 4, 2, 0, 9, 0, 9, 1, 2, 0, 4, 2},
        // n = 3000000*1000 wraps to -1294967296, 2n to 1705032704, q = 567, signs differ: (567 - 1)/2 = 283; then p2
        // to row 1000 at column 1000 + round(-2000*717/3000) = 522.
        {-3000000, 0, 3000, 1000, 0, 1000, 0, 1000, 1, 0, 283, 1000, 522},
        // From row -2^30 to 2^30 - 1 down column 0 through a 1x1 rectangle: n = 0 in both cuts, both points land on it.
        {-1073741824, 0, 1073741823, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0},
    };
    for (auto c : cases) {
        const int32_t result = ORNEX_ClipLine(&c[0], &c[2], &c[4]);
        EXPECT_TRUE(result == c[8] && c[0] == c[9] && c[1] == c[10] && c[2] == c[11] && c[3] == c[12]) << c[4] << c[5];
    }
}

TEST(ClipLine, RandomSegmentsAgainstTheWrittenOutClipper)
{
    std::mt19937 rng(1);
    for (int trial = 0; trial < 30000; ++trial) {
        // Up to 2^20 products wrap now and then, at 2^31 most of the time; some rectangles are empty.
        const int32_t far = std::array{20000, 40, 1 << 20, INT32_MAX}[trial % 4];
        int32_t rect[4] = {uniform(rng, -5, 5), uniform(rng, 5, 25), uniform(rng, -5, 5), uniform(rng, 5, 25)};
        if (trial % 5 == 0)
            std::swap(rect[2 * (trial % 2)], rect[2 * (trial % 2) + 1]);
        int32_t p1[2] = {uniform(rng, -far, far), uniform(rng, -far, far)}, p2[2] = {uniform(rng, -far, far), 0};
        p2[1] = trial % 7 == 0 ? p1[1] : uniform(rng, -far, far);
        int32_t q1[2] = {p1[0], p1[1]}, q2[2] = {p2[0], p2[1]};
        const int32_t result = ORNEX_ClipLine(p1, p2, rect), expected = slowClip(q1, q2, rect);
        ASSERT_EQ(result, std::max(expected, 0)) << trial;
        ASSERT_TRUE(expected < 0 || (p1[0] == q1[0] && p1[1] == q1[1] && p2[0] == q2[0] && p2[1] == q2[1])) << trial;
        for (const int32_t *q : {p1, p2})
            ASSERT_TRUE(!result || (q[0] >= rect[0] && q[0] <= rect[1] && q[1] >= rect[2] && q[1] <= rect[3]));
    }
}

// The walk written out: ordered along the major axis (ties go to rows), clipped, restarted at the clipped start with
// the error e += 2*minor, stepping at e >= major (rising) or e <= -major, so that halves step away from the start.
std::set<Pixel> slowWalk(int32_t r1, int32_t c1, int32_t r2, int32_t c2, const int32_t *rect)
{
    int32_t p1[2] = {r1, c1}, p2[2] = {r2, c2};
    const int64_t dr = wrap(int64_t(r2) - r1), dc = wrap(int64_t(c2) - c1);
    if ((std::abs(dc) > std::abs(dr) ? dc : dr) < 0)
        std::swap(p1, p2);
    std::set<Pixel> pixels;
    if (slowClip(p1, p2, rect) != 1)
        return pixels;
    // Level, vertical and diagonal lines follow from the same rule; a clipped line left running backwards along its
    // major axis draws nothing.
    const int32_t dRow = p2[0] - p1[0], dCol = p2[1] - p1[1];
    const bool colMajor = std::abs(dCol) > std::abs(dRow);
    const int32_t major = colMajor ? dCol : dRow, minor = colMajor ? dRow : dCol;
    for (int32_t k = 0, b = 0, e = 0; k <= major; ++k) {
        pixels.insert(colMajor ? Pixel{p1[0] + b, p1[1] + k} : Pixel{p1[0] + k, p1[1] + b});
        e += 2 * minor;
        if (minor > 0 && e >= major)
            ++b, e -= 2 * major;
        else if (minor < 0 && e <= -major)
            --b, e += 2 * major;
    }
    return pixels;
}

// Elements of 1, 2, 4 and 8 bytes (single moves) and of 3 (no fixed-size copy); lines run both ways.
template <size_t size>
void bresenhamScenes()
{
    using Bytes = std::array<uint8_t, size>;
    forEachScene<Bytes>(2, 1500, 23, 27, [](int trial, std::mt19937 &rng, Scene<Bytes> &s) {
        // From 2^16 to 2^20 the clipper's products wrap now and then; at 2^31 it gives up on many segments.
        const int32_t far = std::array{20000, 1 << uniform(rng, 16, 20), INT32_MAX, 45, 45, 45, 45}[trial % 7];
        const int32_t r1 = uniform(rng, -far / 3, far), c1 = uniform(rng, -far / 3, far);
        const int32_t r2 = trial % 9 == 0 ? r1 : uniform(rng, -far / 3, far), c2 = uniform(rng, -far / 3, far);
        s.draw(ORNEX_Line_Bresenham, ORNEX_Line_Bresenham_RGB, r1, c1, r2, c2, Dst{}, 23, s.colour.data(), int32_t(size), Clip{});
        for (const auto &[r, c] : slowWalk(r1, c1, r2, c2, s.rc.data()))
            s.at(r, c, [&](Bytes, int32_t p) { return s.colour[p]; });
    });
}

TEST(Bresenham, RandomLinesCopyElementBytesIntoEveryPlane)
{
    bresenhamScenes<1>(), bresenhamScenes<2>(), bresenhamScenes<3>(), bresenhamScenes<4>(), bresenhamScenes<8>();
}

// Far end-points: from row -2^30 down to 2^30 - 1 in the middle column of a 3x3 image, clipped to its middle pixel.
TEST(Bresenham, FarEndPointsThroughOnePixel)
{
    std::array<uint8_t, 9> image{};
    const uint8_t ink = 7;
    ORNEX_Line_Bresenham(-1073741824, 1, 1073741823, 1, image.data(), 3, &ink, 1, 1, 1, 1, 1, 1, 0);
    EXPECT_EQ(image, (std::array<uint8_t, 9>{0, 0, 0, 0, 7, 0, 0, 0, 0}));
}

// The brush written out: the end-points ordered by column and clipped, the centre at distance index idx(D), its
// minor-axis neighbours at D -+ cos; slope, cosine and threshold in Real (int32_t: Q10, the cubic cosine fit,
// truncating divisions and arithmetic shifts). Returns (row, column, index).
template <class Real>
std::vector<std::array<int32_t, 3>> slowBrush(int32_t r1, int32_t c1, int32_t r2, int32_t c2, const int32_t *rect)
{
    constexpr bool fixed = std::is_integral_v<Real>;
    std::vector<std::array<int32_t, 3>> ops;
    int32_t p1[2] = {r1, c1}, p2[2] = {r2, c2};
    if (c2 < c1)
        std::swap(p1, p2);
    if (slowClip(p1, p2, rect) != 1)
        return ops;
    const int32_t dRow = p2[0] - p1[0], dCol = p2[1] - p1[1];
    auto idx = [](Real x) {
        if constexpr (fixed)
            return std::min((std::abs(x) * 16) >> 10, 24);
        else
            return int32_t(std::min(std::floor(std::fabs(x) * 16 + Real(0.5)), Real(24)));
    };
    // Level lines and points walk with m = 0 (neighbours at index 16); vertical lines given bottom-up draw nothing,
    // and so do level ones that wrapped clipping left running right to left.
    if ((dCol == 0 && dRow < 0) || (dRow == 0 && dCol < 0))
        return ops;
    const bool colMajor = std::abs(dRow) <= dCol;
    const int32_t minorLength = std::abs(colMajor ? dRow : dCol), majorLength = colMajor ? dCol : std::abs(dRow);
    Real m, cs, thr;
    if constexpr (fixed) {
        m = minorLength * 1024 / std::max(majorLength, 1);
        cs = ((((m * m * m) >> 10) * 263) >> 20) + ((m * m * -560) >> 20) + ((-2 * m) >> 10) + 1024;
        thr = ((512 - m) * cs) >> 10;
    } else {
        m = Real(minorLength) / Real(std::max(majorLength, 1)), cs = Real(1) / std::sqrt(Real(1) + m * m), thr = (Real(0.5) - m) * cs;
    }
    const int32_t sign = dRow > 0 ? 1 : -1;
    int32_t r = colMajor || dRow >= 0 ? p1[0] : p2[0], c = colMajor || dRow >= 0 ? p1[1] : p2[1];
    Real d = 0;
    for (int32_t k = 0; k <= majorLength; ++k) {
        ops.push_back({r, c, idx(d)});
        if ((colMajor ? r : c) > rect[colMajor ? 0 : 2])
            ops.push_back({r - colMajor, c - !colMajor, idx(sign > 0 ? d + cs : d - cs)});
        if ((colMajor ? r : c) < rect[colMajor ? 1 : 3])
            ops.push_back({r + colMajor, c + !colMajor, idx(sign > 0 ? d - cs : d + cs)});
        const bool step = colMajor ? d >= thr : fixed ? d - thr >= -1 : d - thr > Real(-0.0001);
        (colMajor ? r : c) += step ? sign : 0;
        (colMajor ? c : r) += 1;
        if constexpr (fixed)
            d += step ? ((m - 1024) * cs) >> 10 : (cs * m) >> 10;
        else
            d += step ? (m - Real(1)) * cs : cs * m;
    }
    return ops;
}

template <class Tp, class Wp, class Rp, auto intensity, auto rgb>
struct LineMember {
    using T = Tp; using W = Wp; using Real = Rp;
    static constexpr auto drawI = intensity, drawRgb = rgb;
};
#define LINE_MEMBER(S, T, W, R) LineMember<T, W, R, ORNEX_Draw_AA_Line_I_##S, ORNEX_Draw_AA_Line_RGB_##S>
using LineMembers = ::testing::Types<LINE_MEMBER(D, double, double, double), LINE_MEMBER(R, float, float, float),
    LINE_MEMBER(UI8, uint8_t, int16_t, int32_t), LINE_MEMBER(I8, int8_t, int16_t, int32_t),
    LINE_MEMBER(UI16, uint16_t, uint16_t, int32_t), LINE_MEMBER(I16, int16_t, int16_t, int32_t)>;
template <class M> class AALine : public ::testing::Test {};
TYPED_TEST_SUITE(AALine, LineMembers);

// Random tables (keep weights 0, 1 and between; terms over the whole range, so that integer members wrap), lines
// reaching far outside the rectangle.
TYPED_TEST(AALine, RandomLinesAgainstTheWrittenOutBrush)
{
    using M = TypeParam;
    using W = typename M::W;
    forEachScene<typename M::T>(3, 600, 21, 25, [](int trial, std::mt19937 &rng, Scene<typename M::T> &s) {
        const int32_t far = std::array{20000, 1 << uniform(rng, 16, 20), INT32_MAX, 35, 35, 35}[trial % 6];
        const int32_t level = uniform(rng, 1, 2);
        std::vector<W> table(25 * (level + 3));
        for (size_t d = 0; d < table.size(); ++d)
            table[d] = d < 25 && rng() % 4 != 0 ? randomOpacity<W>(rng) : randomValue<W>(rng);
        const int32_t r1 = uniform(rng, -far / 4, far), c1 = uniform(rng, -far / 4, far);
        const int32_t r2 = trial % 7 == 0 ? r1 : uniform(rng, -far / 4, far), c2 = trial % 11 == 0 ? c1 : uniform(rng, -far / 4, far);
        const auto ops = slowBrush<typename M::Real>(r1, c1, r2, c2, s.rc.data());
        // A line that wrapped clipping turned against its minor step walks out of the rectangle; not drawn here.
        if (std::any_of(ops.begin(), ops.end(), [&](auto op) { return !s.inside(op[0], op[1]); }))
            return;
        s.draw(M::drawI, M::drawRgb, r1, c1, r2, c2, Dst{}, 21, Clip{}, table.data(), level);
        for (const auto &[r, c, d] : ops)
            s.at(r, c, [&](auto old, int32_t p) { return keepAdd(old, table[d], table[(level + p) * 25 + d]); });
    });
}

// A probe table (keep nothing, add index + 1) shows the distance indices of (0,0)-(1,4), m = 1/4. Floating: cos =
// 0.970143, thr = 0.242536, D = 0, 0.2425, -0.4851, -0.2425, 0: indices 0, 4, 8, 4, 0 rounded, neighbours at D -+ cos.
// Fixed: m = 256, cos = 4 - 35 - 1 + 1024 = 992, thr = 248, D = 0, 248, -496, -248, 0: indices 0, 3, 7, 3, 0 truncated.
TYPED_TEST(AALine, HandDerivedDistanceIndices)
{
    using M = TypeParam;
    std::vector<typename M::W> table(50, 0);
    for (int d = 0; d < 25; ++d)
        table[25 + d] = typename M::W(d + 1);
    std::vector<typename M::T> image(15, 0);
    M::drawI(0, 0, 1, 4, image.data(), 3, 0, 2, 0, 4, table.data(), 1, 1, 0);
    const std::vector<int> fixed{1, 16, 0, 4, 12, 0, 8, 8, 24, 12, 4, 20, 16, 1, 16};
    const std::vector<int> floating{1, 17, 0, 5, 13, 0, 9, 9, 24, 13, 5, 20, 17, 1, 17};
    EXPECT_EQ(std::vector<int>(image.begin(), image.end()), std::is_integral_v<typename M::Real> ? fixed : floating);
    // The blend by hand: no saturation, 200 + 100 is 44 in a byte; a signed pixel widens with its sign, (512 * -100)
    // >> 10 = -50.
    using T = typename M::T;
    if constexpr (std::is_integral_v<T>) {
        EXPECT_EQ(keepAdd(T(200), typename M::W(1024), typename M::W(100)), T(sizeof(T) == 1 ? 44 : 300));
        EXPECT_EQ(keepAdd(T(-100), typename M::W(512), typename M::W(0)), std::is_signed_v<T> ? -50 : T(-100) / 2);
    }
}

} // namespace
