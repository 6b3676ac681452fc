#include <gtest/gtest.h>

#include "ornex/ornex.hpp"
