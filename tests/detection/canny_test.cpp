#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "ornex_rt.h"

namespace {

template <class T>
using Vec = std::vector<T>;

// The whole detector written plainly, one stage per function, wrapping
// indices for the periodic filters.
template <class T>
struct Plain {
    int M, N;
    T at(const Vec<T> &v, int r, int c) const { return v[(r % M + M) % M + size_t((c % N + N) % N) * M]; }
    void smooth(const Vec<T> &in, const Vec<T> &g, Vec<T> &h, Vec<T> &v) const
    {
        for (int r = 0; r < M; ++r)
            for (int c = 0; c < N; ++c) {
                T sh = g[0] * at(in, r, c), sv = g[0] * at(in, r, c);
                for (size_t k = 1; k < g.size(); ++k) {
                    sh = sh + g[k] * (at(in, r, c + k) + at(in, r, c - k));
                    sv = sv + g[k] * (at(in, r + k, c) + at(in, r - k, c));
                }
                h[r + c * M] = sh, v[r + c * M] = sv;
            }
    }
    void derive(const Vec<T> &in, const Vec<T> &d, Vec<T> &out, int dr, int dc) const
    {
        for (int r = 0; r < M; ++r)
            for (int c = 0; c < N; ++c) {
                T s = 0;
                for (int k = 1; k < int(d.size()); ++k)
                    s = s + d[k] * (at(in, r - k * dr, c - k * dc) - at(in, r + k * dr, c + k * dc));
                out[r + c * M] = s;
            }
    }
    Vec<T> suppress(const Vec<T> &gx, const Vec<T> &gy) const
    {
        auto mag = [&](int r, int c) { return std::sqrt(at(gx, r, c) * at(gx, r, c) + at(gy, r, c) * at(gy, r, c)); };
        Vec<T> out(size_t(M) * N);
        T largest = 0;
        for (int c = 0; c < N; ++c)
            for (int r = 0; r < M; ++r) {
                const T x = at(gx, r, c), y = at(gy, r, c), m = mag(r, c);
                T &o = out[r + c * M];
                if (r == 0 || c == 0 || r == M - 1 || c == N - 1) {
                    o = m;
                } else if (const bool same = x * y > 0; std::fabs(x) < std::fabs(y)) {
                    const T t = std::fabs(x) / std::fabs(y);
                    const T s1 = (1 - t) * mag(r - 1, c) + t * mag(r - 1, same ? c - 1 : c + 1);
                    const T s2 = t * mag(r + 1, same ? c + 1 : c - 1) + (1 - t) * mag(r + 1, c);
                    o = m > s1 && m > s2 ? m : 0;
                } else {
                    const T t = std::fabs(y) / std::fabs(x);
                    const T s1 = (1 - t) * mag(r, c + 1) + t * mag(same ? r + 1 : r - 1, c + 1);
                    const T s2 = t * mag(same ? r - 1 : r + 1, c - 1) + (1 - t) * mag(r, c - 1);
                    o = m > s1 && m > s2 ? m : 0;
                }
                largest = o > largest ? o : largest;
            }
        for (T &o : out) o = o / (largest == 0 ? std::numeric_limits<T>::epsilon() : largest);
        return out;
    }
    std::pair<T, T> automatic(const Vec<T> &m, T percent, int B) const
    {
        const T target = T(M * N) * (percent / T(100));
        int bins[256] = {};
        for (int r = B; r < M - B; ++r)
            for (int c = B; c < N - B; ++c) ++bins[int(m[r + c * M] * 255.0) & 255];
        T sum = 0;
        int k = 0;
        while (k < 256 && !((sum = sum + T(bins[k++])) > target)) {}
        const T high = T(k) * T(0.00390625);
        return {high * T(0.4), high};
    }
    // One chain from each seed, backtracking only at its tip.
    Vec<uint8_t> hysteresis(const Vec<T> &m, T low, T high) const
    {
        Vec<uint8_t> e(size_t(M) * N, 0);
        auto scan = [&](int r, int c, int from) {
            for (int p = from; p < 9; ++p) {
                const int rr = r + p / 3 - 1, cc = c + p % 3 - 1;
                if (p != 4 && rr >= 0 && rr < M && cc >= 0 && cc < N && m[rr + cc * M] >= low) return p;
            }
            return -1;
        };
        struct Entry { int r, c, p; };
        for (int r = 0; r < M; ++r)
            for (int c = 0; c < N; ++c) {
                if (!(m[r + c * M] >= high) || e[r + c * M]) continue;
                e[r + c * M] = 1;
                int p = scan(r, c, 0);
                if (p < 0) continue;
                Vec<Entry> stack{{r, c, p}};
                bool exhausted = false, visiting = true;
                while (!stack.empty()) {
                    const Entry top = stack.back();
                    const int vr = top.r + top.p / 3 - 1, vc = top.c + top.p % 3 - 1;
                    if (visiting && !e[vr + vc * M]) {
                        e[vr + vc * M] = 1;
                        if ((p = scan(vr, vc, 0)) >= 0) {
                            stack.push_back({vr, vc, p}), exhausted = false;
                            continue;
                        }
                    }
                    visiting = !exhausted && (p = scan(top.r, top.c, top.p + 1)) >= 0;
                    if (visiting) stack.back().p = p, exhausted = false;
                    else stack.pop_back(), exhausted = true;
                }
            }
        return e;
    }
};

template <class T, class D, class R>
constexpr auto pick(D d, R r)
{
    if constexpr (std::is_same_v<T, double>) return d; else return r;
}

template <class T>
struct Canny {
    static constexpr auto smooth = pick<T>(ORNEX_RC_Gaussian_Smoothing_D, ORNEX_RC_Gaussian_Smoothing_R);
    static constexpr auto columns = pick<T>(ORNEX_C_Derivative_Image_D, ORNEX_C_Derivative_Image_R);
    static constexpr auto rows = pick<T>(ORNEX_R_Derivative_Image_D, ORNEX_R_Derivative_Image_R);
    static constexpr auto suppress = pick<T>(ORNEX_NonMaximum_Suppression_D, ORNEX_NonMaximum_Suppression_R);
    static constexpr auto user = pick<T>(ORNEX_EdgeCanny_userTh_D, ORNEX_EdgeCanny_userTh_R);
    static constexpr auto automatic = pick<T>(ORNEX_EdgeCanny_autoTh_D, ORNEX_EdgeCanny_autoTh_R);
};

template <class T>
class CannyTest : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(CannyTest, Precisions);

// Small integers and dyadic weights make equal magnitudes (suppression
// ties) common; real-valued trials exercise the rounding of each step.
template <class T>
Vec<T> randomValues(std::mt19937 &random, size_t n, bool dyadic)
{
    Vec<T> v(n);
    for (T &x : v)
        x = dyadic ? T(int(random() % 9) - 4) / 4 : T(std::uniform_real_distribution<double>(-3, 3)(random));
    return v;
}

TYPED_TEST(CannyTest, StagesAndDriversMatchThePlainPipeline)
{
    using T = TypeParam;
    std::mt19937 random(41);
    size_t edgesSeen = 0;
    for (int trial = 0; trial < 300; ++trial) {
        const int M = 1 + random() % 14, N = 1 + random() % 14, L = 1 + random() % std::min(4, std::min(M, N) + 1);
        const bool dyadic = trial % 3 != 0;
        const Plain<T> plain{M, N};
        const size_t n = size_t(M) * N;
        Vec<T> image = randomValues<T>(random, n, dyadic), g = randomValues<T>(random, L, dyadic),
               d = randomValues<T>(random, L, dyadic);
        if (trial % 7 == 0) image.assign(n, T(2)); // constant: no gradient anywhere
        Vec<T> h(n), v(n), gx(n), gy(n), out(n + 2, T(-7)), out2(n + 2, T(-7));
        plain.smooth(image, g, h, v);
        Canny<T>::smooth(image.data(), g.data(), out.data() + 1, out2.data() + 1, M, N, L);
        ASSERT_EQ(Vec<T>(out.begin() + 1, out.end() - 1), h) << trial;
        ASSERT_EQ(Vec<T>(out2.begin() + 1, out2.end() - 1), v) << trial;
        plain.derive(h, d, gx, 0, 1);
        plain.derive(v, d, gy, 1, 0);
        Canny<T>::columns(h.data(), d.data(), out.data() + 1, M, N, L);
        ASSERT_EQ(Vec<T>(out.begin() + 1, out.end() - 1), gx) << trial;
        Canny<T>::rows(v.data(), d.data(), out.data() + 1, M, N, L);
        ASSERT_EQ(Vec<T>(out.begin() + 1, out.end() - 1), gy) << trial;
        const Vec<T> magnitude = plain.suppress(gx, gy);
        Canny<T>::suppress(gx.data(), gy.data(), out.data() + 1, M, N);
        ASSERT_EQ(Vec<T>(out.begin() + 1, out.end() - 1), magnitude) << trial;
        ASSERT_EQ(out.front(), T(-7));
        ASSERT_EQ(out.back(), T(-7));

        // Thresholds taken from the magnitudes themselves hit them exactly.
        const T pick1 = magnitude[random() % n], pick2 = magnitude[random() % n];
        const T percents[] = {0, 30, 50, 70, 99.5, 100};
        const T percent = percents[trial % 6];
        const int B = L / 2;
        for (const bool automatic : {false, true}) {
            const auto [low, high] = automatic ? plain.automatic(magnitude, percent, B)
                                               : std::pair{std::min(pick1, pick2), std::max(pick1, pick2)};
            Vec<uint8_t> expected = plain.hysteresis(magnitude, low, high);
            for (int r = 0; r < M; ++r)
                for (int c = 0; c < N; ++c)
                    if (r < B || r >= M - B || c < B || c >= N - B - 1) expected[r + c * M] = 0;
            const T thresholds[2] = {low, high};
            Vec<T> a(n), b(n), mag(n);
            Vec<uint8_t> edges(n, 7);
            (automatic ? Canny<T>::automatic : Canny<T>::user)(image.data(), g.data(), d.data(), a.data(), b.data(),
                                                                edges.data(), mag.data(),
                                                                automatic ? &percent : thresholds, M, N, L);
            ASSERT_EQ(mag, magnitude) << trial;
            ASSERT_EQ(edges, expected) << trial << (automatic ? " automatic" : " user");
            edgesSeen += std::count(edges.begin(), edges.end(), 1);
        }
    }
    EXPECT_GT(edgesSeen, 2000u);
}

TYPED_TEST(CannyTest, EdgesOfKnownImagesAndEmptyImages)
{
    using T = TypeParam;
    // Identical rows 0 50 100 .. 100 50 0, identity smoothing, derivative
    // 0.5 (I(c-1) - I(c+1)): |Gx| is 50 at columns 1 and 8 against 25 beside
    // them. B = 1 clears column 0 on the left but columns 8 and 9 on the
    // right, and rows 0 and 5.
    const int M = 6, N = 10;
    const T profile[N] = {0, 50, 100, 100, 100, 100, 100, 100, 50, 0}, g[2] = {1, 0}, d[2] = {0, 0.5};
    Vec<T> image(M * N), a(M * N), b(M * N), mag(M * N);
    for (int i = 0; i < M * N; ++i) image[i] = profile[i / M];
    Vec<uint8_t> edges(M * N, 7), expected(M * N, 0);
    for (int r = 1; r < 5; ++r) expected[r + 1 * M] = 1;
    const T thresholds[2] = {T(0.9), T(0.95)};
    Canny<T>::user(image.data(), g, d, a.data(), b.data(), edges.data(), mag.data(), thresholds, M, N, 2);
    EXPECT_EQ(edges, expected);
    // No pixels: nothing touched (zero-length heap blocks for the sanitizer).
    const T percent = 70;
    for (const auto &[rows, cols] : {std::pair{0, 3}, {-1, 3}, {3, -1}, {-1, -1}}) {
        const std::unique_ptr<T[]> none(new T[0]);
        const std::unique_ptr<uint8_t[]> noEdges(new uint8_t[0]);
        Canny<T>::user(none.get(), g, d, none.get(), none.get(), noEdges.get(), none.get(), thresholds, rows, cols, 2);
        Canny<T>::automatic(none.get(), g, d, none.get(), none.get(), noEdges.get(), none.get(), &percent, rows, cols,
                            2);
    }
}

} // namespace
