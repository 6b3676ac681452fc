// At each SIMD level, every exported function with a packed loop writes the scalar level's bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "ornex_rt.h"
#include "simd_levels.hpp"

namespace {

constexpr size_t guardBytes = 32;
constexpr unsigned char sentinel = 0xA5;

struct Outputs : std::deque<std::vector<unsigned char>> {
    template <class T>
    T *add(size_t count, unsigned char fill = 0x3C)
    {
        auto &bytes = emplace_back(count * sizeof(T) + 2 * guardBytes, sentinel);
        std::fill(bytes.begin() + guardBytes, bytes.end() - guardBytes, fill);
        return reinterpret_cast<T *>(bytes.data() + guardBytes);
    }
};

// For each variant, runs `call(outputs, variant)` on fresh outputs at every level, scalar first:
// every level keeps the sentinels and writes the scalar level's bytes.
template <class Call>
void expectSameAtEveryLevel(std::vector<long> where, int variants, const Call &call)
{
    for (int variant = 0; variant < variants; ++variant) {
        std::vector<unsigned char> scalar;
        ornex_test::forEachSimdLevel([&](ornex::SimdLevel level) {
            const auto what = ", case " + testing::PrintToString(where) + ", variant " + std::to_string(variant);
            Outputs outputs;
            call(outputs, variant);
            std::vector<unsigned char> bytes;
            for (const auto &buffer : outputs) {
                EXPECT_EQ(std::count(buffer.begin(), buffer.begin() + guardBytes, sentinel) +
                              std::count(buffer.end() - guardBytes, buffer.end(), sentinel), long(2 * guardBytes))
                    << "sentinels overwritten, level " << int(level) << what;
                bytes.insert(bytes.end(), buffer.begin(), buffer.end());
            }
            scalar = level == ornex::SimdLevel::scalar ? bytes : scalar;
            const auto at = std::mismatch(bytes.begin(), bytes.end(), scalar.begin(), scalar.end()).first;
            EXPECT_EQ(size_t(at - bytes.begin()), bytes.size()) << "first differing byte, level " << int(level) << what;
        });
    }
}

// Calls body(random, size, columns, kind) for every column count, kind below `kinds` and size: `sizes`,
// 0, 1, N-1, N, N+1 for N the Ts in packs of 16, 32, ... up to `widest` times 16 bytes, and 2N+1.
template <class T, class Body>
void forEachCase(std::set<int32_t> sizes, int32_t widest, std::vector<int32_t> columns, int kinds, const Body &body)
{
    ASSERT_GE(ornex_test::availableSimdLevels().size(), 2u) << "no packed level to compare";
    std::mt19937 random(11);
    const int32_t perPack = 16 / int32_t(sizeof(T));
    for (int32_t width = perPack; width <= widest * perPack; width *= 2) {
        sizes.insert({width - 1, width, width + 1});
    }
    sizes.insert({0, 1, 2 * widest * perPack + 1});
    for (int32_t size : sizes) {
        for (size_t index = 0; index < columns.size() * kinds; ++index) {
            body(random, size, columns[index / kinds], int(index % kinds));
        }
    }
}

// Kinds of input: 0 small integers (exact ties), 1 and 3 wide-ranging magnitudes (sums that round
// differently in another order), 2 a mixture with -0, infinities, the largest values and maybe NaN.
template <class T>
std::vector<T> randomValues(std::mt19937 &random, size_t count, int kind, bool nan = true)
{
    using L = std::numeric_limits<T>;
    const T specials[] = {T(-0.0), L::infinity(), -L::infinity(), L::max(), -L::max(), nan ? L::quiet_NaN() : T(0)};
    std::uniform_real_distribution<T> unit(-1, 1);
    std::vector<T> values(count);
    for (T &value : values) {
        const int pick = kind == 2 ? int(random() % 4) : kind % 2;
        value = pick == 0 ? T(int(random() % 7) - 3)
                : pick == 3 ? specials[random() % 6]
                            : std::ldexp(unit(random), int(random() % 40) - 20);
    }
    return values;
}

// The members of each family for one element type, R its real suffix and C its complex one.
template <class T>
struct PackedPaths;
#define PACKED_FOUR(prefix, S) prefix##Full_MAD_##S, prefix##Full_MSE_##S, prefix##3Step_MAD_##S, prefix##3Step_MSE_##S
#define PACKED_MEMBERS(T, R, C) \
    template <> \
    struct PackedPaths<T> : ::testing::Test { \
        static constexpr std::array searches{PACKED_FOUR(ORNEX_SearchMethod_, R)}; \
        static constexpr std::array matchings{PACKED_FOUR(ORNEX_BlockMatching_, R), \
                                              PACKED_FOUR(ORNEX_BlockMatching_, C)}; \
        static constexpr std::array cannys{ORNEX_EdgeCanny_userTh_##R, ORNEX_EdgeCanny_autoTh_##R}; \
        static constexpr auto suppression = ORNEX_NonMaximum_Suppression_##R; \
        static constexpr auto span = ORNEX_ProjComputeOutPixel_##R; \
    };
PACKED_MEMBERS(float, R, C)
PACKED_MEMBERS(double, D, Z)
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(PackedPaths, Reals);

// Candidate rows around runs of one and two packs and a tile of 128, columns around a tile of four.
// Kind 3: a zero block over a region repeating with the block's size, so rounding alone picks the
// best. The region's margin: with no candidate row or column the grid reads offset -1.
TYPED_TEST(PackedPaths, BlockSearch)
{
    using T = TypeParam;
    forEachCase<T>({128, 129}, 4, {0, 1, 3, 4, 5, 9, 33}, 4, [](auto &random, auto candidateRows, auto candidateCols,
                                                                  int kind) {
        const int32_t blockRows = 1 + random() % 3, blockCols = 1 + random() % 3;
        const int32_t regionRows = blockRows + candidateRows - 1, regionCols = blockCols + candidateCols - 1;
        const int32_t blockStride = blockRows + random() % 3, regionStride = regionRows + random() % 3;
        const auto block = randomValues<T>(random, size_t(blockStride) * blockCols, kind);
        auto region = randomValues<T>(random, size_t(regionStride) * (regionCols + 2) + 2, kind);
        for (int32_t at = 0; kind == 3 && at < regionRows * regionCols; ++at) {
            region[regionStride + 1 + at % regionRows + at / regionRows * regionStride] =
                block[at % regionRows % blockRows + at / regionRows % blockCols * blockStride];
        }
        const std::vector<T> &searched = kind == 3 ? std::vector<T>(block.size()) : block;
        expectSameAtEveryLevel({candidateRows, candidateCols, kind}, 4, [&](Outputs &out, int member) {
            int32_t *best = out.add<int32_t>(2);
            TestFixture::searches[member](searched.data(), region.data() + regionStride + 1, blockStride, regionStride,
                                          blockCols, blockRows, regionCols, regionRows, best, best + 1);
        });
    });
}

// Whole images, the complex members with two values per block; working images and motion compared.
TYPED_TEST(PackedPaths, BlockMatching)
{
    using T = TypeParam;
    forEachCase<T>({2, 3, 4, 8}, 0, {0}, 8, [](auto &random, int32_t maxRows, int32_t, int member) {
        const int32_t block[2] = {1 + int32_t(random() % 4), 1 + int32_t(random() % 4)};
        const int32_t overlap[2] = {int32_t(random() % block[0]), int32_t(random() % block[1])};
        const int32_t displacement[2] = {maxRows, int32_t(random() % 5)};
        const int32_t numRows = random() % 13, numCols = random() % 9, kind = random() % 3;
        const auto images = randomValues<T>(random, 2 * size_t(numRows) * numCols, kind);
        const int32_t padded1Rows = numRows + overlap[0], padded1Cols = numCols + overlap[1];
        const int32_t padded2Rows = numRows + 2 * (maxRows + overlap[0] / 2);
        const int32_t padded2Cols = numCols + 2 * (displacement[1] + overlap[1] / 2);
        const size_t blocks = size_t(numRows / (block[0] - overlap[0])) * (numCols / (block[1] - overlap[1]));
        expectSameAtEveryLevel({member, maxRows}, 1, [&](Outputs &out, int) {
            T *padded1 = out.add<T>(size_t(padded1Rows) * padded1Cols);
            T *padded2 = out.add<T>(size_t(padded2Rows) * (padded2Cols + overlap[1] % 2) + overlap[0] % 2, 0);
            TestFixture::matchings[member](images.data(), images.data() + images.size() / 2, padded1, padded2,
                                          out.add<T>(blocks * (member < 4 ? 1 : 2)), block, overlap, displacement,
                                          numRows, numCols, padded1Rows, padded1Cols, padded2Rows, padded2Cols);
        });
    });
}

// Images of two rows more than the rows packed. Kind 3: gradient on one circle, magnitudes a few
// units in the last place apart. The detector's image has no NaN: every NaN is the processor's own.
TYPED_TEST(PackedPaths, CannySuppressionAndDetector)
{
    using T = TypeParam;
    forEachCase<T>({-2, -1, 257, 258}, 2, {0, 1, 2, 3, 5}, 4, [](auto &random, auto packed, auto numCols, int kind) {
        std::uniform_real_distribution<T> unit(0, 1);
        const int32_t numRows = packed + 2;
        const size_t pixels = size_t(numRows) * numCols;
        auto gradient = randomValues<T>(random, 2 * pixels, kind); // x, then y
        for (size_t i = 0; kind == 3 && i < pixels; ++i) {
            gradient[i] = 3 * std::cos(T(random() % 6283) / 1000);
            gradient[pixels + i] = std::sqrt(9 - gradient[i] * gradient[i]) * T(random() % 2 ? 1 : -1);
        }
        expectSameAtEveryLevel({numRows, numCols, kind}, 1, [&](Outputs &out, int) {
            TestFixture::suppression(gradient.data(), gradient.data() + pixels, out.add<T>(pixels), numRows, numCols);
        });
        const auto image = randomValues<T>(random, pixels, kind, false);
        const int32_t length = 1 + random() % 3;
        const auto kernels = randomValues<T>(random, 2 * length, 1);
        const T userThresholds[2] = {unit(random) / 2, (1 + unit(random)) / 2}, percentage = 100 * unit(random);
        expectSameAtEveryLevel({numRows, numCols, kind}, 2, [&](Outputs &out, int member) {
            TestFixture::cannys[member](image.data(), kernels.data(), kernels.data() + length, out.add<T>(pixels),
                                        out.add<T>(pixels), out.add<uint8_t>(pixels), out.add<T>(pixels),
                                        member == 0 ? userThresholds : &percentage, numRows, numCols, length);
        });
    });
}

// Spans of one output column around the gathered packs and a run of 64 rows; source positions at
// fractions, at whole and half numbers and far outside; every method, walk and plane layout.
TYPED_TEST(PackedPaths, WarpSpan)
{
    using T = TypeParam;
    forEachCase<T>({64, 65, 65 + 32 / int32_t(sizeof(T))}, 2, {0}, 9, [](auto &random, auto length, auto, int kind) {
        std::uniform_real_distribution<T> unit(0, 1);
        const int32_t inRows = 1 << random() % 5, inCols = 1 + random() % 12;
        const T matrices[3][9] = {
            {0, (unit(random) - T(0.5)) / 50, T(1.3) + unit(random) * T(inCols - 3), 0, T(inRows - 3) / T(length + 4),
             T(1.25) + unit(random) / 2, 0, T(0.001), 1},
            {0, 0, T(2 + random() % (2 * inCols)) / 2, 0, T(kind % 2), T(2 + random() % 6) / 2, 0, 0, 1},
            {0, 2 * unit(random) - 1, T(inCols + 20) * unit(random) - 10, 0, 4 * unit(random) - 2,
             T(inRows + 20) * unit(random) - 10, 0, (unit(random) - T(0.5)) / 125, 1}};
        const int32_t rowLower = inRows > 1 ? random() % 2 : 0, colLower = inCols > 1 ? random() % 2 : 0;
        const int32_t outRowFirst = random() % 2, spanStart = random() % 3, outRows = length + 3, outCols = 3;
        const size_t plane = size_t(inRows) * inCols, outArea = size_t(outRows) * outCols;
        const std::vector<T> in = randomValues<T>(random, 3 * plane, 1 + random() % 2, false);
        expectSameAtEveryLevel({length, kind}, 18, [&](Outputs &out, int variant) {
            const int32_t planes = variant % 3 + 1, method = variant / 3 % 3 + 1;
            TestFixture::span(out.add<T>(planes == 3 ? outArea : planes * outArea),
                              planes == 3 ? out.add<T>(outArea) : nullptr, planes == 3 ? out.add<T>(outArea) : nullptr,
                              1, outRowFirst, outRows - 1, 0, outCols - 1, spanStart, spanStart + length - 1, inRows,
                              planes == 3, in.data(), in.data() + plane, in.data() + 2 * plane, matrices[kind % 3],
                              inCols, outRows, outCols, method, uint8_t(variant / 9), rowLower, colLower, planes);
        });
    });
}

} // namespace
