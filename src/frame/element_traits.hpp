#pragma once

#include <cstdint>
#include <limits>

namespace ornex {

// The logical element type: one byte, zero is false, anything else true.
enum class LogicalByte : uint8_t {};

// Run-time names of the element types, shared by every routine that serves
// several types through one entry point.
enum TypeCode : int32_t {
    typeDouble = 0,
    typeSingle = 1,
    typeInt8 = 2,
    typeUInt8 = 3,
    typeInt16 = 4,
    typeUInt16 = 5,
    typeInt32 = 6,
    typeUInt32 = 7,
    typeLogical = 8,
};

template <class T>
struct ElementTraits;

template <class Real, TypeCode code>
struct FloatingTraits {
    using Value = Real;
    static constexpr TypeCode typeCode = code;
    static constexpr bool isInteger = false;
    static constexpr Real largest = std::numeric_limits<Real>::max();
    static constexpr Real epsilon = std::numeric_limits<Real>::epsilon();
};

template <> struct ElementTraits<double> : FloatingTraits<double, typeDouble> {};
template <> struct ElementTraits<float> : FloatingTraits<float, typeSingle> {};

// Integer elements. Q10 fixed-point results (10 fraction bits) are shifted
// back logically for unsigned 8- and 16-bit images and arithmetically for
// the signed and logical ones, then stored truncated to the element width:
// there is no saturation.
template <class Int, class Storage, TypeCode code, bool logicalQ10Shift>
struct IntegerTraits {
    using Value = Int;
    static constexpr TypeCode typeCode = code;
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

template <> struct ElementTraits<int8_t> : IntegerTraits<int8_t, int8_t, typeInt8, false> {};
template <> struct ElementTraits<uint8_t> : IntegerTraits<uint8_t, uint8_t, typeUInt8, true> {};
template <> struct ElementTraits<int16_t> : IntegerTraits<int16_t, int16_t, typeInt16, false> {};
template <> struct ElementTraits<uint16_t> : IntegerTraits<uint16_t, uint16_t, typeUInt16, true> {};
template <> struct ElementTraits<int32_t> : IntegerTraits<int32_t, int32_t, typeInt32, false> {};
template <> struct ElementTraits<uint32_t> : IntegerTraits<uint32_t, uint32_t, typeUInt32, true> {};
template <> struct ElementTraits<LogicalByte> : IntegerTraits<LogicalByte, uint8_t, typeLogical, false> {};

} // namespace ornex
