#include "ornex_rt.h"

#include <cstring>

#include "draw/edge_table.hpp"
#include "draw/record_merge_sort.hpp"
#include "frame/element_traits.hpp"
#include "frame/heap_scratch.hpp"

namespace ornex::draw {
namespace {

// Every row sorts by its first three fields; equal rows keep their order.
static_assert(sizeof(void *) <= 2 * sizeof(int32_t), "a row pointer must fit in words 4 and 5");

constexpr int32_t comparedFields = 3;
constexpr int32_t tieBreakOnRowIndex = 1;

const void *rowPointer(const int32_t *record)
{
    const void *row;
    std::memcpy(&row, record + rowPointerWord, sizeof row);
    return row;
}

int compareRowIndices(const int32_t *first, const int32_t *second)
{
    const int32_t a = first[rowIndexWord];
    const int32_t b = second[rowIndexWord];
    return a > b ? 1 : (a < b ? -1 : 0);
}

// Lexicographic over the compared fields; a pair that is unordered (a NaN
// on either side) counts as smaller, like a strict "less".
template <class T>
int compareRows(const void *firstRecord, const void *secondRecord)
{
    const auto *first = static_cast<const int32_t *>(firstRecord);
    const auto *second = static_cast<const int32_t *>(secondRecord);
    const T *firstRow = static_cast<const T *>(rowPointer(first));
    const T *secondRow = static_cast<const T *>(rowPointer(second));
    const int32_t firstCount = first[comparedFieldsWord];
    const int32_t secondCount = second[comparedFieldsWord];
    const int32_t shared = firstCount < secondCount ? firstCount : secondCount;
    for (int32_t field = 0; field < shared; ++field) {
        const T a = firstRow[field * first[fieldStrideWord]];
        const T b = secondRow[field * second[fieldStrideWord]];
        if (a > b) {
            return 1;
        }
        if (!(a == b)) {
            return -1;
        }
    }
    if (firstCount != secondCount) {
        return firstCount > secondCount ? 1 : -1;
    }
    return first[tieBreakWord] == tieBreakOnRowIndex ? compareRowIndices(first, second) : 0;
}

struct RowType {
    int32_t elementSize;
    RecordComparison compare;
};

RowType rowType(int32_t typeCode)
{
    switch (typeCode) {
    case ORNEX_TYPE_DOUBLE: return {8, compareRows<double>};
    case ORNEX_TYPE_SINGLE: return {4, compareRows<float>};
    case ORNEX_TYPE_INT8: return {1, compareRows<int8_t>};
    case ORNEX_TYPE_UINT8: return {1, compareRows<uint8_t>};
    case ORNEX_TYPE_INT16: return {2, compareRows<int16_t>};
    case ORNEX_TYPE_UINT16: return {2, compareRows<uint16_t>};
    case ORNEX_TYPE_INT32: return {4, compareRows<int32_t>};
    case ORNEX_TYPE_UINT32: return {4, compareRows<uint32_t>};
    default: return {0, nullptr};
    }
}

} // namespace

void sortRows(const void *matrix, int32_t numRows, int32_t typeCode, int32_t *sortRecords)
{
    const RowType type = rowType(typeCode);
    for (int32_t row = 0; row < numRows; ++row) {
        int32_t *record = sortRecords + row * sortRecordWords;
        const void *first = matrix == nullptr ? nullptr : static_cast<const char *>(matrix) + row * type.elementSize;
        record[comparedFieldsWord] = comparedFields;
        record[fieldStrideWord] = numRows;
        record[tieBreakWord] = tieBreakOnRowIndex;
        record[rowIndexWord] = row;
        record[rowPointerWord] = 0;
        record[rowPointerWord + 1] = 0;
        std::memcpy(record + rowPointerWord, &first, sizeof first);
    }
    if (type.compare == nullptr || numRows <= 1) {
        return;
    }
    constexpr int32_t stackRecords = 42;
    int32_t onStack[stackRecords * sortRecordWords];
    HeapScratch<int32_t> onHeap;
    int32_t *scratch = onStack;
    if (numRows > stackRecords) {
        onHeap = takeHeapScratch<int32_t>(static_cast<size_t>(numRows) * sortRecordWords * sizeof(int32_t));
        scratch = onHeap.get();
    }
    mergeSortRecords(sortRecords, static_cast<size_t>(numRows), type.compare, scratch);
}

} // namespace ornex::draw

extern "C" void ORNEX_SortRows(const void *matrix, int32_t numRows, int32_t typeCode, int32_t *sortRecords)
{
    ornex::draw::sortRows(matrix, numRows, typeCode, sortRecords);
}
