#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "ornex/ornex.hpp"
#include "rejection.hpp"

namespace {

template <class T>
class GeometryLayer : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(GeometryLayer, RealTypes);

template <class T>
ornex::Image<T> testImage(int32_t rows, int32_t cols, int32_t planes = 1)
{
    ornex::Image<T> image(rows, cols, planes);
    for (int32_t p = 0; p < planes; ++p) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                image(r, c, p) = static_cast<T>(0.25 * ((r * 5 + c * 3 + p * 7) % 11) + 0.01 * r * c);
            }
        }
    }
    return image;
}

// Interleaved (row, column) corners as the kernels take them.
std::array<int32_t, 8> flat(const ornex::Quad &q)
{
    return {q[0].row, q[0].col, q[1].row, q[1].col, q[2].row, q[2].col, q[3].row, q[3].col};
}

// [column row 1] through the column-order matrix m: (row, column).
template <class T>
std::array<double, 2> mapped(const T *m, double row, double col)
{
    const double p = col * m[0] + row * m[1] + m[2];
    const double q = col * m[3] + row * m[4] + m[5];
    const double w = col * m[6] + row * m[7] + m[8];
    return {q / w, p / w};
}

template <class T>
void expectMaps(const T *m, const ornex::Point &from, const ornex::Point &to)
{
    const double tolerance = sizeof(T) == 4 ? 2e-3 : 1e-9;
    const auto at = mapped(m, from.row, from.col);
    EXPECT_NEAR(at[0], to.row, tolerance);
    EXPECT_NEAR(at[1], to.col, tolerance);
}

void xformDirect(const int32_t *points, const int32_t *rect, uint32_t rows, uint32_t cols, int32_t mode,
                 int32_t inverseOffset, uint8_t useRect, double *block)
{
    ORNEX_CalculateXformMtrx_D(points, rect, rows, cols, mode, inverseOffset, useRect, block);
}
void xformDirect(const int32_t *points, const int32_t *rect, uint32_t rows, uint32_t cols, int32_t mode,
                 int32_t inverseOffset, uint8_t useRect, float *block)
{
    ORNEX_CalculateXformMtrx_R(points, rect, rows, cols, mode, inverseOffset, useRect, block);
}
void q2qDirect(const int32_t *first, uint32_t rows, uint32_t cols, double *block, const int32_t *second)
{
    ORNEX_CalculateQ2QXformMtrx_D(first, rows, cols, block, second, 1);
}
void q2qDirect(const int32_t *first, uint32_t rows, uint32_t cols, float *block, const int32_t *second)
{
    ORNEX_CalculateQ2QXformMtrx_R(first, rows, cols, block, second, 1);
}

const ornex::Quad kTarget{{{1, 3}, {0, 17}, {14, 19}, {12, 1}}};
const ornex::Quad kSource{{{2, 1}, {1, 12}, {10, 13}, {11, 2}}};

// The block the rectangle warp reads: the source rectangle's matrix moved by
// its origin both ways (mode 2 with the inverse offset).
template <class T>
std::array<T, 18> rectangleBlock(const ornex::Rect &rect, const ornex::Quad &to, int32_t rows, int32_t cols)
{
    std::array<T, 18> block{};
    const auto points = flat(to);
    const int32_t rectangle[4] = {rect.row, rect.col, rect.rows, rect.cols};
    xformDirect(points.data(), rectangle, uint32_t(rows), uint32_t(cols), 2, 1, 1, block.data());
    return block;
}

// The last 18 values of the quadrilateral-to-quadrilateral block.
template <class T>
std::array<T, 18> quadBlock(const ornex::Quad &from, const ornex::Quad &to, int32_t rows, int32_t cols)
{
    std::array<T, 54> whole{};
    const auto first = flat(from), second = flat(to);
    q2qDirect(first.data(), uint32_t(rows), uint32_t(cols), whole.data(), second.data());
    std::array<T, 18> block{};
    std::copy(whole.begin() + 36, whole.end(), block.begin());
    return block;
}

TYPED_TEST(GeometryLayer, HomographyFromRectangleEqualsTheKernel)
{
    using T = TypeParam;
    const ornex::Rect rect{2, 3, 10, 12};
    const auto transform = ornex::homography<T>(rect, kTarget, 15, 16);
    EXPECT_FALSE(transform.fromQuad);
    EXPECT_EQ(transform.block, (rectangleBlock<T>(rect, kTarget, 15, 16)));
    // Forward: the rectangle's corners (image coordinates) land on the target.
    const ornex::Point corners[4] = {{2, 3}, {2, 14}, {11, 14}, {11, 3}};
    for (int k = 0; k < 4; ++k) {
        expectMaps(transform.block.data(), corners[k], kTarget[k]);
        expectMaps(transform.block.data() + 9, kTarget[k], corners[k]);
    }
}

