#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"
#include "random_shapes.hpp"

namespace {

using namespace bench_shapes;

// One member of the polygon filler, filling every polygon with `fill`.
template <class T, class Opacity, auto fillPolygon>
void fillAll(benchmark::State &state, T fill, Opacity opacity)
{
    const auto polygons = randomPolygons();
    std::vector<T> image(size_t(side) * side, T(0));
    std::vector<int32_t> edgeBuffer(16 * vertexCount);
    std::vector<int32_t> sortRecords(6 * vertexCount);
    for (auto _ : state) {
        for (const auto &p : polygons) {
            fillPolygon(edgeBuffer.data(), numValues, p.data(), sortRecords.data(), image.data(), 0, side - 1, 0,
                        side - 1, side, &fill, opacity, 1, side * side);
        }
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * polygonCount);
}

void fillUI8(benchmark::State &state, int16_t opacity)
{
    fillAll<uint8_t, int16_t, ORNEX_FillOnePolygon_I_UI8>(state, 255, opacity);
}

void fillD(benchmark::State &state, double opacity)
{
    fillAll<double, double, ORNEX_FillOnePolygon_I_D>(state, 1.0, opacity);
}

void BM_Polygons_UI8_Opaque(benchmark::State &state) { fillUI8(state, 1024); }
void BM_Polygons_UI8_Half(benchmark::State &state) { fillUI8(state, 512); }
void BM_Polygons_D_Opaque(benchmark::State &state) { fillD(state, 1.0); }
void BM_Polygons_D_Half(benchmark::State &state) { fillD(state, 0.5); }

BENCHMARK(BM_Polygons_UI8_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Polygons_UI8_Half)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Polygons_D_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Polygons_D_Half)->Unit(benchmark::kMillisecond);

} // namespace
