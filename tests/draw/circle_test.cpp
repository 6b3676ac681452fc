#include "draw_support.hpp"

namespace {

using namespace drawtest;

// Entry t stands for 4096 sqrt(1 - (t/4096)^2), rounded.
const std::vector<int16_t> &sqrtTable()
{
    static const std::vector<int16_t> table = [] {
        std::vector<int16_t> t(4096);
        for (int i = 0; i < 4096; ++i) {
            t[i] = int16_t(std::lround(4096.0 * std::sqrt(1.0 - (i / 4096.0) * (i / 4096.0))));
        }
        return t;
    }();
    return table;
}

// (row, column) offsets of the eight mirror images of (a, b).
std::array<std::array<int32_t, 2>, 8> mirrors(int32_t a, int32_t b)
{
    return {{{a, b}, {-a, b}, {-a, -b}, {a, -b}, {b, a}, {-b, a}, {-b, -a}, {b, -a}}};
}

// The quad kernel's four points: (+-a, +-b), or the axis points at distance
// b when a = 0.
std::array<std::array<int32_t, 2>, 4> quadPoints(int32_t a, int32_t b)
{
    return a != 0 ? std::array<std::array<int32_t, 2>, 4>{{{a, b}, {-a, b}, {-a, -b}, {a, -b}}}
                  : std::array<std::array<int32_t, 2>, 4>{{{0, b}, {0, -b}, {-b, 0}, {b, 0}}};
}

TEST(CircleOutline, RandomOctantPointsCopyTheirBytes)
{
    std::mt19937 rng(4);
    for (int trial = 0; trial < 500; ++trial) {
        const int32_t a = uniform(rng, -2, 9), b = trial % 5 == 0 ? a : uniform(rng, -2, 9), numPlanes = trial % 3;
        const int32_t cr = uniform(rng, -3, 18), cc = uniform(rng, -3, 20);
        const auto rect = randomRect(rng, 16, 18);
        Planes<double> image(16, 18, 2, rng), wantImage = image;
        Planes<uint16_t> rgb(16, 18, 3, rng), wantRgb = rgb;
        const double values[2] = {2.5, -7.25};
        const uint16_t colour[3] = {1000, 2000, 3000};
        ORNEX_Circle_SymOctantPts(image.plane(0), cr, cc, a, b, rect[0], rect[1], rect[2], rect[3], values, 8, 16,
                                  numPlanes, image.stride);
        ORNEX_Circle_SymOctantPts_RGB(rgb.plane(0), rgb.plane(1), rgb.plane(2), cr, cc, a, b, rect[0], rect[1],
                                      rect[2], rect[3], colour, 2, 16);
        for (const auto &[dr, dc] : mirrors(a, b)) {
            const int32_t r = cr + dr, c = cc + dc;
            if (r >= rect[0] && r <= rect[1] && c >= rect[2] && c <= rect[3]) {
                for (int32_t p = 0; p < 3; ++p) {
                    wantRgb.at(p, r, c) = colour[p];
                    if (p < numPlanes) {
                        wantImage.at(p, r, c) = values[p];
                    }
                }
            }
        }
        ASSERT_EQ(image.buf, wantImage.buf) << trial;
        ASSERT_EQ(rgb.buf, wantRgb.buf) << trial;
    }
}

TEST(AACircleDelta, DistanceToTheNextWholePixelInQ10)
{
    const int16_t *table = sqrtTable().data();
    uint8_t outside = 7;
    // On the axis the crossing is a whole pixel: full weight, 1024 not 0.
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(0, 9, 9, table, &outside), 1024);
    EXPECT_EQ(outside, 1);
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(0, 8, 9, table, &outside), 1024);
    EXPECT_EQ(outside, 0);
    // x = 3, r = 5: t = 12288/5 = 2457, entry 4096 sqrt(1 - 0.59985^2) =
    // 3277.25 -> 3277, s = 16385, just past 4 pixels: (4096 - 1) >> 2.
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(3, 4, 5, table, &outside), 1023);
    EXPECT_EQ(outside, 0);
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(3, 5, 5, table, &outside), 1023);
    EXPECT_EQ(outside, 1);
    // Past index 3223 the table is read at 3223.
    EXPECT_EQ(ORNEX_DrawAACircle_Delta(10, 0, 10, table, &outside), (4096 - table[3223] * 10 % 4096) / 4);
}

template <class Tp, class Wp, class Op, auto qI, auto qRgb, auto oI, auto oRgb, auto cI, auto cRgb, auto dI, auto dRgb,
          auto fI, auto fRgb, auto eI, auto eRgb>
