// Every exported function, called on seeded inputs, hashed per name (64-bit FNV-1a over the little-endian bytes of its
// outputs and return value) and compared with determinism_hashes.txt; every SIMD level must give the same hashes, and
// so must every build (64-bit, 32-bit, sanitizers, ARM). Exports whose outputs hold a NaN are also compared with
// determinism_nan_blind_hashes.txt, and only there on ARM, whose NaNs have another sign. Inputs come from a generator
// of our own seeded by the function's name, so no standard library distribution decides them. After a deliberate
// change of results, rewrite both tables (on x86) and commit them saying why:
//   ORNEX_WRITE_HASHES=tests/frame/determinism_hashes.txt build/release/tests/frame/frame_determinism_test
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "ornex_rt.h"
#include "frame/simd_level.hpp"

namespace {

using i32 = int32_t;
using std::vector;
static_assert(std::endian::native == std::endian::little, "hashes are taken over little-endian bytes");

// The sign and payload of a NaN that an operation makes are the processor's: negative on x86, where the table was
// recorded, positive on ARM. So the hash is also taken with every NaN hashed as one value (nanBlind), for the exports
// whose outputs hold one (sawNan).
struct Fnv {
    uint64_t h = 0xcbf29ce484222325ull, nanBlind = h;
    bool sawNan = false;
    static void mix(uint64_t &hash, const void *p, size_t n)
    {
        for (size_t i = 0; i < n; ++i) hash = (hash ^ static_cast<const uint8_t *>(p)[i]) * 0x100000001b3ull;
    }
    void bytes(const void *p, size_t n) { mix(h, p, n), mix(nanBlind, p, n); }
    template <class F> void floating(F x)
    {
        sawNan |= std::isnan(x);
        const F blind = std::isnan(x) ? std::numeric_limits<F>::quiet_NaN() : x;
        mix(h, &x, sizeof x), mix(nanBlind, &blind, sizeof blind);
    }
    template <class T> Fnv &operator<<(const T &v)
    {
        if constexpr (std::is_floating_point_v<T>) floating(v);
        else if constexpr (std::is_arithmetic_v<T>) bytes(&v, sizeof v);
        else if constexpr (requires { v[0].data(); } || std::is_floating_point_v<std::decay_t<decltype(v[0])>>)
            for (const auto &x : v) *this << x;
        else bytes(v.data(), v.size() * sizeof(v[0]));
        return *this;
    }
};
std::string hex(uint64_t h)
{
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(h));
    return text;
}
std::map<std::string, Fnv> results;
Fnv &H(const char *name) { return results[name]; }

// splitmix64, seeded with the hash of the function's name. A call that takes several drawn values gets them from
// names drawn beforehand, last argument first: the order in which GCC evaluates arguments on x86, where the table was
// recorded (on ARM it goes first to last).
struct Rng {
    uint64_t s;
    explicit Rng(const char *name) : s((Fnv() << std::string(name)).h) {}
    uint64_t next()
    {
        const uint64_t z = (s += 0x9E3779B97F4A7C15ull), y = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        const uint64_t x = (y ^ (y >> 27)) * 0x94D049BB133111EBull;
        return x ^ (x >> 31);
    }
    i32 in(i32 lo, i32 hi) { return lo + i32(next() % uint64_t(int64_t(hi) - lo + 1)); }
};
// Runs body(g, k) for k < count with the generator seeded by `name`.
template <class Body> void cases(const char *name, int count, Body body)
{
    Rng g(name);
    for (int k = 0; k < count; ++k) body(g, k);
}
// The drivers below are called as driver(g, k, name, f, T()) for k < count: case k of export f, elements T.
void each(const char *name, auto f, int count, auto driver, auto tag)
{
    cases(name, count, [&](Rng &g, int k) { driver(g, k, name, f, tag); });
}

// Floating types: in [-128, 128], eighths (halves and ties) or thirds of 2^-13 (every bit of the mantissa in use, so
// that the order of operations shows), now and then 0. Integers: the extremes one time in four, else any bit pattern.
// Logical: 0/1.
template <class T> T any(Rng &g, bool logical = false)
{
    using L = std::numeric_limits<T>;
    if (logical) return T(g.in(0, 1));
    const i32 pick = g.in(0, 7);
    if constexpr (std::is_floating_point_v<T>)
        return pick == 0 ? T(0) : pick < 4 ? T(g.in(-1024, 1024)) / T(8) : T(g.in(-3 << 20, 3 << 20)) / T(3 << 13);
    else return pick == 0 ? L::min() : pick == 1 ? L::max() : T(g.next());
}
// n values of any<T>, or halves in [-2, 2] (small: costs and sums that tie).
template <class T> vector<T> many(Rng &g, size_t n, bool logical = false, bool halves = false)
{
    vector<T> v(n);
    for (auto &x : v) x = halves ? T(g.in(-4, 4)) / T(2) : any<T>(g, logical);
    return v;
}
template <class T> vector<T> small(Rng &g, size_t n) { return many<T>(g, n, false, true); }
// An opacity or weight: sixteenths of [0, 1], or Q10 with its ends.
template <class T> T fraction(Rng &g)
{
    if constexpr (std::is_floating_point_v<T>) return T(g.in(0, 16)) / T(16);
    const i32 pick = g.in(0, 5);
    return T(pick == 0 ? 0 : pick == 1 ? 1024 : pick == 2 ? 512 : g.in(0, 1024));
}
template <class T> vector<T> frames(Rng &g, i32 count, i32 pixels, vector<const T *> &pointers)
{
    vector<T> all = many<T>(g, static_cast<size_t>(count * pixels));
    for (i32 k = 0; k < count; ++k) pointers.push_back(all.data() + k * pixels);
    return all;
}
// Packed loops: sizes `s`, 0, 1, N-1, N, N+1 for N the Ts in packs of 16 bytes up to `widest` times that, and 2N+1.
template <class T, i32 n = 16 / sizeof(T)> vector<i32> packSizes(i32 widest, vector<i32> s)
{
    for (i32 w = n; w <= widest * n; w *= 2) s.insert(s.end(), {w - 1, w, w + 1});
    s.insert(s.end(), {0, 1, 2 * widest * n + 1});
    return s;
}
// Kinds: 0 small integers (ties), 1 magnitudes 2^-44 to 2^20 (sums that round differently in another order), 2 those
// mixed with -0, infinities, the largest values and, if `nan`, NaN.
template <class T> vector<T> edgy(Rng &g, size_t n, i32 kind, bool nan = true)
{
    using L = std::numeric_limits<T>;
    const T special[] = {T(-0.0), L::infinity(), -L::infinity(), L::max(), -L::max(), nan ? L::quiet_NaN() : T(0)};
    vector<T> v(n);
    for (auto &x : v) {
        const i32 pick = kind == 2 ? g.in(0, 3) : kind % 2;
        const i32 exponent = pick == 1 || pick == 2 ? g.in(-44, 8) : 0;
        x = pick == 0 ? T(g.in(-3, 3)) : pick == 3 ? special[g.in(0, 5)] : std::ldexp(T(g.in(-4095, 4095)), exponent);
    }
    return v;
}
// n outputs between margins of eight, all `fill`, hashed whole: a write past either end changes the hash.
template <class T> struct Guarded : vector<T> {
    Guarded(size_t n, T fill) : vector<T>(n + 16, fill) {}
    T *mid() { return this->data() + 8; }
};
template <class F> constexpr size_t arity = 0;
template <class R, class... A> constexpr size_t arity<R (*)(A...)> = sizeof...(A);
// Buffers of n values `fill`; first<K>(body) calls body(buffer 0, ..., buffer K-1).
template <class T> struct Buffers {
    vector<vector<T>> b;
    Buffers(size_t count, size_t n, T fill) : b(count, vector<T>(n, fill)) {}
    template <size_t K> void first(auto body)
    {
        [&]<size_t... I>(std::index_sequence<I...>) { body(b[I].data()...); }(std::make_index_sequence<K>{});
    }
};

