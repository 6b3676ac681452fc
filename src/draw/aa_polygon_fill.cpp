#include "ornex_rt.h"

#include <algorithm>
#include <type_traits>

#include "draw/column_sweep.hpp"
#include "draw/polygon_blend.hpp"
#include "frame/blending.hpp"
#include "frame/clip_rectangle.hpp"
#include "frame/element_traits.hpp"
#include "frame/rounding.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

// Coverage sums: the image's own precision with 1 for full, or Q10 in 32
// bits with 1024 for full. Weight tables and opacities have the same type
// as the floating coverages, int16 Q10 otherwise.
template <class T>
struct FloatingCoverageSum {
    using Value = T;
    static constexpr T full = T(1);
    static T add(T sum, T term) { return sum + term; }
    static T average(T left, T right) { return (left + right) * T(0.5); }
};

struct FixedCoverageSum {
    using Value = int32_t;
    static constexpr int32_t full = 1024;
    static int32_t add(int32_t sum, int32_t term) { return wrapAdd(sum, term); }
    static int32_t average(int32_t left, int32_t right) { return wrapAdd(left, right) >> 1; }
};

template <class T>
using CoverageSumOf = std::conditional_t<std::is_floating_point_v<T>, FloatingCoverageSum<T>, FixedCoverageSum>;

// An active edge as one sample line sees it: the Q10 row of its crossing
// and its normal weight.
struct SampledEdge {
    int32_t key;
    int32_t weight;
};

// Q10 row where an edge crosses the column it has reached, shifted by
// quarterColumns / 4 of a column.
inline int32_t crossingKeyOf(int32_t row, int32_t error, int32_t quarterColumns, int32_t rowDelta, int32_t scanLength)
{
    const int32_t along = wrapAdd(wrapMul(4, error), wrapMul(quarterColumns, rowDelta));
    return wrapAdd(wrapMul(row, 1024), wrapDiv(wrapMul(along, 256), scanLength));
}

// The active list as the scan-line function reads it: field f of edge k at
// f*fieldStride + k.
struct ActiveList {
    const int32_t *fields;
    int32_t count;
    int32_t fieldStride;

    int32_t field(int32_t f, int32_t edge) const { return fields[f * fieldStride + edge]; }

    // Q10 row where the edge crosses the column it has reached, shifted by
    // quarterColumns / 4 of a column.
    int32_t crossingKey(int32_t edge, int32_t quarterColumns) const
    {
        return crossingKeyOf(field(currentRowField, edge), field(errorTermField, edge), quarterColumns,
                             field(rowDeltaField, edge), field(scanLengthField, edge));
    }

    SampledEdge sampled(int32_t edge, int32_t quarterColumns) const
    {
        // A weight of 0 (steeper than 1024 rows per column) would spread one
        // crossing over the whole column.
        return {crossingKey(edge, quarterColumns), std::clamp(field(normalWeightField, edge), 1, 1024)};
    }
};

constexpr int32_t noCoverageIndex = 0;
constexpr int32_t fullCoverageIndex = 48;

// Q10 row offset from an edge's crossing times its weight, truncated toward
// zero (not shifted): the perpendicular distance.
inline int32_t distanceOfRowOffset(int32_t rowOffset, int32_t weight)
{
    return rowOffset * weight / 1024;
}

// Q10 perpendicular distance from the edge's line to the centre of row
// `row`, positive below the crossing. The clamp changes no index; it keeps
// the product within 32 bits.
inline int32_t perpendicularDistance(int32_t row, SampledEdge edge)
{
    const int32_t rowOffset = std::clamp(wrapSub(wrapMul(row, 1024), edge.key), -(1 << 21), (1 << 21) - 1);
    return distanceOfRowOffset(rowOffset, edge.weight);
}

// Table index of a signed distance (positive on the polygon's side), in
// 1/16 pixel with halves away from zero.
inline int32_t distanceIndex(int32_t insideDistance)
{
    return std::clamp(24 + divideHalfAway(insideDistance, 64), noCoverageIndex, fullCoverageIndex);
}

// The smallest row offset v from the crossing key (Q10) at which the
// perpendicular distance reaches threshold, in closed form: trunc(v*n/1024) >= T holds from v = ceil(1024T/n) for T >= 1
// and from floor(1024(T - 1)/n) + 1 otherwise, v = row*1024 - key. The clamp
// on v never matters: thresholds lie within +-1504, reached well inside it.
inline int32_t firstOffsetReaching(int32_t threshold, int32_t weight)
{
    return threshold >= 1 ? (1024 * threshold + weight - 1) / weight
                          : 1 - (1024 * (1 - threshold) + weight - 1) / weight;
}

// The first row whose offset from the crossing key is at least firstOffset.
inline int32_t firstRowFrom(int32_t key, int32_t firstOffset)
{
    const int64_t offset = int64_t(key) + firstOffset;
    return static_cast<int32_t>(std::clamp<int64_t>(-((-offset) >> 10), INT32_MIN, INT32_MAX));
}

// The smallest inside distance whose index is at least `index`.
constexpr int32_t firstDistanceOfIndex(int32_t index)
{
    return index > 24 ? 64 * (index - 24) - 32 : -64 * (24 - index) - 31;
}

