#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <type_traits>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T, class O>
using FillI = int32_t (*)(int32_t *, int32_t, const int32_t *, int32_t *, T *, int32_t, int32_t, int32_t, int32_t,
                          int32_t, const T *, O, const O *, int32_t, int32_t);
template <class T, class O>
using FillRgb = int32_t (*)(int32_t *, int32_t, const int32_t *, int32_t *, T *, T *, T *, int32_t, int32_t, int32_t,
                            int32_t, int32_t, const T *, O, const O *);

template <class Pixel, class Opacity, FillI<Pixel, Opacity> intensity, FillRgb<Pixel, Opacity> rgb>
struct Member {
    using T = Pixel;
    using O = Opacity;
    static constexpr bool floating = std::is_floating_point_v<Pixel>;
    static constexpr FillI<Pixel, Opacity> fillIntensity = intensity;
    static constexpr FillRgb<Pixel, Opacity> fillRgb = rgb;
};

using Members = ::testing::Types<
    Member<double, double, ORNEX_FillOnePolygon_AA_I_D, ORNEX_FillOnePolygon_AA_RGB_D>,
    Member<float, float, ORNEX_FillOnePolygon_AA_I_R, ORNEX_FillOnePolygon_AA_RGB_R>,
    Member<uint8_t, int16_t, ORNEX_FillOnePolygon_AA_I_Bool, ORNEX_FillOnePolygon_AA_RGB_Bool>,
    Member<uint8_t, int16_t, ORNEX_FillOnePolygon_AA_I_UI8, ORNEX_FillOnePolygon_AA_RGB_UI8>,
    Member<int8_t, int16_t, ORNEX_FillOnePolygon_AA_I_I8, ORNEX_FillOnePolygon_AA_RGB_I8>,
    Member<uint16_t, int16_t, ORNEX_FillOnePolygon_AA_I_UI16, ORNEX_FillOnePolygon_AA_RGB_UI16>,
    Member<int16_t, int16_t, ORNEX_FillOnePolygon_AA_I_I16, ORNEX_FillOnePolygon_AA_RGB_I16>>;

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

template <class T, class O, class Fill>
void fillWith(Fill fill, std::vector<T> &image, int32_t numRows, const std::vector<int32_t> &vertices, T value,
              O opacity, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax,
              const std::vector<O> &table = boxTable<O>())
{
    const size_t n = vertices.size() / 2;
    std::vector<int32_t> edges(16 * n + 1), records(6 * n + 1);
    fill(edges.data(), int32_t(vertices.size()), vertices.data(), records.data(), image.data(), rowMin, rowMax, colMin,
         colMax, numRows, &value, opacity, table.data(), 1, int32_t(image.size()));
}

// Hand-derived Q10 coverages of small polygons with the box table, drawn one
// pixel in from a border of sentinels.
struct Case {
    const char *name;
    std::vector<int32_t> vertices;
    int32_t rows, cols;
    std::vector<std::vector<int>> coverage;
};

