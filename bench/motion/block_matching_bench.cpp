#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T>
using MatchingFunction = void (*)(const T *, const T *, T *, T *, T *, const int32_t *, const int32_t *,
                                  const int32_t *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);

// One 640x480 frame pair per iteration: 16x16 blocks, no overlap, largest
// displacement 7 both ways. The second frame is the first moved 3 rows down
// and 2 columns right; the first is a smooth texture with some detail.
template <class T>
void matchFramePair(benchmark::State &state, MatchingFunction<T> match, int resultScalars)
{
    constexpr int32_t rows = 480, cols = 640, margin = 7;
    constexpr int32_t paddedRows = rows + 2 * margin, paddedCols = cols + 2 * margin;
    auto texture = [](int32_t r, int32_t c) {
        return T(128 + 60 * std::sin(r * 0.21) * std::cos(c * 0.17) + 30 * std::sin((r + 2 * c) * 0.63));
    };
    std::vector<T> frame1(rows * cols), frame2(rows * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            frame1[r + c * rows] = texture(r, c);
            frame2[r + c * rows] = texture(r - 3, c - 2);
        }
    }
    std::vector<T> padded1(rows * cols), padded2(paddedRows * paddedCols);
    std::vector<T> motion(30 * 40 * resultScalars);
    const int32_t blockSize[2] = {16, 16}, overlap[2] = {0, 0}, maxDisplacement[2] = {margin, margin};
    for (auto _ : state) {
        match(frame1.data(), frame2.data(), padded1.data(), padded2.data(), motion.data(), blockSize, overlap,
              maxDisplacement, rows, cols, rows, cols, paddedRows, paddedCols);
        benchmark::DoNotOptimize(motion.data());
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel("items = frame pairs");
}

BENCHMARK_CAPTURE(matchFramePair, Full_MAD_R, ORNEX_BlockMatching_Full_MAD_R, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchFramePair, Full_MAD_D, ORNEX_BlockMatching_Full_MAD_D, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchFramePair, Full_MSE_C, ORNEX_BlockMatching_Full_MSE_C, 2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchFramePair, 3Step_MAD_R, ORNEX_BlockMatching_3Step_MAD_R, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchFramePair, 3Step_MAD_D, ORNEX_BlockMatching_3Step_MAD_D, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchFramePair, 3Step_MSE_C, ORNEX_BlockMatching_3Step_MSE_C, 2)->Unit(benchmark::kMillisecond);

} // namespace
