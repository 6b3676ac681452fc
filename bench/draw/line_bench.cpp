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

// Far-outside geometry: end-points anywhere in 32 bits (most products wrap
// in the clipper, and many such segments would make it cut for ever), and
// segments through one pixel from near +-2^31 on both sides. Each call must
// cost about what its pixels do, whatever the coordinates.
std::vector<std::array<int32_t, 4>> farLines(bool throughOnePixel)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int32_t> anywhere(INT32_MIN, INT32_MAX), nearEdge(1 << 30, INT32_MAX);
    std::vector<std::array<int32_t, 4>> lines(lineCount);
    for (auto &line : lines) {
        if (throughOnePixel) {
            // From (-a, -b) to (a, b) through (0, 0), each coordinate beyond 2^30 in magnitude.
            const int32_t a = nearEdge(random), b = nearEdge(random);
            line = {-a, -b, a, b};
        } else {
            line = {anywhere(random), anywhere(random), anywhere(random), anywhere(random)};
        }
    }
    return lines;
}

// arg 0: plain lines, 1: anti-aliased; arg 1: end-points anywhere (0) or
// through the one pixel (0, 0) of a 1x1 rectangle (1).
void farOutsideLines(benchmark::State &state)
{
    const bool antialiased = state.range(0) != 0, throughOnePixel = state.range(1) != 0;
    const auto lines = farLines(throughOnePixel);
    const int32_t last = throughOnePixel ? 0 : side - 1;
    std::vector<uint8_t> image(side * side, 0);
    const uint8_t ink = 255;
    const std::vector<int16_t> table(50, 512);
    for (auto _ : state) {
        for (const auto &l : lines) {
            if (antialiased) {
                ORNEX_Draw_AA_Line_I_UI8(l[0], l[1], l[2], l[3], image.data(), side, 0, last, 0, last, table.data(), 1,
                                         1, 0);
            } else {
                ORNEX_Line_Bresenham(l[0], l[1], l[2], l[3], image.data(), side, &ink, 1, 0, last, 0, last, 1, 0);
            }
        }
        benchmark::DoNotOptimize(image.data());
    }
    state.counters["lines"] = benchmark::Counter(double(lineCount), benchmark::Counter::kIsIterationInvariantRate);
}

// Calls that draw nothing (both end-points above the image): the per-call
// cost that the yardstick takes off our figures.
void emptyCalls(benchmark::State &state)
{
    std::vector<uint8_t> image(side * side, 0);
    const uint8_t ink = 255;
    for (auto _ : state) {
        for (int i = 0; i < lineCount; ++i) {
            ORNEX_Line_Bresenham(-5 - i % 7, -9, -5 - i % 5, -3, image.data(), side, &ink, 1, 0, side - 1, 0, side - 1,
                                 1, 0);
        }
        benchmark::DoNotOptimize(image.data());
    }
}

BENCHMARK(plainLines)->Unit(benchmark::kMillisecond);
BENCHMARK(antialiasedLines)->Unit(benchmark::kMillisecond);
BENCHMARK(farOutsideLines)->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);
BENCHMARK(emptyCalls)->Unit(benchmark::kMillisecond);

} // namespace
