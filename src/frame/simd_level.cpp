#include "frame/simd_level.hpp"

#include <cstdlib>
#include <cstring>

namespace ornex {

namespace {

bool processorHasAvx2()
{
#if defined(ORNEX_HAVE_AVX2_PATHS) && (defined(__x86_64__) || defined(__i386__))
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

} // namespace

SimdLevel chooseSimdLevel(const char *requested, bool hasAvx2)
{
    const SimdLevel widest = hasAvx2 ? SimdLevel::avx2 : SimdLevel::packed;
    if (requested == nullptr) {
        return widest;
    }
    if (std::strcmp(requested, "none") == 0) {
        return SimdLevel::scalar;
    }
    if (std::strcmp(requested, "sse2") == 0) {
        return SimdLevel::packed;
    }
    return widest;
}

SimdLevel simdLevel()
{
    static const SimdLevel chosen = chooseSimdLevel(std::getenv("ORNEX_SIMD"), processorHasAvx2());
    return chosen;
}

} // namespace ornex
