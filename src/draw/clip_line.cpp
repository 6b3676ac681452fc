#include "ornex_rt.h"

#include "draw/clip_line.hpp"
#include "frame/rounding.hpp"
#include "frame/wrap_arithmetic.hpp"

namespace ornex::draw {
namespace {

enum RegionBit : int32_t {
    leftOfRect = 1,
    rightOfRect = 2,
    aboveRect = 4,
    belowRect = 8,
};

int32_t regionCode(const int32_t point[2], const ClipRectangle &rect)
{
    int32_t code = 0;
    if (point[1] < rect.colMin) {
        code |= leftOfRect;
    } else if (point[1] > rect.colMax) {
        code |= rightOfRect;
    }
    if (point[0] < rect.rowMin) {
        code |= aboveRect;
    } else if (point[0] > rect.rowMax) {
        code |= belowRect;
    }
    return code;
}

} // namespace

// The end-point being moved is always p1 until p1 is inside, then p2, and
// each cut is taken from that point's entry values toward the other point,
// which stays put meanwhile. So within one point's turn the cut depends only
// on the border chosen: once a border comes round again, the points repeat
// what they did before and the loop would never end (wrapped products can
// do that). Such a segment is rejected, the end-points left where that
// repetition found them. Otherwise a point meets each border at most once and
// the loop ends within eight cuts.
int32_t clipLine(int32_t p1[2], int32_t p2[2], const ClipRectangle &rect)
{
    const int32_t entry[2][2] = {{p1[0], p1[1]}, {p2[0], p2[1]}};
    bool moved[2] = {false, false};
    int32_t bordersUsed[2] = {0, 0};
    int32_t *points[2] = {p1, p2};
    for (;;) {
        const int32_t code1 = regionCode(p1, rect);
        const int32_t code2 = regionCode(p2, rect);
        if ((code1 | code2) == 0) {
            return 1;
        }
        if ((code1 & code2) != 0) {
            return 0;
        }
        const int which = code1 != 0 ? 0 : 1;
        const int32_t code = which == 0 ? code1 : code2;
        int32_t *chosen = points[which];
        const int32_t border = (code & aboveRect)   ? aboveRect
                               : (code & belowRect) ? belowRect
                               : (code & leftOfRect) ? leftOfRect
                                                     : rightOfRect;
        if (bordersUsed[which] & border) {
            return 0;
        }
        bordersUsed[which] |= border;
        // Every intersection is taken from the end-point as the caller gave
        // it, so that rounding errors of earlier passes do not pile up.
        if (moved[which]) {
            chosen[0] = entry[which][0];
            chosen[1] = entry[which][1];
        }
        const int32_t dRow = wrapSub(p2[0], p1[0]);
        const int32_t dCol = wrapSub(p2[1], p1[1]);
        if (border & (aboveRect | belowRect)) {
            const int32_t row = border == aboveRect ? rect.rowMin : rect.rowMax;
            chosen[1] = wrapAdd(chosen[1], wrapDivideHalfAway(wrapMul(wrapSub(row, chosen[0]), dCol), dRow));
            chosen[0] = row;
        } else {
            const int32_t column = border == leftOfRect ? rect.colMin : rect.colMax;
            chosen[0] = wrapAdd(chosen[0], wrapDivideHalfAway(wrapMul(wrapSub(column, chosen[1]), dRow), dCol));
            chosen[1] = column;
        }
        moved[which] = true;
    }
}

} // namespace ornex::draw

extern "C" int32_t ORNEX_ClipLine(int32_t *p1, int32_t *p2, const int32_t *rect)
{
    return ornex::draw::clipLine(p1, p2, ornex::ClipRectangle::fromValues(rect));
}
