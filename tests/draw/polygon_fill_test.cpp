#include "draw_support.hpp"

#include <limits>
#include <numeric>

namespace {

using namespace drawtest;

TEST(EdgeTable, RandomPolygonsAgainstTheWrittenOutTable)
{
    // A(2,1) B(10,5) C(4,9) by hand: AB (1,5,2, delta 8, length 4, step 2, weight 4096/sqrt(80) = 457.9), CA (1,9,2,
    // 2, 8, 0, 8192/sqrt(68) = 993.4), BC (5,9,10, -6, 4, 1, 4096/sqrt(52) = 568.0).
    EXPECT_EQ(slowEdgeTable({2, 1, 10, 5, 4, 9}, true),
              (std::vector<Edge>{{1, 5, 2, 8, 4, 2, 0, 457}, {1, 9, 2, 2, 8, 0, 0, 993}, {5, 9, 10, -6, 4, 1, 0, 568}}));
    std::mt19937 rng(9);
    for (int trial = 0; trial < 400; ++trial) {
        std::vector<int32_t> v(uniform(rng, 0, 13));
        for (int32_t &x : v)
            x = trial % 3 == 0 ? uniform(rng, 0, 3) : uniform(rng, -3000, 3000);
        const int32_t n = int32_t(v.size()) / 2;
        const auto want = slowEdgeTable(v, trial % 2);
        for (auto build : {ORNEX_CreateEdgesTable, ORNEX_CreateEdgesTable_Int}) {
            std::vector<int32_t> work(8 * n + 1, unwritten), sorted = work, records(6 * n + 1, unwritten);
            const int32_t offsets[8] = {0, n, 2 * n, 3 * n, 4 * n, 5 * n, 6 * n, 7 * n};
            build(v.data(), int32_t(v.size()), work.data(), sorted.data(), records.data(), offsets, trial % 2);
            for (int32_t k = 0; k < 8 * n; ++k)
                ASSERT_EQ(sorted[k], want[k % n][k / n]) << trial << " edge " << k % n << " field " << k / n;
            ASSERT_TRUE(work.back() == unwritten && sorted.back() == unwritten && records.back() == unwritten);
        }
    }
}

// Word 3 of record k names the row that comes k-th: a stable sort by the first three fields in every type, the
// extremes and 3 only, so that many rows tie and the fourth field (which must not count) differs.
template <class T>
void expectStableOrder(int32_t typeCode)
{
    const int32_t rows = 60;
    const T values[3] = {std::numeric_limits<T>::lowest(), T(3), std::numeric_limits<T>::max()};
    std::mt19937 rng(typeCode);
    std::vector<T> m(4 * rows);
    for (T &x : m)
        x = values[rng() % 3];
    std::vector<int32_t> records(6 * rows + 2, unwritten), order(rows), got;
    ORNEX_SortRows(m.data(), rows, typeCode, records.data() + 1);
    for (int32_t k = 0; k < rows; ++k)
        got.push_back(records[1 + 6 * k + 3]);
    std::iota(order.begin(), order.end(), 0);
    auto key = [&](int32_t r) { return std::make_tuple(m[r], m[rows + r], m[2 * rows + r]); };
    std::stable_sort(order.begin(), order.end(), [&](int32_t a, int32_t b) { return key(a) < key(b); });
    EXPECT_EQ(got, order) << typeCode;
    // 24-byte records on every build; 3 compared fields, stride `rows`.
    EXPECT_TRUE(records.front() == unwritten && records.back() == unwritten && records[1] == 3 && records[2] == rows);
}

TEST(SortRows, EveryTypeSortsStablyByThreeFields)
{
    [&]<class... T>(std::tuple<T...> *) {
        int32_t code = 0;
        (expectStableOrder<T>(code++), ...);
    }((std::tuple<double, float, int8_t, uint8_t, int16_t, uint16_t, int32_t, uint32_t> *)nullptr);
    const int32_t matrix[3] = {5, 1, 5};
    std::vector<int32_t> records(18, unwritten);
    ORNEX_SortRows(matrix, 3, 9, records.data()); // unknown type: input order
    EXPECT_EQ(records[3] * 100 + records[9] * 10 + records[15], 12);
}

TEST(PolygonHelpers, CornerPixelsAndIntegerCoordinates)
{
    const int32_t v[] = {3, 4, 7, 1, -2, 9};
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(v, 3, 7, 1) + 2 * ORNEX_DetectIfCornerPixel_FillPoly(v, 3, -2, 9), 3);
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(v, 3, 1, 7) + ORNEX_DetectIfCornerPixel_FillPoly(v, 2, -2, 9), 0);
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(nullptr, 0, 0, 0), 0);
    // Halves away from zero, NaN to INT32_MIN, integers widened; elements count*block on; an unknown type writes
    // nothing.
    auto expect = [](auto source, int32_t type, int32_t count, int32_t block, std::vector<int32_t> want) {
        std::vector<int32_t> out(want.size(), 42);
        ORNEX_GetIntCoordinates(source.data(), type, out.data(), count, block);
        EXPECT_EQ(out, want) << type;
    };
    expect(std::vector<double>{9, 9, 9, 9, 2.5, -2.5, 0.49, std::nan("")}, 0, 4, 1, {3, -3, 0, INT32_MIN, 42});
    expect(std::vector<float>{2.5f, -2.5f, 0.49f, -0.5f}, 1, 4, 0, {3, -3, 0, -1, 42});
    expect(std::vector<int8_t>{-5, 7}, 2, 2, 0, {-5, 7, 42});
    expect(std::vector<uint8_t>{255, 0, 1, 2}, 3, 2, 1, {1, 2, 42});
    expect(std::vector<int16_t>{-30000}, 4, 1, 0, {-30000, 42});
    expect(std::vector<uint16_t>{65535}, 5, 1, 0, {65535, 42});
    expect(std::vector<int32_t>{INT32_MIN}, 6, 1, 0, {INT32_MIN, 42});
    expect(std::vector<uint32_t>{4294967295u}, 7, 1, 0, {-1, 42});
    expect(std::vector<double>{1}, 8, 1, 0, {42, 42});
}

