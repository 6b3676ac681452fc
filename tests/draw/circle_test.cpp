#include "draw_support.hpp"

namespace {

using namespace drawtest;
using Offsets = std::vector<std::array<int32_t, 2>>;

const std::vector<int16_t> sqrtTable = [] {
    std::vector<int16_t> t(4096);
    for (int i = 0; i < 4096; ++i)
        t[i] = int16_t(std::lround(4096.0 * std::sqrt(1.0 - (i / 4096.0) * (i / 4096.0))));
    return t;
}();

// The eight mirror images of (a, b); the quad kernel's four points, the axis points at distance b (each listed twice)
// when a = 0.
Offsets mirrors(int32_t a, int32_t b) { return {{a, b}, {-a, b}, {-a, -b}, {a, -b}, {b, a}, {-b, a}, {-b, -a}, {b, -a}}; }
Offsets quadPoints(int32_t a, int32_t b) { return a != 0 ? Offsets{{a, b}, {-a, b}, {-a, -b}, {a, -b}} : mirrors(0, b); }

TEST(AACircleDelta, DistanceToTheNextWholePixelInQ10)
{
    const int16_t *table = sqrtTable.data();
    uint8_t outside[4] = {7, 7, 7, 7};
    // On the axis the crossing is a whole pixel: full weight, 1024 not 0. x = 3, r = 5: t = 12288/5 = 2457, entry
    // 4096 sqrt(1 - 0.59985^2) = 3277.25 -> 3277, s = 16385, just past 4 pixels: (4096 - 1) >> 2. Past index 3223 the
    // table is read at 3223.
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(0, 9, 9, table, &outside[0]), 1024);
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(3, 4, 5, table, &outside[1]), 1023);
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(3, 5, 5, table, &outside[2]), 1023);
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(10, 0, 10, table, &outside[3]), (4096 - table[3223] * 10 % 4096) / 4);
    EXPECT_EQ(std::vector<uint8_t>(outside, outside + 4), (std::vector<uint8_t>{1, 0, 1, 0}));
    // Past x = 2^19 the 32-bit x * 4096 wraps below zero (outlines of radius above about 741455 get there): the
    // index is capped at 3223 like any past the end, and nothing before the table (of just the 3224 entries asked
    // for) is read.
    const std::vector<int16_t> shortest(sqrtTable.begin(), sqrtTable.begin() + 3224);
    const int32_t r = (1 << 19) + 1000;
    EXPECT_EQ(ORNEX_DrawAACircle_Delta((1 << 19) + 1, 0, r, shortest.data(), &outside[0]),
              (4096 - shortest[3223] * r % 4096) / 4);
}

template <class Tp, class Wp, class Op, auto qI, auto qRgb, auto oI, auto oRgb, auto cI, auto cRgb, auto dI, auto dRgb,
          auto fI, auto fRgb, auto eI, auto eRgb>
struct CircleMember {
    using T = Tp; using W = Wp; using O = Op; // octant weight, disc and span opacity
    static constexpr bool floating = std::is_floating_point_v<T>;
    static constexpr auto quadI = qI, quadRgb = qRgb, octI = oI, octRgb = oRgb, circleI = cI, circleRgb = cRgb;
    static constexpr auto discI = dI, discRgb = dRgb, lines4I = fI, lines4Rgb = fRgb, lines8I = eI, lines8Rgb = eRgb;
    static constexpr W full = floating ? W(1) : W(1024);
    static T term(T value, W w) { return floating ? T(w * value) : T(int32_t(value) * int32_t(w) >> 10); }
};
#define CIRCLE_MEMBER(S, T, W, O)                                                                                      \
    CircleMember<T, W, O, ORNEX_AACircle_SymQuadPtsI_##S, ORNEX_AACircle_SymQuadPtsRGB_##S,                           \
                 ORNEX_AACircle_SymOctantPtsI_##S, ORNEX_AACircle_SymOctantPtsRGB_##S, ORNEX_Draw_AA_Circle_I_##S,    \
                 ORNEX_Draw_AA_Circle_RGB_##S, ORNEX_Draw_AA_FilledCircle_I_##S, ORNEX_Draw_AA_FilledCircle_RGB_##S,  \
                 ORNEX_AACircle_4PtsLinesI_##S, ORNEX_AACircle_4PtsLinesRGB_##S, ORNEX_AACircle_8PtsLinesI_##S,       \
                 ORNEX_AACircle_8PtsLinesRGB_##S>