// Drawing: three planes of M x N an odd stride S apart (numPlanes 3 for the intensity members), clip rectangles inside
// the image, geometry past it.
constexpr i32 M = 13, N = 14, S = M * N + 3;
struct Clip { i32 r0, r1, c0, c1; };
std::array<i32, 4> ends(Rng &g)
{
    std::array<i32, 4> e{g.in(-4, M + 3), g.in(-4, N + 3), g.in(-4, M + 3), g.in(-4, N + 3)};
    const i32 kind = g.in(0, 5); // horizontal, vertical (either way), a point, a diagonal, or any
    if (kind == 0 || kind == 2) e[2] = e[0];
    if (kind == 1 || kind == 2) e[3] = e[1];
    if (kind == 3) e[2] = e[0] + e[3] - e[1];
    return e;
}
// A coverage table (smoothstep across one pixel about the edge), in the image's precision or in Q10.
template <class W> vector<W> coverage()
{
    vector<W> w(49);
    for (i32 i = 0, j = 0; i < 49; ++i, j = std::clamp(i - 16, 0, 16))
        w[i] = std::is_floating_point_v<W> ? W(W(j * j * (48 - 2 * j)) / 4096) : W(j * j * (48 - 2 * j) / 4);
    return w;
}
template <class T> using Opacity = std::conditional_t<std::is_floating_point_v<T>, T, int16_t>;
// One seeded drawing case: the planes, colour, opacity and clip rectangle.
template <class T, class O = Opacity<T>> struct Scene {
    bool logical;
    vector<T> px, colour;
    O opacity;
    Clip c;
    vector<O> w = coverage<O>();
    Scene(Rng &g, const char *n)
        : logical(std::strstr(n, "Bool")), px(many<T>(g, 3 * S, logical)), colour(many<T>(g, 3, logical)),
          opacity(fraction<O>(g)), c{g.in(0, 2), g.in(M - 3, M - 1), g.in(0, 2), g.in(N - 3, N - 1)}
    {
    }
    T *p(i32 k) { return px.data() + k * S; }
};
// Circle centres and offsets, the centre past the image at times.
struct Centre { i32 r, c, a, b; };
Centre centre(Rng &g)
{
    const i32 a = g.in(-1, 6);
    return {g.in(-2, M + 1), g.in(-2, N + 1), std::max(a, 0), g.in(std::max(a, 0), 7)};
}

// Calls f(before..., planes..., after...): an intensity member with the one buffer as three planes S apart, or an RGB
// member with the three planes.
template <class Fn, class T, class O, class... A> bool draw(Fn f, Scene<T, O> &s, auto before, A... after)
{
    return std::apply([&](auto... b) {
        if constexpr (std::is_invocable_v<Fn, decltype(b)..., T *, A..., i32, i32>)
            return f(b..., s.p(0), after..., 3, S), true;
        else if constexpr (std::is_invocable_v<Fn, decltype(b)..., T *, T *, T *, A...>)
            return f(b..., s.p(0), s.p(1), s.p(2), after...), true;
        else return false;
    }, before);
}
// The first of the argument lists that f takes, with the drawing's planes.
template <class Fn, class T, class O, class... Lists> bool drawAny(Fn f, Scene<T, O> &s, auto before, Lists... lists)
{
    return (std::apply([&](auto... a) { return draw(f, s, before, a...); }, lists) || ...);
}

#define F(f) #f, f

// From case 10: candidate rows around runs of packs and a tile of 128, columns around a tile of four, inputs of each
// kind; kind 3 a zero block over a region repeating the block, so rounding alone picks the best. Regions have a margin.
const auto search = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    const i32 p = k - 10, kind = k % 4, bR = g.in(1, p < 0 ? 5 : 3), bC = g.in(1, p < 0 ? 5 : 3);
    const i32 rR = bR + (p < 0 ? g.in(0, 6) : packSizes<T>(4, {128, 129})[p / 28] - 1);
    const i32 rC = bC + (p < 0 ? g.in(0, 6) : std::array{0, 1, 3, 4, 5, 9, 33}[p / 4 % 7] - 1);
    const i32 bS = bR + g.in(0, 2), rS = rR + g.in(0, 2);
    const vector<T> block = p < 0 ? k % 2 ? many<T>(g, bS * bC) : small<T>(g, bS * bC) : edgy<T>(g, bS * bC, kind);
    const size_t area = size_t(rS * (rC + 2) + 2);
    vector<T> region = p < 0 ? k % 2 ? many<T>(g, area) : small<T>(g, area) : edgy<T>(g, area, kind);
    for (i32 i = 0; p >= 0 && kind == 3 && i < rR * rC; ++i)
        region[rS + 1 + i % rR + i / rR * rS] = block[i % rR % bR + i / rR % bC * bS];
    i32 col = -7, row = -7;
    f(p >= 0 && kind == 3 ? vector<T>(block.size()).data() : block.data(), region.data() + rS + 1, bS, rS, bC, bR, rC,
      rR, &col, &row);
    H(n) << col << row;
};

// The complex members (_C, _Z) write two values per pixel.
int parts(const char *n) { return std::strchr("CZ", n[std::strlen(n) - 1]) ? 2 : 1; }

// From case 3: searched rows around a pack, any sizes, inputs of every kind. Outputs between margins of eight.
const auto blockMatching = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    const i32 p = k - 3, m = g.in(p < 0 ? 5 : 0, 12), c = g.in(p < 0 ? 5 : 0, 12), bs[2] = {g.in(1, 4), g.in(1, 4)};
    const i32 ov[2] = {g.in(0, bs[0] - 1), g.in(0, bs[1] - 1)};
    const i32 d[2] = {p < 0 ? g.in(0, 3) : packSizes<T>(0, {2, 3, 4, 8})[p % 7], g.in(p < 0, 4)};
    const i32 p1R = m + ov[0], p1C = c + ov[1], p2R = m + 2 * (d[0] + ov[0] / 2), p2C = c + 2 * (d[1] + ov[1] / 2);
    const vector<T> a = p < 0 ? small<T>(g, m * c) : edgy<T>(g, m * c, p % 3);
    vector<T> b = p < 0 ? small<T>(g, m * c) : edgy<T>(g, m * c, p % 3), p1 = many<T>(g, p1R * p1C + 16);
    vector<T> p2(static_cast<size_t>(p2R * (p2C + ov[1] % 2) + ov[0] % 2 + 16), T(0));
    vector<T> motion(static_cast<size_t>(parts(n) * (m + 1) * (c + 1) + 8), T(-3));
    for (i32 i = 0; k == 1 && i < m * c; ++i) b[i] = a[(i % m + 1) % m + (i / m + 2) % c * m]; // moved content
    for (i32 i = 0; i < p2R * p2C; ++i) p2[i + 8] = T(i % 5 + 1);                              // to be cleared
    f(a.data(), b.data(), p1.data() + 8, p2.data() + 8, motion.data() + 8, bs, ov, d, m, c, p1R, p1C, p2R, p2C);
    H(n) << p1 << p2 << motion;
};

// Values of `size` bytes drawn by an intensity member (three planes S*size apart) and its RGB member, hashed under name
// and name_RGB.
void bytePlanes(const char *n, auto geometry, auto call)
{
    cases(n, 60, [&](Rng &g, int) {
        const i32 size = 1 << g.in(0, 3);
        const auto at = geometry(g);
        const Clip c = Scene<uint8_t>(g, "").c;
        vector<uint8_t> px = many<uint8_t>(g, static_cast<size_t>(3 * S * size)), px2 = px;
        const vector<uint8_t> value = many<uint8_t>(g, static_cast<size_t>(3 * size));
        call(at, px.data(), nullptr, nullptr, value.data(), size, c);
        call(at, px2.data(), &px2[S * size], &px2[2 * S * size], value.data(), size, c);
        H(n) << px, H((std::string(n) + "_RGB").c_str()) << px2;
    });
}

void lines()
{
    cases("ORNEX_ClipLine", 400, [](Rng &g, int) {
        const auto e = ends(g);
        i32 p1[2] = {e[0], e[1]}, p2[2] = {e[2], e[3]}, rect[4] = {g.in(0, 8), g.in(8, 20), g.in(0, 8), g.in(8, 20)};
        const i32 kept = ORNEX_ClipLine(p1, p2, rect);
        H("ORNEX_ClipLine") << kept << p1[0] << p1[1] << p2[0] << p2[1];
    });
    bytePlanes("ORNEX_Line_Bresenham", ends, [](auto e, uint8_t *p0, uint8_t *p1, uint8_t *p2, auto value, i32 size,
                                                 Clip c) {
        if (p1) ORNEX_Line_Bresenham_RGB(e[0], e[1], e[2], e[3], p0, p1, p2, M, value, size, c.r0, c.r1, c.c0, c.c1);
        else ORNEX_Line_Bresenham(e[0], e[1], e[2], e[3], p0, M, value, size, c.r0, c.r1, c.c0, c.c1, 3, S);
    });
}

