#pragma once

#include <cstddef>

namespace ornex::opticalflow {

// Result forms of a velocity (u across columns, v down rows) at pixel i.
template <class Real>
struct SquaredSpeed {
    static void store(Real *result, ptrdiff_t i, Real u, Real v) { result[i] = u * u + v * v; }
    static void storeZero(Real *result, ptrdiff_t i) { result[i] = Real(0); }
    // The velocity s * (n2, n1) along a unit normal (n1, n2).
    static void storeNormal(Real *result, ptrdiff_t i, Real s, Real n1, Real n2)
    {
        result[i] = s * s * (n1 * n1 + n2 * n2);
    }
};

template <class Real>
struct ComplexVelocity {
    static void store(Real *result, ptrdiff_t i, Real u, Real v)
    {
        result[2 * i] = u;
        result[2 * i + 1] = v;
    }
    static void storeZero(Real *result, ptrdiff_t i) { store(result, i, Real(0), Real(0)); }
    static void storeNormal(Real *result, ptrdiff_t i, Real s, Real n1, Real n2) { store(result, i, s * n2, s * n1); }
};

} // namespace ornex::opticalflow
