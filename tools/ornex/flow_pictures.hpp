#pragma once

#include <array>

#include "pictures.hpp"

namespace ornex::tool {

// The colour of a motion (u across, v down) whose length is 1 at most:
// the hue gives the direction on the usual 55-colour wheel (red to the
// right, yellow down, cyan left, violet up), the saturation the length;
// no motion is white.
std::array<double, 3> wheelColour(double u, double v);

// A flow field in wheel colours, lengths divided by the 99th percentile of
// the lengths (longer ones in full colour), with a
// small wheel drawn in the top-right corner as the legend when the picture
// has room for it.
struct FlowPicture {
    Picture picture;
    double largest; // the length from which on colours are full, in pixels
};
FlowPicture flowPicture(const VelocityField<double> &flow);

// An arrow from `from` to `from + (v, u)`, rounded to whole pixels: an
// anti-aliased shaft and two short strokes at the tip. No motion draws
// nothing.
void drawArrow(RgbView<double> picture, Point from, double u, double v, const std::array<double, 3> &colour);

} // namespace ornex::tool
