#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

// An image of rows x cols inside a larger buffer whose border must survive.
template <class T>
struct Framed {
    int32_t rows, cols;
    std::vector<T> buffer;
    static constexpr int32_t guard = 16;

    Framed(int32_t r, int32_t c, T value) : rows(r), cols(c), buffer(size_t(r) * c + 2 * guard, value)
    {
        for (int32_t k = 0; k < guard; ++k) {
            buffer[k] = T(-99);
            buffer[buffer.size() - 1 - k] = T(-99);
        }
    }
    T *image() { return buffer.data() + guard; }
    T at(int32_t r, int32_t c) const { return buffer[guard + r + size_t(c) * rows]; }
    bool guardsIntact() const
    {
        for (int32_t k = 0; k < guard; ++k) {
            if (buffer[k] != T(-99) || buffer[buffer.size() - 1 - k] != T(-99)) {
                return false;
            }
        }
        return true;
    }
};

// A 3-wide, 2-high glyph, row-major.
const uint8_t glyph3x2[6] = {255, 0, 255, 255, 255, 0};

TEST(DrawText, GlyphLandsRightOfXAndAboveYByItsOffsets)
{
    Framed<double> canvas(8, 10, 1.0);
    const double colour = 7, opacity = 1;
    // Top-left at column 4 + 1, row 5 - 2.
    ORNEX_DrawText_I_double(glyph3x2, 4, 5, 1, 2, 3, 2, 10, 8, canvas.image(), &colour, &opacity, 0);
    for (int32_t c = 0; c < 10; ++c) {
        for (int32_t r = 0; r < 8; ++r) {
            const bool ink = (r == 3 && (c == 5 || c == 7)) || (r == 4 && (c == 5 || c == 6));
            EXPECT_EQ(canvas.at(r, c), ink ? 7.0 : 1.0) << r << "," << c;
        }
    }
}

TEST(DrawText, TransposedGlyphSwapsRolesAndConsumesSkippedBytes)
{
    Framed<double> canvas(6, 6, 0.0);
    const double colour = 255, opacity = 1;
    // Every byte distinct, so that each pixel shows which byte it got.
    const uint8_t glyph[6] = {10, 20, 30, 40, 50, 60};
    // Glyph row r, column c lands on column 3 - 1 + r, row -2 + 1 + c: glyph
    // column 0 falls above the image; its bytes are skipped, not shifted on.
    ORNEX_DrawText_I_double_AA(glyph, -2, 3, 1, 1, 3, 2, 6, 6, canvas.image(), &colour, &opacity, 1);
    EXPECT_NEAR(canvas.at(0, 2), 20, 1e-9);
    EXPECT_NEAR(canvas.at(1, 2), 30, 1e-9);
    EXPECT_NEAR(canvas.at(0, 3), 50, 1e-9);
    EXPECT_NEAR(canvas.at(1, 3), 60, 1e-9);
    int32_t inked = 0;
    for (int32_t c = 0; c < 6; ++c) {
        for (int32_t r = 0; r < 6; ++r) {
            inked += canvas.at(r, c) != 0;
        }
    }
    EXPECT_EQ(inked, 4);
}

