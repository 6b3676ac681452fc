#include "ornex_rt.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "frame/element_traits.hpp"
#include "frame/packed.hpp"

namespace ornex {
namespace {

// Cost terms, for single elements and for packs of them. Each term and each
// partial sum is formed in the element type, so the single members round
// after every operation.
struct AbsoluteDifference {
    template <class V>
    static V term(V regionValue, V blockValue)
    {
        return absoluteValue(regionValue - blockValue);
    }
};

struct SquaredDifference {
    template <class V>
    static V term(V regionValue, V blockValue)
    {
        V difference = regionValue - blockValue;
        return difference * difference;
    }
};

struct BlockGeometry {
    ptrdiff_t blockStride;
    ptrdiff_t regionStride;
    int32_t blockCols;
    int32_t blockRows;
};

// Cost of the block laid over the region at `candidate`: column by column,
// top row down within a column.
template <class Cost, class T>
T candidateCost(const T *block, const T *candidate, const BlockGeometry &geometry)
{
    T sum = 0;
    for (int32_t col = 0; col < geometry.blockCols; ++col) {
        const T *blockColumn = block + col * geometry.blockStride;
        const T *regionColumn = candidate + col * geometry.regionStride;
        for (int32_t row = 0; row < geometry.blockRows; ++row) {
            sum = sum + Cost::term(regionColumn[row], blockColumn[row]);
        }
    }
    return sum;
}

template <class T>
const T *candidateAt(const T *region, const BlockGeometry &geometry, int32_t row, int32_t col)
{
    return region + row + col * geometry.regionStride;
}

// Costs of the nine candidates of a three-step grid computed side by side,
// each lane keeping its own sum in exactly the order of candidateCost.
template <class Cost, class T>
void gridCosts(const T *block, const T *const grid[9], const BlockGeometry &geometry, T costs[9])
{
    T sums[9] = {};
    for (int32_t col = 0; col < geometry.blockCols; ++col) {
        const T *blockColumn = block + col * geometry.blockStride;
        const ptrdiff_t columnOffset = col * geometry.regionStride;
        for (int32_t row = 0; row < geometry.blockRows; ++row) {
            const T blockValue = blockColumn[row];
            for (int k = 0; k < 9; ++k) {
                sums[k] = sums[k] + Cost::term(grid[k][columnOffset + row], blockValue);
            }
        }
    }
    std::memcpy(costs, sums, sizeof sums);
}

// Costs of a tile of candidates: `tileCols` neighbouring candidate columns,
// each with a run of `packs` packs of candidates one below the other. The
// lane for candidate (row r, column c) of the tile keeps its own sum in
// exactly the order of candidateCost. costs[c * costStride + r] receives it.
template <class Cost, int tileCols, int packs, class T>
void tileCosts(const T *block, const T *tileTop, const BlockGeometry &geometry, T *costs, ptrdiff_t costStride)
{
    using P = Pack<T>;
    P sums[tileCols][packs];
    for (auto &column : sums) {
        for (P &sum : column) {
            sum = P::broadcast(T(0));
        }
    }
    for (int32_t col = 0; col < geometry.blockCols; ++col) {
        const T *blockColumn = block + col * geometry.blockStride;
        const T *regionColumn = tileTop + col * geometry.regionStride;
        for (int32_t row = 0; row < geometry.blockRows; ++row) {
            const P blockValue = P::broadcast(blockColumn[row]);
#pragma GCC unroll 8
            for (int c = 0; c < tileCols; ++c) {
#pragma GCC unroll 8
                for (int k = 0; k < packs; ++k) {
                    const T *values = regionColumn + c * geometry.regionStride + row + k * P::width;
                    sums[c][k] = sums[c][k] + Cost::term(P::load(values), blockValue);
                }
            }
        }
    }
    for (int c = 0; c < tileCols; ++c) {
        for (int k = 0; k < packs; ++k) {
            sums[c][k].store(costs + c * costStride + k * P::width);
        }
    }
}

template <class T>
struct BestCandidate {
    T cost = ElementTraits<T>::largest;
    int32_t *col;
    int32_t *row;