const auto aaLine = []<class T>(Rng &g, int, const char *n, auto f, T) {
    using W = std::conditional_t<std::is_same_v<T, uint16_t>, uint16_t, Opacity<T>>;
    vector<W> table = many<W>(g, 5 * 25); // row 0 the part kept, rows level.. the terms
    for (int d = 0; d < 25; ++d) table[d] = fraction<W>(g);
    Scene<T> s(g, n);
    const auto e = ends(g);
    const auto after = std::tuple{M, s.c.r0, s.c.r1, s.c.c0, s.c.c1, table.data(), g.in(1, 2)};
    EXPECT_TRUE(drawAny(f, s, std::tuple{e[0], e[1], e[2], e[3]}, after)) << n;
    H(n) << s.px;
};

// Optical flow: frames of these sizes (rows, columns), outputs and scratch preset so that what is not written shows.
const i32 flowSizes[][2] = {{7, 5}, {1, 4}, {6, 1}, {9, 10}, {2, 2}};

const auto sobel = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    const auto [m, c] = flowSizes[k];
    const vector<T> a = many<T>(g, m * c), b = many<T>(g, m * c);
    const T smooth = T(g.in(1, 8)) / T(4);
    Buffers<T> o(12, static_cast<size_t>(m * c + m + c), T(5));
    o.template first<12>([&](auto... p) { f(a.data(), b.data(), p..., &smooth, m, c); });
    for (int i : {0, 1, 6, 7, 8, 9, 10, 11}) H(n) << o.b[i]; // not the unused row buffers nor the column scratch
};

// The real members return the velocity squared and v, the complex ones the velocity, u and v.
const auto hornSchunck = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    const auto [m, c] = flowSizes[k];
    const i32 iterations = g.in(1, 6);
    const vector<T> a = many<T>(g, m * c), b = many<T>(g, m * c);
    const T smooth = T(g.in(1, 8)) / T(4), threshold = T(g.in(0, 4)) / T(64);
    const uint8_t byThreshold = uint8_t(g.in(0, 1));
    Buffers<T> o(16, static_cast<size_t>(2 * m * c + m + c), T(5));
    auto call = [&](auto... p) { f(a.data(), b.data(), p..., &smooth, 1, byThreshold, &iterations, &threshold, m, c); };
    o.template first<arity<decltype(f)> - 9>(call);
    if (parts(n) == 1) H(n) << o.b[0] << o.b[1];
    else H(n) << o.b[0] << o.b[5] << o.b[7];
};

// The temporal member filters k + 1 frames of 13 pixels, the spatial ones an image of m x c.
const auto conv = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    constexpr bool temporal = arity<decltype(f)> == 5;
    const i32 m = temporal ? 13 : g.in(1, 9), c = temporal ? 1 : g.in(1, 9);
    vector<const T *> pointers;
    const vector<T> in = temporal ? frames<T>(g, k + 1, 13, pointers) : many<T>(g, m * c);
    const vector<T> taps = small<T>(g, k + 1);
    vector<T> out(static_cast<size_t>(m * c + 1), T(9));
    if constexpr (temporal) f(pointers.data(), out.data(), taps.data(), 13, k + 1);
    else f(in.data(), out.data(), taps.data(), m, c, k + 1);
    H(n) << out;
};

const auto lucasKanade = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    const i32 m = flowSizes[k][0] + 2, c = flowSizes[k][1] + 2;
    const vector<T> a = small<T>(g, m * c), b = small<T>(g, m * c);
    const T threshold = T(g.in(0, 8)) / T(2);
    vector<T> result(static_cast<size_t>(parts(n) * m * c + 1), T(9));
    Buffers<T> s(5, static_cast<size_t>(m * c), T(9));
    s.template first<5>([&](auto... p) { f(a.data(), b.data(), result.data(), p..., &threshold, m, c); });
    H(n) << result << s.b;
};

const auto gder = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    const i32 m = g.in(4, 11), c = g.in(4, 11), nTD = g.in(1, 4), nSD = g.in(1, 5), nTS = g.in(1, 4);
    const i32 nSS = g.in(1, 5), nW = g.in(1, 5);
    vector<const T *> pointers;
    const vector<T> all = frames<T>(g, std::max(nTD, nTS), m * c, pointers), td = small<T>(g, nTD);
    const vector<T> sd = small<T>(g, nSD), ts = small<T>(g, nTS), ss = small<T>(g, nSS), w = small<T>(g, nW);
    const T threshold = T(g.in(0, 16)) / T(4);
    vector<T> result(static_cast<size_t>(parts(n) * m * c + 1), T(9));
    Buffers<T> s(5, static_cast<size_t>(m * c), T(9));
    s.template first<5>([&](auto... p) {
        f(pointers.data(), result.data(), p..., &threshold, td.data(), sd.data(), ts.data(), ss.data(), w.data(), m, c,
          nTD, nSD, nTS, nSS, nW, uint8_t(k % 2));
    });
    H(n) << result << s.b;
};

std::array<i32, 8> quadAround(Rng &g, i32 r0, i32 c0, i32 r1, i32 c1, i32 spread)
{
    auto d = [&] { return g.in(-spread, spread); };
    return {r0 + d(), c0 + d(), r0 + d(), c1 + d(), r1 + d(), c1 + d(), r1 + d(), c0 + d()};
}

template <class T> void xform(const char *nX, auto fX, const char *nQ, auto fQ)
{
    cases(nX, 48, [&](Rng &g, int k) {
        const i32 lastCol = g.in(5, 20), lastRow = g.in(5, 20);
        const auto quad = quadAround(g, 0, 0, lastRow, lastCol, 4), quad2 = quadAround(g, 2, 3, 14, 9, 5);
        const i32 rect[4] = {g.in(-3, 3), g.in(-3, 3), g.in(1, 20), g.in(1, 20)};
        const uint32_t rows = uint32_t(g.in(1, 30)), cols = uint32_t(g.in(1, 30));
        vector<T> block(18, T(7)), block2(54, T(7));
        fX(quad.data(), rect, rows, cols, k % 4, k / 4 % 3 - 1, uint8_t(k / 12 % 2), block.data());
        fQ(quad.data(), rows, cols, block2.data(), quad2.data(), uint8_t(k % 2));
        H(nX) << block, H(nQ) << block2;
    });
}

// One image, 100 positions in quarters or in twelfths that no binary fraction holds.
const auto interp = []<class T>(Rng &g, int, const char *n, auto f, T) {
    const i32 m = g.in(4, 9), c = g.in(4, 9);
    const uint32_t ss = uint32_t(m * c + 3), ds = 101;
    const vector<T> src = many<T>(g, 2 * ss);
    vector<T> dst(2 * ds, T(-1));
    for (uint32_t k = 0; k < 100; ++k) {
        const i32 steps = k % 2 ? 4 : 12;
        const T y = T(g.in(0, steps * (m - 1))) / T(steps), x = T(g.in(0, steps * (c - 1))) / T(steps);
        if constexpr (arity<decltype(f)> == 9) f(src.data(), y, x, m, &dst[0], k, 2, ss, ds);
        else f(src.data(), y, x, uint32_t(m), uint32_t(c), dst.data(), k, 2, ss, ds);
    }
    H(n) << dst;
};

