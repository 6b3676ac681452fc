#include "support.hpp"

using namespace ornex;

template <class T>
struct Canvas {
    int32_t rows, cols, planes;
    std::unique_ptr<T[]> pixels{new T[size_t(rows) * cols * planes]};
    Canvas(int32_t r, int32_t c, int32_t p, T fill = T{}) : rows(r), cols(c), planes(p)
    {
        std::fill_n(pixels.get(), size_t(r) * c * p, fill);
    }
    ImageView<T> view() const { return {pixels.get(), rows, cols, planes}; }
    RgbView<T> rgb() const { return {view().plane(0), view().plane(1), view().plane(2)}; }
    T &operator()(int32_t r, int32_t c, int32_t p = 0) const { return pixels[(size_t(p) * cols + c) * rows + r]; }
};

template <class T, class F>
void expectPicture(const Canvas<T> &canvas, F expected)
{
    for (int32_t k = 0; k < canvas.rows * canvas.cols * canvas.planes; ++k) {
        const int32_t r = k % canvas.rows, c = k / canvas.rows % canvas.cols, p = k / canvas.rows / canvas.cols;
        if (!(canvas.pixels[k] == expected(r, c, p)))
            return void(ADD_FAILURE() << r << "," << c << "," << p << ": " << +canvas.pixels[k]);
    }
}

template <class T>
class Drawing : public ::testing::Test {};
using DrawTypes = ::testing::Types<double, float, bool, uint8_t, int8_t, uint16_t, int16_t>;
TYPED_TEST_SUITE(Drawing, DrawTypes);

TYPED_TEST(Drawing, EveryCallPutsTheColourWhereTheShapeLies)
{
    using T = TypeParam;
    const int sign = std::is_signed_v<T> && std::is_integral_v<T> ? -1 : 1; // all true in logical images
    const std::array<T, 3> ink{T(75 * sign), T(30 * sign), T(12 * sign)};
    const std::vector<T> two{ink[0], ink[1]};
    // What blending at opacity q/1024 leaves of a colour over zero: integer images keep (colour q) >> 10.
    const auto share = [](T colour, double q) {
        return T(std::is_floating_point_v<T> ? colour * q / 1024 : std::floor(colour * q / 1024));
    };
    // Slope 1/3, a clipped row, a column bottom-up; the circle's octant takes round(sqrt(25 - x^2)).
    const std::set<std::pair<int, int>> line{{0, 0}, {0, 1}, {1, 2}, {1, 3}, {1, 4}, {2, 5}, {2, 6}, {5, 3}, {5, 4},
                                             {5, 5}, {5, 6}, {5, 7}, {5, 8}, {5, 9}, {9, 0}, {8, 0}, {7, 0}};
    const std::vector<Point> rectangle{{2, 3}, {2, 12}, {9, 12}, {9, 3}};
    const auto inside = [](int r, int c) { return r >= 2 && r <= 9 && c >= 3 && c <= 12; };
    const auto cover = [&](int r, int c) { return inside(r, c) ? (r % 7 == 2 ? .5 : 1.) * (c % 9 == 3 ? .5 : 1.) : 0; };
    // 300.5/1024 rounds to 301 in integer images.
    const double opacity = 300.5 / 1024, q = std::is_floating_point_v<T> ? double(T(opacity)) * 1024 : 301;
    for (const bool rgb : {false, true}) {
        const auto paint = [&](const Canvas<T> &on, auto call) { rgb ? call(on.rgb(), ink) : call(on.view(), two); };
        Canvas<T> lines(10, 12, 2 + rgb), circle(12, 16, 2 + rgb), polygon(12, 16, 2 + rgb), aa(12, 16, 2 + rgb);
        for (const auto &[from, to, clip] : {std::tuple{Point{0, 0}, Point{2, 6}, ClipRect{0, 9, 0, 11}},
                                             {Point{5, 11}, Point{5, -3}, ClipRect{1, 8, 3, 9}},
                                             {Point{9, 0}, Point{7, 0}, ClipRect{0, 9, 0, 11}}})
            paint(lines, [&](auto image, const auto &colour) { drawLine(image, from, to, colour, clip); });
        expectPicture(lines, [&](int r, int c, int p) { return line.count({r, c}) ? ink[p] : T{}; });
        paint(circle, [](auto image, const auto &colour) { drawCircle(image, {4, 9}, 5, colour); });
        const auto on = [](int a, int b) { return std::max(a, b) == std::lround(std::sqrt(25 - std::min(a * a, b * b))); };
        expectPicture(circle, [&](int r, int c, int p) { return on(abs(r - 4), abs(c - 9)) ? ink[p] : T{}; });
        paint(polygon, [&](auto image, const auto &colour) { fillPolygon(image, rectangle, colour, opacity); });
        expectPicture(polygon, [&](int r, int c, int p) { return inside(r, c) ? share(ink[p], q) : T(0); });
        // The box profile covers the sides half, the corners a quarter.
        paint(aa, [&](auto image, const auto &colour) { fillAntialiasedPolygon(image, rectangle, colour); });
        expectPicture(aa, [&](int r, int c, int p) { return share(ink[p], 1024 * cover(r, c)); });
        if constexpr (!std::is_same_v<T, bool>) {
            // Half of 75 rounds away from zero; an outline puts the whole colour on its axes, a disc half on its circle.
            Canvas<T> aaLine(10, 14, 2 + rgb), outline(31, 33, 2 + rgb), disc(31, 33, 2 + rgb);
            paint(aaLine, [](auto image, const auto &colour) { drawAntialiasedLine(image, {3, 1}, {3, 8}, colour, 0.5); });
            paint(outline, [](auto image, const auto &colour) { drawAntialiasedCircle(image, {20, 16}, 10, colour); });
            paint(disc, [](auto image, const auto &colour) { fillAntialiasedCircle(image, {15, 16}, 10, colour); });
            const auto half = [](T v) { return std::is_integral_v<T> ? T(std::lround(v / 2.0)) : T(v / 2); };
            expectPicture(aaLine, [&](int r, int c, int p) { return r == 3 && c >= 1 && c <= 8 ? half(ink[p]) : T(0); });
            for (int32_t p = 0; p < 2 + rgb; ++p) {
                EXPECT_TRUE(outline(10, 16, p) == ink[p] && outline(20, 26, p) == ink[p] && outline(20, 16, p) == T(0));
                EXPECT_TRUE(disc(15, 16, p) == ink[p] && disc(25, 16, p) == share(ink[p], 512) && !disc(15, 27, p));
            }
        }
    }
    // Clipped at column 7, a profile half a pixel further out covers the side rows wholly.
    Canvas<T> wider(12, 16, 1);
    std::vector<double> outward = polygonBoxProfile();
    std::copy(outward.begin() + 8, outward.end(), outward.begin());
    fillAntialiasedPolygon(wider.view(), rectangle, {ink[0]}, 1.0, ClipRect{0, 11, 0, 7}, outward);
    EXPECT_TRUE(wider(2, 7) == ink[0] && wider(9, 7) == ink[0] && wider(1, 7) == T(0) && wider(2, 8) == T(0));
}