struct CircleMember {
    using T = Tp;
    using W = Wp; // octant weight
    using O = Op; // disc and span opacity
    static constexpr bool floating = std::is_floating_point_v<T>;
    static constexpr auto quadI = qI, quadRgb = qRgb, octI = oI, octRgb = oRgb, circleI = cI, circleRgb = cRgb;
    static constexpr auto discI = dI, discRgb = dRgb, lines4I = fI, lines4Rgb = fRgb, lines8I = eI, lines8Rgb = eRgb;
    static W full() { return floating ? W(1) : W(1024); }
    static T term(T value, W w) { return floating ? T(w * value) : T(int32_t(value) * int32_t(w) >> 10); }
    static T blend(T old, W keep, T term)
    {
        return floating ? T(old * keep + term) : T(uint32_t(int32_t(old) * int32_t(keep) >> 10) + uint32_t(term));
    }
};
#define CIRCLE_MEMBER(S, T, W, O)                                                                                      \
    CircleMember<T, W, O, ORNEX_AACircle_SymQuadPtsI_##S, ORNEX_AACircle_SymQuadPtsRGB_##S,                           \
                 ORNEX_AACircle_SymOctantPtsI_##S, ORNEX_AACircle_SymOctantPtsRGB_##S, ORNEX_Draw_AA_Circle_I_##S,    \
                 ORNEX_Draw_AA_Circle_RGB_##S, ORNEX_Draw_AA_FilledCircle_I_##S, ORNEX_Draw_AA_FilledCircle_RGB_##S,  \
                 ORNEX_AACircle_4PtsLinesI_##S, ORNEX_AACircle_4PtsLinesRGB_##S, ORNEX_AACircle_8PtsLinesI_##S,       \
                 ORNEX_AACircle_8PtsLinesRGB_##S>
using CircleMembers = ::testing::Types<CIRCLE_MEMBER(D, double, double, double), CIRCLE_MEMBER(R, float, float, float),
                                       CIRCLE_MEMBER(UI8, uint8_t, uint32_t, int16_t),
                                       CIRCLE_MEMBER(I8, int8_t, uint32_t, int16_t),
                                       CIRCLE_MEMBER(UI16, uint16_t, uint32_t, int16_t),
                                       CIRCLE_MEMBER(I16, int16_t, uint32_t, int16_t)>;

template <class M>
class AACircle : public ::testing::Test {};
TYPED_TEST_SUITE(AACircle, CircleMembers);

// The quad kernel replaces its four points; also for the 32-bit members.
template <class T, auto quadI, auto quadRgb>
void checkQuadPoints(std::mt19937 &rng)
{
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t a = trial % 3 == 0 ? 0 : uniform(rng, -3, 9), b = uniform(rng, -3, 9), n = 1 + trial % 3;
        const int32_t cr = uniform(rng, -3, 18), cc = uniform(rng, -3, 20);
        Expected<T> want{Planes<T>(16, 18, 3, rng), Planes<T>(16, 18, 3, rng), n, randomRect(rng, 16, 18)};
        Planes<T> image = want.intensity, rgb = want.rgb;
        const T values[3] = {randomValue<T>(rng), randomValue<T>(rng), randomValue<T>(rng)};
        const auto &rc = want.rect;
        quadI(image.plane(0), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, values, n, image.stride);
        quadRgb(rgb.plane(0), rgb.plane(1), rgb.plane(2), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, values[0],
                values[1], values[2]);
        for (const auto &[dr, dc] : quadPoints(a, b)) {
            want.at(cr + dr, cc + dc, [&](T, int32_t p) { return values[p]; });
        }
        ASSERT_EQ(image.buf, want.intensity.buf) << trial;
        ASSERT_EQ(rgb.buf, want.rgb.buf) << trial;
    }
}

TEST(AACircleKernels, QuadPointsOfThe32BitMembers)
{
    std::mt19937 rng(5);
    checkQuadPoints<uint32_t, ORNEX_AACircle_SymQuadPtsI_UI32, ORNEX_AACircle_SymQuadPtsRGB_UI32>(rng);
    checkQuadPoints<int32_t, ORNEX_AACircle_SymQuadPtsI_I32, ORNEX_AACircle_SymQuadPtsRGB_I32>(rng);
}

