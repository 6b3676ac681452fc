#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <vector>

// The random scenes of the drawing benchmarks, of the kind their yardstick
// scripts draw too: a 1024x1024 image, 2,000 circles, 1,000 8-vertex polygons.
namespace bench_shapes {

constexpr int32_t side = 1024;
constexpr int circleCount = 2000;
constexpr int32_t minRadius = 5;
constexpr int32_t maxRadius = 60;
constexpr int polygonCount = 1000;
constexpr int32_t box = 128;
constexpr int32_t vertexCount = 8;
constexpr int32_t numValues = 2 * vertexCount;

struct Circle {
    int32_t row;
    int32_t col;
    int32_t radius;
};

// Each circle: an integer radius uniform in 5..60, then a centre uniform over
// the positions that keep the whole circle inside the image.
inline std::vector<Circle> randomCircles()
{
    std::mt19937 random(2024);
    std::uniform_int_distribution<int32_t> radiusOf(minRadius, maxRadius);
    std::vector<Circle> circles(circleCount);
    for (auto &circle : circles) {
        circle.radius = radiusOf(random);
        std::uniform_int_distribution<int32_t> centre(circle.radius, side - 1 - circle.radius);
        circle.row = centre(random);
        circle.col = centre(random);
    }
    return circles;
}

using Polygon = std::array<int32_t, numValues>;

// Each polygon: a 128x128 box at a random position fully inside the image,
// and 8 vertices uniformly random inside that box, as (row, column) pairs.
inline std::vector<Polygon> randomPolygons()
{
    std::mt19937 random(2024);
    std::uniform_int_distribution<int32_t> corner(0, side - box);
    std::uniform_int_distribution<int32_t> offset(0, box - 1);
    std::vector<Polygon> polygons(polygonCount);
    for (auto &polygon : polygons) {
        const int32_t top = corner(random);
        const int32_t left = corner(random);
        for (int32_t v = 0; v < vertexCount; ++v) {
            polygon[2 * v] = top + offset(random);
            polygon[2 * v + 1] = left + offset(random);
        }
    }
    return polygons;
}

} // namespace bench_shapes
