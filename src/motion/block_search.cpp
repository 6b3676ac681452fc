#include "ornex_rt.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "frame/element_traits.hpp"

namespace ornex {
namespace {

// Cost terms. Each term and each partial sum is formed in T, so the single
// members round after every operation.
struct AbsoluteDifference {
    template <class T>
    static T term(T regionValue, T blockValue)
    {
        return std::fabs(regionValue - blockValue);
    }
};

struct SquaredDifference {
    template <class T>
    static T term(T regionValue, T blockValue)
    {
        T difference = regionValue - blockValue;
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
    T bestCost = ElementTraits<T>::largest;
    for (int32_t col = 0; col < candidateCols; ++col) {
        for (int32_t row = 0; row < candidateRows; ++row) {
            T cost = candidateCost<Cost>(block, candidateAt(region, geometry, row, col), geometry);
            if (cost < bestCost) {
                bestCost = cost;
                *bestCol = col;
                *bestRow = row;
            }
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
        for (int32_t col : cols.offsets) {
            for (int32_t row : rows.offsets) {
                T cost = candidateCost<Cost>(block, candidateAt(region, geometry, row, col), geometry);
                if (!scored || cost < bestCost) {
                    scored = true;
                    bestCost = cost;
                    *bestCol = col;
                    *bestRow = row;
                }
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
