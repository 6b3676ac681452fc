#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ornex {

// How the planes of an image lie: one plane; numPlanes planes a fixed
// number of elements apart (intensity images); three separate planes (RGB).
enum class PlaneSet { one, strided, rgb };

// The planes a drawer writes, addressed by the element offset of a pixel
// within a plane.
template <class T, PlaneSet set>
class ImagePlanes {
public:
    ImagePlanes(T *first, int32_t count, ptrdiff_t stride) : planes_{first, nullptr, nullptr}, count_(count), stride_(stride)
    {
    }
    ImagePlanes(T *red, T *green, T *blue) : planes_{red, green, blue}, count_(3), stride_(0) {}

    int32_t count() const
    {
        if constexpr (set == PlaneSet::one) {
            return 1;
        } else if constexpr (set == PlaneSet::rgb) {
            return 3;
        } else {
            return count_;
        }
    }

    T *plane(int32_t p) const
    {
        if constexpr (set == PlaneSet::rgb) {
            return planes_[p];
        } else {
            return planes_[0] + static_cast<ptrdiff_t>(p) * stride_;
        }
    }

    // visit(pixel, p) for the pixel at `offset` of every plane p in turn.
    template <class Visit>
    void forEachAt(ptrdiff_t offset, const Visit &visit) const
    {
        for (int32_t p = 0; p < count(); ++p) {
            visit(plane(p)[offset], p);
        }
    }

private:
    std::array<T *, 3> planes_;
    int32_t count_;
    ptrdiff_t stride_;
};

template <class T>
ImagePlanes<T, PlaneSet::one> onePlane(T *plane)
{
    return {plane, 1, 0};
}

template <class T>
ImagePlanes<T, PlaneSet::strided> stridedPlanes(T *first, int32_t count, ptrdiff_t stride)
{
    return {first, count, stride};
}

template <class T>
ImagePlanes<T, PlaneSet::rgb> rgbPlanes(T *red, T *green, T *blue)
{
    return {red, green, blue};
}

} // namespace ornex