const auto skew = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    const i32 len = g.in(1, 9), outLen = g.in(1, 16), first = g.in(0, 3);
    const uint32_t ss = uint32_t(g.in(1, 3)), ds = uint32_t(g.in(1, 2));
    const T offset = k % 2 ? T(g.in(-24, 60)) / T(4) : T(g.in(-72, 180)) / T(12), background = any<T>(g);
    const vector<T> src = many<T>(g, static_cast<size_t>(len) * ss);
    vector<T> dst(static_cast<size_t>(outLen) * ds + 2, T(-2));
    f(src.data(), len, outLen, offset, ss, ds, dst.data(), first, &background);
    H(n) << dst;
};
// Smoothing, both derivatives, suppression, and the detector with thresholds given (low, high) or a share of pixels.
template <class T> void canny(const char *nS, auto fS, const char *nC, auto fC, const char *nR, auto fR,
                              const char *nN, auto fN, const char *nU, auto fU, const char *nA, auto fA)
{
    // From case 5: images two rows taller than the rows packed, inputs of kind k % 4; the suppression's kind 3
    // gradients on one circle, magnitudes a few units in the last place apart. Outputs between margins of eight.
    cases(nS, 5 + 13 * 5 * 4, [&](Rng &g, int k) {
        const i32 p = k - 5, kind = k % 4, m = p < 0 ? g.in(5, 14) : packSizes<T>(2, {-2, -1, 257, 258})[p / 20] + 2;
        const i32 c = p < 0 ? g.in(5, 14) : std::array{0, 1, 2, 3, 5}[p / 4 % 5], L = g.in(p < 0 ? 2 : 1, 3 + (p < 0));
        const i32 P = m * c;
        vector<T> image = edgy<T>(g, P, kind, false), smooth(static_cast<size_t>(L)), deriv(static_cast<size_t>(L));
        for (i32 i = 0; p < 0 && i < P; ++i) // a corner, noise
            image[i] = T(((i % m) * 2 > m) != ((i / m) * 3 > 2 * c)) * 64 + T(g.in(-8, 8)) / 2;
        for (i32 j = 0; j < L; ++j) smooth[j] = T(g.in(1, 8)) / 32, deriv[j] = j ? T(g.in(1, 8)) / 8 : T(0);
        Guarded<T> h(P, T(9)), v(P, T(9)), dc(P, T(9)), dr(P, T(9)), suppressed(P, T(9));
        fS(image.data(), smooth.data(), h.mid(), v.mid(), m, c, L);
        fC(h.mid(), deriv.data(), dc.mid(), m, c, L);
        fR(v.mid(), deriv.data(), dr.mid(), m, c, L);
        vector<T> gradient = edgy<T>(g, 2 * size_t(P), kind); // x, then y
        for (i32 i = 0; kind == 3 && i < P; ++i) {
            const int64_t x = g.in(-1 << 20, 1 << 20), y = int64_t(std::sqrt(double((int64_t(1) << 40) - x * x)));
            gradient[i] = T(x), gradient[P + i] = T(g.in(0, 1) ? y : -y);
        }
        fN(p < 0 ? dc.mid() : gradient.data(), p < 0 ? dr.mid() : gradient.data() + P, suppressed.mid(), m, c);
        H(nS) << h << v, H(nC) << dc, H(nR) << dr, H(nN) << suppressed;
        const T user[2] = {T(g.in(1, 4)) / 16, T(g.in(4, 12)) / 16}, percent[1] = {T(g.in(8, 15 + 1585 * (p >= 0))) / 16};
        for (const auto &[name, fn, thresholds] : {std::tuple{nU, fU, user}, std::tuple{nA, fA, percent}}) {
            Guarded<T> workA(P, T(9)), workB(P, T(9)), magnitude(P, T(9));
            Guarded<uint8_t> edges(P, 7);
            fn(image.data(), smooth.data(), deriv.data(), workA.mid(), workB.mid(), edges.mid(), magnitude.mid(),
               thresholds, m, c, L);
            H(name) << workA << workB << edges << magnitude;
        }
    });
}

template <class T> void hough(const char *n, auto f, const char *nL, auto fL, const char *nO, auto fO)
{
    // sin(-90 + 10 t degrees), written out so that no libm is involved.
    const T sine[10] = {T(-1), T(-0.98480775301220802), T(-0.93969262078590832), T(-0.86602540378443860),
                        T(-0.76604444311897801), T(-0.64278760968653925), T(-0.5), T(-0.34202014332566871),
                        T(-0.17364817766693033), T(0)};
    cases(n, 3, [&](Rng &g, int) {
        const i32 m = g.in(3, 12), c = g.in(3, 12), numRho = 2 * (m + c) + 1;
        const T rhoFirst = T(-(m + c));
        vector<uint8_t> image(static_cast<size_t>(m * c));
        for (auto &x : image) x = g.in(0, 2) ? 0 : uint8_t(g.in(1, 255));
        vector<T> acc(static_cast<size_t>(numRho * 18), T(5));
        f(image.data(), acc.data(), sine, &rhoFirst, m, c, numRho, 10);
        H(n) << acc;
    });
    cases(nL, 1, [&](Rng &g, int) {
        vector<T> theta(40), rho(40), pointsF(161, T(-5));
        for (int k = 0; k < 40; ++k) theta[k] = T(g.in(-25, 25)) / T(16), rho[k] = T(g.in(-10, 50)) / T(2);
        vector<i32> points(161, -5);
        fL(theta.data(), rho.data(), points.data(), 40, 17, 21), fO(theta.data(), rho.data(), pointsF.data(), 40, 17, 21);
        H(nL) << points, H(nO) << pointsF;
    });
}


// Every element type by its code, the last one given (uint8_t 8 for logical, int32_t 8 or 9 for indices).
template <class Last> void byCode(Rng &g, i32 lastCode, auto body)
{
    body(double(), g, 0), body(float(), g, 1), body(int8_t(), g, 2), body(uint8_t(), g, 3), body(int16_t(), g, 4);
    body(uint16_t(), g, 5), body(i32(), g, 6), body(uint32_t(), g, 7), body(Last(), g, lastCode);
}

void polygonTables()
{
    auto tables = [&](const char *n, decltype(&ORNEX_CreateEdgesTable) f) {
        cases(n, 30, [&](Rng &g, int k) {
            const i32 values = g.in(0, 15), edges = values / 2;
            vector<i32> vertices(static_cast<size_t>(values + 1)), work(static_cast<size_t>(8 * edges + 1), -9);
            vector<i32> sorted = work, offsets(8), records(static_cast<size_t>(6 * edges + 1));
            for (auto &v : vertices) v = g.in(-6, 20);
            for (i32 i = 0; i < 8; ++i) offsets[i] = i * edges;
            f(vertices.data(), values, work.data(), sorted.data(), records.data(), offsets.data(), uint8_t(k % 2));
            H(n) << work << sorted;
        });
    };
    tables(F(ORNEX_CreateEdgesTable)), tables(F(ORNEX_CreateEdgesTable_Int));
    cases("polygonTables", 40, [](Rng &g, int) {
        byCode<i32>(g, 9, []<class T>(T, Rng &g, i32 code) {
            const i32 rows = g.in(0, 12);
            vector<T> m(static_cast<size_t>(3 * rows + 1));
            for (auto &v : m) v = g.in(0, 3) ? T(g.in(-2, 2)) : any<T>(g);
            if constexpr (std::is_floating_point_v<T>)
                if (rows) m[g.in(0, 3 * rows - 1)] = std::numeric_limits<T>::quiet_NaN();
            vector<i32> records(static_cast<size_t>(6 * rows + 6), -1);
            ORNEX_SortRows(m.data(), rows, code, records.data());
            for (i32 r = 0; r < rows; ++r) H("ORNEX_SortRows") << records[6 * r + 3]; // the rest holds a pointer
        });
        byCode<i32>(g, 8, []<class T>(T, Rng &g, i32 code) {
            vector<T> src = many<T>(g, 12);
            if constexpr (std::is_floating_point_v<T>) {
                for (auto &v : src) v = T(g.in(-40, 40)) / 4;
                src[g.in(0, 11)] = std::numeric_limits<T>::quiet_NaN();
            }
            vector<i32> dst(5, 77);
            ORNEX_GetIntCoordinates(src.data(), code, dst.data(), 4, g.in(0, 2));
            H("ORNEX_GetIntCoordinates") << dst;
        });
        i32 vertices[12];
        for (auto &v : vertices) v = g.in(0, 3);
        const i32 column = g.in(0, 3), row = g.in(0, 3), count = g.in(0, 6);
        H("ORNEX_DetectIfCornerPixel_FillPoly") << ORNEX_DetectIfCornerPixel_FillPoly(vertices, count, row, column);
    });
}

vector<i32> polygon(Rng &g)
{
    vector<i32> v(static_cast<size_t>(2 * g.in(3, 7) + g.in(0, 1)));
    for (size_t i = 0; i < v.size(); ++i) v[i] = i % 2 ? g.in(-4, N + 3) : g.in(-4, M + 3);
    return v;
}

