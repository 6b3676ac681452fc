#pragma once

#include <cstdint>
#include <limits>

#include "ornex_rt.h"

namespace ornex {

// The logical element type: one byte, zero is false, anything else true.
enum class LogicalByte : uint8_t {};

template <class T>
struct ElementTraits;

template <class Real, ORNEX_TypeCode code>
struct FloatingTraits {
    using Value = Real;
    static constexpr ORNEX_TypeCode typeCode = code;
    static constexpr bool isInteger = false;
    static constexpr Real largest = std::numeric_limits<Real>::max();
    static constexpr Real epsilon = std::numeric_limits<Real>::epsilon();
};

template <> struct ElementTraits<double> : FloatingTraits<double, ORNEX_TYPE_DOUBLE> {};
template <> struct ElementTraits<float> : FloatingTraits<float, ORNEX_TYPE_SINGLE> {};

// Integer elements. Q10 fixed-point results (10 fraction bits) are shifted
// back logically for unsigned 8- and 16-bit images and arithmetically for
// the signed and logical ones, then stored truncated to the element width:
// there is no saturation.
template <class Int, class Storage, ORNEX_TypeCode code, bool logicalQ10Shift>
struct IntegerTraits {
    using Value = Int;
    static constexpr ORNEX_TypeCode typeCode = code;
    static constexpr bool isInteger = true;
    static constexpr Storage largest = std::numeric_limits<Storage>::max();

    static int32_t shiftOutQ10(int32_t fixedPoint)
    {
        if constexpr (logicalQ10Shift) {
            return static_cast<int32_t>(static_cast<uint32_t>(fixedPoint) >> 10);
        } else {
            return fixedPoint >> 10;
        }
    }

    static int32_t toInt32(Int value) { return static_cast<int32_t>(static_cast<Storage>(value)); }

    static Int storeTruncated(int32_t value) { return static_cast<Int>(static_cast<Storage>(value)); }
};

template <> struct ElementTraits<int8_t> : IntegerTraits<int8_t, int8_t, ORNEX_TYPE_INT8, false> {};
template <> struct ElementTraits<uint8_t> : IntegerTraits<uint8_t, uint8_t, ORNEX_TYPE_UINT8, true> {};
template <> struct ElementTraits<int16_t> : IntegerTraits<int16_t, int16_t, ORNEX_TYPE_INT16, false> {};
template <> struct ElementTraits<uint16_t> : IntegerTraits<uint16_t, uint16_t, ORNEX_TYPE_UINT16, true> {};
template <> struct ElementTraits<int32_t> : IntegerTraits<int32_t, int32_t, ORNEX_TYPE_INT32, false> {};
template <> struct ElementTraits<uint32_t> : IntegerTraits<uint32_t, uint32_t, ORNEX_TYPE_UINT32, true> {};
template <> struct ElementTraits<LogicalByte> : IntegerTraits<LogicalByte, uint8_t, ORNEX_TYPE_LOGICAL, false> {};

} // namespace ornex
