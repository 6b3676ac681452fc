// Hough voting and line end points, double and single, on binary images of
// up to 32 x 32.
// Kept in range, as the header asks: a true sine table from -90 to 0
// degrees (numTheta 2..64), rhoFirst negative and at or beyond minus the
// image diagonal so every vote falls in a bin, the accumulator exactly
// numRho x (2 numTheta - 2). Lines are what voting yields: theta in [-90, 90) degrees,
// rho within the diagonal.
#include <cmath>

#include "fuzz_input.hpp"
#include "ornex_rt.h"

namespace {

template <class T, class P>
void run(FuzzInput &in, void (*hough)(const uint8_t *, T *, const T *, const T *, int32_t, int32_t, int32_t, int32_t),
         void (*lines)(const T *, const T *, int32_t *, int32_t, int32_t, int32_t),
         void (*linesO)(const T *, const T *, P *, int32_t, int32_t, int32_t))
{
    const double pi = 3.14159265358979323846;
    const int32_t rows = in.range(0, 32), cols = in.range(0, 32);
    const int32_t numTheta = in.range(2, 64), numRho = in.range(2, 64);
    const double diagonal = std::hypot(double(std::max(rows - 1, 0)), double(std::max(cols - 1, 0)));
    const T rhoFirst = T(-(std::max(diagonal, 1.0) + in.range(0, 8)));
    std::vector<T> sines(static_cast<size_t>(numTheta));
    for (int32_t t = 0; t < numTheta; ++t)
        sines[size_t(t)] = T(std::sin(pi / 2 * (double(t) / (numTheta - 1) - 1)));
    std::vector<uint8_t> image(size_t(rows) * cols);
    for (uint8_t &pixel : image)
        pixel = in.range(0, 3) == 0;
    std::vector<T> accumulator(size_t(numRho) * (2 * numTheta - 2));
    hough(image.data(), accumulator.data(), sines.data(), &rhoFirst, rows, cols, numRho, numTheta);

    const int32_t numLines = in.range(0, 8);
    std::vector<T> theta(static_cast<size_t>(numLines)), rho(theta);
    for (int32_t k = 0; k < numLines; ++k) {
        theta[size_t(k)] = T(pi * (in.range(0, 65535) / 65536.0 - 0.5));
        rho[size_t(k)] = T(diagonal * in.real(1));
    }
    std::vector<int32_t> points(size_t(numLines) * 4);
    std::vector<P> pointsO(size_t(numLines) * 4);
    lines(theta.data(), rho.data(), points.data(), numLines, rows, cols);
    linesO(theta.data(), rho.data(), pointsO.data(), numLines, rows, cols);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    if (in.flag())
        run<double, double>(in, ORNEX_Hough_D, ORNEX_HoughLines_D, ORNEX_HoughLines_DO);
    else
        run<float, float>(in, ORNEX_Hough_R, ORNEX_HoughLines_R, ORNEX_HoughLines_RO);
    return 0;
}
