#pragma once

namespace ornex {

// How wide the kernels that have packed paths compute. Every level gives the
// same results bit for bit; the scalar level is the plain definition.
enum class SimdLevel {
    scalar, // one element at a time
    packed, // 16-byte packs (SSE2 on x86)
    avx2,   // 32-byte packs
};

// The level the kernels use now: at start the widest the processor
// supports, lowered by the environment variable ORNEX_SIMD ("none", "sse2"
// or "avx2"; a level the processor lacks is never chosen).
SimdLevel simdLevel();

// The choice itself, for a given ORNEX_SIMD value (null when unset).
SimdLevel chooseSimdLevel(const char *requested, bool processorHasAvx2);

// For tests that hold every packed path to the scalar one in one process:
// makes later calls use `requested`, lowered to what the processor has, and
// returns the level set. Not exported; not for use while kernels run.
SimdLevel forceSimdLevel(SimdLevel requested);

} // namespace ornex
