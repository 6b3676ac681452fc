#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "ornex_rt.h"

namespace {

// The user-threshold Canny driver, kernels of length 5, on a column-major
// image; reports the share of pixels marked as edges.
template <class T>
void runCanny(benchmark::State &state, const std::vector<T> &image, int32_t rows, int32_t cols)
{
    constexpr int32_t length = 5;
    std::vector<T> smoothing(length), derivative(length);
    for (int k = 0; k < length; ++k) {
        smoothing[k] = T(std::exp(-0.5 * k * k / 2.0) / std::sqrt(2 * 3.14159265358979 * 2.0));
        derivative[k] = T(k * std::exp(-0.5 * k * k / 2.0) / 2.0);
    }
    std::vector<T> a(image.size()), b(image.size()), magnitude(image.size());
    std::vector<uint8_t> edges(image.size());
    const T thresholds[2] = {T(0.1), T(0.25)};
    for (auto _ : state) {
        if constexpr (sizeof(T) == 8) {
            ORNEX_EdgeCanny_userTh_D(image.data(), smoothing.data(), derivative.data(), a.data(), b.data(),
                                     edges.data(), magnitude.data(), thresholds, rows, cols, length);
        } else {
            ORNEX_EdgeCanny_userTh_R(image.data(), smoothing.data(), derivative.data(), a.data(), b.data(),
                                     edges.data(), magnitude.data(), thresholds, rows, cols, length);
        }
        benchmark::DoNotOptimize(edges.data());
    }
    size_t marked = 0;
    for (uint8_t e : edges) {
        marked += e;
    }
    state.counters["edge share"] = double(marked) / double(edges.size());
    state.SetItemsProcessed(int64_t(state.iterations()) * rows * cols);
}

// A 1920x1080 scene of blobs and stripes.
template <class T>
void cannyUserThresholds(benchmark::State &state)
{
    constexpr int32_t rows = 1080, cols = 1920;
    std::vector<T> image(size_t(rows) * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            image[r + size_t(c) * rows] =
                T(100 + 80 * std::sin(0.02 * c) * std::cos(0.03 * r) + ((r / 40 + c / 60) % 2 ? 40 : 0));
        }
    }
    runCanny(state, image, rows, cols);
}

// The 1920x1080 8-bit image that canny_opencv_yardstick.sh also gives the
// peer: raw bytes, row after row, in the file named by ORNEX_CANNY_IMAGE.
template <class T>
void cannyUserThresholdsOnImageFile(benchmark::State &state)
{
    constexpr int32_t rows = 1080, cols = 1920;
    const char *path = std::getenv("ORNEX_CANNY_IMAGE");
    std::vector<uint8_t> bytes(size_t(rows) * cols);
    std::FILE *file = path ? std::fopen(path, "rb") : nullptr;
    const bool complete = file && std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
    if (file) {
        std::fclose(file);
    }
    if (!complete) {
        state.SkipWithError("ORNEX_CANNY_IMAGE does not name a 1920x1080 8-bit raw image");
        return;
    }
    std::vector<T> image(bytes.size());
    for (int32_t r = 0; r < rows; ++r) {
        for (int32_t c = 0; c < cols; ++c) {
            image[r + size_t(c) * rows] = T(bytes[size_t(r) * cols + c]);
        }
    }
    runCanny(state, image, rows, cols);
}

BENCHMARK(cannyUserThresholds<float>)->Unit(benchmark::kMillisecond);
BENCHMARK(cannyUserThresholds<double>)->Unit(benchmark::kMillisecond);
// With repetitions, the fastest one is reported too: on a busy machine it is
// the figure closest to a quiet one.
double fastest(const std::vector<double> &times) { return *std::min_element(times.begin(), times.end()); }
BENCHMARK(cannyUserThresholdsOnImageFile<float>)->Unit(benchmark::kMillisecond)->ComputeStatistics("min", fastest);
BENCHMARK(cannyUserThresholdsOnImageFile<double>)->Unit(benchmark::kMillisecond)->ComputeStatistics("min", fastest);

} // namespace

