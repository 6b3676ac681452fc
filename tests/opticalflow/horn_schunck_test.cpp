#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "flow_images.hpp"
#include "ornex_rt.h"

namespace {

// The working memory of one call on an M x N image; results land in
// `velocity` (u^2 + v^2, or interleaved u, v) and `velocityY` (v).
template <class T>
struct Buffers {
    int32_t rows, cols;
    std::vector<T> velocity, velocityY, colSmooth1, colSmooth2, rowSmooth1, rowSmooth2;
    std::vector<T> products[6];
    std::vector<T> columns[4];

    Buffers(int32_t m, int32_t n)
        : rows(m), cols(n), velocity(2 * m * n, T(-9)), velocityY(m * n, T(-9)), colSmooth1(m), colSmooth2(m),
          rowSmooth1(n), rowSmooth2(n)
    {
        for (auto &p : products) {
            p.assign(m * n, T(-9));
        }
        for (auto &c : columns) {
            c.assign(m, T(0));
        }
    }
};

struct Stop {
    int32_t sweeps;  // used when positive
    double threshold; // used when positive
};

template <class T>
using RealFlow = void (*)(const T *, const T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *,
                          T *, T *, const T *, uint8_t, uint8_t, const int32_t *, const T *, int32_t, int32_t);
template <class T>
using ComplexFlow = void (*)(const T *, const T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *, T *,
                             T *, T *, const T *, uint8_t, uint8_t, const int32_t *, const T *, int32_t, int32_t);

template <class T>
void runReal(RealFlow<T> flow, Buffers<T> &b, const std::vector<T> &image1, const std::vector<T> &image2,
             T smoothness, Stop stop)
{
    const T threshold = T(stop.threshold);
    auto &p = b.products;
    flow(image1.data(), image2.data(), b.velocity.data(), b.velocityY.data(), b.colSmooth1.data(),
         b.colSmooth2.data(), b.rowSmooth1.data(), b.rowSmooth2.data(), p[0].data(), p[1].data(), p[2].data(),
         p[3].data(), p[4].data(), p[5].data(), b.columns[0].data(), b.columns[1].data(), b.columns[2].data(),
         b.columns[3].data(), &smoothness, stop.sweeps > 0, stop.threshold > 0, &stop.sweeps, &threshold, b.rows,
         b.cols);
}

template <class T>
void runComplex(ComplexFlow<T> flow, Buffers<T> &b, const std::vector<T> &image1, const std::vector<T> &image2,
                T smoothness, Stop stop)
{
    const T threshold = T(stop.threshold);
    auto &p = b.products;
    flow(image1.data(), image2.data(), b.velocity.data(), b.colSmooth1.data(), b.colSmooth2.data(),
         b.rowSmooth1.data(), b.rowSmooth2.data(), p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data(),
         p[5].data(), b.columns[0].data(), b.columns[1].data(), b.columns[2].data(), b.columns[3].data(),
         &smoothness, stop.sweeps > 0, stop.threshold > 0, &stop.sweeps, &threshold, b.rows, b.cols);
}

template <class Element, RealFlow<Element> real, ComplexFlow<Element> complex,
          decltype(&ORNEX_SobelDerivative_HS_D) derivativeD, decltype(&ORNEX_SobelDerivative_HS_R) derivativeR>
struct Member {
    using T = Element;
    static constexpr RealFlow<T> realFlow = real;
    static constexpr ComplexFlow<T> complexFlow = complex;
    static void derivative(Buffers<T> &b, const std::vector<T> &image1, const std::vector<T> &image2, T smoothness)
    {
        auto &p = b.products;
        auto fn = [&](auto kernel) {
            kernel(image1.data(), image2.data(), b.velocity.data(), b.velocityY.data(), b.colSmooth1.data(),
                   b.colSmooth2.data(), b.rowSmooth1.data(), b.rowSmooth2.data(), p[0].data(), p[1].data(),
                   p[2].data(), p[3].data(), p[4].data(), p[5].data(), &smoothness, b.rows, b.cols);
        };
        if constexpr (std::is_same_v<T, double>) {
            fn(derivativeD);
        } else {
            fn(derivativeR);
        }
    }
};

using Members = ::testing::Types<Member<double, ORNEX_OpticalFlow_HS_D, ORNEX_OpticalFlow_HS_Z,
                                        ORNEX_SobelDerivative_HS_D, ORNEX_SobelDerivative_HS_R>,
                                 Member<float, ORNEX_OpticalFlow_HS_R, ORNEX_OpticalFlow_HS_C,
                                        ORNEX_SobelDerivative_HS_D, ORNEX_SobelDerivative_HS_R>>;

template <class M>
class HornSchunck : public ::testing::Test {};
TYPED_TEST_SUITE(HornSchunck, Members);

TYPED_TEST(HornSchunck, RampDerivativesUseThePreviousMinusNextSign)
{
    using T = typename TypeParam::T;
    // I(r, c) = c: S = 4c, so Ix = (4(c-1) - 4(c+1))/8 = -1 inside and
    // (0 - 4)/8 = -0.5 in the first and last columns (edges replicated);
    // Iy = 0. It = 2 everywhere.
    const int32_t rows = 4, cols = 5;
    std::vector<T> image1(rows * cols), image2(rows * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            image1[r + c * rows] = T(c);
            image2[r + c * rows] = T(c + 2);
        }
    }
    Buffers<T> b(rows, cols);
    TypeParam::derivative(b, image1, image2, T(0.5));
    for (int32_t c = 0; c < cols; ++c) {
        const T ix = (c == 0 || c == cols - 1) ? T(-0.5) : T(-1);
        for (int32_t r = 0; r < rows; ++r) {
            const int32_t i = r + c * rows;
            EXPECT_EQ(b.velocity[i], ix) << r << "," << c;
            EXPECT_EQ(b.velocityY[i], T(0));
            EXPECT_EQ(b.products[0][i], ix * ix);
            EXPECT_EQ(b.products[1][i], T(0));
            EXPECT_EQ(b.products[3][i], T(2) * ix);
            EXPECT_EQ(b.products[5][i], T(1) / (ix * ix + T(0.5)));
        }
    }
}

