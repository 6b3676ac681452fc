#include <memory>
#include <set>

#include "support.hpp"

namespace {

using ornex::ClipRect, ornex::Point;

// Pixels of any element type, bool included, all starting at `fill`.
template <class T>
struct Canvas {
    int32_t rows, cols, planes;
    std::unique_ptr<T[]> pixels{new T[size_t(rows) * cols * planes]};
    Canvas(int32_t r, int32_t c, int32_t p, T fill = T{}) : rows(r), cols(c), planes(p)
    {
        std::fill_n(pixels.get(), size_t(r) * c * p, fill);
    }
    ornex::ImageView<T> view() const { return {pixels.get(), rows, cols, planes}; }
    ornex::RgbView<T> rgb() const { return {view().plane(0), view().plane(1), view().plane(2)}; }
    T &operator()(int32_t r, int32_t c, int32_t p = 0) const { return pixels[(size_t(p) * cols + c) * rows + r]; }
};

// Every pixel (r, c) of plane p is expected(r, c, p).
template <class T, class F>
void expectPicture(const Canvas<T> &canvas, F expected)
{
    for (int32_t p = 0; p < canvas.planes; ++p)
        for (int32_t c = 0; c < canvas.cols; ++c)
            for (int32_t r = 0; r < canvas.rows; ++r)
                if (!(canvas(r, c, p) == expected(r, c, p)))
                    return void(ADD_FAILURE() << r << "," << c << "," << p << ": " << +canvas(r, c, p));
}

// Three colours, negative in signed integer images (all true in logical ones).
template <class T>
std::array<T, 3> inks()
{
    const int sign = std::is_signed_v<T> && std::is_integral_v<T> ? -1 : 1;
    return {T(75 * sign), T(30 * sign), T(12 * sign)};
}

// What blending at opacity q/1024 leaves of `colour` over zero: integer and
// logical images keep (colour q) >> 10.
template <class T>
T share(T colour, double q)
{
    return std::is_floating_point_v<T> ? T(double(colour) * q / 1024) : T(std::floor(double(colour) * q / 1024));
}

template <class T>
class PlainDrawing : public ::testing::Test {};
using CopyTypes = ::testing::Types<bool, int16_t, double>;
TYPED_TEST_SUITE(PlainDrawing, CopyTypes);

TYPED_TEST(PlainDrawing, LinesAndCirclesSetTheirPixels)
{
    using T = TypeParam;
    const auto ink = inks<T>();
    // Slope 1/3: rows c/3 rounded; row 5 clipped to columns 3..9; column 0
    // bottom-up. A circle of radius 5: for each row offset x up to the
    // diagonal the nearest column offset sqrt(25 - x^2), in eight octants, the
    // rows above the image skipped.
    const std::set<std::pair<int, int>> line{{0, 0}, {0, 1}, {1, 2}, {1, 3}, {1, 4}, {2, 5}, {2, 6}, {5, 3}, {5, 4},
                                             {5, 5}, {5, 6}, {5, 7}, {5, 8}, {5, 9}, {9, 0}, {8, 0}, {7, 0}};
    const auto near = [](int x, int y) { return x <= y && y == std::lround(std::sqrt(25 - x * x)); };
    for (const bool rgb : {false, true}) {
        Canvas<T> lines(10, 12, 2 + rgb), circle(12, 16, 2 + rgb);
        for (const auto &[from, to, clip] : {std::tuple{Point{0, 0}, Point{2, 6}, ClipRect{0, 9, 0, 11}},
                                             {Point{5, 11}, Point{5, -3}, ClipRect{1, 8, 3, 9}},
                                             {Point{9, 0}, Point{7, 0}, ClipRect{0, 9, 0, 11}}})
            rgb ? ornex::drawLine(lines.rgb(), from, to, ink, clip)
                : ornex::drawLine(lines.view(), from, to, {ink[0], ink[1]}, clip);
        expectPicture(lines, [&](int r, int c, int p) { return line.count({r, c}) ? ink[p] : T{}; });
        rgb ? ornex::drawCircle(circle.rgb(), {4, 9}, 5, ink)
            : ornex::drawCircle(circle.view(), {4, 9}, 5, {ink[0], ink[1]});
        expectPicture(circle, [&](int r, int c, int p) {
            const int a = abs(r - 4), b = abs(c - 9);
            return near(a, b) || near(b, a) ? ink[p] : T{};
        });
    }
}

template <class T>
class Blending : public ::testing::Test {};
using BlendTypes = ::testing::Types<double, float, uint8_t, int8_t, uint16_t, int16_t>;
TYPED_TEST_SUITE(Blending, BlendTypes);

TYPED_TEST(Blending, ShapesPutTheColourWhereTheyLie)
{
    using T = TypeParam;
    const auto ink = inks<T>();
    // A line takes opacity x colour on its pixels and nothing a pixel across;
    // half of 75 rounds away from zero in integer images. An outline of radius
    // 10 about (20, 16) puts the whole colour on its axis pixels. A disc
    // covers (Q + R) / 2R in [0, 1], Q = R^2 - a^2 - b^2: a half on the circle.
    Canvas<T> line(10, 14, 2), rgbLine(10, 14, 3), outline(31, 33, 2), rgbOutline(31, 33, 3);
    Canvas<T> disc(31, 33, 2), rgbDisc(31, 33, 3), clipped(31, 33, 1);
    ornex::drawAntialiasedLine(line.view(), {3, 1}, {3, 8}, {ink[0], ink[1]}, 0.5);
    ornex::drawAntialiasedLine(rgbLine.rgb(), {1, 10}, {8, 10}, ink);
    ornex::drawAntialiasedCircle(outline.view(), {20, 16}, 10, {ink[0], ink[1]});
    ornex::drawAntialiasedCircle(rgbOutline.rgb(), {20, 16}, 10, ink);
    ornex::fillAntialiasedCircle(disc.view(), {15, 16}, 10, {ink[0], ink[1]});
    ornex::fillAntialiasedCircle(rgbDisc.rgb(), {15, 16}, 10, ink);
    ornex::fillAntialiasedCircle(clipped.view(), {15, 16}, 10, {ink[0]}, 0.5, ClipRect{0, 30, 0, 16});
    const T halves[2] = {std::is_integral_v<T> ? T(ink[0] > 0 ? 38 : -38) : T(37.5), T(ink[1] / 2)};
    expectPicture(line, [&](int r, int c, int p) { return r == 3 && c >= 1 && c <= 8 ? halves[p] : T(0); });
    expectPicture(rgbLine, [&](int r, int c, int p) { return c == 10 && r >= 1 && r <= 8 ? ink[p] : T(0); });
    for (int32_t p = 0; p < 3; ++p) {
        const Canvas<T> &circle = p < 2 ? outline : rgbOutline, &filled = p < 2 ? disc : rgbDisc;
        EXPECT_TRUE(circle(10, 16, p) == ink[p] && circle(30, 16, p) == ink[p] && circle(20, 26, p) == ink[p]);
        EXPECT_TRUE(circle(20, 16, p) == T(0) && circle(26, 16, p) == T(0)) << p;
        EXPECT_TRUE(filled(15, 16, p) == ink[p] && filled(25, 16, p) == share(ink[p], 512) && !filled(15, 27, p));
    }
    EXPECT_TRUE(clipped(15, 16) == share(ink[0], 512) && clipped(15, 17) == T(0));
}

template <class T>
class Filling : public ::testing::Test {};
using FillTypes = ::testing::Types<double, float, bool, uint8_t, int8_t, uint16_t, int16_t>;
TYPED_TEST_SUITE(Filling, FillTypes);

TYPED_TEST(Filling, PolygonsCoverTheirInside)
{
    using T = TypeParam;
    const auto ink = inks<T>();
    const std::vector<Point> rectangle{{2, 3}, {2, 12}, {9, 12}, {9, 3}};
    const auto inside = [](int r, int c) { return r >= 2 && r <= 9 && c >= 3 && c <= 12; };
    // Integer and logical images blend in 1/1024, the opacity rounded to the
    // nearest with halves up: 0.9996 gives 1024, 300.5/1024 gives 301.
    for (const auto &[opacity, q] : {std::pair{1.0, 1024.0}, {0.9996, 1024.0}, {300.5 / 1024, 301.0}}) {
        Canvas<T> image(12, 16, 2), rgb(12, 16, 3);
        ornex::fillPolygon(image.view(), rectangle, {ink[0], ink[1]}, opacity);
        ornex::fillPolygon(rgb.rgb(), rectangle, ink, opacity);
        const double exactQ = std::is_floating_point_v<T> ? double(T(opacity)) * 1024 : q;
        for (const auto *canvas : {&image, &rgb})
            expectPicture(*canvas, [&](int r, int c, int p) { return inside(r, c) ? share(ink[p], exactQ) : T(0); });
    }
    // Anti-aliased with the box profile the sides run through pixel centres:
    // sides half covered, corners a quarter. A profile half a pixel further
    // out covers the side rows wholly; the clip keeps columns <= 7.
    std::vector<double> outward(49);
    for (int i = 0; i < 49; ++i)
        outward[i] = std::clamp(1 + (i - 24) / 16.0, 0.0, 1.0);
    Canvas<T> image(12, 16, 2), rgb(12, 16, 3), clipped(12, 16, 1), wider(12, 16, 1);
    ornex::fillAntialiasedPolygon(image.view(), rectangle, {ink[0], ink[1]});
    ornex::fillAntialiasedPolygon(rgb.rgb(), rectangle, ink);
    ornex::fillAntialiasedPolygon(clipped.view(), rectangle, {ink[0]}, 0.5, ClipRect{0, 11, 0, 7});
    ornex::fillAntialiasedPolygon(wider.view(), rectangle, {ink[0]}, 1.0, std::nullopt, outward);
    const auto cover = [&](int r, int c) { return inside(r, c) ? (r % 7 == 2 ? .5 : 1.) * (c % 9 == 3 ? .5 : 1.) : 0; };
    for (const auto *canvas : {&image, &rgb})
        expectPicture(*canvas, [&](int r, int c, int p) { return share(ink[p], 1024 * cover(r, c)); });
    expectPicture(clipped, [&](int r, int c, int) { return c <= 7 ? share(ink[0], 512 * cover(r, c)) : T(0); });
    EXPECT_TRUE(wider(2, 7) == ink[0] && wider(9, 7) == ink[0] && wider(1, 7) == T(0));
}

TEST(DrawTables, WorkedByHand)
{
    // Line weights at opacity 0.5, entry d for distance d/16: w = 0.5 (1 -
    // d/16); row 0 keeps round(1024 (1 - w)), the colour row adds round(w
    // colour), halves away from zero: d = 0, 4, 16 of 201, d = 0 of -81;
    // floating tables keep w colour (0.25 x 0.75 at d = 8).
    const uint8_t u8 = 201;
    const int8_t i8 = -81;
    const float f = 0.75f;
    const auto line = ornex::draw_detail::lineWeightTable(&u8, 1, 0.5);
    ASSERT_EQ(line.size(), 50u);
    EXPECT_EQ((std::vector<int>{line[0], line[25], line[4], line[29], line[16], line[41]}),
              (std::vector<int>{512, 101, 640, 75, 1024, 0}));
    EXPECT_EQ(ornex::draw_detail::lineWeightTable(&i8, 1, 0.5)[25], -41);
    EXPECT_EQ(ornex::draw_detail::lineWeightTable(&f, 1, 0.5)[33], 0.1875f);
    // 4096 sqrt(1 - (t/4096)^2): 3547.24 at 2048, 2527.74 at the last entry read.
    const auto &roots = ornex::draw_detail::circleSquareRootTable();
    EXPECT_EQ(roots.size(), 3224u);
    EXPECT_EQ((std::vector<int>{roots[0], roots[2048], roots[3223]}), (std::vector<int>{4096, 3547, 2528}));
    // The box profile 1/2 + (i - 24)/16 clamped, its Q10 form, a Q10 opacity.
    const auto box = ornex::polygonBoxProfile();
    EXPECT_EQ((std::vector<double>{box[16], box[24], box[28], box[32]}), (std::vector<double>{0, 0.5, 0.75, 1}));
    std::vector<double> weights = box;
    weights[20] = 0.2998; // 306.9952
    EXPECT_EQ(ornex::draw_detail::polygonWeightTable<uint8_t>(box)[25], 576); // 1024 x 0.5625
    EXPECT_EQ(ornex::draw_detail::polygonWeightTable<int16_t>(weights)[20], 307);
    EXPECT_EQ(ornex::draw_detail::opacityQ10(0.3), 307);                    // 307.2
}

// A tiny font: 'a' is 3 x 2, its top 2 rows above the baseline; 'b' 2 x 3 one
// column right and one row up; anything else an empty 2-column space.
const uint8_t kGlyphA[6] = {255, 90, 0, 30, 255, 200}, kGlyphB[6] = {0, 128, 255, 255, 64, 1};
ornex::Glyph tinyFont(char ch)
{
    return ch == 'a' ? ornex::Glyph{kGlyphA, 3, 2, 0, 2, 4}
                     : ch == 'b' ? ornex::Glyph{kGlyphB, 2, 3, 1, 1, 3} : ornex::Glyph{{}, 0, 0, 0, 0, 2};
}

template <class T>
class Text : public ::testing::Test {};
TYPED_TEST_SUITE(Text, RealTypes);

TYPED_TEST(Text, GlyphsLandInTheirBoxes)
{
    using T = TypeParam;
    // "ab\nb" from baseline row 4, column 1, lines 5 rows apart: 'a' on rows
    // 2-3, columns 1-3; 'b' (pen at column 5) on rows 3-5, columns 6-7; 'b'
    // (pen at 9, 1) on rows 8-10, columns 2-3. A glyph byte g blends g/255 of
    // the colour (all of it without anti-aliasing), times the opacity.
    int bytes[12][13] = {};
    for (int k = 0; k < 6; ++k) {
        bytes[2 + k / 3][1 + k % 3] = kGlyphA[k];
        bytes[3 + k / 2][6 + k % 2] = bytes[8 + k / 2][2 + k % 2] = kGlyphB[k];
    }
    const std::array<T, 3> colour{T(0.75), T(0.5), T(0.25)};
    for (const auto &[antiAliased, opacity] : {std::pair{true, 1.0}, {true, 0.4}, {false, 1.0}, {false, 0.4}}) {
        Canvas<T> image(12, 13, 2), rgb(12, 13, 3);
        const ornex::TextOptions options{opacity, antiAliased, 5};
        EXPECT_EQ(ornex::drawText(image.view(), "ab\nb", {4, 1}, tinyFont, {colour[0], colour[1]}, options),
                  (Point{9, 4}));
        EXPECT_EQ(ornex::drawText(rgb.rgb(), "ab\nb", {4, 1}, tinyFont, colour, options), (Point{9, 4}));
        for (const auto *canvas : {&image, &rgb}) {
            for (int32_t k = 0; k < 12 * 13 * canvas->planes; ++k) {
                const int g = bytes[k % 12][k / 12 % 13];
                EXPECT_NEAR(canvas->pixels[k], (g && !antiAliased ? 1 : g / 255.0) * opacity * colour[k / 156], 1e-6);
            }
        }
    }
    // Without a line height '\n' is a glyph like any other (here a space).
    Canvas<T> image(12, 13, 1);
    EXPECT_EQ(ornex::drawText(image.view(), "a\nb", {4, 1}, tinyFont, {T(1)}), (Point{4, 10}));
    EXPECT_EQ(image(4, 8), T(1));
}

TEST(FormatNumbers, PrintfConversionsOfEveryType)
{
    using std::vector;
    const std::string wide = ornex::formatNumbers(std::string(100, '-') + "%300.4f%%|%-200.1f", vector<double>{1.5, 2});
    EXPECT_TRUE(wide.size() == 100u + 300 + 2 + 200 && wide.substr(394, 8) == "1.5000%|");
    EXPECT_EQ(ornex::formatNumbers("pi %.3f e %g", vector<double>{3.14159, -2.5e-7}), "pi 3.142 e -2.5e-07");
    EXPECT_EQ(ornex::formatNumbers("%.9f", vector<float>{0.1f}), "0.100000001");
    EXPECT_EQ(ornex::formatNumbers("%d %x", vector<int8_t>{-128, 127}), "-128 7f");
    EXPECT_EQ(ornex::formatNumbers("100%% %u %c", vector<uint8_t>{255, 65}), "100% 255 A");
    EXPECT_EQ(ornex::formatNumbers("%hd!", vector<int16_t>{-32768}), "-32768!");
    EXPECT_EQ(ornex::formatNumbers("%o-%05u", vector<uint16_t>{65535, 1}), "177777-00001");
    EXPECT_EQ(ornex::formatNumbers("%d %d", vector<int32_t>{3, -4}), "3 -4");
    EXPECT_EQ(ornex::formatNumbers("%u %X", vector<uint32_t>{4294967295u, 255}), "4294967295 FF");
    EXPECT_EQ(ornex::formatNumbers("%d/%d", vector<bool>{true, false}), "1/0");
    // When the values run out the format is cut at the next conversion; %n
    // takes a value and writes nothing.
    EXPECT_EQ(ornex::formatNumbers("x=%d, y=%d", vector<int32_t>{3}), "x=3, y=");
    EXPECT_EQ(ornex::formatNumbers("ab%ncd %d", vector<int32_t>{9, 8}), "abcd 8");
    EXPECT_EQ(ornex::formatNumbers(std::string(5000, 'z'), vector<int32_t>{1}), std::string(5000, 'z'));
}

TEST(DrawArguments, CheckedWithTheirMessagesBeforeAnythingIsWritten)
{
    const Canvas<uint8_t> image(10, 12, 2, 7), tall(524289, 1, 1, 7), small(4, 12, 1, 7);
    const Canvas<float> rgb(10, 12, 3, 7);
    const Canvas<double> text(12, 13, 1, 7);
    const auto view = image.view();
    const std::vector<uint8_t> two{1, 2}, one{1};
    const std::vector<Point> triangle{{0, 0}, {0, 9}, {9, 4}};
    std::vector<double> badWeight = ornex::polygonBoxProfile();
    badWeight[30] = 1.5;
    const auto broken = [](char c) { return c == 'x' ? ornex::Glyph{{kGlyphA, 5}, 3, 2, 0, 2, 4} : tinyFont(c); };
    const auto aaPolygon = [&](std::vector<Point> corners, std::vector<double> weights = ornex::polygonBoxProfile()) {
        return [=] { ornex::fillAntialiasedPolygon(view, corners, two, 1, std::nullopt, weights); };
    };
    const auto format = [](const char *f) { return [=] { ornex::formatNumbers(f, std::vector<int32_t>{1}); }; };
    const char *clip = "clip: must lie inside the image", *opacity = "opacity: must lie in [0, 1]";
    const char *colours = "colour: needs one value per plane", *glyphs = "glyphs: bitmap shorter than width x height";
    const char *integers = "format: conversions must suit integer values (%d %i %o %u %x %X %c, no '*')";
    const ornex::RgbView<uint8_t> uneven{view.plane(0), small.view(), view.plane(1)};
    const ClipRect wholeRgb{0, 9, 0, 12};
    expectRejections({
        {[&] { ornex::drawLine(view, {0, 0}, {9, 11}, two, ClipRect{0, 10, 0, 11}); }, clip},
        {[&] { ornex::drawLine(rgb.rgb(), {0, 0}, {9, 11}, {1, 2, 3}, ClipRect{0, 9, 5, 4}); }, clip},
        {[&] { ornex::drawLine(view, {0, 0}, {9, 11}, one); }, "values: needs one value per plane"},
        {[&] { ornex::drawLine(view, {0, 0}, {32001, 11}, two); },
         "to: must lie within 32000 rows and columns of from"},
        {[&] { ornex::drawLine(ornex::ImageView<uint8_t>{}, {0, 0}, {1, 1}, two); }, "image: must be a non-empty image"},
        {[&] { ornex::drawLine(uneven, {0, 0}, {3, 3}, {1, 2, 3}); },
         "image: needs three one-plane images of the same size"},
        {[&] { ornex::drawAntialiasedLine(view, {0, 0}, {9, 9}, two, 1.5); }, opacity},
        {[&] { ornex::drawAntialiasedLine(rgb.rgb(), {0, 0}, {9, 9}, {1, 1, 1}, std::nan("")); }, opacity},
        {[&] { ornex::drawAntialiasedCircle(view, {5, 5}, 2, std::vector<uint8_t>{}); }, colours},
        {[&] { ornex::drawCircle(view, {5, 5}, 0, two); }, "radius: must be positive"},
        {[&] { ornex::drawCircle(rgb.rgb(), {5, 5}, 32001, {1, 2, 3}); }, "radius: must be at most 32000"},
        {[&] { ornex::drawCircle(view, {(1 << 28) + 1, 5}, 3, two); }, 
         "centre: coordinates must lie within -268435456 .. 268435456"},
        {[&] { ornex::fillPolygon(view, {{0, 0}, {9, 9}}, two); }, "vertices: needs at least 3 points"},
        {[&] { ornex::fillPolygon(view, {{0, 0}, {0, 9}, {-(1 << 28) - 1, 4}}, two); }, 
         "vertices: coordinates must lie within -268435456 .. 268435456"},
        {[&] { ornex::fillPolygon(rgb.rgb(), triangle, {1, 1, 1}, -0.01); }, opacity},
        {[&] { ornex::fillAntialiasedCircle(view, {5, 5}, 3, one); }, colours},
        {[&] { ornex::fillAntialiasedCircle(rgb.rgb(), {5, 5}, 3, {1, 1, 1}, 1.0, ClipRect{3, 2, 0, 11}); }, clip},
        {aaPolygon({{524288, 0}, {524288, 9}, {524290, 4}}), "vertices: rows must lie within -524288 .. 524287"},
        {aaPolygon({{0, 0}, {0, 32768}, {9, 4}}), "vertices: edges must span at most 32767 rows and columns"},
        {aaPolygon(triangle, {0, 1}), "weights: needs 49 entries"},
        {aaPolygon(triangle, badWeight), "weights: entries must lie in [0, 1]"},
        {[&] { ornex::fillAntialiasedPolygon(tall.view(), triangle, one); }, "image: must have at most 524288 rows"},
        {[&] { ornex::fillAntialiasedPolygon(rgb.rgb(), triangle, {1, 1, 1}, 1, wholeRgb); }, clip},
        // The second character's bitmap is too short: the first is not drawn either.
        {[&] { ornex::drawText(text.view(), "ax", {4, 1}, broken, {1.0}); }, glyphs},
        {[&] { ornex::drawText(rgb.rgb(), "ax", {4, 1}, broken, {1, 1, 1}); }, glyphs},
        {[&] { ornex::drawText(rgb.rgb(), "ab", {4, 1}, tinyFont, {1, 1, 1}, {1.5}); }, opacity},
        {[&] { ornex::drawText(text.view(), "a", {4, 1}, tinyFont, {1.0}, {1, true, -1}); },
         "options.lineHeight: must not be negative"},
        {[&] { ornex::drawText(text.view(), "ab", {4, 1}, tinyFont, {1.0, 2.0}); }, colours},
        {[&] { ornex::drawText(text.view(), "ab", {4, INT32_MAX - 5}, tinyFont, {1.0}); },
         "text: runs beyond 32-bit coordinates"},
        {format("%s"), integers},
        {format("%*d"), integers},
        {format("%ld"), integers},
        {[] { ornex::formatNumbers("%.*f", std::vector<double>{1}); },
         "format: conversions must suit floating-point values (%f %e %g %a, no '*')"},
        {[] { ornex::formatNumbers(std::string("a\0%d", 4), std::vector<int32_t>{1}); },
         "format: must not contain a zero byte"},
    });
    for (const auto *canvas : {&image, &tall, &small})
        expectPicture(*canvas, [](int, int, int) { return uint8_t(7); });
    expectPicture(rgb, [](int, int, int) { return 7.0f; });
    expectPicture(text, [](int, int, int) { return 7.0; });
}

} // namespace
