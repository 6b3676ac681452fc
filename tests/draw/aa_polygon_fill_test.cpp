#include "draw_support.hpp"

namespace {

using namespace drawtest;

// The box profile: coverage 1/2 on the edge, none from 1/2 pixel outside,
// full from 1/2 pixel inside, in steps of 1/16 pixel.
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

// One pixel's coverage written out as slowly as it is defined: every pair of
// each sample, every distance index, nothing skipped; entries 0 and 48 are
// none and full whatever the table holds.
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
        for (int32_t k = 0; k < numActive; ++k) {
            if (skippedWhenAt < 0 || field(skippedWhenAt, k) != column) {
                list.push_back(k);
            }
        }
        W sum = W(0);
        for (size_t j = 0; j + 1 < list.size(); j += 2) {
            const int32_t upper = index(list[j], quarter, false), lower = index(list[j + 1], quarter, true);
            if (upper != 0 && lower != 0) {
                const W t = ((upper == 48 ? full : table[upper]) + (lower == 48 ? full : table[lower])) - full;
                sum = t > W(0) ? sum + t : sum;
            }
        }
        return sum < full ? sum : full;
    };
    bool vertexColumn = false;
    for (int32_t k = 0; k < numActive; ++k) {
        vertexColumn = vertexColumn || field(0, k) == column || field(1, k) == column;
    }
    if (!vertexColumn) {
        return sample(0, -1);
    }
    const W left = sample(-1, 0), right = sample(1, 1);
    if constexpr (std::is_floating_point_v<W>) {
        return (left + right) * W(0.5);
    } else {
        return (left + right) >> 1;
    }
}

// The sweep written out: insert by crossing (the steeper descent first on a
// tie), visit each column's active list, drop edges after their last
// column, step every edge and re-sort by crossing, moving an edge up past
// every larger key.
template <class Visit>
void slowSweep(const std::vector<int32_t> &vertices, Visit visit)
{
    const auto sorted = slowEdgeTable(vertices, true);
    auto key = [](const Edge &e) { return e[2] * 1024 + (e[6] * 1024) / e[4]; };
    std::vector<Edge> active;
    for (int32_t scan = sorted.empty() ? 0 : sorted[0][0], next = 0; !sorted.empty(); ++scan) {
        for (; next < int32_t(sorted.size()) && sorted[next][0] == scan; ++next) {
            const Edge &e = sorted[next];
            auto before = [&](const Edge &a) { return key(a) > key(e) || (key(a) == key(e) && a[3] * e[4] > e[3] * a[4]); };
            if (e[1] != e[0])
                active.insert(std::find_if(active.begin(), active.end(), before), e);
        }
        if (active.empty())
            return;
        const int32_t count = int32_t(active.size());
        std::vector<int32_t> fields(8 * count);
        for (int32_t k = 0; k < count * 8; ++k)
            fields[k] = active[k % count][k / count];
        visit(scan, count, fields);
        active.erase(std::remove_if(active.begin(), active.end(), [&](const Edge &e) { return e[1] == scan; }),
                     active.end());
        std::for_each(active.begin(), active.end(), stepEdge);
        for (int32_t at = int32_t(active.size()) - 1, target = 0; at >= 1; target = 0) {
            while (target < at && key(active[target]) <= key(active[at]))
                ++target;
            if (target == at)
                --at;
            else
                std::rotate(active.begin() + target, active.begin() + at, active.begin() + at + 1);
        }
    }
}

template <class Tp, class Op, class Wp, auto fI, auto fRgb, auto sI, auto sRgb>
struct AAMember {
    using T = Tp; using O = Op; using W = Wp; // opacity and table entries, coverage sums
    static constexpr auto fillI = fI, fillRgb = fRgb, scanI = sI, scanRgb = sRgb;
    static constexpr bool floating = std::is_floating_point_v<O>;
    static constexpr O full = floating ? O(1) : O(1024);
};
#define AA_MEMBER(S, T, O, W)                                                                                          \
    AAMember<T, O, W, ORNEX_FillOnePolygon_AA_I_##S, ORNEX_FillOnePolygon_AA_RGB_##S,                                  \
             ORNEX_FillVerticalScanLine_AA_I_##S, ORNEX_FillVerticalScanLine_AA_RGB_##S>
using AAMembers = ::testing::Types<AA_MEMBER(D, double, double, double), AA_MEMBER(R, float, float, float),
                                   AA_MEMBER(Bool, uint8_t, int16_t, int32_t), AA_MEMBER(UI8, uint8_t, int16_t, int32_t),
                                   AA_MEMBER(I8, int8_t, int16_t, int32_t), AA_MEMBER(UI16, uint16_t, int16_t, int32_t),
                                   AA_MEMBER(I16, int16_t, int16_t, int32_t)>;