// The octant kernel blends the eight points of (a, b) with keep w (flag set)
// or 1 - w and termsA, then those of the partner b -+ 1 with the other keep
// and termsB; coincident points (a = b, a = b') are blended again.
TYPED_TEST(AACircle, KernelsAgainstTheirWrittenOutPlacement)
{
    using M = TypeParam;
    using T = typename M::T;
    std::mt19937 rng(6);
    checkQuadPoints<T, M::quadI, M::quadRgb>(rng);
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t a = uniform(rng, 0, 8), b = trial % 4 == 0 ? a + uniform(rng, -1, 1) : uniform(rng, 0, 9);
        const int32_t cr = uniform(rng, -3, 18), cc = uniform(rng, -3, 20), n = 1 + trial % 3, flag = trial % 2;
        const int32_t pick = uniform(rng, 0, 2);
        const typename M::W w = pick == 0 ? 0 : pick == 1 ? M::full() : typename M::W(M::full() * uniform(rng, 0, 64) / 64);
        Expected<T> want{Planes<T>(16, 18, 3, rng), Planes<T>(16, 18, 3, rng), n, randomRect(rng, 16, 18)};
        Planes<T> image = want.intensity, rgb = want.rgb;
        T termsA[3], termsB[3];
        for (int32_t p = 0; p < 3; ++p) {
            termsA[p] = randomValue<T>(rng), termsB[p] = randomValue<T>(rng);
        }
        const auto &rc = want.rect;
        M::octI(image.plane(0), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, termsA, termsB, w, flag, n, image.stride);
        M::octRgb(rgb.plane(0), rgb.plane(1), rgb.plane(2), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 16, termsA[0],
                  termsA[1], termsA[2], termsB[0], termsB[1], termsB[2], w, flag);
        const typename M::W keepA = flag ? w : M::full() - w, keepB = flag ? M::full() - w : w;
        for (const auto &[dr, dc] : mirrors(a, b)) {
            want.at(cr + dr, cc + dc, [&](T old, int32_t p) { return M::blend(old, keepA, termsA[p]); });
        }
        for (const auto &[dr, dc] : mirrors(a, flag ? b - 1 : b + 1)) {
            want.at(cr + dr, cc + dc, [&](T old, int32_t p) { return M::blend(old, keepB, termsB[p]); });
        }
        ASSERT_EQ(image.buf, want.intensity.buf) << trial;
        ASSERT_EQ(rgb.buf, want.rgb.buf) << trial;
    }
}

// The outline walked as written: start point replaced by the colour,
// midpoint decisions, each step a pair of complementary weights about the
// exact crossing (square root, or the table through the Q10 delta), the
// diagonal replaced with the larger weight.
TYPED_TEST(AACircle, OutlineAgainstTheWrittenOutWalk)
{
    using M = TypeParam;
    using T = typename M::T;
    using W = typename M::W;
    std::mt19937 rng(7);
    for (int trial = 0; trial < 400; ++trial) {
        const int32_t radius = trial % 50, cr = uniform(rng, -5, 40), cc = uniform(rng, -5, 40);
        const int32_t x0 = trial % 4 == 0 ? uniform(rng, 0, radius / 2) : 0, y0 = radius - x0 / 3;
        const int32_t n = trial % 8 == 0 ? 0 : 1 + trial % 3;
        Expected<T> want{Planes<T>(36, 38, 3, rng), Planes<T>(36, 38, 3, rng), n, randomRect(rng, 36, 38)};
        Planes<T> image = want.intensity, rgb = want.rgb;
        const T value[3] = {randomValue<T>(rng), randomValue<T>(rng), randomValue<T>(rng)};
        const auto &rc = want.rect;
        if constexpr (M::floating) {
            M::circleI(image.plane(0), value, x0, y0, cr, cc, rc[0], rc[1], rc[2], rc[3], 36, radius, n, image.stride);
            M::circleRgb(rgb.plane(0), rgb.plane(1), rgb.plane(2), value, x0, y0, cr, cc, rc[0], rc[1], rc[2], rc[3],
                         36, radius);
        } else {
            M::circleI(image.plane(0), value, sqrtTable().data(), x0, y0, cr, cc, rc[0], rc[1], rc[2], rc[3], 36,
                       radius, n, image.stride);
            M::circleRgb(rgb.plane(0), rgb.plane(1), rgb.plane(2), value, sqrtTable().data(), x0, y0, cr, cc, rc[0],
                         rc[1], rc[2], rc[3], 36, radius);
        }
        auto crossing = [&](int32_t x, int32_t y, bool &outside) {
            if constexpr (M::floating) {
                const T exact = std::sqrt(T(radius * radius - x * x));
                outside = T(y) >= exact;
                return W(std::ceil(exact) - exact);
            } else {
                const int32_t s = sqrtTable()[std::min(x * 4096 / radius, 3223)] * radius;
                outside = y * 4096 - s >= 0;
                return W((4096 - s % 4096) / 4);
            }
        };
        auto quad = [&](int32_t a, int32_t b, W w) {
            for (const auto &[dr, dc] : quadPoints(a, b)) {
                want.at(cr + dr, cc + dc, [&](T, int32_t p) { return M::term(value[p], w); });
            }
        };
        quad(x0, y0, M::full());
        int32_t d = 3 - 2 * radius, y = d >= 0 ? y0 - 1 : y0, x = x0 + 1;
        d += d >= 0 ? 4 * (x0 - y0) + 10 : 4 * x0 + 6;
        bool outside = false;
        for (; x < y; ++x) {
            const W w = crossing(x, y, outside), other = M::full() - w;
            // The walked pixel keeps w when on or outside the circle (partner
            // inward), else 1 - w (partner outward); each adds the other share.
            const W keep[2] = {outside ? w : other, outside ? other : w};
            for (int32_t k = 0; k < 2; ++k) {
                for (const auto &[dr, dc] : mirrors(x, k == 0 ? y : outside ? y - 1 : y + 1)) {
                    want.at(cr + dr, cc + dc,
                            [&](T old, int32_t p) { return M::blend(old, keep[k], M::term(value[p], keep[1 - k])); });
                }
            }
            d += d >= 0 ? 4 * (x - y--) + 10 : 4 * x + 6;
        }
        if (x == y) {
            const W w = crossing(x, y, outside);
            quad(x, y, (M::floating ? w <= W(0.5) : w < W(513)) ? M::full() - w : w);
        }
        ASSERT_EQ(image.buf, want.intensity.buf) << trial << " radius " << radius;
        ASSERT_EQ(rgb.buf, want.rgb.buf) << trial << " radius " << radius;
    }
}

