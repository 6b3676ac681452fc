#pragma once

#include <cstddef>
#include <cstdint>

namespace ornex::draw {

using RecordComparison = int (*)(const void *, const void *);

// Sorts `count` sort records (sortRecordWords words each) by merging halves,
// the left half of count / 2 records first; in each merge the left run's
// record goes first unless it compares greater. This is the order glibc's
// qsort gives, kept on every platform so that a comparison that is not a
// total order (NaN) still gives the same result everywhere. `scratch` holds
// `count` records; null merges in place with the same comparisons.
void mergeSortRecords(int32_t *records, size_t count, RecordComparison compare, int32_t *scratch);

} // namespace ornex::draw
