#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"
#include "random_shapes.hpp"

namespace {

using namespace bench_shapes;

constexpr int32_t tableSize = 4096;

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

// Geometry far outside the image: the cost must follow the pixels drawn. A
// radius of 2^31 - 2 centred just outside a 1x1 image (the walk wraps, and
// no step but one meets the image's row or column), and a radius 2^28 arc
// crossing a 64x64 image some 1.5e8 steps into the walk.
void BM_AACircle_HugeRadiusBeside1x1_UI8(benchmark::State &state)
{
    const auto table = sqrtTable();
    uint8_t pixel = 0;
    const uint8_t value = 255;
    const int32_t radius = INT32_MAX - 1;
    for (auto _ : state) {
        ORNEX_Draw_AA_Circle_I_UI8(&pixel, &value, table.data(), 0, radius, 3, -2, 0, 0, 0, 0, 1, radius, 1, 1);
        benchmark::DoNotOptimize(pixel);
    }
}

void BM_AACircle_FarArcAcross64x64_D(benchmark::State &state)
{
    constexpr int32_t imageSide = 64, radius = 1 << 28, step = 150000000;
    const int32_t column = int32_t(std::sqrt(double(radius) * radius - double(step) * step));
    std::vector<double> image(size_t(imageSide) * imageSide, 0.0);
    const double value = 1.0;
    for (auto _ : state) {
        ORNEX_Draw_AA_Circle_I_D(image.data(), &value, 0, radius, 30 - step, 30 - column, 0, imageSide - 1, 0,
                                 imageSide - 1, imageSide, radius, 1, imageSide * imageSide);
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BM_AACircle_HugeRadiusBeside1x1_UI8)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AACircle_FarArcAcross64x64_D)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AACircles_UI8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AACircles_D)->Unit(benchmark::kMillisecond);

} // namespace
