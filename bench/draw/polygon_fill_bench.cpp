#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <climits>
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

// Stray coordinates: one vertex at column -2^31 (or a whole warp cell with
// corners near -2^31 and 2^31 - 1) over a 24x24 image; the cost should
// follow the few pixels drawn, not the 2^31 columns swept.
constexpr int32_t farSide = 24;
constexpr int32_t farPolygon[8] = {5, INT32_MIN, 20, 10, 3, 22, 12, 4};
// A vertex far off in both directions: two edges whose column spans and row
// deltas are both beyond 2^30, the hardest error terms to jump.
constexpr int32_t farDiagonalPolygon[8] = {2, 3, 20, 5, 1987654321, -2101234567, 12, 20};

void BM_FarPolygon_UI8(benchmark::State &state, const int32_t *polygon)
{
    std::vector<uint8_t> image(farSide * farSide, 0);
    std::vector<int32_t> edgeBuffer(64, 0), sortRecords(24, 0);
    const uint8_t fill = 255;
    for (auto _ : state) {
        ORNEX_FillOnePolygon_I_UI8(edgeBuffer.data(), 8, polygon, sortRecords.data(), image.data(), 0, farSide - 1,
                                   0, farSide - 1, farSide, &fill, 1024, 1, farSide * farSide);
        benchmark::DoNotOptimize(image.data());
    }
}

void BM_FarPolygon_AA_UI8(benchmark::State &state)
{
    std::vector<uint8_t> image(farSide * farSide, 0);
    std::vector<int32_t> edgeBuffer(64, 0), sortRecords(24, 0);
    std::vector<int16_t> boxProfile(49);
    for (int32_t i = 0; i < 49; ++i) {
        boxProfile[i] = int16_t(std::clamp(512 + 64 * (i - 24), 0, 1024));
    }
    const uint8_t fill = 255;
    for (auto _ : state) {
        ORNEX_FillOnePolygon_AA_I_UI8(edgeBuffer.data(), 8, farPolygon, sortRecords.data(), image.data(), 0,
                                      farSide - 1, 0, farSide - 1, farSide, &fill, 1024, boxProfile.data(), 1,
                                      farSide * farSide);
        benchmark::DoNotOptimize(image.data());
    }
}

// Corners near -2^31 and 2^31 - 1 in columns, or 10^9 rows above and below
// the image in a gentle perspective: every column's span starts 10^9 rows
// before the window.
constexpr int32_t farColumnsCell[8] = {-7, INT32_MIN + 7, 3, 5, 30, INT32_MAX - 3, 20, 2};
constexpr int32_t farRowsCell[8] = {-1000000000, 0, -1000000000, 23, 1000000000, 23, 1000000000, 0};

constexpr float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr float gentlePerspective[9] = {1, 0, 0, 0.001f, 1, 0, 1e-7f, 0, 1};

void BM_FarWarpCell_R(benchmark::State &state, const int32_t *corners, const float *matrix, uint8_t exact)
{
    std::vector<float> source(farSide * farSide, 1.0f), output(farSide * farSide, 0.0f);
    std::vector<int32_t> edgeBuffer(64, 0), sortScratch(24, 0);
    for (auto _ : state) {
        ORNEX_XformOneSubdivision_R(edgeBuffer.data(), 8, corners, sortScratch.data(), output.data(), nullptr, nullptr,
                                    0, farSide - 1, 0, farSide - 1, farSide, 0, matrix, source.data(), nullptr,
                                    nullptr, exact, farSide, farSide, farSide, 2, 0, 0, 1);
        benchmark::DoNotOptimize(output.data());
    }
}

BENCHMARK_CAPTURE(BM_FarPolygon_UI8, column_min, farPolygon)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_FarPolygon_UI8, diagonal, farDiagonalPolygon)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FarPolygon_AA_UI8)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_FarWarpCell_R, far_columns, farColumnsCell, identity, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_FarWarpCell_R, far_rows, farRowsCell, gentlePerspective, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_FarWarpCell_R, far_rows_quadratic, farRowsCell, gentlePerspective, 0)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Polygons_UI8_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Polygons_UI8_Half)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Polygons_D_Opaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Polygons_D_Half)->Unit(benchmark::kMillisecond);

} // namespace