const Case cases[] = {
    {"rectangle", {1, 1, 1, 6, 4, 6, 4, 1}, 6, 8,
     {{0, 0, 0, 0, 0, 0, 0, 0},
      {0, 256, 512, 512, 512, 512, 256, 0},
      {0, 512, 1024, 1024, 1024, 1024, 512, 0},
      {0, 512, 1024, 1024, 1024, 1024, 512, 0},
      {0, 256, 512, 512, 512, 512, 256, 0},
      {0, 0, 0, 0, 0, 0, 0, 0}}},
    {"triangle", {0, 0, 4, 4, 4, 0}, 5, 5,
     {{160, 0, 0, 0, 0}, {512, 512, 0, 0, 0}, {512, 1024, 512, 0, 0}, {512, 1024, 1024, 512, 0},
      {256, 512, 512, 512, 96}}},
    // Two spans meet on row 2: each gives 512 there and the sum is blended once.
    {"two spans", {1, 0, 1, 4, 2, 4, 2, 0, 2, 4, 3, 4, 3, 0}, 4, 5,
     {{0, 0, 0, 0, 0},
      {256, 512, 512, 512, 256},
      {512, 1024, 1024, 1024, 512},
      {256, 512, 512, 512, 256}}},
    {"vertices outside", {-3, -3, -3, 2, 2, 2, 2, -3}, 5, 5,
     {{1024, 1024, 512, 0, 0}, {1024, 1024, 512, 0, 0}, {512, 512, 256, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}}},
    // The diagonals cross in the middle of column 2, which sees no width.
    {"bow tie", {0, 0, 4, 4, 0, 4, 4, 0}, 5, 5,
     {{160, 0, 0, 0, 160}, {512, 512, 0, 512, 512}, {512, 1024, 0, 1024, 512}, {512, 512, 0, 512, 512},
      {160, 0, 0, 0, 160}}},
    {"sliver", {2, 0, 3, 8, 2, 8}, 5, 9,
     {{0, 0, 0, 0, 0, 0, 0, 0, 0},
      {0, 0, 0, 0, 0, 0, 0, 0, 0},
      {0, 128, 256, 384, 512, 512, 512, 512, 256},
      {0, 0, 0, 0, 0, 128, 256, 384, 256},
      {0, 0, 0, 0, 0, 0, 0, 0, 0}}},
    {"one vertex", {3, 3}, 5, 5, std::vector<std::vector<int>>(5, std::vector<int>(5, 0))},
    {"two vertices", {1, 0, 3, 5}, 5, 6, std::vector<std::vector<int>>(5, std::vector<int>(6, 0))},
    {"one column", {0, 2, 4, 2, 2, 2}, 5, 5, std::vector<std::vector<int>>(5, std::vector<int>(5, 0))},
};

template <class M>
class AAPolygonFill : public ::testing::Test {};
TYPED_TEST_SUITE(AAPolygonFill, Members);

// A fill of 64 (or 1.0) at full opacity on 0 shows coverage/16 (or /1024)
// exactly, in both planes of an intensity image and in the three RGB planes.
TYPED_TEST(AAPolygonFill, HandDerivedCoverageMaps)
{
    using M = TypeParam;
    using T = typename M::T;
    using O = typename M::O;
    const T probe = T(M::floating ? 1 : 64), sentinel = T(3);
    for (const Case &c : cases) {
        const int32_t rows = c.rows + 2, cols = c.cols + 2, plane = rows * cols;
        std::vector<T> intensity(2 * plane + 1, sentinel), rgb(3 * plane, sentinel);
        for (int32_t col = 1; col <= c.cols; ++col) {
            for (int32_t row = 1; row <= c.rows; ++row) {
                for (int32_t p = 0; p < 3; ++p) {
                    rgb[p * plane + col * rows + row] = T(0);
                    if (p < 2) {
                        intensity[p * plane + col * rows + row] = T(0);
                    }
                }
            }
        }
        std::vector<int32_t> shifted = c.vertices;
        for (int32_t &v : shifted) {
            ++v;
        }
        const size_t n = shifted.size() / 2;
        std::vector<int32_t> edges(16 * n + 1), records(6 * n + 1);
        const T fills[3] = {probe, probe, probe};
        const O opaque = M::floating ? O(1) : O(1024);
        const auto table = boxTable<O>();
        M::fillIntensity(edges.data(), int32_t(shifted.size()), shifted.data(), records.data(), intensity.data(), 1,
                         c.rows, 1, c.cols, rows, fills, opaque, table.data(), 2, plane);
        M::fillRgb(edges.data(), int32_t(shifted.size()), shifted.data(), records.data(), rgb.data(),
                   rgb.data() + plane, rgb.data() + 2 * plane, 1, c.rows, 1, c.cols, rows, fills, opaque,
                   table.data());
        for (int32_t col = 0; col < cols; ++col) {
            for (int32_t row = 0; row < rows; ++row) {
                const bool inside = row >= 1 && row <= c.rows && col >= 1 && col <= c.cols;
                const int coverage = inside ? c.coverage[row - 1][col - 1] : 0;
                const T want = !inside ? sentinel : (M::floating ? T(coverage / 1024.0) : T(coverage / 16));
                for (int32_t p = 0; p < 3; ++p) {
                    EXPECT_EQ(rgb[p * plane + col * rows + row], want) << c.name << " " << row - 1 << "," << col - 1;
                    if (p < 2) {
                        EXPECT_EQ(intensity[p * plane + col * rows + row], want)
                            << c.name << " " << row - 1 << "," << col - 1;
                    }
                }
            }
        }
        EXPECT_EQ(intensity.back(), sentinel);
    }
}

