// Every exported function with a packed loop, at each SIMD level this processor
// has, writes the scalar level's bytes and keeps the sentinels around them.
#include <gtest/gtest.h>

#include <algorithm>
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

// The output buffers of one call, each between sentinels.
struct Outputs {
    std::deque<std::vector<unsigned char>> buffers;

    template <class T>
    T *add(size_t count, unsigned char fill = 0x3C)
    {
        auto &bytes = buffers.emplace_back(count * sizeof(T) + 2 * guardBytes, sentinel);
        std::fill(bytes.begin() + guardBytes, bytes.end() - guardBytes, fill);
        return reinterpret_cast<T *>(bytes.data() + guardBytes);
    }
};

// Runs `call(outputs)` at every level, scalar first, on fresh outputs: every level keeps
// the sentinels and writes the scalar level's bytes. `where` names the case in messages.
template <class Call>
void expectSameAtEveryLevel(std::initializer_list<long> where, const Call &call)
{
    const std::string what = testing::PrintToString(std::vector<long>(where));
    auto isSentinel = [](unsigned char byte) { return byte == sentinel; };
    std::vector<unsigned char> scalar;
    ornex_test::forEachSimdLevel([&](ornex::SimdLevel level) {
        Outputs outputs;
        call(outputs);
        std::vector<unsigned char> bytes;
        for (const auto &buffer : outputs.buffers) {
            EXPECT_TRUE(std::all_of(buffer.begin(), buffer.begin() + guardBytes, isSentinel) &&
                        std::all_of(buffer.end() - guardBytes, buffer.end(), isSentinel))
                << "sentinel overwritten, level " << int(level) << ", case " << what;
            bytes.insert(bytes.end(), buffer.begin(), buffer.end());
        }
        scalar = level == ornex::SimdLevel::scalar ? bytes : scalar;
        if (bytes != scalar) {
            const auto at = std::mismatch(bytes.begin(), bytes.end(), scalar.begin()).first - bytes.begin();
            ADD_FAILURE() << "level " << int(level) << ", case " << what << ": byte " << at << " differs";
        }
    });
}

// 0, 1, N-1, N, N+1 for N the elements of T in packs of 16, 32, ... up to `widest` times 16
// bytes, 2N+1 for the widest, and `sizes`.
template <class T>
std::set<int32_t> sizesAroundPacks(std::set<int32_t> sizes, int32_t widest = 2)
{
    for (int32_t width = 16 / int32_t(sizeof(T)); width <= widest * 16 / int32_t(sizeof(T)); width *= 2) {
        sizes.insert({width - 1, width, width + 1});
    }
    sizes.insert({0, 1, 2 * widest * 16 / int32_t(sizeof(T)) + 1});
    return sizes;
}

