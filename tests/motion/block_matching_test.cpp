#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T, class R>
using MatchingFunction = void (*)(const T *, const T *, T *, T *, R *, const int32_t *, const int32_t *,
                                  const int32_t *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);

template <class Image, bool isExhaustive, bool isComplex, MatchingFunction<Image, Image> function>
struct Member {
    using T = Image;
    static constexpr bool exhaustive = isExhaustive;
    static constexpr bool complexResult = isComplex;
    static constexpr MatchingFunction<Image, Image> match = function;
};

using Members = ::testing::Types<
    Member<double, true, false, ORNEX_BlockMatching_Full_MAD_D>, Member<float, true, false, ORNEX_BlockMatching_Full_MAD_R>,
    Member<float, true, true, ORNEX_BlockMatching_Full_MAD_C>, Member<double, true, true, ORNEX_BlockMatching_Full_MAD_Z>,
    Member<double, true, false, ORNEX_BlockMatching_Full_MSE_D>, Member<float, true, false, ORNEX_BlockMatching_Full_MSE_R>,
    Member<float, true, true, ORNEX_BlockMatching_Full_MSE_C>, Member<double, true, true, ORNEX_BlockMatching_Full_MSE_Z>,
    Member<double, false, false, ORNEX_BlockMatching_3Step_MAD_D>,
    Member<float, false, false, ORNEX_BlockMatching_3Step_MAD_R>,
    Member<float, false, true, ORNEX_BlockMatching_3Step_MAD_C>,
    Member<double, false, true, ORNEX_BlockMatching_3Step_MAD_Z>,
    Member<double, false, false, ORNEX_BlockMatching_3Step_MSE_D>,
    Member<float, false, false, ORNEX_BlockMatching_3Step_MSE_R>,
    Member<float, false, true, ORNEX_BlockMatching_3Step_MSE_C>,
    Member<double, false, true, ORNEX_BlockMatching_3Step_MSE_Z>>;

struct Displacement {
    int32_t u; // across columns
    int32_t v; // down rows
};

template <class T>
struct Image {
    int32_t rows;
    int32_t cols;
    std::vector<T> values;

    // `spare` zero elements follow the image in the same allocation.
    Image(int32_t rowCount, int32_t colCount, T fill = T(0), size_t spare = 0)
        : rows(rowCount), cols(colCount), values(static_cast<size_t>(rowCount) * colCount + spare, fill)
    {
        std::fill(values.end() - static_cast<ptrdiff_t>(spare), values.end(), T(0));
    }
    T &at(int32_t r, int32_t c) { return values[r + static_cast<size_t>(c) * rows]; }
};

template <class T>
Image<T> randomImage(int32_t rows, int32_t cols, uint32_t seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> value(0.0, 255.0);
    Image<T> image(rows, cols);
    for (T &v : image.values) {
        v = T(value(random));
    }
    return image;
}

// image2(r, c) = image1(r - v, c - u): the content moves v rows down and u
// columns right; uncovered pixels get fresh noise.
template <class T>
Image<T> shifted(const Image<T> &image1, Displacement shift, uint32_t seed)
{
    Image<T> image2 = randomImage<T>(image1.rows, image1.cols, seed);
    for (int32_t c = 0; c < image1.cols; ++c) {
        for (int32_t r = 0; r < image1.rows; ++r) {
            const int32_t sourceRow = r - shift.v, sourceCol = c - shift.u;
            if (sourceRow >= 0 && sourceRow < image1.rows && sourceCol >= 0 && sourceCol < image1.cols) {
                image2.at(r, c) = image1.values[sourceRow + static_cast<size_t>(sourceCol) * image1.rows];
            }
        }
    }
    return image2;
}

struct Settings {
    int32_t blockSize[2];
    int32_t overlap[2];
    int32_t maxDisplacement[2];
};

constexpr double sentinel = -12345.0;

// Runs a member with working images of exactly the room that the header
// documents (or image1 as its own working image) and returns the result
// buffer, `room` results long (plus their imaginary parts) and filled with
// sentinels first.
template <class M>
std::vector<typename M::T> match(Image<typename M::T> &image1, const Image<typename M::T> &image2,
                                 const Settings &settings, size_t room, bool image1IsPadded1 = false)
{
    using T = typename M::T;
    const int32_t oddRows = settings.overlap[0] % 2, oddCols = settings.overlap[1] % 2;
    const int32_t padded2Rows = image1.rows + 2 * (settings.maxDisplacement[0] + settings.overlap[0] / 2);
    const int32_t padded2Cols = image1.cols + 2 * (settings.maxDisplacement[1] + settings.overlap[1] / 2);
    Image<T> padded1(image1.rows + settings.overlap[0], image1.cols + settings.overlap[1], T(77));
    Image<T> padded2(padded2Rows, padded2Cols, T(77), static_cast<size_t>(padded2Rows * oddCols + oddRows));
    std::vector<T> motion(room * (M::complexResult ? 2 : 1), T(sentinel));
    if (image1IsPadded1) {
        padded1 = image1;
    }
    T *padded1Pointer = image1IsPadded1 ? image1.values.data() : padded1.values.data();
    M::match(image1.values.data(), image2.values.data(), padded1Pointer, padded2.values.data(), motion.data(),
             settings.blockSize, settings.overlap, settings.maxDisplacement, image1.rows, image1.cols, padded1.rows,
             padded1.cols, padded2.rows, padded2.cols);
    return motion;
}