// Geometry: away from the axes and the diagonal, row offset x is covered by
// the two pixels around the exact crossing y*, each taking one minus its
// distance from it of the colour; everything drawn is within a pixel of the
// circle.
TEST(AACircleGeometry, PairsStraddleTheExactCircle)
{
    for (int32_t radius : {6, 13, 40}) {
        const int32_t n = 2 * radius + 5, centre = radius + 2;
        std::vector<double> image(n * n, 0.25);
        const double one = 1;
        ORNEX_Draw_AA_Circle_I_D(image.data(), &one, 0, radius, centre, centre, 0, n - 1, 0, n - 1, n, radius, 1, 0);
        for (int32_t k = 0; k < n * n; ++k) {
            if (image[k] != 0.25) {
                EXPECT_LT(std::fabs(std::hypot(k % n - centre, k / n - centre) - radius), 1.0);
            }
        }
        for (int32_t x = 1; x < radius / std::sqrt(2.0) - 2; ++x) {
            const double exact = std::sqrt(double(radius * radius - x * x));
            for (int32_t y = int32_t(std::floor(exact)); y <= int32_t(std::ceil(exact)); ++y) {
                const double distance = std::fabs(y - exact);
                EXPECT_NEAR(image[centre + x + n * (centre + y)], 0.25 * distance + 1 - distance, 1e-12) << x;
            }
        }
    }
}

