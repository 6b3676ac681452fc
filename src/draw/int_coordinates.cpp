#include "ornex_rt.h"

#include <cstddef>
#include <type_traits>

#include "frame/element_traits.hpp"
#include "frame/rounding.hpp"

namespace ornex::draw {
namespace {

// Floating coordinates round halves away from zero (not-a-number gives the
// out-of-range integer); integer ones are widened unchanged, so an unsigned
// 32-bit value above INT32_MAX wraps.
template <class T>
void convertCoordinates(const void *source, int32_t *destination, int32_t count, int32_t block)
{
    const T *values = static_cast<const T *>(source) + static_cast<ptrdiff_t>(count) * block;
    for (int32_t k = 0; k < count; ++k) {
        if constexpr (std::is_floating_point_v<T>) {
            destination[k] = roundHalfAway(values[k]);
        } else {
            destination[k] = static_cast<int32_t>(values[k]);
        }
    }
}

} // namespace
} // namespace ornex::draw

extern "C" int32_t ORNEX_GetIntCoordinates(const void *source, int32_t typeCode, int32_t *destination, int32_t count,
                                           int32_t block)
{
    using namespace ornex;
    using draw::convertCoordinates;
    switch (typeCode) {
    case ORNEX_TYPE_DOUBLE: convertCoordinates<double>(source, destination, count, block); break;
    case ORNEX_TYPE_SINGLE: convertCoordinates<float>(source, destination, count, block); break;
    case ORNEX_TYPE_INT8: convertCoordinates<int8_t>(source, destination, count, block); break;
    case ORNEX_TYPE_UINT8: convertCoordinates<uint8_t>(source, destination, count, block); break;
    case ORNEX_TYPE_INT16: convertCoordinates<int16_t>(source, destination, count, block); break;
    case ORNEX_TYPE_UINT16: convertCoordinates<uint16_t>(source, destination, count, block); break;
    case ORNEX_TYPE_INT32: convertCoordinates<int32_t>(source, destination, count, block); break;
    case ORNEX_TYPE_UINT32: convertCoordinates<uint32_t>(source, destination, count, block); break;
    default: break;
    }
    return 0;
}
