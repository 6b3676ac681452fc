#pragma once

#include <type_traits>

#include "fuzz_input.hpp"

// An image of up to 16 x 16 with numPlanes planes planeStride apart (three
// for the RGB members), in a buffer that ends where the last plane ends; a
// clip rectangle inside it; the colour and opacity of a drawing member of
// element type T.
template <class T>
struct DrawScene {
    // Opacities and blend weights: the element type for floating images,
    // Q10 int16 (1024 opaque) for integer and logical ones.
    using Weight = std::conditional_t<std::is_floating_point_v<T>, T, int16_t>;
    static constexpr double full = std::is_floating_point_v<T> ? 1.0 : 1024.0;

    int32_t rows, cols, numPlanes, planeStride, rowMin, rowMax, colMin, colMax;
    std::vector<T> image, colour;
    Weight opacity;

    DrawScene(FuzzInput &in, bool rgb)
        : rows(in.range(1, 16)), cols(in.range(1, 16)), numPlanes(rgb ? 3 : in.range(1, 3)),
          planeStride(rows * cols + in.range(0, 3)), rowMin(in.range(0, rows - 1)), rowMax(in.range(rowMin, rows - 1)),
          colMin(in.range(0, cols - 1)), colMax(in.range(colMin, cols - 1)),
          image(size_t(planeStride) * (numPlanes - 1) + size_t(rows) * cols), colour(3), opacity(weight(in))
    {
        for (T &v : image)
            v = value(in);
        for (T &v : colour)
            v = value(in);
    }

    static T value(FuzzInput &in)
    {
        if constexpr (std::is_floating_point_v<T>)
            return T(in.real(2));
        else
            return in.raw<T>();
    }
    static Weight weight(FuzzInput &in) { return Weight(in.range(0, 1024) * (full / 1024)); }

    T *plane(int32_t k) { return image.data() + size_t(k) * planeStride; }
};
