#pragma once

#include <cstdint>

namespace ornex::motion {

enum class SearchStrategy { full, threeStep };
enum class CostKind { absoluteDifference, squaredDifference };

// The arguments of one block search call, as the exported kernels take them.
template <class T>
struct SearchArguments {
    const T *block;
    const T *region;
    int32_t blockStride;
    int32_t regionStride;
    int32_t blockCols;
    int32_t blockRows;
    int32_t regionCols;
    int32_t regionRows;
    int32_t *bestCol;
    int32_t *bestRow;
};

// One build of the search per instruction set, each in its own namespace so
// that the builds never meet at link time. `packed` false gives the plain
// one-candidate-at-a-time definition.
namespace baseline {
template <SearchStrategy strategy, CostKind cost, class T>
void search(const SearchArguments<T> &arguments, bool packed);
}
namespace avx2 {
template <SearchStrategy strategy, CostKind cost, class T>
void search(const SearchArguments<T> &arguments, bool packed);
}

} // namespace ornex::motion
