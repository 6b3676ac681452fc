#pragma once

#include <gtest/gtest.h>

#include "ornex/ornex.hpp"

using RealTypes = ::testing::Types<float, double>;
template <class T>
class Typed : public ::testing::Test {};

template <class T, class F>
ornex::Image<T> makeImage(int32_t rows, int32_t cols, int32_t planes, F f)
{
    ornex::Image<T> image(rows, cols, planes);
    for (int32_t k = 0; k < rows * cols * planes; ++k)
        image(k % rows, k / rows % cols, k / rows / cols) = T(f(k % rows, k / rows % cols, k / rows / cols));
    return image;
}

// Each call must raise std::invalid_argument with exactly its message.
inline void expectRejections(std::initializer_list<std::pair<std::function<void()>, const char *>> rows)
{
    for (const auto &[call, message] : rows) {
        try {
            call();
            ADD_FAILURE() << "no exception; expected \"" << message << '"';
        } catch (const std::invalid_argument &error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
}