template <class Tp, class Op, class Wp, auto fI, auto fRgb, auto sI, auto sRgb, auto bI, auto bRgb, auto aI,
          auto aRgb, auto asI, auto asRgb>
struct FillMember {
    using T = Tp; using O = Op; using W = Wp; // opacity and weight entries, coverage sums
    static constexpr auto fillI = fI, fillRgb = fRgb, scanI = sI, scanRgb = sRgb, blendI = bI, blendRgb = bRgb;
    static constexpr auto aaFillI = aI, aaFillRgb = aRgb, aaScanI = asI, aaScanRgb = asRgb;
    static constexpr bool floating = std::is_floating_point_v<O>;
    static constexpr O full = floating ? O(1) : O(1024);
};
#define FILL_MEMBER(S, T, O, W, B)                                                                                     \
    FillMember<T, O, W, ORNEX_FillOnePolygon_I_##S, ORNEX_FillOnePolygon_RGB_##S, ORNEX_FillVerticalScanLine_I_##S,   \
               ORNEX_FillVerticalScanLine_RGB_##S, ORNEX_FillPolygon_##B##_I_##S, ORNEX_FillPolygon_##B##_RGB_##S,    \
               ORNEX_FillOnePolygon_AA_I_##S, ORNEX_FillOnePolygon_AA_RGB_##S, ORNEX_FillVerticalScanLine_AA_I_##S,   \
               ORNEX_FillVerticalScanLine_AA_RGB_##S>
using FillMembers = ::testing::Types<
    FILL_MEMBER(D, double, double, double, InterpFlt), FILL_MEMBER(R, float, float, float, InterpFlt),
    FILL_MEMBER(Bool, uint8_t, int16_t, int32_t, InterpFix), FILL_MEMBER(UI8, uint8_t, int16_t, int32_t, InterpFix),
    FILL_MEMBER(I8, int8_t, int16_t, int32_t, InterpFix), FILL_MEMBER(UI16, uint16_t, int16_t, int32_t, InterpFix),
    FILL_MEMBER(I16, int16_t, int16_t, int32_t, InterpFix)>;
template <class M> class PolygonFill : public ::testing::Test {};
TYPED_TEST_SUITE(PolygonFill, FillMembers);

