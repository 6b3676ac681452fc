// Canny drivers, user and automatic thresholds, double and single, on
// images of up to 24 x 24.
// Kept in range, as the header asks: kernel length L with L - 1 at most the
// smaller image side (the periodic borders wrap once at most); every buffer
// exactly M x N; thresholds on 0..1 (user) or a percentage 0..100 (auto).
// Pixels and kernel taps are finite, within +-64 and +-2.
#include "fuzz_input.hpp"
#include "ornex_rt.h"

namespace {

template <class T>
using Driver = void (*)(const T *, const T *, const T *, T *, T *, uint8_t *, T *, const T *, int32_t, int32_t,
                        int32_t);

template <class T>
void run(FuzzInput &in, Driver<T> userTh, Driver<T> autoTh)
{
    const bool automatic = in.flag();
    const int32_t rows = in.range(1, 24), cols = in.range(1, 24);
    const int32_t length = in.range(1, std::min(rows, cols) + 1);
    const size_t pixels = size_t(rows) * cols;
    T thresholds[2];
    if (automatic) {
        thresholds[0] = T(in.range(0, 100));
    } else {
        thresholds[0] = T(in.range(0, 256)) / T(256);
        thresholds[1] = T(in.range(0, 256)) / T(256);
    }
    const std::vector<T> smoothing = in.reals<T>(size_t(length), 2), derivative = in.reals<T>(size_t(length), 2);
    const std::vector<T> image = in.reals<T>(pixels, 64);
    std::vector<T> workA(pixels), workB(pixels), magnitude(pixels);
    std::vector<uint8_t> edges(pixels);
    (automatic ? autoTh : userTh)(image.data(), smoothing.data(), derivative.data(), workA.data(), workB.data(),
                                  edges.data(), magnitude.data(), thresholds, rows, cols, length);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    if (in.flag())
        run<double>(in, ORNEX_EdgeCanny_userTh_D, ORNEX_EdgeCanny_autoTh_D);
    else
        run<float>(in, ORNEX_EdgeCanny_userTh_R, ORNEX_EdgeCanny_autoTh_R);
    return 0;
}
