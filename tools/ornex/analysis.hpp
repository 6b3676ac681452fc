#pragma once

#include <array>
#include <vector>

#include "pictures.hpp"

namespace ornex::tool {

double median(std::vector<double> values);

// A cell of the Hough accumulator that is the largest within +-4 bins.
struct HoughPeak {
    double theta, rho, votes;
};
std::vector<HoughPeak> strongestLines(const HoughTransform<double> &hough, size_t count);

// theta (radians, in [-pi/2, pi/2)) and rho of the line through two points,
// with rho = column cos(theta) + row sin(theta), as the Hough axes have them.
std::array<double, 2> lineParameters(Point a, Point b);

// The median velocity of pixels moving by more than 0.2 pixel, away from
// the border; the count of such pixels.
struct FlowSummary {
    double u, v;
    size_t moving;
};
FlowSummary summarizeFlow(const VelocityField<double> &flow);

Picture edgePicture(const Image<uint8_t> &edges);

} // namespace ornex::tool
