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

int32_t clipLine(int32_t p1[2], int32_t p2[2], const ClipRectangle &rect)
{
    const int32_t entry[2][2] = {{p1[0], p1[1]}, {p2[0], p2[1]}};
    bool moved[2] = {false, false};
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
        // Every intersection is taken from the end-point as the caller gave
        // it, so that rounding errors of earlier passes do not pile up.
        if (moved[which]) {
            chosen[0] = entry[which][0];
            chosen[1] = entry[which][1];
        }
        const int32_t dRow = wrapSub(p2[0], p1[0]);
        const int32_t dCol = wrapSub(p2[1], p1[1]);
        if (code & (aboveRect | belowRect)) {
            const int32_t border = (code & aboveRect) ? rect.rowMin : rect.rowMax;
            chosen[1] = wrapAdd(chosen[1], wrapDivideHalfAway(wrapMul(wrapSub(border, chosen[0]), dCol), dRow));
            chosen[0] = border;
        } else {
            const int32_t border = (code & leftOfRect) ? rect.colMin : rect.colMax;
            chosen[0] = wrapAdd(chosen[0], wrapDivideHalfAway(wrapMul(wrapSub(border, chosen[1]), dRow), dCol));
            chosen[1] = border;
        }
        moved[which] = true;
    }
}

} // namespace ornex::draw

extern "C" int32_t ORNEX_ClipLine(int32_t *p1, int32_t *p2, const int32_t *rect)
{
    return ornex::draw::clipLine(p1, p2, ornex::ClipRectangle::fromValues(rect));
}
