#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int32_t side = 1024;
constexpr int discCount = 2000;
constexpr int32_t minRadius = 5;
constexpr int32_t maxRadius = 60;
constexpr int polygonCount = 1000;
constexpr int32_t box = 128;
constexpr int32_t vertexCount = 8;
constexpr int32_t numValues = 2 * vertexCount;

struct Disc {
    int32_t row;
    int32_t col;
    int32_t radius;
};

// Radius uniform in 5..60, then a centre that keeps the whole disc inside.
std::vector<Disc> randomDiscs()
{
    std::mt19937 random(2024);
    std::uniform_int_distribution<int32_t> radiusOf(minRadius, maxRadius);
    std::vector<Disc> discs(discCount);
    for (auto &disc : discs) {
        disc.radius = radiusOf(random);
        std::uniform_int_distribution<int32_t> centre(disc.radius, side - 1 - disc.radius);
        disc.row = centre(random);
        disc.col = centre(random);
    }
    return discs;
}

using Polygon = std::array<int32_t, numValues>;

// Eight vertices uniformly random inside a 128x128 box placed at random
// fully inside the image, as (row, column) pairs.
std::vector<Polygon> randomPolygons()
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

void discs(benchmark::State &state, int16_t opacity)
{
    const auto all = randomDiscs();
    std::vector<uint8_t> image(size_t(side) * side, 0);
    const uint8_t value = 255;
    for (auto _ : state) {
        for (const auto &d : all) {
            ORNEX_Draw_AA_FilledCircle_I_UI8(image.data(), &value, d.row, d.col, 0, side - 1, 0, side - 1, side,
                                             d.radius, opacity, 1, side * side);
        }
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * discCount);
}

void polygons(benchmark::State &state, int16_t opacity)
{
    const auto all = randomPolygons();
    std::vector<int16_t> boxProfile(49);
    for (int32_t i = 0; i < 49; ++i) {
        boxProfile[i] = int16_t(std::clamp(512 + 64 * (i - 24), 0, 1024));
    }
    std::vector<uint8_t> image(size_t(side) * side, 0);
    std::vector<int32_t> edgeBuffer(16 * vertexCount);
    std::vector<int32_t> sortRecords(6 * vertexCount);
    const uint8_t value = 255;
    for (auto _ : state) {
        for (const auto &p : all) {
            ORNEX_FillOnePolygon_AA_I_UI8(edgeBuffer.data(), numValues, p.data(), sortRecords.data(), image.data(), 0,
                                          side - 1, 0, side - 1, side, &value, opacity, boxProfile.data(), 1,
                                          side * side);
        }
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * polygonCount);
}

void BM_AADiscs_UI8_Opaque(benchmark::State &state) { discs(state, 1024); }
void BM_AADiscs_UI8_Half(benchmark::State &state) { discs(state, 512); }
void BM_AAPolygons_UI8_Opaque(benchmark::State &state) { polygons(state, 1024); }
void BM_AAPolygons_UI8_Half(benchmark::State &state) { polygons(state, 512); }

BENCHMARK(BM_AADiscs_UI8_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AADiscs_UI8_Half)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AAPolygons_UI8_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AAPolygons_UI8_Half)->Unit(benchmark::kMillisecond);

} // namespace
