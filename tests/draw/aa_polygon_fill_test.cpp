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
// column, step every edge by its error term and re-sort by crossing, moving
// an edge up past every larger key.
template <class Visit>
void slowSweep(const std::vector<int32_t> &vertices, Visit visit)
{
    const int32_t n = int32_t(vertices.size() / 2);
    std::vector<int32_t> work(8 * n), sorted(8 * n), records(6 * n), offsets(8);
    for (int32_t f = 0; f < 8; ++f) {
        offsets[f] = f * n;
    }
    ORNEX_CreateEdgesTable(vertices.data(), int32_t(vertices.size()), work.data(), sorted.data(), records.data(),
                           offsets.data(), 1);
    using Edge = std::array<int32_t, 8>;
    auto key = [](const Edge &e) { return e[2] * 1024 + (e[6] * 1024) / e[4]; };
    std::vector<Edge> active;
    for (int32_t scan = n ? sorted[0] : 0, next = 0; n; ++scan) {
        for (; next < n && sorted[next] == scan; ++next) {
            Edge e;
            for (int32_t f = 0; f < 8; ++f) {
                e[f] = sorted[f * n + next];
            }
            auto before = [&](const Edge &a) {
                return key(a) > key(e) || (key(a) == key(e) && a[3] * e[4] > e[3] * a[4]);
            };
            if (e[1] != e[0]) {
                active.insert(std::find_if(active.begin(), active.end(), before), e);
            }
        }
        if (active.empty()) {
            return;
        }
        const int32_t count = int32_t(active.size());
        std::vector<int32_t> fields(8 * count);
        for (int32_t k = 0; k < count * 8; ++k) {
            fields[k] = active[k % count][k / count];
        }
        visit(scan, count, fields);
        active.erase(std::remove_if(active.begin(), active.end(), [&](const Edge &e) { return e[1] == scan; }),
                     active.end());
        for (Edge &e : active) {
            const int32_t d = e[3], length = e[4], step = e[5];
            if (d > 0) {
                e[6] += d - step * length, e[2] += step;
                if (2 * e[6] >= length) {
                    e[2] += 1, e[6] -= length;
                }
            } else {
                e[6] += step * length + d, e[2] -= step;
                if (2 * e[6] < -length) {
                    e[2] -= 1, e[6] += length;
                }
            }
        }
        for (int32_t at = int32_t(active.size()) - 1; at >= 1;) {
            int32_t target = 0;
            while (target < at && key(active[target]) <= key(active[at])) {
                ++target;
            }
            if (target == at) {
                --at;
            } else {
                std::rotate(active.begin() + target, active.begin() + at, active.begin() + at + 1);
            }
        }
    }
}

