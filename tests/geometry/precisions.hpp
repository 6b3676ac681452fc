#pragma once
// What the geometry, detection and text tests share: both precisions as a
// typed suite, and the double or single member of a pair of functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <type_traits>
#include <vector>

#include "ornex_rt.h"

using Precisions = ::testing::Types<double, float>;
#define PRECISION_SUITE(Name)                          \
    template <class T>                                 \
    class Name : public ::testing::Test {};            \
    TYPED_TEST_SUITE(Name, Precisions)

template <class T, class D, class R>
constexpr auto pick(D d, R r)
{
    if constexpr (std::is_same_v<T, double>) return d; else return r;
}

template <class T>
T tolerance(double ifDouble, double ifFloat) { return T(std::is_same_v<T, double> ? ifDouble : ifFloat); }