// Inside distances from which an edge can add to a span and from which it
// counts as full. Read off the table: a run of entries from index 1 that
// add nothing (none above 0 while no entry exceeds full) acts as index 0, a
// run up to index 47 that equals full acts as index 48; with the box
// profile that narrows the partly covered band from 3 pixels to 1.
struct BandLimits {
    int32_t reaching;
    int32_t full;
};

template <class T>
BandLimits bandLimitsOf(const OpacityOf<T> *weightTable)
{
    using Value = typename CoverageSumOf<T>::Value;
    constexpr Value full = CoverageSumOf<T>::full;
    bool bounded = true;
    for (int32_t i = 1; i < fullCoverageIndex; ++i) {
        bounded = bounded && Value(weightTable[i]) <= full;
    }
    int32_t lastEmpty = noCoverageIndex;
    while (bounded && lastEmpty + 1 < fullCoverageIndex && Value(weightTable[lastEmpty + 1]) <= Value(0)) {
        ++lastEmpty;
    }
    int32_t firstFull = fullCoverageIndex;
    while (firstFull - 1 > noCoverageIndex && Value(weightTable[firstFull - 1]) == full) {
        --firstFull;
    }
    return {firstDistanceOfIndex(lastEmpty + 1), firstDistanceOfIndex(firstFull)};
}

// What the sweep keeps per active edge beside its fields: the crossing key
// at the column the edge has reached, its clamped weight, and the row
// offsets from the key where it starts to reach and to be full as the upper
// edge of a span, and where it stops being full and reaching as the lower.
struct EdgeCache {
    int32_t key;
    int32_t weight;
    int32_t upperReach, upperFull, lowerFull, lowerReach;

    EdgeCache() = default;
    [[gnu::always_inline]] EdgeCache(int32_t crossingKey, int32_t clampedWeight, const BandLimits &limits)
        : key(crossingKey), weight(clampedWeight), upperReach(firstOffsetReaching(limits.reaching, weight)),
          upperFull(firstOffsetReaching(limits.full, weight)),
          lowerFull(firstOffsetReaching(wrapNeg(limits.full) + 1, weight)),
          lowerReach(firstOffsetReaching(wrapNeg(limits.reaching) + 1, weight))
    {
    }
};

// The two edges of one even-odd span, with the rows where both can add
// (reach) and where both are full.
struct EdgePair {
    int32_t sample;
    SampledEdge upper;
    SampledEdge lower;
    int32_t reachFirst, fullFirst, fullLast, reachLast;

    EdgePair() = default;
    EdgePair(int32_t sampleIndex, SampledEdge upperEdge, SampledEdge lowerEdge, const BandLimits &limits)
        : EdgePair(sampleIndex, EdgeCache(upperEdge.key, upperEdge.weight, limits),
                   EdgeCache(lowerEdge.key, lowerEdge.weight, limits))
    {
    }

    [[gnu::always_inline]] EdgePair(int32_t sampleIndex, const EdgeCache &upperEdge, const EdgeCache &lowerEdge)
        : sample(sampleIndex), upper{upperEdge.key, upperEdge.weight}, lower{lowerEdge.key, lowerEdge.weight},
          reachFirst(firstRowFrom(upper.key, upperEdge.upperReach)),
          fullFirst(firstRowFrom(upper.key, upperEdge.upperFull)),
          fullLast(wrapSub(firstRowFrom(lower.key, lowerEdge.lowerFull), 1)),
          reachLast(wrapSub(firstRowFrom(lower.key, lowerEdge.lowerReach), 1))
    {
    }

    bool reaches(int32_t row) const { return row >= reachFirst && row <= reachLast; }
    bool fullAt(int32_t row) const { return row >= fullFirst && row <= fullLast; }
};

template <class T>
class ColumnCoverage {
public:
    using Sum = CoverageSumOf<T>;
    using Value = typename Sum::Value;

    explicit ColumnCoverage(const OpacityOf<T> *weightTable) : table_(weightTable) {}

    // max(0, w(upper) + w(lower) - full), nothing when either index is 0.
    Value pairContribution(int32_t row, SampledEdge upper, SampledEdge lower) const
    {
        const int32_t upperIndex = distanceIndex(perpendicularDistance(row, upper));
        if (upperIndex == noCoverageIndex) {
            return Value(0);
        }
        const int32_t lowerIndex = distanceIndex(wrapNeg(perpendicularDistance(row, lower)));
        if (lowerIndex == noCoverageIndex) {
            return Value(0);
        }
        const Value overlap = (weight(upperIndex) + weight(lowerIndex)) - Sum::full;
        return overlap > Value(0) ? overlap : Value(0);
    }

    // pairContribution for a pair in reach, reading the table only for the
    // edge that is not full at the row: a full edge's entry is full.
    [[gnu::always_inline]] Value partialContribution(int32_t row, const EdgePair &pair) const
    {
        const Value upperWeight = row >= pair.fullFirst ? Sum::full : bandWeight(row, pair.upper, false);
        const Value lowerWeight = row <= pair.fullLast ? Sum::full : bandWeight(row, pair.lower, true);
        const Value overlap = (upperWeight + lowerWeight) - Sum::full;
        return overlap > Value(0) ? overlap : Value(0);
    }

