#pragma once

#include <functional>
#include <initializer_list>
#include <stdexcept>

#include <gtest/gtest.h>

#include "ornex/ornex.hpp"

using RealTypes = ::testing::Types<float, double>;

// An image whose pixel (r, c) of plane p is f(r, c, p).
template <class T, class F>
ornex::Image<T> makeImage(int32_t rows, int32_t cols, int32_t planes, F f)
{
    ornex::Image<T> image(rows, cols, planes);
    for (int32_t p = 0; p < planes; ++p)
        for (int32_t c = 0; c < cols; ++c)
            for (int32_t r = 0; r < rows; ++r)
                image(r, c, p) = T(f(r, c, p));
    return image;
}

// A row of an argument-check table: a call and the exact message it raises.
struct Rejection {
    std::function<void()> call;
    const char *message;
};

inline void expectRejections(std::initializer_list<Rejection> rows)
{
    for (const Rejection &row : rows) {
        try {
            row.call();
            ADD_FAILURE() << "no exception; expected \"" << row.message << '"';
        } catch (const std::invalid_argument &error) {
            EXPECT_STREQ(error.what(), row.message);
        }
    }
}
