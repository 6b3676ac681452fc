#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T>
struct Sampler {
    static void nearest(const T *s, T y, T x, uint32_t m, T *d, uint32_t i, int32_t p, uint32_t ss, uint32_t ds)
    {
        if constexpr (std::is_same_v<T, double>) {
            ORNEX_NN_Interp_D(s, y, x, m, d, i, p, ss, ds);
        } else {
            ORNEX_NN_Interp_R(s, y, x, m, d, i, p, ss, ds);
        }
    }
    static void bilinear(const T *s, T y, T x, uint32_t m, uint32_t n, T *d, uint32_t i, int32_t p, uint32_t ss,
                         uint32_t ds)
    {
        if constexpr (std::is_same_v<T, double>) {
            ORNEX_PosVal_BL_Interp_D(s, y, x, m, n, d, i, p, ss, ds);
        } else {
            ORNEX_PosVal_BL_Interp_R(s, y, x, m, n, d, i, p, ss, ds);
        }
    }
    static void bicubic(const T *s, T y, T x, uint32_t m, uint32_t n, T *d, uint32_t i, int32_t p, uint32_t ss,
                        uint32_t ds)
    {
        if constexpr (std::is_same_v<T, double>) {
            ORNEX_PosVal_BC_Interp_D(s, y, x, m, n, d, i, p, ss, ds);
        } else {
            ORNEX_PosVal_BC_Interp_R(s, y, x, m, n, d, i, p, ss, ds);
        }
    }
};

template <class T>
class Interpolation : public ::testing::Test {
protected:
    static constexpr uint32_t rows = 6, cols = 7;
    std::vector<T> image = makeImage();

    static std::vector<T> makeImage()
    {
        std::vector<T> values(rows * cols);
        for (uint32_t i = 0; i < values.size(); ++i) {
            values[i] = T((i * 37) % 23) + T(0.5); // no pattern a kernel could exploit
        }
        return values;
    }
    T at(int32_t r, int32_t c) const { return image[r + c * rows]; }

    T sample(int kernel, T y, T x) const
    {
        T out = T(-99);
        if (kernel == 0) {
            Sampler<T>::nearest(image.data(), y, x, rows, &out, 0, 1, 0, 0);
        } else if (kernel == 1) {
            Sampler<T>::bilinear(image.data(), y, x, rows, cols, &out, 0, 1, 0, 0);
        } else {
            Sampler<T>::bicubic(image.data(), y, x, rows, cols, &out, 0, 1, 0, 0);
        }
        return out;
    }
};
using ElementTypes = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Interpolation, ElementTypes);

TYPED_TEST(Interpolation, IntegerPositionsReturnTheSourceValue)
{
    using T = TypeParam;
    for (int32_t c = 0; c < int32_t(this->cols); ++c) {
        for (int32_t r = 0; r < int32_t(this->rows); ++r) {
            for (int kernel = 0; kernel < 3; ++kernel) {
                EXPECT_EQ(this->sample(kernel, T(r), T(c)), this->at(r, c)) << kernel << ": " << r << "," << c;
            }
        }
    }
}

TYPED_TEST(Interpolation, NearestRoundsHalvesAwayFromZero)
{
    using T = TypeParam;
    EXPECT_EQ(this->sample(0, T(2.5), T(1.5)), this->at(3, 2));
    EXPECT_EQ(this->sample(0, T(2.49), T(1.51)), this->at(2, 2));
    EXPECT_EQ(this->sample(0, T(0.4), T(4.5)), this->at(0, 5));
}

TYPED_TEST(Interpolation, BilinearGroupingAndLastRowAndColumn)
{
    using T = TypeParam;
    // (y, x) = (1.25, 2.5), written out in the kernel's grouping.
    const T fy = T(0.25), fx = T(0.5);
    const T expected = (this->at(1, 3) * (T(1) - fy) + this->at(2, 3) * fy) * fx +
                       (this->at(1, 2) * (T(1) - fy) + this->at(2, 2) * fy) * (T(1) - fx);
    EXPECT_EQ(this->sample(1, T(1.25), T(2.5)), expected);
    // On the last row the next row is clamped onto it: a blend along the row.
    const T last = T(this->rows - 1);
    EXPECT_EQ(this->sample(1, last, T(2.5)),
              (this->at(5, 3) * (T(1) - T(0)) + this->at(5, 3) * T(0)) * fx +
                  (this->at(5, 2) * (T(1) - T(0)) + this->at(5, 2) * T(0)) * (T(1) - fx));
    EXPECT_EQ(this->sample(1, T(1.25), T(this->cols - 1)),
              this->at(1, 6) * (T(1) - fy) + this->at(2, 6) * fy);
}