    // partialContribution for rows where it is known which edges are full.
    template <bool upperPartial, bool lowerPartial>
    Value knownContribution(int32_t row, const EdgePair &pair) const
    {
        const Value upperWeight = upperPartial ? bandWeight(row, pair.upper, false) : Value(Sum::full);
        const Value lowerWeight = lowerPartial ? bandWeight(row, pair.lower, true) : Value(Sum::full);
        const Value overlap = (upperWeight + lowerWeight) - Sum::full;
        return overlap > Value(0) ? overlap : Value(0);
    }

    // Spans of each sample add, each sample capped at full; a vertex column
    // averages its left and right samples. forEachContribution(visit) calls
    // visit(sample, contribution) for the pairs in list order.
    template <class ForEachContribution>
    Value rowCoverage(bool vertexColumn, const ForEachContribution &forEachContribution) const
    {
        Value sums[2] = {Value(0), Value(0)};
        forEachContribution([&](int32_t sample, Value contribution) {
            sums[sample] = Sum::add(sums[sample], contribution);
        });
        const Value left = sums[0] < Sum::full ? sums[0] : Sum::full;
        if (!vertexColumn) {
            return left;
        }
        const Value right = sums[1] < Sum::full ? sums[1] : Sum::full;
        return Sum::average(left, right);
    }

    // A pair out of reach adds exactly nothing and a pair full at the row
    // exactly full, so neither needs its indices.
    Value cachedRowCoverage(int32_t row, bool vertexColumn, const EdgePair *pairs, int32_t numPairs) const
    {
        return rowCoverage(vertexColumn, [&](const auto &visit) {
            for (int32_t j = 0; j < numPairs; ++j) {
                const EdgePair &pair = pairs[j];
                if (pair.reaches(row)) {
                    visit(pair.sample, pair.fullAt(row) ? Sum::full : partialContribution(row, pair));
                }
            }
        });
    }

private:
    // The table entry of an edge that reaches the row without being full
    // there: its distance lies inside the band limits, so neither the
    // distance clamp nor the index clamp can act.
    Value bandWeight(int32_t row, SampledEdge edge, bool lowerEdge) const
    {
        const int32_t perpendicular = distanceOfRowOffset(wrapSub(wrapMul(row, 1024), edge.key), edge.weight);
        const int32_t inside = lowerEdge ? -perpendicular : perpendicular;
        return Value(table_[24 + divideHalfAway(inside, 64)]);
    }

    Value weight(int32_t index) const { return index == fullCoverageIndex ? Sum::full : Value(table_[index]); }

    const OpacityOf<T> *table_;
};

// Pairs consecutive edges of each sample's list: all edges at the column's
// centre, or, where an edge starts or ends, the edges reaching the left
// half at -1/4 (sample 0) and those reaching the right half at +1/4
// (sample 1).
template <class Visit>
void forEachSpan(const ActiveList &edges, int32_t column, bool vertexColumn, const Visit &visit)
{
    auto pairUp = [&](int32_t sample, int32_t quarterColumns, int32_t excludedEndField) {
        bool pending = false;
        SampledEdge upper{};
        for (int32_t k = 0; k < edges.count; ++k) {
            if (excludedEndField >= 0 && edges.field(excludedEndField, k) == column) {
                continue;
            }
            const SampledEdge edge = edges.sampled(k, quarterColumns);
            if (pending) {
                visit(sample, upper, edge);
            } else {
                upper = edge;
            }
            pending = !pending;
        }
    };
    if (!vertexColumn) {
        pairUp(0, 0, -1);
    } else {
        pairUp(0, -1, scanStartField);
        pairUp(1, 1, scanEndField);
    }
}

bool isVertexColumn(const ActiveList &edges, int32_t column)
{
    for (int32_t k = 0; k < edges.count; ++k) {
        if (edges.field(scanStartField, k) == column || edges.field(scanEndField, k) == column) {
            return true;
        }
    }
    return false;
}

// Spans cached on the stack; a column with more falls back to evaluating
// every row the spans can reach.
constexpr int32_t cachedPairCapacity = 32;

template <class T, class Planes>
class ColumnFill {
public:
    ColumnFill(const Planes &planes, int32_t column, const ClipRectangle &clip, int32_t numRows, const T *fillValue,
               OpacityOf<T> opacity, const OpacityOf<T> *weightTable)
        : planes_(planes), clip_(clip), columnStart_(wrapMul(column, numRows)), fillValue_(fillValue),
          opacity_(opacity), coverage_(weightTable)
    {
    }

    void blendRows(int32_t firstRow, int32_t lastRow, typename ColumnCoverage<T>::Value cov) const
    {
        if (cov != decltype(cov)(0)) {
            blendRun(planes_, fillValue_, wrapAdd(columnStart_, firstRow), scaledOpacity(opacity_, cov), firstRow,
                     lastRow);
        }
    }

    // Rows first .. last of a span alone in its reach, one pixel at a time.
    void blendPartlyCovered(const EdgePair &pair, int32_t first, int32_t last) const
    {
        blendSpanRows(pair, first, last, [&](int32_t row, const ColumnCoverage<T> &coverage, const EdgePair &span) {
            return coverage.partialContribution(row, span);
        });
    }

    // The same for rows where it is known which of the span's edges are
    // partly covered: the others are full there.
    template <bool upperPartial, bool lowerPartial>
    void blendKnown(const EdgePair &pair, int32_t first, int32_t last) const
    {
        blendSpanRows(pair, first, last, [&](int32_t row, const ColumnCoverage<T> &coverage, const EdgePair &span) {
            return coverage.template knownContribution<upperPartial, lowerPartial>(row, span);
        });
    }

