#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "ornex_rt.h"

namespace {

// Formats into a 64-byte buffer pre-filled with '#', with room `size`;
// checks that the format comes back unchanged and nothing past the room is
// touched.
std::string format(const char *pattern, void *values, int32_t valueLimit, int32_t typeCode, int32_t size = 48,
                   uint8_t isText = 0)
{
    std::vector<char> formatCopy(pattern, pattern + std::strlen(pattern) + 1);
    char buffer[64];
    std::memset(buffer, '#', sizeof buffer);
    ORNEX_snprintf(buffer, formatCopy.data(), values, valueLimit, typeCode, isText, size);
    EXPECT_STREQ(formatCopy.data(), pattern) << "the format is restored";
    for (int32_t k = size; k < 64; ++k) {
        EXPECT_EQ(buffer[k], '#') << "byte " << k << " is past the room of " << size;
    }
    return std::string(buffer, strnlen(buffer, sizeof buffer));
}

TEST(FormatValues, ValuesUpToTheLimitAreUsed)
{
    int32_t values[] = {3, 4};
    EXPECT_EQ(format("x=%d, y=%d", values, 1, 6), "x=3, y=4");
    EXPECT_EQ(format("x=%d, y=%d", values, 0, 6), "x=3, y=");
    EXPECT_EQ(format("no conversions", values, 0, 6), "no conversions");
}

TEST(FormatValues, DoublePercentWritesOnePercentAndTakesNoValue)
{
    int32_t values[] = {100, 7};
    EXPECT_EQ(format("100%%", values, 0, 6), "100%");
    EXPECT_EQ(format("%d%% of %d", values, 1, 6), "100% of 7");
    // Once the counter passes the limit the rest of the format is dropped,
    // a "%%" as well.
    EXPECT_EQ(format("x=%d%%", &values[1], 0, 6), "x=7");
    EXPECT_EQ(format("100%%", values, -1, 6), "100");
}

TEST(FormatValues, EachTypeCodeWidensItsValue)
{
    double d[] = {2.25};
    float f[] = {1.5f};
    int8_t i8[] = {-5};
    uint8_t u8[] = {250};
    int16_t i16[] = {-300};
    uint16_t u16[] = {65535};
    int32_t i32[] = {-2000000000};
    uint32_t u32[] = {4000000000u};
    uint8_t logical[] = {1};
    EXPECT_EQ(format("%.2f", d, 0, 0), "2.25");
    EXPECT_EQ(format("%.2f", f, 0, 1), "1.50");
    EXPECT_EQ(format("%d", i8, 0, 2), "-5");
    EXPECT_EQ(format("%d", u8, 0, 3), "250");
    EXPECT_EQ(format("%d", i16, 0, 4), "-300");
    EXPECT_EQ(format("%d", u16, 0, 5), "65535");
    EXPECT_EQ(format("%d", i32, 0, 6), "-2000000000");
    EXPECT_EQ(format("%u", u32, 0, 7), "4000000000");
    EXPECT_EQ(format("%d", logical, 0, 8), "1");
}

TEST(FormatValues, EveryRoomEndsTheOutputInsideIt)
{
    int32_t values[] = {12, 345, 6789};
    const std::string full = "a=12, b=345, c=6789";
    for (int32_t size = 1; size <= int32_t(full.size()) + 3; ++size) {
        // A piece that does not fit, or fills the room exactly, ends the
        // output in the room's last byte: what shows is the full text cut
        // to size - 1 bytes.
        const std::string shown = format("a=%d, b=%d, c=%d", values, 2, 6, size);
        EXPECT_EQ(shown, full.substr(0, std::min<size_t>(full.size(), size - 1))) << "room " << size;
    }
}

TEST(FormatValues, CountConversionsWriteNothingAnywhere)
{
    int32_t values[] = {1, 2, 3};
    // %n shows nothing and takes the place of value 1.
    EXPECT_EQ(format("%d%nab%d", values, 5, 6), "1ab3");
    EXPECT_EQ(values[1], 2);
    EXPECT_EQ(format("x%ny", values, 5, 6), "xy");
    EXPECT_EQ(values[0], 1);
}

TEST(FormatValues, TextModeFormatsTheCallersCharacters)
{
    char text[] = "hello!!";
    // The characters end at index valueLimit - 1.
    EXPECT_EQ(format("<%s>", text, 6, 3, 48, 1), "<hello>");
    EXPECT_EQ(text[5], '\0');
    int32_t number[] = {5};
    EXPECT_EQ(format("<%s>", number, 1, 6, 48, 1), "<%s>");
}

TEST(FormatValues, NullsAndUnknownTypesDoNothing)
{
    int32_t values[] = {1};
    char pattern[] = "%d";
    char buffer[8] = "keep";
    ORNEX_snprintf(buffer, pattern, values, 0, 9, 0, 8);
    EXPECT_STREQ(buffer, "keep");
    ORNEX_snprintf(buffer, pattern, nullptr, 0, 6, 0, 8);
    EXPECT_STREQ(buffer, "keep");
    ORNEX_snprintf(buffer, nullptr, values, 0, 6, 0, 8);
    ORNEX_snprintf(nullptr, pattern, values, 0, 6, 0, 8);
    EXPECT_STREQ(buffer, "keep");
    ORNEX_snprintf_wrapper(buffer, pattern, values, 0, 6, 0, 8);
    EXPECT_STREQ(buffer, "1");
    EXPECT_EQ(ORNEX_strlen("four"), 4);
    EXPECT_EQ(ORNEX_strlen(""), 0);
}

TEST(ValueConversion, UnsignedGoesThroughSixtyFourBits)
{
    const double reals[] = {3.9, -1.5, 4294967301.0};
    uint32_t out[3] = {};
    ORNEX_DrawText_copyDT1ToUint32(0, 3, reals, out);
    EXPECT_EQ(out[0], 3u);
    EXPECT_EQ(out[1], 0xFFFFFFFFu);
    EXPECT_EQ(out[2], 5u); // 2^32 + 5 keeps its low 32 bits
    const int8_t small[] = {-1};
    ORNEX_DrawText_copyDT1ToUint32(2, 1, small, out);
    EXPECT_EQ(out[0], 0xFFFFFFFFu);
    const uint16_t wide[] = {65535};
    ORNEX_DrawText_copyDT1ToUint32(5, 1, wide, out);
    EXPECT_EQ(out[0], 65535u);
    const uint8_t flags[] = {1};
    out[0] = 42;
    ORNEX_DrawText_copyDT1ToUint32(8, 1, flags, out);
    EXPECT_EQ(out[0], 42u) << "the unsigned conversion takes no logical values";
}

TEST(ValueConversion, SignedStartsAtTheIndexAndTakesLogicalValues)
{
    const double reals[] = {9, 9, -2.7, 3e10};
    int32_t out[3] = {};
    ORNEX_DrawText_copyDT1ToInt32(0, 2, reals, out, 2);
    EXPECT_EQ(out[0], -2);
    EXPECT_EQ(out[1], INT32_MIN);
    const float singles[] = {7.99f};
    ORNEX_DrawText_copyDT1ToInt32(1, 1, singles, out, 0);
    EXPECT_EQ(out[0], 7);
    const uint8_t flags[] = {0, 1, 255};
    ORNEX_DrawText_copyDT1ToInt32(8, 3, flags, out, 0);
    EXPECT_EQ(out[2], 255);
    const uint32_t large[] = {0xFFFFFFFFu};
    ORNEX_DrawText_copyDT1ToInt32(7, 1, large, out, 0);
    EXPECT_EQ(out[0], -1);
    out[0] = 42;
    ORNEX_DrawText_copyDT1ToInt32(9, 1, large, out, 0);
    EXPECT_EQ(out[0], 42);
    ORNEX_DrawText_noCopyNeeded();
}

TEST(ValueConversion, ClampingToTheUnitIntervalKeepsNaN)
{
    const double values[] = {-0.5, 0.3, 7, std::numeric_limits<double>::quiet_NaN()};
    double out[4] = {};
    ORNEX_DrawText_SatFltptIntensityVals(0, values, out, 4);
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], 0.3);
    EXPECT_EQ(out[2], 1.0);
    EXPECT_TRUE(std::isnan(out[3]));
    const float rgb[] = {2.0f, -1.0f, 0.5f};
    float rgbOut[3] = {};
    ORNEX_DrawText_SatFltptRGBVals(1, rgb, rgbOut);
    EXPECT_EQ(rgbOut[0], 1.0f);
    EXPECT_EQ(rgbOut[1], 0.0f);
    EXPECT_EQ(rgbOut[2], 0.5f);
    double untouched[3] = {5, 5, 5};
    ORNEX_DrawText_SatFltptRGBVals(2, values, untouched);
    EXPECT_EQ(untouched[0], 5.0);
    ORNEX_DrawText_noFltSaturationNeeded();
}

} // namespace