    void offer(T candidateCost, int32_t candidateCol, int32_t candidateRow)
    {
        if (candidateCost < cost) {
            cost = candidateCost;
            *col = candidateCol;
            *row = candidateRow;
        }
    }
};

// Runs of candidates are `packs` packs long; a column of candidates is
// covered by consecutive runs, the last one moved up to end at the last
// candidate (its overlap is simply computed twice). Tiles span `tileCols`
// candidate columns; their costs are kept for up to tileRows candidate rows
// and offered column by column once the whole tile is scored.
constexpr int32_t tileRows = 128;
constexpr int tileCols = 4;
constexpr int widestRunPacks = 2;

template <class Cost, int tileWidth, int packs, class T>
void scanColumnTile(const T *block, const T *region, const BlockGeometry &geometry, int32_t firstCol,
                    int32_t candidateRows, BestCandidate<T> &best)
{
    constexpr int32_t runLength = packs * Pack<T>::width;
    if constexpr (packs > 1) {
        if (candidateRows < runLength) {
            scanColumnTile<Cost, tileWidth, packs / 2>(block, region, geometry, firstCol, candidateRows, best);
            return;
        }
    }
    T costs[tileWidth][tileRows];
    if (candidateRows < runLength) {
        for (int c = 0; c < tileWidth; ++c) {
            for (int32_t row = 0; row < candidateRows; ++row) {
                costs[c][row] = candidateCost<Cost>(block, candidateAt(region, geometry, row, firstCol + c), geometry);
            }
        }
    } else {
        for (int32_t first = 0; first < candidateRows; first += runLength) {
            const int32_t runStart = std::min(first, candidateRows - runLength);
            tileCosts<Cost, tileWidth, packs>(block, candidateAt(region, geometry, runStart, firstCol), geometry,
                                              &costs[0][runStart], tileRows);
        }
    }
    for (int c = 0; c < tileWidth; ++c) {
        for (int32_t row = 0; row < candidateRows; ++row) {
            best.offer(costs[c][row], firstCol + c, row);
        }
    }
}

// Columns taller than a tile: one column at a time, each run offered as soon
// as it is scored.
template <class Cost, class T>
void scanTallCandidateColumn(const T *block, const T *region, const BlockGeometry &geometry, int32_t col,
                             int32_t candidateRows, BestCandidate<T> &best)
{
    constexpr int32_t runLength = widestRunPacks * Pack<T>::width;
    T costs[runLength];
    for (int32_t first = 0; first < candidateRows; first += runLength) {
        const int32_t runStart = std::min(first, candidateRows - runLength);
        tileCosts<Cost, 1, widestRunPacks>(block, candidateAt(region, geometry, runStart, col), geometry, costs,
                                           runLength);
        for (int32_t row = first; row < runStart + runLength; ++row) {
            best.offer(costs[row - runStart], col, row);
        }
    }
}

template <class Cost, class T>
void fullSearch(const T *block, const T *region, const BlockGeometry &geometry, int32_t regionCols,
                int32_t regionRows, int32_t *bestCol, int32_t *bestRow)
{
    *bestCol = 0;
    *bestRow = 0;
    const int32_t candidateRows = regionRows - geometry.blockRows + 1;
    const int32_t candidateCols = regionCols - geometry.blockCols + 1;
    if (candidateCols < 1 || candidateRows < 1) {
        return;
    }
    BestCandidate<T> best{ElementTraits<T>::largest, bestCol, bestRow};
    int32_t col = 0;
    if (candidateRows <= tileRows) {
        for (; col + tileCols <= candidateCols; col += tileCols) {
            scanColumnTile<Cost, tileCols, widestRunPacks>(block, region, geometry, col, candidateRows, best);
        }
        for (; col < candidateCols; ++col) {
            scanColumnTile<Cost, 1, widestRunPacks>(block, region, geometry, col, candidateRows, best);
        }
    } else {
        for (; col < candidateCols; ++col) {
            scanTallCandidateColumn<Cost>(block, region, geometry, col, candidateRows, best);
        }
    }
}

// Three offsets of one axis of a round's grid: moved inward at the low edge,
// clamped (and so possibly repeated) at the high edge.
struct GridAxis {
    int32_t offsets[3];