    // Spans that no other span's reach overlaps get their coverage from
    // their own pair alone: the others add exactly nothing there.
    bool fillSeparateSpans(const EdgePair *pairs, int32_t numPairs) const
    {
        for (int32_t j = 1; j < numPairs; ++j) {
            if (pairs[j - 1].reachLast >= pairs[j].reachFirst) {
                return false;
            }
        }
        for (int32_t j = 0; j < numPairs; ++j) {
            const EdgePair &pair = pairs[j];
            const int32_t first = std::max(pair.reachFirst, clip_.rowMin);
            const int32_t last = std::min(pair.reachLast, clip_.rowMax);
            const int32_t fullFirst = std::max(pair.fullFirst, first);
            const int32_t fullLast = std::min(pair.fullLast, last);
            if (fullFirst > fullLast) {
                blendPartlyCovered(pair, first, last);
                continue;
            }
            // Above the full rows only the upper edge is partly covered,
            // below them only the lower one.
            if (fullFirst > first) {
                blendKnown<true, false>(pair, first, fullFirst - 1);
            }
            // A lone full span: the capped sum of its one contribution.
            blendRows(fullFirst, fullLast, ColumnCoverage<T>::Sum::full);
            if (fullLast < last) {
                blendKnown<false, true>(pair, fullLast + 1, last);
            }
        }
        return true;
    }

    // Rows between events keep every pair's state (out of reach, partly
    // covered, full): a stretch with no partly covered pair has one
    // coverage and is blended as one run.
    void fillCached(const EdgePair *pairs, int32_t numPairs, bool vertexColumn) const
    {
        if (!vertexColumn && fillSeparateSpans(pairs, numPairs)) {
            return;
        }
        int32_t events[4 * cachedPairCapacity];
        int32_t numEvents = 0;
        for (int32_t j = 0; j < numPairs; ++j) {
            events[numEvents++] = pairs[j].reachFirst;
            events[numEvents++] = pairs[j].fullFirst;
            events[numEvents++] = wrapAdd(pairs[j].fullLast, 1);
            events[numEvents++] = wrapAdd(pairs[j].reachLast, 1);
        }
        for (int32_t e = 1; e < numEvents; ++e) {
            const int32_t event = events[e];
            int32_t k = e;
            for (; k > 0 && events[k - 1] > event; --k) {
                events[k] = events[k - 1];
            }
            events[k] = event;
        }
        for (int32_t e = 0; e + 1 < numEvents; ++e) {
            const int32_t first = std::max(events[e], clip_.rowMin);
            const int32_t last = std::min(wrapSub(events[e + 1], 1), clip_.rowMax);
            if (first > last) {
                continue;
            }
            // The pairs in reach throughout the stretch, in list order: the
            // others add nothing to any of its rows.
            const EdgePair *inReach[cachedPairCapacity];
            int32_t numInReach = 0;
            bool partlyCovered = false;
            for (int32_t j = 0; j < numPairs; ++j) {
                if (pairs[j].reaches(first)) {
                    inReach[numInReach++] = &pairs[j];
                    partlyCovered = partlyCovered || !pairs[j].fullAt(first);
                }
            }
            if (!partlyCovered) {
                blendRows(first, last, coverage_.cachedRowCoverage(first, vertexColumn, pairs, numPairs));
                continue;
            }
            blendRowByRow(first, last, vertexColumn, inReach, numInReach);
        }
    }

    void fillUncached(const ActiveList &edges, int32_t column, bool vertexColumn, const BandLimits &limits) const
    {
        int32_t first = INT32_MAX;
        int32_t last = INT32_MIN;
        forEachSpan(edges, column, vertexColumn, [&](int32_t sample, SampledEdge upper, SampledEdge lower) {
            const EdgePair pair(sample, upper, lower, limits);
            first = std::min(first, pair.reachFirst);
            last = std::max(last, pair.reachLast);
        });
        first = std::max(first, clip_.rowMin);
        last = std::min(last, clip_.rowMax);
        for (int32_t row = first; row <= last; ++row) {
            blendRows(row, row, coverage_.rowCoverage(vertexColumn, [&](const auto &visit) {
                forEachSpan(edges, column, vertexColumn, [&](int32_t sample, SampledEdge upper, SampledEdge lower) {
                    visit(sample, coverage_.pairContribution(row, upper, lower));
                });
            }));
        }
    }

private:
    // Rows first .. last one at a time, each with the coverage of the
    // listed pairs (all of them in reach there).
    void blendRowByRow(int32_t first, int32_t last, bool vertexColumn, const EdgePair *const *inReach,
                       int32_t numInReach) const
    {
        using Sum = typename ColumnCoverage<T>::Sum;
        blendEachRow(first, last, [&](int32_t row, const ColumnCoverage<T> &coverage) {
            return coverage.rowCoverage(vertexColumn, [&](const auto &visit) {
                for (int32_t i = 0; i < numInReach; ++i) {
                    const EdgePair &pair = *inReach[i];
                    visit(pair.sample, pair.fullAt(row) ? Sum::full : coverage.partialContribution(row, pair));
                }
            });
        });
    }

