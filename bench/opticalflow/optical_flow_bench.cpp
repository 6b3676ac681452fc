#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int32_t rows = 480, cols = 640;

template <class T>
std::vector<T> frame(double down, double right)
{
    std::vector<T> image(rows * cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            const double y = r - down, x = c - right;
            image[r + c * rows] = T(128 + 50 * std::sin(0.11 * x + 0.07 * y) + 30 * std::cos(0.13 * y - 0.05 * x));
        }
    }
    return image;
}

template <class T>
std::vector<T> plane(size_t scalars = size_t(rows) * cols)
{
    return std::vector<T>(scalars);
}

// Horn-Schunck with exactly 10 sweeps.
template <class T>
void hornSchunck(benchmark::State &state)
{
    const auto image1 = frame<T>(0, 0), image2 = frame<T>(0.4, 0.3);
    auto velocity = plane<T>(), velocityY = plane<T>();
    auto col1 = plane<T>(rows), col2 = plane<T>(rows), row1 = plane<T>(cols), row2 = plane<T>(cols);
    std::vector<T> products[6] = {plane<T>(), plane<T>(), plane<T>(), plane<T>(), plane<T>(), plane<T>()};
    std::vector<T> columns[4] = {plane<T>(rows), plane<T>(rows), plane<T>(rows), plane<T>(rows)};
    const T smoothness = 1, threshold = 0;
    const int32_t sweeps = 10;
    for (auto _ : state) {
        auto run = [&](auto flow) {
            flow(image1.data(), image2.data(), velocity.data(), velocityY.data(), col1.data(), col2.data(),
                 row1.data(), row2.data(), products[0].data(), products[1].data(), products[2].data(),
                 products[3].data(), products[4].data(), products[5].data(), columns[0].data(), columns[1].data(),
                 columns[2].data(), columns[3].data(), &smoothness, 1, 0, &sweeps, &threshold, rows, cols);
        };
        if constexpr (sizeof(T) == 8) {
            run(ORNEX_OpticalFlow_HS_D);
        } else {
            run(ORNEX_OpticalFlow_HS_R);
        }
        benchmark::DoNotOptimize(velocity.data());
    }
}

template <class T>
void lucasKanade(benchmark::State &state)
{
    const auto image1 = frame<T>(0, 0), image2 = frame<T>(0.4, 0.3);
    auto result = plane<T>();
    std::vector<T> sums[5] = {plane<T>(), plane<T>(), plane<T>(), plane<T>(), plane<T>()};
    const T threshold = T(0.01);
    for (auto _ : state) {
        auto run = [&](auto flow) {
            flow(image1.data(), image2.data(), result.data(), sums[0].data(), sums[1].data(), sums[2].data(),
                 sums[3].data(), sums[4].data(), &threshold, rows, cols);
        };
        if constexpr (sizeof(T) == 8) {
            run(ORNEX_OpticalFlow_LK_D);
        } else {
            run(ORNEX_OpticalFlow_LK_R);
        }
        benchmark::DoNotOptimize(result.data());
    }
}

// Five frames, 5-tap temporal and spatial filters (derivative of a Gaussian
// and the Gaussian), a 5-tap window.
template <class T>
void lucasKanadeGaussianDerivative(benchmark::State &state)
{
    std::vector<std::vector<T>> frames;
    const T *framePointers[5];
    for (int k = 0; k < 5; ++k) {
        frames.push_back(frame<T>(0.4 * k, 0.3 * k));
        framePointers[k] = frames.back().data();
    }
    const T derivative[5] = {T(0.107), T(0.246), T(0), T(-0.246), T(-0.107)};
    const T smoothing[5] = {T(0.054), T(0.244), T(0.403), T(0.244), T(0.054)};
    const T window[5] = {T(1.0 / 16), T(4.0 / 16), T(6.0 / 16), T(4.0 / 16), T(1.0 / 16)};
    auto result = plane<T>();
    std::vector<T> sums[5] = {plane<T>(), plane<T>(), plane<T>(), plane<T>(), plane<T>()};
    const T threshold = T(0.01);
    for (auto _ : state) {
        auto run = [&](auto flow) {
            flow(framePointers, result.data(), sums[0].data(), sums[1].data(), sums[2].data(), sums[3].data(),
                 sums[4].data(), &threshold, derivative, derivative, smoothing, smoothing, window, rows, cols, 5, 5, 5,
                 5, 5, 1);
        };
        if constexpr (sizeof(T) == 8) {
            run(ORNEX_OpticalFlow_LK_GDER_D);
        } else {
            run(ORNEX_OpticalFlow_LK_GDER_R);
        }
        benchmark::DoNotOptimize(result.data());
    }
}

BENCHMARK(hornSchunck<float>)->Unit(benchmark::kMillisecond);
BENCHMARK(hornSchunck<double>)->Unit(benchmark::kMillisecond);
BENCHMARK(lucasKanade<float>)->Unit(benchmark::kMillisecond);
BENCHMARK(lucasKanade<double>)->Unit(benchmark::kMillisecond);
BENCHMARK(lucasKanadeGaussianDerivative<float>)->Unit(benchmark::kMillisecond);
BENCHMARK(lucasKanadeGaussianDerivative<double>)->Unit(benchmark::kMillisecond);

} // namespace
