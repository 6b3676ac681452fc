#pragma once

#include <cmath>

namespace ornex::opticalflow {

// The 2x2 system [[a, b], [b, c]] (u, v) = -(d, e) of one pixel's weighted
// sums, with its eigenvalues and full solution.
template <class T>
struct LucasKanadeSystem {
    T a, b, c, d, e;
    T negDet;   // b^2 - a*c, the negative of the determinant
    T larger;   // eigenvalue lambda1
    T smaller;  // eigenvalue lambda2

    LucasKanadeSystem(T sumXX, T sumXY, T sumYY, T sumXT, T sumYT)
        : a(sumXX), b(sumXY), c(sumYY), d(sumXT), e(sumYT)
    {
        negDet = b * b - a * c;
        const T mean = T(0.5) * (a + c);
        const T spread = T(0.5) * std::sqrt((a - c) * (a - c) + T(4) * (b * b));
        larger = mean + spread;
        smaller = mean - spread;
    }

    T fullU() const { return -(e * b - c * d) / negDet; }
    T fullV() const { return -(b * d - e * a) / negDet; }

    // An eigenvalue equal to the threshold passes; one that is not a number
    // fails.
    static bool passes(T eigenvalue, T threshold) { return eigenvalue >= threshold; }
};

} // namespace ornex::opticalflow