    // Blends rows first .. last with the coverage of one span alone,
    // contribution(row, coverage, span) giving its pair's contribution.
    template <class Contribution>
    void blendSpanRows(const EdgePair &pair, int32_t first, int32_t last, const Contribution &contribution) const
    {
        using Sum = typename ColumnCoverage<T>::Sum;
        const EdgePair span = pair; // a local copy, for the reason blendEachRow gives
        blendEachRow(first, last, [&](int32_t row, const ColumnCoverage<T> &coverage) {
            const auto sum = Sum::add(decltype(Sum::full)(0), contribution(row, coverage, span));
            return sum < Sum::full ? sum : Sum::full;
        });
    }

    // Blends each row of first .. last with the coverage that
    // rowCoverage(row, coverage) gives it. Works on local copies: the stores
    // into the image could otherwise alias every member and force it to be
    // read again at each pixel.
    template <class RowCoverage>
    [[gnu::always_inline]] void blendEachRow(int32_t first, int32_t last, const RowCoverage &rowCoverage) const
    {
        const Planes planes = planes_;
        const ColumnCoverage<T> coverage = coverage_;
        const OpacityOf<T> opacity = opacity_;
        const int32_t columnStart = columnStart_;
        const T *fillValue = fillValue_;
        const int32_t numPlanes = planes.count();
        for (int32_t row = first; row <= last; ++row) {
            const auto cov = rowCoverage(row, coverage);
            if (cov != decltype(cov)(0)) {
                const auto pixelOpacity = scaledOpacity(opacity, cov);
                const int32_t index = wrapAdd(columnStart, row);
                for (int32_t p = 0; p < numPlanes; ++p) {
                    blendPixel(planes.plane(p) + index, fillValue[p], pixelOpacity);
                }
            }
        }
    }

    const Planes &planes_;
    ClipRectangle clip_;
    int32_t columnStart_;
    const T *fillValue_;
    OpacityOf<T> opacity_;
    ColumnCoverage<T> coverage_;
};

template <class T, class Planes>
void fillColumnAntialiased(const Planes &planes, int32_t column, const ClipRectangle &clip, int32_t numRows,
                           const ActiveList &edges, const T *fillValue, OpacityOf<T> opacity,
                           const OpacityOf<T> *weightTable, const BandLimits &limits)
{
    if (!clip.containsColumn(column) || edges.count < 2) {
        return;
    }
    const bool vertexColumn = isVertexColumn(edges, column);
    const ColumnFill<T, Planes> fill(planes, column, clip, numRows, fillValue, opacity, weightTable);
    EdgePair pairs[cachedPairCapacity];
    int32_t numPairs = 0;
    forEachSpan(edges, column, vertexColumn, [&](int32_t sample, SampledEdge upper, SampledEdge lower) {
        if (numPairs < cachedPairCapacity) {
            pairs[numPairs] = EdgePair(sample, upper, lower, limits);
        }
        ++numPairs;
    });
    if (numPairs <= cachedPairCapacity) {
        fill.fillCached(pairs, numPairs, vertexColumn);
    } else {
        fill.fillUncached(edges, column, vertexColumn, limits);
    }
}

// A column without vertices from the cached keys and band offsets: the
// spans are consecutive pairs of the whole list, sampled on the centre line.
template <class T, class Planes>
void fillColumnFromCache(const Planes &planes, int32_t column, const ClipRectangle &clip, int32_t numRows,
                         const ActiveList &edges, const EdgeCache *cache, const T *fillValue, OpacityOf<T> opacity,
                         const OpacityOf<T> *weightTable, const BandLimits &limits)
{
    if (!clip.containsColumn(column) || edges.count < 2) {
        return;
    }
    if (edges.count / 2 > cachedPairCapacity) {
        fillColumnAntialiased(planes, column, clip, numRows, edges, fillValue, opacity, weightTable, limits);
        return;
    }
    const ColumnFill<T, Planes> fill(planes, column, clip, numRows, fillValue, opacity, weightTable);
    EdgePair pairs[cachedPairCapacity];
    if (isVertexColumn(edges, column)) {
        // The spans of the two samples as forEachSpan pairs them. The band
        // offsets depend on the weight alone, so each edge's cached ones
        // serve with its key at the sample.
        int32_t numPairs = 0;
        auto pairUp = [&](int32_t sample, int32_t quarterColumns, int32_t excludedEndField) {
            bool pending = false;
            EdgeCache upper{};
            for (int32_t k = 0; k < edges.count; ++k) {
                if (edges.field(excludedEndField, k) == column) {
                    continue;
                }
                EdgeCache edge = cache[k];
                edge.key = edges.crossingKey(k, quarterColumns);
                if (pending) {
                    if (numPairs < cachedPairCapacity) {
                        pairs[numPairs] = EdgePair(sample, upper, edge);
                    }
                    ++numPairs;
                } else {
                    upper = edge;
                }
                pending = !pending;
            }
        };
        pairUp(0, -1, scanStartField);
        pairUp(1, 1, scanEndField);
        if (numPairs > cachedPairCapacity) {
            fill.fillUncached(edges, column, true, limits);
        } else {
            fill.fillCached(pairs, numPairs, true);
        }
        return;
    }
    const int32_t numPairs = edges.count / 2;
    for (int32_t j = 0; j < numPairs; ++j) {
        pairs[j] = EdgePair(0, cache[2 * j], cache[2 * j + 1]);
    }
    fill.fillCached(pairs, numPairs, false);
}

