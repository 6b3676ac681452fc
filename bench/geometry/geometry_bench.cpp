#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex/geometry.hpp"
#include "ornex_rt.h"

namespace {

template <class T>
std::vector<T> texture(int32_t rows, int32_t cols)
{
    std::vector<T> image(size_t(rows) * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            image[r + size_t(c) * rows] = T(128 + 60 * std::sin(0.05 * r) * std::cos(0.07 * c));
        }
    }
    return image;
}

// A 1920x1080 output grid sampled from a 1920x1080 source through a mild
// rotation and zoom, as a warp walks it: column by column, down each column.
template <class T, bool cubic>
void sampleGrid(benchmark::State &state)
{
    constexpr int32_t rows = 1080, cols = 1920;
    const auto source = texture<T>(rows, cols);
    std::vector<T> out(size_t(rows) * cols);
    const double angle = 0.1, zoom = 0.9, cosA = std::cos(angle) * zoom, sinA = std::sin(angle) * zoom;
    for (auto _ : state) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                const double dx = c - cols / 2.0, dy = r - rows / 2.0;
                const T x = T(std::fmin(std::fmax(cols / 2.0 + cosA * dx - sinA * dy, 0.0), cols - 1.0));
                const T y = T(std::fmin(std::fmax(rows / 2.0 + sinA * dx + cosA * dy, 0.0), rows - 1.0));
                const uint32_t index = uint32_t(r + c * rows);
                if constexpr (cubic && sizeof(T) == 8) {
                    ORNEX_PosVal_BC_Interp_D(source.data(), y, x, rows, cols, out.data(), index, 1, 0, 0);
                } else if constexpr (cubic) {
                    ORNEX_PosVal_BC_Interp_R(source.data(), y, x, rows, cols, out.data(), index, 1, 0, 0);
                } else if constexpr (sizeof(T) == 8) {
                    ORNEX_PosVal_BL_Interp_D(source.data(), y, x, rows, cols, out.data(), index, 1, 0, 0);
                } else {
                    ORNEX_PosVal_BL_Interp_R(source.data(), y, x, rows, cols, out.data(), index, 1, 0, 0);
                }
            }
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["samples"] =
        benchmark::Counter(double(rows) * cols, benchmark::Counter::kIsIterationInvariantRate);
}

// A 1024x1024 image sheared by 0.3: column c moves 0.3 c rows down, into a
// taller output image.
template <class T, int kernel>
void shearImage(benchmark::State &state)
{
    constexpr int32_t side = 1024;
    const int32_t outRows = side + int32_t(0.3 * side) + 1;
    const auto source = texture<T>(side, side);
    std::vector<T> out(size_t(outRows) * side);
    const T background = 0;
    for (auto _ : state) {
        for (int32_t c = 0; c < side; ++c) {
            const T offset = T(0.3 * c);
            const T *line = source.data() + size_t(c) * side;
            T *target = out.data() + size_t(c) * outRows;
            auto run = [&](auto skew) { skew(line, side, outRows, offset, 1, 1, target, 0, &background); };
            if constexpr (sizeof(T) == 8) {
                kernel == 0 ? run(ORNEX_Skew_NNI_D) : kernel == 1 ? run(ORNEX_Skew_BLI_D) : run(ORNEX_Skew_BCI_D);
            } else {
                kernel == 0 ? run(ORNEX_Skew_NNI_R) : kernel == 1 ? run(ORNEX_Skew_BLI_R) : run(ORNEX_Skew_BCI_R);
            }
        }
        benchmark::DoNotOptimize(out.data());
    }
}

// The same image sheared along its rows: row r moves 0.3 r columns right,
// into a wider output. Per-row C calls walk each row at a stride of 1024
// elements; the C++ layer shears the whole image.
template <class T>
void shearRowsPerCall(benchmark::State &state)
{
    constexpr int32_t side = 1024;
    const int32_t outCols = side + int32_t(std::ceil(0.3 * (side - 1)));
    const auto source = texture<T>(side, side);
    std::vector<T> out(size_t(side) * outCols);
    const T background = 0;
    for (auto _ : state) {
        for (int32_t r = 0; r < side; ++r) {
            const T offset = T(0.3 * r);
            if constexpr (sizeof(T) == 8) {
                ORNEX_Skew_BLI_D(source.data() + r, side, outCols, offset, side, side, out.data() + r, 0, &background);
            } else {
                ORNEX_Skew_BLI_R(source.data() + r, side, outCols, offset, side, side, out.data() + r, 0, &background);
            }
        }
        benchmark::DoNotOptimize(out.data());
    }
}

template <class T>
void shearRowsLayer(benchmark::State &state)
{
    constexpr int32_t side = 1024;
    const auto values = texture<T>(side, side);
    const ornex::ImageView<const T> image{values.data(), side, side, 1};
    for (auto _ : state) {
        auto out = ornex::shear(image, ornex::ShearDirection::horizontal, 0.3);
        benchmark::DoNotOptimize(out.view().data);
    }
}

// What per-row calls cannot avoid: reading every row of the image at a
// stride of 1024 elements, one row after another, and writing a row of the
// output the same way.
template <class T>
void copyRowsAtStride(benchmark::State &state)
{
    constexpr int32_t side = 1024;
    const auto source = texture<T>(side, side);
    std::vector<T> out(source.size());
    for (auto _ : state) {
        for (int32_t r = 0; r < side; ++r) {
            for (int32_t c = 0; c < side; ++c) {
                out[r + size_t(c) * side] = source[r + size_t(c) * side];
            }
            benchmark::ClobberMemory();
        }
        benchmark::DoNotOptimize(out.data());
    }
}

BENCHMARK(sampleGrid<float, false>)->Name("bilinearGrid<float>")->Unit(benchmark::kMillisecond);
BENCHMARK(sampleGrid<double, false>)->Name("bilinearGrid<double>")->Unit(benchmark::kMillisecond);
BENCHMARK(sampleGrid<float, true>)->Name("bicubicGrid<float>")->Unit(benchmark::kMillisecond);
BENCHMARK(sampleGrid<double, true>)->Name("bicubicGrid<double>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearImage<float, 0>)->Name("shearNearest<float>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearImage<float, 1>)->Name("shearLinear<float>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearImage<double, 1>)->Name("shearLinear<double>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearImage<float, 2>)->Name("shearCubic<float>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearImage<double, 2>)->Name("shearCubic<double>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearRowsPerCall<float>)->Name("shearRowsLinearPerCall<float>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearRowsPerCall<double>)->Name("shearRowsLinearPerCall<double>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearRowsLayer<float>)->Name("shearRowsLinearLayer<float>")->Unit(benchmark::kMillisecond);
BENCHMARK(shearRowsLayer<double>)->Name("shearRowsLinearLayer<double>")->Unit(benchmark::kMillisecond);
BENCHMARK(copyRowsAtStride<float>)->Name("copyRowsAtStride<float>")->Unit(benchmark::kMillisecond);

} // namespace
