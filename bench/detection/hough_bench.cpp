#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "ornex_rt.h"

namespace {

constexpr int32_t side = 1024;

// A 1024x1024 binary image: about 1% scattered pixels (an integer hash of
// the position, so that the OpenCV yardstick draws the very same image) and
// six straight lines, about 16,600 edge pixels in all.
std::vector<uint8_t> edgeImage()
{
    std::vector<uint8_t> image(size_t(side) * side, 0);
    for (uint32_t c = 0; c < uint32_t(side); ++c) {
        for (uint32_t r = 0; r < uint32_t(side); ++r) {
            uint32_t h = (r * 73856093u) ^ (c * 19349663u);
            h ^= h >> 13;
            h *= 0x5bd1e995u;
            h ^= h >> 15;
            image[r + size_t(c) * side] = h % 100 == 0;
        }
    }
    for (int32_t line = 0; line < 6; ++line) {
        for (int32_t r = 0; r < side; ++r) {
            image[r + size_t((r * (line + 1) / 7 + 100 * line) % side) * side] = 1;
        }
    }
    return image;
}

// The vote of that image with 180 angles (a table of 91 sines from -90 to
// 0 degrees) and rho bins one pixel apart over the diagonal each way.
template <class T>
void houghVote(benchmark::State &state)
{
    constexpr int32_t numTheta = 91;
    const auto image = edgeImage();
    std::vector<T> sines(numTheta);
    for (int32_t t = 0; t < numTheta; ++t) {
        sines[t] = T(std::sin((-90.0 + 90.0 * t / (numTheta - 1)) * 3.14159265358979 / 180));
    }
    const T rho0 = T(-std::ceil(side * std::sqrt(2.0)));
    const int32_t numRho = 2 * int32_t(-rho0) + 1;
    std::vector<T> accumulator(size_t(numRho) * (2 * numTheta - 2));
    for (auto _ : state) {
        if constexpr (sizeof(T) == 8) {
            ORNEX_Hough_D(image.data(), accumulator.data(), sines.data(), &rho0, side, side, numRho, numTheta);
        } else {
            ORNEX_Hough_R(image.data(), accumulator.data(), sines.data(), &rho0, side, side, numRho, numTheta);
        }
        benchmark::DoNotOptimize(accumulator.data());
    }
    int64_t pixels = 0;
    for (uint8_t p : image) {
        pixels += p != 0;
    }
    state.counters["votes"] = benchmark::Counter(double(pixels) * (2 * numTheta - 2),
                                                 benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(houghVote<float>)->Unit(benchmark::kMillisecond);
BENCHMARK(houghVote<double>)->Unit(benchmark::kMillisecond);

} // namespace
