#include "../geometry/precisions.hpp"

constexpr double pi = 3.14159265358979323846;
constexpr int pad = 40; // bins outside the rho range land here (they are not range-checked)

template <class T> using Vec = std::vector<T>;

// The detector written plainly, stage by stage; filters wrap round.
template <class T>
struct Plain {
    int M, N;
    T at(const Vec<T> &v, int r, int c) const { return v[(r % M + M) % M + size_t((c % N + N) % N) * M]; }
    Vec<T> filter(const Vec<T> &in, const Vec<T> &w, int dr, int dc, bool derivative) const
    {
        Vec<T> out(in.size());
        for (int r = 0; r < M; ++r)
            for (int c = 0; c < N; ++c) {
                T s = derivative ? T(0) : w[0] * at(in, r, c);
                for (int k = 1; k < int(w.size()); ++k)
                    s = s + w[k] * (derivative ? at(in, r - k * dr, c - k * dc) - at(in, r + k * dr, c + k * dc)
                                               : at(in, r + k * dr, c + k * dc) + at(in, r - k * dr, c - k * dc));
                out[r + c * M] = s;
            }
        return out;
    }
    Vec<T> suppress(const Vec<T> &gx, const Vec<T> &gy) const
    {
        auto g = [&](int r, int c) { return std::sqrt(at(gx, r, c) * at(gx, r, c) + at(gy, r, c) * at(gy, r, c)); };
        Vec<T> out(gx.size());
        T largest = 0;
        for (int i = 0; i < M * N; ++i) { // column by column
            const int r = i % M, c = i / M;
            const T x = gx[i], y = gy[i], m = g(r, c), ax = std::fabs(x), ay = std::fabs(y);
            const int s = x * y > 0 ? 1 : -1, v = ax < ay; // same sign; mainly vertical gradient
            const T t = v ? ax / ay : ay / ax, side1 = v ? (1 - t) * g(r - 1, c) + t * g(r - 1, c - s)
                                                      : (1 - t) * g(r, c + 1) + t * g(r + s, c + 1);
            const T side2 = v ? t * g(r + 1, c + s) + (1 - t) * g(r + 1, c)
                              : t * g(r - s, c - 1) + (1 - t) * g(r, c - 1);
            const T o = out[i] = r == 0 || c == 0 || r == M - 1 || c == N - 1 || (m > side1 && m > side2) ? m : 0;
            largest = o > largest ? o : largest;
        }
        for (T &o : out) o = o / (largest == 0 ? std::numeric_limits<T>::epsilon() : largest);
        return out;
    }
    std::pair<T, T> automatic(const Vec<T> &m, T percent, int B) const
    {
        const T target = T(M * N) * (percent / T(100));
        int bins[256] = {}, k = 0;
        for (int r = B; r < M - B; ++r)
            for (int c = B; c < N - B; ++c) ++bins[int(m[r + c * M] * 255.0) & 255];
        for (T sum = 0; k < 256 && !((sum = sum + T(bins[k++])) > target);) {}
        return {T(k) * T(0.00390625) * T(0.4), T(k) * T(0.00390625)};
    }
    // One chain from each seed, backtracking only at its tip: once an entry
    // runs out of neighbours, the ones below it are popped unexamined.
    Vec<uint8_t> hysteresis(const Vec<T> &m, T low, T high) const
    {
        Vec<uint8_t> e(m.size(), 0);
        auto scan = [&](int r, int c, int from) {
            for (int p = from; p < 9; ++p) {
                const int rr = r + p / 3 - 1, cc = c + p % 3 - 1;
                if (p != 4 && rr >= 0 && rr < M && cc >= 0 && cc < N && m[rr + cc * M] >= low) return p;
            }
            return -1;
        };
        struct Entry { int r, c, p; };
        for (int r = 0; r < M; ++r)
            for (int c = 0, p; c < N; ++c) {
                if (!(m[r + c * M] >= high) || e[r + c * M]) continue;
                e[r + c * M] = 1;
                Vec<Entry> stack;
                if ((p = scan(r, c, 0)) >= 0) stack.push_back({r, c, p});
                for (bool exhausted = false, visiting = true; !stack.empty();) {
                    const Entry top = stack.back();
                    const int vr = top.r + top.p / 3 - 1, vc = top.c + top.p % 3 - 1;
                    if (visiting && !e[vr + vc * M] && (e[vr + vc * M] = 1, p = scan(vr, vc, 0)) >= 0) {
                        stack.push_back({vr, vc, p}), exhausted = false;
                        continue;
                    }
                    visiting = !exhausted && (p = scan(top.r, top.c, top.p + 1)) >= 0;
                    if (visiting) stack.back().p = p, exhausted = false;
                    else stack.pop_back(), exhausted = true;
                }
            }
        return e;
    }
};

