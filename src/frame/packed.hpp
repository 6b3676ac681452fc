#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace ornex {

namespace packed_detail {
typedef float FloatLanes __attribute__((vector_size(16)));
typedef double DoubleLanes __attribute__((vector_size(16)));
typedef uint32_t Bits32Lanes __attribute__((vector_size(16)));
typedef uint64_t Bits64Lanes __attribute__((vector_size(16)));

template <class T>
struct LaneTypes;
template <>
struct LaneTypes<float> {
    using Native = FloatLanes;
    using Bits = Bits32Lanes;
    using Bit = uint32_t;
};
template <>
struct LaneTypes<double> {
    using Native = DoubleLanes;
    using Bits = Bits64Lanes;
    using Bit = uint64_t;
};
} // namespace packed_detail

// Sixteen bytes of elements handled side by side. Every operation is the
// scalar operation applied to each lane on its own, so a loop that keeps one
// independent result per lane gives the scalar results bit for bit.
template <class T>
struct Pack {
    static constexpr int width = 16 / sizeof(T);
    using Native = typename packed_detail::LaneTypes<T>::Native;
    using Bits = typename packed_detail::LaneTypes<T>::Bits;
    using Bit = typename packed_detail::LaneTypes<T>::Bit;

    Native lanes;

    static Pack load(const T *source)
    {
        Pack result;
        std::memcpy(&result.lanes, source, sizeof result.lanes);
        return result;
    }

    static Pack broadcast(T value) { return {Native{} + value}; }

    void store(T *destination) const { std::memcpy(destination, &lanes, sizeof lanes); }

    friend Pack operator+(Pack a, Pack b) { return {a.lanes + b.lanes}; }
    friend Pack operator-(Pack a, Pack b) { return {a.lanes - b.lanes}; }
    friend Pack operator*(Pack a, Pack b) { return {a.lanes * b.lanes}; }

    // Clears the sign bit, as fabs does.
    friend Pack absoluteValue(Pack a)
    {
        const Bits magnitudeMask = Bits{} + (~Bit(0) >> 1);
        return {std::bit_cast<Native>(std::bit_cast<Bits>(a.lanes) & magnitudeMask)};
    }
};

inline float absoluteValue(float x) { return std::fabs(x); }
inline double absoluteValue(double x) { return std::fabs(x); }

} // namespace ornex