// Consecutive active rows pair into spans, both ends filled; a span starts after the previous span's unclipped end
// (-1 before the first); rows and columns clipped to the rectangle.
template <class T, class O>
void slowColumn(Scene<T> &s, int32_t column, const std::vector<int32_t> &rows, O opacity)
{
    for (size_t k = 0, previousEnd = -1; column >= s.rc[2] && column <= s.rc[3] && k + 1 < rows.size(); k += 2) {
        const int32_t end = rows[k + 1];
        for (int32_t r = std::max({rows[k], int32_t(previousEnd) + 1, s.rc[0]}); r <= std::min(end, s.rc[1]); ++r)
            s.at(r, column, [&](T old, int32_t p) { return blendFill(old, s.colour[p], opacity); });
        previousEnd = size_t(int64_t(end));
    }
}

TYPED_TEST(PolygonFill, RunsAgainstTheWrittenOutBlend)
{
    using M = TypeParam;
    forEachScene<typename M::T>(10, 200, 19, 20, [](int, std::mt19937 &rng, Scene<typename M::T> &s) {
        const typename M::O opacity = randomOpacity<typename M::O>(rng);
        const int32_t col = uniform(rng, 0, 19), first = uniform(rng, 0, 18), last = uniform(rng, first - 1, 18);
        M::blendI(s.dst(), s.colour.data(), first + col * 19, opacity, first, last, s.numPlanes, s.stride);
        M::blendRgb(s.red(), s.colour.data(), first + col * 19, opacity, s.green(), s.blue(), first, last);
        s.rc = {0, 18, 0, 19};
        slowColumn(s, col, {first, last}, opacity);
    });
}

// The sweep written out: zero-length edges never enter, every edge steps by its error term, and the list is re-sorted
// by moving an edge down before the first larger key. Hard fills key by row (new edges after equal rows), drop an
// edge at its last column, and keep edges ending at element numValues - 1 of the sorted table one column longer; AA
// fills key by the crossing (the steeper descent first on a tie) and drop an edge after its last column.
template <class Visit>
void slowSweep(const std::vector<int32_t> &v, bool aa, Visit visit)
{
    const auto sorted = slowEdgeTable(v, aa);
    const size_t n = sorted.size(), last = v.size() - 1;
    auto key = [aa](const Edge &e) { return aa ? e[2] * 1024 + (e[6] * 1024) / e[4] : e[2]; };
    std::vector<Edge> active;
    auto drop = [&](int32_t scan) { std::erase_if(active, [&](const Edge &e) { return e[1] == scan; }); };
    for (int32_t scan = n ? sorted[0][0] : 0, finalEnd = n ? sorted[last % n][last / n] : 0, next = 0; n; ++scan) {
        for (Edge &e : active)
            e[1] += !aa && scan == finalEnd && e[1] == finalEnd;
        if (!aa)
            drop(scan);
        for (; next < int32_t(n) && sorted[next][0] == scan; ++next) {
            const Edge &e = sorted[next];
            auto before = [&](const Edge &a) { return key(a) > key(e) || (aa && key(a) == key(e) && a[3] * e[4] > e[3] * a[4]); };
            if (e[1] != e[0])
                active.insert(std::find_if(active.begin(), active.end(), before), e);
        }
        if (active.empty())
            return;
        visit(scan, active);
        if (aa)
            drop(scan);
        for (Edge &e : active) // one column of the walk: the exact row rounded, halves toward larger rows
            if (e[3] > 0 && (e[6] += e[3] - e[5] * e[4], e[2] += e[5], 2 * e[6] >= e[4]))
                e[2] += 1, e[6] -= e[4];
            else if (e[3] <= 0 && (e[6] += e[5] * e[4] + e[3], e[2] -= e[5], 2 * e[6] < -e[4]))
                e[2] -= 1, e[6] += e[4];
        for (int32_t p = int32_t(active.size()) - 1; p >= 1;) {
            const auto j = std::find_if(active.begin(), active.begin() + p, [&](const Edge &a) { return key(a) > key(active[p]); });
            if (j == active.begin() + p)
                --p;
            else
                std::rotate(j, active.begin() + p, active.begin() + p + 1);
        }
    }
}

