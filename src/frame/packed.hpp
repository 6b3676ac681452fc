#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace ornex {

namespace packed_detail {
typedef float Float16Bytes __attribute__((vector_size(16)));
typedef double Double16Bytes __attribute__((vector_size(16)));
typedef uint32_t Bits32In16Bytes __attribute__((vector_size(16)));
typedef uint64_t Bits64In16Bytes __attribute__((vector_size(16)));
typedef float Float32Bytes __attribute__((vector_size(32)));
typedef double Double32Bytes __attribute__((vector_size(32)));
typedef uint32_t Bits32In32Bytes __attribute__((vector_size(32)));
typedef uint64_t Bits64In32Bytes __attribute__((vector_size(32)));

template <class T, int bytes>
struct LaneTypes;
template <>
struct LaneTypes<float, 16> {
    using Native = Float16Bytes;
    using Bits = Bits32In16Bytes;
    using Bit = uint32_t;
};
template <>
struct LaneTypes<double, 16> {
    using Native = Double16Bytes;
    using Bits = Bits64In16Bytes;
    using Bit = uint64_t;
};
template <>
struct LaneTypes<float, 32> {
    using Native = Float32Bytes;
    using Bits = Bits32In32Bytes;
    using Bit = uint32_t;
};
template <>
struct LaneTypes<double, 32> {
    using Native = Double32Bytes;
    using Bits = Bits64In32Bytes;
    using Bit = uint64_t;
};
} // namespace packed_detail

// `bytes` bytes of elements handled side by side. Every operation is the
// scalar operation applied to each lane on its own, so a loop that keeps one
// independent result per lane gives the scalar results bit for bit.
// The members are always inlined: a translation unit built for a wider
// instruction set must not leave out-of-line copies that another unit could
// end up calling.
template <class T, int bytes>
struct Pack {
    static constexpr int width = bytes / sizeof(T);
    using Native = typename packed_detail::LaneTypes<T, bytes>::Native;
    using Bits = typename packed_detail::LaneTypes<T, bytes>::Bits;
    using Bit = typename packed_detail::LaneTypes<T, bytes>::Bit;

    Native lanes;

    [[gnu::always_inline]] static Pack load(const T *source)
    {
        Pack result;
        std::memcpy(&result.lanes, source, sizeof result.lanes);
        return result;
    }

    // Copies the bit pattern into every lane (an arithmetic splat such as
    // 0 + value would turn -0 into +0).
    [[gnu::always_inline]] static Pack broadcast(T value)
    {
        return {std::bit_cast<Native>(Bits{} + std::bit_cast<Bit>(value))};
    }

    [[gnu::always_inline]] void store(T *destination) const { std::memcpy(destination, &lanes, sizeof lanes); }

    [[gnu::always_inline]] friend Pack operator+(Pack a, Pack b) { return {a.lanes + b.lanes}; }
    [[gnu::always_inline]] friend Pack operator-(Pack a, Pack b) { return {a.lanes - b.lanes}; }
    [[gnu::always_inline]] friend Pack operator*(Pack a, Pack b) { return {a.lanes * b.lanes}; }
    [[gnu::always_inline]] friend Pack operator/(Pack a, Pack b) { return {a.lanes / b.lanes}; }

    // Lane masks (all ones where true) and selection by them.
    [[gnu::always_inline]] friend Bits operator<(Pack a, Pack b) { return std::bit_cast<Bits>(a.lanes < b.lanes); }
    [[gnu::always_inline]] friend Bits operator>(Pack a, Pack b) { return std::bit_cast<Bits>(a.lanes > b.lanes); }
    [[gnu::always_inline]] static Pack select(Bits mask, Pack ifTrue, Pack ifFalse)
    {
        return {std::bit_cast<Native>((mask & std::bit_cast<Bits>(ifTrue.lanes)) |
                                      (~mask & std::bit_cast<Bits>(ifFalse.lanes)))};
    }

    // candidate > largest ? candidate : largest in every lane, so a lane that
    // is not a number never replaces the largest value.
    [[gnu::always_inline]] friend Pack largerOf(Pack largest, Pack candidate)
    {
        return select(candidate > largest, candidate, largest);
    }

    // Clears the sign bit, as fabs does.
    [[gnu::always_inline]] friend Pack absoluteValue(Pack a)
    {
        const Bits magnitudeMask = Bits{} + (~Bit(0) >> 1);
        return {std::bit_cast<Native>(std::bit_cast<Bits>(a.lanes) & magnitudeMask)};
    }
};

[[gnu::always_inline]] inline float absoluteValue(float x) { return std::fabs(x); }
[[gnu::always_inline]] inline double absoluteValue(double x) { return std::fabs(x); }

} // namespace ornex
