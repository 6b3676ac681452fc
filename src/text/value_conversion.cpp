#include "ornex_rt.h"

#include <type_traits>

#include "frame/element_traits.hpp"
#include "frame/rounding.hpp"

namespace ornex::text {
namespace {

// Unsigned results go through a 64-bit integer and keep its low 32 bits.
template <class T>
uint32_t toUint32(T value)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<uint32_t>(static_cast<uint64_t>(truncateToInt64(value)));
    } else {
        return static_cast<uint32_t>(static_cast<int64_t>(value));
    }
}

template <class T>
int32_t toInt32(T value)
{
    if constexpr (std::is_floating_point_v<T>) {
        return truncateToInt32(value);
    } else {
        return static_cast<int32_t>(value);
    }
}

template <class T, class Out, class Convert>
void convertAll(const void *source, int32_t first, int32_t count, Out *destination, Convert convert)
{
    const T *values = static_cast<const T *>(source) + first;
    for (int32_t k = 0; k < count; ++k) {
        destination[k] = convert(values[k]);
    }
}

// Calls body with a null pointer of the element type that typeCode names.
template <class Body>
void withType(int32_t typeCode, bool acceptLogical, const Body &body)
{
    switch (typeCode) {
    case ORNEX_TYPE_DOUBLE: body(static_cast<double *>(nullptr)); break;
    case ORNEX_TYPE_SINGLE: body(static_cast<float *>(nullptr)); break;
    case ORNEX_TYPE_INT8: body(static_cast<int8_t *>(nullptr)); break;
    case ORNEX_TYPE_UINT8: body(static_cast<uint8_t *>(nullptr)); break;
    case ORNEX_TYPE_INT16: body(static_cast<int16_t *>(nullptr)); break;
    case ORNEX_TYPE_UINT16: body(static_cast<uint16_t *>(nullptr)); break;
    case ORNEX_TYPE_INT32: body(static_cast<int32_t *>(nullptr)); break;
    case ORNEX_TYPE_UINT32: body(static_cast<uint32_t *>(nullptr)); break;
    case ORNEX_TYPE_LOGICAL:
        if (acceptLogical) {
            body(static_cast<uint8_t *>(nullptr));
        }
        break;
    default: break;
    }
}

// Copies count colour values, clamped to [0, 1]; NaN passes through.
template <class Real>
void saturate(const void *source, void *destination, int32_t count)
{
    const Real *in = static_cast<const Real *>(source);
    Real *out = static_cast<Real *>(destination);
    for (int32_t k = 0; k < count; ++k) {
        const Real value = in[k];
        out[k] = value < Real(0) ? Real(0) : (value > Real(1) ? Real(1) : value);
    }
}

void saturateByType(int32_t typeCode, const void *source, void *destination, int32_t count)
{
    if (typeCode == ORNEX_TYPE_DOUBLE) {
        saturate<double>(source, destination, count);
    } else if (typeCode == ORNEX_TYPE_SINGLE) {
        saturate<float>(source, destination, count);
    }
}

} // namespace
} // namespace ornex::text

using namespace ornex::text;

extern "C" {
void ORNEX_DrawText_copyDT1ToUint32(int32_t typeCode, int32_t count, const void *source, uint32_t *destination)
{
    withType(typeCode, false, [&](auto *type) {
        using T = std::remove_pointer_t<decltype(type)>;
        convertAll<T>(source, 0, count, destination, toUint32<T>);
    });
}
void ORNEX_DrawText_copyDT1ToInt32(int32_t typeCode, int32_t count, const void *source, int32_t *destination, int32_t startIndex)
{
    withType(typeCode, true, [&](auto *type) {
        using T = std::remove_pointer_t<decltype(type)>;
        convertAll<T>(source, startIndex, count, destination, toInt32<T>);
    });
}
void ORNEX_DrawText_noCopyNeeded(void) {}
void ORNEX_DrawText_SatFltptRGBVals(int32_t typeCode, const void *source, void *destination) { saturateByType(typeCode, source, destination, 3); }
void ORNEX_DrawText_SatFltptIntensityVals(int32_t typeCode, const void *source, void *destination, int32_t count) { saturateByType(typeCode, source, destination, count); }
void ORNEX_DrawText_noFltSaturationNeeded(void) {}
}
