#pragma once

#include <cstdint>

namespace ornex {

// The inclusive rectangle a drawer may write: rows rowMin .. rowMax,
// columns colMin .. colMax.
struct ClipRectangle {
    int32_t rowMin, rowMax, colMin, colMax;

    // From four values in the order rowMin, rowMax, colMin, colMax.
    static ClipRectangle fromValues(const int32_t values[4]) { return {values[0], values[1], values[2], values[3]}; }

    // Every pixel of a numRows x numCols image; nothing when either is below 1.
    static ClipRectangle wholeImage(int32_t numRows, int32_t numCols)
    {
        if (numRows < 1 || numCols < 1) {
            return {0, -1, 0, -1};
        }
        return {0, numRows - 1, 0, numCols - 1};
    }

    bool containsColumn(int64_t column) const { return column >= colMin && column <= colMax; }
    bool containsRow(int64_t row) const { return row >= rowMin && row <= rowMax; }
    bool contains(int64_t row, int64_t column) const { return containsRow(row) && containsColumn(column); }
};

} // namespace ornex