// Sweeps with a cache of each active edge's key and band offsets when the
// polygon has few enough edges for it to live on the stack.
constexpr int32_t cachedEdgeCapacity = 64;

// Steps the active edges from column scan to a column before target in
// closed form where their crossing keys are all distinct there: the walked
// order, whatever the ties it went through, is then the order of the keys.
// Nothing is inserted or removed on the way. Returns the columns stepped.
inline int64_t jumpToward(ActiveEdges<EdgeCache> &active, int32_t scan, int32_t target)
{
    const int32_t count = active.count();
    int32_t rows[cachedEdgeCapacity], errors[cachedEdgeCapacity], keys[cachedEdgeCapacity];
    int64_t steps = int64_t(target) - scan;
    for (; steps > 1; steps /= 2) {
        for (int32_t k = 0; k < count; ++k) {
            rows[k] = active.field(currentRowField, k);
            errors[k] = active.field(errorTermField, k);
            advanceEdgeBy(active.field(rowDeltaField, k), active.field(scanLengthField, k),
                          active.field(rowStepField, k), rows[k], errors[k], uint64_t(steps));
            keys[k] = crossingKeyOf(rows[k], errors[k], 0, active.field(rowDeltaField, k),
                                    active.field(scanLengthField, k));
        }
        int32_t sortedKeys[cachedEdgeCapacity];
        std::copy(keys, keys + count, sortedKeys);
        std::sort(sortedKeys, sortedKeys + count);
        if (std::adjacent_find(sortedKeys, sortedKeys + count) == sortedKeys + count) {
            break;
        }
    }
    if (steps <= 1) {
        return 0;
    }
    for (int32_t k = 0; k < count; ++k) {
        active.field(currentRowField, k) = rows[k];
        active.field(errorTermField, k) = errors[k];
        active.companion(k).key = keys[k];
    }
    active.resortBy([&](int32_t position) { return active.companion(position).key; });
    return steps;
}


template <class Companion, class T, class Planes>
void sweepAntialiased(int32_t *edgeBuffer, int32_t numEdges, const int32_t *sortedTable, Companion *cache,
                      const Planes &planes, const ClipRectangle &clip, int32_t numRows, const T *fillValue,
                      OpacityOf<T> opacity, const OpacityOf<T> *weightTable, const BandLimits &limits)
{
    constexpr bool cached = std::is_same_v<Companion, EdgeCache>;
    ActiveEdges<Companion> active(edgeBuffer, numEdges, cache);
    auto listOf = [&] { return ActiveList{edgeBuffer, active.count(), numEdges}; };
    auto keyAt = [&](int32_t position) {
        if constexpr (cached) {
            return active.companion(position).key;
        } else {
            return listOf().crossingKey(position, 0);
        }
    };
    int32_t scan = sortedTable[scanStartField * numEdges];
    int32_t next = 0;
    for (;;) {
        for (; next < numEdges && sortedTable[scanStartField * numEdges + next] == scan; ++next) {
            if (sortedTable[scanEndField * numEdges + next] == scan) {
                continue;
            }
            // Before the first edge crossing below the new one, or at the
            // same row with a steeper descent: edges leaving one vertex are
            // then in the order of their rows a quarter column on.
            const int32_t key = wrapMul(sortedTable[currentRowField * numEdges + next], 1024);
            const int32_t rowDelta = sortedTable[rowDeltaField * numEdges + next];
            const int32_t scanLength = sortedTable[scanLengthField * numEdges + next];
            int32_t position = 0;
            for (; position < active.count(); ++position) {
                const int32_t activeKey = keyAt(position);
                if (activeKey > key ||
                    (activeKey == key && wrapMul(active.field(rowDeltaField, position), scanLength) >
                                             wrapMul(rowDelta, active.field(scanLengthField, position)))) {
                    break;
                }
            }
            active.insertAt(position, sortedTable, numEdges, next);
            if constexpr (cached) {
                active.companion(position) =
                    EdgeCache(key, std::clamp(active.field(normalWeightField, position), 1, 1024), limits);
            }
        }
        if (active.count() == 0) {
            return;
        }
        if constexpr (cached) {
            fillColumnFromCache(planes, scan, clip, numRows, listOf(), cache, fillValue, opacity, weightTable,
                                limits);
        } else {
            fillColumnAntialiased(planes, scan, clip, numRows, listOf(), fillValue, opacity, weightTable, limits);
        }
        // Unlike the plain fill, an edge is removed after its last column.
        active.removeEndingAt(scan);
        if (scan >= clip.colMax) {
            return;
        }
        if constexpr (cached) {
            if (scan < clip.colMin && active.count() > 0) {
                const int64_t nextStart =
                    next < numEdges ? sortedTable[scanStartField * numEdges + next] : int64_t(clip.colMin);
                const int32_t target = active.nextEventColumn(scan, clip.colMin, nextStart, INT64_MIN);
                const int64_t jumped = jumpToward(active, scan, target);
                if (jumped > 0) {
                    scan = int32_t(scan + jumped);
                    continue;
                }
            }
        }
        active.advance();
        if constexpr (cached) {
            const ActiveList advanced = listOf();
            for (int32_t k = 0; k < advanced.count; ++k) {
                active.companion(k).key = advanced.crossingKey(k, 0);
            }
        }
        active.resortBy(keyAt);
        scan = wrapAdd(scan, 1);
    }
}