TEST(AAPolygonFillBlend, OpacityScaledByCoverageAndStoredTruncated)
{
    const std::vector<int32_t> rectangle = {1, 1, 1, 6, 4, 6, 4, 1};
    const int32_t half = 1 + 2 * 6, quarter = 1 + 1 * 6; // (1, 2) and (1, 1) of a 6-row image
    std::vector<uint8_t> bytes(48, 0);
    fillWith(ORNEX_FillOnePolygon_AA_I_UI8, bytes, 6, rectangle, uint8_t(200), int16_t(700), 0, 5, 0, 7);
    EXPECT_EQ(bytes[half], 68); // opacity (700*512)>>10 = 350: (200*350)>>10
    std::vector<int8_t> signedBytes(48, 20);
    fillWith(ORNEX_FillOnePolygon_AA_I_I8, signedBytes, 6, rectangle, int8_t(-100), int16_t(1024), 0, 5, 0, 7);
    EXPECT_EQ(signedBytes[half], -40); // (-51200 + 10240) >> 10
    std::vector<float> singles(48, 0.f);
    fillWith(ORNEX_FillOnePolygon_AA_I_R, singles, 6, rectangle, 1.f, 0.5f, 0, 5, 0, 7);
    EXPECT_EQ(singles[quarter], 0.125f);
    std::vector<uint8_t> logical(48, 0);
    fillWith(ORNEX_FillOnePolygon_AA_I_Bool, logical, 6, rectangle, uint8_t(1), int16_t(1024), 0, 5, 0, 7);
    EXPECT_EQ(logical[half], 0); // half covered stays false
    fillWith(ORNEX_FillOnePolygon_AA_I_Bool, logical, 6, rectangle, uint8_t(255), int16_t(1024), 0, 5, 0, 7);
    EXPECT_EQ(logical[half], 127);
    std::vector<uint16_t> untouched(48, 77);
    fillWith(ORNEX_FillOnePolygon_AA_I_UI16, untouched, 6, rectangle, uint16_t(9000), int16_t(0), 0, 5, 0, 7);
    const uint16_t fill = 9000;
    ORNEX_FillOnePolygon_AA_I_UI16(nullptr, -2, rectangle.data(), nullptr, untouched.data(), 0, 5, 0, 7, 6, &fill,
                                   1024, boxTable<int16_t>().data(), 1, 48);
    EXPECT_EQ(untouched, std::vector<uint16_t>(48, 77));
}

TEST(AAPolygonFillBlend, EndEntriesOfTheTableAreNeverRead)
{
    const std::vector<int32_t> triangle = {0, 0, 4, 4, 4, 0};
    auto reals = boxTable<double>();
    reals[0] = std::nan("");
    reals[48] = std::nan("");
    auto q10 = boxTable<int16_t>();
    q10[0] = 999;
    q10[48] = -999;
    std::vector<double> plain(30, 0.0), odd(30, 0.0);
    fillWith(ORNEX_FillOnePolygon_AA_I_D, plain, 5, triangle, 1.0, 1.0, 0, 4, 0, 5);
    fillWith(ORNEX_FillOnePolygon_AA_I_D, odd, 5, triangle, 1.0, 1.0, 0, 4, 0, 5, reals);
    EXPECT_EQ(plain, odd);
    std::vector<uint16_t> plainQ10(30, 0), oddQ10(30, 0);
    fillWith(ORNEX_FillOnePolygon_AA_I_UI16, plainQ10, 5, triangle, uint16_t(1024), int16_t(1024), 0, 4, 0, 5);
    fillWith(ORNEX_FillOnePolygon_AA_I_UI16, oddQ10, 5, triangle, uint16_t(1024), int16_t(1024), 0, 4, 0, 5, q10);
    EXPECT_EQ(plainQ10, oddQ10);
}

