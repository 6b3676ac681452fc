#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "ornex_rt.h"

namespace {

// Formats into a buffer of '#' with room `size`; the format must come back
// unchanged and nothing past the room may be touched.
std::string format(const char *pattern, void *values, int valueLimit, int typeCode, int size = 48, bool text = false)
{
    std::string formatCopy = pattern;
    char buffer[64];
    std::memset(buffer, '#', sizeof buffer);
    ORNEX_snprintf(buffer, formatCopy.data(), values, valueLimit, typeCode, text, size);
    EXPECT_EQ(formatCopy, pattern);
    for (int k = size; k < 64; ++k) EXPECT_EQ(buffer[k], '#') << k;
    return std::string(buffer, strnlen(buffer, size));
}

TEST(FormatValues, PiecesValuesAndLimits)
{
    int32_t v[] = {3, 4, 100, 7};
    char text[] = "hello!!";
    const struct { const char *pattern; void *values; int limit, code; bool text; const char *expected; } cases[] = {
        {"x=%d, y=%d", v, 1, 6, false, "x=3, y=4"}, {"x=%d, y=%d", v, 0, 6, false, "x=3, y="},
        {"no conversions", v, 0, 6, false, "no conversions"}, {"100%%", v, 0, 6, false, "100%"},
        {"%d%% of %d", v + 2, 1, 6, false, "100% of 7"}, {"x=%d%%", v + 3, 0, 6, false, "x=7"},
        {"100%%", v, -1, 6, false, "100"}, {"%d%nab%d", v, 5, 6, false, "3ab100"}, {"x%ny", v, 5, 6, false, "xy"},
        {"<%s>", text, 6, 3, true, "<hello>"}, {"<%s>", v, 1, 6, true, "<%s>"}, {"%d", v, 0, 9, false, nullptr},
        {"%d", nullptr, 0, 6, false, nullptr}, // nothing written
    };
    for (const auto &c : cases)
        EXPECT_EQ(format(c.pattern, c.values, c.limit, c.code, 48, c.text), c.expected ? c.expected : std::string(48, '#'))
            << c.pattern;
    EXPECT_EQ(text[5], '\0') << "the characters end at index valueLimit - 1";
    EXPECT_EQ(std::vector<int32_t>(v, v + 4), (std::vector<int32_t>{3, 4, 100, 7})) << "%n writes nowhere visible";
    char pattern[] = "%d", keep[8] = "keep";
    ORNEX_snprintf(keep, nullptr, v, 0, 6, 0, 8);
    ORNEX_snprintf(nullptr, pattern, v, 0, 6, 0, 8);
    EXPECT_STREQ(keep, "keep");
    ORNEX_snprintf_wrapper(keep, pattern, v, 0, 6, 0, 8);
    EXPECT_STREQ(keep, "3");
    EXPECT_EQ(ORNEX_strlen("four"), 4);
    EXPECT_EQ(ORNEX_strlen(""), 0);
}

TEST(FormatValues, EachTypeWidensAndEveryRoomEndsTheOutputInsideIt)
{
    double d = -2.25;
    float f = 1.5f;
    int8_t i8 = -5;
    uint8_t u8 = 250, logical = 1;
    int16_t i16 = -300;
    uint16_t u16 = 65535;
    int32_t i32 = -2000000000;
    uint32_t u32 = 4000000000u;
    void *values[] = {&d, &f, &i8, &u8, &i16, &u16, &i32, &u32, &logical};
    const char *expected[] = {"-2.25", "1.50", "-5", "250", "-300", "65535", "-2000000000", "4000000000", "1"};
    for (int code = 0; code < 9; ++code)
        EXPECT_EQ(format(code < 2 ? "%.2f" : code == 7 ? "%u" : "%d", values[code], 0, code), expected[code]) << code;
    int32_t three[] = {12, 345, 6789};
    const std::string full = "a=12, b=345, c=6789";
    for (int size = 1; size <= int(full.size()) + 3; ++size)
        EXPECT_EQ(format("a=%d, b=%d, c=%d", three, 2, 6, size), full.substr(0, std::min<size_t>(full.size(), size - 1)))
            << size;
}

TEST(ValueConversion, EveryTypeCodeTruncatesOrExtends)
{
    std::mt19937 random(7);
    for (int code = 0; code <= 9; ++code) {
        std::vector<double> real(8);
        std::vector<int64_t> integer(8);
        alignas(8) unsigned char source[64];
        for (int i = 0; i < 8; ++i) {
            real[i] = std::uniform_real_distribution<double>(-3e9, 3e9)(random) / (i % 2 ? 1e6 : 1);
            integer[i] = int64_t(random()) - (i % 2 ? 0 : int64_t(random()));
            switch (code) {
            case 0: reinterpret_cast<double *>(source)[i] = real[i]; break;
            case 1: reinterpret_cast<float *>(source)[i] = float(real[i] / 2); break;
            case 2: case 3: case 8: source[i] = uint8_t(integer[i]); break;
            case 4: case 5: reinterpret_cast<uint16_t *>(source)[i] = uint16_t(integer[i]); break;
            default: reinterpret_cast<uint32_t *>(source)[i] = uint32_t(integer[i]);
            }
        }
        auto expectedAt = [&](int i) -> int64_t {
            const unsigned char *s = source;
            switch (code) {
            case 0: return int64_t(real[i]);
            case 1: return int64_t(reinterpret_cast<const float *>(s)[i]);
            case 2: return int8_t(s[i]);
            case 3: case 8: return s[i];
            case 4: return reinterpret_cast<const int16_t *>(s)[i];
            case 5: return reinterpret_cast<const uint16_t *>(s)[i];
            case 6: return reinterpret_cast<const int32_t *>(s)[i];
            default: return reinterpret_cast<const uint32_t *>(s)[i];
            }
        };
        std::vector<uint32_t> unsignedOut(8, 42u);
        std::vector<int32_t> signedOut(8, 42);
        ORNEX_DrawText_copyDT1ToUint32(code, 6, source, unsignedOut.data());
        ORNEX_DrawText_copyDT1ToInt32(code, 5, source, signedOut.data(), 2);
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(unsignedOut[i], i < 6 && code < 8 ? uint32_t(expectedAt(i)) : 42u) << code << " " << i;
            const int64_t wide = i < 5 ? expectedAt(i + 2) : 0;
            const int32_t saturated = wide < INT32_MIN || wide > INT32_MAX ? INT32_MIN : int32_t(wide);
            EXPECT_EQ(signedOut[i], i < 5 && code < 9 ? (code < 2 ? saturated : int32_t(wide)) : 42) << code << " " << i;
        }
    }
    ORNEX_DrawText_noCopyNeeded();
}