using CircleMembers = ::testing::Types<CIRCLE_MEMBER(D, double, double, double), CIRCLE_MEMBER(R, float, float, float),
    CIRCLE_MEMBER(UI8, uint8_t, uint32_t, int16_t), CIRCLE_MEMBER(I8, int8_t, uint32_t, int16_t),
    CIRCLE_MEMBER(UI16, uint16_t, uint32_t, int16_t), CIRCLE_MEMBER(I16, int16_t, uint32_t, int16_t)>;
template <class M> class AACircle : public ::testing::Test {};
TYPED_TEST_SUITE(AACircle, CircleMembers);

// Copying kernels replace points with the colour: the octant copier (two bytes an element) its eight mirror images,
// the quad kernels their four.
template <class T, bool quad, class Draw>
void checkCopies(uint32_t seed, Draw draw)
{
    forEachScene<T>(seed, 300, 16, 18, [&](int trial, std::mt19937 &rng, Scene<T> &s) {
        const int32_t a = trial % 3 == 0 ? 0 : uniform(rng, -3, 9), b = trial % 5 == 0 ? a : uniform(rng, -3, 9);
        const int32_t cr = uniform(rng, -3, 18), cc = uniform(rng, -3, 20);
        const auto &rc = s.rc;
        if constexpr (quad) {
            draw.first(s.dst(), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, s.colour.data(), s.numPlanes, s.stride);
            draw.second(s.red(), s.green(), s.blue(), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, s.colour[0],
                        s.colour[1], s.colour[2]);
        } else {
            s.draw(ORNEX_Circle_SymOctantPts, ORNEX_Circle_SymOctantPts_RGB, Dst{}, cr, cc, a, b, Clip{},
                   s.colour.data(), 2, 16);
        }
        for (const auto &[dr, dc] : quad ? quadPoints(a, b) : mirrors(a, b))
            s.at(cr + dr, cc + dc, [&](T, int32_t p) { return s.colour[p]; });
    });
}

TEST(CircleKernels, OctantCopierAndThe32BitQuadKernels)
{
    checkCopies<uint16_t, false>(4, 0);
    checkCopies<uint32_t, true>(5, std::pair(&ORNEX_AACircle_SymQuadPtsI_UI32, &ORNEX_AACircle_SymQuadPtsRGB_UI32));
    checkCopies<int32_t, true>(55, std::pair(&ORNEX_AACircle_SymQuadPtsI_I32, &ORNEX_AACircle_SymQuadPtsRGB_I32));
}