template <class Tp, class Op, class Wp, auto fI, auto fRgb, auto sI, auto sRgb>
struct AAMember {
    using T = Tp;
    using O = Op; // opacity and table entry
    using W = Wp; // coverage sums
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
// above 1024; every member, intensity and RGB.
TYPED_TEST(AAPolygonFill, PolygonsAndColumnsAgainstTheWrittenOutCoverage)
{
    using M = TypeParam;
    using T = typename M::T;
    using O = typename M::O;
    using W = typename M::W;
    std::mt19937 rng(12);
    for (int trial = 0; trial < 240; ++trial) {
        const int32_t n = trial % 8 == 0 ? 0 : 1 + trial % 3, far = trial % 4 == 0 ? 400 : 30;
        std::vector<int32_t> vertices(uniform(rng, 0, 16));
        for (int32_t &v : vertices) {
            v = uniform(rng, -far / 3, far);
        }
        std::vector<O> table = boxTable<O>();
        for (int i = 1; i < 48 && trial % 3 != 0; ++i) {
            const int32_t q10 = trial % 3 == 1 ? i * 1024 / 48 : i < 20 ? uniform(rng, -300, 0) : uniform(rng, -300, 1300);
            table[i] = M::floating ? O(q10 / 1024.0) : O(q10);
        }
        table[0] = M::floating ? O(NAN) : O(777), table[48] = M::floating ? O(NAN) : O(-555);
        const std::vector<W> wide(table.begin(), table.end());
        const int32_t pick = uniform(rng, 0, 2);
        const O opacity = pick == 0 ? O(0) : pick == 1 ? M::full : O(M::full * O(uniform(rng, 1, 63)) / O(64));
        Expected<T> want{Planes<T>(24, 26, 3, rng), Planes<T>(24, 26, 3, rng), n, randomRect(rng, 24, 26)};
        Planes<T> image = want.intensity, rgb = want.rgb;
        const T fill[3] = {randomValue<T>(rng), randomValue<T>(rng), randomValue<T>(rng)};
        const auto &rc = want.rect;
        const bool byColumn = trial % 2 == 1;
        if (!byColumn) {
            const int32_t num = int32_t(vertices.size()), edges = num / 2;
            std::vector<int32_t> buffer(16 * edges + 1), records(6 * edges + 1);
            M::fillI(buffer.data(), num, vertices.data(), records.data(), image.plane(0), rc[0], rc[1], rc[2], rc[3],
                     24, fill, opacity, table.data(), n, image.stride);
            M::fillRgb(buffer.data(), num, vertices.data(), records.data(), rgb.plane(0), rgb.plane(1), rgb.plane(2),
                       rc[0], rc[1], rc[2], rc[3], 24, fill, opacity, table.data());
        }
        slowSweep(vertices, [&](int32_t column, int32_t count, std::vector<int32_t> fields) {
            if (byColumn) {
                for (int32_t k = 0; k < count; ++k) {
                    fields[7 * count + k] = uniform(rng, 0, 5) == 0 ? uniform(rng, 0, 1100) : fields[7 * count + k];
                }
                M::scanI(image.plane(0), column, rc[0], rc[1], rc[2], rc[3], 24, count, fields.data(), fill, opacity,
                         table.data(), count, n, image.stride);
                M::scanRgb(rgb.plane(0), rgb.plane(1), rgb.plane(2), column, rc[0], rc[1], rc[2], rc[3], 24, count,
                           fields.data(), fill, opacity, table.data(), count);
            }
            for (int32_t row = rc[0]; row <= rc[1] && column >= rc[2] && column <= rc[3]; ++row) {
                const W cov = slowCoverage<W>(fields, count, column, row, wide, W(M::full));
                const O o = M::floating ? O(opacity * O(cov)) : O((int32_t(opacity) * int32_t(cov)) >> 10);
                if (cov != W(0)) {
                    want.at(row, column, [&](T old, int32_t p) { return blendFill(old, fill[p], o); });
                }
            }
        });
        ASSERT_EQ(image.buf, want.intensity.buf) << trial;
        ASSERT_EQ(rgb.buf, want.rgb.buf) << trial;
    }
}

// Hand-derived Q10 coverages with the box table, drawn inside a border that
// must stay 0 (the rectangle is the inner area).
TEST(AAPolygonFillMaps, HandDerivedCoverage)
{
    const struct {
        std::vector<int32_t> vertices;
        int32_t rows, cols;
        std::vector<std::vector<int>> coverage;
    } cases[] = {
        {{1, 1, 1, 6, 4, 6, 4, 1}, 6, 8,
         {{0, 0, 0, 0, 0, 0, 0, 0}, {0, 256, 512, 512, 512, 512, 256, 0}, {0, 512, 1024, 1024, 1024, 1024, 512, 0},
          {0, 512, 1024, 1024, 1024, 1024, 512, 0}, {0, 256, 512, 512, 512, 512, 256, 0}, {0, 0, 0, 0, 0, 0, 0, 0}}},
        {{0, 0, 4, 4, 4, 0}, 5, 5,
         {{160, 0, 0, 0, 0}, {512, 512, 0, 0, 0}, {512, 1024, 512, 0, 0}, {512, 1024, 1024, 512, 0},
          {256, 512, 512, 512, 96}}},
        // Two spans meet on row 2: each gives 512 there, the sum is blended once.
        {{1, 0, 1, 4, 2, 4, 2, 0, 2, 4, 3, 4, 3, 0}, 4, 5,
         {{0, 0, 0, 0, 0}, {256, 512, 512, 512, 256}, {512, 1024, 1024, 1024, 512}, {256, 512, 512, 512, 256}}},
        // The diagonals cross in the middle of column 2, which sees no width.
        {{0, 0, 4, 4, 0, 4, 4, 0}, 5, 5,
         {{160, 0, 0, 0, 160}, {512, 512, 0, 512, 512}, {512, 1024, 0, 1024, 512}, {512, 512, 0, 512, 512},
          {160, 0, 0, 0, 160}}},
        {{2, 0, 3, 8, 2, 8}, 5, 9,
         {{0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 128, 256, 384, 512, 512, 512, 512, 256},
          {0, 0, 0, 0, 0, 128, 256, 384, 256}, {0, 0, 0, 0, 0, 0, 0, 0, 0}}},
        {{-3, -3, -3, 2, 2, 2, 2, -3}, 3, 4, {{1024, 1024, 512, 0}, {1024, 1024, 512, 0}, {512, 512, 256, 0}}},
    };
    for (const auto &c : cases) {
        const int32_t rows = c.rows + 2, cols = c.cols + 2;
        std::vector<int32_t> v = c.vertices, buffer(8 * v.size()), records(3 * v.size());
        for (int32_t &x : v) {
            ++x;
        }
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
            EXPECT_EQ(q10[k], inside ? c.coverage[r][col] : 0) << r << "," << col;
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
    EXPECT_EQ(coverageAt(5), 256);  // K0 = 2355, p = -284, index 20
    EXPECT_EQ(coverageAt(0), 64);   // right sample only: K+1 = 2457, index 18, halved
    EXPECT_EQ(coverageAt(10), 160); // left sample only: K-1 = 2252, index 21, 321 halved
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
