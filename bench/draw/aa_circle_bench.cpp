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

BENCHMARK(BM_AACircles_UI8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AACircles_D)->Unit(benchmark::kMillisecond);

} // namespace