template <class M>
class AAPolygonFill : public ::testing::Test {};
TYPED_TEST_SUITE(AAPolygonFill, AAMembers);

// Random polygons (crossing themselves, touching, vertices far outside) with
// the box, a ramp or arbitrary entries below none and above full (entries 0
// and 48 garbage, never to be read), through the whole filler or column by
// column through the scan-line function with some normal weights below 1 or
// above 1024; the pixel blended once with opacity * coverage.
TYPED_TEST(AAPolygonFill, PolygonsAndColumnsAgainstTheWrittenOutCoverage)
{
    using M = TypeParam;
    using T = typename M::T;
    using O = typename M::O;
    using W = typename M::W;
    std::mt19937 rng(12);
    for (int trial = 0; trial < 240; ++trial) {
        std::vector<int32_t> v(uniform(rng, 0, 16));
        for (int32_t &x : v)
            x = trial % 4 == 0 ? uniform(rng, -130, 400) : uniform(rng, -10, 30);
        std::vector<O> table = boxTable<O>();
        for (int i = 1; i < 48 && trial % 3 != 0; ++i) {
            const int32_t q10 = trial % 3 == 1 ? i * 1024 / 48 : i < 20 ? uniform(rng, -300, 0) : uniform(rng, -300, 1300);
            table[i] = M::floating ? O(q10 / 1024.0) : O(q10);
        }
        table[0] = M::floating ? O(NAN) : O(777), table[48] = M::floating ? O(NAN) : O(-555);
        const std::vector<W> wide(table.begin(), table.end());
        const O opacity = randomOpacity<O>(rng);
        Scene<T> s(rng, 24, 26, trial % 8 == 0 ? 0 : 1 + trial % 3);
        const auto &rc = s.rc;
        const int32_t num = int32_t(v.size());
        std::vector<int32_t> buffer(8 * num + 1), records(3 * num + 1);
        if (trial % 2 == 0) {
            M::fillI(buffer.data(), num, v.data(), records.data(), s.dst(), rc[0], rc[1], rc[2], rc[3], 24,
                     s.colour.data(), opacity, table.data(), s.numPlanes, s.image.stride);
            M::fillRgb(buffer.data(), num, v.data(), records.data(), s.red(), s.green(), s.blue(),
                       rc[0], rc[1], rc[2], rc[3], 24, s.colour.data(), opacity, table.data());
        }
        slowSweep(v, [&](int32_t column, int32_t count, std::vector<int32_t> fields) {
            for (int32_t k = 0; trial % 2 == 1 && k < count; ++k)
                fields[7 * count + k] = uniform(rng, 0, 5) == 0 ? uniform(rng, 0, 1100) : fields[7 * count + k];
            if (trial % 2 == 1) {
                M::scanI(s.dst(), column, rc[0], rc[1], rc[2], rc[3], 24, count, fields.data(),
                         s.colour.data(), opacity, table.data(), count, s.numPlanes, s.image.stride);
                M::scanRgb(s.red(), s.green(), s.blue(), column, rc[0], rc[1], rc[2], rc[3], 24,
                           count, fields.data(), s.colour.data(), opacity, table.data(), count);
            }
            for (int32_t row = rc[0]; row <= rc[1] && column >= rc[2] && column <= rc[3]; ++row) {
                const W cov = slowCoverage<W>(fields, count, column, row, wide, W(M::full));
                const O o = M::floating ? O(opacity * O(cov)) : O((int32_t(opacity) * int32_t(cov)) >> 10);
                if (cov != W(0))
                    s.at(row, column, [&](T old, int32_t p) { return blendFill(old, s.colour[p], o); });
            }
        });
        ASSERT_TRUE(s.matches()) << trial;
    }
}