PRECISION_SUITE(Detection);

TYPED_TEST(Detection, CannyStagesAndDriversMatchThePlainPipeline)
{
    using T = TypeParam;
    const auto smooth = pick<T>(ORNEX_RC_Gaussian_Smoothing_D, ORNEX_RC_Gaussian_Smoothing_R);
    const auto across = pick<T>(ORNEX_C_Derivative_Image_D, ORNEX_C_Derivative_Image_R);
    const auto down = pick<T>(ORNEX_R_Derivative_Image_D, ORNEX_R_Derivative_Image_R);
    const auto suppress = pick<T>(ORNEX_NonMaximum_Suppression_D, ORNEX_NonMaximum_Suppression_R);
    const auto user = pick<T>(ORNEX_EdgeCanny_userTh_D, ORNEX_EdgeCanny_userTh_R);
    const auto automatic = pick<T>(ORNEX_EdgeCanny_autoTh_D, ORNEX_EdgeCanny_autoTh_R);
    std::mt19937 random(41);
    for (int trial = 0; trial < 400; ++trial) {
        // Tall images, one taller than the strips of rows the drivers walk in, one very wide; kernels of length 5 to
        // 10 too (longer than 8, the drivers filter stage by stage).
        const int M = trial % 20 ? 1 + random() % 14 : trial == 20 ? 4200 : trial ? 60 + random() % 80 : 3;
        const int N = trial % 20 == 10 ? 9 + random() % 6 : trial ? 1 + random() % 14 : 8200;
        const int L = trial % 20 == 10 ? std::min(5 + trial / 20 % 6, M + 1)
                      : trial          ? 1 + random() % std::min(4, std::min(M, N) + 1)
                                       : 1,
                  B = L / 2;
        const size_t n = size_t(M) * N;
        // Small integers and dyadic weights make ties common; real values exercise each step's rounding.
        auto draw = [&](size_t count, int kind) {
            Vec<T> v(count);
            for (T &x : v) x = kind ? T(int(random() % 9) - 4) / (kind == 1 ? 4 : 1) : uniform<T>(random, -3, 3);
            return v;
        };
        const Plain<T> plain{M, N};
        const int kind = trial % 3 > 0;
        Vec<T> image = trial % 7 || !trial ? draw(n, kind) : Vec<T>(n, T(2)), g = draw(L, kind), d = draw(L, kind);
        Vec<T> out(n + 2, T(-7)), out2 = out;
        auto inner = [&](const Vec<T> &v) { return Vec<T>(v.begin() + 1, v.end() - 1); };
        const Vec<T> h = plain.filter(image, g, 0, 1, false), v = plain.filter(image, g, 1, 0, false);
        smooth(image.data(), g.data(), out.data() + 1, out2.data() + 1, M, N, L);
        ASSERT_TRUE(inner(out) == h && inner(out2) == v) << trial;
        const Vec<T> gx = plain.filter(h, d, 0, 1, true), gy = plain.filter(v, d, 1, 0, true);
        across(h.data(), d.data(), out.data() + 1, M, N, L);
        down(v.data(), d.data(), out2.data() + 1, M, N, L);
        ASSERT_TRUE(inner(out) == gx && inner(out2) == gy) << trial;
        const Vec<T> sx = draw(n, 2), sy = draw(n, 2); // integer gradients: exact ties in suppression
        suppress(sx.data(), sy.data(), out.data() + 1, M, N);
        ASSERT_EQ(inner(out), plain.suppress(sx, sy)) << trial;
        const Vec<T> magnitude = plain.suppress(gx, gy); // checked through both drivers below
        ASSERT_TRUE(out.front() == T(-7) && out.back() == T(-7) && out2.front() == T(-7) && out2.back() == T(-7));

        // Thresholds taken from the magnitudes themselves are met exactly.
        const T pick1 = magnitude[random() % n], pick2 = magnitude[random() % n];
        const T percent = Vec<T>{0, 30, 50, 70, T(99.5), 100}[trial % 6];
        for (const bool isAutomatic : {false, true}) {
            const auto [low, high] = isAutomatic ? plain.automatic(magnitude, percent, B)
                                                 : std::pair{std::min(pick1, pick2), std::max(pick1, pick2)};
            Vec<uint8_t> expected = plain.hysteresis(magnitude, low, high), edges(n, 7);
            for (size_t i = 0; i < n; ++i) // the border cleared, the right band one column wider
                if (const int r = i % M, c = i / M; r < B || r >= M - B || c < B || c >= N - B - 1) expected[i] = 0;
            const T thresholds[2] = {low, high};
            Vec<T> a(n), b(n), mag(n);
            (isAutomatic ? automatic : user)(image.data(), g.data(), d.data(), a.data(), b.data(), edges.data(),
                                             mag.data(), isAutomatic ? &percent : thresholds, M, N, L);
            ASSERT_EQ(mag, magnitude) << trial;
            ASSERT_EQ(edges, expected) << trial << (isAutomatic ? " automatic" : " user");
        }
    }
    // No pixels: nothing read or written.
    const T g[2] = {1, 0}, th[2] = {T(0.1), T(0.2)};
    for (const auto canny : {user, automatic})
        for (const auto &[rows, cols] : {std::pair{0, 3}, {-1, 3}, {3, -1}, {-1, -1}})
            canny(nullptr, g, g, nullptr, nullptr, nullptr, nullptr, th, rows, cols, 2);
}