TYPED_TEST(Interpolation, BicubicFallsBackToLinearNextToTheBorders)
{
    using T = TypeParam;
    // Row 0 and row M-2 blend two rows; an integer column takes one column.
    EXPECT_EQ(this->sample(2, T(0.25), T(3)), (T(1) - T(0.25)) * this->at(0, 3) + T(0.25) * this->at(1, 3));
    EXPECT_EQ(this->sample(2, T(4.75), T(3)), (T(1) - T(0.75)) * this->at(4, 3) + T(0.75) * this->at(5, 3));
    // Column 0 with an integer row: two columns.
    EXPECT_EQ(this->sample(2, T(2), T(0.5)), (T(1) - T(0.5)) * this->at(2, 0) + T(0.5) * this->at(2, 1));
}

TYPED_TEST(Interpolation, BicubicWeightsOfTheMinusOneKernel)
{
    using T = TypeParam;
    // On the ramp S = 3r + 5c + 1 the four weights at fraction 0.5 are
    // symmetric (-1/8, 5/8, 5/8, -1/8), so half-way positions give the ramp
    // itself. At fraction 0.25 they are w2(1.25) = -0.140625, w1(0.25) =
    // 0.890625, w1(0.75) = 0.296875, w2(1.75) = -0.046875: they sum to 1 but
    // their centre lies at 0.34375, so the a = -1 kernel overshoots a ramp
    // there (it reproduces ramps only at half-way positions).
    const uint32_t rows = 8, cols = 9;
    std::vector<T> ramp(rows * cols);
    for (uint32_t c = 0; c < cols; ++c) {
        for (uint32_t r = 0; r < rows; ++r) {
            ramp[r + c * rows] = T(3 * r + 5 * c + 1);
        }
    }
    auto sample = [&](T y, T x) {
        T out = 0;
        Sampler<T>::bicubic(ramp.data(), y, x, rows, cols, &out, 0, 1, 0, 0);
        return out;
    };
    EXPECT_EQ(sample(T(2.5), T(3.5)), T(3 * 2.5 + 5 * 3.5 + 1));
    EXPECT_EQ(sample(T(4.5), T(1.5)), T(3 * 4.5 + 5 * 1.5 + 1));
    // Row 3 exactly, column 3.25: 3*3 + 1 + 5 * (3 + 0.34375).
    EXPECT_EQ(sample(T(3), T(3.25)), T(10 + 5 * 3.34375));
    // Column 4 exactly, row 2.25: 5*4 + 1 + 3 * (2 + 0.34375).
    EXPECT_EQ(sample(T(2.25), T(4)), T(21 + 3 * 2.34375));
}

TYPED_TEST(Interpolation, PlanesUseTheirStrides)
{
    using T = TypeParam;
    // Three planes M*N apart; results three elements apart from index 2.
    const uint32_t rows = 3, cols = 3, planeSize = rows * cols;
    std::vector<T> source(3 * planeSize);
    for (uint32_t i = 0; i < source.size(); ++i) {
        source[i] = T(i);
    }
    std::vector<T> out(10, T(-1));
    Sampler<T>::bilinear(source.data(), T(1), T(0.5), rows, cols, out.data(), 2, 3, planeSize, 3);
    // Plane p at (1, 0.5): the mean of elements 1 and 4, plus p * 9.
    EXPECT_EQ(out, (std::vector<T>{-1, -1, 2.5, -1, -1, 11.5, -1, -1, 20.5, -1}));
    Sampler<T>::bicubic(source.data(), T(1), T(2), rows, cols, out.data(), 0, 3, planeSize, 1);
    EXPECT_EQ(std::vector<T>(out.begin(), out.begin() + 3), (std::vector<T>{7, 16, 25}));
}

} // namespace
