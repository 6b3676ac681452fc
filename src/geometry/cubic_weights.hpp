#pragma once

namespace ornex::geometry {

// Cubic convolution weights with a = -1: w1 for distances in [0, 1), w2 for
// [1, 2). Written and evaluated left to right as the library defines them.
template <class T>
T nearWeight(T s)
{
    return s * s * s - T(2) * s * s + T(1);
}

template <class T>
T farWeight(T s)
{
    return -s * s * s + T(5) * s * s - T(8) * s + T(4);
}

// The four weights of a fraction f, for taps at -1, 0, 1 and 2:
// w2(1 + f) v0 + w1(f) v1 + w1(1 - f) v2 + w2(2 - f) v3.
template <class T>
struct CubicWeights {
    T before, at, after, beyond;

    explicit CubicWeights(T f)
        : before(farWeight(T(1) + f)), at(nearWeight(f)), after(nearWeight(T(1) - f)), beyond(farWeight(T(2) - f))
    {
    }
    T blend(T v0, T v1, T v2, T v3) const { return v0 * before + v1 * at + v2 * after + v3 * beyond; }
};

} // namespace ornex::geometry
