// Every exported function with a packed loop runs at each SIMD level this
// processor has; every byte it writes, and the sentinels around each of its
// outputs, must equal what the scalar level writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "ornex_rt.h"
#include "simd_levels.hpp"

namespace {

using ornex::SimdLevel;

constexpr size_t guardBytes = 32;
constexpr unsigned char sentinel = 0xA5;

// The output buffers of one call, each between sentinels.
class Outputs {
public:
    template <class T>
    T *add(size_t count, unsigned char fill = 0x3C)
    {
        auto &bytes = buffers_.emplace_back(count * sizeof(T) + 2 * guardBytes, sentinel);
        std::fill(bytes.begin() + guardBytes, bytes.end() - guardBytes, fill);
        return reinterpret_cast<T *>(bytes.data() + guardBytes);
    }
    bool sentinelsIntact() const
    {
        auto isSentinel = [](unsigned char byte) { return byte == sentinel; };
        return std::all_of(buffers_.begin(), buffers_.end(), [&](const auto &bytes) {
            return std::all_of(bytes.begin(), bytes.begin() + guardBytes, isSentinel) &&
                   std::all_of(bytes.end() - guardBytes, bytes.end(), isSentinel);
        });
    }
    std::vector<unsigned char> all() const
    {
        std::vector<unsigned char> joined;
        for (const auto &bytes : buffers_) {
            joined.insert(joined.end(), bytes.begin(), bytes.end());
        }
        return joined;
    }

private:
    std::deque<std::vector<unsigned char>> buffers_;
};

// Runs `call(outputs)` at every level, scalar first, on fresh outputs.
template <class Call>
void expectSameAtEveryLevel(const Call &call, const std::string &what)
{
    std::vector<unsigned char> scalar;
    ornex_test::forEachSimdLevel([&](SimdLevel level) {
        Outputs outputs;
        call(outputs);
        EXPECT_TRUE(outputs.sentinelsIntact()) << what << ", level " << int(level);
        const std::vector<unsigned char> bytes = outputs.all();
        if (level == SimdLevel::scalar) {
            scalar = bytes;
        } else if (bytes != scalar) {
            const auto at = std::mismatch(bytes.begin(), bytes.end(), scalar.begin()).first - bytes.begin();
            ADD_FAILURE() << what << ", level " << int(level) << ": byte " << at << " differs from the scalar level";
        }
    });
}

// 0, 1, N-1, N, N+1 for each pack width N of T (16 and 32 bytes and any
// `moreWidths`), 2N+1 for the widest, and `extra`.
template <class T>
std::vector<int32_t> sizesAroundPacks(std::vector<int32_t> moreWidths = {}, std::vector<int32_t> extra = {})
{
    std::vector<int32_t> widths{16 / int32_t(sizeof(T)), 32 / int32_t(sizeof(T))};
    widths.insert(widths.end(), moreWidths.begin(), moreWidths.end());
    std::vector<int32_t> sizes{0, 1, 2 * *std::max_element(widths.begin(), widths.end()) + 1};
    for (int32_t width : widths) {
        sizes.insert(sizes.end(), {width - 1, width, width + 1});
    }
    sizes.insert(sizes.end(), extra.begin(), extra.end());
    std::sort(sizes.begin(), sizes.end());
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    return sizes;
}

// Kinds of input: 0 small integers (exact ties), 1 values of wide-ranging
// magnitude (sums that round differently in another order), 2 a mixture
// with -0, infinities, the largest finite values and, when `nan`, NaN.
template <class T>
std::vector<T> randomValues(std::mt19937 &random, size_t count, int kind, bool nan = true)
{
    const T specials[] = {T(-0.0), std::numeric_limits<T>::infinity(), -std::numeric_limits<T>::infinity(),
                          std::numeric_limits<T>::max(), -std::numeric_limits<T>::max(),
                          nan ? std::numeric_limits<T>::quiet_NaN() : T(0)};
    std::uniform_real_distribution<T> unit(-1, 1);
    std::vector<T> values(count);
    for (T &value : values) {
        const int pick = kind == 2 ? int(random() % 4) : kind;
        value = pick == 0 ? T(int(random() % 3) - 1)
                : pick == 3 ? specials[random() % 6]
                            : std::ldexp(unit(random), int(random() % 40) - 20);
    }
    return values;
}

template <class T>
using Search = void (*)(const T *, const T *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t *,
                        int32_t *);
template <class T>
using Matching = void (*)(const T *, const T *, T *, T *, T *, const int32_t *, const int32_t *, const int32_t *,
                          int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
template <class T>
using Canny = void (*)(const T *, const T *, const T *, T *, T *, uint8_t *, T *, const T *, int32_t, int32_t,
                       int32_t);

template <class T>
struct MatchingMember {
    Matching<T> match;
    int valuesPerBlock;
};

template <class T>
struct Members;
template <>
struct Members<float> {
    static constexpr Search<float> searches[] = {ORNEX_SearchMethod_Full_MAD_R, ORNEX_SearchMethod_Full_MSE_R,
                                                 ORNEX_SearchMethod_3Step_MAD_R, ORNEX_SearchMethod_3Step_MSE_R};
    static constexpr MatchingMember<float> matchings[] = {
        {ORNEX_BlockMatching_Full_MAD_R, 1},  {ORNEX_BlockMatching_Full_MSE_R, 1},  {ORNEX_BlockMatching_3Step_MAD_R, 1},
        {ORNEX_BlockMatching_3Step_MSE_R, 1}, {ORNEX_BlockMatching_Full_MAD_C, 2},  {ORNEX_BlockMatching_Full_MSE_C, 2},
        {ORNEX_BlockMatching_3Step_MAD_C, 2}, {ORNEX_BlockMatching_3Step_MSE_C, 2}};
    static constexpr Canny<float> cannys[] = {ORNEX_EdgeCanny_userTh_R, ORNEX_EdgeCanny_autoTh_R};
    static constexpr auto suppression = ORNEX_NonMaximum_Suppression_R;
    static constexpr auto span = ORNEX_ProjComputeOutPixel_R;
};
template <>
struct Members<double> {
    static constexpr Search<double> searches[] = {ORNEX_SearchMethod_Full_MAD_D, ORNEX_SearchMethod_Full_MSE_D,
                                                  ORNEX_SearchMethod_3Step_MAD_D, ORNEX_SearchMethod_3Step_MSE_D};
    static constexpr MatchingMember<double> matchings[] = {
        {ORNEX_BlockMatching_Full_MAD_D, 1},  {ORNEX_BlockMatching_Full_MSE_D, 1},  {ORNEX_BlockMatching_3Step_MAD_D, 1},
        {ORNEX_BlockMatching_3Step_MSE_D, 1}, {ORNEX_BlockMatching_Full_MAD_Z, 2},  {ORNEX_BlockMatching_Full_MSE_Z, 2},
        {ORNEX_BlockMatching_3Step_MAD_Z, 2}, {ORNEX_BlockMatching_3Step_MSE_Z, 2}};
    static constexpr Canny<double> cannys[] = {ORNEX_EdgeCanny_userTh_D, ORNEX_EdgeCanny_autoTh_D};
    static constexpr auto suppression = ORNEX_NonMaximum_Suppression_D;
    static constexpr auto span = ORNEX_ProjComputeOutPixel_D;
};

template <class T>
class PackedPaths : public ::testing::Test {};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(PackedPaths, Reals);

TEST(PackedPathsLevels, AtLeastOnePackedLevelIsCompared)
{
    EXPECT_GE(ornex_test::availableSimdLevels().size(), 2u);
}

// Candidate rows around one and two packs (the runs), past a tile of 128
// rows; candidate columns around a tile of four.
TYPED_TEST(PackedPaths, BlockSearch)
{
    using T = TypeParam;
    std::mt19937 random(11);
    const int32_t width = 16 / int32_t(sizeof(T));
    for (int32_t candidateRows : sizesAroundPacks<T>({2 * width, 4 * width}, {128, 129})) {
        for (int32_t candidateCols : {0, 1, 3, 4, 5, 9, 33}) {
            for (int kind = 0; kind < 3; ++kind) {
                const int32_t blockRows = 1 + random() % 3, blockCols = 1 + random() % 3;
                const int32_t regionRows = blockRows + candidateRows - 1, regionCols = blockCols + candidateCols - 1;
                const int32_t blockStride = blockRows + random() % 3, regionStride = regionRows + random() % 3;
                const auto block = randomValues<T>(random, size_t(blockStride) * blockCols, kind);
                // One column of margin on each side: with no candidate row or
                // column the three-step grid still reads offset -1.
                const auto region = randomValues<T>(random, size_t(regionStride) * (regionCols + 2) + 1, kind);
                for (const Search<T> &search : Members<T>::searches) {
                    expectSameAtEveryLevel(
                        [&](Outputs &outputs) {
                            int32_t *best = outputs.add<int32_t>(2);
                            search(block.data(), region.data() + regionStride, blockStride, regionStride, blockCols, blockRows,
                                   regionCols, regionRows, best, best + 1);
                        },
                        "search " + std::to_string(&search - Members<T>::searches) + ", candidates " +
                            std::to_string(candidateRows) + "x" + std::to_string(candidateCols));
                }
            }
        }
    }
}

// Whole images through every matching member: displacements give regions
// of 2d+1 candidate rows; the working images and motion are compared.
TYPED_TEST(PackedPaths, BlockMatching)
{
    using T = TypeParam;
    std::mt19937 random(12);
    for (int32_t maxRows : {0, 1, 2, 3, 4, 8}) {
        for (const auto &member : Members<T>::matchings) {
            const int32_t block[2] = {1 + int32_t(random() % 4), 1 + int32_t(random() % 4)};
            const int32_t overlap[2] = {int32_t(random() % block[0]), int32_t(random() % block[1])};
            const int32_t displacement[2] = {maxRows, int32_t(random() % 5)};
            const int32_t numRows = random() % 13, numCols = random() % 9;
            const int kind = random() % 3;
            const auto image1 = randomValues<T>(random, size_t(numRows) * numCols, kind);
            const auto image2 = randomValues<T>(random, size_t(numRows) * numCols, kind);
            const int32_t padded1Rows = numRows + overlap[0], padded1Cols = numCols + overlap[1];
            const int32_t padded2Rows = numRows + 2 * (maxRows + overlap[0] / 2);
            const int32_t padded2Cols = numCols + 2 * (displacement[1] + overlap[1] / 2);
            const size_t blocks = size_t(numRows / (block[0] - overlap[0])) * (numCols / (block[1] - overlap[1]));
            expectSameAtEveryLevel(
                [&](Outputs &outputs) {
                    T *padded1 = outputs.add<T>(size_t(padded1Rows) * padded1Cols);
                    T *padded2 = outputs.add<T>(size_t(padded2Rows) * (padded2Cols + overlap[1] % 2) + overlap[0] % 2, 0);
                    T *motion = outputs.add<T>(blocks * member.valuesPerBlock);
                    member.match(image1.data(), image2.data(), padded1, padded2, motion, block, overlap, displacement,
                                 numRows, numCols, padded1Rows, padded1Cols, padded2Rows, padded2Cols);
                },
                "matching " + std::to_string(&member - Members<T>::matchings) + ", d " + std::to_string(maxRows));
        }
    }
}

// Rows around the packs of the suppression (two fewer than the image's) and
// past a block of 256; NaN, infinite, -0 and tied gradients.
template <class T>
std::vector<int32_t> cannyRows()
{
    std::vector<int32_t> rows{0, 1, 2, 259, 260};
    for (int32_t count : sizesAroundPacks<T>()) {
        rows.push_back(count + 2);
    }
    return rows;
}

TYPED_TEST(PackedPaths, NonMaximumSuppression)
{
    using T = TypeParam;
    std::mt19937 random(13);
    for (int32_t numRows : cannyRows<T>()) {
        for (int32_t numCols : {0, 1, 2, 3, 5}) {
            for (int kind = 0; kind < 3; ++kind) {
                const size_t pixels = size_t(numRows) * numCols;
                const auto gradX = randomValues<T>(random, pixels, kind), gradY = randomValues<T>(random, pixels, kind);
                expectSameAtEveryLevel(
                    [&](Outputs &outputs) {
                        Members<T>::suppression(gradX.data(), gradY.data(), outputs.add<T>(pixels), numRows, numCols);
                    },
                    "suppression " + std::to_string(numRows) + "x" + std::to_string(numCols));
            }
        }
    }
}

// The whole detector, user and automatic thresholds; no NaN in the image,
// so that every NaN on the way is the one the processor makes.
TYPED_TEST(PackedPaths, Canny)
{
    using T = TypeParam;
    std::mt19937 random(14);
    std::uniform_real_distribution<T> unit(0, 1);
    for (int32_t numRows : cannyRows<T>()) {
        for (int32_t numCols : {0, 1, 2, 4, 6}) {
            for (int kind = 0; kind < 3; ++kind) {
                const size_t pixels = size_t(numRows) * numCols;
                const auto image = randomValues<T>(random, pixels, kind, false);
                const int32_t length = 1 + random() % 3;
                const auto smoothing = randomValues<T>(random, length, 1), derivative = randomValues<T>(random, length, 1);
                const T low = unit(random), high = unit(random);
                const T userThresholds[2] = {std::min(low, high), std::max(low, high)}, percentage = 100 * unit(random);
                for (int member = 0; member < 2; ++member) {
                    const Canny<T> canny = Members<T>::cannys[member];
                    const T *thresholds = member == 0 ? userThresholds : &percentage;
                    expectSameAtEveryLevel(
                        [&](Outputs &outputs) {
                            canny(image.data(), smoothing.data(), derivative.data(), outputs.add<T>(pixels),
                                  outputs.add<T>(pixels), outputs.add<uint8_t>(pixels), outputs.add<T>(pixels),
                                  thresholds, numRows, numCols, length);
                        },
                        "canny " + std::to_string(member) + ", " + std::to_string(numRows) +
                            "x" + std::to_string(numCols));
                }
            }
        }
    }
}

// One output column of the projective warp: spans around the gathered packs
// and past a run of 64 rows; positions inside the source at fractions, at
// whole numbers, and far outside (clamped); every method and plane layout.
TYPED_TEST(PackedPaths, WarpSpan)
{
    using T = TypeParam;
    std::mt19937 random(15);
    std::uniform_real_distribution<T> unit(0, 1);
    for (int32_t length : sizesAroundPacks<T>({}, {64, 65, 64 + 32 / int32_t(sizeof(T)) + 1})) {
        for (int kind = 0; kind < 3; ++kind) {
            const int32_t inRows = std::vector<int32_t>{1, 2, 5, 9, 16}[random() % 5];
            const int32_t inCols = std::vector<int32_t>{1, 3, 4, 7, 12}[random() % 5];
            T matrix[9] = {0, 0, 0, 0, 0, 0, 0, 0, 1};
            if (kind == 0) {
                matrix[4] = T(inRows - 4) / T(length + 3) * (T(0.5) + unit(random) / 2);
                matrix[5] = T(1.25) + unit(random) / 2;
                matrix[1] = (unit(random) - T(0.5)) / 50;
                matrix[2] = T(1.3) + unit(random) * T(inCols - 5);
                matrix[7] = unit(random) / 1000;
            } else if (kind == 1) {
                matrix[4] = T(random() % 2);
                matrix[5] = T(int(random() % 7) - 3);
                matrix[2] = T(random() % inCols);
            } else {
                matrix[4] = 4 * unit(random) - 2;
                matrix[5] = T(inRows + 20) * unit(random) - 10;
                matrix[1] = 2 * unit(random) - 1;
                matrix[2] = T(inCols + 20) * unit(random) - 10;
                matrix[7] = (unit(random) - T(0.5)) / 125;
            }
            const int32_t rowLower = std::min<int32_t>(random() % 2, inRows - 1);
            const int32_t colLower = std::min<int32_t>(random() % 2, inCols - 1);
            const int32_t outRowFirst = random() % 2, spanStart = random() % 3;
            const int32_t outRows = length + 3, outCols = 3;
            const std::vector<T> in = randomValues<T>(random, size_t(inRows) * inCols * 3, 1 + random() % 2, false);
            for (int layout = 0; layout < 3; ++layout) {
                const int32_t planes = layout == 0 ? 3 : layout;
                const size_t plane = size_t(inRows) * inCols, outPlane = size_t(outRows) * outCols;
                for (int32_t method = 1; method <= 3; ++method) {
                    for (uint8_t exact : {0, 1}) {
                        expectSameAtEveryLevel(
                            [&](Outputs &outputs) {
                                T *out[3] = {outputs.add<T>(layout == 0 ? outPlane : planes * outPlane), nullptr, nullptr};
                                if (layout == 0) {
                                    out[1] = outputs.add<T>(outPlane);
                                    out[2] = outputs.add<T>(outPlane);
                                }
                                Members<T>::span(out[0], out[1], out[2], 1, outRowFirst, outRows - 1, 0, outCols - 1,
                                                 spanStart, spanStart + length - 1, inRows, layout == 0, in.data(),
                                                 in.data() + plane, in.data() + 2 * plane, matrix, inCols, outRows,
                                                 outCols, method, exact, rowLower, colLower, planes);
                            },
                            "span of " + std::to_string(length) + ", kind " + std::to_string(kind) + ", layout " +
                                std::to_string(layout) + ", method " + std::to_string(method));
                    }
                }
            }
        }
    }
}

} // namespace