// A profile that moves edges half a pixel outward makes the two spans of
// the meeting case overlap (the sum is capped at full); one that moves them
// inward leaves nothing of a sliver (a pair never takes coverage away).
TEST(AAPolygonFillBlend, OtherProfilesCapAndFloorTheSpans)
{
    std::vector<int16_t> outward(49), inward(49);
    for (int i = 0; i < 49; ++i) {
        outward[i] = int16_t(std::clamp(1024 + 64 * (i - 24), 0, 1024));
        inward[i] = int16_t(std::clamp(64 * (i - 24), 0, 1024));
    }
    std::vector<uint16_t> spans(25, 0), sliver(5 * 9, 0);
    fillWith(ORNEX_FillOnePolygon_AA_I_UI16, spans, 5, {1, 0, 1, 4, 2, 4, 2, 0, 2, 4, 3, 4, 3, 0}, uint16_t(1024),
             int16_t(1024), 0, 4, 0, 4, outward);
    for (int32_t c = 1; c <= 3; ++c) {
        EXPECT_EQ(spans[c * 5 + 2], 1024) << c;
    }
    fillWith(ORNEX_FillOnePolygon_AA_I_UI16, sliver, 5, {2, 0, 3, 8, 2, 8}, uint16_t(1024), int16_t(1024), 0, 4, 0, 8,
             inward);
    EXPECT_EQ(sliver, std::vector<uint16_t>(5 * 9, 0));
}

TEST(AAPolygonFillScanLine, DistanceIndicesOfOnePair)
{
    // Fields of edge k at f*2 + k: an upper edge x = 2, e = 3, L = 10,
    // d = 4, weight trunc(10240/sqrt(116)) = 950, and a level lower edge at
    // row 9; both from column 0 to 10.
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
    // Upper edge x = 2, e = 1, L = 32, weight 1024: K0 = 2080, so row 2 lies
    // 32/1024 above it, half an index step: -0.5 rounds to -1, index 23.
    active[4] = 2, active[6] = 0, active[8] = 32, active[12] = 1, active[14] = 1024;
    EXPECT_EQ(coverageAt(5), 448);
    active[14] = 0; // weight 0 counts as 1: 32/1024 of a pixel is index 24
    EXPECT_EQ(coverageAt(5), 512);
    // x = 2, e = -491, L = 1024, weight 1000: K0 = 1557, so row 2 lies 491/1024
    // below the crossing, p = trunc(479.49) = 479 just short of full: index 31.
    active[4] = 2, active[8] = 1024, active[12] = -491, active[14] = 1000;
    EXPECT_EQ(coverageAt(5), 960);
    active[12] = 491; // 491/1024 above: p = trunc(-479.49) = -479, index 17
    EXPECT_EQ(coverageAt(5), 64);
}

// One pixel's coverage written out as slowly as it is defined: every pair of
// each sample, every distance index, nothing skipped.
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

// Random active lists (in order of crossing, some edges starting or ending
// at the column, steep ones with weights below 1) and random tables: the
// box, a ramp over the whole range, and arbitrary entries below zero and
// above full.
TEST(AAPolygonFillScanLine, RandomColumnsAgainstTheRowByRowDefinition)
{
    std::mt19937 random(11);
    auto uniform = [&](int32_t low, int32_t high) { return std::uniform_int_distribution<int32_t>(low, high)(random); };
    const int32_t numRows = 60, column = 20;
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t numActive = uniform(2, 9);
        std::vector<std::array<int32_t, 9>> edges(numActive); // eight fields, then the key
        for (auto &e : edges) {
            const int32_t start = column - (uniform(0, 3) == 0 ? 0 : uniform(1, 30));
            const int32_t end = start == column ? column + uniform(1, 30) : column + uniform(0, 30) * (uniform(0, 2) != 0);
            const int32_t length = end - start, delta = uniform(-40, 40) * (uniform(0, 5) == 0 ? 40 : 1);
            const int32_t error = uniform(-length / 2, (length - 1) / 2);
            const int32_t weight = uniform(0, 7) == 0 ? uniform(0, 1100)
                                                      : int32_t(1024.0 * length / std::sqrt(double(delta) * delta +
                                                                                             double(length) * length));
            e = {start, end == start ? end + 1 : end, uniform(5, 55), delta, length, 0, error, weight, 0};
            e[4] = e[1] - e[0];
            e[8] = e[2] * 1024 + (e[6] * 1024) / e[4];
        }
        std::stable_sort(edges.begin(), edges.end(), [](const auto &a, const auto &b) { return a[8] < b[8]; });
        std::vector<int32_t> fields(8 * numActive);
        for (int32_t k = 0; k < numActive; ++k) {
            for (int32_t f = 0; f < 8; ++f) {
                fields[f * numActive + k] = edges[k][f];
            }
        }
        std::vector<int16_t> q10 = boxTable<int16_t>();
        std::vector<double> reals = boxTable<double>();
        for (int i = 1; i < 48; ++i) {
            if (trial % 3 == 1) {
                q10[i] = int16_t(i * 1024 / 48);
            } else if (trial % 3 == 2) {
                q10[i] = int16_t(i < 20 ? uniform(-300, 0) : uniform(-300, 1300));
            }
            reals[i] = trial % 3 == 0 ? reals[i] : q10[i] / 1024.0;
        }
        std::vector<uint16_t> fixedImage((column + 1) * numRows, 0);
        std::vector<double> realImage((column + 1) * numRows, 0.0);
        const uint16_t one = 1024;
        const double unit = 1.0;
        ORNEX_FillVerticalScanLine_AA_I_UI16(fixedImage.data(), column, 0, numRows - 1, 0, column, numRows, numActive,
                                             fields.data(), &one, 1024, q10.data(), numActive, 1, 0);
        ORNEX_FillVerticalScanLine_AA_I_D(realImage.data(), column, 0, numRows - 1, 0, column, numRows, numActive,
                                          fields.data(), &unit, 1.0, reals.data(), numActive, 1, 0);
        std::vector<int32_t> q10Wide(q10.begin(), q10.end());
        for (int32_t row = 0; row < numRows; ++row) {
            ASSERT_EQ(fixedImage[column * numRows + row], slowCoverage<int32_t>(fields, numActive, column, row, q10Wide, 1024))
                << trial << " row " << row;
            ASSERT_EQ(realImage[column * numRows + row], slowCoverage<double>(fields, numActive, column, row, reals, 1.0))
                << trial << " row " << row;
        }
    }
}

