#include "ornex_rt.h"

#include "frame/simd_level.hpp"
#include "motion/block_search.hpp"

#define ORNEX_SIMD_NAMESPACE baseline
#define ORNEX_PACK_BYTES 16
#include "motion/block_search_kernels.inc"

namespace ornex::motion {
namespace {

template <SearchStrategy strategy, CostKind cost, class T>
void dispatchSearch(const SearchArguments<T> &arguments)
{
    switch (simdLevel()) {
    case SimdLevel::avx2:
#ifdef ORNEX_HAVE_AVX2_PATHS
        avx2::search<strategy, cost>(arguments, true);
        return;
#endif
    case SimdLevel::packed:
        baseline::search<strategy, cost>(arguments, true);
        return;
    case SimdLevel::scalar:
        baseline::search<strategy, cost>(arguments, false);
        return;
    }
}

} // namespace
} // namespace ornex::motion

using ornex::motion::CostKind;
using ornex::motion::SearchStrategy;
using ornex::motion::dispatchSearch;
constexpr auto full = SearchStrategy::full;
constexpr auto threeStep = SearchStrategy::threeStep;
constexpr auto absolute = CostKind::absoluteDifference;
constexpr auto squared = CostKind::squaredDifference;

#define ORNEX_SEARCH_ARGS(T)                                                                                       \
    const T *block, const T *region, int32_t blockStride, int32_t regionStride, int32_t blockCols,              \
        int32_t blockRows, int32_t regionCols, int32_t regionRows, int32_t *bestCol, int32_t *bestRow
#define ORNEX_SEARCH_PASS {block, region, blockStride, regionStride, blockCols, blockRows, regionCols, regionRows, bestCol, bestRow}

extern "C" {
void ORNEX_SearchMethod_Full_MAD_D(ORNEX_SEARCH_ARGS(double)) { dispatchSearch<full, absolute, double>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_Full_MAD_R(ORNEX_SEARCH_ARGS(float)) { dispatchSearch<full, absolute, float>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_Full_MSE_D(ORNEX_SEARCH_ARGS(double)) { dispatchSearch<full, squared, double>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_Full_MSE_R(ORNEX_SEARCH_ARGS(float)) { dispatchSearch<full, squared, float>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MAD_D(ORNEX_SEARCH_ARGS(double)) { dispatchSearch<threeStep, absolute, double>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MAD_R(ORNEX_SEARCH_ARGS(float)) { dispatchSearch<threeStep, absolute, float>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MSE_D(ORNEX_SEARCH_ARGS(double)) { dispatchSearch<threeStep, squared, double>(ORNEX_SEARCH_PASS); }
void ORNEX_SearchMethod_3Step_MSE_R(ORNEX_SEARCH_ARGS(float)) { dispatchSearch<threeStep, squared, float>(ORNEX_SEARCH_PASS); }
}