TYPED_TEST(HornSchunck, IdenticalImagesStopAfterOneSweepWithZeroFlow)
{
    using T = typename TypeParam::T;
    const auto image = smoothPattern<T>(9, 7, 0, 0);
    Buffers<T> b(9, 7);
    // Only the threshold rule: a sweep that changes nothing must stop it.
    runReal(TypeParam::realFlow, b, image, image, T(1), {0, 1e-6});
    for (int32_t i = 0; i < 63; ++i) {
        ASSERT_EQ(b.velocity[i], T(0));
        ASSERT_EQ(b.velocityY[i], T(0));
    }
}

TYPED_TEST(HornSchunck, SinglePixelNeverMoves)
{
    using T = typename TypeParam::T;
    // Every neighbour is the pixel itself: Ix = Iy = 0 and F = 1/smoothness.
    Buffers<T> b(1, 1);
    runReal(TypeParam::realFlow, b, {T(3)}, {T(5)}, T(4), {3, 0});
    EXPECT_EQ(b.velocity[0], T(0));
    EXPECT_EQ(b.velocityY[0], T(0));
    EXPECT_EQ(b.products[5][0], T(0.25));
    EXPECT_EQ(b.products[3][0], T(0));
}

TYPED_TEST(HornSchunck, ImagesWithoutPixelsTouchNoBuffer)
{
    using T = typename TypeParam::T;
    // Every buffer is a heap block of exactly its stated size (none when M or
    // N is below 1): AddressSanitizer reports any element touched, and a
    // negative size taken as a byte count crashes outright.
    for (const auto &[rows, cols] : {std::pair{0, 3}, {3, 0}, {0, 0}, {-1, 3}, {3, -2}, {-2, -3}}) {
        SCOPED_TRACE(testing::Message() << rows << " x " << cols);
        const size_t m = size_t(std::max(rows, 0)), n = size_t(std::max(cols, 0));
        std::vector<std::unique_ptr<T[]>> blocks;
        auto exactly = [&](size_t count) { return blocks.emplace_back(new T[count]).get(); };
        T *image1 = exactly(m * n), *image2 = exactly(m * n), *velocity = exactly(2 * m * n);
        T *velocityY = exactly(m * n), *lines[4] = {exactly(m), exactly(m), exactly(n), exactly(n)};
        T *p[6], *columns[4];
        for (T *&product : p) {
            product = exactly(m * n);
        }
        for (T *&column : columns) {
            column = exactly(m);
        }
        const T smoothness = 1, threshold = 0;
        const int32_t sweeps = 2;
        TypeParam::realFlow(image1, image2, velocity, velocityY, lines[0], lines[1], lines[2], lines[3], p[0], p[1],
                            p[2], p[3], p[4], p[5], columns[0], columns[1], columns[2], columns[3], &smoothness, 1,
                            0, &sweeps, &threshold, rows, cols);
        TypeParam::complexFlow(image1, image2, velocity, lines[0], lines[1], lines[2], lines[3], p[0], p[1], p[2],
                               p[3], p[4], p[5], columns[0], columns[1], columns[2], columns[3], &smoothness, 1, 0,
                               &sweeps, &threshold, rows, cols);
    }
}

