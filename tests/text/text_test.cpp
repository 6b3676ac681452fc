#include <cstring>

#include "../geometry/precisions.hpp"

PRECISION_SUITE(DrawText);

// Every blender, through the selection tables: placement, transposition, clipping, coverage, opacity.
TYPED_TEST(DrawText, EveryBlenderMatchesThePlainBlendAndClips)
{
    using T = TypeParam;
    std::mt19937 random(31);
    auto same = [](T a, T b) { return a == b || (a != a && b != b); };
    for (int trial = 0; trial < 3000; ++trial) {
        const bool aa = trial % 2, rgb = trial / 2 % 2, transposed = random() % 2;
        const int rows = 1 + random() % 6, cols = 1 + random() % 6, gw = random() % 5, gh = random() % 5;
        const int x = int(random() % 10) - 4, y = int(random() % 10) - 2;
        const int xo = int(random() % 5) - 2, yo = int(random() % 5) - 2;
        std::vector<uint8_t> glyph(gw * gh);
        for (auto &g : glyph) g = random() % 3 ? uint8_t(random() % 3 ? random() % 256 : 255) : 0;
        const T opacity = std::vector<T>{0, T(0.3), T(0.75), 1, 2}[random() % 5], colour[3] = {T(0.25), T(-3), T(7.5)};
        const int size = rows * cols + 2; // three planes, one sentinel on each side of each
        std::vector<T> planes(3 * size);
        for (T &v : planes) v = random() % 16 ? uniform<T>(random, -2, 2) : T(INFINITY);
        auto expected = planes;
        for (int i = 0; i < gw * gh; ++i) {
            const int r = i / gw, c = i % gw, row = transposed ? x + xo + c : y - yo + r;
            const int col = transposed ? y - yo + r : x + xo + c;
            const T a = T(glyph[i] / 255.0);
            for (int p = 0; row >= 0 && row < rows && col >= 0 && col < cols && a != 0 && p < (rgb ? 3 : 1); ++p) {
                T &pixel = expected[p * size + 1 + row + col * rows];
                const T value = !aa || a == 1 ? colour[p] : a * (colour[p] - pixel) + pixel;
                pixel = opacity < 1 ? (1 - opacity) * pixel + value * opacity : value;
            }
        }
        const int code = std::is_same_v<T, double> ? 0 : 1;
        T *o[3] = {&planes[1], &planes[size + 1], &planes[2 * size + 1]};
        if (rgb)
            ORNEX_GetDrawTextFcn_RGB(code, aa)(glyph.data(), x, y, xo, yo, gw, gh, cols, rows, o[0], o[1], o[2],
                                               colour, &opacity, transposed);
        else
            ORNEX_GetDrawTextFcn_I(code, aa)(glyph.data(), x, y, xo, yo, gw, gh, cols, rows, o[0], colour, &opacity,
                                             transposed);
        ASSERT_TRUE(std::equal(planes.begin(), planes.end(), expected.begin(), same)) << "trial " << trial;
    }
    // The tables hold the floating blenders only.
    for (int code = -1; code <= 9; ++code)
        for (uint8_t aa : {0, 1, 2}) {
            EXPECT_EQ(ORNEX_GetDrawTextFcn_I(code, aa) != nullptr, (code == 0 || code == 1) && aa < 2) << code;
            EXPECT_EQ(ORNEX_GetDrawTextFcn_RGB(code, aa) != nullptr, (code == 0 || code == 1) && aa < 2) << code;
        }
}

// Formats into '#'s with room `size`; the format comes back unchanged, nothing past the room touched.
std::string format(const char *pattern, void *values, int valueLimit, int typeCode, int size = 48, bool text = false)
{
    std::string formatCopy = pattern, buffer(64, '#');
    ORNEX_snprintf(buffer.data(), formatCopy.data(), values, valueLimit, typeCode, text, size);
    EXPECT_EQ(formatCopy, pattern);
    EXPECT_EQ(buffer.substr(size), std::string(64 - size, '#'));
    return std::string(buffer.data(), strnlen(buffer.data(), size));
}

