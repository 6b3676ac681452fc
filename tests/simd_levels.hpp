#pragma once

#include <vector>

#include "frame/simd_level.hpp"

namespace ornex_test {

// Every SIMD level this processor can run, scalar first.
inline std::vector<ornex::SimdLevel> availableSimdLevels()
{
    const ornex::SimdLevel before = ornex::simdLevel();
    std::vector<ornex::SimdLevel> levels;
    for (auto level : {ornex::SimdLevel::scalar, ornex::SimdLevel::packed, ornex::SimdLevel::avx2}) {
        if (ornex::forceSimdLevel(level) == level) {
            levels.push_back(level);
        }
    }
    ornex::forceSimdLevel(before);
    return levels;
}

// Runs `body(level)` with the kernels forced to each level in turn, and
// puts the process's level back afterwards.
template <class Body>
void forEachSimdLevel(Body body)
{
    const ornex::SimdLevel before = ornex::simdLevel();
    for (auto level : availableSimdLevels()) {
        ornex::forceSimdLevel(level);
        body(level);
    }
    ornex::forceSimdLevel(before);
}

} // namespace ornex_test