TYPED_TEST(Detection, HoughVotesMatchThePlainLoop)
{
    using T = TypeParam;
    std::mt19937 random(5);
    for (int trial = 0; trial < 108; ++trial) {
        // The last trials have thousands of edge pixels, their bins inside the range or a few past it.
        const bool large = trial >= 100;
        const int rows = large ? 60 + random() % 40 : random() % 12, cols = large ? 60 + random() % 40 : random() % 12;
        const int thetas = 2 + random() % 20;
        // rho0 = -(k + 0.5), rhos = 2k + 2: the scale is 1 and the -90 and 0 degree columns land on
        // exact halves; a short range gives bins below 0 and past the end, as does rho0 > 0 (scale -1).
        const int k = large ? 130 + random() % 20 : random() % 18, rhos = 2 * k + 2;
        const T rho0 = (trial % 4 ? -1 : 1) * (T(k) + T(0.5)), scale = T(rhos - 1) / (rho0 * T(-2.0));
        std::vector<uint8_t> image(size_t(rows) * cols);
        for (auto &p : image) p = (random() % 3 == 0) != large ? uint8_t(1 + random() % 255) : 0;
        std::vector<T> s(thetas), acc(size_t(rhos) * (2 * thetas - 2) + 2 * pad, T(-3));
        for (int t = 0; t < thetas; ++t) s[t] = T(std::sin(pi / 2 * (t - thetas + 1) / (thetas - 1)));
        pick<T>(ORNEX_Hough_D, ORNEX_Hough_R)(image.data(), &acc[pad], s.data(), &rho0, rows, cols, rhos, thetas);
        std::vector<T> expected(acc.size(), T(-3));
        std::fill(expected.begin() + pad, expected.end() - pad, T(0));
        for (int i = 0; i < rows * cols; ++i)
            for (int t = 0, j = -thetas, r = i % rows, c = i / rows; image[i] && t < 2 * thetas - 2; ++t, ++j) {
                const T value = t < thetas ? (s[t] * T(r) - s[thetas - 1 - t] * T(c) - rho0) * scale
                                             : (-s[thetas - 2 - j] * T(r) - s[1 + j] * T(c) - rho0) * scale;
                expected[pad + t * rhos + int(value > 0 ? value + T(0.5) : value - T(0.5))] += 1;
            }
        ASSERT_EQ(acc, expected) << trial;
    }
    // More than 2^24 votes in one cell: a table of zeros sends every pixel to bin 1.5 -> 2 of both columns,
    // which must hold what adding 1 that many times gives (a single stops growing at 2^24).
    const int many = (1 << 24) + 5;
    const std::vector<uint8_t> ones(many, 1);
    const T zeros[2] = {0, 0}, rho0 = T(-1.5);
    std::vector<T> cells(8, T(-3));
    T sum = 0;
    for (int i = 0; i < many; ++i) sum += 1;
    pick<T>(ORNEX_Hough_D, ORNEX_Hough_R)(ones.data(), cells.data(), zeros, &rho0, many, 1, 4, 2);
    EXPECT_EQ(cells, (std::vector<T>{0, 0, sum, 0, 0, 0, sum, 0}));
}