// The sweep written out: insert by crossing (the steeper descent first on a
// tie), fill each column through the exported scan-line function, drop
// edges after their last column, step every edge by its error term and
// re-sort by crossing, moving an edge up past every larger key.
void slowSweep(const std::vector<int32_t> &vertices, std::vector<double> &image, int32_t side,
               const std::vector<double> &table)
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
    const double one = 1.0;
    for (int32_t scan = sorted[0], next = 0;; ++scan) {
        for (; next < n && sorted[next] == scan; ++next) {
            Edge e;
            for (int32_t f = 0; f < 8; ++f) {
                e[f] = sorted[f * n + next];
            }
            if (e[1] == e[0]) {
                continue;
            }
            auto before = [&](const Edge &a) {
                return key(a) > key(e) || (key(a) == key(e) && a[3] * e[4] > e[3] * a[4]);
            };
            active.insert(std::find_if(active.begin(), active.end(), before), e);
        }
        if (active.empty()) {
            return;
        }
        const int32_t count = int32_t(active.size());
        std::vector<int32_t> fields(8 * count);
        for (int32_t k = 0; k < count; ++k) {
            for (int32_t f = 0; f < 8; ++f) {
                fields[f * count + k] = active[k][f];
            }
        }
        ORNEX_FillVerticalScanLine_AA_I_D(image.data(), scan, 0, side - 1, 0, side - 1, side, count, fields.data(), &one,
                                          1.0, table.data(), count, 1, 0);
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

// Random polygons that cross themselves, touch, and share vertex columns;
// some with more edges than the filler keeps beside its active list.
TEST(AAPolygonFillGeometry, SweepMatchesTheWrittenOutSweep)
{
    std::mt19937 random(5);
    const int32_t side = 48;
    const auto table = boxTable<double>();
    for (int trial = 0; trial < 120; ++trial) {
        const int32_t count = trial % 10 == 9 ? 70 : 3 + trial % 9;
        std::uniform_int_distribution<int32_t> coordinate(trial % 4 == 0 ? 10 : 0, trial % 4 == 0 ? 20 : side - 1);
        std::vector<int32_t> vertices(2 * count);
        for (int32_t &v : vertices) {
            v = coordinate(random);
        }
        std::vector<double> image(side * side, 0.0), expected(side * side, 0.0);
        fillWith(ORNEX_FillOnePolygon_AA_I_D, image, side, vertices, 1.0, 1.0, 0, side - 1, 0, side - 1, table);
        slowSweep(vertices, expected, side, table);
        ASSERT_EQ(image, expected) << trial;
    }
}

// Area of the convex polygon inside the unit square about (row, col),
// clipping the polygon against the square's four sides.
double squareCoverage(std::vector<std::pair<double, double>> poly, double row, double col)
{
    const double bounds[4][3] = {{1, 0, -(row - 0.5)}, {-1, 0, row + 0.5}, {0, 1, -(col - 0.5)}, {0, -1, col + 0.5}};
    for (const auto &b : bounds) {
        std::vector<std::pair<double, double>> kept;
        for (size_t i = 0; i < poly.size(); ++i) {
            const auto p = poly[i], q = poly[(i + 1) % poly.size()];
            const double dp = b[0] * p.first + b[1] * p.second + b[2], dq = b[0] * q.first + b[1] * q.second + b[2];
            if (dp >= 0) {
                kept.push_back(p);
            }
            if ((dp >= 0) != (dq >= 0)) {
                const double t = dp / (dp - dq);
                kept.push_back({p.first + t * (q.first - p.first), p.second + t * (q.second - p.second)});
            }
        }
        poly = kept;
    }
    double area = 0;
    for (size_t i = 0; i < poly.size(); ++i) {
        const auto p = poly[i], q = poly[(i + 1) % poly.size()];
        area += p.first * q.second - q.first * p.second;
    }
    return std::fabs(area) / 2;
}

// Random polygons inscribed in a circle (vertices at sorted random angles,
// rounded to whole pixels, so nearly convex): the coverage follows the exact area within the accuracy the model
// allows, reversing the vertices or moving them by whole pixels changes
// nothing, and clipping to single rows gives the same pixels as one call for
// the whole column.
TEST(AAPolygonFillGeometry, RandomInscribedPolygonsAgainstExactArea)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> angle(0, 2 * M_PI), radius(3, 14);
    const int32_t side = 40;
    double worst = 0, absoluteSum = 0;
    int pixels = 0;
    for (int trial = 0; trial < 60; ++trial) {
        std::vector<double> angles(3 + trial % 6);
        for (double &a : angles) {
            a = angle(random);
        }
        std::sort(angles.begin(), angles.end());
        std::vector<int32_t> vertices, reversed, moved;
        std::vector<std::pair<double, double>> exact;
        const double r = radius(random);
        for (const double a : angles) {
            const int32_t row = int32_t(std::lround(17 + r * std::sin(a))), col = int32_t(std::lround(17 + r * std::cos(a)));
            vertices.insert(vertices.end(), {row, col});
            reversed.insert(reversed.begin(), {row, col});
            moved.insert(moved.end(), {row + 3, col + 5});
            exact.push_back({double(row), double(col)});
        }
        std::vector<double> image(side * side, 0.0), back(side * side, 0.0), shifted(side * side, 0.0),
            byRows(side * side, 0.0);
        fillWith(ORNEX_FillOnePolygon_AA_I_D, image, side, vertices, 1.0, 1.0, 0, side - 1, 0, side - 1);
        fillWith(ORNEX_FillOnePolygon_AA_I_D, back, side, reversed, 1.0, 1.0, 0, side - 1, 0, side - 1);
        fillWith(ORNEX_FillOnePolygon_AA_I_D, shifted, side, moved, 1.0, 1.0, 0, side - 1, 0, side - 1);
        for (int32_t row = 0; row < side; ++row) {
            fillWith(ORNEX_FillOnePolygon_AA_I_D, byRows, side, vertices, 1.0, 1.0, row, row, 0, side - 1);
        }
        ASSERT_EQ(image, back) << trial;
        ASSERT_EQ(image, byRows) << trial;
        for (int32_t c = 0; c + 5 < side; ++c) {
            for (int32_t r = 0; r + 3 < side; ++r) {
                ASSERT_EQ(image[c * side + r], shifted[(c + 5) * side + r + 3]) << trial;
                const double error = image[c * side + r] - squareCoverage(exact, r, c);
                worst = std::max(worst, std::fabs(error));
                absoluteSum += std::fabs(error);
                pixels += image[c * side + r] != 0;
            }
        }
    }
    EXPECT_LE(worst, 0.25);
    EXPECT_LE(absoluteSum / pixels, 0.02);
}

} // namespace