// Result k as the member stores it, from a displacement.
template <class M>
void expectResult(const std::vector<typename M::T> &motion, size_t k, Displacement d, const char *what)
{
    using T = typename M::T;
    if (M::complexResult) {
        EXPECT_EQ(motion[2 * k], T(d.u)) << what << ", block " << k << ", real part";
        EXPECT_EQ(motion[2 * k + 1], T(d.v)) << what << ", block " << k << ", imaginary part";
    } else {
        EXPECT_EQ(motion[k], T(d.u * d.u + d.v * d.v)) << what << ", block " << k;
    }
}

template <class M>
class BlockMatching : public ::testing::Test {};
TYPED_TEST_SUITE(BlockMatching, Members);

TYPED_TEST(BlockMatching, ResultsFollowTheBlockGridColumnByColumn)
{
    using T = typename TypeParam::T;
    // A 20x20 image in 8x8 blocks: two block rows and two block columns
    // (rows 16..19 and columns 16..19 hold no whole block). Each block's
    // content is pasted into the second image at its own displacement, all
    // on the three-step search's first grid (offsets -3, 0, 3) and with
    // pastes that do not overlap.
    Image<T> image1 = randomImage<T>(20, 20, 1);
    Image<T> image2 = randomImage<T>(20, 20, 2);
    const struct {
        int32_t top, left;
        Displacement shift;
    } blocks[4] = {{0, 0, {0, 0}}, {8, 0, {0, 3}}, {0, 8, {3, 0}}, {8, 8, {3, 3}}};
    for (const auto &block : blocks) {
        for (int32_t c = 0; c < 8; ++c) {
            for (int32_t r = 0; r < 8; ++r) {
                image2.at(block.top + r + block.shift.v, block.left + c + block.shift.u) =
                    image1.values[(block.top + r) + static_cast<size_t>(block.left + c) * 20];
            }
        }
    }
    const auto motion = match<TypeParam>(image1, image2, {{8, 8}, {0, 0}, {4, 4}}, 5);
    for (size_t k = 0; k < 4; ++k) {
        expectResult<TypeParam>(motion, k, blocks[k].shift, "pasted blocks");
    }
    EXPECT_EQ(motion.back(), T(sentinel)) << "a fifth result was written";
}

TYPED_TEST(BlockMatching, IdenticalImagesGiveNoMotion)
{
    using T = typename TypeParam::T;
    // 16x16 in 8x8 blocks with displacements up to 4: four results. With odd
    // overlaps the blocks step by one and the last ones read the spare room
    // of both working images: 2x1 in 2x1 blocks overlapping by one row gives
    // two results, 4x4 in 2x2 blocks overlapping by one row and one column
    // sixteen.
    const struct {
        int32_t rows, cols;
        Settings settings;
        size_t blocks;
    } cases[] = {{16, 16, {{8, 8}, {0, 0}, {4, 4}}, 4}, {2, 1, {{2, 1}, {1, 0}, {0, 0}}, 2},
                 {4, 4, {{2, 2}, {1, 1}, {1, 1}}, 16}};
    for (const auto &c : cases) {
        Image<T> image = randomImage<T>(c.rows, c.cols, 3);
        const auto motion = match<TypeParam>(image, image, c.settings, c.blocks + 1);
        for (size_t k = 0; k < c.blocks; ++k) {
            expectResult<TypeParam>(motion, k, {0, 0}, "identical images");
        }
        EXPECT_EQ(motion.back(), T(sentinel)) << c.rows << "x" << c.cols << ": more results than blocks";
    }
}

TYPED_TEST(BlockMatching, FlatImagesKeepTheFirstCandidateScored)
{
    using T = typename TypeParam::T;
    // Interior blocks of a flat image see equal costs everywhere. The
    // exhaustive search keeps its first candidate, offset (0, 0), so the
    // displacement is (-dC, -dR). The three-step search keeps the top-left of
    // its first grid: 2*dR + 1 = 11 candidate rows give centre 5 and step
    // min(5, 4)/2 + 1 = 3, so row offset 2 (v = -3); 9 candidate columns give
    // centre 4, column offset 1 (u = -3).
    Image<T> flat(48, 48, T(5));
    const auto motion = match<TypeParam>(flat, flat, {{8, 8}, {0, 0}, {5, 4}}, 36);
    const Displacement expected = TypeParam::exhaustive ? Displacement{-4, -5} : Displacement{-3, -3};
    // 6x6 blocks; the outer ring's regions reach the zero margin.
    for (size_t blockCol = 1; blockCol < 5; ++blockCol) {
        for (size_t blockRow = 1; blockRow < 5; ++blockRow) {
            expectResult<TypeParam>(motion, blockRow + 6 * blockCol, expected, "flat image");
        }
    }
}