// The octant kernel blends the eight points of (a, b) with keep w (flag set) or 1 - w and termsA, then those of the
// partner b -+ 1 with the other keep and termsB; coincident points (a = b, a = b') are blended again.
TYPED_TEST(AACircle, KernelsAgainstTheirWrittenOutPlacement)
{
    using M = TypeParam;
    using T = typename M::T;
    checkCopies<T, true>(6, std::pair(M::quadI, M::quadRgb));
    forEachScene<T>(66, 300, 16, 18, [](int trial, std::mt19937 &rng, Scene<T> &s) {
        const int32_t a = uniform(rng, 0, 8), b = trial % 4 == 0 ? a + uniform(rng, -1, 1) : uniform(rng, 0, 9);
        const int32_t cr = uniform(rng, -3, 18), cc = uniform(rng, -3, 20), flag = trial % 2;
        const typename M::W w = randomOpacity<typename M::W>(rng);
        const auto &rc = s.rc;
        const T termsA[3] = {randomValue<T>(rng), randomValue<T>(rng), randomValue<T>(rng)}, *termsB = s.colour.data();
        M::octI(s.dst(), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, termsA, termsB, w, flag, s.numPlanes,
                s.stride);
        M::octRgb(s.red(), s.green(), s.blue(), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, termsA[0],
                  termsA[1], termsA[2], termsB[0], termsB[1], termsB[2], w, flag);
        const typename M::W keepA = flag ? w : M::full - w, keepB = flag ? M::full - w : w;
        for (const auto &[dr, dc] : mirrors(a, b))
            s.at(cr + dr, cc + dc, [&](T old, int32_t p) { return keepAdd(old, keepA, termsA[p]); });
        for (const auto &[dr, dc] : mirrors(a, flag ? b - 1 : b + 1))
            s.at(cr + dr, cc + dc, [&](T old, int32_t p) { return keepAdd(old, keepB, termsB[p]); });
    });
}

// The outline walked as written: the start point replaced by the colour, midpoint decisions, each step a pair of
// complementary weights about the exact crossing (square root, or the table through the Q10 delta), the diagonal
// replaced with the larger weight. Radii 0 and 1, clipping, start points off the axis; every fifth circle has a radius
// of 2^12 .. 40000 and a centre far outside, placed so that the arc near a random step crosses the image.
TYPED_TEST(AACircle, OutlineAgainstTheWrittenOutWalk)
{
    using M = TypeParam;
    using T = typename M::T;
    using W = typename M::W;
    forEachScene<T>(7, 400, 36, 38, [](int trial, std::mt19937 &rng, Scene<T> &s) {
        const bool far = trial % 5 == 4;
        const int32_t radius = far ? uniform(rng, 4096, 40000) : trial % 50;
        const int32_t arcRow = uniform(rng, 0, radius * 3 / 4), arcCol = int32_t(std::sqrt(double(radius) * radius - double(arcRow) * arcRow));
        const int32_t flip = far ? uniform(rng, 0, 3) : -1, along = flip & 1 ? arcRow : arcCol, across = flip & 1 ? arcCol : arcRow;
        const int32_t cr = uniform(rng, -5, 40) - (flip < 0 ? 0 : flip & 2 ? -across : across);
        const int32_t cc = uniform(rng, -5, 40) - (flip < 0 ? 0 : flip & 2 ? along : -along);
        const int32_t x0 = trial % 4 == 0 ? uniform(rng, 0, radius / 2) : 0, y0 = radius - x0 / 3;
        const T *value = s.colour.data();
        if constexpr (M::floating)
            s.draw(M::circleI, M::circleRgb, Dst{}, value, x0, y0, cr, cc, Clip{}, 36, radius);
        else
            s.draw(M::circleI, M::circleRgb, Dst{}, value, radius ? sqrtTable.data() : nullptr, x0, y0, cr, cc, Clip{},
                   36, radius);
        bool outside = false;
        auto crossing = [&](int32_t x, int32_t y) {
            if constexpr (M::floating) {
                const T exact = std::sqrt(T(radius * radius - x * x));
                outside = T(y) >= exact;
                return W(std::ceil(exact) - exact);
            } else {
                const int32_t t = sqrtTable[std::min(x * 4096 / radius, 3223)] * radius;
                outside = y * 4096 - t >= 0;
                return W((4096 - t % 4096) / 4);
            }
        };
        auto quad = [&](int32_t a, int32_t b, W w) {
            for (const auto &[dr, dc] : quadPoints(a, b))
                s.at(cr + dr, cc + dc, [&](T, int32_t p) { return M::term(value[p], w); });
        };
        quad(x0, y0, M::full);
        int32_t d = 3 - 2 * radius, y = d >= 0 ? y0 - 1 : y0, x = x0 + 1;
        d += d >= 0 ? 4 * (x0 - y0) + 10 : 4 * x0 + 6;
        for (; x < y; ++x) {
            // The walked pixel keeps w when on or outside the circle (partner inward), else 1 - w (partner outward);
            // each adds the other share.
            const W w = crossing(x, y), keep[2] = {outside ? w : M::full - w, outside ? M::full - w : w};
            for (int32_t k = 0; k < 2; ++k)
                for (const auto &[dr, dc] : mirrors(x, k == 0 ? y : outside ? y - 1 : y + 1))
                    s.at(cr + dr, cc + dc, [&](T old, int32_t p) { return keepAdd(old, keep[k], M::term(value[p], keep[1 - k])); });
            d += d >= 0 ? 4 * (x - y--) + 10 : 4 * x + 6;
        }
        if (x == y) {
            const W w = crossing(x, y);
            quad(x, y, (M::floating ? w <= W(0.5) : w < W(513)) ? M::full - w : w);
        }
    });
}

