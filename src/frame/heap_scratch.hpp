#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace ornex {

// Working memory of one call, taken from the heap and given back when the
// call returns. Null when the heap is exhausted.
struct FreeDeleter {
    void operator()(void *memory) const { std::free(memory); }
};

template <class T>
using HeapScratch = std::unique_ptr<T, FreeDeleter>;

template <class T>
HeapScratch<T> takeHeapScratch(size_t bytes)
{
    return HeapScratch<T>(static_cast<T *>(std::malloc(bytes)));
}

} // namespace ornex