TEST(FormatValues, PiecesValuesAndRoom)
{
    static int32_t v[] = {3, 4, 100, 7};
    static char text[] = "hello!!";
    static float single = 1.5f;
    // A null or a code above 8: nothing written. Every type code is widened through the C++ layer's tests.
    const struct { const char *pattern; void *in; int limit, code; const char *want; bool text = false; } cases[] = {
        {"x=%d, y=%d", v, 1, 6, "x=3, y=4"}, {"x=%d, y=%d", v, 0, 6, "x=3, y="}, {"plain", v, 0, 6, "plain"},
        {"100%%", v, 0, 6, "100%"}, {"%d%% of %d", v + 2, 1, 6, "100% of 7"}, {"x=%d%%", v + 3, 0, 6, "x=7"},
        {"100%%", v, -1, 6, "100"}, {"%d%nab%d", v, 5, 6, "3ab100"}, {"x%ny", v, 5, 6, "xy"},
        {"<%s>", text, 6, 3, "<hello>", true}, {"<%s>", v, 1, 6, "<%s>", true}, {"%d", v, 0, 9, nullptr},
        {"%d", nullptr, 0, 6, nullptr}, {"%.2f", &single, 0, 1, "1.50"},
    };
    for (const auto &c : cases) {
        const std::string expected = c.want ? c.want : std::string(48, '#');
        EXPECT_EQ(format(c.pattern, c.in, c.limit, c.code, 48, c.text), expected) << c.pattern;
    }
    EXPECT_EQ(text[5], '\0') << "the characters end at index valueLimit - 1";
    EXPECT_EQ(v[1], 4) << "a count lands nowhere";
    char pattern[] = "%d", keep[8] = "keep";
    ORNEX_snprintf(keep, nullptr, v, 0, 6, 0, 8);
    ORNEX_snprintf(nullptr, pattern, v, 0, 6, 0, 8);
    EXPECT_STREQ(keep, "keep");
    ORNEX_snprintf_wrapper(keep, pattern, v, 0, 6, 0, 8);
    EXPECT_STREQ(keep, "3");
    EXPECT_EQ(ORNEX_strlen("four") + ORNEX_strlen(""), 4);
    // A piece that does not fit, or fills the room exactly, ends the output in the room's last byte.
    const std::string full = "a=12, b=345, c=6789";
    for (int size = 1; size <= int(full.size()) + 3; ++size)
        EXPECT_EQ(format("a=%d, b=%d, c=%d", std::array<int32_t, 3>{12, 345, 6789}.data(), 2, 6, size),
                  full.substr(0, std::min<size_t>(full.size(), size - 1))) << size;
}

TEST(ValueConversion, EveryTypeCodeTruncatesExtendsOrClamps)
{
    std::mt19937 random(7);
    int code = 0;
    auto check = [&](auto type) {
        using S = decltype(type);
        S source[8];
        for (S &s : source)
            s = std::is_floating_point_v<S> ? S(uniform(random, -6e9, 6e9) / (random() % 2 ? 1 : 1e6)) : S(random());
        uint32_t u[8] = {42, 42, 42, 42, 42, 42, 42, 42};
        int32_t i[8] = {42, 42, 42, 42, 42, 42, 42, 42};
        ORNEX_DrawText_copyDT1ToUint32(code, 6, source, u);
        ORNEX_DrawText_copyDT1ToInt32(code, 5, source, i, 2);
        for (int k = 0; k < 8; ++k) {
            const int64_t wide = int64_t(source[k]), shifted = k < 6 ? int64_t(source[k + 2]) : 0;
            EXPECT_EQ(u[k], k < 6 && code < 8 ? uint32_t(wide) : 42u) << code;
            const bool clamped = code < 2 && (shifted < INT32_MIN || shifted > INT32_MAX);
            EXPECT_EQ(i[k], k >= 5 || code > 8 ? 42 : clamped ? INT32_MIN : int32_t(shifted)) << code;
        }
        ++code;
    };
    check(double()), check(float()), check(int8_t()), check(uint8_t()), check(int16_t()), check(uint16_t()),
        check(int32_t()), check(uint32_t()), check(uint8_t());
    check(uint32_t()); // code 9: nothing converted

    // Clamping to [0, 1], NaN kept; other type codes do nothing.
    const double values[] = {-0.5, 0.3, 7, NAN, 1, 0};
    const float rgb[] = {2.0f, -1.0f, 0.5f};
    double out[7] = {9, 9, 9, 9, 9, 9, 9}, kept[3] = {9, 9, 9};
    float rgbOut[4] = {9, 9, 9, 9};
    ORNEX_DrawText_SatFltptIntensityVals(0, values, out, 6), ORNEX_DrawText_SatFltptRGBVals(1, rgb, rgbOut);
    ORNEX_DrawText_SatFltptRGBVals(2, values, kept), ORNEX_DrawText_SatFltptIntensityVals(-1, values, kept, 2);
    EXPECT_TRUE(out[0] == 0 && out[1] == 0.3 && out[2] == 1 && std::isnan(out[3]) && out[4] == 1 && out[5] == 0);
    EXPECT_TRUE(out[6] == 9 && rgbOut[0] == 1 && rgbOut[1] == 0 && rgbOut[2] == 0.5f && rgbOut[3] == 9);
    EXPECT_TRUE(kept[0] == 9 && kept[1] == 9 && kept[2] == 9);
}
