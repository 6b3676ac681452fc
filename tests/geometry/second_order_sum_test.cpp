#include <cstring>
#include <limits>

#include "geometry/second_order_sum.hpp"
#include "precisions.hpp"

PRECISION_SUITE(SecondOrderSum);

// A value stepped by a step that is itself stepped, as a span walks its
// positions: starts far larger than the step (sums rounding), of either
// sign, steps shrinking through zero or growing, steps of whole halves of
// the value's unit, against the loop.
TYPED_TEST(SecondOrderSum, JumpsLandOnTheBitsOfTheLoop)
{
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    std::mt19937 random(43);
    for (int trial = 0; trial < 500; ++trial) {
        const int scale = int(random() % 60) - 20, kind = trial % 5;
        T value = std::ldexp(uniform<T>(random, -1, 1), scale);
        T step = std::ldexp(uniform<T>(random, -1, 1), scale - int(random() % (Limits::digits + 8)));
        T change = std::ldexp(uniform<T>(random, -1, 1), std::ilogb(step) - 10 - int(random() % 30));
        if (kind == 1) // halves of the value's unit, and a change that keeps them whole
            step = std::ldexp(T(int(random() % 7) * 2 + 1) / T(2), std::ilogb(value) - Limits::digits + 1),
            change = std::ldexp(T(1), std::ilogb(value) - Limits::digits + 1 - int(random() % 3));
        if (kind == 2) // the step shrinks through zero
            change = -step / T(1000 + random() % 100000);
        if (kind == 3)
            change = T(0);
        const uint64_t count = random() % (trial % 3 == 0 ? 1 << 20 : 5000);
        T loopedValue = value, loopedStep = step;
        for (uint64_t k = 0; k < count; ++k)
            loopedValue = loopedValue + loopedStep, loopedStep = loopedStep + change;
        T jumpedValue = value, jumpedStep = step;
        ornex::geometry::secondOrderSum(jumpedValue, jumpedStep, change, count);
        ASSERT_TRUE(std::memcmp(&loopedValue, &jumpedValue, sizeof(T)) == 0 && std::memcmp(&loopedStep, &jumpedStep, sizeof(T)) == 0)
            << "trial " << trial << ": " << value << ", " << step << ", " << change << " x " << count << ": " << loopedValue
            << " " << loopedStep << ", not " << jumpedValue << " " << jumpedStep;
    }
}