TEST(ValueConversion, ClampingToTheUnitIntervalKeepsNaN)
{
    const double values[] = {-0.5, 0.3, 7, std::numeric_limits<double>::quiet_NaN(), 1, 0};
    double out[7] = {9, 9, 9, 9, 9, 9, 9};
    ORNEX_DrawText_SatFltptIntensityVals(0, values, out, 6);
    EXPECT_TRUE(out[0] == 0 && out[1] == 0.3 && out[2] == 1 && std::isnan(out[3]) && out[4] == 1 && out[5] == 0 &&
                out[6] == 9);
    const float rgb[] = {2.0f, -1.0f, 0.5f};
    float rgbOut[4] = {9, 9, 9, 9};
    ORNEX_DrawText_SatFltptRGBVals(1, rgb, rgbOut);
    EXPECT_TRUE(rgbOut[0] == 1 && rgbOut[1] == 0 && rgbOut[2] == 0.5f && rgbOut[3] == 9);
    out[0] = out[1] = 9;
    ORNEX_DrawText_SatFltptRGBVals(2, values, out);
    ORNEX_DrawText_SatFltptIntensityVals(-1, values, out, 2);
    EXPECT_TRUE(out[0] == 9 && out[1] == 9) << "other type codes do nothing";
    ORNEX_DrawText_noFltSaturationNeeded();
}

} // namespace
