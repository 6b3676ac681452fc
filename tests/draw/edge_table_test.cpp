#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <tuple>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int32_t sentinel = -777;

struct EdgeTable {
    int32_t numEdges;
    std::vector<int32_t> work;
    std::vector<int32_t> sorted;
    std::vector<int32_t> records;

    // Field f of sorted edge e.
    int32_t at(int32_t f, int32_t e) const { return sorted[f * numEdges + e]; }
};

EdgeTable buildTable(const std::vector<int32_t> &vertices, bool normalWeight = false)
{
    const int32_t numValues = static_cast<int32_t>(vertices.size());
    const int32_t n = numValues / 2;
    EdgeTable table{n, std::vector<int32_t>(8 * n + 1, sentinel), std::vector<int32_t>(8 * n + 1, sentinel),
                    std::vector<int32_t>(6 * n + 1, sentinel)};
    std::vector<int32_t> offsets(8);
    for (int32_t f = 0; f < 8; ++f) {
        offsets[f] = f * n;
    }
    ORNEX_CreateEdgesTable(vertices.data(), numValues, table.work.data(), table.sorted.data(), table.records.data(),
                           offsets.data(), normalWeight ? 1 : 0);
    // Nothing is written past the sizes the caller gives.
    EXPECT_EQ(table.work.back(), sentinel);
    EXPECT_EQ(table.sorted.back(), sentinel);
    EXPECT_EQ(table.records.back(), sentinel);
    return table;
}

void expectEdge(const EdgeTable &table, int32_t e, std::vector<int32_t> fields)
{
    for (size_t f = 0; f < fields.size(); ++f) {
        EXPECT_EQ(table.at(static_cast<int32_t>(f), e), fields[f]) << "edge " << e << " field " << f;
    }
}

TEST(EdgeTable, TriangleFieldsOrientedAndSortedByStartEndRow)
{
    // A(2,1) B(10,5) C(4,9), as (row, column).
    // AB: starts at A, columns 1..5, row delta 8, length 4, step 8/4 = 2.
    // BC: starts at B, columns 5..9, delta -6, length 4, step 6/4 = 1.
    // CA: starts at A (smaller column), columns 1..9, delta 2, length 8, step 0.
    // Order by (start, end, row): AB (1,5,2), CA (1,9,2), BC (5,9,10).
    const EdgeTable table = buildTable({2, 1, 10, 5, 4, 9});
    expectEdge(table, 0, {1, 5, 2, 8, 4, 2, 0, sentinel});
    expectEdge(table, 1, {1, 9, 2, 2, 8, 0, 0, sentinel});
    expectEdge(table, 2, {5, 9, 10, -6, 4, 1, 0, sentinel});
}

TEST(EdgeTable, NormalWeightIsLengthOverEdgeLengthInQ10)
{
    // 4*1024/sqrt(80) = 457.9, 8*1024/sqrt(68) = 993.4, 4*1024/sqrt(52) = 568.0.
    const EdgeTable triangle = buildTable({2, 1, 10, 5, 4, 9}, true);
    EXPECT_EQ(triangle.at(7, 0), 457);
    EXPECT_EQ(triangle.at(7, 1), 993);
    EXPECT_EQ(triangle.at(7, 2), 568);

    // Along the scan direction the weight is exactly one; at 45 degrees
    // 1024/sqrt(2) = 724.08.
    const EdgeTable flat = buildTable({5, 0, 5, 10}, true);
    EXPECT_EQ(flat.at(7, 0), 1024);
    EXPECT_EQ(flat.at(7, 1), 1024);
    const EdgeTable diagonal = buildTable({0, 0, 10, 10}, true);
    EXPECT_EQ(diagonal.at(7, 0), 724);
}

TEST(EdgeTable, EqualColumnsStartAtTheSecondVertexAndLeaveTheStepUnwritten)
{
    // Edge 0 runs (1,5) -> (7,5): the second vertex starts, delta 1 - 7.
    // Edge 1 runs back and starts at (1,5), delta 6. Both have length 0.
    const EdgeTable table = buildTable({1, 5, 7, 5});
    expectEdge(table, 0, {5, 5, 1, 6, 0, sentinel, 0});
    expectEdge(table, 1, {5, 5, 7, -6, 0, sentinel, 0});
}

TEST(EdgeTable, OneVertexIsOneEmptyEdgeAndNoVertexWritesNothing)
{
    const EdgeTable single = buildTable({3, 4});
    expectEdge(single, 0, {4, 4, 3, 0, 0, sentinel, 0, sentinel});
    // An odd trailing value is ignored.
    const EdgeTable odd = buildTable({3, 4, 99});
    expectEdge(odd, 0, {4, 4, 3, 0, 0, sentinel, 0, sentinel});

    std::vector<int32_t> work(4, sentinel), sorted(4, sentinel), records(4, sentinel), offsets(8, 0);
    const int32_t vertex[2] = {1, 2};
    ORNEX_CreateEdgesTable_Int(vertex, 1, work.data(), sorted.data(), records.data(), offsets.data(), 1);
    ORNEX_CreateEdgesTable(vertex, 0, work.data(), sorted.data(), records.data(), offsets.data(), 1);
    for (const auto &buffer : {work, sorted, records}) {
        EXPECT_TRUE(std::all_of(buffer.begin(), buffer.end(), [](int32_t v) { return v == sentinel; }));
    }
}