// An active list of `count` edges, field f of edge k at f*stride + k, in the order of their crossings (current row,
// then the error term's share).
vector<i32> activeEdges(Rng &g, i32 count, i32 stride, bool withError)
{
    vector<std::array<i32, 8>> e(static_cast<size_t>(count));
    for (auto &x : e) {
        const i32 length = g.in(1, 12), delta = g.in(-20, 20);
        x = {g.in(0, 5), g.in(5, 14), g.in(-3, M + 2), delta, length, std::abs(delta) / length,
             withError ? g.in(0, length - 1) : 0, g.in(0, 1100)};
    }
    auto crossing = [](const auto &a) { return a[2] * 1024 + a[6] * 1024 / a[4]; };
    std::sort(e.begin(), e.end(), [&](const auto &a, const auto &b) { return crossing(a) < crossing(b); });
    vector<i32> list(static_cast<size_t>(8 * stride + 1), -5);
    for (i32 k = 0; k < count; ++k)
        for (i32 f = 0; f < 8; ++f) list[f * stride + k] = e[k][f];
    return list;
}

// Plain and anti-aliased polygon fills, intensity and RGB.
const auto fillPolygon = []<class T>(Rng &g, int, const char *n, auto f, T) {
    const auto v = polygon(g);
    vector<i32> edges(8 * v.size() + 1), records(3 * v.size() + 1);
    Scene<T> s(g, n);
    const auto clip = std::tuple{s.c.r0, s.c.r1, s.c.c0, s.c.c1, M, s.colour.data(), s.opacity};
    EXPECT_TRUE(drawAny(f, s, std::tuple{edges.data(), i32(v.size()), v.data(), records.data()},
                        std::tuple_cat(clip, std::tuple{s.w.data()}), clip)) << n;
    H(n) << s.px;
};

// One column of a fill: the plain members read the rows of the active list's third field, the anti-aliased ones all.
const auto scanLine = []<class T>(Rng &g, int, const char *n, auto f, T) {
    const i32 count = g.in(0, 6), stride = count + g.in(0, 2);
    Scene<T> s(g, n);
    const i32 column = g.in(s.c.c0 - 1, s.c.c1 + 1);
    const vector<i32> list = activeEdges(g, count, stride, std::strstr(n, "_AA_"));
    const auto common = std::tuple{column, s.c.r0, s.c.r1, s.c.c0, s.c.c1, M, count, list.data(), s.colour.data(),
                                   s.opacity};
    EXPECT_TRUE(drawAny(f, s, std::tuple{}, std::tuple_cat(common, std::tuple{s.w.data(), stride}),
                        std::tuple_cat(common, std::tuple{2 * stride}))) << n;
    H(n) << s.px;
};

// X... = numPlanes, planeStride after the rows, or the green and blue planes before them.
const auto blendRun = []<class T, class O, class... X>(Rng &g, int, const char *n, void (*f)(T *, const T *, i32, O, X...),
                                                       auto) {
    Scene<T, O> s(g, n);
    const i32 first = g.in(0, M - 1), last = g.in(first - 1, M - 1), start = g.in(0, S - M);
    if constexpr ((std::is_same_v<X, i32> && ...)) f(s.p(0), s.colour.data(), start, s.opacity, first, last, 3, S);
    else f(s.p(0), s.colour.data(), start, s.opacity, s.p(1), s.p(2), first, last);
    H(n) << s.px;
};

template <class T>
void warp(const char *nR, auto fR, const char *nQ, auto fQ, const char *nO, auto fO, const char *nS, auto fS,
          const char *nP, auto fP, const char *nB, auto fB, auto fX, auto fQQ)
{
    const i32 inR = 9, inC = 11, outR = 12, outC = 13, P = inR * inC, Q = outR * outC, rect[4] = {1, 2, inR - 1, inC};
    cases(nR, 12, [&](Rng &g, int k) {
        const vector<T> in = many<T>(g, 3 * P);
        const T *i0 = in.data(), *i1 = i0 + P, *i2 = i1 + P;
        const uint8_t three = uint8_t(k % 2), exact = uint8_t(k / 2 % 2), useRect = uint8_t(k / 4 % 2);
        const i32 method = k % 3 + 1, lowRow = g.in(0, 1), lowCol = g.in(0, 1), divisions = g.in(-1, 3);
        const i32 rf = g.in(-2, 2), rl = rf + outR - 1 - g.in(0, 2), cf = g.in(-2, 2), cl = cf + outC - 1 - g.in(0, 2);
        const auto quad = quadAround(g, rf, cf, rl, cl, 3), source = quadAround(g, 0, 0, inR - 1, inC - 1, 2);
        vector<T> block(18), q2q(54);
        fX(quad.data(), rect, uint32_t(inR), uint32_t(inC), 1, 0, useRect, block.data());
        fQQ(source.data(), uint32_t(inR), uint32_t(inC), q2q.data(), quad.data(), 1);
        vector<i32> edges(64), scratch(24);
        auto run = [&](const char *name, auto call) {
            vector<T> out = many<T>(g, 3 * Q);
            H(name) << call(out.data(), out.data() + Q, out.data() + 2 * Q) << out;
        };
        run(nR, [&](T *o0, T *o1, T *o2) {
            return fR(edges.data(), rect, scratch.data(), o0, o1, o2, rf, rl, cf, cl, inR, three, block.data(), i0, i1,
                      i2, exact, outR, outC, inC, method, lowRow, lowCol, divisions, useRect, 2);
        });
        run(nQ, [&](T *o0, T *o1, T *o2) {
            return fQ(edges.data(), source.data(), scratch.data(), o0, o1, o2, rf, rl, cf, cl, inR, three,
                      q2q.data() + 36, i0, i1, i2, exact, outR, outC, inC, method, divisions, 2);
        });
        run(nO, [&](T *o0, T *o1, T *o2) {
            fO(edges.data(), 8, quad.data(), scratch.data(), o0, o1, o2, rf, rl, cf, cl, inR, three, block.data() + 9,
               i0, i1, i2, exact, outR, outC, inC, method, lowRow, lowCol, 2);
            return 0;
        });
        run(nS, [&](T *o0, T *o1, T *o2) {
            const i32 first = g.in(rf - 1, rl), last = g.in(first - 1, rl + 1);
            fS(o0, o1, o2, g.in(cf, cl), rf, rl, cf, cl, first, last, inR, three, i0, i1, i2, block.data() + 9, inC,
               outR, outC, method, exact, lowRow, lowCol, 2);
            return 0;
        });
        run(nB, [&](T *o0, T *o1, T *o2) {
            const T background[3] = {any<T>(g), g.in(0, 1) ? T(-0.0) : T(0), any<T>(g)}; // a zero of either sign
            fB(background, o0, o1, o2, outR, outC, three, uint8_t(g.in(0, 1)), 2);
            return 0;
        });
        T q = 0, p = 0, w = 0;
        const i32 column = g.in(-3, 20), row = g.in(-3, 20);
        fP(row, column, block.data() + 9, &q, &p, &w);
        H(nP) << q << p << w;
    });
    // Spans of one output column around the gathered packs and a run of 64 rows; source positions at fractions, at
    // whole and half numbers and far outside; every method, walk and plane layout. Outputs between margins of eight.
    cases(nS, 12 * 9, [&](Rng &g, int k) {
        const i32 length = packSizes<T>(2, {64, 65, 65 + 32 / i32(sizeof(T))})[k / 9], kind = k % 9;
        const i32 iR = 1 << g.in(0, 4), iC = g.in(1, 12), rowLower = iR > 1 ? g.in(0, 1) : 0, oR = length + 3;
        const i32 colLower = iC > 1 ? g.in(0, 1) : 0, oRF = g.in(0, 1), start = g.in(0, 2), P = iR * iC;
        const auto u = [&] { return T(g.in(0, 1 << 16)) / T(1 << 16); };
        const T mats[3][9] = {
            {0, (u() - T(0.5)) / 50, T(1.3) + u() * T(iC - 3), 0, T(iR - 3) / T(length + 4), T(1.25) + u() / 2, 0,
             T(0.001), 1},
            {0, 0, T(g.in(2, 2 * iC + 1)) / 2, 0, T(kind % 2), T(g.in(2, 7)) / 2, 0, 0, 1},
            {0, 2 * u() - 1, T(iC + 20) * u() - 10, 0, 4 * u() - 2, T(iR + 20) * u() - 10, 0, (u() - T(0.5)) / 125, 1}};
        const vector<T> in = edgy<T>(g, 3 * size_t(P), g.in(1, 2), false);
        for (i32 v = 0; v < 18; ++v) {
            const i32 planes = v % 3 + 1;
            Guarded<T> o0(size_t(planes == 3 ? 1 : planes) * oR * 3, T(60)), o1(oR * 3, T(60)), o2(oR * 3, T(60));
            fS(o0.mid(), planes == 3 ? o1.mid() : nullptr, planes == 3 ? o2.mid() : nullptr, 1, oRF, oR - 1, 0, 2,
               start, start + length - 1, iR, planes == 3, in.data(), in.data() + P, in.data() + 2 * P, mats[kind % 3],
               iC, oR, 3, v / 3 % 3 + 1, uint8_t(v / 9), rowLower, colLower, planes);
            H(nS) << o0 << o1 << o2;
        }
    });
}