TYPED_TEST(PolygonFill, HandDerivedShapes)
{
    using M = TypeParam;
    using T = typename M::T;
    // Triangle A(0,0) B(50,100) C(100,0) (row, column): both long edges end at column 100 where the last sorted edge
    // ends, so the tip is drawn. With D(90,60) E(80,40) added the last sorted edge is E-D, ending at column 60: A-B
    // and C-B are dropped at column 100 before it is drawn. Column 99 holds rows 49.5 to 50.5 in both.
    for (std::vector<int32_t> v : {std::vector<int32_t>{0, 0, 50, 100, 100, 0}, {0, 0, 50, 100, 100, 0, 90, 60, 80, 40}}) {
        std::vector<T> image(101 * 101, T(0));
        std::vector<int32_t> buffer(8 * v.size()), records(3 * v.size());
        const T one = T(1), pentagon = v.size() > 6;
        M::fillI(buffer.data(), int32_t(v.size()), v.data(), records.data(), image.data(), 0, 100, 0, 100, 101, &one,
                 M::full, 1, 0);
        EXPECT_EQ(std::vector<T>({image[50 + 101 * 100], image[50 + 101 * 99], image[90 + 101 * 60], image[89 + 101 * 59]}),
                  std::vector<T>({T(!pentagon), T(1), T(pentagon), T(0)}));
    }
    // A negative count has no edge: no scratch exists to be read.
    std::vector<T> image(4, T(5));
    const int32_t vertex[2] = {1, 1};
    M::fillI(nullptr, -2, vertex, nullptr, image.data(), 0, 1, 0, 1, 2, image.data(), M::full, 1, 4);
    M::aaFillI(nullptr, -2, vertex, nullptr, image.data(), 0, 1, 0, 1, 2, image.data(), M::full, nullptr, 1, 4);
    EXPECT_EQ(image, std::vector<T>(4, T(5)));
    // Edges 2^31 - 1 columns long, at 45 degrees (row step 1, no remainder) or level, into a 24x24 image: from a vertex
    // at column -2^31 + 21 (rows c - 10 down to the level row 40, columns 0 .. 20) and to one at 2^31 - 1 (rows -5
    // to 20 - c). Each call must step over or stop before some 2^31 columns.
    const int32_t far = INT32_MAX, quads[2][8] = {{INT32_MIN + 11, INT32_MIN + 21, 10, 20, 40, 20, 40, INT32_MIN + 21},
                                                  {20, 0, INT32_MIN + 21, far, -5, far, -5, 0}};
    for (int q = 0; q < 2; ++q) {
        std::vector<T> drawn(24 * 24, T(0)), expected = drawn;
        std::vector<int32_t> buffer(64), records(24);
        const T one = T(1);
        M::fillI(buffer.data(), 8, quads[q], records.data(), drawn.data(), 0, 23, 0, 23, 24, &one, M::full, 1, 0);
        for (int32_t c = 0; c <= 20; ++c)
            for (int32_t r = q ? 0 : std::max(0, c - 10); r <= (q ? 20 - c : 23); ++r)
                expected[c * 24 + r] = T(1);
        EXPECT_EQ(drawn, expected) << q;
    }
}

TEST(PolygonBlend, HandDerivedValues)
{
    // The single member sums in double: 1*0.2f + 2*(1 - 0.2f) = 1.7999999970 rounds to the single 1.79999995 (single
    // arithmetic would give 1.80000007).
    std::vector<float> red = {2, 2}, green = {2, 2}, blue = {2, 2};
    const float fills[3] = {1, 1, 1};
    ORNEX_FillPolygon_InterpFlt_RGB_R(red.data(), fills, 1, 0.2f, green.data(), blue.data(), 0, 0);
    EXPECT_EQ(red, (std::vector<float>{2.0f, 1.79999995f}));
    // An opacity above 1024 overshoots and wraps: (200*2048 + 100*-1024) >> 10 = 300, stored as 44; (200*768 +
    // 100*256) >> 10 = 175.
    std::vector<uint8_t> bytes = {100, 100};
    const uint8_t fill8[2] = {200, 200};
    ORNEX_FillPolygon_InterpFix_I_UI8(bytes.data(), fill8, 0, 2048, 0, 0, 1, 2);
    ORNEX_FillPolygon_InterpFix_I_UI8(bytes.data(), fill8, 1, 768, 1, 1, 1, 2);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{44, 175}));
}

// The box profile: coverage 1/2 on the edge, none from 1/2 pixel outside, full from 1/2 pixel inside, in steps of
// 1/16 pixel.
template <class O>
std::vector<O> boxTable()
{
    std::vector<O> table(49);
    for (int i = 0; i < 49; ++i) {
        const int q10 = std::clamp(512 + 64 * (i - 24), 0, 1024);
        table[i] = std::is_floating_point_v<O> ? O(q10 / 1024.0) : O(q10);
    }
    return table;
}

