#pragma once
// Shared by the geometry, detection and text tests.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "ornex_rt.h"

using Precisions = ::testing::Types<double, float>;
#define PRECISION_SUITE(S) template <class T> class S : public testing::Test {}; TYPED_TEST_SUITE(S, Precisions)

template <class T, class D, class R>
constexpr auto pick(D d, R r) { if constexpr (std::is_same_v<T, double>) return d; else return r; }

template <class T = double>
T uniform(std::mt19937 &g, double lo, double hi) { return T(std::uniform_real_distribution(lo, hi)(g)); }
