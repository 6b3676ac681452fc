#include "support.hpp"

using namespace ornex;

TYPED_TEST_SUITE(Typed, RealTypes);

const Quad kTarget{{{1, 3}, {0, 17}, {14, 19}, {12, 1}}};
const Quad kSource{{{2, 1}, {1, 12}, {10, 13}, {11, 2}}};

// Each source corner lands on its target corner: the matrices act on [column row 1], column by column, and the
// forward one is block 0-8 for a rectangle source, 9-17 for a quadrilateral source.
TYPED_TEST(Typed, HomographiesCarryCornersOntoCorners)
{
    using T = TypeParam;
    const Quad rectCorners{{{1, 2}, {1, 7}, {4, 7}, {4, 2}}}; // Rect{1, 2, 4, 6}: last row 4, last column 7
    const auto fromRect = homography<T>(Rect{1, 2, 4, 6}, kTarget, 8, 10);
    for (const auto &[transform, from] : {std::pair{fromRect, rectCorners}, {homography<T>(kSource, kTarget, 14, 14), kSource}}) {
        const T *m = transform.block.data() + (transform.fromQuad ? 9 : 0);
        for (int k = 0; k < 4; ++k) {
            const T c = T(from[k].col), r = T(from[k].row);
            const T w = c * m[6] + r * m[7] + m[8];
            EXPECT_NEAR((c * m[0] + r * m[1] + m[2]) / w, kTarget[k].col, 1e-3) << k;
            EXPECT_NEAR((c * m[3] + r * m[4] + m[5]) / w, kTarget[k].row, 1e-3) << k;
        }
    }
}

// c^2 and r^2 stretched three times: column 4 reads 4/3, cubic weights (-4, 22, 11, -2)/27 give 16/9.
TYPED_TEST(Typed, WarpSamplesAStretchedImage)
{
    using T = TypeParam;
    const auto source = makeImage<T>(5, 5, 2, [](int r, int c, int p) { return p ? r * r : c * c; });
    const auto view = source.view();
    const RgbView<const T> rgb{view.plane(0), view.plane(1), view.plane(0)};
    const Quad square{{{0, 0}, {0, 12}, {12, 12}, {12, 0}}}, whole{{{0, 0}, {0, 4}, {4, 4}, {4, 0}}};
    using enum Interpolation;
    const std::pair<Interpolation, double> methods[] = {{nearest, 1}, {bilinear, 2}, {bicubic, 16.0 / 9}};
    for (const auto &transform : {homography<T>(Rect{0, 0, 5, 5}, square, 5, 5), homography<T>(whole, square, 5, 5)}) {
        for (const auto &[interpolation, expected] : methods) {
            for (const bool exact : {true, false}) {
                const auto planes = warp(view, 14, 14, transform, {interpolation, exact, 2, {-1.0, -2.0}});
                const auto colours = warp(rgb, 14, 14, transform, {interpolation, exact, 2, {-3.0}});
                for (int32_t k = 0; k < 13; ++k) {
                    for (const auto *out : {&planes, &colours})
                        EXPECT_TRUE(std::abs((*out)(k, 4, 0) - expected) + std::abs((*out)(4, k, 1) - expected) < 1e-3);
                    EXPECT_NEAR(colours(k, 4, 2) + planes(k, 6, 0), expected + 4, 1e-3);
                    EXPECT_TRUE(planes(13, k, 0) == T(-1) && planes(k, 13, 1) == T(-2) && colours(13, k, 2) == T(-3));
                }
            }
        }
    }
}

TYPED_TEST(Typed, ShearMovesEachLineByItsOffset)
{
    using T = TypeParam;
    // Right by r on row r; down by -2 (c - 5) on column c (a negative amount counts from the last line).
    const auto image = makeImage<T>(5, 6, 2, [](int r, int c, int p) { return 10 * r + c + 100 * p; });
    const auto right = shear(image, ShearDirection::horizontal, 1.0, {Interpolation::nearest, {-8.0, -9.0}});
    const auto down = shear(image, ShearDirection::vertical, -2.0, {Interpolation::nearest, {-8.0, -9.0}});
    ASSERT_TRUE(right.rows() == 5 && right.cols() == 6 + 4 && down.rows() == 5 + 10 && down.cols() == 6);
    for (int32_t k = 0; k < 180; ++k) {
        const int32_t r = k / 10 % 5, along = k % 10, c = k / 15 % 6, at = k % 15, shift = 2 * (5 - c), p = k / 90;
        EXPECT_EQ(right(r, along, p), along >= r && along < r + 6 ? image(r, along - r, p) : T(-8 - p)) << k;
        EXPECT_EQ(down(at, c, p), at >= shift && at < shift + 5 ? image(at - shift, c, p) : T(-8 - p)) << k;
    }
    // Row 1 of c^2 at column 1.5: nearest 1, bilinear 2.5, cubic (-1, 5, 5, -1)/8 gives (5 + 20 - 9)/8.
    const auto squares = makeImage<T>(2, 6, 1, [](int, int c, int) { return c * c; });
    for (const auto &[interpolation, expected] :
         {std::pair{Interpolation::nearest, 1.0}, {Interpolation::bilinear, 2.5}, {Interpolation::bicubic, 2.0}}) {
        const auto half = shear(squares, ShearDirection::horizontal, 0.5, {interpolation, {0.0}});
        EXPECT_TRUE(half.cols() == 7 && half(0, 2) == T(4));
        EXPECT_NEAR(half(1, 2), expected, 1e-6) << int(interpolation);
    }
}