// One pixel's coverage written out as slowly as it is defined: every pair of each sample, every distance index,
// nothing skipped; entries 0 and 48 are none and full whatever the table holds.
template <class W>
W slowCoverage(const std::vector<int32_t> &fields, int32_t numActive, int32_t column, int32_t row,
               const std::vector<W> &table, W full)
{
    auto field = [&](int32_t f, int32_t k) { return fields[f * numActive + k]; };
    auto index = [&](int32_t k, int32_t quarter, bool lower) {
        const int32_t key = field(2, k) * 1024 + ((4 * field(6, k) + quarter * field(3, k)) * 256) / field(4, k);
        const int64_t v = std::clamp<int64_t>(int64_t(row) * 1024 - key, -(1 << 21), (1 << 21) - 1);
        const int32_t p = int32_t(v * std::clamp(field(7, k), 1, 1024) / 1024), s = lower ? -p : p;
        return std::clamp(24 + (s >= 0 ? (s + 32) / 64 : -((32 - s) / 64)), 0, 48);
    };
    auto sample = [&](int32_t quarter, int32_t skippedWhenAt) {
        std::vector<int32_t> list;
        for (int32_t k = 0; k < numActive; ++k)
            if (skippedWhenAt < 0 || field(skippedWhenAt, k) != column)
                list.push_back(k);
        W sum = W(0);
        for (size_t j = 0; j + 1 < list.size(); j += 2) {
            const int32_t upper = index(list[j], quarter, false), lower = index(list[j + 1], quarter, true);
            auto entry = [&](int32_t i) { return i == 48 ? full : table[i]; };
            const W t = upper && lower ? entry(upper) + entry(lower) - full : W(0);
            sum = t > W(0) ? sum + t : sum;
        }
        return sum < full ? sum : full;
    };
    // Columns holding a vertex (fields 0 and 1 come first) average two samples; the sums are never negative.
    if (std::none_of(fields.begin(), fields.begin() + 2 * numActive, [&](int32_t f) { return f == column; }))
        return sample(0, -1);
    return (sample(-1, 0) + sample(1, 1)) / W(2);
}