vector<int16_t> sqrtTable()
{
    vector<int16_t> t(3300);
    for (i32 i = 0, root = 4096; i < 3300; t[i] = int16_t(root), ++i)
        while (root * root > 4096 * 4096 - i * i) --root;
    return t;
}

// The circle kernels and drawers, intensity and RGB.
const vector<int16_t> sqrts = sqrtTable();
const auto circle = []<class T>(Rng &g, int k, const char *n, auto f, T) {
    using W = std::conditional_t<std::is_floating_point_v<T>, T, uint32_t>;
    Scene<T> s(g, n);
    const Clip c = s.c;
    const Centre o = centre(g);
    const vector<T> v = many<T>(g, 6);
    const W w = fraction<W>(g);
    const i32 radius = g.in(0, 9), x0 = k % 3 || !radius ? 0 : g.in(0, radius / 2), flag = g.in(0, 1);
    const auto e = std::tuple{};
    const auto clip = std::tuple{c.r0, c.r1, c.c0, c.c1, M};
    const auto at = std::tuple_cat(std::tuple{o.r, o.c, o.a, o.b}, clip);
    bool called = radius == 0;
    if (std::strstr(n, "SymQuad"))
        called = drawAny(f, s, e, std::tuple_cat(at, std::tuple{v.data()}),
                         std::tuple_cat(at, std::tuple{v[0], v[1], v[2]}));
    else if (std::strstr(n, "SymOctant"))
        called = drawAny(f, s, e, std::tuple_cat(at, std::tuple{v.data(), v.data() + 3, w, flag}),
                         std::tuple_cat(at, std::tuple{v[0], v[1], v[2], v[3], v[4], v[5], w, flag}));
    else if (std::strstr(n, "PtsLines"))
        called = drawAny(f, s, e, std::tuple_cat(std::tuple{o.r, o.c, o.a - (k % 5 == 0), o.b}, clip,
                                                 std::tuple{v.data(), s.opacity}));
    else if (std::strstr(n, "Filled"))
        called = drawAny(f, s, e, std::tuple_cat(std::tuple{v.data(), o.r, o.c}, clip, std::tuple{radius, s.opacity}));
    else if (radius > 0)
        called = drawAny(f, s, e, std::tuple_cat(std::tuple{v.data(), sqrts.data(), x0, radius, o.r, o.c}, clip,
                                                 std::tuple{radius}),
                         std::tuple_cat(std::tuple{v.data(), x0, radius, o.r, o.c}, clip, std::tuple{radius}));
    EXPECT_TRUE(called) << n;
    H(n) << s.px;
};

void circleKernels()
{
    bytePlanes("ORNEX_Circle_SymOctantPts", centre, [](Centre o, uint8_t *p0, uint8_t *p1, uint8_t *p2, auto value,
                                                      i32 size, Clip c) {
        if (p1) ORNEX_Circle_SymOctantPts_RGB(p0, p1, p2, o.r, o.c, o.a, o.b, c.r0, c.r1, c.c0, c.c1, value, size, M);
        else ORNEX_Circle_SymOctantPts(p0, o.r, o.c, o.a, o.b, c.r0, c.r1, c.c0, c.c1, value, size, M, 3, S);
    });
    cases("ORNEX_DrawAACircle_Delta", 300, [&](Rng &g, int) {
        const i32 r = g.in(1, 40), x = g.in(0, r * 7 / 10), y = g.in(x, r + 1);
        uint8_t flag = 9;
        H("ORNEX_DrawAACircle_Delta") << ORNEX_DrawAACircle_Delta(x, y, r, sqrts.data(), &flag) << flag;
    });
}

template <class T> void glyphs(Fnv &hI, ORNEX_DrawTextFcn_I fI, Fnv &hR, ORNEX_DrawTextFcn_RGB fR, Rng &g)
{
    for (int k = 0; k < 12; ++k) {
        Scene<T> s(g, ""), r = s;
        const uint16_t w = uint16_t(g.in(1, 6)), h = uint16_t(g.in(1, 6));
        vector<uint8_t> glyph(static_cast<size_t>(w * h));
        for (auto &x : glyph) x = g.in(0, 1) ? uint8_t(g.in(0, 1) * 255) : uint8_t(g.next());
        const T opacity = T(g.in(0, 6)) / T(4);
        const i32 x = g.in(-3, N + 2), y = g.in(-3, M + 2), xo = g.in(-2, 2), yo = g.in(-2, 2);
        const uint8_t flag = uint8_t(k % 2);
        hI << fI(glyph.data(), x, y, xo, yo, w, h, N, M, s.p(0), s.colour.data(), &opacity, flag) << s.px;
        hR << fR(glyph.data(), x, y, xo, yo, w, h, N, M, r.p(0), r.p(1), r.p(2), s.colour.data(), &opacity, flag)
           << r.px;
    }
}

template <class T> vector<unsigned char> packed(std::initializer_list<double> values)
{
    vector<unsigned char> bytes(values.size() * sizeof(T));
    for (size_t i = 0; i < values.size(); ++i) {
        const T t = T(values.begin()[i]);
        std::memcpy(&bytes[i * sizeof t], &t, sizeof t);
    }
    return bytes;
}