TYPED_TEST(GeometryLayer, HomographyFromQuadrilateralEqualsTheKernel)
{
    using T = TypeParam;
    const auto transform = ornex::homography<T>(kSource, kTarget, 15, 16);
    EXPECT_TRUE(transform.fromQuad);
    EXPECT_EQ(transform.block, (quadBlock<T>(kSource, kTarget, 15, 16)));
    for (int k = 0; k < 4; ++k) {
        expectMaps(transform.block.data() + 9, kSource[k], kTarget[k]);
        expectMaps(transform.block.data(), kTarget[k], kSource[k]);
    }
}

TYPED_TEST(GeometryLayer, HomographyRejectsBadArguments)
{
    using T = TypeParam;
    const ornex::Quad collinear{{{0, 0}, {0, 10}, {0, 20}, {10, 0}}};
    expectRejected([] { ornex::homography<T>(ornex::Rect{0, 0, 10, 10}, kTarget, 0, 10); }, "sourceRows");
    expectRejected([] { ornex::homography<T>(ornex::Rect{0, 0, 10, 10}, kTarget, 10, -1); }, "sourceCols");
    expectRejected([] { ornex::homography<T>(ornex::Rect{5, 0, 10, 10}, kTarget, 12, 12); }, "rect");
    expectRejected([] { ornex::homography<T>(ornex::Rect{0, -1, 10, 10}, kTarget, 12, 12); }, "rect");
    expectRejected([] { ornex::homography<T>(ornex::Rect{0, 0, 1, 10}, kTarget, 12, 12); }, "rect");
    expectRejected([&] { ornex::homography<T>(ornex::Rect{0, 0, 10, 10}, collinear, 12, 12); }, "to");
    expectRejected([&] { ornex::homography<T>(collinear, kTarget, 30, 30); }, "from");
    expectRejected([&] { ornex::homography<T>(kSource, collinear, 30, 30); }, "to");
    expectRejected([] { ornex::homography<T>(kSource, kTarget, 11, 30); }, "from");
}

template <class T>
struct WarpKernel;
template <>
struct WarpKernel<double> {
    static constexpr auto fill = ORNEX_FillBackgroundValues_D;
    static constexpr auto rect = ORNEX_DivideRectXform_D;
    static constexpr auto quad = ORNEX_DivideQuadXform_D;
};
template <>
struct WarpKernel<float> {
    static constexpr auto fill = ORNEX_FillBackgroundValues_R;
    static constexpr auto rect = ORNEX_DivideRectXform_R;
    static constexpr auto quad = ORNEX_DivideQuadXform_R;
};

struct WarpCase {
    ornex::Interpolation interpolation;
    bool exact;
    int32_t subdivisions;
};
const WarpCase kWarpCases[] = {
    {ornex::Interpolation::nearest, true, 0},  {ornex::Interpolation::bilinear, true, 3},
    {ornex::Interpolation::bicubic, true, 2},  {ornex::Interpolation::bilinear, false, 4},
    {ornex::Interpolation::bicubic, false, 1}, {ornex::Interpolation::nearest, false, 5},
};

// The kernels called directly: background first, then the driver, over the
// whole output as the window; source planes either packed (numPlanes) or
// three separate ones.
template <class T>
std::vector<T> warpDirect(const std::array<const T *, 3> &in, int32_t inRows, int32_t inCols, int32_t planes,
                          bool threePlanes, int32_t outRows, int32_t outCols, const std::array<T, 18> &block,
                          const ornex::Rect *rect, const ornex::Quad *quad, const WarpCase &c,
                          const std::vector<T> &background)
{
    const size_t planeSize = size_t(outRows) * outCols;
    std::vector<T> out(planeSize * planes, T(-77));
    T *o0 = out.data(), *o1 = threePlanes ? o0 + planeSize : nullptr, *o2 = threePlanes ? o0 + 2 * planeSize : nullptr;
    const int32_t numPlanes = threePlanes ? 1 : planes;
    WarpKernel<T>::fill(background.data(), o0, o1, o2, outRows, outCols, threePlanes, background.size() == 1,
                        numPlanes);
    int32_t edgeBuffer[64] = {}, sortScratch[24] = {};
    const int32_t method = c.interpolation == ornex::Interpolation::nearest    ? 1
                           : c.interpolation == ornex::Interpolation::bilinear ? 2
                                                                               : 3;
    if (rect) {
        const int32_t limits[4] = {rect->row, rect->col, rect->row + rect->rows, rect->col + rect->cols};
        WarpKernel<T>::rect(edgeBuffer, limits, sortScratch, o0, o1, o2, 0, outRows - 1, 0, outCols - 1, inRows,
                            threePlanes, block.data(), in[0], in[1], in[2], c.exact, outRows, outCols, inCols,
                            method, 0, 0, c.subdivisions, 1, numPlanes);
    } else {
        const auto corners = flat(*quad);
        EXPECT_NE(WarpKernel<T>::quad(edgeBuffer, corners.data(), sortScratch, o0, o1, o2, 0, outRows - 1, 0,
                                      outCols - 1, inRows, threePlanes, block.data(), in[0], in[1], in[2], c.exact,
                                      outRows, outCols, inCols, method, c.subdivisions, numPlanes),
                  0);
    }
    return out;
}

