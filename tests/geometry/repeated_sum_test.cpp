#include <cstring>
#include <limits>

#include "geometry/repeated_sum.hpp"
#include "precisions.hpp"

PRECISION_SUITE(RepeatedSum);

// Starts and steps of every kind: halfway sums (steps of 1.5 or 2.5 units of
// the start), steps too small to move it, sign changes through the
// subnormals, overflow, infinities and not-a-number, against the loop.
TYPED_TEST(RepeatedSum, JumpsLandOnTheBitsOfTheLoop)
{
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    std::mt19937 random(41);
    const T specials[] = {T(0), -T(0), Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                          Limits::denorm_min(), Limits::min(), Limits::max()};
    for (int trial = 0; trial < 600; ++trial) {
        const int scale = int(random() % 40) - 20, kind = trial % 8;
        T start = std::ldexp(uniform<T>(random, -1, 1), scale);
        T step = std::ldexp(uniform<T>(random, -1, 1), scale - int(random() % 30));
        if (kind == 1) // halfway: whole units and a half of the start's grid
            step = std::ldexp(T(int(random() % 5) * 2 + 1) / T(2), std::ilogb(start) - Limits::digits + 1);
        if (kind == 2) // through zero and the subnormals
            start = Limits::denorm_min() * T(int(random() % 4000) - 2000), step = Limits::denorm_min() * T(int(random() % 9) - 4);
        if (kind == 3) // up to overflow
            start = Limits::max() / T(1 + random() % 3), step = std::ldexp(Limits::max(), -int(random() % 60));
        if (kind == 4)
            (random() % 2 ? start : step) = specials[random() % 8];
        if (kind == 5) // a step far below the start's unit
            step = std::ldexp(start, -Limits::digits - 2 - int(random() % 4));
        const uint64_t count = random() % (trial % 3 == 0 ? 1 << 20 : 3000);
        T looped = start;
        for (uint64_t k = 0; k < count; ++k)
            looped = looped + step;
        const T jumped = ornex::geometry::repeatedSum(start, step, count);
        ASSERT_TRUE(std::memcmp(&looped, &jumped, sizeof(T)) == 0)
            << "trial " << trial << ": " << start << " + " << count << " x " << step << " = " << looped << ", not " << jumped;
    }
}
