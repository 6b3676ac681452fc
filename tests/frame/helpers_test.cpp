#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "frame/blending.hpp"
#include "frame/element_traits.hpp"
#include "frame/rounding.hpp"
#include "frame/simd_level.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace {

using namespace ornex;

TEST(Rounding, HalvesGoAwayFromZero)
{
    EXPECT_EQ(roundHalfAway(2.5), 3);
    EXPECT_EQ(roundHalfAway(-2.5), -3);
    EXPECT_EQ(roundHalfAway(0.49999), 0);
    EXPECT_EQ(roundHalfAway(-0.5), -1);
    EXPECT_EQ(roundHalfAway(0.0), 0);
    EXPECT_EQ(roundHalfAway(-0.0), 0);
    EXPECT_EQ(roundHalfAway(-0.49999), 0);
    EXPECT_EQ(roundHalfAway(1.4999), 1);
    EXPECT_EQ(roundHalfAway(2.5f), 3);
    EXPECT_EQ(roundHalfAway(-2.5f), -3);
    EXPECT_EQ(roundHalfAway(-7.75f), -8);
}

TEST(Rounding, HalfIsAddedInTheValuesOwnPrecision)
{
    // The largest single below one half: 0.5f - 2^-25 plus 0.5f rounds to 1.0f
    // in single precision, while in double the sum stays below one.
    const float justBelowHalf = std::nextafter(0.5f, 0.0f);
    EXPECT_EQ(roundHalfAway(justBelowHalf), 1);
    EXPECT_EQ(roundHalfAway(static_cast<double>(justBelowHalf)), 0);
}

TEST(Rounding, FloorOfValuePlusHalfSendsHalvesUp)
{
    EXPECT_EQ(roundHalfUp(2.5), 3);
    EXPECT_EQ(roundHalfUp(-2.5), -2);
    EXPECT_EQ(roundHalfUp(-2.51), -3);
    EXPECT_EQ(roundHalfUp(-0.5), 0);
    EXPECT_EQ(roundHalfUp(0.49999), 0);
    EXPECT_EQ(roundHalfUp(-3.5f), -3);
    // 0.5f - 2^-25 plus 0.5f is 1.0f in single precision, below 1 in double.
    EXPECT_EQ(nearestHalfUp(std::nextafter(0.5f, 0.0f)), 1.0f);
    EXPECT_EQ(nearestHalfUp(static_cast<double>(std::nextafter(0.5f, 0.0f))), 0.0);
    EXPECT_EQ(nearestHalfUp(-1.5), -1.0);
}

TEST(Rounding, IntegerQuotientsSendHalvesAwayFromZero)
{
    EXPECT_EQ(divideHalfAway(96, 64), 2);   // 1.5
    EXPECT_EQ(divideHalfAway(-96, 64), -2); // -1.5
    EXPECT_EQ(divideHalfAway(95, 64), 1);
    EXPECT_EQ(divideHalfAway(-95, 64), -1);
    EXPECT_EQ(wrapDivideHalfAway(5, 2), 3);
    EXPECT_EQ(wrapDivideHalfAway(-5, 2), -3);
    EXPECT_EQ(wrapDivideHalfAway(5, -2), -3);
    EXPECT_EQ(wrapDivideHalfAway(-7, -4), 2); // 1.75
    EXPECT_EQ(wrapDivideHalfAway(7, 3), 2);   // 2.33
    // 2n wraps: 2 * 2^30 is -2^31, -2^31 / 4 is -2^29, and as n and d have
    // the same sign (-2^29 + 1) / 2 truncates to -2^28 + 1.
    EXPECT_EQ(wrapDivideHalfAway(1 << 30, 4), -(1 << 28) + 1);
}

TEST(Blending, Q10ProductsShiftArithmeticallyAndWrap)
{
    EXPECT_EQ(q10Product(-1, 1), -1); // -1/1024 goes to minus infinity
    EXPECT_EQ(q10Product(300, 512), 150);
    EXPECT_EQ(q10Product(65536, 65536), 0); // 2^32 wraps to 0
    // (200 * 512) >> 10 = 100, plus 60 is 160; int8 stores 160 - 256.
    EXPECT_EQ(keepQ10AndAdd<int8_t>(int8_t(-56), 512, 60), int8_t(-28 + 60));
    EXPECT_EQ(keepQ10AndAdd<uint8_t>(uint8_t(200), 512, 60), 160);
    EXPECT_EQ(keepQ10AndAdd<uint8_t>(uint8_t(200), 1024, 100), 44); // 300 - 256
    EXPECT_EQ(keepQ10AndAdd<int16_t>(int16_t(-3), 1024, 0), -3);
    EXPECT_EQ(keepQ10AndAdd<int16_t>(int16_t(-3), 512, 0), -2); // -1.5 floors to -2
}

