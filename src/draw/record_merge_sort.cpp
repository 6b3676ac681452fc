#include "draw/record_merge_sort.hpp"

#include <cstring>

#include "draw/edge_table.hpp"

namespace ornex::draw {
namespace {

constexpr size_t recordBytes = sortRecordWords * sizeof(int32_t);

int32_t *record(int32_t *records, size_t k) { return records + k * sortRecordWords; }

// Merges the sorted runs [0, leftCount) and [leftCount, count); the right
// run's rest is already in place when the left one runs out.
void mergeThroughScratch(int32_t *records, size_t leftCount, size_t count, RecordComparison compare,
                         int32_t *scratch)
{
    size_t left = 0;
    size_t right = leftCount;
    size_t merged = 0;
    while (left < leftCount && right < count) {
        const size_t taken = compare(record(records, left), record(records, right)) <= 0 ? left++ : right++;
        std::memcpy(record(scratch, merged++), record(records, taken), recordBytes);
    }
    std::memcpy(record(scratch, merged), record(records, left), (leftCount - left) * recordBytes);
    merged += leftCount - left;
    std::memcpy(records, scratch, merged * recordBytes);
}

// The same comparisons; a record taken from the right run moves in front of
// the left run's rest.
void mergeInPlace(int32_t *records, size_t leftCount, size_t count, RecordComparison compare)
{
    size_t left = 0;
    size_t right = leftCount;
    while (left < right && right < count) {
        if (compare(record(records, left), record(records, right)) > 0) {
            int32_t taken[sortRecordWords];
            std::memcpy(taken, record(records, right), recordBytes);
            std::memmove(record(records, left + 1), record(records, left), (right - left) * recordBytes);
            std::memcpy(record(records, left), taken, recordBytes);
            ++right;
        }
        ++left;
    }
}

} // namespace

void mergeSortRecords(int32_t *records, size_t count, RecordComparison compare, int32_t *scratch)
{
    if (count <= 1) {
        return;
    }
    const size_t leftCount = count / 2;
    mergeSortRecords(records, leftCount, compare, scratch);
    mergeSortRecords(record(records, leftCount), count - leftCount, compare, scratch);
    if (scratch != nullptr) {
        mergeThroughScratch(records, leftCount, count, compare, scratch);
    } else {
        mergeInPlace(records, leftCount, count, compare);
    }
}

} // namespace ornex::draw