TEST(DrawTables, WorkedByHand)
{
    // Entry d: w = 0.5 (1 - d/16); row 0 keeps round(1024 (1 - w)), the colour row round(w colour).
    const uint8_t u8 = 201;
    const int8_t i8 = -81;
    const auto line = draw_detail::lineWeightTable(&u8, 1, 0.5);
    EXPECT_EQ((std::vector<int>{line[0], line[25], line[4], line[29], line[16], line[41]}),
              (std::vector<int>{512, 101, 640, 75, 1024, 0}));
    EXPECT_EQ(draw_detail::lineWeightTable(&i8, 1, 0.5)[25], -41);
    // 4096 sqrt(1 - (t/4096)^2): 3547.24 at 2048, 2527.74 at the last entry.
    const auto &roots = draw_detail::circleSquareRootTable();
    EXPECT_EQ((std::vector<int>{int(roots.size()), roots[0], roots[2048], roots[3223]}),
              (std::vector<int>{3224, 4096, 3547, 2528}));
    // The box profile 1/2 + (i - 24)/16 clamped, its Q10 form (306.9952 -> 307), a Q10 opacity (307.2).
    std::vector<double> weights = polygonBoxProfile();
    weights[20] = 0.2998;
    EXPECT_EQ(draw_detail::polygonWeightTable<uint8_t>(weights)[25], 576);
    EXPECT_TRUE(draw_detail::polygonWeightTable<int16_t>(weights)[20] == 307 && draw_detail::opacityQ10(0.3) == 307);
}

