#pragma once

#include <cstdint>

namespace ornex::draw {

// Fields of one edge record; field f of edge e lives at f*numEdges + e.
enum EdgeField : int32_t {
    scanStartField = 0,
    scanEndField = 1,
    currentRowField = 2,
    rowDeltaField = 3,
    scanLengthField = 4,
    rowStepField = 5,
    errorTermField = 6,
    normalWeightField = 7,
    edgeFieldCount = 8,
};

// Words of one sort record; the record stays 24 bytes on every build.
enum SortRecordWord : int32_t {
    comparedFieldsWord = 0,
    fieldStrideWord = 1,
    tieBreakWord = 2,
    rowIndexWord = 3,
    rowPointerWord = 4,
    sortRecordWords = 6,
};

void createEdgesTable(const int32_t *vertices, int32_t numValues, int32_t *workTable, int32_t *sortedTable,
                      int32_t *sortRecords, const int32_t *fieldOffsets, bool wantNormalWeight);

void sortRows(const void *matrix, int32_t numRows, int32_t typeCode, int32_t *sortRecords);

} // namespace ornex::draw