    GridAxis(int32_t centre, int32_t step, int32_t candidates)
    {
        offsets[0] = std::max(0, centre - step);
        offsets[1] = std::min(offsets[0] + step, candidates - 1);
        offsets[2] = std::min(offsets[1] + step, candidates - 1);
    }
};

// The step shrinks by one per round rather than halving, and the grid is
// moved inward rather than cut at the top and left edges: both on purpose.
template <class Cost, class T>
void threeStepSearch(const T *block, const T *region, const BlockGeometry &geometry, int32_t regionCols,
                     int32_t regionRows, int32_t *bestCol, int32_t *bestRow)
{
    const int32_t candidateRows = regionRows - geometry.blockRows + 1;
    const int32_t candidateCols = regionCols - geometry.blockCols + 1;
    int32_t centreRow = candidateRows / 2;
    int32_t centreCol = candidateCols / 2;
    int32_t step = std::min(candidateRows / 2, candidateCols / 2) / 2 + 1;
    if (step < 1) {
        return;
    }
    bool scored = false;
    T bestCost = 0;
    for (; step >= 1; --step) {
        const GridAxis cols(centreCol, step, candidateCols);
        const GridAxis rows(centreRow, step, candidateRows);
        // Columns outer, rows inner: the order ties are settled in.
        const T *grid[9];
        for (int k = 0; k < 9; ++k) {
            grid[k] = candidateAt(region, geometry, rows.offsets[k % 3], cols.offsets[k / 3]);
        }
        T costs[9];
        gridCosts<Cost>(block, grid, geometry, costs);
        for (int k = 0; k < 9; ++k) {
            if (!scored || costs[k] < bestCost) {
                scored = true;
                bestCost = costs[k];
                *bestCol = cols.offsets[k / 3];
                *bestRow = rows.offsets[k % 3];
            }
        }
        centreRow = *bestRow;
        centreCol = *bestCol;
    }
}

template <class Cost, class T>
void fullSearchEntry(const T *block, const T *region, int32_t blockStride, int32_t regionStride, int32_t blockCols,
                     int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow)
{
    const BlockGeometry geometry{blockStride, regionStride, blockCols, blockRows};
    fullSearch<Cost>(block, region, geometry, regionCols, regionRows, bestCol, bestRow);
}

template <class Cost, class T>
void threeStepSearchEntry(const T *block, const T *region, int32_t blockStride, int32_t regionStride,
                          int32_t blockCols, int32_t blockRows, int32_t regionCols, int32_t regionRows,
                          int32_t *bestCol, int32_t *bestRow)
{
    const BlockGeometry geometry{blockStride, regionStride, blockCols, blockRows};
    threeStepSearch<Cost>(block, region, geometry, regionCols, regionRows, bestCol, bestRow);
}

} // namespace
} // namespace ornex

using ornex::AbsoluteDifference;
using ornex::SquaredDifference;

#define ORNEX_SEARCH_ARGS(T)                                                                                       \
    const T *block, const T *region, int32_t blockStride, int32_t regionStride, int32_t blockCols,              \
        int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow
#define ORNEX_SEARCH_PASS block, region, blockStride, regionStride, blockCols, blockRows, regionCols, regionRows, bestCol, bestRow

extern "C" {
void ORNEX_SearchMethod_Full_MAD_D(ORNEX_SEARCH_ARGS(double)) { ornex::fullSearchEntry<AbsoluteDifference>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_Full_MAD_R(ORNEX_SEARCH_ARGS(float)) { ornex::fullSearchEntry<AbsoluteDifference>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_Full_MSE_D(ORNEX_SEARCH_ARGS(double)) { ornex::fullSearchEntry<SquaredDifference>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_Full_MSE_R(ORNEX_SEARCH_ARGS(float)) { ornex::fullSearchEntry<SquaredDifference>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MAD_D(ORNEX_SEARCH_ARGS(double)) { ornex::threeStepSearchEntry<AbsoluteDifference>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MAD_R(ORNEX_SEARCH_ARGS(float)) { ornex::threeStepSearchEntry<AbsoluteDifference>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MSE_D(ORNEX_SEARCH_ARGS(double)) { ornex::threeStepSearchEntry<SquaredDifference>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MSE_R(ORNEX_SEARCH_ARGS(float)) { ornex::threeStepSearchEntry<SquaredDifference>(ORNEX_SEARCH_PASS); }
}
