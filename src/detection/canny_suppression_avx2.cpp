// The suppression and the drivers' gradient walk built for AVX2 (32-byte
// packs). Compiled with -mavx2 only: no FMA, so every operation rounds as in
// the baseline build.
#define ORNEX_SIMD_NAMESPACE avx2
#define ORNEX_PACK_BYTES 32
#include "detection/canny_suppression_kernels.hpp"
#include "detection/canny_pipeline_kernels.hpp"
