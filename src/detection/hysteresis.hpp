#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/rounding.hpp"

namespace ornex::detection {

template <class T>
struct Thresholds {
    T low, high;
};

// High threshold k/256 where k bins of the magnitude histogram (border
// left out) first hold more than the given share of all M*N pixels; the
// target counts the border although the histogram does not, on purpose.
template <class T>
Thresholds<T> automaticThresholds(const T *magnitude, T percentage, int32_t numRows, int32_t numCols,
                                  int32_t border)
{
    const T target = T(numRows * numCols) * (percentage / T(100));
    uint32_t histogram[256] = {};
    for (int32_t r = border; r < numRows - border; ++r) {
        for (int32_t c = border; c < numCols - border; ++c) {
            const T value = magnitude[r + static_cast<ptrdiff_t>(c) * numRows];
            ++histogram[static_cast<uint32_t>(truncateToInt32(value * T(255))) & 0xFFu];
        }
    }
    T sum = 0;
    int32_t bins = 0;
    while (bins < 256) {
        sum = sum + T(histogram[bins]);
        ++bins;
        if (sum > target) {
            break;
        }
    }
    const T high = T(bins) * T(0.00390625);
    return {high * T(0.4), high};
}

// The tracing stacks, 16-bit entries carved from the two smoothing buffers:
// rows and columns at their starts, row and column steps M*N entries on.
struct TraceStack {
    int16_t *rows, *cols, *rowSteps, *colSteps;
    ptrdiff_t size = 0;
};

// Neighbour positions 0..8 in row order over the 3x3 block; 4 is the centre.
inline int32_t positionOf(int32_t rowStep, int32_t colStep)
{
    return 3 * rowStep + colStep + 4;
}

template <class T>
class Hysteresis {
public:
    Hysteresis(const T *magnitude, uint8_t *edges, TraceStack stack, Thresholds<T> thresholds, int32_t numRows,
               int32_t numCols)
        : magnitude_(magnitude), edges_(edges), stack_(stack), thresholds_(thresholds), numRows_(numRows),
          numCols_(numCols)
    {
    }

    // Seeds are visited in row order. Reading a column-major image row by
    // row is slow, so the seed flags of a strip of 64 rows are first
    // gathered column by column into one bit mask per column.
    void run()
    {
        std::memset(edges_, 0, static_cast<size_t>(numRows_) * static_cast<size_t>(numCols_));
        if (numCols_ > maskColumns) {
            for (int32_t r = 0; r < numRows_; ++r) {
                for (int32_t c = 0; c < numCols_; ++c) {
                    if (magnitude_[index(r, c)] >= thresholds_.high) {
                        trace(r, c);
                    }
                }
            }
            return;
        }
        uint64_t seedMasks[maskColumns];
        for (int32_t top = 0; top < numRows_; top += 64) {
            const int32_t height = std::min(64, numRows_ - top);
            for (int32_t c = 0; c < numCols_; ++c) {
                const T *column = magnitude_ + index(top, c);
                uint64_t mask = 0;
                for (int32_t r = 0; r < height; ++r) {
                    mask |= uint64_t(column[r] >= thresholds_.high) << r;
                }
                seedMasks[c] = mask;
            }
            for (int32_t r = 0; r < height; ++r) {
                const uint64_t bit = uint64_t(1) << r;
                for (int32_t c = 0; c < numCols_; ++c) {
                    if (seedMasks[c] & bit) {
                        trace(top + r, c);
                    }
                }
            }
        }
    }

private:
    static constexpr int32_t maskColumns = 8192;

    ptrdiff_t index(int32_t r, int32_t c) const { return r + static_cast<ptrdiff_t>(c) * numRows_; }

    // The first neighbour after position `after` whose magnitude reaches the
    // low threshold, edge-flagged or not; false when there is none.
    bool findNeighbour(int32_t r, int32_t c, int32_t after, int32_t &rowStep, int32_t &colStep) const
    {
        for (int32_t position = after + 1; position < 9; ++position) {
            if (position == 4) {
                continue;
            }
            const int32_t dr = position / 3 - 1, dc = position % 3 - 1;
            const int32_t nr = r + dr, nc = c + dc;
            if (nr < 0 || nr >= numRows_ || nc < 0 || nc >= numCols_) {
                continue;
            }
            if (magnitude_[index(nr, nc)] >= thresholds_.low) {
                rowStep = dr;
                colStep = dc;
                return true;
            }
        }
        return false;
    }

    void push(int32_t r, int32_t c, int32_t rowStep, int32_t colStep)
    {
        const ptrdiff_t top = stack_.size++;
        stack_.rows[top] = static_cast<int16_t>(r);
        stack_.cols[top] = static_cast<int16_t>(c);
        stack_.rowSteps[top] = static_cast<int16_t>(rowStep);
        stack_.colSteps[top] = static_cast<int16_t>(colStep);
    }

    // Follows one chain from the seed. Once the tip has no candidate left,
    // the exhausted flag pops every remaining entry without looking at its
    // other neighbours: backtracking happens only at the tip, on purpose.
    void trace(int32_t seedRow, int32_t seedCol)
    {
        stack_.size = 0;
        bool exhausted = false;
        if (edges_[index(seedRow, seedCol)] == 1) {
            return;
        }
        int32_t r = seedRow, c = seedCol;
        for (;;) {
            // Visit (r, c), not yet flagged.
            edges_[index(r, c)] = 1;
            int32_t rowStep, colStep;
            bool moved = false;
            if (findNeighbour(r, c, -1, rowStep, colStep)) {
                push(r, c, rowStep, colStep);
                exhausted = false;
                r += rowStep;
                c += colStep;
                moved = true;
            }
            if (!moved && stack_.size == 0) {
                return; // the seed itself has no neighbour
            }
            // Visit the neighbour, or resume the top entry while the visited
            // pixel is already flagged or leads nowhere.
            while (!moved || edges_[index(r, c)] == 1) {
                moved = false;
                if (stack_.size == 0) {
                    return;
                }
                const ptrdiff_t top = stack_.size - 1;
                const int32_t topRow = stack_.rows[top], topCol = stack_.cols[top];
                if (!exhausted && findNeighbour(topRow, topCol, positionOf(stack_.rowSteps[top], stack_.colSteps[top]),
                                                rowStep, colStep)) {
                    stack_.rowSteps[top] = static_cast<int16_t>(rowStep);
                    stack_.colSteps[top] = static_cast<int16_t>(colStep);
                    exhausted = false;
                    r = topRow + rowStep;
                    c = topCol + colStep;
                    moved = true;
                } else {
                    --stack_.size;
                    exhausted = true;
                }
            }
        }
    }

    const T *magnitude_;
    uint8_t *edges_;
    TraceStack stack_;
    Thresholds<T> thresholds_;
    int32_t numRows_, numCols_;
};

} // namespace ornex::detection
