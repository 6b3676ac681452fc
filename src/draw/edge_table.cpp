#include "ornex_rt.h"

#include <cmath>
#include <utility>

#include "draw/edge_table.hpp"
#include "frame/element_traits.hpp"
#include "frame/rounding.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {

void createEdgesTable(const int32_t *vertices, int32_t numValues, int32_t *workTable, int32_t *sortedTable,
                      int32_t *sortRecords, const int32_t *fieldOffsets, bool wantNormalWeight)
{
    const int32_t numEdges = numValues / 2;
    for (int32_t edge = 0; edge < numEdges; ++edge) {
        const int32_t next = edge + 1 < numEdges ? edge + 1 : 0;
        int32_t startRow = vertices[2 * edge];
        int32_t startCol = vertices[2 * edge + 1];
        int32_t endRow = vertices[2 * next];
        int32_t endCol = vertices[2 * next + 1];
        // Equal columns count as running backwards: the second vertex starts.
        if (!(startCol < endCol)) {
            std::swap(startRow, endRow);
            std::swap(startCol, endCol);
        }
        const int32_t rowDelta = wrapSub(endRow, startRow);
        const int32_t scanLength = wrapSub(endCol, startCol);
        workTable[edge] = startCol;
        workTable[numEdges + edge] = endCol;
        workTable[fieldOffsets[currentRowField] + edge] = startRow;
        workTable[fieldOffsets[rowDeltaField] + edge] = rowDelta;
        workTable[fieldOffsets[scanLengthField] + edge] = scanLength;
        // A zero-length edge leaves its row step as the buffer held it.
        if (scanLength > 0) {
            workTable[fieldOffsets[rowStepField] + edge] = wrapDiv(wrapAbs(rowDelta), scanLength);
        }
        workTable[fieldOffsets[errorTermField] + edge] = 0;
        if (wantNormalWeight) {
            // The sum of squares wraps in 32 bits for edges longer than about
            // 46,000 pixels; the root of a wrapped negative sum is not a number.
            const int32_t squaredLength = wrapAdd(wrapMul(rowDelta, rowDelta), wrapMul(scanLength, scanLength));
            workTable[fieldOffsets[normalWeightField] + edge] =
                truncateToInt32(double(scanLength) * 1024.0 / std::sqrt(double(squaredLength)));
        }
    }

    sortRows(workTable, numEdges, ORNEX_TYPE_INT32, sortRecords);

    for (int32_t rank = 0; rank < numEdges; ++rank) {
        const int32_t source = sortRecords[rank * sortRecordWords + rowIndexWord];
        for (int32_t field = 0; field < edgeFieldCount; ++field) {
            sortedTable[field * numEdges + rank] = workTable[field * numEdges + source];
        }
    }
}

} // namespace ornex::draw

using namespace ornex::draw;

extern "C" {

void ORNEX_CreateEdgesTable(const int32_t *vertices, int32_t numValues, int32_t *workTable,
                                      int32_t *sortedTable, int32_t *sortRecords, const int32_t *fieldOffsets,
                                      uint8_t wantNormalWeight)
{
    createEdgesTable(vertices, numValues, workTable, sortedTable, sortRecords, fieldOffsets, wantNormalWeight != 0);
}

void ORNEX_CreateEdgesTable_Int(const int32_t *vertices, int32_t numValues, int32_t *workTable,
                                          int32_t *sortedTable, int32_t *sortRecords, const int32_t *fieldOffsets,
                                          uint8_t wantNormalWeight)
{
    createEdgesTable(vertices, numValues, workTable, sortedTable, sortRecords, fieldOffsets, wantNormalWeight != 0);
}

uint8_t ORNEX_DetectIfCornerPixel_FillPoly(const int32_t *vertices, int32_t numVertices, int32_t row,
                                                     int32_t column)
{
    for (int32_t k = 0; k < numVertices; ++k) {
        if (vertices[2 * k] == row && vertices[2 * k + 1] == column) {
            return 1;
        }
    }
    return 0;
}

} // extern "C"
