#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "draw/edge_table.hpp"
#include "draw/record_merge_sort.hpp"

namespace {

using ornex::draw::sortRecordWords;

// Word 0 holds a float, word 3 the record's index. NaN on either side counts
// as smaller, so the comparison is no order and the result shows every
// decision of the sort.
int compareWithNaN(const void *first, const void *second)
{
    float a, b;
    std::memcpy(&a, first, sizeof a);
    std::memcpy(&b, second, sizeof b);
    if (a > b) return 1;
    if (!(a == b)) return -1;
    const int32_t i = static_cast<const int32_t *>(first)[3], j = static_cast<const int32_t *>(second)[3];
    return (i > j) - (i < j);
}

std::vector<int32_t> records(size_t count, std::mt19937 &rng)
{
    std::vector<int32_t> r(count * sortRecordWords, 0);
    for (size_t k = 0; k < count; ++k) {
        const float value = rng() % 4 == 0 ? NAN : float(rng() % 5);
        std::memcpy(&r[k * sortRecordWords], &value, sizeof value);
        r[k * sortRecordWords + 3] = int32_t(k);
    }
    return r;
}

TEST(RecordMergeSort, InPlaceMergeMakesTheSameDecisions)
{
    std::mt19937 rng(7);
    for (size_t count = 0; count < 120; ++count) {
        std::vector<int32_t> withScratch = records(count, rng), inPlace = withScratch;
        std::vector<int32_t> scratch(withScratch.size() + 1);
        ornex::draw::mergeSortRecords(withScratch.data(), count, compareWithNaN, scratch.data());
        ornex::draw::mergeSortRecords(inPlace.data(), count, compareWithNaN, nullptr);
        EXPECT_EQ(withScratch, inPlace) << count;
    }
}

TEST(RecordMergeSort, OrderIsGlibcQsorts)
{
#ifndef __GLIBC__
    GTEST_SKIP() << "the reference order is glibc's qsort";
#endif
    std::mt19937 rng(11);
    for (size_t count = 1; count < 300; count += 1 + count / 8) {
        std::vector<int32_t> ours = records(count, rng), glibcs = ours, scratch(ours.size() + 1);
        ornex::draw::mergeSortRecords(ours.data(), count, compareWithNaN, scratch.data());
        std::qsort(glibcs.data(), count, sortRecordWords * sizeof(int32_t), compareWithNaN);
        EXPECT_EQ(ours, glibcs) << count;
    }
}

} // namespace
