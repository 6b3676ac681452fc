#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int32_t side = 1024;
constexpr int circleCount = 2000;
constexpr int32_t minRadius = 5;
constexpr int32_t maxRadius = 60;
constexpr int32_t tableSize = 4096;

struct Circle {
    int32_t row;
    int32_t col;
    int32_t radius;
};

// Each circle: an integer radius uniform in 5..60, then a centre uniform over
// the positions that keep the whole circle inside the image.
std::vector<Circle> randomCircles()
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

// Entry t holds 4096 * sqrt(1 - (t / 4096)^2), rounded: the height of the unit
// circle in 1/4096 steps, scaled by 4096.
std::vector<int16_t> sqrtTable()
{
    std::vector<int16_t> table(tableSize);
    for (int32_t t = 0; t < tableSize; ++t) {
        const double x = double(t) / tableSize;
        table[t] = int16_t(std::lround(tableSize * std::sqrt(1.0 - x * x)));
    }
    return table;
}

void BM_AACircles_UI8(benchmark::State &state)
{
    const auto circles = randomCircles();
    const auto table = sqrtTable();
    std::vector<uint8_t> image(size_t(side) * side, 0);
    const uint8_t value = 255;
    for (auto _ : state) {
        for (const auto &c : circles) {
            ORNEX_Draw_AA_Circle_I_UI8(image.data(), &value, table.data(), 0, c.radius, c.row, c.col, 0, side - 1, 0,
                                       side - 1, side, c.radius, 1, side * side);
        }
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * circleCount);
}

void BM_AACircles_D(benchmark::State &state)
{
    const auto circles = randomCircles();
    std::vector<double> image(size_t(side) * side, 0.0);
    const double value = 1.0;
    for (auto _ : state) {
        for (const auto &c : circles) {
            ORNEX_Draw_AA_Circle_I_D(image.data(), &value, 0, c.radius, c.row, c.col, 0, side - 1, 0, side - 1, side,
                                     c.radius, 1, side * side);
        }
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * circleCount);
}

BENCHMARK(BM_AACircles_UI8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AACircles_D)->Unit(benchmark::kMillisecond);

} // namespace
