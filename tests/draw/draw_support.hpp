#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <tuple>
#include <type_traits>
#include <vector>

#include "ornex_rt.h"

namespace drawtest {

inline int32_t uniform(std::mt19937 &rng, int32_t low, int32_t high)
{
    return std::uniform_int_distribution<int32_t>(low, high)(rng);
}

template <class T>
T randomValue(std::mt19937 &rng)
{
    T v{};
    if constexpr (std::is_floating_point_v<T>)
        v = T(uniform(rng, -1000, 1000)) / T(8);
    else if constexpr (std::is_integral_v<T>)
        v = T(rng());
    else
        std::generate(v.begin(), v.end(), [&] { return uint8_t(rng()); });
    return v;
}

// Fill blend of the polygon fillers and discs: fill*a + old*(1 - a) summed in double; Q10 (fill*a + old*(1024 - a))
// >> 10 in 32 bits, the keep weight a signed 16-bit, the store truncated.
template <class T, class O>
T blendFill(T old, T fill, O a)
{
    if constexpr (std::is_floating_point_v<T>)
        return T(double(fill) * double(a) + double(old) * (1.0 - double(a)));
    else
        return T(int32_t(uint32_t(int32_t(fill) * a) + uint32_t(int32_t(old) * int16_t(1024 - a))) >> 10);
}

// Keep-and-add blend of the brushes and kernels: keep*old + term; integers in 32 bits wrapping, (keep*old) >> 10
// arithmetic, the low bits stored.
template <class T, class K, class A>
T keepAdd(T old, K keep, A term)
{
    if constexpr (std::is_floating_point_v<T>)
        return T(keep * old + term);
    else
        return T(uint32_t(int32_t(uint32_t(int32_t(keep)) * uint32_t(int32_t(old))) >> 10) + uint32_t(term));
}

template <class O>
O randomOpacity(std::mt19937 &rng)
{
    const O full = std::is_floating_point_v<O> ? O(1) : O(1024);
    const int32_t pick = uniform(rng, 0, 2);
    return pick == 0 ? O(0) : pick == 1 ? full : O(full * O(uniform(rng, 1, 63)) / O(64));
}

// Stand-ins in draw(): Dst for the destination (one plane pointer for the intensity drawer, three for the RGB one),
// Clip for the four rectangle bounds.
struct Dst {};
struct Clip {};

// A random scene: three intensity planes (the drawer given numPlanes of them), three RGB planes, `stride` apart with
// odd gaps, every element random so that whole-buffer comparisons check all that must stay; a colour and a clip
// rectangle (sometimes the whole image). at() changes the wanted buffers inside the rectangle only.
template <class T>
struct Scene {
    int32_t rows, stride, numPlanes;
    std::vector<T> image, rgb, wantImage, wantRgb;
    std::array<int32_t, 4> rc;
    std::array<T, 3> colour;
    Scene(std::mt19937 &rng, int32_t r, int32_t cols, int32_t planes)
        : rows(r), stride(r * cols + 3), numPlanes(planes), image(3 * size_t(stride)), rgb(image.size()),
          rc{uniform(rng, 0, r / 3), uniform(rng, r / 2, r - 1), uniform(rng, 0, cols / 3),
             uniform(rng, cols / 2, cols - 1)},
          colour{randomValue<T>(rng), randomValue<T>(rng), randomValue<T>(rng)}
    {
        if (rng() % 4 == 0)
            rc = {0, r - 1, 0, cols - 1};
        for (auto *buf : {&image, &rgb})
            std::generate(buf->begin(), buf->end(), [&] { return randomValue<T>(rng); });
        wantImage = image, wantRgb = rgb;
    }
    // Whether (r, c) lies in the clip rectangle.
    bool inside(int32_t r, int32_t c) const { return r >= rc[0] && r <= rc[1] && c >= rc[2] && c <= rc[3]; }
    template <class F>
    void at(int32_t r, int32_t c, F f)
    {
        for (int32_t p = 0; r >= rc[0] && r <= rc[1] && c >= rc[2] && c <= rc[3] && p < 3; ++p) {
            const size_t k = p * size_t(stride) + r + size_t(c) * rows;
            wantRgb[k] = f(wantRgb[k], p);
            if (p < numPlanes)
                wantImage[k] = f(wantImage[k], p);
        }
    }
    T *dst() { return image.data(); }
    T *red() { return rgb.data(); }
    T *green() { return rgb.data() + stride; }
    T *blue() { return rgb.data() + 2 * size_t(stride); }
    // Calls the intensity drawer (numPlanes and stride last) and the RGB one.
    template <class FI, class FRgb, class... A>
    void draw(FI drawI, FRgb drawRgb, A... args)
    {
        auto expand = [&](auto x, auto dsts) {
            if constexpr (std::is_same_v<decltype(x), Dst>)
                return dsts;
            else if constexpr (std::is_same_v<decltype(x), Clip>)
                return std::tuple(rc[0], rc[1], rc[2], rc[3]);
            else
                return std::tuple(x);
        };
        std::apply(drawI, std::tuple_cat(expand(args, std::tuple(dst()))..., std::tuple(numPlanes, stride)));
        std::apply(drawRgb, std::tuple_cat(expand(args, std::tuple(red(), green(), blue()))...));
    }
};

// Draws `trials` random scenes (the intensity drawer given 0 to 3 planes): body(trial, rng, scene) draws and marks
// the wanted changes, after which every element of both buffers must match.
template <class T, class Body>
void forEachScene(uint32_t seed, int trials, int32_t rows, int32_t cols, Body body)
{
    std::mt19937 rng(seed);
    for (int trial = 0; trial < trials; ++trial) {
        Scene<T> s(rng, rows, cols, trial % 8 == 0 ? 0 : 1 + trial % 3);
        body(trial, rng, s);
        ASSERT_TRUE(s.image == s.wantImage && s.rgb == s.wantRgb) << trial;
    }
}

// Polygon edges: scan start and end column, current row, row delta, scan length, row step, error term, normal weight.
using Edge = std::array<int32_t, 8>;
constexpr int32_t unwritten = -777;

// The edge table written out: each edge oriented toward larger columns (equal columns: the second vertex starts),
// fields 5 and 7 left as the buffer held them when not written, sorted stably by start, end and row.
inline std::vector<Edge> slowEdgeTable(const std::vector<int32_t> &v, bool wantWeight)
{
    std::vector<Edge> edges;
    for (int32_t e = 0, n = int32_t(v.size()) / 2; e < n; ++e) {
        const int32_t j = (e + 1) % n, s = v[2 * e + 1] < v[2 * j + 1] ? e : j, t = s == e ? j : e;
        const int32_t length = v[2 * t + 1] - v[2 * s + 1], delta = v[2 * t] - v[2 * s];
        const double weight = length * 1024.0 / std::sqrt(double(delta * delta + length * length));
        edges.push_back({v[2 * s + 1], v[2 * t + 1], v[2 * s], delta, length, length > 0 ? std::abs(delta) / length : unwritten,
                         0, !wantWeight ? unwritten : std::isnan(weight) ? INT32_MIN : int32_t(weight)});
    }
    std::stable_sort(edges.begin(), edges.end(), [](const Edge &a, const Edge &b) {
        return std::tie(a[0], a[1], a[2]) < std::tie(b[0], b[1], b[2]);
    });
    return edges;
}

} // namespace drawtest