TYPED_TEST(BlockMatching, RecoversAShiftInInteriorBlocks)
{
    using T = typename TypeParam::T;
    Image<T> image1 = randomImage<T>(48, 56, 4);
    // Three rows down and three columns left: on the three-step search's
    // first grid, which then finds it exactly; any shift for the exhaustive
    // one.
    const Displacement shift = TypeParam::exhaustive ? Displacement{2, -1} : Displacement{-3, 3};
    const Image<T> image2 = shifted(image1, shift, 5);
    const auto motion = match<TypeParam>(image1, image2, {{8, 8}, {0, 0}, {4, 4}}, 42);
    // 6 block rows by 7 block columns; edge blocks see uncovered noise.
    for (size_t blockCol = 1; blockCol < 6; ++blockCol) {
        for (size_t blockRow = 1; blockRow < 5; ++blockRow) {
            expectResult<TypeParam>(motion, blockRow + 6 * blockCol, shift, "shifted image");
        }
    }
}

TYPED_TEST(BlockMatching, OverlappingBlocksStepByBlockMinusOverlap)
{
    using T = typename TypeParam::T;
    // 8x8 blocks overlapping by 4 rows and 2 columns step 4 down and 6
    // across, starting half the overlap (2 rows, 1 column) into the zero
    // margin. 32 rows: blocks at image rows -2, 2, ..., 26, eight of them;
    // 32 columns: at image columns -1, 5, ..., 23, five of them.
    Image<T> image1 = randomImage<T>(32, 32, 6);
    const Displacement shift = TypeParam::exhaustive ? Displacement{1, 2} : Displacement{3, 0};
    const Image<T> image2 = shifted(image1, shift, 7);
    const auto motion = match<TypeParam>(image1, image2, {{8, 8}, {4, 2}, {4, 4}}, 41);
    for (size_t blockCol = 1; blockCol < 4; ++blockCol) {
        for (size_t blockRow = 1; blockRow < 7; ++blockRow) {
            expectResult<TypeParam>(motion, blockRow + 8 * blockCol, shift, "overlapping blocks");
        }
    }
    EXPECT_NE(motion[(TypeParam::complexResult ? 2 : 1) * 39], T(sentinel)) << "the fortieth result is missing";
    EXPECT_EQ(motion.back(), T(sentinel)) << "more than forty results";
}

TYPED_TEST(BlockMatching, FirstImageCanBeItsOwnWorkingImage)
{
    using T = typename TypeParam::T;
    const Image<T> original = randomImage<T>(40, 40, 8);
    Image<T> image1 = original;
    const Displacement shift = TypeParam::exhaustive ? Displacement{-2, 1} : Displacement{0, -3};
    const auto motion = match<TypeParam>(image1, shifted(original, shift, 9), {{8, 8}, {0, 0}, {4, 4}}, 25, true);
    EXPECT_EQ(image1.values, original.values) << "the first image was cleared or written";
    for (size_t blockCol = 1; blockCol < 4; ++blockCol) {
        for (size_t blockRow = 1; blockRow < 4; ++blockRow) {
            expectResult<TypeParam>(motion, blockRow + 5 * blockCol, shift, "padded1 == image1");
        }
    }
}

TYPED_TEST(BlockMatching, GridWithoutBlocksFillsWorkingImagesOnly)
{
    using T = typename TypeParam::T;
    // padded2 only as wide as the image plus its left margin: the column
    // limit 9 - 4 - 2 + 1 = 4 does not exceed the first block column 4, so
    // nothing is searched, but both working images are cleared and filled.
    Image<T> image1 = randomImage<T>(6, 5, 10);
    const Image<T> image2 = randomImage<T>(6, 5, 11);
    const int32_t blockSize[2] = {4, 4}, overlap[2] = {2, 2}, maxDisplacement[2] = {2, 3};
    Image<T> padded1(8, 7, T(77)), padded2(12, 9, T(77));
    std::vector<T> motion(4, T(sentinel));
    TypeParam::match(image1.values.data(), image2.values.data(), padded1.values.data(), padded2.values.data(),
                     motion.data(), blockSize, overlap, maxDisplacement, 6, 5, 8, 7, 12, 9);
    EXPECT_EQ(motion, std::vector<T>(4, T(sentinel)));
    // Image 1 at (1, 1) of padded1, image 2 at (3, 4) of padded2, zero around.
    for (int32_t c = 0; c < 7; ++c) {
        for (int32_t r = 0; r < 8; ++r) {
            const bool inside = r >= 1 && r < 7 && c >= 1 && c < 6;
            EXPECT_EQ(padded1.at(r, c), inside ? image1.values[(r - 1) + (c - 1) * 6] : T(0)) << r << "," << c;
        }
    }
    for (int32_t c = 0; c < 9; ++c) {
        for (int32_t r = 0; r < 12; ++r) {
            const bool inside = r >= 3 && r < 9 && c >= 4 && c < 9;
            EXPECT_EQ(padded2.at(r, c), inside ? image2.values[(r - 3) + (c - 4) * 6] : T(0)) << r << "," << c;
        }
    }
}

} // namespace