// Hand-derived Q10 coverages with the box table, drawn inside a border that
// must stay 0 (the rectangle is the inner area).
TEST(AAPolygonFillMaps, HandDerivedCoverage)
{
    const struct {
        std::vector<int32_t> vertices;
        int32_t rows, cols;
        std::vector<int> coverage; // row by row
    } cases[] = {
        {{0, 0, 4, 4, 4, 0}, 5, 5, {160, 0, 0, 0, 0, 512, 512, 0, 0, 0, 512, 1024, 512, 0, 0, 512, 1024, 1024, 512, 0,
                                    256, 512, 512, 512, 96}},
        // Two spans meet on row 2: each gives 512 there, the sum is blended once.
        {{1, 0, 1, 4, 2, 4, 2, 0, 2, 4, 3, 4, 3, 0}, 4, 5,
         {0, 0, 0, 0, 0, 256, 512, 512, 512, 256, 512, 1024, 1024, 1024, 512, 256, 512, 512, 512, 256}},
        // The diagonals cross in the middle of column 2, which sees no width.
        {{0, 0, 4, 4, 0, 4, 4, 0}, 5, 5, {160, 0, 0, 0, 160, 512, 512, 0, 512, 512, 512, 1024, 0, 1024, 512, 512, 512,
                                          0, 512, 512, 160, 0, 0, 0, 160}},
        {{2, 0, 3, 8, 2, 8}, 4, 9, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 128, 256, 384, 512, 512, 512,
                                    512, 256, 0, 0, 0, 0, 0, 128, 256, 384, 256}},
        {{-3, -3, -3, 2, 2, 2, 2, -3}, 3, 4, {1024, 1024, 512, 0, 1024, 1024, 512, 0, 512, 512, 256, 0}},
    };
    for (const auto &c : cases) {
        const int32_t rows = c.rows + 2, cols = c.cols + 2;
        std::vector<int32_t> v = c.vertices, buffer(8 * v.size()), records(3 * v.size());
        std::for_each(v.begin(), v.end(), [](int32_t &x) { ++x; });
        std::vector<double> reals(rows * cols, 0.0);
        std::vector<uint16_t> q10(rows * cols, 0);
        const double one = 1;
        const uint16_t unit = 1024;
        ORNEX_FillOnePolygon_AA_I_D(buffer.data(), int32_t(v.size()), v.data(), records.data(), reals.data(), 1, c.rows,
                                    1, c.cols, rows, &one, 1.0, boxTable<double>().data(), 1, 0);
        ORNEX_FillOnePolygon_AA_I_UI16(buffer.data(), int32_t(v.size()), v.data(), records.data(), q10.data(), 1,
                                       c.rows, 1, c.cols, rows, &unit, 1024, boxTable<int16_t>().data(), 1, 0);
        for (int32_t k = 0; k < rows * cols; ++k) {
            const int32_t r = k % rows - 1, col = k / rows - 1;
            const bool inside = r >= 0 && r < c.rows && col >= 0 && col < c.cols;
            EXPECT_EQ(q10[k], inside ? c.coverage[r * c.cols + col] : 0) << r << "," << col;
            EXPECT_EQ(reals[k], q10[k] / 1024.0) << r << "," << col;
        }
    }
}

TEST(AAPolygonFillMaps, DistanceIndicesOfOnePair)
{
    // Fields of edge k at f*2 + k: an upper edge x = 2, e = 3, L = 10, d = 4,
    // weight trunc(10240/sqrt(116)) = 950, and a level lower edge at row 9;
    // both from column 0 to 10.
    int32_t active[16] = {0, 0, 10, 10, 2, 9, 4, 0, 10, 10, 0, 0, 3, 0, 950, 1024};
    auto table = boxTable<int16_t>();
    table[21] = 321; // an odd entry: the halving truncates
    auto coverageAt = [&](int32_t column) {
        std::vector<uint16_t> image(11 * 12, 0);
        const uint16_t fill = 1024;
        ORNEX_FillVerticalScanLine_AA_I_UI16(image.data(), column, 0, 11, 0, 10, 12, 2, active, &fill, 1024,
                                             table.data(), 2, 1, 0);
        return image[column * 12 + 2];
    };
    // K0 = 2355, p = -284, index 20; the right sample only at column 0: K+1 =
    // 2457, index 18, halved; the left only at 10: K-1 = 2252, index 21, 321
    // halved.
    EXPECT_EQ(std::vector<int>({coverageAt(5), coverageAt(0), coverageAt(10)}), std::vector<int>({256, 64, 160}));
    // x = 2, e = 1, L = 32, weight 1024: K0 = 2080, row 2 lies 32/1024 above
    // it, half an index step: -0.5 rounds to -1, index 23; weight 0 counts
    // as 1: 32/1024 of a pixel is index 24.
    active[6] = 0, active[8] = 32, active[12] = 1, active[14] = 1024;
    EXPECT_EQ(coverageAt(5), 448);
    active[14] = 0;
    EXPECT_EQ(coverageAt(5), 512);
    // e = -491, L = 1024, weight 1000: row 2 lies 491/1024 below the
    // crossing, p = trunc(479.49) = 479, just short of full: index 31; and
    // 491/1024 above: p = -479, index 17.
    active[8] = 1024, active[12] = -491, active[14] = 1000;
    EXPECT_EQ(coverageAt(5), 960);
    active[12] = 491;
    EXPECT_EQ(coverageAt(5), 64);
}

} // namespace