TEST(Rounding, TruncationGoesTowardZeroAndOutOfRangeGivesIntMin)
{
    EXPECT_EQ(truncateToInt32(2.99), 2);
    EXPECT_EQ(truncateToInt32(-2.99), -2);
    EXPECT_EQ(truncateToInt32(2147483647.0), INT32_MAX);
    EXPECT_EQ(truncateToInt32(-2147483648.0), INT32_MIN);
    EXPECT_EQ(truncateToInt32(-2147483648.9), INT32_MIN);
    EXPECT_EQ(truncateToInt32(2147483648.0), INT32_MIN);
    EXPECT_EQ(truncateToInt32(1e300), INT32_MIN);
    EXPECT_EQ(truncateToInt32(std::numeric_limits<double>::quiet_NaN()), INT32_MIN);
    EXPECT_EQ(truncateToInt32(std::numeric_limits<float>::infinity()), INT32_MIN);
    EXPECT_EQ(roundHalfAway(2147483647.4), INT32_MAX);
    EXPECT_EQ(roundHalfAway(2147483647.5), INT32_MIN);
}

TEST(WrapArithmetic, WrapsModulo2To32)
{
    EXPECT_EQ(wrapAdd(INT32_MAX, 1), INT32_MIN);
    EXPECT_EQ(wrapAdd(-1, -1), -2);
    EXPECT_EQ(wrapSub(INT32_MIN, 1), INT32_MAX);
    EXPECT_EQ(wrapSub(3, 5), -2);
    EXPECT_EQ(wrapMul(65536, 65536), 0);
    EXPECT_EQ(wrapMul(65536, 32768), INT32_MIN);
    EXPECT_EQ(wrapMul(-7, 6), -42);
    EXPECT_EQ(wrapMul(46341, 46341), -2147479015); // 2147488281 - 2^32
    EXPECT_EQ(wrapNeg(INT32_MIN), INT32_MIN);
    EXPECT_EQ(wrapNeg(5), -5);
    EXPECT_EQ(wrapAbs(INT32_MIN), INT32_MIN);
    EXPECT_EQ(wrapAbs(-9), 9);
    EXPECT_EQ(wrapDiv(INT32_MIN, -1), INT32_MIN);
    EXPECT_EQ(wrapDiv(-7, 2), -3); // toward zero, not floor
    EXPECT_EQ(wrapDiv(7, -2), -3);
}

TEST(ElementTraits, LimitsOfTheFloatingTypes)
{
    EXPECT_EQ(ElementTraits<double>::largest, 1.7976931348623157e308);
    EXPECT_EQ(ElementTraits<float>::largest, 3.40282347e38f);
    EXPECT_EQ(ElementTraits<double>::epsilon, std::ldexp(1.0, -52));
    EXPECT_EQ(ElementTraits<float>::epsilon, std::ldexp(1.0f, -23));
}

TEST(ElementTraits, Q10ShiftIsLogicalForUnsignedNarrowTypes)
{
    // -1024 is 0xFFFFFC00: arithmetic shift gives -1, logical 0x003FFFFF.
    EXPECT_EQ(ElementTraits<int8_t>::shiftOutQ10(-1024), -1);
    EXPECT_EQ(ElementTraits<int16_t>::shiftOutQ10(-1024), -1);
    EXPECT_EQ(ElementTraits<LogicalByte>::shiftOutQ10(-1024), -1);
    EXPECT_EQ(ElementTraits<uint8_t>::shiftOutQ10(-1024), 0x003FFFFF);
    EXPECT_EQ(ElementTraits<uint16_t>::shiftOutQ10(-1024), 0x003FFFFF);
    EXPECT_EQ(ElementTraits<uint8_t>::shiftOutQ10(200 * 1024 + 1023), 200);
}

TEST(ElementTraits, StoreTruncatesWithoutSaturation)
{
    EXPECT_EQ(ElementTraits<uint8_t>::storeTruncated(256 + 7), 7);
    EXPECT_EQ(ElementTraits<uint8_t>::storeTruncated(-1), 255);
    EXPECT_EQ(ElementTraits<int8_t>::storeTruncated(128), -128);
    EXPECT_EQ(ElementTraits<int16_t>::storeTruncated(70000), 70000 - 65536);
    EXPECT_EQ(ElementTraits<uint16_t>::storeTruncated(-2), 65534);
    EXPECT_EQ(static_cast<uint8_t>(ElementTraits<LogicalByte>::storeTruncated(0x1FF)), 0xFF);
    EXPECT_EQ(ElementTraits<uint32_t>::toInt32(0xFFFFFFFFu), -1);
    EXPECT_EQ(ElementTraits<uint8_t>::toInt32(250), 250);
    EXPECT_EQ(ElementTraits<int8_t>::toInt32(-6), -6);
}

TEST(SimdLevel, EnvironmentOnlyLowersTheLevel)
{
    EXPECT_EQ(chooseSimdLevel(nullptr, true), SimdLevel::avx2);
    EXPECT_EQ(chooseSimdLevel(nullptr, false), SimdLevel::packed);
    EXPECT_EQ(chooseSimdLevel("none", true), SimdLevel::scalar);
    EXPECT_EQ(chooseSimdLevel("sse2", true), SimdLevel::packed);
    EXPECT_EQ(chooseSimdLevel("avx2", false), SimdLevel::packed);
    EXPECT_EQ(chooseSimdLevel("fastest please", true), SimdLevel::avx2);
    const SimdLevel before = simdLevel();
    EXPECT_EQ(forceSimdLevel(SimdLevel::scalar), SimdLevel::scalar);
    EXPECT_EQ(simdLevel(), SimdLevel::scalar);
    forceSimdLevel(before);
}

} // namespace