// Q = R*R - a*a - b*b decides each pixel alone: Q >= R takes the opacity,
// Q <= -R stays, between takes the opacity scaled by (Q + R)/(2R), or by
// ((Q + R)*512)/R in Q10 where a coverage of 0 skips the pixel. Spans:
// rows cr -+ a of columns cc -+ b (one column when b = 0), and for eight
// points also of (b, a) when a != b.
TYPED_TEST(AACircle, FilledDiscsAndSpansPixelByPixel)
{
    using M = TypeParam;
    using T = typename M::T;
    using O = typename M::O;
    std::mt19937 rng(8);
    const O full = M::floating ? O(1) : O(1024);
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t radius = trial % 5 == 0 ? uniform(rng, -1, 3) : uniform(rng, 1, 40);
        const int32_t cr = uniform(rng, -10, 45), cc = uniform(rng, -10, 45), n = trial % 8 == 0 ? 0 : 1 + trial % 3;
        const int32_t pick = uniform(rng, 0, 2), a = uniform(rng, -2, 10), b = uniform(rng, -2, 10);
        const O opacity = pick == 0 ? O(0) : pick == 1 ? full : O(full * O(uniform(rng, 1, 63)) / O(64));
        Expected<T> want{Planes<T>(36, 38, 3, rng), Planes<T>(36, 38, 3, rng), n, randomRect(rng, 36, 38)};
        Planes<T> image = want.intensity, rgb = want.rgb;
        const T value[3] = {randomValue<T>(rng), randomValue<T>(rng), randomValue<T>(rng)};
        const auto &rc = want.rect;
        const bool disc = trial % 3 != 2, eight = trial % 3 == 1;
        if (disc) {
            M::discI(image.plane(0), value, cr, cc, rc[0], rc[1], rc[2], rc[3], 36, radius, opacity, n, image.stride);
            M::discRgb(rgb.plane(0), rgb.plane(1), rgb.plane(2), value, cr, cc, rc[0], rc[1], rc[2], rc[3], 36, radius,
                       opacity);
        } else {
            (eight ? M::lines8I : M::lines4I)(image.plane(0), cr, cc, a, b, rc[0], rc[1], rc[2], rc[3], 36, value,
                                              opacity, n, image.stride);
            (eight ? M::lines8Rgb : M::lines4Rgb)(rgb.plane(0), rgb.plane(1), rgb.plane(2), cr, cc, a, b, rc[0], rc[1],
                                                  rc[2], rc[3], 36, value, opacity);
        }
        auto blendWith = [&](int32_t r, int32_t c, O o) {
            want.at(r, c, [&](T old, int32_t p) { return blendFill(old, value[p], o); });
        };
        auto span = [&](int32_t sa, int32_t sb) {
            for (int32_t k = 0; k < (sb != 0 ? 2 : 1); ++k) {
                for (int32_t r = cr - sa; r <= cr + sa; ++r) {
                    blendWith(r, k == 0 ? cc + sb : cc - sb, opacity);
                }
            }
        };
        if (!disc) {
            span(a, b);
            if (eight && a != b) {
                span(b, a);
            }
        }
        for (int32_t r = 0; disc && radius >= 1 && r < 36; ++r) {
            for (int32_t c = 0; c < 38; ++c) {
                const int32_t q = radius * radius - (r - cr) * (r - cr) - (c - cc) * (c - cc);
                if (q >= radius || q <= -radius) {
                    q >= radius ? blendWith(r, c, opacity) : void();
                } else if constexpr (M::floating) {
                    blendWith(r, c, opacity * (T(q + radius) / T(2 * radius)));
                } else if ((q + radius) * 512 / radius != 0) {
                    blendWith(r, c, O((opacity * ((q + radius) * 512 / radius)) >> 10));
                }
            }
        }
        ASSERT_EQ(image.buf, want.intensity.buf) << trial;
                ASSERT_EQ(rgb.buf, want.rgb.buf) << trial;
    }
}

TEST(AAFilledCircleMaps, HandDerivedPixels)
{
    // Radius 2 at half opacity: Q = 4 at the centre (full), (2, 0): Q = 0,
    // cov 2/4; (2, 1): Q = -1, cov 1/4; (2, 2): Q = -4 <= -2, untouched.
    std::vector<double> image(49, 0.0);
    const double one = 1.0;
    ORNEX_Draw_AA_FilledCircle_I_D(image.data(), &one, 3, 3, 0, 6, 0, 6, 7, 2, 0.5, 1, 49);
    EXPECT_EQ(image[3 * 7 + 3], 0.5);
    EXPECT_EQ(image[3 * 7 + 1], 0.25);
    EXPECT_EQ(image[2 * 7 + 1], 0.125);
    EXPECT_EQ(image[1 * 7 + 1], 0.0);
    // Radius 518, offset (404, 325): Q + R = 1, cov 512/518 = 0 in Q10 (the
    // pixel is skipped) but 1/1036 in double.
    uint8_t byte = 0;
    double real = 0;
    const uint8_t fill = 255;
    ORNEX_Draw_AA_FilledCircle_I_UI8(&byte - (404 + 325), &fill, 0, 0, 404, 404, 325, 325, 1, 518, 1024, 1, 0);
    ORNEX_Draw_AA_FilledCircle_I_D(&real - (404 + 325), &one, 0, 0, 404, 404, 325, 325, 1, 518, 1.0, 1, 0);
    EXPECT_EQ(byte, 0);
    EXPECT_EQ(real, 1.0 / 1036.0);
    // The colour is copied at entry: plane 1's colour is the pixel below the
    // centre, still 0 when plane 0's centre has become 800.
    std::vector<int16_t> planes(2 * 121, 0);
    planes[5 * 11 + 5] = 800;
    ORNEX_Draw_AA_FilledCircle_I_I16(planes.data(), &planes[5 * 11 + 5], 5, 5, 0, 10, 0, 10, 11, 4, 1024, 2, 121);
    EXPECT_EQ(planes[5 * 11 + 1], 400); // (-4, 0): cov 512
    EXPECT_EQ(std::vector<int16_t>(planes.begin() + 121, planes.end()), std::vector<int16_t>(121, 0));
}

} // namespace