template <class T, class Planes>
void fillPolygonAntialiased(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords,
                            const Planes &planes, const ClipRectangle &clip, int32_t numRows, const T *fillValue,
                            OpacityOf<T> opacity, const OpacityOf<T> *weightTable)
{
    const int32_t numEdges = numValues / 2;
    if (numEdges <= 0) {
        return;
    }
    const int32_t *sortedTable = buildSortedEdgeTable(edgeBuffer, numValues, vertices, sortRecords, true);

    const BandLimits limits = bandLimitsOf<T>(weightTable);
    if (numEdges <= cachedEdgeCapacity) {
        EdgeCache cache[cachedEdgeCapacity];
        sweepAntialiased(edgeBuffer, numEdges, sortedTable, cache, planes, clip, numRows, fillValue, opacity,
                         weightTable, limits);
    } else {
        sweepAntialiased<NoCompanion>(edgeBuffer, numEdges, sortedTable, nullptr, planes, clip, numRows, fillValue,
                                      opacity, weightTable, limits);
    }
}

template <class T, class Raw, class Opacity>
int32_t fillIntensity(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords,
                      Raw *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows,
                      const Raw *fillValue, Opacity opacity, const Opacity *weightTable, int32_t numPlanes,
                      int32_t planeStride)
{
    fillPolygonAntialiased(edgeBuffer, numValues, vertices, sortRecords,
                           stridedPlanes(reinterpret_cast<T *>(image), numPlanes, planeStride),
                           ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows,
                           reinterpret_cast<const T *>(fillValue), opacity, weightTable);
    return 0;
}

template <class T, class Raw, class Opacity>
int32_t fillRgb(int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, Raw *red,
                Raw *green, Raw *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax,
                int32_t numRows, const Raw *fillValue, Opacity opacity, const Opacity *weightTable)
{
    fillPolygonAntialiased(
        edgeBuffer, numValues, vertices, sortRecords,
        rgbPlanes(reinterpret_cast<T *>(red), reinterpret_cast<T *>(green), reinterpret_cast<T *>(blue)),
        ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, reinterpret_cast<const T *>(fillValue), opacity,
        weightTable);
    return 0;
}

template <class T, class Raw, class Opacity>
void scanLineIntensity(Raw *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax,
                       int32_t numRows, int32_t numActive, const int32_t *activeEdges, const Raw *fillValue,
                       Opacity opacity, const Opacity *weightTable, int32_t fieldStride, int32_t numPlanes,
                       int32_t planeStride)
{
    fillColumnAntialiased(stridedPlanes(reinterpret_cast<T *>(image), numPlanes, planeStride), column,
                          ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows,
                          ActiveList{activeEdges, numActive, fieldStride}, reinterpret_cast<const T *>(fillValue),
                          opacity, weightTable, bandLimitsOf<T>(weightTable));
}

template <class T, class Raw, class Opacity>
void scanLineRgb(Raw *red, Raw *green, Raw *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin,
                 int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges,
                 const Raw *fillValue, Opacity opacity, const Opacity *weightTable, int32_t fieldStride)
{
    fillColumnAntialiased(
        rgbPlanes(reinterpret_cast<T *>(red), reinterpret_cast<T *>(green), reinterpret_cast<T *>(blue)), column,
        ClipRectangle{rowMin, rowMax, colMin, colMax}, numRows, ActiveList{activeEdges, numActive, fieldStride},
        reinterpret_cast<const T *>(fillValue), opacity, weightTable, bandLimitsOf<T>(weightTable));
}

} // namespace
} // namespace ornex::draw

using ornex::LogicalByte;
using namespace ornex::draw;

#define ORNEX_AAPOLY_I_ARGS(T, O) int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, T *image, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *fillValue, O opacity, const O *weightTable, int32_t numPlanes, int32_t planeStride
#define ORNEX_AAPOLY_I_PASS edgeBuffer, numValues, vertices, sortRecords, image, rowMin, rowMax, colMin, colMax, numRows, fillValue, opacity, weightTable, numPlanes, planeStride
#define ORNEX_AAPOLY_RGB_ARGS(T, O) int32_t *edgeBuffer, int32_t numValues, const int32_t *vertices, int32_t *sortRecords, T *red, T *green, T *blue, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, const T *fillValue, O opacity, const O *weightTable
#define ORNEX_AAPOLY_RGB_PASS edgeBuffer, numValues, vertices, sortRecords, red, green, blue, rowMin, rowMax, colMin, colMax, numRows, fillValue, opacity, weightTable
#define ORNEX_AASCAN_I_ARGS(T, O) T *image, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const T *fillValue, O opacity, const O *weightTable, int32_t fieldStride, int32_t numPlanes, int32_t planeStride
#define ORNEX_AASCAN_I_PASS image, column, rowMin, rowMax, colMin, colMax, numRows, numActive, activeEdges, fillValue, opacity, weightTable, fieldStride, numPlanes, planeStride
#define ORNEX_AASCAN_RGB_ARGS(T, O) T *red, T *green, T *blue, int32_t column, int32_t rowMin, int32_t rowMax, int32_t colMin, int32_t colMax, int32_t numRows, int32_t numActive, const int32_t *activeEdges, const T *fillValue, O opacity, const O *weightTable, int32_t fieldStride
#define ORNEX_AASCAN_RGB_PASS red, green, blue, column, rowMin, rowMax, colMin, colMax, numRows, numActive, activeEdges, fillValue, opacity, weightTable, fieldStride