// Q = R*R - a*a - b*b decides each pixel alone: Q >= R takes the opacity, Q <= -R stays, between takes the opacity
// scaled by (Q + R)/(2R), or by ((Q + R)*512)/R in Q10 where a coverage of 0 skips the pixel. Spans: rows cr -+ a of
// columns cc -+ b (one column when b = 0), and for eight points also of (b, a) when a != b. Some discs have radii of
// 2^12 .. 46000 and centres far outside, their edge crossing the image.
TYPED_TEST(AACircle, FilledDiscsAndSpansPixelByPixel)
{
    using M = TypeParam;
    using T = typename M::T;
    using O = typename M::O;
    forEachScene<T>(8, 300, 36, 38, [](int trial, std::mt19937 &rng, Scene<T> &s) {
        const bool far = trial % 5 == 1;
        const int32_t radius = trial % 5 == 0 ? uniform(rng, -1, 3) : uniform(rng, 1, far ? 46000 : 40), a = uniform(rng, -2, 10);
        const double angle = uniform(rng, 0, 627) / 100.0, reach = far ? radius + uniform(rng, -20, 20) : 0;
        const int32_t cr = uniform(rng, -10, 45) - int32_t(reach * std::sin(angle)), b = uniform(rng, -2, 10);
        const int32_t cc = uniform(rng, -10, 45) - int32_t(reach * std::cos(angle));
        const O opacity = randomOpacity<O>(rng);
        const bool disc = trial % 3 != 2, eight = trial % 3 == 1;
        auto blendWith = [&](int32_t r, int32_t c, O o) { s.at(r, c, [&](T old, int32_t p) { return blendFill(old, s.colour[p], o); }); };
        if (disc) {
            s.draw(M::discI, M::discRgb, Dst{}, s.colour.data(), cr, cc, Clip{}, 36, radius, opacity);
            for (int32_t k = 0; radius >= 1 && k < 36 * 38; ++k) {
                const int32_t r = k % 36, c = k / 36;
                const int64_t q = int64_t(radius) * radius - int64_t(r - cr) * (r - cr) - int64_t(c - cc) * (c - cc);
                const int32_t cov = int32_t((q + radius) * 512 / radius);
                if (q >= radius)
                    blendWith(r, c, opacity);
                else if (q > -radius && M::floating)
                    blendWith(r, c, O(opacity * (T(q + radius) / T(2 * radius))));
                else if (q > -radius && cov != 0)
                    blendWith(r, c, O((int32_t(opacity) * cov) >> 10));
            }
        } else {
            s.draw(eight ? M::lines8I : M::lines4I, eight ? M::lines8Rgb : M::lines4Rgb, Dst{}, cr, cc, a, b, Clip{},
                   36, s.colour.data(), opacity);
            for (const auto &[sa, sb] : eight && a != b ? Offsets{{a, b}, {b, a}} : Offsets{{a, b}})
                for (int32_t k = 0; k < (sb != 0 ? 2 : 1); ++k)
                    for (int32_t r = cr - sa; r <= cr + sa; ++r)
                        blendWith(r, k == 0 ? cc + sb : cc - sb, opacity);
        }
    });
}