template <class T>
ornex::WarpOptions optionsFor(const WarpCase &c, std::vector<double> background)
{
    ornex::WarpOptions options;
    options.interpolation = c.interpolation;
    options.exact = c.exact;
    options.subdivisions = c.subdivisions;
    options.background = std::move(background);
    return options;
}

template <class T>
std::vector<T> asElements(const std::vector<double> &values)
{
    return std::vector<T>(values.begin(), values.end());
}

// Pixels that the warp wrote, i.e. that differ from the background.
template <class T>
size_t coveredPixels(const std::vector<T> &values, T background)
{
    size_t count = 0;
    for (T v : values) {
        count += v != background;
    }
    return count;
}

TYPED_TEST(GeometryLayer, WarpOfRectangleEqualsTheKernels)
{
    using T = TypeParam;
    const auto source = testImage<T>(15, 16);
    const ornex::Rect rect{2, 3, 10, 12};
    const auto transform = ornex::homography<T>(rect, kTarget, 15, 16);
    const auto block = rectangleBlock<T>(rect, kTarget, 15, 16);
    for (const WarpCase &c : kWarpCases) {
        const std::vector<double> background{-1.5};
        const auto result = ornex::warp(source.view(), 17, 21, transform, optionsFor<T>(c, background));
        const auto expected = warpDirect<T>({source.data(), nullptr, nullptr}, 15, 16, 1, false, 17, 21, block, &rect,
                                            nullptr, c, asElements<T>(background));
        ASSERT_EQ(result.rows(), 17);
        ASSERT_EQ(result.cols(), 21);
        ASSERT_EQ(result.planes(), 1);
        EXPECT_EQ(result.values(), expected) << int(c.interpolation) << c.exact << c.subdivisions;
        EXPECT_GT(coveredPixels(expected, T(-1.5)), 100u);
    }
}

TYPED_TEST(GeometryLayer, WarpOfPlanesAndColourPlanesEqualsTheKernels)
{
    using T = TypeParam;
    const auto source = testImage<T>(15, 16, 3);
    const ornex::Rect rect{0, 0, 15, 16};
    const auto transform = ornex::homography<T>(rect, kTarget, 15, 16);
    const auto block = rectangleBlock<T>(rect, kTarget, 15, 16);
    const auto view = source.view();
    const ornex::RgbView<const T> rgb{view.plane(0), view.plane(1), view.plane(2)};
    for (const WarpCase &c : kWarpCases) {
        for (const std::vector<double> &background : {std::vector<double>{0.0}, std::vector<double>{1.0, 2.0, 3.0}}) {
            const auto options = optionsFor<T>(c, background);
            const auto planes = ornex::warp(view, 16, 20, transform, options);
            const auto colours = ornex::warp(rgb, 16, 20, transform, options);
            EXPECT_EQ(planes.values(), (warpDirect<T>({source.data(), nullptr, nullptr}, 15, 16, 3, false, 16, 20,
                                                      block, &rect, nullptr, c, asElements<T>(background))));
            EXPECT_EQ(colours.values(), (warpDirect<T>({rgb.red.data, rgb.green.data, rgb.blue.data}, 15, 16, 3, true,
                                                       16, 20, block, &rect, nullptr, c, asElements<T>(background))));
            EXPECT_EQ(colours.planes(), 3);
        }
    }
}