// Random polygons (crossing, touching, far outside), hard and AA, through the whole filler or, on odd trials, column
// by column through the scan-line function: hard rows behind an offset, sometimes an unpaired one; AA tables the box,
// a ramp or entries below none and above full (0 and 48 garbage, never read), some normal weights below 1 or over 1024.
TYPED_TEST(PolygonFill, PolygonsAndColumnsAgainstTheWrittenOutSweep)
{
    using M = TypeParam;
    using T = typename M::T;
    using O = typename M::O;
    using W = typename M::W;
    forEachScene<T>(11, 800, 24, 26, [](int trial, std::mt19937 &rng, Scene<T> &s) {
        const bool aa = trial % 4 >= 2, whole = trial % 2 == 0;
        // Spread 4 mixes coordinates near the image with ones far left and right of it (AA within its stated range):
        // walked here, stepped over and stopped early by the fillers.
        const int32_t spread = trial / 4 % 10 == 9 ? 4 : trial / 4 % 4, num = uniform(rng, 0, 16), offset = uniform(rng, 0, 3);
        std::vector<int32_t> v(num), buffer(8 * num + 1), records(3 * num + 1);
        const int32_t low[4] = {-130, -30, -12, -12}, high[4] = {400, 60, 28, 28};
        const bool tall = spread == 1 && aa; // some edges over 1024 rows per column: normal weight 0
        for (size_t k = 0; k < v.size(); ++k)
            v[k] = tall ? uniform(rng, k % 2 ? -3 : -2000, k % 2 ? 28 : 2000)
                 : spread < 4 || uniform(rng, 0, 1) ? uniform(rng, low[spread % 4 | spread / 4 * 2], high[spread % 4 | spread / 4 * 2])
                 : k % 2 ? uniform(rng, aa ? -24000 : -(1 << 16), aa ? 8000 : 1 << 15)
                         : uniform(rng, aa ? -(1 << 13) : -(1 << 20), aa ? 1 << 13 : 1 << 20);
        std::vector<O> table = boxTable<O>();
        for (int i = 1; i < 48 && trial % 3 != 0; ++i) {
            const int32_t q10 = trial % 3 == 1 ? i * 1024 / 48 : i < 20 ? uniform(rng, -300, 0) : uniform(rng, -300, 1300);
            table[i] = M::floating ? O(q10 / 1024.0) : O(q10);
        }
        table[0] = M::floating ? O(NAN) : O(777), table[48] = M::floating ? O(NAN) : O(-555);
        const std::vector<W> wide(table.begin(), table.end());
        const O opacity = randomOpacity<O>(rng);
        const auto &rc = s.rc;
        if (whole && aa)
            s.draw(M::aaFillI, M::aaFillRgb, buffer.data(), num, v.data(), records.data(), Dst{}, Clip{}, 24,
                   s.colour.data(), opacity, table.data());
        else if (whole)
            s.draw(M::fillI, M::fillRgb, buffer.data(), num, v.data(), records.data(), Dst{}, Clip{}, 24,
                   s.colour.data(), opacity);
        slowSweep(v, aa, [&](int32_t column, const std::vector<Edge> &active) {
            if (spread == 4 && (column < rc[2] || column > rc[3]))
                return;
            const int32_t count = int32_t(active.size());
            std::vector<int32_t> edges(offset, unwritten), fields(8 * count);
            for (const Edge &e : active)
                edges.push_back(e[2]);
            if (!aa && trial % 8 == 1)
                edges.push_back(edges.back() + uniform(rng, 0, 9));
            if (!aa && !whole)
                s.draw(M::scanI, M::scanRgb, Dst{}, column, Clip{}, 24, int32_t(edges.size()) - offset, edges.data(),
                       s.colour.data(), opacity, offset);
            if (!aa)
                return slowColumn(s, column, {edges.begin() + offset, edges.end()}, opacity);
            for (int32_t k = 0; k < count * 8; ++k)
                fields[k] = active[k % count][k / count];
            for (int32_t k = 0; !whole && k < count; ++k)
                fields[7 * count + k] = uniform(rng, 0, 5) == 0 ? std::max(0, uniform(rng, -200, 1100)) : fields[7 * count + k];
            if (!whole)
                s.draw(M::aaScanI, M::aaScanRgb, Dst{}, column, Clip{}, 24, count, fields.data(), s.colour.data(),
                       opacity, table.data(), count);
            for (int32_t row = rc[0]; row <= rc[1] && column >= rc[2] && column <= rc[3]; ++row) {
                const W cov = slowCoverage<W>(fields, count, column, row, wide, W(M::full));
                const O o = M::floating ? O(opacity * O(cov)) : O((int32_t(opacity) * int32_t(cov)) >> 10);
                if (cov != W(0))
                    s.at(row, column, [&](T old, int32_t p) { return blendFill(old, s.colour[p], o); });
            }
        });
    });
}

// Hand-derived Q10 coverages of (0,0) (4,4) (4,0) with the box table, row by row, drawn one pixel in from a border
// that must stay 0.
TEST(AAPolygonFill, HandDerivedCoverage)
{
    const std::vector<int> coverage{160, 0, 0, 0, 0, 512, 512, 0, 0, 0, 512, 1024, 512,
                                    0, 0, 512, 1024, 1024, 512, 0, 256, 512, 512, 512, 96};
    std::vector<int32_t> v{1, 1, 5, 5, 5, 1}, buffer(48), records(18);
    std::vector<double> reals(49, 0.0);
    std::vector<uint16_t> q10(49, 0);
    const double one = 1;
    const uint16_t unit = 1024;
    ORNEX_FillOnePolygon_AA_I_D(buffer.data(), 6, v.data(), records.data(), reals.data(), 1, 5, 1, 5, 7, &one, 1.0,
                                boxTable<double>().data(), 1, 0);
    ORNEX_FillOnePolygon_AA_I_UI16(buffer.data(), 6, v.data(), records.data(), q10.data(), 1, 5, 1, 5, 7, &unit, 1024,
                                   boxTable<int16_t>().data(), 1, 0);
    for (int32_t k = 0; k < 49; ++k) {
        const int32_t r = k % 7 - 1, col = k / 7 - 1;
        EXPECT_EQ(q10[k], r >= 0 && r < 5 && col >= 0 && col < 5 ? coverage[r * 5 + col] : 0) << r << "," << col;
        EXPECT_EQ(reals[k], q10[k] / 1024.0) << r << "," << col;
    }
}

} // namespace