// From (0, r) the walk's y at step x is the largest y with x^2 + y(y - 1) < r^2: the midpoint (x, y - 1/2) lies
// inside. With r = 2^28 and x = 1.5e8 that pixel, put at column 2 of a 1x5 image, and its partner at column 1 or 3
// are blended; columns 0 and 4 stay. About (3, 3) a radius of 2^31 - 2 leaves a 1x1 image at (0, 0) alone: only step
// 3 meets its row and column, where the other offset is near 2^31.
TEST(AACircleFarGeometry, OnlyTheStepsReachingTheImageDraw)
{
    const int64_t r = int64_t(1) << 28, x = 150000000;
    int64_t y = int64_t(std::sqrt(double(r * r - x * x))) + 2;
    while (x * x + y * (y - 1) >= r * r)
        --y;
    std::vector<uint8_t> row{9, 9, 9, 9, 9};
    const uint8_t fill = 200;
    ORNEX_Draw_AA_Circle_I_UI8(row.data(), &fill, sqrtTable.data(), 0, int32_t(r), int32_t(-x), int32_t(2 - y), 0, 0, 0,
                               4, 1, int32_t(r), 1, 5);
    EXPECT_TRUE(row[0] == 9 && row[4] == 9 && (row[1] != 9 || row[2] != 9 || row[3] != 9));
    uint8_t pixel = 9;
    const int32_t huge = INT32_MAX - 1;
    ORNEX_Draw_AA_Circle_I_UI8(&pixel, &fill, sqrtTable.data(), 0, huge, 3, 3, 0, 0, 0, 0, 1, huge, 1, 1);
    EXPECT_EQ(pixel, 9);
}

TEST(AAFilledCircleMaps, HandDerivedPixels)
{
    // Radius 2 at half opacity, column 1 (b = -2): Q = -1, 0, -1 at rows 2, 3, 4, cov 1/4, 2/4, 1/4; rows 1 and 5 (Q
    // = -4 <= -2) untouched.
    std::vector<double> image(49, 0.0);
    const double one = 1.0;
    ORNEX_Draw_AA_FilledCircle_I_D(image.data(), &one, 3, 3, 0, 6, 0, 6, 7, 2, 0.5, 1, 49);
    EXPECT_EQ(std::vector<double>(image.begin() + 7, image.begin() + 14), (std::vector<double>{0, 0, 0.125, 0.25, 0.125, 0, 0}));
    // Radius 518, pixel (0, 0) of a 1x1 image at offset (404, 325): Q + R = 1, cov 512/518 = 0 in Q10 (the pixel is
    // skipped) but 1/1036 in double.
    uint8_t byte = 0;
    double real = 0;
    const uint8_t fill = 255;
    ORNEX_Draw_AA_FilledCircle_I_UI8(&byte, &fill, -404, -325, 0, 0, 0, 0, 1, 518, 1024, 1, 0);
    ORNEX_Draw_AA_FilledCircle_I_D(&real, &one, -404, -325, 0, 0, 0, 0, 1, 518, 1.0, 1, 0);
    EXPECT_EQ(byte, 0);
    EXPECT_EQ(real, 1.0 / 1036.0);
    // The colour is copied at entry: plane 1's colour is the pixel below the centre, still 0 when plane 0's centre
    // has become 800.
    std::vector<int16_t> planes(2 * 121, 0);
    planes[5 * 11 + 5] = 800;
    ORNEX_Draw_AA_FilledCircle_I_I16(planes.data(), &planes[5 * 11 + 5], 5, 5, 0, 10, 0, 10, 11, 4, 1024, 2, 121);
    EXPECT_EQ(planes[5 * 11 + 1], 400); // (-4, 0): cov 512
    EXPECT_EQ(std::vector<int16_t>(planes.begin() + 121, planes.end()), std::vector<int16_t>(121, 0));
}

} // namespace