TYPED_TEST(Detection, HoughEndPointsAreTheFirstTwoBorderCrossings)
{
    using T = TypeParam;
    const T eps = std::numeric_limits<T>::epsilon();
    std::mt19937 random(9);
    std::vector<T> theta(600), rho(600), real(4 * 600 + 4, T(-9)), expected = real;
    std::vector<int32_t> whole(4 * 600 + 4, -9);
    for (size_t i = 0; i < theta.size(); ++i) {
        theta[i] = T(i % 5 ? uniform(random, -pi / 2, pi / 2) : pi / 180 * int(random() % 181 - 90));
        rho[i] = T(i % 3 ? uniform(random, -25, 25) : int(random() % 41 - 10) / 2.0);
        // A top crossing at exactly column -0.5, which rounds up to 0.
        const T c = T(std::cos(double(theta[i]))) + eps, target = T(-0.5) * c;
        if (i % 4 == 3 && (target - eps) + eps == target && target / c == T(-0.5)) rho[i] = target - eps;
    }
    const int rows = 1 + random() % 20, cols = 1 + random() % 20;
    auto half = [](T v) { return std::floor(v + T(0.5)); }; // end points round halves up
    for (size_t i = 0; i < theta.size(); ++i) {
        const T r = rho[i] + eps, a = r / (T(std::cos(double(theta[i]))) + eps);
        const T b = r / (T(std::sin(double(theta[i]))) + eps), top = half(a), left = half(b);
        const T right = half((a - T(cols - 1)) * (b / a)), bottom = half(a - (a / b) * T(rows - 1));
        const T found[4][2] = {{0, top}, {left, 0}, {right, T(cols - 1)}, {T(rows - 1), bottom}};
        std::vector<T> points; // the first two crossings on the border, each (row, column)
        for (int k = 0; k < 4 && points.size() < 4; ++k)
            if (found[k][0] >= 0 && found[k][0] <= T(rows - 1) && found[k][1] >= 0 && found[k][1] <= T(cols - 1))
                points.insert(points.end(), found[k], found[k] + 2);
        if (points.size() < 4) points.assign(4, T(-1));
        std::copy(points.begin(), points.end(), expected.begin() + 4 * i);
    }
    pick<T>(ORNEX_HoughLines_D, ORNEX_HoughLines_R)(theta.data(), rho.data(), whole.data(), 600, rows, cols);
    pick<T>(ORNEX_HoughLines_DO, ORNEX_HoughLines_RO)(theta.data(), rho.data(), real.data(), 600, rows, cols);
    EXPECT_EQ(real, expected);
    EXPECT_EQ(std::vector<T>(whole.begin(), whole.end()), expected);
}
