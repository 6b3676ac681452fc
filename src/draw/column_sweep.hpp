#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "draw/edge_table.hpp"
#include "draw/edge_steps.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {

// No per-edge data beside the eight fields.
struct NoCompanion {};

// The active edges of a column sweep: up to numEdges records with the eight
// edge fields, stored field by field with stride numEdges, kept in order of
// current row. A sweep may keep data of its own per edge in a companion
// array that every move of a record carries along.
template <class Companion = NoCompanion>
class ActiveEdges {
public:
    ActiveEdges(int32_t *table, int32_t stride, Companion *companion = nullptr, int32_t count = 0)
        : table_(table), stride_(stride), companion_(companion), count_(count)
    {
    }

    int32_t count() const { return count_; }
    int32_t field(int32_t f, int32_t edge) const { return table_[f * stride_ + edge]; }
    int32_t &field(int32_t f, int32_t edge) { return table_[f * stride_ + edge]; }
    const int32_t *currentRows() const { return table_ + currentRowField * stride_; }

    void removeEndingAt(int32_t scan)
    {
        int32_t kept = 0;
        while (kept < count_ && field(scanEndField, kept) != scan) {
            ++kept;
        }
        for (int32_t edge = kept; edge < count_; ++edge) {
            if (field(scanEndField, edge) == scan) {
                continue;
            }
            copyEdge(edge, kept);
            ++kept;
        }
        count_ = kept;
    }

    // After every active edge with the same current row.
    void insert(const int32_t *sortedTable, int32_t sortedStride, int32_t sortedEdge)
    {
        const int32_t row = sortedTable[currentRowField * sortedStride + sortedEdge];
        int32_t position = 0;
        while (position < count_ && field(currentRowField, position) <= row) {
            ++position;
        }
        insertAt(position, sortedTable, sortedStride, sortedEdge);
    }

    void insertAt(int32_t position, const int32_t *sortedTable, int32_t sortedStride, int32_t sortedEdge)
    {
        for (int32_t edge = count_; edge > position; --edge) {
            copyEdge(edge - 1, edge);
        }
        for (int32_t f = 0; f < edgeFieldCount; ++f) {
            field(f, position) = sortedTable[f * sortedStride + sortedEdge];
        }
        ++count_;
    }

    Companion &companion(int32_t edge) { return companion_[edge]; }
    const Companion &companion(int32_t edge) const { return companion_[edge]; }

    // Moves edge `from` up to position `to` (to < from), shifting the edges
    // between down by one.
    void moveUp(int32_t from, int32_t to)
    {
        int32_t moved[edgeFieldCount];
        for (int32_t f = 0; f < edgeFieldCount; ++f) {
            moved[f] = field(f, from);
        }
        Companion movedCompanion{};
        if constexpr (hasCompanion) {
            movedCompanion = companion_[from];
        }
        for (int32_t edge = from; edge > to; --edge) {
            copyEdge(edge - 1, edge);
        }
        for (int32_t f = 0; f < edgeFieldCount; ++f) {
            field(f, to) = moved[f];
        }
        if constexpr (hasCompanion) {
            companion_[to] = movedCompanion;
        }
    }

    // One column on: the current row moves to the nearer integer of the
    // exact crossing, halves going toward larger rows.
    void advance()
    {
        for (int32_t edge = 0; edge < count_; ++edge) {
            const int32_t rowDelta = field(rowDeltaField, edge);
            const int32_t scanLength = field(scanLengthField, edge);
            const int32_t rowStep = field(rowStepField, edge);
            int32_t error = field(errorTermField, edge);
            int32_t row = field(currentRowField, edge);
            const int32_t stepped = wrapMul(rowStep, scanLength);
            // Written as selections: which way the error carries depends on
            // the data and would defeat branch prediction.
            const bool rising = rowDelta > 0;
            error = wrapAdd(error, rising ? wrapSub(rowDelta, stepped) : wrapAdd(stepped, rowDelta));
            row = rising ? wrapAdd(row, rowStep) : wrapSub(row, rowStep);
            const int32_t twiceError = wrapAdd(error, error);
            const bool carries = rising ? twiceError >= scanLength : twiceError < wrapNeg(scanLength);
            const int32_t carry = carries ? (rising ? 1 : -1) : 0;
            row = wrapAdd(row, carry);
            error = wrapSub(error, wrapMul(carry, scanLength));
            field(errorTermField, edge) = error;
            field(currentRowField, edge) = row;
        }
    }

    void advanceBy(uint64_t steps)
    {
        for (int32_t edge = 0; edge < count_; ++edge) {
            advanceEdgeBy(field(rowDeltaField, edge), field(scanLengthField, edge), field(rowStepField, edge),
                          field(currentRowField, edge), field(errorTermField, edge), steps);
        }
    }

    // The column before which neither an insertion (at nextStart), nor a
    // removal, nor the last-column rule (at finalEnd) happens, capped at
    // limit: every column from scan + 1 up to it but one is walked alike.
    int32_t nextEventColumn(int32_t scan, int32_t limit, int64_t nextStart, int64_t finalEnd) const
    {
        int64_t event = limit;
        if (nextStart > scan) {
            event = std::min(event, nextStart);
        }
        if (finalEnd > scan) {
            event = std::min(event, finalEnd);
        }
        for (int32_t edge = 0; edge < count_; ++edge) {
            event = std::min<int64_t>(event, field(scanEndField, edge));
        }
        return int32_t(event);
    }

    void resortByRow()
    {
        resortBy([this](int32_t edge) { return field(currentRowField, edge); });
    }

