#pragma once

#include <cstdint>

#include "frame/clip_rectangle.hpp"

namespace ornex::draw {

// Cuts the segment p1-p2 (row, column pairs, rewritten in place) to the
// rectangle. Returns 1 when a part remains (both end-points now inside), 0
// when the segment misses.
int32_t clipLine(int32_t p1[2], int32_t p2[2], const ClipRectangle &rect);

} // namespace ornex::draw