void text()
{
    Rng g("text");
#define ORNEX_GLYPHS(T, kind) \
    glyphs<T>(H("ORNEX_DrawText_I_" #kind), ORNEX_DrawText_I_##kind, H("ORNEX_DrawText_RGB_" #kind), \
              ORNEX_DrawText_RGB_##kind, g)
    ORNEX_GLYPHS(double, double_AA), ORNEX_GLYPHS(double, double), ORNEX_GLYPHS(float, single_AA);
    ORNEX_GLYPHS(float, single);
    for (i32 code = -1; code <= 9; ++code)
        for (uint8_t aa = 0; aa <= 2; ++aa) { // the blenders handed out are hashed by what they draw
            const auto fI = ORNEX_GetDrawTextFcn_I(code, aa);
            const auto fR = ORNEX_GetDrawTextFcn_RGB(code, aa);
            Fnv &hI = H("ORNEX_GetDrawTextFcn_I") << uint8_t(fI != nullptr);
            Fnv &hR = H("ORNEX_GetDrawTextFcn_RGB") << uint8_t(fR != nullptr);
            Rng same("drawn");
            if (fI && fR) code == 0 ? glyphs<double>(hI, fI, hR, fR, same) : glyphs<float>(hI, fI, hR, fR, same);
        }
    struct Case { i32 code; const char *format; vector<unsigned char> values; i32 limit; uint8_t isText; };
    const Case formats[] = {
        {0, "x=%8.3f|%.1f%%|%f end", packed<double>({-3.5, 2.25, 1e6 + 0.25}), 2, 0},
        {1, "%.2f;%5.1f;%%", packed<float>({0.125, -7.75}), 1, 0},
        {2, "%d/%i/%x!", packed<int8_t>({-128, 127, -1}), 2, 0}, {3, "<%u,%d>", packed<uint8_t>({255, 7}), 1, 0},
        {3, "[%s]", packed<uint8_t>({'h', 'e', 'l', 'l', 'o', 0}), 4, 1},
        {4, "%d %5d %-4d|", packed<int16_t>({-32768, 32767, 12}), 2, 0},
        {5, "%o %X", packed<uint16_t>({65535, 48879}), 1, 0},
        {6, "a%db%nc%dd", packed<i32>({-2147483648.0, 0, 2147483647}), 2, 0},
        {7, "%u", packed<uint32_t>({4294967295.0}), 0, 0}, {8, "%d,%d", packed<uint8_t>({1, 0}), 1, 0},
        {9, "%d", packed<i32>({1}), 0, 0}, {6, "no conversion here", packed<i32>({1}), 0, 0},
        {6, "%d %d %d", packed<i32>({1, 2, 3}), 5, 1},
    };
    auto format = [&](const char *n, decltype(&ORNEX_snprintf) f) {
        for (const Case &c : formats)
            for (i32 size : {64, 1, 4, 7, 9, 12}) {
                std::string text = c.format;
                vector<unsigned char> values = c.values;
                vector<char> out(64, '#');
                H(n) << f(out.data(), text.data(), values.data(), c.limit, c.code, c.isText, size) << out << text;
            }
    };
    format(F(ORNEX_snprintf)), format(F(ORNEX_snprintf_wrapper));
    const double edges[] = {-2.5, 2.75, -0.5, 3e9, -3e9, 2147483647.5, -2147483648.5, -2147483649.0, 1e10, 4294967296.5};
    for (int k = 0; k < 10; ++k)
        byCode<uint8_t>(g, 8, [&]<class T>(T, Rng &g, i32 code) {
            vector<T> src = many<T>(g, 8);
            if constexpr (std::is_floating_point_v<T>)
                for (auto &v : src) v = T(edges[g.in(0, 9)]);
            vector<uint32_t> u(9, 5);
            vector<i32> s(9, 5);
            if (code <= 7) ORNEX_DrawText_copyDT1ToUint32(code, 6, src.data(), u.data());
            if (code <= 7) H("ORNEX_DrawText_copyDT1ToUint32") << u;
            ORNEX_DrawText_copyDT1ToInt32(code, 5, src.data(), s.data(), g.in(0, 2));
            H("ORNEX_DrawText_copyDT1ToInt32") << s;
        });
    const double special[] = {std::numeric_limits<double>::quiet_NaN(), -0.5, 1.5, 0.25, 1, 0, -0.0,
                              std::numeric_limits<double>::infinity()};
    for (int k = 0; k < 8; ++k) {
        const double d[3] = {special[k], special[(k + 3) % 8], special[(k + 5) % 8]};
        const float f[3] = {float(d[0]), float(d[1]), float(d[2])};
        std::array<double, 4> dd{9, 9, 9, 9}, di{9, 9, 9, 9};
        std::array<float, 4> ff{9, 9, 9, 9}, fi{9, 9, 9, 9};
        ORNEX_DrawText_SatFltptRGBVals(0, d, dd.data()), ORNEX_DrawText_SatFltptRGBVals(1, f, ff.data());
        ORNEX_DrawText_SatFltptIntensityVals(0, d, di.data(), k % 4);
        ORNEX_DrawText_SatFltptIntensityVals(1, f, fi.data(), k % 4);
        H("ORNEX_DrawText_SatFltptRGBVals") << dd << ff;
        H("ORNEX_DrawText_SatFltptIntensityVals") << di << fi;
    }
    ORNEX_DrawText_noCopyNeeded(), H("ORNEX_DrawText_noCopyNeeded");
    ORNEX_DrawText_noFltSaturationNeeded(), H("ORNEX_DrawText_noFltSaturationNeeded");
    for (const char *s : {"", "a", "hello, world", "tab\there"}) H("ORNEX_strlen") << ORNEX_strlen(s);
    H("ornex_rt_version") << std::string(ornex_rt_version);
}

void runAll()
{
// Each family calls X(name, element type, more...) for each of its members.
#define ORNEX_RD(X, stem, ...) X(stem##_D, double, __VA_ARGS__), X(stem##_R, float, __VA_ARGS__)
#define ORNEX_RDCZ(X, stem, ...)                                                                                       \
    ORNEX_RD(X, stem, __VA_ARGS__), X(stem##_C, float, __VA_ARGS__), X(stem##_Z, double, __VA_ARGS__)
#define ORNEX_INTEGERS(X, stem, ...)                                                                                   \
    X(stem##UI8, uint8_t, __VA_ARGS__), X(stem##I8, int8_t, __VA_ARGS__), X(stem##UI16, uint16_t, __VA_ARGS__),        \
        X(stem##I16, int16_t, __VA_ARGS__)
#define ORNEX_DRAWN(X, stem, ...)                                                                                      \
    X(stem##D, double, __VA_ARGS__), X(stem##R, float, __VA_ARGS__), ORNEX_INTEGERS(X, stem, __VA_ARGS__)
#define ORNEX_FILLED(X, stem, ...) ORNEX_DRAWN(X, stem, __VA_ARGS__), X(stem##Bool, uint8_t, __VA_ARGS__)
#define ORNEX_I_RGB(family, stem, suffix, ...)                                                                         \
    family(E, stem##I##suffix, __VA_ARGS__), family(E, stem##RGB##suffix, __VA_ARGS__)
#define E(f, T, driver, count) each(F(f), count, driver, T())
    ORNEX_RD(E, ORNEX_SearchMethod_Full_MAD, search, 402), ORNEX_RD(E, ORNEX_SearchMethod_Full_MSE, search, 402);
    ORNEX_RD(E, ORNEX_SearchMethod_3Step_MAD, search, 402), ORNEX_RD(E, ORNEX_SearchMethod_3Step_MSE, search, 402);
    ORNEX_RDCZ(E, ORNEX_BlockMatching_Full_MAD, blockMatching, 24);
    ORNEX_RDCZ(E, ORNEX_BlockMatching_Full_MSE, blockMatching, 24);
    ORNEX_RDCZ(E, ORNEX_BlockMatching_3Step_MAD, blockMatching, 24);
    ORNEX_RDCZ(E, ORNEX_BlockMatching_3Step_MSE, blockMatching, 24);
    ORNEX_RD(E, ORNEX_SobelDerivative_HS, sobel, 5), ORNEX_RDCZ(E, ORNEX_OpticalFlow_HS, hornSchunck, 5);
    ORNEX_RD(E, ORNEX_OFLK_ConvT, conv, 5), ORNEX_RD(E, ORNEX_OFLK_ConvX, conv, 6), ORNEX_RD(E, ORNEX_OFLK_ConvY, conv, 6);
    ORNEX_RDCZ(E, ORNEX_OpticalFlow_LK, lucasKanade, 5), ORNEX_RDCZ(E, ORNEX_OpticalFlow_LK_GDER, gder, 6);
    ORNEX_RD(E, ORNEX_NN_Interp, interp, 1), ORNEX_RD(E, ORNEX_PosVal_BL_Interp, interp, 1);
    ORNEX_RD(E, ORNEX_PosVal_BC_Interp, interp, 1), ORNEX_RD(E, ORNEX_Skew_NNI, skew, 40);
    ORNEX_RD(E, ORNEX_Skew_BLI, skew, 40), ORNEX_RD(E, ORNEX_Skew_BCI, skew, 40);
    ORNEX_I_RGB(ORNEX_DRAWN, ORNEX_Draw_AA_Line_, _, aaLine, 40);
    ORNEX_I_RGB(ORNEX_FILLED, ORNEX_FillOnePolygon_, _, fillPolygon, 16);
    ORNEX_I_RGB(ORNEX_FILLED, ORNEX_FillOnePolygon_AA_, _, fillPolygon, 16);
    ORNEX_I_RGB(ORNEX_FILLED, ORNEX_FillVerticalScanLine_, _, scanLine, 30);
    ORNEX_I_RGB(ORNEX_FILLED, ORNEX_FillVerticalScanLine_AA_, _, scanLine, 30);
    ORNEX_I_RGB(ORNEX_RD, ORNEX_FillPolygon_InterpFlt_, , blendRun, 30);
    ORNEX_I_RGB(ORNEX_INTEGERS, ORNEX_FillPolygon_InterpFix_, _, blendRun, 30);
    E(ORNEX_FillPolygon_InterpFix_I_Bool, uint8_t, blendRun, 30);
    E(ORNEX_FillPolygon_InterpFix_RGB_Bool, uint8_t, blendRun, 30);
    ORNEX_I_RGB(ORNEX_DRAWN, ORNEX_AACircle_SymQuadPts, _, circle, 30);
    E(ORNEX_AACircle_SymQuadPtsI_UI32, uint32_t, circle, 30), E(ORNEX_AACircle_SymQuadPtsI_I32, i32, circle, 30);
    E(ORNEX_AACircle_SymQuadPtsRGB_UI32, uint32_t, circle, 30), E(ORNEX_AACircle_SymQuadPtsRGB_I32, i32, circle, 30);
    ORNEX_I_RGB(ORNEX_DRAWN, ORNEX_AACircle_SymOctantPts, _, circle, 30);
    ORNEX_I_RGB(ORNEX_DRAWN, ORNEX_Draw_AA_Circle_, _, circle, 30);
    ORNEX_I_RGB(ORNEX_DRAWN, ORNEX_Draw_AA_FilledCircle_, _, circle, 30);
    ORNEX_I_RGB(ORNEX_DRAWN, ORNEX_AACircle_4PtsLines, _, circle, 30);
    ORNEX_I_RGB(ORNEX_DRAWN, ORNEX_AACircle_8PtsLines, _, circle, 30);
    cases("ORNEX_Are3PtsCollinear", 300, [](Rng &g, int k) {
        i32 p[8];
        for (auto &v : p) v = k % 10 ? g.in(-3, 3) : any<i32>(g); // wrap-around too
        H("ORNEX_Are3PtsCollinear") << ORNEX_Are3PtsCollinear(p);
    });
#define ORNEX_XFORM(f, T, ...) xform<T>(F(ORNEX_CalculateXformMtrx##f), F(ORNEX_CalculateQ2QXformMtrx##f))
#define ORNEX_CANNY(f, T, ...)                                                                                         \
    canny<T>(F(ORNEX_RC_Gaussian_Smoothing##f), F(ORNEX_C_Derivative_Image##f), F(ORNEX_R_Derivative_Image##f),       \
             F(ORNEX_NonMaximum_Suppression##f), F(ORNEX_EdgeCanny_userTh##f), F(ORNEX_EdgeCanny_autoTh##f))
#define ORNEX_HOUGH(f, T, ...) hough<T>(F(ORNEX_Hough##f), F(ORNEX_HoughLines##f), F(ORNEX_HoughLines##f##O))
#define ORNEX_WARP(f, T, ...)                                                                                          \
    warp<T>(F(ORNEX_DivideRectXform##f), F(ORNEX_DivideQuadXform##f), F(ORNEX_XformOneSubdivision##f),                \
            F(ORNEX_ProjComputeOutPixel##f), F(ORNEX_GetInPtsFrmOutPts##f), F(ORNEX_FillBackgroundValues##f),          \
            ORNEX_CalculateXformMtrx##f, ORNEX_CalculateQ2QXformMtrx##f)
    ORNEX_RD(ORNEX_XFORM, ), ORNEX_RD(ORNEX_CANNY, ), ORNEX_RD(ORNEX_HOUGH, ), ORNEX_RD(ORNEX_WARP, );
    lines(), polygonTables(), circleKernels(), text();
}
// Names after ORNEX_API in the header: the identifier before '(' for a function, before ';' for data.
vector<std::string> exportedNames()
{
    std::ifstream header(ORNEX_PUBLIC_HEADER_PATH);
    vector<std::string> names;
    for (std::string line; std::getline(header, line);) {
        if (line.rfind("ORNEX_API ", 0) != 0) continue;
        size_t end = std::min(line.find('('), line.find(';')), begin = end;
        auto inName = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
        while (begin > 0 && inName(line[begin - 1])) --begin;
        names.push_back(line.substr(begin, end - begin));
    }
    return names;
}

// Runs body(level) with the kernels forced to each level this processor has, scalar first.
template <class Body> void forEachSimdLevel(Body body)
{
    const ornex::SimdLevel before = ornex::simdLevel();
    for (auto level : {ornex::SimdLevel::scalar, ornex::SimdLevel::packed, ornex::SimdLevel::avx2})
        if (ornex::forceSimdLevel(level) == level) body(level);
    ornex::forceSimdLevel(before);
}

// The build date changes with the day of the build: listed, not hashed.
std::string expected(const std::string &name, std::map<std::string, std::string> &hashes)
{
    return name == "ornex_rt_build_date" ? "-" : hashes.count(name) ? hashes[name] : "(never called)";
}
// Lines "name hash" of a table; lines starting with '#' are comments.
std::map<std::string, std::string> readTable(const char *path)
{
    std::map<std::string, std::string> table;
    std::ifstream in(path);
    for (std::string name, h; in >> name;)
        name[0] == '#' ? (void)std::getline(in, h) : (void)(in >> table[name]);
    return table;
}
// Whether a NaN that an operation makes is negative here, as on x86 where the tables are recorded.
bool makesNaNsAsRecorded()
{
    volatile double zero = 0;
    return std::signbit(zero / zero);
}

TEST(Determinism, EveryExportGivesItsRecordedHashAtEverySimdLevel)
{
    std::map<std::string, std::string> first, nanBlind;
    forEachSimdLevel([&](ornex::SimdLevel level) {
        results.clear();
        runAll();
        for (const auto &[name, fnv] : results) {
            const std::string h = hex(fnv.h);
            EXPECT_EQ(h, first.emplace(name, h).first->second)
                << name << " at the " << std::array{"scalar", "packed", "AVX2"}[int(level)]
                << " SIMD level differs from the scalar level (a fault in its packed path)";
            if (fnv.sawNan) nanBlind.emplace(name, hex(fnv.nanBlind));
        }
    });
    const vector<std::string> names = exportedNames();
    ASSERT_EQ(names.size(), 281u) << "reading " << ORNEX_PUBLIC_HEADER_PATH;
    for (const auto &[name, h] : first)
        EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name << " is not exported";
    if (const char *path = std::getenv("ORNEX_WRITE_HASHES")) {
        ASSERT_TRUE(makesNaNsAsRecorded()) << "record the tables on x86, whose NaNs they hold";
        std::ofstream out(path);
        out << "# FNV-1a of each export's outputs on the seeded inputs of tests/frame/determinism_test.cpp;"
            << " '-': not hashed\n";
        for (const auto &name : names) out << name << ' ' << expected(name, first) << '\n';
        const auto blindPath = std::filesystem::path(path).replace_filename(
            std::filesystem::path(ORNEX_NAN_BLIND_HASHES_PATH).filename());
        std::ofstream blind(blindPath);
        blind << "# The same for the exports whose outputs hold a NaN, every NaN hashed as one value\n";
        for (const auto &[name, h] : nanBlind) blind << name << ' ' << h << '\n';
        GTEST_SKIP() << "wrote " << path << " and " << blindPath.string();
    }
    std::map<std::string, std::string> recorded = readTable(ORNEX_HASHES_PATH);
    std::map<std::string, std::string> recordedBlind = readTable(ORNEX_NAN_BLIND_HASHES_PATH);
    const char *rewrite = ". If the change is deliberate, rewrite the tables with ORNEX_WRITE_HASHES="
                          ORNEX_HASHES_PATH " (see the top of determinism_test.cpp) and commit them saying why.";
    for (const auto &name : names) {
        if (nanBlind.count(name)) {
            EXPECT_EQ(recordedBlind.count(name) ? recordedBlind[name] : "(no line)", nanBlind[name])
                << name << ": results differ from " << ORNEX_NAN_BLIND_HASHES_PATH << rewrite;
        }
        if (!nanBlind.count(name) || makesNaNsAsRecorded()) {
            EXPECT_EQ(recorded.count(name) ? recorded[name] : "(no line)", expected(name, first))
                << name << ": results differ from " << ORNEX_HASHES_PATH << rewrite;
        }
    }
    for (const auto &[name, h] : recordedBlind)
        EXPECT_TRUE(nanBlind.count(name)) << name << " is listed in " << ORNEX_NAN_BLIND_HASHES_PATH
                                          << " but its outputs hold no NaN" << rewrite;
    if (!makesNaNsAsRecorded())
        std::printf("NaNs made here are positive: %zu exports whose outputs hold one compared without NaN bits\n",
                    nanBlind.size());
}

} // namespace
