#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ornex::draw {

// Type-blind pixel writers: each pixel receives a byte copy of elemSize
// bytes per plane, handed a byte offset from the start of the first plane.

// Copies one element of `size` bytes; sizes known at compile time become a
// single move.
template <int fixedSize>
void copyElement(uint8_t *destination, const uint8_t *source, int32_t size)
{
    if constexpr (fixedSize > 0) {
        std::memcpy(destination, source, fixedSize);
    } else {
        std::memcpy(destination, source, static_cast<size_t>(size));
    }
}

// Writes the value of every plane at one pixel of planes that lie a fixed
// distance apart.
template <int fixedSize>
struct StridedPlanes {
    uint8_t *first;
    const uint8_t *value;
    int32_t elemSize;
    int32_t numPlanes;
    ptrdiff_t planeStride; // bytes

    void operator()(ptrdiff_t offset) const
    {
        uint8_t *pixel = first + offset;
        const uint8_t *source = value;
        for (int32_t k = 0; k < numPlanes; ++k) {
            copyElement<fixedSize>(pixel, source, elemSize);
            pixel += planeStride;
            source += elemSize;
        }
    }
};

template <int fixedSize>
struct SeparatePlanes {
    std::array<uint8_t *, 3> planes;
    const uint8_t *value;
    int32_t elemSize;

    void operator()(ptrdiff_t offset) const
    {
        const uint8_t *source = value;
        for (uint8_t *plane : planes) {
            copyElement<fixedSize>(plane + offset, source, elemSize);
            source += elemSize;
        }
    }
};

// Calls body(writer) with a writer built for the element size: 1, 2, 4 and 8
// bytes copy as single moves.
template <template <int> class Writer, class Body, class... Fields>
void withByteWriter(int32_t elemSize, const Body &body, Fields... fields)
{
    switch (elemSize) {
    case 1: body(Writer<1>{fields...}); break;
    case 2: body(Writer<2>{fields...}); break;
    case 4: body(Writer<4>{fields...}); break;
    case 8: body(Writer<8>{fields...}); break;
    default: body(Writer<0>{fields...}); break;
    }
}

} // namespace ornex::draw
