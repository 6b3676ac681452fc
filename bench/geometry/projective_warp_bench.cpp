#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int32_t rows = 1080, cols = 1920;

std::vector<float> texture()
{
    std::vector<float> image(size_t(rows) * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            image[r + size_t(c) * rows] = float(128 + 60 * std::sin(0.05 * r) * std::cos(0.07 * c));
        }
    }
    return image;
}

// A mild homography (slight rotation, zoom and perspective) about the image
// centre and its inverse, stored as the rectangle driver reads them: the
// forward matrix first, then the inverse, each column by column for [x y 1].
std::array<float, 18> mildHomography()
{
    const double h[3][3] = {{0.96, -0.05, 60.0}, {0.04, 0.95, 30.0}, {1.5e-5, -1.0e-5, 1.0}};
    std::array<float, 18> block{};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const int i1 = (j + 1) % 3, i2 = (j + 2) % 3, j1 = (i + 1) % 3, j2 = (i + 2) % 3;
            block[3 * i + j] = float(h[i][j]);
            block[9 + 3 * i + j] = float(h[i1][j1] * h[i2][j2] - h[i1][j2] * h[i2][j1]);
        }
    }
    return block;
}

// Arguments: interpolation method (2 bilinear, 3 bicubic), exact (1/0), D.
void BM_Warp_R(benchmark::State &state)
{
    const auto source = texture();
    const auto block = mildHomography();
    std::vector<float> out(size_t(rows) * cols);
    std::vector<int32_t> edges(64), scratch(24);
    const float background = 0;
    const int32_t noRect[4] = {};
    const auto method = int32_t(state.range(0));
    const auto exact = uint8_t(state.range(1));
    const auto divisions = int32_t(state.range(2));
    for (auto _ : state) {
        ORNEX_FillBackgroundValues_R(&background, out.data(), nullptr, nullptr, rows, cols, 0, 1, 1);
        ORNEX_DivideRectXform_R(edges.data(), noRect, scratch.data(), out.data(), nullptr, nullptr, 0, rows - 1, 0,
                                cols - 1, rows, 0, block.data(), source.data(), nullptr, nullptr, exact, rows, cols,
                                cols, method, 0, 0, divisions, 0, 1);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * rows * cols);
}

BENCHMARK(BM_Warp_R)
    ->ArgNames({"method", "exact", "D"})
    ->ArgsProduct({{2, 3}, {1, 0}, {0, 4, 16}})
    ->Unit(benchmark::kMillisecond);

} // namespace
