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

// Costs of a run of candidates one below the other, `packs` packs of them:
// lane k holds the candidate k rows below runTop, with its own sum in
// exactly the order of candidateCost.
template <class Cost, int packs, class T>
void runCosts(const T *block, const T *runTop, const BlockGeometry &geometry, T *costs)
{
    using P = Pack<T>;
    P sums[packs];
    for (P &sum : sums) {
        sum = P::broadcast(T(0));
    }
    for (int32_t col = 0; col < geometry.blockCols; ++col) {
        const T *blockColumn = block + col * geometry.blockStride;
        const T *regionColumn = runTop + col * geometry.regionStride;
        for (int32_t row = 0; row < geometry.blockRows; ++row) {
            const P blockValue = P::broadcast(blockColumn[row]);
#pragma GCC unroll 8
            for (int k = 0; k < packs; ++k) {
                sums[k] = sums[k] + Cost::term(P::load(regionColumn + row + k * P::width), blockValue);
            }
        }
    }
    for (int k = 0; k < packs; ++k) {
        sums[k].store(costs + k * P::width);
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

// All candidates of one column offset, top to bottom, in runs of `packs`
// packs. The last run is moved up to end at the last candidate; candidates it
// shares with the previous run are computed again but offered only once.
// Columns too short for one pack are scanned one candidate at a time.
template <class Cost, int packs, class T>
void scanCandidateColumn(const T *block, const T *region, const BlockGeometry &geometry, int32_t col,
                         int32_t candidateRows, BestCandidate<T> &best)
{
    constexpr int32_t runLength = packs * Pack<T>::width;
    if constexpr (packs > 1) {
        if (candidateRows < runLength) {
            scanCandidateColumn<Cost, packs / 2>(block, region, geometry, col, candidateRows, best);
            return;
        }
    } else if (candidateRows < runLength) {
        for (int32_t row = 0; row < candidateRows; ++row) {
            best.offer(candidateCost<Cost>(block, candidateAt(region, geometry, row, col), geometry), col, row);
        }
        return;
    }
    T costs[runLength];
    for (int32_t first = 0; first < candidateRows; first += runLength) {
        const int32_t runStart = std::min(first, candidateRows - runLength);
        runCosts<Cost, packs>(block, candidateAt(region, geometry, runStart, col), geometry, costs);
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
    if (candidateCols < 1) {
        return;
    }
    BestCandidate<T> best{ElementTraits<T>::largest, bestCol, bestRow};
    for (int32_t col = 0; col < candidateCols; ++col) {
        scanCandidateColumn<Cost, 4>(block, region, geometry, col, candidateRows, best);
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