TEST(DrawText, ClippedAtAllFourEdges)
{
    const uint8_t full[16] = {255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
    const double colour = 3, opacity = 1;
    for (const auto &[x, y] : std::vector<std::pair<int32_t, int32_t>>{{-2, 1}, {3, 1}, {1, -2}, {1, 5}}) {
        Framed<double> canvas(5, 5, 0.0);
        // A 4x4 block at column x, row y (no offsets) hanging over one edge.
        ORNEX_DrawText_I_double(full, x, y, 0, 0, 4, 4, 5, 5, canvas.image(), &colour, &opacity, 0);
        EXPECT_TRUE(canvas.guardsIntact());
        for (int32_t c = 0; c < 5; ++c) {
            for (int32_t r = 0; r < 5; ++r) {
                const bool inside = c >= x && c < x + 4 && r >= y && r < y + 4;
                EXPECT_EQ(canvas.at(r, c), inside ? 3.0 : 0.0) << x << "," << y << " at " << r << "," << c;
            }
        }
    }
}

TEST(DrawText, CoverageAndOpacityRules)
{
    const uint8_t bytes[4] = {0, 255, 51, 255};
    const double colour[3] = {10, 20, 30};
    std::vector<double> red(4, 5.0), green(4, 5.0), blue(4, 5.0);
    // Opaque: byte 0 leaves the pixel, 255 writes the colour exactly, 51
    // (a = 0.2) moves a fifth of the way from old to colour.
    const double one = 1;
    ORNEX_DrawText_RGB_double_AA(bytes, 0, 0, 0, 0, 1, 4, 1, 4, red.data(), green.data(), blue.data(), colour, &one, 0);
    EXPECT_EQ(red[0], 5.0);
    EXPECT_EQ(red[1], 10.0);
    EXPECT_NEAR(red[2], 6.0, 1e-12);
    EXPECT_NEAR(green[2], 8.0, 1e-12);
    EXPECT_NEAR(blue[2], 10.0, 1e-12);

    // Plain blenders take the colour for any nonzero byte; opacity 0.5 goes
    // half way, above 1 acts as 1, 0 keeps the old value.
    std::vector<double> plain(4, 4.0);
    const double half = 0.5, more = 3, none = 0;
    ORNEX_DrawText_I_double(bytes, 0, 0, 0, 0, 1, 2, 1, 4, plain.data(), colour, &half, 0);
    EXPECT_EQ(plain[0], 4.0);
    EXPECT_EQ(plain[1], 7.0);
    ORNEX_DrawText_I_double(bytes + 2, 0, 2, 0, 0, 1, 2, 1, 4, plain.data(), colour, &more, 0);
    EXPECT_EQ(plain[2], 10.0);
    EXPECT_EQ(plain[3], 10.0);
    ORNEX_DrawText_I_double(bytes, 0, 0, 0, 0, 1, 4, 1, 4, plain.data(), colour + 2, &none, 0);
    EXPECT_EQ(plain, (std::vector<double>{4, 7, 10, 10}));
}

TEST(DrawText, SingleMembersRoundEveryStep)
{
    // a = 85/255 rounded to single, then each step of
    // (1 - o) old + (a (colour - old) + old) o in single precision.
    const uint8_t byte = 85;
    const float colour = 1.0f, opacity = 0.7f, old = 0.1f;
    const float a = float(85 / 255.0);
    const float value = a * (colour - old) + old;
    const float expected = (1.0f - opacity) * old + value * opacity;
    float pixel = old;
    ORNEX_DrawText_I_single_AA(&byte, 0, 0, 0, 0, 1, 1, 1, 1, &pixel, &colour, &opacity, 0);
    EXPECT_EQ(pixel, expected);
    float red = old, green = old, blue = old;
    const float colours[3] = {1.0f, 1.0f, 1.0f};
    ORNEX_DrawText_RGB_single(&byte, 0, 0, 0, 0, 1, 1, 1, 1, &red, &green, &blue, colours, &opacity, 0);
    EXPECT_EQ(red, (1.0f - opacity) * old + 1.0f * opacity);
}

TEST(DrawText, SelectionTablesHoldOnlyTheFloatingBlenders)
{
    EXPECT_EQ(ORNEX_GetDrawTextFcn_I(0, 0), &ORNEX_DrawText_I_double);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_I(1, 0), &ORNEX_DrawText_I_single);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_I(0, 1), &ORNEX_DrawText_I_double_AA);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_I(1, 1), &ORNEX_DrawText_I_single_AA);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(0, 0), &ORNEX_DrawText_RGB_double);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(1, 0), &ORNEX_DrawText_RGB_single);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(0, 1), &ORNEX_DrawText_RGB_double_AA);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(1, 1), &ORNEX_DrawText_RGB_single_AA);
    for (int32_t code = 2; code <= 8; ++code) {
        for (uint8_t aa : {0, 1}) {
            EXPECT_EQ(ORNEX_GetDrawTextFcn_I(code, aa), nullptr) << code;
            EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(code, aa), nullptr) << code;
        }
    }
    EXPECT_EQ(ORNEX_GetDrawTextFcn_I(9, 0), nullptr);
    EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(-1, 0), nullptr);
}

} // namespace
