#pragma once

// Coarse-to-fine flow: both frames halved level by level, the flow found on
// the coarsest level, then on each finer level doubled, the second frame
// warped back by it, and the flow that remains found and added.

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "ornex/image.hpp"
#include "ornex/kernels.hpp"

namespace ornex::detail {

// No level is made smaller than this on either side.
constexpr int32_t smallestFlowLevel = 8;

// Smoothed by the binomial 1 4 6 4 1 (over 16) along both axes, edges
// repeated, then every other row and column from the first: pixel (r, c)
// of the result stands where (2r, 2c) stood.
template <class T>
Image<T> halved(ImageView<const T> image)
{
    const T taps[5] = {T(1) / 16, T(4) / 16, T(6) / 16, T(4) / 16, T(1) / 16};
    const int32_t rows = image.rows, cols = image.cols, halfRows = (rows + 1) / 2, halfCols = (cols + 1) / 2;
    Image<T> down(halfRows, cols), result(halfRows, halfCols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < halfRows; ++r) {
            T sum = 0;
            for (int32_t k = -2; k <= 2; ++k) {
                sum += taps[k + 2] * image(std::clamp(2 * r + k, 0, rows - 1), c);
            }
            down(r, c) = sum;
        }
    }
    for (int32_t c = 0; c < halfCols; ++c) {
        for (int32_t r = 0; r < halfRows; ++r) {
            T sum = 0;
            for (int32_t k = -2; k <= 2; ++k) {
                sum += taps[k + 2] * down(r, std::clamp(2 * c + k, 0, cols - 1));
            }
            result(r, c) = sum;
        }
    }
    return result;
}

// x within [0, last]; NaN goes to 0, so that a field of NaNs (from frames
// holding them) cannot send a read outside the image.
template <class T>
T clampedPosition(T x, int32_t last)
{
    return x >= 0 ? std::min(x, T(last)) : T(0);
}

// The image at a real (row, col) through one of the library's sampling
// kernels, the position clamped to the image.
template <class T, class Kernel>
T sampledAt(Kernel kernel, ImageView<const T> image, T row, T col)
{
    T value = 0;
    kernel(image.data, clampedPosition(row, image.rows - 1), clampedPosition(col, image.cols - 1),
           uint32_t(image.rows), uint32_t(image.cols), &value, 0, 1, 0, 0);
    return value;
}

// A coarse level's flow component on the next finer level's grid: fine
// pixel (r, c) lies at (r / 2, c / 2) of the coarse level and moves twice as
// far.
template <class T>
Image<T> doubledFlow(const Image<T> &coarse, int32_t rows, int32_t cols)
{
    Image<T> fine(rows, cols);
    for (int32_t c = 0; c < cols; ++c) {
        for (int32_t r = 0; r < rows; ++r) {
            fine(r, c) = 2 * sampledAt(Kernels<T>::bilinearSample, coarse.view(), T(r) / 2, T(c) / 2);
        }
    }
    return fine;
}

// The frame moved back by the flow: pixel (r, c) takes the frame's value
// at (r + v, c + u), where the content found at (r, c) went. Bilinear on
// purpose: the library's cubic (a = -1) does not reproduce a ramp, and would
// move every sample by up to a tenth of a pixel.
template <class T>
Image<T> warpedBack(ImageView<const T> frame, const Image<T> &u, const Image<T> &v)
{
    Image<T> warped(frame.rows, frame.cols);
    for (int32_t c = 0; c < frame.cols; ++c) {
        for (int32_t r = 0; r < frame.rows; ++r) {
            warped(r, c) = sampledAt(Kernels<T>::bilinearSample, frame, T(r) + v(r, c), T(c) + u(r, c));
        }
    }
    return warped;
}

// estimate(frame1, frame2) gives a field with members u and v in the
// content's direction. One level is estimate itself.
template <class T, class Estimate>
auto coarseToFine(ImageView<const T> frame1, ImageView<const T> frame2, int32_t levels, const Estimate &estimate)
{
    std::vector<Image<T>> coarser1, coarser2;
    ImageView<const T> top1 = frame1, top2 = frame2;
    while (int32_t(coarser1.size()) + 1 < levels && (std::min(top1.rows, top1.cols) + 1) / 2 >= smallestFlowLevel) {
        coarser1.push_back(halved(top1));
        coarser2.push_back(halved(top2));
        top1 = coarser1.back().view();
        top2 = coarser2.back().view();
    }
    auto flow = estimate(top1, top2);
    for (size_t level = coarser1.size(); level-- > 0;) {
        const ImageView<const T> first = level == 0 ? frame1 : coarser1[level - 1].view();
        const ImageView<const T> second = level == 0 ? frame2 : coarser2[level - 1].view();
        Image<T> u = doubledFlow(flow.u, first.rows, first.cols), v = doubledFlow(flow.v, first.rows, first.cols);
        const Image<T> warped = warpedBack(second, u, v);
        const auto remaining = estimate(first, warped.view());
        for (size_t k = 0; k < u.values().size(); ++k) {
            u.values()[k] += remaining.u.values()[k];
            v.values()[k] += remaining.v.values()[k];
        }
        flow.u = std::move(u);
        flow.v = std::move(v);
    }
    return flow;
}

} // namespace ornex::detail