// Kinds of input: 0 small integers (exact ties), 1 and 3 values of wide-ranging magnitude (sums
// that round differently in another order), 2 a mixture with -0, infinities, the largest finite
// values and, when `nan`, NaN.
template <class T>
std::vector<T> randomValues(std::mt19937 &random, size_t count, int kind, bool nan = true)
{
    using Limits = std::numeric_limits<T>;
    const T specials[] = {T(-0.0), Limits::infinity(), -Limits::infinity(), Limits::max(), -Limits::max(),
                          nan ? Limits::quiet_NaN() : T(0)};
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

// The members of each family for one element type: R its real suffix, C
// its complex one (the last four matchings, two values per block).
template <class T>
struct Members;
#define PACKED_MEMBERS(T, R, C)                                                                                    \
    template <>                                                                                                    \
    struct Members<T> {                                                                                            \
        static constexpr decltype(&ORNEX_SearchMethod_Full_MAD_##R) searches[] = {ORNEX_SearchMethod_Full_MAD_##R, \
            ORNEX_SearchMethod_Full_MSE_##R, ORNEX_SearchMethod_3Step_MAD_##R, ORNEX_SearchMethod_3Step_MSE_##R};  \
        static constexpr decltype(&ORNEX_BlockMatching_Full_MAD_##R) matchings[] = {                               \
            ORNEX_BlockMatching_Full_MAD_##R,  ORNEX_BlockMatching_Full_MSE_##R, ORNEX_BlockMatching_3Step_MAD_##R, \
            ORNEX_BlockMatching_3Step_MSE_##R, ORNEX_BlockMatching_Full_MAD_##C, ORNEX_BlockMatching_Full_MSE_##C,  \
            ORNEX_BlockMatching_3Step_MAD_##C, ORNEX_BlockMatching_3Step_MSE_##C};                                 \
        static constexpr decltype(&ORNEX_EdgeCanny_userTh_##R) cannys[] = {ORNEX_EdgeCanny_userTh_##R,             \
                                                                           ORNEX_EdgeCanny_autoTh_##R};            \
        static constexpr auto suppression = ORNEX_NonMaximum_Suppression_##R;                                      \
        static constexpr auto span = ORNEX_ProjComputeOutPixel_##R;                                                \
    };
PACKED_MEMBERS(float, R, C)
PACKED_MEMBERS(double, D, Z)

template <class T>
struct PackedPaths : ::testing::Test {
    void SetUp() override { ASSERT_GE(ornex_test::availableSimdLevels().size(), 2u) << "no packed level to compare"; }
};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(PackedPaths, Reals);

// Candidate rows around one and two packs (the runs) and past a tile of 128 rows, columns
// around a tile of four. Kind 3: a zero block over a region repeating with the block's size,
// so every cost is one sum in another order and rounding alone picks the best. The region has
// a column and an element of margin: with no candidate row or column the grid reads offset -1.
TYPED_TEST(PackedPaths, BlockSearch)
{
    using T = TypeParam;
    std::mt19937 random(11);
    for (int32_t candidateRows : sizesAroundPacks<T>({128, 129}, 4)) {
        for (int32_t candidateCols : {0, 1, 3, 4, 5, 9, 33}) {
            for (int kind = 0; kind < 4; ++kind) {
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
                for (int member = 0; member < 4; ++member) {
                    expectSameAtEveryLevel({member, candidateRows, candidateCols, kind}, [&](Outputs &outputs) {
                        int32_t *best = outputs.add<int32_t>(2);
                        Members<T>::searches[member](searched.data(), region.data() + regionStride + 1, blockStride,
                                                    regionStride, blockCols, blockRows, regionCols, regionRows, best,
                                                    best + 1);
                    });
                }
            }
        }
    }
}

// Whole images through every matching member, displacements giving
// regions of 2d+1 candidate rows; working images and motion compared.
TYPED_TEST(PackedPaths, BlockMatching)
{
    using T = TypeParam;
    std::mt19937 random(12);
    for (int32_t maxRows : {0, 1, 2, 3, 4, 8}) {
        for (int member = 0; member < 8; ++member) {
            const int32_t block[2] = {1 + int32_t(random() % 4), 1 + int32_t(random() % 4)};
            const int32_t overlap[2] = {int32_t(random() % block[0]), int32_t(random() % block[1])};
            const int32_t displacement[2] = {maxRows, int32_t(random() % 5)};
            const int32_t numRows = random() % 13, numCols = random() % 9, kind = random() % 3;
            const auto images = randomValues<T>(random, 2 * size_t(numRows) * numCols, kind);
            const int32_t padded1Rows = numRows + overlap[0], padded1Cols = numCols + overlap[1];
            const int32_t padded2Rows = numRows + 2 * (maxRows + overlap[0] / 2);
            const int32_t padded2Cols = numCols + 2 * (displacement[1] + overlap[1] / 2);
            const size_t blocks = size_t(numRows / (block[0] - overlap[0])) * (numCols / (block[1] - overlap[1]));
            const size_t padded2Size = size_t(padded2Rows) * (padded2Cols + overlap[1] % 2) + overlap[0] % 2;
            expectSameAtEveryLevel({member, maxRows}, [&](Outputs &outputs) {
                T *padded1 = outputs.add<T>(size_t(padded1Rows) * padded1Cols);
                T *padded2 = outputs.add<T>(padded2Size, 0);
                Members<T>::matchings[member](images.data(), images.data() + images.size() / 2, padded1, padded2,
                                              outputs.add<T>(blocks * (member < 4 ? 1 : 2)), block, overlap,
                                              displacement, numRows, numCols, padded1Rows, padded1Cols, padded2Rows,
                                              padded2Cols);
            });
        }
    }
}

// Gradients with ties, NaN, infinities and -0 through the suppression; the whole detector with
// both kinds of threshold, its image without NaN so that every NaN is the processor's own.
TYPED_TEST(PackedPaths, CannySuppressionAndDetector)
{
    using T = TypeParam;
    std::mt19937 random(13);
    std::uniform_real_distribution<T> unit(0, 1);
    // Image rows: two more than the rows packed; 0 and 1; past a block of 256.
    for (int32_t packedRows : sizesAroundPacks<T>({-2, -1, 257, 258})) {
        const int32_t numRows = packedRows + 2;
        for (int32_t numCols : {0, 1, 2, 3, 5}) {
            for (int kind = 0; kind < 4; ++kind) {
                const size_t pixels = size_t(numRows) * numCols;
                auto gradients = randomValues<T>(random, 2 * pixels, kind); // x, then y
                // Kind 3: gradients on one circle, magnitudes a few units in the last place apart.
                for (size_t i = 0; kind == 3 && i < pixels; ++i) {
                    gradients[i] = 3 * std::cos(T(random() % 6283) / 1000);
                    gradients[pixels + i] = std::sqrt(9 - gradients[i] * gradients[i]) * T(random() % 2 ? 1 : -1);
                }
                expectSameAtEveryLevel({numRows, numCols, kind}, [&](Outputs &outputs) {
                    Members<T>::suppression(gradients.data(), gradients.data() + pixels, outputs.add<T>(pixels),
                                            numRows, numCols);
                });
                const auto image = randomValues<T>(random, pixels, kind, false);
                const int32_t length = 1 + random() % 3;
                const auto kernels = randomValues<T>(random, 2 * length, 1);
                const T userThresholds[2] = {unit(random) / 2, (1 + unit(random)) / 2}, percentage = 100 * unit(random);
                for (int member = 0; member < 2; ++member) {
                    expectSameAtEveryLevel({member, numRows, numCols, kind}, [&](Outputs &outputs) {
                        Members<T>::cannys[member](image.data(), kernels.data(), kernels.data() + length,
                                                   outputs.add<T>(pixels), outputs.add<T>(pixels),
                                                   outputs.add<uint8_t>(pixels), outputs.add<T>(pixels),
                                                   member == 0 ? userThresholds : &percentage, numRows, numCols,
                                                   length);
                    });
                }
            }
        }
    }
}

// One output column of the projective warp: spans around the gathered packs and past a run of
// 64 rows; positions inside the source at fractions, at whole and half numbers and far outside,
// clamped (kinds 0, 1, 2 modulo 3); every method, both walks, plane layouts three, one and two.
TYPED_TEST(PackedPaths, WarpSpan)
{
    using T = TypeParam;
    std::mt19937 random(15);
    std::uniform_real_distribution<T> unit(0, 1);
    for (int32_t length : sizesAroundPacks<T>({64, 65, 65 + 32 / int32_t(sizeof(T))})) {
        for (int kind = 0; kind < 9; ++kind) {
            const int32_t inRows = 1 << random() % 5, inCols = 1 + random() % 12;
            const T fractional[9] = {0, (unit(random) - T(0.5)) / 50, T(1.3) + unit(random) * T(inCols - 3), 0,
                                     T(inRows - 3) / T(length + 4), T(1.25) + unit(random) / 2, 0, T(0.001), 1};
            const T whole[9] = {0, 0, T(2 + random() % (2 * inCols)) / 2, 0, T(kind % 2), T(2 + random() % 6) / 2,
                                0, 0, 1};
            const T wide[9] = {0, 2 * unit(random) - 1, T(inCols + 20) * unit(random) - 10, 0, 4 * unit(random) - 2,
                               T(inRows + 20) * unit(random) - 10, 0, (unit(random) - T(0.5)) / 125, 1};
            const T *matrix = kind % 3 == 0 ? fractional : kind % 3 == 1 ? whole : wide;
            const int32_t rowLower = inRows > 1 ? random() % 2 : 0, colLower = inCols > 1 ? random() % 2 : 0;
            const int32_t outRowFirst = random() % 2, spanStart = random() % 3, outRows = length + 3, outCols = 3;
            const size_t plane = size_t(inRows) * inCols, outPlane = size_t(outRows) * outCols;
            const std::vector<T> in = randomValues<T>(random, 3 * plane, 1 + random() % 2, false);
            for (int variant = 0; variant < 18; ++variant) {
                const int32_t planes = variant % 3 + 1, method = variant / 3 % 3 + 1;
                const uint8_t exact = variant / 9;
                expectSameAtEveryLevel({length, kind, planes, method, exact}, [&](Outputs &outputs) {
                    T *out0 = outputs.add<T>(planes == 3 ? outPlane : planes * outPlane);
                    T *out1 = planes == 3 ? outputs.add<T>(outPlane) : nullptr;
                    T *out2 = planes == 3 ? outputs.add<T>(outPlane) : nullptr;
                    Members<T>::span(out0, out1, out2, 1, outRowFirst, outRows - 1, 0, outCols - 1, spanStart,
                                     spanStart + length - 1, inRows, planes == 3, in.data(), in.data() + plane,
                                     in.data() + 2 * plane, matrix, inCols, outRows, outCols, method, exact, rowLower,
                                     colLower, planes);
                });
            }
        }
    }
}

} // namespace