// The whole-image shear equals one kernel call per line straight on the image (a row walked a whole column apart
// value by value), on an image whose row count leaves a partial band of rows, both ways, both signs.
TYPED_TEST(Typed, ShearEqualsOneKernelCallPerLine)
{
    using T = TypeParam;
    using K = detail::Kernels<T>;
    const auto image = makeImage<T>(150, 37, 2, [](int r, int c, int p) { return std::sin(0.3 * r + 0.7 * c) * 50 + p; });
    const T fill[2] = {T(-2), T(5)};
    for (const auto &[interpolation, kernel] : {std::pair{Interpolation::nearest, K::shearNearest},
                                                {Interpolation::bilinear, K::shearBilinear}, {Interpolation::bicubic, K::shearBicubic}})
        for (const auto direction : {ShearDirection::horizontal, ShearDirection::vertical})
            for (const double amount : {0.37, -1.3}) {
                const auto sheared = shear(image.view(), direction, amount, {interpolation, {-2.0, 5.0}});
                const auto out = sheared.view();
                const bool across = direction == ShearDirection::horizontal;
                const int32_t lines = across ? 150 : 37, length = across ? 37 : 150;
                const int32_t grown = length + int32_t(std::ceil(std::abs(amount) * (lines - 1)));
                std::vector<T> expected(size_t(grown) * lines * 2);
                for (int32_t p = 0; p < 2; ++p)
                    for (int32_t i = 0; i < lines; ++i) {
                        const T *in = image.view().data + p * 150 * 37 + (across ? i : i * 150);
                        T *to = expected.data() + p * grown * lines + (across ? i : i * grown);
                        const T offset = T(amount >= 0 ? amount * i : -amount * (lines - 1 - i));
                        kernel(in, length, grown, offset, across ? 150 : 1, across ? 150 : 1, to, 0, &fill[p]);
                    }
                EXPECT_EQ(std::vector<T>(out.data, out.data + out.size()), expected) << int(interpolation) << across << amount;
            }
}

TYPED_TEST(Typed, ArgumentsAreCheckedWithTheirMessages)
{
    using T = TypeParam;
    const Image<T> source(15, 16, 3), eight(8, 8);
    const auto view = source.view();
    const auto moved = homography<T>(kSource, kTarget, 15, 16);
    const auto tiny = homography<T>(Quad{{{0, 0}, {0, 3}, {3, 3}, {3, 0}}}, kTarget, 15, 16);
    const Quad collinear{{{0, 0}, {0, 10}, {0, 20}, {10, 0}}};
    const auto h = ShearDirection::horizontal;
    const RgbView<const T> uneven{view.plane(0), view.plane(1), ImageView<const T>{view.data, 5, 5}};
    const char *const methods = "interpolation: must be nearest, bilinear or bicubic";
    const char *const background = "background: needs one value or one per plane";
    expectRejections({
        {[] { homography<T>(Rect{0, 0, 10, 10}, kTarget, 0, 10); }, "sourceRows: must be positive"},
        {[] { homography<T>(Rect{0, 0, 10, 10}, kTarget, 10, -1); }, "sourceCols: must be positive"},
        {[] { homography<T>(Rect{3, 0, 10, 10}, kTarget, 12, 12); }, "rect: must lie inside the image"},
        {[] { homography<T>(Rect{0, 0, 1, 10}, kTarget, 12, 12); }, "rect: must have at least two rows and two columns"},
        {[&] { homography<T>(Rect{0, 0, 10, 10}, collinear, 12, 12); }, "to: must be a convex quadrilateral with its corners going round"},
        {[&] { homography<T>(collinear, kTarget, 30, 30); }, "from: must be a convex quadrilateral with its corners going round"},
        {[] { homography<T>(kSource, kTarget, 11, 30); }, "from: must lie inside the image"},
        {[&] { warp(view, 0, 10, moved); }, "outputRows: must be positive"},
        {[&] { warp(view, 10, -3, moved); }, "outputCols: must be positive"},
        {[&] { warp(ImageView<const T>{}, 10, 10, moved); }, "source: must be a non-empty image"},
        {[&] { warp(uneven, 10, 10, moved); }, "source: needs three one-plane images of the same size"},
        {[&] { warp(view, 10, 10, moved, {Interpolation::bilinear, true, -1}); }, "subdivisions: must not be negative"},
        {[&] { warp(view, 10, 10, moved, {Interpolation::bilinear, true, 4, {1, 2}}); }, background},
        {[&] { warp(view, 10, 10, moved, {Interpolation(0)}); }, methods},
        {[&] { warp(eight.view(), 10, 10, moved); }, "transform: its source region must lie inside the source image"},
        {[&] { warp(view, 10, 10, tiny, {Interpolation::bilinear, true, 9}); },
         "subdivisions: too many for the source quadrilateral: a cell has collinear corners"},
        {[&] { shear(Image<T>(), h, 1.0); }, "image: must be a non-empty image"},
        {[&] { shear(source, h, std::nan("")); }, "amount: must be finite"},
        {[&] { shear(source, h, 1e12); }, "amount: too large for the image"},
        {[&] { shear(source, h, 1.0, {Interpolation::bilinear, {1, 2}}); }, background},
        {[&] { shear(source, ShearDirection(7), 1.0); }, "direction: must be horizontal or vertical"},
        {[&] { shear(source, h, 1.0, {Interpolation(4), {0.0}}); }, methods},
    });
    EXPECT_NO_THROW(warp(view, 10, 10, tiny, {Interpolation::bilinear, true, 1}));
}