// A tiny font: 'a' 3 x 2 with 2 rows above the baseline; 'b' 2 x 3 offset (1, 1); others a 2-column space.
const uint8_t kGlyphA[6] = {255, 90, 0, 30, 255, 200}, kGlyphB[6] = {0, 128, 255, 255, 64, 1};
Glyph tinyFont(char ch)
{
    return ch == 'a' ? Glyph{kGlyphA, 3, 2, 0, 2, 4} : ch == 'b' ? Glyph{kGlyphB, 2, 3, 1, 1, 3} : Glyph{{}, 0, 0, 0, 0, 2};
}

TYPED_TEST_SUITE(Typed, RealTypes);

TYPED_TEST(Typed, TextGlyphsLandInTheirBoxes)
{
    using T = TypeParam;
    // 'a' on rows 2-3, columns 1-3; 'b' (pen at 5) on 3-5, 6-7; 'b' (pen at 9, 1) on 8-10, 2-3.
    int bytes[12][13] = {};
    for (int k = 0; k < 6; ++k) {
        bytes[2 + k / 3][1 + k % 3] = kGlyphA[k];
        bytes[3 + k / 2][6 + k % 2] = bytes[8 + k / 2][2 + k % 2] = kGlyphB[k];
    }
    const std::array<T, 3> colour{T(0.75), T(0.5), T(0.25)};
    for (const auto &[smooth, opacity] : {std::pair{true, 0.4}, {false, 1.0}}) {
        Canvas<T> image(12, 13, 2), rgb(12, 13, 3);
        const TextOptions options{opacity, smooth, 5};
        EXPECT_EQ(drawText(image.view(), "ab\nb", {4, 1}, tinyFont, {colour[0], colour[1]}, options), (Point{9, 4}));
        EXPECT_EQ(drawText(rgb.rgb(), "ab\nb", {4, 1}, tinyFont, colour, options), (Point{9, 4}));
        for (int32_t k = 0; k < 12 * 13 * 3; ++k) {
            const double g = bytes[k % 12][k / 12 % 13], want = (g && !smooth ? 1 : g / 255) * opacity * colour[k / 156];
            EXPECT_TRUE(std::abs(rgb.pixels[k] - want) < 1e-6 && (k >= 312 || std::abs(image.pixels[k] - want) < 1e-6));
        }
    }
}

TEST(FormatNumbers, PrintfConversionsOfEveryType)
{
    using std::vector;
    const std::string z(5000, 'z');
    EXPECT_EQ(formatNumbers(z + "%.3f e %g", vector<double>{3.14159, -2.5e-7}), z + "3.142 e -2.5e-07");
    EXPECT_EQ(formatNumbers("%.9f", vector<float>{0.1f}), "0.100000001");
    EXPECT_EQ(formatNumbers("%d %x", vector<int8_t>{-128, 127}), "-128 7f");
    EXPECT_EQ(formatNumbers("100%% %u %c", vector<uint8_t>{255, 65}), "100% 255 A");
    EXPECT_EQ(formatNumbers("%hd!", vector<int16_t>{-32768}), "-32768!");
    EXPECT_EQ(formatNumbers("%o-%05u", vector<uint16_t>{65535, 1}), "177777-00001");
    EXPECT_EQ(formatNumbers("%u %X", vector<uint32_t>{4294967295u, 255}), "4294967295 FF");
    EXPECT_EQ(formatNumbers("%d/%d x=%d, y=%d", vector<bool>{true, false, true}), "1/0 x=1, y=");
}