TYPED_TEST(GeometryLayer, WarpOfQuadrilateralEqualsTheKernels)
{
    using T = TypeParam;
    const auto source = testImage<T>(15, 16, 2);
    const auto transform = ornex::homography<T>(kSource, kTarget, 15, 16);
    const auto block = quadBlock<T>(kSource, kTarget, 15, 16);
    for (const WarpCase &c : kWarpCases) {
        const std::vector<double> background{4.0, -4.0};
        const auto result = ornex::warp(source.view(), 18, 22, transform, optionsFor<T>(c, background));
        const auto expected = warpDirect<T>({source.data(), nullptr, nullptr}, 15, 16, 2, false, 18, 22, block,
                                            nullptr, &kSource, c, asElements<T>(background));
        EXPECT_EQ(result.values(), expected) << int(c.interpolation) << c.exact << c.subdivisions;
        EXPECT_GT(coveredPixels(std::vector<T>(expected.begin(), expected.begin() + 18 * 22), T(4.0)), 100u);
    }
}

TYPED_TEST(GeometryLayer, WarpOntoTheSameRectangleCopiesTheImage)
{
    using T = TypeParam;
    const auto source = testImage<T>(9, 11);
    const ornex::Quad same{{{0, 0}, {0, 10}, {8, 10}, {8, 0}}};
    const auto transform = ornex::homography<T>(ornex::Rect{0, 0, 9, 11}, same, 9, 11);
    ornex::WarpOptions options;
    options.interpolation = ornex::Interpolation::nearest;
    options.subdivisions = 2;
    options.background = {-1.0};
    EXPECT_EQ(ornex::warp(source.view(), 9, 11, transform, options).values(), source.values());
}

TYPED_TEST(GeometryLayer, WarpRejectsBadArguments)
{
    using T = TypeParam;
    const auto source = testImage<T>(15, 16, 3);
    const auto view = source.view();
    const auto transform = ornex::homography<T>(kSource, kTarget, 15, 16);
    auto with = [](auto change) {
        ornex::WarpOptions options;
        change(options);
        return options;
    };
    expectRejected([&] { ornex::warp(view, 0, 10, transform); }, "outputRows");
    expectRejected([&] { ornex::warp(view, 10, -3, transform); }, "outputCols");
    expectRejected([&] { ornex::warp(ornex::ImageView<const T>{}, 10, 10, transform); }, "source");
    expectRejected([&] { ornex::warp(view, 10, 10, transform, with([](auto &o) { o.subdivisions = -1; })); },
                   "subdivisions");
    expectRejected([&] { ornex::warp(view, 10, 10, transform, with([](auto &o) { o.background = {1, 2}; })); },
                   "background");
    expectRejected([&] { ornex::warp(view, 10, 10, transform, with([](auto &o) { o.background = {}; })); },
                   "background");
    // The transform was made for a larger source than this one.
    expectRejected([&] { ornex::warp(testImage<T>(8, 8).view(), 10, 10, transform); }, "transform");
    const auto bigRect = ornex::homography<T>(ornex::Rect{0, 0, 15, 16}, kTarget, 15, 16);
    expectRejected([&] { ornex::warp(testImage<T>(15, 12).view(), 10, 10, bigRect); }, "transform");
    // Many subdivisions of a small quadrilateral give cells with coincident
    // corners: the warp gives up on them.
    const ornex::Quad small{{{0, 0}, {0, 3}, {3, 3}, {3, 0}}};
    const auto tiny = ornex::homography<T>(small, kTarget, 15, 16);
    EXPECT_NO_THROW(ornex::warp(view, 10, 10, tiny, with([](auto &o) { o.subdivisions = 1; })));
    expectRejected([&] { ornex::warp(view, 10, 10, tiny, with([](auto &o) { o.subdivisions = 9; })); },
                   "subdivisions");
    const ornex::RgbView<const T> uneven{view.plane(0), view.plane(1), ornex::ImageView<const T>{view.data, 5, 5}};
    expectRejected([&] { ornex::warp(uneven, 10, 10, transform); }, "source");
}

template <class T>
struct SkewKernel;
template <>
struct SkewKernel<double> {
    static constexpr decltype(&ORNEX_Skew_NNI_D) kernels[3] = {ORNEX_Skew_NNI_D, ORNEX_Skew_BLI_D, ORNEX_Skew_BCI_D};
};
template <>
struct SkewKernel<float> {
    static constexpr decltype(&ORNEX_Skew_NNI_R) kernels[3] = {ORNEX_Skew_NNI_R, ORNEX_Skew_BLI_R, ORNEX_Skew_BCI_R};
};

