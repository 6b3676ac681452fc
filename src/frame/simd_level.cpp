#include "frame/simd_level.hpp"

#include <atomic>
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

namespace {

std::atomic<SimdLevel> &currentLevel()
{
    static std::atomic<SimdLevel> level{chooseSimdLevel(std::getenv("ORNEX_SIMD"), processorHasAvx2())};
    return level;
}

} // namespace

SimdLevel simdLevel() { return currentLevel().load(std::memory_order_relaxed); }

SimdLevel forceSimdLevel(SimdLevel requested)
{
    const SimdLevel widest = processorHasAvx2() ? SimdLevel::avx2 : SimdLevel::packed;
    const SimdLevel level = requested > widest ? widest : requested;
    currentLevel().store(level, std::memory_order_relaxed);
    return level;
}

} // namespace ornex
