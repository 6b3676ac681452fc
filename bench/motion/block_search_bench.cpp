#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T>
using SearchFunction = void (*)(const T *, const T *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                int32_t *, int32_t *);

// A 16x16 block searched in a 30x30 region (displacements up to 7 each way)
// of a 640x480 frame pair, walking the blocks of the frame as a driver does.
template <class T>
void searchFrame(benchmark::State &state, SearchFunction<T> search, int64_t candidatesPerBlock)
{
    constexpr int32_t rows = 480, cols = 640, block = 16, margin = 7;
    std::mt19937 random(7);
    std::uniform_real_distribution<double> value(0.0, 255.0);
    std::vector<T> frame1(rows * cols), frame2(rows * cols);
    for (size_t i = 0; i < frame1.size(); ++i) {
        frame1[i] = T(value(random));
        frame2[i] = T(value(random));
    }
    int64_t blocks = 0;
    for (auto _ : state) {
        for (int32_t c = margin; c + block + margin <= cols; c += block) {
            for (int32_t r = margin; r + block + margin <= rows; r += block) {
                int32_t bestCol, bestRow;
                search(&frame1[r + c * rows], &frame2[(r - margin) + (c - margin) * rows], rows, rows, block, block,
                       block + 2 * margin, block + 2 * margin, &bestCol, &bestRow);
                benchmark::DoNotOptimize(bestCol);
                benchmark::DoNotOptimize(bestRow);
                ++blocks;
            }
        }
    }
    state.counters["candidates"] =
        benchmark::Counter(static_cast<double>(blocks * candidatesPerBlock), benchmark::Counter::kIsRate);
    state.SetItemsProcessed(blocks);
}

// Every one of the 15x15 candidates; the three-step search scores 4 rounds
// of 9.
constexpr int64_t fullCandidates = 15 * 15;
constexpr int64_t threeStepCandidates = 4 * 9;

BENCHMARK_CAPTURE(searchFrame, Full_MAD_D, ORNEX_SearchMethod_Full_MAD_D, fullCandidates);
BENCHMARK_CAPTURE(searchFrame, Full_MAD_R, ORNEX_SearchMethod_Full_MAD_R, fullCandidates);
BENCHMARK_CAPTURE(searchFrame, Full_MSE_D, ORNEX_SearchMethod_Full_MSE_D, fullCandidates);
BENCHMARK_CAPTURE(searchFrame, Full_MSE_R, ORNEX_SearchMethod_Full_MSE_R, fullCandidates);
BENCHMARK_CAPTURE(searchFrame, 3Step_MAD_D, ORNEX_SearchMethod_3Step_MAD_D, threeStepCandidates);
BENCHMARK_CAPTURE(searchFrame, 3Step_MAD_R, ORNEX_SearchMethod_3Step_MAD_R, threeStepCandidates);
BENCHMARK_CAPTURE(searchFrame, 3Step_MSE_D, ORNEX_SearchMethod_3Step_MSE_D, threeStepCandidates);
BENCHMARK_CAPTURE(searchFrame, 3Step_MSE_R, ORNEX_SearchMethod_3Step_MSE_R, threeStepCandidates);

} // namespace
