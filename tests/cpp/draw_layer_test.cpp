#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ornex/ornex.hpp"

namespace {

using ornex::ClipRect;
using ornex::ImageView;
using ornex::Point;
using ornex::RgbView;

// A varied, deterministic background, so that blends and copies show.
template <class T>
T patternValue(size_t i)
{
    if constexpr (std::is_same_v<T, bool>) {
        return i % 3 == 0;
    } else if constexpr (std::is_floating_point_v<T>) {
        return T(double((i * 37) % 97) / 97.0);
    } else if constexpr (std::is_signed_v<T>) {
        return T(int64_t((i * 37) % 199) - 99);
    } else {
        return T((i * 37) % 251);
    }
}

// Pixels of any element type (bool included), column-major, planes
// one after another.
template <class T>
struct Pixels {
    int32_t rows, cols, planes;
    std::unique_ptr<T[]> data;

    Pixels(int32_t r, int32_t c, int32_t p = 1, size_t seed = 0) : rows(r), cols(c), planes(p), data(new T[size()])
    {
        for (size_t i = 0; i < size(); ++i) {
            data[i] = patternValue<T>(i + seed);
        }
    }
    Pixels(const Pixels &other) : Pixels(other.rows, other.cols, other.planes)
    {
        std::copy(other.data.get(), other.data.get() + size(), data.get());
    }
    size_t size() const { return size_t(rows) * cols * planes; }
    ImageView<T> view() { return {data.get(), rows, cols, planes}; }
};

template <class T>
::testing::AssertionResult same(const Pixels<T> &actual, const Pixels<T> &expected)
{
    for (size_t i = 0; i < expected.size(); ++i) {
        if (!(actual.data[i] == expected.data[i])) {
            return ::testing::AssertionFailure() << "element " << i << ": " << +actual.data[i] << " instead of "
                                                 << +expected.data[i];
        }
    }
    return ::testing::AssertionSuccess();
}

// Three one-plane images with different backgrounds.
template <class T>
struct RgbPixels {
    Pixels<T> red, green, blue;
    RgbPixels(int32_t r, int32_t c) : red(r, c, 1, 0), green(r, c, 1, 5), blue(r, c, 1, 11) {}
    RgbView<T> view() { return {red.view(), green.view(), blue.view()}; }
};

template <class T>
::testing::AssertionResult same(const RgbPixels<T> &actual, const RgbPixels<T> &expected)
{
    for (auto plane : {&RgbPixels<T>::red, &RgbPixels<T>::green, &RgbPixels<T>::blue}) {
        if (auto result = same(actual.*plane, expected.*plane); !result) {
            return result;
        }
    }
    return ::testing::AssertionSuccess();
}

// Counts the comparisons in which the drawing changed the image, so that a
// test cannot pass by both sides drawing nothing.
struct ChangeCount {
    int drawn = 0;
    template <class P>
    void note(const P &after, const P &before)
    {
        drawn += same(after, before) ? 0 : 1;
    }
};

template <class T>
T value(int v)
{
    if constexpr (std::is_same_v<T, bool>) {
        return v % 2 != 0;
    } else {
        return T(v);
    }
}

// ---------------------------------------------------------------------------
// Plain lines

template <class T>
class PlainLine : public ::testing::Test {};
using CopyTypes = ::testing::Types<uint8_t, int16_t, uint32_t, float, double, bool>;
TYPED_TEST_SUITE(PlainLine, CopyTypes);

const std::vector<std::array<Point, 2>> lineCases = {
    {Point{0, 0}, Point{2, 5}}, {Point{9, 3}, Point{1, 4}},    {Point{4, -6}, Point{7, 20}},
    {Point{-3, 2}, Point{15, 8}}, {Point{5, 5}, Point{5, 5}},   {Point{-4, -4}, Point{-1, 30}},
    {Point{2, 11}, Point{2, 0}}, {Point{11, 1}, Point{0, 12}}, {Point{3, 7}, Point{8, 7}}};

TYPED_TEST(PlainLine, EqualsTheKernelOnEveryPlane)
{
    using T = TypeParam;
    ChangeCount changes;
    const T raw[2] = {value<T>(1), value<T>(120)};
    const std::vector<T> values(raw, raw + 2);
    for (const auto &[from, to] : lineCases) {
        Pixels<T> actual(10, 12, 2), expected(actual);
        const auto before = actual;
        ornex::drawLine(actual.view(), from, to, values);
        ORNEX_Line_Bresenham(from.row, from.col, to.row, to.col, expected.data.get(), 10, raw, sizeof(T), 0,
                             9, 0, 11, 2, 120);
        changes.note(actual, before);
        EXPECT_TRUE(same(actual, expected)) << from.row << "," << from.col << " - " << to.row << "," << to.col;
    }
    EXPECT_GE(changes.drawn, 8);
}

TYPED_TEST(PlainLine, NarrowerClipEqualsTheKernel)
{
    using T = TypeParam;
    const T raw[1] = {value<T>(77)};
    const std::vector<T> values(raw, raw + 1);
    for (const auto &[from, to] : lineCases) {
        Pixels<T> actual(10, 12), expected(actual);
        ornex::drawLine(actual.view(), from, to, values, ClipRect{2, 7, 3, 9});
        ORNEX_Line_Bresenham(from.row, from.col, to.row, to.col, expected.data.get(), 10, raw, sizeof(T), 2,
                             7, 3, 9, 1, 120);
        EXPECT_TRUE(same(actual, expected)) << from.row << "," << from.col << " - " << to.row << "," << to.col;
    }
}

TYPED_TEST(PlainLine, RgbEqualsTheKernel)
{
    using T = TypeParam;
    const std::array<T, 3> colour{value<T>(3), value<T>(100), value<T>(50)};
    for (const auto &[from, to] : lineCases) {
        RgbPixels<T> actual(10, 12), expected(actual);
        ornex::drawLine(actual.view(), from, to, colour);
        ORNEX_Line_Bresenham_RGB(from.row, from.col, to.row, to.col, expected.red.data.get(),
                                 expected.green.data.get(), expected.blue.data.get(), 10, colour.data(), sizeof(T), 0,
                                 9, 0, 11);
        EXPECT_TRUE(same(actual, expected));
        RgbPixels<T> clipped(10, 12), clippedExpected(clipped);
        ornex::drawLine(clipped.view(), from, to, colour, ClipRect{1, 8, 0, 5});
        ORNEX_Line_Bresenham_RGB(from.row, from.col, to.row, to.col, clippedExpected.red.data.get(),
                                 clippedExpected.green.data.get(), clippedExpected.blue.data.get(), 10, colour.data(),
                                 sizeof(T), 1, 8, 0, 5);
        EXPECT_TRUE(same(clipped, clippedExpected));
    }
}

TEST(PlainLineErrors, RejectedBeforeAnythingIsWritten)
{
    Pixels<uint8_t> image(10, 12, 2);
    const Pixels<uint8_t> before(image);
    const std::vector<uint8_t> two{1, 2};
    EXPECT_THROW(ornex::drawLine(image.view(), {0, 0}, {9, 11}, two, ClipRect{0, 10, 0, 11}), std::invalid_argument);
    EXPECT_THROW(ornex::drawLine(image.view(), {0, 0}, {9, 11}, two, ClipRect{-1, 9, 0, 11}), std::invalid_argument);
    EXPECT_THROW(ornex::drawLine(image.view(), {0, 0}, {9, 11}, two, ClipRect{0, 9, 5, 4}), std::invalid_argument);
    EXPECT_THROW(ornex::drawLine(image.view(), {0, 0}, {9, 11}, std::vector<uint8_t>{1}), std::invalid_argument);
    EXPECT_THROW(ornex::drawLine(image.view(), {0, 0}, {40000, 11}, two), std::invalid_argument);
    EXPECT_THROW(ornex::drawLine(ImageView<uint8_t>{}, {0, 0}, {1, 1}, two), std::invalid_argument);
    EXPECT_TRUE(same(image, before));

    RgbPixels<uint8_t> rgb(10, 12);
    const RgbPixels<uint8_t> rgbBefore(rgb);
    EXPECT_THROW(ornex::drawLine(rgb.view(), {0, 0}, {9, 11}, {1, 2, 3}, ClipRect{0, 9, 0, 12}),
                 std::invalid_argument);
    Pixels<uint8_t> small(4, 12);
    EXPECT_THROW(ornex::drawLine(RgbView<uint8_t>{rgb.red.view(), small.view(), rgb.blue.view()}, {0, 0}, {3, 3},
                                 {1, 2, 3}),
                 std::invalid_argument);
    EXPECT_TRUE(same(rgb, rgbBefore));
    try {
        ornex::drawLine(image.view(), {0, 0}, {9, 11}, two, ClipRect{0, 10, 0, 11});
    } catch (const std::invalid_argument &error) {
        EXPECT_STREQ(error.what(), "clip: must lie inside the image");
    }
}

// ---------------------------------------------------------------------------
// Anti-aliased lines

// Entry d of a weight table row stands for a distance of d/16 pixel. A line
// one pixel wide covers a pixel at distance x by 1 - x, nothing from one
// pixel on; the opacity scales that coverage. Row 0 is what stays of the old
// pixel, row 1 + k what plane k gains. Integer images: row 0 in 1/1024.
template <class T, class W>
std::vector<W> weightTable(const std::vector<T> &colour, double opacity)
{
    std::vector<W> table(25 * (1 + colour.size()));
    for (int d = 0; d < 25; ++d) {
        const double covered = d < 16 ? opacity * (16 - d) / 16.0 : 0.0;
        if constexpr (std::is_integral_v<T>) {
            table[d] = W(std::lround(1024 * (1 - covered)));
        } else {
            table[d] = W(1 - covered);
        }
        for (size_t k = 0; k < colour.size(); ++k) {
            if constexpr (std::is_integral_v<T>) {
                table[25 * (1 + k) + d] = W(std::lround(covered * colour[k]));
            } else {
                table[25 * (1 + k) + d] = W(covered * colour[k]);
            }
        }
    }
    return table;
}

template <class Pixel, class Weight, auto intensityKernel, auto rgbKernel, auto circleKernel, auto rgbCircleKernel>
struct Blend {
    using T = Pixel;
    using W = Weight;
    static constexpr auto line = intensityKernel;
    static constexpr auto rgbLine = rgbKernel;
    static constexpr auto circle = circleKernel;
    static constexpr auto rgbCircle = rgbCircleKernel;
};

using BlendTypes = ::testing::Types<
    Blend<double, double, ORNEX_Draw_AA_Line_I_D, ORNEX_Draw_AA_Line_RGB_D, ORNEX_Draw_AA_Circle_I_D,
          ORNEX_Draw_AA_Circle_RGB_D>,
    Blend<float, float, ORNEX_Draw_AA_Line_I_R, ORNEX_Draw_AA_Line_RGB_R, ORNEX_Draw_AA_Circle_I_R,
          ORNEX_Draw_AA_Circle_RGB_R>,
    Blend<uint8_t, int16_t, ORNEX_Draw_AA_Line_I_UI8, ORNEX_Draw_AA_Line_RGB_UI8, ORNEX_Draw_AA_Circle_I_UI8,
          ORNEX_Draw_AA_Circle_RGB_UI8>,
    Blend<int8_t, int16_t, ORNEX_Draw_AA_Line_I_I8, ORNEX_Draw_AA_Line_RGB_I8, ORNEX_Draw_AA_Circle_I_I8,
          ORNEX_Draw_AA_Circle_RGB_I8>,
    Blend<uint16_t, uint16_t, ORNEX_Draw_AA_Line_I_UI16, ORNEX_Draw_AA_Line_RGB_UI16, ORNEX_Draw_AA_Circle_I_UI16,
          ORNEX_Draw_AA_Circle_RGB_UI16>,
    Blend<int16_t, int16_t, ORNEX_Draw_AA_Line_I_I16, ORNEX_Draw_AA_Line_RGB_I16, ORNEX_Draw_AA_Circle_I_I16,
          ORNEX_Draw_AA_Circle_RGB_I16>>;

template <class M>
class Blending : public ::testing::Test {};
TYPED_TEST_SUITE(Blending, BlendTypes);

template <class T>
std::vector<T> colours(size_t count)
{
    const std::vector<T> candidates = std::is_floating_point_v<T> ? std::vector<T>{T(0.9), T(0.25), T(0.6)}
                                      : std::is_signed_v<T>       ? std::vector<T>{T(-90), T(110), T(40)}
                                                                  : std::vector<T>{T(230), T(17), T(128)};
    return {candidates.begin(), candidates.begin() + count};
}

TYPED_TEST(Blending, AntialiasedLineEqualsTheKernel)
{
    using T = typename TypeParam::T;
    using W = typename TypeParam::W;
    ChangeCount changes;
    const std::vector<std::array<Point, 2>> lines = {
        {Point{1, 1}, Point{9, 13}},  {Point{12, 2}, Point{0, 9}},  {Point{0, 3}, Point{13, 6}},
        {Point{13, 10}, Point{1, 4}}, {Point{2, 2}, Point{8, 8}},   {Point{5, -4}, Point{9, 20}},
        {Point{6, 12}, Point{6, 1}},  {Point{1, 7}, Point{12, 7}},  {Point{12, 8}, Point{1, 8}},
        {Point{4, 4}, Point{4, 4}},   {Point{-5, 3}, Point{20, 9}}, {Point{0, 0}, Point{13, 13}}};
    for (const double opacity : {1.0, 0.6}) {
        const std::vector<T> colour = colours<T>(2);
        const std::vector<W> table = weightTable<T, W>(colour, opacity);
        for (const auto &[from, to] : lines) {
            Pixels<T> actual(14, 15, 2), expected(actual);
            const auto before = actual;
            ornex::drawAntialiasedLine(actual.view(), from, to, colour, opacity);
            TypeParam::line(from.row, from.col, to.row, to.col, expected.data.get(), 14, 0, 13, 0, 14, table.data(), 1,
                            2, 14 * 15);
            changes.note(actual, before);
            EXPECT_TRUE(same(actual, expected)) << opacity << ": " << from.row << "," << from.col << " - " << to.row
                                                << "," << to.col;
        }
    }
    EXPECT_GE(changes.drawn, 20);
}

TYPED_TEST(Blending, AntialiasedRgbLineEqualsTheKernel)
{
    using T = typename TypeParam::T;
    using W = typename TypeParam::W;
    const std::vector<T> colour = colours<T>(3);
    const std::vector<W> table = weightTable<T, W>(colour, 0.8);
    for (const auto &[from, to] : {std::array<Point, 2>{Point{1, 1}, Point{9, 13}}, {Point{12, 2}, Point{0, 6}},
                                   {Point{3, 0}, Point{3, 14}}}) {
        RgbPixels<T> actual(14, 15), expected(actual);
        ornex::drawAntialiasedLine(actual.view(), from, to, {colour[0], colour[1], colour[2]}, 0.8);
        TypeParam::rgbLine(from.row, from.col, to.row, to.col, expected.red.data.get(), expected.green.data.get(),
                           expected.blue.data.get(), 14, 0, 13, 0, 14, table.data(), 1);
        EXPECT_TRUE(same(actual, expected));
    }
}

TEST(AntialiasedLineErrors, RejectedBeforeAnythingIsWritten)
{
    Pixels<uint16_t> image(10, 10, 2);
    const Pixels<uint16_t> before(image);
    const std::vector<uint16_t> colour{500, 600};
    EXPECT_THROW(ornex::drawAntialiasedLine(image.view(), {0, 0}, {9, 9}, colour, 1.5), std::invalid_argument);
    EXPECT_THROW(ornex::drawAntialiasedLine(image.view(), {0, 0}, {9, 9}, colour, -0.1), std::invalid_argument);
    EXPECT_THROW(ornex::drawAntialiasedLine(image.view(), {0, 0}, {9, 9}, colour, std::nan("")),
                 std::invalid_argument);
    EXPECT_THROW(ornex::drawAntialiasedLine(image.view(), {0, 0}, {9, 9}, std::vector<uint16_t>{1, 2, 3}),
                 std::invalid_argument);
    EXPECT_THROW(ornex::drawAntialiasedLine(image.view(), {0, -40000}, {9, 9}, colour), std::invalid_argument);
    EXPECT_TRUE(same(image, before));
    RgbPixels<float> rgb(10, 10);
    const RgbPixels<float> rgbBefore(rgb);
    EXPECT_THROW(ornex::drawAntialiasedLine(rgb.view(), {0, 0}, {9, 9}, {1, 1, 1}, 2.0), std::invalid_argument);
    EXPECT_TRUE(same(rgb, rgbBefore));
    try {
        ornex::drawAntialiasedLine(image.view(), {0, 0}, {9, 9}, colour, 1.5);
    } catch (const std::invalid_argument &error) {
        EXPECT_STREQ(error.what(), "opacity: must lie in [0, 1]");
    }
}

// ---------------------------------------------------------------------------
// Circle outlines

// The first-octant points of a circle: for each row offset x up to the
// diagonal, the column offset nearest the circle, sqrt(r^2 - x^2).
std::vector<std::array<int32_t, 2>> octantPoints(int32_t radius)
{
    std::vector<std::array<int32_t, 2>> points;
    for (int32_t x = 0;; ++x) {
        const auto y = int32_t(std::lround(std::sqrt(double(radius * radius - x * x))));
        if (x > y) {
            break;
        }
        points.push_back({x, y});
    }
    return points;
}

TEST(CircleOctant, NearestPointsOfRadiusFive)
{
    EXPECT_EQ(octantPoints(5), (std::vector<std::array<int32_t, 2>>{{0, 5}, {1, 5}, {2, 5}, {3, 4}}));
}

template <class T>
class PlainCircle : public ::testing::Test {};
TYPED_TEST_SUITE(PlainCircle, CopyTypes);

TYPED_TEST(PlainCircle, EqualsTheKernelAtTheNearestPoints)
{
    using T = TypeParam;
    ChangeCount changes;
    const T raw[2] = {value<T>(1), value<T>(201)};
    const std::vector<T> values(raw, raw + 2);
    for (int32_t radius = 1; radius <= 14; ++radius) {
        for (const Point centre : {Point{12, 13}, Point{2, 24}, Point{-3, 5}}) {
            Pixels<T> actual(25, 27, 2), expected(actual);
            const auto before = actual;
            ornex::drawCircle(actual.view(), centre, radius, values);
            for (const auto &[a, b] : octantPoints(radius)) {
                ORNEX_Circle_SymOctantPts(expected.data.get(), centre.row, centre.col, a, b, 0, 24, 0, 26,
                                          raw, sizeof(T), 25, 2, 25 * 27);
            }
            changes.note(actual, before);
            EXPECT_TRUE(same(actual, expected)) << "radius " << radius << " centre " << centre.row << ","
                                                << centre.col;
        }
    }
    EXPECT_GE(changes.drawn, 35);
}

TYPED_TEST(PlainCircle, RgbEqualsTheKernelAtTheNearestPoints)
{
    using T = TypeParam;
    const std::array<T, 3> colour{value<T>(9), value<T>(60), value<T>(3)};
    for (int32_t radius : {1, 4, 7, 10}) {
        RgbPixels<T> actual(20, 22), expected(actual);
        ornex::drawCircle(actual.view(), {9, 16}, radius, colour);
        for (const auto &[a, b] : octantPoints(radius)) {
            ORNEX_Circle_SymOctantPts_RGB(expected.red.data.get(), expected.green.data.get(),
                                          expected.blue.data.get(), 9, 16, a, b, 0, 19, 0, 21, colour.data(),
                                          sizeof(T), 20);
        }
        EXPECT_TRUE(same(actual, expected)) << "radius " << radius;
    }
}

TEST(PlainCircleErrors, RejectedBeforeAnythingIsWritten)
{
    Pixels<int16_t> image(10, 10);
    const Pixels<int16_t> before(image);
    EXPECT_THROW(ornex::drawCircle(image.view(), {5, 5}, 0, std::vector<int16_t>{1}), std::invalid_argument);
    EXPECT_THROW(ornex::drawCircle(image.view(), {5, 5}, -3, std::vector<int16_t>{1}), std::invalid_argument);
    EXPECT_THROW(ornex::drawCircle(image.view(), {5, 5}, 3, std::vector<int16_t>{1, 2}), std::invalid_argument);
    EXPECT_THROW(ornex::drawCircle(image.view(), {std::numeric_limits<int32_t>::max(), 5}, 3, std::vector<int16_t>{1}),
                 std::invalid_argument);
    EXPECT_TRUE(same(image, before));
    RgbPixels<int16_t> rgb(10, 10);
    const RgbPixels<int16_t> rgbBefore(rgb);
    EXPECT_THROW(ornex::drawCircle(rgb.view(), {5, 5}, 0, {1, 2, 3}), std::invalid_argument);
    EXPECT_TRUE(same(rgb, rgbBefore));
    try {
        ornex::drawCircle(image.view(), {5, 5}, 0, std::vector<int16_t>{1});
    } catch (const std::invalid_argument &error) {
        EXPECT_STREQ(error.what(), "radius: must be positive");
    }
}

// ---------------------------------------------------------------------------
// Anti-aliased circle outlines

// Entry t is 4096 sqrt(1 - (t/4096)^2), rounded, over the whole quarter
// circle (the kernels read no further than entry 3223).
std::vector<int16_t> squareRoots()
{
    std::vector<int16_t> table(4097);
    for (int t = 0; t <= 4096; ++t) {
        table[t] = int16_t(std::lround(std::sqrt(4096.0 * 4096.0 - double(t) * t)));
    }
    return table;
}

template <class M, class T>
void drawReferenceCircle(T *image, const std::vector<T> &colour, Point centre, int32_t radius, int32_t rows,
                         int32_t cols, int32_t planes)
{
    if constexpr (std::is_floating_point_v<T>) {
        M::circle(image, colour.data(), 0, radius, centre.row, centre.col, 0, rows - 1, 0, cols - 1, rows, radius,
                  planes, rows * cols);
    } else {
        const auto table = squareRoots();
        M::circle(image, colour.data(), table.data(), 0, radius, centre.row, centre.col, 0, rows - 1, 0, cols - 1, rows,
                  radius, planes, rows * cols);
    }
}

TYPED_TEST(Blending, AntialiasedCircleEqualsTheKernel)
{
    using T = typename TypeParam::T;
    ChangeCount changes;
    const std::vector<T> colour = colours<T>(2);
    for (int32_t radius = 1; radius <= 16; ++radius) {
        for (const Point centre : {Point{15, 16}, Point{3, 28}}) {
            Pixels<T> actual(31, 33, 2), expected(actual);
            const auto before = actual;
            ornex::drawAntialiasedCircle(actual.view(), centre, radius, colour);
            drawReferenceCircle<TypeParam>(expected.data.get(), colour, centre, radius, 31, 33, 2);
            changes.note(actual, before);
            EXPECT_TRUE(same(actual, expected)) << "radius " << radius << " centre " << centre.row << ","
                                                << centre.col;
        }
    }
    EXPECT_GE(changes.drawn, 30);
}

TYPED_TEST(Blending, AntialiasedRgbCircleEqualsTheKernel)
{
    using T = typename TypeParam::T;
    const std::vector<T> colour = colours<T>(3);
    const auto table = squareRoots();
    for (int32_t radius : {1, 3, 6, 11, 19}) {
        RgbPixels<T> actual(30, 32), expected(actual);
        ornex::drawAntialiasedCircle(actual.view(), {14, 17}, radius, {colour[0], colour[1], colour[2]});
        if constexpr (std::is_floating_point_v<T>) {
            TypeParam::rgbCircle(expected.red.data.get(), expected.green.data.get(), expected.blue.data.get(),
                                 colour.data(), 0, radius, 14, 17, 0, 29, 0, 31, 30, radius);
        } else {
            TypeParam::rgbCircle(expected.red.data.get(), expected.green.data.get(), expected.blue.data.get(),
                                 colour.data(), table.data(), 0, radius, 14, 17, 0, 29, 0, 31, 30, radius);
        }
        EXPECT_TRUE(same(actual, expected)) << "radius " << radius;
    }
}

TEST(AntialiasedCircleErrors, RejectedBeforeAnythingIsWritten)
{
    Pixels<uint8_t> image(10, 10);
    const Pixels<uint8_t> before(image);
    EXPECT_THROW(ornex::drawAntialiasedCircle(image.view(), {5, 5}, 0, std::vector<uint8_t>{9}), std::invalid_argument);
    EXPECT_THROW(ornex::drawAntialiasedCircle(image.view(), {5, 5}, -1, std::vector<uint8_t>{9}),
                 std::invalid_argument);
    EXPECT_THROW(ornex::drawAntialiasedCircle(image.view(), {5, 5}, 40000, std::vector<uint8_t>{9}),
                 std::invalid_argument);
    EXPECT_THROW(ornex::drawAntialiasedCircle(image.view(), {5, 5}, 2, std::vector<uint8_t>{}), std::invalid_argument);
    EXPECT_TRUE(same(image, before));
    RgbPixels<double> rgb(10, 10);
    const RgbPixels<double> rgbBefore(rgb);
    EXPECT_THROW(ornex::drawAntialiasedCircle(rgb.view(), {5, 5}, 0, {1, 1, 1}), std::invalid_argument);
    EXPECT_TRUE(same(rgb, rgbBefore));
}

// ---------------------------------------------------------------------------
// Filled polygons

template <class Pixel, class Opacity, auto intensityKernel, auto rgbKernel>
struct Filler {
    using T = Pixel;
    using A = Opacity;
    static constexpr auto fill = intensityKernel;
    static constexpr auto rgbFill = rgbKernel;
};

using FillTypes = ::testing::Types<Filler<double, double, ORNEX_FillOnePolygon_I_D, ORNEX_FillOnePolygon_RGB_D>,
                                   Filler<float, float, ORNEX_FillOnePolygon_I_R, ORNEX_FillOnePolygon_RGB_R>,
                                   Filler<bool, int16_t, ORNEX_FillOnePolygon_I_Bool, ORNEX_FillOnePolygon_RGB_Bool>,
                                   Filler<uint8_t, int16_t, ORNEX_FillOnePolygon_I_UI8, ORNEX_FillOnePolygon_RGB_UI8>,
                                   Filler<int8_t, int16_t, ORNEX_FillOnePolygon_I_I8, ORNEX_FillOnePolygon_RGB_I8>,
                                   Filler<uint16_t, int16_t, ORNEX_FillOnePolygon_I_UI16, ORNEX_FillOnePolygon_RGB_UI16>,
                                   Filler<int16_t, int16_t, ORNEX_FillOnePolygon_I_I16, ORNEX_FillOnePolygon_RGB_I16>>;

template <class M>
class PolygonFill : public ::testing::Test {};
TYPED_TEST_SUITE(PolygonFill, FillTypes);

// Opacities with their Q10 form worked out by hand (nearest 1/1024).
struct OpacityCase {
    double real;
    int16_t q10;
};
const OpacityCase opacities[] = {{1.0, 1024}, {0.5, 512}, {0.3, 307}, {0.0, 0}, {0.9996, 1024}};

template <class M>
typename M::A kernelOpacity(const OpacityCase &opacity)
{
    if constexpr (std::is_floating_point_v<typename M::A>) {
        return typename M::A(opacity.real);
    } else {
        return opacity.q10;
    }
}

// Row, column pairs of the vertices, written out.
const std::vector<std::vector<int32_t>> polygonLists = {
    {1, 1, 2, 14, 12, 7},
    {0, 0, 0, 10, 10, 10, 10, 0},
    {-4, 3, 6, 20, 15, 8, 6, -3, 3, 8},
    {2, 2, 12, 12, 2, 12, 12, 2},
    {5, 5, 5, 5, 9, 5},
};

std::vector<Point> points(const std::vector<int32_t> &list)
{
    std::vector<Point> result;
    for (size_t i = 0; i + 1 < list.size(); i += 2) {
        result.push_back({list[i], list[i + 1]});
    }
    return result;
}

TYPED_TEST(PolygonFill, EqualsTheKernel)
{
    using T = typename TypeParam::T;
    ChangeCount changes;
    const T raw[2] = {value<T>(1), value<T>(std::is_signed_v<T> ? -70 : 200)};
    const std::vector<T> values(raw, raw + 2);
    for (const auto &list : polygonLists) {
        for (const auto &opacity : opacities) {
            Pixels<T> actual(14, 16, 2), expected(actual);
            const auto before = actual;
            ornex::fillPolygon(actual.view(), points(list), values, opacity.real);
            const size_t n = list.size() / 2;
            std::vector<int32_t> edges(16 * n, 0), sortRecords(6 * n, 0);
            const T *fillValues = raw;
            if constexpr (std::is_same_v<T, bool>) {
                TypeParam::fill(edges.data(), int32_t(list.size()), list.data(), sortRecords.data(),
                                reinterpret_cast<uint8_t *>(expected.data.get()), 0, 13, 0, 15, 14,
                                reinterpret_cast<const uint8_t *>(fillValues), kernelOpacity<TypeParam>(opacity), 2,
                                14 * 16);
            } else {
                TypeParam::fill(edges.data(), int32_t(list.size()), list.data(), sortRecords.data(),
                                expected.data.get(), 0, 13, 0, 15, 14, fillValues, kernelOpacity<TypeParam>(opacity),
                                2, 14 * 16);
            }
            changes.note(actual, before);
            EXPECT_TRUE(same(actual, expected)) << "opacity " << opacity.real << ", " << list.size() / 2
                                                << " vertices";
        }
    }
    EXPECT_GE(changes.drawn, 8);
}

TYPED_TEST(PolygonFill, RgbEqualsTheKernel)
{
    using T = typename TypeParam::T;
    const std::array<T, 3> colour{value<T>(1), value<T>(33), value<T>(std::is_signed_v<T> ? -9 : 250)};
    for (const auto &list : polygonLists) {
        for (const auto &opacity : {opacities[0], opacities[2]}) {
            RgbPixels<T> actual(14, 16), expected(actual);
            ornex::fillPolygon(actual.view(), points(list), colour, opacity.real);
            const size_t n = list.size() / 2;
            std::vector<int32_t> edges(16 * n, 0), sortRecords(6 * n, 0);
            if constexpr (std::is_same_v<T, bool>) {
                const uint8_t bytes[3] = {colour[0], colour[1], colour[2]};
                TypeParam::rgbFill(edges.data(), int32_t(list.size()), list.data(), sortRecords.data(),
                                   reinterpret_cast<uint8_t *>(expected.red.data.get()),
                                   reinterpret_cast<uint8_t *>(expected.green.data.get()),
                                   reinterpret_cast<uint8_t *>(expected.blue.data.get()), 0, 13, 0, 15, 14, bytes,
                                   kernelOpacity<TypeParam>(opacity));
            } else {
                TypeParam::rgbFill(edges.data(), int32_t(list.size()), list.data(), sortRecords.data(),
                                   expected.red.data.get(), expected.green.data.get(), expected.blue.data.get(), 0, 13,
                                   0, 15, 14, colour.data(), kernelOpacity<TypeParam>(opacity));
            }
            EXPECT_TRUE(same(actual, expected)) << "opacity " << opacity.real;
        }
    }
}

TEST(PolygonFillErrors, RejectedBeforeAnythingIsWritten)
{
    Pixels<int8_t> image(10, 10, 2);
    const Pixels<int8_t> before(image);
    const std::vector<int8_t> values{5, 6};
    const std::vector<Point> triangle{{0, 0}, {0, 9}, {9, 4}};
    EXPECT_THROW(ornex::fillPolygon(image.view(), {{0, 0}, {9, 9}}, values), std::invalid_argument);
    EXPECT_THROW(ornex::fillPolygon(image.view(), {}, values), std::invalid_argument);
    EXPECT_THROW(ornex::fillPolygon(image.view(), triangle, values, 1.01), std::invalid_argument);
    EXPECT_THROW(ornex::fillPolygon(image.view(), triangle, values, -0.01), std::invalid_argument);
    EXPECT_THROW(ornex::fillPolygon(image.view(), triangle, std::vector<int8_t>{5}), std::invalid_argument);
    EXPECT_THROW(ornex::fillPolygon(image.view(), {{0, 0}, {0, 9}, {1 << 30, 4}}, values), std::invalid_argument);
    EXPECT_TRUE(same(image, before));
    RgbPixels<float> rgb(10, 10);
    const RgbPixels<float> rgbBefore(rgb);
    EXPECT_THROW(ornex::fillPolygon(rgb.view(), {{0, 0}, {9, 9}}, {1, 1, 1}), std::invalid_argument);
    EXPECT_THROW(ornex::fillPolygon(rgb.view(), triangle, {1, 1, 1}, 7.0), std::invalid_argument);
    EXPECT_TRUE(same(rgb, rgbBefore));
    try {
        ornex::fillPolygon(image.view(), {{0, 0}, {9, 9}}, values);
    } catch (const std::invalid_argument &error) {
        EXPECT_STREQ(error.what(), "vertices: needs at least 3 points");
    }
}

// ---------------------------------------------------------------------------
// Anti-aliased filled discs and polygons

// What a blend at `share` leaves of `colour` over a zero background:
// integer and logical images keep the whole part (the Q10 product shifts
// down), floating images the product.
template <class T>
T portion(T colour, double share)
{
    if constexpr (std::is_floating_point_v<T>) {
        return T(colour * share);
    } else {
        return T(std::floor(double(colour) * share));
    }
}

TYPED_TEST(Blending, FilledDiscCoversItsArea)
{
    using T = typename TypeParam::T;
    const std::vector<T> colour = colours<T>(2);
    ornex::Image<T> image(31, 33, 2);
    ornex::fillAntialiasedCircle(image.view(), {15, 16}, 10, colour);
    EXPECT_EQ(image(15, 16, 1), colour[1]);
    EXPECT_EQ(image(15, 26, 0), portion(colour[0], 0.5)) << "a pixel centred on the circle is half inside";
    EXPECT_EQ(image(15, 27, 0), T(0));
    double covered = 0;
    for (int32_t c = 0; c < 33; ++c) {
        for (int32_t r = 0; r < 31; ++r) {
            covered += double(image(r, c, 0)) / double(colour[0]);
        }
    }
    EXPECT_NEAR(covered, std::numbers::pi * 100, std::numbers::pi);

    ornex::Image<T> clipped(31, 33, 2);
    ornex::fillAntialiasedCircle(clipped.view(), {15, 16}, 10, colour, 0.5, ClipRect{0, 30, 0, 16});
    EXPECT_EQ(clipped(15, 16, 0), portion(colour[0], 0.5));
    EXPECT_EQ(clipped(15, 17, 0), T(0));

    const std::vector<T> three = colours<T>(3);
    ornex::Image<T> red(31, 33), green(31, 33), blue(31, 33);
    ornex::fillAntialiasedCircle(RgbView<T>{red.view(), green.view(), blue.view()}, {15, 16}, 10,
                                 {three[0], three[1], three[2]});
    EXPECT_EQ(red(15, 16), three[0]);
    EXPECT_EQ(green(20, 16), three[1]);
    EXPECT_EQ(blue(15, 6), portion(three[2], 0.5));
    EXPECT_EQ(blue(15, 5), T(0));
}

// A zero background (logical images included), so that each pixel shows
// the share of the colour blended into it.
template <class T>
Pixels<T> zeros(int32_t rows, int32_t cols, int32_t planes = 1)
{
    Pixels<T> pixels(rows, cols, planes);
    std::fill(pixels.data.get(), pixels.data.get() + pixels.size(), T(0));
    return pixels;
}

// The rectangle of rows 2 .. 9 and columns 3 .. 12.
template <class T>
struct FilledRectangle {
    const std::vector<Point> corners{{2, 3}, {2, 12}, {9, 12}, {9, 3}};
    const T colour = value<T>(std::is_signed_v<T> ? -81 : 201);
};

TYPED_TEST(PolygonFill, AntialiasedRectangleHalvesItsSidesAndQuartersItsCorners)
{
    using T = typename TypeParam::T;
    const FilledRectangle<T> rectangle;
    Pixels<T> pixels = zeros<T>(12, 16, 2);
    const ImageView<T> image = pixels.view();
    ornex::fillAntialiasedPolygon(image, rectangle.corners, {rectangle.colour, rectangle.colour});
    const struct {
        int32_t row, col;
        double share;
    } shares[] = {{5, 7, 1},    {2, 7, 0.5},   {9, 7, 0.5}, {5, 3, 0.5}, {5, 12, 0.5},
                  {2, 3, 0.25}, {9, 12, 0.25}, {1, 7, 0},   {5, 2, 0},   {5, 13, 0}};
    for (const auto &pixel : shares) {
        for (int32_t p = 0; p < 2; ++p) {
            EXPECT_EQ(image(pixel.row, pixel.col, p), portion(rectangle.colour, pixel.share))
                << pixel.row << "," << pixel.col << " plane " << p;
        }
    }

    Pixels<T> clippedPixels = zeros<T>(12, 16);
    const ImageView<T> clipped = clippedPixels.view();
    ornex::fillAntialiasedPolygon(clipped, rectangle.corners, {rectangle.colour}, 0.5, ClipRect{0, 11, 0, 7});
    EXPECT_EQ(clipped(5, 7), portion(rectangle.colour, 0.5));
    EXPECT_EQ(clipped(5, 8), T(0));
}

TYPED_TEST(PolygonFill, AntialiasedFillReadsTheCallersWeights)
{
    using T = typename TypeParam::T;
    const FilledRectangle<T> rectangle;
    // Every edge half a pixel further out: the rows of the top and bottom
    // sides are then wholly inside, the row beyond them untouched.
    std::vector<double> outward(49);
    for (int i = 0; i < 49; ++i) {
        outward[i] = std::clamp(1 + (i - 24) / 16.0, 0.0, 1.0);
    }
    Pixels<T> red = zeros<T>(12, 16), green = zeros<T>(12, 16), blue = zeros<T>(12, 16);
    const T c = rectangle.colour;
    ornex::fillAntialiasedPolygon(RgbView<T>{red.view(), green.view(), blue.view()}, rectangle.corners, {c, c, c},
                                  1.0, std::nullopt, outward);
    for (const ImageView<T> plane : {red.view(), green.view(), blue.view()}) {
        EXPECT_EQ(plane(2, 7), c);
        EXPECT_EQ(plane(9, 7), c);
        EXPECT_EQ(plane(1, 7), T(0));
    }
}

TEST(AntialiasedFillErrors, RejectedBeforeAnythingIsWritten)
{
    Pixels<uint8_t> image(10, 12, 2), tall(524289, 1);
    RgbPixels<float> rgb(10, 12);
    const Pixels<uint8_t> before(image), tallBefore(tall);
    const RgbPixels<float> rgbBefore(rgb);
    const std::vector<uint8_t> two{5, 6};
    const std::vector<Point> triangle{{0, 0}, {0, 9}, {9, 4}};
    std::vector<double> badWeight = ornex::polygonBoxProfile();
    badWeight[30] = 1.5;
    const struct {
        std::function<void()> call;
        const char *message;
    } cases[] = {
        {[&] { ornex::fillAntialiasedCircle(image.view(), {5, 5}, 0, two); }, "radius: must be positive"},
        {[&] { ornex::fillAntialiasedCircle(image.view(), {5, 5}, 40000, two); }, "radius: must be at most 32000"},
        {[&] { ornex::fillAntialiasedCircle(image.view(), {5, 5}, 3, std::vector<uint8_t>{5}); },
         "colour: needs one value per plane"},
        {[&] { ornex::fillAntialiasedCircle(image.view(), {1 << 30, 5}, 3, two); },
         "centre: coordinates must lie within -268435456 .. 268435456"},
        {[&] { ornex::fillAntialiasedCircle(image.view(), {5, 5}, 3, two, 1.5); }, "opacity: must lie in [0, 1]"},
        {[&] { ornex::fillAntialiasedCircle(image.view(), {5, 5}, 3, two, 1.0, ClipRect{0, 10, 0, 11}); },
         "clip: must lie inside the image"},
        {[&] { ornex::fillAntialiasedCircle(rgb.view(), {5, 5}, 3, {1, 1, 1}, std::nan("")); },
         "opacity: must lie in [0, 1]"},
        {[&] { ornex::fillAntialiasedCircle(rgb.view(), {5, 5}, 3, {1, 1, 1}, 1.0, ClipRect{3, 2, 0, 11}); },
         "clip: must lie inside the image"},
        {[&] { ornex::fillAntialiasedPolygon(image.view(), {{0, 0}, {9, 9}}, two); },
         "vertices: needs at least 3 points"},
        {[&] { ornex::fillAntialiasedPolygon(image.view(), {{600000, 0}, {600000, 9}, {600009, 4}}, two); },
         "vertices: rows must lie within -524288 .. 524287"},
        {[&] { ornex::fillAntialiasedPolygon(image.view(), {{0, 0}, {0, 40000}, {9, 4}}, two); },
         "vertices: edges must span at most 32767 rows and columns"},
        {[&] { ornex::fillAntialiasedPolygon(image.view(), triangle, std::vector<uint8_t>{5}); },
         "values: needs one value per plane"},
        {[&] { ornex::fillAntialiasedPolygon(image.view(), triangle, two, 1.0, std::nullopt, {0.0, 0.5, 1.0}); },
         "weights: needs 49 entries"},
        {[&] { ornex::fillAntialiasedPolygon(image.view(), triangle, two, 1.0, std::nullopt, badWeight); },
         "weights: entries must lie in [0, 1]"},
        {[&] { ornex::fillAntialiasedPolygon(tall.view(), triangle, {uint8_t(5)}); },
         "image: must have at most 524288 rows"},
        {[&] { ornex::fillAntialiasedPolygon(rgb.view(), triangle, {1, 1, 1}, -0.1); }, "opacity: must lie in [0, 1]"},
        {[&] { ornex::fillAntialiasedPolygon(rgb.view(), triangle, {1, 1, 1}, 1.0, ClipRect{0, 9, 0, 12}); },
         "clip: must lie inside the image"},
    };
    for (const auto &[call, message] : cases) {
        try {
            call();
            ADD_FAILURE() << "no exception; expected " << message;
        } catch (const std::invalid_argument &error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
    EXPECT_TRUE(same(image, before));
    EXPECT_TRUE(same(tall, tallBefore));
    EXPECT_TRUE(same(rgb, rgbBefore));
}

// ---------------------------------------------------------------------------
// Text

// A tiny font: 'a' is 3 wide and 2 high, 'b' 2 wide and 3 high, hanging
// below the baseline; every other character is an empty space of 2 columns.
const uint8_t glyphA[6] = {255, 90, 0, 30, 255, 200};
const uint8_t glyphB[6] = {0, 128, 255, 255, 64, 1};

ornex::Glyph tinyFont(char character)
{
    switch (character) {
    case 'a': return {glyphA, 3, 2, 0, 2, 4};
    case 'b': return {glyphB, 2, 3, 1, 1, 3};
    default: return {{}, 0, 0, 0, 0, 2};
    }
}

template <class T, bool antiAliased>
auto intensityBlender()
{
    if constexpr (std::is_same_v<T, double>) {
        return antiAliased ? ORNEX_DrawText_I_double_AA : ORNEX_DrawText_I_double;
    } else {
        return antiAliased ? ORNEX_DrawText_I_single_AA : ORNEX_DrawText_I_single;
    }
}

template <class T, bool antiAliased>
auto rgbBlender()
{
    if constexpr (std::is_same_v<T, double>) {
        return antiAliased ? ORNEX_DrawText_RGB_double_AA : ORNEX_DrawText_RGB_double;
    } else {
        return antiAliased ? ORNEX_DrawText_RGB_single_AA : ORNEX_DrawText_RGB_single;
    }
}

template <class T>
class Text : public ::testing::Test {};
using TextTypes = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Text, TextTypes);

// "ab b\nba" from baseline row 4, column 1, lines 5 rows apart: the pen at
// column 1 (a), 5 (b), 8 (space), 10 (b), then on row 9 at 1 (b), 4 (a),
// ending at 8.
struct PlacedCharacter {
    const uint8_t *glyph;
    int32_t x, y, xOffset, yOffset;
    uint16_t width, height;
};
const PlacedCharacter placedText[] = {{glyphA, 1, 4, 0, 2, 3, 2},  {glyphB, 5, 4, 1, 1, 2, 3},
                                      {glyphB, 10, 4, 1, 1, 2, 3}, {glyphB, 1, 9, 1, 1, 2, 3},
                                      {glyphA, 4, 9, 0, 2, 3, 2}};

template <class T, bool antiAliased>
void expectIntensityText(double opacity)
{
    Pixels<T> actual(12, 13, 2), expected(actual);
    const std::vector<T> colour{T(0.75), T(0.125)};
    const ornex::TextOptions options{opacity, antiAliased, 5};
    const Point pen = ornex::drawText(actual.view(), "ab b\nba", {4, 1}, tinyFont, colour, options);
    EXPECT_EQ(pen, (Point{9, 8}));
    const T alpha = T(opacity);
    for (const auto &c : placedText) {
        for (int p = 0; p < 2; ++p) {
            intensityBlender<T, antiAliased>()(c.glyph, c.x, c.y, c.xOffset, c.yOffset, c.width, c.height, 13, 12,
                                               expected.data.get() + p * 12 * 13, &colour[p], &alpha, 0);
        }
    }
    EXPECT_TRUE(same(actual, expected)) << "opacity " << opacity << (antiAliased ? " anti-aliased" : "");
}

TYPED_TEST(Text, IntensityEqualsTheBlenders)
{
    for (const double opacity : {1.0, 0.4}) {
        expectIntensityText<TypeParam, true>(opacity);
        expectIntensityText<TypeParam, false>(opacity);
    }
}

TYPED_TEST(Text, RgbEqualsTheBlenders)
{
    using T = TypeParam;
    for (const bool antiAliased : {true, false}) {
        RgbPixels<T> actual(12, 13), expected(actual);
        const std::array<T, 3> colour{T(1), T(0.5), T(0.2)};
        const Point pen = ornex::drawText(actual.view(), "ab b\nba", {4, 1}, tinyFont, colour, {0.7, antiAliased, 5});
        EXPECT_EQ(pen, (Point{9, 8}));
        const T alpha = T(0.7);
        for (const auto &c : placedText) {
            (antiAliased ? rgbBlender<T, true>() : rgbBlender<T, false>())(
                c.glyph, c.x, c.y, c.xOffset, c.yOffset, c.width, c.height, 13, 12, expected.red.data.get(),
                expected.green.data.get(), expected.blue.data.get(), colour.data(), &alpha, 0);
        }
        EXPECT_TRUE(same(actual, expected));
    }
}

TEST(TextLayout, NewlineIsAnOrdinaryCharacterWithoutLineHeight)
{
    Pixels<double> actual(12, 13), expected(actual);
    const std::vector<double> colour{0.5};
    // '\n' is an empty glyph of 2 columns here: 'b' follows at column 1 + 4 + 2.
    const Point pen = ornex::drawText(actual.view(), "a\nb", {4, 1}, tinyFont, colour);
    EXPECT_EQ(pen, (Point{4, 10}));
    const double opacity = 1;
    ORNEX_DrawText_I_double_AA(glyphA, 1, 4, 0, 2, 3, 2, 13, 12, expected.data.get(), colour.data(), &opacity, 0);
    ORNEX_DrawText_I_double_AA(glyphB, 7, 4, 1, 1, 2, 3, 13, 12, expected.data.get(), colour.data(), &opacity, 0);
    EXPECT_TRUE(same(actual, expected));
}

TEST(TextErrors, RejectedBeforeAnythingIsWritten)
{
    Pixels<double> image(12, 13);
    const Pixels<double> before(image);
    const std::vector<double> colour{1};
    // The second character has a bitmap too short for its size: the first
    // must not be drawn either.
    const auto broken = [](char character) {
        return character == 'x' ? ornex::Glyph{std::span<const uint8_t>(glyphA, 5), 3, 2, 0, 2, 4} : tinyFont(character);
    };
    EXPECT_THROW(ornex::drawText(image.view(), "ax", {4, 1}, broken, colour), std::invalid_argument);
    EXPECT_THROW(ornex::drawText(image.view(), "ab", {4, 1}, tinyFont, colour, {1.5}), std::invalid_argument);
    EXPECT_THROW(ornex::drawText(image.view(), "ab", {4, 1}, tinyFont, colour, {-0.5}), std::invalid_argument);
    EXPECT_THROW(ornex::drawText(image.view(), "ab", {4, 1}, tinyFont, colour, {1, true, -2}), std::invalid_argument);
    EXPECT_THROW(ornex::drawText(image.view(), "ab", {4, 1}, tinyFont, std::vector<double>{1, 2}),
                 std::invalid_argument);
    EXPECT_THROW(ornex::drawText(image.view(), "ab", {4, std::numeric_limits<int32_t>::max() - 5}, tinyFont, colour),
                 std::invalid_argument);
    EXPECT_TRUE(same(image, before));
    RgbPixels<float> rgb(12, 13);
    const RgbPixels<float> rgbBefore(rgb);
    EXPECT_THROW(ornex::drawText(rgb.view(), "xa", {4, 1}, broken, {1, 1, 1}), std::invalid_argument);
    EXPECT_TRUE(same(rgb, rgbBefore));
    try {
        ornex::drawText(image.view(), "ax", {4, 1}, broken, colour);
    } catch (const std::invalid_argument &error) {
        EXPECT_STREQ(error.what(), "glyphs: bitmap shorter than width x height");
    }
}

// ---------------------------------------------------------------------------
// Number formatting

// What the kernel writes into a generous buffer for the given raw values.
std::string formatted(const char *format, void *values, int32_t valueLimit, int32_t typeCode)
{
    std::vector<char> out(4096, '\0');
    std::string writable(format);
    ORNEX_snprintf(out.data(), writable.data(), values, valueLimit, typeCode, 0, int32_t(out.size()));
    return out.data();
}

TEST(FormatNumbers, EqualsTheKernelForEveryType)
{
    int32_t ints[] = {3, -4};
    EXPECT_EQ(ornex::formatNumbers("x=%d, y=%d", std::vector<int32_t>{3, -4}), formatted("x=%d, y=%d", ints, 1, 6));
    double doubles[] = {3.14159, -2.5e-7, 1};
    EXPECT_EQ(ornex::formatNumbers("pi %.3f e %g, %8.2e", std::vector<double>{3.14159, -2.5e-7, 1}),
              formatted("pi %.3f e %g, %8.2e", doubles, 2, 0));
    EXPECT_EQ(ornex::formatNumbers("[%f]", std::vector<double>{doubles[0]}), formatted("[%f]", doubles, 0, 0));
    float floats[] = {0.1f, 7.0f};
    EXPECT_EQ(ornex::formatNumbers("%.9f|%5.1f", std::vector<float>{0.1f, 7.0f}), formatted("%.9f|%5.1f", floats, 1, 1));
    int8_t int8s[] = {-128, 127};
    EXPECT_EQ(ornex::formatNumbers("%d %x", std::vector<int8_t>{-128, 127}), formatted("%d %x", int8s, 1, 2));
    uint8_t uint8s[] = {255, 65};
    EXPECT_EQ(ornex::formatNumbers("100%% %u %c", std::vector<uint8_t>{255, 65}),
              formatted("100%% %u %c", uint8s, 1, 3));
    int16_t int16s[] = {-32768};
    EXPECT_EQ(ornex::formatNumbers("%hd!", std::vector<int16_t>{-32768}), formatted("%hd!", int16s, 0, 4));
    uint16_t uint16s[] = {65535, 1};
    EXPECT_EQ(ornex::formatNumbers("%o-%05u", std::vector<uint16_t>{65535, 1}), formatted("%o-%05u", uint16s, 1, 5));
    uint32_t uint32s[] = {4294967295u};
    EXPECT_EQ(ornex::formatNumbers("%u %X", std::vector<uint32_t>{4294967295u}), formatted("%u %X", uint32s, 0, 7));
    uint8_t logical[] = {1, 0};
    EXPECT_EQ(ornex::formatNumbers("%d/%d", std::vector<bool>{true, false}), formatted("%d/%d", logical, 1, 8));
    EXPECT_EQ(ornex::formatNumbers("x=%d, y=%d", std::vector<int32_t>{3, -4}), "x=3, y=-4");
}

TEST(FormatNumbers, FewerValuesDropTheRestAsTheKernelDoes)
{
    int32_t ints[] = {3};
    EXPECT_EQ(ornex::formatNumbers("x=%d, y=%d", std::vector<int32_t>{3}), formatted("x=%d, y=%d", ints, 0, 6));
    EXPECT_EQ(ornex::formatNumbers("x=%d, y=%d", std::vector<int32_t>{3}), "x=3, y=");
    int32_t unused[] = {0};
    EXPECT_EQ(ornex::formatNumbers("plain text", std::vector<int32_t>{}), formatted("plain text", unused, -1, 6));
    EXPECT_EQ(ornex::formatNumbers("a%db", std::vector<int32_t>{}), formatted("a%db", unused, -1, 6));
    int32_t counted[] = {9, 8};
    EXPECT_EQ(ornex::formatNumbers("ab%ncd %d", std::vector<int32_t>{9, 8}), formatted("ab%ncd %d", counted, 1, 6));
}

TEST(FormatNumbers, OutputLongerThanTheFirstBufferIsComplete)
{
    double values[] = {1.5, 2.25};
    const std::string format = std::string(100, '-') + "%300.4f%%|%-200.1f" + std::string(50, '+');
    const std::string text = ornex::formatNumbers(format, std::vector<double>{1.5, 2.25});
    EXPECT_EQ(text, formatted(format.c_str(), values, 1, 0));
    EXPECT_EQ(text.size(), 100u + 300u + 1u + 1u + 200u + 50u);
    const std::string longPlain(5000, 'z');
    EXPECT_EQ(ornex::formatNumbers(longPlain, std::vector<int32_t>{1}), longPlain);
}

TEST(FormatNumbers, ConversionsThatDoNotSuitTheValuesAreRejected)
{
    const std::vector<int32_t> ints{1, 2};
    const std::vector<double> doubles{1, 2};
    EXPECT_THROW(ornex::formatNumbers("%s", ints), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers("%f", ints), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers("%ld", ints), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers("%*d", ints), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers("50%", ints), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers("%d", doubles), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers("%.*f", doubles), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers("%p", doubles), std::invalid_argument);
    EXPECT_THROW(ornex::formatNumbers(std::string("a\0%d", 4), ints), std::invalid_argument);
}

} // namespace
