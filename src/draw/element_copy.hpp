#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ornex::draw {

// Type-blind drawing: every pixel receives a byte copy of elemSize bytes per
// plane, plane p taking the bytes at value + p*elemSize; the planes are byte
// planes and offsets count bytes.

template <size_t size>
struct FixedSizeCopy {
    void operator()(uint8_t *to, const uint8_t *from) const { std::memcpy(to, from, size); }
};

struct RunTimeSizeCopy {
    size_t size;
    void operator()(uint8_t *to, const uint8_t *from) const { std::memcpy(to, from, size); }
};

// Calls body(writeValue) with writeValue(planes, offset) copying the value
// into every plane at one pixel; 1, 2, 4 and 8 bytes copy as single moves.
template <class Body>
void withValueWriter(const uint8_t *value, int32_t elemSize, const Body &body)
{
    auto withCopy = [&](auto copyElement) {
        body([value, elemSize, copyElement](const auto &planes, ptrdiff_t offset) {
            planes.forEachAt(offset, [&](uint8_t &pixel, int32_t p) {
                copyElement(&pixel, value + static_cast<ptrdiff_t>(p) * elemSize);
            });
        });
    };
    switch (elemSize) {
    case 1: withCopy(FixedSizeCopy<1>{}); break;
    case 2: withCopy(FixedSizeCopy<2>{}); break;
    case 4: withCopy(FixedSizeCopy<4>{}); break;
    case 8: withCopy(FixedSizeCopy<8>{}); break;
    default: withCopy(RunTimeSizeCopy{static_cast<size_t>(elemSize)}); break;
    }
}

} // namespace ornex::draw
