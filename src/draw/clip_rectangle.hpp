#pragma once

#include <cstdint>

namespace ornex::draw {

// The inclusive rectangle a drawer may write: rows rowMin .. rowMax,
// columns colMin .. colMax.
struct ClipRectangle {
    int32_t rowMin, rowMax, colMin, colMax;

    bool contains(int32_t row, int32_t column) const
    {
        return row >= rowMin && row <= rowMax && column >= colMin && column <= colMax;
    }
};

} // namespace ornex::draw