TYPED_TEST(HornSchunck, OneSweepFromZeroIsTheConstraintAlone)
{
    using T = typename TypeParam::T;
    // From u = v = 0 every mean is 0, so one sweep gives u = -IxIt F and
    // v = -IyIt F exactly; a second sweep would mix in the neighbours.
    const int32_t rows = 8, cols = 6;
    const auto image1 = smoothPattern<T>(rows, cols, 0, 0);
    const auto image2 = smoothPattern<T>(rows, cols, 0.3, 0.2);
    Buffers<T> b(rows, cols);
    runReal(TypeParam::realFlow, b, image1, image2, T(2), {1, 0});
    const std::vector<T> speed = b.velocity, v = b.velocityY;
    Buffers<T> products(rows, cols);
    TypeParam::derivative(products, image1, image2, T(2));
    for (int32_t i = 0; i < rows * cols; ++i) {
        const T u1 = T(0) - (T(0) * T(0) + T(0) * T(0) + products.products[3][i]) * products.products[5][i];
        const T v1 = T(0) - (T(0) * T(0) + T(0) * T(0) + products.products[4][i]) * products.products[5][i];
        ASSERT_EQ(v[i], v1) << i;
        ASSERT_EQ(speed[i], u1 * u1 + v1 * v1) << i;
    }
    runReal(TypeParam::realFlow, b, image1, image2, T(2), {2, 0});
    EXPECT_NE(b.velocityY, v) << "a second sweep changes nothing";
}

TYPED_TEST(HornSchunck, ComplexResultHoldsUAndVOfThePixel)
{
    using T = typename TypeParam::T;
    const int32_t rows = 10, cols = 12;
    const auto image1 = smoothPattern<T>(rows, cols, 0, 0);
    const auto image2 = smoothPattern<T>(rows, cols, -0.2, 0.4);
    Buffers<T> real(rows, cols), complex(rows, cols);
    runReal(TypeParam::realFlow, real, image1, image2, T(1), {5, 0});
    runComplex(TypeParam::complexFlow, complex, image1, image2, T(1), {5, 0});
    for (int32_t i = 0; i < rows * cols; ++i) {
        const T u = complex.velocity[2 * i], v = complex.velocity[2 * i + 1];
        ASSERT_EQ(v, real.velocityY[i]) << i;
        ASSERT_EQ(u * u + v * v, real.velocity[i]) << i;
        // u and v were set aside in the first and third product arrays.
        ASSERT_EQ(complex.products[0][i], u);
        ASSERT_EQ(complex.products[2][i], v);
    }
}

TYPED_TEST(HornSchunck, TranslatedPatternGivesTheDefinedSign)
{
    using T = typename TypeParam::T;
    // The content moves 0.3 rows down and 0.4 columns right. With Ix the
    // previous-minus-next difference (about -dI/dc) and It = I2 - I1 (about
    // -0.4 dI/dc - 0.3 dI/dr), the constraint Ix u + Iy v + It = 0 is met by
    // u = -0.4, v = -0.3: the flow comes out with the opposite sign of the
    // motion.
    const int32_t rows = 40, cols = 40;
    const auto image1 = smoothPattern<T>(rows, cols, 0, 0);
    const auto image2 = smoothPattern<T>(rows, cols, 0.3, 0.4);
    Buffers<T> b(rows, cols);
    runComplex(TypeParam::complexFlow, b, image1, image2, T(1), {200, 0});
    const double u = interiorMean(b.velocity, rows, cols, 8, 2, 0);
    const double v = interiorMean(b.velocity, rows, cols, 8, 2, 1);
    EXPECT_NEAR(u, -0.4, 0.1);
    EXPECT_NEAR(v, -0.3, 0.1);
}

} // namespace
