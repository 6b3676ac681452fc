#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int32_t side = 1024;
constexpr int lineCount = 10000;

// End-points up to a quarter of the image outside it on every side, so many
// lines are clipped.
std::vector<std::array<int32_t, 4>> randomLines()
{
    std::mt19937 random(2024);
    std::uniform_int_distribution<int32_t> coordinate(-side / 4, side + side / 4);
    std::vector<std::array<int32_t, 4>> lines(lineCount);
    for (auto &line : lines) {
        line = {coordinate(random), coordinate(random), coordinate(random), coordinate(random)};
    }
    return lines;
}

void plainLines(benchmark::State &state)
{
    const auto lines = randomLines();
    std::vector<uint8_t> image(side * side, 0);
    const uint8_t ink = 255;
    for (auto _ : state) {
        for (const auto &l : lines) {
            ORNEX_Line_Bresenham(l[0], l[1], l[2], l[3], image.data(), side, &ink, 1, 0, side - 1, 0, side - 1, 1, 0);
        }
        benchmark::DoNotOptimize(image.data());
    }
    state.counters["lines"] = benchmark::Counter(double(lineCount), benchmark::Counter::kIsIterationInvariantRate);
}

void antialiasedLines(benchmark::State &state)
{
    const auto lines = randomLines();
    std::vector<uint8_t> image(side * side, 0);
    // 1 - coverage and coverage * 255, coverage falling linearly to 0 at
    // 1.5 pixel.
    std::vector<int16_t> table(50);
    for (int d = 0; d < 25; ++d) {
        const int coverage = 1024 - d * 1024 / 24;
        table[d] = int16_t(1024 - coverage);
        table[25 + d] = int16_t(coverage * 255 / 1024);
    }
    for (auto _ : state) {
        for (const auto &l : lines) {
            ORNEX_Draw_AA_Line_I_UI8(l[0], l[1], l[2], l[3], image.data(), side, 0, side - 1, 0, side - 1,
                                     table.data(), 1, 1, 0);
        }
        benchmark::DoNotOptimize(image.data());
    }
    state.counters["lines"] = benchmark::Counter(double(lineCount), benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(plainLines)->Unit(benchmark::kMillisecond);
BENCHMARK(antialiasedLines)->Unit(benchmark::kMillisecond);

} // namespace
