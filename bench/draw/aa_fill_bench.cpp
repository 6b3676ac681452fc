#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"
#include "random_shapes.hpp"

namespace {

using namespace bench_shapes;

void discs(benchmark::State &state, int16_t opacity)
{
    const auto all = randomCircles();
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
    state.SetItemsProcessed(int64_t(state.iterations()) * circleCount);
}

// Discs far outside the image: a radius of 46000 whose edge crosses a 64x64
// image, and one of 32767 centred beside a 1x1 image.
void farDisc(benchmark::State &state, int32_t imageSide, int32_t radius, int32_t centreRow, int32_t centreCol)
{
    std::vector<uint8_t> image(size_t(imageSide) * imageSide, 0);
    const uint8_t value = 255;
    for (auto _ : state) {
        ORNEX_Draw_AA_FilledCircle_I_UI8(image.data(), &value, centreRow, centreCol, 0, imageSide - 1, 0,
                                         imageSide - 1, imageSide, radius, 512, 1, imageSide * imageSide);
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
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
void BM_AADisc_FarEdgeAcross64x64_UI8(benchmark::State &state) { farDisc(state, 64, 46000, -32500, -32500); }
void BM_AADisc_Radius32767Beside1x1_UI8(benchmark::State &state) { farDisc(state, 1, 32767, 40000, -3); }
void BM_AAPolygons_UI8_Opaque(benchmark::State &state) { polygons(state, 1024); }
void BM_AAPolygons_UI8_Half(benchmark::State &state) { polygons(state, 512); }

BENCHMARK(BM_AADiscs_UI8_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AADiscs_UI8_Half)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AADisc_FarEdgeAcross64x64_UI8)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AADisc_Radius32767Beside1x1_UI8)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AAPolygons_UI8_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AAPolygons_UI8_Half)->Unit(benchmark::kMillisecond);

} // namespace