extern "C" {
int32_t ORNEX_FillOnePolygon_AA_I_D(ORNEX_AAPOLY_I_ARGS(double, double)) { return fillIntensity<double>(ORNEX_AAPOLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_AA_I_R(ORNEX_AAPOLY_I_ARGS(float, float)) { return fillIntensity<float>(ORNEX_AAPOLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_AA_I_Bool(ORNEX_AAPOLY_I_ARGS(uint8_t, int16_t)) { return fillIntensity<LogicalByte>(ORNEX_AAPOLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_AA_I_UI8(ORNEX_AAPOLY_I_ARGS(uint8_t, int16_t)) { return fillIntensity<uint8_t>(ORNEX_AAPOLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_AA_I_I8(ORNEX_AAPOLY_I_ARGS(int8_t, int16_t)) { return fillIntensity<int8_t>(ORNEX_AAPOLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_AA_I_UI16(ORNEX_AAPOLY_I_ARGS(uint16_t, int16_t)) { return fillIntensity<uint16_t>(ORNEX_AAPOLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_AA_I_I16(ORNEX_AAPOLY_I_ARGS(int16_t, int16_t)) { return fillIntensity<int16_t>(ORNEX_AAPOLY_I_PASS); }
int32_t ORNEX_FillOnePolygon_AA_RGB_D(ORNEX_AAPOLY_RGB_ARGS(double, double)) { return fillRgb<double>(ORNEX_AAPOLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_AA_RGB_R(ORNEX_AAPOLY_RGB_ARGS(float, float)) { return fillRgb<float>(ORNEX_AAPOLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_AA_RGB_Bool(ORNEX_AAPOLY_RGB_ARGS(uint8_t, int16_t)) { return fillRgb<LogicalByte>(ORNEX_AAPOLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_AA_RGB_UI8(ORNEX_AAPOLY_RGB_ARGS(uint8_t, int16_t)) { return fillRgb<uint8_t>(ORNEX_AAPOLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_AA_RGB_I8(ORNEX_AAPOLY_RGB_ARGS(int8_t, int16_t)) { return fillRgb<int8_t>(ORNEX_AAPOLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_AA_RGB_UI16(ORNEX_AAPOLY_RGB_ARGS(uint16_t, int16_t)) { return fillRgb<uint16_t>(ORNEX_AAPOLY_RGB_PASS); }
int32_t ORNEX_FillOnePolygon_AA_RGB_I16(ORNEX_AAPOLY_RGB_ARGS(int16_t, int16_t)) { return fillRgb<int16_t>(ORNEX_AAPOLY_RGB_PASS); }

void ORNEX_FillVerticalScanLine_AA_I_D(ORNEX_AASCAN_I_ARGS(double, double)) { scanLineIntensity<double>(ORNEX_AASCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_AA_I_R(ORNEX_AASCAN_I_ARGS(float, float)) { scanLineIntensity<float>(ORNEX_AASCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_AA_I_Bool(ORNEX_AASCAN_I_ARGS(uint8_t, int16_t)) { scanLineIntensity<LogicalByte>(ORNEX_AASCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_AA_I_UI8(ORNEX_AASCAN_I_ARGS(uint8_t, int16_t)) { scanLineIntensity<uint8_t>(ORNEX_AASCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_AA_I_I8(ORNEX_AASCAN_I_ARGS(int8_t, int16_t)) { scanLineIntensity<int8_t>(ORNEX_AASCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_AA_I_UI16(ORNEX_AASCAN_I_ARGS(uint16_t, int16_t)) { scanLineIntensity<uint16_t>(ORNEX_AASCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_AA_I_I16(ORNEX_AASCAN_I_ARGS(int16_t, int16_t)) { scanLineIntensity<int16_t>(ORNEX_AASCAN_I_PASS); }
void ORNEX_FillVerticalScanLine_AA_RGB_D(ORNEX_AASCAN_RGB_ARGS(double, double)) { scanLineRgb<double>(ORNEX_AASCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_AA_RGB_R(ORNEX_AASCAN_RGB_ARGS(float, float)) { scanLineRgb<float>(ORNEX_AASCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_AA_RGB_Bool(ORNEX_AASCAN_RGB_ARGS(uint8_t, int16_t)) { scanLineRgb<LogicalByte>(ORNEX_AASCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_AA_RGB_UI8(ORNEX_AASCAN_RGB_ARGS(uint8_t, int16_t)) { scanLineRgb<uint8_t>(ORNEX_AASCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_AA_RGB_I8(ORNEX_AASCAN_RGB_ARGS(int8_t, int16_t)) { scanLineRgb<int8_t>(ORNEX_AASCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_AA_RGB_UI16(ORNEX_AASCAN_RGB_ARGS(uint16_t, int16_t)) { scanLineRgb<uint16_t>(ORNEX_AASCAN_RGB_PASS); }
void ORNEX_FillVerticalScanLine_AA_RGB_I16(ORNEX_AASCAN_RGB_ARGS(int16_t, int16_t)) { scanLineRgb<int16_t>(ORNEX_AASCAN_RGB_PASS); }
}