TEST(EdgeTable, BothExportsBuildTheSameTable)
{
    const std::vector<int32_t> star = {0, 10, 30, 16, 8, 0, 8, 20, 30, 4};
    std::vector<int32_t> offsets = {0, 5, 10, 15, 20, 25, 30, 35};
    std::vector<int32_t> work(40, 0), sortedA(40, 0), sortedB(40, 0), records(30, 0);
    ORNEX_CreateEdgesTable(star.data(), 10, work.data(), sortedA.data(), records.data(), offsets.data(), 1);
    ORNEX_CreateEdgesTable_Int(star.data(), 10, work.data(), sortedB.data(), records.data(), offsets.data(), 1);
    EXPECT_EQ(sortedA, sortedB);
}

// The sorted position k of each row, as word 3 of record k says.
std::vector<int32_t> sortedIndices(const void *matrix, int32_t numRows, int32_t typeCode)
{
    std::vector<int32_t> records(6 * numRows + 2, sentinel);
    ORNEX_SortRows(matrix, numRows, typeCode, records.data() + 1);
    // Records are 24 bytes on every build: the words around them survive.
    EXPECT_EQ(records.front(), sentinel);
    EXPECT_EQ(records.back(), sentinel);
    std::vector<int32_t> order;
    for (int32_t k = 0; k < numRows; ++k) {
        order.push_back(records[1 + 6 * k + 3]);
    }
    return order;
}

// A column-major numRows x 4 matrix; keys are the first three columns.
template <class T>
std::vector<int32_t> stableOrder(const std::vector<T> &matrix, int32_t numRows)
{
    std::vector<int32_t> order(numRows);
    std::iota(order.begin(), order.end(), 0);
    auto key = [&](int32_t r) { return std::make_tuple(matrix[r], matrix[numRows + r], matrix[2 * numRows + r]); };
    std::stable_sort(order.begin(), order.end(), [&](int32_t a, int32_t b) { return key(a) < key(b); });
    return order;
}

template <class T>
void expectSortedLikeStableSort(int32_t typeCode, std::vector<T> values)
{
    const int32_t numRows = 60;
    std::mt19937 rng(typeCode + 11);
    std::vector<T> matrix(4 * numRows);
    for (auto &element : matrix) {
        element = values[rng() % values.size()];
    }
    EXPECT_EQ(sortedIndices(matrix.data(), numRows, typeCode), stableOrder(matrix, numRows)) << "type " << typeCode;
}

TEST(SortRows, EveryTypeSortsByThreeFieldsKeepingEqualRowsInOrder)
{
    // Few distinct values, so that many rows tie in all three keys and the
    // fourth field (which must not take part) differs.
    expectSortedLikeStableSort<double>(0, {-1.5, 0.25, 3.0});
    expectSortedLikeStableSort<float>(1, {-1.5f, 0.25f, 3.0f});
    expectSortedLikeStableSort<int8_t>(2, {-100, 3, 90});
    expectSortedLikeStableSort<uint8_t>(3, {3, 90, 200});
    expectSortedLikeStableSort<int16_t>(4, {-30000, 3, 30000});
    expectSortedLikeStableSort<uint16_t>(5, {3, 30000, 60000});
    expectSortedLikeStableSort<int32_t>(6, {INT32_MIN, -3, 2000000000});
    expectSortedLikeStableSort<uint32_t>(7, {3u, 2000000000u, 4000000000u});
}

TEST(SortRows, RecordsNameTheRowsAndUnknownTypesLeaveThemInOrder)
{
    const std::vector<int32_t> matrix = {5, 1, 5, 0, 0, 0, 0, 0, 0};
    std::vector<int32_t> records(18, sentinel);
    ORNEX_SortRows(matrix.data(), 3, 6, records.data());
    EXPECT_EQ(records[3], 1);
    EXPECT_EQ(records[9], 0);
    EXPECT_EQ(records[15], 2);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(records[6 * k], 3) << "compared fields";
        EXPECT_EQ(records[6 * k + 1], 3) << "field stride";
    }
    EXPECT_EQ(sortedIndices(matrix.data(), 3, 9), (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(sortedIndices(nullptr, 0, 6), std::vector<int32_t>{});
}

TEST(CornerPixel, FindsOnlyExactVertices)
{
    const int32_t vertices[] = {3, 4, 7, 1, -2, 9};
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(vertices, 3, 7, 1), 1);
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(vertices, 3, -2, 9), 1);
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(vertices, 3, 1, 7), 0);
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(vertices, 2, -2, 9), 0);
    EXPECT_EQ(ORNEX_DetectIfCornerPixel_FillPoly(nullptr, 0, 0, 0), 0);
}

} // namespace
