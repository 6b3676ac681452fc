#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

// The user-threshold Canny driver on a 1920x1080 scene of blobs and
// stripes, kernels of length 5.
template <class T>
void cannyUserThresholds(benchmark::State &state)
{
    constexpr int32_t rows = 1080, cols = 1920, length = 5;
    std::vector<T> image(size_t(rows) * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            image[r + size_t(c) * rows] =
                T(100 + 80 * std::sin(0.02 * c) * std::cos(0.03 * r) + ((r / 40 + c / 60) % 2 ? 40 : 0));
        }
    }
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
}

BENCHMARK(cannyUserThresholds<float>)->Unit(benchmark::kMillisecond);
BENCHMARK(cannyUserThresholds<double>)->Unit(benchmark::kMillisecond);

} // namespace
