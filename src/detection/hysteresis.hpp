#pragma once

#include <algorithm>
#include <bit>
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

// The hysteresis works on the edge map itself, one byte per pixel: before
// tracing it holds which thresholds each magnitude reaches, and the tracing
// adds the edge flag in the lowest bit.
constexpr uint8_t edgeFlag = 1, reachesLow = 2, reachesHigh = 4;

// The threshold bits of `count` magnitudes. The comparisons are false for
// values that are not a number.
template <class T>
void classify(const T *magnitude, uint8_t *map, ptrdiff_t count, Thresholds<T> thresholds)
{
    const T low = thresholds.low, high = thresholds.high;
    for (ptrdiff_t i = 0; i < count; ++i) {
        const T value = magnitude[i];
        map[i] = static_cast<uint8_t>((value >= low ? reachesLow : 0) | (value >= high ? reachesHigh : 0));
    }
}

// Rows 0..B-1 and M-B..M-1, columns 0..B-1 and N-B-1..N-1 cleared (the
// right-hand band is one column wider than the left, even with B = 0, on
// purpose); elsewhere only the edge flag is kept.
inline void finishEdgeMap(uint8_t *edges, int32_t numRows, int32_t numCols, int32_t border)
{
    const int32_t topRows = std::min(border, numRows);
    const int32_t bottomFirst = std::max(numRows - border, topRows);
    for (int32_t c = 0; c < numCols; ++c) {
        uint8_t *column = edges + static_cast<ptrdiff_t>(c) * numRows;
        if (c < border || c >= numCols - border - 1) {
            std::memset(column, 0, static_cast<size_t>(numRows));
        } else {
            std::memset(column, 0, static_cast<size_t>(topRows));
            for (int32_t r = topRows; r < bottomFirst; ++r) {
                column[r] = column[r] & edgeFlag;
            }
            std::memset(column + bottomFirst, 0, static_cast<size_t>(numRows - bottomFirst));
        }
    }
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

// Bit r set where byte r of a column's `height` (at most 64) bytes has the
// `reachesHigh` bit, eight bytes at a time: a word with none is skipped, and
// a word with some gathers bit 2 of each byte into one byte by a product
// whose partial products never overlap.
inline uint64_t seedMask(const uint8_t *column, int32_t height)
{
    constexpr uint64_t lowBits = 0x0101010101010101u, gather = 0x0102040810204080u;
    uint64_t mask = 0;
    int32_t r = 0;
    for (; r + 8 <= height; r += 8) {
        uint64_t word;
        std::memcpy(&word, column + r, sizeof word);
        word = (word >> 2) & lowBits;
        if (word != 0) {
            mask |= ((word * gather) >> 56) << r;
        }
    }
    for (; r < height; ++r) {
        mask |= uint64_t((column[r] & reachesHigh) != 0) << r;
    }
    return mask;
}

// Transposes a 64x64 bit matrix held as 64 words: bit j of word i moves to
// bit i of word j. Halves, then quarters and so on, trade places.
inline void transposeBits(uint64_t *words)
{
    uint64_t keep = 0x00000000FFFFFFFFu;
    for (int32_t half = 32; half != 0; half >>= 1, keep ^= keep << half) {
        for (int32_t k = 0; k < 64; k = ((k | half) + 1) & ~half) {
            const uint64_t swapped = ((words[k] >> half) ^ words[k | half]) & keep;
            words[k] ^= swapped << half;
            words[k | half] ^= swapped;
        }
    }
}

class Hysteresis {
public:
    Hysteresis(uint8_t *edges, TraceStack stack, int32_t numRows, int32_t numCols)
        : edges_(edges), stack_(stack), numRows_(numRows), numCols_(numCols)
    {
        for (int32_t position = 0; position < 9; ++position) {
            neighbourOffsets_[position] = (position / 3 - 1) + static_cast<ptrdiff_t>(position % 3 - 1) * numRows;
        }
    }

    // Seeds are visited in row order. Reading a column-major map row by row
    // is slow, so for each strip of 64 rows the seed rows of every column are
    // first gathered into one 64-bit mask per column, and each block of 64
    // such masks is transposed into one mask of seed columns per row.
    void run()
    {
        if (numCols_ > maskColumns) {
            for (int32_t r = 0; r < numRows_; ++r) {
                for (int32_t c = 0; c < numCols_; ++c) {
                    if (edges_[index(r, c)] & reachesHigh) {
                        trace(r, c);
                    }
                }
            }
            return;
        }
        uint64_t masks[maskColumns];
        const int32_t blocks = (numCols_ + 63) / 64;
        for (int32_t top = 0; top < numRows_; top += 64) {
            const int32_t height = std::min(64, numRows_ - top);
            uint64_t any = 0;
            for (int32_t c = 0; c < numCols_; ++c) {
                masks[c] = seedMask(edges_ + index(top, c), height);
                any |= masks[c];
            }
            if (any == 0) {
                continue;
            }
            for (int32_t c = numCols_; c < blocks * 64; ++c) {
                masks[c] = 0;
            }
            for (int32_t block = 0; block < blocks; ++block) {
                transposeBits(masks + 64 * block);
            }
            // Now bit j of masks[64 * block + r] marks a seed at row top + r,
            // column 64 * block + j.
            for (int32_t r = 0; r < height; ++r) {
                for (int32_t block = 0; block < blocks; ++block) {
                    for (uint64_t seeds = masks[64 * block + r]; seeds != 0; seeds &= seeds - 1) {
                        trace(top + r, 64 * block + std::countr_zero(seeds));
                    }
                }
            }
        }
    }

private:
    static constexpr int32_t maskColumns = 8192;

    ptrdiff_t index(int32_t r, int32_t c) const { return r + static_cast<ptrdiff_t>(c) * numRows_; }
    bool flagged(int32_t r, int32_t c) const { return (edges_[index(r, c)] & edgeFlag) != 0; }

    // The first neighbour after position `after` whose magnitude reaches the
    // low threshold, edge-flagged or not; false when there is none.
    bool findNeighbour(int32_t r, int32_t c, int32_t after, int32_t &rowStep, int32_t &colStep) const
    {
        if (r > 0 && r < numRows_ - 1 && c > 0 && c < numCols_ - 1) {
            // Inside the image every position exists.
            const uint8_t *centre = edges_ + index(r, c);
            for (int32_t position = after + 1; position < 9; ++position) {
                if (position != 4 && (centre[neighbourOffsets_[position]] & reachesLow)) {
                    rowStep = position / 3 - 1;
                    colStep = position % 3 - 1;
                    return true;
                }
            }
            return false;
        }
        for (int32_t position = after + 1; position < 9; ++position) {
            if (position == 4) {
                continue;
            }
            const int32_t dr = position / 3 - 1, dc = position % 3 - 1;
            const int32_t nr = r + dr, nc = c + dc;
            if (nr < 0 || nr >= numRows_ || nc < 0 || nc >= numCols_) {
                continue;
            }
            if (edges_[index(nr, nc)] & reachesLow) {
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
        if (flagged(seedRow, seedCol)) {
            return;
        }
        int32_t r = seedRow, c = seedCol;
        for (;;) {
            // Visit (r, c), not yet flagged.
            edges_[index(r, c)] |= edgeFlag;
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
            while (!moved || flagged(r, c)) {
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

    uint8_t *edges_;
    TraceStack stack_;
    int32_t numRows_, numCols_;
    ptrdiff_t neighbourOffsets_[9]; // of each position from the centre
};

} // namespace ornex::detection