TEST(DrawArguments, CheckedWithTheirMessagesBeforeAnythingIsWritten)
{
    const Canvas<uint8_t> image(10, 12, 2, 7), tall(524289, 1, 1, 7), small(4, 12, 1, 7);
    const Canvas<float> canvas(10, 12, 3, 7);
    const Canvas<double> text(12, 13, 1, 7);
    const auto view = image.view();
    const auto rgb = canvas.rgb();
    const auto page = text.view();
    const std::vector<uint8_t> two{1, 2}, one{1};
    const std::vector<Point> triangle{{0, 0}, {0, 9}, {9, 4}};
    const auto broken = [](char c) { return c == 'x' ? Glyph{{kGlyphA, 5}, 3, 2, 0, 2, 4} : tinyFont(c); };
    const auto aaPolygon = [&](std::vector<Point> corners, std::vector<double> weights = polygonBoxProfile()) {
        return [=] { fillAntialiasedPolygon(view, corners, two, 1, std::nullopt, weights); };
    };
    const char *clip = "clip: must lie inside the image", *opacity = "opacity: must lie in [0, 1]";
    const char *colours = "colour: needs one value per plane", *glyphs = "glyphs: bitmap shorter than width x height";
    const char *vertices = "vertices: coordinates must lie within -268435456 .. 268435456";
    const char *integers = "format: conversions must suit integer values (%d %i %o %u %x %X %c, no '*')";
    const RgbView<uint8_t> uneven{view.plane(0), small.view(), view.plane(1)};
    expectRejections({
        {[&] { drawLine(view, {0, 0}, {9, 11}, two, ClipRect{0, 10, 0, 11}); }, clip},
        {[&] { drawLine(view, {0, 0}, {9, 11}, one); }, "values: needs one value per plane"},
        {[&] { drawLine(view, {0, 0}, {32001, 11}, two); }, "to: must lie within 32000 rows and columns of from"},
        {[&] { drawLine(ImageView<uint8_t>{}, {0, 0}, {1, 1}, two); }, "image: must be a non-empty image"},
        {[&] { drawLine(uneven, {0, 0}, {3, 3}, {1, 2, 3}); }, "image: needs three one-plane images of the same size"},
        {[&] { drawAntialiasedLine(view, {0, 0}, {9, 9}, two, 1.5); }, opacity},
        {[&] { drawAntialiasedCircle(view, {5, 5}, 2, std::vector<uint8_t>{}); }, colours},
        {[&] { drawCircle(view, {5, 5}, 0, two); }, "radius: must be positive"},
        {[&] { drawCircle(rgb, {5, 5}, 32001, {1, 2, 3}); }, "radius: must be at most 32000"},
        {[&] { drawCircle(view, {(1 << 28) + 1, 5}, 3, two); }, "centre: coordinates must lie within -268435456 .. 268435456"},
        {[&] { fillPolygon(view, {{0, 0}, {9, 9}}, two); }, "vertices: needs at least 3 points"},
        {[&] { fillPolygon(view, {{0, 0}, {0, 9}, {-(1 << 28) - 1, 4}}, two); }, vertices},
        {[&] { fillPolygon(rgb, triangle, {1, 1, 1}, -0.01); }, opacity},
        {[&] { fillAntialiasedCircle(view, {5, 5}, 3, one); }, colours},
        {[&] { fillAntialiasedCircle(rgb, {5, 5}, 3, {1, 1, 1}, 1.0, ClipRect{3, 2, 0, 11}); }, clip},
        {aaPolygon({{524288, 0}, {524288, 9}, {524290, 4}}), "vertices: rows must lie within -524288 .. 524287"},
        {aaPolygon({{0, 0}, {0, 32768}, {9, 4}}), "vertices: edges must span at most 32767 rows and columns"},
        {aaPolygon(triangle, {0, 1}), "weights: needs 49 entries"},
        {aaPolygon(triangle, std::vector<double>(49, 1.5)), "weights: entries must lie in [0, 1]"},
        {[&] { fillAntialiasedPolygon(tall.view(), triangle, one); }, "image: must have at most 524288 rows"},
        {[&] { fillAntialiasedPolygon(rgb, triangle, {1, 1, 1}, 1, ClipRect{0, 9, 0, 12}); }, clip},
        {[&] { drawText(page, "ax", {4, 1}, broken, {1.0}); }, glyphs}, // the 'a' is not drawn either
        {[&] { drawText(rgb, "ab", {4, 1}, tinyFont, {1, 1, 1}, {1.5}); }, opacity},
        {[&] { drawText(page, "a", {4, 1}, tinyFont, {1.0}, {1, true, -1}); }, "options.lineHeight: must not be negative"},
        {[&] { drawText(page, "ab", {4, 1}, tinyFont, {1.0, 2.0}); }, colours},
        {[&] { drawText(page, "ab", {4, INT32_MAX - 5}, tinyFont, {1.0}); }, "text: runs beyond 32-bit coordinates"},
        {[] { formatNumbers("%ld", std::vector<int32_t>{1}); }, integers},
        {[] { formatNumbers("%.*f", std::vector<double>{1}); },
         "format: conversions must suit floating-point values (%f %e %g %a, no '*')"},
        {[] { formatNumbers(std::string("a\0%d", 4), std::vector<int32_t>{1}); }, "format: must not contain a zero byte"},
    });
    for (const auto *unchanged : {&image, &tall, &small})
        expectPicture(*unchanged, [](int, int, int) { return uint8_t(7); });
    expectPicture(canvas, [](int, int, int) { return 7.0f; });
    expectPicture(text, [](int, int, int) { return 7.0; });
}