// Shear by hand: line i shifted by amount * i (or, for a negative amount,
// by |amount| * (lines - 1 - i)), each line grown by ceil(|amount| * (lines - 1)).
template <class T>
ornex::Image<T> shearDirect(const ornex::Image<T> &image, bool horizontal, double amount, int method,
                            const std::vector<T> &background)
{
    const int32_t rows = image.rows(), cols = image.cols();
    const int32_t lines = horizontal ? rows : cols, length = horizontal ? cols : rows;
    const auto grow = static_cast<int32_t>(std::ceil(std::fabs(amount) * (lines - 1)));
    ornex::Image<T> out(horizontal ? rows : rows + grow, horizontal ? cols + grow : cols, image.planes(), T(-99));
    for (int32_t p = 0; p < image.planes(); ++p) {
        const T *fill = &background[background.size() == 1 ? 0 : p];
        for (int32_t i = 0; i < lines; ++i) {
            const double offset = amount >= 0 ? amount * i : -amount * (lines - 1 - i);
            if (horizontal) {
                SkewKernel<T>::kernels[method](&image(i, 0, p), length, length + grow, T(offset), uint32_t(rows),
                                               uint32_t(rows), &out(i, 0, p), 0, fill);
            } else {
                SkewKernel<T>::kernels[method](&image(0, i, p), length, length + grow, T(offset), 1, 1,
                                               &out(0, i, p), 0, fill);
            }
        }
    }
    return out;
}

TYPED_TEST(GeometryLayer, ShearEqualsTheKernelLineByLine)
{
    using T = TypeParam;
    const auto image = testImage<T>(7, 9, 2);
    const ornex::Interpolation methods[3] = {ornex::Interpolation::nearest, ornex::Interpolation::bilinear,
                                             ornex::Interpolation::bicubic};
    for (int method = 0; method < 3; ++method) {
        for (bool horizontal : {true, false}) {
            for (double amount : {0.0, 0.4, 1.0, -0.75, 2.3}) {
                for (const std::vector<double> &background : {std::vector<double>{0.5}, std::vector<double>{1, -1}}) {
                    const auto result =
                        ornex::shear(image, horizontal ? ornex::ShearDirection::horizontal : ornex::ShearDirection::vertical,
                                     amount, {methods[method], background});
                    const auto expected = shearDirect(image, horizontal, amount, method, asElements<T>(background));
                    ASSERT_EQ(result.rows(), expected.rows());
                    ASSERT_EQ(result.cols(), expected.cols());
                    ASSERT_EQ(result.planes(), 2);
                    EXPECT_EQ(result.values(), expected.values())
                        << method << " " << horizontal << " " << amount << " " << background.size();
                }
            }
        }
    }
}

TYPED_TEST(GeometryLayer, ShearByWholePixelsMovesEachLine)
{
    using T = TypeParam;
    const auto image = testImage<T>(5, 6);
    ornex::ShearOptions options{ornex::Interpolation::nearest, {-8.0}};
    const auto right = ornex::shear(image, ornex::ShearDirection::horizontal, 1.0, options);
    ASSERT_EQ(right.rows(), 5);
    ASSERT_EQ(right.cols(), 10);
    for (int32_t r = 0; r < 5; ++r) {
        for (int32_t k = 0; k < 10; ++k) {
            const bool inside = k >= r && k < r + 6;
            EXPECT_EQ(right(r, k), inside ? image(r, k - r) : T(-8)) << r << " " << k;
        }
    }
    // Upward by two rows per column: the last column stays at the top.
    const auto up = ornex::shear(image, ornex::ShearDirection::vertical, -2.0, options);
    ASSERT_EQ(up.rows(), 5 + 10);
    ASSERT_EQ(up.cols(), 6);
    for (int32_t c = 0; c < 6; ++c) {
        const int32_t shift = 2 * (5 - c);
        for (int32_t k = 0; k < 15; ++k) {
            const bool inside = k >= shift && k < shift + 5;
            EXPECT_EQ(up(k, c), inside ? image(k - shift, c) : T(-8)) << c << " " << k;
        }
    }
}

TYPED_TEST(GeometryLayer, ShearRejectsBadArguments)
{
    using T = TypeParam;
    const auto image = testImage<T>(5, 6, 2);
    const auto h = ornex::ShearDirection::horizontal;
    expectRejected([&] { ornex::shear(ornex::Image<T>(), h, 1.0); }, "image");
    expectRejected([&] { ornex::shear(image, h, std::nan("")); }, "amount");
    expectRejected([&] { ornex::shear(image, h, INFINITY); }, "amount");
    expectRejected([&] { ornex::shear(image, h, 1e12); }, "amount");
    expectRejected([&] { ornex::shear(image, h, 1.0, {ornex::Interpolation::bilinear, {1, 2, 3}}); }, "background");
    expectRejected([&] { ornex::shear(image, static_cast<ornex::ShearDirection>(7), 1.0); }, "direction");
    expectRejected([&] { ornex::shear(image, h, 1.0, {static_cast<ornex::Interpolation>(0), {0.0}}); },
                   "interpolation");
}

} // namespace
