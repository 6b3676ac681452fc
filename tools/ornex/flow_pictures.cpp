#include "flow_pictures.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace ornex::tool {
namespace {

// Red to yellow, yellow to green, green to cyan, cyan to blue, blue to
// magenta, magenta back to red, in 15, 6, 4, 11, 13 and 6 steps.
std::vector<std::array<double, 3>> makeWheel()
{
    const int steps[6] = {15, 6, 4, 11, 13, 6};
    std::vector<std::array<double, 3>> wheel;
    for (int part = 0; part < 6; ++part) {
        for (int i = 0; i < steps[part]; ++i) {
            const double rising = std::floor(255.0 * i / steps[part]) / 255, falling = 1 - rising;
            const std::array<double, 3> colours[6] = {{1, rising, 0}, {falling, 1, 0}, {0, 1, rising},
                                                      {0, falling, 1}, {rising, 0, 1}, {1, 0, falling}};
            wheel.push_back(colours[part]);
        }
    }
    return wheel;
}

void drawStroke(RgbView<double> picture, Point a, Point b, const std::array<double, 3> &colour)
{
    // The line kernel draws a vertical line only from top to bottom.
    if (a.row > b.row) {
        std::swap(a, b);
    }
    drawAntialiasedLine(picture, a, b, colour);
}

} // namespace

std::array<double, 3> wheelColour(double u, double v)
{
    static const std::vector<std::array<double, 3>> wheel = makeWheel();
    const double length = std::hypot(u, v);
    if (!(length > 0)) {
        return {1, 1, 1};
    }
    // Clockwise from the right (v points down), 0 .. 1 round the wheel,
    // spread over the wheel's 54 steps as the coding has always done.
    double turn = std::atan2(v, u) / (2 * std::numbers::pi);
    if (turn < 0) {
        turn += 1;
    }
    const double position = turn * double(wheel.size() - 1);
    const size_t k0 = size_t(position) % wheel.size(), k1 = (k0 + 1) % wheel.size();
    const double f = position - std::floor(position), saturation = std::min(length, 1.0);
    std::array<double, 3> colour{};
    for (int p = 0; p < 3; ++p) {
        const double hue = (1 - f) * wheel[k0][size_t(p)] + f * wheel[k1][size_t(p)];
        colour[size_t(p)] = 1 - saturation * (1 - hue);
    }
    return colour;
}

FlowPicture flowPicture(const VelocityField<double> &flow)
{
    const int32_t rows = flow.u.rows(), cols = flow.u.cols();
    // Full colour at the 99th percentile of the lengths, not at the largest:
    // a few wild vectors (at borders that one frame does not show) would
    // otherwise leave the whole picture nearly white.
    std::vector<double> lengths(flow.u.values().size());
    for (size_t k = 0; k < lengths.size(); ++k) {
        lengths[k] = std::hypot(flow.u.values()[k], flow.v.values()[k]);
    }
    double largest = 0;
    if (!lengths.empty()) {
        const auto rank = lengths.begin() + std::ptrdiff_t((lengths.size() - 1) * 99 / 100);
        std::nth_element(lengths.begin(), rank, lengths.end());
        largest = *rank;
    }
    Picture picture(rows, cols, 3);
    const double scale = largest > 0 ? 1 / largest : 0;
    auto paint = [&](int32_t r, int32_t c, double u, double v) {
        const auto colour = wheelColour(u, v);
        for (int32_t p = 0; p < 3; ++p) {
            picture(r, c, p) = colour[size_t(p)];
        }
    };
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            paint(r, c, flow.u(r, c) * scale, flow.v(r, c) * scale);
        }
    }
    const int32_t radius = std::min(40, std::min(rows, cols) / 8);
    if (radius >= 6) {
        const Point centre{radius + 3, cols - radius - 4};
        for (int32_t dc = -radius; dc <= radius; ++dc) {
            for (int32_t dr = -radius; dr <= radius; ++dr) {
                if (dr * dr + dc * dc <= radius * radius) {
                    paint(centre.row + dr, centre.col + dc, double(dc) / radius, double(dr) / radius);
                }
            }
        }
        drawAntialiasedCircle(colourPlanes(picture), centre, radius + 1, std::array<double, 3>{0.3, 0.3, 0.3});
    }
    return {std::move(picture), largest};
}

void drawArrow(RgbView<double> picture, Point from, double u, double v, const std::array<double, 3> &colour)
{
    const double length = std::hypot(u, v);
    const Point tip{from.row + int32_t(std::lround(v)), from.col + int32_t(std::lround(u))};
    if (tip == from) {
        return;
    }
    drawStroke(picture, from, tip, colour);
    // Each barb points back along the shaft, turned 30 degrees either way.
    const double barb = std::clamp(0.35 * length, 2.0, 6.0), back = std::atan2(-v, -u);
    for (const double turn : {-std::numbers::pi / 6, std::numbers::pi / 6}) {
        const Point end{tip.row + int32_t(std::lround(barb * std::sin(back + turn))),
                        tip.col + int32_t(std::lround(barb * std::cos(back + turn)))};
        drawStroke(picture, tip, end, colour);
    }
}

} // namespace ornex::tool
