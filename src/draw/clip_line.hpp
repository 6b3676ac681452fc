#pragma once

#include <cstdint>

namespace ornex::draw {

// Cuts the segment p1-p2 (row, column pairs, rewritten in place) to the
// inclusive rectangle rowMin, rowMax, colMin, colMax. Returns 1 when a part
// remains (both end-points now inside), 0 when the segment misses.
int32_t clipLine(int32_t p1[2], int32_t p2[2], const int32_t rect[4]);

} // namespace ornex::draw