    // Insertion by moving each edge down before the first edge above it
    // whose key is strictly larger, from the bottom of the list up.
    template <class Key>
    void resortBy(const Key &key)
    {
        if (ascendingBy(key)) {
            return;
        }
        int32_t position = count_ - 1;
        while (position >= 1) {
            const int32_t value = key(position);
            int32_t target = 0;
            while (target < position && key(target) <= value) {
                ++target;
            }
            if (target == position) {
                --position;
                continue;
            }
            moveUp(position, target);
        }
    }

    void extendEndingAt(int32_t scan)
    {
        for (int32_t edge = 0; edge < count_; ++edge) {
            if (field(scanEndField, edge) == scan) {
                field(scanEndField, edge) = wrapAdd(scan, 1);
            }
        }
    }

private:
    // One edge record at a time: a field-by-field shift of the whole list
    // would become eight tiny block moves.
    void copyEdge(int32_t from, int32_t to)
    {
        for (int32_t f = 0; f < edgeFieldCount; ++f) {
            field(f, to) = field(f, from);
        }
        if constexpr (hasCompanion) {
            companion_[to] = companion_[from];
        }
    }

    static constexpr bool hasCompanion = !std::is_same_v<Companion, NoCompanion>;

    template <class Key>
    bool ascendingBy(const Key &key) const
    {
        int32_t previous = count_ > 0 ? key(0) : 0;
        for (int32_t edge = 1; edge < count_; ++edge) {
            const int32_t current = key(edge);
            if (previous > current) {
                return false;
            }
            previous = current;
        }
        return true;
    }

    int32_t *table_;
    int32_t stride_;
    Companion *companion_;
    int32_t count_;
};

// Steps the plain sweep's active edges (count of them, fields at stride in
// table) over the columns from scan up to the next event or firstColumn
// when there are several, re-sorting by row (rows that tie may settle in
// any order: only the rows are seen), and returns the column reached; scan
// when the next column is an event. Out of line, so that the hot sweep
// keeps its list in registers.
[[gnu::noinline]] inline int32_t skipTowards(int32_t *table, int32_t stride, int32_t count, int32_t scan,
                                             int32_t firstColumn, int64_t nextStart, int64_t finalEnd)
{
    ActiveEdges<> active(table, stride, nullptr, count);
    const int32_t target = active.nextEventColumn(scan, firstColumn, nextStart, finalEnd);
    if (int64_t(target) - scan <= 1) {
        return scan;
    }
    active.advanceBy(uint64_t(int64_t(target) - scan));
    active.resortByRow();
    return target;
}

// Builds the sorted edge table of a polygon with at least one edge into the
// second half of the edge buffer, the first half serving as the builder's
// work table, and returns where it starts.
inline int32_t *buildSortedEdgeTable(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices,
                                     int32_t *sortRecords, bool wantNormalWeight)
{
    const int32_t numEdges = numValues / 2;
    int32_t *sortedTable = edgeBuffer + edgeFieldCount * numEdges;
    int32_t fieldOffsets[edgeFieldCount];
    for (int32_t f = 0; f < edgeFieldCount; ++f) {
        fieldOffsets[f] = f * numEdges;
    }
    createEdgesTable(vertices, numValues, edgeBuffer, sortedTable, sortRecords, fieldOffsets, wantNormalWeight);
    return sortedTable;
}

// Scan-converts a closed integer polygon column by column. The edge buffer
// holds 16 values per edge: the active list (also the table builder's work
// table) and then the sorted edge table. For each column with active edges,
// visitColumn(column, numActive, currentRows) sees the rows of the active
// edges in ascending order; only columns firstColumn .. lastColumn are
// visited. Columns before firstColumn are stepped over in closed form, from
// one insertion or removal to the next, and the sweep ends after
// lastColumn: the rows seen are those of walking every column.
template <class VisitColumn>
void sweepPolygonColumns(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords,
                         int32_t firstColumn, int32_t lastColumn, VisitColumn &&visitColumn)
{
    const int32_t numEdges = numValues / 2;
    if (numEdges <= 0 || firstColumn > lastColumn) {
        return;
    }
    const int32_t *sortedTable = buildSortedEdgeTable(edgeBuffer, numValues, vertices, sortRecords, false);

    int32_t scan = sortedTable[scanStartField * numEdges];
    // Deliberately the end of the last edge in sorted order (read as element
    // numValues - 1 of the table), not the largest end: only edges ending
    // there get their last column drawn.
    const int32_t finalEnd = sortedTable[numValues - 1];
    ActiveEdges active(edgeBuffer, numEdges);
    int32_t next = 0;
    for (;;) {
        if (active.count() > 0) {
            if (scan == finalEnd) {
                active.extendEndingAt(finalEnd);
            }
            active.removeEndingAt(scan);
        }
        while (next < numEdges && sortedTable[scanStartField * numEdges + next] == scan) {
            if (sortedTable[scanEndField * numEdges + next] != scan) {
                active.insert(sortedTable, numEdges, next);
            }
            ++next;
        }
        if (active.count() == 0) {
            return;
        }
        if (scan < firstColumn) [[unlikely]] {
            const int64_t nextStart =
                next < numEdges ? sortedTable[scanStartField * numEdges + next] : int64_t(firstColumn);
            const int32_t target =
                skipTowards(edgeBuffer, numEdges, active.count(), scan, firstColumn, nextStart, finalEnd);
            if (target != scan) {
                scan = target;
                continue;
            }
        }
        // Visited even left of firstColumn when not stepped over: the visit
        // draws nothing there.
        visitColumn(scan, active.count(), active.currentRows());
        if (scan >= lastColumn) [[unlikely]] {
            return;
        }
        active.advance();
        active.resortByRow();
        scan = wrapAdd(scan, 1);
    }
}

} // namespace ornex::draw
