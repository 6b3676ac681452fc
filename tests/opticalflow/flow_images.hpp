#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

// Test images shared by the optical-flow tests.

// A smooth pattern, translated so that its content moves `down` rows and
// `right` columns: value(r, c) = pattern(r - down, c - right).
template <class T>
std::vector<T> smoothPattern(int32_t rows, int32_t cols, double down, double right)
{
    std::vector<T> image(static_cast<size_t>(rows) * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const double y = r - down, x = c - right;
            image[r + static_cast<size_t>(c) * rows] =
                T(100 + 40 * std::sin(0.21 * y + 0.1 * x) + 30 * std::cos(0.17 * x - 0.05 * y));
        }
    }
    return image;
}

// Mean of a plane over the pixels at least `margin` from every edge.
template <class T>
double interiorMean(const std::vector<T> &plane, int32_t rows, int32_t cols, int32_t margin, size_t stride = 1,
                    size_t offset = 0)
{
    double sum = 0;
    int count = 0;
    for (int32_t c = margin; c < cols - margin; ++c) {
        for (int32_t r = margin; r < rows - margin; ++r) {
            sum += double(plane[(r + static_cast<size_t>(c) * rows) * stride + offset]);
            ++count;
        }
    }
    return sum / count;
}
