#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "font.hpp"
#include "ornex/draw.hpp"
#include "ornex/image.hpp"
#include "tool_error.hpp"

namespace {

using ornex::Glyph;
using ornex::Image;
using ornex::tool::Font;
using ornex::tool::ToolError;

// DejaVu Sans as drawn by its designers, in font units of a 2048-unit em:
// capital height 1493 (the top of 'H'), x-height 1120, descender of 'p'
// 426 below the baseline; advances 'H' 1540, 'x' 1212, 'e' 1260, space 651;
// 'H' starts 201 units right of the pen and is 1138 units wide.
// At 24 pixels to the em one unit is 24 / 2048 px, so the capital height is
// 17.5 px, the x-height 13.1 px, the descender 5.0 px and the advances
// 18.0, 14.2, 14.8 and 7.6 px. Hinting and anti-aliasing may move each by a
// pixel, which the checks below allow.
constexpr int size = 24;
constexpr double unitsToPixels = size / 2048.0;
constexpr double capHeight = 1493 * unitsToPixels;
constexpr double xHeight = 1120 * unitsToPixels;
constexpr double descender = 426 * unitsToPixels;
constexpr double capitalBearing = 201 * unitsToPixels;
constexpr double capitalWidth = 1138 * unitsToPixels;

bool near(double actual, double expected, double slack = 1.0)
{
    return actual >= expected - slack && actual <= expected + slack;
}

int inkCount(const Glyph &glyph)
{
    return static_cast<int>(std::count_if(glyph.bitmap.begin(), glyph.bitmap.end(), [](uint8_t b) { return b != 0; }));
}

uint8_t at(const Glyph &glyph, int row, int col) { return glyph.bitmap[static_cast<size_t>(row) * glyph.width + col]; }

// The rows and columns holding ink in an image; empty when there is none.
struct InkBox {
    int top = 1 << 30, bottom = -1, left = 1 << 30, right = -1;
    bool empty() const { return bottom < 0; }
};

InkBox inkBox(const Image<double> &image, int firstCol = 0, int endCol = -1)
{
    InkBox box;
    if (endCol < 0) {
        endCol = image.cols();
    }
    for (int c = firstCol; c < endCol; ++c) {
        for (int r = 0; r < image.rows(); ++r) {
            if (image(r, c) != 0.0) {
                box.top = std::min(box.top, r);
                box.bottom = std::max(box.bottom, r);
                box.left = std::min(box.left, c);
                box.right = std::max(box.right, c);
            }
        }
    }
    return box;
}

// A file in the test's temporary folder, removed again at the end.
struct TemporaryFile {
    std::filesystem::path path;
    explicit TemporaryFile(const std::string &name, const std::string &content)
        : path(std::filesystem::temp_directory_path() / (name + "." + std::to_string(::getpid())))
    {
        std::ofstream(path, std::ios::binary) << content;
    }
    ~TemporaryFile() { std::filesystem::remove(path); }
};

TEST(Font, DefaultPathIsDejaVuSans)
{
    EXPECT_EQ(Font::defaultPath(), "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
    const Font font(size);
    EXPECT_EQ(font.pixelHeight(), size);
}

TEST(Font, CapitalAndSmallLettersHaveTheFontsProportions)
{
    const Font font(size);
    const Glyph h = font('H'), x = font('x');

    EXPECT_TRUE(near(h.height, capHeight)) << h.height;
    EXPECT_TRUE(near(x.height, xHeight)) << x.height;
    EXPECT_LT(x.height, h.height);
    // Both stand on the baseline: every row lies above it.
    EXPECT_EQ(h.yOffset, h.height);
    EXPECT_EQ(x.yOffset, x.height);
    // Side bearings of a few pixels at most, and the ink inside the advance.
    EXPECT_TRUE(near(h.xOffset, capitalBearing)) << h.xOffset;
    EXPECT_TRUE(near(h.width, capitalWidth)) << h.width;
    EXPECT_LE(h.xOffset + h.width, h.advance + 1);
    EXPECT_TRUE(near(h.advance, 1540 * unitsToPixels)) << h.advance;
    EXPECT_TRUE(near(x.advance, 1212 * unitsToPixels)) << x.advance;
    EXPECT_GT(h.width, 8);
    EXPECT_GT(x.width, 8);
    EXPECT_EQ(h.bitmap.size(), size_t{h.width} * h.height);
    EXPECT_EQ(x.bitmap.size(), size_t{x.width} * x.height);
}

TEST(Font, CapitalHIsTwoUprightStemsAndABar)
{
    // Rows copied with the wrong stride would shear the stems sideways.
    const Font font(size);
    const Glyph h = font('H');
    ASSERT_GT(h.width, 8);
    ASSERT_GT(h.height, 8);
    // Each stem is more than two pixels wide: a solid core column with
    // anti-aliased edges that are the same all the way down.
    const int middle = h.width / 2;
    EXPECT_GT(at(h, 0, 0), 0);
    EXPECT_GT(at(h, 0, h.width - 1), 0);
    for (int r = 0; r < h.height; ++r) {
        EXPECT_EQ(at(h, r, 0), at(h, 0, 0)) << "left edge, row " << r;
        EXPECT_EQ(at(h, r, 1), 255) << "left stem, row " << r;
        EXPECT_EQ(at(h, r, h.width - 2), 255) << "right stem, row " << r;
        EXPECT_EQ(at(h, r, h.width - 1), at(h, 0, h.width - 1)) << "right edge, row " << r;
    }
    EXPECT_EQ(at(h, 0, middle), 0);
    EXPECT_EQ(at(h, h.height - 1, middle), 0);
    int barRows = 0;
    for (int r = 0; r < h.height; ++r) {
        barRows += at(h, r, middle) == 255 ? 1 : 0;
    }
    EXPECT_GE(barRows, 1);
    EXPECT_LE(barRows, 4);
}

TEST(Font, DescenderReachesBelowTheBaseline)
{
    const Font font(size);
    const Glyph p = font('p');
    EXPECT_TRUE(near(p.height - p.yOffset, descender)) << p.height << " rows, " << p.yOffset << " above the baseline";
    EXPECT_TRUE(near(p.yOffset, xHeight)) << p.yOffset;
}

TEST(Font, SpaceHasNoInkButMovesThePen)
{
    const Font font(size);
    const Glyph space = font(' ');
    EXPECT_EQ(inkCount(space), 0);
    EXPECT_GE(space.bitmap.size(), size_t{space.width} * space.height);
    EXPECT_TRUE(near(space.advance, 651 * unitsToPixels)) << space.advance;
}

TEST(Font, GlyphsAreRenderedOnceAndStayPut)
{
    const Font font(size);
    const Glyph first = font('H');
    const std::vector<uint8_t> copy(first.bitmap.begin(), first.bitmap.end());
    EXPECT_EQ(font('H').bitmap.data(), first.bitmap.data());
    // Every other character rendered afterwards leaves 'H' where it was.
    for (int c = 0; c < 256; ++c) {
        font(static_cast<char>(c));
    }
    const Glyph again = font('H');
    EXPECT_EQ(again.bitmap.data(), first.bitmap.data());
    EXPECT_EQ(again.bitmap.size(), first.bitmap.size());
    EXPECT_TRUE(std::equal(copy.begin(), copy.end(), again.bitmap.begin()));
}

TEST(Font, MovedFontKeepsItsGlyphs)
{
    Font font(size);
    const Glyph before = font('H');
    Font moved(std::move(font));
    EXPECT_EQ(moved('H').bitmap.data(), before.bitmap.data());
    EXPECT_EQ(moved.pixelHeight(), size);
    Font assigned(12);
    assigned = std::move(moved);
    EXPECT_EQ(assigned('H').bitmap.data(), before.bitmap.data());
    EXPECT_EQ(assigned.pixelHeight(), size);
}

TEST(Font, TextWidthIsTheSumOfAdvances)
{
    const Font font(size);
    EXPECT_EQ(font.textWidth(""), 0);
    EXPECT_EQ(font.textWidth("H"), font('H').advance);
    const std::string text = "Hex 42, p\xe9";
    int32_t sum = 0;
    for (const char c : text) {
        sum += font(c).advance;
    }
    EXPECT_EQ(font.textWidth(text), sum);
    // Roughly the design advances: H, e, x and a space.
    const int32_t width = font.textWidth("Hex ");
    EXPECT_TRUE(near(width, (1540 + 1260 + 1212 + 651) * unitsToPixels, 3.0)) << width;
}

TEST(Font, LargerSizeGivesLargerGlyphs)
{
    const Font small(size), large(2 * size);
    const Glyph h = small('H'), big = large('H');
    EXPECT_TRUE(near(big.height, 2 * capHeight)) << big.height;
    EXPECT_GT(big.height, h.height);
    EXPECT_EQ(large.pixelHeight(), 2 * size);
}

TEST(Font, LatinOneBytesAreTheirOwnCharacters)
{
    const Font font(size);
    // e with acute accent: the letter e with a mark above it.
    const Glyph plain = font('e'), accented = font('\xe9');
    EXPECT_EQ(accented.advance, plain.advance);
    EXPECT_EQ(accented.height - accented.yOffset, plain.height - plain.yOffset);
    EXPECT_GT(accented.yOffset, plain.yOffset + 2);
    EXPECT_GT(inkCount(accented), inkCount(plain));
    // Under the accent the very same e.
    ASSERT_EQ(accented.width, plain.width);
    EXPECT_EQ(accented.xOffset, plain.xOffset);
    const int below = accented.yOffset - plain.yOffset;
    ASSERT_GE(accented.height, plain.height + below);
    for (int r = 0; r < plain.height; ++r) {
        for (int c = 0; c < plain.width; ++c) {
            EXPECT_EQ(at(accented, below + r, c), at(plain, r, c)) << "row " << r << ", column " << c;
        }
    }
    // An acute accent leans right: its top row's ink lies right of its
    // bottom row's.
    const auto firstInk = [&](int row) {
        int c = 0;
        while (c < accented.width && at(accented, row, c) == 0) {
            ++c;
        }
        return c;
    };
    int accentBottom = 0;
    while (accentBottom + 1 < below && firstInk(accentBottom + 1) < accented.width) {
        ++accentBottom;
    }
    EXPECT_GT(accentBottom, 0);
    EXPECT_GT(firstInk(0), firstInk(accentBottom));
}

TEST(Font, CharactersTheFontLacksGetTheMissingGlyph)
{
    // DejaVu Sans has no glyphs for control characters; its missing-glyph
    // is a box with ink, the same for both, in separate cache entries.
    const Font font(size);
    const Glyph a = font('\x01'), b = font('\x02');
    EXPECT_GT(inkCount(a), 0);
    EXPECT_GT(a.advance, 0);
    EXPECT_NE(a.bitmap.data(), b.bitmap.data());
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    EXPECT_EQ(a.advance, b.advance);
    EXPECT_TRUE(std::equal(a.bitmap.begin(), a.bitmap.end(), b.bitmap.begin(), b.bitmap.end()));
}

TEST(Font, DrawTextPutsACapitalOnTheBaseline)
{
    const Font font(size);
    Image<double> image(50, 60);
    const int baseline = 35, pen = 7;
    const ornex::Point end = ornex::drawText(image.view(), "H", {baseline, pen}, font, {1.0});
    EXPECT_EQ(end, (ornex::Point{baseline, pen + font('H').advance}));

    const InkBox box = inkBox(image);
    ASSERT_FALSE(box.empty());
    // From the cap height above the baseline down to the row just above it.
    EXPECT_TRUE(near(box.top, baseline - capHeight)) << box.top;
    EXPECT_EQ(box.bottom, baseline - 1);
    // Starting a bearing's width right of the pen, inside the advance.
    EXPECT_TRUE(near(box.left - pen, capitalBearing)) << box.left;
    EXPECT_TRUE(near(box.right + 1 - box.left, capitalWidth)) << box.right;
    EXPECT_LT(box.right, pen + font('H').advance);
    // The stems' solid cores run the full height: the glyph lands upright
    // and unclipped.
    for (int r = box.top; r <= box.bottom; ++r) {
        EXPECT_GT(image(r, box.left), 0.0) << r;
        EXPECT_EQ(image(r, box.left + 1), 1.0) << r;
        EXPECT_EQ(image(r, box.right - 1), 1.0) << r;
        EXPECT_GT(image(r, box.right), 0.0) << r;
    }
}

TEST(Font, DrawTextSetsAWordLetterByLetter)
{
    const Font font(size);
    Image<double> image(60, 120);
    const int baseline = 40, pen = 10;
    const std::string word = "Hex";
    const ornex::Point end = ornex::drawText(image.view(), word, {baseline, pen}, font, {1.0});
    EXPECT_EQ(end, (ornex::Point{baseline, pen + font.textWidth(word)}));

    // Nothing above the capitals, below the baseline (round letters may dip
    // under it by a fraction of a pixel), left of the pen or right of the end.
    const InkBox all = inkBox(image);
    ASSERT_FALSE(all.empty());
    EXPECT_TRUE(near(all.top, baseline - capHeight)) << all.top;
    EXPECT_GE(all.bottom, baseline - 1);
    EXPECT_LE(all.bottom, baseline);
    EXPECT_GE(all.left, pen);
    EXPECT_LE(all.right, pen + font.textWidth(word));

    // Each letter in its own advance: H of cap height, e and x of x-height.
    int col = pen;
    const double heights[] = {capHeight, xHeight, xHeight};
    for (size_t i = 0; i < word.size(); ++i) {
        const Glyph glyph = font(word[i]);
        const InkBox letter = inkBox(image, col + glyph.xOffset, col + glyph.xOffset + glyph.width);
        ASSERT_FALSE(letter.empty()) << word[i];
        EXPECT_TRUE(near(baseline - letter.top, heights[i])) << word[i] << " top " << letter.top;
        // Where no neighbour overlaps, the image holds the glyph's coverage.
        for (int r = 0; r < glyph.height; ++r) {
            const int c = glyph.width / 2;
            EXPECT_DOUBLE_EQ(image(baseline - glyph.yOffset + r, col + glyph.xOffset + c), at(glyph, r, c) / 255.0)
                << word[i] << " row " << r;
        }
        col += glyph.advance;
    }
}

TEST(Font, DrawTextHangsADescenderBelowTheBaseline)
{
    const Font font(size);
    Image<double> image(50, 40);
    const int baseline = 30;
    ornex::drawText(image.view(), "p", {baseline, 5}, font, {1.0});
    const InkBox box = inkBox(image);
    ASSERT_FALSE(box.empty());
    EXPECT_TRUE(near(box.bottom + 1 - baseline, descender)) << box.bottom;
    EXPECT_TRUE(near(baseline - box.top, xHeight)) << box.top;

    // The letter the right way up and round: below the baseline only the
    // stem on the left, above it the bowl reaching across to the right.
    const int middle = (box.left + box.right + 1) / 2;
    const InkBox underLeft = inkBox(image, box.left, middle), underRight = inkBox(image, middle, box.right + 1);
    EXPECT_GE(underLeft.bottom, baseline + 2);
    EXPECT_LT(underRight.bottom, baseline + 1);
    EXPECT_TRUE(near(baseline - underRight.top, xHeight)) << underRight.top;
    for (int r = baseline + 1; r <= box.bottom; ++r) {
        EXPECT_EQ(image(r, box.left + 1), 1.0) << r;
    }
}

// The message names the file and says what went wrong.
template <class Make>
std::string failure(Make make)
{
    try {
        make();
    } catch (const ToolError &error) {
        return error.what();
    }
    ADD_FAILURE() << "no ToolError";
    return {};
}

TEST(Font, MissingFileIsReported)
{
    const std::string path = "/nonexistent/folder/NoSuchFont.ttf";
    const std::string message = failure([&] { Font font(size, path); });
    EXPECT_EQ(message, "cannot load font '" + path + "': no such file");
}

TEST(Font, FileThatIsNoFontIsReported)
{
    const TemporaryFile file("ornex_font_test_not_a_font.ttf", "these are words, not outlines\n");
    const std::string message = failure([&] { Font font(size, file.path.string()); });
    EXPECT_EQ(message.rfind("cannot load font '" + file.path.string() + "': ", 0), 0u) << message;
    EXPECT_NE(message.find("not a font"), std::string::npos) << message;
}

TEST(Font, FolderIsReported)
{
    const std::string path = std::filesystem::temp_directory_path().string();
    const std::string message = failure([&] { Font font(size, path); });
    EXPECT_EQ(message, "cannot load font '" + path + "': is a directory");
}

TEST(Font, PixelHeightMustBePositive)
{
    for (const int height : {0, -3}) {
        const std::string message = failure([&] { Font font(height, Font::defaultPath()); });
        EXPECT_EQ(message.rfind("cannot load font '" + Font::defaultPath() + "': ", 0), 0u) << message;
        EXPECT_NE(message.find(std::to_string(height)), std::string::npos) << message;
    }
}

} // namespace
